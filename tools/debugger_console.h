// lxbasic --debug: runs a script under a line-oriented debugger on the terminal.
#pragma once

#include <string>

#include "runner_options.h"

namespace runner {

// Runs `text` (the script file's contents) under the debugger; answers the exit status as a
// plain run would.
int runDebugger(const std::string& text, const Options& options);

}  // namespace runner
