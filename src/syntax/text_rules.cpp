#include "syntax/text_rules.h"

#include <unicode/uchar.h>

#include <cmath>
#include <cstdint>

#include "foundation/scanning.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

}  // namespace

bool isNameChar(char16_t c) {
  if (c < 0x80) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           c == u'@' || c == u'_';
  }
  return u_isalpha(c) || u_isdigit(c);
}

void operatorPositions(UStringView line, std::vector<size_t>& out) {
  out.clear();
  bool inString = false;
  for (size_t i = 0; i < line.size(); ++i) {
    char16_t c = line[i];
    if (c == u'"') {
      inString = !inString;
      continue;
    }
    if (inString) continue;
    if (i == 0 && (c == u'+' || c == u'-')) continue;
    if (c == u'&' && i + 1 < line.size()) {
      char16_t n = line[i + 1];
      if (n == u'H' || n == u'h' || n == u'O' || n == u'o') continue;
    }
    if (isHighOperator(c) || isLowOperator(c)) out.push_back(i);
  }
}

size_t nextOperator(UStringView line, const std::vector<size_t>& ops) {
  for (size_t k = 0; k < ops.size(); ++k) {
    if (isHighOperator(line[ops[k]])) return k;
  }
  for (size_t k = 0; k < ops.size(); ++k) {
    if (isLowOperator(line[ops[k]])) return k;
  }
  return ops.size();
}

bool isInlineOperation(const UString& line) {
  // Only a first word of EXIT or CONTINUE matters; most lines fail the first letter.
  if (line.empty()) return false;
  const char16_t c = line[0];
  if (c != u'E' && c != u'e' && c != u'C' && c != u'c') return false;
  UString rest = line;
  const UString first = upperCase(getTokenFrom(rest, u" "));
  return first == u"EXIT" || first == u"CONTINUE";
}

int32_t leadingIntOfText(const Variant& v) {
  if (v.isString()) return intValue(UStringView(v.string()));
  if (v.isNumber()) {
    const Number& n = v.number();
    switch (n.type()) {
      case Number::Type::Int32:
      case Number::Type::Boolean:
        return n.toInt32();
      case Number::Type::UInt64:
        return INT32_MAX;  // its digits exceed every 32-bit integer
      case Number::Type::Int64: {
        const int64_t i = n.toInt64();
        return i > INT32_MAX ? INT32_MAX : i < INT32_MIN ? INT32_MIN : static_cast<int32_t>(i);
      }
      case Number::Type::Double: {
        // Written without an exponent from 1e-4 up to 16 integer digits.
        const double d = n.toDouble();
        const double magnitude = std::fabs(d);
        if (d == 0) return 0;
        if (magnitude >= 1e-4 && magnitude < 1e15) {
          const double t = std::trunc(d);
          return t > INT32_MAX ? INT32_MAX : t < INT32_MIN ? INT32_MIN : static_cast<int32_t>(t);
        }
        break;
      }
    }
  }
  return intValue(toText(v));
}

bool scanNumber(UStringView t, double* out) {
  size_t i = 0;
  if (i < t.size() && (t[i] == u'+' || t[i] == u'-')) ++i;
  size_t digits = 0;
  while (i < t.size() && isDigit(t[i])) ++i, ++digits;
  if (i < t.size() && t[i] == u'.') {
    ++i;
    while (i < t.size() && isDigit(t[i])) ++i, ++digits;
  }
  if (digits == 0) return false;
  *out = doubleValue(t);
  return true;
}

Variant radixLiteral(UStringView digits, unsigned radix) {
  uint64_t value = 0;
  bool overflow = false;
  for (char16_t c : digits) {
    unsigned d;
    if (isDigit(c)) {
      d = c - u'0';
    } else if (c >= u'a' && c <= u'f') {
      d = 10 + (c - u'a');
    } else if (c >= u'A' && c <= u'F') {
      d = 10 + (c - u'A');
    } else {
      break;
    }
    if (d >= radix) break;
    if (value > (UINT64_MAX - d) / radix) overflow = true;
    value = overflow ? UINT64_MAX : value * radix + d;
  }
  return Variant::uint64(value);
}

}  // namespace lx
