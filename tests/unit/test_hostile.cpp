// Scripts written to hurt their host: each must end with a clear error (or its normal result)
// inside a memory cap and a time limit, and leave the host able to go on.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

using namespace std::chrono_literals;

constexpr int64_t kCap = int64_t{64} << 20;

struct Ending {
  int32_t code = 0;
  std::u16string result;
  std::chrono::milliseconds took{};
};

// Runs `text` with RESULT declared, under a 64 MiB cap and the given time limit.
Ending runCapped(std::u16string text, std::chrono::milliseconds limit = 5000ms,
                 bool background = false) {
  lx::LxBasicScript script;
  script.setMemoryLimit(kCap);
  script.setTimeLimit(limit);
  script.setScript(u"DIM RESULT\n" + text);
  const auto start = std::chrono::steady_clock::now();
  lx::Variant result = background ? script.run() : script.runScript();
  Ending e;
  e.took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start);
  if (auto err = script.error()) e.code = err->code();
  e.result = lx::toText(result);
  return e;
}

std::u16string repeat(std::u16string_view piece, size_t times) {
  std::u16string out;
  out.reserve(piece.size() * times);
  for (size_t i = 0; i < times; ++i) out += piece;
  return out;
}

struct Case {
  const char* name;
  std::u16string script;
  int32_t code;           // the error the run must end with
  std::u16string result;  // checked when not empty
};

void expectEndings(const std::vector<Case>& cases, std::chrono::milliseconds limit = 5000ms) {
  for (const Case& c : cases) {
    Ending e = runCapped(c.script, limit);
    EXPECT_EQ(e.code, c.code) << c.name;
    if (!c.result.empty()) {
      EXPECT_EQ(lx::toUtf8(e.result), lx::toUtf8(c.result)) << c.name;
    }
  }
}

TEST(Hostile, SelfContainingArraysAndDeepCalls) {
  const std::u16string selfArray = u"DIM a(1)\na(0) = a\n";
  const std::vector<Case> cases = {
      {"printed", selfArray + u"Print(a)\nRESULT = 1", 0, u"1"},
      {"concatenated", selfArray + u"RESULT = a & \"\"", 0, u"((...), )"},
      {"joined", selfArray + u"RESULT = Join(a, \"-\")", 0, u"((...), )-"},
      {"filtered", selfArray + u"RESULT = UBound(Filter(a, \"(\"))", 0, u"0"},
      {"compared", selfArray + u"DIM b(1)\nb(0) = b\nIF a = b THEN RESULT = 1 ELSE RESULT = 2", 0,
       u"1"},
      {"through each other", u"DIM a(1), b(1)\na(0) = b\nb(0) = a\nRESULT = a & \"\"", 0,
       u"(((...), ), )"},
      {"nested 30,000 deep",
       u"DIM a = Array()\nFOR i = 1 TO 30000\na = Array(a)\nNEXT\nRESULT = Len(a & \"\")", 0,
       u"405"},
      {"eval of itself", u"DIM x = \"Eval(x)\"\nRESULT = Eval(x)", 25, u""},
      {"endless recursion", u"FUNCTION F(n)\nF = F(n + 1)\nEND FUNCTION\nRESULT = F(1)", 25 + 25700,
       u""},
      {"huge code from a procedure",
       u"SUB P()\nON ERROR RESUME NEXT\nx = 1 / 0\nRaise@(err, 2147483600)\nEND SUB\nP()",
       INT32_MAX, u""},
  };
  expectEndings(cases);
}

// Sixty levels of ten shared references: 10^60 elements in a few kilobytes. Every text of it
// (the host's, the script's) is cut at the bound, which bounds the work as well: uncut, the
// runner spent 14 s writing RESULT after a 2 s time limit.
TEST(Hostile, TextsOfAstronomicalArraysAreCut) {
  const std::u16string huge =
      u"DIM a = Array(1, 2)\nFOR i = 1 TO 60\na = Array(a, a, a, a, a, a, a, a, a, a)\nNEXT\n";
  for (bool background : {false, true}) {
    Ending e = runCapped(huge + u"RESULT = a", 2000ms, background);
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(e.result.size(), size_t{1048576} + 8);
    EXPECT_TRUE(e.result.ends_with(u"...[cut]"));
  }
  // Print and WriteLn write the same text that CStr answers.
  Ending joined = runCapped(huge + u"RESULT = Len(Join(a, \"\")) & \" \" & Len(CStr(a))", 20s);
  EXPECT_EQ(joined.code, 0);
  EXPECT_EQ(joined.result, u"10485840 1048584");
}

TEST(Hostile, MemoryGrabsEndWithOutOfMemory) {
  const std::vector<Case> cases = {
      {"doubling text", u"DIM s = \"x\"\nFOR i = 1 TO 40\ns = s & s\nNEXT", 36, u""},
      {"huge arrays", u"FOR i = 1 TO 6\nDIM a(16777215)\nNEXT", 36, u""},
      {"redim", u"DIM a(1)\nREDIM a(16777215)", 36, u""},
      {"split of spaces", u"RESULT = Split(Space(50000000), \" \")", 36, u""},
      {"string", u"RESULT = String(100000000, \"x\")", 36, u""},
      {"replace", u"DIM s = Space(1000000)\nRESULT = Replace(s, \" \", Space(100))", 36, u""},
      {"join",
       u"DIM a = Split(Space(100000), \" \")\nFOR i = 0 TO 9\na(0) = Join(a, Space(5000))\nNEXT",
       36, u""},
      {"array doubling", u"DIM a = Array(1)\nFOR i = 1 TO 40\na = a + a\nNEXT", 36, u""},
      // Tolerated like any error: the run goes on, and the error stays set for the host.
      {"trapped", u"ON ERROR RESUME NEXT\nDIM a(16777215)\nRESULT = Number@(err)", 36, u"36"},
  };
  expectEndings(cases);
}

TEST(Hostile, LongLinesAndSourcesStayBounded) {
  const std::vector<Case> cases = {
      {"50,000 statements on a line", repeat(u"x = 1 : ", 50000), 37, u""},
      {"100,000 nested brackets", u"RESULT = " + repeat(u"(", 100000) + u"1" + repeat(u")", 100000),
       37, u""},
      {"a long line joined from short ones", u"DIM s = \"\"" + repeat(u" & \"abcdefgh\" _\n", 5000),
       37, u""},
      {"a 10 MB literal", u"RESULT = \"" + repeat(u"y", 10'000'000) + u"\"", 37, u""},
      {"2,000 operators", u"RESULT = 1" + repeat(u" + 1", 2000), 0, u"2001"},
      {"deep nesting within the limit",
       u"RESULT = " + repeat(u"(", 2000) + u"7" + repeat(u")", 2000), 0, u"7"},
      {"a million lines", repeat(u"REM\n", 1'000'000) + u"RESULT = 5", 0, u"5"},
  };
  expectEndings(cases, 10000ms);
}

TEST(Hostile, TimeLimitEndsTheRunPromptly) {
  const std::vector<std::u16string> endless = {
      u"WHILE 1\nWEND",
      u"SUB P()\nWHILE 1\nWEND\nEND SUB\nP()\nRESULT = 9",
      u"FUNCTION F(n)\nIF n < 200 THEN\nF = F(n + 1)\nELSE\nWHILE 1\nWEND\nEND IF\nEND FUNCTION\n"
      u"RESULT = F(1)",
      u"DIM x = \"Eval(\"\"Sleep(100)\"\")\"\nRESULT = Eval(x)",
      u"ON ERROR RESUME NEXT\nWHILE 1\ny = q\nWEND",
      u"DIM parts = Split(\"a\", \"a\", 0)",  // its idle pieces fit the memory limit
      // Lines whose own evaluation takes longer than the limit.
      u"DIM x = 1" + repeat(u" + 1", 8000),
      u"DIM x = " + repeat(u"(", 16000) + u"1" + repeat(u")", 16000),
      // Preparing these takes seconds, and nothing runs before it ends.
      repeat(repeat(u"x = 1 : ", 4000) + u"\n", 20),
      u"DIM a = Split(Space(20000), \" \")\n"
      u"DIM b = a - Split(Replace(Space(20000), \" \", \"z \"), \" \")",
  };
  // Short, so that the long lines still outlast it on a fast machine.
  constexpr auto kLimit = 50ms;
  for (bool background : {false, true}) {
    for (size_t i = 0; i < endless.size(); ++i) {
      Ending e = runCapped(endless[i], kLimit, background);
      EXPECT_EQ(e.code, 31) << "script " << i << (background ? " in the background" : "");
      EXPECT_TRUE(e.result.empty() || e.result == u"(null)") << "script " << i;
      EXPECT_LT(e.took, kLimit + 300ms) << "script " << i;
    }
  }
}

TEST(Hostile, TerminateFromAnotherThreadStopsEveryLevel) {
  lx::LxBasicScript script;
  script.setScript(
      u"DIM RESULT = 0\nFUNCTION F(n)\nIF n < 100 THEN\nF = F(n + 1)\nELSE\nWHILE 1\nWEND\n"
      u"END IF\nRESULT = 99\nEND FUNCTION\nDIM r = F(1)\nRESULT = 7");
  std::thread stopper([&] {
    std::this_thread::sleep_for(100ms);
    script.terminate();
  });
  script.runScript();
  stopper.join();
  ASSERT_TRUE(script.error());
  EXPECT_EQ(script.error()->code(), -1);
  EXPECT_EQ(lx::toText(script.valueOf(u"RESULT")), u"0");
  EXPECT_FALSE(script.running());
}

TEST(Hostile, SecondRunWhileOneIsActiveIsRefused) {
  lx::LxBasicScript script;
  script.setTimeLimit(300ms);
  script.setScript(u"WHILE 1\nWEND");
  std::thread first([&] { script.runScript(); });
  while (!script.running()) std::this_thread::sleep_for(1ms);
  EXPECT_THROW(script.run(), lx::ScriptBusyException);
  EXPECT_THROW(script.runScript(), lx::ScriptBusyException);
  first.join();
  EXPECT_TRUE(script.waitUntilFinished(1000ms));
  EXPECT_EQ(script.error()->code(), 31);
  script.reset();
  EXPECT_FALSE(script.error());
}

TEST(Hostile, ErrorSnapshotDoesNotChangeUnderTheHost) {
  lx::LxBasicScript script;
  script.setTimeLimit(400ms);
  script.setScript(u"ON ERROR RESUME NEXT\ny = q\nWHILE 1\nRaise@(err, 5)\nClear@(err)\nWEND");
  std::thread runner([&] { script.runScript(); });
  for (int i = 0; i < 2000; ++i) {
    if (auto snap = script.errorSnapshot()) {
      const int32_t code = snap->code();
      const std::u16string text = snap->description();
      EXPECT_EQ(code, snap->code());
      EXPECT_FALSE(text.empty());
    }
  }
  runner.join();
  EXPECT_EQ(script.errorSnapshot()->code(), 31);
}

TEST(Hostile, TextsThroughTheApi) {
  lx::LxBasicScript script;
  script.setMemoryLimit(kCap);
  // Invalid UTF-8 becomes replacement characters, not a failure.
  script.setScript(std::string_view("DIM RESULT = \"\xff\xfe\xc3\"\nRESULT = Len(RESULT)"));
  script.runScript();
  EXPECT_FALSE(script.error());
  // A byte order mark at the start of the text does not hide the first statement.
  script.reset();
  script.setScript(
      std::string_view("\xef\xbb\xbf"
                       "DIM RESULT = 4"));
  EXPECT_EQ(lx::toText(script.runScript()), u"4");
}

TEST(Hostile, CreateObjectReachesOnlyCreatableClasses) {
  // The library's own class and the error record are registered, but never creatable.
  for (const char16_t* name : {u"LxBasicFunc", u"LxError", u"NoSuchClass"}) {
    Ending e = runCapped(u"RESULT = CreateObject(\"" + std::u16string(name) + u"\")");
    EXPECT_EQ(e.code, 0);
    EXPECT_EQ(e.result, u"(null)") << lx::toUtf8(name);
  }
}

TEST(Hostile, ThousandsOfHostileScriptsDoNotGrowTheHost) {
  const std::vector<std::u16string> scripts = {
      u"DIM a(1)\na(0) = a",
      u"DIM a(2), b(2)\na(0) = b\nb(1) = a\na = 0\nb = 0",
      u"DIM a = Array(1, 2)\na(1) = a\nDIM c = Array(a, a)\na(0) = c",
      u"DIM s = \"x\"\nFOR i = 1 TO 30\ns = s & s\nNEXT",
      u"DIM x = \"Eval(x)\"\nRESULT = Eval(x)",
  };
  auto residentKb = [] {
    std::FILE* f = std::fopen("/proc/self/statm", "r");
    long pages = 0, resident = 0;
    if (f) {
      if (std::fscanf(f, "%ld %ld", &pages, &resident) != 2) resident = 0;
      std::fclose(f);
    }
    return resident * 4;
  };
  auto batch = [&](int n) {
    for (int i = 0; i < n; ++i) {
      lx::LxBasicScript script;
      script.setMemoryLimit(int64_t{8} << 20);
      script.setTimeLimit(2000ms);
      script.setScript(u"DIM RESULT\n" + scripts[static_cast<size_t>(i) % scripts.size()]);
      script.runScript();
    }
  };
  batch(200);
  const long before = residentKb();
  batch(2000);
  EXPECT_LT(residentKb() - before, 20 * 1024);
}

}  // namespace
