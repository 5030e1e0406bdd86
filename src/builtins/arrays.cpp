// Array built-ins: Array, LBound, UBound, IsArray, Filter, Join and Split. Every array made
// here is one-dimensional and holds a fresh variable slot per element.
#include <algorithm>
#include <cstdint>
#include <optional>

#include "bridge/script_services.h"
#include "builtins/common.h"
#include "builtins/families.h"
#include "builtins/guard.h"
#include "builtins/text_search.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

namespace lx {

namespace {

void append(Array& list, Variant value) {
  list.chargeFor(list.items.size() + 1);
  list.items.emplace_back(LxValue::make(std::move(value)));
}

// Every argument given is an element, the null object (an Empty script value) included.
Variant arrayOf(LxBasicFunc& /*lib*/, std::span<const Variant> elements) {
  auto list = Array::make();
  for (const Variant& e : elements) append(*list, e);
  return list;
}

// Dimensions are found by descending through the first element of each level only; the
// other elements are not checked for the same shape.
Variant bound(const Variant& arr, const Variant& dim, bool upper) {
  return guarded(Variant::int32(-1), [&] {
    if (!isArray(arr)) return Variant::int32(-1);
    int32_t d = intValue(toText(dim));
    if (d < 1) return Variant::int32(-1);
    const Array* level = arr.array().get();
    for (int32_t i = 1; i < d; ++i) {
      if (level->items.empty() || !level->items[0].isArray()) return Variant::int32(-1);
      level = level->items[0].array().get();
    }
    return Variant::int32(upper ? static_cast<int32_t>(level->items.size()) - 1 : 0);
  });
}

Variant LBound2(LxBasicFunc& /*lib*/, const Variant& arr, const Variant& dim) {
  return bound(arr, dim, false);
}
Variant UBound2(LxBasicFunc& /*lib*/, const Variant& arr, const Variant& dim) {
  return bound(arr, dim, true);
}
Variant LBound1(LxBasicFunc& lib, const Variant& arr) {
  return LBound2(lib, arr, Variant::int32(1));
}
Variant UBound1(LxBasicFunc& lib, const Variant& arr) {
  return UBound2(lib, arr, Variant::int32(1));
}

Variant IsArray(LxBasicFunc& /*lib*/, const Variant& x) {
  return Variant::boolean(isArray(x));
}

// The value an element contributes to a new array: a slot's data, or a nested list itself.
Variant elementValue(const Variant& element) {
  if (const LxValue* slot = slotOf(element)) return slot->data();
  return element;
}

// An element matches through InStr, so an empty value never matches and a failed search
// (-1) counts as a match.
Variant Filter4(LxBasicFunc& lib, const Variant& arr, const Variant& value, const Variant& include,
                const Variant& compare) {
  return guarded(Variant(), [&]() -> Variant {
    if (!isArray(arr)) return Variant();
    Variant v = toText(value);
    bool keepMatches = boolValue(toText(include));
    auto result = Array::make();
    for (const Variant& element : arr.array()->items) {
      pollStop();
      bool found = intValue(InStrAt(lib, Variant::int32(0), toText(element), v, compare)) != 0;
      if (found == keepMatches) append(*result, elementValue(element));
    }
    return result;
  });
}

Variant Filter2(LxBasicFunc& lib, const Variant& arr, const Variant& value) {
  return Filter4(lib, arr, value, Variant::int32(1), Variant::int32(0));
}

Variant Join2(LxBasicFunc& /*lib*/, const Variant& arr, const Variant& delimiter) {
  return guarded(UString(), [&]() -> Variant {
    if (!isArray(arr)) return Variant();
    UString d = toText(delimiter);
    UString out;
    bool first = true;
    for (const Variant& element : arr.array()->items) {
      if (!first) out += d;
      first = false;
      out += toText(element);
      if (out.size() > kMaxBuiltText) throw RangeException("Join: text too long");
      chargeTextGrowth(out.size());
    }
    return out;
  });
}

Variant Join1(LxBasicFunc& lib, const Variant& arr) {
  return Join2(lib, arr, u" ");
}

// A count of 0 turns off the only way Split's loop ends: once the text is used up, it goes on
// appending empty pieces until the run is stopped (terminate or the time limit). So that this
// cannot exhaust the host's memory first, at most kMaxIdlePieces pieces that consume no text
// are appended; after that Split only waits, sleeping, for the stop request. The cap is low
// enough that the pieces are made, and freed after the stop, in a few milliseconds. Without a
// script (a direct call) nothing could ever stop it, so it answers the pieces made so far.
constexpr int64_t kMaxIdlePieces = 65'536;
constexpr int64_t kStopCheckInterval = 4096;

bool stopRequested(const LxBasicFunc& lib) {
  return lib.script() && lib.script()->stopRequested();
}

void waitForStop(const LxBasicFunc& lib) {
  if (!lib.script()) return;
  while (lib.script()->interruptibleSleep(1.0)) {
  }
}

// Where InStr(0, rest, d, compare) finds the delimiter in the rest of the text that begins
// at `pos`: 1-based, 0 when not found, -1 when InStr fails (a compare that cannot be read).
int64_t delimiterAt(const SearchText& text, size_t pos, size_t size, const UString& needle,
                    std::optional<bool> fold) {
  if (!fold) return -1;
  if (pos >= size || needle.empty()) return 0;
  auto at = text.findFromOriginal(needle, pos);
  return at ? static_cast<int64_t>(*at - pos) + 1 : 0;
}

// Unguarded. The count never limits the number of pieces; a trailing delimiter gives no
// trailing empty piece, while a leading one gives a leading empty piece.
Variant Split4(LxBasicFunc& lib, const Variant& s, const Variant& delimiter, const Variant& count,
               const Variant& compare) {
  UString text = toText(s);
  UString d = toText(delimiter);
  int32_t c = intValue(toText(count));
  std::optional<bool> fold;
  try {
    fold = intValue(compare) == 1;
  } catch (...) {
  }
  SearchText searched(text, fold.value_or(false));
  UString needle = SearchText::needle(d, fold.value_or(false));
  auto list = Array::make();
  size_t pos = 0;  // the rest of the text still to split begins here
  int64_t idle = 0;
  for (int64_t step = 1;; ++step) {
    UStringView rest = UStringView(text).substr(pos);
    if (rest.empty() && c != 0) break;
    if (step % kStopCheckInterval == 0 && stopRequested(lib)) break;
    size_t before = pos;
    int64_t p = delimiterAt(searched, pos, text.size(), needle, fold);
    if (p != 0) {
      append(*list, midText(rest, 1, static_cast<int32_t>(p - 1)));
      // The rest begins length-of-d units after the match's start, as Mid cuts it.
      int64_t k = std::max<int64_t>(p + static_cast<int64_t>(d.size()) - 1, 0);
      pos += static_cast<size_t>(std::min<int64_t>(k, static_cast<int64_t>(rest.size())));
    } else {
      append(*list, UString(rest));
      pos = text.size();
    }
    if (pos > before) continue;
    if (++idle >= kMaxIdlePieces) {
      waitForStop(lib);
      break;
    }
  }
  return list;
}

Variant Split3(LxBasicFunc& lib, const Variant& s, const Variant& delimiter, const Variant& count) {
  return Split4(lib, s, delimiter, count, Variant::int32(0));
}
Variant Split2(LxBasicFunc& lib, const Variant& s, const Variant& delimiter) {
  return Split4(lib, s, delimiter, Variant::int32(-1), Variant::int32(0));
}
Variant Split1(LxBasicFunc& lib, const Variant& s) {
  return Split4(lib, s, u" ", Variant::int32(-1), Variant::int32(0));
}

}  // namespace

void registerArrayFunctions(LibraryBuilder& b) {
  registerListForms<&arrayOf>(b, "Array", "n", 0, std::make_index_sequence<11>{});
  b.method("LBound:", &LBound1)
      .method("LBound:Dim:", &LBound2)
      .method("UBound:", &UBound1)
      .method("UBound:Dim:", &UBound2)
      .method("IsArray:", &IsArray)
      .method("Filter:Value:", &Filter2)
      .method("Filter:Value:include:compare:", &Filter4)
      .method("Join:", &Join1)
      .method("Join:delimiter:", &Join2)
      .method("Split:", &Split1)
      .method("Split:delimiter:", &Split2)
      .method("Split:delimiter:count:", &Split3)
      .method("Split:delimiter:count:compare:", &Split4);
}

}  // namespace lx
