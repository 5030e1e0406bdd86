// A host calling a procedure that its script has defined, as a script line would call it.
#include <array>
#include <vector>

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
  std::shared_ptr<LxBasicSub> sub = lastCallSub_;
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
  // Arguments travel as they do from a script line: an Empty value as the null object. A few
  // fit on the stack.
  constexpr size_t kInline = 8;
  std::array<Variant, kInline> inlineArgs;
  std::vector<Variant> manyArgs;
  if (args.size() > kInline) manyArgs.resize(args.size());
  const std::span<Variant> passed = args.size() > kInline
                                        ? std::span<Variant>(manyArgs)
                                        : std::span<Variant>(inlineArgs.data(), args.size());
  for (size_t i = 0; i < args.size(); ++i) {
    passed[i] = args[i].isEmpty() ? Variant(nullObject()) : scriptValueOf(args[i]);
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
