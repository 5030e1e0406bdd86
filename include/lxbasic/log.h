// The engine's log: where Print and WriteLn write, and where the engine reports what it
// tells nobody else (TimeSerial's line, dropped background exceptions).
#pragma once

#include <functional>

#include "lxbasic/export.h"
#include "lxbasic/variant.h"

namespace lx {

// Receives one entry, without a line end. Called from whatever thread runs the script.
using LogSink = std::function<void(UStringView message)>;

// Replaces the process-wide sink; an empty function restores the default, which writes
// "YYYY-MM-DD HH:MM:SS.mmm name[pid] message" and a line feed to stderr.
LX_API void setLogSink(LogSink sink);
LX_API void logMessage(UStringView message);

}  // namespace lx
