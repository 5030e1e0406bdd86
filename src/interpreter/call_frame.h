// The script of one procedure call, kept by its procedure between calls. A frame is made once
// (a child script with its own library object and its own view of the constants) and bound
// anew to each call's arguments, so that a call neither builds a script object nor prepares
// the body's text again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "lxbasic/error.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class LxBasicSub;
class ScriptCore;

class CallFrame {
 public:
  // A frame for calls of `sub`, a child of the script that owns the procedure table.
  CallFrame(const LxBasicSub& sub, ScriptCore& owner);
  ~CallFrame();
  CallFrame(const CallFrame&) = delete;
  CallFrame& operator=(const CallFrame&) = delete;

  ScriptCore& script() noexcept { return *script_; }
  // Binds one call as a new child script would be bound: the arguments to the parameters in
  // order, then one empty result slot under the function's name, "result" and "function"
  // (answered; nullptr for a sub), then "__func__".
  const LxValue* bind(std::span<const Variant> args);
  // Back to the state between calls: the call's values, variables, blocks, error and created
  // objects are dropped. False when the frame is not fit to be used again.
  bool unbind();

 private:
  // Drops what a slot holds: emptied and kept when the table is its only holder, otherwise
  // left to whoever else holds it (an array may hold an argument's slot).
  static void vacate(ValueRef& entry);
  void bindResult();
  // Empties the entries of the body's locals: until its declaration runs a local is no variable.
  void dropLocals();
  // Gives the next call an "err" record of its own unless the last one is still untouched.
  void renewErr();
  void makeErr();

  std::shared_ptr<ScriptCore> script_;
  ScriptCore& owner_;
  std::vector<ValueRef*> entries_;     // the table's entries for the bound names
  size_t firstLocal_ = 0;              // entries_ from here: the body's locals, empty between calls
  std::vector<ValueRef*> parameters_;  // each parameter's entry, in order
  std::vector<ValueRef*> resultEntries_;  // the distinct entries of the result's names
  ValueRef* funcEntry_ = nullptr;
  ValueRef result_;    // the slot the result's names share
  ValueRef funcName_;  // the "__func__" constant: immutable, so one serves every call
  // A parameter named like the result or "__func__": then every call binds every name anew,
  // in order, and the later binding wins as it would in a new script.
  bool shadowed_ = false;
  bool func_ = false;
  ValueRef* err_ = nullptr;
  ValueRef freshErr_;                     // "err" as a new script has it
  const LxError* freshRecord_ = nullptr;  // the record in freshErr_, a constant slot
  std::vector<UString> locals_;           // names the body added during the call
  size_t names_ = 0;                      // names in the table between calls
  uint64_t ownerObjects_ = 0;             // the owner's object-list epoch the frame last copied
  uint64_t frameEpoch_ = 0;               // the procedure's epoch for frames between calls
};

}  // namespace lx
