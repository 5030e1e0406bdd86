// The bodies a debugger can see: one entry per active main script, procedure call and Eval,
// innermost last, kept only while a debugger is attached. It answers the debugging session's
// questions about them (see debug/debug_target.h) on the script's thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "debug/debug_target.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptCore;
class SharedState;

class DebugBodies final : public DebugTarget {
 public:
  explicit DebugBodies(const SharedState& shared) : shared_(shared) {}

  void push(ScriptCore& script, bool eval) { bodies_.push_back(Body{&script, eval, 0, {}}); }
  void pop() noexcept { bodies_.pop_back(); }
  // The innermost body is at `line` (1-based), running `text`.
  void at(int32_t line, const UString& text) {
    bodies_.back().line = line;
    bodies_.back().text = text;
  }
  size_t depth() const noexcept { return bodies_.size(); }
  // Whether an error of the innermost body would be trapped by an ON ERROR of a body that is
  // waiting for it (the innermost one's own has been applied already).
  bool callerTraps() const;

  std::vector<DebugFrame> stack() override;
  std::vector<DebugVariable> variables(size_t frame) override;
  DebugValue evaluate(UStringView expression, size_t frame) override;
  bool stopRequested() const override;

 private:
  struct Body {
    ScriptCore* script;
    bool eval;
    int32_t line;
    UString text;
  };
  // Frame `frame` of stack() (0: the innermost), or nullptr.
  const Body* frameAt(size_t frame) const;

  const SharedState& shared_;
  std::vector<Body> bodies_;
};

// A value as the debugger shows it: its kind's name and its text cut to kDebugValueText.
DebugVariable describeValue(UString name, const Variant& value, bool constant);

}  // namespace lx
