#include "compiler/line_code.h"

#include "syntax/statement_parts.h"

namespace lx::compiled {

namespace {

std::shared_ptr<const Expression> compilePiece(const UString& text, TextMode mode,
                                               std::string* why) {
  if (mode == TextMode::Condition) return Expression::compile(bracketed(text), true, why);
  return Expression::compile(text, false, why);
}

}  // namespace

const Expression* LineCode::piece(const UString& text, TextMode mode) {
  // The handlers hand back the parts this line keeps, so most pieces are found by address.
  for (const Piece& p : pieces_) {
    if (p.member == &text && p.mode == mode) return p.code.get();
  }
  for (const Piece& p : pieces_) {
    if (p.mode == mode && p.text == text) return p.code.get();
  }
  std::string why;
  pieces_.push_back(Piece{mode, text, compilePiece(text, mode, &why)});
  return pieces_.back().code.get();
}

std::shared_ptr<const Expression> LineCode::require(const UString& text, TextMode mode) {
  if (text.empty() || reference_) return nullptr;
  std::string why;
  auto code = compilePiece(text, mode, &why);
  if (!code) {
    reference_ = true;
    reason_ = why;
    return nullptr;
  }
  pieces_.push_back(Piece{mode, text, code, &text});
  return code;
}

std::unique_ptr<LineCode> LineCode::compile(LineKind kind, const UString& text) {
  auto line = std::make_unique<LineCode>();
  switch (kind) {
    case kOther:
      line->require(text, TextMode::Statement);
      break;
    case kIf:
      line->ifParts = splitIf(text);
      if (line->ifParts.hasThen) {
        line->condition = line->require(line->ifParts.condition, TextMode::Condition).get();
      }
      line->thenPart = line->require(line->ifParts.thenPart, TextMode::Statement).get();
      line->elsePart = line->require(line->ifParts.elsePart, TextMode::Statement).get();
      break;
    case kFor:
      line->forParts = splitFor(text);
      line->forStart = line->require(line->forParts.start, TextMode::Statement).get();
      line->forLimit = line->require(line->forParts.limit, TextMode::Statement).get();
      line->forStep = line->require(line->forParts.step, TextMode::Statement).get();
      break;
    case kNext:
    case kWEnd:
    case kElse:
      line->trailing = !afterFirstWord(text).empty();
      break;
    case kEndIf:
      line->trailing = !afterEndIf(text).empty();
      break;
    case kWhile:
      line->rest = bracketed(afterFirstWord(text));
      line->whileCondition = line->require(line->rest, TextMode::Condition);
      break;
    case kDo:
    case kLoop:
      line->rest = afterFirstWord(text);
      if (auto parts = splitLoopCondition(line->rest)) {
        line->loopConditionText = std::move(parts->condition);
        line->loopCondition = line->require(line->loopConditionText, TextMode::Condition);
      }
      break;
    default:
      // Declarations, ON ERROR and the block keywords run as they are: they are read once
      // per pass and evaluate little.
      line->reference_ = true;
      line->reason_ = "a declaration or block statement";
      break;
  }
  return line;
}

}  // namespace lx::compiled
