// The generator's cost. The worst pass: a chord of 32 voices drawn with all
// ten boards on and a function step, in the pass in which all 120 chords of
// the ring end (of one voice each, and of 32 voices each). And the renderer:
// passes per second on the virtual timer, without a log.

#include <benchmark/benchmark.h>

#include "midi/backends/loopback.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"
#include "render/render.h"
#include "worst_pass.h"

namespace {

void worstPass(benchmark::State& state) {
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices(1, 0);
  const platform::InstalledSeams seams({.loop = &loop, .timers = &timers, .devices = &devices});
  OpenWorstPass(0);
  uint32_t now = 1000;
  for (auto _ : state) RunWorstPass(state, static_cast<int>(state.range(0)), now);
  CloseWorstPass();
}
BENCHMARK(worstPass)
    ->Name("BM_GeneratorTick_WorstPass/voicesPerEndingChord")
    ->Arg(1)
    ->Arg(32)
    ->Unit(benchmark::kMicrosecond);

void BM_Render_AnHourOfTheDefaultSetUp(benchmark::State& state) {
  RenderOptions options;
  options.seconds = 3600;
  std::string error;
  uint64_t passes = 0;
  for (auto _ : state) {
    if (!Render(options, error)) state.SkipWithError(error.c_str());
    passes += ClockPassCount.load();
  }
  state.counters["passes_per_second"] = benchmark::Counter(static_cast<double>(passes), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_Render_AnHourOfTheDefaultSetUp)->Unit(benchmark::kMillisecond);

}  // namespace
