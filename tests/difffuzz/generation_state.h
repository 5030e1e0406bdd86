// What the parts of the program generator share while they write one program: the random
// source, the procedures defined so far, and where the line being written stands.
#pragma once

#include <string>
#include <vector>

#include "difffuzz/random_source.h"

namespace difffuzz {

// What a statement may name where it stands.
struct Scope {
  std::vector<std::string> scalars;   // readable and assignable
  std::vector<std::string> arrays;    // one dimension, declared with a small bound
  std::vector<std::string> grids;     // two dimensions
  std::vector<std::string> loopVars;  // variables of the open FOR loops: read, never assigned
  std::string counterPrefix = "w";    // WHILE and DO loops count in <prefix><depth>
  std::string forPrefix = "f";
  bool procedure = false;
  int maxNesting = 3;
  int maxPasses = 4;
};

struct Procedure {
  std::string name;
  int params = 0;
  bool function = false;
  bool recursive = false;  // the first parameter is a depth and must be a small number
};

struct GenerationState {
  explicit GenerationState(uint64_t seed) : rnd(seed) {}
  RandomSource rnd;
  std::vector<Procedure> procs;  // defined so far: the only ones a line may call
  int passes = 1;                // how often the current line may run through its loops
  int declared = 0;              // DIM names d1, d2, ... handed out so far
};

}  // namespace difffuzz
