// Date and time built-ins. All calendar work is in the local time zone (see
// foundation/calendar.h); a value that is no date goes through CDate first, and one that
// CDate cannot read counts as the instant 0.
#include <unicode/dtfmtsym.h>
#include <unicode/locid.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "builtins/date_parser.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "foundation/calendar.h"
#include "foundation/day_serial.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/log.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

using calendar::Unit;

int32_t intArg(const Variant& v) {
  return intValue(toText(v));
}

double instantOf(const Variant& v) {
  return dateOfValue(v).value_or(0.0);
}

calendar::Fields fieldsOf(const Variant& v) {
  return calendar::fieldsOf(instantOf(v));
}

double dateSerial(int64_t y, int64_t m, int64_t d) {
  return calendar::localInstant(y, m, d);
}

// The log line is how callers see that a time was built; it is kept on every path that
// builds one, DateDiff's included.
double timeSerial(int64_t h, int64_t n, int64_t s) {
  double instant = calendar::localInstant(1970, 1, 1, h, n, s);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%f", instant);
  logMessage(fromUtf8(buf));
  return instant;
}

double midnightOf(const calendar::Fields& f) {
  return dateSerial(f.year, f.month, f.day);
}

int32_t monthLength(double instant) {
  calendar::Fields f = calendar::fieldsOf(instant);
  return static_cast<int32_t>(calendar::difference(Unit::Day, dateSerial(f.year, f.month, 1),
                                                   dateSerial(f.year, f.month + 1, 1)));
}

int32_t yearLength(double instant) {
  calendar::Fields f = calendar::fieldsOf(instant);
  return monthLength(dateSerial(f.year, 2, 1)) == 29 ? 366 : 365;
}

// Leap days from year 1 up to and including `year` (astronomical years, floored for the
// years before 1).
int64_t leapDaysThrough(int64_t year) {
  auto floorDiv = [](int64_t a, int64_t b) { return a / b - (a % b != 0 && a < 0); };
  return floorDiv(year, 4) - floorDiv(year, 100) + floorDiv(year, 400);
}

// Weeks by walking month by month, then year by year, from date1 toward date2, adding the
// length of each month or year arrived at. Steps back add lengths too; the count is kept as
// the library has always given it. The span holds fewer than 12 months, so those are walked;
// the years reached are simply the next ones in the walk's direction, and their lengths (the
// calendar's own leap rule, as yearLength finds it) are summed at once, which keeps spans of
// millennia quick.
int64_t walkedWeeks(double d1, double d2) {
  calendar::Span span = calendar::split(d1, d2);
  int64_t total = span.days;
  double at = d1;
  for (int64_t i = 0; i < std::llabs(span.months); ++i) {
    at = calendar::addFields(at, {.months = span.months > 0 ? 1 : -1});
    total += monthLength(at);
  }
  int64_t from = calendar::fieldsOf(at).year;
  int64_t first = span.years > 0 ? from + 1 : from + span.years;
  int64_t last = span.years > 0 ? from + span.years : from - 1;
  if (span.years != 0) {
    total += 365 * std::llabs(span.years) + leapDaysThrough(last) - leapDaysThrough(first - 1);
  }
  return total / 7;
}

Variant dateResult(double instant) {
  return Variant::date(instant);
}
Variant intResult(int64_t n) {
  return n == static_cast<int32_t>(n) ? Variant::int32(static_cast<int32_t>(n)) : Variant::int64(n);
}

UString monthName(int month) {
  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(icu::Locale::getDefault(), status);
  if (U_FAILURE(status)) return UString();
  int32_t count = 0;
  const icu::UnicodeString* names = symbols.getMonths(count);
  if (month < 1 || month > count) return UString();
  const icu::UnicodeString& name = names[month - 1];
  return UString(reinterpret_cast<const char16_t*>(name.getBuffer()),
                 static_cast<size_t>(name.length()));
}

// The built-ins themselves, in a namespace of their own because Date names a type too.
namespace fn {

// --- Conversions and the clock

Variant CDate(LxBasicFunc&, const Variant& v) {
  return guarded(Variant(), [&] {
    std::optional<double> d = dateOfValue(v);
    return d ? dateResult(*d) : Variant();
  });
}

Variant IsDate(LxBasicFunc&, const Variant& v) {
  return guarded(Variant::int32(0), [&] { return Variant::int32(dateOfValue(v) ? 1 : 0); });
}

Variant Now(LxBasicFunc&) {
  return dateResult(currentInstant());
}

Variant Date(LxBasicFunc&) {
  return guarded(Variant(),
                 [] { return dateResult(midnightOf(calendar::fieldsOf(currentInstant()))); });
}

Variant Time(LxBasicFunc&) {
  return guarded(Variant(), [] {
    calendar::Fields f = calendar::fieldsOf(currentInstant());
    return dateResult(timeSerial(f.hour, f.minute, f.second));
  });
}

Variant Timer(LxBasicFunc&) {
  return guarded(Variant::int32(0), [] {
    double t = currentInstant();
    return intResult(calendar::difference(Unit::Second, midnightOf(calendar::fieldsOf(t)), t));
  });
}

Variant DateValue(LxBasicFunc&, const Variant& v) {
  return guarded(Variant(), [&] { return dateResult(midnightOf(fieldsOf(v))); });
}

Variant TimeValue(LxBasicFunc&, const Variant& v) {
  return guarded(Variant(), [&] {
    calendar::Fields f = fieldsOf(v);
    return dateResult(timeSerial(f.hour, f.minute, f.second));
  });
}

// --- Fields

// Year, Month, Day, Hour, Minute and Second: one field of CDate(v), 0 when anything fails.
template <int32_t calendar::Fields::*Field>
Variant FieldOf(LxBasicFunc&, const Variant& v) {
  return guarded(Variant::int32(0), [&] { return Variant::int32(fieldsOf(v).*Field); });
}

Variant Weekday(LxBasicFunc&, const Variant& v) {
  return guarded(Variant::int32(0), [&] { return Variant::int32(fieldsOf(v).dayOfWeek + 1); });
}

// Unguarded: an acceptable day number asks for names that the date object never had, and
// that failure reaches the caller.
Variant WeekdayName(LxBasicFunc& lib, const Variant& v) {
  int32_t n = isDate(v) ? Weekday(lib, v).number().toInt32() : intArg(v);
  if (n < 1 || n > 7) return UString();
  throw UnrecognizedSelectorException("date object does not recognize selector weekdaySymbols");
}

Variant MonthNameLength(LxBasicFunc&, const Variant& m, const Variant& length) {
  return guarded(UString(), [&]() -> Variant {
    int32_t month = isDate(m) ? calendar::fieldsOf(m.dateSeconds()).month : intArg(m);
    int32_t count = intArg(length);
    if (month < 1 || month > 12 || count < 1) return UString();
    return monthName(month).substr(0, static_cast<size_t>(count));
  });
}

Variant MonthName(LxBasicFunc& lib, const Variant& m) {
  return MonthNameLength(lib, m, Variant::int32(255));
}

Variant DatePart(LxBasicFunc&, const Variant& interval, const Variant& date) {
  return guarded(Variant::int32(0), [&] {
    UString in = toText(interval);
    calendar::Fields f = fieldsOf(date);
    int64_t r = 0;
    if (in == u"yyyy") r = f.year;
    if (in == u"q") r = f.month / 3 + 1;
    if (in == u"m") r = f.month;
    if (in == u"y") r = f.dayOfYear;
    if (in == u"d") r = f.day;
    if (in == u"w") r = f.dayOfWeek + 1;
    if (in == u"ww")
      r = calendar::difference(Unit::Week, dateSerial(f.year, 1, 1), midnightOf(f)) + 1;
    if (in == u"h") r = f.hour;
    if (in == u"n") r = f.minute;
    if (in == u"s") r = f.second;
    return intResult(r);
  });
}

// --- Arithmetic

Variant DateAdd(LxBasicFunc&, const Variant& interval, const Variant& number, const Variant& date) {
  if (interval.isEmpty() || number.isEmpty() || date.isEmpty()) return Variant();
  return guarded(Variant(), [&] {
    double d = instantOf(date);
    UString in = lowerCase(toText(interval));
    int64_t n = intArg(number);
    calendar::Offsets add;
    if (in == u"yyyy") add.years = n;
    if (in == u"q") add.months = 3 * n;
    if (in == u"m") add.months = n;
    if (in == u"y" || in == u"d" || in == u"w") add.days = n;
    if (in == u"ww") add.days = 7 * n;
    if (in == u"h") add.hours = n;
    if (in == u"n") add.minutes = n;
    if (in == u"s") add.seconds = n;
    return dateResult(calendar::addFields(d, add));
  });
}

Variant DateDiff(LxBasicFunc&, const Variant& interval, const Variant& date1,
                 const Variant& date2) {
  return guarded(Variant::int32(0), [&] {
    double d1 = instantOf(date1), d2 = instantOf(date2);
    calendar::Fields f1 = calendar::fieldsOf(d1), f2 = calendar::fieldsOf(d2);
    UString in = lowerCase(toText(interval));
    // Both ends cut down to the start of their hour or minute.
    auto cut = [](const calendar::Fields& f, bool minutes) {
      return midnightOf(f) + timeSerial(f.hour, minutes ? f.minute : 0, 0);
    };
    int64_t r = 0;
    if (in == u"yyyy") r = f2.year - f1.year;
    if (in == u"q") r = calendar::difference(Unit::Month, d1, d2) / 3;
    if (in == u"m") {
      r = calendar::difference(Unit::Month, dateSerial(f1.year, f1.month, 1),
                               dateSerial(f2.year, f2.month, 1));
    }
    if (in == u"y" || in == u"d")
      r = calendar::difference(Unit::Day, midnightOf(f1), midnightOf(f2));
    if (in == u"ww") r = calendar::difference(Unit::Week, d1, d2);
    if (in == u"w") r = walkedWeeks(d1, d2);
    if (in == u"h") r = calendar::difference(Unit::Hour, cut(f1, false), cut(f2, false));
    if (in == u"n") r = calendar::difference(Unit::Minute, cut(f1, true), cut(f2, true));
    if (in == u"s") r = calendar::difference(Unit::Second, d1, d2);
    return intResult(r);
  });
}

Variant DateSerial(LxBasicFunc&, const Variant& y, const Variant& m, const Variant& d) {
  return guarded(Variant(),
                 [&] { return dateResult(dateSerial(intArg(y), intArg(m), intArg(d))); });
}

Variant TimeSerial(LxBasicFunc&, const Variant& h, const Variant& n, const Variant& s) {
  return guarded(Variant(),
                 [&] { return dateResult(timeSerial(intArg(h), intArg(n), intArg(s))); });
}

// Helpers kept callable under their library names; 0 when the date is out of range.
int32_t daysInMonth(LxBasicFunc&, const Variant& date) {
  try {
    return monthLength(instantOf(date));
  } catch (...) {
    return 0;
  }
}

int32_t daysInYear(LxBasicFunc&, const Variant& date) {
  try {
    return yearLength(instantOf(date));
  } catch (...) {
    return 0;
  }
}

}  // namespace fn
}  // namespace

void registerDateFunctions(LibraryBuilder& b) {
  using namespace fn;
  b.method("CDate:", &CDate)
      .method("IsDate:", &IsDate)
      .method("Now", &Now)
      .method("Date", &fn::Date)
      .method("Time", &Time)
      .method("Timer", &Timer)
      .method("DateValue:", &DateValue)
      .method("TimeValue:", &TimeValue)
      .method("Year:", &FieldOf<&calendar::Fields::year>)
      .method("Month:", &FieldOf<&calendar::Fields::month>)
      .method("Day:", &FieldOf<&calendar::Fields::day>)
      .method("Hour:", &FieldOf<&calendar::Fields::hour>)
      .method("Minute:", &FieldOf<&calendar::Fields::minute>)
      .method("Second:", &FieldOf<&calendar::Fields::second>)
      .method("Weekday:", &Weekday)
      .method("WeekdayName:", &WeekdayName)
      .method("MonthName:", &MonthName)
      .method("MonthName:length:", &MonthNameLength)
      .method("DatePart:date:", &DatePart)
      .method("DateAdd:number:date:", &DateAdd)
      .method("DateDiff:date1:date2:", &DateDiff)
      .method("DateSerial:month:day:", &DateSerial)
      .method("TimeSerial:minute:second:", &TimeSerial)
      .method("daysInMonth:", &daysInMonth)
      .method("daysInYear:", &daysInYear);
}

}  // namespace lx
