// Keeps the debugger's list of active bodies in step with the bodies the driver runs: one
// entry for as long as a main script, procedure call or Eval runs its lines.
#pragma once

#include "interpreter/debug_bodies.h"
#include "interpreter/script_core.h"

namespace lx {

class ScriptCore::DebugBodyScope {
 public:
  explicit DebugBodyScope(ScriptCore& script) : bodies_(script.shared_->debugBodies()) {
    if (bodies_) bodies_->push(script, script.evaluating_);
  }
  ~DebugBodyScope() {
    if (bodies_) bodies_->pop();
  }
  DebugBodyScope(const DebugBodyScope&) = delete;
  DebugBodyScope& operator=(const DebugBodyScope&) = delete;

 private:
  DebugBodies* bodies_;
};

}  // namespace lx
