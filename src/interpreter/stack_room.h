// Runs nested drivers (procedure calls, Eval) with enough stack: on the current thread while
// it has room, otherwise on a helper thread with a large stack of its own, joined before the
// call returns. The helper inherits the run's memory budget and stop request.
#pragma once

namespace lx {

// True when the current thread is close to the end of its stack.
bool stackIsLow();
// Runs fn(arg) on a helper thread with a fresh stack; false when none could be started.
bool runOnFreshStack(void (*fn)(void*), void* arg);

// Runs `f` here, or on a helper thread when this one is short of stack; false when no helper
// could be started.
template <class F>
bool runWithStackRoom(F& f) {
  if (!stackIsLow()) {
    f();
    return true;
  }
  return runOnFreshStack([](void* p) { (*static_cast<F*>(p))(); }, &f);
}

}  // namespace lx
