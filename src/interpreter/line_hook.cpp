// The host's line hook: called before each executed line with where the script is, so that a
// debugger, a progress display or an instruction budget can follow a run and stop it.
#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"

namespace lx {

void ScriptCore::setLineHook(LineHook hook) {
  // Replacing the function while a run calls it would race; hooks are set between runs.
  if (running()) throw InvalidArgumentException("setLineHook: the script is running");
  shared_->setLineHook(std::move(hook));
}

int32_t ScriptCore::sourceLine() const {
  const int32_t here = currentScriptLine_.load(std::memory_order_relaxed);
  if (isRoot() || evaluating_ || here < 0 || static_cast<size_t>(here) >= _script.count()) {
    return here;
  }
  // Procedure bodies carry the host script's line index of each of their lines.
  const Variant& tag = _script.objectAtIndex(static_cast<size_t>(here));
  return tag.isNumber() ? tag.numberUnchecked().toInt32() : here;
}

bool ScriptCore::callLineHook() {
  if ((*shared_->lineHook())(sourceLine() + 1, callLevel_)) return true;
  // A stop from the hook is a terminate of the whole run, so callers unwind as well.
  root().terminate();
  return false;
}

}  // namespace lx
