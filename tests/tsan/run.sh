#!/bin/sh
# Builds the engine and its threaded tests with ThreadSanitizer and runs them: time limits on
# both ways of running, terminate from another thread, many scripts at once in one process,
# error polling while a script runs, the driver's own watchdog and terminate tests, slots
# made on one thread and freed on another, and a debugger driving a script from another
# thread.
# LX_TSAN_BUILD chooses the build directory.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
root=$(cd "$here/../.." && pwd)
build=${LX_TSAN_BUILD:-$root/build-tsan}
launcher=""
if command -v ccache >/dev/null 2>&1; then launcher="-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"; fi

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLX_TSAN=ON \
  -DLX_WITH_FLTK=OFF $launcher >/dev/null
cmake --build "$build" -j2 --target test_hostile test_threads test_interpreter_driver \
  test_slot_pool test_debugger

# halt_on_error: the first race fails the run.
export TSAN_OPTIONS="halt_on_error=1 ${TSAN_OPTIONS:-}"
cd "$build"
# The hostile tests that cross threads; the others measure time and memory, which the
# instrumented build distorts.
ctest --output-on-failure --timeout 900 \
  -R '^(Threads\.|Watchdog\.|Terminate\.|SlotPoolThreads\.|Hostile\.(Terminate|SecondRun|ErrorSnapshot)|DebuggerAttach\.|BothModes/DebuggerTest\.)'
