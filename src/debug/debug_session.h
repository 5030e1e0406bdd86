// One debugger's state: its breakpoints, the step a paused script was resumed with, and the
// pause itself. The script's thread reports each line and each untrapped error here and waits
// here while paused; the host's threads set breakpoints, resume, and have their questions
// about the paused script carried out on the script's thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "debug/debug_target.h"
#include "lxbasic/debug.h"

namespace lx {

class DebugSession {
 public:
  DebugSession() = default;
  DebugSession(const DebugSession&) = delete;
  DebugSession& operator=(const DebugSession&) = delete;

  // ---- the host's side (any thread)
  int32_t addBreakpoint(int32_t line, UString condition);
  bool removeBreakpoint(int32_t id);
  void clearBreakpoints();
  std::vector<Breakpoint> breakpoints() const;
  void breakOnError(bool on) { breakOnError_.store(on); }
  void countPausedTime(bool on);
  void requestPause() { pauseRequested_.store(true); }
  void setPauseHandler(std::function<void(const PauseEvent&)> handler);
  std::optional<PauseEvent> waitForPause(std::chrono::milliseconds limit);
  bool paused() const;
  void resume(StepMode mode);
  std::vector<DebugFrame> stack();
  std::vector<DebugVariable> variables(size_t frame);
  DebugValue evaluate(UStringView expression, size_t frame);
  // No more pauses: a paused script goes on, breakpoints are dropped.
  void detach();
  bool attached() const noexcept { return attached_.load(); }

  // ---- the script's side (its own thread)
  void setTarget(DebugTarget* target) noexcept { target_ = target; }
  void runStarted();
  void runEnded();
  // Before a line of a body `depth` deep (1: the main script or the body a host called).
  // `line` is 1-based; `scriptLine` says whether it is a line of the script text (Eval's lines
  // are not). False when a stop request ended a pause: the run must end.
  bool atLine(int32_t line, size_t depth, bool scriptLine);
  // An error that no ON ERROR traps is about to end the run.
  void atUntrappedError(int32_t line, size_t depth, std::shared_ptr<const LxError> error);
  // Paused time that the time limit must not count.
  std::chrono::nanoseconds uncountedTime() const;

 private:
  using Clock = std::chrono::steady_clock;
  // Waits until resumed (or stopped), carrying out the host's questions meanwhile.
  bool pauseHere(const PauseEvent& event, size_t depth);
  // Runs the oldest question another thread queued, if any; called with the lock held.
  bool runQueuedQuestion(std::unique_lock<std::mutex>& lock);
  // Answers the questions still queued; called with the lock held.
  void finishPause(std::unique_lock<std::mutex>& lock);
  // Ends the pause and books its time; called with the lock held.
  void leavePause();
  bool stepEnds(size_t depth) const;
  // The breakpoint that pauses this line, its hit counted: its id, or 0 for none.
  int32_t breakpointAt(int32_t line, UString* conditionError);
  // Runs `job` on the script's thread with pauses held off (see answering_).
  template <class R, class Job>
  R answer(Job job);
  // Runs `job` on the script's thread while it is paused; `none` when it is not.
  template <class R>
  R ask(std::function<R()> job, R none);

  mutable std::mutex mutex_;
  std::condition_variable cv_;
  DebugTarget* target_ = nullptr;
  std::atomic<bool> attached_{true};
  std::atomic<bool> pauseRequested_{false};
  std::atomic<bool> breakOnError_{false};
  std::atomic<size_t> breakpointCount_{0};
  std::vector<Breakpoint> breakpoints_;
  int32_t nextId_ = 1;
  std::function<void(const PauseEvent&)> handler_;

  // Written by resume() while the script waits, read by the script after the wait.
  StepMode mode_ = StepMode::Continue;
  size_t stepDepth_ = 0;
  bool errorPaused_ = false;  // paused for an error already: no pause for its propagation
  // The script's thread is answering a question (or a breakpoint's condition): the lines
  // and errors of what that evaluation calls do not pause, or nobody could resume them.
  bool answering_ = false;

  bool paused_ = false;
  bool ended_ = false;
  PauseEvent event_;
  size_t pausedDepth_ = 0;
  std::thread::id scriptThread_;
  std::deque<std::function<void()>> tasks_;
  bool countPaused_ = true;
  Clock::time_point pauseStart_;
  Clock::duration uncounted_{};
};

}  // namespace lx
