// Reading one line from the user: with line editing and history on a terminal when the
// runner was built with libedit, plainly otherwise.
#pragma once

#include <optional>
#include <string>

namespace runner {

// The line without its line end; nothing at the end of input.
std::optional<std::string> readLine(const char* prompt, bool terminal);

}  // namespace runner
