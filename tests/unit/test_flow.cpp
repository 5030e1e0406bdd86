// Conditionals, loops and procedures run through whole scripts: the refusals with their codes
// and lines, and the behaviours that are easier to read off variables than off output.
#include <gtest/gtest.h>

#include <string>

#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace {

struct Outcome {
  int32_t code = 0;
  int32_t line = 0;
  std::string result;
};

Outcome run(const char* source) {
  lx::LxBasicScript script;
  script.setScript(std::string_view(source));
  script.runScript();
  Outcome out;
  if (lx::ErrorRef e = script.error()) {
    out.code = e->code();
    out.line = e->lineNumber();
  }
  lx::Variant result = script.valueOf(u"RESULT");
  if (!result.isEmpty()) out.result = lx::toUtf8(lx::toText(result));
  return out;
}

struct Refusal {
  const char* what;
  const char* source;
  int32_t code;
  int32_t line;
};

class FlowRefusal : public ::testing::TestWithParam<Refusal> {};

TEST_P(FlowRefusal, FailsWithCodeAtLine) {
  const Refusal& r = GetParam();
  Outcome out = run(r.source);
  EXPECT_EQ(out.code, r.code) << r.what;
  EXPECT_EQ(out.line, r.line) << r.what;
}

const Refusal kConditionalRefusals[] = {
    {"THEN glued to a bracket is no word", "DIM a = 1\nIF (a=1)THEN a = 2", 7, 2},
    {"missing THEN in a skipped region", "IF 0 THEN\nIF 1\nEND IF", 7, 2},
    {"string condition", "IF \"yes\" THEN\nEND IF", 2, 1},
    {"string condition, single line", "DIM a = 0\nIF \"1\" THEN a = 1", 2, 2},
    {"ELSE without a block", "ELSE", 9, 1},
    {"END IF without a block", "END IF", 8, 1},
    {"ELSE IF on one line", "IF 1 THEN\nELSE IF 1 THEN\nEND IF", 2, 2},
    {"text after END IF", "IF 1 THEN\nEND IF x", 2, 2},
    {"CASE alone", "CASE 1", 35, 1},
    {"END SELECT alone", "DIM a = 1\nEND SELECT", 35, 2},
};
INSTANTIATE_TEST_SUITE_P(Conditionals, FlowRefusal, ::testing::ValuesIn(kConditionalRefusals));

const Refusal kLoopRefusals[] = {
    {"FOR without TO", "FOR i = 1 3\nNEXT", 2, 1},
    {"STEP 0", "FOR i = 1 TO 3 STEP 0\nNEXT", 13, 1},
    {"STEP truncating to 0", "FOR i = 1 TO 3 STEP 0.5\nNEXT", 13, 1},
    {"STEP not a number", "FOR i = 1 TO 3 STEP \"2\"\nNEXT", 13, 1},
    {"limit not a number", "FOR i = 1 TO \"x\"\nNEXT", 6, 1},
    {"no start", "FOR i TO 3\nNEXT", 6, 1},
    {"NEXT with its variable", "FOR i = 1 TO 3\nNEXT i", 2, 2},
    {"NEXT without FOR", "NEXT", 10, 1},
    {"NEXT closing a WHILE", "WHILE 1\nNEXT", 10, 2},
    {"WEND without WHILE", "DO\nWEND", 16, 2},
    {"text after WEND", "WHILE 0\nWEND 1", 2, 2},
    {"LOOP without DO", "LOOP", 32, 1},
    {"conditions on DO and LOOP", "DIM x = 0\nDO WHILE x < 3\nx = x + 1\nLOOP UNTIL x > 5", 2, 4},
    {"bad word after DO", "DO FOREVER\nLOOP", 2, 1},
    {"empty DO condition", "DO WHILE\nLOOP", 2, 1},
    {"bad word after LOOP", "DO\nLOOP AGAIN", 2, 2},
    {"CONTINUE alone", "WHILE 1\nCONTINUE\nWEND", 2, 2},
    {"CONTINUE of no loop kind", "CONTINUE SUB", 2, 1},
    {"text after EXIT FOR", "FOR i = 1 TO 3\nEXIT FOR now\nNEXT", 2, 2},
    {"assigning the loop variable", "FOR i = 1 TO 3\ni = 1\nNEXT", 27, 2},
};
INSTANTIATE_TEST_SUITE_P(Loops, FlowRefusal, ::testing::ValuesIn(kLoopRefusals));

const Refusal kProcedureRefusals[] = {
    {"reserved word as name", "SUB Dim()\nEND SUB", 26, 1},
    {"reserved word without brackets", "SUB Loop\nEND SUB", 26, 1},
    {"name of a variable", "DIM x = 1\nSUB x\nEND SUB", 17, 2},
    {"defined twice", "SUB P\nEND SUB\nSUB p(a)\nEND SUB", 17, 3},
    {"function and sub share names", "FUNCTION F(a)\nEND FUNCTION\nSUB F\nEND SUB", 17, 3},
    {"wrong closing word", "FUNCTION F(a)\nEND SUB", 11, 2},
    {"empty parameter", "SUB P(a,,b)\nEND SUB", 11, 1},
    {"bad parameter", "SUB P(a.b)\nEND SUB", 11, 1},
    {"missing bracket", "SUB P(a\nEND SUB", 2, 1},
    {"text after a bare name", "SUB P Q\nEND SUB", 2, 1},
    {"nested definition", "SUB P\nSUB Q\nEND SUB", 2, 2},
    {"END SUB with nothing open", "END SUB", 2, 1},
    {"wrong argument count", "FUNCTION Add(a, b)\nAdd = a + b\nEND FUNCTION\nDIM x = Add(1)", 12,
     4},
    // Reading searches only the procedure's own variables.
    {"reading a root variable", "DIM g = 5\nSUB R(a)\nDIM x = g\nEND SUB\nR(1)", 103, -1},
};
INSTANTIATE_TEST_SUITE_P(Procedures, FlowRefusal, ::testing::ValuesIn(kProcedureRefusals));

TEST(FlowConditionals, FailedConditionPushesNothing) {
  // The block's END IF then meets an empty stack.
  EXPECT_EQ(run("IF nosuch THEN\nEND IF").code, 3);
  EXPECT_EQ(run("ON ERROR RESUME NEXT\nIF \"x\" THEN\nEND IF").code, 8);
}

TEST(FlowConditionals, BlockLeftOpenIsNotReported) {
  Outcome out = run("DIM RESULT = 1\nIF 0 THEN\nRESULT = 2");
  EXPECT_EQ(out.code, 0);
  EXPECT_EQ(out.result, "1");
}

TEST(FlowLoops, ExitAloneEndsTheScriptNormally) {
  Outcome out = run("DIM RESULT = 1\nFOR i = 1 TO 3\nEXIT\nNEXT\nRESULT = 2");
  EXPECT_EQ(out.code, -1);
  EXPECT_EQ(out.result, "1");
}

TEST(FlowLoops, MissingLoopOfExitOrContinueIsIgnored) {
  EXPECT_EQ(run("DIM RESULT = 1\nWHILE 1\nEXIT DO\nEXIT WHILE\nWEND\nRESULT = 2").result, "2");
  EXPECT_EQ(run("DIM RESULT = 1\nCONTINUE FOR\nRESULT = 2").result, "2");
  EXPECT_EQ(run("DIM RESULT = 1\nEXIT SUB\nRESULT = 2").result, "2");
}

TEST(FlowLoops, ForStartIsKeptUntruncatedUntilTheFirstNext) {
  EXPECT_EQ(run("DIM RESULT = \"\"\nFOR i = 2.5 TO 1 STEP -1\nRESULT = RESULT & i & \",\"\nNEXT\n"
                "RESULT = RESULT & i")
                .result,
            "2.5,1,0");
}

TEST(FlowLoops, NestedWhileRunsInsideASkippedBody) {
  // WHILE and DO take only their own condition, unlike FOR.
  const char* source =
      "DIM RESULT = \"\"\nDIM n = 0\nFOR i = 1 TO 1\nCONTINUE FOR\nWHILE n < 2\nn = n + 1\n"
      "RESULT = RESULT & n\nWEND\nNEXT";
  EXPECT_EQ(run(source).result, "12");
}

TEST(FlowLoops, EndlessDoStopsAtTheTimeLimit) {
  lx::LxBasicScript script;
  script.setScript(std::string_view("DO\nLOOP"));
  script.setTimeout(1);
  script.run();
  ASSERT_TRUE(script.error());
  EXPECT_EQ(script.error()->code(), 31);
}

TEST(FlowProcedures, DefinitionInsideASkippedBranchIsMade) {
  const char* source =
      "IF 0 THEN\nFUNCTION F(a)\nF = a + 1\nEND FUNCTION\nEND IF\nDIM RESULT = F(1)";
  EXPECT_EQ(run(source).result, "2");
}

TEST(FlowProcedures, WrongClosingWordKeepsTheDefinitionOpen) {
  lx::LxBasicScript script;
  script.setScript(std::string_view(
      "ON ERROR RESUME NEXT\nFUNCTION F(a)\nEND SUB\nF = 7\nEND FUNCTION\nDIM RESULT = F(1)"));
  script.runScript();
  EXPECT_EQ(lx::toText(script.valueOf(u"RESULT")), u"7");
}

TEST(FlowProcedures, EmptyArgumentArrivesAsTheNullObject) {
  const char* source = "FUNCTION K(p)\nK = VarType(p)\nEND FUNCTION\nDIM e\nDIM RESULT = K(e)";
  EXPECT_EQ(run(source).result, "3");
}

TEST(FlowProcedures, FailedDefinitionRunsItsBodyAsOrdinaryLines) {
  Outcome out = run("DIM RESULT = 1\nSUB Dim()\nRESULT = 2\nEND SUB");
  EXPECT_EQ(out.code, 26);
  EXPECT_EQ(out.result, "1");
  out = run("ON ERROR RESUME NEXT\nDIM RESULT = 1\nSUB Dim()\nRESULT = 2");
  EXPECT_EQ(out.result, "2");
}

TEST(FlowProcedures, ProceduresPersistAcrossRuns) {
  lx::LxBasicScript script;
  script.setScript(std::string_view("FUNCTION Sq(a)\nSq = a * a\nEND FUNCTION"));
  script.runScript();
  script.setScript(std::string_view("DIM RESULT = Sq(9)"));
  script.runScript();
  EXPECT_EQ(lx::toText(script.valueOf(u"RESULT")), u"81");
}

}  // namespace
