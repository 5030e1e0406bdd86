// The driver: preparation of the source, dispatch, the error policy, ON ERROR, runs on the
// calling thread and under the watchdog, terminate.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "lxbasic/exceptions.h"
#include "support/run.h"

using lxtest::run;

namespace {

double secondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

TEST(Preparation, EmptyScriptRunsNothing) {
  lx::LxBasicScript s;
  auto o = run(s, u"");
  EXPECT_TRUE(o.result.isEmpty());
  EXPECT_EQ(o.error, nullptr);
}

TEST(Preparation, ColonSplitsStatementsThatKeepTheirScriptLine) {
  lx::LxBasicScript s;
  auto o = run(s, u"DIM x : DIM y\nx = 1 : y = q");
  EXPECT_EQ(o.code(), 3);
  EXPECT_EQ(o.error->lineNumber(), 2);
  EXPECT_EQ(o.error->line(), u"y = q");
}

TEST(Preparation, ColonInsideStringsAndBracketsDoesNotSplit) {
  auto o = run(u"RESULT = \"a:b\" & Mid(\"x:y\", 1, 3)");
  EXPECT_EQ(o.code(), 0);
}

TEST(Preparation, ContinuationJoinsWithASpaceAndReportsTheLaterLine) {
  lx::LxBasicScript s;
  auto o = run(s, u"DIM x\nx = 1 + _\nq");
  EXPECT_EQ(o.code(), 3);
  EXPECT_EQ(o.error->lineNumber(), 3);
  // The text before "_" keeps its blank, and the join adds one more.
  EXPECT_EQ(o.error->line(), u"x = 1 +  q");
}

TEST(Preparation, RemLineBetweenContinuationAndItsRestIsKept) {
  auto o = run(u"RESULT = 1 + _\nREM note\n2");
  EXPECT_EQ(o.code(), 0);
  EXPECT_EQ(o.text(), u"3");
}

TEST(Preparation, RemAfterColonIsACommentLine) {
  auto o = run(u"RESULT = 1 : REM RESULT = 2 : RESULT = 3");
  EXPECT_EQ(o.text(), u"1");
}

TEST(Preparation, ScriptTextJoinsLinesWithCarriageReturns) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"a\nb\r\nc"));
  EXPECT_EQ(s.script(), u"a\rb\r\rc");
}

TEST(Dispatch, TabsBecomeBlanksAndKeywordsIgnoreCase) {
  auto o = run(u"dim\tx = 4\nResult = x * 2");
  EXPECT_EQ(o.text(), u"8");
}

TEST(Dispatch, EchoEndsTheRunWithAnExceptionOnTheCallingThread) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"ECHO 1"));
  EXPECT_THROW(s.runScript(), lx::UnrecognizedSelectorException);
  EXPECT_FALSE(s.running());
  EXPECT_EQ(s.error(), nullptr);
}

TEST(Dispatch, EchoUnderRunIsDroppedButRecorded) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"DIM RESULT = 1\nECHO 1\nRESULT = 2"));
  lx::Variant r = s.run();
  EXPECT_EQ(lx::toText(r), u"1");
  EXPECT_EQ(s.error(), nullptr);
  ASSERT_TRUE(s.lastException());
  EXPECT_THROW(std::rethrow_exception(s.lastException()), lx::UnrecognizedSelectorException);
}

TEST(Dispatch, LoneEndifIsAStatementWhileEndIfClosesABlock) {
  // A lone ENDIF reaches the statement interpreter, which finds no such variable.
  auto lone = run(u"ENDIF");
  EXPECT_EQ(lone.code(), 3);
  auto closed = run(u"IF 1 THEN\nRESULT = 1\nEND IF");
  EXPECT_EQ(closed.code(), 0);
}

TEST(ErrorPolicy, ErrorsCarryTheTrimmedLineAndItsNumber) {
  lx::LxBasicScript s;
  auto o = run(s, u"DIM x\n\n   y = 1   \nx = 2");
  EXPECT_EQ(o.description(), "Error #3, Line #3: Variable \"y\" not found\nSource: y = 1");
}

TEST(ErrorPolicy, ResumeNextGoesOnAndPublishesTheRecordAsErr) {
  auto o = run(u"ON ERROR RESUME NEXT\ny = 1\nRESULT = Number@(err) & Description@(err)");
  EXPECT_EQ(o.text(), u"3Variable \"y\" not found");
  // The record stays set and takes each later line's text and number.
  EXPECT_EQ(o.code(), 3);
  EXPECT_EQ(o.error->lineNumber(), 4);
}

TEST(ErrorPolicy, GotoZeroClearsTheErrorAndTolerance) {
  auto o = run(u"ON ERROR RESUME NEXT\ny = 1\nON ERROR GOTO 0\nRESULT = 7");
  EXPECT_EQ(o.code(), 0);
  EXPECT_EQ(o.text(), u"7");
}

TEST(ErrorPolicy, OnErrorForms) {
  EXPECT_EQ(run(u"ON ERROR GOTO 10").code(), 2);
  EXPECT_EQ(run(u"on error resume next extra\nRESULT = 1").code(), 2);  // tolerated, still set
  EXPECT_EQ(run(u"ON ERROR GOTO 0 extra\nRESULT = 1").code(), 0);
}

TEST(ErrorPolicy, ExitAloneEndsTheRunNormally) {
  auto o = run(u"RESULT = 5\nEXIT\nRESULT = 6");
  EXPECT_EQ(o.text(), u"5");
  EXPECT_EQ(o.code(), -1);
  EXPECT_EQ(o.error->desc(), u"Correct exit");
}

TEST(ErrorPolicy, RaiseChangesOnlyTheRecordThatErrNames) {
  auto o = run(u"Raise@(err, 5)\nRESULT = Number@(err) & Description@(err)");
  EXPECT_EQ(o.code(), 0);
  EXPECT_EQ(o.text(), u"5");
  EXPECT_EQ(run(u"Raise@(err, Array())\nRESULT = Number@(err)").text(), u"0");
}

TEST(Script, VariablesPersistBetweenRunsAndResetDropsThem) {
  lx::LxBasicScript s;
  EXPECT_EQ(run(s, u"DIM RESULT = 1").code(), 0);
  EXPECT_EQ(run(s, u"RESULT = RESULT + 1").text(), u"2");
  s.reset();
  EXPECT_TRUE(s.valueOf(u"RESULT").isEmpty());
  EXPECT_EQ(s.objCount(), 0);  // hosts register their objects again after reset
}

TEST(Script, HostVariablesAndConstants) {
  lx::LxBasicScript s;
  s.addVarWithName(u"Input", lx::Variant::int32(20));
  s.addConstWithName(u"Limit", lx::Variant::int32(3));
  EXPECT_EQ(run(s, u"DIM RESULT = input + LIMIT").text(), u"23");
  EXPECT_EQ(run(s, u"limit = 4").code(), 15);
  EXPECT_EQ(s.addVarWithName(u"bad name", lx::Variant()), nullptr);
}

TEST(Script, LineIsMinusOneOutsideARun) {
  lx::LxBasicScript s;
  EXPECT_EQ(s.line(), -1);
  EXPECT_TRUE(s.checkSyntax());
  EXPECT_EQ(s.timeout(), -1);
}

TEST(Watchdog, TimeLimitEndsAnEndlessLoopInAboutASecond) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"DIM x\nWHILE 1\nx = x + 1\nWEND"));
  s.setTimeout(1);
  auto start = std::chrono::steady_clock::now();
  s.run();
  double took = secondsSince(start);
  ASSERT_NE(s.error(), nullptr);
  EXPECT_EQ(s.error()->code(), 31);
  EXPECT_EQ(s.error()->desc(), u"Script execution time is out");
  EXPECT_GE(took, 0.95);
  EXPECT_LT(took, 1.6);
}

TEST(Watchdog, RunReturnsAsSoonAsTheScriptEnds) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"DIM RESULT = 2 * 21"));
  s.setTimeout(30);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(lx::toText(s.run()), u"42");
  EXPECT_LT(secondsSince(start), 0.5);
}

TEST(Watchdog, TimeLimitStopsASleepingScript) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"DIM RESULT = 1\nSleep(30)\nRESULT = 2"));
  s.setTimeout(1);
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(lx::toText(s.run()), u"1");
  EXPECT_LT(secondsSince(start), 2.0);
  EXPECT_EQ(s.error()->code(), 31);
}

TEST(Watchdog, ScriptObjectMayBeDestroyedRightAfterATimedOutRun) {
  for (int i = 0; i < 3; ++i) {
    auto s = std::make_unique<lx::LxBasicScript>();
    s->setScript(std::u16string_view(u"DIM x\nWHILE 1\nx = x + 1\nWEND"));
    s->setTimeout(0);
    s->run();
    EXPECT_EQ(s->error()->code(), 31);
    s.reset();
  }
}

TEST(Watchdog, TimeoutIsIgnoredWhileRunning) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"Sleep(1)"));
  std::thread t([&] { s.run(); });
  while (!s.running()) std::this_thread::yield();
  s.setTimeout(5);
  EXPECT_EQ(s.timeout(), -1);
  t.join();
}

TEST(Terminate, StopsARunFromAnotherThreadAfterTheCurrentLine) {
  lx::LxBasicScript s;
  s.setScript(std::u16string_view(u"DIM x\nWHILE 1\nx = x + 1\nWEND"));
  std::thread stopper([&] {
    while (!s.running()) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_GE(s.line(), 1);
    s.terminate();
  });
  auto start = std::chrono::steady_clock::now();
  s.run();
  stopper.join();
  EXPECT_LT(secondsSince(start), 1.0);
  ASSERT_NE(s.error(), nullptr);
  EXPECT_EQ(s.error()->code(), -1);
  EXPECT_FALSE(s.running());
}
