// DIM, CONST and REDIM.
#include <gtest/gtest.h>

#include "support/run.h"

using lxtest::run;

namespace {
int32_t code(std::u16string_view text) {
  return run(text).code();
}
std::u16string result(std::u16string_view text) {
  return run(text).text();
}
}  // namespace

TEST(Dim, ArraysHaveBoundPlusOneElements) {
  EXPECT_EQ(result(u"DIM a(2)\nRESULT = UBound(a) & IsEmpty(a(2))"), u"20");  // an Empty element
  EXPECT_EQ(result(u"DIM a(0)\nRESULT = UBound(a)"), u"0");
  EXPECT_EQ(code(u"DIM a(-1)"), 19);
  EXPECT_EQ(result(u"DIM m(1, 2)\nRESULT = UBound(m, 1) & UBound(m, 2)"), u"12");
  EXPECT_EQ(result(u"DIM m(1, 2)\nm(1, 2) = 7\nRESULT = m(1, 2)"), u"7");
}

TEST(Dim, SeveralDeclarationsInOneStatement) {
  // x is Empty, which reaches VarType as the null object (kind 3).
  EXPECT_EQ(result(u"DIM x, y(3), z = 5\nRESULT = z + UBound(y) & VarType(x)"), u"83");
  EXPECT_EQ(code(u"DIM x\nDIM X"), 17);
  // The first error stops the statement; earlier declarations stay.
  auto o = run(u"DIM p = 1, q(2) = 3");
  EXPECT_EQ(o.code(), 18);
}

TEST(Dim, Errors) {
  EXPECT_EQ(code(u"DIM"), 1);
  EXPECT_EQ(code(u"CONST"), 1);
  EXPECT_EQ(code(u"DIM a(2) = 1"), 18);
  EXPECT_EQ(code(u"DIM a(2"), 2);
  EXPECT_EQ(code(u"CONST c"), 2);
  EXPECT_EQ(code(u"DIM a$"), 11);
  EXPECT_EQ(code(u"DIM a(\"x\")"), 6);
  EXPECT_EQ(code(u"DIM x = 1 = 2"), 2);
}

TEST(Dim, ReservedWordsAreCheckedOnlyForArraysAndInitialisedNames) {
  EXPECT_EQ(code(u"DIM if"), 0);
  EXPECT_EQ(code(u"DIM if = 1"), 26);
  EXPECT_EQ(code(u"DIM if(2)"), 26);
}

TEST(Dim, InitialValuesAreCopiedNotShared) {
  EXPECT_EQ(result(u"DIM a = 1\nDIM b = a\nb = 2\nRESULT = a"), u"1");
}

// Past the element limit the line fails with "Out of memory", in both modes, before anything
// is made; the run's own memory limit plays no part.
TEST(Dim, HugeArraysFailTheirLineInsteadOfExhaustingMemory) {
  for (bool reference : {false, true}) {
    lx::LxBasicScript s;
    s.setReferenceEvaluator(reference);
    auto o = run(s, u"DIM a(2)\nDIM b(2000000000)\nREDIM a(30000, 30000)");
    ASSERT_TRUE(o.error);
    EXPECT_EQ(o.error->code(), 36);
    EXPECT_EQ(o.error->lineNumber(), 2);
    // Trapped; the array is left as it was.
    o = run(s,
            u"DIM RESULT, q(2)\nON ERROR RESUME NEXT\nREDIM PRESERVE q(100000000)\n"
            u"RESULT = UBound(q)");
    EXPECT_EQ(o.code(), 36);
    EXPECT_EQ(o.text(), u"2");
  }
}

TEST(Const, MakesReadOnlySlots) {
  EXPECT_EQ(result(u"CONST pi = 3.14\nRESULT = pi"), u"3.14");
  EXPECT_EQ(code(u"CONST pi = 3.14\npi = 3"), 15);
}

TEST(ReDim, ResizesOnlyTheLastDimension) {
  EXPECT_EQ(result(u"DIM a(2)\na(0) = 9\nREDIM PRESERVE a(5)\nRESULT = UBound(a) & a(0)"), u"59");
  EXPECT_EQ(result(u"DIM a(2)\na(0) = 9\nREDIM a(5)\nRESULT = UBound(a) & a(0)"), u"5");
  EXPECT_EQ(result(u"DIM a(5)\na(1) = 4\nREDIM PRESERVE a(1)\nRESULT = UBound(a) & a(1)"), u"14");
  EXPECT_EQ(code(u"DIM m(1, 2)\nREDIM m(3, 2)"), 30);
  EXPECT_EQ(code(u"DIM m(1, 2)\nREDIM m(3)"), 29);
  EXPECT_EQ(result(u"DIM m(1, 2)\nREDIM m(1, 4)\nRESULT = UBound(m, 2)"), u"4");
  EXPECT_EQ(code(u"DIM a(2)\nREDIM a(-1)"), 19);
  EXPECT_EQ(code(u"DIM a(2)\nREDIM a(2"), 2);
  // No bounds on something that is no array: no dimensions on either side, nothing to do.
  EXPECT_EQ(code(u"DIM x = 1\nREDIM x()\nREDIM a = Array()"), 0);
  EXPECT_EQ(code(u"DIM a(2)\nREDIM a()"), 29);
}

TEST(ReDim, LastBoundThatWrapsIsRefusedAndChangesNothing) {
  auto o = run(u"DIM a(2)\nON ERROR RESUME NEXT\nREDIM a(2147483647)\nRESULT = UBound(a)");
  EXPECT_EQ(o.text(), u"2");
  EXPECT_EQ(o.code(), 18);
}
