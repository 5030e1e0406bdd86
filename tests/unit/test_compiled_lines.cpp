// The compiled form of lines against the reference evaluator: every case runs in both modes
// and must leave the same RESULT (text and kind), the same error (code, message, line number)
// and say which mode it ran in. The cases are the ones where rewriting a line's text behaves
// in ways a compiler could easily get wrong.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "interpreter/script_core.h"
#include "lxbasic/bridge.h"
#include "support/both_modes.h"
#include "support/run.h"

namespace {

using lxtest::same;

TEST(CompiledLines, OperatorsAndOperandsAsTheTextReadsThem) {
  const char16_t* cases[] = {
      u"RESULT = 2 + 3 * 4 - 10 / 4 ^ 2",
      u"RESULT = -5 + 2",
      u"DIM x = 3\nRESULT = -x",  // a sign before a name is no operand
      u"RESULT = 2 * -3",         // nothing between two operators
      u"RESULT = \"a\" & 1 + 2",
      u"RESULT = \"3\" * 2",  // a date: the left kind decides
      u"RESULT = 7 \\ 0",     // the error, and the line goes on
      u"DIM a = 1\nRESULT = a / 0 + 5",
      u"RESULT = \"a+b\" & \"\"\"q\"\"\"",
      u"RESULT = &HFF + &o17 + &HZZ",
      u"RESULT = 1e3 + .5 + 12abc",
      u"RESULT = \"abc",  // a lone quote
      u"RESULT = y",
      u"RESULT = y + 1",
      u"DIM 2 = 5\nRESULT = 2 + 2",  // digits can name a variable
      u"RESULT = Len(\"abc\") + InStr(\"abcabc\", \"c\")",
      u"RESULT = Nope(1)",
      u"RESULT = release(1)",
      u"RESULT = Len(1, 2)",
      u"RESULT = (1 + 2) * (3 + 4)",
      u"DIM x = 4\nRESULT = ((x))",
      u"DIM color = 2\nRESULT = (color + 1)",  // \"or\" inside a name makes a condition
      u"RESULT = (1 < 2 AND 3 > 4 OR 1 = 1)",
      u"DIM s = \"x\"\nRESULT = (s = \"a<b\")",  // signs are found inside strings
      u"RESULT = (1 == 1)",
      u"RESULT = (Array(1) < 2)",  // an exception becomes a syntax error
      u"RESULT = 1 + 2)",
      u"RESULT = (1 + 2",
      u"DIM a(2)\na(1) = 5\nRESULT = a(1) + a(2)",
      u"DIM a(2)\nRESULT = a(3)",
      u"DIM m(1, 1)\nm(1, 0) = 7\nRESULT = m(1, 0) & m(0)",
      u"DIM v = 1\nRESULT = v(0)",  // a non-array gives Empty
      // an element of a non-array is a fresh slot, which the comparison must keep alive
      u"DIM v = 1, t = \"a\"\"b\"\nRESULT = (v(0) >= 2.5 & t)",
  };
  for (const char16_t* c : cases) same(c);
  // A bracket right after a bracket names the temporary in its message: both fail alike, with
  // names of their own.
  EXPECT_EQ(lxtest::runInMode(u"RESULT = Len(\"a\")(1)", false).code, 3);
  EXPECT_EQ(lxtest::runInMode(u"RESULT = Len(\"a\")(1)", true).code, 3);
  // So does a name or number right after a bracket, which runs into the temporary's name.
  EXPECT_EQ(lxtest::runInMode(u"RESULT = Len(\"a\")2 + 1", false).code, 3);
  EXPECT_EQ(lxtest::runInMode(u"RESULT = Len(\"a\")2 + 1", true).code, 3);
  EXPECT_EQ(lxtest::runInMode(u"RESULT = Len(\"a\")33333333333333333333", false).code, 3);
}

TEST(CompiledLines, AssignmentTargets) {
  const char16_t* cases[] = {
      u"CONST c = 1\nc = 2",
      u"DIM i\nFOR i = 1 TO 2\ni = 5\nNEXT",
      u"x = 1",
      u"DIM x\n(x) = 3\nRESULT = x",  // a bracket answering a name
      u"DIM a(1)\na(0) = 2\na(0) = a(0) * 3\nRESULT = a(0)",
      u"Len(\"ab\") = 3\nRESULT = 1",  // assigns into the call's answer
      u"EXIT=5\nRESULT = 1",
      u"DIM x\nx = Len(\"ab\" = 1)",
      u"DIM x, y\nRESULT = Len(x = 3) & x",  // an assignment inside an argument
  };
  for (const char16_t* c : cases) same(c);
}

TEST(CompiledLines, EvaluationOrderAndLateReads) {
  // Brackets run right to left; an element is read when its operator runs, after calls to its
  // left have changed it; a name in brackets is looked up again when used.
  const char16_t* cases[] = {
      u"DIM a(1)\nFUNCTION Bump(x)\nx(0) = x(0) + 10\nBump = 1\nEND FUNCTION\n"
      u"a(0) = 1\nRESULT = Bump(a) & \",\" & a(0)",
      u"DIM a(1)\nFUNCTION Bump(x)\nx(0) = x(0) + 10\nBump = 1\nEND FUNCTION\n"
      u"a(0) = 1\nRESULT = a(0) & \",\" & Bump(a)",
      u"DIM g = 1\nFUNCTION Up()\ng = g + 1\nUp = g\nEND FUNCTION\nRESULT = g & Up() & g",
      u"DIM g = 1\nFUNCTION Up()\ng = g + 1\nUp = g\nEND FUNCTION\nRESULT = (g) & Up()",
  };
  for (const char16_t* c : cases) same(c);
}

TEST(CompiledLines, ErrorsAndSignals) {
  const char16_t* cases[] = {
      u"ON ERROR RESUME NEXT\nRESULT = 1 / 0\nRESULT = RESULT & nope",  // a stale error
      u"ON ERROR RESUME NEXT\nx = 1\nRESULT = err.Number",
      u"DIM i\nFOR i = 1 TO 5\nIF i = 3 THEN EXIT FOR\nNEXT\nRESULT = i",
      u"DIM i, n\nFOR i = 1 TO 5\nIF i = 3 THEN CONTINUE FOR\nn = n + i\nNEXT\nRESULT = n",
      u"RESULT = 1\nEXIT\nRESULT = 2",
      u"FUNCTION F(a)\nF = a / 0\nEND FUNCTION\nRESULT = F(1)",
      u"FUNCTION F(a)\nF = q\nEND FUNCTION\nRESULT = F(1) + 1",
      u"FUNCTION F(a)\nF = a\nEND FUNCTION\nRESULT = F(1, 2)",
      u"FUNCTION F(n)\nF = F(n + 1)\nEND FUNCTION\nRESULT = F(1)",
      u"IF \"yes\" THEN RESULT = 1",
      u"IF 1 THEN RESULT = 1 ELSE",
  };
  for (const char16_t* c : cases) same(c);
}

TEST(CompiledLines, LoopsAndConditionals) {
  const char16_t* cases[] = {
      u"DIM i, s\nFOR i = 10 TO 1 STEP -3\ns = s & i\nNEXT\nRESULT = s",
      u"DIM n = 0\nWHILE n < 5\nn = n + 2\nWEND\nRESULT = n",
      u"DIM n = 0\nDO\nn = n + 1\nLOOP UNTIL n >= 3\nRESULT = n",
      u"DIM n = 0\nDO WHILE n < 4\nn = n + 1\nIF n = 2 THEN EXIT DO\nLOOP\nRESULT = n",
      u"DIM a = 2\nIF a = 1 THEN\nRESULT = 1\nELSE\nIF a = 2 THEN RESULT = 2 ELSE RESULT = 3\nEND "
      u"IF",
      u"DIM i, j = 1\nFOR i = j TO j + 2\nj = 10\nNEXT\nRESULT = i & j",
      u"DIM n = 0.5\nWHILE n\nn = 0\nWEND\nRESULT = n",  // conditions read the leading integer
      // WEND runs the condition the WHILE compiled, until EXIT WHILE replaces it by "0"
      u"DIM n = 0\nWHILE n < 9\nn = n + 1\nIF n = 3 THEN EXIT WHILE\nWEND\nRESULT = n",
      u"DIM n = 0, m = 0\nWHILE n < 3\nn = n + 1\nWHILE m < n\nm = m + 1\nWEND\nWEND\nRESULT = "
      u"n & m",
      u"DIM n = 0\nWHILE n < 3 : n = n + 1 : WEND : RESULT = n",
      u"DIM i\nFOR i = 1 TO 3 STEP 0\nNEXT\nRESULT = i",
      // LOOP runs the condition its DO (or itself, the first time) compiled
      u"DIM n = 0\nDO UNTIL n > 4 OR n = 3\nn = n + 1\nLOOP\nRESULT = n",
      u"DIM n = 0\nDO\nn = n + 1\nIF n = 2 THEN EXIT DO\nLOOP WHILE n < 5\nRESULT = n",
      u"DIM n = 0, m = 0\nDO WHILE n < 2\nn = n + 1\nDO\nm = m + 1\nLOOP UNTIL m >= n * 2\nLOOP\n"
      u"RESULT = n & m",
      u"DIM n = 0\nDO WHILE\nLOOP\nRESULT = n",  // no condition after WHILE
      // EXIT and CONTINUE, whose words the compiled line reads once: any case, a loop word
      // that names no loop, words after it, none at all
      u"DIM i, s\nFOR i = 1 TO 4\nIF i = 3 THEN exit for\ns = s & i\nNEXT\nRESULT = s",
      u"DIM n = 0, s\nDO WHILE n < 4\nn = n + 1\nIF n = 2 THEN continue Do\ns = s & n\nLOOP\n"
      u"RESULT = s",
      u"DIM i, s\nFOR i = 1 TO 3\nIF i = 2 THEN EXIT SUB\ns = s & i\nNEXT\nRESULT = s",
      u"DIM i, s\nFOR i = 1 TO 3\nIF i = 2 THEN EXIT FOR now\ns = s & i\nNEXT\nRESULT = s",
      u"DIM i, s\nFOR i = 1 TO 3\nIF i = 2 THEN CONTINUE\ns = s & i\nNEXT\nRESULT = s",
      u"DIM i, s\nFOR i = 1 TO 3\nIF i = 2 THEN CONTINUE SUB\ns = s & i\nNEXT\nRESULT = s",
      u"FUNCTION F(k)\nF = 1\nIF k > 1 THEN EXIT\nF = 2\nEND FUNCTION\nRESULT = F(1) & F(2)",
      u"DIM i, s\nFOR i = 1 TO 3\nIF i = 2 THEN EXIT WHILE\ns = s & i\nNEXT\nRESULT = s",
  };
  for (const char16_t* c : cases) same(c);
}

// A loop left open by one run is closed by the next, whose lines are prepared anew: the
// closing line must not use what the opening run compiled and has since dropped (a sanitizer
// build sees it if it does), and both modes must agree on where the loop goes back to.
TEST(CompiledLines, LoopOpenAcrossRuns) {
  struct Case {
    const char16_t* opening;
    const char16_t* closing;
  };
  for (const Case& c : {Case{u"DIM n = 0, RESULT = 0\nWHILE n < 3\nn = n + 1",
                             u"n = n + 10\nWEND\nRESULT = RESULT + n"},
                        Case{u"DIM n = 0, RESULT = 0\nDO WHILE n < 3\nn = n + 1",
                             u"n = n + 10\nLOOP\nRESULT = RESULT + n"}}) {
    std::u16string results[2];
    int32_t codes[2] = {};
    for (bool reference : {false, true}) {
      lx::LxBasicScript s;
      s.setReferenceEvaluator(reference);
      s.setScript(c.opening);
      s.runScript();
      s.setScript(c.closing);
      s.runScript();
      results[reference] = lx::toText(s.valueOf(u"RESULT"));
      codes[reference] = s.error() ? s.error()->code() : 0;
    }
    EXPECT_EQ(results[0], results[1]);
    EXPECT_EQ(codes[0], codes[1]);
    EXPECT_EQ(results[0], u"11");  // n is 1 + 10, and the loop ends
  }
}

// Element reads by one plain index, arithmetic on numbers read in place and the remembered
// answer to "is this target a FOR variable?" each skip the general path; every case here sits
// on the edge of one of them.
TEST(CompiledLines, ShortcutsAgreeWithTheGeneralPath) {
  const char16_t* cases[] = {
      // the index as the general path reads it: text, Empty, a fraction, out of range
      u"DIM a(3), i = \"2abc\"\na(2) = 5\nRESULT = a(i)",
      u"DIM a(3), i\na(0) = 4\nRESULT = a(i)",
      u"DIM a(3), i = 1.9\na(1) = 6\nRESULT = a(i) + a(2.5)",
      u"DIM a(3), i = -1\nRESULT = a(i)",
      u"DIM a(3), i = 4\nRESULT = a(i)",
      u"DIM a(3), i = &HFFFFFFFFFF\nRESULT = a(i)",
      u"DIM m(2, 2), i = 1\nRESULT = m(i)",  // a row is no element
      u"DIM v = 3, i = 0\nRESULT = v(i) & \"|\" & TypeName(v(i))",
      u"DIM a(2), i = 1\na(i) = 2\nREDIM a(5)\nRESULT = a(i) + 1",
      u"DIM a(2), i = 1\na(i) = 2\nREDIM PRESERVE a(5)\nRESULT = a(i) + 1",
      u"DIM a(1), s = 0, i\nFOR i = 0 TO 1\ns = s + a(i)\nNEXT\nRESULT = s",
      // a procedure is called, not indexed
      u"DIM i = 1\nFUNCTION a(n)\na = n * 10\nEND FUNCTION\nRESULT = a(i)",
      // an index that is a method's answer runs code first
      u"DIM a(3)\na(3) = 8\nRESULT = a(Len(\"abc\"))",
      // numbers and Empty under + - *, and the kinds that leave the shortcut
      u"DIM e, x = 2\nRESULT = x + e & \",\" & x - e & \",\" & x * e & \",\" & e + x",
      u"DIM e, x = 2\nRESULT = TypeName(x + e) & TypeName(e - x) & TypeName(x / e)",
      u"DIM x = 2, t = \"3\"\nRESULT = x + t & \",\" & t + x & \",\" & x * t",
      u"DIM b = (1 = 1)\nRESULT = b + 1 & \",\" & b * 2",
      u"DIM big = 2147483647\nRESULT = big + 1 & \",\" & big * big",
      u"DIM x = 0.1\nRESULT = x * 3 - 0.3 & \",\" & x + 0.2",
      u"DIM d = Now()\nRESULT = TypeName(d + 1) & TypeName(1 + d)",
      // FOR variables: refused inside their loop, free again after it, in every frame
      u"DIM i, n = 0\nFOR i = 1 TO 2\nn = n + 1\ni = 5\nNEXT\nRESULT = n & i",
      u"DIM i = 0, j = 0\nFOR i = 1 TO 2\nFOR j = 1 TO 2\nNEXT\nj = 7\nNEXT\nRESULT = i & j",
      u"FUNCTION F(d)\nDIM v = 0\nIF d > 0 THEN\nFOR v = 1 TO 1\nF = F(d - 1)\nv = 5\nNEXT\n"
      u"END IF\nv = 9\nF = F & v\nEND FUNCTION\nRESULT = F(2)",
      u"ON ERROR RESUME NEXT\nDIM x = 0, n = 0, c = \"\"\nWHILE (n < 2)\nn = n + 1\nx = 3\n"
      u"c = c & err.Number & \";\"\nFOR x = 1 TO 2\nWEND\nRESULT = c",
  };
  for (const char16_t* c : cases) same(c);
}

// An IF's chain of comparisons is decided without making its value, and two plain numbers
// compare directly; everything else takes the general rules, which these cases cross.
TEST(CompiledLines, ConditionsDecidedDirectly) {
  // Each in a loop: an operand is known without running anything from its second pass on.
  const char16_t* cases[] = {
      u"DIM a = 5, b = 5.0, s, k\nFOR k = 1 TO 2\nIF a = b THEN s = s & \"1\"\n"
      u"IF a < 5.5 THEN s = s & \"2\"\nIF -1 < a THEN s = s & \"3\"\n"
      u"IF a >= 6 THEN s = s & \"4\"\nIF a <> b THEN s = s & \"5\"\nNEXT\nRESULT = s",
      // infinities, NaN and subnormals read back from their text on the right
      u"DIM big = 1E308 * 10, tiny = 1 / 1E308 / 1E10, s, k\nFOR k = 1 TO 2\n"
      u"IF 1 > big THEN s = s & \"a\"\nIF 0 = tiny THEN s = s & \"b\"\n"
      u"IF tiny = 0 THEN s = s & \"c\"\nIF big = big THEN s = s & \"d\"\n"
      u"IF 0 < big - big THEN s = s & \"e\"\nIF 0 < tiny THEN s = s & \"f\"\nNEXT\nRESULT = s",
      u"DIM a = \"10\", b = 9, s, k\nFOR k = 1 TO 2\nIF a > b THEN s = s & \"x\"\n"
      u"IF b < a THEN s = s & \"y\"\nIF \"abc\" < \"abd\" THEN s = s & \"z\"\nNEXT\nRESULT = s",
      u"DIM e, t = TRUE, s, k\nFOR k = 1 TO 2\nIF e < 1 THEN s = s & \"e\"\n"
      u"IF t = 1 THEN s = s & \"t\"\nIF t < 0 THEN s = s & \"n\"\n"
      u"IF 2147483647 + 1 > 2147483647 THEN s = s & \"w\"\nNEXT\nRESULT = s",
      // every operand of AND and OR runs, in order
      u"DIM c(1)\nFUNCTION B(arr)\narr(0) = arr(0) & \"b\"\nB = 1\nEND FUNCTION\n"
      u"IF 1 = 2 AND B(c) = 1 OR B(c) < 0 THEN\nc(1) = 9\nEND IF\nRESULT = c(0) & c(1)",
      u"DIM a = 1\nIF a = THEN\nRESULT = 1\nEND IF",
      u"DIM a = 1\nIF nope < a THEN\nRESULT = 1\nEND IF",
      u"DIM a = 1\nIF a < 2 AND THEN\nRESULT = 1\nEND IF",
      u"DIM a = 1\nIF NOT a < 2 THEN RESULT = 1 ELSE RESULT = 2",
      // loop conditions, at WHILE, WEND, DO and LOOP
      u"DIM n = 0\nWHILE n < 3 AND n >= 0\nn = n + 1\nWEND\nRESULT = n",
      u"DIM n = 0\nDO WHILE n < 2.5\nn = n + 1\nLOOP\nRESULT = n",
      u"DIM n = 0\nDO\nn = n + 1\nLOOP UNTIL n = 3 OR nope > 1\nRESULT = n",
      u"DIM n = 0\nWHILE n = \nn = 1\nWEND\nRESULT = n",
      u"DIM n = 5\nWHILE n < 3\nn = 1\nWEND\nRESULT = n",
      u"DIM n = 0\nON ERROR RESUME NEXT\nDO UNTIL n > 2 AND\nn = n + 1\nLOOP\nRESULT = n",
  };
  for (const char16_t* c : cases) same(c);
}

// A name's meaning changes while the script runs; every pass must see the current one.
TEST(CompiledBindings, FollowTheScriptsState) {
  const char16_t* cases[] = {
      // Len is the built-in until a variable of that name exists.
      u"DIM i, s\nFOR i = 1 TO 3\ns = s & Len\nIF i = 1 THEN Eval(\"DIM Len = 7\")\nNEXT\n"
      u"RESULT = s",
      // a name is a function, then a procedure defined while the loop runs
      u"DIM i, s\nFOR i = 1 TO 2\nIF i = 2 THEN Eval(\"0\")\ns = s & TypeName(i)\nNEXT\n"
      u"RESULT = s",
      // a variable declared after the line first ran
      u"DIM i, s\nFOR i = 1 TO 3\ns = s & k\nIF i = 1 THEN Eval(\"DIM k = 5\")\nNEXT\nRESULT = s",
      // a loop variable's slot is replaced by the next FOR over it
      u"DIM i, j, s\nFOR j = 1 TO 2\nFOR i = 1 TO 2\ns = s & i\nNEXT\nNEXT\nRESULT = s",
      // the ON ERROR record gets a new slot after each failed line and each EXIT
      u"DIM i, s\nON ERROR RESUME NEXT\nFOR i = 1 TO 3\nDO\nEXIT DO\nLOOP\ns = s & Number@(err)\n"
      u"DIM q = nope\ns = s & Number@(err)\nClear@(err)\ns = s & Number@(err) & \",\"\nNEXT\n"
      u"ON ERROR GOTO 0\nRESULT = s",
      // a number is read as a variable once one of its name is declared; in a procedure's
      // frames too, where the name is no local
      u"DIM i, s\nFOR i = 1 TO 3\ns = s & 0 & \",\"\nIF i = 2 THEN\nDIM 0 = 7\nEND IF\nNEXT\n"
      u"RESULT = s",
      u"FUNCTION F(k)\nF = \"\"\nFOR j = 1 TO 2\nF = F & 1 & \",\"\nIF k = 2 AND j = 1 THEN\n"
      u"DIM 1 = 9\nEND IF\nNEXT\nEND FUNCTION\nRESULT = F(1) & F(2) & F(3)",
  };
  for (const char16_t* c : cases) same(c);
}

class Counter : public lx::Object {
 public:
  int32_t next() { return ++n_; }
  std::string className() const override { return "Counter"; }

 private:
  int32_t n_ = 0;
};

TEST(CompiledBindings, HostObjectsAddedBetweenRuns) {
  lx::ClassBuilder<Counter>("Counter").method("Tick", &Counter::next);
  for (bool reference : {false, true}) {
    lx::LxBasicScript s;
    s.setReferenceEvaluator(reference);
    s.setScript(u"DIM RESULT = Tick");
    s.runScript();
    EXPECT_EQ(s.error()->code(), 3) << reference;
    s.addObj(std::make_shared<Counter>());
    s.runScript();
    EXPECT_EQ(s.error(), nullptr) << reference;
  }
}

TEST(CompiledStats, CountLinesAndNameFallbacks) {
  lx::LxBasicScript s;
  s.setScript(u"DIM i, n\nFOR i = 1 TO 3\nn = n + i\nNEXT");
  s.runScript();
  const auto stats = s.executionStats();
  EXPECT_GE(stats.compiledLines, 7u);  // FOR, three assignments, three NEXTs
  ASSERT_FALSE(stats.fallbacks.empty());
  EXPECT_EQ(stats.fallbacks.front().first, 1);  // the DIM lines run as they are

  lx::LxBasicScript temp;
  temp.setScript(u"DIM ____x = 2\n____x = ____x + 1");
  temp.runScript();
  bool named = false;
  for (const auto& [line, reason] : temp.executionStats().fallbacks) {
    named = named || (line == 2 && reason.find("temporary") != std::string::npos);
  }
  EXPECT_TRUE(named);

  lx::LxBasicScript slow;
  slow.setReferenceEvaluator(true);
  slow.setScript(u"DIM n\nn = 1");
  slow.runScript();
  EXPECT_EQ(slow.executionStats().compiledLines, 0u);
  EXPECT_EQ(slow.executionStats().referenceLines, 2u);
}

}  // namespace
