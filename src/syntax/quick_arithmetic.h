// The arithmetic that needs none of the operators' kind rules: "+", "-" and "*" of two numbers,
// an Empty right side counting as 0. Every operator path asks it first, so none can disagree.
#pragma once

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

}  // namespace lx
