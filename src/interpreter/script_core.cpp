#include "interpreter/script_core.h"

namespace lx {

void ScriptCore::setError(ErrorRef e) {
  std::lock_guard lock(errorMutex_);
  _error = std::move(e);
  errorSet_.store(_error != nullptr, std::memory_order_release);
}

}  // namespace lx
