#pragma once
// The generator's worst pass, set up on any output: a chord of 32 voices drawn
// with all ten boards on and a function step, in the pass in which all 120
// chords of the ring end, each with the given number of voices.

#include <benchmark/benchmark.h>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "random/trandom.h"

// The live set-up of the worst pass; the clock and the output are opened on
// the installed seams, on the given output device.
inline bool OpenWorstPass(uint32_t outputDevice) {
  LiveBank = Bank{};
  SetBankDefaults();
  InitFunctionArrays();
  FunctionsFilters = 0xFFFFFFFFu;
  FunctionsRate = 1;
  OpenSync(&TheClock, nullptr, SYNC_INTERNAL, 10);
  SetResolution(TheClock, 120);
  SetTempo(TheClock, 1200000);
  if (OpenMidiOut(&TheMidiOut, nullptr, outputDevice, TheClock, MIDI_OPEN_WORD) != 0) return false;
  RefreshControlPanel(nullptr);
  CommitPanelFromBank();
  LiveBank.boardFlags = 0x3FF;
  tdseed(0);
  return true;
}

// Fills the ring with chords that all end in the next pass, then runs it
// (only the pass is timed).
inline void RunWorstPass(benchmark::State& state, int voicesEnding, uint32_t& now) {
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

inline void CloseWorstPass() {
  CloseSync(&TheClock);
  CloseMidiOut(&TheMidiOut);
}
