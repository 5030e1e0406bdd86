// Ctrl-C for the runner: SIGINT asks the running script to stop through the engine's own stop
// request (LxBasicScript::terminate), so the script ends after its current line and the
// runner still reports how far it got. A second Ctrl-C during the same run leaves at once.
#pragma once

namespace lx {
class LxBasicScript;
}

namespace runner {

// Blocks SIGINT in the calling thread and in every thread started after it, and starts the
// thread that receives it. Call before any script object exists. `evenIfIgnored`: also when
// the runner was started with SIGINT ignored.
void watchInterrupts(bool evenIfIgnored);

// The script that a Ctrl-C stops now; nullptr while none runs.
void setInterruptTarget(lx::LxBasicScript* script);

// Whether a Ctrl-C arrived since the last call; clears the mark.
bool takeInterrupt();

// For a line hook: true (after telling the user, once) when a Ctrl-C arrived since the mark
// was last cleared. It stops a run even when the Ctrl-C came before the run began, which
// terminate() cannot do.
bool stopForPendingInterrupt();

}  // namespace runner
