// The cost of one clock pass that dispatches 512 due events to an output
// (a loopback that keeps nothing), with MIDI clock and the metronome's work.

#include <benchmark/benchmark.h>

#include "midi/backends/loopback.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"

namespace {

class Sink final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t, uintptr_t, uintptr_t) override { return 0; }
};

void BM_Pass_Dispatching512DueEvents(benchmark::State& state) {
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices(1, 0);
  const platform::InstalledSeams seams({.loop = &loop, .timers = &timers, .devices = &devices});
  Sink window;
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
  OpenSync(&clock, &window, SYNC_INTERNAL, 10);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  OpenMidiOut(&out, &window, 0, clock, MIDI_OPEN_WORD);
  StartSync(clock);

  for (auto _ : state) {
    state.PauseTiming();
    loop.pump();
    for (uint32_t i = 0; i < 512; ++i) {
      const auto key = static_cast<uint8_t>(i / 2 % 128);
      MidiEvent event{0, static_cast<uint8_t>(i % 2 == 0 ? 0x90 : 0x80), key, 100, 0, nullptr, 0, 0, 0, 0};
      MidiOut(out, &event);
    }
    state.ResumeTiming();
    syncTimer(clock->timerId, 0, reinterpret_cast<uintptr_t>(clock), 0, 0);
  }
  state.SetItemsProcessed(state.iterations() * 512);

  CloseSync(&clock);
  CloseMidiOut(&out);
}
BENCHMARK(BM_Pass_Dispatching512DueEvents)->Unit(benchmark::kMicrosecond);

}  // namespace
