// Memory a script may hold. Every script tree (a script with its procedure and Eval runs)
// shares one budget; the driver makes it current on each thread that runs the tree's lines,
// and the places where a script grows memory (texts, arrays, the prepared source) charge it.
// Going over the limit throws OutOfScriptMemory, which no built-in's guard swallows: the
// driver turns it into the script error "Out of memory" for the line.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "lxbasic/exceptions.h"
#include "lxbasic/variant.h"

namespace lx {

class OutOfScriptMemory : public Exception {
 public:
  OutOfScriptMemory() : OutOfScriptMemory("the script's memory limit is reached") {}
  explicit OutOfScriptMemory(const std::string& reason) : Exception("OutOfMemory", reason) {}
};

// The most elements one array of a script may have, and the most one declaration may make
// in all its lists together: no script needs more, and a typo such as DIM a(2000000000) must
// not take the host's memory. Past it a script gets error 36 "Out of memory" for its line.
inline constexpr int64_t kMaxArrayElements = int64_t{1} << 24;
// Throws OutOfScriptMemory when `elements` is past kMaxArrayElements.
void checkArrayElements(int64_t elements);

// A stop request (terminate, time limit) seen inside a long operation: it unwinds the line.
class ScriptStopped : public Exception {
 public:
  ScriptStopped() : Exception("Stopped", "the run was asked to stop") {}
};

class MemoryBudget {
 public:
  // No limit is a limit of INT64_MAX; 0 and below also mean none.
  explicit MemoryBudget(int64_t limit = 0) { setLimit(limit); }
  void setLimit(int64_t bytes) noexcept { limit_.store(bytes > 0 ? bytes : INT64_MAX); }
  int64_t limit() const noexcept { return limit_.load(); }
  int64_t used() const noexcept { return used_.load(); }

  // Adds `bytes` to what the script holds; throws OutOfScriptMemory (charging nothing) when
  // that would pass the limit.
  void charge(int64_t bytes);
  // Adds without a check, for small things whose refusal would do more harm than good.
  void count(int64_t bytes) noexcept { used_.fetch_add(bytes, std::memory_order_relaxed); }
  void release(int64_t bytes) noexcept { used_.fetch_sub(bytes, std::memory_order_relaxed); }

  // Lists charged to this budget are remembered, so that lists that contain themselves can
  // be broken apart when their script goes away (nothing else would ever free them).
  void remember(const std::shared_ptr<Array>& array);
  // Empties every element through which a remembered list reaches itself again.
  void breakCycles();
  // Throws OutOfScriptMemory when a buffer of `bytes` more would not fit; charges nothing.
  void checkRoom(int64_t bytes) const;

 private:
  std::atomic<int64_t> limit_{INT64_MAX};
  std::atomic<int64_t> used_{0};
  std::mutex arraysMutex_;
  std::vector<std::weak_ptr<Array>> arrays_;
  size_t pruneAt_ = 1024;
};
using BudgetRef = std::shared_ptr<MemoryBudget>;

// The budget of the script tree whose line runs on this thread, or nullptr outside runs.
const BudgetRef& currentBudget() noexcept;
// A stop poll for long loops outside the driver; set together with the budget.
bool currentRunStopped() noexcept;

// What a run's lines are held to: its budget and how to ask whether it was told to stop.
struct RunLimits {
  BudgetRef budget;
  bool (*stopped)(const void*) = nullptr;
  const void* context = nullptr;
};
RunLimits currentLimits();

// Makes a run's limits current on this thread for its lifetime.
class BudgetScope {
 public:
  explicit BudgetScope(RunLimits limits);
  ~BudgetScope();
  BudgetScope(const BudgetScope&) = delete;
  BudgetScope& operator=(const BudgetScope&) = delete;

 private:
  RunLimits previous_;
};

// For texts under construction (Join, Replace, the text of arrays): throws when a text of
// `units` UTF-16 code units would not fit the current budget, and ScriptStopped when the run
// was asked to stop. Cheap enough to call on every append.
void chargeTextGrowth(size_t units);
// Throws ScriptStopped when the current run was asked to stop.
void pollStop();
// For catch-all handlers that answer a fallback: rethrows the exception being handled when it
// is a limit (memory, stop, the platform's own out-of-memory); returns otherwise.
void rethrowIfLimit();

// What one array element costs: its place in the list and its variable slot.
inline constexpr int64_t kElementCost = 112;
// What a string costs beyond its code units.
inline constexpr int64_t kStringOverhead = 48;

}  // namespace lx
