// The vocabulary of generated programs: literals, names, expressions, conditions, calls of
// built-ins and of the procedures defined so far, and keywords in varied letter case.
#pragma once

#include <string>
#include <vector>

#include "difffuzz/generation_state.h"

namespace difffuzz {

class ExpressionWriter {
 public:
  explicit ExpressionWriter(GenerationState& state) : g_(state) {}

  // A keyword in upper, lower or capitalised letters; the language ignores the case.
  std::string kw(const std::string& word);
  // An operator with no, one or two blanks on either side.
  std::string spaced(const std::string& op);
  std::string numberLiteral();
  std::string stringLiteral();
  std::string dateExpr(const Scope& s);
  std::string atom(const Scope& s);
  std::string element(const Scope& s, int depth);
  // An expression nested at most `depth` deep, of any kind the language has.
  std::string expr(const Scope& s, int depth);
  std::string comparison(const Scope& s, int depth);
  std::string condition(const Scope& s, int depth);
  std::string callOf(const Procedure& p, const Scope& s, int depth);
  // A procedure the current line may call (a function when `function` is set), or nullptr.
  const Procedure* callable(bool function);

 private:
  std::string shortText();
  std::string smallNumber(const Scope& s);
  std::string arrayExpr(const Scope& s);
  std::string variable(const Scope& s);
  std::string index(const Scope& s, int depth, int bound);
  std::string binary(const Scope& s, int depth);
  std::string builtinName(const char* name);
  std::string builtin(const Scope& s, int depth);
  std::string argumentList(std::vector<std::string> args, const Scope& s);
  std::string evalCall();
  bool mayCall(bool recursive) const;
  std::string callExpression(const Scope& s, int depth);

  GenerationState& g_;
};

}  // namespace difffuzz
