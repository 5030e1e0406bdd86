// The cost of user procedure calls: recursive fib(20) makes 21891 calls, each running its
// body as a child script. Run a release build: build/bench_procedures
#include <benchmark/benchmark.h>

#include <string_view>

#include "interpreter/script_core.h"
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

// What a call pays before its body runs: a child script of its own.
void BM_CreateChildScript(benchmark::State& state) {
  auto root = lx::ScriptCore::create();
  for (auto _ : state) benchmark::DoNotOptimize(lx::ScriptCore::createChild(*root));
}
BENCHMARK(BM_CreateChildScript)->Unit(benchmark::kMicrosecond);

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
