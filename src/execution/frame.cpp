#include "execution/frame.h"

namespace lx {

Frame::~Frame() = default;

ErrorRef Frame::error() const {
  std::lock_guard lock(errorMutex_);
  return _error;
}

void Frame::setError(ErrorRef e) {
  std::lock_guard lock(errorMutex_);
  if (stopSticky_ && _error && (!e || e->code() != _error->code())) return;
  _error = std::move(e);
  errorSet_.store(_error != nullptr, std::memory_order_release);
}

int32_t Frame::errorCode() const {
  if (!hasError()) return 0;
  std::lock_guard lock(errorMutex_);
  return _error ? _error->code() : 0;
}

}  // namespace lx
