#pragma once
// The generator's set-up: the Bank record, the globals that stand beside the
// live record, and the one weighted draw through which every random choice of
// a note, velocity, chord size, density and length passes.
//
// Threads: DrawWeighted runs only on the clock's timer thread, inside the
// generator tick. SumWeights runs there when a function array steps a bound
// while the Control Panel is closed, and otherwise on the UI thread. Weights,
// bounds and sums are shared words; a draw may see a sum that does not yet
// match a bound that has just moved, which is accepted for that one draw.

#include <array>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/shared_word.h"

using Weight = SharedWord<int16_t>;

inline constexpr int NoteEntries = 128;
inline constexpr int VelocityEntries = 128;
inline constexpr int LengthEntries = 101;
inline constexpr int DensityEntries = 121;
inline constexpr int VoiceEntries = 33;
inline constexpr int BoardCount = 10;
inline constexpr int BoardPoints = 128;
inline constexpr int FunctionCount = 10;

// Fields in the order of the parameter file; the file writer and reader go
// field by field, so the in-memory layout is C++'s own.
struct Bank {
  std::array<Weight, NoteEntries> noteWeights;
  std::array<Weight, VelocityEntries> velocityWeights;
  std::array<Weight, LengthEntries> lengthWeights;
  std::array<Weight, DensityEntries> densityWeights;
  std::array<Weight, VoiceEntries> voiceWeights;
  SharedWord<int16_t> noteMin, noteMax;
  SharedWord<int16_t> velocityMin, velocityMax;
  SharedWord<int16_t> voicesMin, voicesMax;
  SharedWord<int16_t> densityMin, densityMax;
  SharedWord<int16_t> lengthMin, lengthMax;
  SharedWord<uint16_t> channelMask;  // bit n: MIDI channel n+1 may be drawn; never 0
  SharedWord<int16_t> timeControl;   // position of the "Time Control" bar
  std::array<std::array<SharedWord<int16_t>, BoardPoints>, BoardCount> boardCurves;
  SharedWord<uint32_t> boardFlags;  // bit n: board n is on
  // The tail: a stored record's own copy of what stands beside the live one.
  uint32_t functionLength = 0;
  std::array<std::unique_ptr<int8_t[]>, FunctionCount> functions;  // owned by a stored record
  uint32_t functionsFilters = 0;
  uint32_t overlap = 0;
  uint32_t functionsRate = 0;
  uint32_t tempo = 0;       // microseconds per quarter note at the time of storing
  uint32_t resolution = 0;  // ticks per quarter note
  uint32_t seed = 0;
  uint32_t intervalMode = 0;
  int16_t fromNote = 0;
  int16_t intervalMin = 0;
  int16_t intervalMax = 0;
  int16_t mirror = 0;
};

// The live record; zero until SetBankDefaults runs at start-up.
extern Bank LiveBank;

// Set-up globals, beside the live record.
extern SharedWord<int32_t> FunctionLength;      // steps in each function array; 0: no stepping
extern SharedWord<uint32_t> FunctionsFilters;   // bit n: function array n is stepped
extern SharedWord<uint32_t> FunctionsPeriodic;  // 1: the arrays repeat; 0: generating ends with them
extern SharedWord<uint32_t> FunctionsRate;      // clock ticks between two steps; 0: one step per chord
extern SharedWord<uint32_t> TimeBase;           // clock ticks of full scale, set by the Control Panel
extern SharedWord<uint32_t> Overlap;            // 0: length shares the chord's spacing; else TimeBase
extern SharedWord<int32_t> Seed;
extern SharedWord<uint32_t> IntervalMode;  // 1: the Notes Distribution holds intervals
extern SharedWord<int16_t> FromNote, IntervalMin, IntervalMax, Mirror;
extern SharedWord<uint32_t> PendingBoardFlags;
extern SharedWord<uint8_t> SelectedPitchBoard;
extern SharedWord<int16_t> NoteSum, VelocitySum, LengthSum, DensitySum, VoicesSum;
extern std::array<SharedWord<int16_t>, 16> ChannelWeights;  // 1 where channelMask has the bit
extern SharedWord<int16_t> ChannelCount;
extern uint32_t VelocityMask;  // timer thread only: 255, or 0 once a draw of the chord failed

// Recomputes one Distribution's sum over min..max, both included, in 16-bit
// arithmetic. A crossed range gives 0.
void SumWeights(int16_t min, int16_t max, std::span<const Weight> table, SharedWord<int16_t>& sum);

// Draws one index at or above start, weighted by the table, or returns -1 and
// clears VelocityMask when the sum is below 1 (consuming no random number).
int16_t DrawWeighted(std::span<const Weight> table, int16_t sum, int16_t start);

// Fills the live record, FunctionsRate and Overlap with the defaults.
void SetBankDefaults();

// The five Distributions of the live record, in the order of the Control
// Panel's columns and of the function arrays.
enum Distribution : int {
  NotesDistribution,
  VelocityDistribution,
  VoicesDistribution,
  DensityDistribution,
  LengthDistribution,
  DistributionCount
};
SharedWord<int16_t>& LowerBound(Distribution d);
SharedWord<int16_t>& UpperBound(Distribution d);
// The Distribution's table in the live record, and its sum.
std::span<Weight> DistributionWeights(Distribution d);
SharedWord<int16_t>& DistributionSum(Distribution d);
// Recomputes the Distribution's sum with its current bounds.
void SumDistribution(Distribution d);
