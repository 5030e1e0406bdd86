// What a debugging session needs from the engine that runs the script: the active bodies, the
// variables of one of them, and an evaluation in one of them. The interpreter implements it;
// its answers are asked for only on the script's own thread, while the script is paused.
#pragma once

#include <cstddef>
#include <vector>

#include "lxbasic/debug.h"

namespace lx {

class DebugTarget {
 public:
  virtual ~DebugTarget() = default;
  // The active bodies, innermost first.
  virtual std::vector<DebugFrame> stack() = 0;
  virtual std::vector<DebugVariable> variables(size_t frame) = 0;
  // The value of `expression` in frame `frame`, leaving the error record as it was.
  virtual DebugValue evaluate(UStringView expression, size_t frame) = 0;
  // A stop request (terminate, cancel, the time limit) ends a pause.
  virtual bool stopRequested() const = 0;
};

}  // namespace lx
