#include "difffuzz/outcome.h"

#include <condition_variable>
#include <mutex>
#include <thread>

#include "difffuzz/host_tally.h"
#include "difffuzz/value_text.h"
#include "interpreter/script_handle.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"

namespace difffuzz {
namespace {

// Temporaries belong to the evaluator that made them, not to the script: the reference
// evaluator leaves none behind between lines, and a faster one need not make them at all.
bool isTemporary(const lx::UString& name) {
  static const lx::UString kPrefix = u"____VAR_";
  if (name.size() < kPrefix.size()) return false;
  return lx::upperCase(lx::UStringView(name).substr(0, kPrefix.size())) == kPrefix;
}

// Stops a run that outlives its limit. terminate() is honoured between lines, so a line that
// never ends is not caught; generated programs have none.
class Watchdog {
 public:
  Watchdog(lx::LxBasicScript& script, std::chrono::milliseconds limit)
      : thread_([this, &script, limit] {
          std::unique_lock lock(mutex_);
          if (!done_cv_.wait_for(lock, limit, [this] { return done_; })) {
            fired_ = true;
            script.terminate();
          }
        }) {}
  ~Watchdog() { stop(); }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

  // Answers whether the limit was reached.
  bool stop() {
    {
      std::lock_guard lock(mutex_);
      done_ = true;
    }
    done_cv_.notify_all();
    if (thread_.joinable()) thread_.join();
    return fired_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable done_cv_;
  bool done_ = false;
  bool fired_ = false;
  std::thread thread_;
};

std::string field(const char* name, const std::string& fast, const std::string& reference) {
  return std::string(name) + ": " + fast + " | " + reference;
}

}  // namespace

namespace {

Outcome runOnce(lx::LxBasicScript& script, const Tally& tally, std::chrono::milliseconds limit) {
  Outcome out;
  lx::Variant result;
  {
    Watchdog watchdog(script, limit);
    try {
      result = script.runScript();
    } catch (...) {
      out.exception = lx::describeException(std::current_exception());
      if (out.exception.empty()) out.exception = "(no description)";
    }
    out.timedOut = watchdog.stop();
  }
  // After an exception RESULT is read from the table as the run left it.
  if (!out.exception.empty()) result = lx::coreOf(script).resultValue();
  out.result = renderValue(result);
  if (auto err = script.error()) {
    out.hasError = true;
    out.code = err->code();
    out.desc = withoutTemporaryNumbers(lx::toUtf8(err->desc()));
    out.line = withoutTemporaryNumbers(lx::toUtf8(err->line()));
    out.lineNumber = err->lineNumber();
  }
  for (const auto& [name, slot] : lx::coreOf(script).getVars()) {
    if (isTemporary(name)) continue;
    out.vars[lx::toUtf8(name)] = slot ? renderSlot(*slot) : "(no slot)";
  }
  out.host = tally.summary();
  return out;
}

Outcome runFrom(lx::LxBasicScript& script, const Tally& tally, std::chrono::milliseconds limit,
                int runs) {
  Outcome out = runOnce(script, tally, limit);
  if (runs > 1 && !out.timedOut) {
    out.next = std::make_shared<const Outcome>(runFrom(script, tally, limit, runs - 1));
  }
  return out;
}

// Differences of the first run are named plainly, those of later runs with "run N: " first.
void collectDifferences(const Outcome& fast, const Outcome& reference, int number,
                        std::vector<std::string>& found) {
  const std::string run = number == 1 ? "" : "run " + std::to_string(number) + ": ";
  auto compare = [&](const char* name, const auto& a, const auto& b) {
    if (a == b) return;
    if constexpr (std::is_same_v<std::decay_t<decltype(a)>, std::string>) {
      found.push_back(run + field(name, a, b));
    } else {
      found.push_back(run + field(name, std::to_string(a), std::to_string(b)));
    }
  };
  compare("timed out", fast.timedOut, reference.timedOut);
  compare("RESULT", fast.result, reference.result);
  compare("error set", fast.hasError, reference.hasError);
  compare("error code", fast.code, reference.code);
  compare("error message", fast.desc, reference.desc);
  compare("error line", fast.line, reference.line);
  compare("error line number", fast.lineNumber, reference.lineNumber);
  compare("exception", fast.exception, reference.exception);
  compare("host object", fast.host, reference.host);
  static const std::string kMissing = "(no such variable)";
  auto valueIn = [](const Outcome& o, const std::string& name) -> const std::string& {
    auto it = o.vars.find(name);
    return it == o.vars.end() ? kMissing : it->second;
  };
  std::map<std::string, int> names;
  for (const auto& entry : fast.vars) names[entry.first] = 0;
  for (const auto& entry : reference.vars) names[entry.first] = 0;
  for (const auto& entry : names) {
    const std::string& a = valueIn(fast, entry.first);
    const std::string& b = valueIn(reference, entry.first);
    if (a != b) found.push_back(run + "variable " + entry.first + ": " + a + " | " + b);
  }
  compare("another run", fast.next != nullptr, reference.next != nullptr);
  if (fast.next && reference.next) {
    collectDifferences(*fast.next, *reference.next, number + 1, found);
  }
}

}  // namespace

Outcome runProgram(const std::string& program, bool reference, std::chrono::milliseconds limit,
                   int runs) {
  lx::LxBasicScript script;
  script.setReferenceEvaluator(reference);
  script.setScript(std::string_view(program));
  auto tally = Tally::make();
  script.addObj(tally);
  return runFrom(script, *tally, limit, runs);
}

std::vector<std::string> differences(const Outcome& fast, const Outcome& reference) {
  std::vector<std::string> found;
  collectDifferences(fast, reference, 1, found);
  return found;
}

std::string describe(const Outcome& o) {
  std::string text = "RESULT = " + o.result + "\n";
  if (o.hasError) {
    text += "error " + std::to_string(o.code) + " \"" + o.desc + "\" at line " +
            std::to_string(o.lineNumber) + ": " + o.line + "\n";
  } else {
    text += "no error\n";
  }
  if (!o.exception.empty()) text += "exception: " + o.exception + "\n";
  if (o.timedOut) text += "stopped by the time limit\n";
  text += "host object: " + o.host + "\n";
  for (const auto& [name, value] : o.vars) text += "  " + name + " = " + value + "\n";
  if (o.next) text += "--- the next run of the same script object\n" + describe(*o.next);
  return text;
}

}  // namespace difffuzz
