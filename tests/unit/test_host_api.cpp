// The host's extensions of the script object: outcomes, restart, calls into the script and
// the line hook.
#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "support/run.h"

namespace {

class Thrower : public lx::Object {};

void registerThrower() {
  static bool done = false;
  if (done) return;
  done = true;
  lx::ClassBuilder<Thrower>("Thrower").method(
      "Boom", [](Thrower&) -> int { throw std::runtime_error("boom"); });
}

const char16_t* const kProcedures =
    u"DIM total = 0\n"
    u"FUNCTION Add(a, b)\n"
    u"  Add = a + b\n"
    u"END FUNCTION\n"
    u"SUB Bump(n)\n"
    u"  total = n\n"
    u"END SUB\n"
    u"FUNCTION Broken(x)\n"
    u"  Broken = missing + x\n"
    u"END FUNCTION\n"
    u"FUNCTION Early()\n"
    u"  Early = 1\n"
    u"  EXIT\n"
    u"  Early = 2\n"
    u"END FUNCTION\n";

}  // namespace

TEST(Outcome, SignalsAreSuccessesAndErrorsAndExceptionsAreFailures) {
  struct Case {
    std::u16string_view text;
    bool succeeded;
  };
  const Case cases[] = {
      {u"DIM RESULT = 1", true},
      {u"DIM RESULT = 1\nEXIT\nRESULT = 2", true},  // error -1 "Correct exit" stays set
      {u"FOR i = 1 TO 3\nEXIT FOR\nNEXT", true},    // -2, cleared by the loop
      {u"DIM RESULT = nosuch", false},
      {u"ON ERROR RESUME NEXT\nDIM x = nosuch", false},  // tolerated, but still the last error
  };
  for (const Case& c : cases) {
    lx::LxBasicScript script;
    script.setScript(c.text);
    script.run();
    EXPECT_EQ(script.succeeded(), c.succeeded) << lx::toUtf8(c.text);
    EXPECT_EQ(script.failed(), !c.succeeded) << lx::toUtf8(c.text);
  }

  registerThrower();
  lx::LxBasicScript script;
  script.addObj(std::make_shared<Thrower>());
  script.setScript("Boom");
  script.run();  // the exception is kept, not thrown
  EXPECT_TRUE(script.failed());
  script.setScript("DIM RESULT = 1");
  script.runScript();
  EXPECT_TRUE(script.succeeded());  // a later good run is not blamed for the old exception
}

TEST(Restart, ReturnsTheObjectToItsFirstState) {
  lx::LxBasicScript script;
  script.setScript(kProcedures);
  script.runScript();
  ASSERT_TRUE(script.succeeded()) << lxtest::Outcome{{}, script.error()}.description();

  // reset keeps its classic meaning: the library is gone and procedures stay.
  script.reset();
  auto afterReset = lxtest::run(script, u"DIM RESULT = Len(\"abc\")");
  EXPECT_EQ(afterReset.code(), 5);
  EXPECT_EQ(lxtest::run(script, kProcedures).code(), 17);

  script.restart();
  EXPECT_EQ(script.objCount(), 1);
  EXPECT_EQ(lxtest::run(script, u"DIM RESULT = Len(\"abc\") & vbYes & true").text(), u"361");
  script.restart();
  auto again = lxtest::run(script, kProcedures);
  EXPECT_EQ(again.code(), 0) << again.description();
  EXPECT_EQ(lx::toText(script.valueOf(u"total")), u"0");

  // A definition left open swallows everything after it until a restart.
  script.restart();
  lxtest::run(script, u"SUB Open()\nDIM x = 1");
  script.restart();
  EXPECT_EQ(lxtest::run(script, u"DIM RESULT = 5").text(), u"5");
}

TEST(Call, RunsAScriptProcedureAndAnswersItsResultOrError) {
  lx::LxBasicScript script;
  script.setScript(kProcedures);
  script.runScript();

  EXPECT_EQ(lx::toText(script.call(u"add", {lx::Variant::int32(2), lx::Variant::int32(3)})), u"5");
  EXPECT_TRUE(script.succeeded());
  std::vector<lx::Variant> args{lx::Variant::int32(4)};
  EXPECT_TRUE(script.call(u"Bump", args).isEmpty());
  EXPECT_EQ(lx::toText(script.valueOf(u"total")), u"4");  // the SUB set the script's variable
  EXPECT_EQ(lx::toText(script.call(u"Early")), u"1");
  EXPECT_TRUE(script.succeeded());

  struct Failure {
    std::u16string_view name;
    size_t argc;
    int32_t code;
    std::u16string_view desc;
  };
  const Failure failures[] = {
      {u"NoSuch", 0, 5, u"Function \"NoSuch\" not found"},
      {u"Add", 1, 12, u"Wrong number of arguments"},
      {u"Broken", 1, 3, u"Variable \"missing\" not found"},
  };
  for (const Failure& f : failures) {
    std::vector<lx::Variant> given(f.argc, lx::Variant::int32(1));
    EXPECT_TRUE(script.call(f.name, given).isEmpty()) << lx::toUtf8(f.name);
    ASSERT_TRUE(script.failed()) << lx::toUtf8(f.name);
    EXPECT_EQ(script.error()->code(), f.code) << lx::toUtf8(f.name);
    EXPECT_EQ(script.error()->desc(), f.desc) << lx::toUtf8(f.name);
  }
  EXPECT_FALSE(script.running());
}

using SeenLines = std::vector<std::pair<int32_t, int32_t>>;

// Sets a hook that records each line and depth it is called with.
void recordLines(lx::LxBasicScript& script, SeenLines& seen) {
  script.setLineHook([&seen](int32_t line, int32_t depth) {
    seen.emplace_back(line, depth);
    return true;
  });
}

TEST(LineHook, SeesEveryExecutedLineWithItsDepth) {
  lx::LxBasicScript script;
  SeenLines seen;
  recordLines(script, seen);
  script.setScript(
      u"FUNCTION Twice(n)\n"    // 1
      u"  Twice = n * 2\n"      // 2
      u"END FUNCTION\n"         // 3
      u"REM not executed\n"     // 4
      u"\n"                     // 5
      u"DIM RESULT = Twice(4)"  // 6
  );
  EXPECT_EQ(lx::toText(script.runScript()), u"8");
  const std::vector<std::pair<int32_t, int32_t>> expected = {
      {1, 0}, {2, 0}, {3, 0}, {6, 0}, {2, 1}};
  EXPECT_EQ(seen, expected);

  // An empty hook removes it.
  seen.clear();
  script.setLineHook(nullptr);
  script.restart();
  script.runScript();
  EXPECT_TRUE(seen.empty());
}

TEST(LineHook, DepthCountsNestedCallsAndEvalAddsNone) {
  for (bool reference : {false, true}) {
    lx::LxBasicScript script;
    script.setReferenceEvaluator(reference);
    SeenLines seen;
    recordLines(script, seen);
    script.setScript(
        u"FUNCTION Inner(n)\n"          // 1
        u"  Inner = Eval(\"n + 1\")\n"  // 2
        u"END FUNCTION\n"               // 3
        u"FUNCTION Outer(n)\n"          // 4
        u"  Outer = Inner(n) * 2\n"     // 5
        u"END FUNCTION\n"               // 6
        u"DIM RESULT = Outer(4)");      // 7
    EXPECT_EQ(lx::toText(script.runScript()), u"10");
    // Eval's line is line 1 of its own text, run at the depth of the body that called it.
    const std::vector<std::pair<int32_t, int32_t>> expected = {
        {1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}, {6, 0}, {7, 0}, {5, 1}, {2, 2}, {1, 2}};
    EXPECT_EQ(seen, expected) << (reference ? "reference" : "compiled");
  }
}

TEST(LineHook, AnsweringFalseStopsTheRunAtAnyDepth) {
  lx::LxBasicScript script;
  int budget = 50;
  script.setLineHook([&budget](int32_t, int32_t) { return --budget > 0; });
  script.setScript(
      u"DIM RESULT = 0\n"
      u"SUB Spin()\n"
      u"  DIM i = 0\n"
      u"  WHILE true\n"
      u"    i = i + 1\n"
      u"  WEND\n"
      u"END SUB\n"
      u"Spin()\n"
      u"RESULT = -1\n");
  script.runScript();
  EXPECT_EQ(budget, 0);
  EXPECT_EQ(lx::toText(script.valueOf(u"RESULT")), u"0");  // stopped inside, never reached -1
  ASSERT_NE(script.error(), nullptr);
  EXPECT_EQ(script.error()->code(), -1);
  EXPECT_TRUE(script.succeeded());
}

TEST(HostOperations, RefusedWhileTheScriptRuns) {
  lx::LxBasicScript script;
  std::atomic<bool> inside{false};
  std::atomic<bool> release{false};
  script.setLineHook([&](int32_t, int32_t) {
    inside = true;
    while (!release) std::this_thread::yield();
    return true;
  });
  script.setScript("DIM x = 1");
  std::thread runner([&] { script.runScript(); });
  while (!inside) std::this_thread::yield();
  EXPECT_THROW(script.restart(), lx::InvalidArgumentException);
  EXPECT_THROW(script.call(u"F"), lx::InvalidArgumentException);
  EXPECT_THROW(script.setLineHook(nullptr), lx::InvalidArgumentException);
  release = true;
  runner.join();
  EXPECT_TRUE(script.succeeded());
}
