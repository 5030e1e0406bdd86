// Math, random-number and bit built-ins called directly.
#include <cmath>
#include <cstdint>

#include "support/builtin_values.h"

namespace {

using lx::Number;
using lx::Variant;
using namespace lxtest;

TEST(MathFunctions, ReadTheArgumentDirectlyAndAnswerDoubles) {
  EXPECT_EQ(num(call(u"Abs", {u"-3"})), 3.0);
  EXPECT_DOUBLE_EQ(num(call(u"Atn", {I(1)})), std::atan(1.0));
  EXPECT_TRUE(call(u"Sqr", {I(16)}).number().isDouble());
}

TEST(MathFunctions, DomainProblemsAreIeeeValuesNotFailures) {
  EXPECT_TRUE(std::isinf(num(call(u"Log", {I(0)}))));
  EXPECT_LT(num(call(u"Log", {I(0)})), 0);
  EXPECT_TRUE(std::isnan(num(call(u"Log", {I(-1)}))));
  EXPECT_TRUE(std::isnan(num(call(u"Sqr", {I(-1)}))));
}

TEST(MathFunctions, UnreadableArgumentsGiveTheFallback) {
  for (const char16_t* f :
       {u"Abs", u"Atn", u"Cos", u"Exp", u"Log", u"Sin", u"Tan", u"Sqr", u"Sgn", u"Int", u"Fix"}) {
    EXPECT_EQ(num(call(f, {kArray})), 0.0) << lx::toUtf8(f);
    EXPECT_EQ(num(call(f, {kNull})), 0.0) << lx::toUtf8(f);
  }
  EXPECT_TRUE(call(u"Abs", {kArray}).number().isDouble());
  EXPECT_FALSE(call(u"Sqr", {kArray}).number().isDouble());
}

TEST(MathSgn, SignAsInt32) {
  EXPECT_EQ(text(call(u"Sgn", {R(-0.1)})), u"-1");
  EXPECT_EQ(text(call(u"Sgn", {I(7)})), u"1");
  EXPECT_EQ(text(call(u"Sgn", {I(0)})), u"0");
  EXPECT_EQ(text(call(u"Sgn", {Variant::real(NAN)})), u"0");
  EXPECT_EQ(call(u"Sgn", {I(7)}).number().type(), Number::Type::Int32);
}

TEST(MathInt, TruncatesTowardZeroLikeFix) {
  EXPECT_EQ(text(call(u"Int", {R(-2.5)})), u"-2");
  EXPECT_EQ(text(call(u"Fix", {R(-2.5)})), u"-2");
  EXPECT_EQ(text(call(u"Int", {R(-0.5)})), u"0");
  EXPECT_EQ(text(call(u"Int", {R(2.9)})), u"2");
  EXPECT_EQ(text(call(u"Int", {R(3000000000.0)})), u"-2147483648");
  EXPECT_EQ(text(call(u"Int", {Variant::real(NAN)})), u"-2147483648");
}

TEST(MathMod, TruncatingRemainderWithTheSignOfTheDividend) {
  EXPECT_EQ(num(call(u"Mod", {I(7), I(3)})), 1.0);
  EXPECT_EQ(num(call(u"Mod", {I(-7), I(3)})), -1.0);
  EXPECT_EQ(num(call(u"Mod", {I(7), I(-3)})), 1.0);
  EXPECT_EQ(num(call(u"Mod", {R(7.9), R(2.9)})), 1.0);
  EXPECT_TRUE(call(u"Mod", {I(7), I(3)}).number().isDouble());
  EXPECT_EQ(text(call(u"Mod", {I(7), I(0)})), u"0");
  EXPECT_EQ(text(call(u"Mod", {I(INT32_MIN), I(-1)})), u"0");
  EXPECT_EQ(text(call(u"Mod", {kArray, I(3)})), u"0");
}

TEST(MathRound, HalfAwayFromZero) {
  EXPECT_EQ(num(call(u"Round", {R(2.5)})), 3.0);
  EXPECT_EQ(num(call(u"Round", {R(-2.5)})), -3.0);
  EXPECT_EQ(num(call(u"Round", {R(0.125), I(2)})), 0.13);
  EXPECT_EQ(num(call(u"Round", {R(3.14159), I(3)})), 3.142);
}

TEST(MathRound, FactorArithmeticQuirks) {
  EXPECT_EQ(num(call(u"Round", {R(1.005), I(2)})), 1.0);  // 1.005 * 100 is just below 100.5
  EXPECT_EQ(num(call(u"Round", {I(5), I(10)})), 5.0);     // factor 1410065408
  EXPECT_EQ(num(call(u"Round", {R(0.3), I(10)})), std::round(0.3 * 1410065408.0) / 1410065408.0);
  EXPECT_TRUE(std::isnan(num(call(u"Round", {R(1.25), I(-1)}))));
  EXPECT_EQ(num(call(u"Round", {R(2.567), u"1.9"})), 2.6);  // digits truncated
  EXPECT_EQ(text(call(u"Round", {kArray})), u"0");
}

TEST(MathRnd, TinyRangeAndRepeatWithNegative) {
  // The first call in this process: the state starts at 0.
  EXPECT_EQ(num(call(u"Rnd", {I(-1)})), 0.0);
  double r = num(call(u"Rnd", {I(1)}));
  EXPECT_GE(r, 0.0);
  EXPECT_LT(r, 2.2e-11);
  EXPECT_EQ(num(call(u"Rnd", {I(-1)})), r);
  EXPECT_EQ(num(call(u"Rnd", {I(-5)})), r);
  double z = num(call(u"Rnd", {I(0)}));
  EXPECT_LT(z, 2.2e-11);
  EXPECT_EQ(num(call(u"Rnd", {I(-1)})), z);
  // An unreadable argument counts as 1 and draws.
  EXPECT_LT(num(call(u"Rnd", {kArray})), 2.2e-11);
}

TEST(MathBits, Shifts) {
  EXPECT_EQ(num(call(u"LShift", {I(1), I(31)})), -2147483648.0);
  EXPECT_EQ(num(call(u"LShift", {I(1), I(32)})), 1.0);
  EXPECT_EQ(num(call(u"LShift", {I(1), I(33)})), 2.0);
  EXPECT_EQ(num(call(u"LShift", {I(3), I(31)})), -2147483648.0);
  EXPECT_EQ(num(call(u"RShift", {I(-8), I(1)})), -4.0);
  EXPECT_EQ(num(call(u"RShift", {I(-1), I(17)})), -1.0);
  EXPECT_EQ(num(call(u"RShift", {I(256), I(36)})), 16.0);
  EXPECT_TRUE(call(u"RShift", {I(256), I(4)}).number().isDouble());
}

TEST(MathBits, LogicalOperationsReadThroughCInt) {
  EXPECT_EQ(num(call(u"BAnd", {u"12", I(10)})), 8.0);
  EXPECT_EQ(num(call(u"BOr", {I(12), I(3)})), 15.0);
  EXPECT_EQ(num(call(u"BXOr", {u"12.9", I(10)})), 6.0);
  EXPECT_EQ(num(call(u"BOr", {I(-1), I(0)})), -1.0);
  EXPECT_EQ(num(call(u"BAnd", {kArray, I(7)})), 0.0);  // "(x)" reads 0
  EXPECT_EQ(num(call(u"BOr", {kNull, I(7)})), 7.0);    // "<null>" reads 0
}

}  // namespace
