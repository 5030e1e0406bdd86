#include "foundation/memory_budget.h"

#include <new>
#include <utility>

namespace lx {

namespace {

RunLimits& current() noexcept {
  // Initial-exec: read on every operator, it must not go through the dynamic TLS lookup.
  thread_local RunLimits run __attribute__((tls_model("initial-exec")));
  return run;
}

}  // namespace

void MemoryBudget::charge(int64_t bytes) {
  const int64_t before = used_.fetch_add(bytes, std::memory_order_relaxed);
  if (bytes > 0 && before + bytes > limit_.load(std::memory_order_relaxed)) {
    used_.fetch_sub(bytes, std::memory_order_relaxed);
    throw OutOfScriptMemory();
  }
}

void MemoryBudget::checkRoom(int64_t bytes) const {
  if (used_.load(std::memory_order_relaxed) + bytes > limit_.load(std::memory_order_relaxed)) {
    throw OutOfScriptMemory();
  }
}

const BudgetRef& currentBudget() noexcept {
  return current().budget;
}

bool currentRunStopped() noexcept {
  const RunLimits& run = current();
  return run.stopped && run.stopped(run.context);
}

RunLimits currentLimits() {
  return current();
}

BudgetScope::BudgetScope(RunLimits limits)
    : previous_(std::exchange(current(), std::move(limits))) {}

BudgetScope::~BudgetScope() {
  current() = std::move(previous_);
}

void chargeTextGrowth(size_t units) {
  if (currentRunStopped()) throw ScriptStopped();
  if (const BudgetRef& budget = currentBudget()) {
    budget->checkRoom(static_cast<int64_t>(units) * 2);
  }
}

void pollStop() {
  if (currentRunStopped()) throw ScriptStopped();
}

void rethrowIfLimit() {
  try {
    throw;
  } catch (const OutOfScriptMemory&) {
    throw;
  } catch (const ScriptStopped&) {
    throw;
  } catch (const std::bad_alloc&) {
    throw;
  } catch (...) {
  }
}

}  // namespace lx
