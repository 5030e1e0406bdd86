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
  // Binds one call, in the order a new child script would get them: the arguments to the
  // parameters, one fresh result slot under the function's name, "result" and "function"
  // (answered; nullptr for a sub), and "__func__".
  ValueRef bind(std::span<const Variant> args);
  // Back to the state between calls: the call's variables, blocks, error and created objects
  // are dropped. False when the frame is not fit to be used again.
  bool unbind();

 private:
  enum class Role : uint8_t { Parameter, Result, FuncName };
  struct Binding {
    ValueRef* entry;  // the variable table's entry; entries stay put while names are added
    Role role;
    size_t parameter;
  };

  std::shared_ptr<ScriptCore> script_;
  ScriptCore& owner_;
  std::vector<Binding> bindings_;
  ValueRef funcName_;  // the "__func__" constant: immutable, so one serves every call
  ValueRef* err_ = nullptr;
  ValueRef freshErr_;            // "err" as a new script has it
  std::vector<UString> locals_;  // names the body added during the call
  size_t names_ = 0;             // names in the table between calls
  uint64_t ownerObjects_ = 0;    // the owner's object-list epoch the frame last copied
};

}  // namespace lx
