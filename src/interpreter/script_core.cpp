// The script object's lifecycle and the operations a host calls.
#include "interpreter/script_core.h"

#include <chrono>

#include "builtins/library.h"
#include "foundation/scanning.h"
#include "interpreter/procedures.h"
#include "lxbasic/bridge.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"

namespace lx {

ScriptCore::ScriptCore(ScriptCore* root) : Frame(root) {}

ScriptCore::~ScriptCore() {
  if (!isRoot() || !shared_) return;
  // Idle call frames are children of this script that its procedures keep.
  if (const auto& table = shared_->procedures()) table->releaseFrames();
  // Arrays that contain themselves would outlive the script; only the script tree's root
  // knows that none of its runs is left to use them.
  shared_->budget()->breakCycles();
}

std::shared_ptr<ScriptCore> ScriptCore::create() {
  std::shared_ptr<ScriptCore> script(new ScriptCore(nullptr));
  script->shared_ = std::make_shared<SharedState>(*script);
  script->shared_->setProcedures(makeProcedureTable(*script));
  script->proceduresEpoch_ = script->shared_->procedures()->epochAddress();
  script->initialise();
  return script;
}

std::shared_ptr<ScriptCore> ScriptCore::createChild(ScriptCore& owner) {
  std::shared_ptr<ScriptCore> child(new ScriptCore(&owner.root()));
  child->shared_ = owner.shared_;
  child->proceduresEpoch_ = owner.proceduresEpoch_;
  child->initialise();
  child->_objs.insert(child->_objs.end(), owner._objs.begin() + (owner._objs.empty() ? 0 : 1),
                      owner._objs.end());
  child->objsEpoch_ = nextBindingEpoch();
  return child;
}

void ScriptCore::initialise() {
  library_ = std::make_shared<LxBasicFunc>();
  library_->attach(*this);
  showConstants(kLibraryConstants);
  addObj(library_);
  addConstWithName(u"err", Variant(std::make_shared<LxError>(0, UString(), UString(), -1)));
  showConstants(kScriptConstants);
}

void ScriptCore::setScript(const Variant& text) {
  // A byte order mark read along with a file's text is not part of the first statement.
  if (text.isString() && !text.string().empty() && text.string().front() == u'\uFEFF') {
    _script.setText(Variant(UStringView(text.string()).substr(1)));
    return;
  }
  _script.setText(text);
}

UString ScriptCore::script() const {
  return _script.text();
}

void ScriptCore::setTimeout(int32_t seconds) {
  if (running()) return;
  shared_->setTimeLimit(seconds < 0 ? -1 : int64_t{seconds} * 1000, seconds);
}

int32_t ScriptCore::line() const {
  return running() ? currentScriptLine_.load() : -1;
}

void ScriptCore::terminate() {
  requestStop(LxError::make(kCorrectExit));
}

void ScriptCore::reset() {
  namesChanged();
  objsEpoch_ = nextBindingEpoch();
  _vars.clear();
  _objs.clear();
  constantsShown_ = 0;
  _ifs.clear();
  _loops.clear();
  {
    // The stop of a finished run no longer guards its record.
    std::lock_guard lock(errorMutex_);
    if (!running()) stopSticky_ = false;
  }
  setError(nullptr);
  addVarWithName(u"err", Variant(std::make_shared<LxError>(0, UString(), UString(), -1)));
  _curline = 0;
  _ignore_error = 0;
  if (isRoot()) shared_->budget()->breakCycles();
}

void ScriptCore::restart() {
  if (running()) throw InvalidArgumentException("restart: the script is running");
  _vars.clear();
  namesChanged();
  constantsShown_ = 0;
  _objs.clear();
  _ifs.clear();
  _loops.clear();
  _tmps.clear();
  _newsub.reset();
  if (const auto& table = shared_->procedures()) table->releaseFrames();
  shared_->setProcedures(makeProcedureTable(*this));
  proceduresEpoch_ = shared_->procedures()->epochAddress();
  lastCallSub_.reset();
  _curline = 0;
  _ignore_error = 0;
  shared_->resetCallDepth();
  setError(nullptr);
  shared_->clearStop();
  clearLastException();
  initialise();
}

void ScriptCore::setLastException(std::exception_ptr e) {
  std::lock_guard lock(exceptionMutex_);
  lastException_ = std::move(e);
  hasLastException_.store(lastException_ != nullptr);
}

void ScriptCore::clearLastException() {
  if (!hasLastException_.load()) return;  // the common case takes no lock
  std::lock_guard lock(exceptionMutex_);
  lastException_ = nullptr;
  hasLastException_.store(false);
}

void ScriptCore::addObj(ObjectRef obj) {
  if (!obj) return;
  if (auto* aware = dynamic_cast<ScriptAware*>(obj.get())) {
    LxBasicScript handle(shared_from_this());
    aware->initWithScript(handle);
  }
  _objs.push_back(std::move(obj));
  // Registration may also have defined constants (the library does).
  objsEpoch_ = nextBindingEpoch();
  namesChanged();
}

void ScriptCore::removeObj(int32_t index) {
  if (index < 0 || static_cast<size_t>(index) >= _objs.size()) {
    throw RangeException("removeObj: index " + std::to_string(index) + " out of range");
  }
  _objs.erase(_objs.begin() + index);
  objsEpoch_ = nextBindingEpoch();
}

bool ScriptCore::getSel(const MethodInfo** method, ObjectRef* obj, UStringView name,
                        int32_t n) const {
  const int32_t index = findSel(method, name, n);
  if (index < 0) return false;
  *obj = _objs[static_cast<size_t>(index)];
  return true;
}

int32_t ScriptCore::findSel(const MethodInfo** method, UStringView name, int32_t n) const {
  for (size_t i = 0; i < _objs.size(); ++i) {
    if (const MethodInfo* m = findMethod(_objs[i]->lxClass(), name, n)) {
      *method = m;
      return static_cast<int32_t>(i);
    }
  }
  return -1;
}

std::exception_ptr ScriptCore::lastException() const {
  std::lock_guard lock(exceptionMutex_);
  return lastException_;
}

bool ScriptCore::isKeyword(UStringView word) const {
  UString upper = upperCase(word);
  for (const UString& reserved : reservedWords()) {
    if (reserved == upper) return true;
  }
  return false;
}

Variant ScriptCore::resultValue() const {
  auto it = _vars.find(u"RESULT");
  return it == _vars.end() ? Variant() : it->second->data();
}

// ---- the host's handle

namespace {

// The contract check of the host's entries that change what a running script's lines own.
void requireIdle(const ScriptCore& core, const char* entry) {
  if (core.running()) {
    throw InvalidArgumentException(std::string(entry) + ": the script is running");
  }
}

}  // namespace

ScriptCore& coreOf(LxBasicScript& script) noexcept {
  return *script.core_;
}

LxBasicScript::LxBasicScript() : core_(ScriptCore::create()) {}
LxBasicScript::LxBasicScript(std::shared_ptr<ScriptCore> core) noexcept : core_(std::move(core)) {}
LxBasicScript::~LxBasicScript() = default;

void LxBasicScript::setScript(UStringView text) {
  requireIdle(*core_, "setScript");
  core_->setScript(Variant(text));
}
void LxBasicScript::setScript(std::string_view utf8) {
  requireIdle(*core_, "setScript");
  core_->setScript(Variant::fromUtf8(utf8));
}
UString LxBasicScript::script() const {
  return core_->script();
}
void LxBasicScript::setReferenceEvaluator(bool on) {
  requireIdle(*core_, "setReferenceEvaluator");
  core_->setReferenceEvaluator(on);
}
bool LxBasicScript::referenceEvaluator() const {
  return core_->referenceEvaluator();
}
LxBasicScript::ExecutionStats LxBasicScript::executionStats() const {
  return core_->executionStats();
}
void LxBasicScript::setTimeout(int32_t seconds) {
  core_->setTimeout(seconds);
}
int32_t LxBasicScript::timeout() const {
  return core_->timeout();
}
Variant LxBasicScript::run() {
  return core_->run();
}
Variant LxBasicScript::run(const Variant& argument) {
  return core_->run(argument);
}
Variant LxBasicScript::runScript(const Variant& argument) {
  core_->clearLastException();
  try {
    return core_->runScript(argument);
  } catch (const ScriptBusyException&) {
    throw;  // this call never started a run: the active run's outcome stands
  } catch (...) {
    core_->setLastException(std::current_exception());
    throw;
  }
}
void LxBasicScript::setTimeLimit(std::chrono::milliseconds limit) {
  core_->setTimeLimit(limit.count());
}
std::chrono::milliseconds LxBasicScript::timeLimit() const {
  return std::chrono::milliseconds(core_->timeLimit());
}
void LxBasicScript::setMemoryLimit(int64_t bytes) {
  core_->setMemoryLimit(bytes);
}
int64_t LxBasicScript::memoryLimit() const {
  return core_->memoryLimit();
}
bool LxBasicScript::waitUntilFinished(std::chrono::milliseconds limit) const {
  return core_->waitUntilFinished(limit);
}
void LxBasicScript::setCreatableClasses(std::vector<std::string> names) {
  core_->setCreatableClasses(std::move(names));
}
std::shared_ptr<const LxError> LxBasicScript::errorSnapshot() const {
  return core_->errorSnapshot();
}
void LxBasicScript::terminate() {
  core_->terminate();
}
void LxBasicScript::cancel() {
  core_->cancel();
}
ErrorRef LxBasicScript::error() const {
  return core_->error();
}
bool LxBasicScript::running() const {
  return core_->running();
}
int32_t LxBasicScript::line() const {
  return core_->line();
}
void LxBasicScript::reset() {
  requireIdle(*core_, "reset");
  core_->reset();
}
void LxBasicScript::restart() {
  core_->restart();
}
RunOutcome LxBasicScript::outcome() const {
  RunOutcome o;
  if (core_->running()) {
    o.status = RunState::Running;
    o.error = core_->errorSnapshot();
    return o;
  }
  o.result = core_->resultValue();
  o.error = core_->errorSnapshot();
  o.exception = core_->lastException();
  o.swallowed = core_->shared().swallowed();
  const bool failed = o.exception || o.swallowed || (o.error && o.error->code() > 0);
  o.status = failed ? RunState::Failed : RunState::Succeeded;
  return o;
}
bool LxBasicScript::succeeded() const {
  return outcome().status == RunState::Succeeded;
}
bool LxBasicScript::failed() const {
  return !succeeded();
}
Variant LxBasicScript::call(UStringView name, std::span<const Variant> args) {
  return core_->call(name, args);
}
Variant LxBasicScript::call(UStringView name, std::initializer_list<Variant> args) {
  return core_->call(name, std::span<const Variant>(args.begin(), args.size()));
}
void LxBasicScript::setLineHook(LineHook hook) {
  core_->setLineHook(std::move(hook));
}
bool LxBasicScript::checkSyntax() const {
  return core_->checkSyntax();
}
ValueRef LxBasicScript::addVarWithName(UStringView name, const Variant& value) {
  requireIdle(*core_, "addVarWithName");
  return core_->addVarWithName(name, scriptValueOf(value));
}
ValueRef LxBasicScript::addConstWithName(UStringView name, const Variant& value) {
  requireIdle(*core_, "addConstWithName");
  return core_->addConstWithName(name, scriptValueOf(value));
}
Variant LxBasicScript::valueOf(UStringView name) const {
  ValueRef slot = core_->getValueForVar(name);
  return slot ? slot->data() : Variant();
}
void LxBasicScript::addObj(ObjectRef object) {
  requireIdle(*core_, "addObj");
  core_->addObj(std::move(object));
}
int32_t LxBasicScript::objCount() const {
  return core_->objCount();
}
void LxBasicScript::removeObj(int32_t index) {
  requireIdle(*core_, "removeObj");
  core_->removeObj(index);
}
std::exception_ptr LxBasicScript::lastException() const {
  return core_->lastException();
}
void LxBasicScript::setDialogProvider(std::shared_ptr<DialogProvider> provider) {
  requireIdle(*core_, "setDialogProvider");
  core_->setDialogProvider(std::move(provider));
}

}  // namespace lx
