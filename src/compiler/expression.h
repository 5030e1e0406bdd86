// The compiled form of one evaluation of a text by the rewriting evaluator (parseLine).
//
// Compiling replays the rewriting on the text itself, with the same scanning functions, and
// records what it would evaluate in the order it would evaluate it: each bracket, innermost
// (last opened) first, then each operator. Where the evaluator puts the name of a temporary
// into the text, the compiler puts a placeholder of the same shape and later reads it as a
// register. Running the compiled form then does what the evaluator would do, without the text.
//
// What the evaluator decides from the script's state (is this name a procedure, a variable,
// a method?) stays a decision made when the line runs, in the same order.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "compiler/leaf.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"
#include "syntax/statement_parts.h"

namespace lx {
class Frame;
}

namespace lx::compiled {

// What the evaluator would have left in the text for a bracket or an operator.
struct Result {
  enum class Kind : uint8_t { None, Value, Slot, Name };
  Kind kind = Kind::None;
  // Value: a temporary holding this value. Slot: a temporary that is an array element, read
  // when used; the value then holds the element's slot.
  Variant value;
  const Leaf* name = nullptr;  // Name: a variable's name put back into the text

  LxValue& slot() const noexcept { return *slotOf(value); }
  ValueRef slotRef() const { return slotRefOf(value); }
};

class Registers;
class Step;

// Either an operand text or the register of an earlier bracket or operator.
struct Operand {
  std::unique_ptr<Leaf> leaf;
  int32_t reg = -1;
};

class Expression {
 public:
  ~Expression();
  Expression(const Expression&) = delete;
  Expression& operator=(const Expression&) = delete;

  // nullptr when the text holds something the compiled form does not reproduce exactly; the
  // reason then says what.
  static std::unique_ptr<Expression> compile(UStringView text, bool comparition,
                                             std::string* reason);

  // The value the evaluator's answer names (what getValue of parseLine's answer gives), or
  // false when there is none (an error is then normally set).
  bool evaluate(Frame& script, Variant& out) const;
  // For a condition that is one bracketed chain of comparisons (how an IF's or a loop's
  // condition reads): its truth, decided without making the value evaluate() would answer.
  // Other when the expression is of another form (evaluate it); Failed when the evaluation
  // ended on the way, as evaluate() would have.
  enum class Truth : uint8_t { Other, Failed, False, True };
  Truth truth(Frame& script) const;
  // The same as a slot: a variable's own slot when the answer is its name.
  ValueRef evaluateSlot(Frame& script) const;
  // parseLine's effect alone; the answer is dropped.
  void execute(Frame& script) const;
  // The operand when the text is nothing but one operand: reading it is the whole run.
  const Leaf* soleLeaf() const noexcept {
    return !inline_ && !assigns_ && steps_.empty() ? final_.leaf.get() : nullptr;
  }
  // For an expression that is its sole leaf: what run() gives, as an operand reads it.
  bool readSole(Frame& script, const Leaf& leaf, Held& out) const;
  // One run inside the register file of the outermost expression (brackets and arguments
  // are expressions of their own that share it).
  Result run(Frame& script, Registers& regs) const;

 private:
  friend class Compiler;
  Expression();
  Result single(Frame& script, Registers& regs) const;
  ValueRef target(Frame& script, Registers& regs) const;
  bool checkTarget(Frame& script, const LxValue& slot) const;
  // The target and the steps; false when the evaluation ended on the way.
  bool runSteps(Frame& script, Registers& regs, ValueRef& slot) const;
  // The answer, and the assignment of it when the line assigns.
  Result finish(Frame& script, Registers& regs, const ValueRef& slot) const;

  UString original_;
  bool inline_ = false;  // EXIT or CONTINUE
  LoopJump jump_;        // its words
  bool assigns_ = false;
  UString targetText_;  // trimmed text left of "="
  UString targetKey_;
  mutable VariableCache targetCache_;
  mutable VariableCache rootTargetCache_;
  std::unique_ptr<Expression> targetExpression_;  // a target with brackets
  std::vector<std::unique_ptr<Step>> steps_;
  Operand final_;
  int32_t registers_ = 0;                // of the whole tree, on the outermost expression
  const Step* soleCondition_ = nullptr;  // the one step, when it is a comparison chain
  // The last target found to be no FOR variable, and the state that answer holds for. A loop
  // stack's version is unique to its script, so it names the script too.
  struct NotLoopVariable {
    const LxValue* slot = nullptr;
    uint64_t loops = 0;
    uint64_t vars = 0;
    bool operator==(const NotLoopVariable&) const = default;
  };
  mutable NotLoopVariable notLoopVariable_;
};

// Reads what an operand stands for when an operator or a call takes it.
bool readOperand(Frame& script, const Operand& o, Registers& regs, Held& out);
// getValue of a name that parseLine answered.
bool readResult(Frame& script, const Result& r, Held& out);

}  // namespace lx::compiled
