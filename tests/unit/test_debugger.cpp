// The debugger through the public header only: breakpoints, steps, stacks, variables and
// evaluation, pauses that end by a stop or the time limit, and pauses on untrapped errors, in
// both evaluator modes.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "lxbasic/debug.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

using namespace std::chrono_literals;
using lx::PauseReason;
using lx::StepMode;

constexpr char16_t kFib[] =
    u"DIM RESULT, total = 0\n"                // 1
    u"FUNCTION Fib(n)\n"                      // 2
    u"  IF n < 2 THEN\n"                      // 3
    u"    Fib = n\n"                          // 4
    u"  ELSE\n"                               // 5
    u"    Fib = Fib(n - 1) + Fib(n - 2)\n"    // 6
    u"  END IF\n"                             // 7
    u"END FUNCTION\n"                         // 8
    u"FOR i = 1 TO 4\n"                       // 9
    u"  total = total + Fib(i)\n"             // 10
    u"NEXT\n"                                 // 11
    u"RESULT = total + Eval(\"i * 100\")\n";  // 12

// A script run on its own thread under a debugger, driven from the test's thread.
class Debugged {
 public:
  Debugged(std::u16string_view text, bool reference) : debugger_(attach(text, reference)) {
    debugger_.onPause([this](const lx::PauseEvent&) { ++pauses_; });
  }
  ~Debugged() { finish(); }

  lx::LxBasicScript& script() { return script_; }
  lx::LxBasicDebugger& debugger() { return debugger_; }
  void start() {
    worker_ = std::thread([this] {
      result_ = script_.runScript();
      ended_.store(true);
    });
  }
  // The next pause, or nothing when the run ended first.
  std::optional<lx::PauseEvent> next() { return debugger_.waitForPause(5s); }
  // Resumes and answers the next pause's line (0 when the run ended).
  int32_t resumeTo(StepMode mode) {
    const int before = pauses_.load();
    debugger_.resume(mode);
    const auto deadline = std::chrono::steady_clock::now() + 5s;
    while (std::chrono::steady_clock::now() < deadline) {
      if (pauses_.load() > before) {
        auto e = next();
        return e ? e->line : 0;
      }
      if (ended_.load()) return 0;
      std::this_thread::sleep_for(1ms);
    }
    ADD_FAILURE() << "neither a pause nor the end came";
    return -1;
  }
  lx::Variant finish() {
    if (worker_.joinable()) worker_.join();
    return result_;
  }
  std::u16string valueIn(size_t frame, std::u16string_view name) {
    for (const auto& v : debugger_.variables(frame)) {
      if (v.name == name) return v.value;
    }
    return u"<none>";
  }

 private:
  lx::LxBasicScript& attach(std::u16string_view text, bool reference) {
    script_.setScript(text);
    script_.setReferenceEvaluator(reference);
    return script_;
  }

  lx::LxBasicScript script_;
  lx::LxBasicDebugger debugger_;
  std::thread worker_;
  lx::Variant result_;
  std::atomic<int> pauses_{0};
  std::atomic<bool> ended_{false};
};

class DebuggerTest : public ::testing::TestWithParam<bool> {};

TEST_P(DebuggerTest, BreakpointsInTheMainScriptAndInARecursiveProcedure) {
  Debugged d(kFib, GetParam());
  const int32_t inLoop = d.debugger().addBreakpoint(10);
  d.debugger().addBreakpoint(4);
  d.start();

  auto e = d.next();
  ASSERT_TRUE(e);
  EXPECT_EQ(e->reason, PauseReason::Breakpoint);
  EXPECT_EQ(e->breakpoint, inLoop);
  EXPECT_EQ(e->line, 10);
  auto stack = d.debugger().stack();
  ASSERT_EQ(stack.size(), 1u);
  EXPECT_EQ(stack[0].kind, lx::DebugFrame::Kind::Main);
  EXPECT_EQ(stack[0].text, u"total = total + Fib(i)");
  EXPECT_EQ(d.valueIn(0, u"I"), u"1");

  // Fib(1) is a leaf at once; Fib(2) reaches the leaf one call deeper.
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 4);
  EXPECT_EQ(d.debugger().stack().size(), 2u);
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 10);
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 4);
  stack = d.debugger().stack();
  ASSERT_EQ(stack.size(), 3u);
  EXPECT_EQ(stack[0].kind, lx::DebugFrame::Kind::Procedure);
  EXPECT_EQ(stack[0].procedure, u"FIB");
  EXPECT_EQ(stack[1].line, 6);
  EXPECT_EQ(stack[2].line, 10);
  // Each frame has its own n (the last bracket of a line is evaluated first, so Fib(0) is
  // the first leaf of Fib(2)); the outer frames are readable too.
  EXPECT_EQ(d.valueIn(0, u"N"), u"0");
  EXPECT_EQ(d.valueIn(1, u"N"), u"2");
  EXPECT_EQ(d.valueIn(2, u"TOTAL"), u"1");
  // A question that calls the procedure passes its breakpoint without pausing in it.
  EXPECT_EQ(d.debugger().evaluate(u"Fib(6) + n").text, u"8");
  EXPECT_EQ(d.debugger().evaluate(u"n", 1).text, u"2");
  EXPECT_FALSE(d.debugger().evaluate(std::u16string(40000, u'1')).ok);

  d.debugger().clearBreakpoints();
  d.debugger().resume();
  EXPECT_EQ(lx::toText(d.finish()), u"507");  // 1 + 1 + 2 + 3, and i left at 5
  const auto all = d.debugger().breakpoints();
  EXPECT_TRUE(all.empty());
}

TEST_P(DebuggerTest, ConditionalBreakpoints) {
  Debugged d(kFib, GetParam());
  const int32_t id = d.debugger().addBreakpoint(10, u"i = 3 OR i > 3");
  d.debugger().addBreakpoint(3, u"nosuch + 1");
  d.start();
  // The failing condition pauses, and says why.
  auto e = d.next();
  ASSERT_TRUE(e);
  EXPECT_EQ(e->line, 3);
  EXPECT_NE(lx::toUtf8(e->conditionError).find("nosuch"), std::string::npos);
  d.debugger().removeBreakpoint(e->breakpoint);
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 10);
  EXPECT_EQ(d.valueIn(0, u"I"), u"3");
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 10);
  EXPECT_EQ(d.valueIn(0, u"I"), u"4");
  EXPECT_EQ(d.debugger().breakpoints().at(0).hits, 2);
  EXPECT_EQ(d.debugger().breakpoints().at(0).id, id);
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 0);
  EXPECT_EQ(lx::toText(d.finish()), u"507");
}

TEST_P(DebuggerTest, StepsIntoOverAndOutOfProceduresAndEval) {
  Debugged d(kFib, GetParam());
  d.debugger().addBreakpoint(10);
  d.start();
  ASSERT_TRUE(d.next());
  // Into the call: the body's first line that runs, then the branch taken.
  EXPECT_EQ(d.resumeTo(StepMode::Into), 3);
  EXPECT_EQ(d.resumeTo(StepMode::Into), 4);
  // Out: back in the caller, at the line after the call's.
  EXPECT_EQ(d.resumeTo(StepMode::Out), 11);
  EXPECT_EQ(d.debugger().stack().size(), 1u);
  d.debugger().clearBreakpoints();
  // Over: the loop's lines, no procedure line.
  std::vector<int32_t> lines;
  for (int k = 0; k < 7; ++k) lines.push_back(d.resumeTo(StepMode::Over));
  EXPECT_EQ(lines, (std::vector<int32_t>{10, 11, 10, 11, 10, 11, 12}));
  // Into Eval: its line, counted within the evaluated text, with the caller beneath.
  EXPECT_EQ(d.resumeTo(StepMode::Into), 1);
  auto stack = d.debugger().stack();
  ASSERT_EQ(stack.size(), 2u);
  EXPECT_EQ(stack[0].kind, lx::DebugFrame::Kind::Eval);
  EXPECT_EQ(stack[1].line, 12);
  EXPECT_EQ(d.resumeTo(StepMode::Over), 0);
  EXPECT_EQ(lx::toText(d.finish()), u"507");
}

TEST_P(DebuggerTest, EvaluationLeavesTheRunAsItWas) {
  Debugged d(
      u"DIM RESULT, a = Array(10, 20, 30), s = \"x\"\n"
      u"ON ERROR RESUME NEXT\n"
      u"RESULT = nosuch\n"
      u"RESULT = Number@(err) * 1000 + a(2)\n",
      GetParam());
  d.debugger().addBreakpoint(4);
  d.start();
  ASSERT_TRUE(d.next());
  auto v = d.debugger().evaluate(u"a(1) + 1");
  EXPECT_TRUE(v.ok);
  EXPECT_EQ(v.text, u"21");
  EXPECT_EQ(d.debugger().evaluate(u"a(1) > 15 AND s = \"x\"").text, u"1");
  v = d.debugger().evaluate(u"1 / 0");
  EXPECT_FALSE(v.ok);
  EXPECT_EQ(v.errorCode, 14);
  v = d.debugger().evaluate(u"missing(");
  EXPECT_FALSE(v.ok);
  // No temporaries left behind, and the pending error (3, from line 3) is still the one the
  // next line reads.
  for (const auto& var : d.debugger().variables()) {
    EXPECT_EQ(var.name.find(u"____"), std::u16string::npos);
    if (var.name == u"A") {
      EXPECT_EQ(var.kind, "Array");
      EXPECT_EQ(var.bounds, std::vector<int32_t>{3});
    }
  }
  d.debugger().resume();
  EXPECT_EQ(lx::toText(d.finish()), u"3030");
}

TEST_P(DebuggerTest, AStopRequestEndsAPausedRun) {
  Debugged d(kFib, GetParam());
  d.debugger().addBreakpoint(4);
  d.start();
  ASSERT_TRUE(d.next());
  d.script().terminate();
  d.finish();
  EXPECT_FALSE(d.debugger().paused());
  ASSERT_TRUE(d.script().error());
  EXPECT_EQ(d.script().error()->code(), -1);
  // Questions to a script that is not paused get empty answers.
  EXPECT_TRUE(d.debugger().stack().empty());
  EXPECT_FALSE(d.debugger().evaluate(u"1").ok);
}

TEST_P(DebuggerTest, TheTimeLimitCountsWhilePausedUnlessTheHostSaysOtherwise) {
  for (bool counts : {true, false}) {
    Debugged d(u"DIM RESULT = 1\nRESULT = 2\n", GetParam());
    d.script().setTimeLimit(200ms);
    d.debugger().countPausedTime(counts);
    d.debugger().addBreakpoint(2);
    d.start();
    ASSERT_TRUE(d.next());
    std::this_thread::sleep_for(400ms);
    if (!counts) d.debugger().resume();
    d.finish();
    const auto error = d.script().error();
    if (counts) {
      ASSERT_TRUE(error);
      EXPECT_EQ(error->code(), 31);
    } else {
      EXPECT_FALSE(error) << lx::toUtf8(error->description());
      EXPECT_EQ(lx::toText(d.script().valueOf(u"RESULT")), u"2");
    }
  }
}

TEST_P(DebuggerTest, BreaksOnErrorsThatNoOnErrorTraps) {
  constexpr char16_t kText[] =
      u"DIM RESULT, x = 7\n"
      u"SUB Divide(v)\n"
      u"  x = 10 / v\n"
      u"END SUB\n"
      u"ON ERROR RESUME NEXT\n"
      u"Divide(0)\n"  // trapped by the caller: no pause
      u"ON ERROR GOTO 0\n"
      u"Divide(0)\n";
  Debugged d(kText, GetParam());
  d.debugger().breakOnError(true);
  d.start();
  auto e = d.next();
  ASSERT_TRUE(e);
  EXPECT_EQ(e->reason, PauseReason::Error);
  ASSERT_TRUE(e->error);
  EXPECT_EQ(e->error->code(), 14);
  EXPECT_EQ(e->line, 3);
  auto stack = d.debugger().stack();
  ASSERT_EQ(stack.size(), 2u);
  EXPECT_EQ(stack[1].line, 8);
  EXPECT_EQ(d.valueIn(0, u"V"), u"0");
  // Going on ends the run with the error, without pausing again as it reaches the caller.
  EXPECT_EQ(d.resumeTo(StepMode::Continue), 0);
  d.finish();
  ASSERT_TRUE(d.script().error());
  EXPECT_EQ(d.script().error()->code(), 114);
}

TEST_P(DebuggerTest, APauseHandlerRunsOnTheScriptsThreadAndMayResume) {
  lx::LxBasicScript script;
  script.setScript(kFib);
  script.setReferenceEvaluator(GetParam());
  lx::LxBasicDebugger debugger(script);
  std::vector<size_t> depths;
  debugger.addBreakpoint(4);
  debugger.onPause([&](const lx::PauseEvent&) {
    depths.push_back(debugger.stack().size());
    debugger.resume();
  });
  EXPECT_EQ(lx::toText(script.runScript()), u"507");
  // Fib(1) .. Fib(4) reach a leaf 1 + 2 + 3 + 5 times.
  EXPECT_EQ(depths.size(), 11u);
  EXPECT_EQ(*std::max_element(depths.begin(), depths.end()), 5u);  // four calls and main
}

INSTANTIATE_TEST_SUITE_P(BothModes, DebuggerTest, ::testing::Values(false, true),
                         [](const auto& info) { return info.param ? "Reference" : "Compiled"; });

TEST(DebuggerAttach, RefusedWhileRunningAndWhileAnotherIsAttached) {
  lx::LxBasicScript script;
  script.setScript(u"DIM RESULT = 1\nRESULT = 2\n");
  {
    lx::LxBasicDebugger first(script);
    EXPECT_THROW(lx::LxBasicDebugger second(script), lx::InvalidArgumentException);
    EXPECT_THROW(first.addBreakpoint(0), lx::InvalidArgumentException);
    first.addBreakpoint(2);
    std::thread worker([&] { script.runScript(); });
    ASSERT_TRUE(first.waitForPause(5s));
    EXPECT_THROW(lx::LxBasicDebugger late(script), lx::InvalidArgumentException);
    first.resume();
    worker.join();
  }
  // Detached: the same script runs without pausing, and takes a new debugger.
  EXPECT_EQ(lx::toText(script.runScript()), u"2");
  lx::LxBasicDebugger again(script);
  again.pause();
  std::thread worker([&] { script.runScript(); });
  auto e = again.waitForPause(5s);
  ASSERT_TRUE(e);
  EXPECT_EQ(e->reason, PauseReason::Request);
  EXPECT_EQ(e->line, 1);
  again.resume();
  worker.join();
}

}  // namespace
