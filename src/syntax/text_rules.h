// The text rules that the line-rewriting evaluator applies, shared with the compiled form so
// that both read a line the same way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "lxbasic/variant.h"

namespace lx {

// Characters of the name before a bracket: letters and digits of any script, "@" and "_".
bool isNameChar(char16_t c);
inline bool isHighOperator(char16_t c) {
  return c == u'*' || c == u'/' || c == u'\\' || c == u'^';
}
inline bool isLowOperator(char16_t c) {
  return c == u'+' || c == u'-' || c == u'&';
}
// The operator characters of a bracket-free line, outside string literals; a sign at the
// very start and the "&" of a radix literal are parts of operands.
void operatorPositions(UStringView line, std::vector<size_t>& out);
// The operator to apply next: the first high one, else the first low one; ops.size() if none.
size_t nextOperator(UStringView line, const std::vector<size_t>& ops);
// True when the line's first word is EXIT or CONTINUE, which a statement line hands to the
// loop handlers instead of evaluating.
bool isInlineOperation(const UString& line);

// intValue(toText(v)): the leading integer of the value's text, as array indices and loop
// conditions read values; numbers skip the text where it is plain digits. The inline part
// answers the commonest index, a 32-bit integer.
int32_t leadingIntOfText(const Variant& v);
inline int32_t leadingIntOf(const Variant& v) {
  if (v.isNumber() && v.numberUnchecked().type() == Number::Type::Int32) {
    return v.numberUnchecked().toInt32();
  }
  return leadingIntOfText(v);
}

// Operand literals, as getValue reads them.
// A floating-point number at the start of the text; false when no digit can be read.
bool scanNumber(UStringView t, double* out);
// An unsigned radix literal after "&H" or "&O"; reading stops at the first foreign digit.
Variant radixLiteral(UStringView digits, unsigned radix);

}  // namespace lx
