// The script object itself: text, variables, host objects, open blocks, procedures, the
// current error, and the driver that runs it. LxBasicScript is the host's handle on it.
//
// Sources: script_core.cpp (lifecycle, host operations), driver.cpp (preparation, main
// loop, dispatch, error policy, ON ERROR, watchdog), variables.cpp (variable table,
// temporaries, arrays), statements.cpp (parseLine), expressions.cpp (getValue, operators,
// comparison, EXIT/CONTINUE recognition), declarations.cpp (DIM, CONST, REDIM),
// conditionals.cpp, loops.cpp, procedures.cpp.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "bridge/script_services.h"
#include "execution/epoch.h"
#include "execution/frame.h"
#include "execution/loop_stack.h"
#include "foundation/memory_budget.h"
#include "interpreter/prepared_line.h"
#include "interpreter/shared_state.h"
#include "lxbasic/bridge.h"
#include "lxbasic/debug.h"
#include "lxbasic/error.h"
#include "lxbasic/script.h"
#include "lxbasic/string_list.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"
#include "syntax/statement_parts.h"

namespace lx {

namespace compiled {
class Expression;
class LineCode;
}  // namespace compiled

class DebugSession;
class LxBasicFunc;
class LxBasicSub;
class LxBasicSubs;
class LxLoopProtocol;
class DialogProvider;
struct MethodInfo;

class ScriptCore final : public Frame,
                         public ScriptServices,
                         public std::enable_shared_from_this<ScriptCore> {
 public:
  // init: a script for a host, with its library object registered as host object 0.
  static std::shared_ptr<ScriptCore> create();
  // initWithOwner: the child script of one procedure call; shares the owner's state (the
  // procedure table, limits, stop request) and host objects (but for the library object, of
  // which it has its own).
  static std::shared_ptr<ScriptCore> createChild(ScriptCore& owner);
  ~ScriptCore();

  // ---- host operations (script_core.cpp)
  void setScript(const Variant& text);
  UString script() const;
  void setTimeout(int32_t seconds);
  int32_t timeout() const noexcept { return shared_->timeoutSeconds(); }
  // The time limit in milliseconds (negative: none); applies to run and runScript alike.
  void setTimeLimit(int64_t milliseconds);
  int64_t timeLimit() const noexcept { return shared_->timeLimitMs(); }
  // Memory the script tree may hold, in bytes (0: no limit); ignored while running.
  void setMemoryLimit(int64_t bytes);
  int64_t memoryLimit() const noexcept;
  const BudgetRef& budget() const noexcept { return shared_->budget(); }
  // CreateObject's per-script allow-list (empty: any creatable class); the tree's root's.
  void setCreatableClasses(std::vector<std::string> names);
  bool mayCreate(std::string_view className) const override {
    return shared_->mayCreate(className);
  }
  // Waits until no run of this script is active any more; false when `limit` passed first.
  bool waitUntilFinished(std::chrono::milliseconds limit) const;
  // The error record (error, setError, hasError, errorCode) is the frame's.
  std::shared_ptr<const LxError> errorSnapshot() const;
  bool running() const noexcept { return _running.load() != 0; }
  int32_t line() const;
  void terminate();
  // Stops the active run as terminate() does, or else the next run to start, before its
  // first line; the request a run honours does not carry to the one after it.
  void cancel();
  void reset();
  // Back to the state of a new script object; the text and the host's settings stay.
  void restart();
  // Runs the procedure `name` on the calling thread; errors are left as a run leaves them.
  Variant call(UStringView name, std::span<const Variant> args);
  // The hook called before each executed line (line_hook.cpp); none when empty.
  using LineHook = std::function<bool(int32_t line, int32_t depth)>;
  void setLineHook(LineHook hook);
  // Calls the hook for the current line; false when it asked the run to stop.
  bool callLineHook();
  // The 0-based line of the host's script text that the current line came from, also inside
  // procedure bodies.
  int32_t sourceLine() const;

  // ---- a debugger (debugging.cpp)
  // Attaches `session` to this host's script; not while running, one at a time.
  void attachDebugger(std::shared_ptr<DebugSession> session);
  // Detaches it now, or when the active run ends.
  void detachDebugger(const DebugSession& session);
  // Whether an error in this body is trapped by its own ON ERROR.
  bool trapsErrors() const noexcept { return _ignore_error != 0; }
  // For a procedure call's frame: the procedure's name; empty elsewhere.
  UString procedureName() const;
  // The value of an expression in this body, its error record and temporaries left as they
  // were; for a debugger's questions.
  DebugValue evaluateForDebugger(UStringView expression);
  bool checkSyntax() const noexcept { return true; }
  LxBasicStringList& getScript() noexcept { return _script; }
  using Frame::getObjs;
  std::vector<ObjectRef>& getObjs() noexcept { return _objs; }
  const std::shared_ptr<LxBasicSubs>& getSubs() const noexcept { return shared_->procedures(); }
  void addObj(ObjectRef obj);
  int32_t objCount() const noexcept { return static_cast<int32_t>(_objs.size()); }
  void removeObj(int32_t index);
  // The first registered object with a method of that name and argument count.
  bool getSel(const MethodInfo** method, ObjectRef* obj, UStringView name, int32_t n) const;
  // The same, answering the object's index in the list (-1: none). Scripts whose lists have
  // the same classes at each index, such as a procedure's frames, find the same index.
  int32_t findSel(const MethodInfo** method, UStringView name, int32_t n) const;
  LxBasicFunc& library() const noexcept { return *library_; }
  std::exception_ptr lastException() const;
  void clearLastException();
  void setLastException(std::exception_ptr e);
  void setDialogProvider(std::shared_ptr<DialogProvider> p) { shared_->setDialogs(std::move(p)); }

  // A stop was requested (terminate or the time limit) for the run of this script tree.
  // Long waits poll this.
  bool stopRequested() const noexcept override { return shared_->stopRequested(); }
  // Sleeps up to `seconds`, waking early when a stop is requested; answers false then.
  bool interruptibleSleep(double seconds) const override {
    return shared_->interruptibleSleep(seconds);
  }
  std::shared_ptr<DialogProvider> dialogs() const override { return shared_->dialogs(); }
  // Eval's access (see ScriptServices).
  ValueRef addVariable(UStringView name) override { return addVarWithName(name, Variant()); }
  void removeVariable(UStringView name) override { removeVar(name); }
  void runNestedLines(const LxBasicStringList& lines) override { evalLines(lines); }

  // The reference evaluator: every line is run by rewriting its text, none through its
  // compiled form. Procedure and Eval scripts follow their root script's choice.
  void setReferenceEvaluator(bool on) noexcept { shared_->setReferenceEvaluator(on); }
  bool referenceEvaluator() const noexcept { return shared_->referenceEvaluator(); }

  // ---- running (driver.cpp)
  Variant run();
  Variant run(const Variant& argument);  // background thread under the watchdog
  void runThreaded(const Variant& argument);
  Variant runScript(const Variant& argument);  // on the calling thread
  // The variable RESULT's value (Empty when there is none).
  Variant resultValue() const;
  // Eval: runs `lines` through this script's driver while the script itself may be running
  // (its current position and prepared source are kept and restored), with the same
  // variables, procedures and host objects. Errors are left on the script as a run leaves them.
  void evalLines(const LxBasicStringList& lines);

  // ---- texts that statement handlers evaluate (driver.cpp): through the current line's
  // compiled form, or by rewriting the text when the line runs on the reference evaluator.
  // `code` is the text's compiled form when the line compiled it; without it a compiled line
  // looks the text up among its pieces.
  // getValue(parseLine(text)): false when there is no value (an error is normally set).
  bool evaluateText(const UString& text, TextMode mode, Variant& out,
                    const compiled::Expression* code = nullptr);
  // The same as a slot: a variable's own slot when the text is just its name.
  ValueRef evaluateSlot(const UString& text, const compiled::Expression* code = nullptr);
  // parseLine(text) of a statement, its answer dropped.
  void executeText(const UString& text, const compiled::Expression* code = nullptr);
  // The compiled form of the line being executed; nullptr on the reference evaluator.
  const compiled::LineCode* currentCode() const noexcept { return currentCode_; }

  // How many lines ran through their compiled form and how many on the reference evaluator,
  // counted on the root script for its procedures and Eval too; and why lines fell back.
  using ExecutionStats = LxBasicScript::ExecutionStats;
  ExecutionStats executionStats() const { return shared_->executionStats(); }

  // ---- statement handlers (driver.cpp and the statement sources)
  void parseOnError(const UString& line);
  UString parseLine(const UString& line) { return parseLine(line, false); }
  UString parseLine(const UString& line, bool comparition);
  void parseVar(const UString& line) { parseVar(line, false); }
  void parseConst(const UString& line) { parseVar(line, true); }
  void parseVar(const UString& line, bool constant);
  void parseReDim(const UString& line);
  void parseIf(const UString& line);
  void parseElse(const UString& line);
  void parseEndIf(const UString& line);
  void parseSelectCase(const UString& line);
  void parseCase(const UString& line);
  void parseEndSelect(const UString& line);
  void parseFor(const UString& line);
  void parseNext(const UString& line);
  void parseWhile(const UString& line);
  void parseWEnd(const UString& line);
  void parseDo(const UString& line);
  void parseLoop(const UString& line);
  void parseFunc(const UString& line);
  // The handlers' work once the statement's text has been read (the compiled form keeps it).
  void runIf(const IfParts& parts);
  void runElse(bool trailing);
  void runEndIf(bool trailing);
  void runFor(const ForParts& parts);
  void runNext(bool trailing);
  void runWhile(const UString& expression);
  void runWEnd(bool trailing);
  void runDo(const UString& rest);
  void runLoop(const UString& rest);
  void parseEndFunc(const UString& line);

  // ---- expressions (expressions.cpp)
  ValueRef getValue(UStringView text);
  ValueRef operateWithSign(char16_t op, const LxValue& a, const LxValue& b);
  // The operator on two values; may set error 14 (division by zero) and still answer.
  Variant operate(char16_t op, const Variant& a, const Variant& b);
  int32_t compareValue(const LxValue& a, const LxValue& b);
  bool parseInlineOps(const UString& line);

  // ---- conditionals and loops (conditionals.cpp, loops.cpp)
  bool ifValue() const noexcept { return _ifs.empty() || _ifs.back() != 0; }
  bool ifValue(int32_t depth) const;
  bool validLoop() const;
  LxLoopProtocol* getLoop() const;
  // EXIT and CONTINUE, their words read by parseInlineOps or when their line was compiled.
  void runLoopJump(const LoopJump& jump);
  // True when `slot` is the variable of an open FOR loop (assignments to it are refused).
  bool isLoopVariable(const LxValue* slot) const;
  LoopStack& loops() noexcept { return _loops; }
  const LoopStack& loops() const noexcept { return _loops; }
  // While a procedure definition is open, its body collects the lines the driver passes by.
  void appendToOpenProcedure(const UString& line);

  // Splits the source into statements (joining continued lines) and classifies them; false,
  // with error 37 or 36 set, when the text cannot be run (driver.cpp).
  bool prepare(const LxBasicStringList& source, LxBasicStringList& statements, PreparedLines& out);

  // In a call frame: the upper-case names each call binds (parameters, the result's names,
  // "__func__"), one list shared by every frame of a procedure, and this frame's table entries
  // for them, which stay where they are while the frame lives. nullptr elsewhere.
  void setBoundNames(const std::vector<UString>* names, ValueRef* const* entries) noexcept {
    boundNames_ = names;
    boundEntries_ = entries;
  }

  // ---- procedures (procedures.cpp)
  // Runs a procedure body's prepared lines in this child script (a call frame).
  void runFrameBody(PreparedLines& lines) { mainLoop(lines); }
  // The state this script shares with the rest of its tree, one hop away.
  SharedState& shared() const noexcept { return *shared_; }
  // How many procedure calls deep this script's lines run (0 for the host's script); the
  // line hook reports it.
  int32_t callLevel() const noexcept { return callLevel_; }
  void setCallLevel(int32_t level) noexcept { callLevel_ = level; }
  // The host's script of the tree (as the script object; the frame's root() is the same).
  ScriptCore& root() const noexcept { return shared_->root(); }
  // The procedure of that name (any letter case), or nullptr.
  std::shared_ptr<LxBasicSub> getSubByName(UStringView name) const;

  // ---- variable table (variables.cpp)
  ValueRef addVarWithName(UStringView name, const Variant& value, bool constant);
  ValueRef addVarWithName(UStringView name, const Variant& value) {
    return addVarWithName(name, value, false);
  }
  ValueRef addConstWithName(UStringView name, const Variant& value) {
    return addVarWithName(name, value, true);
  }
  ValueRef getValueForVar(UStringView name) const;
  // The slot an upper-case name has: the script's own variable, or else a predefined constant
  // it can see; a null reference when neither.
  const ValueRef& variableSlot(const UString& key) const;
  // The predefined constants are one shared, immutable table that scripts read beneath their
  // own variables: the library's (shown when a library object is registered) and null,
  // nothing, empty, true and false (shown by init). Showing a part hides the script's own
  // variables of those names, as defining the constants over them would; reset hides both.
  enum ConstantParts : uint8_t { kLibraryConstants = 1, kScriptConstants = 2 };
  void showConstants(uint8_t parts);
  // True when the upper-case name is one of the predefined constants.
  static bool isPredefinedConstant(const UString& key);
  // Names that addVarWithName adds from now on are also appended to *names (nullptr: none).
  void recordNewNames(std::vector<UString>* names) noexcept { newNames_ = names; }
  void removeVar(UStringView name);
  void clearTmpVars();
  // Stores a value (or, for storeTempSlot, a slot itself) under a fresh temporary name,
  // recorded for clearTmpVars, and answers the name.
  UString storeTemp(Variant value);
  UString storeTempSlot(ValueRef slot);

  bool isKeyword(UStringView word) const;

  // Epochs of the variable table (see epoch.h): varsChanged when a name gets another slot,
  // namesChanged when a name comes or goes (which also gives every name another meaning).
  void varsChanged() noexcept { varsEpoch_ = nextBindingEpoch(); }
  void namesChanged() noexcept { namesEpoch_ = varsEpoch_ = nextBindingEpoch(); }
  // Call frames of one procedure share an epoch while their tables agree (see LxBasicSub).
  void setVarsEpoch(uint64_t epoch) noexcept { namesEpoch_ = varsEpoch_ = epoch; }
  // A child whose object list has the same classes at each index as its owner's may share
  // the owner's epoch (see findSel), so that what its lines found in one call holds in the next.
  void setObjsEpoch(uint64_t epoch) noexcept { objsEpoch_ = epoch; }

  // Its frame's state is reached through the accessors above; the procedure-call frame that
  // binds and unbinds this script between calls resets it directly.
  friend class CallFrame;

 private:
  explicit ScriptCore(ScriptCore* root);
  void initialise();
  // Applies the error policy after a line; answers false when the run must stop.
  bool applyErrorPolicy(const UString& line, int32_t scriptLine);
  void prepareSource();

  std::shared_ptr<SharedState> shared_;
  int32_t callLevel_ = 0;
  std::shared_ptr<LxBasicFunc> library_;
  std::unique_ptr<LxBasicStringList> _optimized;  // the statements of the running source
  std::shared_ptr<LxBasicSub> _newsub;            // an open procedure definition
  std::atomic<int32_t> _running{0};
  bool cancelPending_ = false;  // guarded by errorMutex_
  // Held by the script thread while its lines run, so that a watchdog that gives up waiting
  // reads RESULT only once the stopped run has left its last line.
  mutable std::timed_mutex lineMutex_;
  std::exception_ptr lastException_;
  std::atomic<bool> hasLastException_{false};
  mutable std::mutex exceptionMutex_;
  // The procedure the host called last by that name, while the table is unchanged: a host
  // that calls one FUNCTION over and over finds it without looking it up each time.
  UString lastCallName_;
  std::shared_ptr<LxBasicSub> lastCallSub_;
  uint64_t lastCallEpoch_ = 0;
  std::atomic<int32_t> currentScriptLine_{-1};
  std::atomic<bool> threadActive_{false};
  std::vector<UString>* newNames_ = nullptr;
  uint8_t constantsShown_ = 0;  // ConstantParts
  PreparedLines prepared_;
  // The compiled form of the line being executed; nullptr on the reference evaluator.
  compiled::LineCode* currentCode_ = nullptr;
  // Eval's lines run once each: compiling them would only cost.
  bool evaluating_ = false;
  compiled::LineCode* compileLine(PreparedLine& line);
  // The line's compiled form, or nullptr when it runs on the reference evaluator.
  compiled::LineCode* codeFor(PreparedLine& line);
  void executeLine(PreparedLine& line);
  void execute(const LxBasicStringList& source);

  void beginRun();
  // The debugger's view of runs and lines (debugging.cpp).
  void startDebugging();
  void endDebugging();
  class DebugBodyScope;
  // Reports the line to the line hook and the debugger; false when the run must stop.
  bool watchLine(const PreparedLine& line, DebugBodyScope& body);
  void reportUntrappedError();
  Variant runBody(const Variant& argument);
  Variant resultBetweenLines() const;
  void mainLoop(PreparedLines& lines);
  UString evaluateCall(const UString& name, UString contents, const UString& line);
  UString evaluateBracket(const UString& contents, const UString& line);
  bool conditionOperand(UString operand, const UString& line, bool* truth);
  ValueRef callMethod(Object& target, const MethodInfo& method, std::span<const Variant> args,
                      bool* mismatch);

  // ---- limits (run_limits.cpp)
  // False (with error 37 or 36 set) when the text has a line too long to run or cannot be
  // prepared within the memory limit.
  bool sourceFits(const LxBasicStringList& source);
  // Error 37 for a line (or a statement joined from continued lines) of script line `index`.
  void refuseLongLine(const UString& line, size_t index);
  // Stops the run with `reason` (error -1 or 31), which no later error of the run replaces.
  void requestStop(ErrorRef reason);
  // The same with errorMutex_ held.
  void stopWithRecord(ErrorRef reason);
  // Takes the run for this caller, atomically; false when one is already active.
  bool claimRun();
  void endRun();
  RunLimits runLimits() const;
  // runBody on the calling thread, under the time limit when one is set.
  Variant runWatched(const Variant& argument);
  class Watchdog;

  mutable std::mutex finishedMutex_;
  mutable std::condition_variable finishedCv_;

 public:
  // Calls a host method or built-in, counted against the root script's call-depth limit;
  // false after error 25. *r holds the answer or the argument-mismatch marker.
  bool sendCounted(Object& target, const MethodInfo& method, std::span<const Variant> args,
                   CallResult* r);
};

// The longest script line (in UTF-16 code units) that a run accepts; preparing and
// evaluating a line take time that grows faster than its length.
inline constexpr size_t kMaxLineLength = 32768;

// Points `slot` at what a variable bound to `value` holds: the value's own slot when it
// carries one of the same constness (answers true), otherwise a slot holding the data, which
// is `slot` itself when nothing else holds it, or a new one.
inline bool bindSlot(ValueRef& slot, const Variant& value, bool constant) {
  const LxValue* carried = slotOf(value);
  if (carried && carried->constant() == constant) {
    slot = slotRefOf(value);  // shared, not copied
    return true;
  }
  const Variant& data = carried ? carried->data() : value;
  if (slot && slot.use_count() == 1 && slot->constant() == constant) {
    slot->setData(data);
  } else {
    slot = LxValue::make(data, constant);
  }
  return false;
}

// The procedure table of a new script (procedures.cpp).
std::shared_ptr<LxBasicSubs> makeProcedureTable(ScriptCore& owner);

// Adds one dimension of `count` elements to an array under construction.
void dimArray(Array& list, int32_t count, bool leaf);

}  // namespace lx
