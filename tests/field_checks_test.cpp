#include "platform/field_checks.h"

#include <gtest/gtest.h>

#include "platform/prompts.h"
#include "support/stop_box.h"

namespace {

class FieldChecks : public ::testing::Test {
 protected:
  void SetUp() override { platform::installPrompts(&prompts); }
  void TearDown() override { platform::installPrompts(nullptr); }

  void expectOneBox(const std::string& text) { ExpectOneStopBox(prompts, text); }

  platform::ScriptedPrompts prompts;
};

TEST(TrimBlanks, DropsLeadingAndTrailingBlanksAndTabsAndKeepsInnerOnes) {
  std::string text = " \t 8 x\t ";
  EXPECT_EQ(&TrimBlanks(text), &text);
  EXPECT_EQ(text, "8 x");
}

TEST(TrimBlanks, AnAllBlankTextBecomesEmpty) {
  std::string text = " \t\t  ";
  EXPECT_EQ(TrimBlanks(text), "");
  std::string empty;
  EXPECT_EQ(TrimBlanks(empty), "");
}

TEST(FieldValue, ReadsASignAndDigitsUpToTheFirstOtherCharacter) {
  EXPECT_EQ(FieldValue("-1"), -1);
  EXPECT_EQ(FieldValue("+12"), 12);
  EXPECT_EQ(FieldValue("12ab"), 12);
  EXPECT_EQ(FieldValue("abc"), 0);
  EXPECT_EQ(FieldValue(""), 0);
}

TEST(FieldValue, ANumberBeyond32BitsIsHeldAtTheEndOfTheRange) {
  EXPECT_EQ(FieldValue("4294967297"), INT32_MAX);
  EXPECT_EQ(FieldValue("-99999999999999999999"), INT32_MIN);
}

TEST_F(FieldChecks, CheckRangeTakesItsLimitsAndASignedValue) {
  EXPECT_EQ(CheckRange("-1", -1, 127), 1);
  EXPECT_EQ(CheckRange("127", -1, 127), 1);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(FieldChecks, CheckRangeRefusesWithTheRangeMessage) {
  EXPECT_EQ(CheckRange("128", -1, 127), 0);
  expectOneBox("Value is not in the range -1 to 127.");
}

TEST_F(FieldChecks, CheckRangePassesDigitsFollowedByLettersAsTheirNumberAndLettersAsZero) {
  EXPECT_EQ(CheckRange("12ab", 1, 99), 1);
  EXPECT_EQ(CheckRange("ab", 0, 16), 1);
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(CheckRange("ab", 1, 99), 0);
  expectOneBox("Value is not in the range 1 to 99.");
}

TEST_F(FieldChecks, AnEmptyTextPassesCheckRangeOnlyWhenTheRangeHoldsZero) {
  EXPECT_EQ(CheckRange("", 0, 16), 1);
  EXPECT_EQ(CheckRange("", 1, 16), 0);
}

TEST_F(FieldChecks, AHugeNumberDoesNotWrapIntoTheRange) {
  EXPECT_EQ(CheckRange("4294967297", 0, 100), 0);
  expectOneBox("Value is not in the range 0 to 100.");
}

TEST_F(FieldChecks, CheckPictureAcceptsOneOfTheListedWords) {
  std::string text = "4";
  EXPECT_EQ(CheckPicture(text, "32,16,8,4,2,1"), 1);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(FieldChecks, CheckPictureRefusesWithThePictureOnALineOfItsOwn) {
  std::string text = "3";
  EXPECT_EQ(CheckPicture(text, "32,16,8,4,2,1"), 0);
  expectOneBox("Input does not conform to picture:\n32,16,8,4,2,1");
}

TEST_F(FieldChecks, CheckPictureIsAListOfWordsNotAPattern) {
  std::string text = "08";
  EXPECT_EQ(CheckPicture(text, "32,16,8,4,2,1"), 0);
  std::string blanked = " 8";
  EXPECT_EQ(CheckPicture(blanked, "32,16,8,4,2,1"), 0);
}

TEST_F(FieldChecks, CheckPictureUpperCasesTheTextInPlaceAndThePictureInItsMessage) {
  std::string text = "yes";
  EXPECT_EQ(CheckPicture(text, "No,Yes"), 1);
  EXPECT_EQ(text, "YES");
  std::string other = "maybe";
  EXPECT_EQ(CheckPicture(other, "No,Yes"), 0);
  EXPECT_EQ(other, "MAYBE");
  expectOneBox("Input does not conform to picture:\nNO,YES");
}

TEST_F(FieldChecks, CheckPictureWithAnEmptyPieceAcceptsAnEmptyText) {
  std::string empty;
  EXPECT_EQ(CheckPicture(empty, "32,,16"), 1);
  EXPECT_EQ(CheckPicture(empty, "32,16,"), 1);
  EXPECT_EQ(CheckPicture(empty, "32,16"), 0);
}

TEST_F(FieldChecks, APictureWithoutACommaIsOneWord) {
  std::string text = "A";
  EXPECT_EQ(CheckPicture(text, "a"), 1);
  std::string part = "A";
  EXPECT_EQ(CheckPicture(part, "ab"), 0);
}

TEST(CenterWindow, CentresOverAnotherWindowWithHalvesRoundedTowardZero) {
  const Rect over{100, 100, 401, 301};
  const Rect placed = CenterWindow({0, 0, 200, 100}, &over, 1024, 768);
  EXPECT_EQ(placed.x, 200);
  EXPECT_EQ(placed.y, 200);
  EXPECT_EQ(placed.width, 200);
  EXPECT_EQ(placed.height, 100);
  // A window wider than the one it stands over: -101 / 2 is -50, not -51.
  const Rect narrow{500, 500, 100, 100};
  const Rect wide = CenterWindow({0, 0, 201, 201}, &narrow, 2000, 2000);
  EXPECT_EQ(wide.x, 450);
  EXPECT_EQ(wide.y, 450);
}

TEST(CenterWindow, StaysWithinTheScreensRightAndBottomEdges) {
  const Rect over{900, 700, 200, 100};
  const Rect placed = CenterWindow({0, 0, 300, 200}, &over, 1024, 768);
  EXPECT_EQ(placed.x, 1024 - 300);
  EXPECT_EQ(placed.y, 768 - 200);
}

TEST(CenterWindow, WithoutAnotherWindowCentresOnTheScreen) {
  const Rect placed = CenterWindow({30, 40, 200, 101}, nullptr, 1024, 768);
  EXPECT_EQ(placed.x, 412);
  EXPECT_EQ(placed.y, 333);
}

TEST(CenterWindow, ADialogLargerThanTheScreenLandsAtTheOrigin) {
  const Rect desktop{0, 0, 1024, 768};
  const Rect placed = CenterWindow({0, 0, 2000, 1000}, &desktop, 1024, 768);
  EXPECT_EQ(placed.x, 0);
  EXPECT_EQ(placed.y, 0);
  const Rect alone = CenterWindow({0, 0, 2000, 1000}, nullptr, 1024, 768);
  EXPECT_EQ(alone.x, 0);
  EXPECT_EQ(alone.y, 0);
}

TEST(CenterWindow, AnXOfZeroStaysAndANegativeYBecomesZero) {
  const Rect over{-50, -50, 100, 100};
  const Rect placed = CenterWindow({0, 0, 100, 100}, &over, 1024, 768);
  EXPECT_EQ(placed.x, 0);
  EXPECT_EQ(placed.y, 0);
}

}  // namespace
