// A host calling a procedure that its script has defined, as a script line would call it.

#include "foundation/inline_values.h"
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"

namespace lx {

Variant ScriptCore::call(UStringView name, std::span<const Variant> args) {
  // A running script owns its variables; a second caller would race with it.
  if (running()) throw InvalidArgumentException("call: the script is running");
  if (lastCallName_ != name || lastCallEpoch_ != proceduresEpoch() || !lastCallSub_) {
    lastCallSub_ = getSubByName(name);
    lastCallName_ = UString(name);
    lastCallEpoch_ = proceduresEpoch();
  }
  // Held by lastCallSub_, which nothing changes while the call runs: a host method that the
  // body calls cannot call() this script again.
  LxBasicSub* sub = lastCallSub_.get();
  _running.store(1);
  if (hasError()) setError(nullptr);
  shared_->clearStop();
  clearLastException();
  shared_->clearSwallowed();
  struct EndOfCall {
    ScriptCore& s;
    ~EndOfCall() { s._running.store(0); }
  } end{*this};
  if (!sub) {
    setError(LxError::make(kFunctionNotFound, UStringView(), name));
    return Variant();
  }
  // Arguments travel as they do from a script line: an Empty value as the null object.
  InlineValues<8> passed;
  for (const Variant& a : args) passed.push(a.isEmpty() ? Variant(nullObject()) : scriptValueOf(a));
  ErrorRef inner;
  CallResult result = sub->run(passed.span(), &inner);
  if (result.argumentMismatch) {
    setError(LxError::make(kWrongArgumentCount));
  } else if (inner) {
    setError(inner);
  }
  return std::move(result.value);
}

}  // namespace lx
