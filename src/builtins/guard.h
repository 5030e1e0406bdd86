// The guard of the built-ins: a guarded function answers its fallback when anything inside
// fails (a value that cannot answer a request, an index outside a string). Limits are not
// failures of the function: running out of memory or being asked to stop passes the guard
// and ends the line, so that no fallback value ever hides them.
#pragma once

#include "foundation/memory_budget.h"
#include "lxbasic/variant.h"

namespace lx {

template <class Body>
Variant guarded(const Variant& fallback, Body&& body) {
  try {
    return body();
  } catch (...) {
    rethrowIfLimit();
    return fallback;
  }
}

}  // namespace lx
