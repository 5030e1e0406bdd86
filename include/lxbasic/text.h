// The text of values ("%@"), the leading-number reads and the case mappings. One set of
// functions used everywhere, so that every part of the engine prints and reads alike.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

LX_API UString fromUtf8(std::string_view utf8);
LX_API std::string toUtf8(UStringView text);

// "%@" of a value: a string as itself, a number in its shortest form, an array as
// "(a, b, c)" (nested arrays alike, "()" when empty), a date as "YYYY-MM-DD HH:MM:SS +hhmm"
// in the local time zone, an object as its description; Empty (no object) as "(null)".
LX_API UString toText(const Variant& v);
// The text of a date value, as toText prints it.
LX_API UString dateText(double secondsSince1970);

// Leading-number reads of a text: white space is skipped, then an optional sign and the
// longest prefix that reads as a number; no such prefix reads 0.
LX_API int32_t intValue(UStringView text);       // stops at the point; saturates at 32 bits
LX_API int64_t longLongValue(UStringView text);  // the same in 64 bits
LX_API double doubleValue(UStringView text);     // also reads a fraction and an exponent
LX_API bool boolValue(UStringView text);         // after blanks, a sign and zeros: Y, y, T, t, 1-9

// Texts held in strings or literals read as texts (these resolve the overloads).
inline int32_t intValue(const UString& t) {
  return intValue(UStringView(t));
}
inline int32_t intValue(const char16_t* t) {
  return intValue(UStringView(t));
}
inline int64_t longLongValue(const UString& t) {
  return longLongValue(UStringView(t));
}
inline int64_t longLongValue(const char16_t* t) {
  return longLongValue(UStringView(t));
}
inline double doubleValue(const UString& t) {
  return doubleValue(UStringView(t));
}
inline double doubleValue(const char16_t* t) {
  return doubleValue(UStringView(t));
}
inline bool boolValue(const UString& t) {
  return boolValue(UStringView(t));
}
inline bool boolValue(const char16_t* t) {
  return boolValue(UStringView(t));
}

// Direct reads: a Number answers its value, a String is read as above, Empty (no object)
// answers 0; any other kind (Array, Date, Object, the null object) cannot answer and throws
// UnrecognizedSelectorException.
LX_API int32_t intValue(const Variant& v);
LX_API int64_t longLongValue(const Variant& v);
LX_API double doubleValue(const Variant& v);
LX_API bool boolValue(const Variant& v);
// The length of a String; Empty answers 0; anything else throws.
LX_API int64_t lengthOf(const Variant& v);

// Truncation toward zero the way the processor does it: out of range and NaN give the
// most negative value.
LX_API int32_t truncToInt32(double d) noexcept;
LX_API int64_t truncToInt64(double d) noexcept;

// Full Unicode case mapping (ASCII takes a fast path).
LX_API UString upperCase(UStringView text);
LX_API UString lowerCase(UStringView text);
// Full Unicode case folding, for comparing without regard to case; the length may change.
LX_API UString foldCase(UStringView text);

// The platform equality of two values: strings by their code units, numbers by value, dates
// by instant, arrays element by element, slots by their data, other objects by identity.
LX_API bool valuesEqual(const Variant& a, const Variant& b);

}  // namespace lx

namespace lx {
// The white-space-and-newline set: blanks, tab, the line and paragraph separators (LF, VT,
// FF, CR, NEL, LS, PS) and the Unicode space separators.
LX_API bool isWhitespaceOrNewline(char16_t c) noexcept;
}  // namespace lx
