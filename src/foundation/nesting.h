// Walks over nested arrays (printing, comparing) must stay bounded: a script can put an
// array into itself, directly or through other arrays, and can nest arrays as deep as it
// likes. Each walk keeps the arrays it is inside on a per-thread path; an array met again on
// that path, or a level deeper than kMaxValueNesting, is not entered.
#pragma once

#include <cstddef>
#include <vector>

namespace lx {

class Array;

// Arrays inside arrays deeper than this are shown as the cycle text and compare unequal.
inline constexpr size_t kMaxValueNesting = 200;
// The longest text of one array value, whatever the memory limit: arrays that share their
// sub-arrays can stand for astronomically many elements in a few kilobytes, so past this the
// text is cut and ends with kCutText. It bounds the work as well as the size.
inline constexpr size_t kMaxValueText = size_t{1} << 20;
inline constexpr const char16_t* kCutText = u"...[cut]";
// What a walk shows in place of an array it does not enter.
inline constexpr const char16_t* kCycleText = u"(...)";

class NestingPath {
 public:
  // Enters `array` unless it is already on this thread's path or the path is full.
  explicit NestingPath(const Array* array) : entered_(enter(array)) {}
  ~NestingPath() {
    if (entered_) path().pop_back();
  }
  NestingPath(const NestingPath&) = delete;
  NestingPath& operator=(const NestingPath&) = delete;

  bool entered() const noexcept { return entered_; }

 private:
  static std::vector<const Array*>& path() {
    thread_local std::vector<const Array*> arrays;
    return arrays;
  }
  static bool enter(const Array* array) {
    auto& p = path();
    if (p.size() >= kMaxValueNesting) return false;
    for (const Array* a : p) {
      if (a == array) return false;
    }
    p.push_back(array);
    return true;
  }
  bool entered_;
};

}  // namespace lx
