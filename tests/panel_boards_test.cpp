#include <gtest/gtest.h>

#include "generator/boards.h"
#include "generator/control_panel.h"
#include "support/generator_fixture.h"

namespace {

class PanelTest : public GeneratorBench {};

TEST_F(PanelTest, TheTimeControlMapGives250For241) {
  EXPECT_EQ(MapTimeScale(241), 250u);
  EXPECT_EQ(MapTimeScale(240), 240u);
  EXPECT_EQ(MapTimeScale(0), 0u);
  EXPECT_EQ(MapTimeScale(395), 1790u);
  CommitTimeControl(241);
  EXPECT_EQ(TimeBase.load(), 250u);
  EXPECT_EQ(LiveBank.timeControl.load(), 241);
}

TEST_F(PanelTest, TheFunctionsRateKeepsTheRawPosition) {
  CommitFunctionsRate(300);
  EXPECT_EQ(FunctionsRate.load(), 300u);
  EXPECT_EQ(MapTimeScale(300), 840u) << "only the shown number is mapped";
}

TEST_F(PanelTest, ALowerBarDraggedPastTheUpperPushesItUp) {
  LiveBank.noteMax = 50;
  EXPECT_EQ(CommitBoundBar(1281, 60), 1280u) << "the upper bar must follow";
  EXPECT_EQ(LiveBank.noteMin.load(), 60);
  EXPECT_EQ(CommitBoundBar(1280, 60), 0u);
  EXPECT_EQ(NoteSum.load(), 64);
}

TEST_F(PanelTest, WhileRefreshingTheBarsACrossedPairIsKept) {
  BarGuard = 0;
  LiveBank.velocityMin = 90;
  EXPECT_EQ(CommitBoundBar(1282, 80), 0u);
  EXPECT_EQ(VelocitySum.load(), 0) << "the sum is 0 until a bar moves";
  BarGuard = 1;
}

TEST_F(PanelTest, TheOnlyLitChannelCannotBeTurnedOff) {
  ASSERT_EQ(LiveBank.channelMask.load(), 1);
  EXPECT_FALSE(SwitchChannel(201));
  EXPECT_EQ(LiveBank.channelMask.load(), 1);
  EXPECT_EQ(ChannelCount.load(), 1);
  EXPECT_TRUE(SwitchChannel(216));
  EXPECT_EQ(LiveBank.channelMask.load(), 0x8001);
  EXPECT_EQ(ChannelCount.load(), 2);
  EXPECT_TRUE(SwitchChannel(201));
  EXPECT_EQ(LiveBank.channelMask.load(), 0x8000);
  EXPECT_EQ(ChannelWeights[0].load(), 0);
}

TEST_F(PanelTest, RefreshRebuildsTheChannelTableAndTheSums) {
  LiveBank.channelMask = 0b1011;
  LiveBank.noteMin = 10;
  LiveBank.noteMax = 11;
  RefreshControlPanel(nullptr);
  EXPECT_EQ(ChannelCount.load(), 3);
  EXPECT_EQ(ChannelWeights[2].load(), 0);
  EXPECT_EQ(NoteSum.load(), 128);
}

TEST_F(PanelTest, RefreshReachesAnOpenPanelWithTheGuardDown) {
  struct Panel final : platform::RefreshableView {
    uint32_t guardSeen = 9;
    void refresh() override { guardSeen = BarGuard; }
  } panel;
  ControlPanelWindow = &panel;
  ControlPanelOpen = 1;
  RefreshControlPanel(nullptr);
  EXPECT_EQ(panel.guardSeen, 0u);
  EXPECT_EQ(BarGuard.load(), 1u);
  ClearViewRegistry();
}

PitchSettings interval(int from, int min, int max) { return {true, from, min, max, false}; }

TEST_F(PanelTest, PitchSettingsAcceptAMinimumOf116WithAMaximumOf127ButNot117) {
  EXPECT_TRUE(CheckPitchSettings(interval(120, 116, 127)).ok);
  const auto refused = CheckPitchSettings(interval(120, 117, 127));
  EXPECT_FALSE(refused.ok);
  EXPECT_EQ(refused.message, "Minimum Bound is not in the range 0 to 116.");
  EXPECT_EQ(refused.focus, 101u);
}

TEST_F(PanelTest, PitchSettingsRefuseANarrowRangeWithTheFocusOnTheMaximum) {
  const auto refused = CheckPitchSettings(interval(25, 20, 30));
  EXPECT_EQ(refused.message, "Maximun Bound and Minimum Bound diference must be equal or greater than 11.");
  EXPECT_EQ(refused.focus, 102u);
  EXPECT_EQ(CheckPitchSettings(interval(60, 0, 10)).message, "Maximum Bound is not in the range 11 to 127.");
  const auto from = CheckPitchSettings(interval(10, 20, 40));
  EXPECT_EQ(from.message, "Value is not in the range 20 to 40.");
  EXPECT_EQ(from.focus, 513u);
}

TEST_F(PanelTest, NoteModeChecksNothingAndLeavesTheWalk) {
  EXPECT_TRUE(CheckPitchSettings({false, -5, 500, 2, false}).ok);
  PitchWalk = 77;
  ApplyPitchSettings({false, 0, 0, 0, true});
  EXPECT_EQ(IntervalMode.load(), 0u);
  EXPECT_EQ(PitchWalk.load(), 77);
  EXPECT_EQ(Mirror.load(), 1) << "Mirror is taken in both modes";
}

TEST_F(PanelTest, IntervalModeStartsTheWalkOverAtOnce) {
  ApplyPitchSettings(interval(50, 40, 80));
  EXPECT_EQ(IntervalMode.load(), 1u);
  EXPECT_EQ(PitchWalk.load(), 50);
  EXPECT_EQ(FromNote.load(), 50);
  EXPECT_EQ(IntervalMin.load(), 40);
  EXPECT_EQ(IntervalMax.load(), 80);
}

// ---- boards ----

class BoardsTest : public GeneratorBench {
 protected:
  std::vector<uint32_t> resets() const {
    std::vector<uint32_t> words;
    for (const auto& s : devices.sent()) words.push_back(s.word);
    return words;
  }
};

TEST_F(BoardsTest, PressingAPitchBoardWhileAnotherIsOnResetsAllKindsAndSwapsThem) {
  PressBoardButton(351);
  PressBoardButton(355);  // mod wheel on too
  EXPECT_TRUE(resets().empty()) << "turning on sends nothing";
  PressBoardButton(353);
  EXPECT_EQ(LiveBank.boardFlags.load(), (1u << 3) | (1u << 5));
  EXPECT_EQ(SelectedPitchBoard.load(), 3);
  const auto words = resets();
  ASSERT_EQ(words.size(), 32u) << "pitch wheel and mod wheel on 16 channels";
  EXPECT_EQ(words[0], 0x4000EFu) << "channel 16 first, the wheel to its centre";
  EXPECT_EQ(words[1], 0x0001BFu);
  EXPECT_EQ(words[31], 0x0001B0u);
}

TEST_F(BoardsTest, PressingTheLitPitchBoardTurnsItOffAndKeepsItSelected) {
  PressBoardButton(352);
  devices.clearSent();
  PressBoardButton(352);
  EXPECT_EQ(LiveBank.boardFlags.load(), 0u);
  EXPECT_EQ(SelectedPitchBoard.load(), 2);
  EXPECT_EQ(resets().size(), 16u);
}

TEST_F(BoardsTest, TurningPanOffResetsTheModWheelTooAndKeepsItOn) {
  PressBoardButton(355);
  PressBoardButton(358);
  PressBoardButton(358);
  const auto words = resets();
  ASSERT_EQ(words.size(), 32u);
  EXPECT_EQ(words[0], 0x0001BFu);
  EXPECT_EQ(words[1], 0x400ABFu);
  EXPECT_EQ(LiveBank.boardFlags.load(), 1u << 5);
}

TEST_F(BoardsTest, TheResetsOfVolumeAndPressureUseTheirOwnValues) {
  LiveBank.boardFlags = (1u << 7) | (1u << 9);
  SwitchBoard(357);
  const auto words = resets();
  ASSERT_EQ(words.size(), 32u);
  EXPECT_EQ(words[0], 0x4007BFu);
  EXPECT_EQ(words[1], 0x0000DFu);
}

TEST_F(BoardsTest, RefreshTakesThePendingFlagsAndTheHighestPitchBoardSelects) {
  PendingBoardFlags = (1u << 1) | (1u << 4) | (1u << 8);
  LiveBank.boardFlags = 1u << 6;
  RefreshBoards(nullptr);
  EXPECT_EQ(LiveBank.boardFlags.load(), PendingBoardFlags.load());
  EXPECT_EQ(SelectedPitchBoard.load(), 4);
  EXPECT_TRUE(resets().empty());
}

TEST_F(BoardsTest, ClearBoardsSendsNothing) {
  LiveBank.boardFlags = 0x3FF;
  ClearBoards(nullptr);
  EXPECT_EQ(LiveBank.boardFlags.load(), 0u);
  EXPECT_TRUE(resets().empty());
}

}  // namespace
