#include "foundation/calendar.h"

#include <unicode/gregocal.h>
#include <unicode/timezone.h>
#include <unicode/ucal.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <mutex>
#include <string>

#include "lxbasic/exceptions.h"

namespace lx::calendar {

namespace {

// ICU represents about five million years either side of 1970; staying well inside that keeps
// its Julian-day arithmetic away from 32-bit overflow.
constexpr double kMaxInstant = 1.5e14;
constexpr int64_t kMaxYear = 1'000'000;
constexpr int64_t kMaxMonth = 12 * kMaxYear;
constexpr int64_t kMaxDay = 400'000'000;

[[noreturn]] void outOfRange() {
  throw InvalidArgumentException("date out of range");
}

void check(UErrorCode status) {
  if (U_FAILURE(status)) outOfRange();
}

int32_t bounded(int64_t value, int64_t limit) {
  if (value < -limit || value > limit) outOfRange();
  return static_cast<int32_t>(value);
}

std::unique_ptr<icu::GregorianCalendar> makeCalendar() {
  UErrorCode status = U_ZERO_ERROR;
  auto cal = std::make_unique<icu::GregorianCalendar>(localZone().release(), status);
  check(status);
  // Proleptic: no Julian dates before 1582, so day counts stay regular.
  cal->setGregorianChange(-std::numeric_limits<double>::max(), status);
  check(status);
  cal->setLenient(true);
  return cal;
}

void setInstant(icu::Calendar& cal, double instant) {
  if (!(std::fabs(instant) <= kMaxInstant)) outOfRange();
  UErrorCode status = U_ZERO_ERROR;
  cal.setTime(instant * 1000.0, status);
  check(status);
}

double instantOf(const icu::Calendar& cal) {
  UErrorCode status = U_ZERO_ERROR;
  double ms = cal.getTime(status);
  check(status);
  return ms / 1000.0;
}

int32_t field(const icu::Calendar& cal, UCalendarDateFields f) {
  UErrorCode status = U_ZERO_ERROR;
  int32_t v = cal.get(f, status);
  check(status);
  return v;
}

// Whole units of `f` from the calendar's instant to `to`; the calendar is left advanced by them.
int32_t fieldDifference(icu::Calendar& cal, double to, UCalendarDateFields f) {
  if (!(std::fabs(to) <= kMaxInstant)) outOfRange();
  UErrorCode status = U_ZERO_ERROR;
  int32_t n = cal.fieldDifference(to * 1000.0, f, status);
  check(status);
  return n;
}

}  // namespace

std::unique_ptr<icu::TimeZone> localZone() {
  static std::mutex mutex;
  static std::string seenTz;
  static std::unique_ptr<icu::TimeZone> zone;
  const char* tz = std::getenv("TZ");
  // "=" marks a set TZ, so that an empty TZ and an unset one are told apart.
  std::string key = tz ? std::string("=") + tz : std::string();
  std::lock_guard<std::mutex> lock(mutex);
  if (!zone || key != seenTz) {
    zone.reset(icu::TimeZone::detectHostTimeZone());
    if (!zone) zone.reset(icu::TimeZone::getGMT()->clone());
    seenTz = key;
  }
  return std::unique_ptr<icu::TimeZone>(zone->clone());
}

Fields fieldsOf(double instant) {
  auto cal = makeCalendar();
  double whole = std::floor(instant);
  setInstant(*cal, whole);
  Fields f;
  f.year = field(*cal, UCAL_EXTENDED_YEAR);
  f.month = field(*cal, UCAL_MONTH) + 1;
  f.day = field(*cal, UCAL_DATE);
  f.hour = field(*cal, UCAL_HOUR_OF_DAY);
  f.minute = field(*cal, UCAL_MINUTE);
  f.second = field(*cal, UCAL_SECOND);
  f.dayOfYear = field(*cal, UCAL_DAY_OF_YEAR);
  f.dayOfWeek = field(*cal, UCAL_DAY_OF_WEEK) - UCAL_SUNDAY;
  f.fraction = instant - whole;
  return f;
}

double localInstant(int64_t year, int64_t month, int64_t day, int64_t hour, int64_t minute,
                    int64_t second) {
  constexpr int64_t kInt32 = std::numeric_limits<int32_t>::max();
  auto cal = makeCalendar();
  cal->clear();
  cal->set(UCAL_EXTENDED_YEAR, bounded(year, kMaxYear));
  cal->set(UCAL_MONTH, bounded(month - 1, kMaxMonth));
  cal->set(UCAL_DATE, bounded(day, kMaxDay));
  cal->set(UCAL_HOUR_OF_DAY, bounded(hour, kInt32));
  cal->set(UCAL_MINUTE, bounded(minute, kInt32));
  cal->set(UCAL_SECOND, bounded(second, kInt32));
  cal->set(UCAL_MILLISECOND, 0);
  double instant = instantOf(*cal);
  if (!(std::fabs(instant) <= kMaxInstant)) outOfRange();
  return instant;
}

double addFields(double instant, const Offsets& add) {
  Fields f = fieldsOf(instant);
  return localInstant(f.year + add.years, f.month + add.months, f.day + add.days,
                      f.hour + add.hours, f.minute + add.minutes, f.second + add.seconds) +
         f.fraction;
}

int64_t difference(Unit unit, double from, double to) {
  double elapsed = to - from;
  if (!(std::fabs(elapsed) <= 2 * kMaxInstant)) outOfRange();
  switch (unit) {
    case Unit::Hour:
      return static_cast<int64_t>(std::trunc(elapsed / 3600.0));
    case Unit::Minute:
      return static_cast<int64_t>(std::trunc(elapsed / 60.0));
    case Unit::Second:
      return static_cast<int64_t>(std::trunc(elapsed));
    default:
      break;
  }
  UCalendarDateFields f = unit == Unit::Year    ? UCAL_YEAR
                          : unit == Unit::Month ? UCAL_MONTH
                          : unit == Unit::Week  ? UCAL_WEEK_OF_YEAR
                                                : UCAL_DATE;
  auto cal = makeCalendar();
  setInstant(*cal, from);
  return fieldDifference(*cal, to, f);
}

Span split(double from, double to) {
  auto cal = makeCalendar();
  setInstant(*cal, from);
  Span span;
  span.years = fieldDifference(*cal, to, UCAL_YEAR);
  span.months = fieldDifference(*cal, to, UCAL_MONTH);
  span.days = fieldDifference(*cal, to, UCAL_DATE);
  return span;
}

}  // namespace lx::calendar
