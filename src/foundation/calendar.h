// Calendar arithmetic in the process's local time zone, shared by the day-serial conversions
// and the date built-ins. Instants are seconds since 1970-01-01 00:00:00 UTC.
//
// The calendar is the proleptic Gregorian one, so that day counts stay regular across the
// whole range of serial numbers. Every function throws lx::InvalidArgumentException when the
// calendar cannot represent a result (parts far outside any sensible range).
#pragma once

#include <unicode/timezone.h>

#include <cstdint>
#include <memory>

namespace lx::calendar {

// The local zone as the TZ environment value names it right now. ICU caches its default zone
// for the life of the process; this one is looked up again whenever TZ changes.
std::unique_ptr<icu::TimeZone> localZone();

// Calendar fields of an instant in local time. The year is astronomical (1 BC is 0).
struct Fields {
  int32_t year = 0;
  int32_t month = 0;      // 1-12
  int32_t day = 0;        // 1-31
  int32_t hour = 0;       // 0-23
  int32_t minute = 0;     // 0-59
  int32_t second = 0;     // 0-59
  int32_t dayOfYear = 0;  // 1-366
  int32_t dayOfWeek = 0;  // Sunday 0 ... Saturday 6
  double fraction = 0;    // the instant's part of a second, 0 <= fraction < 1
};
Fields fieldsOf(double instant);

// The instant of a local date and time. Parts out of their range roll over the way the
// calendar counts (month 13 is January of the next year, day 0 the last day of the month
// before, 31 February early March).
double localInstant(int64_t year, int64_t month, int64_t day, int64_t hour = 0, int64_t minute = 0,
                    int64_t second = 0);

// Adds to each local field of the instant and normalises the sum as localInstant does; the
// instant's fraction of a second is kept. So 31 January plus one month is "31 February", that
// is 2 or 3 March, and never clamped to the month's last day.
struct Offsets {
  int64_t years = 0;
  int64_t months = 0;
  int64_t days = 0;
  int64_t hours = 0;
  int64_t minutes = 0;
  int64_t seconds = 0;
};
double addFields(double instant, const Offsets& add);

// Whole units from one instant to another, truncated toward zero; negative when `to` is
// earlier. Days, weeks, months and years step in local wall-clock time (a day across a
// daylight-saving change is still one day); hours, minutes and seconds are elapsed time.
enum class Unit { Year, Month, Week, Day, Hour, Minute, Second };
int64_t difference(Unit unit, double from, double to);

// The span from one instant to another as whole years, then whole months, then whole days,
// each counted on from where the previous count left off.
struct Span {
  int64_t years = 0;
  int64_t months = 0;
  int64_t days = 0;
};
Span split(double from, double to);

}  // namespace lx::calendar
