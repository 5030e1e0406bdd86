// LxBasicDebugger: breakpoints, stepping and inspection for a script, so that a host can give
// its script authors a debugger.
//
//   lx::LxBasicScript script;
//   script.setScript(text);
//   lx::LxBasicDebugger debugger(script);     // attach before the run
//   debugger.addBreakpoint(12);
//   std::thread runner([&] { script.run(); });
//   while (auto stop = debugger.waitForPause(std::chrono::seconds(60))) {
//     for (const lx::DebugFrame& f : debugger.stack()) show(f);
//     debugger.resume(lx::StepMode::Over);
//   }
//   runner.join();
//
// A paused script waits on its own thread, inside the line it was about to run; the host
// inspects it and resumes it from any thread. stack(), variables() and evaluate() answer only
// while the script is paused; they are carried out on the script's thread, so they may be
// called from another thread or from the pause handler alike.
//
// A stop request (terminate(), cancel(), a line hook answering false) ends a paused run. The
// time limit counts while a script is paused unless countPausedTime(false) says otherwise.
// With no debugger attached a run pays one flag test per line.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lxbasic/error.h"
#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

class LxBasicScript;
class DebugSession;
class ScriptCore;

// Why a script paused.
enum class PauseReason {
  Breakpoint,  // a breakpoint's line was reached (and its condition held)
  Step,        // a step asked for by resume() ended
  Request,     // pause() was asked for
  Error,       // an error that no ON ERROR traps is about to end the run
};

// How a paused script goes on.
enum class StepMode {
  Continue,  // until a breakpoint, pause() or an untrapped error
  Into,      // to the next line run, inside a procedure or Eval if the line calls one
  Over,      // to the next line of this body or of a body that called it
  Out,       // to the next line of a body that called this one
};

// One active body, innermost first in stack().
struct DebugFrame {
  enum class Kind { Main, Procedure, Eval };
  Kind kind = Kind::Main;
  UString procedure;  // the procedure's name in upper case; empty for Main and Eval
  int32_t line = 0;   // 1-based: the script line (Main, Procedure) or the line of the
                      // evaluated text (Eval)
  UString text;       // the statement the body is at
};

// One variable of a frame.
struct DebugVariable {
  UString name;      // as the table keys it (upper case)
  std::string kind;  // kindName() of the value (variant.h)
  UString value;     // the value's text, cut at kDebugValueText units (ends with "...")
  bool constant = false;
  // For arrays: the number of elements (each dimension's length, outermost first).
  std::vector<int32_t> bounds;
};
inline constexpr size_t kDebugValueText = 200;

// The answer of evaluate(): the value, or the error the expression raised.
struct DebugValue {
  bool ok = false;
  Variant value;
  UString text;  // the value's text (bounded as a variable's) or the error's message
  int32_t errorCode = 0;
};

// Where and why the script paused.
struct PauseEvent {
  PauseReason reason = PauseReason::Step;
  int32_t line = 0;                      // 1-based line of the innermost frame
  int32_t breakpoint = 0;                // the breakpoint's id for Breakpoint, else 0
  std::shared_ptr<const LxError> error;  // for Error: the record that will end the run
  UString conditionError;                // a breakpoint condition that could not be evaluated
};

struct Breakpoint {
  int32_t id = 0;
  int32_t line = 0;   // 1-based script line
  UString condition;  // empty: always
  int64_t hits = 0;   // times the script paused here
};

class LX_API LxBasicDebugger {
 public:
  // Attaches to `script`, which must not be running (InvalidArgumentException) and must have
  // no other debugger. The debugger must outlive the runs it watches; destroying it while a
  // run is active lets the run go on without pausing again.
  explicit LxBasicDebugger(LxBasicScript& script);
  ~LxBasicDebugger();
  LxBasicDebugger(const LxBasicDebugger&) = delete;
  LxBasicDebugger& operator=(const LxBasicDebugger&) = delete;

  // ---- breakpoints (any thread, any time)
  // Pauses before the statement of script line `line` (1-based, as errors report it) each
  // time it runs, in the main script or a procedure body, when `condition` (an expression in
  // the script's syntax, evaluated in the paused frame; empty: always) is true. A condition
  // that fails to evaluate pauses, with the failure in PauseEvent::conditionError. Answers
  // the breakpoint's id; throws InvalidArgumentException for a line below 1.
  int32_t addBreakpoint(int32_t line, UStringView condition = {});
  bool removeBreakpoint(int32_t id);
  void clearBreakpoints();
  std::vector<Breakpoint> breakpoints() const;

  // Pauses before an error that no ON ERROR traps ends the run (default: off).
  void breakOnError(bool on);
  // Whether the time limit counts while the script is paused (default: true).
  void countPausedTime(bool on);

  // ---- running and pausing (any thread)
  // Pauses at the next line run (by any run of the script).
  void pause();
  // Called on the script's thread each time it pauses, before waitForPause() learns of it;
  // it may inspect and resume from there. Set it before the run.
  void onPause(std::function<void(const PauseEvent&)> handler);
  // Waits until the script is paused (answering why) or the run has ended or `limit` passed
  // (answering nothing; see paused() and LxBasicScript::running()).
  std::optional<PauseEvent> waitForPause(std::chrono::milliseconds limit);
  bool paused() const;
  // Lets a paused script go on; does nothing when it is not paused.
  void resume(StepMode mode = StepMode::Continue);

  // ---- inspecting a paused script (empty or !ok when it is not paused)
  std::vector<DebugFrame> stack();
  // The variables of frame `frame` of stack() (0: the innermost), by name; temporaries are
  // left out. A frame that Eval runs shares the variables of the body it runs in.
  std::vector<DebugVariable> variables(size_t frame = 0);
  // Evaluates `expression` in frame `frame` as a condition or value of that body would be
  // ("=" compares). The error record and the state of the run are left as they were; what
  // a called procedure or host method does is not undone.
  DebugValue evaluate(UStringView expression, size_t frame = 0);

 private:
  std::shared_ptr<DebugSession> session_;
  std::shared_ptr<ScriptCore> script_;  // kept alive while attached
};

}  // namespace lx
