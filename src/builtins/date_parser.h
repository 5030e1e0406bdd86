// Reading dates from text, for CDate and everything built on it.
//
// The reader is lenient about spacing, letter case and the order of the parts, and strict
// about what each part may be: a text it cannot read completely, or that names a day that
// does not exist (31 April, 29 February 2023), is refused. Accepted notations, with the date
// and the time in either order and each one optional as long as one is present:
//
//   ISO 8601          2024-01-31   2024-01-31T14:05   2024-01-31 14:05:09.250   also with a
//                     zone suffix Z, UTC, GMT, +01:00, -0500 (the engine's own date text,
//                     "2024-01-31 14:05:09 +0100", reads back to the same instant)
//   numeric dates     2024/01/31 (a four-digit year first is always year-month-day);
//                     otherwise in the order of the locale's short date: 1/31/2024 and
//                     1/31/24 in en_US, 31.01.2024 and 31.1.24 in de_DE; "/", "-" or "."
//                     as separator, the same one throughout; without a year (1/31) the
//                     current year
//   month names       January 31, 2024   Jan 31 2024   31 January 2024   31. Januar 2024
//                     31-Jan-2024   2024 Jan 31   March 2024 (the 1st); full and abbreviated
//                     names in English and in the locale, a trailing "." ignored
//   weekday names     ignored where they stand: Wednesday, January 31, 2024
//   relative days     today, tomorrow, yesterday (local midnight, or the time given with
//                     them: tomorrow 9:30); now (the current instant, with nothing else)
//   times             14:05   14:05:09   14:05:09.25   2:05 PM   2 pm   12 am (midnight);
//                     a time alone means that time today; the locale's AM/PM words work too
//
// A two-digit year is 2000-2049 for 00-49 and 1950-1999 for 50-99. Refused: a bare number,
// hours past 23 (or 12 with AM/PM), minutes or seconds past 59, years past 9999, words that
// are no month, weekday or relative day, and anything left over.
#pragma once

#include <optional>

#include "lxbasic/variant.h"

namespace lx {

// The instant (seconds since 1970) that `text` names in the local time zone, or nothing.
// `now` is the instant that relative days and lone times are taken from.
std::optional<double> parseDateText(UStringView text, double now);

// CDate's reading of any value: a date as it is, a number as a day-serial number, anything
// else by its text as above. Nothing when no date comes of it, or none the calendar can hold.
std::optional<double> dateOfValue(const Variant& v);

// The current instant, seconds since 1970.
double currentInstant();

}  // namespace lx
