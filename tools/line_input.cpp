#include "line_input.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>
#ifdef LX_RUNNER_LIBEDIT
#include <editline/readline.h>
#endif

namespace runner {

std::optional<std::string> readLine(const char* prompt, bool terminal) {
#ifdef LX_RUNNER_LIBEDIT
  if (terminal) {
    char* raw = readline(prompt);
    if (raw == nullptr) return std::nullopt;
    std::string line(raw);
    std::free(raw);
    if (!line.empty()) add_history(line.c_str());
    return line;
  }
#endif
  if (terminal) {
    std::fputs(prompt, stdout);
    std::fflush(stdout);
  }
  std::string line;
  if (!std::getline(std::cin, line)) return std::nullopt;
  return line;
}

}  // namespace runner
