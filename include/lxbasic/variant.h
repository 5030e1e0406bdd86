// The dynamically typed script value and the objects it can refer to.
#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "lxbasic/export.h"

namespace lx {

// Script text is UTF-16: every position and length counts code units.
using UString = std::u16string;
using UStringView = std::u16string_view;

// The kind of a value; also what the built-in VarType answers.
enum class ValueKind : int32_t {
  Empty = 0,
  String = 1,
  Number = 2,
  Object = 3,
  Array = 4,
  Date = 5
};
// The kind's name: "Empty", "String", "Number", "Object", "Array" or "Date".
LX_API const char* kindName(ValueKind kind) noexcept;

class ClassInfo;

// Anything that is not a string, number, array or date: host objects, the null object,
// error records, variable slots. Objects are shared; a Variant holds a reference.
class LX_API Object : public std::enable_shared_from_this<Object> {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  // The "%@" text of the object. The default names the class and the address.
  virtual UString description() const;
  // The class as registered with the class registry; nullptr for unregistered classes.
  virtual const ClassInfo* lxClass() const;
  // The class name as scripts see it (TypeName).
  virtual std::string className() const;
};
using ObjectRef = std::shared_ptr<Object>;

// A number remembers how it was made, because an int, a 64-bit int, a boolean and a double
// print differently ("1", "1", "1", "1.5") and convert differently. UInt64 holds unsigned
// values above INT64_MAX (radix literals such as &HFFFFFFFFFFFFFFFF, unsigned host returns)
// so that they keep every digit. (Not "Bool": X11 headers define that name as a macro.)
class LX_API Number {
 public:
  enum class Type : uint8_t { Int32, Int64, Boolean, Double, UInt64 };

  constexpr Number() noexcept : type_(Type::Int32), i_(0) {}
  static constexpr Number int32(int32_t v) noexcept { return Number(Type::Int32, v); }
  static constexpr Number int64(int64_t v) noexcept { return Number(Type::Int64, v); }
  static constexpr Number boolean(bool v) noexcept { return Number(Type::Boolean, v ? 1 : 0); }
  // Int64 when the value fits, UInt64 above INT64_MAX.
  static constexpr Number uint64(uint64_t v) noexcept {
    return Number(v > static_cast<uint64_t>(INT64_MAX) ? Type::UInt64 : Type::Int64,
                  static_cast<int64_t>(v));
  }
  static Number real(double v) noexcept {
    Number n;
    n.type_ = Type::Double;
    n.d_ = v;
    return n;
  }

  Type type() const noexcept { return type_; }
  bool isDouble() const noexcept { return type_ == Type::Double; }
  double toDouble() const noexcept {
    if (type_ == Type::Double) return d_;
    if (type_ == Type::UInt64) return static_cast<double>(static_cast<uint64_t>(i_));
    return static_cast<double>(i_);
  }
  // 64-bit value: a double is truncated toward zero (out of range and NaN give INT64_MIN);
  // an unsigned value above INT64_MAX keeps its bit pattern (wraps to a negative number).
  int64_t toInt64() const noexcept;
  // The exact integer, when the number is one that fits T's range: integers and booleans,
  // and doubles without a fraction. std::nullopt otherwise.
  LX_API std::optional<int64_t> exactInt64() const noexcept;
  LX_API std::optional<uint64_t> exactUInt64() const noexcept;
  // 32-bit value: a 64-bit integer keeps its low 32 bits; a double is truncated toward zero
  // the way the processor does it (out of range and NaN give INT32_MIN).
  int32_t toInt32() const noexcept {
    if (type_ == Type::Double) return truncated(d_);
    return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(i_)));
  }
  bool toBool() const noexcept;
  // Shortest decimal text: integers as digits, booleans as 1 and 0, doubles in their shortest
  // round-trip form (an integral double has no decimal point; huge ones use an exponent).
  UString text() const;
  // Numeric equality across types (a boolean true equals the integer 1).
  bool equals(const Number& other) const noexcept;

 private:
  constexpr Number(Type t, int64_t v) noexcept : type_(t), i_(v) {}
  static int32_t truncated(double d) noexcept;
  Type type_;
  union {
    int64_t i_;
    double d_;
  };
};

// An instant, held as seconds since 1970-01-01 00:00:00 UTC.
struct LX_API Date {
  double seconds = 0;
  bool operator==(const Date&) const = default;
};

class Array;
using ArrayRef = std::shared_ptr<Array>;

// A script value: Empty (no object), String, Number, Object, Array or Date.
// Strings are shared immutable buffers, so copying a Variant never copies text.
class LX_API Variant {
  // A number over a number or over Empty, the commonest assignments, without visiting the
  // alternatives: neither old value has anything to release. False for any other pair.
  bool assignedNumber(const Variant& o) noexcept {
    if (o.v_.index() != 2 || (v_.index() != 2 && v_.index() != 0)) return false;
    const Number n = *std::get_if<2>(&o.v_);  // o may be this very value
    std::construct_at(&v_, std::in_place_index<2>, n);
    return true;
  }
  // The alternative I, or TypeMismatchException; defined first so the accessors can use it.
  template <size_t I>
  const auto& checked() const {
    if (v_.index() != I) [[unlikely]]
      throwKindMismatch(kKinds[I]);
    return *std::get_if<I>(&v_);
  }

 public:
  Variant() noexcept = default;
  Variant(const Variant& o) noexcept = default;
  Variant(Variant&& o) noexcept = default;
  Variant& operator=(const Variant& o) noexcept {
    if (!assignedNumber(o)) v_ = o.v_;
    return *this;
  }
  Variant& operator=(Variant&& o) noexcept {
    if (!assignedNumber(o)) v_ = std::move(o.v_);
    return *this;
  }
  ~Variant() = default;
  Variant(UString s);  // NOLINT(google-explicit-constructor): values convert freely
  Variant(const char16_t* s);
  Variant(UStringView s);
  Variant(Number n) : v_(n) {}
  Variant(Date d) : v_(d) {}
  Variant(ObjectRef o);
  Variant(ArrayRef a);
  template <class T, class = std::enable_if_t<std::is_base_of_v<Object, T>>>
  Variant(std::shared_ptr<T> o) : Variant(ObjectRef(std::move(o))) {}

  static Variant fromUtf8(std::string_view utf8);
  static Variant int32(int32_t v) { return Number::int32(v); }
  static Variant int64(int64_t v) { return Number::int64(v); }
  static Variant boolean(bool v) { return Number::boolean(v); }
  static Variant real(double v) { return Number::real(v); }
  static Variant uint64(uint64_t v) { return Number::uint64(v); }
  static Variant date(double secondsSince1970) { return Date{secondsSince1970}; }

  ValueKind kind() const noexcept { return kKinds[v_.index()]; }
  bool isEmpty() const noexcept { return v_.index() == 0; }
  bool isString() const noexcept { return v_.index() == 1; }
  bool isNumber() const noexcept { return v_.index() == 2; }
  bool isObject() const noexcept { return v_.index() == 3; }
  bool isArray() const noexcept { return v_.index() == 4; }
  bool isDate() const noexcept { return v_.index() == 5; }

  // Checked accessors: each throws TypeMismatchException (lxbasic/exceptions.h) when the
  // value is of another kind. as<T>() below answers std::nullopt instead of throwing.
  const UString& string() const { return *checked<1>(); }
  const Number& number() const { return checked<2>(); }
  const ObjectRef& object() const { return checked<3>(); }
  const ArrayRef& array() const { return checked<4>(); }
  double dateSeconds() const { return checked<5>().seconds; }

  // For the engine's own paths that have tested the kind already: no check at all, and
  // undefined behaviour when the kind is another.
  const UString& stringUnchecked() const noexcept { return **std::get_if<1>(&v_); }
  const Number& numberUnchecked() const noexcept { return *std::get_if<2>(&v_); }
  const ObjectRef& objectUnchecked() const noexcept { return *std::get_if<3>(&v_); }
  const ArrayRef& arrayUnchecked() const noexcept { return *std::get_if<4>(&v_); }
  double dateSecondsUnchecked() const noexcept { return std::get_if<5>(&v_)->seconds; }

  // The value as a standard type, or std::nullopt when it is of another kind or out of
  // range. T is one of: UString (std::u16string), std::string (UTF-8), bool, any integer type
  // (the number must be integral and fit), double, float, std::vector<Variant> (a copy of
  // an array's items), std::chrono::system_clock::time_point (a date, to the microsecond), Number,
  // ArrayRef, ObjectRef. Strings are never parsed: as<int>() of "12" is std::nullopt.
  // The elements of a script's arrays are variable slots: as<T>() (but for ObjectRef) reads
  // the value a slot holds, and as<std::vector<Variant>>() answers the values, not the slots.
  template <class T>
  std::optional<T> as() const;

  // The value a variable slot holds, or this value itself when it is no slot.
  LX_API const Variant& unslotted() const noexcept;

  // A value made from a standard type: the inverse of as<T>(). Integers of up to 32 bits
  // become 32-bit numbers, wider ones 64-bit (or unsigned 64-bit) numbers.
  template <class T>
  static Variant from(const T& value);

  // The object as T, or nullptr when the value is no object or another class.
  template <class T>
  std::shared_ptr<T> objectAs() const {
    return isObject() ? std::dynamic_pointer_cast<T>(object()) : nullptr;
  }

 private:
  [[noreturn]] LX_API void throwKindMismatch(ValueKind wanted) const;
  LX_API std::string utf8Text() const;
  static constexpr ValueKind kKinds[] = {ValueKind::Empty,  ValueKind::String, ValueKind::Number,
                                         ValueKind::Object, ValueKind::Array,  ValueKind::Date};
  using Storage = std::variant<std::monostate, std::shared_ptr<const UString>, Number, ObjectRef,
                               ArrayRef, Date>;
  Storage v_;
};

// A shared, mutable list. Reference semantics: every Variant that holds it sees changes.
// Script arrays hold variable slots (LxValue objects) in their innermost lists and nested
// arrays above; values handed in by hosts may hold anything.
class MemoryBudget;

class LX_API Array : public std::enable_shared_from_this<Array> {
 public:
  Array() = default;
  explicit Array(std::vector<Variant> items) : items(std::move(items)) {}
  // Frees nested lists one after another rather than one inside the other, so that however
  // deep a script nests arrays, dropping them cannot exhaust the stack.
  ~Array();
  Array(const Array&) = delete;
  Array& operator=(const Array&) = delete;
  // A list made while a script runs counts against the script's memory limit.
  static ArrayRef make(std::vector<Variant> items = {});

  // Charges the running script for `elements` elements before the list grows to that many
  // (throws when they would pass its memory limit); a list made outside runs charges nothing.
  void chargeFor(size_t elements);

  std::vector<Variant> items;

 private:
  std::shared_ptr<MemoryBudget> budget_;
  int64_t charged_ = 0;
};

template <class T>
std::optional<T> Variant::as() const {
  using Clock = std::chrono::system_clock;
  if constexpr (!std::is_same_v<T, ObjectRef>) {
    if (isObject()) {
      if (const Variant& inner = unslotted(); &inner != this) return inner.as<T>();
    }
  }
  if constexpr (std::is_same_v<T, UString>) {
    if (isString()) return stringUnchecked();
  } else if constexpr (std::is_same_v<T, std::string>) {
    if (isString()) return utf8Text();
  } else if constexpr (std::is_same_v<T, bool>) {
    if (isNumber()) return numberUnchecked().toBool();
  } else if constexpr (std::is_integral_v<T>) {
    if (!isNumber()) return std::nullopt;
    if constexpr (std::is_signed_v<T>) {
      auto v = numberUnchecked().exactInt64();
      if (v && *v >= std::numeric_limits<T>::min() && *v <= std::numeric_limits<T>::max()) {
        return static_cast<T>(*v);
      }
    } else {
      auto v = numberUnchecked().exactUInt64();
      if (v && *v <= std::numeric_limits<T>::max()) return static_cast<T>(*v);
    }
  } else if constexpr (std::is_floating_point_v<T>) {
    if (isNumber()) return static_cast<T>(numberUnchecked().toDouble());
  } else if constexpr (std::is_same_v<T, std::vector<Variant>>) {
    if (isArray()) {
      std::vector<Variant> values;
      values.reserve(arrayUnchecked()->items.size());
      for (const Variant& item : arrayUnchecked()->items) values.push_back(item.unslotted());
      return values;
    }
  } else if constexpr (std::is_same_v<T, Clock::time_point>) {
    if (isDate()) {
      // Dates hold seconds in a double: good to the microsecond for this era, not finer.
      auto since = std::chrono::duration<double>(dateSecondsUnchecked());
      return Clock::time_point(std::chrono::round<std::chrono::microseconds>(since));
    }
  } else if constexpr (std::is_same_v<T, Number>) {
    if (isNumber()) return numberUnchecked();
  } else if constexpr (std::is_same_v<T, ArrayRef>) {
    if (isArray()) return arrayUnchecked();
  } else if constexpr (std::is_same_v<T, ObjectRef>) {
    if (isObject()) return objectUnchecked();
  } else {
    static_assert(sizeof(T) == 0, "Variant::as<T>: no conversion for this type");
  }
  return std::nullopt;
}

template <class T>
Variant Variant::from(const T& value) {
  using Clock = std::chrono::system_clock;
  if constexpr (std::is_same_v<T, bool>) {
    return boolean(value);
  } else if constexpr (std::is_integral_v<T> && sizeof(T) <= 4 &&
                       (std::is_signed_v<T> || sizeof(T) < 4)) {
    return int32(static_cast<int32_t>(value));
  } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
    return int64(static_cast<int64_t>(value));
  } else if constexpr (std::is_integral_v<T>) {
    return uint64(static_cast<uint64_t>(value));
  } else if constexpr (std::is_floating_point_v<T>) {
    return real(static_cast<double>(value));
  } else if constexpr (std::is_same_v<T, std::string>) {
    return fromUtf8(value);
  } else if constexpr (std::is_convertible_v<const T&, UStringView>) {
    return Variant(UStringView(value));
  } else if constexpr (std::is_same_v<T, std::vector<Variant>>) {
    return Variant(std::make_shared<Array>(value));
  } else if constexpr (std::is_same_v<T, Clock::time_point>) {
    return date(std::chrono::duration<double>(value.time_since_epoch()).count());
  } else {
    return Variant(value);
  }
}

// The null object: what an Empty argument becomes on its way into a call. Its text is
// "<null>" and it is of kind Object, never Empty.
class LX_API NullObject final : public Object {
 public:
  UString description() const override { return u"<null>"; }
  std::string className() const override { return "NullObject"; }
};
LX_API const ObjectRef& nullObject();

// A dictionary object; no built-in makes one, but hosts may pass them in.
class LX_API Dictionary final : public Object {
 public:
  std::vector<std::pair<UString, Variant>> entries;
  UString description() const override;
  std::string className() const override { return "Dictionary"; }
};

// Classification tests, one definition of each kind for the whole engine.
inline bool isString(const Variant& v) noexcept {
  return v.isString();
}
inline bool isNumber(const Variant& v) noexcept {
  return v.isNumber();
}
inline bool isArray(const Variant& v) noexcept {
  return v.isArray();
}
inline bool isDate(const Variant& v) noexcept {
  return v.isDate();
}
LX_API bool isDictionary(const Variant& v) noexcept;

}  // namespace lx
