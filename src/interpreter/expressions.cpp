// Operands, operators and comparison.
#include <cmath>
#include <limits>

#include "foundation/day_serial.h"
#include "foundation/scanning.h"
#include "interpreter/script_core.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"
#include "syntax/quick_arithmetic.h"
#include "syntax/text_rules.h"

namespace lx {

namespace {

double numberOf(const Variant& v) {
  switch (v.kind()) {
    case ValueKind::Number:
      return v.number().toDouble();
    case ValueKind::Date:
      return DateToFloat(v).toDouble();
    case ValueKind::String:
      return doubleValue(v.string());
    case ValueKind::Object:
      // Read as the slot's description, which answers "" for a text that cannot be made.
      try {
        return doubleValue(toText(v));
      } catch (...) {
        return 0;
      }
    default:
      return 0;
  }
}

// Numeric results keep the kind of a Number on the left; anything else on the left makes a date.
Variant numericResult(const Variant& left, double x) {
  if (left.isNumber()) return Variant::real(x);
  return FloatToDate(Variant::real(x));
}

UString textOf(const Variant& v) {
  return v.isEmpty() ? UString() : toText(v);
}

// The two texts joined, as "&" joins them; a string side is appended without a copy of its own.
Variant joined(const Variant& a, const Variant& b) {
  UString out;
  auto append = [&out](const Variant& v) {
    if (v.isString()) {
      out += v.stringUnchecked();
    } else if (!v.isEmpty()) {
      out += toText(v);
    }
  };
  if (a.isString())
    out.reserve(a.stringUnchecked().size() + (b.isString() ? b.stringUnchecked().size() : 24));
  append(a);
  append(b);
  return Variant(std::move(out));
}

int32_t order(double l, double r) {
  return l > r ? 1 : r > l ? -1 : 0;
}

// A value compared with a number is read back from its text (see readsBackAsItself).
double comparedNumber(const Variant& v) {
  if (v.isNumber()) {
    const double d = v.numberUnchecked().toDouble();
    if (readsBackAsItself(d)) return d;
  }
  return doubleValue(toText(v));
}

}  // namespace

ValueRef ScriptCore::getValue(UStringView text) {
  pollStop();
  UString t = trim(text);
  const UString upper = upperCase(t);
  if (const ValueRef& slot = variableSlot(upper)) return slot;
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
  return LxValue::make(operate(op, a.data(), b.data()));
}

Variant ScriptCore::operate(char16_t op, const Variant& a, const Variant& b) {
  // The common case, answered before the kind rules below, which give the same. It takes
  // constant time, so only the other cases, which may copy long texts or arrays, look for a
  // stop request first.
  if (double q; quickArithmetic(op, a, b, q)) return Variant::real(q);
  pollStop();
  const ValueKind ka = a.kind();
  const ValueKind kb = b.kind();
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
      return joined(a, b);
    case u'+':
      if (textual) return joined(a, b);
      if (ka == ValueKind::Array && kb == ValueKind::Array) {
        std::vector<Variant> items = a.array()->items;
        const auto& more = b.array()->items;
        items.insert(items.end(), more.begin(), more.end());
        return Variant(Array::make(std::move(items)));
      }
      if (ka == ValueKind::Object) {
        if (kb == ValueKind::Empty) return a;
        return Variant(toText(a) + toText(b));
      }
      return numericResult(a, numberOf(a) + numberOf(b));
    case u'-':
      if (textual || (ka == ValueKind::Object && kb != ValueKind::Empty)) {
        UString removed = textOf(b);
        UString source = textOf(a);
        if (removed.empty()) return Variant(std::move(source));
        return Variant(replace(removed, u"", source, 2));
      }
      if (ka == ValueKind::Array && kb == ValueKind::Array) {
        std::vector<Variant> kept;
        const auto& drop = b.array()->items;
        for (const Variant& item : a.array()->items) {
          pollStop();
          bool match = false;
          for (const Variant& d : drop) match = match || valuesEqual(item, d);
          if (!match) kept.push_back(item);
        }
        return Variant(Array::make(std::move(kept)));
      }
      if (ka == ValueKind::Object) return a;
      return numericResult(a, numberOf(a) - numberOf(b));
    default:
      return Variant();
  }
}

int32_t ScriptCore::compareValue(const LxValue& a, const LxValue& b) {
  return compareValues(a.data(), b.data());
}

int32_t compareValues(const Variant& a, const Variant& b) {
  switch (a.kind()) {
    case ValueKind::Empty:
      return b.isEmpty() ? 0 : -1;
    case ValueKind::String: {
      const int c = b.isString() ? a.string().compare(b.string()) : a.string().compare(toText(b));
      return c < 0 ? -1 : c > 0 ? 1 : 0;
    }
    case ValueKind::Number:
      return order(a.numberUnchecked().toDouble(), comparedNumber(b));
    case ValueKind::Object:
      return -compareValues(b, Variant(toText(a)));
    case ValueKind::Array: {
      if (!b.isArray()) {
        throw UnrecognizedSelectorException("count: the other value is not an array");
      }
      return order(static_cast<double>(a.array()->items.size()),
                   static_cast<double>(b.array()->items.size()));
    }
    case ValueKind::Date:
      return order(DateToFloat(a).toDouble(), DateToFloat(b).toDouble());
  }
  return 0;
}

bool ScriptCore::parseInlineOps(const UString& line) {
  if (!isInlineOperation(line)) return false;
  runLoopJump(splitLoopJump(line));
  return true;
}

}  // namespace lx
