// Runs script text on the calling thread and keeps what the host would look at.
#pragma once

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace lxtest {

struct Outcome {
  lx::Variant result;
  lx::ErrorRef error;
  int32_t code() const { return error ? error->code() : 0; }
  std::u16string text() const { return lx::toText(result); }
  std::string description() const { return error ? lx::toUtf8(error->description()) : ""; }
};

inline Outcome run(lx::LxBasicScript& script, std::u16string_view text) {
  script.setScript(text);
  Outcome o;
  o.result = script.runScript();
  o.error = script.error();
  return o;
}

// A fresh script with RESULT declared, so that tests read like the line they check.
inline Outcome run(std::u16string_view text) {
  lx::LxBasicScript script;
  std::u16string full = u"DIM RESULT\n";
  full += text;
  return run(script, full);
}

// One row of a table: a script text and the text its RESULT must have.
struct TextCase {
  std::u16string_view script;
  std::u16string_view text;
};

// Runs every row through `runner` (text -> Outcome) and checks that it went well and gave the
// row's text.
template <class Runner>
void expectTexts(std::span<const TextCase> cases, Runner runner) {
  for (const TextCase& c : cases) {
    Outcome o = runner(c.script);
    EXPECT_EQ(o.code(), 0) << lx::toUtf8(c.script) << ": " << o.description();
    EXPECT_EQ(o.text(), c.text) << lx::toUtf8(c.script);
  }
}

}  // namespace lxtest
