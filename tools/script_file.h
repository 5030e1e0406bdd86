// Reading a script file for the runner: the bytes, checked to be UTF-8, without a byte
// order mark. Failures throw runner::StartError.
#pragma once

#include <string>

namespace runner {

// "-" reads standard input.
std::string readScriptFile(const std::string& path);
// The text without its byte order mark; refuses bytes that are not UTF-8.
std::string decodeScript(std::string bytes, const std::string& shownName);

}  // namespace runner
