// A host calling a procedure that its script has defined, as a script line would call it.
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"

namespace lx {

Variant ScriptCore::call(UStringView name, std::span<const Variant> args) {
  // A running script owns its variables; a second caller would race with it.
  if (running()) throw InvalidArgumentException("call: the script is running");
  std::shared_ptr<LxBasicSub> sub = getSubByName(name);
  _running.store(1);
  setError(nullptr);
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
  std::vector<Variant> passed(args.begin(), args.end());
  for (Variant& v : passed) {
    if (v.isEmpty()) v = Variant(nullObject());
    v = scriptValueOf(v);
  }
  ErrorRef inner;
  CallResult result = sub->run(passed, &inner);
  if (result.argumentMismatch) {
    setError(LxError::make(kWrongArgumentCount));
  } else if (inner) {
    setError(inner);
  }
  return result.value;
}

}  // namespace lx
