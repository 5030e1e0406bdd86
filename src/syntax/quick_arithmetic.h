// The arithmetic that needs none of the operators' kind rules: "+", "-" and "*" of two numbers,
// an Empty right side counting as 0, and the order of two numbers. Every operator and
// comparison path asks it first, so none can disagree.
#pragma once

#include <cmath>
#include <limits>

#include "lxbasic/variant.h"

namespace lx {

// False when the operation needs the kind rules; otherwise `out` holds the (Double) result.
inline bool quickArithmetic(char16_t op, const Variant& a, const Variant& b, double& out) noexcept {
  if (!a.isNumber() || !(b.isNumber() || b.isEmpty())) return false;
  const double x = a.numberUnchecked().toDouble();
  const double y = b.isNumber() ? b.numberUnchecked().toDouble() : 0.0;
  switch (op) {
    case u'+':
      out = x + y;
      return true;
    case u'-':
      out = x - y;
      return true;
    case u'*':
      out = x * y;
      return true;
    default:
      return false;
  }
}

// A number compared with another value is read back from its text. For a number that text is
// the shortest one that reads back exactly, so the number itself serves, except where the
// reading differs: "nan" and "inf" read as 0, and a subnormal reads as an underflow, 0.
inline bool readsBackAsItself(double d) noexcept {
  return d == 0 || (std::isfinite(d) && std::fabs(d) >= std::numeric_limits<double>::min());
}

// The order of two numbers (-1, 0 or 1) when the right one reads back as itself; false when
// the comparison needs the kind rules.
inline bool quickOrder(const Variant& a, const Variant& b, int32_t& out) noexcept {
  if (!a.isNumber() || !b.isNumber()) return false;
  const double r = b.numberUnchecked().toDouble();
  if (!readsBackAsItself(r)) return false;
  const double l = a.numberUnchecked().toDouble();
  out = l > r ? 1 : r > l ? -1 : 0;
  return true;
}

}  // namespace lx
