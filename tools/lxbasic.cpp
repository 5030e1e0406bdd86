// lxbasic: runs one script file from the command line and reports how the run ended, checks
// a script's shape without running it (--check), runs statements as they are typed (-i), or
// runs a script under a debugger (--debug).
//
// Standard output carries only the script's RESULT, so `x=$(lxbasic job.bas)` captures the
// result alone; diagnostics, console dialogs and the engine's log go to standard error.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <span>
#include <string>

#include "debugger_console.h"
#include "interactive.h"
#include "interrupt.h"
#include "lxbasic/check.h"
#include "lxbasic/script.h"
#include "lxbasic/text.h"
#include "lxbasic/version.h"
#include "runner_options.h"
#include "script_file.h"
#include "session.h"

namespace runner {

namespace {

std::string shownNameOf(const std::string& file) {
  return file == "-" ? "standard input" : file;
}

// --stats: what ran compiled, what on the reference evaluator, and why.
void reportStats(const lx::LxBasicScript& script, const std::string& file) {
  const auto stats = script.executionStats();
  std::fprintf(stderr, "%s: %llu lines ran compiled, %llu on the reference evaluator\n", kProgram,
               static_cast<unsigned long long>(stats.compiledLines),
               static_cast<unsigned long long>(stats.referenceLines));
  for (const auto& [line, reason] : stats.fallbacks) {
    std::fprintf(stderr, "%s:%d: on the reference evaluator: %s\n", file.c_str(), line,
                 reason.c_str());
  }
}

int reportInterrupted() {
  std::fprintf(stderr, "%s: the script was stopped by Ctrl-C (SIGINT)\n", kProgram);
  return kExitInterrupted;
}

// Prints RESULT, then the reason the run ended; answers the exit status.
int runFile(const std::string& text, const Options& options) {
  applyLogStyle(options);
  lx::LxBasicScript script;
  prepareScript(script, options);
  script.setScript(std::string_view(text));
  setInterruptTarget(&script);
  // A Ctrl-C that came before there was a script to stop means: do not start it.
  if (takeInterrupt()) {
    setInterruptTarget(nullptr);
    return reportInterrupted();
  }
  lx::Variant result = script.run();
  setInterruptTarget(nullptr);
  if (!result.isEmpty()) {
    std::string shown = lx::toUtf8(lx::toText(result));
    shown += '\n';
    std::fwrite(shown.data(), 1, shown.size(), stdout);
  }
  std::fflush(stdout);
  int status = reportFailure(script, options.file);
  if (options.stats) reportStats(script, options.file);
  if (takeInterrupt()) status = reportInterrupted();
  if (script.running()) {
    // A timed-out script may still be finishing its current line on its thread; leaving
    // without tearing the script object down keeps that thread from touching freed state.
    std::fflush(stderr);
    std::_Exit(status);
  }
  return status;
}

int checkFile(const std::string& text, const std::string& file) {
  auto findings = lx::checkScript(std::string_view(text));
  for (const lx::CheckFinding& f : findings) {
    std::fprintf(stderr, "%s:%d: %s\n", file.c_str(), f.lineNumber, f.message.c_str());
  }
  return findings.empty() ? kExitOk : kExitScriptError;
}

int dispatch(const Options& options) {
  switch (options.action) {
    case Action::Help:
      printHelp();
      return kExitOk;
    case Action::Version:
      std::printf("%s %s\n", lx::kEngineName, lx::kVersionText);
      return kExitOk;
    default:
      break;
  }
  std::string text;
  if (!options.file.empty()) {
    text = decodeScript(readScriptFile(options.file), shownNameOf(options.file));
  }
  if (options.action == Action::Check) return checkFile(text, options.file);
  const bool ownsTerminal =
      options.action == Action::Interactive || options.action == Action::Debug;
  watchInterrupts(ownsTerminal);
  if (options.action == Action::Interactive) return runInteractive(options, text);
  if (options.action == Action::Debug) return runDebugger(text, options);
  return runFile(text, options);
}

}  // namespace

}  // namespace runner

int main(int argc, char** argv) {
  using namespace runner;
  try {
    bool terminal = ::isatty(STDIN_FILENO) != 0;
    return dispatch(parseArguments(std::span<char* const>(argv + 1, argv + argc), terminal));
  } catch (const StartError& e) {
    std::fprintf(stderr, "%s: %s\n", kProgram, e.what());
    if (e.usage()) std::fprintf(stderr, "Try '%s --help' for more information.\n", kProgram);
    return kExitCannotStart;
  } catch (const std::exception& e) {
    std::fprintf(stderr, "%s: cannot run the script: %s\n", kProgram, e.what());
    return kExitCannotStart;
  }
}
