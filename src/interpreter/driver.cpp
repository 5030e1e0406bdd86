// The execution driver: prepares the source, runs it line by line, dispatches each line on
// its first words, applies the error policy, and watches background runs.
#include <chrono>
#include <thread>

#include "compiler/line_code.h"
#include "foundation/memory_budget.h"
#include "foundation/scanning.h"
#include "interpreter/debug_body_scope.h"
#include "interpreter/loops.h"
#include "interpreter/procedures.h"
#include "interpreter/script_core.h"
#include "interpreter/stack_room.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/text.h"
#include "syntax/statement_parts.h"

namespace lx {

namespace {

bool endsWithContinuation(const UString& statement) {
  if (statement.empty()) return false;
  int32_t at = posLastWithNeedle(u"_", statement);
  return at >= 0 && static_cast<size_t>(at) == statement.size() - 1;
}

}  // namespace

// ---- preparation

void ScriptCore::execute(const LxBasicStringList& source) {
  auto statements = std::make_unique<LxBasicStringList>();
  PreparedLines lines;
  if (!prepare(source, *statements, lines)) return;
  _optimized = std::move(statements);
  prepared_ = std::move(lines);
  mainLoop(prepared_);
}

bool ScriptCore::prepare(const LxBasicStringList& source, LxBasicStringList& statements,
                         PreparedLines& out) {
  if (!sourceFits(source)) return false;
  UString continuation;
  for (size_t i = 0; i < source.count(); ++i) {
    if (i % 1024 == 0 && stopRequested()) return false;
    UString rest = source.stringAtIndex(i);
    UString last;
    const Variant index = Variant::int32(static_cast<int32_t>(i));
    while (!rest.empty()) {
      if (stopRequested()) return false;
      UString upper = upperCase(rest);
      if (getTokenFrom(upper, u" ") == u"REM") {
        statements.addString(Variant(std::move(rest)), index);
        rest.clear();
        break;
      }
      UString statement = getTokenFrom(rest, u":");
      if (!continuation.empty()) {
        continuation += u' ';
        continuation += statement;
        statement = std::move(continuation);
        continuation.clear();
      }
      statement = trim(statement);
      if (statement.size() > kMaxLineLength) {
        refuseLongLine(statement, i);
        return false;
      }
      rest = trim(rest);
      statements.addString(Variant(statement), index);
      last = std::move(statement);
    }
    if (endsWithContinuation(last)) {
      statements.deleteAtIndex(statements.count() - 1);
      last.pop_back();
      continuation = std::move(last);
    }
  }
  out.clear();
  out.reserve(statements.count());
  for (size_t i = 0; i < statements.count(); ++i) {
    PreparedLine p;
    p.text = trim(replace(u"\t", u" ", statements.stringAtIndex(i), 2));
    p.kind = classifyLine(p.text);
    p.scriptLine = statements.objectAtIndex(i).number().toInt32();
    out.push_back(std::move(p));
  }
  return true;
}

// ---- the main loop

PreparedLine::PreparedLine() = default;
PreparedLine::~PreparedLine() = default;
PreparedLine::PreparedLine(PreparedLine&&) noexcept = default;
PreparedLine& PreparedLine::operator=(PreparedLine&&) noexcept = default;

compiled::LineCode* ScriptCore::codeFor(PreparedLine& line) {
  compiled::LineCode* code = line.code ? line.code.get() : compileLine(line);
  return code->reference() ? nullptr : code;
}

compiled::LineCode* ScriptCore::compileLine(PreparedLine& line) {
  line.code = compiled::LineCode::compile(static_cast<LineKind>(line.kind), line.text);
  if (line.code->reference()) shared_->noteFallback(line.scriptLine + 1, line.code->reason());
  return line.code.get();
}

void ScriptCore::mainLoop(PreparedLines& lines) {
  // Eval's lines run once: compiling them would only cost.
  const bool compiled = !evaluating_ && !referenceEvaluator();
  uint64_t compiledLines = 0;
  uint64_t referenceLines = 0;
  // Held while a root script's lines run: a watchdog that gave up on the run reads RESULT only
  // once the run has stopped after its current line (Eval releases it around its own lines).
  // No watchdog reads a procedure's frame.
  std::unique_lock lineLock(lineMutex_, std::defer_lock);
  if (isRoot()) lineLock.lock();
  DebugBodyScope debugBody;
  for (_curline = 0; _curline >= 0 && static_cast<size_t>(_curline) < lines.size(); ++_curline) {
    const auto index = static_cast<size_t>(_curline);
    // A reference: a handler that runs a nested evaluation swaps the prepared lines out and
    // back, which keeps their storage where it is.
    PreparedLine& line = lines[index];
    currentScriptLine_.store(line.scriptLine, std::memory_order_relaxed);
    if (line.kind == kEmpty || line.kind == kRem) continue;
    if (shared_->watchesLines() && !watchLine(line, debugBody)) break;
    currentCode_ = compiled ? codeFor(line) : nullptr;
    ++(currentCode_ ? compiledLines : referenceLines);
    try {
      executeLine(line);
    } catch (const ScriptStopped&) {
      // The stop's error is already set; the run ends after this line.
    } catch (const OutOfScriptMemory&) {
      setError(LxError::make(kOutOfMemory, line.text));
    } catch (const std::bad_alloc&) {
      setError(LxError::make(kOutOfMemory, line.text));
    }
    if (!_tmps.empty()) clearTmpVars();
    if (hasError()) {
      const PreparedLine& done = lines[index];
      if (!applyErrorPolicy(done.text, done.scriptLine)) {
        if (shared_->debugger()) reportUntrappedError();
        break;
      }
    }
    // A stop request ends the run even under ON ERROR RESUME NEXT: a host must always be
    // able to stop a script.
    if (stopRequested()) break;
  }
  currentCode_ = nullptr;
  if (lineLock.owns_lock()) lineLock.unlock();
  shared_->countLines(compiledLines, referenceLines);
}

void ScriptCore::executeLine(PreparedLine& line) {
  const UString& text = line.text;
  const auto kind = static_cast<LineKind>(line.kind);
  compiled::LineCode* code = currentCode_;
  // The commonest line first, through the same gates as below: an ordinary statement.
  if (kind == kOther) {
    if (_newsub) return appendToOpenProcedure(text);
    if (!ifValue() || !validLoop()) return;
    if (code) return code->statement()->execute(*this);
    parseLine(text);
    return;
  }
  switch (kind) {
    case kFunc:
      return parseFunc(text);
    case kEndFunc:
      return parseEndFunc(text);
    default:
      break;
  }
  if (_newsub) return appendToOpenProcedure(text);
  switch (kind) {
    case kIf:
      return code ? runIf(code->ifParts) : parseIf(text);
    case kElse:
      return code ? runElse(code->trailing) : parseElse(text);
    case kEndIf:
      return code ? runEndIf(code->trailing) : parseEndIf(text);
    case kSelectCase:
      return parseSelectCase(text);
    case kCase:
      return parseCase(text);
    case kEndSelect:
      return parseEndSelect(text);
    default:
      break;
  }
  if (!ifValue()) return;
  switch (kind) {
    case kFor:
      return code ? runFor(code->forParts) : parseFor(text);
    case kNext:
      return code ? runNext(code->trailing) : parseNext(text);
    case kWhile:
      return code ? runWhile(code->rest) : parseWhile(text);
    case kWEnd:
      return code ? runWEnd(code->trailing) : parseWEnd(text);
    case kDo:
      return code ? runDo(code->rest) : parseDo(text);
    case kLoop:
      return code ? runLoop(code->rest) : parseLoop(text);
    default:
      break;
  }
  if (!validLoop()) return;
  switch (kind) {
    case kDim:
      return parseVar(text);
    case kReDim:
      return parseReDim(text);
    case kConst:
      return parseConst(text);
    case kEcho:
      // ECHO is reserved but has no handler: the line fails like any unknown operation.
      throw UnrecognizedSelectorException("-[LxBasicScript parseEcho:]: unrecognized selector");
    case kOnError:
      return parseOnError(text);
    default:
      if (code) return code->statement()->execute(*this);
      parseLine(text);
  }
}

// ---- texts evaluated by the handlers

bool ScriptCore::evaluateText(const UString& text, TextMode mode, Variant& out,
                              const compiled::Expression* code) {
  if (currentCode_) {
    if (const compiled::Expression* e = code ? code : currentCode_->piece(text, mode)) {
      return e->evaluate(*this, out);
    }
  }
  const UString name =
      mode == TextMode::Condition ? parseLine(bracketed(text), true) : parseLine(text, false);
  if (name.empty()) return false;
  ValueRef v = getValue(name);
  if (!v) return false;
  out = v->data();
  return true;
}

ValueRef ScriptCore::evaluateSlot(const UString& text, const compiled::Expression* code) {
  if (currentCode_) {
    if (const compiled::Expression* e =
            code ? code : currentCode_->piece(text, TextMode::Statement)) {
      return e->evaluateSlot(*this);
    }
  }
  const UString name = parseLine(text, false);
  return name.empty() ? nullptr : getValue(name);
}

void ScriptCore::executeText(const UString& text, const compiled::Expression* code) {
  if (currentCode_) {
    if (const compiled::Expression* e =
            code ? code : currentCode_->piece(text, TextMode::Statement)) {
      return e->execute(*this);
    }
  }
  parseLine(text);
}

bool ScriptCore::applyErrorPolicy(const UString& line, int32_t scriptLine) {
  ErrorRef e = error();
  if (!e) return true;
  const int32_t code = e->code();
  if (!_ignore_error && code <= 0 && code != kCorrectExit) {
    // A signal that ends here (an EXIT's): err becomes a clean record of this line at once, so
    // the signal's own record, which it would replace, is never made.
    addConstWithName(u"err",
                     Variant(std::make_shared<LxError>(0, UString(), UString(), scriptLine + 1)));
    setError(nullptr);
    return true;
  }
  if (code <= 99) {
    e = LxError::errorWithCode(code, e->desc(), line, scriptLine + 1);
    setError(e);
  }
  addVarWithName(u"err", Variant(e));
  return _ignore_error != 0;
}

void ScriptCore::parseOnError(const UString& line) {
  UString rest = line;
  getTokenFrom(rest, u" ");
  getTokenFrom(rest, u" ");
  UString w3 = upperCase(getTokenFrom(rest, u" "));
  UString w4 = upperCase(getTokenFrom(rest, u" "));
  if (!rest.empty()) setError(LxError::make(kSyntaxError, line));
  if (w3 == u"RESUME" && w4 == u"NEXT") {
    _ignore_error = 1;
  } else if (w3 == u"GOTO" && w4 == u"0") {
    _ignore_error = 0;
    setError(nullptr);
  } else {
    setError(LxError::make(kSyntaxError, line));
  }
}

// ---- runs

void ScriptCore::beginRun() {
  // The stop flag, the stickiness and the error are cleared together, under the lock that a
  // stop request sets them under, so a stop racing the start is either wholly undone or
  // wholly kept.
  std::lock_guard lock(errorMutex_);
  if (isRoot()) {
    shared_->clearSwallowed();
    startDebugging();
    if (cancelPending_) {
      // A cancel that came before this run began, or while it was being started: honoured
      // before the first line.
      cancelPending_ = false;
      stopWithRecord(LxError::make(kCorrectExit));
      return;
    }
    shared_->clearStop();
    stopSticky_ = false;
  }
  if (stopSticky_ && _error) return;  // a child keeps its run's stop
  _error.reset();
  errorSet_.store(false, std::memory_order_release);
}

Variant ScriptCore::runScript(const Variant& argument) {
  if (!claimRun()) throw ScriptBusyException();
  beginRun();
  return runWatched(argument);
}

Variant ScriptCore::runBody(const Variant& /*argument*/) {
  struct EndOfRun {
    ScriptCore& s;
    ~EndOfRun() {
      s._optimized.reset();
      s.prepared_.clear();
      s.clearTmpVars();  // an exception may have left a line's temporaries behind
      s.endRun();
    }
  } end{*this};
  BudgetScope limits(runLimits());
  execute(_script);
  return resultValue();
}

void ScriptCore::evalLines(const LxBasicStringList& lines) {
  // The evaluation runs inside a line of this very script: keep that line's state.
  struct Saved {
    ScriptCore& s;
    std::unique_ptr<LxBasicStringList> optimized;
    std::vector<PreparedLine> prepared;
    std::vector<UString> tmps;
    int32_t curline;
    int32_t scriptLine;
    compiled::LineCode* code;
    bool evaluating;
    ~Saved() {
      s._optimized = std::move(optimized);
      s.prepared_ = std::move(prepared);
      s._tmps = std::move(tmps);
      s._curline = curline;
      s.currentScriptLine_.store(scriptLine);
      s.currentCode_ = code;
      s.evaluating_ = evaluating;
    }
  } saved{*this,    std::move(_optimized),     std::move(prepared_), std::move(_tmps),
          _curline, currentScriptLine_.load(), currentCode_,         evaluating_};
  evaluating_ = true;
  setError(nullptr);
  // The evaluated line takes the lock of its own lines; release the enclosing line's.
  std::timed_mutex* held = isRoot() ? &lineMutex_ : nullptr;
  if (held) held->unlock();
  struct Relock {
    std::timed_mutex* m;
    ~Relock() {
      if (m) m->lock();
    }
  } relock{held};
  // An evaluation is a run of this script, not a call: it adds no call level (the built-in
  // call that started it may have). It has a nesting limit of its own, and moves to a fresh
  // stack when this one runs low.
  int32_t& nesting = shared_->evalNesting();
  if (nesting >= kMaxEvalNesting) {
    setError(LxError::make(kStackOverflow));
    return;
  }
  std::exception_ptr failure;
  auto body = [this, &lines, &failure] {
    try {
      execute(lines);
    } catch (...) {
      failure = std::current_exception();
    }
  };
  ++nesting;
  const bool ran = runWithStackRoom(body);
  --nesting;
  if (!ran) setError(LxError::make(kStackOverflow));
  if (failure) std::rethrow_exception(failure);
  if (stopRequested()) throw ScriptStopped();
}

void ScriptCore::runThreaded(const Variant& argument) {
  if (running()) return;
  try {
    runScript(argument);
  } catch (const ScriptBusyException&) {
    // Another caller took the run between the check and the start: the same refusal.
  }
}

Variant ScriptCore::resultBetweenLines() const {
  std::unique_lock lineLock(lineMutex_, std::defer_lock);
  if (lineLock.try_lock_for(std::chrono::milliseconds(50))) return resultValue();
  return Variant();
}

Variant ScriptCore::run() {
  return run(Variant());
}

Variant ScriptCore::run(const Variant& argument) {
  // A second run of a running script is refused, atomically, whoever asks.
  if (!claimRun()) throw ScriptBusyException();
  // Begun here, not on the new thread: a stop or time limit that comes before the thread
  // has started must not be undone by it.
  beginRun();
  struct Completion {
    std::mutex m;
    std::condition_variable cv;
    bool done = false;
  };
  auto completion = std::make_shared<Completion>();
  clearLastException();
  // The thread keeps the script alive, so a host may drop its handle as soon as run returns.
  std::thread worker([self = shared_from_this(), argument, completion] {
    try {
      self->runBody(argument);
    } catch (...) {
      self->setLastException(std::current_exception());
    }
    {
      std::lock_guard lock(completion->m);
      completion->done = true;
    }
    completion->cv.notify_all();
  });

  std::unique_lock lock(completion->m);
  auto finished = [&] { return completion->done; };
  const int64_t limit = timeLimit();
  if (limit < 0) {
    completion->cv.wait(lock, finished);
  } else {
    // The limit has the granularity of the original polling: at least one 10 ms tick.
    auto span = std::chrono::milliseconds(std::max<int64_t>(10, limit));
    if (!waitWithinLimit(shared(), completion->cv, lock, span, finished)) {
      requestStop(LxError::make(kTimeout));
      // Most lines end at once when asked to stop; a host method that does not is left
      // running on its own thread, which owns what it uses.
      completion->cv.wait_for(lock, std::chrono::milliseconds(250), finished);
    }
  }
  if (completion->done) {
    lock.unlock();
    worker.join();
    return resultValue();
  }
  lock.unlock();
  worker.detach();
  return resultBetweenLines();
}

}  // namespace lx
