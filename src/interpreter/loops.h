// The records of open FOR, WHILE and DO loops, kept innermost last on a script's loop stack,
// and the condition evaluation that loops and conditionals share.
#pragma once

#include <cstdint>
#include <memory>

#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

namespace compiled {
class Expression;
}
class ScriptCore;

enum class LoopKind { For, While, Do };

// What every loop record offers the driver and EXIT/CONTINUE. A record whose `valid` flag is
// off keeps the driver skipping ordinary lines until its closing statement.
class LxLoopProtocol {
 public:
  LxLoopProtocol(const LxLoopProtocol&) = delete;
  LxLoopProtocol& operator=(const LxLoopProtocol&) = delete;
  virtual ~LxLoopProtocol() = default;

  LoopKind kind() const noexcept { return kind_; }
  // Arranges for the closing statement to end the loop on its next visit (EXIT).
  virtual void forceEnd(ScriptCore& script) = 0;

  bool valid() const noexcept { return valid_; }
  void setValid(bool v) noexcept { valid_ = v; }
  // Index of the header in the prepared source; a new pass resumes just after it.
  int32_t line() const noexcept { return line_; }
  void setLine(int32_t l) noexcept { line_ = l; }

 protected:
  LxLoopProtocol(LoopKind kind, int32_t line) noexcept : line_(line), kind_(kind) {}

 private:
  int32_t line_;
  LoopKind kind_;
  bool valid_ = false;
};

class LxBasicFor final : public LxLoopProtocol {
 public:
  LxBasicFor(UString var, int32_t max, int32_t step, int32_t line)
      : LxLoopProtocol(LoopKind::For, line), var_(std::move(var)), max_(max), step_(step) {}
  static std::shared_ptr<LxBasicFor> forWithVar(UString var, int32_t max, int32_t step,
                                                int32_t line) {
    return std::make_shared<LxBasicFor>(std::move(var), max, step, line);
  }

  void forceEnd(ScriptCore& script) override;

  const UString& var() const noexcept { return var_; }
  void setVar(UString v) { var_ = std::move(v); }
  int32_t max() const noexcept { return max_; }
  void setMax(int32_t m) noexcept { max_ = m; }
  int32_t step() const noexcept { return step_; }
  void setStep(int32_t s) noexcept { step_ = s; }
  // The variable's slot in the script's table (nullptr when there is none), remembered while
  // the table's names stay as they are: NEXT and every assignment in the body ask for it.
  LxValue* slotIn(const ScriptCore& script) const {
    return epoch_ == epochOf(script) ? slot_ : lookUp(script);
  }

 private:
  static uint64_t epochOf(const ScriptCore& script) noexcept;
  LxValue* lookUp(const ScriptCore& script) const;
  mutable uint64_t epoch_ = 0;
  mutable LxValue* slot_ = nullptr;
  UString var_;  // upper case
  int32_t max_;
  int32_t step_;  // never 0
};

// Shared by WHILE and DO: a condition text, already wrapped in parentheses, that the closing
// statement evaluates again, and the compiled form of that text when the opening line had
// one, so that the closing line runs it instead of finding the text again.
class LxConditionLoop : public LxLoopProtocol {
 public:
  // Public so that the records can inherit it; the class itself stays abstract.
  LxConditionLoop(LoopKind kind, UString expression, int32_t line)
      : LxLoopProtocol(kind, line), expression_(std::move(expression)) {}
  const UString& expression() const noexcept { return expression_; }
  void setExpression(UString e) {
    expression_ = std::move(e);
    code_.reset();
  }
  const compiled::Expression* code() const noexcept { return code_.get(); }
  void setCode(std::shared_ptr<const compiled::Expression> code) noexcept {
    code_ = std::move(code);
  }

 protected:
  template <class Record>
  static std::shared_ptr<Record> make(UString& expression, int32_t line) {
    return std::make_shared<Record>(std::move(expression), line);
  }

 private:
  UString expression_;
  std::shared_ptr<const compiled::Expression> code_;
};

class LxBasicWhile final : public LxConditionLoop {
 public:
  LxBasicWhile(UString e, int32_t line) : LxConditionLoop(LoopKind::While, std::move(e), line) {}
  static auto whileWithExpression(UString e, int32_t line) { return make<LxBasicWhile>(e, line); }

  void forceEnd(ScriptCore&) override { setExpression(u"0"); }
};

class LxBasicDoLoop final : public LxConditionLoop {
 public:
  LxBasicDoLoop(UString e, int32_t line) : LxConditionLoop(LoopKind::Do, std::move(e), line) {}
  static auto doLoopWithExpression(UString e, int32_t line) { return make<LxBasicDoLoop>(e, line); }

  // A condition that LOOP reads as "stop", whichever way the loop tests it.
  void forceEnd(ScriptCore&) override { setExpression(isUntil_ ? u"1" : u"0"); }

  bool isUntil() const noexcept { return isUntil_; }
  void setIsUntil(bool u) noexcept { isUntil_ = u; }
  bool firstForm() const noexcept { return firstForm_; }
  void setFirstForm(bool f) noexcept { firstForm_ = f; }

 private:
  bool isUntil_ = false;
  bool firstForm_ = false;
};

}  // namespace lx
