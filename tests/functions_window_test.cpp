// The Functions window's logic without a window: apply and its clipping, the
// scratch curve's samples, the scroll's clamps, the thumbnails' sampling and
// the Functions Settings dialog's decisions.
#include "generator/functions_window.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "generator/functions.h"
#include "support/generator_fixture.h"

namespace {

class FunctionsWindowTest : public GeneratorBench {
 protected:
  void SetUp() override {
    GeneratorBench::SetUp();
    GraphScroll = 0;
    FunctionViewMask = 0;
  }
  void TearDown() override {
    ClearViewRegistry();
    GeneratorBench::TearDown();
  }
  static void fill(int8_t* array, int8_t value) { std::fill(array, array + FunctionLength, value); }
  static void fillScratch(int8_t value) { fill(ScratchCurve.get(), value); }
  static void fillFunction(int f, int8_t value) { fill(FunctionArrays[static_cast<std::size_t>(f)].get(), value); }
  static int8_t at(int f, int i) { return FunctionArrays[static_cast<std::size_t>(f)][static_cast<std::size_t>(i)]; }
  // Resizes as the dialog's OK does, with the generator as it stands.
  FunctionsSettingsOutcome ok(const std::string& length, bool periodic = true) {
    return ApplyFunctionsSettings(nullptr, periodic, length);
  }
};

TEST_F(FunctionsWindowTest, ACurveBetweenTheBoundsAndBelowTheLimitIsAppliedWithoutAWord) {
  fillFunction(5, 10);  // Min Notes
  fillScratch(60);
  EXPECT_EQ(ApplyScratchCurve(301), 0);
  EXPECT_EQ(at(0, 0), 60);
  EXPECT_EQ(at(0, 127), 60);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(FunctionsWindowTest, AVoicesCurveAt50ClipsEverySampleTo32AndSaysHowMany) {
  fillFunction(7, 1);  // Min Voices, below
  fillScratch(50);
  EXPECT_EQ(ApplyScratchCurve(303), 128);
  EXPECT_EQ(at(2, 0), 32);
  EXPECT_EQ(at(2, 127), 32);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Clipped values: 128");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_OK);
  EXPECT_EQ(ScratchCurve[0], 50) << "the scratch curve stays as drawn";
}

TEST_F(FunctionsWindowTest, AMaxBelowItsMinTakesTheMinAndAMinAboveItsMaxTakesTheMax) {
  fillFunction(6, 70);  // Min Velocity
  fillScratch(40);
  ScratchCurve[3] = 90;
  EXPECT_EQ(ApplyScratchCurve(302), 127);
  EXPECT_EQ(at(1, 0), 70);
  EXPECT_EQ(at(1, 3), 90);
  fillFunction(3, 20);  // Max Density
  fillScratch(50);
  ScratchCurve[5] = 10;
  EXPECT_EQ(ApplyScratchCurve(309), 127);
  EXPECT_EQ(at(8, 0), 20);
  EXPECT_EQ(at(8, 5), 10);
}

TEST_F(FunctionsWindowTest, AMinAboveItsLimitIsClippedToTheLimit) {
  fillFunction(4, 127);  // Max Length
  fillScratch(110);
  EXPECT_EQ(ApplyScratchCurve(310), 128);
  EXPECT_EQ(at(9, 64), 100);
}

TEST_F(FunctionsWindowTest, AnApplyIdOutsideTheButtonsChangesNothing) {
  const int8_t before = at(0, 0);
  EXPECT_EQ(ApplyScratchCurve(300), 0);
  EXPECT_EQ(ApplyScratchCurve(311), 0);
  EXPECT_EQ(at(0, 0), before);
}

TEST_F(FunctionsWindowTest, ASampleIsSetAtTheColumnPlusTheScrollAndNotPastTheEnd) {
  ASSERT_EQ(ok("200").closes, true);
  GraphScroll = 100;
  const GraphSample sample = GraphSampleAt({5, 27});
  EXPECT_EQ(sample.index, 105);
  EXPECT_EQ(sample.value, 100);
  EXPECT_TRUE(SetScratchSample(sample));
  EXPECT_EQ(ScratchCurve[105], 100);
  EXPECT_FALSE(SetScratchSample(GraphSampleAt({100, 0}))) << "sample 200 lies past the end";
}

TEST_F(FunctionsWindowTest, ADoubleClickedFunctionIsCopiedIntoTheScratchCurve) {
  fillScratch(0);
  PickUpFunction(8);
  for (int i = 0; i < FunctionLength; ++i) ASSERT_EQ(ScratchCurve[static_cast<std::size_t>(i)], at(8, i));
  fillScratch(0);
  PickUpFunction(10);
  EXPECT_EQ(ScratchCurve[0], 0);
}

TEST_F(FunctionsWindowTest, TheThumbnailTakes64SamplesAcrossTheWholeLength) {
  fillFunction(0, 0);
  FunctionArrays[0][2] = 127;
  auto points = FunctionThumbnailPoints(0);
  ASSERT_EQ(points.size(), 64u);
  EXPECT_EQ(points[0].x, 0);
  EXPECT_EQ(points[0].y, 63);
  EXPECT_EQ(points[1].x, 1) << "sample 2 at x 1";
  EXPECT_EQ(points[1].y, 0);
  EXPECT_EQ(points[63].x, 63);
  ASSERT_EQ(ok("200").closes, true);
  points = FunctionThumbnailPoints(0);
  EXPECT_EQ(points.size(), 64u) << "a step of 3.125";
  EXPECT_LE(points.back().x, 63);
  ASSERT_EQ(ok("0").closes, true);
  EXPECT_TRUE(FunctionThumbnailPoints(0).empty());
}

TEST_F(FunctionsWindowTest, SettingTheLengthFrom200To50AtScroll100ClampsTheScrollTo49) {
  ASSERT_TRUE(ok("200").lengthChanged);
  GraphScroll = 100;
  ClampGraphScroll();
  EXPECT_EQ(GraphScroll, 100);
  const auto outcome = ok("50");
  EXPECT_TRUE(outcome.closes);
  EXPECT_TRUE(outcome.lengthChanged);
  ClampGraphScroll();
  EXPECT_EQ(GraphScroll, 49);
  EXPECT_EQ(GraphScrollMaximum(), 49);
}

TEST_F(FunctionsWindowTest, ALengthOf0ClampsTheScrollToAFloorOf0) {
  GraphScroll = 30;
  ASSERT_TRUE(ok("0").closes);
  EXPECT_EQ(FunctionLength.load(), 0);
  ClampGraphScroll();
  EXPECT_EQ(GraphScroll, 0);
  EXPECT_EQ(GraphScrollMaximum(), 0);
}

TEST_F(FunctionsWindowTest, TheScrollReachesNoFurtherThanTheControls16Bits) {
  ASSERT_TRUE(ok("70000").closes);
  EXPECT_EQ(GraphScrollMaximum(), 65535);
  GraphScroll = 69000;
  ClampGraphScroll();
  EXPECT_EQ(GraphScroll, 65535);
}

TEST_F(FunctionsWindowTest, AScrollToWhereTheGraphStandsAsksForNoRedraw) {
  EXPECT_FALSE(ScrollGraph(0));
  EXPECT_TRUE(ScrollGraph(3));
  EXPECT_EQ(GraphScroll, 3);
}

TEST_F(FunctionsWindowTest, LettersInTheLengthFieldGiveLength0AndANegativeNumberToo) {
  EXPECT_EQ(FunctionsLengthValue("abc"), 0);
  EXPECT_EQ(FunctionsLengthValue("-5"), 0);
  EXPECT_EQ(FunctionsLengthValue("64 steps"), 64);
  EXPECT_EQ(FunctionsLengthValue(std::string(24, '1') + "9"), INT32_MAX) << "24 characters at most, and no wrap";
  ASSERT_TRUE(ok("abc").closes);
  EXPECT_EQ(FunctionLength.load(), 0);
}

TEST_F(FunctionsWindowTest, ANewLengthWhileGeneratingIsRefusedWithThePeriodicChoiceAlreadyInForce) {
  Generating = 1;
  const auto outcome = ok("64", false);
  EXPECT_FALSE(outcome.closes);
  EXPECT_FALSE(outcome.lengthChanged);
  EXPECT_EQ(FunctionLength.load(), 128);
  EXPECT_EQ(FunctionsPeriodic.load(), 0u);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Turn off the random generator before changing length.");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_ICONSTOP);
  EXPECT_TRUE(ok("128").closes) << "an unchanged length closes even while generating";
  Generating = 0;
}

TEST_F(FunctionsWindowTest, ALengthTooLargeForMemoryKeepsTheDialogOpenAndTheArrays) {
  EXPECT_FALSE(ok("2000000000").closes);
  EXPECT_EQ(FunctionLength.load(), 128);
  EXPECT_EQ(prompts.shown().back().text, "Not enough memory. Try with another length.");
}

TEST_F(FunctionsWindowTest, GrowingKeepsTheHeadAndRepeatsTheLastValueTheScratchCurveToo) {
  fillScratch(5);
  ScratchCurve[127] = 77;
  FunctionArrays[3][127] = 66;
  ASSERT_TRUE(ok("200").lengthChanged);
  EXPECT_EQ(ScratchCurve[0], 5);
  EXPECT_EQ(ScratchCurve[199], 77);
  EXPECT_EQ(at(3, 199), 66);
  ASSERT_TRUE(ok("10").lengthChanged);
  EXPECT_EQ(ScratchCurve[9], 5);
}

TEST_F(FunctionsWindowTest, RefreshClampsTheScrollOnlyWhileTheWindowIsOpen) {
  platform::RecordingView window;
  FunctionsWindow = &window;
  GraphScroll = 500;
  RefreshFunctionsWindow(nullptr);
  EXPECT_EQ(GraphScroll, 500);
  EXPECT_EQ(window.refreshes, 0);
  FunctionsOpen = 1;
  RefreshFunctionsWindow(nullptr);
  EXPECT_EQ(GraphScroll, 127);
  EXPECT_EQ(window.refreshes, 1);
}

}  // namespace
