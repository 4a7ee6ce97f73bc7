// The generator's cost. The worst pass: a chord of 32 voices drawn with all
// ten boards on and a function step, in the pass in which all 120 chords of
// the ring end (of one voice each, and of 32 voices each). And the renderer:
// passes per second on the virtual timer, without a log.

#include <benchmark/benchmark.h>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "midi/backends/loopback.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"
#include "random/trandom.h"
#include "render/render.h"

namespace {

void worstPass(benchmark::State& state) {
  const int voicesEnding = static_cast<int>(state.range(0));
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices(1, 0);
  const platform::InstalledSeams seams({.loop = &loop, .timers = &timers, .devices = &devices});
  LiveBank = Bank{};
  SetBankDefaults();
  InitFunctionArrays();
  FunctionsFilters = 0xFFFFFFFFu;
  FunctionsRate = 1;
  OpenSync(&TheClock, nullptr, SYNC_INTERNAL, 10);
  SetResolution(TheClock, 120);
  SetTempo(TheClock, 1200000);
  OpenMidiOut(&TheMidiOut, nullptr, 0, TheClock, MIDI_OPEN_WORD);
  RefreshControlPanel(nullptr);
  CommitPanelFromBank();
  LiveBank.boardFlags = 0x3FF;
  tdseed(0);
  uint32_t now = 1000;
  for (auto _ : state) {
    state.PauseTiming();
    now += 1000;
    TheClock->now = now;
    for (auto& chord : SoundingRing) {
      chord.offTime = 1;
      chord.voiceCount = static_cast<int16_t>(voicesEnding);
      for (int v = 0; v < voicesEnding; ++v) chord.voices[v] = {0, static_cast<uint8_t>(v), 100};
    }
    NextChordTick = now;
    NextStepTick = now;
    FunctionIndex = 0;
    // 32 voices whatever the function step says: its Max and Min Voices are off.
    FunctionsFilters = 0xFFFFFFFFu & ~(1u << 2) & ~(1u << 7);
    LiveBank.voicesMin = 32;
    LiveBank.voicesMax = 32;
    SumDistribution(VoicesDistribution);
    state.ResumeTiming();
    GeneratorTick();
  }
  CloseSync(&TheClock);
  CloseMidiOut(&TheMidiOut);
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
