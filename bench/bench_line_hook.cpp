// What the line hook costs: the same loop without a hook (one untaken branch per line), with
// a hook that only counts, and with one that keeps an instruction budget. Run a release
// build: build/bench_line_hook
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string_view>

#include "lxbasic/script.h"

namespace {

constexpr std::string_view kLoop = "DIM s = 0\nFOR i = 1 TO 20000\ns = s + i\nNEXT\nDIM RESULT = s";
constexpr double kLinesPerRun = 2.0 * 20000 + 3;

void runLoop(benchmark::State& state, const lx::LxBasicScript::LineHook& hook) {
  lx::LxBasicScript script;
  script.setLineHook(hook);
  script.setScript(kLoop);
  for (auto _ : state) {
    benchmark::DoNotOptimize(script.runScript());
    if (script.failed()) state.SkipWithError("the script failed");
    state.PauseTiming();
    script.restart();  // the next run declares its variables again
    state.ResumeTiming();
  }
  state.counters["lines/s"] = benchmark::Counter(
      kLinesPerRun * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void BM_NoHook(benchmark::State& state) {
  runLoop(state, nullptr);
}
BENCHMARK(BM_NoHook)->Unit(benchmark::kMillisecond);

void BM_CountingHook(benchmark::State& state) {
  int64_t lines = 0;
  runLoop(state, [&lines](int32_t, int32_t) {
    ++lines;
    return true;
  });
  benchmark::DoNotOptimize(lines);
}
BENCHMARK(BM_CountingHook)->Unit(benchmark::kMillisecond);

void BM_BudgetHook(benchmark::State& state) {
  runLoop(state, [budget = int64_t{1} << 40](int32_t, int32_t) mutable { return --budget > 0; });
}
BENCHMARK(BM_BudgetHook)->Unit(benchmark::kMillisecond);

}  // namespace
