// User procedures (SUB and FUNCTION): the procedure record, which runs each call in a child
// script (a call frame, kept between calls), and the procedure table that a script shares
// with all its children.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "execution/epoch.h"
#include "interpreter/prepared_line.h"
#include "lxbasic/bridge.h"
#include "lxbasic/error.h"
#include "lxbasic/string_list.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptCore;

// Calls that may be active at once in one script tree; one more is error 25.
inline constexpr int32_t kMaxCallDepth = 256;
// How many Eval runs may be nested in one script tree. An Eval adds no call level (only the
// built-in call from a procedure does), so a text that evaluates itself would otherwise nest
// without end; past this it fails with "Stack overflow" as deep calls do.
inline constexpr int32_t kMaxEvalNesting = 256;

class CallFrame;

// A body as calls run it: prepared (and, line by line, compiled) once, shared by every call.
struct ProcedureBody {
  PreparedLines lines;
  size_t sourceLines = 0;  // the body's line count it was prepared from
};

class LxBasicSub {
 public:
  explicit LxBasicSub(ScriptCore* owner);
  LxBasicSub(ScriptCore* owner, UString name, std::vector<UString> params, UStringView body,
             bool func);
  ~LxBasicSub();
  LxBasicSub(const LxBasicSub&) = delete;
  LxBasicSub& operator=(const LxBasicSub&) = delete;

  // One call: the function's result (Empty for a sub), or argumentMismatch when the argument
  // count differs from the parameter count. A body that fails leaves its error (code,
  // message, line text) in *error and answers Empty. On the reference evaluator the call gets
  // a child script made for it alone; otherwise one of the record's frames.
  CallResult run(std::span<const Variant> args, ErrorRef* error);

  LxBasicStringList& body() noexcept { return body_; }
  const LxBasicStringList& body() const noexcept { return body_; }
  bool func() const noexcept { return func_; }
  void setFunc(bool f) {
    func_ = f;
    nameBindings();
  }
  const UString& name() const noexcept { return name_; }
  const std::vector<UString>& params() const noexcept { return params_; }
  ScriptCore* owner() const noexcept { return owner_; }
  // The upper-case names a call binds, each once: the parameters, for a function its name,
  // "RESULT" and "FUNCTION", "__FUNC__", and "ERR", which each frame has a record of its own for;
  // then, from firstLocal() on, the names the body's DIM, CONST and FOR statements may declare.
  // A frame keeps an entry for each of those locals, empty (no such variable) until the body
  // declares it and again after the call, so that compiled lines find it by place in every
  // frame instead of by name after each declaration.
  const std::vector<UString>& boundNames() const noexcept { return boundNames_; }
  size_t firstLocal() const noexcept { return firstLocal_; }
  // The variable-table epoch of every frame of this procedure between calls: their tables then
  // differ only in the bound names, which compiled lines find by place, not by epoch.
  uint64_t frameEpoch() const noexcept { return frameEpoch_; }
  // Drops the idle frames and the prepared body (which may refer back to this record).
  void releaseFrames();

 private:
  // The reference way of calling: a child script made for the call, which prepares the body
  // from its text and runs it on the reference evaluator.
  CallResult runAsChildScript(std::span<const Variant> args, ErrorRef* error);
  // The prepared body, prepared now when the body is new or has grown; nullptr when it cannot
  // be prepared (the frame's script then holds the error).
  ProcedureBody* preparedBody(ScriptCore& frame);
  // The caller's view of a finished call: error 25 when no stack could be found for it, the
  // run's end on a stop, the body's error, or the value.
  CallResult finishCall(bool ran, const ErrorRef& inner, Variant value, ErrorRef* error) const;
  void nameBindings();
  // Adds the body's declared names to the bound names once the body is complete (it grows
  // only while its definition is open, when no call can run).
  void bindLocals();
  // Calls nest, so frames are taken and given back in stack order: the frame of the call at
  // depth d (among this procedure's active calls) is frames_[d].
  CallFrame& takeFrame();
  void giveBack(CallFrame& frame);

  bool func_ = false;
  UString name_;  // upper case
  std::vector<UString> params_;
  LxBasicStringList body_;
  ScriptCore* owner_;  // the script that owns the procedure table; it outlives every call
  std::vector<UString> boundNames_;
  size_t firstLocal_ = 0;
  size_t linesScanned_ = 0;  // body lines bindLocals has read
  uint64_t frameEpoch_ = 0;
  std::unique_ptr<ProcedureBody> prepared_;
  std::vector<std::unique_ptr<CallFrame>> frames_;
  size_t activeFrames_ = 0;
};

class LxBasicSubs {
 public:
  explicit LxBasicSubs(ScriptCore* owner) : owner_(owner) {}

  // The record under that name (any letter case); an existing one is answered unchanged.
  std::shared_ptr<LxBasicSub> addSubWithName(UStringView name, std::vector<UString> params,
                                             UStringView body, bool func);
  std::shared_ptr<LxBasicSub> getSubByName(UStringView name) const;
  // Changes whenever a procedure is added (see execution/epoch.h).
  uint64_t epoch() const noexcept { return epoch_; }
  const uint64_t* epochAddress() const noexcept { return &epoch_; }
  // Breaks the records' links to the frames and bodies they keep (the table's owner is going).
  void releaseFrames();

 private:
  ScriptCore* owner_;
  uint64_t epoch_ = nextBindingEpoch();
  std::unordered_map<UString, std::shared_ptr<LxBasicSub>> subs_;
};

}  // namespace lx
