// String built-ins. Texts are UTF-16 code units: every length and position counts units, and
// the positions that scripts see are 1-based. A compare argument of 1 asks for a
// case-insensitive comparison (full Unicode case folding); any other value compares literally,
// unit by unit.
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <cstdint>

#include "builtins/common.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "builtins/text_search.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

bool textCompare(const Variant& compare) {
  return intValue(compare) == 1;
}

// Start arguments are 1-based; anything below 1 means the first unit.
int64_t zeroBasedStart(const Variant& start) {
  int64_t k = static_cast<int64_t>(intValue(start)) - 1;
  return k < 0 ? 0 : k;
}

// ---- InStr and InStrRev

Variant InStr2(LxBasicFunc& lib, const Variant& s1, const Variant& s2) {
  return InStrAt(lib, Variant::int32(0), s1, s2, Variant::int32(0));
}

Variant InStr3(LxBasicFunc& lib, const Variant& start, const Variant& s1, const Variant& s2) {
  return InStrAt(lib, start, s1, s2, Variant::int32(0));
}

// The common steps of InStr and InStrRev. InStr searches forward from unit start - 1 to the
// end; InStrRev searches backwards in the first start - 1 units only, so by default (start =
// the length) the last unit of s1 is never found: InStrRev("abc", "c") is 0.
Variant search(const Variant& s1, const Variant& s2, const Variant& start, const Variant& compare,
               bool backwards) {
  return guarded(Variant::int32(-1), [&] {
    UString t1 = toText(s1);
    UString t2 = toText(s2);
    int64_t k = zeroBasedStart(start);
    bool fold = textCompare(compare);
    if (t1.empty()) return Variant::int32(0);
    // An empty search text answers the zero-based start: InStr(3, "abc", "") is 2.
    if (t2.empty()) return Variant::int32(static_cast<int32_t>(k));
    if (k > static_cast<int64_t>(t1.size())) return Variant::int32(0);
    auto split = static_cast<size_t>(k);
    UStringView range =
        backwards ? UStringView(t1).substr(0, split) : UStringView(t1).substr(split);
    size_t base = backwards ? 0 : split;
    auto match =
        SearchText(range, fold)
            .find(SearchText::needle(t2, fold), backwards ? UStringView::npos : 0, backwards);
    return Variant::int32(match ? static_cast<int32_t>(base + match->offset) + 1 : 0);
  });
}

Variant InStrRev4(LxBasicFunc& /*lib*/, const Variant& s1, const Variant& s2, const Variant& start,
                  const Variant& compare) {
  return search(s1, s2, start, compare, true);
}

Variant InStrRev3(LxBasicFunc& lib, const Variant& s1, const Variant& s2, const Variant& start) {
  return InStrRev4(lib, s1, s2, start, Variant::int32(0));
}

Variant InStrRev2(LxBasicFunc& lib, const Variant& s1, const Variant& s2) {
  auto length = static_cast<int32_t>(toText(s1).size());
  return InStrRev4(lib, s1, s2, Variant::int32(length), Variant::int32(0));
}

// ---- cutting

// Asking for more units than the text has fails, so Left("abc", 4) is "".
Variant Left(LxBasicFunc& /*lib*/, const Variant& s, const Variant& length) {
  return guarded(UString(), [&] {
    int32_t n = intValue(length);
    UString t = toText(s);
    if (n < 1) return Variant(UString());
    if (static_cast<size_t>(n) > t.size()) throw RangeException("Left: length beyond the text");
    return Variant(t.substr(0, static_cast<size_t>(n)));
  });
}

// The length compared is that of the argument itself (a Number has none and fails), and the
// count is compared unsigned, so a negative one counts as too large.
Variant Right(LxBasicFunc& /*lib*/, const Variant& s, const Variant& length) {
  return guarded(UString(), [&] {
    auto n = static_cast<uint32_t>(intValue(length));
    if (n > static_cast<uint64_t>(lengthOf(s))) return Variant(UString());
    UString t = toText(s);
    return Variant(t.substr(t.size() - std::min<size_t>(n, t.size())));
  });
}

Variant Mid3(LxBasicFunc& /*lib*/, const Variant& s, const Variant& start, const Variant& length) {
  return guarded(UString(), [&] {
    UString t = toText(s);
    return Variant(midText(t, intValue(start), intValue(length)));
  });
}

Variant Mid2(LxBasicFunc& lib, const Variant& s, const Variant& start) {
  return Mid3(lib, s, start, Variant::int32(-1));
}

// ---- case, length, trimming, reversing

Variant Len(LxBasicFunc& /*lib*/, const Variant& s) {
  return Variant::int32(static_cast<int32_t>(toText(s).size()));
}

Variant LCase(LxBasicFunc& /*lib*/, const Variant& s) {
  return lowerCase(toText(s));
}
Variant UCase(LxBasicFunc& /*lib*/, const Variant& s) {
  return upperCase(toText(s));
}

bool isTrimBlank(char16_t c) {
  return c == 9 || c == 10 || c == 13 || c == 32;
}

template <bool (*Blank)(char16_t)>
UString trimmed(UStringView t, bool front, bool back) {
  size_t first = 0;
  size_t last = t.size();
  while (front && first < last && Blank(t[first])) ++first;
  while (back && last > first && Blank(t[last - 1])) --last;
  return UString(t.substr(first, last - first));
}

// LTrim and RTrim remove only tab, line feed, carriage return and space.
Variant LTrim(LxBasicFunc& /*lib*/, const Variant& s) {
  return trimmed<isTrimBlank>(toText(s), true, false);
}
Variant RTrim(LxBasicFunc& /*lib*/, const Variant& s) {
  return trimmed<isTrimBlank>(toText(s), false, true);
}

// Trim works on the value itself with the full white-space-and-newline set: only a text can
// be trimmed, and nothing at all stays nothing.
Variant Trim(LxBasicFunc& /*lib*/, const Variant& s) {
  return TrimOf(s);
}

Variant StrReverse(LxBasicFunc& /*lib*/, const Variant& s) {
  return guarded(UString(), [&] {
    UString t = toText(s);
    std::reverse(t.begin(), t.end());
    return Variant(std::move(t));
  });
}

// ---- building

UString repeated(int32_t n, char16_t c) {
  if (n < 1) return UString();
  if (static_cast<size_t>(n) > kMaxBuiltText) throw RangeException("text too long");
  chargeTextGrowth(static_cast<size_t>(n));
  return UString(static_cast<size_t>(n), c);
}

Variant Space(LxBasicFunc& /*lib*/, const Variant& n) {
  return guarded(UString(), [&] { return Variant(repeated(intValue(n), u' ')); });
}

Variant String(LxBasicFunc& /*lib*/, const Variant& n, const Variant& character) {
  return guarded(UString(), [&] {
    int32_t count = intValue(n);
    UString c = toText(character);
    return Variant(c.empty() ? UString() : repeated(count, c[0]));
  });
}

Variant concatAll(LxBasicFunc& /*lib*/, std::span<const Variant> parts) {
  UString out;
  for (const Variant& p : parts) {
    out += toText(p);
    chargeTextGrowth(out.size());
  }
  return out;
}

// ---- Replace and StrComp

// The searched range always has the text's whole length, so any start after the first unit
// runs past the end and fails: only starts of 1 or less replace anything.
Variant Replace5(LxBasicFunc& /*lib*/, const Variant& s, const Variant& find,
                 const Variant& replacement, const Variant& start, const Variant& compare) {
  return guarded(UString(), [&] {
    UString t = toText(s);
    UString f = toText(find);
    UString r = toText(replacement);
    int64_t k = zeroBasedStart(start);
    bool fold = textCompare(compare);
    if (k > 0) throw RangeException("Replace: range beyond the text");
    if (f.empty()) return Variant(std::move(t));
    UString needle = SearchText::needle(f, fold);
    SearchText hay(t, fold);
    UString out;
    size_t copied = 0;
    size_t from = 0;
    while (auto match = hay.find(needle, from, false)) {
      out.append(t, copied, match->offset - copied);
      out += r;
      if (out.size() > kMaxBuiltText) throw RangeException("Replace: text too long");
      chargeTextGrowth(out.size());
      copied = match->offset + match->length;
      from = match->next;
    }
    out.append(t, copied);
    return Variant(std::move(out));
  });
}

Variant Replace4(LxBasicFunc& lib, const Variant& s, const Variant& find,
                 const Variant& replacement, const Variant& start) {
  return Replace5(lib, s, find, replacement, start, Variant::int32(0));
}

Variant Replace3(LxBasicFunc& lib, const Variant& s, const Variant& find,
                 const Variant& replacement) {
  return Replace5(lib, s, find, replacement, Variant::int32(0), Variant::int32(0));
}

int32_t signOf(int64_t c) {
  return c < 0 ? -1 : c > 0 ? 1 : 0;
}

Variant StrComp3(LxBasicFunc& /*lib*/, const Variant& s1, const Variant& s2,
                 const Variant& compare) {
  return guarded(Variant(), [&] {
    if (s1.isEmpty() || s2.isEmpty()) return Variant();
    UString a = toText(s1);
    UString b = toText(s2);
    if (!textCompare(compare)) return Variant::int32(signOf(UStringView(a).compare(b)));
    UErrorCode status = U_ZERO_ERROR;
    int32_t c =
        u_strCaseCompare(reinterpret_cast<const UChar*>(a.data()), static_cast<int32_t>(a.size()),
                         reinterpret_cast<const UChar*>(b.data()), static_cast<int32_t>(b.size()),
                         U_FOLD_CASE_DEFAULT, &status);
    if (U_FAILURE(status)) throw InvalidArgumentException("StrComp: cannot compare");
    return Variant::int32(signOf(c));
  });
}

Variant StrComp2(LxBasicFunc& lib, const Variant& s1, const Variant& s2) {
  return StrComp3(lib, s1, s2, Variant::int32(0));
}

}  // namespace

Variant InStrAt(LxBasicFunc& /*lib*/, const Variant& start, const Variant& s1, const Variant& s2,
                const Variant& compare) {
  return search(s1, s2, start, compare, false);
}

Variant TrimOf(const Variant& s) {
  if (s.isEmpty()) return Variant();
  if (!s.isString()) throw UnrecognizedSelectorException("Trim: the value is not a text");
  return trimmed<isWhitespaceOrNewline>(s.string(), true, true);
}

UString midText(UStringView text, int32_t start, int32_t length) {
  int64_t k = start < 1 ? 0 : static_cast<int64_t>(start) - 1;
  if (length == 0) return UString();
  int64_t available = static_cast<int64_t>(text.size()) - k;
  int64_t n = length < 0 ? static_cast<int64_t>(text.size()) : length;
  n = std::min(available, n);
  if (n < 0 || k > static_cast<int64_t>(text.size())) return UString();
  return UString(text.substr(static_cast<size_t>(k), static_cast<size_t>(n)));
}

void registerStringFunctions(LibraryBuilder& b) {
  b.method("InStr:Str2:", &InStr2)
      .method("InStr:Str1:Str2:", &InStr3)
      .method("InStr:Str1:Str2:compare:", &InStrAt)
      .method("InStrRev:Str2:", &InStrRev2)
      .method("InStrRev:Str2:start:", &InStrRev3)
      .method("InStrRev:Str2:start:compare:", &InStrRev4)
      .method("LCase:", &LCase)
      .method("UCase:", &UCase)
      .method("Len:", &Len)
      .method("LTrim:", &LTrim)
      .method("RTrim:", &RTrim)
      .method("Trim:", &Trim)
      .method("Space:", &Space)
      .method("StrReverse:", &StrReverse)
      .method("Left:length:", &Left)
      .method("Right:length:", &Right)
      .method("String:character:", &String)
      .method("Mid:start:", &Mid2)
      .method("Mid:start:length:", &Mid3)
      .method("Replace:find:replacewith:", &Replace3)
      .method("Replace:find:replacewith:start:", &Replace4)
      .method("Replace:find:replacewith:start:compare:", &Replace5)
      .method("StrComp:Str2:", &StrComp2)
      .method("StrComp:Str2:compare:", &StrComp3);
  registerListForms<&concatAll>(b, "Concat", "s", 2, std::make_index_sequence<11>{});
}

}  // namespace lx
