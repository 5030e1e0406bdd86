#include "script_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <string_view>

#include "runner_options.h"

namespace runner {

namespace {

std::string readStream(std::FILE* in, const std::string& shownName) {
  std::string bytes;
  char buffer[65536];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, in)) > 0) bytes.append(buffer, n);
  if (std::ferror(in)) {
    throw StartError("cannot read " + shownName + ": " + std::strerror(errno), false);
  }
  return bytes;
}

}  // namespace

std::string readScriptFile(const std::string& path) {
  if (path == "-") return readStream(stdin, "standard input");
  std::FILE* in = std::fopen(path.c_str(), "rb");
  if (in == nullptr) throw StartError("cannot open " + path + ": " + std::strerror(errno), false);
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> closer(in, &std::fclose);
  return readStream(in, path);
}

namespace {

// The offset of the first byte that does not belong to a well-formed UTF-8 sequence
// (overlong forms, surrogates and code points above U+10FFFF included), if any. The engine's
// own decoder is lenient and would turn such bytes into replacement characters silently.
std::optional<size_t> firstInvalidUtf8(std::string_view s) {
  size_t i = 0;
  while (i < s.size()) {
    auto c = static_cast<unsigned char>(s[i]);
    size_t length;
    unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (c < 0x80) {
      ++i;
      continue;
    } else if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      if (c == 0xE0) low = 0xA0;   // overlong
      if (c == 0xED) high = 0x9F;  // surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      if (c == 0xF0) low = 0x90;   // overlong
      if (c == 0xF4) high = 0x8F;  // above U+10FFFF
    } else {
      return i;
    }
    if (i + length > s.size()) return i;
    for (size_t k = 1; k < length; ++k) {
      auto b = static_cast<unsigned char>(s[i + k]);
      unsigned char lo = k == 1 ? low : 0x80, hi = k == 1 ? high : 0xBF;
      if (b < lo || b > hi) return i;
    }
    i += length;
  }
  return std::nullopt;
}

}  // namespace

// The script text without its byte order mark; refuses text that is not UTF-8.
std::string decodeScript(std::string bytes, const std::string& shownName) {
  constexpr std::string_view kBom = "\xEF\xBB\xBF";
  if (std::string_view(bytes).starts_with(kBom)) bytes.erase(0, kBom.size());
  if (auto bad = firstInvalidUtf8(bytes)) {
    size_t line = 1;
    for (size_t k = 0; k < *bad; ++k) line += bytes[k] == '\n';
    throw StartError(shownName + " is not valid UTF-8 (line " + std::to_string(line) + ", byte " +
                         std::to_string(*bad) + "); save it as UTF-8 and try again",
                     false);
  }
  return bytes;
}

}  // namespace runner
