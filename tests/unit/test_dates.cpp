#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "lxbasic/exceptions.h"
#include "lxbasic/log.h"
#include "support/builtins.h"
#include "support/pinned_zone.h"

namespace {

using lx::Variant;
using lxtest::call;

constexpr double kDay = 86400;
constexpr double kHour = 3600;
constexpr double kJan31 = 1706659200;  // 2024-01-31 00:00 UTC

Variant N(double n) {
  return n == static_cast<int32_t>(n) ? Variant::int32(static_cast<int32_t>(n)) : Variant::real(n);
}
Variant date(double instant) {
  return Variant::date(instant);
}
double seconds(const Variant& v) {
  EXPECT_TRUE(v.isDate()) << lx::toUtf8(lxtest::text(v));
  return v.isDate() ? v.dateSeconds() : -1;
}
int64_t integer(const Variant& v) {
  EXPECT_TRUE(v.isNumber()) << lx::toUtf8(lxtest::text(v));
  return v.isNumber() ? v.number().toInt64() : -999999;
}

// Collects the engine's log lines for the life of the object.
class LogCapture {
 public:
  LogCapture() {
    lx::setLogSink([this](lx::UStringView m) { lines.emplace_back(m); });
  }
  ~LogCapture() { lx::setLogSink({}); }
  std::vector<std::u16string> lines;
};

TEST(DateBuiltins, SerialsBuildLocalDatesWithRollOver) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(seconds(call(u"DateSerial", {N(2024), N(1), N(31)})), kJan31);
  EXPECT_EQ(seconds(call(u"DateSerial", {N(2023), N(13), N(31)})), kJan31);
  EXPECT_EQ(seconds(call(u"DateSerial", {u"2024", u"2.9", N(31)})), kJan31 + 31 * kDay);
  EXPECT_EQ(seconds(call(u"DateSerial", {N(2024), N(3), N(0)})), kJan31 + 29 * kDay);
  // Far outside the calendar: no date at all, and no crash.
  EXPECT_TRUE(call(u"DateSerial", {N(2147483647), N(2147483647), N(2147483647)}).isEmpty());
  EXPECT_TRUE(call(u"DateSerial", {N(-2147483647 - 1), N(1), N(1)}).isEmpty());
  lxtest::PinnedZone::setZone("America/New_York");
  EXPECT_EQ(seconds(call(u"DateSerial", {N(2024), N(1), N(31)})), kJan31 + 5 * kHour);
}

TEST(DateBuiltins, TimeSerialLogsItsSecondsAndSitsOnTheFirstDayOf1970) {
  lxtest::PinnedZone pin("UTC", "en_US");
  LogCapture log;
  EXPECT_EQ(seconds(call(u"TimeSerial", {N(25), N(-30), N(90)})), 24 * kHour + 31 * 60 + 30);
  ASSERT_EQ(log.lines.size(), 1u);
  EXPECT_EQ(log.lines[0], u"88290.000000");
  Variant t = call(u"TimeValue", {u"2024-01-31 13:45:30"});
  EXPECT_EQ(seconds(t), 13 * kHour + 45 * 60 + 30);
  EXPECT_EQ(log.lines.size(), 2u);
  EXPECT_EQ(integer(call(u"Year", {call(u"Time", {})})), 1970);
  EXPECT_EQ(seconds(call(u"DateValue", {u"2024-01-31 13:45:30"})), kJan31);
}

TEST(DateBuiltins, CDateAndIsDate) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(seconds(call(u"CDate", {N(36526)})), 946684800);
  EXPECT_EQ(seconds(call(u"CDate", {date(12.5)})), 12.5);
  EXPECT_EQ(seconds(call(u"CDate", {u"January 31, 2024"})), kJan31);
  EXPECT_TRUE(call(u"CDate", {u"36526"}).isEmpty());
  EXPECT_TRUE(call(u"CDate", {lx::nullObject()}).isEmpty());
  EXPECT_TRUE(call(u"CDate", {Variant::real(1e300)}).isEmpty());
  EXPECT_EQ(integer(call(u"IsDate", {N(5)})), 1);
  EXPECT_EQ(integer(call(u"IsDate", {u"2024-01-31"})), 1);
  EXPECT_EQ(integer(call(u"IsDate", {u"no date"})), 0);
  EXPECT_EQ(integer(call(u"IsDate", {lx::Array::make()})), 0);
}

TEST(DateBuiltins, FieldsOfDatesTextsAndNonDates) {
  lxtest::PinnedZone pin("UTC", "en_US");
  Variant d = u"2024-02-29 13:45:30";
  EXPECT_EQ(integer(call(u"Year", {d})), 2024);
  EXPECT_EQ(integer(call(u"Month", {d})), 2);
  EXPECT_EQ(integer(call(u"Day", {d})), 29);
  EXPECT_EQ(integer(call(u"Hour", {d})), 13);
  EXPECT_EQ(integer(call(u"Minute", {d})), 45);
  EXPECT_EQ(integer(call(u"Second", {d})), 30);
  EXPECT_EQ(integer(call(u"Weekday", {d})), 5);  // a Thursday
  EXPECT_EQ(integer(call(u"Weekday", {u"2024-02-25"})), 1);
  // What CDate cannot read is the instant 0.
  EXPECT_EQ(integer(call(u"Year", {lx::nullObject()})), 1970);
  EXPECT_EQ(integer(call(u"Day", {lx::Array::make()})), 1);
  lxtest::PinnedZone::setZone("America/New_York");
  EXPECT_EQ(integer(call(u"Year", {u"junk"})), 1969);
  EXPECT_EQ(integer(call(u"Hour", {date(0)})), 19);
}

TEST(DateBuiltins, ClockFunctions) {
  lxtest::PinnedZone pin("Europe/Berlin", "en_US");
  Variant today = call(u"Date", {});
  EXPECT_EQ(integer(call(u"Hour", {today})), 0);
  EXPECT_EQ(integer(call(u"Minute", {today})), 0);
  Variant now = call(u"Now", {});
  EXPECT_LE(seconds(today), seconds(now));
  EXPECT_LT(seconds(now) - seconds(today), 25 * kHour);
  int64_t timer = integer(call(u"Timer", {}));
  EXPECT_GE(timer, 0);
  EXPECT_LT(timer, 25 * kHour);
}

TEST(DateBuiltins, DateAddNormalisesLikeTheCalendar) {
  lxtest::PinnedZone pin("UTC", "en_US");
  Variant jan31 = date(kJan31);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"m", N(1), jan31})), kJan31 + 31 * kDay);  // 2 March
  EXPECT_EQ(seconds(call(u"DateAdd", {u"M", N(1), u"2023-01-31"})),
            seconds(call(u"DateSerial", {N(2023), N(3), N(3)})));
  EXPECT_EQ(seconds(call(u"DateAdd", {u"q", N(-1), jan31})),
            seconds(call(u"DateSerial", {N(2023), N(10), N(31)})));
  EXPECT_EQ(seconds(call(u"DateAdd", {u"yyyy", N(1), u"2024-02-29"})),
            seconds(call(u"DateSerial", {N(2025), N(3), N(1)})));
  EXPECT_EQ(seconds(call(u"DateAdd", {u"d", N(1.9), jan31})), kJan31 + kDay);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"w", N(2), jan31})), kJan31 + 2 * kDay);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"y", N(2), jan31})), kJan31 + 2 * kDay);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"ww", N(2), jan31})), kJan31 + 14 * kDay);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"h", N(25), jan31})), kJan31 + 25 * kHour);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"n", N(-1), jan31})), kJan31 - 60);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"s", N(61), date(kJan31 + 0.5)})), kJan31 + 61.5);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"x", N(5), jan31})), kJan31);
  EXPECT_EQ(seconds(call(u"DateAdd", {u"d", N(1), lx::nullObject()})), kDay);
  EXPECT_TRUE(call(u"DateAdd", {Variant(), N(1), jan31}).isEmpty());
  EXPECT_TRUE(call(u"DateAdd", {u"d", Variant(), jan31}).isEmpty());
  EXPECT_TRUE(call(u"DateAdd", {u"d", N(1), Variant()}).isEmpty());
  EXPECT_TRUE(call(u"DateAdd", {u"yyyy", N(2147483647), jan31}).isEmpty());
}

TEST(DateBuiltins, DateAddKeepsWallClockAcrossDaylightSaving) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  Variant before = call(u"DateSerial", {N(2024), N(3), N(9)});
  Variant after = call(u"DateAdd", {u"d", N(1), call(u"DateAdd", {u"h", N(12), before})});
  EXPECT_EQ(integer(call(u"Hour", {after})), 12);
  EXPECT_EQ(seconds(after) - seconds(before), 35 * kHour);
}

TEST(DateBuiltins, DateDiffAcrossMidnightAndYearEnd) {
  lxtest::PinnedZone pin("UTC", "en_US");
  Variant late = u"2023-12-31 23:59", early = u"2024-01-01 00:01";
  EXPECT_EQ(integer(call(u"DateDiff", {u"d", late, early})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"y", late, early})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"s", late, early})), 120);
  EXPECT_EQ(integer(call(u"DateDiff", {u"n", late, early})), 2);
  EXPECT_EQ(integer(call(u"DateDiff", {u"h", late, early})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"yyyy", late, early})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"m", late, early})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"q", late, early})), 0);
  EXPECT_EQ(integer(call(u"DateDiff", {u"ww", late, early})), 0);
  EXPECT_EQ(integer(call(u"DateDiff", {u"D", early, late})), -1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"Q", u"2024-01-15", u"2024-07-14"})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"q", u"2024-01-15", u"2024-07-15"})), 2);
  EXPECT_EQ(integer(call(u"DateDiff", {u"ww", u"2024-01-01", u"2024-01-15"})), 2);
  EXPECT_EQ(integer(call(u"DateDiff", {u"x", late, early})), 0);
  EXPECT_EQ(integer(call(u"DateDiff", {u"s", u"1900-01-01", u"2100-01-01"})), 6311433600);
}

TEST(DateBuiltins, DateDiffAcrossDaylightSavingChanges) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  Variant sat = u"2024-03-09 12:00", sun = u"2024-03-10 12:00";
  EXPECT_EQ(integer(call(u"DateDiff", {u"d", sat, sun})), 1);
  // Hours are counted between each day's midnight plus the hour of a 1970 time, so the lost
  // hour of the change does not show; seconds are elapsed time.
  EXPECT_EQ(integer(call(u"DateDiff", {u"h", sat, sun})), 24);
  EXPECT_EQ(integer(call(u"DateDiff", {u"s", sat, sun})), 23 * 3600);
  lxtest::PinnedZone::setZone("Europe/Berlin");
  EXPECT_EQ(integer(call(u"DateDiff", {u"d", u"2024-10-26 12:00", u"2024-10-27 12:00"})), 1);
  EXPECT_EQ(integer(call(u"DateDiff", {u"h", u"2024-10-26 12:00", u"2024-10-27 12:00"})), 24);
  EXPECT_EQ(integer(call(u"DateDiff", {u"s", u"2024-10-26 12:00", u"2024-10-27 12:00"})), 90000);
}

TEST(DateBuiltins, DateDiffWeeksByTheMonthAndYearWalk) {
  lxtest::PinnedZone pin("UTC", "en_US");
  // 2 months and 5 days: 5 + 29 (February reached) + 31 (March reached) = 65 days.
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2024-01-15", u"2024-03-20"})), 9);
  // Backwards the month lengths still add: -5 + 29 + 31 = 55 days.
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2024-03-20", u"2024-01-15"})), 7);
  // Two years: 366 (2024 reached) + 365 (2025 reached).
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2023-01-10", u"2025-01-10"})), 104);
  // The year reached, not the one left: 2023 -> 2024 counts 366.
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2023-03-01", u"2024-03-01"})), 52);
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2024-01-01", u"2024-01-13"})), 1);
  // Long spans, counted year by year: across the leap rules of centuries and before year 1.
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"0001-01-01", u"9999-12-31"})), 521722);
  Variant ancient = call(u"DateSerial", {N(-20000), N(1), N(1)});
  Variant future = call(u"DateSerial", {N(20000), N(1), N(1)});
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", ancient, future})), 2087100);
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", future, ancient})), 2087100);
  EXPECT_EQ(integer(call(u"DateDiff", {u"w", u"2025-03-01", u"2023-03-01"})), 104);
}

TEST(DateBuiltins, DatePartKeepsItsQuarterFormulaAndCase) {
  lxtest::PinnedZone pin("UTC", "en_US");
  const std::pair<const char16_t*, int> quarters[] = {
      {u"2024-01-10", 1}, {u"2024-02-10", 1}, {u"2024-03-10", 2}, {u"2024-05-31", 2},
      {u"2024-06-01", 3}, {u"2024-09-01", 4}, {u"2024-11-30", 4}, {u"2024-12-31", 5}};
  for (const auto& [d, q] : quarters) {
    EXPECT_EQ(integer(call(u"DatePart", {u"q", d})), q) << lx::toUtf8(d);
  }
  Variant d = u"2024-03-10 08:07:06";
  EXPECT_EQ(integer(call(u"DatePart", {u"Q", d})), 0);
  EXPECT_EQ(integer(call(u"DatePart", {u"YYYY", d})), 0);
  EXPECT_EQ(integer(call(u"DatePart", {u"yyyy", d})), 2024);
  EXPECT_EQ(integer(call(u"DatePart", {u"m", d})), 3);
  EXPECT_EQ(integer(call(u"DatePart", {u"y", d})), 70);
  EXPECT_EQ(integer(call(u"DatePart", {u"d", d})), 10);
  EXPECT_EQ(integer(call(u"DatePart", {u"w", d})), 1);
  EXPECT_EQ(integer(call(u"DatePart", {u"ww", d})), 10);
  EXPECT_EQ(integer(call(u"DatePart", {u"ww", u"2024-01-07"})), 1);
  EXPECT_EQ(integer(call(u"DatePart", {u"h", d})), 8);
  EXPECT_EQ(integer(call(u"DatePart", {u"n", d})), 7);
  EXPECT_EQ(integer(call(u"DatePart", {u"s", d})), 6);
}

TEST(DateBuiltins, MonthNamesComeFromTheLocale) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {N(1)})), u"January");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {N(1), N(3)})), u"Jan");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {u"12", N(100)})), u"December");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {date(kJan31 + 40 * kDay)})), u"March");
  for (Variant bad : {N(0), N(13), Variant(u"x"), Variant(lx::nullObject())}) {
    EXPECT_EQ(lxtest::text(call(u"MonthName", {bad})), u"");
  }
  EXPECT_EQ(lxtest::text(call(u"MonthName", {N(2), N(0)})), u"");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {N(2), N(-1)})), u"");
  lxtest::PinnedZone::setLocale("de_DE");
  EXPECT_EQ(lxtest::text(call(u"MonthName", {N(3)})), u"März");
}

TEST(DateBuiltins, WeekdayNameFailsForEveryAcceptableDay) {
  lxtest::PinnedZone pin("UTC", "en_US");
  for (Variant bad : {N(0), N(8), Variant(u"Monday"), Variant(lx::nullObject()), date(1e300)}) {
    EXPECT_EQ(lxtest::text(call(u"WeekdayName", {bad})), u"");
  }
  EXPECT_THROW(call(u"WeekdayName", {N(1)}), lx::UnrecognizedSelectorException);
  EXPECT_THROW(call(u"WeekdayName", {u"7"}), lx::UnrecognizedSelectorException);
  EXPECT_THROW(call(u"WeekdayName", {date(kJan31)}), lx::UnrecognizedSelectorException);
}

TEST(DateBuiltins, MonthAndYearLengthHelpers) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  EXPECT_EQ(integer(call(u"daysInMonth", {u"2024-02-10"})), 29);
  EXPECT_EQ(integer(call(u"daysInMonth", {u"2023-02-10"})), 28);
  EXPECT_EQ(integer(call(u"daysInMonth", {u"2024-03-10"})), 31);  // 23 hours on the 10th
  EXPECT_EQ(integer(call(u"daysInYear", {u"2100-06-01"})), 365);
  EXPECT_EQ(integer(call(u"daysInYear", {u"2000-06-01"})), 366);
}

TEST(DateBuiltins, ExtremeValuesGiveClearResults) {
  lxtest::PinnedZone pin("Europe/Berlin", "en_US");
  const double nan = std::numeric_limits<double>::quiet_NaN();
  // A date the calendar cannot hold gives the fallback 0.
  for (Variant d : {date(1e300), date(-1e300), date(nan)}) {
    EXPECT_EQ(integer(call(u"Year", {d})), 0);
    EXPECT_EQ(integer(call(u"DatePart", {u"ww", d})), 0);
    EXPECT_EQ(integer(call(u"DateDiff", {u"w", d, date(0)})), 0);
    EXPECT_TRUE(call(u"DateAdd", {u"s", N(1), d}).isEmpty());
    EXPECT_EQ(integer(call(u"daysInMonth", {d})), 0);
  }
  // A number or text that names no such date leaves CDate with nothing: the instant 0.
  for (Variant d : {N(1e300), Variant(u"9999999999-01-01")}) {
    EXPECT_EQ(integer(call(u"Year", {d})), 1970);
    EXPECT_EQ(integer(call(u"DatePart", {u"ww", d})), 1);
    EXPECT_EQ(integer(call(u"daysInMonth", {d})), 31);
  }
  for (const char16_t* in : {u"yyyy", u"q", u"m", u"d", u"ww", u"h", u"n", u"s"}) {
    EXPECT_NO_THROW(call(u"DateAdd", {in, N(2147483647), date(0)}));
    EXPECT_NO_THROW(call(u"DateAdd", {in, N(-2147483647 - 1), date(0)}));
    EXPECT_NO_THROW(call(u"DateDiff", {in, date(-6e12), date(6e12)}));
  }
  EXPECT_NO_THROW(call(u"TimeSerial", {N(2147483647), N(2147483647), N(2147483647)}));
  EXPECT_NO_THROW(call(u"DateSerial", {N(0), N(-2147483647 - 1), N(2147483647)}));
  EXPECT_EQ(integer(call(u"DateDiff", {u"yyyy", date(-6e12), date(6e12)})), 380265);
}

TEST(DateBuiltins, EveryFormExists) {
  for (const char16_t* name : {u"CDate", u"IsDate", u"DateValue", u"TimeValue", u"Year", u"Month",
                               u"Day", u"Hour", u"Minute", u"Second", u"Weekday", u"WeekdayName",
                               u"MonthName", u"daysInMonth", u"daysInYear"}) {
    EXPECT_TRUE(lxtest::exists(name, 1)) << lx::toUtf8(name);
  }
  for (const char16_t* name : {u"Date", u"Time", u"Now", u"Timer"}) {
    EXPECT_TRUE(lxtest::exists(name, 0)) << lx::toUtf8(name);
  }
  for (const char16_t* name : {u"DateAdd", u"DateDiff", u"DateSerial", u"TimeSerial"}) {
    EXPECT_TRUE(lxtest::exists(name, 3)) << lx::toUtf8(name);
  }
  EXPECT_TRUE(lxtest::exists(u"MonthName", 2));
  EXPECT_TRUE(lxtest::exists(u"DatePart", 2));
  EXPECT_FALSE(lxtest::exists(u"DatePart", 3));
}

}  // namespace
