#include "interpreter/shared_state.h"

#include <algorithm>
#include <chrono>

#include "debug/debug_session.h"
#include "interpreter/debug_bodies.h"

namespace lx {

SharedState::SharedState(ScriptCore& root)
    : root_(root), budget_(std::make_shared<MemoryBudget>()) {}

SharedState::~SharedState() = default;

void SharedState::setLineHook(LineHook hook) {
  lineHook_ = std::move(hook);
  watchesLines_ = lineHook_ || debugger_;
}

void SharedState::setDebugger(std::shared_ptr<DebugSession> session) {
  if (debugger_) debugger_->setTarget(nullptr);
  debugger_ = std::move(session);
  debugBodies_ = debugger_ ? std::make_unique<DebugBodies>(*this) : nullptr;
  if (debugger_) debugger_->setTarget(debugBodies_.get());
  watchesLines_ = lineHook_ || debugger_;
}

std::chrono::nanoseconds SharedState::uncountedTime() const {
  return debugger_ ? debugger_->uncountedTime() : std::chrono::nanoseconds(0);
}

void SharedState::raiseStop() {
  stop_.store(true);
  {
    // Taken so that a sleeper between its check of the flag and its wait still wakes.
    std::lock_guard lock(stopMutex_);
  }
  stopCv_.notify_all();
}

bool SharedState::interruptibleSleep(double seconds) const {
  std::unique_lock lock(stopMutex_);
  auto duration = std::chrono::duration<double>(seconds);
  return !stopCv_.wait_for(lock, duration, [this] { return stopRequested(); });
}

bool SharedState::mayCreate(std::string_view className) const {
  return creatable_.empty() ||
         std::find(creatable_.begin(), creatable_.end(), className) != creatable_.end();
}

void SharedState::noteFallback(int32_t scriptLine, std::string reason) {
  std::lock_guard lock(statsMutex_);
  if (stats_.fallbacks.size() < 100) stats_.fallbacks.emplace_back(scriptLine, std::move(reason));
}

SharedState::ExecutionStats SharedState::executionStats() const {
  std::lock_guard lock(statsMutex_);
  ExecutionStats stats = stats_;
  stats.compiledLines = compiledLines_.load(std::memory_order_relaxed);
  stats.referenceLines = referenceLines_.load(std::memory_order_relaxed);
  return stats;
}

void SharedState::noteSwallowed(std::exception_ptr e) {
  std::lock_guard lock(swallowedMutex_);
  if (!swallowed_) swallowed_ = std::move(e);
  hasSwallowed_.store(true);
}

std::exception_ptr SharedState::swallowed() const {
  std::lock_guard lock(swallowedMutex_);
  return swallowed_;
}

void SharedState::clearSwallowed() {
  if (!hasSwallowed_.load()) return;  // the common case takes no lock
  std::lock_guard lock(swallowedMutex_);
  swallowed_ = nullptr;
  hasSwallowed_.store(false);
}

}  // namespace lx
