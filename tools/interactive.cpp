#include "interactive.h"

#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <exception>
#include <optional>
#include <string>
#include <string_view>

#include "interrupt.h"
#include "line_input.h"
#include "lxbasic/check.h"
#include "lxbasic/error.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/version.h"
#include "session.h"

namespace runner {

namespace {

// Holds the value of a bare expression; an ordinary variable, so scripts may use it too.
constexpr char16_t kShownName[] = u"LX_SHOWN";

// The reserved words, which start statements and never expressions.
constexpr std::string_view kKeywords[] = {
    "REM",   "DIM",   "ECHO", "IF",       "THEN", "ELSE",     "END",    "AND",   "OR",
    "FOR",   "NEXT",  "TO",   "STEP",     "ON",   "ERROR",    "RESUME", "GOTO",  "CONST",
    "WHILE", "WEND",  "SUB",  "FUNCTION", "EXIT", "CONTINUE", "NOT",    "REDIM", "PRESERVE",
    "DO",    "UNTIL", "LOOP", "SELECT",   "CASE", "IS",       "ENDIF"};

bool isNameStart(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) || c == '_';
}
bool isNamePart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// True for a line that is an expression to show rather than a statement: no assignment at
// its top level, and not a keyword or a call written without brackets (`MsgBox "hi"`).
bool isBareExpression(std::string_view line) {
  size_t i = 0;
  while (i < line.size() && line[i] == ' ') ++i;
  if (i == line.size()) return false;
  int depth = 0;
  bool inString = false;
  for (size_t k = i; k < line.size(); ++k) {
    char c = line[k];
    if (c == '"') inString = !inString;
    if (inString) continue;
    depth += c == '(' ? 1 : c == ')' ? -1 : 0;
    bool comparison = k > 0 && (line[k - 1] == '<' || line[k - 1] == '>');
    if (depth == 0 && (c == ':' || (c == '=' && !comparison))) return false;
  }
  if (!isNameStart(line[i])) return true;  // a literal or a bracket
  size_t end = i;
  while (end < line.size() && isNamePart(line[end])) ++end;
  std::string word(line.substr(i, end - i));
  for (char& c : word) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  for (std::string_view k : kKeywords) {
    if (word == k) return false;
  }
  while (end < line.size() && line[end] == ' ') ++end;
  // After the name: the end, a call's bracket or '@', or an operator.
  return end == line.size() ||
         std::string_view("(@+-*/\\^&<>").find(line[end]) != std::string_view::npos;
}

class Session {
 public:
  explicit Session(const Options& options) {
    prepareScript(script_, options);
    script_.addVarWithName(kShownName, {});
    // A Ctrl-C typed just before a line starts running would be lost to terminate(), which
    // the run's start clears; the hook sees it at the run's first line.
    script_.setLineHook([](int32_t, int32_t) { return !stopForPendingInterrupt(); });
  }

  // Runs a piece of script text; shows errors and a changed RESULT.
  void run(const std::string& text) { execute(text, false); }

  // A bare expression's value is shown. A lone name that is no variable may be a procedure
  // or host method to call, so a "not found" gets a second chance as a statement.
  void runLine(const std::string& text) {
    if (!isBareExpression(text)) return run(text);
    switch (execute(lx::toUtf8(kShownName) + " = " + text, true)) {
      case Outcome::Ok: {
        std::string shown = textOf(script_.valueOf(kShownName));
        if (!shown.empty()) std::printf("%s\n", shown.c_str());
        break;
      }
      case Outcome::NotFound:
        run(text);
        break;
      case Outcome::Failed:
        break;
    }
  }

 private:
  enum class Outcome { Ok, NotFound, Failed };

  Outcome execute(const std::string& text, bool quietNotFound) {
    std::string before = resultText();
    script_.setScript(std::string_view(text));
    setInterruptTarget(&script_);
    std::exception_ptr thrown;
    try {
      script_.runScript();
    } catch (...) {
      thrown = std::current_exception();
    }
    setInterruptTarget(nullptr);
    if (thrown) {
      std::fprintf(stderr, "%s: exception: %s\n", kProgram, lx::describeException(thrown).c_str());
      return Outcome::Failed;
    }
    lx::ErrorRef error = script_.error();
    if (error && error->code() > 0) {
      constexpr int32_t kVariableNotFound = 3, kFunctionNotFound = 5;
      int32_t code = error->code();
      if (quietNotFound && (code == kVariableNotFound || code == kFunctionNotFound)) {
        return Outcome::NotFound;
      }
      std::fprintf(stderr, "%s\n", lx::toUtf8(error->description()).c_str());
      return Outcome::Failed;
    }
    std::string after = resultText();
    if (after != before && !after.empty()) std::printf("RESULT = %s\n", after.c_str());
    std::fflush(stdout);
    return Outcome::Ok;
  }

  // Empty shows as nothing rather than as its text "(null)".
  static std::string textOf(const lx::Variant& v) {
    return v.isEmpty() ? std::string() : lx::toUtf8(lx::toText(v));
  }
  std::string resultText() const { return textOf(script_.valueOf(u"RESULT")); }

  lx::LxBasicScript script_;
};

}  // namespace

int runInteractive(const Options& options, const std::string& startText) {
  bool terminal = ::isatty(STDIN_FILENO) != 0;
  applyLogStyle(options);
  Session session(options);
  if (terminal) {
    std::printf("%s %s interactive: blocks continue until closed; Ctrl-D leaves.\n",
                lx::kEngineName, lx::kVersionText);
  }
  if (!startText.empty()) session.run(startText);
  std::string pending;  // an unfinished block
  while (auto line = readLine(pending.empty() ? "lx> " : "...> ", terminal)) {
    takeInterrupt();  // a Ctrl-C counts for the line typed after it
    pending += *line;
    pending += '\n';
    auto findings = lx::checkScript(std::string_view(pending));
    if (!findings.empty() && lx::onlyUnclosed(findings)) continue;
    std::string text = pending;
    pending.clear();
    if (text.find_first_not_of(" \t\r\n") == std::string::npos) continue;
    if (text.find('\n') == text.size() - 1) {
      session.runLine(text.substr(0, text.size() - 1));
    } else {
      session.run(text);
    }
    std::fflush(stdout);
  }
  if (terminal) std::printf("\n");
  return kExitOk;
}

}  // namespace runner
