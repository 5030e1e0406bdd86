// The engine's class registry: how host classes make their methods callable from scripts.
//
// A host class derives from lx::Object and registers its callable methods under their full
// selector text, one colon per argument:
//
//   lx::ClassBuilder<Counter>("Counter")
//       .method("Add:", &Counter::add)          // Add(5) in a script
//       .method("Total", &Counter::total)       // Total or Total() in a script
//       .method("Scale:by:", &Counter::scale);  // Scale(2, 3)
//
// Scripts find a method by the first part of its name in any letter case and by the number
// of arguments. Argument and return type codes come from the C++ signature: lx::Variant
// receives the value itself ('@'); double receives the number read from the value's text
// ('d'); every integer type (and bool, char, float) receives the 32-bit integer read from the
// value's text. UString and std::string parameters receive the value's text. Returns:
// Variant, strings and objects are values ('@'), double a double Number ('d'), void nothing
// ('v'), integers the low 32 bits as an integer Number.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeindex>
#include <utility>
#include <vector>

#include "lxbasic/text.h"
#include "lxbasic/variant.h"

namespace lx {

class LxBasicScript;

// One callable method, as the method cache lists it: the full selector and its number of
// colons, which is the number of script arguments.
struct LxCocoaMethod {
  std::string sel;
  int32_t params = 0;
};

struct MethodInfo {
  std::string selector;
  int32_t arity = 0;     // the C++ parameter count, which calls must match
  std::string argTypes;  // one code per argument
  char returnType = 'v';
  // Calls the method; `args` holds `arity` values already checked for count.
  std::function<Variant(Object& self, const Variant* args)> call;
};

class ClassInfo {
 public:
  ClassInfo(std::string name, std::type_index type) : name_(std::move(name)), type_(type) {}
  const std::string& name() const noexcept { return name_; }
  std::type_index type() const noexcept { return type_; }
  const ClassInfo* superclass() const noexcept { return super_; }
  // The class's own methods, in registration order.
  const std::vector<MethodInfo>& methods() const noexcept { return methods_; }
  // The method for a full selector, own or inherited; nullptr when there is none.
  const MethodInfo* instanceMethod(std::string_view selector) const;
  // A new instance for CreateObject, or nullptr when the class cannot be made by name.
  ObjectRef createInstance() const { return factory_ ? factory_() : nullptr; }

  void setSuperclass(const ClassInfo* super) noexcept { super_ = super; }
  void setFactory(std::function<ObjectRef()> f) { factory_ = std::move(f); }
  // Adds a method; a second method with the same selector is ignored.
  void addMethod(MethodInfo m);

 private:
  std::string name_;
  std::type_index type_;
  const ClassInfo* super_ = nullptr;
  std::function<ObjectRef()> factory_;
  std::vector<MethodInfo> methods_;
};

class ClassRegistry {
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
struct CallResult {
  Variant value;
  bool argumentMismatch = false;
};

// The method of `cls` whose upper-cased first part is `name` (upper-cased here) and which has
// `n` colons; nullptr when there is none. Only the class's own methods are searched; the
// per-class table is built once and kept for the life of the process.
const MethodInfo* findMethod(const ClassInfo* cls, UStringView name, int32_t n);
// The method for a full selector, own or inherited.
const MethodInfo* findMethodBySel(const ClassInfo* cls, std::string_view selector);
// Invokes `selector` on `target` with `args`. Exceptions from the method pass through.
CallResult sendMsgToObj(Object& target, std::string_view selector, std::span<const Variant> args);
CallResult sendMsgToObj(Object& target, const MethodInfo& method, std::span<const Variant> args);

// Host objects that want to know the script they are registered with implement this; the
// script calls it once, at registration, before the object becomes callable.
class ScriptAware {
 public:
  virtual ~ScriptAware() = default;
  virtual void initWithScript(LxBasicScript& script) = 0;
};

namespace detail {

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
template <class I>
struct Arg<I, std::enable_if_t<std::is_integral_v<I> || std::is_same_v<I, float>>> {
  static constexpr char code = std::is_same_v<I, bool>    ? 'B'
                               : std::is_same_v<I, float> ? 'f'
                               : sizeof(I) == 1           ? 'c'
                               : sizeof(I) == 2           ? 's'
                               : sizeof(I) == 4           ? 'i'
                                                          : 'q';
  static I from(const Variant& v) { return static_cast<I>(intValue(toText(v))); }
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
template <class I>
struct Ret<I, std::enable_if_t<std::is_integral_v<I> || std::is_same_v<I, float>>> {
  static constexpr char code = Arg<I>::code;
  static Variant to(I r) {
    // Integers travel as 32 bits, like any return code other than object, double and void.
    auto wide = static_cast<int64_t>(r);
    return Variant::int32(static_cast<int32_t>(static_cast<uint32_t>(wide)));
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

template <class R, class... A, class Fn, class T, size_t... I>
Variant callWith(const Fn& fn, T& target, const Variant* args, std::index_sequence<I...>) {
  if constexpr (std::is_void_v<R>) {
    fn(target, Arg<std::decay_t<A>>::from(args[I])...);
    return Variant();
  } else {
    return Ret<std::decay_t<R>>::to(fn(target, Arg<std::decay_t<A>>::from(args[I])...));
  }
}

template <class T, class R, class... A, class Fn>
MethodInfo makeMethod(std::string selector, Fn fn) {
  MethodInfo m;
  m.selector = std::move(selector);
  m.arity = static_cast<int32_t>(sizeof...(A));
  m.argTypes = std::string{Arg<std::decay_t<A>>::code...};
  m.returnType = Ret<std::decay_t<R>>::code;
  m.call = [fn](Object& self, const Variant* args) -> Variant {
    return callWith<R, A...>(fn, static_cast<T&>(self), args, std::index_sequence_for<A...>{});
  };
  return m;
}

}  // namespace detail

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
  template <class R, class C, class... A>
  ClassBuilder& method(std::string selector, R (C::*fn)(A...)) {
    auto call = [fn](T& self, auto&&... a) -> R {
      return (self.*fn)(std::forward<decltype(a)>(a)...);
    };
    info_.addMethod(detail::makeMethod<T, R, A...>(std::move(selector), call));
    return *this;
  }
  template <class R, class C, class... A>
  ClassBuilder& method(std::string selector, R (C::*fn)(A...) const) {
    auto call = [fn](T& self, auto&&... a) -> R {
      return (self.*fn)(std::forward<decltype(a)>(a)...);
    };
    info_.addMethod(detail::makeMethod<T, R, A...>(std::move(selector), call));
    return *this;
  }
  // A free function whose first parameter is the receiver.
  template <class R, class C, class... A>
  ClassBuilder& method(std::string selector, R (*fn)(C&, A...)) {
    auto call = [fn](T& self, auto&&... a) -> R {
      return fn(self, std::forward<decltype(a)>(a)...);
    };
    info_.addMethod(detail::makeMethod<T, R, A...>(std::move(selector), call));
    return *this;
  }
  ClassInfo& info() noexcept { return info_; }

 private:
  ClassInfo& info_;
};

}  // namespace lx
