// Conditions that their compiled form decides without making a value.
#pragma once

#include "compiler/line_code.h"
#include "interpreter/script_core.h"

namespace lx {

// A condition that its compiled form can decide without making its value (a chain of
// comparisons, which answers 0 or 1): false when it must be evaluated instead (also on the
// reference evaluator); otherwise `failed` says that the evaluation ended on the way (where
// evaluateText answers false) and `truth` is the condition's truth. Inlined: IF, WHILE, WEND,
// DO and LOOP ask it on every pass.
inline bool decideCondition(ScriptCore& script, const compiled::Expression* code, bool& failed,
                            bool& truth) {
  if (!code || !script.currentCode()) return false;
  using Truth = compiled::Expression::Truth;
  const Truth t = code->truth(script);
  if (t == Truth::Other) return false;
  failed = t == Truth::Failed;
  truth = t == Truth::True;
  return true;
}

}  // namespace lx
