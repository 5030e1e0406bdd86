// The shape check scripts get before a run (lxbasic --check, interactive collection of
// blocks): what it must find, where, and what it must leave alone.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lxbasic/check.h"
#include "lxbasic/script.h"

namespace {

using Kind = lx::CheckFinding::Kind;

std::string render(const std::vector<lx::CheckFinding>& findings) {
  std::string s;
  for (const auto& f : findings) s += std::to_string(f.lineNumber) + ": " + f.message + "\n";
  return s;
}

struct Case {
  const char* name;
  const char* script;
  const char* expected;  // "LINE: message" lines
};

const Case kCases[] = {
    {"well formed blocks of every kind",
     "DIM n = 0\nIF n = 0 THEN\n  FOR i = 1 TO 3\n    n = n + i\n  NEXT\nELSE\n  n = 1\nEND IF\n"
     "WHILE n < 10\n  n = n + 1\nWEND\nDO UNTIL n > 20\n  n = n + 1\nLOOP\n"
     "SUB S(a)\n  Print(a)\nEND SUB\nFUNCTION F(a)\n  F = a\nEND FUNCTION\n",
     ""},
    {"single-line IF opens nothing", "IF 1 THEN Print(\"x\") ELSE Print(\"y\")\n", ""},
    {"FOR left open", "DIM a\nFOR i = 1 TO 2\n  a = i\n", "2: FOR without NEXT\n"},
    {"block IF left open, any letter case", "if 1 then\n", "1: IF without END IF\n"},
    {"every kind left open names its own closer", "SUB S()\nFUNCTION F()\nWHILE 1\nDO\n",
     "1: SUB without END SUB\n2: FUNCTION without END FUNCTION\n3: WHILE without WEND\n"
     "4: DO without LOOP\n"},
    {"closed twice", "FOR i = 1 TO 2\nNEXT\nNEXT\n", "3: NEXT without FOR\n"},
    {"closers without openers use the engine's words", "WEND\nLOOP\nEND IF\nELSE\nEND SUB\n",
     "1: WEND without WHILE\n2: LOOP without DO\n3: END IF without IF\n4: ELSE without IF\n"
     "5: END SUB without SUB\n"},
    {"a closer skipping an inner block reports the inner one", "WHILE 1\n  FOR i = 1 TO 2\nWEND\n",
     "2: FOR without NEXT before the WEND on line 3\n"},
    {"second word ENDIF closes, ENDIF alone does not", "IF 1 THEN\nEND ENDIF\nIF 1 THEN\nENDIF\n",
     "3: IF without END IF\n4: ENDIF alone does not close a block: write END IF\n"},
    {"IF without THEN", "IF a > 1\n", "1: IF without THEN\n"},
    {"THEN inside a string still counts, as the engine sees it", "IF a = \"x THEN\" THEN\n",
     "1: IF without END IF\n"},
    {"colon separates statements outside strings and brackets",
     "FOR i = 1 TO 2 : Print(\"a:b\") : NEXT\n", ""},
    {"unbalanced brackets", "DIM a = (1 + (2)\nDIM b = 1)\nDIM c = ((1\n",
     "1: bracket not closed\n2: closing bracket without an opening one\n"
     "3: 2 brackets not closed\n"},
    {"brackets inside strings do not count", "DIM a = \"(\" & \")\" & \"((\"\n", ""},
    {"quotes", "DIM a = \"open\nDIM b = \"say \"\"hi\"\"\"\n",
     "1: string not closed: a double quote is missing\n"},
    {"REM hides the rest of its line", "REM FOR ( \"\nDIM a = 1 : REM NEXT )\n", ""},
    {"continued lines are one statement, reported at their first line",
     "DIM a = (1 + _\n  2)\nFOR i = 1 _\n  TO 3\n", "3: FOR without NEXT\n"},
    {"continuation past the end", "DIM a = 1 + _\n",
     "1: the last line continues (\"_\") past the end\n"},
    {"carriage returns end lines too", "FOR i = 1 TO 2\r\nNEXT\r\nNEXT\rWEND\n",
     "3: NEXT without FOR\n4: WEND without WHILE\n"},
    {"tabs separate words", "FOR\ti = 1 TO 2\nNEXT\n", ""},
};

TEST(ScriptCheck, FindsWhatIsWrongWithTheShapeAndOnlyThat) {
  for (const Case& c : kCases) {
    EXPECT_EQ(render(lx::checkScript(std::string_view(c.script))), c.expected) << c.name;
  }
}

TEST(ScriptCheck, Utf16TextGivesTheSameFindings) {
  EXPECT_EQ(render(lx::checkScript(lx::UStringView(u"DIM ä = \"ö\"\nFOR i = 1 TO 2\n"))),
            "2: FOR without NEXT\n");
}

TEST(ScriptCheck, OnlyUnclosedTellsAnUnfinishedScriptFromAWrongOne) {
  EXPECT_TRUE(lx::onlyUnclosed(lx::checkScript(std::string_view("FOR i = 1 TO 2\nIF 1 THEN\n"))));
  EXPECT_TRUE(lx::onlyUnclosed(lx::checkScript(std::string_view("DIM a = 1 + _\n"))));
  EXPECT_FALSE(lx::onlyUnclosed(lx::checkScript(std::string_view("FOR i = 1 TO 2\nWEND\n"))));
  EXPECT_FALSE(lx::onlyUnclosed(lx::checkScript(std::string_view("DIM a = (1\n"))));
  for (const auto& f : lx::checkScript(std::string_view("DIM a = (1\n"))) {
    EXPECT_EQ(f.kind, Kind::Brackets);
  }
}

TEST(ScriptCheck, TheScriptObjectStillChecksNothing) {
  lx::LxBasicScript script;
  script.setScript(std::string_view("FOR i = 1 TO 2\n"));
  EXPECT_TRUE(script.checkSyntax());
}

}  // namespace
