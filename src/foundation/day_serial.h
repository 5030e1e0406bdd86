// Day-serial numbers: days since 1899-12-30 00:00 local time, the fraction the time of day.
#pragma once

#include "lxbasic/variant.h"

namespace lx {

// The serial number of a Date value; any other value gives the integer 0.
Number DateToFloat(const Variant& value);
// The date of a serial number read from the value's "%@" text.
Date FloatToDate(const Variant& value);

}  // namespace lx
