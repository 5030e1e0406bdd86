// Random scripts from the grammar of the language, for comparing the two evaluators. Every
// program terminates: loops count with their own counters or run a few fixed passes,
// recursion descends on a small number, and texts that grow in loops are cut back.
#pragma once

#include <cstdint>
#include <string>

namespace difffuzz {

// The same seed always gives the same program.
std::string generateProgram(uint64_t seed);

}  // namespace difffuzz
