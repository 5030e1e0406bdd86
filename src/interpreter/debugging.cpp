// The script's side of a debugger: attaching one, reporting lines and untrapped errors to it,
// answering its evaluations; and the host's handle, LxBasicDebugger.
#include <exception>

#include "debug/debug_session.h"
#include "foundation/scanning.h"
#include "interpreter/debug_bodies.h"
#include "interpreter/debug_body_scope.h"
#include "interpreter/script_core.h"
#include "interpreter/script_handle.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"

namespace lx {

void ScriptCore::attachDebugger(std::shared_ptr<DebugSession> session) {
  if (running()) throw InvalidArgumentException("LxBasicDebugger: the script is running");
  if (shared_->debugger() && shared_->debugger()->attached()) {
    throw InvalidArgumentException("LxBasicDebugger: the script has a debugger already");
  }
  shared_->setDebugger(std::move(session));
}

void ScriptCore::detachDebugger(const DebugSession& session) {
  // A run that is active keeps the session, which no longer pauses; the next run drops it.
  if (shared_->debugger() == &session && !running()) shared_->setDebugger(nullptr);
}

void ScriptCore::startDebugging() {
  DebugSession* session = shared_->debugger();
  if (!session) return;
  if (!session->attached()) {
    shared_->setDebugger(nullptr);
    return;
  }
  session->runStarted();
}

void ScriptCore::endDebugging() {
  if (DebugSession* session = shared_->debugger()) session->runEnded();
}

bool ScriptCore::watchLine(const PreparedLine& line, DebugBodyScope& body) {
  if (shared_->lineHook() && !callLineHook()) return false;
  DebugSession* session = shared_->debugger();
  if (!session) return true;
  body.enter(*this);
  // Lines the gates pass over (a branch not taken, a loop being left, the body of a
  // definition being collected) are not run: a debugger does not stop on them.
  if (_newsub || !ifValue() || !validLoop()) return true;
  DebugBodies& bodies = *shared_->debugBodies();
  const int32_t where = sourceLine() + 1;
  bodies.at(where, line.text);
  // False only when a stop request ended a pause: its record is set, the run ends.
  return session->atLine(where, bodies.depth(), !evaluating_);
}

void ScriptCore::reportUntrappedError() {
  const ErrorRef e = error();
  if (!e || e->code() <= 0 || stopRequested()) return;
  DebugBodies& bodies = *shared_->debugBodies();
  if (bodies.callerTraps()) return;
  shared_->debugger()->atUntrappedError(sourceLine() + 1, bodies.depth(), e->snapshot());
}

UString ScriptCore::procedureName() const {
  if (isRoot()) return {};
  const ValueRef& name = variableSlot(u"__FUNC__");
  return name ? toText(name->data()) : UString();
}

DebugValue ScriptCore::evaluateForDebugger(UStringView expression) {
  DebugValue out;
  if (expression.size() > kMaxLineLength) {
    out.text = u"the expression is longer than a script line may be";
    return out;
  }
  const ErrorRef saved = error();
  const size_t temporaries = _tmps.size();
  setError(nullptr);
  // In brackets, so that a comparison or AND/OR compares as in a condition.
  UString text = u"(";
  text += expression;
  text += u")";
  try {
    const UString name = parseLine(text, true);
    if (!name.empty() && !hasError()) {
      if (ValueRef v = getValue(name)) {
        out.ok = true;
        out.value = v->data();
      }
    }
    if (!out.ok && !hasError()) out.text = u"no value";
  } catch (const std::exception& e) {
    out.text = fromUtf8(e.what());
  } catch (...) {
    out.text = u"the evaluation ended by an exception";
  }
  if (const ErrorRef failure = hasError() ? error() : nullptr) {
    out.ok = false;
    out.errorCode = failure->code();
    out.text = failure->desc();
  }
  while (_tmps.size() > temporaries) {
    _vars.erase(_tmps.back());
    _tmps.pop_back();
  }
  setError(saved);
  if (out.ok) out.text = describeValue(UString(), out.value, false).value;
  return out;
}

// ---- the host's handle

LxBasicDebugger::LxBasicDebugger(LxBasicScript& script)
    : session_(std::make_shared<DebugSession>()) {
  ScriptCore& core = coreOf(script);
  core.attachDebugger(session_);
  script_ = core.shared_from_this();
}

LxBasicDebugger::~LxBasicDebugger() {
  session_->detach();
  script_->detachDebugger(*session_);
}

int32_t LxBasicDebugger::addBreakpoint(int32_t line, UStringView condition) {
  return session_->addBreakpoint(line, UString(trimView(condition)));
}
bool LxBasicDebugger::removeBreakpoint(int32_t id) {
  return session_->removeBreakpoint(id);
}
void LxBasicDebugger::clearBreakpoints() {
  session_->clearBreakpoints();
}
std::vector<Breakpoint> LxBasicDebugger::breakpoints() const {
  return session_->breakpoints();
}
void LxBasicDebugger::breakOnError(bool on) {
  session_->breakOnError(on);
}
void LxBasicDebugger::countPausedTime(bool on) {
  session_->countPausedTime(on);
}
void LxBasicDebugger::pause() {
  session_->requestPause();
}
void LxBasicDebugger::onPause(std::function<void(const PauseEvent&)> handler) {
  session_->setPauseHandler(std::move(handler));
}
std::optional<PauseEvent> LxBasicDebugger::waitForPause(std::chrono::milliseconds limit) {
  return session_->waitForPause(limit);
}
bool LxBasicDebugger::paused() const {
  return session_->paused();
}
void LxBasicDebugger::resume(StepMode mode) {
  session_->resume(mode);
}
std::vector<DebugFrame> LxBasicDebugger::stack() {
  return session_->stack();
}
std::vector<DebugVariable> LxBasicDebugger::variables(size_t frame) {
  return session_->variables(frame);
}
DebugValue LxBasicDebugger::evaluate(UStringView expression, size_t frame) {
  return session_->evaluate(expression, frame);
}

}  // namespace lx
