#include "builtins/text_search.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>

namespace lx {

SearchText::SearchText(UStringView original, bool fold) : original_(original), folded_(fold) {
  if (!fold) return;
  units_.reserve(original.size());
  offsets_.reserve(original.size());
  for (size_t i = 0; i < original.size();) {
    bool pair =
        U16_IS_LEAD(original[i]) && i + 1 < original.size() && U16_IS_TRAIL(original[i + 1]);
    size_t len = pair ? 2 : 1;
    appendFolded(original.substr(i, len), i);
    i += len;
  }
}

UString SearchText::needle(UStringView text, bool fold) {
  return UString(SearchText(text, fold).units());
}

void SearchText::appendFolded(UStringView character, size_t offset) {
  char16_t c = character[0];
  if (c < 0x80) {
    // ASCII folds to lower case alone; most texts never leave this path.
    units_.push_back(c >= u'A' && c <= u'Z' ? static_cast<char16_t>(c + 32) : c);
    offsets_.push_back(offset);
    return;
  }
  UChar buf[8];
  UErrorCode status = U_ZERO_ERROR;
  int32_t n = u_strFoldCase(buf, 8, reinterpret_cast<const UChar*>(character.data()),
                            static_cast<int32_t>(character.size()), U_FOLD_CASE_DEFAULT, &status);
  if (U_FAILURE(status) || n <= 0 || n > 8) {
    units_.append(character);
    n = static_cast<int32_t>(character.size());
  } else {
    units_.append(reinterpret_cast<const char16_t*>(buf), static_cast<size_t>(n));
  }
  offsets_.insert(offsets_.end(), static_cast<size_t>(n), offset);
}

bool SearchText::isBoundary(size_t j) const {
  return !folded_ || j == 0 || j >= offsets_.size() || offsets_[j] != offsets_[j - 1];
}

size_t SearchText::originalOffset(size_t j) const {
  if (!folded_) return j;
  return j >= offsets_.size() ? original_.size() : offsets_[j];
}

std::optional<SearchText::Match> SearchText::find(UStringView needle, size_t from,
                                                  bool backwards) const {
  UStringView hay = units();
  size_t at = backwards ? hay.rfind(needle, from) : hay.find(needle, from);
  while (at != UStringView::npos) {
    size_t end = at + needle.size();
    if (isBoundary(at) && isBoundary(end)) {
      return Match{originalOffset(at), originalOffset(end) - originalOffset(at), end};
    }
    if (backwards) {
      if (at == 0) break;
      at = hay.rfind(needle, at - 1);
    } else {
      at = hay.find(needle, at + 1);
    }
  }
  return std::nullopt;
}

std::optional<size_t> SearchText::findFromOriginal(UStringView needle, size_t offset) const {
  size_t from = offset;
  if (folded_) {
    auto it = std::lower_bound(offsets_.begin(), offsets_.end(), offset);
    from = static_cast<size_t>(it - offsets_.begin());
    if (it != offsets_.end() && *it != offset) {
      // The offset lies inside a character (half of a surrogate pair): search that rest alone.
      auto match = SearchText(original_.substr(offset), true).find(needle, 0, false);
      return match ? std::optional<size_t>(match->offset + offset) : std::nullopt;
    }
  }
  auto match = find(needle, from, false);
  return match ? std::optional<size_t>(match->offset) : std::nullopt;
}

}  // namespace lx
