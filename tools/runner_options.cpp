#include "runner_options.h"

#include <cstdio>
#include <limits>
#include <string_view>

namespace runner {

StartError usageError(const std::string& message) {
  return StartError(message, true);
}

void printHelp() {
  std::printf(
      "Usage: %s [OPTIONS] FILE [WORD...]\n"
      "       %s [OPTIONS] [-i [FILE [WORD...]]]\n"
      "       %s --check FILE\n"
      "       %s --debug [--break LINE] FILE [WORD...]\n"
      "\n"
      "Runs the LxBasic script FILE (UTF-8, with or without a byte order mark; \"-\" reads\n"
      "the script from standard input) on a background thread and reports how it ended.\n"
      "The WORDs after FILE reach the script as the array ARGS: ARGS(0) is the first,\n"
      "UBound(ARGS) is their number minus one (-1 when there are none). Options go\n"
      "before FILE; everything after it belongs to the script.\n"
      "\n"
      "Options:\n"
      "  --timeout SECONDS  (or --timeout=SECONDS) stop the script after SECONDS whole\n"
      "                     seconds (0 or more); the run then ends with error 31\n"
      "                     \"Script execution time is out\". Without it the script\n"
      "                     may run for as long as it likes.\n"
      "  --memory-limit MIB (or --memory-limit=MIB) let the script hold at most MIB\n"
      "                     mebibytes of strings, arrays and source (default 1024; 0 for\n"
      "                     no limit); beyond it the run ends with error 36 \"Out of\n"
      "                     memory\", which ON ERROR RESUME NEXT can trap\n"
      "  --gui              show MsgBox and InputBox as windows (needs a display)\n"
      "  --console          show MsgBox and InputBox on the terminal: the text goes to\n"
      "                     standard error, the answer is read from standard input\n"
      "                     (default: windows when a display is available, else the terminal)\n"
      "  --plain-log        write Print and WriteLn lines as they are, without the time\n"
      "                     stamp and process id\n"
      "  --reference        run every line through the reference evaluator, which\n"
      "                     re-reads its text each time (slower; for checking results)\n"
      "  --stats            after the run, write to standard error how many lines ran\n"
      "                     compiled and how many on the reference evaluator, and why\n"
      "  --check            do not run FILE; report blocks left open or closed twice and\n"
      "                     brackets or quotes that do not pair up, as FILE:LINE: message\n"
      "  -i, --interactive  read statements from the terminal and run each at once, after\n"
      "                     FILE if one is given (the default without FILE on a terminal)\n"
      "  --debug            run FILE under a debugger that reads commands from the terminal\n"
      "                     (type help there); it starts paused at the first line, pauses\n"
      "                     before an error that no ON ERROR traps, and Ctrl-C pauses the\n"
      "                     running script. Time spent paused does not count for --timeout\n"
      "  --break LINE       (or --break=LINE) with --debug, pause before script line LINE\n"
      "                     instead of at the first line; may be given more than once\n"
      "  -h, --help         show this help and exit\n"
      "  --version          print the engine name and version and exit\n"
      "\n"
      "Output:\n"
      "  standard output    the value the script left in RESULT, as text, followed by a\n"
      "                     line feed, also when the run failed; nothing when RESULT was\n"
      "                     never set or is Empty. Nothing else.\n"
      "  standard error     Print and WriteLn lines, console dialogs, the error\n"
      "                     description when an error ended the run (its first line\n"
      "                     starts with FILE:LINE: ), and runner messages\n"
      "\n"
      "Exit status:\n"
      "  0    the script ended normally (also after EXIT or a cleared error); --check\n"
      "       found nothing\n"
      "  1    an error ended the script, or an error that ON ERROR RESUME NEXT let pass\n"
      "       was never cleared; --check found something\n"
      "  2    the script could not be started: bad command line, --gui without a\n"
      "       display, or a file that cannot be read or is not valid UTF-8\n"
      "  3    an exception ended the script (for example the ECHO statement or a host\n"
      "       method that threw); its name and reason are written to standard error\n"
      "  130  Ctrl-C (SIGINT) stopped the script after its current line\n",
      kProgram, kProgram, kProgram, kProgram);
}

namespace {

// Whole, non-negative seconds that fit the engine's 32-bit time limit.
int32_t parseSeconds(std::string_view text) {
  if (auto seconds = wholeNumber<int32_t>(text, 0)) return *seconds;
  throw usageError("--timeout needs a whole number of seconds from 0 to " +
                   std::to_string(std::numeric_limits<int32_t>::max()) + ", not \"" +
                   std::string(text) + "\"");
}

// Whole, non-negative mebibytes whose byte count fits 64 bits.
int64_t parseMebibytes(std::string_view text) {
  constexpr int64_t kMost = std::numeric_limits<int64_t>::max() >> 20;
  if (auto mib = wholeNumber<int64_t>(text, 0, kMost)) return *mib;
  throw usageError("--memory-limit needs a whole number of MiB from 0 to " + std::to_string(kMost) +
                   ", not \"" + std::string(text) + "\"");
}

// A script line for --break: counted from 1.
int32_t parseLine(std::string_view text) {
  if (auto line = wholeNumber<int32_t>(text, 1)) return *line;
  throw usageError("--break needs a line number from 1 on, not \"" + std::string(text) + "\"");
}

void setDialogMode(Options& options, DialogMode mode, std::string_view option) {
  if (options.dialogs != DialogMode::Automatic && options.dialogs != mode) {
    throw usageError("--gui and --console cannot be used together (" + std::string(option) +
                     " given after the other)");
  }
  options.dialogs = mode;
}

void setAction(Options& options, Action action, std::string_view option) {
  if (options.action != Action::Run && options.action != action) {
    throw usageError(std::string(option) + " cannot be combined with --check, -i or --debug");
  }
  options.action = action;
}

}  // namespace

Options parseArguments(std::span<char* const> args, bool interactiveTerminal) {
  Options options;
  size_t i = 0;
  for (; i < args.size(); ++i) {
    std::string_view arg = args[i];
    if (arg == "--") {
      ++i;
      break;
    }
    if (arg.size() < 2 || arg.front() != '-') break;  // FILE, or "-" for standard input
    if (arg == "--help" || arg == "-h") {
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
    } else if (arg == "--stats") {
      options.stats = true;
    } else if (arg == "--plain-log") {
      options.plainLog = true;
    } else if (arg == "--check") {
      setAction(options, Action::Check, arg);
    } else if (arg == "-i" || arg == "--interactive") {
      setAction(options, Action::Interactive, arg);
    } else if (arg == "--debug") {
      setAction(options, Action::Debug, arg);
    } else if (arg == "--break") {
      if (i + 1 == args.size()) throw usageError("--break needs a line number");
      options.breaks.push_back(parseLine(args[++i]));
      setAction(options, Action::Debug, arg);
    } else if (arg.starts_with("--break=")) {
      options.breaks.push_back(parseLine(arg.substr(std::string_view("--break=").size())));
      setAction(options, Action::Debug, arg);
    } else if (arg == "--timeout") {
      if (i + 1 == args.size()) throw usageError("--timeout needs a number of seconds");
      options.timeout = parseSeconds(args[++i]);
    } else if (arg.starts_with("--timeout=")) {
      options.timeout = parseSeconds(arg.substr(std::string_view("--timeout=").size()));
    } else if (arg == "--memory-limit") {
      if (i + 1 == args.size()) throw usageError("--memory-limit needs a number of MiB");
      options.memoryLimitMiB = parseMebibytes(args[++i]);
    } else if (arg.starts_with("--memory-limit=")) {
      options.memoryLimitMiB =
          parseMebibytes(arg.substr(std::string_view("--memory-limit=").size()));
    } else {
      throw usageError("unknown option \"" + std::string(arg) + "\"");
    }
  }
  if (i < args.size()) {
    options.file = args[i];
    options.scriptWords.assign(args.begin() + static_cast<std::ptrdiff_t>(i) + 1, args.end());
  } else if (options.action == Action::Run && interactiveTerminal) {
    options.action = Action::Interactive;
  } else if (options.action != Action::Interactive) {
    throw usageError("no script file given");
  }
  if (options.action == Action::Debug && options.file == "-") {
    throw usageError("--debug reads its commands from standard input: give a script file");
  }
  return options;
}

}  // namespace runner
