// The cost of user procedure calls: recursive fib(20) makes 21891 calls, each running its
// body in a call frame that its procedure keeps. Run a release build:
// build-release/bench/bench_procedures (configured with -DLX_BUILD_TESTS=ON).
#include <benchmark/benchmark.h>

#include <string_view>

#include "lxbasic/script.h"

namespace {

constexpr std::string_view kFib =
    "FUNCTION Fib(n)\n"
    "  IF n < 2 THEN\n"
    "    Fib = n\n"
    "  ELSE\n"
    "    Fib = Fib(n - 1) + Fib(n - 2)\n"
    "  END IF\n"
    "END FUNCTION\n"
    "DIM RESULT = Fib(20)\n";

void BM_RecursiveFib20(benchmark::State& state) {
  for (auto _ : state) {
    lx::LxBasicScript script;
    script.setScript(kFib);
    benchmark::DoNotOptimize(script.runScript());
    if (script.error() && script.error()->code() > 0) state.SkipWithError("the script failed");
  }
  state.counters["calls/s"] = benchmark::Counter(21891.0 * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate);
}
BENCHMARK(BM_RecursiveFib20)->Unit(benchmark::kMillisecond);

// What a host pays for a script object, made and dropped.
void BM_CreateScriptObject(benchmark::State& state) {
  for (auto _ : state) {
    lx::LxBasicScript script;
    benchmark::DoNotOptimize(script);
  }
}
BENCHMARK(BM_CreateScriptObject)->Unit(benchmark::kMicrosecond);

// The same script without calls, as a yardstick for the statements alone.
void BM_LoopOf21891Lines(benchmark::State& state) {
  for (auto _ : state) {
    lx::LxBasicScript script;
    script.setScript(
        std::string_view("DIM s = 0\nFOR i = 1 TO 21891\ns = s + i\nNEXT\nDIM RESULT = s"));
    benchmark::DoNotOptimize(script.runScript());
  }
}
BENCHMARK(BM_LoopOf21891Lines)->Unit(benchmark::kMillisecond);

}  // namespace
