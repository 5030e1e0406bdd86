#include "lxbasic/string_list.h"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <cstdio>
#include <fstream>
#include <memory>

#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

namespace {

// ICU converter names of the supported platform encoding numbers; nullptr for any other.
const char* converterName(uint64_t encoding) noexcept {
  switch (encoding) {
    case kEncodingASCII:
      return "US-ASCII";
    case kEncodingJapaneseEUC:
      return "EUC-JP";
    case kEncodingUTF8:
      return "UTF-8";
    case kEncodingISOLatin1:
      return "ISO-8859-1";
    case kEncodingShiftJIS:
      return "Shift_JIS";
    case kEncodingISOLatin2:
      return "ISO-8859-2";
    case kEncodingUTF16:
      return "UTF-16";
    case kEncodingWindows1251:
      return "windows-1251";
    case kEncodingWindows1252:
      return "windows-1252";
    case kEncodingWindows1253:
      return "windows-1253";
    case kEncodingWindows1254:
      return "windows-1254";
    case kEncodingWindows1250:
      return "windows-1250";
    case kEncodingMacRoman:
      return "macintosh";
    case kEncodingUTF16BE:
      return "UTF-16BE";
    case kEncodingUTF16LE:
      return "UTF-16LE";
    case kEncodingUTF32:
      return "UTF-32";
    case kEncodingUTF32BE:
      return "UTF-32BE";
    case kEncodingUTF32LE:
      return "UTF-32LE";
    default:
      return nullptr;
  }
}

struct ConverterCloser {
  void operator()(UConverter* c) const noexcept { ucnv_close(c); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

// A converter that stops at the first byte sequence or character it cannot convert, so that
// a file in another encoding is refused instead of read with substitutes.
Converter openStrictConverter(uint64_t encoding) {
  const char* name = converterName(encoding);
  if (!name) return nullptr;
  UErrorCode status = U_ZERO_ERROR;
  Converter cnv(ucnv_open(name, &status));
  if (U_FAILURE(status)) return nullptr;
  ucnv_setToUCallBack(cnv.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  ucnv_setFromUCallBack(cnv.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
  if (U_FAILURE(status)) return nullptr;
  return cnv;
}

bool decode(const std::string& bytes, uint64_t encoding, UString& out) {
  Converter cnv = openStrictConverter(encoding);
  if (!cnv) return false;
  const auto length = static_cast<int32_t>(bytes.size());
  if (static_cast<size_t>(length) != bytes.size()) return false;
  out.assign(bytes.size() + 1, u'\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = ucnv_toUChars(cnv.get(), reinterpret_cast<UChar*>(out.data()),
                              static_cast<int32_t>(out.size()), bytes.data(), length, &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      out.assign(static_cast<size_t>(n) + 1, u'\0');
      continue;
    }
    if (U_FAILURE(status)) return false;
    out.resize(static_cast<size_t>(n));
    // A byte order mark that the converter leaves in place is not part of the text.
    if (!out.empty() && out.front() == 0xFEFF) out.erase(0, 1);
    return true;
  }
  return false;
}

bool encode(const UString& text, uint64_t encoding, std::string& out) {
  Converter cnv = openStrictConverter(encoding);
  if (!cnv) return false;
  const auto length = static_cast<int32_t>(text.size());
  out.assign(text.size() * 2 + 8, '\0');
  for (int attempt = 0; attempt < 2; ++attempt) {
    UErrorCode status = U_ZERO_ERROR;
    int32_t n = ucnv_fromUChars(cnv.get(), out.data(), static_cast<int32_t>(out.size()),
                                reinterpret_cast<const UChar*>(text.data()), length, &status);
    if (status == U_BUFFER_OVERFLOW_ERROR) {
      out.assign(static_cast<size_t>(n) + 1, '\0');
      continue;
    }
    if (U_FAILURE(status)) return false;
    out.resize(static_cast<size_t>(n));
    return true;
  }
  return false;
}

// The whole file; false when it cannot be opened or read (a directory opens but cannot be read).
bool readFile(const std::string& path, std::string& bytes) {
  std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
  if (!file) return false;
  char buffer[65536];
  size_t n = 0;
  while ((n = std::fread(buffer, 1, sizeof buffer, file.get())) > 0) bytes.append(buffer, n);
  return std::ferror(file.get()) == 0;
}

bool isLineEnd(char16_t c) noexcept {
  return (c >= 0x0A && c <= 0x0D) || c == 0x85 || c == 0x2028 || c == 0x2029;
}

// The index check of a list operation; `limit` is one past the largest accepted index.
void checkIndex(uint64_t index, size_t limit) {
  if (index >= limit) {
    throw RangeException("index " + std::to_string(index) + " beyond bounds" +
                         (limit == 0 ? std::string(" for empty list")
                                     : " [0 .. " + std::to_string(limit - 1) + "]"));
  }
}

// Where no object is given, a line carries the null object.
Variant attached(Variant object) {
  return object.isEmpty() ? Variant(nullObject()) : std::move(object);
}

}  // namespace

UString LxBasicStringList::text() const {
  UString out;
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (i > 0) out += u'\r';
    out += lines_[i];
  }
  return out;
}

void LxBasicStringList::setText(const Variant& text) {
  clear();
  const UString all = toText(text);
  size_t begin = 0;
  for (size_t i = 0; i < all.size(); ++i) {
    if (isLineEnd(all[i])) {
      lines_.push_back(all.substr(begin, i - begin));
      begin = i + 1;
    }
  }
  lines_.push_back(all.substr(begin));
  objects_.assign(lines_.size(), Variant(nullObject()));
}

bool LxBasicStringList::loadFromFile(const std::string& path, uint64_t encoding) {
  clear();
  std::string bytes;
  if (!readFile(path, bytes)) return false;
  UString decoded;
  if (!decode(bytes, encoding, decoded)) return false;
  setText(Variant(std::move(decoded)));
  return true;
}

bool LxBasicStringList::saveToFile(const std::string& path, uint64_t encoding) const {
  std::string bytes;
  if (!encode(text(), encoding, bytes)) return false;
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) return false;
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  out.flush();
  return static_cast<bool>(out);
}

const UString& LxBasicStringList::stringAtIndex(uint64_t index) const {
  checkIndex(index, lines_.size());
  return lines_[index];
}

const Variant& LxBasicStringList::objectAtIndex(uint64_t index) const {
  checkIndex(index, objects_.size());
  return objects_[index];
}

void LxBasicStringList::setObject(Variant object, uint64_t index) {
  checkIndex(index, objects_.size());
  objects_[index] = attached(std::move(object));
}

void LxBasicStringList::deleteAtIndex(uint64_t index) {
  checkIndex(index, lines_.size());
  lines_.erase(lines_.begin() + static_cast<ptrdiff_t>(index));
  checkIndex(index, objects_.size());
  objects_.erase(objects_.begin() + static_cast<ptrdiff_t>(index));
}

void LxBasicStringList::insertAtIndex(uint64_t index, UString line) {
  insertAtIndex(index, std::move(line), Variant());
}

void LxBasicStringList::insertAtIndex(uint64_t index, UString line, Variant object) {
  checkIndex(index, lines_.size() + 1);
  lines_.insert(lines_.begin() + static_cast<ptrdiff_t>(index), std::move(line));
  checkIndex(index, objects_.size() + 1);
  objects_.insert(objects_.begin() + static_cast<ptrdiff_t>(index), attached(std::move(object)));
}

void LxBasicStringList::replaceAtIndex(uint64_t index, UString line) {
  replaceAtIndex(index, std::move(line), Variant());
}

void LxBasicStringList::replaceAtIndex(uint64_t index, UString line, Variant object) {
  checkIndex(index, lines_.size());
  lines_[index] = std::move(line);
  setObject(std::move(object), index);
}

void LxBasicStringList::addString(const Variant& line) {
  addString(line, Variant());
}

void LxBasicStringList::addString(const Variant& line, Variant object) {
  if (!line.isString()) return;
  lines_.push_back(line.string());
  objects_.push_back(attached(std::move(object)));
}

void LxBasicStringList::clear() noexcept {
  lines_.clear();
  objects_.clear();
}

// The scan starts again from the first line after every removal, and only lines are removed:
// callers that attach objects never use this operation.
void LxBasicStringList::removeDuplicates() {
  if (lines_.empty()) return;
  size_t i = 0;
  do {
    const UString& line = lines_[i];
    ++i;
    for (size_t j = i; j < lines_.size(); ++j) {
      if (lines_[j] == line) {
        lines_.erase(lines_.begin() + static_cast<ptrdiff_t>(j));
        i = 0;
        break;
      }
    }
  } while (i < lines_.size());
}

int64_t LxBasicStringList::indexOf(UStringView line) const {
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (lines_[i] == line) return static_cast<int64_t>(i);
  }
  return -1;
}

void LxBasicStringList::addFromList(const LxBasicStringList& other) {
  if (&other == this) {
    std::vector<UString> copy = lines_;
    lines_.insert(lines_.end(), copy.begin(), copy.end());
    return;
  }
  lines_.insert(lines_.end(), other.lines_.begin(), other.lines_.end());
}

UString LxBasicStringList::description() const {
  UString out = u"(";
  for (size_t i = 0; i < lines_.size(); ++i) {
    if (i > 0) out += u", ";
    out += lines_[i];
  }
  out += u')';
  return out;
}

}  // namespace lx
