// A look at a script's shape without running it: blocks left open or closed twice, brackets
// and quotes that do not pair up. The engine itself checks nothing before a run
// (LxBasicScript::checkSyntax always answers true); editors, the runner's --check and
// interactive hosts ask this instead.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

struct LX_API CheckFinding {
  enum class Kind {
    Unclosed,   // a block, or a continued line, still open at the end of the text
    Unmatched,  // a block closed without being open, or closing another kind of block
    Brackets,   // a bracket without its partner
    Quotes,     // a string literal without its closing quote
    Statement,  // a statement the engine will refuse whatever the values (IF without THEN)
  };
  int32_t lineNumber = 0;  // 1-based line of the script text
  Kind kind = Kind::Unclosed;
  std::string message;  // UTF-8, e.g. "FOR without NEXT"
};

// The findings in line order; empty when nothing is wrong with the script's shape.
LX_API std::vector<CheckFinding> checkScript(std::string_view utf8);
LX_API std::vector<CheckFinding> checkScript(UStringView text);

// True when every finding only says that something is still open at the end: the text is
// an unfinished beginning of a script rather than a wrong one.
LX_API bool onlyUnclosed(const std::vector<CheckFinding>& findings);

}  // namespace lx
