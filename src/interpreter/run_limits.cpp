// What keeps a run inside its limits: the memory budget of the script tree, the time limit
// on either way of running, a stop request that no later error overwrites, and the single
// active run per script object.
#include <algorithm>
#include <new>
#include <thread>

#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"

namespace lx {

namespace {

bool scriptStopped(const void* script) {
  return static_cast<const ScriptCore*>(script)->stopRequested();
}

// The text of an over-long line as its error shows it.
constexpr size_t kShownLineStart = 80;

}  // namespace

bool ScriptCore::sourceFits(const LxBasicStringList& source) {
  size_t units = 0;
  for (size_t i = 0; i < source.count(); ++i) {
    const UString& line = source.stringAtIndex(i);
    units += line.size();
    if (line.size() > kMaxLineLength) {
      refuseLongLine(line, i);
      return false;
    }
  }
  try {
    // The prepared lines and their per-line records hold the text about twice over.
    if (const BudgetRef& budget = currentBudget()) {
      budget->checkRoom(static_cast<int64_t>(units) * 4);
    }
  } catch (const OutOfScriptMemory&) {
    setError(LxError::make(kOutOfMemory));
    return false;
  }
  return true;
}

void ScriptCore::refuseLongLine(const UString& line, size_t index) {
  UString shown = line.substr(0, kShownLineStart) + u"...";
  setError(LxError::errorWithCode(kLineTooLong, errorMessage(kLineTooLong), std::move(shown),
                                  static_cast<int32_t>(index) + 1));
}

void ScriptCore::cancel() {
  std::lock_guard lock(errorMutex_);
  // Kept for a run that is starting or about to start; an active run also stops at once.
  cancelPending_ = true;
  if (running()) stopWithRecord(LxError::make(kCorrectExit));
}

void ScriptCore::requestStop(ErrorRef reason) {
  std::lock_guard lock(errorMutex_);
  stopWithRecord(std::move(reason));
}

void ScriptCore::stopWithRecord(ErrorRef reason) {
  _error = std::move(reason);
  errorSet_.store(true, std::memory_order_release);
  stopSticky_ = true;
  shared_->raiseStop();
}

bool ScriptCore::claimRun() {
  int32_t idle = 0;
  return _running.compare_exchange_strong(idle, 1);
}

void ScriptCore::endRun() {
  {
    // A cancel that reached this run was honoured by it; it does not carry to the next. Both
    // change under the lock a cancel takes, so it sees the run either active or ended.
    std::lock_guard lock(errorMutex_);
    cancelPending_ = false;
    if (isRoot()) endDebugging();
    std::lock_guard finished(finishedMutex_);
    _running.store(0);
  }
  finishedCv_.notify_all();
}

bool ScriptCore::waitUntilFinished(std::chrono::milliseconds limit) const {
  std::unique_lock lock(finishedMutex_);
  return finishedCv_.wait_for(lock, limit, [this] { return _running.load() == 0; });
}

RunLimits ScriptCore::runLimits() const {
  return RunLimits{shared_->budget(), &scriptStopped, this};
}

void ScriptCore::setTimeLimit(int64_t milliseconds) {
  if (running()) return;
  const int64_t seconds = milliseconds < 0 ? -1 : (milliseconds + 999) / 1000;
  shared_->setTimeLimit(milliseconds < 0 ? -1 : milliseconds,
                        static_cast<int32_t>(std::min<int64_t>(seconds, INT32_MAX)));
}

void ScriptCore::setMemoryLimit(int64_t bytes) {
  if (!running()) shared_->budget()->setLimit(bytes);
}

int64_t ScriptCore::memoryLimit() const noexcept {
  const int64_t limit = shared_->budget()->limit();
  return limit == INT64_MAX ? 0 : limit;
}

void ScriptCore::setCreatableClasses(std::vector<std::string> names) {
  if (!running()) shared_->setCreatableClasses(std::move(names));
}

std::shared_ptr<const LxError> ScriptCore::errorSnapshot() const {
  ErrorRef current = error();
  return current ? current->snapshot() : nullptr;
}

// A time limit for a run on the calling thread: a sleeping thread that requests the stop.
namespace {

// The watchdog's thread waits here. Started from a function of this file alone, so that the
// thread's bookkeeping types stay inside the library instead of being exported with it.
struct WatchState {
  std::mutex mutex;
  std::condition_variable cv;
  bool done = false;
};

std::thread startWatch(WatchState& state, ScriptCore& script, std::chrono::milliseconds span,
                       void (*timeOut)(ScriptCore&)) {
  return std::thread([&state, &script, span, timeOut] {
    std::unique_lock lock(state.mutex);
    if (!waitWithinLimit(script.shared(), state.cv, lock, span, [&state] { return state.done; })) {
      timeOut(script);
    }
  });
}

}  // namespace

class ScriptCore::Watchdog {
 public:
  explicit Watchdog(ScriptCore& script) {
    const int64_t ms = script.isRoot() ? script.timeLimit() : -1;
    if (ms < 0) return;
    thread_ = startWatch(state_, script, std::chrono::milliseconds(std::max<int64_t>(10, ms)),
                         [](ScriptCore& s) { s.requestStop(LxError::make(kTimeout)); });
  }
  ~Watchdog() {
    if (!thread_.joinable()) return;
    {
      std::lock_guard lock(state_.mutex);
      state_.done = true;
    }
    state_.cv.notify_all();
    thread_.join();
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  WatchState state_;
  std::thread thread_;
};

Variant ScriptCore::runWatched(const Variant& argument) {
  Watchdog watchdog(*this);
  return runBody(argument);
}

}  // namespace lx
