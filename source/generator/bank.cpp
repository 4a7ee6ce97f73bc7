#include "generator/bank.h"

#include <algorithm>

#include "random/trandom.h"

Bank LiveBank;

SharedWord<int32_t> FunctionLength = 128;
SharedWord<uint32_t> FunctionsFilters = 0xFFFFFFFFu;
SharedWord<uint32_t> FunctionsPeriodic = 1;
SharedWord<uint32_t> FunctionsRate = 10;
SharedWord<uint32_t> TimeBase = 0;
SharedWord<uint32_t> Overlap = 0;
SharedWord<int32_t> Seed = 0;
SharedWord<uint32_t> IntervalMode = 0;
SharedWord<int16_t> FromNote = 60;
SharedWord<int16_t> IntervalMin = 0;
SharedWord<int16_t> IntervalMax = 127;
SharedWord<int16_t> Mirror = 0;
SharedWord<uint32_t> PendingBoardFlags = 0;
SharedWord<uint8_t> SelectedPitchBoard = 0;
SharedWord<int16_t> NoteSum, VelocitySum, LengthSum, DensitySum, VoicesSum;
std::array<SharedWord<int16_t>, 16> ChannelWeights;
SharedWord<int16_t> ChannelCount;
uint32_t VelocityMask = 255;

void SumWeights(int16_t min, int16_t max, std::span<const Weight> table, SharedWord<int16_t>& sum) {
  // Bounds beyond the table (a damaged file) add nothing instead of reading past it.
  const int first = std::max<int>(min, 0);
  const int last = std::min<int>(max, static_cast<int>(table.size()) - 1);
  int16_t total = 0;
  for (int i = first; i <= last; ++i) total = static_cast<int16_t>(total + table[i]);
  sum = total;  // one store, so a draw never sees a half-made sum
}

int16_t DrawWeighted(std::span<const Weight> table, int16_t sum, int16_t start) {
  if (sum < 1) {
    VelocityMask = 0;
    return -1;
  }
  // The added 0.5 with truncation makes targets 1 and sum half as likely as the others.
  const auto target = static_cast<int16_t>(tdrand() * (sum - 1) + 1.0 + 0.5);

  // A sum that does not match its bounds may walk past the upper bound; the walk
  // ends at the table's last entry, and a bound below 0 starts it at entry 0.
  const int end = static_cast<int>(table.size());
  int index = std::max<int>(start, 0);
  int16_t total = 0;
  while (target > total && index < end) {
    total = static_cast<int16_t>(total + table[index]);
    ++index;
  }
  return static_cast<int16_t>(std::min(index, end) - 1);
}

namespace {

void fillWeights(std::span<Weight> table) { std::fill(table.begin(), table.end(), int16_t{64}); }

}  // namespace

void SetBankDefaults() {
  Bank& bank = LiveBank;
  fillWeights(bank.noteWeights);
  fillWeights(bank.velocityWeights);
  fillWeights(bank.lengthWeights);
  fillWeights(bank.densityWeights);
  fillWeights(bank.voiceWeights);
  bank.noteMin = 0;
  bank.noteMax = 127;
  bank.velocityMin = 0;
  bank.velocityMax = 127;
  bank.voicesMin = 1;
  bank.voicesMax = 1;
  bank.densityMin = 0;
  bank.densityMax = 120;
  bank.lengthMin = 0;
  bank.lengthMax = 100;
  bank.channelMask = 1;
  bank.timeControl = 120;
  bank.boardFlags = 0;
  FunctionsRate = 10;
  Overlap = 0;
}

namespace {

// Where each Distribution of the live record keeps its bounds, its weights and its sum.
struct DistributionPlace {
  SharedWord<int16_t> Bank::*min;
  SharedWord<int16_t> Bank::*max;
  std::span<Weight> (*weights)(Bank&);
  SharedWord<int16_t>* sum;
};

const DistributionPlace& placeOf(Distribution d) {
  static const DistributionPlace places[DistributionCount] = {
      {&Bank::noteMin, &Bank::noteMax, [](Bank& b) -> std::span<Weight> { return b.noteWeights; },
       &NoteSum},
      {&Bank::velocityMin, &Bank::velocityMax,
       [](Bank& b) -> std::span<Weight> { return b.velocityWeights; }, &VelocitySum},
      {&Bank::voicesMin, &Bank::voicesMax, [](Bank& b) -> std::span<Weight> { return b.voiceWeights; },
       &VoicesSum},
      {&Bank::densityMin, &Bank::densityMax,
       [](Bank& b) -> std::span<Weight> { return b.densityWeights; }, &DensitySum},
      {&Bank::lengthMin, &Bank::lengthMax, [](Bank& b) -> std::span<Weight> { return b.lengthWeights; },
       &LengthSum},
  };
  // A number that names no Distribution stands for the last one, Length.
  return places[d >= 0 && d < DistributionCount ? d : LengthDistribution];
}

}  // namespace

SharedWord<int16_t>& LowerBound(Distribution d) { return LiveBank.*placeOf(d).min; }

SharedWord<int16_t>& UpperBound(Distribution d) { return LiveBank.*placeOf(d).max; }

void SumDistribution(Distribution d) {
  const DistributionPlace& place = placeOf(d);
  SumWeights(LiveBank.*place.min, LiveBank.*place.max, place.weights(LiveBank), *place.sum);
}

std::span<Weight> DistributionWeights(Distribution d) { return placeOf(d).weights(LiveBank); }

SharedWord<int16_t>& DistributionSum(Distribution d) { return *placeOf(d).sum; }
