// SUB and FUNCTION: definitions are collected by the driver into a body; a call runs that
// body in a child script on the calling thread, so that a call costs no thread switch. The
// body is prepared once and the child scripts are kept as frames, one per active call.
#include "interpreter/procedures.h"

#include <pthread.h>

#include <algorithm>
#include <cstdint>

#include "foundation/memory_budget.h"
#include "foundation/scanning.h"
#include "interpreter/call_frame.h"
#include "interpreter/script_core.h"
#include "interpreter/stack_room.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

namespace lx {

namespace {

void fail(ScriptCore& script, int32_t code) {
  script.setError(LxError::make(code));
}

// The names between the brackets of a definition; false when one of them is unusable (an
// empty one included, so that "(a,,b)" is refused while "()" has no parameters).
bool readParams(UStringView text, std::vector<UString>& params) {
  if (trim(text).empty()) return true;
  size_t start = 0;
  while (true) {
    const size_t comma = text.find(u',', start);
    UString name =
        trim(text.substr(start, comma == UStringView::npos ? UStringView::npos : comma - start));
    if (name.empty() || !checkVarName(name)) return false;
    params.push_back(std::move(name));
    if (comma == UStringView::npos) return true;
    start = comma + 1;
  }
}

// The upper-case names that DIM, CONST and FOR statements of the body name, read loosely: a
// name found here that the body never declares only costs its frames an empty entry.
std::vector<UString> declaredNames(const LxBasicStringList& body) {
  std::vector<UString> names;
  auto leadingName = [&names](UStringView text) {
    const size_t end = text.find_first_of(u" =(");
    UString name = upperCase(trim(text.substr(0, end)));
    if (checkVarName(name)) names.push_back(std::move(name));
  };
  for (size_t i = 0; i < body.count(); ++i) {
    const UString& line = body.stringAtIndex(i);
    UStringView rest = line;
    while (!rest.empty()) {
      const size_t colon = rest.find(u':');
      const UString statement = upperCase(trim(rest.substr(0, colon)));
      rest = colon == UStringView::npos ? UStringView() : rest.substr(colon + 1);
      UStringView s = statement;
      if (s.starts_with(u"FOR ")) {
        leadingName(trim(s.substr(4)));
      } else if (s.starts_with(u"DIM ") || s.starts_with(u"CONST ")) {
        UStringView list = s.substr(s.find(u' ') + 1);
        size_t depth = 0;
        size_t start = 0;
        for (size_t at = 0; at <= list.size(); ++at) {
          const char16_t c = at < list.size() ? list[at] : u',';
          if (c == u'(') ++depth;
          if (c == u')' && depth > 0) --depth;
          if (c == u',' && depth == 0) {
            leadingName(trim(list.substr(start, at - start)));
            start = at + 1;
          }
        }
      }
    }
  }
  return names;
}

}  // namespace

LxBasicSub::LxBasicSub(ScriptCore* owner, UString name, std::vector<UString> params,
                       UStringView body, bool func)
    : func_(func), name_(std::move(name)), params_(std::move(params)), owner_(owner) {
  if (!body.empty()) body_.setText(Variant(body));
  nameBindings();
}

void LxBasicSub::nameBindings() {
  boundNames_.clear();
  auto add = [this](UStringView name) {
    UString key = upperCase(name);
    if (std::find(boundNames_.begin(), boundNames_.end(), key) == boundNames_.end()) {
      boundNames_.push_back(std::move(key));
    }
  };
  for (const UString& param : params_) add(param);
  if (func_) {
    add(name_);
    add(u"result");
    add(u"function");
  }
  add(u"__func__");
  add(u"err");
  firstLocal_ = boundNames_.size();
  for (UString& key : declaredNames(body_)) {
    // A constant's name stays unbound: before its declaration it reads as the constant.
    if (ScriptCore::isPredefinedConstant(key)) continue;
    if (std::find(boundNames_.begin(), boundNames_.end(), key) == boundNames_.end()) {
      boundNames_.push_back(std::move(key));
    }
  }
  linesScanned_ = body_.count();
  frameEpoch_ = nextBindingEpoch();
  frames_.clear();  // frames bind by these names
}

void LxBasicSub::bindLocals() {
  if (activeFrames_ == 0 && linesScanned_ != body_.count()) nameBindings();
}

LxBasicSub::LxBasicSub(ScriptCore* owner) : owner_(owner) {
  nameBindings();
}
LxBasicSub::~LxBasicSub() = default;

CallResult LxBasicSub::run(std::span<const Variant> args, ErrorRef* error) {
  if (args.size() != params_.size()) return CallResult{Variant(), true};
  SharedState& shared = owner_->shared();
  if (shared.callDepth() >= kMaxCallDepth) {
    if (error) *error = LxError::make(kStackOverflow);
    return {};
  }
  if (owner_->referenceEvaluator()) return runAsChildScript(args, error);

  CallFrame& frame = takeFrame();
  struct GiveBack {
    LxBasicSub& sub;
    CallFrame& frame;
    ~GiveBack() { sub.giveBack(frame); }
  } giveBack{*this, frame};
  ScriptCore& child = frame.script();
  ProcedureBody* body = preparedBody(child);
  const LxValue* result = nullptr;
  bool ran = true;
  if (body) {
    result = frame.bind(args);
    // An exception out of the body ends only the call; the caller gets what the function had.
    // The host learns of it from the run's outcome.
    auto run = [&child, &shared, body] {
      try {
        child.runFrameBody(body->lines);
      } catch (...) {
        shared.noteSwallowed(std::current_exception());
      }
    };
    shared.enterCall();
    child.setCallLevel(shared.callDepth());
    ran = runWithStackRoom(run);
    shared.leaveCall();
  }
  return finishCall(ran, child.hasError() ? child.error() : nullptr,
                    result ? result->data() : Variant(), error);
}

CallResult LxBasicSub::finishCall(bool ran, const ErrorRef& inner, Variant value,
                                  ErrorRef* error) const {
  if (!ran) {
    if (error) *error = LxError::make(kStackOverflow);
    return {};
  }
  // A stop ends every level at once: no caller goes on with what an unfinished call left.
  if (owner_->stopRequested()) throw ScriptStopped();
  if (inner && inner->code() >= 1) {
    if (error) *error = LxError::errorWithCode(inner->code(), inner->desc(), inner->line());
    return {};
  }
  return CallResult{std::move(value), false};
}

CallResult LxBasicSub::runAsChildScript(std::span<const Variant> args, ErrorRef* error) {
  SharedState& shared = owner_->shared();
  auto child = ScriptCore::createChild(*owner_);
  child->getScript() = body_;
  for (size_t i = 0; i < params_.size(); ++i) child->addVarWithName(params_[i], args[i]);
  ValueRef result;
  if (func_) {
    // One slot under three names: assigning to any of them sets the result.
    result = LxValue::make();
    child->addVarWithName(name_, Variant(result));
    child->addVarWithName(u"result", Variant(result));
    child->addVarWithName(u"function", Variant(result));
  }
  child->addConstWithName(u"__func__", Variant(name_));

  auto body = [&child, &shared] {
    try {
      child->runScript(Variant());
    } catch (...) {
      shared.noteSwallowed(std::current_exception());
    }
  };
  shared.enterCall();
  child->setCallLevel(shared.callDepth());
  const bool ran = runWithStackRoom(body);
  shared.leaveCall();
  return finishCall(ran, child->error(), result ? result->data() : Variant(), error);
}

ProcedureBody* LxBasicSub::preparedBody(ScriptCore& frame) {
  if (prepared_ && prepared_->sourceLines == body_.count()) return prepared_.get();
  // A body grows only while its definition is open, when nothing can call it; so no active
  // call runs the lines replaced here.
  auto body = std::make_unique<ProcedureBody>();
  LxBasicStringList statements;
  if (!frame.prepare(body_, statements, body->lines)) return nullptr;
  body->sourceLines = body_.count();
  prepared_ = std::move(body);
  return prepared_.get();
}

CallFrame& LxBasicSub::takeFrame() {
  // Before the first frame is made: the body is complete by then (a body that grows later
  // keeps the names it had, and its new locals are added and dropped by name).
  if (frames_.empty()) bindLocals();
  if (activeFrames_ == frames_.size()) frames_.push_back(nullptr);
  std::unique_ptr<CallFrame>& frame = frames_[activeFrames_];
  if (!frame) frame = std::make_unique<CallFrame>(*this, *owner_);
  ++activeFrames_;
  return *frame;
}

void LxBasicSub::giveBack(CallFrame& frame) {
  // Enough for recursion a few dozen calls deep to make no new frames; deeper ones are made
  // per call.
  constexpr size_t kKeptFrames = 64;
  --activeFrames_;
  if (!frame.unbind() || activeFrames_ >= kKeptFrames) frames_[activeFrames_].reset();
}

void LxBasicSub::releaseFrames() {
  frames_.clear();
  activeFrames_ = 0;
  prepared_.reset();
}

std::shared_ptr<LxBasicSub> LxBasicSubs::addSubWithName(UStringView name,
                                                        std::vector<UString> params,
                                                        UStringView body, bool func) {
  UString key = upperCase(name);
  if (auto existing = getSubByName(key)) return existing;
  auto sub = std::make_shared<LxBasicSub>(owner_, key, std::move(params), body, func);
  subs_.emplace(std::move(key), sub);
  epoch_ = nextBindingEpoch();
  return sub;
}

void LxBasicSubs::releaseFrames() {
  for (auto& [name, sub] : subs_) sub->releaseFrames();
}

std::shared_ptr<LxBasicSub> LxBasicSubs::getSubByName(UStringView name) const {
  auto it = subs_.find(upperCase(name));
  return it == subs_.end() ? nullptr : it->second;
}

std::shared_ptr<LxBasicSubs> makeProcedureTable(ScriptCore& owner) {
  return std::make_shared<LxBasicSubs>(&owner);
}

ErrorRef procedureFailure(const LxError& inner) {
  return LxError::errorWithCode(codeOneLevelOut(inner.code()), inner.desc(), inner.line());
}

std::shared_ptr<LxBasicSub> ScriptCore::getSubByName(UStringView name) const {
  const auto& table = shared_->procedures();
  return table ? table->getSubByName(name) : nullptr;
}

void ScriptCore::parseFunc(const UString& line) {
  if (_newsub) return fail(*this, kSyntaxError);  // definitions do not nest
  UString rest = line;
  const bool func = upperCase(getTokenFrom(rest, u" ")) == u"FUNCTION";
  UString name;
  std::vector<UString> params;
  const size_t open = rest.find(u'(');
  if (open != UString::npos) {
    name = upperCase(trim(UStringView(rest).substr(0, open)));
    if (isKeyword(name)) return fail(*this, kReservedWord);
    const size_t close = rest.find(u')', open + 1);
    if (close == UString::npos) return fail(*this, kSyntaxError);
    if (!readParams(UStringView(rest).substr(open + 1, close - open - 1), params)) {
      return fail(*this, kBadVariableName);
    }
  } else {
    name = upperCase(getTokenFrom(rest, u" "));
    if (isKeyword(name)) return fail(*this, kReservedWord);
    if (!trim(rest).empty()) return fail(*this, kSyntaxError);
  }
  if (getValueForVar(name) || getSubByName(name)) return fail(*this, kRedeclaration);
  _newsub = shared_->procedures()->addSubWithName(name, std::move(params), {}, func);
}

void ScriptCore::appendToOpenProcedure(const UString& line) {
  // Each body line remembers its line in the host's text, for the line hook.
  _newsub->body().addString(Variant(line), Variant::int32(sourceLine()));
}

void ScriptCore::parseEndFunc(const UString& line) {
  if (!_newsub) return fail(*this, kSyntaxError);
  UString rest = line;
  getTokenFrom(rest, u" ");
  const UString kind = upperCase(trim(getTokenFrom(rest, u" ")));
  // The wrong closing word reports error 11, odd as that is, and keeps the definition open.
  if (kind != (_newsub->func() ? u"FUNCTION" : u"SUB")) return fail(*this, kBadVariableName);
  _newsub.reset();
}

}  // namespace lx
