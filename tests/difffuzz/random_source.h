// A small deterministic random source: the programs of a seed must be the same on every
// machine and standard library, which the std distributions do not promise.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace difffuzz {

class RandomSource {
 public:
  explicit RandomSource(uint64_t seed) : state_(seed) {}

  uint64_t next() {  // splitmix64
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }
  // 0 .. n-1; n must be positive.
  int below(int n) { return static_cast<int>(next() % static_cast<uint64_t>(n)); }
  int between(int low, int high) { return low + below(high - low + 1); }
  bool percent(int p) { return below(100) < p; }

  template <class T>
  const T& pick(const std::vector<T>& items) {
    return items[static_cast<size_t>(below(static_cast<int>(items.size())))];
  }
  std::string pick(std::initializer_list<const char*> items) {
    return *(items.begin() + below(static_cast<int>(items.size())));
  }

 private:
  uint64_t state_;
};

}  // namespace difffuzz
