// Reading a statement's text: its kind by its first words, and the parts of IF and FOR.
#include "syntax/statement_parts.h"

#include "foundation/scanning.h"
#include "lxbasic/text.h"

namespace lx {

LineKind classifyLine(const UString& line) {
  if (line.empty()) return kEmpty;
  UString upper = upperCase(line);
  UString w1 = getTokenFrom(upper, u" ");
  UString w2 = getTokenFrom(upper, u" ");
  if (w1 == u"REM") return kRem;
  if (w1 == u"FUNCTION" || w1 == u"SUB") return kFunc;
  if (w1 == u"END" && (w2 == u"SUB" || w2 == u"FUNCTION")) return kEndFunc;
  if (w1 == u"IF") return kIf;
  if (w1 == u"ELSE") return kElse;
  if ((w1 == u"END" && w2 == u"IF") || w2 == u"ENDIF") return kEndIf;
  if (w1 == u"SELECT" && w2 == u"CASE") return kSelectCase;
  if (w1 == u"CASE") return kCase;
  if (w1 == u"END" && w2 == u"SELECT") return kEndSelect;
  if (w1 == u"FOR") return kFor;
  if (w1 == u"NEXT") return kNext;
  if (w1 == u"WHILE") return kWhile;
  if (w1 == u"WEND") return kWEnd;
  if (w1 == u"DO") return kDo;
  if (w1 == u"LOOP") return kLoop;
  if (w1 == u"DIM") return kDim;
  if (w1 == u"REDIM") return kReDim;
  if (w1 == u"CONST") return kConst;
  if (w1 == u"ECHO") return kEcho;
  if (w1 == u"ON" && w2 == u"ERROR") return kOnError;
  return kOther;
}

UString afterFirstWord(const UString& line) {
  UString rest = line;
  getTokenFrom(rest, u" ");
  return trim(rest);
}

UString afterEndIf(const UString& line) {
  UString rest = line;
  if (upperCase(getTokenFrom(rest, u" ")) == u"END") getTokenFrom(rest, u" ");
  return trim(rest);
}

namespace {

// The statement after its first word, and where its two keywords stand in it (-1: absent).
struct Keywords {
  UString rest;
  int32_t first;
  int32_t second;
  int32_t length;
};

Keywords findKeywords(const UString& line, UStringView first, UStringView second) {
  Keywords k{afterFirstWord(line), -1, -1, 0};
  k.first = findKeyword(first, k.rest);
  k.second = findKeyword(second, k.rest);
  k.length = static_cast<int32_t>(k.rest.size());
  return k;
}

}  // namespace

IfParts splitIf(const UString& line) {
  IfParts parts;
  const auto [rest, thenAt, elseAt, length] = findKeywords(line, u"THEN", u"ELSE");
  if (thenAt == -1) return parts;
  parts.hasThen = true;
  parts.condition = slice(rest, 0, thenAt);
  parts.singleLine = length > thenAt + 5;  // text after THEN
  if (parts.singleLine) {
    const int32_t thenEnd = elseAt == -1 ? length : elseAt;
    parts.thenPart = slice(rest, thenAt + 4, thenEnd - (thenAt + 4));
    if (elseAt != -1) parts.elsePart = slice(rest, elseAt + 4, length);
  }
  return parts;
}

UString slice(UStringView s, int32_t start, int32_t count) {
  return trim(midWithString(s, static_cast<uint32_t>(start), static_cast<uint32_t>(count)));
}

UString bracketed(UStringView text) {
  UString wrapped;
  wrapped.reserve(text.size() + 2);
  wrapped.append(u"(").append(text).append(u")");
  return wrapped;
}

LoopJump splitLoopJump(const UString& line) {
  UString rest = line;
  LoopJump jump;
  jump.exit = upperCase(getTokenFrom(rest, u" ")) == u"EXIT";
  jump.target = upperCase(getTokenFrom(rest, u" "));
  jump.trailing = !trim(rest).empty();
  return jump;
}

std::optional<LoopCondition> splitLoopCondition(UString rest) {
  const UString word = upperCase(getTokenFrom(rest, u" "));
  if (word != u"WHILE" && word != u"UNTIL") return std::nullopt;
  const UString condition = trim(rest);
  if (condition.empty()) return std::nullopt;
  return LoopCondition{word == u"UNTIL", bracketed(condition)};
}

ForParts splitFor(const UString& line) {
  ForParts parts;
  const auto [rest, toAt, stepAt, length] = findKeywords(line, u"TO", u"STEP");
  if (toAt == -1) return parts;
  parts.hasTo = true;
  const UString head = slice(rest, 0, toAt);
  const int32_t limitEnd = stepAt == -1 ? length : stepAt;
  parts.limit = slice(rest, toAt + 2, limitEnd - (toAt + 2));
  if (stepAt != -1) parts.step = slice(rest, stepAt + 4, length);
  const int32_t equals = posWithNeedle(u"=", head);
  parts.name = equals == -1 ? trim(head) : slice(head, 0, equals);
  if (equals != -1) parts.start = slice(head, equals + 1, length);
  return parts;
}

}  // namespace lx
