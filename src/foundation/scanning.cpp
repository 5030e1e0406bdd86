#include "foundation/scanning.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "lxbasic/text.h"

namespace lx {

namespace {

constexpr char16_t kQuote = u'"';

// The one scan behind every needle search. Quote state and depth always start at position 0,
// so a match at `start` or later is judged with the state of the whole line. `last` keeps
// scanning and answers the final match instead of the first.
int32_t scanForNeedle(char16_t needle, UStringView hay, uint32_t start, bool last) {
  int32_t found = -1;
  bool quoted = false;
  const bool bracketNeedle = needle == u'(' || needle == u')';
  int32_t depth = 0;
  const size_t n = hay.size();
  for (size_t i = 0; i < n; ++i) {
    const char16_t c = hay[i];
    if (c == kQuote) {
      quoted = !quoted;
      continue;
    }
    if (quoted) continue;
    if (bracketNeedle) {
      // Brackets are looked for by themselves, without counting depth.
      if (c != needle || i < start) continue;
    } else if (c == u')') {
      --depth;
      continue;
    } else if (c == u'(') {
      ++depth;
      continue;
    } else if (c != needle || depth != 0 || i < start) {
      continue;
    }
    found = static_cast<int32_t>(i);
    if (!last) return found;
  }
  return found;
}

bool isAscii(UStringView s) noexcept {
  return std::all_of(s.begin(), s.end(), [](char16_t c) { return c < 0x80; });
}

char16_t asciiFold(char16_t c) noexcept {
  return c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c;
}

// The code point at `i` (a lone surrogate stands for itself) and its length in code units.
UChar32 codePointAt(UStringView s, size_t i, size_t& units) noexcept {
  char16_t c = s[i];
  if (U16_IS_LEAD(c) && i + 1 < s.size() && U16_IS_TRAIL(s[i + 1])) {
    units = 2;
    return U16_GET_SUPPLEMENTARY(c, s[i + 1]);
  }
  units = 1;
  return c;
}

// The length of the text at `at` whose case folding is exactly `foldedTarget`, or 0 when the
// folding of the text there does not end on a character boundary at the target's end.
size_t foldedMatchLength(UStringView s, size_t at, UStringView foldedTarget) {
  size_t j = at;
  size_t k = 0;
  while (k < foldedTarget.size()) {
    if (j >= s.size()) return 0;
    size_t units = 0;
    codePointAt(s, j, units);
    UChar folded[8];
    UErrorCode status = U_ZERO_ERROR;
    int32_t f = u_strFoldCase(folded, 8, reinterpret_cast<const UChar*>(s.data() + j),
                              static_cast<int32_t>(units), U_FOLD_CASE_DEFAULT, &status);
    if (U_FAILURE(status) || k + static_cast<size_t>(f) > foldedTarget.size()) return 0;
    for (int32_t m = 0; m < f; ++m) {
      if (foldedTarget[k + static_cast<size_t>(m)] != folded[m]) return 0;
    }
    k += static_cast<size_t>(f);
    j += units;
  }
  return j - at;
}

UString replaceCaseInsensitive(UStringView target, UStringView replacement, UStringView str) {
  UString out;
  out.reserve(str.size());
  if (isAscii(target) && isAscii(str)) {
    size_t i = 0;
    while (i < str.size()) {
      bool match = i + target.size() <= str.size();
      for (size_t k = 0; match && k < target.size(); ++k) {
        match = asciiFold(str[i + k]) == asciiFold(target[k]);
      }
      if (match) {
        out += replacement;
        i += target.size();
      } else {
        out += str[i++];
      }
    }
    return out;
  }
  const UString folded = foldCase(target);
  size_t i = 0;
  while (i < str.size()) {
    size_t matched = foldedMatchLength(str, i, folded);
    if (matched > 0) {
      out += replacement;
      i += matched;
      continue;
    }
    size_t units = 0;
    codePointAt(str, i, units);
    out.append(str.substr(i, units));
    i += units;
  }
  return out;
}

UString replaceLiteral(UStringView target, UStringView replacement, UStringView str) {
  UString out;
  out.reserve(str.size());
  size_t i = 0;
  while (true) {
    size_t at = str.find(target, i);
    if (at == UStringView::npos) break;
    out.append(str.substr(i, at - i));
    out += replacement;
    i = at + target.size();
  }
  out.append(str.substr(i));
  return out;
}

bool containsCaseInsensitive(UStringView text, UStringView word) {
  if (word.empty()) return false;
  if (isAscii(word) && isAscii(text)) {
    auto it = std::search(text.begin(), text.end(), word.begin(), word.end(),
                          [](char16_t a, char16_t b) { return asciiFold(a) == asciiFold(b); });
    return it != text.end();
  }
  return UStringView(foldCase(text)).find(foldCase(word)) != UStringView::npos;
}

}  // namespace

int32_t posWithNeedle(char16_t needle, UStringView hay, uint32_t start) {
  return scanForNeedle(needle, hay, start, false);
}

int32_t posWithNeedle(UStringView needle, UStringView hay) {
  return needle.size() == 1 ? scanForNeedle(needle[0], hay, 0, false) : -1;
}

int32_t posWithNeedle(UStringView needle, UStringView hay, uint32_t start) {
  return needle.size() == 1 ? scanForNeedle(needle[0], hay, start, false) : -1;
}

// Equivalent to searching again from one past each match until none is left, in one pass.
int32_t posLastWithNeedle(UStringView needle, UStringView hay) {
  return needle.size() == 1 ? scanForNeedle(needle[0], hay, 0, true) : -1;
}

int32_t posClosingBracket(UStringView hay, uint32_t start) {
  bool quoted = false;
  int32_t depth = 0;
  for (size_t i = start; i < hay.size(); ++i) {
    const char16_t c = hay[i];
    if (c == kQuote) {
      quoted = !quoted;
    } else if (quoted) {
      continue;
    } else if (c == u')') {
      if (depth == 0) return static_cast<int32_t>(i);
      --depth;
    } else if (c == u'(') {
      ++depth;
    }
  }
  return -1;
}

UString getTokenFrom(UString& s, char16_t separator) {
  int32_t p = posWithNeedle(separator, s);
  if (p < 0) return std::exchange(s, UString());
  UString token = s.substr(0, static_cast<size_t>(p));
  s.erase(0, static_cast<size_t>(p) + 1);
  return token;
}

UString getTokenFrom(UString& s, UStringView separator) {
  if (separator.size() != 1) return std::exchange(s, UString());
  return getTokenFrom(s, separator[0]);
}

UStringView tokenView(UStringView& s, char16_t separator) noexcept {
  int32_t p = posWithNeedle(separator, s);
  UStringView token = s;
  if (p < 0) {
    s = UStringView();
  } else {
    token = s.substr(0, static_cast<size_t>(p));
    s.remove_prefix(static_cast<size_t>(p) + 1);
  }
  return token;
}

UString midWithString(UStringView s, uint32_t start, uint32_t length) {
  // A start past the end is an invalid range; the clamp itself is unsigned arithmetic.
  if (start > s.size()) return UString();
  uint32_t available = static_cast<uint32_t>(s.size()) - start;
  return UString(s.substr(start, std::min(length, available)));
}

UStringView trimView(UStringView s) noexcept {
  size_t first = 0;
  size_t end = s.size();
  while (first < end && isWhitespaceOrNewline(s[first])) ++first;
  while (end > first && isWhitespaceOrNewline(s[end - 1])) --end;
  return s.substr(first, end - first);
}

UString trim(UStringView s) {
  return UString(trimView(s));
}

bool findWord(UStringView word, UStringView line) {
  UString outside;
  outside.reserve(line.size());
  bool quoted = false;
  for (char16_t c : line) {
    if (c == kQuote) {
      quoted = !quoted;
    } else if (!quoted) {
      outside += c;
    }
  }
  return containsCaseInsensitive(outside, word);
}

int32_t findKeyword(UStringView keyword, UStringView str) {
  const UString key = upperCase(keyword);
  const UString upper = upperCase(str);
  UStringView rest = upper;
  while (!rest.empty()) {
    if (tokenView(rest, u' ') == UStringView(key)) {
      // Deliberately one short when the keyword is the last token (nothing remains).
      return static_cast<int32_t>(upper.size()) - 1 - static_cast<int32_t>(rest.size()) -
             static_cast<int32_t>(key.size());
    }
  }
  return -1;
}

UString replace(UStringView target, UStringView replacement, UStringView str, uint32_t flags) {
  if (target.empty()) return UString(str);
  if ((flags & kCaseInsensitiveSearch) != 0) {
    return replaceCaseInsensitive(target, replacement, str);
  }
  return replaceLiteral(target, replacement, str);
}

bool checkVarName(UStringView name) {
  size_t i = name.size();
  while (i > 0) {
    --i;
    UChar32 c = name[i];
    if (U16_IS_TRAIL(c) && i > 0 && U16_IS_LEAD(name[i - 1])) {
      c = U16_GET_SUPPLEMENTARY(name[i - 1], c);
      --i;
    }
    bool ok = c == u'_' || (c < 256 && c >= u'0' && c <= u'9') ||
              (c < 128 ? ((c | 0x20) >= u'a' && (c | 0x20) <= u'z') : u_isalpha(c) != 0);
    if (!ok) return false;
  }
  return true;
}

UString getTmpVarName() {
  static std::atomic<uint64_t> counter{0};
  uint64_t n = counter.fetch_add(1, std::memory_order_relaxed);
  char16_t digits[24];
  size_t len = 0;
  do {
    digits[len++] = static_cast<char16_t>(u'0' + n % 10);
    n /= 10;
  } while (n != 0);
  UString name = u"____var_";
  name.reserve(name.size() + len);
  while (len > 0) name += digits[--len];
  return name;
}

const std::vector<UString>& reservedWords() {
  static const std::vector<UString> words = {
      u"REM",      u"DIM",    u"ECHO",     u"IF",    u"THEN",  u"ELSE",     u"END",
      u"AND",      u"OR",     u"FOR",      u"NEXT",  u"TO",    u"STEP",     u"ON",
      u"ERROR",    u"RESUME", u"GOTO",     u"CONST", u"WHILE", u"WEND",     u"SUB",
      u"FUNCTION", u"EXIT",   u"CONTINUE", u"NOT",   u"REDIM", u"PRESERVE", u"DO",
      u"UNTIL",    u"LOOP",   u"SELECT",   u"CASE",  u"IS",    u"ENDIF"};
  return words;
}

}  // namespace lx
