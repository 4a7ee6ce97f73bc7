#include "generator/functions.h"

#include <gtest/gtest.h>

#include <cmath>

#include "midi/live_devices.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "support/generator_fixture.h"

namespace {

class FunctionsTest : public GeneratorBench {};

TEST_F(FunctionsTest, StartUpCurvesFollowTheirFormulas) {
  ASSERT_EQ(FunctionLength.load(), 128);
  const auto at = [](int f, int i) { return static_cast<int>(FunctionArrays[f][i]); };
  EXPECT_EQ(at(5, 0), 52);   // Min Notes: 25 * 0.5 + 40
  EXPECT_EQ(at(0, 0), 64);   // Max Notes: 12 above
  EXPECT_EQ(at(5, 32), 65);  // the top of the sine
  EXPECT_EQ(at(0, 32), 77);
  EXPECT_EQ(at(5, 96), 40);  // its bottom
  EXPECT_EQ(at(6, 0), 40);
  EXPECT_EQ(at(1, 63), 113);
  EXPECT_EQ(at(6, 64), 103);  // falling again: 127 - 64 + 40
  EXPECT_EQ(at(7, 0), 1);
  EXPECT_EQ(at(2, 1), 2);
  EXPECT_EQ(at(8, 10), 25);
  EXPECT_EQ(at(3, 10), 27);
  EXPECT_EQ(at(8, 64), 60);
  EXPECT_EQ(at(3, 100), 65);
  EXPECT_EQ(at(9, 0), 12);  // 15 * 100 / 120
  EXPECT_EQ(at(4, 64), 50);
}

TEST_F(FunctionsTest, AMaxBelowTheMinimumSetsBoth) {
  FunctionsFilters = 1;  // Max Notes
  LiveBank.noteMin = 50;
  FunctionArrays[0][3] = 40;
  ApplyFunctionStep(3);
  EXPECT_EQ(LiveBank.noteMin.load(), 40);
  EXPECT_EQ(LiveBank.noteMax.load(), 40);
  EXPECT_EQ(NoteSum.load(), 64);
}

TEST_F(FunctionsTest, WithBothOnTheLaterMinDecidesWhenItCrossesTheNewMax) {
  FunctionsFilters = 1 | 1 << 5;  // Max Notes and Min Notes
  FunctionArrays[0][0] = 60;
  FunctionArrays[5][0] = 70;
  ApplyFunctionStep(0);
  EXPECT_EQ(LiveBank.noteMax.load(), 70);
  EXPECT_EQ(LiveBank.noteMin.load(), 70);
}

TEST_F(FunctionsTest, FunctionsThatAreOffLeaveTheirBounds) {
  FunctionsFilters = 1u << 1;  // Max Velocity only
  LiveBank.noteMax = 99;
  FunctionArrays[1][0] = 77;
  ApplyFunctionStep(0);
  EXPECT_EQ(LiveBank.noteMax.load(), 99);
  EXPECT_EQ(LiveBank.velocityMax.load(), 77);
}

TEST_F(FunctionsTest, FunctionLength1StepsElement0OnEveryDuePassAndEndsANonPeriodicRunAtOnce) {
  ASSERT_EQ(ResizeFunctions(nullptr, 1), 1);
  FunctionLength = 1;
  FunctionsPeriodic = 0;
  GeneratorToggle();
  passes(1);
  EXPECT_EQ(Generating.load(), 0u);
  EXPECT_EQ(Draining.load(), 1u);
  EXPECT_EQ(FunctionIndex.load(), 0u);
}

TEST_F(FunctionsTest, NoFiltersMeansNoStepAndNoEnd) {
  FunctionsFilters = 0;
  FunctionsPeriodic = 0;
  GeneratorToggle();
  passes(5000);
  EXPECT_EQ(FunctionIndex.load(), 0u);
  EXPECT_EQ(Generating.load(), 1u);
}

TEST_F(FunctionsTest, ARateOf1WithSeveralTicksAPassStepsOncePerPass) {
  SetTempo(TheClock, 300000);  // 4 ticks a pass
  FunctionsRate = 1;
  GeneratorToggle();
  passes(10);
  EXPECT_EQ(FunctionIndex.load(), 10u);
  EXPECT_LT(NextStepTick.load(), TheClock->now.load()) << "the step time falls behind";
}

TEST_F(FunctionsTest, GrowingRepeatsTheLastElementAndShrinkingLosesTheRest) {
  FunctionArrays[0][127] = 33;
  FunctionArrays[0][99] = 44;
  ASSERT_EQ(ResizeFunctions(nullptr, 200), 1);
  FunctionLength = 200;
  for (int i = 128; i < 200; ++i) ASSERT_EQ(FunctionArrays[0][i], 33) << i;
  ASSERT_EQ(ResizeFunctions(nullptr, 100), 1);
  FunctionLength = 100;
  ASSERT_EQ(ResizeFunctions(nullptr, 128), 1);
  FunctionLength = 128;
  for (int i = 100; i < 128; ++i) ASSERT_EQ(FunctionArrays[0][i], 44) << i;
  EXPECT_EQ(WorkingFunctions[0].load(), FunctionArrays[0].get());
}

TEST_F(FunctionsTest, GrowingFromLength0FillsWithZero) {
  ASSERT_EQ(ResizeFunctions(nullptr, 0), 1);  // nothing touched
  EXPECT_EQ(FunctionArrays[5][0], 52);
  FunctionLength = 0;
  ASSERT_EQ(ResizeFunctions(nullptr, 16), 1);
  for (int f = 0; f < FunctionCount; ++f) {
    for (int i = 0; i < 16; ++i) ASSERT_EQ(FunctionArrays[f][i], 0);
  }
}

TEST_F(FunctionsTest, Length0PointsTheTickBackAtTheLiveArrays) {
  // The tick reads other arrays for a while, as it does those of a bank sent from the Banks window.
  std::array<std::unique_ptr<int8_t[]>, FunctionCount> sent;
  for (int f = 0; f < FunctionCount; ++f) {
    sent[f] = std::make_unique<int8_t[]>(StartFunctionLength);
    WorkingFunctions[f] = sent[f].get();
  }
  int8_t* live = FunctionArrays[0].get();
  ASSERT_EQ(ResizeFunctions(nullptr, 0), 1);
  EXPECT_EQ(FunctionArrays[0].get(), live) << "the live arrays stay as they are";
  for (int f = 0; f < FunctionCount; ++f) EXPECT_EQ(WorkingFunctions[f].load(), FunctionArrays[f].get()) << f;
}

TEST_F(FunctionsTest, ALengthThatCannotBeHadShowsTheMessageAndKeepsTheOldArrays) {
  int8_t* before = FunctionArrays[0].get();
  EXPECT_EQ(ResizeFunctions(nullptr, MaxFunctionLength + 1), 0);
  EXPECT_EQ(ResizeFunctions(nullptr, -5), 0);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[0].text, "Not enough memory. Try with another length.");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_ICONSTOP);
  EXPECT_EQ(FunctionArrays[0].get(), before);
  EXPECT_EQ(WorkingFunctions[0].load(), before);
}

TEST_F(FunctionsTest, TheFirstStepSetsTheBoundsWithoutOrderingOrSums) {
  FunctionsFilters = 1 | 1 << 5;
  FunctionArrays[0][0] = 30;  // Max Notes below ...
  FunctionArrays[5][0] = 90;  // ... Min Notes
  const int16_t sum = NoteSum;
  ApplyFirstStep();
  EXPECT_EQ(LiveBank.noteMax.load(), 30);
  EXPECT_EQ(LiveBank.noteMin.load(), 90);
  EXPECT_EQ(NoteSum.load(), sum) << "the sums wait for the first real step";
}

struct Bar final : platform::MessageTarget {
  std::vector<uintptr_t> values;
  intptr_t handleMessage(uint32_t msg, uintptr_t p1, uintptr_t) override {
    if (msg == BAR_SET_VALUE) values.push_back(p1);
    return 0;
  }
};

TEST_F(FunctionsTest, WithThePanelOpenAStepStoresAndPostsToTheBars) {
  std::array<Bar, 10> bars;
  for (int i = 0; i < 10; ++i) ControlPanelBars[i] = &bars[i];
  ControlPanelOpen = 1;
  FunctionsFilters = 1 | 1 << 5;
  FunctionArrays[0][4] = 30;
  FunctionArrays[5][4] = 90;
  PostFunctionStep(4);
  EXPECT_EQ(LiveBank.noteMax.load(), 30);
  EXPECT_EQ(LiveBank.noteMin.load(), 90) << "no ordering: the panel's commits do that";
  EXPECT_TRUE(bars[0].values.empty()) << "posted, not sent";
  loop.pump();
  EXPECT_EQ(bars[0].values, std::vector<uintptr_t>{30});
  EXPECT_EQ(bars[1].values, std::vector<uintptr_t>{90});
  // The first step with the panel open sets all ten bars, whatever the filters.
  ApplyFirstStep();
  for (auto& bar : bars) EXPECT_EQ(bar.values.size() >= 1, true);
  EXPECT_EQ(bars[9].values.back(), static_cast<uintptr_t>(LiveBank.lengthMin.load()));
  ControlPanelOpen = 0;
  for (auto& bar : ControlPanelBars) bar = nullptr;
}

TEST_F(FunctionsTest, SwitchFunctionFlipsItsBit) {
  FunctionsFilters = 0;
  SwitchFunction(352);
  EXPECT_EQ(FunctionsFilters.load(), 4u);
  SwitchFunction(352);
  EXPECT_EQ(FunctionsFilters.load(), 0u);
  SwitchFunction(360);  // not a function
  EXPECT_EQ(FunctionsFilters.load(), 0u);
}

}  // namespace
