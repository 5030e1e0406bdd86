// What a prepared line's first words select, in the order the driver's dispatch tests them,
// and the parts of the statements whose text is read the same way on every pass.
#pragma once

#include <cstdint>
#include <optional>

#include "lxbasic/variant.h"

namespace lx {

enum LineKind : uint8_t {
  kEmpty,
  kRem,
  kFunc,
  kEndFunc,
  kIf,
  kElse,
  kEndIf,
  kSelectCase,
  kCase,
  kEndSelect,
  kFor,
  kNext,
  kWhile,
  kWEnd,
  kDo,
  kLoop,
  kDim,
  kReDim,
  kConst,
  kEcho,
  kOnError,
  kOther,
};

LineKind classifyLine(const UString& line);

// IF: the condition and, in the single-line form, the two branches.
struct IfParts {
  bool hasThen = false;
  bool singleLine = false;
  UString condition;
  UString thenPart;
  UString elsePart;
};
IfParts splitIf(const UString& line);

// FOR: the variable and the texts of the start, the limit and the step.
struct ForParts {
  bool hasTo = false;
  UString name;
  UString start;
  UString limit;
  UString step;
};
ForParts splitFor(const UString& line);

// The line without its first word, trimmed.
UString afterFirstWord(const UString& line);
// END IF: whatever follows "END IF" (or the first word), trimmed.
UString afterEndIf(const UString& line);
// Trimmed `count` characters of `s` from `start`; a negative count means "the rest", as the
// unsigned length of midWithString has it.
UString slice(UStringView s, int32_t start, int32_t count);
// "(" + text + ")": how a condition's text is read.
UString bracketed(UStringView text);

// The words after DO or LOOP: WHILE or UNTIL (any case) and a condition, which comes back
// in brackets, as the loop record keeps it. Nothing when they are not of that form.
struct LoopCondition {
  bool until = false;
  UString condition;
};
std::optional<LoopCondition> splitLoopCondition(UString rest);

// EXIT and CONTINUE: which of the two, the loop word after it in upper case ("FOR", "WHILE",
// "DO", "SUB"... or empty) and whether anything follows that word.
struct LoopJump {
  bool exit = false;
  UString target;
  bool trailing = false;
};
LoopJump splitLoopJump(const UString& line);

}  // namespace lx

namespace lx {

// How a statement handler has a text evaluated: as a statement (parseLine) or as a condition
// (wrapped in brackets and read in comparison mode, so that "=" compares).
enum class TextMode : uint8_t { Statement, Condition };

}  // namespace lx
