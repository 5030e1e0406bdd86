// The guard of the built-ins: a guarded function answers its fallback when anything inside
// fails (a value that cannot answer a request, an index outside a string).
#pragma once

#include "lxbasic/variant.h"

namespace lx {

template <class Body>
Variant guarded(const Variant& fallback, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return fallback;
  }
}

}  // namespace lx
