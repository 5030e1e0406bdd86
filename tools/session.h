// What the runner's batch and interactive modes share: setting up a script object the way
// the command line asks, and reporting errors and exceptions.
#pragma once

#include <string>

#include "lxbasic/script.h"
#include "runner_options.h"

namespace runner {

// Dialogs, time limit, evaluator and ARGS as the options say. Throws StartError for --gui
// without a display.
void prepareScript(lx::LxBasicScript& script, const Options& options);

// Print and WriteLn without time stamp and pid, when asked for.
void applyLogStyle(const Options& options);

// Writes the exception that ended the last run, or the error (codes above 0), to standard
// error, answering the exit status that fits. With a file name the error's first line starts
// "FILE:LINE: ", the form editors jump to; the engine's own text follows unchanged.
int reportFailure(const lx::LxBasicScript& script, const std::string& fileName);

}  // namespace runner
