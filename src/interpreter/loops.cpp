// FOR, WHILE and DO loops, EXIT and CONTINUE. Loops are not compiled: a header pushes a
// record, and the closing statement either sends the driver back to the header's line or
// pops the record. EXIT and CONTINUE only switch records off and prepare their conditions;
// the closing statements then do the rest.
#include "interpreter/loops.h"

#include <optional>

#include "compiler/line_code.h"
#include "foundation/scanning.h"
#include "interpreter/condition_truth.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"
#include "syntax/statement_parts.h"
#include "syntax/text_rules.h"

namespace lx {

namespace {

void fail(ScriptCore& script, int32_t code) {
  script.setError(LxError::make(code));
}

// Loop conditions are read leniently, through the leading integer of the value's text: 0.5
// and "yes" are false, 2.7 and "12abc" true, no value false.
bool loopTruth(bool present, const Variant& v) {
  return present && leadingIntOf(v) != 0;
}

// Answers false when the evaluation stopped with an error, which then stands.
bool loopCondition(ScriptCore& script, const UString& text, const compiled::Expression* code,
                   bool& truth) {
  bool failed = false;
  if (decideCondition(script, code, failed, truth)) {
    if (!failed) return true;
    if (script.errorCode() != 0) return false;
    truth = false;  // no value
    return true;
  }
  Variant v;
  const bool present = script.evaluateText(text, TextMode::Condition, v, code);
  if (!present && script.errorCode() != 0) return false;
  truth = loopTruth(present, v);
  return true;
}

// FOR's start, limit and step are read in statement mode; `failed` when an error stopped it.
// The slot, not its value: a variable named as the start is read after the limit and step.
ValueRef evaluateOperand(ScriptCore& script, const UString& text, const compiled::Expression* code,
                         bool& failed) {
  failed = false;
  if (text.empty()) return nullptr;
  ValueRef v = script.evaluateSlot(text, code);
  failed = !v && script.errorCode() != 0;
  return v;
}

bool isNumber(const ValueRef& v) {
  return v && v->type() == ValueKind::Number;
}

// The innermost record when it is of the wanted kind.
template <class Record>
Record* innermost(const ScriptCore& script, LoopKind kind) {
  if (script.loops().empty() || script.loops().back()->kind() != kind) return nullptr;
  return static_cast<Record*>(script.loops().back().get());
}

// "WHILE cond" or "UNTIL cond" after DO or LOOP; false (the record untouched) when malformed.
// The condition of a DO or LOOP line, read from its words; the compiled form that the line's
// code made of it, if any, goes with it, so that no pass looks it up by its text again.
bool readDoCondition(const UString& text, const compiled::LineCode* code, LxBasicDoLoop& loop) {
  auto parts = splitLoopCondition(text);
  if (!parts) return false;
  loop.setIsUntil(parts->until);
  loop.setExpression(std::move(parts->condition));
  if (code) loop.setCode(code->loopCondition);
  return true;
}

std::optional<LoopKind> loopKindNamed(UStringView word) {
  if (word == u"FOR") return LoopKind::For;
  if (word == u"WHILE") return LoopKind::While;
  if (word == u"DO") return LoopKind::Do;
  return std::nullopt;
}

}  // namespace

uint64_t LxBasicFor::epochOf(const ScriptCore& script) noexcept {
  return script.varsEpoch();
}

LxValue* LxBasicFor::lookUp(const ScriptCore& script) const {
  // The record keeps the name upper-cased: the table's key as it is.
  slot_ = script.variableSlot(var_).get();
  epoch_ = script.varsEpoch();
  return slot_;
}

void LxBasicFor::forceEnd(ScriptCore& script) {
  script.addVarWithName(var(), Variant::int32(max()));
}

bool ScriptCore::validLoop() const {
  return _loops.empty() || _loops.back()->valid();
}

LxLoopProtocol* ScriptCore::getLoop() const {
  return _loops.empty() ? nullptr : _loops.back().get();
}

bool ScriptCore::isLoopVariable(const LxValue* slot) const {
  if (!slot) return false;
  for (const auto& loop : _loops) {
    if (loop->kind() != LoopKind::For) continue;
    if (static_cast<const LxBasicFor&>(*loop).slotIn(*this) == slot) return true;
  }
  return false;
}

void ScriptCore::parseFor(const UString& line) {
  runFor(splitFor(line));
}

void ScriptCore::runFor(const ForParts& parts) {
  if (!parts.hasTo) return fail(*this, kSyntaxError);
  const compiled::LineCode* code = currentCode_;
  bool failed = false;
  ValueRef start = evaluateOperand(*this, parts.start, code ? code->forStart : nullptr, failed);
  if (failed) return;
  ValueRef limit = evaluateOperand(*this, parts.limit, code ? code->forLimit : nullptr, failed);
  if (failed) return;
  if (!isNumber(start) || !isNumber(limit)) return fail(*this, kVariableTypeError);

  int32_t step = 1;
  if (!parts.step.empty()) {
    ValueRef given = evaluateOperand(*this, parts.step, code ? code->forStep : nullptr, failed);
    if (failed) return;
    if (given) {
      if (!isNumber(given) || given->data().number().toInt32() == 0) {
        return fail(*this, kWrongStep);
      }
      step = given->data().number().toInt32();
    }
  }

  const Variant startValue = start->data();  // the start may be a slot the assignment replaces
  const int32_t first = startValue.number().toInt32();
  const int32_t max = limit->data().number().toInt32();
  if (!addVarWithName(parts.name, startValue)) return;

  auto loop = LxBasicFor::forWithVar(upperCase(parts.name), max, step, _curline);
  const bool inRange = (step > 0 && first <= max) || (step < 0 && first >= max);
  loop->setValid(inRange && validLoop());
  _loops.push_back(std::move(loop));
}

void ScriptCore::parseNext(const UString& line) {
  runNext(!afterFirstWord(line).empty());
}

void ScriptCore::runNext(bool trailing) {
  if (trailing) return fail(*this, kSyntaxError);
  auto* loop = innermost<LxBasicFor>(*this, LoopKind::For);
  if (!loop) return fail(*this, kNextWithoutFor);
  LxValue* slot = loop->slotIn(*this);
  if (!slot || slot->type() != ValueKind::Number) return fail(*this, kVariableTypeError);
  // 32-bit arithmetic that wraps instead of overflowing.
  const auto next = static_cast<int32_t>(static_cast<uint32_t>(slot->data().number().toInt32()) +
                                         static_cast<uint32_t>(loop->step()));
  slot->setData(Variant::int32(next));
  const bool again =
      (loop->step() > 0 && next <= loop->max()) || (loop->step() < 0 && next >= loop->max());
  if (again) {
    _curline = loop->line();
  } else {
    _loops.pop_back();
  }
}

void ScriptCore::parseWhile(const UString& line) {
  runWhile(bracketed(afterFirstWord(line)));
}

void ScriptCore::runWhile(const UString& expression) {
  const compiled::LineCode* code = currentCode_;
  const compiled::Expression* condition = code ? code->whileCondition.get() : nullptr;
  bool failed = false;
  bool truth = false;
  if (decideCondition(*this, condition, failed, truth)) {
    if (failed) return;
  } else {
    Variant v;
    if (!evaluateText(expression, TextMode::Condition, v, condition)) return;
    if (!v.isNumber() && !v.isString()) return;
    truth = loopTruth(true, v);
  }
  auto loop = LxBasicWhile::whileWithExpression(expression, _curline);
  // WEND evaluates the same condition: it keeps the compiled form rather than its text.
  if (code) loop->setCode(code->whileCondition);
  loop->setValid(truth);
  _loops.push_back(std::move(loop));
}

void ScriptCore::parseWEnd(const UString& line) {
  runWEnd(!afterFirstWord(line).empty());
}

void ScriptCore::runWEnd(bool trailing) {
  if (trailing) return fail(*this, kSyntaxError);
  auto* loop = innermost<LxBasicWhile>(*this, LoopKind::While);
  if (!loop) return fail(*this, kWendWithoutWhile);
  if (loop->valid()) {
    bool truth = false;
    if (!loopCondition(*this, loop->expression(), loop->code(), truth)) return;
    loop->setValid(truth);
    if (truth) {
      _curline = loop->line();
      return;
    }
  }
  _loops.pop_back();
}

void ScriptCore::parseDo(const UString& line) {
  runDo(afterFirstWord(line));
}

void ScriptCore::runDo(const UString& rest) {
  auto loop = LxBasicDoLoop::doLoopWithExpression(UString(), _curline);
  if (rest.empty()) {
    loop->setValid(true);
    _loops.push_back(std::move(loop));
    return;
  }
  if (!readDoCondition(rest, currentCode_, *loop)) return fail(*this, kSyntaxError);
  loop->setFirstForm(true);
  bool truth = false;
  if (!loopCondition(*this, loop->expression(), loop->code(), truth)) return;
  loop->setValid(truth != loop->isUntil());
  _loops.push_back(std::move(loop));
}

void ScriptCore::parseLoop(const UString& line) {
  runLoop(afterFirstWord(line));
}

void ScriptCore::runLoop(const UString& rest) {
  auto* loop = innermost<LxBasicDoLoop>(*this, LoopKind::Do);
  if (!loop) return fail(*this, kLoopWithoutDo);
  if (!rest.empty()) {
    if (loop->firstForm()) return fail(*this, kSyntaxError);
    // Once known (or forced by EXIT DO) the condition is not read from the line again.
    if (loop->expression().empty() && !readDoCondition(rest, currentCode_, *loop)) {
      return fail(*this, kSyntaxError);
    }
  }
  if (!loop->expression().empty()) {
    bool truth = false;
    if (!loopCondition(*this, loop->expression(), loop->code(), truth)) return;
    loop->setValid(truth != loop->isUntil());
  }
  if (loop->valid()) {
    _curline = loop->line();
  } else {
    _loops.pop_back();
  }
}

namespace {

// Switches off the innermost loop of `kind` and every loop nested in it; with `end`, also
// arranges for each to end at its closing statement. A missing loop is deliberately not an
// error: the statement just clears the script's error.
void leaveLoops(ScriptCore& script, LoopKind kind, bool end) {
  auto& loops = script.loops();
  size_t found = loops.size();
  for (size_t i = loops.size(); i-- > 0;) {
    if (loops[i]->kind() == kind) {
      found = i;
      break;
    }
  }
  if (found == loops.size()) {
    script.setError(nullptr);
    return;
  }
  // Copied, because forceEnd assigns through the script and must not see the stack move.
  const std::vector<std::shared_ptr<LxLoopProtocol>> affected(loops.begin() + found, loops.end());
  for (const auto& loop : affected) {
    loop->setValid(false);
    if (end) loop->forceEnd(script);
  }
  fail(script, kLoopExit);
}

}  // namespace

void ScriptCore::runLoopJump(const LoopJump& jump) {
  const auto kind = loopKindNamed(jump.target);
  if (jump.exit) {
    if (jump.target.empty()) return fail(*this, kCorrectExit);
    if (!kind) return;  // EXIT SUB and the like do nothing
    if (jump.trailing) return fail(*this, kSyntaxError);
    return leaveLoops(*this, *kind, true);
  }
  if (!kind || jump.trailing) return fail(*this, kSyntaxError);
  leaveLoops(*this, *kind, false);
}

}  // namespace lx
