// The script object behind a host's handle, for the engine's own tests and tools. Hosts have
// no use for it: it is neither installed nor exported.
#pragma once

#include "interpreter/script_core.h"
#include "lxbasic/script.h"

namespace lx {

ScriptCore& coreOf(LxBasicScript& script) noexcept;

}  // namespace lx
