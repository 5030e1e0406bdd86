// Binding epochs. A compiled line remembers what a name meant (a variable's slot, a method,
// a procedure) together with the epoch of the table it looked in; every change to a table's
// names gives that table a new epoch, so a remembered meaning is used only while it still holds.
// Epochs come from one counter for all tables, so no two table states ever share one.
#pragma once

#include <atomic>
#include <cstdint>

namespace lx {

inline uint64_t nextBindingEpoch() noexcept {
  static std::atomic<uint64_t> counter{1};
  return counter.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace lx
