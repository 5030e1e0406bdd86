// Shrinks a program that shows a fault to fewer lines that still show it: first whole runs of
// lines, then single lines, are dropped while `stillFails` holds.
#pragma once

#include <functional>
#include <string>

namespace difffuzz {

std::string minimise(const std::string& program,
                     const std::function<bool(const std::string&)>& stillFails);

}  // namespace difffuzz
