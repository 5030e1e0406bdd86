// Short spellings of the values that built-in tests pass and read.
#pragma once

#include <cmath>
#include <cstdint>

#include "support/builtins.h"

namespace lxtest {

inline lx::Variant I(int32_t v) {
  return lx::Variant::int32(v);
}
inline lx::Variant L(int64_t v) {
  return lx::Variant::int64(v);
}
inline lx::Variant R(double v) {
  return lx::Variant::real(v);
}
// What an Empty script value becomes on its way into a call.
inline lx::Variant null() {
  return lx::nullObject();
}
// A value that cannot answer a numeric or length request.
inline lx::Variant someArray() {
  return lx::Array::make({lx::Variant(u"x")});
}

inline const lx::Variant kNull = null();
inline const lx::Variant kArray = someArray();

// The number in a result; NaN (and a failed expectation) when the result is no Number.
inline double num(const lx::Variant& v) {
  EXPECT_TRUE(v.isNumber()) << "not a number: " << lx::toUtf8(lx::toText(v));
  return v.isNumber() ? v.number().toDouble() : NAN;
}

}  // namespace lxtest
