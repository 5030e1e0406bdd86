// Pieces that several built-in families share: the searches of InStr (Filter and Split are
// defined through it), Mid's cut, CInt (the bit functions read their operands through it) and
// the registration of functions that take any number of arguments up to a limit.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "builtins/families.h"
#include "lxbasic/variant.h"

namespace lx {

// The longest text that Space and String build; a longer request fails like any bad input
// instead of exhausting the host's memory.
inline constexpr size_t kMaxBuiltText = size_t{1} << 28;

// InStr(start, s1, s2, compare) with its guard: a 32-bit Number, -1 when anything fails.
Variant InStrAt(LxBasicFunc& lib, const Variant& start, const Variant& s1, const Variant& s2,
                const Variant& compare);
// Mid's cut of `text`, which cannot fail: `start` is 1-based, a negative `length` means the rest.
UString midText(UStringView text, int32_t start, int32_t length);
// Trim(s), unguarded: no value stays no value, and anything but a text throws.
Variant TrimOf(const Variant& s);
// CInt(x) with its guard.
Variant CIntOf(const Variant& x);

// ---- functions of many arities

template <size_t>
using ArgRef = const Variant&;
using ListBody = Variant (*)(LxBasicFunc& lib, std::span<const Variant> args);

template <ListBody Body>
struct ListForms {
  template <size_t... I>
  static Variant call(LxBasicFunc& lib, ArgRef<I>... args) {
    const std::array<Variant, sizeof...(I)> list{args...};
    return Body(lib, list);
  }
  template <size_t... I>
  static void add(LibraryBuilder& b, const std::string& selector, std::index_sequence<I...>) {
    b.method(selector, &call<I...>);
  }
};

// "Name" for no argument, "Name:" for one, then a numbered label per further argument:
// "Concat:s2:s3:".
inline std::string listSelector(std::string_view name, std::string_view label, size_t count) {
  std::string sel(name);
  if (count > 0) sel += ':';
  for (size_t i = 2; i <= count; ++i) sel += std::string(label) + std::to_string(i) + ':';
  return sel;
}

// Registers `Body` once for every argument count from `least` up to the largest N given.
template <ListBody Body, size_t... N>
void registerListForms(LibraryBuilder& b, std::string_view name, std::string_view label,
                       size_t least, std::index_sequence<N...>) {
  (..., (N >= least
             ? ListForms<Body>::add(b, listSelector(name, label, N), std::make_index_sequence<N>{})
             : void()));
}

}  // namespace lx
