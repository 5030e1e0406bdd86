#include <gtest/gtest.h>

#include "builtins/date_parser.h"
#include "lxbasic/text.h"
#include "support/pinned_zone.h"

namespace {

constexpr double kNow = 1718446830;    // 2024-06-15 10:20:30 UTC, a Saturday
constexpr double kJan31 = 1706659200;  // 2024-01-31 00:00 UTC
constexpr double kHour = 3600;

std::optional<double> parse(const char16_t* text) {
  return lx::parseDateText(text, kNow);
}

void expectReads(std::initializer_list<const char16_t*> texts, double instant) {
  for (const char16_t* t : texts) {
    std::optional<double> got = parse(t);
    ASSERT_TRUE(got.has_value()) << lx::toUtf8(t);
    EXPECT_EQ(*got, instant) << lx::toUtf8(t);
  }
}

void expectRefused(std::initializer_list<const char16_t*> texts) {
  for (const char16_t* t : texts) EXPECT_FALSE(parse(t).has_value()) << lx::toUtf8(t);
}

TEST(DateParser, Iso8601DatesAndTimes) {
  lxtest::PinnedZone pin("UTC", "en_US");
  expectReads({u"2024-01-31", u" 2024-1-31 ", u"2024/01/31", u"2024.01.31"}, kJan31);
  expectReads({u"2024-01-31T14:05", u"2024-01-31 14:05:00", u"2024-01-31t14:05Z",
               u"2024-01-31T15:05+01:00", u"2024-01-31 09:05:00 -0500", u"2024-01-31 14:05 UTC"},
              kJan31 + 14 * kHour + 300);
  expectReads({u"2024-01-31 14:05:09.25"}, kJan31 + 14 * kHour + 309.25);
}

TEST(DateParser, ZonesApplyOnlyWhenNamed) {
  lxtest::PinnedZone pin("Europe/Berlin", "en_US");
  expectReads({u"2024-01-31 12:00"}, kJan31 + 11 * kHour);
  expectReads({u"2024-01-31 12:00 +0000"}, kJan31 + 12 * kHour);
  // The engine's own text of a date reads back to the same instant.
  double summer = 1719835200.5;
  auto back = parse(lx::dateText(summer).c_str());
  ASSERT_TRUE(back);
  EXPECT_EQ(*back, 1719835200);
}

TEST(DateParser, NumericDatesFollowTheLocaleOrder) {
  lxtest::PinnedZone pin("UTC", "en_US");
  expectReads({u"1/31/2024", u"1/31/24", u"01-31-2024"}, kJan31);
  expectReads({u"1/31"}, kJan31);  // the current year
  expectReads({u"6/15/75"}, 172022400);
  expectRefused({u"31/1/2024", u"13/1/2024", u"1/31-2024", u"1/2/3/4", u"1/31/100000"});
  lxtest::PinnedZone::setLocale("de_DE");
  expectReads({u"31.01.2024", u"31.1.24", u"31.01.", u"31/01/2024"}, kJan31);
  expectRefused({u"1/31/2024"});
}

TEST(DateParser, MonthAndWeekdayNames) {
  lxtest::PinnedZone pin("UTC", "en_US");
  expectReads(
      {u"January 31, 2024", u"jan 31 2024", u"31 January 2024", u"31-Jan-2024", u"Jan. 31, 2024",
       u"2024 Jan 31", u"Wednesday, January 31, 2024", u"Wed 31 Jan 24", u"January 31"},
      kJan31);
  expectReads({u"January 31, 2024, 2:05 PM", u"Jan 31 2024 at 14:05"}, kJan31 + 14 * kHour + 300);
  expectReads({u"March 2024"}, 1709251200);
  expectRefused({u"January 32, 2024", u"February 30 2024", u"Jan Feb 2024", u"Smarch 3 2024",
                 u"January 1 2 2024", u"January: 3 2024"});
  // German names work in a German locale, English ones always.
  lxtest::PinnedZone::setLocale("de_DE");
  expectReads(
      {u"31. Januar 2024", u"Mittwoch, 31. Januar 2024", u"31. Jan. 2024", u"January 31, 2024"},
      kJan31);
  expectReads({u"1. März 2024"}, 1709251200);
}

TEST(DateParser, TimesAndRelativeDays) {
  lxtest::PinnedZone pin("UTC", "en_US");
  double today = 1718409600;
  expectReads({u"14:05", u"2:05 PM", u"2:05pm", u"14:05:00"}, today + 14 * kHour + 300);
  expectReads({u"12 am", u"0:00", u"today"}, today);
  expectReads({u"12 PM"}, today + 12 * kHour);
  expectReads({u"tomorrow"}, today + 24 * kHour);
  expectReads({u"Yesterday 9:30"}, today - 24 * kHour + 9.5 * kHour);
  expectReads({u"now", u"NOW"}, kNow);
  expectRefused({u"24:00", u"10:60", u"10:30:61", u"13 pm", u"0 am", u"now 10:00",
                 u"today 10:00 +0100", u"10:00 2024-01-31 junk", u"someday"});
}

TEST(DateParser, RefusesWhatIsNoDate) {
  lxtest::PinnedZone pin("UTC", "en_US");
  expectRefused({u"", u"   ", u"5", u"2024", u"36526", u"1.5", u"31.01", u"hello", u"2023-02-29",
                 u"2024-04-31", u"2024-00-10", u"0000-01-01", u"2024-01-31T", u"12:00 +25:00",
                 u"<null>", u"(null)", u"@2024-01-31", u"2024-01-31 10:00 +1", u"1234567890123"});
}

}  // namespace
