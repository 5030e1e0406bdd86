// Keeps the debugger's list of active bodies in step with the bodies the driver runs: one
// entry for as long as a main script, procedure call or Eval runs its lines.
#pragma once

#include "interpreter/debug_bodies.h"
#include "interpreter/script_core.h"

namespace lx {

class ScriptCore::DebugBodyScope {
 public:
  DebugBodyScope() = default;
  ~DebugBodyScope() {
    if (bodies_) bodies_->pop();
  }
  DebugBodyScope(const DebugBodyScope&) = delete;
  DebugBodyScope& operator=(const DebugBodyScope&) = delete;

  // Entered at the body's first watched line, so that a run without a debugger pays nothing
  // on entering and leaving a body but this object's test.
  void enter(ScriptCore& script) {
    if (bodies_) return;
    bodies_ = script.shared_->debugBodies();
    if (bodies_) bodies_->push(script, script.evaluating_);
  }

 private:
  DebugBodies* bodies_ = nullptr;
};

}  // namespace lx
