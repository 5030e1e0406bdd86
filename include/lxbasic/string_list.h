// LxBasicStringList: an ordered list of text lines, each with one attached value. It holds a
// script's text, the prepared source and procedure bodies, and loads and saves script files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

// Text encodings by their platform numbers, as loadFromFile and saveToFile accept them.
// Supported: ASCII (strict: a byte over 127 is invalid), Japanese EUC, UTF-8, ISO Latin-1,
// Shift JIS, ISO Latin-2, UTF-16 (10: written with a byte order mark, read in the order the
// mark gives, big-endian without one), Windows-1250 to 1254, Mac Roman, UTF-16BE/LE, UTF-32
// (with a byte order mark) and UTF-32BE/LE. Any other number is refused: loading leaves the
// list empty and saving writes nothing. A byte order mark at the start of a file is never
// part of the text.
enum TextEncoding : uint64_t {
  kEncodingASCII = 1,
  kEncodingJapaneseEUC = 3,
  kEncodingUTF8 = 4,
  kEncodingISOLatin1 = 5,
  kEncodingShiftJIS = 8,
  kEncodingISOLatin2 = 9,
  kEncodingUTF16 = 10,  // with a byte order mark; read in either order
  kEncodingWindows1251 = 11,
  kEncodingWindows1252 = 12,
  kEncodingWindows1253 = 13,
  kEncodingWindows1254 = 14,
  kEncodingWindows1250 = 15,
  kEncodingMacRoman = 30,
  kEncodingUTF32 = 0x8c000100,
  kEncodingUTF16BE = 0x90000100,
  kEncodingUTF16LE = 0x94000100,
  kEncodingUTF32BE = 0x98000100,
  kEncodingUTF32LE = 0x9c000100,
};

class LX_API LxBasicStringList {
 public:
  LxBasicStringList() = default;

  // The lines joined with carriage returns; "" for an empty list.
  UString text() const;
  // Replaces the list with the "%@" text of `text` split at every line-end character
  // (LF, VT, FF, CR, NEL, LS, PS each end one line); every object becomes the null object.
  void setText(const Variant& text);

  // Empties the list, then reads the file; a file that cannot be read or decoded leaves the
  // list empty. Answers whether the file was read.
  bool loadFromFile(const std::string& path, uint64_t encoding);
  // Writes `text()`; answers whether it was written (callers may ignore it).
  bool saveToFile(const std::string& path, uint64_t encoding) const;

  size_t count() const noexcept { return lines_.size(); }
  // Index operations throw RangeException for an index out of range.
  const UString& stringAtIndex(uint64_t index) const;
  const Variant& objectAtIndex(uint64_t index) const;
  void setObject(Variant object, uint64_t index);
  void deleteAtIndex(uint64_t index);
  void insertAtIndex(uint64_t index, UString line);
  void insertAtIndex(uint64_t index, UString line, Variant object);
  void replaceAtIndex(uint64_t index, UString line);
  void replaceAtIndex(uint64_t index, UString line, Variant object);
  // Appends only when `line` is a String; anything else is ignored.
  void addString(const Variant& line);
  void addString(const Variant& line, Variant object);
  void clear() noexcept;
  // Removes repeated lines (exact comparison), keeping the first; restarts the scan after
  // every removal and leaves the attached objects untouched.
  void removeDuplicates();
  int64_t indexOf(UStringView line) const;
  // Appends the other list's lines, and only its lines.
  void addFromList(const LxBasicStringList& other);
  UString description() const;
  const std::vector<UString>& array() const noexcept { return lines_; }
  size_t objectCount() const noexcept { return objects_.size(); }

 private:
  std::vector<UString> lines_;
  std::vector<Variant> objects_;
};

}  // namespace lx
