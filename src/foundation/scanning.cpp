// Placeholder until the scanning primitives land.
#include "foundation/scanning.h"

#include <atomic>
#include <string>

namespace lx {

bool checkVarName(UStringView) { return true; }

UString getTmpVarName() {
  static std::atomic<int64_t> counter{0};
  std::string s = "____var_" + std::to_string(counter.fetch_add(1));
  return UString(s.begin(), s.end());
}

}  // namespace lx
