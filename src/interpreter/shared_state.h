// What every script of one tree shares: the host's script (the root), the scripts its
// procedure calls run in, and the lines Eval runs. Each of them holds the record and reaches
// it in one hop, so nothing walks from a procedure's script up to the root to find a limit,
// a stop request or the procedure table.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "foundation/memory_budget.h"
#include "lxbasic/script.h"

namespace lx {

class DebugBodies;
class DebugSession;
class DialogProvider;
class LxBasicSubs;
class ScriptCore;

class SharedState {
 public:
  using LineHook = std::function<bool(int32_t line, int32_t depth)>;
  using ExecutionStats = LxBasicScript::ExecutionStats;

  explicit SharedState(ScriptCore& root);
  ~SharedState();
  SharedState(const SharedState&) = delete;
  SharedState& operator=(const SharedState&) = delete;

  // The host's script: its variables are the ones an assignment inside a procedure falls
  // back to, and its error record is where a stop request leaves its reason.
  ScriptCore& root() const noexcept { return root_; }

  // ---- the procedure table, replaced as a whole when the host restarts the script
  const std::shared_ptr<LxBasicSubs>& procedures() const noexcept { return procedures_; }
  void setProcedures(std::shared_ptr<LxBasicSubs> table) noexcept {
    procedures_ = std::move(table);
  }

  // ---- the stop request (terminate, the time limit, a line hook answering false)
  bool stopRequested() const noexcept { return stop_.load(std::memory_order_relaxed); }
  // Raises the flag and wakes every sleeper; the caller has set the stop's error first.
  void raiseStop();
  // Lowers it for a new run; callers hold the root's error lock, under which it was raised.
  void clearStop() noexcept { stop_.store(false); }
  // Sleeps up to `seconds`, waking early when a stop is requested; answers false then.
  bool interruptibleSleep(double seconds) const;

  // ---- limits the host set on the root script
  const BudgetRef& budget() const noexcept { return budget_; }
  int64_t timeLimitMs() const noexcept { return timeLimitMs_.load(); }
  int32_t timeoutSeconds() const noexcept { return timeout_.load(); }
  void setTimeLimit(int64_t milliseconds, int32_t seconds) noexcept {
    timeLimitMs_.store(milliseconds);
    timeout_.store(seconds);
  }
  void setCreatableClasses(std::vector<std::string> names) { creatable_ = std::move(names); }
  bool mayCreate(std::string_view className) const;

  // ---- call depth: procedure calls, and host calls made from inside a procedure
  int32_t callDepth() const noexcept { return callDepth_.load(std::memory_order_relaxed); }
  void enterCall() noexcept { callDepth_.fetch_add(1, std::memory_order_relaxed); }
  void leaveCall() noexcept { callDepth_.fetch_sub(1, std::memory_order_relaxed); }
  void resetCallDepth() noexcept { callDepth_.store(0); }
  // Eval runs active in the tree (see kMaxEvalNesting).
  int32_t& evalNesting() noexcept { return evalNesting_; }

  // ---- the host's choices for every script of the tree
  bool referenceEvaluator() const noexcept { return referenceEvaluator_.load(); }
  void setReferenceEvaluator(bool on) noexcept { referenceEvaluator_.store(on); }
  // nullptr when there is none.
  const LineHook* lineHook() const noexcept { return lineHook_ ? &lineHook_ : nullptr; }
  void setLineHook(LineHook hook);
  // A debugger the host attached, and the bodies it sees (nullptr for both when none).
  DebugSession* debugger() const noexcept { return debugger_.get(); }
  DebugBodies* debugBodies() const noexcept { return debugBodies_.get(); }
  void setDebugger(std::shared_ptr<DebugSession> session);
  // Whether each line is reported to the line hook or a debugger: one test per line.
  bool watchesLines() const noexcept { return watchesLines_; }
  // Time a paused run spent that the time limit does not count.
  std::chrono::nanoseconds uncountedTime() const;
  // nullptr: the default windows.
  const std::shared_ptr<DialogProvider>& dialogs() const noexcept { return dialogs_; }
  void setDialogs(std::shared_ptr<DialogProvider> p) noexcept { dialogs_ = std::move(p); }

  // ---- counters: lines run in each mode, and why lines fell back to the reference evaluator
  void countLines(uint64_t compiled, uint64_t reference) noexcept {
    compiledLines_.fetch_add(compiled, std::memory_order_relaxed);
    referenceLines_.fetch_add(reference, std::memory_order_relaxed);
  }
  void noteFallback(int32_t scriptLine, std::string reason);
  ExecutionStats executionStats() const;

  // ---- the first exception that a procedure's run ended with and dropped, as the language
  // has it: the script goes on, but the host can learn of it from the run's outcome
  void noteSwallowed(std::exception_ptr e);
  std::exception_ptr swallowed() const;
  void clearSwallowed();

 private:
  ScriptCore& root_;
  std::shared_ptr<LxBasicSubs> procedures_;
  std::atomic<bool> stop_{false};
  mutable std::mutex stopMutex_;
  mutable std::condition_variable stopCv_;
  BudgetRef budget_;
  std::atomic<int64_t> timeLimitMs_{-1};
  std::atomic<int32_t> timeout_{-1};
  std::vector<std::string> creatable_;
  std::atomic<int32_t> callDepth_{0};
  int32_t evalNesting_ = 0;
  std::atomic<bool> referenceEvaluator_{false};
  LineHook lineHook_;
  std::shared_ptr<DebugSession> debugger_;
  std::unique_ptr<DebugBodies> debugBodies_;
  bool watchesLines_ = false;
  std::shared_ptr<DialogProvider> dialogs_;
  mutable std::mutex statsMutex_;
  ExecutionStats stats_;  // the fallbacks; the counts are kept apart, counted without a lock
  std::atomic<uint64_t> compiledLines_{0};
  std::atomic<uint64_t> referenceLines_{0};
  mutable std::mutex swallowedMutex_;
  std::exception_ptr swallowed_;
  std::atomic<bool> hasSwallowed_{false};
};

// Waits on `cv` until `done` holds (answers true) or a run of the tree has spent `limit`
// (answers false); time that a debugger keeps uncounted moves the end.
template <class Done>
bool waitWithinLimit(const SharedState& shared, std::condition_variable& cv,
                     std::unique_lock<std::mutex>& lock, std::chrono::nanoseconds limit,
                     Done done) {
  const auto start = std::chrono::steady_clock::now();
  for (;;) {
    const auto end = start + limit + shared.uncountedTime();
    if (cv.wait_until(lock, end, done)) return true;
    if (std::chrono::steady_clock::now() >= start + limit + shared.uncountedTime()) return false;
  }
}

}  // namespace lx
