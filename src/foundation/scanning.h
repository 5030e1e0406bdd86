// Quote- and bracket-aware scanning of one line of script text, on which all parsing rests.
// Positions are 0-based code-unit indexes, -1 for "not found".
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "lxbasic/variant.h"

namespace lx {

// Flags of replace(), the platform's string comparison options.
constexpr uint32_t kCaseInsensitiveSearch = 1;
constexpr uint32_t kLiteralSearch = 2;

// A needle that is not exactly one code unit is never found. A bracket needle is looked for
// outside literals only; any other needle also only at bracket depth 0.
int32_t posWithNeedle(UStringView needle, UStringView hay);
int32_t posWithNeedle(UStringView needle, UStringView hay, uint32_t start);
// The same for a single code unit, without building a needle string.
int32_t posWithNeedle(char16_t needle, UStringView hay, uint32_t start = 0);
int32_t posLastWithNeedle(UStringView needle, UStringView hay);
int32_t posClosingBracket(UStringView hay, uint32_t start);
// Cuts the text before the first separator (outside literals and brackets) off `s`.
UString getTokenFrom(UString& s, UStringView separator);
UString getTokenFrom(UString& s, char16_t separator);
// getTokenFrom on a view: answers a view of the token and leaves `s` viewing the rest.
UStringView tokenView(UStringView& s, char16_t separator) noexcept;
UString midWithString(UStringView s, uint32_t start, uint32_t length);
UString trim(UStringView s);
UStringView trimView(UStringView s) noexcept;
bool findWord(UStringView word, UStringView line);
int32_t findKeyword(UStringView keyword, UStringView str);
// flags: 1 case-insensitive (full case folding), 2 literal (code units); without 1 the search
// is literal, and other bits are ignored. An empty target replaces nothing.
UString replace(UStringView target, UStringView replacement, UStringView str, uint32_t flags);
bool checkVarName(UStringView name);
UString getTmpVarName();

// The 34 reserved words, upper case, in their fixed order.
const std::vector<UString>& reservedWords();

}  // namespace lx
