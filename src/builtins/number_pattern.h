// The number patterns of FormatNumber, FormatCurrency and FormatPercent, built apart from
// the formatting so that the exact pattern texts can be checked.
#pragma once

#include <cstdint>

#include "lxbasic/variant.h"

namespace lx {

enum class NumberStyle { Number, Currency, Percent };

struct NumberPattern {
  UString prefix;  // the currency symbol and a blank, shown as it stands
  UString body;    // "#", "0", "," and "." as the number pattern language reads them
  bool parentheses = false;
  UString zeroBody;  // the zero section after the prefix: "0", or "0%" for percent

  UString positive() const { return prefix + body; }
  UString negative() const {
    if (!parentheses) return positive();
    UString text(1, u'(');
    text += positive();
    text += u')';
    return text;
  }
  UString zero() const { return prefix + zeroBody; }
  // "positive;zero;negative", the pattern as a whole.
  UString text() const { return positive() + u";" + zero() + u";" + negative(); }
};

// Arguments as the scripts pass them: dec -1 and the tristates -2 take the defaults (two
// decimals, a leading digit, no parentheses, no grouping). Only a group of exactly -1 groups.
NumberPattern buildNumberPattern(NumberStyle style, int32_t dec, int32_t lead, int32_t par,
                                 int32_t group, UStringView currencySymbol);

// `value` shown with the pattern in the default locale's symbols, rounding half to even. A
// value of exactly zero shows the zero section.
UString formatNumberPattern(const NumberPattern& pattern, double value);

// The default locale's currency symbol.
UString localCurrencySymbol();

}  // namespace lx
