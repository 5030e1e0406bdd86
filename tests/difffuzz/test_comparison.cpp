// Running, recording and comparing outcomes, and shrinking a failing program: if any of them
// lost an observation, a real difference between the evaluators would pass unseen.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "difffuzz/minimiser.h"
#include "difffuzz/outcome.h"
#include "difffuzz/value_text.h"
#include "lxbasic/error.h"
#include "lxbasic/value.h"

namespace difffuzz {
namespace {

using std::chrono::milliseconds;

Outcome run(const std::string& program, bool reference = true) {
  return runProgram(program, reference, milliseconds(5000));
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
      {"DIM x(2)\nx(1) = 5", "DIM x(2)\nx(1) = \"5\"", "variable X"},
      {"DIM x = 1", "DIM y = 1", "variable X"},
      {"CONST x = 1", "DIM x = 1", "variable X"},
      {"zz = 1", "DIM zz\nzz = 1 / 0", "error code"},
      {"zz = 1", "\nzz = 1", "error line number"},
      {"zz = 1", "zz  =  1", "error line"},
      {"zz = 1", "yy = 1", "error message"},
      {"DIM a = 1", "zz = 1", "error set"},
      {"DIM a = 1", "ECHO 1", "exception"},
      {"Bump(1)", "Bump(2)", "host object"},
      {"DIM t = Total", "DIM t = Twice(1)", "host object"},
  };
  for (const auto& c : cases) {
    auto found = differences(run(c.a), run(c.b));
    bool named = std::any_of(found.begin(), found.end(),
                             [&](const std::string& d) { return d.rfind(c.named, 0) == 0; });
    EXPECT_TRUE(named) << c.a << " | " << c.b << ": no difference named " << c.named;
  }
}

TEST(Differences, RepeatedRunsAgreeAndTemporariesStayOut) {
  // The error message names a temporary, whose number grows from run to run.
  const std::string program = "DIM v2\nIF (v2 * \"x\") = 0.1 \\ \"(x)\" THEN v2 = 1\n";
  for (bool reference : {true, false}) {
    Outcome first = run(program, reference);
    Outcome second = run(program, reference);
    EXPECT_TRUE(differences(first, second).empty());
    EXPECT_NE(first.desc.find("____var_#"), std::string::npos) << first.desc;
    for (const auto& entry : first.vars) {
      EXPECT_EQ(entry.first.find("____VAR_"), std::string::npos);
    }
  }
}

// The recorded error is the one the host sees: code, message, line text and number.
TEST(RunProgram, RecordsTheErrorAsTheHostSeesIt) {
  struct Case {
    const char* program;
    int code;
    const char* desc;
    const char* line;
    int lineNumber;
  };
  const Case cases[] = {
      {"DIM x\n\nx = 1 / 0", 14, "Division by zero", "x = 1 / 0", 3},
      {"zz = 1", 3, "Variable \"zz\" not found", "zz = 1", 1},
      {"FUNCTION F(a)\nF = nope\nEND FUNCTION\nDIM y = F(1)", 103, "Variable \"nope\" not found",
       "F = nope", -1},
  };
  for (bool reference : {true, false}) {
    for (const auto& c : cases) {
      Outcome o = run(c.program, reference);
      EXPECT_TRUE(o.hasError) << c.program;
      EXPECT_EQ(o.code, c.code) << c.program;
      EXPECT_EQ(o.desc, c.desc) << c.program;
      EXPECT_EQ(o.line, c.line) << c.program;
      EXPECT_EQ(o.lineNumber, c.lineNumber) << c.program;
      EXPECT_EQ(o.vars.count("ERR"), 1u);
    }
  }
}

// A second run on the same object starts from what the first left: here the declaration
// fails, ON ERROR lets it pass, and the count goes on from 1.
TEST(RunProgram, LaterRunsKeepTheirOwnOutcome) {
  Outcome o = runProgram("ON ERROR RESUME NEXT\nDIM n = 0, RESULT\nn = n + 1\nRESULT = n", true,
                         milliseconds(5000), 2);
  ASSERT_TRUE(o.next);
  EXPECT_EQ(o.result, "Number(double) 1");
  EXPECT_EQ(o.next->result, "Number(double) 2");
  EXPECT_EQ(o.next->code, 17);
  EXPECT_FALSE(o.next->next);

  Outcome once = runProgram("DIM n = 1", true, milliseconds(5000), 1);
  Outcome twice = runProgram("DIM n = 1", true, milliseconds(5000), 2);
  auto found = differences(once, twice);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rfind("another run", 0), 0u) << found[0];
  auto changed = std::make_shared<Outcome>(*twice.next);
  changed->vars["N"] = "changed";
  twice.next = changed;
  Outcome other = runProgram("DIM n = 1", true, milliseconds(5000), 2);
  found = differences(twice, other);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].rfind("run 2: variable N", 0), 0u) << found[0];
}

TEST(RunProgram, ExceptionKeepsResultSoFar) {
  Outcome o = run("DIM RESULT = 5\nECHO 1\nRESULT = 6");
  EXPECT_FALSE(o.exception.empty());
  EXPECT_EQ(o.result, "Number(double) 5");
}

TEST(RunProgram, EndlessLoopIsStoppedAndMarked) {
  Outcome o = runProgram("DIM n = 0\nDO\nn = n + 1\nLOOP\n", true, milliseconds(200));
  EXPECT_TRUE(o.timedOut);
  EXPECT_EQ(o.code, -1);  // terminate() ends the run as a "Correct exit"
}

TEST(RenderValue, KindsAndNumberTypesStayApart) {
  const std::vector<lx::Variant> values = {
      lx::Variant(),
      lx::Variant(u""),
      lx::Variant(u"1"),
      lx::Variant::int32(1),
      lx::Variant::int64(1),
      lx::Variant::boolean(true),
      lx::Variant::real(1),
      lx::Variant::date(86400),
      lx::Variant(lx::Array::make()),
      lx::Variant(lx::ObjectRef(lx::LxValue::make(lx::Variant::real(1)))),
      lx::Variant(lx::ObjectRef(std::make_shared<lx::LxError>(1, u"a", u"b", 2))),
      lx::Variant(lx::ObjectRef(std::make_shared<lx::LxError>(1, u"a", u"b", 3))),
  };
  for (size_t i = 0; i < values.size(); ++i) {
    for (size_t j = i + 1; j < values.size(); ++j) {
      EXPECT_NE(renderValue(values[i]), renderValue(values[j])) << i << " vs " << j;
    }
  }
}

TEST(RenderValue, SlotsShowConstancyAndNestedArraysTheirElements) {
  lx::LxValue constant(lx::Variant::int32(1), true);
  lx::LxValue variable(lx::Variant::int32(1), false);
  EXPECT_NE(renderSlot(constant), renderSlot(variable));

  auto inner = lx::Array::make({lx::Variant(lx::ObjectRef(lx::LxValue::make(u"x")))});
  auto other = lx::Array::make({lx::Variant(lx::ObjectRef(lx::LxValue::make(u"y")))});
  EXPECT_NE(renderValue(lx::Variant(lx::Array::make({lx::Variant(inner)}))),
            renderValue(lx::Variant(lx::Array::make({lx::Variant(other)}))));
}

TEST(RenderValue, ArrayHoldingItselfEnds) {
  auto array = lx::Array::make();
  auto slot = lx::LxValue::make();
  array->items.push_back(lx::Variant(lx::ObjectRef(slot)));
  slot->setData(lx::Variant(array));
  std::string text = renderValue(lx::Variant(array));
  EXPECT_NE(text.find("..."), std::string::npos) << text;
  slot->setData(lx::Variant());  // breaks the cycle, which would otherwise never be freed
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
      {"keep\nkeep\nkeep\n", {"keep"}, "keep\n"},
  };
  for (const auto& c : cases) {
    int calls = 0;
    auto fails = [&](const std::string& candidate) {
      ++calls;
      for (const auto& line : c.needed) {
        if (candidate.find(line + "\n") == std::string::npos) return false;
      }
      return true;
    };
    EXPECT_EQ(minimise(c.program, fails), c.expected);
    EXPECT_LT(calls, 100);
  }
}

// The real use: shrinking a program while the two runs of it still disagree somewhere.
TEST(Minimiser, ShrinksAProgramToTheLineThatDiffers) {
  const std::string program = "DIM a = 1\nDIM b = 2\nDIM c = Len(\"abc\")\nDIM d = 4\n";
  auto fails = [](const std::string& candidate) {
    Outcome o = run(candidate);
    auto it = o.vars.find("C");
    return it != o.vars.end() && it->second == "Number(i32) 3";
  };
  ASSERT_TRUE(fails(program));
  EXPECT_EQ(minimise(program, fails), "DIM c = Len(\"abc\")\n");
}

}  // namespace
}  // namespace difffuzz
