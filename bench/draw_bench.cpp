// The cost of the weighted draw: one draw over a full 128-entry table, and a
// whole chord of 67 draws (density, length, voices, and a note and a velocity
// for each of 32 voices) with every table at its full range.

#include <benchmark/benchmark.h>

#include "generator/bank.h"
#include "random/trandom.h"

namespace {

void setFullRanges() {
  SetBankDefaults();
  LiveBank.voicesMin = 0;
  LiveBank.voicesMax = 32;
  SumWeights(LiveBank.noteMin, LiveBank.noteMax, LiveBank.noteWeights, NoteSum);
  SumWeights(LiveBank.velocityMin, LiveBank.velocityMax, LiveBank.velocityWeights, VelocitySum);
  SumWeights(LiveBank.lengthMin, LiveBank.lengthMax, LiveBank.lengthWeights, LengthSum);
  SumWeights(LiveBank.densityMin, LiveBank.densityMax, LiveBank.densityWeights, DensitySum);
  SumWeights(LiveBank.voicesMin, LiveBank.voicesMax, LiveBank.voiceWeights, VoicesSum);
  tdseed(0);
}

void BM_DrawWeighted_Full128Table(benchmark::State& state) {
  setFullRanges();
  for (auto _ : state) {
    benchmark::DoNotOptimize(DrawWeighted(LiveBank.noteWeights, NoteSum, LiveBank.noteMin));
  }
}
BENCHMARK(BM_DrawWeighted_Full128Table);

void BM_DrawWeighted_ChordOf67Draws(benchmark::State& state) {
  setFullRanges();
  const Bank& bank = LiveBank;
  for (auto _ : state) {
    VelocityMask = 255;
    benchmark::DoNotOptimize(DrawWeighted(bank.densityWeights, DensitySum, bank.densityMin));
    benchmark::DoNotOptimize(DrawWeighted(bank.lengthWeights, LengthSum, bank.lengthMin));
    benchmark::DoNotOptimize(DrawWeighted(bank.voiceWeights, VoicesSum, bank.voicesMin));
    for (int voice = 0; voice < 32; ++voice) {
      benchmark::DoNotOptimize(DrawWeighted(bank.noteWeights, NoteSum, bank.noteMin));
      benchmark::DoNotOptimize(DrawWeighted(bank.velocityWeights, VelocitySum, bank.velocityMin));
    }
  }
  state.SetItemsProcessed(state.iterations() * 67);
}
BENCHMARK(BM_DrawWeighted_ChordOf67Draws)->Unit(benchmark::kMicrosecond);

}  // namespace
