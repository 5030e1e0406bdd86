// The runner's command line: what to do, with which options, on which file.
#pragma once

#include <charconv>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace runner {

enum ExitStatus : int {
  kExitOk = 0,
  kExitScriptError = 1,
  kExitCannotStart = 2,
  kExitException = 3,
  kExitInterrupted = 130,  // as a shell reports a program ended by Ctrl-C
};

inline constexpr const char* kProgram = "lxbasic";
inline constexpr int64_t kDefaultMemoryLimitMiB = 1024;

enum class DialogMode { Automatic, Graphical, Console };
enum class Action { Run, Check, Interactive, Debug, Help, Version };

struct Options {
  Action action = Action::Run;
  std::optional<int32_t> timeout;
  // Memory the script may hold, in MiB; 0 is no limit.
  int64_t memoryLimitMiB = kDefaultMemoryLimitMiB;
  bool reference = false;
  bool stats = false;
  bool plainLog = false;
  DialogMode dialogs = DialogMode::Automatic;
  std::string file;                      // "-" is standard input; empty in interactive mode
  std::vector<std::string> scriptWords;  // the words after FILE, for the script's ARGS
  std::vector<int32_t> breaks;           // --break lines, for the debugger
};

// Anything that keeps the script from starting. `usage` marks command-line mistakes, which
// get a pointer to --help; a file that cannot be read does not need one.
class StartError : public std::runtime_error {
 public:
  StartError(const std::string& message, bool usage) : std::runtime_error(message), usage_(usage) {}
  bool usage() const noexcept { return usage_; }

 private:
  bool usage_;
};

StartError usageError(const std::string& message);

// The whole number `text` spells, all of it, within [least, most]; nothing otherwise.
template <class T>
std::optional<T> wholeNumber(std::string_view text, T least = std::numeric_limits<T>::min(),
                             T most = std::numeric_limits<T>::max()) {
  T n = 0;
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (text.empty() || ec != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (n < least || n > most) return std::nullopt;
  return n;
}

// `interactiveTerminal`: standard input is a terminal, so no FILE means interactive mode.
Options parseArguments(std::span<char* const> args, bool interactiveTerminal);
void printHelp();

}  // namespace runner
