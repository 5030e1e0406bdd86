// LxBasicScript: one script, as a host application sees it.
//
//   lx::LxBasicScript script;
//   script.addObj(std::make_shared<MyHostObject>());
//   script.setScript(u"DIM RESULT = Greet(\"world\")");
//   script.setTimeout(5);
//   lx::Variant result = script.run();          // background thread under a watchdog
//   if (script.failed()) std::cerr << lx::toUtf8(script.error()->description());
//
// Beyond the classic host interface (script text, time limit, run, runScript, terminate,
// error, running, line, reset, checkSyntax, variables and host objects) the object offers
// outcome() and its conveniences succeeded()/failed(), cancel(), restart(), call() and a line
// hook; lxbasic/debug.h attaches a debugger.
//
// While a script runs, its lines own its text, variables, host objects and procedures: the
// entries marked "not while running" below throw InvalidArgumentException when called then
// (from another thread, or from a host method the script is calling), and change nothing.
// terminate(), cancel(), running(), line(), error(), errorSnapshot() and outcome() may be
// called from any thread at any time.
#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "lxbasic/error.h"
#include "lxbasic/export.h"
#include "lxbasic/value.h"
#include "lxbasic/variant.h"

namespace lx {

class ScriptCore;
class DialogProvider;

// How the last run (or call()) of a script ended, in one record.
enum class RunState {
  Succeeded,  // no error, or a signal (code 0 or below, e.g. -1 "Correct exit" after EXIT,
              // terminate, cancel), and no exception, thrown or swallowed
  Failed,     // an error with a code above 0, or an exception
  Running,    // a run is active: the other fields are not settled yet
};
struct RunOutcome {
  RunState status = RunState::Succeeded;
  // The variable RESULT when the run ended (Empty when there is none, or while running).
  Variant result;
  // A copy of the error record the run left (nullptr when none); nothing changes it later.
  std::shared_ptr<const LxError> error;
  // The exception that ended the run: kept from run()'s background thread, and recorded
  // when it left runScript() for its caller.
  std::exception_ptr exception;
  // The first exception that ended a procedure's body during the run or call() (a host
  // method that threw inside a SUB or FUNCTION). The language drops it: the procedure ends
  // without an error and the script goes on, so only this field tells the host.
  std::exception_ptr swallowed;
};

class LX_API LxBasicScript {
 public:
  LxBasicScript();
  ~LxBasicScript();
  LxBasicScript(const LxBasicScript&) = delete;
  LxBasicScript& operator=(const LxBasicScript&) = delete;
  LxBasicScript(LxBasicScript&&) noexcept = default;
  LxBasicScript& operator=(LxBasicScript&&) noexcept = default;

  // The script text; split at every line end. `script()` joins the lines with carriage returns.
  // Not while running.
  void setScript(UStringView text);
  void setScript(std::string_view utf8);
  UString script() const;

  // Time limit of `run` in seconds; -1 (the default) means none. Ignored while running.
  void setTimeout(int32_t seconds);
  int32_t timeout() const;
  // The same limit in milliseconds, for `run` and `runScript` alike (a negative one: none).
  // A run that reaches it ends with error 31 within about 100 ms plus the longest single
  // host call in progress; `waitUntilFinished` waits for that end.
  LX_API void setTimeLimit(std::chrono::milliseconds limit);
  LX_API std::chrono::milliseconds timeLimit() const;
  // Bytes that the script's texts and arrays may hold at once (0, the default: no limit).
  // Passing it ends the line with error 36 "Out of memory", which ON ERROR can trap.
  // Ignored while running.
  LX_API void setMemoryLimit(int64_t bytes);
  LX_API int64_t memoryLimit() const;
  // Waits until no run of this script is active; false when `limit` passed first.
  LX_API bool waitUntilFinished(std::chrono::milliseconds limit) const;
  // Classes that CreateObject may make for this script, on top of the host's creatable
  // ones being required: an empty list (the default) allows every creatable class.
  LX_API void setCreatableClasses(std::vector<std::string> names);

  // Runs on a background thread while the calling thread waits, at most the time limit
  // (then error 31). Answers the value of the variable RESULT (Empty when there is none).
  // An exception that ends the run is dropped; `lastException()` keeps it.
  Variant run();
  Variant run(const Variant& argument);
  // Runs on the calling thread; an exception that ends the run reaches the caller.
  Variant runScript(const Variant& argument = {});
  // Runs every line through the reference evaluator, which re-reads the line's text each
  // time, instead of its compiled form. Results are the same; it is slower. For checking.
  // Not while running.
  void setReferenceEvaluator(bool on);
  bool referenceEvaluator() const;
  // Lines run so far (procedures and Eval included) through their compiled form and on the
  // reference evaluator, and why lines fell back to it (the first hundred, by script line).
  struct ExecutionStats {
    uint64_t compiledLines = 0;
    uint64_t referenceLines = 0;
    std::vector<std::pair<int32_t, std::string>> fallbacks;
  };
  ExecutionStats executionStats() const;

  // Asks a run to stop after its current line (error -1 "Correct exit"); any thread may call it.
  // A run that has not begun yet clears the request when it starts: to stop a run that
  // another thread may be starting, use cancel().
  void terminate();
  // Stops the active run as terminate() does or, when none is active, the next run that
  // starts (run or runScript), which then ends before its first line with error -1. The run
  // that honours it consumes it. Any thread may call it.
  LX_API void cancel();

  // How the last run or call() ended; see RunOutcome. The readers below are conveniences
  // over it.
  LX_API RunOutcome outcome() const;

  ErrorRef error() const;  // nullptr when the last run went well
  // outcome().status == RunState::Succeeded; failed() is the opposite.
  LX_API bool succeeded() const;
  LX_API bool failed() const;
  // A copy of the error record that nothing changes any more: safe to read while the script
  // runs (the script may Clear or Raise the record it holds as `err`).
  LX_API std::shared_ptr<const LxError> errorSnapshot() const;
  bool running() const;
  int32_t line() const;  // 0-based script line of the current statement; -1 when not running
  // Drops variables, host objects and open blocks (not procedures). Not while running.
  void reset();
  // Returns the object to the state of a new one: library and constants registered, no
  // variables, host objects or procedures, no open definition or block, error cleared. The
  // script text, time limit, dialog provider, line hook and evaluator choice stay. Throws
  // InvalidArgumentException while the script is running.
  LX_API void restart();

  // Runs the SUB or FUNCTION `name` (defined by an earlier run) with `args` on the calling
  // thread and answers its result (Empty for a SUB). Failures are left as a run leaves them:
  // error 5 for an unknown name, 12 for a wrong argument count, the body's own error (its
  // code, message and line text) otherwise; see succeeded(). As in any procedure, the body
  // may assign the script's variables but not read them. Throws InvalidArgumentException
  // while the script is running.
  LX_API Variant call(UStringView name, std::span<const Variant> args);
  LX_API Variant call(UStringView name, std::initializer_list<Variant> args = {});

  // Called before each executed line with the 1-based line of the script text (inside
  // procedures: the line of the body in the script text; lines run by Eval: the line within
  // the evaluated text) and the call depth (0 at the top, 1 inside a procedure called from
  // there, ...). Answering false stops the run as terminate() does. Runs on the script's
  // thread; an exception from it ends the run as a host method's would. An empty function
  // removes the hook. Not while running.
  using LineHook = std::function<bool(int32_t line, int32_t depth)>;
  LX_API void setLineHook(LineHook hook);
  bool checkSyntax() const;  // always true: nothing is checked before a run

  // Not while running.
  ValueRef addVarWithName(UStringView name, const Variant& value);
  ValueRef addConstWithName(UStringView name, const Variant& value);
  // The value of a variable (Empty when there is none); not for use while running.
  Variant valueOf(UStringView name) const;

  // Not while running (addObj and removeObj).
  void addObj(ObjectRef object);
  int32_t objCount() const;
  void removeObj(int32_t index);

  // outcome().exception: the exception that ended the last run, if one did.
  std::exception_ptr lastException() const;

  // Where MsgBox and InputBox open their windows; nullptr restores the default. Not while
  // running.
  void setDialogProvider(std::shared_ptr<DialogProvider> provider);

 private:
  // The handle a ScriptAware object receives at registration: the engine makes it.
  explicit LxBasicScript(std::shared_ptr<ScriptCore> core) noexcept;
  friend class ScriptCore;
  // For the engine's own tests and tools, declared in an internal header; not exported.
  friend ScriptCore& coreOf(LxBasicScript& script) noexcept;

  std::shared_ptr<ScriptCore> core_;
};

}  // namespace lx
