#include "session.h"

#include <cstdio>
#include <iostream>

#include "lxbasic/dialogs.h"
#include "lxbasic/error.h"
#include "lxbasic/exceptions.h"
#include "lxbasic/log.h"
#include "lxbasic/text.h"
#include "lxbasic/value.h"
#ifdef LX_RUNNER_WINDOWS
#include "lxbasic/graphical_dialogs.h"
#endif

namespace runner {

namespace {

bool windowsAvailable() {
#ifdef LX_RUNNER_WINDOWS
  return lx::graphicalDialogsAvailable();
#else
  return false;
#endif
}

// Console dialogs write to standard error, so that standard output carries RESULT alone.
std::shared_ptr<lx::DialogProvider> chooseDialogs(DialogMode mode) {
  bool graphical =
      mode == DialogMode::Graphical || (mode == DialogMode::Automatic && windowsAvailable());
  if (!graphical) return lx::makeConsoleDialogs(std::cin, std::cerr);
  if (!windowsAvailable()) {
    throw usageError(
        "--gui needs a display (set DISPLAY) and a build with graphical dialogs; use --console");
  }
#ifdef LX_RUNNER_WINDOWS
  return lx::makeGraphicalDialogs();
#else
  return nullptr;
#endif
}

lx::Variant wordsArray(const std::vector<std::string>& words) {
  auto array = lx::Array::make();
  for (const std::string& w : words) array->items.emplace_back(lx::LxValue::make(lx::fromUtf8(w)));
  return array;
}

}  // namespace

void prepareScript(lx::LxBasicScript& script, const Options& options) {
  script.setDialogProvider(chooseDialogs(options.dialogs));
  if (options.timeout) script.setTimeout(*options.timeout);
  script.setMemoryLimit(options.memoryLimitMiB << 20);
  script.setReferenceEvaluator(options.reference);
  script.addVarWithName(u"ARGS", wordsArray(options.scriptWords));
}

void applyLogStyle(const Options& options) {
  if (!options.plainLog) return;
  lx::setLogSink([](lx::UStringView message) {
    std::string line = lx::toUtf8(message);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
  });
}

int reportFailure(const lx::LxBasicScript& script, const std::string& fileName) {
  if (std::exception_ptr thrown = script.lastException()) {
    std::fprintf(stderr, "%s: the script was ended by an exception: %s\n", kProgram,
                 lx::describeException(thrown).c_str());
    return kExitException;
  }
  // Codes of 0 and below are signals such as EXIT ("Correct exit"), not failures.
  lx::ErrorRef error = script.error();
  if (!error || error->code() <= 0) return kExitOk;
  std::string place;
  if (!fileName.empty()) {
    place = fileName + ":";
    if (error->lineNumber() > 0) place += std::to_string(error->lineNumber()) + ":";
    place += " ";
  }
  std::fprintf(stderr, "%s%s\n", place.c_str(), lx::toUtf8(error->description()).c_str());
  return kExitScriptError;
}

}  // namespace runner
