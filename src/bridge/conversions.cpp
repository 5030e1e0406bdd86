// Argument conversions that must not lose a value silently, and the registration-time check
// of a selector against its C++ parameter count.
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx::detail {

namespace {

[[noreturn]] void outOfRange(const Variant& v, const std::string& what) {
  throw InvalidArgumentException("the argument " + toUtf8(toText(v)) + " does not fit " + what);
}

bool isBlank(char16_t c) {
  return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r';
}

// The leading integer of a text, as digits after optional blanks and a sign; a text without
// digits reads as 0. std::nullopt when the digits do not fit 64 bits.
std::optional<uint64_t> leadingDigits(UStringView text, bool* negative) {
  size_t i = 0;
  while (i < text.size() && isBlank(text[i])) ++i;
  *negative = i < text.size() && text[i] == u'-';
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
  uint64_t value = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    const auto d = static_cast<uint64_t>(text[i] - u'0');
    if (value > (UINT64_MAX - d) / 10) return std::nullopt;
    value = value * 10 + d;
  }
  return value;
}

}  // namespace

int64_t int64Argument(const Variant& v) {
  if (v.isNumber()) {
    const Number& n = v.numberUnchecked();
    if (n.type() == Number::Type::UInt64) outOfRange(v, "a signed 64-bit parameter");
    if (auto exact = n.exactInt64()) return *exact;
    const double d = std::trunc(n.toDouble());
    if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0)) {
      outOfRange(v, "a signed 64-bit parameter");
    }
    return static_cast<int64_t>(d);
  }
  return longLongValue(toText(v));
}

uint64_t unsignedArgument(const Variant& v, int bits) {
  const uint64_t max = bits >= 64 ? UINT64_MAX : (uint64_t{1} << bits) - 1;
  const std::string what = "an unsigned " + std::to_string(bits) + "-bit parameter";
  std::optional<uint64_t> value;
  bool negative = false;
  if (v.isNumber()) {
    const Number& n = v.numberUnchecked();
    const double d = std::trunc(n.toDouble());
    negative = n.isDouble() ? d < 0 : n.exactInt64().value_or(0) < 0;
    value = n.isDouble() ? Number::real(d).exactUInt64() : n.exactUInt64();
  } else {
    value = leadingDigits(toText(v), &negative);
  }
  if (!value || (negative && *value != 0) || *value > max) outOfRange(v, what);
  return *value;
}

int32_t narrowArgument(const Variant& v, int bits) {
  const int32_t value = int32Argument(v);
  const int32_t max = (int32_t{1} << (bits - 1)) - 1;
  if (value > max || value < -max - 1) {
    outOfRange(v, "a signed " + std::to_string(bits) + "-bit parameter");
  }
  return value;
}

void checkSelector(const std::string& selector, size_t arity) {
  size_t colons = 0;
  for (char c : selector) colons += c == ':' ? 1 : 0;
  if (colons == arity) return;
  throw BindingException("the selector \"" + selector + "\" has " + std::to_string(colons) +
                         " colon(s) but the method takes " + std::to_string(arity) +
                         " script argument(s)");
}

}  // namespace lx::detail
