#include <gtest/gtest.h>

#include "foundation/calendar.h"
#include "foundation/day_serial.h"
#include "lxbasic/exceptions.h"
#include "support/pinned_zone.h"

namespace {

using lx::DateToFloat;
using lx::FloatToDate;
using lx::Variant;

constexpr double kEpochUtc = -2209161600;  // 1899-12-30 00:00 UTC
constexpr double kDay = 86400;

double serialOf(double instant) {
  return DateToFloat(Variant::date(instant)).toDouble();
}
double dateOf(double serial) {
  return FloatToDate(Variant::real(serial)).seconds;
}

TEST(DaySerial, AroundTheEpochInUtc) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_EQ(dateOf(0), kEpochUtc);
  EXPECT_EQ(dateOf(2.25), kEpochUtc + 2 * kDay + 6 * 3600);  // 1900-01-01 06:00
  EXPECT_EQ(serialOf(kEpochUtc + kDay + 12 * 3600), 1.5);    // 1899-12-31 12:00
  EXPECT_EQ(dateOf(36526), 946684800);                       // 2000-01-01
  EXPECT_EQ(serialOf(946684800 + 0.5), 36526 + 0.5 / kDay);  // the fraction of a second counts
}

TEST(DaySerial, NegativeSerialsStepBackDaysThenTime) {
  lxtest::PinnedZone pin("UTC", "en_US");
  // -1.25: one whole day back, then six hours back: 1899-12-28 18:00.
  EXPECT_EQ(dateOf(-1.25), kEpochUtc - kDay - 6 * 3600);
  // The way back counts whole days toward zero and adds the time of day forward, so the
  // instant of -1.25 reads as -0.25.
  EXPECT_EQ(serialOf(kEpochUtc - kDay - 6 * 3600), -0.25);
  EXPECT_EQ(serialOf(kEpochUtc - 2 * kDay), -2);
}

TEST(DaySerial, OnlyDatesHaveSerials) {
  lxtest::PinnedZone pin("UTC", "en_US");
  for (const Variant& v : {Variant(), Variant(u"2024-01-01"), Variant::int32(5)}) {
    lx::Number n = DateToFloat(v);
    EXPECT_EQ(n.type(), lx::Number::Type::Int32);
    EXPECT_EQ(n.toDouble(), 0);
  }
  // FloatToDate reads the value's text: a leading number counts, anything else is 0.
  EXPECT_EQ(FloatToDate(Variant(u"1.5 days")).seconds, kEpochUtc + 1.5 * kDay);
  EXPECT_EQ(FloatToDate(Variant(u"soon")).seconds, kEpochUtc);
}

TEST(DaySerial, FollowsTheZoneNamedByTz) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  EXPECT_EQ(dateOf(36526), 946684800 + 5 * 3600);
  lxtest::PinnedZone::setZone("Europe/Berlin");
  EXPECT_EQ(dateOf(36526), 946684800 - 3600);
  lxtest::PinnedZone::setZone("UTC");
  EXPECT_EQ(dateOf(36526), 946684800);
}

TEST(DaySerial, TimeOfDayIsWallClockOnDaylightSavingDays) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  // 2024-03-10 lost its 02:00 hour; noon is 16:00 UTC and still half a day.
  double noon = 1710028800 + 16 * 3600;
  EXPECT_EQ(serialOf(noon), 45361.5);
  EXPECT_EQ(dateOf(45361.5), noon);
  EXPECT_EQ(dateOf(45362), 1710028800 + kDay + 4 * 3600);  // midnight EDT
}

TEST(DaySerial, ValuesBeyondTheCalendarAreRefused) {
  lxtest::PinnedZone pin("UTC", "en_US");
  EXPECT_THROW(FloatToDate(Variant::real(1e300)), lx::Exception);
  EXPECT_THROW(DateToFloat(Variant::date(1e300)), lx::Exception);
}

TEST(Calendar, AddingNormalisesInsteadOfClamping) {
  lxtest::PinnedZone pin("UTC", "en_US");
  using lx::calendar::addFields;
  double jan31 = lx::calendar::localInstant(2023, 1, 31);
  EXPECT_EQ(addFields(jan31, {.months = 1}), lx::calendar::localInstant(2023, 3, 3));
  EXPECT_EQ(addFields(jan31 + kDay * 365, {.months = 1}), lx::calendar::localInstant(2024, 3, 2));
  EXPECT_EQ(lx::calendar::localInstant(2023, 13, 1), lx::calendar::localInstant(2024, 1, 1));
  EXPECT_EQ(lx::calendar::localInstant(2024, 3, 0), lx::calendar::localInstant(2024, 2, 29));
  EXPECT_EQ(addFields(jan31 + 0.25, {.hours = 25}), jan31 + 0.25 + 25 * 3600);
  EXPECT_THROW(lx::calendar::localInstant(2147483647, 1, 1), lx::Exception);
  EXPECT_THROW(lx::calendar::localInstant(2024, 1, 2147483647), lx::Exception);
}

TEST(Calendar, DifferencesCountWallClockDaysAndElapsedHours) {
  lxtest::PinnedZone pin("America/New_York", "en_US");
  using lx::calendar::difference;
  using lx::calendar::Unit;
  double before = lx::calendar::localInstant(2024, 3, 9, 12);
  double after = lx::calendar::localInstant(2024, 3, 10, 12);
  EXPECT_EQ(difference(Unit::Day, before, after), 1);
  EXPECT_EQ(difference(Unit::Hour, before, after), 23);
  EXPECT_EQ(difference(Unit::Day, after, before), -1);
  EXPECT_EQ(difference(Unit::Day, before, after - 1), 0);
  // A month from 31 January ends on the last day of February.
  double jan31 = lx::calendar::localInstant(2024, 1, 31);
  EXPECT_EQ(difference(Unit::Month, jan31, lx::calendar::localInstant(2024, 2, 28)), 0);
  EXPECT_EQ(difference(Unit::Month, jan31, lx::calendar::localInstant(2024, 2, 29)), 1);
  EXPECT_EQ(difference(Unit::Week, before, before + 20 * kDay), 2);
}

}  // namespace
