// The fuzzer's own parts: if the generator stopped producing some construct, the comparison
// missed a kind of difference or the minimiser lost the failing lines, the fuzzer would pass
// while proving nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <string>
#include <vector>

#include "difffuzz/minimiser.h"
#include "difffuzz/outcome.h"
#include "difffuzz/program_generator.h"
#include "difffuzz/value_text.h"
#include "lxbasic/value.h"

namespace difffuzz {
namespace {

using std::chrono::milliseconds;

std::string upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

TEST(ProgramGenerator, SameSeedSameProgramAndSeedsDiffer) {
  EXPECT_EQ(generateProgram(7), generateProgram(7));
  EXPECT_NE(generateProgram(7), generateProgram(8));
}

TEST(ProgramGenerator, CorpusCoversTheGrammar) {
  std::string corpus;
  for (uint64_t seed = 1; seed <= 300; ++seed) corpus += upper(generateProgram(seed));
  const char* constructs[] = {
      "REDIM PRESERVE",
      "REDIM ",
      "DIM ",
      "CONST ",
      "FUNCTION ",
      "SUB ",
      "END FUNCTION",
      "END SUB",
      "FOR ",
      "STEP -1",
      "NEXT",
      "WHILE ",
      "WEND",
      "DO WHILE",
      "DO UNTIL",
      "LOOP UNTIL",
      "LOOP WHILE",
      "EXIT FOR",
      "EXIT WHILE",
      "EXIT DO",
      "CONTINUE FOR",
      "CONTINUE DO",
      " ELSE ",
      "END IF",
      "ON ERROR RESUME NEXT",
      "ON ERROR GOTO 0",
      " AND ",
      " OR ",
      "NOT ",
      "&H",
      "&O",
      "1E3",
      ".5",
      "\"\"",
      "A\"\"B",
      "EVAL(",
      "LEN(",
      "INSTR(",
      "MID(",
      "LEFT(",
      "CSTR(",
      "CINT(",
      "UCASE(",
      "ABS(",
      "ISNUMERIC(",
      "TYPENAME(",
      "VARTYPE(",
      "DATESERIAL(",
      "<>",
      "<=",
      ">=",
      "\\",
      "^",
      " _\n",
      "EMPTY",
      "RAISE@(ERR",
      "CLEAR@(ERR)",
      "REM ",
  };
  for (const char* construct : constructs) {
    EXPECT_NE(corpus.find(construct), std::string::npos) << "never generated: " << construct;
  }
}

TEST(ProgramGenerator, ProgramsEndWithinTheLimit) {
  for (uint64_t seed = 1; seed <= 150; ++seed) {
    Outcome o = runProgram(generateProgram(seed), true, milliseconds(5000));
    EXPECT_FALSE(o.timedOut) << "seed " << seed << " did not end:\n" << generateProgram(seed);
  }
}

// Each pair of scripts leaves outcomes that differ in one observation; the comparison must
// name it.
TEST(Differences, EveryObservationCounts) {
  struct Case {
    const char* a;
    const char* b;
    const char* named;
  };
  const Case cases[] = {
      {"DIM RESULT = 1", "DIM RESULT = \"1\"", "RESULT"},
      {"DIM RESULT = 1", "DIM RESULT = 1.5", "RESULT"},
      {"DIM x = 1", "DIM x = \"1\"", "variable X"},
      {"DIM x", "DIM x = \"\"", "variable X"},
      {"DIM x = DateSerial(2020, 1, 2)", "DIM x = DateSerial(2020, 1, 3)", "variable X"},
      {"DIM x(2)", "DIM x(3)", "variable X"},
      {"DIM x = 1", "DIM y = 1", "variable X"},
      {"CONST x = 1", "DIM x = 1", "variable X"},
      {"zz = 1", "DIM zz\nzz = 1 / 0", "error code"},
      {"zz = 1", "\nzz = 1", "error line number"},
      {"zz = 1", "zz  =  1", "error line"},
      {"zz = 1", "yy = 1", "error message"},
      {"DIM a = 1", "ECHO 1", "exception"},
  };
  for (const auto& c : cases) {
    Outcome a = runProgram(c.a, true, milliseconds(5000));
    Outcome b = runProgram(c.b, true, milliseconds(5000));
    auto found = differences(a, b);
    bool named = std::any_of(found.begin(), found.end(),
                             [&](const std::string& d) { return d.rfind(c.named, 0) == 0; });
    EXPECT_TRUE(named) << c.a << " | " << c.b << ": no difference named " << c.named;
  }
}

TEST(Differences, RepeatedRunsAgreeAndTemporariesStayOut) {
  // Error messages here name a temporary, whose number grows from run to run.
  const std::string program = "DIM v2\nIF (v2 * \"x\") = 0.1 \\ \"(x)\" THEN v2 = 1\n";
  for (bool reference : {true, false}) {
    Outcome first = runProgram(program, reference, milliseconds(5000));
    Outcome second = runProgram(program, reference, milliseconds(5000));
    EXPECT_TRUE(differences(first, second).empty());
    EXPECT_NE(first.desc.find("____var_#"), std::string::npos) << first.desc;
    for (const auto& entry : first.vars) EXPECT_EQ(entry.first.find("____VAR_"), std::string::npos);
  }
}

TEST(RunProgram, EndlessLoopIsStoppedAndMarked) {
  Outcome o = runProgram("DIM n = 0\nDO\nn = n + 1\nLOOP\n", true, milliseconds(200));
  EXPECT_TRUE(o.timedOut);
  EXPECT_EQ(o.code, -1);  // terminate() ends the run as a "Correct exit"
}

TEST(RenderValue, KindsAndNumberTypesStayApart) {
  const std::vector<lx::Variant> values = {
      lx::Variant(),         lx::Variant(u""),         lx::Variant(u"1"),
      lx::Variant::int32(1), lx::Variant::int64(1),    lx::Variant::boolean(true),
      lx::Variant::real(1),  lx::Variant::date(86400), lx::Variant(lx::Array::make()),
  };
  for (size_t i = 0; i < values.size(); ++i) {
    for (size_t j = i + 1; j < values.size(); ++j) {
      EXPECT_NE(renderValue(values[i]), renderValue(values[j])) << i << " vs " << j;
    }
  }
}

TEST(RenderValue, ArrayHoldingItselfEnds) {
  auto array = lx::Array::make();
  auto slot = lx::LxValue::make();
  array->items.push_back(lx::Variant(lx::ObjectRef(slot)));
  slot->setData(lx::Variant(array));
  std::string text = renderValue(lx::Variant(array));
  EXPECT_NE(text.find("..."), std::string::npos) << text;
}

TEST(RenderValue, TemporaryNumbersAreMasked) {
  EXPECT_EQ(withoutTemporaryNumbers("x ____var_12 y ____VAR_3 ____var_"),
            "x ____var_# y ____VAR_# ____var_");
}

TEST(Minimiser, KeepsOnlyTheLinesTheFaultNeeds) {
  struct Case {
    std::string program;
    std::vector<std::string> needed;
    std::string expected;
  };
  const Case cases[] = {
      {"a\nb\nc\nd\ne\nf\ng\n", {"c", "f"}, "c\nf\n"},
      {"a\nb\nc\n", {}, ""},
      {"x\n", {"x"}, "x\n"},
      {"1\n2\n3\n4\n5\n6\n7\n8\n9\n", {"1", "9"}, "1\n9\n"},
  };
  for (const auto& c : cases) {
    auto fails = [&](const std::string& candidate) {
      for (const auto& line : c.needed) {
        if (candidate.find(line + "\n") == std::string::npos) return false;
      }
      return true;
    };
    EXPECT_EQ(minimise(c.program, fails), c.expected);
  }
}

}  // namespace
}  // namespace difffuzz
