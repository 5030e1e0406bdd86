#include "debug/debug_session.h"

#include <algorithm>

#include "lxbasic/exceptions.h"

namespace lx {

namespace {
// How often a paused script looks for a stop request; a stop wakes no one directly.
constexpr auto kStopPoll = std::chrono::milliseconds(20);
}  // namespace

// ---- breakpoints

int32_t DebugSession::addBreakpoint(int32_t line, UString condition) {
  if (line < 1) throw InvalidArgumentException("addBreakpoint: lines are counted from 1");
  std::lock_guard lock(mutex_);
  Breakpoint b;
  b.id = nextId_++;
  b.line = line;
  b.condition = std::move(condition);
  breakpoints_.push_back(std::move(b));
  breakpointCount_.store(breakpoints_.size());
  return breakpoints_.back().id;
}

bool DebugSession::removeBreakpoint(int32_t id) {
  std::lock_guard lock(mutex_);
  const auto at = std::find_if(breakpoints_.begin(), breakpoints_.end(),
                               [id](const Breakpoint& b) { return b.id == id; });
  if (at == breakpoints_.end()) return false;
  breakpoints_.erase(at);
  breakpointCount_.store(breakpoints_.size());
  return true;
}

void DebugSession::clearBreakpoints() {
  std::lock_guard lock(mutex_);
  breakpoints_.clear();
  breakpointCount_.store(0);
}

std::vector<Breakpoint> DebugSession::breakpoints() const {
  std::lock_guard lock(mutex_);
  return breakpoints_;
}

int32_t DebugSession::breakpointAt(int32_t line, UString* conditionError) {
  UString condition;
  int32_t id = 0;
  {
    std::lock_guard lock(mutex_);
    const auto at = std::find_if(breakpoints_.begin(), breakpoints_.end(),
                                 [line](const Breakpoint& b) { return b.line == line; });
    if (at == breakpoints_.end()) return 0;
    id = at->id;
    condition = at->condition;
  }
  if (!condition.empty() && target_) {
    // The condition runs in the frame about to run the line, as an IF there would.
    const DebugValue v = answer<DebugValue>([&] { return target_->evaluate(condition, 0); });
    if (!v.ok) {
      *conditionError = v.text;
    } else if (!v.value.isNumber() || !v.value.numberUnchecked().toBool()) {
      return 0;
    }
  }
  // Counted by id: the host may have removed or added breakpoints while the condition ran.
  std::lock_guard lock(mutex_);
  for (Breakpoint& b : breakpoints_) {
    if (b.id == id) ++b.hits;
  }
  return id;
}

// ---- settings

void DebugSession::countPausedTime(bool on) {
  std::lock_guard lock(mutex_);
  countPaused_ = on;
}

void DebugSession::setPauseHandler(std::function<void(const PauseEvent&)> handler) {
  std::lock_guard lock(mutex_);
  handler_ = std::move(handler);
}

std::chrono::nanoseconds DebugSession::uncountedTime() const {
  std::lock_guard lock(mutex_);
  Clock::duration total = uncounted_;
  if (paused_ && !countPaused_) total += Clock::now() - pauseStart_;
  return std::chrono::duration_cast<std::chrono::nanoseconds>(total);
}

// ---- runs and lines

void DebugSession::runStarted() {
  std::lock_guard lock(mutex_);
  ended_ = false;
  mode_ = StepMode::Continue;
  errorPaused_ = false;
  uncounted_ = {};
}

void DebugSession::runEnded() {
  {
    std::lock_guard lock(mutex_);
    ended_ = true;
  }
  cv_.notify_all();
}

bool DebugSession::stepEnds(size_t depth) const {
  switch (mode_) {
    case StepMode::Into:
      return true;
    case StepMode::Over:
      return depth <= stepDepth_;
    case StepMode::Out:
      return depth < stepDepth_;
    case StepMode::Continue:
      break;
  }
  return false;
}

bool DebugSession::atLine(int32_t line, size_t depth, bool scriptLine) {
  if (!attached_.load(std::memory_order_relaxed) || answering_) return true;
  errorPaused_ = false;  // a line runs: an earlier error was trapped after all
  PauseEvent event;
  event.line = line;
  if (pauseRequested_.exchange(false)) {
    event.reason = PauseReason::Request;
  } else if (stepEnds(depth)) {
    event.reason = PauseReason::Step;
  } else if (scriptLine && breakpointCount_.load(std::memory_order_relaxed) > 0) {
    event.breakpoint = breakpointAt(line, &event.conditionError);
    if (event.breakpoint == 0) return true;
    event.reason = PauseReason::Breakpoint;
  } else {
    return true;
  }
  return pauseHere(event, depth);
}

void DebugSession::atUntrappedError(int32_t line, size_t depth,
                                    std::shared_ptr<const LxError> error) {
  if (!attached_.load() || !breakOnError_.load() || errorPaused_ || answering_) return;
  errorPaused_ = true;
  PauseEvent event;
  event.reason = PauseReason::Error;
  event.line = line;
  event.error = std::move(error);
  pauseHere(event, depth);
}

bool DebugSession::pauseHere(const PauseEvent& event, size_t depth) {
  std::function<void(const PauseEvent&)> handler;
  {
    std::lock_guard lock(mutex_);
    paused_ = true;
    event_ = event;
    pausedDepth_ = depth;
    scriptThread_ = std::this_thread::get_id();
    pauseStart_ = Clock::now();
    mode_ = StepMode::Continue;
    handler = handler_;
  }
  cv_.notify_all();
  std::unique_lock lock(mutex_, std::defer_lock);
  auto stopped = [this] { return target_ && target_->stopRequested(); };
  if (handler) {
    try {
      handler(event);
    } catch (...) {
      // The run ends with the handler's exception; nobody may be left waiting on the pause.
      lock.lock();
      leavePause();
      finishPause(lock);
      throw;
    }
  }
  lock.lock();
  while (paused_) {
    if (runQueuedQuestion(lock)) continue;
    if (stopped() || !attached_.load()) {
      leavePause();
      break;
    }
    cv_.wait_for(lock, kStopPoll);
  }
  finishPause(lock);
  return !stopped();
}

bool DebugSession::runQueuedQuestion(std::unique_lock<std::mutex>& lock) {
  if (tasks_.empty()) return false;
  auto task = std::move(tasks_.front());
  tasks_.pop_front();
  lock.unlock();
  task();
  lock.lock();
  return true;
}

void DebugSession::finishPause(std::unique_lock<std::mutex>& lock) {
  // Questions that came in as the pause ended are still answered from where it stood.
  while (runQueuedQuestion(lock)) {
  }
  scriptThread_ = {};
}

void DebugSession::leavePause() {
  // Booked at once, so that a watchdog never sees the pause neither running nor booked.
  if (!countPaused_) uncounted_ += Clock::now() - pauseStart_;
  paused_ = false;
}

// ---- the host's side of a pause

std::optional<PauseEvent> DebugSession::waitForPause(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  cv_.wait_for(lock, limit, [this] { return paused_ || ended_; });
  if (paused_) return event_;
  return std::nullopt;
}

bool DebugSession::paused() const {
  std::lock_guard lock(mutex_);
  return paused_;
}

void DebugSession::resume(StepMode mode) {
  {
    std::lock_guard lock(mutex_);
    if (!paused_) return;
    mode_ = mode;
    stepDepth_ = pausedDepth_;
    leavePause();
  }
  cv_.notify_all();
}

void DebugSession::detach() {
  attached_.store(false);
  clearBreakpoints();
  resume(StepMode::Continue);
}

template <class R, class Job>
R DebugSession::answer(Job job) {
  struct Answering {
    bool& flag;
    bool was;
    ~Answering() { flag = was; }
  } answering{answering_, answering_};
  answering_ = true;
  return job();
}

template <class R>
R DebugSession::ask(std::function<R()> job, R none) {
  std::unique_lock lock(mutex_);
  if (!paused_ || !target_) return none;
  if (std::this_thread::get_id() == scriptThread_) {
    lock.unlock();
    return answer<R>(job);
  }
  auto task = std::make_shared<std::packaged_task<R()>>(
      [this, job = std::move(job)] { return answer<R>(job); });
  std::future<R> answer = task->get_future();
  tasks_.emplace_back([task] { (*task)(); });
  lock.unlock();
  cv_.notify_all();
  return answer.get();
}

std::vector<DebugFrame> DebugSession::stack() {
  return ask<std::vector<DebugFrame>>([this] { return target_->stack(); }, {});
}

std::vector<DebugVariable> DebugSession::variables(size_t frame) {
  return ask<std::vector<DebugVariable>>([this, frame] { return target_->variables(frame); }, {});
}

DebugValue DebugSession::evaluate(UStringView expression, size_t frame) {
  DebugValue none;
  none.text = u"the script is not paused";
  UString text(expression);
  return ask<DebugValue>(
      [this, text = std::move(text), frame] { return target_->evaluate(text, frame); }, none);
}

}  // namespace lx
