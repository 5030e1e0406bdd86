#include "foundation/day_serial.h"

#include <cmath>

#include "foundation/calendar.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

constexpr double kSecondsPerDay = 86400.0;

// 1899-12-30 00:00 local; recomputed per call because the local zone may change.
double serialEpoch() {
  return calendar::localInstant(1899, 12, 30);
}

}  // namespace

Number DateToFloat(const Variant& value) {
  if (!isDate(value)) return Number::int32(0);
  double instant = value.dateSeconds();
  int64_t days = calendar::difference(calendar::Unit::Day, serialEpoch(), instant);
  calendar::Fields f = calendar::fieldsOf(instant);
  double timeOfDay = f.fraction + f.hour * 3600.0 + f.minute * 60.0 + f.second;
  return Number::real(static_cast<double>(days) + timeOfDay / kSecondsPerDay);
}

Date FloatToDate(const Variant& value) {
  double x = doubleValue(toText(value));
  // Far beyond any calendar; refused before the conversions below could overflow.
  if (!(std::fabs(x) <= 1e12)) throw InvalidArgumentException("date out of range");
  double days = std::trunc(x);
  double t = (x - days) * kSecondsPerDay;
  double s = std::trunc(t);
  calendar::Offsets add;
  add.days = static_cast<int64_t>(days);
  add.seconds = static_cast<int64_t>(s);
  return Date{calendar::addFields(serialEpoch(), add) + (t - s)};
}

}  // namespace lx
