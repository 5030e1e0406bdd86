#include <gtest/gtest.h>

#include "builtins/number_pattern.h"
#include "support/builtins.h"
#include "support/pinned_zone.h"

namespace {

using lx::NumberStyle;
using lx::Variant;

Variant N(double n) {
  return n == static_cast<int32_t>(n) ? Variant::int32(static_cast<int32_t>(n)) : Variant::real(n);
}

std::u16string fmt(const char16_t* name, std::initializer_list<Variant> args) {
  return lxtest::text(lxtest::call(name, args));
}

std::u16string pattern(NumberStyle style, int dec, int lead = -2, int par = -2, int group = -2) {
  return lx::buildNumberPattern(style, dec, lead, par, group, u"$").text();
}

constexpr const char16_t* kGrouped = u"###,###,###,###,###,###,###,###,###,##";

TEST(NumberPattern, DefaultsAndEachArgument) {
  EXPECT_EQ(pattern(NumberStyle::Number, -1), u"#0.00;0;#0.00");
  EXPECT_EQ(pattern(NumberStyle::Number, 0), u"#0.;0;#0.");
  EXPECT_EQ(pattern(NumberStyle::Number, -7), u"#0.;0;#0.");
  EXPECT_EQ(pattern(NumberStyle::Percent, 1), u"#0.0%;0%;#0.0%");
  EXPECT_EQ(pattern(NumberStyle::Currency, -1), u"$ #0.00;$ 0;$ #0.00");
  std::u16string grouped = std::u16string(kGrouped) + u"#.000";
  EXPECT_EQ(pattern(NumberStyle::Number, 3, 0, -1, -1), grouped + u";0;(" + grouped + u")");
  EXPECT_EQ(pattern(NumberStyle::Number, 1, 0), u"##.0;0;##.0");
  EXPECT_EQ(pattern(NumberStyle::Number, 1, 7), u"#0.0;0;#0.0");
  EXPECT_EQ(pattern(NumberStyle::Number, 1, -2, 1), u"#0.0;0;(#0.0)");
  EXPECT_EQ(pattern(NumberStyle::Number, 1, -2, 0), u"#0.0;0;#0.0");
}

TEST(NumberPattern, OnlyTristateTrueGroups) {
  EXPECT_EQ(pattern(NumberStyle::Number, 2, -2, -2, 1), u"#0.00;0;#0.00");
  EXPECT_EQ(pattern(NumberStyle::Number, 2, -2, -2, 0), u"#0.00;0;#0.00");
  EXPECT_EQ(pattern(NumberStyle::Number, 2, -2, -2, -3), u"#0.00;0;#0.00");
  EXPECT_EQ(pattern(NumberStyle::Number, 2, -2, -2, -1),
            std::u16string(kGrouped) + u"0.00;0;" + kGrouped + u"0.00");
}

TEST(NumberPattern, PositivePartStopsAt255Characters) {
  for (NumberStyle style : {NumberStyle::Number, NumberStyle::Currency, NumberStyle::Percent}) {
    lx::NumberPattern p = lx::buildNumberPattern(style, 100000, -2, -2, -1, u"$");
    EXPECT_EQ(p.positive().size(), 255u);
    EXPECT_EQ(p.positive().back(), u'0');
  }
}

TEST(FormatNumber, PatternsAppliedInUsEnglish) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234567.891)}), u"1234567.89");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234567.891), N(2), N(-2), N(-2), N(-2)}), u"1234567.89");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234567.891), N(2), N(-2), N(-2), N(-1)}), u"1,234,567.89");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234567.891), N(2), N(-2), N(-2), N(1)}), u"1234567.89");
  EXPECT_EQ(fmt(u"FormatNumber", {N(-5), N(2), N(-1), N(1)}), u"(5.00)");
  EXPECT_EQ(fmt(u"FormatNumber", {N(-5)}), u"-5.00");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.5), N(2), N(0)}), u".50");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.5), N(2), N(-1)}), u"0.50");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234.5), N(0)}), u"1234");  // no trailing separator
  EXPECT_EQ(fmt(u"FormatNumber", {Variant(u"12abc")}), u"12.00");
  EXPECT_EQ(fmt(u"FormatNumber", {N(12.3456), N(3)}), u"12.346");
}

TEST(FormatNumber, RoundsHalfToEven) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(fmt(u"FormatNumber", {N(2.5), N(0)}), u"2");
  EXPECT_EQ(fmt(u"FormatNumber", {N(3.5), N(0)}), u"4");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.125)}), u"0.12");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.375)}), u"0.38");
}

TEST(FormatNumber, ExactZeroShowsTheZeroSection) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0)}), u"0");
  EXPECT_EQ(fmt(u"FormatNumber", {Variant::real(-0.0), N(3)}), u"0");
  EXPECT_EQ(fmt(u"FormatNumber", {lx::nullObject()}), u"0");
  EXPECT_EQ(fmt(u"FormatPercent", {N(0)}), u"0%");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(0)}), u"$ 0");
  // Nearly zero is not zero.
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.001)}), u"0.00");
}

TEST(FormatNumber, CurrencyAndPercent) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(1234.5)}), u"$ 1234.50");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(-3), N(2), N(-2), N(-1)}), u"($ 3.00)");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(-3)}), u"-$ 3.00");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(1234567), N(0), N(-2), N(-2), N(-1)}), u"$ 1,234,567");
  EXPECT_EQ(fmt(u"FormatPercent", {N(0.256), N(1)}), u"25.6%");
  EXPECT_EQ(fmt(u"FormatPercent", {N(-0.5), N(0), N(-2), N(1)}), u"(50%)");
  // A date counts by its serial number.
  EXPECT_EQ(fmt(u"FormatNumber", {Variant::date(-2209161600 + 2.5 * 86400)}), u"2.50");
}

TEST(FormatNumber, GermanSymbols) {
  lxtest::PinnedZone pin("Europe/Berlin", "de_DE");
  EXPECT_EQ(fmt(u"FormatNumber", {N(1234567.891), N(2), N(-2), N(-2), N(-1)}), u"1.234.567,89");
  EXPECT_EQ(fmt(u"FormatNumber", {N(0.5), N(1), N(0)}), u",5");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(-5)}), u"-€ 5,00");
  EXPECT_EQ(fmt(u"FormatCurrency", {N(0)}), u"€ 0");
  EXPECT_EQ(fmt(u"FormatPercent", {N(0.5)}), u"50,00%");
}

TEST(FormatNumber, OddNumbersStillFormat) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_NO_THROW(fmt(u"FormatNumber", {Variant(u"1e999")}));
  EXPECT_EQ(fmt(u"FormatNumber", {N(1), N(1000)}).size(),
            2u + 252u);  // "1." and the 252 zeros that fit
  EXPECT_EQ(fmt(u"FormatNumber", {lx::Array::make()}), u"0");
  EXPECT_EQ(fmt(u"FormatNumber", {Variant::date(1e300)}), u"0");  // CDbl's fallback
  for (int n = 1; n <= 5; ++n) EXPECT_TRUE(lxtest::exists(u"FormatPercent", n));
  EXPECT_FALSE(lxtest::exists(u"FormatNumber", 0));
}

TEST(FormatDateTime, StylesOfEachFormat) {
  lxtest::PinnedZone pin("UTC", "en_US");
  Variant d = N(45322.75);  // 2024-01-31 18:00
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(0)}), u"1/31/24, 6:00\u202FPM");
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(1)}), u"Wednesday, January 31, 2024");
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(2)}), u"1/31/24");
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(3)}), fmt(u"FormatDateTime", {d, N(1)}));
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(4)}), u"6:00\u202FPM");
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(7)}), fmt(u"FormatDateTime", {d, N(0)}));
  EXPECT_EQ(fmt(u"FormatDateTime", {Variant(u"2024-01-31 18:00"), Variant(u"2")}), u"1/31/24");
  EXPECT_FALSE(lxtest::exists(u"FormatDateTime", 1));
}

TEST(FormatDateTime, GeneralFormatShowsThePartsTheSerialHas) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(fmt(u"FormatDateTime", {N(0.5), N(0)}), u"12:00\u202FPM");
  EXPECT_EQ(fmt(u"FormatDateTime", {N(2), N(0)}), u"1/1/00");
  EXPECT_EQ(fmt(u"FormatDateTime", {N(2.5), N(0)}), u"1/1/00, 12:00\u202FPM");
  EXPECT_EQ(fmt(u"FormatDateTime", {N(0), N(0)}), u"12/30/99");
  EXPECT_EQ(fmt(u"FormatDateTime", {N(-2.25), N(0)}), u"12/27/99, 6:00\u202FPM");
  // -1.25 is 1899-12-28 18:00, whose own serial reads -0.25: a time of day only.
  EXPECT_EQ(fmt(u"FormatDateTime", {N(-1.25), N(0)}), u"6:00\u202FPM");
  // Unreadable text is the instant 0 shown as serial 0.
  EXPECT_EQ(fmt(u"FormatDateTime", {Variant(u"never"), N(0)}), u"1/1/70");
}

TEST(FormatDateTime, LocaleAndZone) {
  lxtest::PinnedZone pin("America/New_York", "de_DE");
  Variant d = N(45322.75);
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(1)}), u"Mittwoch, 31. Januar 2024");
  EXPECT_EQ(fmt(u"FormatDateTime", {d, N(0)}), u"31.01.24, 18:00");
  EXPECT_EQ(fmt(u"FormatDateTime", {Variant::date(0), N(4)}), u"19:00");
}

}  // namespace
