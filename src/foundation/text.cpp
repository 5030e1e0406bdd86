#include "lxbasic/text.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <ctime>
#include <limits>
#include <set>
#include <utility>

#include "foundation/memory_budget.h"
#include "foundation/nesting.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/value.h"

namespace lx {

UString fromUtf8(std::string_view utf8) {
  UString out;
  out.reserve(utf8.size());
  size_t i = 0;
  while (i < utf8.size()) {
    auto c = static_cast<unsigned char>(utf8[i]);
    char32_t cp = 0xFFFD;
    size_t len = 1;
    if (c < 0x80) {
      cp = c;
    } else if ((c >> 5) == 0x6 && i + 1 < utf8.size()) {
      cp = ((c & 0x1Fu) << 6) | (static_cast<unsigned char>(utf8[i + 1]) & 0x3Fu);
      len = 2;
    } else if ((c >> 4) == 0xE && i + 2 < utf8.size()) {
      cp = ((c & 0x0Fu) << 12) | ((static_cast<unsigned char>(utf8[i + 1]) & 0x3Fu) << 6) |
           (static_cast<unsigned char>(utf8[i + 2]) & 0x3Fu);
      len = 3;
    } else if ((c >> 3) == 0x1E && i + 3 < utf8.size()) {
      cp = ((c & 0x07u) << 18) | ((static_cast<unsigned char>(utf8[i + 1]) & 0x3Fu) << 12) |
           ((static_cast<unsigned char>(utf8[i + 2]) & 0x3Fu) << 6) |
           (static_cast<unsigned char>(utf8[i + 3]) & 0x3Fu);
      len = 4;
    }
    for (size_t k = 1; k < len; ++k) {
      if ((static_cast<unsigned char>(utf8[i + k]) & 0xC0u) != 0x80u) {
        // A sequence cut short: one replacement character, and the next byte starts afresh.
        cp = 0xFFFD;
        len = 1;
        break;
      }
    }
    i += len;
    if (cp >= 0x10000 && cp <= 0x10FFFF) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp > 0xFFFF ? 0xFFFD : cp));
    }
  }
  return out;
}

std::string toUtf8(UStringView text) {
  std::string out;
  out.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = 0xFFFD;  // a lone surrogate has no UTF-8 form
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

bool isWhitespaceOrNewline(char16_t c) noexcept {
  switch (c) {
    case 0x09:
    case 0x0A:
    case 0x0B:
    case 0x0C:
    case 0x0D:
    case 0x20:
    case 0x85:
    case 0xA0:
    case 0x1680:
    case 0x2028:
    case 0x2029:
    case 0x202F:
    case 0x205F:
    case 0x3000:
      return true;
    default:
      return c >= 0x2000 && c <= 0x200A;
  }
}

UString dateText(double secondsSince1970) {
  double whole = std::floor(secondsSince1970);
  if (!(whole > -6.7e16 && whole < 6.7e16)) return u"(invalid date)";
  auto t = static_cast<time_t>(whole);
  struct tm local {};
  if (!localtime_r(&t, &local)) return u"(invalid date)";
  long offset = local.tm_gmtoff / 60;
  char sign = offset < 0 ? '-' : '+';
  if (offset < 0) offset = -offset;
  char buf[80];
  std::snprintf(buf, sizeof buf, "%04lld-%02d-%02d %02d:%02d:%02d %c%02ld%02ld",
                static_cast<long long>(local.tm_year) + 1900, local.tm_mon + 1, local.tm_mday,
                local.tm_hour, local.tm_min, local.tm_sec, sign, offset / 60, offset % 60);
  return fromUtf8(buf);
}

namespace {

// Cuts `out` to kMaxValueText code units (never inside a surrogate pair) and marks the cut.
void cutValueText(UString& out) {
  size_t keep = kMaxValueText;
  if (keep > 0 && out[keep - 1] >= 0xD800 && out[keep - 1] <= 0xDBFF) --keep;
  out.resize(keep);
  out += kCutText;
}

// Appends the text of `array`; false once the text reached kMaxValueText and was cut, when
// nothing more may be appended (not even the closing brackets).
bool appendArrayText(UString& out, const Array& array) {
  NestingPath inside(&array);
  if (!inside.entered()) {
    out += kCycleText;
    return true;
  }
  out += u'(';
  size_t count = 0;
  for (const Variant& item : array.items) {
    if (count++ > 0) out += u", ";
    // Bounded as the text is, a long walk still answers a stop request.
    if (count % 4096 == 0 && currentRunStopped()) throw ScriptStopped();
    if (item.isArray()) {
      if (!appendArrayText(out, *item.array())) return false;
    } else {
      const UString text = toText(item);
      out.append(text, 0,
                 std::min(text.size(), kMaxValueText + 1 - std::min(out.size(), kMaxValueText)));
    }
    if (out.size() > kMaxValueText) {
      cutValueText(out);
      return false;
    }
    chargeTextGrowth(out.size());
  }
  out += u')';
  return true;
}

size_t skipWhitespace(UStringView text) {
  size_t i = 0;
  while (i < text.size() && isWhitespaceOrNewline(text[i])) ++i;
  return i;
}

// Digits after an optional sign, saturating at the limits of T.
template <class T>
T leadingInteger(UStringView text) {
  size_t i = skipWhitespace(text);
  bool negative = false;
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) negative = text[i++] == u'-';
  using U = std::make_unsigned_t<T>;
  const U limit =
      negative ? U(std::numeric_limits<T>::max()) + 1 : U(std::numeric_limits<T>::max());
  U value = 0;
  bool saturated = false;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    if (saturated) continue;
    U digit = text[i] - u'0';
    if (value > (limit - digit) / 10) {
      saturated = true;
      value = limit;
    } else {
      value = value * 10 + digit;
    }
  }
  if (negative)
    return value == U(std::numeric_limits<T>::max()) + 1 ? std::numeric_limits<T>::min()
                                                         : -static_cast<T>(value);
  return static_cast<T>(value);
}

[[noreturn]] void cannotAnswer(const Variant& v, const char* request) {
  const char* kind = v.isArray() ? "Array" : v.isDate() ? "Date" : "Object";
  std::string name = v.isObject() ? v.object()->className() : kind;
  throw UnrecognizedSelectorException("-[" + name + " " + request + "]: unrecognized selector");
}

enum class CaseMap { Upper, Lower, Fold };

UString mapCase(UStringView text, CaseMap map) {
  const bool upper = map == CaseMap::Upper;
  bool ascii = true;
  for (char16_t c : text) {
    if (c >= 0x80) {
      ascii = false;
      break;
    }
  }
  if (ascii) {
    UString out(text);
    for (char16_t& c : out) {
      if (upper && c >= u'a' && c <= u'z') c = static_cast<char16_t>(c - 32);
      if (!upper && c >= u'A' && c <= u'Z') c = static_cast<char16_t>(c + 32);
    }
    return out;
  }
  UString out(text.size() + 8, u'\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    auto src = reinterpret_cast<const UChar*>(text.data());
    auto dst = reinterpret_cast<UChar*>(out.data());
    auto len = static_cast<int32_t>(text.size());
    auto cap = static_cast<int32_t>(out.size());
    int32_t n = map == CaseMap::Fold
                    ? u_strFoldCase(dst, cap, src, len, U_FOLD_CASE_DEFAULT, &status)
                : upper ? u_strToUpper(dst, cap, src, len, "", &status)
                        : u_strToLower(dst, cap, src, len, "", &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      out.assign(static_cast<size_t>(n), u'\0');
      continue;
    }
    if (U_FAILURE(status)) return UString(text);
    out.resize(static_cast<size_t>(n));
    return out;
  }
  return UString(text);
}

}  // namespace

UString toText(const Variant& v) {
  switch (v.kind()) {
    case ValueKind::Empty:
      return u"(null)";
    case ValueKind::String:
      return v.string();
    case ValueKind::Number:
      return v.number().text();
    case ValueKind::Object:
      return v.object()->description();
    case ValueKind::Array: {
      UString out;
      appendArrayText(out, *v.array());
      return out;
    }
    case ValueKind::Date:
      return dateText(v.dateSeconds());
  }
  return UString();
}

int32_t intValue(UStringView text) {
  return leadingInteger<int32_t>(text);
}
int64_t longLongValue(UStringView text) {
  return leadingInteger<int64_t>(text);
}

double doubleValue(UStringView text) {
  size_t i = skipWhitespace(text);
  std::string ascii;
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) {
    if (text[i] == u'-') ascii.push_back('-');
    ++i;
  }
  size_t mantissaDigits = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i, ++mantissaDigits) {
    ascii.push_back(static_cast<char>(text[i]));
  }
  if (i < text.size() && text[i] == u'.') {
    ascii.push_back('.');
    for (++i; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i, ++mantissaDigits) {
      ascii.push_back(static_cast<char>(text[i]));
    }
  }
  if (mantissaDigits == 0) return 0.0;
  if (i < text.size() && (text[i] == u'e' || text[i] == u'E')) {
    size_t j = i + 1;
    std::string exponent = "e";
    if (j < text.size() && (text[j] == u'+' || text[j] == u'-')) {
      exponent.push_back(static_cast<char>(text[j]));
      ++j;
    }
    size_t expDigits = 0;
    for (; j < text.size() && text[j] >= u'0' && text[j] <= u'9'; ++j, ++expDigits) {
      exponent.push_back(static_cast<char>(text[j]));
    }
    if (expDigits > 0) ascii += exponent;
  }
  double value = 0;
  const char* first = ascii.data();
  auto [ptr, ec] = std::from_chars(first, first + ascii.size(), value);
  if (ec == std::errc::result_out_of_range) {
    // Overflow reads as an infinity, underflow as zero, like strtod. Which one it is follows
    // from the decimal exponent of the first significant digit, not from the exponent's sign
    // alone (400 digits with "e-10" is still huge).
    bool negative = ascii[0] == '-';
    size_t point = ascii.find('.');
    size_t ePos = ascii.find('e');
    size_t mantissaEnd = ePos == std::string::npos ? ascii.size() : ePos;
    if (point == std::string::npos) point = mantissaEnd;
    size_t firstDigit = ascii.find_first_of("123456789");
    long long magnitude = 0;
    if (firstDigit != std::string::npos && firstDigit < mantissaEnd) {
      magnitude = firstDigit < point ? static_cast<long long>(point - firstDigit) - 1
                                     : -static_cast<long long>(firstDigit - point);
    }
    if (ePos != std::string::npos) {
      long long exponent = 0;
      const char* start = ascii.data() + ePos + 1 + (ascii[ePos + 1] == '+' ? 1 : 0);
      if (std::from_chars(start, ascii.data() + ascii.size(), exponent).ec != std::errc()) {
        exponent = ascii[ePos + 1] == '-' ? LLONG_MIN / 2 : LLONG_MAX / 2;
      }
      magnitude += exponent;
    }
    bool tiny = magnitude < 0;
    return tiny ? (negative ? -0.0 : 0.0)
                : (negative ? -std::numeric_limits<double>::infinity()
                            : std::numeric_limits<double>::infinity());
  }
  return value;
}

bool boolValue(UStringView text) {
  size_t i = skipWhitespace(text);
  if (i < text.size() && (text[i] == u'+' || text[i] == u'-')) ++i;
  while (i < text.size() && text[i] == u'0') ++i;
  if (i >= text.size()) return false;
  char16_t c = text[i];
  return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

int32_t intValue(const Variant& v) {
  if (v.isNumber()) return v.number().toInt32();
  if (v.isString()) return intValue(UStringView(v.string()));
  if (v.isEmpty()) return 0;
  cannotAnswer(v, "intValue");
}

int64_t longLongValue(const Variant& v) {
  if (v.isNumber()) return v.number().toInt64();
  if (v.isString()) return longLongValue(UStringView(v.string()));
  if (v.isEmpty()) return 0;
  cannotAnswer(v, "longLongValue");
}

double doubleValue(const Variant& v) {
  if (v.isNumber()) return v.number().toDouble();
  if (v.isString()) return doubleValue(UStringView(v.string()));
  if (v.isEmpty()) return 0;
  cannotAnswer(v, "doubleValue");
}

bool boolValue(const Variant& v) {
  if (v.isNumber()) return v.number().toBool();
  if (v.isString()) return boolValue(UStringView(v.string()));
  if (v.isEmpty()) return false;
  cannotAnswer(v, "boolValue");
}

int64_t lengthOf(const Variant& v) {
  if (v.isString()) return static_cast<int64_t>(v.string().size());
  if (v.isEmpty()) return 0;
  cannotAnswer(v, "length");
}

int32_t truncToInt32(double d) noexcept {
  if (!(d > -2147483649.0 && d < 2147483648.0)) return INT32_MIN;
  return static_cast<int32_t>(d);
}

int64_t truncToInt64(double d) noexcept {
  if (!(d >= -9223372036854775808.0 && d < 9223372036854775808.0)) return INT64_MIN;
  return static_cast<int64_t>(d);
}

UString upperCase(UStringView text) {
  return mapCase(text, CaseMap::Upper);
}
UString lowerCase(UStringView text) {
  return mapCase(text, CaseMap::Lower);
}
UString foldCase(UStringView text) {
  return mapCase(text, CaseMap::Fold);
}

namespace {

// The pairs of arrays one comparison has entered. A pair met again is taken as equal: either
// it is still being compared further up (arrays that contain themselves are equal when their
// shapes match all the way round) or it has been found equal already, which also keeps
// shared sub-arrays from being compared once per path to them.
struct ArrayPairs {
  std::set<std::pair<const Array*, const Array*>> seen;
  size_t depth = 0;
};

bool arraysEqual(const Array& x, const Array& y) {
  if (&x == &y) return true;
  if (x.items.size() != y.items.size()) return false;
  thread_local ArrayPairs* pairs = nullptr;
  ArrayPairs own;
  const bool outermost = pairs == nullptr;
  if (outermost) pairs = &own;
  struct Leave {
    bool outermost;
    ~Leave() {
      if (outermost) pairs = nullptr;
    }
  } leave{outermost};
  if (!pairs->seen.insert({&x, &y}).second) return true;
  if (pairs->depth >= kMaxValueNesting) return false;
  ++pairs->depth;
  bool equal = true;
  for (size_t i = 0; equal && i < x.items.size(); ++i) equal = valuesEqual(x.items[i], y.items[i]);
  --pairs->depth;
  return equal;
}

}  // namespace

bool valuesEqual(const Variant& a, const Variant& b) {
  switch (a.kind()) {
    case ValueKind::Empty:
      return false;
    case ValueKind::String:
      return b.isString() && a.string() == b.string();
    case ValueKind::Number:
      return b.isNumber() && a.number().equals(b.number());
    case ValueKind::Date:
      return b.isDate() && a.dateSeconds() == b.dateSeconds();
    case ValueKind::Array:
      return b.isArray() && arraysEqual(*a.array(), *b.array());
    case ValueKind::Object:
      if (const LxValue* slot = slotOf(a)) return slot->isEqual(b);
      return b.isObject() && a.object() == b.object();
  }
  return false;
}

}  // namespace lx
