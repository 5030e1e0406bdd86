#include "debugger_console.h"

#include <unistd.h>

#include <atomic>
#include <cctype>
#include <chrono>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "interrupt.h"
#include "line_input.h"
#include "lxbasic/debug.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "runner_options.h"
#include "session.h"

namespace runner {

namespace {

constexpr const char* kPrompt = "(lxdb) ";
constexpr const char* kHelp =
    "Commands (short forms in brackets):\n"
    "  break [LINE] [IF COND]  (b)   pause before LINE (default: the current line), when\n"
    "                                COND holds if one is given\n"
    "  delete [ID]             (d)   delete breakpoint ID, or all of them\n"
    "  info breakpoints        (i b) list the breakpoints\n"
    "  continue                (c)   run until a breakpoint, an untrapped error or the end\n"
    "  step                    (s)   run to the next line, into procedures and Eval\n"
    "  next                    (n)   run to the next line of this body, over calls\n"
    "  finish                  (fin) run until the current procedure returns\n"
    "  backtrace               (bt)  show the active bodies, innermost first; also where (w)\n"
    "  frame N                 (f)   select frame N for locals and print; up, down\n"
    "  locals                  (info locals) the variables of the selected frame\n"
    "  print EXPR              (p)   the value of EXPR in the selected frame\n"
    "  list [LINE]             (l)   script lines around LINE or the current line\n"
    "  quit                    (q)   stop the script and leave\n"
    "An empty line repeats step, next, continue, finish and list.\n";

std::string utf8(const lx::UString& text) {
  return lx::toUtf8(text);
}

std::string trimmed(std::string_view s) {
  const size_t first = s.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const size_t last = s.find_last_not_of(" \t");
  return std::string(s.substr(first, last - first + 1));
}

std::vector<std::string> splitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(std::move(line));
    start = end + 1;
  }
  return lines;
}

class DebugConsole {
 public:
  DebugConsole(lx::LxBasicScript& script, const std::string& text, const Options& options)
      : script_(script),
        debugger_(script),
        lines_(splitLines(text)),
        options_(options),
        terminal_(::isatty(STDIN_FILENO) != 0) {}

  int run() {
    for (int32_t line : options_.breaks) addBreakpoint(line, {});
    // Without breakpoints there is nothing to run to: start at the first line.
    if (options_.breaks.empty()) debugger_.pause();
    // A person reads and types while the script waits: that is not the script's time.
    debugger_.countPausedTime(false);
    debugger_.breakOnError(true);
    // Ctrl-C while the script runs pauses it instead of stopping it.
    script_.setLineHook([this](int32_t, int32_t) {
      if (takeInterrupt()) {
        std::fputs("\nInterrupted.\n", stdout);
        debugger_.pause();
      }
      return true;
    });
    std::exception_ptr thrown;
    std::thread worker([this, &thrown] {
      try {
        result_ = script_.run();
      } catch (...) {
        thrown = std::current_exception();
      }
      done_.store(true);
    });
    while (!done_.load()) {
      auto event = debugger_.waitForPause(std::chrono::milliseconds(100));
      if (!event) {
        if (!done_.load()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        continue;
      }
      frame_ = 0;
      showPause(*event);
      if (!commands()) {
        script_.terminate();
        debugger_.resume();
        break;
      }
    }
    worker.join();
    if (thrown) std::rethrow_exception(thrown);
    return finish();
  }

 private:
  int finish() {
    std::fflush(stdout);
    if (!result_.isEmpty()) std::printf("RESULT = %s\n", utf8(lx::toText(result_)).c_str());
    std::printf("The script ended.\n");
    std::fflush(stdout);
    return reportFailure(script_, options_.file);
  }

  void showPause(const lx::PauseEvent& event) {
    const auto stack = debugger_.stack();
    const std::string where = stack.empty() ? std::string() : describe(stack.front());
    switch (event.reason) {
      case lx::PauseReason::Breakpoint:
        std::printf("Breakpoint %d, %s\n", event.breakpoint, where.c_str());
        if (!event.conditionError.empty()) {
          std::printf("(its condition failed: %s)\n", utf8(event.conditionError).c_str());
        }
        break;
      case lx::PauseReason::Error:
        std::printf("Error #%d: %s\n", event.error ? event.error->code() : 0,
                    event.error ? utf8(event.error->desc()).c_str() : "");
        std::printf("It ends the run when you go on; %s\n", where.c_str());
        break;
      case lx::PauseReason::Step:
      case lx::PauseReason::Request:
        std::printf("%s\n", where.c_str());
        break;
    }
    if (!stack.empty()) {
      std::printf("%d\t%s\n", stack.front().line, utf8(stack.front().text).c_str());
      listNext_ = stack.front().line;
    }
    std::fflush(stdout);
  }

  static std::string describe(const lx::DebugFrame& f) {
    std::string place;
    switch (f.kind) {
      case lx::DebugFrame::Kind::Main:
        place = "main script";
        break;
      case lx::DebugFrame::Kind::Procedure:
        place = utf8(f.procedure);
        break;
      case lx::DebugFrame::Kind::Eval:
        place = "Eval";
        break;
    }
    return place + ", line " + std::to_string(f.line);
  }

  // Reads commands until one lets the script go on (true) or the user leaves (false).
  bool commands() {
    for (;;) {
      if (!debugger_.paused()) return true;  // a stop or the time limit ended the pause
      auto input = readLine(kPrompt, terminal_);
      if (!input) return false;
      std::string line = trimmed(*input);
      if (line.empty()) {
        if (!repeatable(lastCommand_)) continue;
        line = lastCommand_;
      }
      lastCommand_ = line;
      const size_t space = line.find(' ');
      const std::string word = line.substr(0, space);
      const std::string rest =
          space == std::string::npos ? std::string() : trimmed(line.substr(space));
      takeInterrupt();  // a Ctrl-C at the prompt is not meant for the next run
      if (word == "c" || word == "continue" || word == "cont") return go(lx::StepMode::Continue);
      if (word == "s" || word == "step") return go(lx::StepMode::Into);
      if (word == "n" || word == "next") return go(lx::StepMode::Over);
      if (word == "fin" || word == "finish") return go(lx::StepMode::Out);
      if (word == "q" || word == "quit" || word == "exit") return false;
      if (word == "b" || word == "break") {
        breakCommand(rest);
      } else if (word == "d" || word == "delete") {
        deleteCommand(rest);
      } else if (word == "bt" || word == "backtrace" || word == "where" || word == "w") {
        backtrace();
      } else if (word == "f" || word == "frame") {
        selectFrame(rest.empty() ? std::optional<int32_t>(static_cast<int32_t>(frame_))
                                 : wholeNumber<int32_t>(rest));
      } else if (word == "up") {
        selectFrame(static_cast<int32_t>(frame_) + 1);
      } else if (word == "down") {
        selectFrame(static_cast<int32_t>(frame_) - 1);
      } else if (word == "locals" || (word == "info" && rest == "locals")) {
        locals();
      } else if (word == "info" && (rest == "breakpoints" || rest == "b" || rest == "break")) {
        listBreakpoints();
      } else if (word == "p" || word == "print") {
        print(rest);
      } else if (word == "l" || word == "list") {
        list(rest);
      } else if (word == "h" || word == "help") {
        std::fputs(kHelp, stdout);
      } else {
        std::printf("Unknown command \"%s\". Try \"help\".\n", word.c_str());
      }
      std::fflush(stdout);
    }
  }

  static bool repeatable(const std::string& command) {
    const std::string word = command.substr(0, command.find(' '));
    for (const char* w :
         {"s", "step", "n", "next", "c", "continue", "cont", "fin", "finish", "l", "list"}) {
      if (word == w) return true;
    }
    return false;
  }

  bool go(lx::StepMode mode) {
    debugger_.resume(mode);
    return true;
  }

  void addBreakpoint(int32_t line, const std::string& condition) {
    const int32_t id = debugger_.addBreakpoint(line, lx::fromUtf8(condition));
    if (condition.empty()) {
      std::printf("Breakpoint %d at line %d\n", id, line);
    } else {
      std::printf("Breakpoint %d at line %d if %s\n", id, line, condition.c_str());
    }
  }

  void breakCommand(const std::string& rest) {
    std::string where = rest;
    std::string condition;
    // "IF" in any letter case starts the condition.
    for (size_t i = 0; i + 2 <= rest.size(); ++i) {
      const bool word = (i == 0 || rest[i - 1] == ' ') &&
                        std::toupper(static_cast<unsigned char>(rest[i])) == 'I' &&
                        std::toupper(static_cast<unsigned char>(rest[i + 1])) == 'F' &&
                        (i + 2 == rest.size() || rest[i + 2] == ' ');
      if (word) {
        where = trimmed(rest.substr(0, i));
        condition = trimmed(rest.substr(i + 2));
        break;
      }
    }
    std::optional<int32_t> line;
    if (where.empty()) {
      const auto stack = debugger_.stack();
      if (!stack.empty() && stack.front().kind != lx::DebugFrame::Kind::Eval) {
        line = stack.front().line;
      }
    } else {
      line = wholeNumber<int32_t>(where);
    }
    if (!line || *line < 1) {
      std::printf("Give a line number from 1 on: break LINE [IF COND]\n");
      return;
    }
    addBreakpoint(*line, condition);
  }

  void deleteCommand(const std::string& rest) {
    if (rest.empty()) {
      debugger_.clearBreakpoints();
      std::printf("Deleted all breakpoints.\n");
      return;
    }
    const auto id = wholeNumber<int32_t>(rest);
    if (id && debugger_.removeBreakpoint(*id)) {
      std::printf("Deleted breakpoint %d.\n", *id);
    } else {
      std::printf("No breakpoint \"%s\".\n", rest.c_str());
    }
  }

  void listBreakpoints() {
    const auto all = debugger_.breakpoints();
    if (all.empty()) std::printf("No breakpoints.\n");
    for (const lx::Breakpoint& b : all) {
      std::printf("%d\tline %d%s%s\t(hit %lld times)\n", b.id, b.line,
                  b.condition.empty() ? "" : " if ", utf8(b.condition).c_str(),
                  static_cast<long long>(b.hits));
    }
  }

  void backtrace() {
    const auto stack = debugger_.stack();
    for (size_t i = 0; i < stack.size(); ++i) {
      std::printf("%c#%zu  %s: %s\n", i == frame_ ? '>' : ' ', i, describe(stack[i]).c_str(),
                  utf8(stack[i].text).c_str());
    }
  }

  void selectFrame(std::optional<int32_t> n) {
    const auto stack = debugger_.stack();
    if (!n || *n < 0 || static_cast<size_t>(*n) >= stack.size()) {
      std::printf("No frame there: frames run from 0 to %zu.\n", stack.size() - 1);
      return;
    }
    frame_ = static_cast<size_t>(*n);
    const lx::DebugFrame& f = stack[frame_];
    std::printf("#%zu  %s: %s\n", frame_, describe(f).c_str(), utf8(f.text).c_str());
  }

  void locals() {
    const auto variables = debugger_.variables(frame_);
    if (variables.empty()) std::printf("No variables.\n");
    for (const lx::DebugVariable& v : variables) {
      std::printf("%s = %s\t(%s%s)\n", utf8(v.name).c_str(), utf8(v.value).c_str(),
                  v.constant ? "constant " : "", v.kind.c_str());
    }
  }

  void print(const std::string& expression) {
    if (expression.empty()) {
      std::printf("print needs an expression\n");
      return;
    }
    const lx::DebugValue v = debugger_.evaluate(lx::fromUtf8(expression), frame_);
    if (!v.ok && v.errorCode != 0) {
      std::printf("Error #%d: %s\n", v.errorCode, utf8(v.text).c_str());
    } else {
      std::printf("%s\n", utf8(v.text).c_str());  // the value, or why there is none
    }
  }

  void list(const std::string& rest) {
    int32_t centre = listNext_;
    if (!rest.empty()) {
      const auto n = wholeNumber<int32_t>(rest);
      if (!n) {
        std::printf("list takes a line number\n");
        return;
      }
      centre = *n;
    }
    const int32_t first = std::max(1, centre - 5);
    const int32_t last = std::min(static_cast<int32_t>(lines_.size()), first + 10);
    const auto stack = debugger_.stack();
    const int32_t here = stack.empty() ? 0 : stack.front().line;
    for (int32_t i = first; i <= last; ++i) {
      std::printf("%s%d\t%s\n", i == here ? "=> " : "   ", i,
                  lines_[static_cast<size_t>(i - 1)].c_str());
    }
    listNext_ = last + 6;
  }

  lx::LxBasicScript& script_;
  lx::LxBasicDebugger debugger_;
  std::vector<std::string> lines_;
  const Options& options_;
  bool terminal_;
  lx::Variant result_;
  std::atomic<bool> done_{false};
  size_t frame_ = 0;
  int32_t listNext_ = 1;
  std::string lastCommand_;
};

}  // namespace

int runDebugger(const std::string& text, const Options& options) {
  applyLogStyle(options);
  lx::LxBasicScript script;
  prepareScript(script, options);
  script.setScript(std::string_view(text));
  DebugConsole console(script, text, options);
  return console.run();
}

}  // namespace runner
