// IF / ELSE / END IF and the refusal of SELECT CASE. Conditionals never jump: a block IF
// pushes one truth entry on _ifs, and the driver skips lines while the innermost is false.
#include "compiler/line_code.h"
#include "foundation/scanning.h"
#include "interpreter/condition_truth.h"
#include "interpreter/loops.h"
#include "interpreter/script_core.h"
#include "lxbasic/text.h"
#include "syntax/statement_parts.h"

namespace lx {

namespace {

// An IF condition must come out as a Number; strings are not read as booleans. Answers false
// after setting the error when it does not.
bool ifCondition(ScriptCore& script, const UString& text, const compiled::Expression* code,
                 bool& truth) {
  bool failed = false;
  if (decideCondition(script, code, failed, truth)) {
    if (!failed) return true;
    if (script.errorCode() == 0) script.setError(LxError::make(kSyntaxError));
    return false;
  }
  Variant v;
  if (!script.evaluateText(text, TextMode::Condition, v, code)) {
    if (script.errorCode() == 0) script.setError(LxError::make(kSyntaxError));
    return false;
  }
  if (!v.isNumber()) {
    script.setError(LxError::make(kSyntaxError));
    return false;
  }
  truth = v.number().toBool();
  return true;
}

}  // namespace

bool ScriptCore::ifValue(int32_t depth) const {
  if (_ifs.empty()) return true;
  auto index = static_cast<int64_t>(_ifs.size()) - (static_cast<int64_t>(depth) + 1);
  if (index < 0 || index >= static_cast<int64_t>(_ifs.size())) return false;
  return _ifs[static_cast<size_t>(index)] != 0;
}

void ScriptCore::parseIf(const UString& line) {
  runIf(splitIf(line));
}

void ScriptCore::runIf(const IfParts& parts) {
  if (!parts.hasThen) {
    setError(LxError::make(kIfWithoutThen));
    return;
  }
  const compiled::LineCode* code = currentCode_;
  if (parts.singleLine) {
    if (!ifValue()) return;
    bool truth = false;
    if (!ifCondition(*this, parts.condition, code ? code->condition : nullptr, truth)) return;
    const UString& chosen = truth ? parts.thenPart : parts.elsePart;
    if (chosen.empty()) return;
    executeText(chosen, code ? (truth ? code->thenPart : code->elsePart) : nullptr);
    return;
  }

  // A block inside a skipped region stays skipped, whatever its condition would say.
  if (!ifValue()) {
    _ifs.push_back(0);
    return;
  }
  bool truth = false;
  if (!ifCondition(*this, parts.condition, code ? code->condition : nullptr, truth)) return;
  _ifs.push_back(truth ? 1 : 0);
}

void ScriptCore::parseElse(const UString& line) {
  runElse(!afterFirstWord(line).empty());
}

void ScriptCore::runElse(bool trailing) {
  if (_ifs.empty()) {
    setError(LxError::make(kElseWithoutIf));
    return;
  }
  if (trailing) {
    setError(LxError::make(kSyntaxError));
    return;
  }
  // Both branches of an IF that sits in a skipped region stay skipped.
  if (_ifs.size() > 1 && !ifValue(1)) return;
  _ifs.back() = _ifs.back() ? 0 : 1;
}

void ScriptCore::parseEndIf(const UString& line) {
  runEndIf(!afterEndIf(line).empty());
}

void ScriptCore::runEndIf(bool trailing) {
  if (_ifs.empty()) {
    setError(LxError::make(kEndIfWithoutIf));
    return;
  }
  if (trailing) {
    setError(LxError::make(kSyntaxError));
    return;
  }
  _ifs.pop_back();
}

void ScriptCore::parseSelectCase(const UString&) {
  setError(LxError::make(kNotSupported, {}, u"SELECT CASE ... END SELECT statement"));
}
void ScriptCore::parseCase(const UString& line) {
  parseSelectCase(line);
}
void ScriptCore::parseEndSelect(const UString& line) {
  parseSelectCase(line);
}

}  // namespace lx
