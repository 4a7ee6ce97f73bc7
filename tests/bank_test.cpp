#include "generator/bank.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "generator/setup_files.h"
#include "random/trandom.h"

namespace {

// A weight table of its own, for draws over a chosen shape.
template <std::size_t N>
std::array<Weight, N> table(const std::array<int16_t, N>& weights) {
  std::array<Weight, N> result;
  for (std::size_t i = 0; i < N; ++i) result[i] = weights[i];
  return result;
}

int16_t sumOf(std::span<const Weight> weights, int16_t min, int16_t max) {
  SharedWord<int16_t> sum = 99;
  SumWeights(min, max, weights, sum);
  return sum;
}

// The random numbers that a seed gives, for predicting draws.
std::vector<double> randomStream(int32_t seed, int count) {
  tdseed(seed);
  std::vector<double> values(count);
  for (double& r : values) r = tdrand();
  tdseed(seed);
  return values;
}

int16_t expectedTarget(double r, int16_t sum) { return static_cast<int16_t>(r * (sum - 1) + 1.0 + 0.5); }

class DrawTest : public ::testing::Test {
 protected:
  void SetUp() override { VelocityMask = 255; }
};

TEST_F(DrawTest, SumWeights_AddsEveryEntryFromMinToMaxInclusive) {
  const auto weights = table<5>({1, 2, 3, 4, 5});
  EXPECT_EQ(sumOf(weights, 0, 4), 15);
  EXPECT_EQ(sumOf(weights, 1, 3), 9);
  EXPECT_EQ(sumOf(weights, 2, 2), 3);
}

TEST_F(DrawTest, SumWeights_CrossedBoundsGiveZero) {
  const auto weights = table<5>({1, 2, 3, 4, 5});
  EXPECT_EQ(sumOf(weights, 3, 2), 0);
}

TEST_F(DrawTest, SumWeights_WrapsIn16BitArithmetic) {
  const auto weights = table<2>({20000, 20000});
  EXPECT_EQ(sumOf(weights, 0, 1), static_cast<int16_t>(40000));
}

TEST_F(DrawTest, SumWeights_BoundsBeyondTheTableAddNothing) {
  const auto weights = table<3>({1, 2, 3});
  EXPECT_EQ(sumOf(weights, -5, 10), 6);
  EXPECT_EQ(sumOf(weights, 3, 100), 0);
}

TEST_F(DrawTest, DrawWeighted_SumOfOneChoosesTheOneEntryAndStillConsumesARandomNumber) {
  const auto weights = table<4>({0, 0, 1, 0});
  const auto stream = randomStream(7, 51);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(DrawWeighted(weights, 1, 0), 2);
  EXPECT_EQ(tdrand(), stream[50]);  // exactly one number per draw
  EXPECT_EQ(VelocityMask, 255u);
}

TEST_F(DrawTest, DrawWeighted_TwoEntriesOf64SplitTheTargetsAt64) {
  const auto weights = table<2>({64, 64});
  const int16_t sum = sumOf(weights, 0, 1);
  ASSERT_EQ(sum, 128);
  const auto stream = randomStream(0, 2000);
  for (double r : stream) {
    const int16_t target = expectedTarget(r, sum);
    ASSERT_GE(target, 1);
    ASSERT_LE(target, 128);
    EXPECT_EQ(DrawWeighted(weights, sum, 0), target <= 64 ? 0 : 1) << "r " << r;
  }
}

TEST_F(DrawTest, DrawWeighted_FirstDrawsOfSeed0FollowTheCheckValues) {
  // r = 0.274272..., 0.569060..., 0.325302... over 128 entries of 64 (sum 8192).
  std::array<Weight, NoteEntries> weights;
  for (Weight& w : weights) w = 64;
  tdseed(0);
  EXPECT_EQ(DrawWeighted(weights, 8192, 0), 35);  // target 2248: (2248 - 1) / 64
  EXPECT_EQ(DrawWeighted(weights, 8192, 0), 72);  // target 4662
  EXPECT_EQ(DrawWeighted(weights, 8192, 0), 41);  // target 2666
}

TEST_F(DrawTest, DrawWeighted_MinEqualToMaxWithAWeightAlwaysGivesThatIndex) {
  auto weights = table<6>({5, 5, 5, 7, 5, 5});
  const int16_t sum = sumOf(weights, 3, 3);
  tdseed(3);
  for (int i = 0; i < 200; ++i) EXPECT_EQ(DrawWeighted(weights, sum, 3), 3);
}

TEST_F(DrawTest, DrawWeighted_MinEqualToMaxWithZeroWeightFailsWithoutARandomNumber) {
  const auto weights = table<6>({5, 5, 5, 0, 5, 5});
  const int16_t sum = sumOf(weights, 3, 3);
  ASSERT_EQ(sum, 0);
  tdseed(0);
  EXPECT_EQ(DrawWeighted(weights, sum, 3), -1);
  EXPECT_EQ(VelocityMask, 0u);
  EXPECT_NEAR(tdrand(), 0.274272015222, 5e-13);  // the stream did not move
}

TEST_F(DrawTest, DrawWeighted_NoteMinAboveNoteMaxFailsHoweverTheWeightsStand) {
  SetBankDefaults();
  LiveBank.noteMin = 70;
  LiveBank.noteMax = 60;
  SumWeights(LiveBank.noteMin, LiveBank.noteMax, LiveBank.noteWeights, NoteSum);
  EXPECT_EQ(NoteSum, 0);
  EXPECT_EQ(DrawWeighted(LiveBank.noteWeights, NoteSum, LiveBank.noteMin), -1);
  EXPECT_EQ(VelocityMask, 0u);
}

TEST_F(DrawTest, DrawWeighted_AllZeroVoicesFailTheVoicesDraw) {
  SetBankDefaults();
  for (Weight& w : LiveBank.voiceWeights) w = 0;
  LiveBank.voicesMin = 0;
  LiveBank.voicesMax = 32;
  SumWeights(LiveBank.voicesMin, LiveBank.voicesMax, LiveBank.voiceWeights, VoicesSum);
  EXPECT_EQ(DrawWeighted(LiveBank.voiceWeights, VoicesSum, LiveBank.voicesMin), -1);
}

TEST_F(DrawTest, DrawWeighted_ANegativeSumFails) {
  const auto weights = table<2>({-3, 1});
  EXPECT_EQ(DrawWeighted(weights, sumOf(weights, 0, 1), 0), -1);
}

TEST_F(DrawTest, DrawWeighted_ASuccessfulDrawLeavesTheMaskAlone) {
  const auto weights = table<2>({1, 1});
  VelocityMask = 0;  // cleared earlier in the chord: it stays cleared
  EXPECT_GE(DrawWeighted(weights, 2, 0), 0);
  EXPECT_EQ(VelocityMask, 0u);
}

TEST_F(DrawTest, DrawWeighted_AStaleSumWalksPastTheUpperBoundButNotPastTheTable) {
  // The upper bound has just moved from 4 to 1, and the sum still counts 0..4.
  const auto weights = table<5>({0, 1, 0, 0, 0});
  tdseed(0);
  for (int i = 0; i < 100; ++i) {
    const int16_t index = DrawWeighted(weights, 10, 0);
    EXPECT_GE(index, 1);
    EXPECT_LE(index, 4);  // the table's last entry at most
  }
}

TEST_F(DrawTest, DrawWeighted_ABoundBelowZeroStartsAtTheFirstEntry) {
  const auto weights = table<3>({0, 0, 4});
  tdseed(0);
  EXPECT_EQ(DrawWeighted(weights, sumOf(weights, -10, 2), -10), 2);
}

TEST_F(DrawTest, DrawWeighted_ALowerBoundBeyondTheTableGivesTheLastEntry) {
  const auto weights = table<3>({1, 1, 1});
  tdseed(0);
  EXPECT_EQ(DrawWeighted(weights, 3, 40), 2);
}

// Chi-square of observed counts against expected shares; true when the fit
// holds at p above 0.001 (Wilson-Hilferty approximation of the quantile).
bool fits(const std::vector<long>& observed, const std::vector<double>& shares, long draws) {
  double chi2 = 0;
  int cells = 0;
  for (std::size_t i = 0; i < observed.size(); ++i) {
    if (shares[i] == 0) continue;
    const double expected = shares[i] * static_cast<double>(draws);
    chi2 += (static_cast<double>(observed[i]) - expected) * (static_cast<double>(observed[i]) - expected) / expected;
    ++cells;
  }
  const double k = cells - 1;
  const double z = 3.090232;  // upper 0.001 point of the normal distribution
  const double critical = k * std::pow(1 - 2 / (9 * k) + z * std::sqrt(2 / (9 * k)), 3);
  return chi2 < critical;
}

std::vector<long> countDraws(std::span<const Weight> weights, long draws) {
  SharedWord<int16_t> sum;
  SumWeights(0, static_cast<int16_t>(weights.size() - 1), weights, sum);
  std::vector<long> counts(weights.size());
  tdseed(42);
  for (long i = 0; i < draws; ++i) ++counts.at(DrawWeighted(weights, sum, 0));
  return counts;
}

TEST_F(DrawTest, DrawWeighted_OverAMillionDrawsTheExtremeTargetsCountHalf) {
  // Sum 10, targets 1..10: targets 1 and 10 have half the share of the others.
  const auto weights = table<5>({2, 0, 3, 1, 4});
  constexpr long Draws = 1000000;
  const auto counts = countDraws(weights, Draws);
  EXPECT_EQ(counts[1], 0) << "a zero weight is never chosen";
  EXPECT_TRUE(fits(counts, {1.5 / 9, 0, 3.0 / 9, 1.0 / 9, 3.5 / 9}, Draws));
  EXPECT_FALSE(fits(counts, {0.2, 0, 0.3, 0.1, 0.4}, Draws)) << "plain proportional shares must not fit";
}

TEST_F(DrawTest, DrawWeighted_EqualWeightsGiveTheEndEntriesHalfTheirShare) {
  const auto weights = table<4>({1, 1, 1, 1});
  constexpr long Draws = 1000000;
  const auto counts = countDraws(weights, Draws);
  EXPECT_TRUE(fits(counts, {1.0 / 6, 1.0 / 3, 1.0 / 3, 1.0 / 6}, Draws));
}

TEST_F(DrawTest, DrawWeighted_TheDefaultVelocityTableMatchesItsShares) {
  SetBankDefaults();
  constexpr long Draws = 1000000;
  const auto counts = countDraws(LiveBank.velocityWeights, Draws);
  std::vector<double> shares(VelocityEntries, 64.0 / 8191);
  shares.front() = shares.back() = 63.5 / 8191;
  EXPECT_TRUE(fits(counts, shares, Draws));
}

TEST(BankDefaults, SetBankDefaultsFillsTheLiveRecord) {
  SetBankDefaults();
  const Bank& bank = LiveBank;
  for (const auto* weights : {&bank.noteWeights, &bank.velocityWeights}) {
    for (const Weight& w : *weights) EXPECT_EQ(w, 64);
  }
  for (const Weight& w : bank.lengthWeights) EXPECT_EQ(w, 64);
  for (const Weight& w : bank.densityWeights) EXPECT_EQ(w, 64);
  for (const Weight& w : bank.voiceWeights) EXPECT_EQ(w, 64);
  EXPECT_EQ(bank.noteMin, 0);
  EXPECT_EQ(bank.noteMax, 127);
  EXPECT_EQ(bank.velocityMin, 0);
  EXPECT_EQ(bank.velocityMax, 127);
  EXPECT_EQ(bank.voicesMin, 1);
  EXPECT_EQ(bank.voicesMax, 1);
  EXPECT_EQ(bank.densityMin, 0);
  EXPECT_EQ(bank.densityMax, 120);
  EXPECT_EQ(bank.lengthMin, 0);
  EXPECT_EQ(bank.lengthMax, 100);
  EXPECT_EQ(bank.channelMask, 1);
  EXPECT_EQ(bank.timeControl, 120);
  EXPECT_EQ(bank.boardFlags, 0u);
  EXPECT_EQ(FunctionsRate, 10u);
  EXPECT_EQ(Overlap, 0u);
}

TEST(BankDefaults, SetBankDefaultsLeavesTheCurvesAndTheTailAlone) {
  SetBankDefaults();
  for (const auto& curve : LiveBank.boardCurves) {
    for (const auto& point : curve) EXPECT_EQ(point, 0);
  }
  EXPECT_EQ(LiveBank.functionLength, 0u);
  EXPECT_EQ(LiveBank.tempo, 0u);
  EXPECT_EQ(LiveBank.functions[0], nullptr);
}

// Each weight table has one entry for every value of its Distribution, from 0
// to the top: the defaults fill every entry and a sum over bounds past the
// table stops at its end, and the top value is drawn from the last entry. A
// bank file holds the tables, the ten curves of 128 points and the ten arrays.
TEST(BankDefaults, TheTablesHaveTheirSizes) {
  SetBankDefaults();
  const auto everyEntry = [](std::span<const Weight> weights) {
    SharedWord<int16_t> sum = 0;
    SumWeights(0, INT16_MAX, weights, sum);
    return int{sum.load()};
  };
  const auto drawsFromTheLast = [](std::span<Weight> weights, int top) {
    for (Weight& w : weights) w = 0;
    weights[static_cast<std::size_t>(top)] = 1;
    const int16_t drawn = DrawWeighted(weights, 1, 0);
    SetBankDefaults();
    return drawn == top;
  };
  const struct {
    std::span<Weight> weights;
    int top;
  } tables[] = {{LiveBank.noteWeights, 127},
                {LiveBank.velocityWeights, 127},
                {LiveBank.lengthWeights, 100},
                {LiveBank.densityWeights, 120},
                {LiveBank.voiceWeights, 32}};
  for (const auto& table : tables) {
    EXPECT_EQ(everyEntry(table.weights), 64 * (table.top + 1)) << "values 0 to " << table.top;
    EXPECT_TRUE(drawsFromTheLast(table.weights, table.top)) << table.top;
  }
  Bank bank{};
  const std::size_t withoutArrays = BankFileBytes(bank).size();
  EXPECT_EQ(withoutArrays, 8u + 12 + 2 * (128 + 128 + 101 + 121 + 33) + 2 * 10 + 4 + 2 * 10 * 128 + 28);
  bank.functionLength = 3;
  EXPECT_EQ(BankFileBytes(bank).size() - withoutArrays, 10u * 3) << "ten function arrays";
}

TEST(BankDefaults, SetUpGlobalsHaveTheirStartValues) {
  EXPECT_EQ(FunctionLength, 128);
  EXPECT_EQ(FunctionsFilters, 0xFFFFFFFFu);
  EXPECT_EQ(FunctionsPeriodic, 1u);
  EXPECT_EQ(Seed, 0);
  EXPECT_EQ(IntervalMode, 0u);
  EXPECT_EQ(FromNote, 60);
  EXPECT_EQ(IntervalMin, 0);
  EXPECT_EQ(IntervalMax, 127);
  EXPECT_EQ(Mirror, 0);
  EXPECT_EQ(PendingBoardFlags, 0u);
  EXPECT_EQ(SelectedPitchBoard, 0);
}

}  // namespace
