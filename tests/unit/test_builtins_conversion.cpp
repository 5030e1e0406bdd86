// Conversion built-ins called directly, as the bridge calls them.
#include <cstdint>
#include <limits>

#include "foundation/day_serial.h"
#include "lxbasic/exceptions.h"
#include "support/builtin_values.h"

namespace {

using lx::Number;
using lx::Variant;
using namespace lxtest;

TEST(ConversionCInt, TruncatesTheLeadingNumberOfTheText) {
  EXPECT_EQ(text(call(u"CInt", {u"12abc"})), u"12");
  EXPECT_EQ(text(call(u"CInt", {u"abc"})), u"0");
  EXPECT_EQ(text(call(u"CInt", {R(3.99)})), u"3");
  EXPECT_EQ(text(call(u"CInt", {R(-3.99)})), u"-3");
  EXPECT_EQ(text(call(u"CInt", {u"-2.7"})), u"-2");
}

TEST(ConversionCInt, SaturatesAndAnswersInt32) {
  Variant big = call(u"CInt", {u"99999999999"});
  ASSERT_TRUE(big.isNumber());
  EXPECT_EQ(big.number().type(), Number::Type::Int32);
  EXPECT_EQ(big.number().toInt64(), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(call(u"CInt", {u"-99999999999"}).number().toInt64(),
            std::numeric_limits<int32_t>::min());
}

TEST(ConversionCInt, DateGivesItsSerialWithTheFraction) {
  Variant date = Variant::date(1.0e9 + 3600 * 6);
  double serial = lx::DateToFloat(date).toDouble();
  Variant r = call(u"CInt", {date});
  ASSERT_TRUE(r.isNumber());
  EXPECT_DOUBLE_EQ(r.number().toDouble(), serial);
  EXPECT_NE(serial, static_cast<double>(static_cast<int64_t>(serial)));
  EXPECT_DOUBLE_EQ(call(u"CLng", {date}).number().toDouble(), serial);
  EXPECT_DOUBLE_EQ(call(u"CDbl", {date}).number().toDouble(), serial);
}

TEST(ConversionCInt, NullObjectReadsZero) {
  // The null object's text "<null>" has no leading number.
  EXPECT_EQ(text(call(u"CInt", {kNull})), u"0");
}

TEST(ConversionCLng, SixtyFourBits) {
  Variant r = call(u"CLng", {u"5000000000"});
  EXPECT_EQ(r.number().type(), Number::Type::Int64);
  EXPECT_EQ(r.number().toInt64(), 5000000000LL);
  EXPECT_EQ(call(u"CLng", {u"-99999999999999999999"}).number().toInt64(),
            std::numeric_limits<int64_t>::min());
}

TEST(ConversionCByte, KeepsTheLowByteSigned) {
  EXPECT_EQ(text(call(u"CByte", {I(200)})), u"-56");
  EXPECT_EQ(text(call(u"CByte", {I(255)})), u"-1");
  EXPECT_EQ(text(call(u"CByte", {I(256)})), u"0");
  EXPECT_EQ(text(call(u"CByte", {I(-129)})), u"127");
  EXPECT_EQ(text(call(u"CByte", {u"65.9"})), u"65");
}

TEST(ConversionCBool, TruthReadingRule) {
  for (const char16_t* t : {u"1", u"-1", u"10", u"True", u"yes", u"007", u" 0012", u"t"}) {
    EXPECT_TRUE(call(u"CBool", {t}).number().toBool()) << lx::toUtf8(t);
  }
  for (const char16_t* t : {u"0", u"0.5", u"False", u"No", u"", u"no"}) {
    EXPECT_FALSE(call(u"CBool", {t}).number().toBool()) << lx::toUtf8(t);
  }
  EXPECT_FALSE(call(u"CBool", {R(0.5)}).number().toBool());
  EXPECT_TRUE(call(u"CBool", {Variant::boolean(true)}).number().toBool());
}

TEST(ConversionCCur, ReadsTheDoubleOfTheText) {
  Variant r = call(u"CCur", {u"1.5e3xyz"});
  ASSERT_TRUE(r.number().isDouble());
  EXPECT_EQ(r.number().toDouble(), 1500.0);
  EXPECT_EQ(call(u"CSng", {u"0.1"}).number().toDouble(), 0.1);  // no single precision
  EXPECT_EQ(call(u"CDbl", {kArray}).number().toDouble(), 0.0);
}

TEST(ConversionCStr, TextOfTheValue) {
  EXPECT_EQ(call(u"CStr", {kNull}).string(), u"<null>");
  EXPECT_EQ(call(u"CStr", {Variant()}).string(), u"(null)");
  EXPECT_EQ(call(u"CStr", {R(2.5)}).string(), u"2.5");
  EXPECT_TRUE(call(u"CStr", {I(7)}).isString());
}

TEST(ConversionAsc, FirstCodeUnitOfAText) {
  EXPECT_EQ(call(u"Asc", {u"A"}).number().toInt64(), 65);
  EXPECT_EQ(call(u"Asc", {u"Ébc"}).number().toInt64(), 0xC9);
  EXPECT_EQ(call(u"Asc", {u"\U0001F600"}).number().toInt64(), 0xD83D);  // the lead surrogate
  EXPECT_EQ(call(u"Asc", {u"A"}).number().type(), Number::Type::Int64);
  EXPECT_EQ(text(call(u"Asc", {u""})), u"0");
  EXPECT_EQ(text(call(u"Asc", {Variant()})), u"0");
  EXPECT_EQ(text(call(u"Asc", {kNull})), u"0");
  EXPECT_EQ(text(call(u"Asc", {I(65)})), u"0");  // a Number has no length
}

TEST(ConversionChr, LowSixteenBitsOfTheInteger) {
  EXPECT_EQ(call(u"Chr", {I(65)}).string(), u"A");
  EXPECT_EQ(call(u"Chr", {I(0x10041)}).string(), u"A");
  EXPECT_EQ(call(u"Chr", {u"233"}).string(), u"é");
  EXPECT_EQ(call(u"Chr", {I(0)}).string(), std::u16string(1, u'\0'));
}

TEST(ConversionChr, UnguardedFailurePassesOut) {
  EXPECT_THROW(call(u"Chr", {kArray}), lx::UnrecognizedSelectorException);
  EXPECT_THROW(call(u"Chr", {kNull}), lx::UnrecognizedSelectorException);
}

TEST(ConversionHexOct, LowThirtyTwoBitsUnsigned) {
  EXPECT_EQ(call(u"Hex", {I(255)}).string(), u"FF");
  EXPECT_EQ(call(u"Hex", {I(-1)}).string(), u"FFFFFFFF");
  EXPECT_EQ(call(u"Hex", {L(4294967296LL)}).string(), u"0");
  EXPECT_EQ(call(u"Hex", {u"4294967297"}).string(), u"1");
  EXPECT_EQ(call(u"Oct", {I(8)}).string(), u"10");
  EXPECT_EQ(call(u"Oct", {I(-1)}).string(), u"37777777777");
  EXPECT_EQ(call(u"Hex", {kNull}).string(), u"");
  EXPECT_EQ(call(u"Oct", {kArray}).string(), u"");
}

TEST(ConversionGuards, ArrayReadsThroughItsText) {
  // "(x)" has no leading number.
  EXPECT_EQ(text(call(u"CInt", {kArray})), u"0");
  EXPECT_EQ(text(call(u"CByte", {kArray})), u"0");
  EXPECT_EQ(text(call(u"CLng", {kArray})), u"0");
}

}  // namespace
