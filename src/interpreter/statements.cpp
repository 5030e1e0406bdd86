// parseLine: assignments, calls and expressions, evaluated by rewriting the line. Each
// innermost bracket and then each operator is evaluated and replaced in the text by the name
// of a temporary variable holding its value, until one name is left.
#include "foundation/scanning.h"
#include "interpreter/script_core.h"
#include "lxbasic/bridge.h"
#include "lxbasic/text.h"
#include "syntax/text_rules.h"

namespace lx {

bool ScriptCore::sendCounted(Object& target, const MethodInfo& method,
                             std::span<const Variant> args, CallResult* r) {
  // Calls made from a procedure's script count against the tree's call-depth limit; the
  // host's script itself does not count them.
  if (isRoot()) {
    *r = sendMsgToObj(target, method, args);
  } else {
    if (shared_->callDepth() >= 256) {
      setError(LxError::make(kStackOverflow));
      return false;
    }
    shared_->enterCall();
    try {
      *r = sendMsgToObj(target, method, args);
    } catch (...) {
      shared_->leaveCall();
      throw;
    }
    shared_->leaveCall();
  }
  // An array a host method made holds plain values; the script needs slots to index it.
  if (r->value.isArray()) r->value = scriptValueOf(r->value);
  return true;
}

ValueRef ScriptCore::callMethod(Object& target, const MethodInfo& method,
                                std::span<const Variant> args, bool* mismatch) {
  CallResult r;
  if (!sendCounted(target, method, args, &r)) return nullptr;
  *mismatch = r.argumentMismatch;
  return r.argumentMismatch ? nullptr : LxValue::make(std::move(r.value));
}

UString ScriptCore::evaluateCall(const UString& name, UString contents, const UString& line) {
  enum class Kind { Method, Procedure, Element, Function } kind;
  UString method = name;
  ObjectRef receiver;
  std::shared_ptr<LxBasicSub> sub;
  ValueRef arrayVar;
  if (name.back() == u'@') {
    kind = Kind::Method;
    method.pop_back();
    UString item = getTokenFrom(contents, u",");
    UString resultName = parseLine(item);
    ValueRef value = resultName.empty() ? nullptr : getValue(resultName);
    if (!value && hasError()) return UString();
    if (value && value->data().isObject()) receiver = value->data().object();
  } else if ((sub = getSubByName(name))) {
    kind = Kind::Procedure;
  } else if ((arrayVar = getValueForVar(name))) {
    kind = Kind::Element;
  } else {
    kind = Kind::Function;
  }

  std::vector<Variant> args;
  while (!contents.empty()) {
    UString item = getTokenFrom(contents, u",");
    UString resultName = parseLine(item);
    ValueRef value = resultName.empty() ? nullptr : getValue(resultName);
    if (!value) {
      if (!hasError()) setError(LxError::make(kVariableNotFound, line, trim(item)));
      return UString();
    }
    // An Empty value travels as the null object, so that the receiver always gets a value.
    args.push_back(value->type() == ValueKind::Empty ? Variant(nullObject()) : value->data());
  }

  if (kind == Kind::Element) {
    ValueRef element = getElement(args, arrayVar.get());
    if (!element) {
      setError(LxError::make(kIndexOutOfBounds, line));
      return UString();
    }
    return storeTempSlot(std::move(element));
  }
  if (kind == Kind::Procedure) {
    ErrorRef inner;
    CallResult r = callProcedure(*sub, args, &inner);
    if (r.argumentMismatch) {
      setError(LxError::make(kWrongArgumentCount, line));
      return UString();
    }
    if (inner) {
      setError(procedureFailure(*inner));
      return UString();
    }
    return storeTemp(std::move(r.value));
  }
  if (isForbiddenMethodName(upperCase(method))) {
    setError(LxError::make(kForbiddenCall, line));
    return UString();
  }
  const MethodInfo* found = nullptr;
  ObjectRef target;
  const auto count = static_cast<int32_t>(args.size());
  if (kind == Kind::Method) {
    found = receiver ? findMethod(receiver->lxClass(), method, count) : nullptr;
    target = receiver;
  } else {
    getSel(&found, &target, method, count);
  }
  if (!found) {
    setError(LxError::make(kFunctionNotFound, line, method));
    return UString();
  }
  bool mismatch = false;
  ValueRef result = callMethod(*target, *found, args, &mismatch);
  if (mismatch) setError(LxError::make(kWrongArgumentCount, line));
  if (!result) return UString();
  return storeTempSlot(std::move(result));
}

// One operand of a condition: NOT, a bracketed value, a comparison or a bare value.
bool ScriptCore::conditionOperand(UString operand, const UString& line, bool* truth) {
  operand = trim(operand);
  UString probe = operand;
  bool invert = false;
  if (upperCase(getTokenFrom(probe, u" ")) == u"NOT") {
    invert = true;
    operand = trim(probe);
  }
  auto readSide = [&](const UString& side) -> ValueRef {
    UString resultName = parseLine(side);
    ValueRef v = resultName.empty() ? nullptr : getValue(resultName);
    if (!v && !hasError()) setError(LxError::make(kVariableNotFound, line, trim(side)));
    return v;
  };
  bool result = false;
  if (operand.find(u'(') != UString::npos) {
    UString resultName = parseLine(operand, true);
    ValueRef v = resultName.empty() ? nullptr : getValue(resultName);
    if (!v && hasError()) return false;
    if (!v || v->type() != ValueKind::Number) {
      setError(LxError::make(kSyntaxError, line));
      return false;
    }
    result = v->data().number().toBool();
  } else {
    size_t p = operand.find(u'<');
    if (p == UString::npos) p = operand.find(u'>');
    if (p == UString::npos) p = operand.find(u'=');
    if (p == UString::npos) {
      ValueRef v = readSide(operand);
      if (!v) return false;
      ValueRef zero = LxValue::make(Variant::real(0));
      result = compareValue(*v, *zero) == 1;  // only a value above zero is true
    } else {
      enum { kEq, kLt, kGt, kNe, kLe, kGe } op = kEq;
      size_t length = 1;
      const bool nextUsable = p + 1 < operand.size() - 1;
      const char16_t sign = operand[p];
      const char16_t next = nextUsable ? operand[p + 1] : u'\0';
      if (sign == u'<' && next == u'>') {
        op = kNe, length = 2;
      } else if (sign == u'<' && next == u'=') {
        op = kLe, length = 2;
      } else if (sign == u'>' && next == u'=') {
        op = kGe, length = 2;
      } else {
        op = sign == u'<' ? kLt : sign == u'>' ? kGt : kEq;
      }
      ValueRef left = readSide(operand.substr(0, p));
      if (!left) return false;
      ValueRef right = readSide(operand.substr(p + length));
      if (!right) return false;
      const int32_t c = compareValue(*left, *right);
      switch (op) {
        case kEq:
          result = c == 0;
          break;
        case kLt:
          result = c == -1;
          break;
        case kGt:
          result = c == 1;
          break;
        case kNe:
          result = c != 0;
          break;
        case kLe:
          result = c == -1 || c == 0;
          break;
        case kGe:
          result = c == 0 || c == 1;
          break;
      }
    }
  }
  *truth = invert ? !result : result;
  return true;
}

UString ScriptCore::evaluateBracket(const UString& contents, const UString& line) {
  pollStop();
  const bool condition = contents.find_first_of(u"=<>") != UString::npos ||
                         findWord(u"NOT", contents) || findWord(u"AND", contents) ||
                         findWord(u"OR", contents);
  if (!condition) return parseLine(contents, true);
  try {
    UString split = replace(u" AND ", u"\nAND\n", contents, 1);
    split = replace(u" OR ", u"\nOR\n", split, 1);
    LxBasicStringList parts;
    parts.setText(Variant(split));
    bool result = false;
    UString op;
    for (size_t i = 0; i < parts.count(); ++i) {
      if (i % 2 == 1) {
        op = upperCase(trim(parts.stringAtIndex(i)));
        if ((op != u"AND" && op != u"OR") || i + 1 >= parts.count()) {
          setError(LxError::make(kSyntaxError, line));
          return UString();
        }
        continue;
      }
      bool truth = false;
      if (!conditionOperand(parts.stringAtIndex(i), line, &truth)) return UString();
      result = i == 0 ? truth : op == u"AND" ? (result && truth) : (result || truth);
    }
    return storeTemp(Variant::int32(result ? 1 : 0));
  } catch (...) {
    rethrowIfLimit();
    setError(LxError::make(kSyntaxError, line));
    return UString();
  }
}

UString ScriptCore::parseLine(const UString& original, bool comparition) {
  UString line = original;
  ValueRef target;

  if (!comparition) {
    if (parseInlineOps(line)) return UString();
    int32_t eq = posWithNeedle(u"=", line);
    if (eq != -1) {
      UString left = trim(UStringView(line).substr(0, static_cast<size_t>(eq)));
      if (!left.empty()) {
        UString targetName = left;
        size_t open = left.find(u'(');
        if (open != UString::npos && left.find(u')', open) != UString::npos) {
          targetName = parseLine(left);
          if (targetName.empty() && hasError()) return UString();
        }
        line.erase(0, static_cast<size_t>(eq) + 1);
        target = getValueForVar(targetName);
        if (!target && !isRoot()) target = root().getValueForVar(targetName);
        if (!target) {
          setError(LxError::make(kVariableNotFound, original, left));
          return UString();
        }
      }
    }
  }

  // Brackets, innermost (last opened) first.
  for (;;) {
    int32_t open = posLastWithNeedle(u"(", line);
    if (open == -1) {
      if (posWithNeedle(u")", line) != -1) {
        setError(LxError::make(kSyntaxError, original));
        return UString();
      }
      break;
    }
    int32_t close = posClosingBracket(line, static_cast<uint32_t>(open) + 1);
    if (close == -1) {
      setError(LxError::make(kSyntaxError, original));
      return UString();
    }
    const auto o = static_cast<size_t>(open);
    const auto c = static_cast<size_t>(close);
    size_t nameStart = o;
    while (nameStart > 0 && isNameChar(line[nameStart - 1])) --nameStart;
    UString name = trim(UStringView(line).substr(nameStart, o - nameStart));
    UString contents = line.substr(o + 1, c - o - 1);
    UString resultName = name.empty() ? evaluateBracket(contents, original)
                                      : evaluateCall(name, std::move(contents), original);
    if (resultName.empty()) {
      if (!hasError()) setError(LxError::make(kInternalError, original));
      return UString();
    }
    line.replace(nameStart, c + 1 - nameStart, resultName);
  }

  // Operators: "*", "/", "\" and "^" first, then "+", "-" and "&", each left to right.
  UString result;
  std::vector<size_t> ops;
  for (;;) {
    UString trimmed = trim(line);
    if (!trimmed.empty() && getValueForVar(trimmed)) {
      result = std::move(trimmed);
      break;
    }
    operatorPositions(line, ops);
    const size_t which = nextOperator(line, ops);
    if (which == ops.size()) {
      ValueRef v = getValue(line);
      if (!v) {
        if (!hasError()) setError(LxError::make(kVariableNotFound, original, trimmed));
        return UString();
      }
      result = storeTemp(v->data());
      break;
    }
    const size_t at = ops[which];
    const char16_t op = line[at];
    const size_t leftStart = which == 0 ? 0 : ops[which - 1] + 1;
    const size_t rightEnd = which + 1 < ops.size() ? ops[which + 1] : line.size();
    UString leftText = line.substr(leftStart, at - leftStart);
    UString rightText = line.substr(at + 1, rightEnd - at - 1);
    ValueRef left = getValue(leftText);
    // A sign with nothing before it is unary: the left value is 0, also while an earlier
    // error is still set. A name that is no value is not nothing, and is reported below.
    if (!left && (op == u'+' || op == u'-') && trim(leftText).empty()) {
      left = LxValue::make(Variant::real(0));
    }
    if (!left) {
      if (!hasError()) setError(LxError::make(kVariableNotFound, original, trim(leftText)));
      return UString();
    }
    ValueRef right = getValue(rightText);
    if (!right) {
      if (!hasError()) setError(LxError::make(kVariableNotFound, original, trim(rightText)));
      return UString();
    }
    ValueRef value = operateWithSign(op, *left, *right);
    if (!value) {
      setError(LxError::make(kInternalError, original));
      return UString();
    }
    line.replace(leftStart, rightEnd - leftStart, storeTempSlot(std::move(value)));
  }

  if (target) {
    if (isLoopVariable(target.get())) {
      setError(LxError::make(kLoopVariableChange, original));
      return UString();
    }
    if (target->constant()) {
      setError(LxError::make(kReadOnlyAssignment, original));
      return UString();
    }
    ValueRef value = getValue(result);
    if (value) target->setData(value->data());
  }
  return result;
}

}  // namespace lx
