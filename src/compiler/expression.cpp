#include "compiler/expression.h"

#include <array>
#include <memory>
#include <new>

#include "execution/frame.h"
#include "foundation/inline_values.h"
#include "foundation/memory_budget.h"
#include "foundation/scanning.h"
#include "lxbasic/bridge.h"
#include "lxbasic/text.h"
#include "syntax/quick_arithmetic.h"
#include "syntax/text_rules.h"

namespace lx::compiled {

// The results of one run of a compiled line, one per bracket and operator. Most lines need
// only a few, which then live on the stack.
class Registers {
 public:
  explicit Registers(int32_t n) : n_(n) {
    if (n > kInline) heap_ = std::make_unique<Result[]>(static_cast<size_t>(n));
    data_ = heap_ ? heap_.get() : reinterpret_cast<Result*>(storage_);
    if (!heap_) std::uninitialized_default_construct_n(data_, n);
  }
  ~Registers() {
    if (heap_) return;
    // Empty and numbers hold nothing to release: most registers skip their destructor.
    for (int32_t i = 0; i < n_; ++i) {
      if (!data_[i].value.isEmpty() && !data_[i].value.isNumber()) std::destroy_at(&data_[i]);
    }
  }
  Registers(const Registers&) = delete;
  Registers& operator=(const Registers&) = delete;
  Result& operator[](int32_t i) { return data_[i]; }

 private:
  static constexpr int32_t kInline = 6;
  int32_t n_;
  alignas(Result) unsigned char storage_[kInline * sizeof(Result)];
  std::unique_ptr<Result[]> heap_;
  Result* data_;
};

namespace {

constexpr UStringView kPlaceholder = u"____var_";
constexpr size_t kLongestCompiledText = 2000;
// What a missing operand before a sign, and the bare value of a condition, compare with.
const Variant kZero = Variant::real(0);

UString placeholder(int32_t reg) {
  UString name(kPlaceholder);
  for (char c : std::to_string(reg)) name += static_cast<char16_t>(c);
  return name;
}

// The register a placeholder names, or -1 when the text is not exactly one.
int32_t placeholderRegister(UStringView text) {
  if (!text.starts_with(kPlaceholder) || text.size() == kPlaceholder.size()) return -1;
  const UStringView digits = text.substr(kPlaceholder.size());
  if (digits.size() > 9) return -1;
  int32_t reg = 0;
  for (char16_t c : digits) {
    if (c < u'0' || c > u'9') return -1;
    reg = reg * 10 + (c - u'0');
  }
  return reg;
}

bool holdsPlaceholder(UStringView text) {
  return text.find(kPlaceholder) != UStringView::npos;
}

bool startsLikeRadix(UStringView text) {
  const UStringView t = trimView(text);
  return !t.empty() && (t[0] == u'H' || t[0] == u'h' || t[0] == u'O' || t[0] == u'o');
}

// The text as the evaluator would have it at this point: a bracket whose answer was a
// variable's name stands there as that name. Used for error messages only.
UString describe(UStringView text, Registers& regs) {
  UString out;
  size_t i = 0;
  while (true) {
    const size_t at = text.find(kPlaceholder, i);
    if (at == UStringView::npos) break;
    size_t end = at + kPlaceholder.size();
    while (end < text.size() && text[end] >= u'0' && text[end] <= u'9') ++end;
    out.append(text.substr(i, at - i));
    const int32_t reg = placeholderRegister(text.substr(at, end - at));
    const Result& r = regs[reg];
    if (r.kind == Result::Kind::Name) {
      out.append(r.name->text());
    } else {
      out.append(text.substr(at, end - at));
    }
    i = end;
  }
  out.append(text.substr(i));
  return out;
}

void fail(Frame& script, int32_t code, const UString& line) {
  script.setError(LxError::make(code, line));
}

void notFound(Frame& script, const UString& line, UStringView text, Registers& regs) {
  script.setError(LxError::make(kVariableNotFound, line, describe(text, regs)));
}

// parseLine answered a name, and getValue of it gives this.
// The answer is a temporary that dies with this call: a value, or a slot that may have no
// other owner, is kept in the Held itself.
bool present(Frame& script, Result&& r, Held& out) {
  if (r.kind == Result::Kind::Value) {
    out.own(std::move(r.value));
    return true;
  }
  if (r.kind == Result::Kind::Slot) {
    out.hold(r.slotRef());
    return true;
  }
  return r.kind != Result::Kind::None && readResult(script, r, out);
}

// An Empty value travels into a call as the null object.
const Variant kNullArgument(nullObject());
const Variant& argument(const Variant& v) {
  return v.isEmpty() ? kNullArgument : v;
}

// Call arguments; few enough to live on the stack in nearly every call, and only those made
// are constructed.
using Arguments = InlineValues<4>;

}  // namespace

bool readResult(Frame& script, const Result& r, Held& out) {
  switch (r.kind) {
    case Result::Kind::Value:
      out.point(r.value);
      return true;
    case Result::Kind::Slot:
      out.point(r.slot().data());  // the register keeps the slot alive
      return true;
    case Result::Kind::Name:
      return r.name->read(script, out);
    case Result::Kind::None:
      break;
  }
  return false;
}

bool readOperand(Frame& script, const Operand& o, Registers& regs, Held& out) {
  if (o.leaf) return o.leaf->read(script, out);
  return readResult(script, regs[o.reg], out);
}

namespace {

// What readOperand would point at, when that is known without running anything; nullptr when
// reading takes the long way.
const Variant* peekOperand(const Frame& script, const Operand& o, Registers& regs) {
  if (o.leaf) return o.leaf->peek(script);
  const Result& r = regs[o.reg];
  switch (r.kind) {
    case Result::Kind::Value:
      return &r.value;
    case Result::Kind::Slot:
      return &r.slot().data();
    case Result::Kind::Name:
      return r.name->peek(script);
    case Result::Kind::None:
      break;
  }
  return nullptr;
}

}  // namespace

// ---- steps

class Step {
 public:
  explicit Step(int32_t reg) : reg_(reg) {}
  virtual ~Step() = default;
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;
  // False when the evaluation ends here (normally with an error set).
  virtual bool run(Frame& script, Registers& regs, const UString& line) const = 0;

 protected:
  // A bracket that gave no answer and left no error is the evaluator's internal error.
  static bool bracketFailed(Frame& script, const UString& line) {
    if (!script.hasError()) fail(script, kInternalError, line);
    return false;
  }
  int32_t reg_;
};

namespace {

// A syntax error found in the text itself, reached after the brackets before it ran.
class FailStep final : public Step {
 public:
  FailStep() : Step(-1) {}
  bool run(Frame& script, Registers&, const UString& line) const override {
    fail(script, kSyntaxError, line);
    return false;
  }
};

class ApplyStep final : public Step {
 public:
  ApplyStep(int32_t reg, char16_t op, Operand left, Operand right, bool unary, UString leftText,
            UString rightText)
      : Step(reg),
        op_(op),
        unary_(unary),
        left_(std::move(left)),
        right_(std::move(right)),
        leftText_(std::move(leftText)),
        rightText_(std::move(rightText)) {}

  bool run(Frame& script, Registers& regs, const UString& line) const override {
    // Arithmetic on numbers read in place, the commonest step.
    if (const Variant* a = peekOperand(script, left_, regs)) {
      if (const Variant* b = peekOperand(script, right_, regs)) {
        if (double q; quickArithmetic(op_, *a, *b, q)) {
          Result& r = regs[reg_];
          r.kind = Result::Kind::Value;
          r.value = Variant::real(q);
          return true;
        }
      }
    }
    return runWithKindRules(script, regs, line);
  }

 private:
  // Out of line, so that the path above needs no stack frame of its own.
  [[gnu::noinline]] bool runWithKindRules(Frame& script, Registers& regs,
                                          const UString& line) const {
    Held left;
    Held right;
    bool haveLeft = readOperand(script, left_, regs, left);
    // A sign with nothing before it is unary: the left value is 0, also while an earlier
    // error is still set.
    if (!haveLeft && unary_) {
      left.point(kZero);
      haveLeft = true;
    }
    if (!haveLeft) {
      if (!script.hasError()) notFound(script, line, leftText_, regs);
      return false;
    }
    // A method read as the right operand may change the table the left one is in.
    if (right_.leaf && right_.leaf->mayRunCode(script)) left.keep();
    if (!readOperand(script, right_, regs, right)) {
      if (!script.hasError()) notFound(script, line, rightText_, regs);
      return false;
    }
    // Each register is written once, while still empty: build the value in place.
    Result& r = regs[reg_];
    r.kind = Result::Kind::Value;
    std::destroy_at(&r.value);
    try {
      std::construct_at(&r.value, script.operate(op_, left.value(), right.value()));
    } catch (...) {
      std::construct_at(&r.value);  // the register is destroyed with the others
      throw;
    }
    return true;
  }

  char16_t op_;
  bool unary_;
  Operand left_;
  Operand right_;
  UString leftText_;
  UString rightText_;
};

// A bracket without a name and without a condition: its contents evaluated as an expression.
class GroupStep final : public Step {
 public:
  GroupStep(int32_t reg, std::unique_ptr<Expression> contents)
      : Step(reg), contents_(std::move(contents)) {}
  bool run(Frame& script, Registers& regs, const UString& line) const override;

 private:
  std::unique_ptr<Expression> contents_;
};

struct Item {
  std::unique_ptr<Expression> expression;
  UString text;  // trimmed
};

// A name before a bracket: a method of an object, a procedure, an array element or a function.
class CallStep final : public Step {
 public:
  CallStep(int32_t reg, UString name, std::unique_ptr<Expression> receiver, std::vector<Item> items)
      : Step(reg),
        name_(std::move(name)),
        key_(upperCase(name_)),
        receiver_(std::move(receiver)),
        items_(std::move(items)) {
    method_ = name_.back() == u'@' ? UString(name_, 0, name_.size() - 1) : name_;
    forbidden_ = isForbiddenMethodName(upperCase(method_));
    if (!receiver_ && items_.size() == 1) soleIndex_ = items_.front().expression->soleLeaf();
  }

  bool run(Frame& script, Registers& regs, const UString& line) const override {
    // An element read by one plain index (a literal or a remembered variable, which reading
    // cannot change), the commonest call.
    if (soleIndex_) {
      resolve(script);
      if (!sub_) {
        const Variant* index = soleIndex_->peek(script);
        const ValueRef& array = lookupVariable(script, key_, variable_);
        if (index && array) return readElement(script, *array, *index, regs, line);
      }
    }
    return runCall(script, regs, line);
  }

 private:
  // Out of line, so that the element read above needs no stack frame of its own.
  [[gnu::noinline]] bool runCall(Frame& script, Registers& regs, const UString& line) const {
    enum class Kind { Method, Procedure, Element, Function } kind;
    ObjectRef receiver;
    // The tree's procedure table holds every procedure until the run ends (it only grows
    // while a script runs), so a procedure found here needs no holding of its own.
    LxBasicSub* sub = nullptr;
    ValueRef array;
    if (receiver_) {
      kind = Kind::Method;
      Held v;
      const bool have = present(script, receiver_->run(script, regs), v);
      if (!have && script.hasError()) return bracketFailed(script, line);
      if (have && v.value().isObject()) receiver = v.value().object();
    } else {
      // The array is held for the call: it may be replaced while the arguments run. A
      // function of a host object needs nothing held.
      resolve(script);
      if (sub_) {
        sub = sub_.get();
        kind = Kind::Procedure;
      } else if (const ValueRef& variable = lookupVariable(script, key_, variable_)) {
        array = variable;
        kind = Kind::Element;
      } else {
        kind = Kind::Function;
      }
    }

    Arguments args;
    for (const Item& item : items_) {
      Held v;
      const Leaf* leaf = item.expression->soleLeaf();
      if (leaf ? !leaf->read(script, v) : !present(script, item.expression->run(script, regs), v)) {
        if (!script.hasError()) notFound(script, line, item.text, regs);
        return bracketFailed(script, line);
      }
      args.push(argument(v.value()));
    }

    Result& r = regs[reg_];
    switch (kind) {
      case Kind::Element: {
        ValueRef element = getElement(args.span(), array.get());
        if (!element) {
          fail(script, kIndexOutOfBounds, line);
          return false;
        }
        r.kind = Result::Kind::Slot;
        r.value = Variant(ObjectRef(std::move(element)));
        return true;
      }
      case Kind::Procedure: {
        ErrorRef inner;
        CallResult answer = script.callProcedure(*sub, args.span(), &inner);
        if (answer.argumentMismatch) {
          fail(script, kWrongArgumentCount, line);
          return false;
        }
        if (inner) {
          script.setError(procedureFailure(*inner));
          return false;
        }
        r.kind = Result::Kind::Value;
        r.value = std::move(answer.value);
        return true;
      }
      case Kind::Method:
      case Kind::Function:
        return call(script, kind == Kind::Method, receiver, args, r, line);
    }
    return false;
  }

  // The procedure of that name, if any; one hides a variable of its name, so the variables are
  // looked at only when there is none.
  void resolve(Frame& script) const {
    const uint64_t subsEpoch = script.proceduresEpoch();
    if (subsEpoch_ != subsEpoch) {
      sub_ = script.getSubByName(key_);
      subsEpoch_ = subsEpoch;
    }
  }

  bool readElement(Frame& script, const LxValue& array, const Variant& index, Registers& regs,
                   const UString& line) const {
    Result& r = regs[reg_];
    if (array.type() != ValueKind::Array) {
      r.kind = Result::Kind::Slot;  // a new Empty slot, as for any index
      r.value = Variant(ObjectRef(LxValue::make()));
      return true;
    }
    const Variant* item = itemAt(array.data(), leadingIntOf(argument(index)));
    if (!item || !slotOf(*item)) {
      fail(script, kIndexOutOfBounds, line);
      return false;
    }
    r.kind = Result::Kind::Slot;
    r.value = *item;
    return true;
  }

  bool call(Frame& script, bool onReceiver, const ObjectRef& receiver, const Arguments& args,
            Result& r, const UString& line) const {
    if (forbidden_) {
      fail(script, kForbiddenCall, line);
      return false;
    }
    const auto count = static_cast<int32_t>(args.span().size());
    const MethodInfo* found = nullptr;
    // The receiver's value holds its object for the call; a registered object is held by the
    // frame's list, which no host entry may change while the script runs.
    Object* target = nullptr;
    if (onReceiver) {
      found = receiver ? findMethod(receiver->lxClass(), method_, count) : nullptr;
      target = receiver.get();
    } else {
      if (objsEpoch_ != script.objsEpoch()) {
        function_ = nullptr;
        functionTarget_ = script.findSel(&function_, method_, count);
        objsEpoch_ = script.objsEpoch();
      }
      found = function_;
      if (found) target = script.getObjs()[static_cast<size_t>(functionTarget_)].get();
    }
    if (!found) {
      script.setError(LxError::make(kFunctionNotFound, line, method_));
      return false;
    }
    CallResult answer;
    if (!script.sendCounted(*target, *found, args.span(), &answer)) return false;
    if (answer.argumentMismatch) {
      fail(script, kWrongArgumentCount, line);
      return false;
    }
    r.kind = Result::Kind::Value;
    r.value = std::move(answer.value);
    return true;
  }

  UString name_;
  UString key_;
  UString method_;
  bool forbidden_ = false;
  std::unique_ptr<Expression> receiver_;  // for name@(object, ...)
  std::vector<Item> items_;
  const Leaf* soleIndex_ = nullptr;  // the one index when it is a plain operand
  mutable uint64_t subsEpoch_ = 0;
  mutable std::shared_ptr<LxBasicSub> sub_;
  mutable VariableCache variable_;
  mutable uint64_t objsEpoch_ = 0;
  mutable const MethodInfo* function_ = nullptr;
  mutable int32_t functionTarget_ = -1;  // the function's object: its index in the list
};

// One operand of a bracketed condition: NOT, a bracketed value, a comparison or a bare value.
class Comparison {
 public:
  enum class Form { Bracketed, Bare, Compare };
  enum class Op { Eq, Lt, Gt, Ne, Le, Ge };

  bool invert = false;
  Form form = Form::Bare;
  Op op = Op::Eq;
  std::unique_ptr<Expression> left;  // the bracketed value, the bare value or the left side
  std::unique_ptr<Expression> right;
  UString leftText;
  UString rightText;

  bool run(Frame& script, Registers& regs, const UString& line, bool& truth) const {
    bool result = false;
    if (form == Form::Bracketed) {
      Held v;
      const bool have = present(script, left->run(script, regs), v);
      if (!have && script.hasError()) return false;
      if (!have || !v.value().isNumber()) {
        fail(script, kSyntaxError, line);
        return false;
      }
      result = v.value().number().toBool();
    } else if (form == Form::Bare) {
      Held v;
      if (!side(script, regs, line, *left, leftText, v)) return false;
      result = compareValues(v.value(), kZero) == 1;  // only a value above zero is true
    } else {
      int32_t c = 0;
      if (!compareSides(script, regs, line, c)) return false;
      switch (op) {
        case Op::Eq:
          result = c == 0;
          break;
        case Op::Lt:
          result = c == -1;
          break;
        case Op::Gt:
          result = c == 1;
          break;
        case Op::Ne:
          result = c != 0;
          break;
        case Op::Le:
          result = c == -1 || c == 0;
          break;
        case Op::Ge:
          result = c == 0 || c == 1;
          break;
      }
    }
    truth = invert ? !result : result;
    return true;
  }

 private:
  // compareValues of the two sides, read in order. Two numbers known without running anything
  // (variables, literals) are ordered where they are, without holding them.
  bool compareSides(Frame& script, Registers& regs, const UString& line, int32_t& c) const {
    const Leaf* a = left->soleLeaf();
    const Leaf* b = a ? right->soleLeaf() : nullptr;
    if (b) {
      const Variant* x = a->peek(script);
      const Variant* y = x ? b->peek(script) : nullptr;
      if (y && quickOrder(*x, *y, c)) return true;
    }
    Held l;
    Held r;
    if (!side(script, regs, line, *left, leftText, l)) return false;
    l.keep();  // the right side may run anything
    if (!side(script, regs, line, *right, rightText, r)) return false;
    c = compareValues(l.value(), r.value());
    return true;
  }
  static bool side(Frame& script, Registers& regs, const UString& line, const Expression& e,
                   const UString& text, Held& out) {
    if (const Leaf* leaf = e.soleLeaf()) return e.readSole(script, *leaf, out);
    if (present(script, e.run(script, regs), out)) return true;
    if (!script.hasError()) notFound(script, line, text, regs);
    return false;
  }
};

struct ConditionPart {
  Comparison operand;    // even parts
  bool validOp = false;  // odd parts: AND or OR
  bool isAnd = false;
};

class ConditionStep final : public Step {
 public:
  ConditionStep(int32_t reg, std::vector<ConditionPart> parts)
      : Step(reg), parts_(std::move(parts)) {}

  bool run(Frame& script, Registers& regs, const UString& line) const override {
    bool result = false;
    if (!decide(script, regs, line, result)) return false;
    Result& r = regs[reg_];
    r.kind = Result::Kind::Value;
    r.value = Variant::int32(result ? 1 : 0);
    return true;
  }

  // The chain's truth (every operand is evaluated: AND and OR do not stop early).
  bool decide(Frame& script, Registers& regs, const UString& line, bool& result) const {
    try {
      for (size_t i = 0; i < parts_.size(); ++i) {
        if (i % 2 == 1) {
          if (!parts_[i].validOp || i + 1 >= parts_.size()) {
            fail(script, kSyntaxError, line);
            return false;
          }
          continue;
        }
        bool truth = false;
        if (!parts_[i].operand.run(script, regs, line, truth)) return bracketFailed(script, line);
        result = i == 0 ? truth : parts_[i - 1].isAnd ? (result && truth) : (result || truth);
      }
      return true;
    } catch (...) {
      // Whatever goes wrong inside a condition is a syntax error of the line, but for the
      // limits that end the line itself.
      rethrowIfLimit();
      fail(script, kSyntaxError, line);
      return false;
    }
  }

 private:
  std::vector<ConditionPart> parts_;
};

}  // namespace

bool GroupStep::run(Frame& script, Registers& regs, const UString& line) const {
  Result r = contents_->run(script, regs);
  if (r.kind == Result::Kind::None) return bracketFailed(script, line);
  regs[reg_] = std::move(r);
  return true;
}

// ---- the compiler: the rewriting, replayed on the text

class Compiler {
 public:
  std::unique_ptr<Expression> expression(UStringView text, bool comparition, bool nested);
  int32_t registers = 0;
  std::string reason;

 private:
  bool reject(const char* why) {
    if (reason.empty()) reason = why;
    return false;
  }
  bool operand(UStringView text, Operand& out);
  std::unique_ptr<Step> bracket(const UString& contents, int32_t reg);
  std::unique_ptr<Step> call(const UString& name, UString contents, int32_t reg);
  bool comparison(const UString& text, Comparison& out);
};

bool Compiler::operand(UStringView text, Operand& out) {
  const UString t = trim(text);
  out.reg = placeholderRegister(t);
  if (out.reg >= 0 && out.reg < registers) return true;
  out.reg = -1;
  if (holdsPlaceholder(t)) return reject("an operand runs into a bracket's value");
  out.leaf = std::make_unique<Leaf>(t);
  return true;
}

std::unique_ptr<Expression> Compiler::expression(UStringView text, bool comparition, bool nested) {
  std::unique_ptr<Expression> e(new Expression());
  e->original_ = UString(text);
  UString line(text);
  if (!comparition) {
    if (isInlineOperation(line)) {
      if (nested) {
        reject("EXIT or CONTINUE inside an expression");
        return nullptr;
      }
      e->inline_ = true;
      e->jump_ = splitLoopJump(line);
      return e;
    }
    const int32_t eq = posWithNeedle(u"=", line);
    if (eq != -1) {
      UString left = trim(UStringView(line).substr(0, static_cast<size_t>(eq)));
      if (!left.empty()) {
        e->assigns_ = true;
        const size_t open = left.find(u'(');
        if (open != UString::npos && left.find(u')', open) != UString::npos) {
          e->targetExpression_ = expression(left, false, true);
          if (!e->targetExpression_) return nullptr;
        }
        e->targetKey_ = upperCase(left);
        e->targetText_ = std::move(left);
        line.erase(0, static_cast<size_t>(eq) + 1);
      }
    }
  }

  // Brackets, innermost (last opened) first.
  for (;;) {
    const int32_t open = posLastWithNeedle(u"(", line);
    if (open == -1) {
      if (posWithNeedle(u")", line) != -1) {
        e->steps_.push_back(std::make_unique<FailStep>());
        return e;
      }
      break;
    }
    const int32_t close = posClosingBracket(line, static_cast<uint32_t>(open) + 1);
    if (close == -1) {
      e->steps_.push_back(std::make_unique<FailStep>());
      return e;
    }
    const auto o = static_cast<size_t>(open);
    const auto c = static_cast<size_t>(close);
    size_t nameStart = o;
    while (nameStart > 0 && isNameChar(line[nameStart - 1])) --nameStart;
    const UString name = trim(UStringView(line).substr(nameStart, o - nameStart));
    if (holdsPlaceholder(name)) {
      reject("a bracket follows a bracket");
      return nullptr;
    }
    // A name right after the bracket would run into the temporary's name, making a name of
    // its own that the evaluator would then look up.
    if (c + 1 < line.size() && isNameChar(line[c + 1])) {
      reject("a name follows a bracket");
      return nullptr;
    }
    const UString contents = line.substr(o + 1, c - o - 1);
    // A bracket holding just a variable is replaced by that variable's name; after "&" a name
    // starting with H or O then reads as a radix literal and glues the operands together.
    if (name.empty() && o > 0 && line[o - 1] == u'&' && startsLikeRadix(contents)) {
      reject("a variable in brackets after \"&\" reads as a radix literal");
      return nullptr;
    }
    const int32_t reg = registers++;
    auto step = name.empty() ? bracket(contents, reg) : call(name, contents, reg);
    if (!step) return nullptr;
    e->steps_.push_back(std::move(step));
    line.replace(nameStart, c + 1 - nameStart, placeholder(reg));
  }

  // Operators: "*", "/", "\" and "^" first, then "+", "-" and "&", each left to right.
  std::vector<size_t> ops;
  for (;;) {
    operatorPositions(line, ops);
    const size_t which = nextOperator(line, ops);
    if (which == ops.size()) {
      if (!operand(line, e->final_)) return nullptr;
      break;
    }
    const size_t at = ops[which];
    const char16_t op = line[at];
    const size_t leftStart = which == 0 ? 0 : ops[which - 1] + 1;
    const size_t rightEnd = which + 1 < ops.size() ? ops[which + 1] : line.size();
    const UStringView leftText = UStringView(line).substr(leftStart, at - leftStart);
    const UStringView rightText = UStringView(line).substr(at + 1, rightEnd - at - 1);
    Operand left;
    Operand right;
    if (!operand(leftText, left) || !operand(rightText, right)) return nullptr;
    const bool unary = (op == u'+' || op == u'-') && trimView(leftText).empty();
    const int32_t reg = registers++;
    e->steps_.push_back(std::make_unique<ApplyStep>(reg, op, std::move(left), std::move(right),
                                                    unary, trim(leftText), trim(rightText)));
    line.replace(leftStart, rightEnd - leftStart, placeholder(reg));
  }
  return e;
}

std::unique_ptr<Step> Compiler::bracket(const UString& contents, int32_t reg) {
  const bool condition = contents.find_first_of(u"=<>") != UString::npos ||
                         findWord(u"NOT", contents) || findWord(u"AND", contents) ||
                         findWord(u"OR", contents);
  if (!condition) {
    auto inner = expression(contents, true, true);
    if (!inner) return nullptr;
    return std::make_unique<GroupStep>(reg, std::move(inner));
  }
  UString split = replace(u" AND ", u"\nAND\n", contents, 1);
  split = replace(u" OR ", u"\nOR\n", split, 1);
  LxBasicStringList lines;
  lines.setText(Variant(split));
  std::vector<ConditionPart> parts(lines.count());
  for (size_t i = 0; i < lines.count(); ++i) {
    if (i % 2 == 1) {
      const UString op = upperCase(trim(lines.stringAtIndex(i)));
      parts[i].validOp = op == u"AND" || op == u"OR";
      parts[i].isAnd = op == u"AND";
    } else if (!comparison(lines.stringAtIndex(i), parts[i].operand)) {
      return nullptr;
    }
  }
  return std::make_unique<ConditionStep>(reg, std::move(parts));
}

bool Compiler::comparison(const UString& text, Comparison& out) {
  UString operand = trim(text);
  UString probe = operand;
  if (upperCase(getTokenFrom(probe, u" ")) == u"NOT") {
    out.invert = true;
    operand = trim(probe);
  }
  if (operand.find(u'(') != UString::npos) {
    out.form = Comparison::Form::Bracketed;
    out.left = expression(operand, true, true);
    return out.left != nullptr;
  }
  size_t p = operand.find(u'<');
  if (p == UString::npos) p = operand.find(u'>');
  if (p == UString::npos) p = operand.find(u'=');
  if (p == UString::npos) {
    out.form = Comparison::Form::Bare;
    out.leftText = trim(operand);
    out.left = expression(operand, false, true);
    return out.left != nullptr;
  }
  out.form = Comparison::Form::Compare;
  using Op = Comparison::Op;
  size_t length = 1;
  const bool nextUsable = p + 1 < operand.size() - 1;
  const char16_t sign = operand[p];
  const char16_t next = nextUsable ? operand[p + 1] : u'\0';
  if (sign == u'<' && next == u'>') {
    out.op = Op::Ne, length = 2;
  } else if (sign == u'<' && next == u'=') {
    out.op = Op::Le, length = 2;
  } else if (sign == u'>' && next == u'=') {
    out.op = Op::Ge, length = 2;
  } else {
    out.op = sign == u'<' ? Op::Lt : sign == u'>' ? Op::Gt : Op::Eq;
  }
  const UString left = operand.substr(0, p);
  const UString right = operand.substr(p + length);
  out.leftText = trim(left);
  out.rightText = trim(right);
  out.left = expression(left, false, true);
  if (!out.left) return false;
  out.right = expression(right, false, true);
  return out.right != nullptr;
}

std::unique_ptr<Step> Compiler::call(const UString& name, UString contents, int32_t reg) {
  std::unique_ptr<Expression> receiver;
  if (name.back() == u'@') {
    receiver = expression(getTokenFrom(contents, u","), false, true);
    if (!receiver) return nullptr;
  }
  std::vector<Item> items;
  while (!contents.empty()) {
    UString item = getTokenFrom(contents, u",");
    auto e = expression(item, false, true);
    if (!e) return nullptr;
    items.push_back(Item{std::move(e), trim(item)});
  }
  return std::make_unique<CallStep>(reg, name, std::move(receiver), std::move(items));
}

// ---- running

Expression::Expression() = default;
Expression::~Expression() = default;

std::unique_ptr<Expression> Expression::compile(UStringView text, bool comparition,
                                                std::string* reason) {
  Compiler compiler;
  std::unique_ptr<Expression> e;
  if (text.find(u"____") != UStringView::npos) {
    compiler.reason = "the line names a temporary";
  } else if (text.size() > kLongestCompiledText) {
    // Compiling replays the rewriting, whose work grows with the square of the length.
    compiler.reason = "the line is too long to compile";
  } else {
    e = compiler.expression(text, comparition, false);
  }
  if (!e) {
    if (reason) *reason = compiler.reason;
    return nullptr;
  }
  e->registers_ = compiler.registers;
  if (!e->inline_ && !e->assigns_ && e->steps_.size() == 1 && !e->final_.leaf &&
      dynamic_cast<const ConditionStep*>(e->steps_.front().get()) != nullptr) {
    e->soleCondition_ = e->steps_.front().get();
  }
  return e;
}

Expression::Truth Expression::truth(Frame& script) const {
  if (!soleCondition_) return Truth::Other;
  Registers regs(registers_);
  bool result = false;
  if (!static_cast<const ConditionStep*>(soleCondition_)->decide(script, regs, original_, result)) {
    return Truth::Failed;
  }
  return result ? Truth::True : Truth::False;
}

bool Expression::evaluate(Frame& script, Variant& out) const {
  Registers regs(registers_);
  Held held;
  if (!present(script, run(script, regs), held)) return false;
  out = held.value();
  return true;
}

ValueRef Expression::target(Frame& script, Registers& regs) const {
  ValueRef slot;
  const UString* key = &targetKey_;
  bool cached = !targetExpression_;
  if (targetExpression_) {
    Result r = targetExpression_->run(script, regs);
    if (r.kind == Result::Kind::None && script.hasError()) return nullptr;
    // The evaluator looks up the name its bracket answered: a temporary that is the element's
    // slot or holds the value, or a variable's name.
    if (r.kind == Result::Kind::Slot) return r.slotRef();
    if (r.kind == Result::Kind::Value) return LxValue::make(std::move(r.value));
    static const UString kNone;
    key = r.kind == Result::Kind::Name ? &r.name->key() : &kNone;
  }
  if (cached) {
    slot = lookupVariable(script, *key, targetCache_);
  } else {
    slot = script.getValueForVar(*key);
  }
  // Assignment falls back to the root script's variables; reading does not.
  if (!slot && !script.isRoot()) {
    Frame& root = script.root();
    slot = cached ? lookupVariable(root, *key, rootTargetCache_) : root.getValueForVar(*key);
  }
  if (!slot) script.setError(LxError::make(kVariableNotFound, original_, targetText_));
  return slot;
}

bool Expression::readSole(Frame& script, const Leaf& leaf, Held& out) const {
  if (leaf.read(script, out)) return true;
  if (!script.hasError()) {
    script.setError(LxError::make(kVariableNotFound, original_, leaf.text()));
  }
  return false;
}

Result Expression::single(Frame& script, Registers& regs) const {
  const Leaf* leaf = final_.leaf.get();
  if (!leaf) {
    Result& r = regs[final_.reg];
    if (r.kind != Result::Kind::Name) return std::move(r);
    leaf = r.name;
  }
  // A line that is just a variable's name answers that name; anything else is read now.
  if (leaf->variable(script)) return Result{Result::Kind::Name, {}, leaf};
  Held held;
  if (!leaf->read(script, held)) {
    if (!script.hasError()) {
      script.setError(LxError::make(kVariableNotFound, original_, leaf->text()));
    }
    return {};
  }
  return Result{Result::Kind::Value, held.value(), nullptr};
}

ValueRef Expression::evaluateSlot(Frame& script) const {
  Registers regs(registers_);
  Result r = run(script, regs);
  switch (r.kind) {
    case Result::Kind::Slot:
      return r.slotRef();
    case Result::Kind::Value:
      return LxValue::make(std::move(r.value));
    case Result::Kind::Name:
      if (const ValueRef& slot = r.name->variable(script)) return slot;
      if (Held v; r.name->read(script, v)) return LxValue::make(v.value());
      return nullptr;
    case Result::Kind::None:
      break;
  }
  return nullptr;
}

bool Expression::checkTarget(Frame& script, const LxValue& slot) const {
  // Whether a slot is a FOR variable depends on the open loops and on the names of the table.
  const NotLoopVariable now{&slot, script.loopsVersion(), script.varsEpoch()};
  if (notLoopVariable_ != now) {
    if (script.isLoopVariable(&slot)) {
      fail(script, kLoopVariableChange, original_);
      return false;
    }
    notLoopVariable_ = now;
  }
  if (slot.constant()) {
    fail(script, kReadOnlyAssignment, original_);
    return false;
  }
  return true;
}

// Inlined into both callers: a statement runs it once per line.
[[gnu::always_inline]] inline bool Expression::runSteps(Frame& script, Registers& regs,
                                                        ValueRef& slot) const {
  if (assigns_) {
    // A plain name found before: its slot, unless the table has changed since.
    if (!targetExpression_ && targetCache_.slot && targetCache_.epoch == script.varsEpoch()) {
      slot = targetCache_.slot;
    } else {
      slot = target(script, regs);
      if (!slot) return false;
    }
  }
  for (const auto& step : steps_) {
    if (!step->run(script, regs, original_)) return false;
  }
  return true;
}

Result Expression::finish(Frame& script, Registers& regs, const ValueRef& slot) const {
  Result result = single(script, regs);
  if (!assigns_ || result.kind == Result::Kind::None) return result;
  if (!checkTarget(script, *slot)) return {};
  Held v;
  if (readResult(script, result, v)) slot->setData(v.value());
  return result;
}

void Expression::execute(Frame& script) const {
  if (inline_) {
    script.loopJump(jump_);
    return;
  }
  Registers regs(registers_);
  ValueRef slot;
  if (!runSteps(script, regs, slot)) return;
  // An assignment whose value was computed last goes straight into its target.
  if (assigns_ && !final_.leaf) {
    Result& r = regs[final_.reg];
    if (r.kind == Result::Kind::Value || r.kind == Result::Kind::Slot) {
      if (!checkTarget(script, *slot)) return;
      if (r.kind == Result::Kind::Value) {
        slot->setData(std::move(r.value));
      } else {
        slot->setData(r.slot().data());
      }
      return;
    }
  }
  finish(script, regs, slot);
}

Result Expression::run(Frame& script, Registers& regs) const {
  if (inline_) {
    script.loopJump(jump_);
    return {};
  }
  ValueRef slot;
  if (!runSteps(script, regs, slot)) return {};
  return finish(script, regs, slot);
}

}  // namespace lx::compiled
