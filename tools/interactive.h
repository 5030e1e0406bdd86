// The runner's interactive mode: one script object for the whole session; each line typed
// runs at once, blocks (IF, FOR, WHILE, DO, SUB, FUNCTION) are collected until closed, the
// value of a bare expression and a changed RESULT are shown, and errors are shown without
// ending the session. Line editing and history come from libedit when the runner has it.
#pragma once

#include <string>

#include "runner_options.h"

namespace runner {

// `startText`: a script to run first (from FILE), or empty. Answers the exit status.
int runInteractive(const Options& options, const std::string& startText);

}  // namespace runner
