// The searches behind InStr, InStrRev, Replace, Filter and Split: literal (unit by unit) or
// case-insensitive with full Unicode case folding, always reporting positions in the
// original text.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "lxbasic/variant.h"

namespace lx {

// A text prepared for searching. Folded, every unit remembers the offset of the original
// character it came from, so that matches are reported in the original text and may neither
// begin nor end inside one character's folding ("ß" folds to "ss": "s" does not match it).
// The original text must outlive the object.
class SearchText {
 public:
  SearchText(UStringView original, bool fold);

  // The form a search text must have to be looked for in a text prepared alike.
  static UString needle(UStringView text, bool fold);

  struct Match {
    size_t offset;  // in the original text
    size_t length;  // in the original text
    size_t next;    // the searched form's unit after the match
  };

  // The first match at or after unit `from` of the searched form, or the last one that
  // begins at or before it when searching backwards.
  std::optional<Match> find(UStringView needle, size_t from, bool backwards) const;
  // The original offset of the first match that begins at or after `offset` of the original
  // text.
  std::optional<size_t> findFromOriginal(UStringView needle, size_t offset) const;

 private:
  UStringView units() const { return folded_ ? UStringView(units_) : original_; }
  void appendFolded(UStringView character, size_t offset);
  bool isBoundary(size_t j) const;
  size_t originalOffset(size_t j) const;

  UStringView original_;
  bool folded_;
  UString units_;
  std::vector<size_t> offsets_;  // per folded unit, the offset of its original character
};

}  // namespace lx
