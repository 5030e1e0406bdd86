#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <string>

#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

using lx::UString;
using lx::Variant;

TEST(IntValue, LeadingIntegerTruncatesAtThePoint) {
  EXPECT_EQ(lx::intValue(u"2.9"), 2);
  EXPECT_EQ(lx::intValue(u"-2.9"), -2);
  EXPECT_EQ(lx::intValue(u"  42abc"), 42);
  EXPECT_EQ(lx::intValue(u"\t\n+7"), 7);
  EXPECT_EQ(lx::intValue(u"-0"), 0);
  EXPECT_EQ(lx::intValue(u"abc"), 0);
  EXPECT_EQ(lx::intValue(u""), 0);
  EXPECT_EQ(lx::intValue(u"-"), 0);
  EXPECT_EQ(lx::intValue(u"+-3"), 0);
  EXPECT_EQ(lx::intValue(u"- 3"), 0);
  EXPECT_EQ(lx::intValue(u"1e3"), 1);
  EXPECT_EQ(lx::intValue(u".9"), 0);
  EXPECT_EQ(lx::intValue(u"0x1F"), 0);
  EXPECT_EQ(lx::intValue(u"\u0663"), 0);  // only ASCII digits count
}

TEST(IntValue, SaturatesAt32Bits) {
  EXPECT_EQ(lx::intValue(u"2147483647"), INT32_MAX);
  EXPECT_EQ(lx::intValue(u"2147483648"), INT32_MAX);
  EXPECT_EQ(lx::intValue(u"99999999999"), INT32_MAX);
  EXPECT_EQ(lx::intValue(u"-2147483648"), INT32_MIN);
  EXPECT_EQ(lx::intValue(u"-99999999999"), INT32_MIN);
  EXPECT_EQ(lx::intValue(u"00000000000000000000012"), 12);
  EXPECT_EQ(lx::intValue(UString(1000, u'9')), INT32_MAX);
}

TEST(LongLongValue, SaturatesAt64Bits) {
  EXPECT_EQ(lx::longLongValue(u"99999999999"), 99999999999LL);
  EXPECT_EQ(lx::longLongValue(u"-2.9"), -2);
  EXPECT_EQ(lx::longLongValue(u"9223372036854775807"), INT64_MAX);
  EXPECT_EQ(lx::longLongValue(u"9223372036854775808"), INT64_MAX);
  EXPECT_EQ(lx::longLongValue(u"-9223372036854775808"), INT64_MIN);
  EXPECT_EQ(lx::longLongValue(u"-99999999999999999999"), INT64_MIN);
  EXPECT_EQ(lx::longLongValue(u" x1"), 0);
}

TEST(DoubleValue, FractionAndExponent) {
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"1.5e3"), 1500);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"  -.5x"), -0.5);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"e5"), 0);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"1e"), 1);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"1e+"), 1);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"2E-2"), 0.02);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"+3."), 3);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"."), 0);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"1.2.3"), 1.2);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"12abc"), 12);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"abc"), 0);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u""), 0);
  EXPECT_EQ(lx::doubleValue(u"0.1"), 0.1);
  EXPECT_TRUE(std::signbit(lx::doubleValue(u"-0")));
  // Not words: "inf" and "nan" read as no number at all.
  EXPECT_EQ(lx::doubleValue(u"inf"), 0);
  EXPECT_EQ(lx::doubleValue(u"nan"), 0);
}

TEST(DoubleValue, OutOfRangeReadsAsInfinityOrZero) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(lx::doubleValue(u"1e999"), inf);
  EXPECT_EQ(lx::doubleValue(u"-1e999"), -inf);
  EXPECT_EQ(lx::doubleValue(u"1e-999"), 0);
  EXPECT_TRUE(std::signbit(lx::doubleValue(u"-1e-999")));
  EXPECT_EQ(lx::doubleValue(u"1e99999999999999999999999"), inf);
  EXPECT_EQ(lx::doubleValue(u"1e-99999999999999999999999"), 0);
  // The digits count too: 400 digits with a small negative exponent are still huge.
  EXPECT_EQ(lx::doubleValue(u"1" + UString(400, u'0') + u"e-10"), inf);
  EXPECT_EQ(lx::doubleValue(u"0." + UString(400, u'0') + u"1e10"), 0);
  EXPECT_DOUBLE_EQ(lx::doubleValue(u"0." + UString(400, u'0') + u"1e400"), 0.1);
}

TEST(BoolValue, TruthReadingRule) {
  for (const char16_t* yes : {u"1", u"-1", u"10", u"True", u"yes", u"007", u"  t", u"Y", u"+9",
                              u"000000000000000000000000001"}) {
    EXPECT_TRUE(lx::boolValue(yes)) << lx::toUtf8(yes);
  }
  for (const char16_t* no :
       {u"0", u"0.5", u"False", u"No", u"", u"   ", u"-", u"00", u"x1", u"on", u"\u0661"}) {
    EXPECT_FALSE(lx::boolValue(no)) << lx::toUtf8(no);
  }
}

TEST(DirectReads, NumbersStringsAndEmptyAnswer) {
  EXPECT_EQ(lx::intValue(Variant::real(2.9)), 2);
  EXPECT_EQ(lx::intValue(Variant(u"-2.9")), -2);
  EXPECT_EQ(lx::intValue(Variant()), 0);
  EXPECT_EQ(lx::intValue(Variant::int64(4294967297LL)), 1);
  EXPECT_EQ(lx::longLongValue(Variant::real(-1e30)), INT64_MIN);
  EXPECT_EQ(lx::longLongValue(Variant(u"12x")), 12);
  EXPECT_DOUBLE_EQ(lx::doubleValue(Variant::boolean(true)), 1);
  EXPECT_DOUBLE_EQ(lx::doubleValue(Variant(u"1.5e3")), 1500);
  EXPECT_DOUBLE_EQ(lx::doubleValue(Variant()), 0);
  EXPECT_TRUE(lx::boolValue(Variant::real(0.5)));
  EXPECT_FALSE(lx::boolValue(Variant(u"0.5")));
  EXPECT_FALSE(lx::boolValue(Variant()));
  EXPECT_EQ(lx::lengthOf(Variant(u"abc")), 3);
  EXPECT_EQ(lx::lengthOf(Variant(u"\U0001F600")), 2);
  EXPECT_EQ(lx::lengthOf(Variant()), 0);
}

TEST(DirectReads, OtherKindsCannotAnswer) {
  const Variant others[] = {Variant(lx::Array::make()), Variant::date(0), Variant(lx::nullObject()),
                            Variant(lx::LxValue::make())};
  for (const Variant& v : others) {
    EXPECT_THROW(lx::intValue(v), lx::UnrecognizedSelectorException);
    EXPECT_THROW(lx::longLongValue(v), lx::UnrecognizedSelectorException);
    EXPECT_THROW(lx::doubleValue(v), lx::UnrecognizedSelectorException);
    EXPECT_THROW(lx::boolValue(v), lx::UnrecognizedSelectorException);
  }
  EXPECT_THROW(lx::lengthOf(Variant::int32(5)), lx::UnrecognizedSelectorException);
  try {
    lx::intValue(Variant(lx::nullObject()));
  } catch (const lx::UnrecognizedSelectorException& e) {
    EXPECT_NE(std::string(e.what()).find("intValue"), std::string::npos) << e.what();
    EXPECT_EQ(e.name(), "UnrecognizedSelector");
  }
}

TEST(Truncation, ProcessorStyle) {
  EXPECT_EQ(lx::truncToInt32(-2147483648.9), INT32_MIN);
  EXPECT_EQ(lx::truncToInt32(-2147483649.0), INT32_MIN);
  EXPECT_EQ(lx::truncToInt32(2147483648.0), INT32_MIN);
  EXPECT_EQ(lx::truncToInt32(-0.9), 0);
  EXPECT_EQ(lx::truncToInt32(std::numeric_limits<double>::infinity()), INT32_MIN);
  EXPECT_EQ(lx::truncToInt64(9.3e18), INT64_MIN);
  EXPECT_EQ(lx::truncToInt64(-9223372036854775808.0), INT64_MIN);
  EXPECT_EQ(lx::truncToInt64(1e18), 1000000000000000000LL);
}

TEST(CaseMapping, FullUnicode) {
  EXPECT_EQ(lx::upperCase(u"abc xyz 1"), u"ABC XYZ 1");
  EXPECT_EQ(lx::lowerCase(u"ABC XYZ 1"), u"abc xyz 1");
  EXPECT_EQ(lx::upperCase(u"straße"), u"STRASSE");
  EXPECT_EQ(lx::upperCase(u"émile"), u"ÉMILE");
  EXPECT_EQ(lx::lowerCase(u"ΣΟΦΙΑ"), u"σοφια");
  EXPECT_EQ(lx::upperCase(u"\U00010428"), u"\U00010400");  // Deseret, beyond the BMP
  EXPECT_EQ(lx::upperCase(u""), u"");
  EXPECT_EQ(lx::foldCase(u"ABC"), u"abc");
  EXPECT_EQ(lx::foldCase(u"Straße"), u"strasse");
  EXPECT_EQ(lx::foldCase(u"ΣΑΣ"), lx::foldCase(u"σας"));
  EXPECT_EQ(lx::upperCase(UString(u"a\xD800")), UString(u"A\xD800"));
}

TEST(Utf8, RoundTripAndBadInput) {
  const UString text = u"a\u00E9\u20AC\U0001F600";
  EXPECT_EQ(lx::toUtf8(text), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(lx::fromUtf8(lx::toUtf8(text)), text);
  EXPECT_EQ(lx::fromUtf8(""), u"");
  EXPECT_EQ(lx::fromUtf8("\xFF"), u"\uFFFD");
  EXPECT_EQ(lx::fromUtf8("ab\xC3"), u"ab\uFFFD");
  // A sequence cut short by an ASCII byte must not swallow it.
  EXPECT_EQ(lx::fromUtf8("\xC3"
                         "A"),
            u"\uFFFDA");
  EXPECT_EQ(lx::fromUtf8("\xE2\x82"
                         "x"),
            u"\uFFFD\uFFFDx");
  EXPECT_EQ(lx::toUtf8(UString(u"\xD800x")), "\xEF\xBF\xBDx");
}

TEST(Whitespace, SetMembers) {
  for (char16_t c : {u' ', u'\t', u'\n', u'\v', u'\f', u'\r', u'\u0085', u'\u00A0', u'\u2028',
                     u'\u2029', u'\u2003', u'\u3000'}) {
    EXPECT_TRUE(lx::isWhitespaceOrNewline(c)) << int(c);
  }
  for (char16_t c : {u'a', u'_', u'\0', u'\u200B', u'\uFEFF'}) {
    EXPECT_FALSE(lx::isWhitespaceOrNewline(c)) << int(c);
  }
}
