// Runs a script with RESULT declared on the compiled lines and on the reference evaluator,
// each in a fresh script object, and checks that both end alike.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/run.h"

namespace lxtest {

struct ModeRun {
  std::u16string text;
  int32_t kind;
  int32_t code;
  std::string description;
};

inline ModeRun runInMode(std::u16string_view script, bool reference) {
  lx::LxBasicScript s;
  s.setReferenceEvaluator(reference);
  Outcome o = run(s, std::u16string(u"DIM RESULT\n") + std::u16string(script));
  return {o.text(), static_cast<int32_t>(o.result.kind()), o.code(), o.description()};
}

// Both modes agree on RESULT (text and kind) and the error; answers the compiled run.
inline ModeRun same(std::u16string_view script) {
  ModeRun fast = runInMode(script, false);
  ModeRun slow = runInMode(script, true);
  const std::string shown = lx::toUtf8(std::u16string(script));
  EXPECT_EQ(fast.text, slow.text) << shown;
  EXPECT_EQ(fast.kind, slow.kind) << shown;
  EXPECT_EQ(fast.code, slow.code) << shown;
  EXPECT_EQ(fast.description, slow.description) << shown;
  return fast;
}

}  // namespace lxtest
