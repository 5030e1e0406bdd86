#include "lxbasic/variant.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <typeinfo>

#include "foundation/memory_budget.h"
#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

Object::~Object() = default;

UString Object::description() const {
  char buf[64];
  std::snprintf(buf, sizeof buf, ": %p>", static_cast<const void*>(this));
  UString text = u"<";
  text += fromUtf8(className());
  text += fromUtf8(buf);
  return text;
}

const ClassInfo* Object::lxClass() const {
  return ClassRegistry::instance().byType(typeid(*this));
}

std::string Object::className() const {
  const ClassInfo* cls = lxClass();
  return cls ? cls->name() : "Object";
}

namespace {

// 2^63 as a double: the first value outside int64_t, and the first above INT64_MAX.
constexpr double kTwoPow63 = 9223372036854775808.0;

}  // namespace

std::optional<int64_t> Number::exactInt64() const noexcept {
  if (type_ == Type::UInt64) return std::nullopt;
  if (type_ != Type::Double) return i_;
  if (!(d_ >= -kTwoPow63 && d_ < kTwoPow63) || std::trunc(d_) != d_) return std::nullopt;
  return static_cast<int64_t>(d_);
}

std::optional<uint64_t> Number::exactUInt64() const noexcept {
  if (type_ == Type::UInt64) return static_cast<uint64_t>(i_);
  if (type_ != Type::Double) return i_ < 0 ? std::nullopt : std::optional<uint64_t>(i_);
  if (!(d_ >= 0 && d_ < 2 * kTwoPow63) || std::trunc(d_) != d_) return std::nullopt;
  return static_cast<uint64_t>(d_);
}

int64_t Number::toInt64() const noexcept {
  return type_ == Type::Double ? truncToInt64(d_) : i_;
}

int32_t Number::truncated(double d) noexcept {
  return truncToInt32(d);
}

bool Number::toBool() const noexcept {
  return type_ == Type::Double ? d_ != 0 : i_ != 0;
}

UString Number::text() const {
  char buf[64];
  std::to_chars_result r;
  if (type_ == Type::Double) {
    if (std::isnan(d_)) return u"nan";
    if (std::isinf(d_)) return d_ > 0 ? u"inf" : u"-inf";
    // Shortest round-trip digits, laid out as "%.16g" would: plain decimals from 1e-4 up to
    // 16 integer digits (1000000, not 1e+06), an exponent beyond that.
    r = std::to_chars(buf, buf + sizeof buf, d_, std::chars_format::scientific);
    const char* e = std::find(buf, r.ptr, 'e');
    int exponent = 0;
    std::from_chars(e + (e[1] == '+' ? 2 : 1), r.ptr, exponent);
    if (exponent >= -4 && exponent < 16) {
      r = std::to_chars(buf, buf + sizeof buf, d_, std::chars_format::fixed);
    }
  } else if (type_ == Type::UInt64) {
    r = std::to_chars(buf, buf + sizeof buf, static_cast<uint64_t>(i_));
  } else {
    r = std::to_chars(buf, buf + sizeof buf, i_);
  }
  return UString(buf, r.ptr);
}

bool Number::equals(const Number& other) const noexcept {
  if (type_ != Type::Double && other.type_ != Type::Double) {
    // The same bits mean different values when only one side is unsigned.
    return i_ == other.i_ && (i_ >= 0 || (type_ == Type::UInt64) == (other.type_ == Type::UInt64));
  }
  return toDouble() == other.toDouble();
}

namespace {

// Hands the text's cost back to the budget it was charged to when the text is freed.
template <class T>
struct ChargedAllocator {
  using value_type = T;
  BudgetRef budget;
  int64_t bytes = 0;

  ChargedAllocator(BudgetRef b, int64_t n) : budget(std::move(b)), bytes(n) {}
  template <class U>
  ChargedAllocator(const ChargedAllocator<U>& other) : budget(other.budget), bytes(other.bytes) {}
  T* allocate(size_t n) { return std::allocator<T>().allocate(n); }
  void deallocate(T* p, size_t n) noexcept {
    budget->release(bytes);
    std::allocator<T>().deallocate(p, n);
  }
  template <class U>
  bool operator==(const ChargedAllocator<U>& other) const noexcept {
    return budget == other.budget;
  }
};

// Texts made while a script runs count against its budget. Short ones are counted but never
// refused, so that the many small texts made inside error handling cannot fail.
std::shared_ptr<const UString> makeText(UString&& s) {
  const BudgetRef& budget = currentBudget();
  if (!budget) return std::make_shared<const UString>(std::move(s));
  const int64_t bytes = static_cast<int64_t>(s.capacity()) * 2 + kStringOverhead;
  if (s.size() < 512) {
    budget->count(bytes);
  } else {
    budget->charge(bytes);
  }
  return std::allocate_shared<const UString>(ChargedAllocator<UString>(budget, bytes),
                                             std::move(s));
}

}  // namespace

Variant::Variant(UString s) : v_(makeText(std::move(s))) {}
Variant::Variant(const char16_t* s) : v_(makeText(UString(s))) {}
Variant::Variant(UStringView s) : v_(makeText(UString(s))) {}
// Built in place; a null pointer is Empty.
Variant::Variant(ObjectRef o) : v_(std::in_place_index<3>, std::move(o)) {
  if (!*std::get_if<3>(&v_)) v_.emplace<0>();
}
Variant::Variant(ArrayRef a) : v_(std::in_place_index<4>, std::move(a)) {
  if (!*std::get_if<4>(&v_)) v_.emplace<0>();
}

Variant Variant::fromUtf8(std::string_view utf8) {
  return Variant(lx::fromUtf8(utf8));
}

std::string Variant::utf8Text() const {
  return toUtf8(stringUnchecked());
}

const char* kindName(ValueKind kind) noexcept {
  static const char* const names[] = {"Empty", "String", "Number", "Object", "Array", "Date"};
  return names[static_cast<int32_t>(kind)];
}

void Variant::throwKindMismatch(ValueKind wanted) const {
  throw TypeMismatchException(std::string("a value of kind ") + kindName(kind()) + " was read as " +
                              kindName(wanted));
}

const ObjectRef& nullObject() {
  static const ObjectRef instance = std::make_shared<NullObject>();
  return instance;
}

UString Dictionary::description() const {
  UString out = u"{";
  for (const auto& [key, value] : entries) {
    out += key;
    out += u" = ";
    out += toText(value);
    out += u"; ";
  }
  out += u"}";
  return out;
}

bool isDictionary(const Variant& v) noexcept {
  return v.isObject() && dynamic_cast<const Dictionary*>(v.object().get()) != nullptr;
}

}  // namespace lx
