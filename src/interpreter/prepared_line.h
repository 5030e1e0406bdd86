// A line of a prepared source: the statement as the driver runs it, worked out once per
// preparation instead of on every pass through a loop or every call of a procedure.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "lxbasic/variant.h"

namespace lx {

namespace compiled {
class LineCode;
}

struct PreparedLine {
  PreparedLine();
  ~PreparedLine();
  PreparedLine(PreparedLine&&) noexcept;
  PreparedLine& operator=(PreparedLine&&) noexcept;
  UString text;                              // trimmed, tabs replaced by blanks
  uint8_t kind = 0;                          // the LineKind its first words select
  int32_t scriptLine = 0;                    // the line of the source text it came from
  std::unique_ptr<compiled::LineCode> code;  // made when the line first runs
};

using PreparedLines = std::vector<PreparedLine>;

}  // namespace lx
