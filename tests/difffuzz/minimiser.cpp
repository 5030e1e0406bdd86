#include "difffuzz/minimiser.h"

#include <vector>

namespace difffuzz {
namespace {

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    lines.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

std::string joinLines(const std::vector<std::string>& lines) {
  std::string text;
  for (const auto& line : lines) text += line + "\n";
  return text;
}

}  // namespace

std::string minimise(const std::string& program,
                     const std::function<bool(const std::string&)>& stillFails) {
  std::vector<std::string> lines = splitLines(program);
  // Chunks halve down to one line; a chunk size is tried again after any success, since
  // dropping one piece often lets a neighbour go too.
  for (size_t chunk = lines.size() / 2; chunk >= 1; chunk /= 2) {
    bool dropped = true;
    while (dropped) {
      dropped = false;
      for (size_t at = 0; at + chunk <= lines.size();) {
        std::vector<std::string> candidate(lines.begin(), lines.begin() + at);
        candidate.insert(candidate.end(), lines.begin() + at + chunk, lines.end());
        if (stillFails(joinLines(candidate))) {
          lines = std::move(candidate);
          dropped = true;
        } else {
          at += chunk;
        }
      }
    }
    if (chunk == 1) break;
  }
  return joinLines(lines);
}

}  // namespace difffuzz
