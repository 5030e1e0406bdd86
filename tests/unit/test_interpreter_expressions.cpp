// Operands, operators, conditions and assignments, as scripts see them.
#include <gtest/gtest.h>

#include "support/run.h"

using lxtest::run;

namespace {

std::u16string value(std::u16string_view expression) {
  std::u16string text = u"RESULT = ";
  text += expression;
  auto o = run(text);
  EXPECT_EQ(o.code(), 0) << o.description();
  return o.text();
}

int32_t failure(std::u16string_view text) {
  return run(text).code();
}

}  // namespace

TEST(Operands, StringLiterals) {
  EXPECT_EQ(value(u"\"a\"\"b\""), u"a\"b");
  EXPECT_EQ(value(u"\"\""), u"");
  EXPECT_EQ(failure(u"RESULT = \"abc"), 2);
}

TEST(Operands, RadixLiterals) {
  EXPECT_EQ(value(u"&HFF"), u"255");
  EXPECT_EQ(value(u"&o17"), u"15");
  EXPECT_EQ(value(u"&HZZ"), u"0");
  EXPECT_EQ(value(u"&hff + 1"), u"256");  // "&" before H is a literal, not concatenation
  EXPECT_EQ(failure(u"RESULT = &H"), 3);  // too short for a literal, and no number
  // A bracketed variable leaves its name in the text, so after "&" it starts a literal that
  // swallows the operand before it; other brackets leave a temporary and concatenate.
  const auto glued = run(u"DIM p = 3, Hex = 1, x = 2\nRESULT = p &(Hex)");
  EXPECT_EQ(glued.code(), 3);
  EXPECT_NE(glued.description().find("Variable \"p &Hex\" not found"), std::string::npos);
  EXPECT_EQ(run(u"DIM p = 3, Hex = 1, x = 2\nRESULT = p &(x)").text(), u"32");
  EXPECT_EQ(run(u"DIM p = 3, Hex = 1, x = 2\nRESULT = p &(Hex + 1)").text(), u"32");
}

TEST(Operands, NumbersScanOnlyTheirPrefix) {
  EXPECT_EQ(value(u"1e3"), u"1000");
  EXPECT_EQ(value(u".5"), u"0.5");
  EXPECT_EQ(value(u"12abc"), u"12");
  EXPECT_EQ(failure(u"RESULT = abc"), 3);
}

TEST(Operands, VariablesAreFoundBeforeFunctionsOfTheSameName) {
  EXPECT_EQ(value(u"ScriptEngine"), u"LxBasic");
  EXPECT_EQ(run(u"DIM ScriptEngine = 3\nRESULT = ScriptEngine").text(), u"3");
}

TEST(Operators, PrecedenceHasTwoLevelsEachLeftToRight) {
  EXPECT_EQ(value(u"2 + 3 * 4"), u"14");
  EXPECT_EQ(value(u"(2 + 3) * 4"), u"20");
  EXPECT_EQ(value(u"10 - 2 - 3"), u"5");
  EXPECT_EQ(value(u"2 * 3 ^ 2"), u"36");
  EXPECT_EQ(value(u"2 ^ 3 ^ 2"), u"64");
  EXPECT_EQ(value(u"1 + 2 * 3"), u"7");
  EXPECT_EQ(value(u"\"a\" & 1 + 2"), u"a12");
}

TEST(Operators, UnarySignsAndStrings) {
  EXPECT_EQ(value(u"-5"), u"-5");
  EXPECT_EQ(value(u"\"1+1\""), u"1+1");
  EXPECT_EQ(value(u"\"ab\" + 1"), u"ab1");
  EXPECT_EQ(value(u"1 + \"2\""), u"3");
  EXPECT_EQ(value(u"\"2\" + 1"), u"21");
  EXPECT_EQ(value(u"\"banana\" - \"a\""), u"bnn");
}

TEST(Operators, IntegerDivisionTruncatesAndDivisionByZeroIsReported) {
  EXPECT_EQ(value(u"7 \\ 2"), u"3");
  EXPECT_EQ(value(u"-7 \\ 2"), u"-3");
  auto o = run(u"RESULT = 7 / 0");
  EXPECT_EQ(o.code(), 14);
  EXPECT_EQ(o.error->desc(), u"Division by zero");
}

TEST(Operators, ResultKindFollowsTheLeftOperand) {
  // A String, Empty or Date on the left makes a date of a numeric result.
  EXPECT_EQ(run(u"RESULT = \"3\" * 2\nRESULT = VarType(RESULT)").text(), u"5");
  EXPECT_EQ(run(u"RESULT = 2 * \"3\"\nRESULT = VarType(RESULT) & RESULT").text(), u"26");
  EXPECT_EQ(run(u"DIM e\nRESULT = VarType(e + 1)").text(), u"5");
}

TEST(Operators, ArraysAddAndSubtract) {
  EXPECT_EQ(value(u"Join(Array(1, 2, 2, 3) - Array(2), \",\")"), u"1,3");
  EXPECT_EQ(value(u"UBound(Array(1, 2) + Array(3))"), u"2");
}

TEST(Comparison, OrderingByTheLeftKind) {
  EXPECT_EQ(value(u"(\"abc\" > \"ABC\")"), u"1");
  EXPECT_EQ(value(u"(10 > \"9\")"), u"1");
  EXPECT_EQ(value(u"(1 <> 2)"), u"1");
  EXPECT_EQ(value(u"(2 <= 2)"), u"1");
  EXPECT_EQ(value(u"(3 >= 4)"), u"0");
}

TEST(Conditions, CombineStrictlyLeftToRight) {
  EXPECT_EQ(value(u"(1 < 2 AND 3 > 4 OR 1 = 1)"), u"1");
  EXPECT_EQ(value(u"(NOT 1 = 2)"), u"1");
}

TEST(Conditions, ABareOperandIsTrueOnlyAboveZero) {
  EXPECT_EQ(run(u"DIM a = -1, b = 1\nRESULT = (a AND b)").text(), u"0");
  EXPECT_EQ(run(u"DIM a = 2, b = 1\nRESULT = (a AND b)").text(), u"1");
}

TEST(Conditions, OperandsInBracketsMustBeNumbers) {
  EXPECT_EQ(value(u"((1 = 1) AND (2 = 2))"), u"1");
  EXPECT_EQ(value(u"(NOT (\"a\"))"), u"0");  // inner brackets are values by then
}

TEST(Assignment, TargetsAndTheirChecks) {
  auto o = run(u"y = 1");
  EXPECT_EQ(o.code(), 3);
  EXPECT_EQ(o.error->desc(), u"Variable \"y\" not found");
  EXPECT_EQ(failure(u"CONST c = 1\nc = 2"), 15);
  EXPECT_EQ(failure(u"true = 0"), 15);
  EXPECT_EQ(failure(u"vbOK = 0"), 15);
}

TEST(Assignment, ArrayElementsAreSlotsOfTheArray) {
  auto o = run(u"DIM a(4)\na(2) = \"x\"\nRESULT = a(2) & a(0) & UBound(a)");
  EXPECT_EQ(o.text(), u"x4");
  EXPECT_EQ(failure(u"DIM a(4)\na(7) = 1"), 20);
  EXPECT_EQ(run(u"DIM a(2)\na(2.9) = 5\nRESULT = a(2)").text(), u"5");
}

TEST(Calls, ForbiddenAndUnknownNames) {
  EXPECT_EQ(failure(u"RELEASE@(err)"), 28);
  EXPECT_EQ(failure(u"x = release(1)"), 3);  // the target is checked first
  EXPECT_EQ(failure(u"RESULT = release(1)"), 28);
  auto o = run(u"RESULT = f(1)");
  EXPECT_EQ(o.code(), 5);
  EXPECT_EQ(o.error->desc(), u"Function \"f\" not found");
  EXPECT_EQ(failure(u"RESULT = Left(\"abc\")"), 5);  // wrong count finds no method
}

TEST(Calls, UnbalancedBrackets) {
  EXPECT_EQ(failure(u"RESULT = (1 + 2"), 2);
  EXPECT_EQ(failure(u"RESULT = 1 + 2)"), 2);
}
