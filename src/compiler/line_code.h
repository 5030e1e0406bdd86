// The compiled form of one prepared line: the texts its handler evaluates, compiled once, and
// the parts of its statement that the handler would otherwise cut out of the text each time.
// A line that cannot be compiled exactly is marked for the reference evaluator as a whole.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "compiler/expression.h"
#include "syntax/statement_parts.h"

namespace lx::compiled {

class LineCode {
 public:
  static std::unique_ptr<LineCode> compile(LineKind kind, const UString& text);

  // True when the whole line runs on the reference evaluator; reason() says why.
  bool reference() const noexcept { return reference_; }
  const std::string& reason() const noexcept { return reason_; }

  // The compiled form of a text the handler evaluates, compiled when first asked for;
  // nullptr when that text must go to the reference evaluator. Only texts a handler makes
  // while it runs (the constant condition that EXIT DO or EXIT WHILE leaves in a loop
  // record) are found this way; the line's own parts are compiled with it and handed out
  // below.
  const Expression* piece(const UString& text, TextMode mode);
  // The line itself as a statement (assignments, calls, EXIT and CONTINUE).
  const Expression* statement() const noexcept { return pieces_.front().code.get(); }

  IfParts ifParts;
  ForParts forParts;
  // The compiled parts: an IF's condition and its THEN and ELSE statements (single-line
  // form), a FOR's start, limit and step, a WHILE's condition (shared with the loop record
  // that WEND evaluates). nullptr where the line has no such part.
  const Expression* condition = nullptr;
  const Expression* thenPart = nullptr;
  const Expression* elsePart = nullptr;
  const Expression* forStart = nullptr;
  const Expression* forLimit = nullptr;
  const Expression* forStep = nullptr;
  std::shared_ptr<const Expression> whileCondition;
  // A DO's or LOOP's WHILE or UNTIL condition, bracketed as the loop record keeps it, and
  // its compiled form, which the record shares so that LOOP evaluates DO's condition.
  UString loopConditionText;
  std::shared_ptr<const Expression> loopCondition;
  bool trailing = false;  // NEXT, WEND, ELSE, END IF followed by more text
  UString rest;           // WHILE's bracketed condition; DO's and LOOP's words after the keyword

 private:
  struct Piece {
    TextMode mode;
    UString text;
    std::shared_ptr<const Expression> code;
    const UString* member = nullptr;  // the part of this line it was compiled from, if any
  };
  // Compiles a piece the line cannot do without, from one of the line's own parts; nullptr
  // when the part is empty, or when it cannot be compiled, which marks the line for the
  // reference.
  std::shared_ptr<const Expression> require(const UString& text, TextMode mode);

  std::vector<Piece> pieces_;
  bool reference_ = false;
  std::string reason_;
};

}  // namespace lx::compiled
