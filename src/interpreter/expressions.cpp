// Operands, operators and comparison.
#include <cmath>

#include "foundation/day_serial.h"
#include "foundation/scanning.h"
#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

bool isDigit(char16_t c) {
  return c >= u'0' && c <= u'9';
}

// A floating-point number at the start of the text (sign, digits, "." fraction, exponent);
// false when no digit can be read.
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

// An unsigned radix literal after "&H" or "&O"; reading stops at the first foreign digit.
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
  if (value > static_cast<uint64_t>(INT64_MAX)) return Variant::real(static_cast<double>(value));
  return Variant::int64(static_cast<int64_t>(value));
}

double numberOf(const LxValue& v) {
  switch (v.type()) {
    case ValueKind::Number:
      return v.data().number().toDouble();
    case ValueKind::Date:
      return DateToFloat(v.data()).toDouble();
    case ValueKind::String:
    case ValueKind::Object:
      return doubleValue(v.description());
    default:
      return 0;
  }
}

// Numeric results keep the kind of a Number on the left; anything else on the left makes a date.
ValueRef numericResult(const LxValue& left, double x) {
  if (left.type() == ValueKind::Number) return LxValue::make(Variant::real(x));
  return LxValue::make(Variant(FloatToDate(Variant::real(x))));
}

UString textOf(const LxValue& v) {
  return v.type() == ValueKind::Empty ? UString() : toText(v.data());
}

int32_t order(double l, double r) {
  return l > r ? 1 : r > l ? -1 : 0;
}

}  // namespace

ValueRef ScriptCore::getValue(UStringView text) {
  pollStop();
  UString t = trim(text);
  const UString upper = upperCase(t);
  if (auto it = _vars.find(upper); it != _vars.end()) return it->second;
  if (!t.empty()) {
    const bool first = t.front() == u'"';
    const bool last = t.back() == u'"';
    if (first != last) {
      setError(LxError::make(kSyntaxError));
      return nullptr;
    }
    if (first) {
      UString inner = t.size() >= 2 ? t.substr(1, t.size() - 2) : UString();
      return LxValue::make(Variant(replace(u"\"\"", u"\"", inner, 2)));
    }
    if (t.size() >= 3 && t[0] == u'&') {
      if (t[1] == u'H' || t[1] == u'h')
        return LxValue::make(radixLiteral(UStringView(t).substr(2), 16));
      if (t[1] == u'O' || t[1] == u'o')
        return LxValue::make(radixLiteral(UStringView(t).substr(2), 8));
    }
  }
  if (!isForbiddenMethodName(upper)) {
    const MethodInfo* method = nullptr;
    ObjectRef target;
    if (getSel(&method, &target, t, 0)) {
      bool mismatch = false;
      ValueRef result = callMethod(*target, *method, {}, &mismatch);
      if (mismatch) {
        setError(LxError::make(kWrongArgumentCount));
        return nullptr;
      }
      return result;
    }
  }
  double number = 0;
  if (scanNumber(t, &number)) return LxValue::make(Variant::real(number));
  return nullptr;
}

ValueRef ScriptCore::operateWithSign(char16_t op, const LxValue& a, const LxValue& b) {
  pollStop();
  const ValueKind ka = a.type();
  const ValueKind kb = b.type();
  const bool textual =
      (ka == ValueKind::Empty && kb == ValueKind::String) || ka == ValueKind::String;
  switch (op) {
    case u'*':
      return numericResult(a, numberOf(a) * numberOf(b));
    case u'/':
    case u'\\': {
      const double x = numberOf(a);
      const double y = numberOf(b);
      if (y == 0) setError(LxError::make(kDivisionByZero));
      double q = x / y;
      if (op == u'\\') q = static_cast<double>(truncToInt64(q));
      return numericResult(a, q);
    }
    case u'^':
      return numericResult(a, std::pow(numberOf(a), numberOf(b)));
    case u'&':
      return LxValue::make(Variant(textOf(a) + textOf(b)));
    case u'+':
      if (textual) return LxValue::make(Variant(textOf(a) + textOf(b)));
      if (ka == ValueKind::Array && kb == ValueKind::Array) {
        std::vector<Variant> items = a.data().array()->items;
        const auto& more = b.data().array()->items;
        items.insert(items.end(), more.begin(), more.end());
        return LxValue::make(Variant(Array::make(std::move(items))));
      }
      if (ka == ValueKind::Object) {
        if (kb == ValueKind::Empty) return LxValue::make(a.data());
        return LxValue::make(Variant(toText(a.data()) + toText(b.data())));
      }
      return numericResult(a, numberOf(a) + numberOf(b));
    case u'-':
      if (textual || (ka == ValueKind::Object && kb != ValueKind::Empty)) {
        UString removed = textOf(b);
        UString source = textOf(a);
        if (removed.empty()) return LxValue::make(Variant(std::move(source)));
        return LxValue::make(Variant(replace(removed, u"", source, 2)));
      }
      if (ka == ValueKind::Array && kb == ValueKind::Array) {
        std::vector<Variant> kept;
        const auto& drop = b.data().array()->items;
        for (const Variant& item : a.data().array()->items) {
          pollStop();
          bool match = false;
          for (const Variant& d : drop) match = match || valuesEqual(item, d);
          if (!match) kept.push_back(item);
        }
        return LxValue::make(Variant(Array::make(std::move(kept))));
      }
      if (ka == ValueKind::Object) return LxValue::make(a.data());
      return numericResult(a, numberOf(a) - numberOf(b));
    default:
      return LxValue::make();
  }
}

int32_t ScriptCore::compareValue(const LxValue& a, const LxValue& b) {
  switch (a.type()) {
    case ValueKind::Empty:
      return b.type() == ValueKind::Empty ? 0 : -1;
    case ValueKind::String: {
      const int c = a.data().string().compare(toText(b.data()));
      return c < 0 ? -1 : c > 0 ? 1 : 0;
    }
    case ValueKind::Number:
      return order(a.data().number().toDouble(), doubleValue(toText(b.data())));
    case ValueKind::Object: {
      LxValue text(Variant(toText(a.data())));
      return -compareValue(b, text);
    }
    case ValueKind::Array: {
      if (b.type() != ValueKind::Array) {
        throw UnrecognizedSelectorException("count: the other value is not an array");
      }
      return order(static_cast<double>(a.data().array()->items.size()),
                   static_cast<double>(b.data().array()->items.size()));
    }
    case ValueKind::Date:
      return order(DateToFloat(a.data()).toDouble(), DateToFloat(b.data()).toDouble());
  }
  return 0;
}

bool ScriptCore::parseInlineOps(const UString& line) {
  // Only a first word of EXIT or CONTINUE matters; most lines fail the first letter.
  if (line.empty()) return false;
  const char16_t c = line[0];
  if (c != u'E' && c != u'e' && c != u'C' && c != u'c') return false;
  UString rest = line;
  UString first = upperCase(getTokenFrom(rest, u" "));
  if (first == u"EXIT") {
    parseExit(line);
    return true;
  }
  if (first == u"CONTINUE") {
    parseContinue(line);
    return true;
  }
  return false;
}

}  // namespace lx
