// The engine's class registry: how host classes make their methods callable from scripts.
//
// A host class derives from lx::Object and registers its callable methods under their full
// selector text, one colon per argument:
//
//   lx::ClassBuilder<Counter>("Counter")
//       .method("Add:", &Counter::add)          // Add(5) in a script
//       .method("Total", &Counter::total)       // Total or Total() in a script
//       .method<"Scale:by:">(&Counter::scale)   // colons checked against the C++ signature
//       .method("Reset:", [log](Counter& c, int64_t to) { c.reset(to); log("reset"); })
//       .property("Limit", &Counter::limit, &Counter::setLimit);  // Limit / Limit(10)
//
// A method is a member function, a free function or any callable object (lambdas with
// captures, std::function); a callable whose first parameter is a reference to the class
// receives the object there, any other callable does not see it. A selector whose colon
// count differs from the parameter count, or a selector registered twice, throws
// BindingException (lxbasic/exceptions.h) at registration; with the selector as a template
// argument the count is checked by the compiler. Methods may be added at any time, also after
// scripts have used the class.
//
// Scripts find a method by the first part of its name in any letter case and by the number
// of arguments. Argument and return type codes come from the C++ signature: lx::Variant
// receives the value itself ('@'); double and float receive the number read from the value's
// text ('d', 'f'); int64_t receives the full 64-bit value ('q'); unsigned integer types
// receive the value when it fits and otherwise throw InvalidArgumentException (a negative or
// too large number is never wrapped); int and bool receive the 32-bit integer read from the
// value's text (saturating: 5000000000 is 2147483647); signed types narrower than 32 bits
// (char, short) receive the same integer when it fits the type and otherwise throw
// InvalidArgumentException. UString and std::string parameters receive the value's text.
// Returns: Variant, strings and objects are values ('@'), double and float a double Number,
// void nothing ('v'), 64-bit and unsigned integers their exact value, other integers a 32-bit
// integer Number. docs/embedding.md has the whole table.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

#include "lxbasic/export.h"
#include "lxbasic/text.h"
#include "lxbasic/variant.h"

namespace lx {

class LxBasicScript;

// One callable method, as the method cache lists it: the full selector and its number of
// colons, which is the number of script arguments.
struct LX_API LxCocoaMethod {
  std::string sel;
  int32_t params = 0;
};

struct LX_API MethodInfo {
  std::string selector;
  int32_t arity = 0;     // the C++ parameter count, which calls must match
  std::string argTypes;  // one code per argument
  char returnType = 'v';
  // Calls the method; `args` holds `arity` values already checked for count.
  std::function<Variant(Object& self, const Variant* args)> call;
};

class LX_API ClassInfo {
 public:
  ClassInfo(std::string name, std::type_index type) : name_(std::move(name)), type_(type) {}
  const std::string& name() const noexcept { return name_; }
  std::type_index type() const noexcept { return type_; }
  const ClassInfo* superclass() const noexcept { return super_; }
  // The class's own methods, in registration order; entries never move once added.
  const std::deque<MethodInfo>& methods() const noexcept { return methods_; }
  // The method for a full selector, own or inherited; nullptr when there is none.
  const MethodInfo* instanceMethod(std::string_view selector) const;
  // A new instance for CreateObject, or nullptr when the class cannot be made by name.
  ObjectRef createInstance() const { return factory_ ? factory_() : nullptr; }

  void setSuperclass(const ClassInfo* super) noexcept { super_ = super; }
  void setFactory(std::function<ObjectRef()> f) { factory_ = std::move(f); }
  // Adds a method, also after scripts have looked the class up (their method table is built
  // again). A second method with the same selector throws BindingException.
  void addMethod(MethodInfo m);

 private:
  std::string name_;
  std::type_index type_;
  const ClassInfo* super_ = nullptr;
  std::function<ObjectRef()> factory_;
  std::deque<MethodInfo> methods_;
};

class LX_API ClassRegistry {
 public:
  static ClassRegistry& instance();
  // The entry of a C++ class, made on first request under the given name.
  ClassInfo& add(std::string name, std::type_index type);
  const ClassInfo* byName(std::string_view name) const;
  const ClassInfo* byType(std::type_index type) const;

 private:
  ClassRegistry() = default;
  struct Impl;
  Impl& impl() const;
};

// The result of sendMsgToObj: the value, or the marker for a call whose argument count does
// not fit the method.
struct LX_API CallResult {
  Variant value;
  bool argumentMismatch = false;
};

// The method of `cls` whose upper-cased first part is `name` (upper-cased here) and which has
// `n` colons; nullptr when there is none. Only the class's own methods are searched; the
// per-class table is built once and kept for the life of the process.
LX_API const MethodInfo* findMethod(const ClassInfo* cls, UStringView name, int32_t n);
// The method for a full selector, own or inherited.
LX_API const MethodInfo* findMethodBySel(const ClassInfo* cls, std::string_view selector);
// Invokes `selector` on `target` with `args`. Exceptions from the method pass through.
LX_API CallResult sendMsgToObj(Object& target, std::string_view selector,
                               std::span<const Variant> args);
LX_API CallResult sendMsgToObj(Object& target, const MethodInfo& method,
                               std::span<const Variant> args);

// Host objects that want to know the script they are registered with implement this; the
// script calls it once, at registration, before the object becomes callable.
class LX_API ScriptAware {
 public:
  virtual ~ScriptAware() = default;
  virtual void initWithScript(LxBasicScript& script) = 0;
};

namespace detail {

// The value for an int64_t parameter: a number's exact integer (a fraction is cut off), the
// text of anything else read as a 64-bit integer. An unsigned number above INT64_MAX throws
// InvalidArgumentException.
LX_API int64_t int64Argument(const Variant& v);
// The value for an unsigned parameter of `bits` bits: a number's integer, the digits of any
// other value's text (none give 0). Negative values and values above the type's maximum
// throw InvalidArgumentException.
LX_API uint64_t unsignedArgument(const Variant& v, int bits);
// The value for a signed parameter narrower than 32 bits: the 32-bit integer read from the
// value's text, as for int, which must fit the type; one that does not throws
// InvalidArgumentException instead of wrapping.
LX_API int32_t narrowArgument(const Variant& v, int bits);
// The value for an int parameter: the 32-bit integer read from the value's text, saturating.
// A 32-bit integer Number is its own text's integer, so it skips making the text.
inline int32_t int32Argument(const Variant& v) {
  if (v.isNumber() && v.numberUnchecked().type() == Number::Type::Int32) {
    return v.numberUnchecked().toInt32();
  }
  return intValue(toText(v));
}

template <class A, class = void>
struct Arg;
template <>
struct Arg<Variant> {
  static constexpr char code = '@';
  static const Variant& from(const Variant& v) { return v; }
};
template <>
struct Arg<double> {
  static constexpr char code = 'd';
  static double from(const Variant& v) { return doubleValue(toText(v)); }
};
// A float is a floating-point number to a C++ reader, so it converts as double does.
template <>
struct Arg<float> {
  static constexpr char code = 'f';
  static float from(const Variant& v) { return static_cast<float>(Arg<double>::from(v)); }
};
template <class I>
struct Arg<I, std::enable_if_t<std::is_integral_v<I>>> {
  static constexpr bool kUnsigned = std::is_unsigned_v<I> && !std::is_same_v<I, bool>;
  static constexpr bool kWide = sizeof(I) == 8;
  static constexpr bool kNarrow = !std::is_same_v<I, bool> && sizeof(I) < 4;
  static constexpr char kSigned = std::is_same_v<I, bool> ? 'B'
                                  : sizeof(I) == 1        ? 'c'
                                  : sizeof(I) == 2        ? 's'
                                  : sizeof(I) == 4        ? 'i'
                                                          : 'q';
  // Unsigned types have the upper-case code, as the runtime's type encoding does.
  static constexpr char code = kUnsigned ? static_cast<char>(kSigned - 'a' + 'A') : kSigned;
  static I from(const Variant& v) {
    if constexpr (kUnsigned) {
      return static_cast<I>(unsignedArgument(v, static_cast<int>(8 * sizeof(I))));
    } else if constexpr (kWide) {
      return static_cast<I>(int64Argument(v));
    } else if constexpr (kNarrow) {
      return static_cast<I>(narrowArgument(v, static_cast<int>(8 * sizeof(I))));
    } else {
      return static_cast<I>(int32Argument(v));
    }
  }
};
template <>
struct Arg<UString> {
  static constexpr char code = '@';
  static UString from(const Variant& v) { return toText(v); }
};
template <>
struct Arg<std::string> {
  static constexpr char code = '@';
  static std::string from(const Variant& v) { return toUtf8(toText(v)); }
};
template <class T>
struct Arg<std::shared_ptr<T>, std::enable_if_t<std::is_base_of_v<Object, T>>> {
  static constexpr char code = '@';
  static std::shared_ptr<T> from(const Variant& v) { return v.objectAs<T>(); }
};

template <class R, class = void>
struct Ret;
template <>
struct Ret<void> {
  static constexpr char code = 'v';
};
template <>
struct Ret<Variant> {
  static constexpr char code = '@';
  static Variant to(Variant r) { return r; }
};
template <>
struct Ret<double> {
  static constexpr char code = 'd';
  static Variant to(double r) { return Variant::real(r); }
};
template <>
struct Ret<float> {
  static constexpr char code = 'f';
  static Variant to(float r) { return Variant::real(r); }
};
template <class I>
struct Ret<I, std::enable_if_t<std::is_integral_v<I>>> {
  static constexpr char code = Arg<I>::code;
  static Variant to(I r) {
    if constexpr (Arg<I>::kWide || (Arg<I>::kUnsigned && sizeof(I) == 4)) {
      // Widened: the value arrives whole, never cut to its low 32 bits.
      return Variant::from(r);
    } else {
      auto wide = static_cast<int64_t>(r);
      return Variant::int32(static_cast<int32_t>(static_cast<uint32_t>(wide)));
    }
  }
};
template <>
struct Ret<UString> {
  static constexpr char code = '@';
  static Variant to(UString r) { return Variant(std::move(r)); }
};
template <>
struct Ret<std::string> {
  static constexpr char code = '@';
  static Variant to(const std::string& r) { return Variant::fromUtf8(r); }
};
template <class T>
struct Ret<std::shared_ptr<T>, std::enable_if_t<std::is_base_of_v<Object, T>>> {
  static constexpr char code = '@';
  static Variant to(std::shared_ptr<T> r) {
    return r ? Variant(ObjectRef(std::move(r))) : Variant();
  }
};

template <class... A>
struct TypeList {
  static constexpr size_t size = sizeof...(A);
};

// The result and parameter types of anything callable with a fixed signature.
template <class F>
struct Signature : Signature<decltype(&F::operator())> {};
template <class R, class... A>
struct Signature<R (*)(A...)> {
  using Result = R;
  using Params = TypeList<A...>;
};
template <class R, class... A>
struct Signature<R (*)(A...) noexcept> : Signature<R (*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...)> : Signature<R (*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) const> : Signature<R (*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) noexcept> : Signature<R (*)(A...)> {};
template <class R, class C, class... A>
struct Signature<R (C::*)(A...) const noexcept> : Signature<R (*)(A...)> {};

// True when a callable's parameter list starts with a reference to the registered class (or
// one of its bases): that parameter receives the object and is not a script argument.
template <class T, class List>
struct TakesReceiver : std::false_type {};
template <class T, class P, class... A>
struct TakesReceiver<T, TypeList<P, A...>>
    : std::bool_constant<std::is_lvalue_reference_v<P> &&
                         std::is_base_of_v<std::remove_cvref_t<P>, T>> {};

template <class T, class List>
struct ScriptParams {
  using type = List;
};
template <class T, class P, class... A>
requires TakesReceiver<T, TypeList<P, A...>>::value struct ScriptParams<T, TypeList<P, A...>> {
  using type = TypeList<A...>;
};

// The number of script arguments a callable registered for class T takes.
template <class T, class Fn>
constexpr size_t scriptArity() {
  if constexpr (std::is_member_function_pointer_v<Fn>) {
    return Signature<Fn>::Params::size;
  } else {
    using Sig = Signature<std::conditional_t<std::is_function_v<Fn>, Fn*, Fn>>;
    return ScriptParams<T, typename Sig::Params>::type::size;
  }
}

// Throws BindingException when the selector's colon count is not `arity`.
LX_API void checkSelector(const std::string& selector, size_t arity);

template <class R, class... A, class Fn, class T, size_t... I>
Variant callWith(Fn& fn, T& target, const Variant* args, std::index_sequence<I...>) {
  if constexpr (std::is_void_v<R>) {
    fn(target, Arg<std::decay_t<A>>::from(args[I])...);
    return Variant();
  } else {
    return Ret<std::decay_t<R>>::to(fn(target, Arg<std::decay_t<A>>::from(args[I])...));
  }
}

// `fn` is called as fn(T& self, script arguments...).
template <class T, class R, class Fn, class... A>
MethodInfo makeMethod(std::string selector, Fn fn, TypeList<A...>) {
  checkSelector(selector, sizeof...(A));
  MethodInfo m;
  m.selector = std::move(selector);
  m.arity = static_cast<int32_t>(sizeof...(A));
  m.argTypes = std::string{Arg<std::decay_t<A>>::code...};
  m.returnType = Ret<std::decay_t<R>>::code;
  m.call = [fn = std::move(fn)](Object& self, const Variant* args) mutable -> Variant {
    return callWith<R, A...>(fn, static_cast<T&>(self), args, std::index_sequence_for<A...>{});
  };
  return m;
}

template <class T, class Fn>
MethodInfo bindMethod(std::string selector, Fn fn) {
  using Sig = Signature<Fn>;
  using R = typename Sig::Result;
  if constexpr (std::is_member_function_pointer_v<Fn>) {
    auto call = [fn](T& self, auto&&... a) -> R {
      return (self.*fn)(std::forward<decltype(a)>(a)...);
    };
    return makeMethod<T, R>(std::move(selector), std::move(call), typename Sig::Params{});
  } else if constexpr (TakesReceiver<T, typename Sig::Params>::value) {
    auto call = [fn = std::move(fn)](T& self, auto&&... a) mutable -> R {
      return fn(self, std::forward<decltype(a)>(a)...);
    };
    using Params = typename ScriptParams<T, typename Sig::Params>::type;
    return makeMethod<T, R>(std::move(selector), std::move(call), Params{});
  } else {
    auto call = [fn = std::move(fn)](T&, auto&&... a) mutable -> R {
      return fn(std::forward<decltype(a)>(a)...);
    };
    return makeMethod<T, R>(std::move(selector), std::move(call), typename Sig::Params{});
  }
}

}  // namespace detail

// A selector given as a template argument: ClassBuilder::method<"Add:">(...).
template <size_t N>
struct Selector {
  char text[N]{};
  constexpr Selector(const char (&s)[N]) {  // NOLINT(google-explicit-constructor)
    for (size_t i = 0; i < N; ++i) text[i] = s[i];
  }
  constexpr size_t colons() const {
    size_t n = 0;
    for (char c : text) n += c == ':' ? 1 : 0;
    return n;
  }
};

// Registers C++ class T (derived from lx::Object) under `name` and adds its methods.
template <class T>
class ClassBuilder {
  static_assert(std::is_base_of_v<Object, T>, "host classes derive from lx::Object");

 public:
  explicit ClassBuilder(std::string name)
      : info_(ClassRegistry::instance().add(std::move(name), typeid(T))) {}
  // Lets scripts make instances with CreateObject("Name"). Classes are not creatable unless
  // the host says so here: a script can reach only what its host chose to give it.
  ClassBuilder& creatable() {
    static_assert(std::is_default_constructible_v<T>, "CreateObject needs a default constructor");
    info_.setFactory([] { return std::static_pointer_cast<Object>(std::make_shared<T>()); });
    return *this;
  }
  // Methods of `Base` (registered separately) become reachable through full selectors.
  template <class Base>
  ClassBuilder& inherits() {
    info_.setSuperclass(ClassRegistry::instance().byType(typeid(Base)));
    return *this;
  }
  // A member function, a free function or a callable object; see the top of this header.
  template <class Fn>
  ClassBuilder& method(std::string selector, Fn fn) {
    using Callable = std::conditional_t<std::is_function_v<Fn>, Fn*, Fn>;
    info_.addMethod(detail::bindMethod<T>(std::move(selector), Callable(fn)));
    return *this;
  }
  // The same, with the colon count checked by the compiler.
  template <Selector S, class Fn>
  ClassBuilder& method(Fn fn) {
    static_assert(S.colons() == detail::scriptArity<T, Fn>(),
                  "the selector needs one colon per script argument of the method");
    return method(std::string(S.text), std::move(fn));
  }
  // A value scripts read as `Name` and, with a setter, write as `Name(value)`.
  template <class Get>
  ClassBuilder& property(const std::string& name, Get getter) {
    return method(name, std::move(getter));
  }
  template <class Get, class Set>
  ClassBuilder& property(const std::string& name, Get getter, Set setter) {
    method(name, std::move(getter));
    return method(name + ":", std::move(setter));
  }
  ClassInfo& info() noexcept { return info_; }

 private:
  ClassInfo& info_;
};

}  // namespace lx
