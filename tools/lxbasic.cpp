// lxbasic: runs one script file from the command line and reports how the run ended.
//
// Exit statuses: 0 the run ended normally, 1 a script error ended it, 2 the runner could not
// start it (command line or file), 3 an exception ended it. Standard output carries only what
// the script produces for its caller (RESULT, console dialogs); diagnostics and the engine's
// log go to standard error, so `x=$(lxbasic job.bas)` captures the result alone.
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "lxbasic/dialogs.h"
#include "lxbasic/error.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/version.h"
#ifdef LX_RUNNER_WINDOWS
#include "lxbasic/graphical_dialogs.h"
#endif

namespace {

constexpr const char* kProgram = "lxbasic";

enum ExitStatus : int {
  kExitOk = 0,
  kExitScriptError = 1,
  kExitCannotStart = 2,
  kExitException = 3,
};

enum class DialogMode { Automatic, Graphical, Console };
enum class Action { Run, Help, Version };

struct Options {
  Action action = Action::Run;
  std::optional<int32_t> timeout;
  bool reference = false;
  DialogMode dialogs = DialogMode::Automatic;
  std::string file;  // "-" is standard input
};

// Anything that keeps the script from starting. `usage` marks command-line mistakes, which
// get a pointer to --help; a file that cannot be read does not need one.
class StartError : public std::runtime_error {
 public:
  StartError(const std::string& message, bool usage) : std::runtime_error(message), usage_(usage) {}
  bool usage() const noexcept { return usage_; }

 private:
  bool usage_;
};

StartError usageError(const std::string& message) {
  return StartError(message, true);
}

void printHelp() {
  std::printf(
      "Usage: %s [--timeout SECONDS] [--gui | --console] [--reference] FILE\n"
      "\n"
      "Runs the LxBasic script FILE (UTF-8, with or without a byte order mark; \"-\" reads\n"
      "the script from standard input) on a background thread and reports how it ended.\n"
      "\n"
      "Options:\n"
      "  --timeout SECONDS  (or --timeout=SECONDS) stop the script after SECONDS whole\n"
      "                     seconds (0 or more); the run then ends with error 31\n"
      "                     \"Script execution time is out\". Without it the script\n"
      "                     may run for as long as it likes.\n"
      "  --gui              show MsgBox and InputBox as windows (needs a display)\n"
      "  --console          show MsgBox and InputBox on the terminal: the text goes to\n"
      "                     standard output, the answer is read from standard input\n"
      "                     (default: windows when a display is available, else the terminal)\n"
      "  --reference        run every line through the reference evaluator, which\n"
      "                     re-reads its text each time (slower; for checking results)\n"
      "  -h, --help         show this help and exit\n"
      "  --version          print the engine name and version and exit\n"
      "\n"
      "Output:\n"
      "  standard output    the value the script left in RESULT, as text, followed by a\n"
      "                     line feed, also when the run failed; nothing when RESULT was\n"
      "                     never set or is Empty\n"
      "  standard error     Print and WriteLn lines (with a time stamp), the error\n"
      "                     description when an error ended the run, and runner messages\n"
      "\n"
      "Exit status:\n"
      "  0  the script ended normally (also after EXIT or a cleared error)\n"
      "  1  an error ended the script, or an error that ON ERROR RESUME NEXT let pass\n"
      "     was never cleared; its description (\"Error #3, Line #2: ...\" and the\n"
      "     \"Source: ...\" line) is written to standard error\n"
      "  2  the script could not be started: bad command line, --gui without a\n"
      "     display, or a file that cannot be read or is not valid UTF-8\n"
      "  3  an exception ended the script (for example the ECHO statement or a host\n"
      "     method that threw); its name and reason are written to standard error\n",
      kProgram);
}

// Whole, non-negative seconds that fit the engine's 32-bit time limit.
int32_t parseSeconds(std::string_view text) {
  int32_t seconds = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), seconds);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size() || seconds < 0) {
    throw usageError("--timeout needs a whole number of seconds from 0 to " +
                     std::to_string(std::numeric_limits<int32_t>::max()) + ", not \"" +
                     std::string(text) + "\"");
  }
  return seconds;
}

void setDialogMode(Options& options, DialogMode mode, std::string_view option) {
  if (options.dialogs != DialogMode::Automatic && options.dialogs != mode) {
    throw usageError("--gui and --console cannot be used together (" + std::string(option) +
                     " given after the other)");
  }
  options.dialogs = mode;
}

Options parseArguments(std::span<char* const> args) {
  Options options;
  bool haveFile = false;
  bool optionsEnded = false;
  for (size_t i = 0; i < args.size(); ++i) {
    std::string_view arg = args[i];
    bool isOption = !optionsEnded && arg.size() > 1 && arg.front() == '-';
    if (!isOption) {
      if (haveFile) {
        throw usageError("too many arguments: one script file at a time (extra: \"" +
                         std::string(arg) + "\")");
      }
      options.file = arg;
      haveFile = true;
    } else if (arg == "--") {
      optionsEnded = true;
    } else if (arg == "--help" || arg == "-h") {
      options.action = Action::Help;
      return options;
    } else if (arg == "--version") {
      options.action = Action::Version;
      return options;
    } else if (arg == "--gui") {
      setDialogMode(options, DialogMode::Graphical, arg);
    } else if (arg == "--console") {
      setDialogMode(options, DialogMode::Console, arg);
    } else if (arg == "--reference") {
      options.reference = true;
    } else if (arg == "--timeout") {
      if (i + 1 == args.size()) throw usageError("--timeout needs a number of seconds");
      options.timeout = parseSeconds(args[++i]);
    } else if (arg.starts_with("--timeout=")) {
      options.timeout = parseSeconds(arg.substr(std::string_view("--timeout=").size()));
    } else {
      throw usageError("unknown option \"" + std::string(arg) + "\"");
    }
  }
  if (!haveFile) throw usageError("no script file given");
  return options;
}

std::string readStream(std::FILE* in, const std::string& shownName) {
  std::string bytes;
  char buffer[65536];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, in)) > 0) bytes.append(buffer, n);
  if (std::ferror(in)) {
    throw StartError("cannot read " + shownName + ": " + std::strerror(errno), false);
  }
  return bytes;
}

std::string readScriptFile(const std::string& path) {
  if (path == "-") return readStream(stdin, "standard input");
  std::FILE* in = std::fopen(path.c_str(), "rb");
  if (in == nullptr) throw StartError("cannot open " + path + ": " + std::strerror(errno), false);
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> closer(in, &std::fclose);
  return readStream(in, path);
}

// The offset of the first byte that does not belong to a well-formed UTF-8 sequence
// (overlong forms, surrogates and code points above U+10FFFF included), if any. The engine's
// own decoder is lenient and would turn such bytes into replacement characters silently.
std::optional<size_t> firstInvalidUtf8(std::string_view s) {
  size_t i = 0;
  while (i < s.size()) {
    auto c = static_cast<unsigned char>(s[i]);
    size_t length;
    unsigned char low = 0x80, high = 0xBF;  // allowed range of the second byte
    if (c < 0x80) {
      ++i;
      continue;
    } else if (c >= 0xC2 && c <= 0xDF) {
      length = 2;
    } else if (c >= 0xE0 && c <= 0xEF) {
      length = 3;
      if (c == 0xE0) low = 0xA0;   // overlong
      if (c == 0xED) high = 0x9F;  // surrogates
    } else if (c >= 0xF0 && c <= 0xF4) {
      length = 4;
      if (c == 0xF0) low = 0x90;   // overlong
      if (c == 0xF4) high = 0x8F;  // above U+10FFFF
    } else {
      return i;
    }
    if (i + length > s.size()) return i;
    for (size_t k = 1; k < length; ++k) {
      auto b = static_cast<unsigned char>(s[i + k]);
      unsigned char lo = k == 1 ? low : 0x80, hi = k == 1 ? high : 0xBF;
      if (b < lo || b > hi) return i;
    }
    i += length;
  }
  return std::nullopt;
}

// The script text without its byte order mark; refuses text that is not UTF-8.
std::string decodeScript(std::string bytes, const std::string& shownName) {
  constexpr std::string_view kBom = "\xEF\xBB\xBF";
  if (std::string_view(bytes).starts_with(kBom)) bytes.erase(0, kBom.size());
  if (auto bad = firstInvalidUtf8(bytes)) {
    size_t line = 1;
    for (size_t k = 0; k < *bad; ++k) line += bytes[k] == '\n';
    throw StartError(shownName + " is not valid UTF-8 (line " + std::to_string(line) + ", byte " +
                         std::to_string(*bad) + "); save it as UTF-8 and try again",
                     false);
  }
  return bytes;
}

#ifndef LX_RUNNER_WINDOWS
bool graphicalDialogsAvailable() {
  return false;
}
#endif

std::shared_ptr<lx::DialogProvider> chooseDialogs(DialogMode mode) {
  using namespace lx;
  bool graphical = mode == DialogMode::Graphical ||
                   (mode == DialogMode::Automatic && graphicalDialogsAvailable());
  if (!graphical) return lx::makeConsoleDialogs(std::cin, std::cout);
  if (!graphicalDialogsAvailable()) {
    throw usageError(
        "--gui needs a display (set DISPLAY) and a build with graphical dialogs; use --console");
  }
#ifdef LX_RUNNER_WINDOWS
  return makeGraphicalDialogs();
#else
  return nullptr;
#endif
}

// Prints RESULT and the reason the run ended; answers the exit status.
int report(const lx::LxBasicScript& script, const lx::Variant& result) {
  if (!result.isEmpty()) {
    std::string text = lx::toUtf8(lx::toText(result));
    text += '\n';
    std::fwrite(text.data(), 1, text.size(), stdout);
  }
  std::fflush(stdout);
  if (std::exception_ptr thrown = script.lastException()) {
    std::fprintf(stderr, "%s: the script was ended by an exception: %s\n", kProgram,
                 lx::describeException(thrown).c_str());
    return kExitException;
  }
  // Codes of 0 and below are signals such as EXIT ("Correct exit"), not failures.
  if (lx::ErrorRef error = script.error(); error && error->code() > 0) {
    std::fprintf(stderr, "%s\n", lx::toUtf8(error->description()).c_str());
    return kExitScriptError;
  }
  return kExitOk;
}

int runScript(const std::string& text, const Options& options) {
  lx::LxBasicScript script;
  script.setDialogProvider(chooseDialogs(options.dialogs));
  script.setScript(std::string_view(text));
  if (options.timeout) script.setTimeout(*options.timeout);
  script.setReferenceEvaluator(options.reference);
  lx::Variant result = script.run();
  int status = report(script, result);
  if (script.running()) {
    // A timed-out script may still be finishing its current line on its thread; leaving
    // without tearing the script object down keeps that thread from touching freed state.
    std::fflush(stderr);
    std::_Exit(status);
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    Options options = parseArguments(std::span<char* const>(argv + 1, argv + argc));
    if (options.action == Action::Help) {
      printHelp();
      return kExitOk;
    }
    if (options.action == Action::Version) {
      std::printf("%s %s\n", lx::kEngineName, lx::kVersionText);
      return kExitOk;
    }
    std::string shownName = options.file == "-" ? "standard input" : options.file;
    std::string text = decodeScript(readScriptFile(options.file), shownName);
    return runScript(text, options);
  } catch (const StartError& e) {
    std::fprintf(stderr, "%s: %s\n", kProgram, e.what());
    if (e.usage()) std::fprintf(stderr, "Try '%s --help' for more information.\n", kProgram);
    return kExitCannotStart;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s: cannot run the script: %s\n", kProgram, e.what());
    return kExitCannotStart;
  }
}
