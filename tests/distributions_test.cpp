// The Distributions window's logic without a window: the views and their plot
// geometry, the pointer's entry and weight, the sums over the view's copy of
// the bounds, the zones, the Control Panel's commit, the titles, and the
// shown table's file; and the Boards window's edit curve.
#include "generator/distributions.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>

#include "generator/boards.h"
#include "generator/raw_files.h"
#include "support/generator_fixture.h"
#include "support/scratch_folder.h"

namespace {

namespace fs = std::filesystem;

class DistributionsTest : public GeneratorBench {
 protected:
  void SetUp() override {
    GeneratorBench::SetUp();
    SelectShownView(NotesView);
  }
  void TearDown() override {
    ClearViewRegistry();
    GeneratorBench::TearDown();
  }
  std::string path(const char* name) const { return scratch.path(name); }
  static std::vector<int16_t> shorts(const std::string& p) {
    std::ifstream in(p, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    std::vector<int16_t> values;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
      values.push_back(static_cast<int16_t>(static_cast<uint8_t>(bytes[i]) | static_cast<uint8_t>(bytes[i + 1]) << 8));
    }
    return values;
  }
  // The weights of a table from index start on, as the draw reads them.
  static int expectedSum(std::span<const Weight> table, int min, int max) {
    int sum = 0;
    for (int i = min; i <= max; ++i) sum += table[static_cast<std::size_t>(i)];
    return sum;
  }
  ScratchFolder scratch{"distributions"};
};

// A Distributions window as the registry sees it: it counts what it is told.
struct FakeDistributionsWindow final : platform::DistributionsView {
  void refresh() override { ++refreshes; }
  void showColumnTitles() override { ++retitles; }
  int refreshes = 0;
  int retitles = 0;
};

struct ViewShape {
  uint32_t view;
  int entries;
  int step;
  int right;
};

TEST_F(DistributionsTest, EachViewHasItsEntriesStepsAndPlotEdges) {
  for (const ViewShape& shape : {ViewShape{NotesView, 128, 4, 572}, ViewShape{VelocityView, 128, 4, 572},
                                 ViewShape{LengthView, 101, 5, 565}, ViewShape{DensityView, 121, 4, 544},
                                 ViewShape{VoicesView, 33, 15, 555}}) {
    SelectShownView(shape.view);
    SCOPED_TRACE(shape.view);
    EXPECT_EQ(ShownView, shape.view);
    EXPECT_EQ(ShownEntries, shape.entries);
    EXPECT_EQ(static_cast<int>(ShownTable.size()), shape.entries);
    EXPECT_EQ(ColumnStep, shape.step);
    EXPECT_EQ(HalfStep, shape.step / 2);
    EXPECT_EQ(RowStep, 1);
    EXPECT_EQ(PlotRect.left, 60);
    EXPECT_EQ(PlotRect.top, 50);
    EXPECT_EQ(PlotRect.bottom(), 178);
    EXPECT_EQ(PlotRect.right(), shape.right);
    EXPECT_EQ(CursorX, 60 + (shape.right - 60) / 2) << "the cursor marks start in the middle";
    EXPECT_EQ(CursorY, 114);
  }
}

TEST_F(DistributionsTest, TheViewButtonsHaveTheirIdsWithVoicesAt204AndLengthAt202) {
  EXPECT_EQ(ViewButton(NotesView), 200u);
  EXPECT_EQ(ViewButton(VelocityView), 201u);
  EXPECT_EQ(ViewButton(VoicesView), 204u);
  EXPECT_EQ(ViewButton(DensityView), 203u);
  EXPECT_EQ(ViewButton(LengthView), 202u);
  EXPECT_EQ(ButtonView(204), VoicesView);
  EXPECT_EQ(ButtonView(202), LengthView);
  EXPECT_EQ(ButtonView(205), 0u);
}

TEST_F(DistributionsTest, EachViewShowsTheBoundsOfItsOwnDistribution) {
  LiveBank.lengthMin = 7;
  LiveBank.lengthMax = 30;
  SelectShownView(LengthView);
  EXPECT_EQ(ShownMin, 7);
  EXPECT_EQ(ShownMax, 30);
  EXPECT_EQ(ShownTable.data(), LiveBank.lengthWeights.data());
  EXPECT_EQ(ShownSum, &LengthSum);
  SelectShownView(VoicesView);
  EXPECT_EQ(ShownTable.data(), LiveBank.voiceWeights.data());
  EXPECT_EQ(ShownSum, &VoicesSum);
}

TEST_F(DistributionsTest, APointerMapsToAnEntryAndAWeight127AtTheTopAnd0AtTheBottom) {
  const auto top = PlotRect.cellAt(60, 50);
  ASSERT_TRUE(top);
  EXPECT_EQ(top->column, 0);
  EXPECT_EQ(PlotRect.valueOfRow(top->row), 127);
  const auto bottom = PlotRect.cellAt(571, 177);
  ASSERT_TRUE(bottom);
  EXPECT_EQ(bottom->column, 127);
  EXPECT_EQ(PlotRect.valueOfRow(bottom->row), 0);
  EXPECT_EQ(PlotRect.cellAt(67, 60)->column, 1) << "entry 1 covers x 64 to 67";
  EXPECT_FALSE(PlotRect.cellAt(59, 100));
  EXPECT_FALSE(PlotRect.cellAt(100, 49));
}

TEST_F(DistributionsTest, APointerOnThePlotsRightOrBottomEdgeIsOutside) {
  EXPECT_FALSE(PlotRect.cellAt(572, 100)) << "x 572 would name entry 128";
  EXPECT_FALSE(PlotRect.cellAt(100, 178)) << "y 178 would give the weight -1";
  SelectShownView(VoicesView);
  EXPECT_FALSE(PlotRect.cellAt(556, 100)) << "the Voices plot ends at x 555";
  EXPECT_FALSE(PlotRect.cellAt(555, 100));
  ASSERT_TRUE(PlotRect.cellAt(554, 100));
  EXPECT_EQ(PlotRect.cellAt(554, 100)->column, 32);
}

TEST_F(DistributionsTest, SettingAWeightStoresItAndSumsOverTheViewsOwnBounds) {
  SelectShownView(VelocityView);
  ShownMin = 10;  // the copy, not the Bank's bounds (0..127)
  ShownMax = 12;
  SetShownWeight(*PlotRect.cellAt(60 + 11 * 4, 50));
  EXPECT_EQ(LiveBank.velocityWeights[11].load(), 127);
  EXPECT_EQ(VelocitySum.load(), 64 + 127 + 64);
  SetShownWeight(*PlotRect.cellAt(60 + 12 * 4 + 3, 177));
  EXPECT_EQ(LiveBank.velocityWeights[12].load(), 0);
  EXPECT_EQ(VelocitySum.load(), 64 + 127);
}

TEST_F(DistributionsTest, TheCursorMarksSnapToTheCellsMiddleAndRow) {
  MoveCursorMarks(*PlotRect.cellAt(66, 70));
  EXPECT_EQ(CursorX, 62 + 4) << "entry 1's bar stands at 60 + 4 + 2";
  EXPECT_EQ(CursorY, 70);
}

TEST_F(DistributionsTest, AllWeightsInRangeAt0SilenceTheChords) {
  for (int c = 0; c < NoteEntries; ++c) SetShownWeight({c, 127});
  EXPECT_EQ(NoteSum.load(), 0);
  GeneratorToggle();
  passes(300);
  EXPECT_TRUE(noteOns().empty());
}

TEST_F(DistributionsTest, WithTheBoundsAtTheEndsNothingIsInverted) {
  EXPECT_TRUE(BelowZone().empty());
  EXPECT_TRUE(AboveZone().empty());
  for (int x = 60; x < 572; ++x) ASSERT_EQ(ZonesOver(x), 0);
}

TEST_F(DistributionsTest, TheZonesLieOutsideTheBoundsAtTheEdgesOfTheirEntries) {
  ShownMin = 10;
  ShownMax = 20;
  EXPECT_EQ(BelowZone().left, 60);
  EXPECT_EQ(BelowZone().right, 100);
  EXPECT_EQ(AboveZone().left, 60 + 21 * 4);
  EXPECT_EQ(AboveZone().right, 572);
  EXPECT_TRUE(RedrawInverted(99));
  EXPECT_FALSE(RedrawInverted(100));
  EXPECT_FALSE(RedrawInverted(60 + 21 * 4 - 1));
  EXPECT_TRUE(RedrawInverted(60 + 21 * 4));
}

TEST_F(DistributionsTest, CrossedBoundsOverlapAndWhatLiesInBothShowsAsNormal) {
  ShownMin = 30;
  ShownMax = 10;
  EXPECT_EQ(ZonesOver(70), 1);
  EXPECT_EQ(ZonesOver(110), 2) << "entry 12 is both below 30 and above 10";
  EXPECT_EQ(ZonesOver(200), 1);
  EXPECT_TRUE(RedrawInverted(70));
  EXPECT_FALSE(RedrawInverted(110)) << "inverted twice on a full paint, so drawn plain";
  EXPECT_TRUE(RedrawInverted(200));
}

TEST_F(DistributionsTest, BoundsOffTheTableGiveZonesThatStayOnThePlot) {
  ShownMin = -5;
  ShownMax = 300;
  EXPECT_TRUE(BelowZone().empty());
  EXPECT_TRUE(AboveZone().empty());
  ShownMin = 300;
  EXPECT_EQ(BelowZone().right, 572);
}

// The panel's bars, upper first: Notes, Velocity, Voices, Density, Length.
// The bars of Voices update the copy while Length is in view, and the other way round.
TEST_F(DistributionsTest, ThePanelsCommitWritesTheCopyByTheViewCodesWithVoicesAndLengthSwapped) {
  const std::pair<uint32_t, uint32_t> matrix[] = {{1280, NotesView},  {1282, VelocityView}, {1284, LengthView},
                                                  {1286, DensityView}, {1288, VoicesView}};
  for (const auto& [upperBar, viewThatTakesIt] : matrix) {
    for (const uint32_t view : {NotesView, VelocityView, LengthView, DensityView, VoicesView}) {
      SelectShownView(view);
      ShownMin = -1;
      ShownMax = -1;
      CommitBoundBar(upperBar + 1, 3);
      CommitBoundBar(upperBar, 5);
      SCOPED_TRACE(testing::Message() << "bar " << upperBar << ", view " << view);
      if (view == viewThatTakesIt) {
        EXPECT_EQ(ShownMin, 3);
        EXPECT_EQ(ShownMax, 5);
      } else {
        EXPECT_EQ(ShownMin, -1);
        EXPECT_EQ(ShownMax, -1);
      }
    }
  }
}

TEST_F(DistributionsTest, AVoicesBarWhileLengthIsInViewMakesTheLengthSumRunOverTheVoicesBounds) {
  SelectShownView(LengthView);
  CommitBoundBar(1285, 2);
  CommitBoundBar(1284, 4);
  EXPECT_EQ(LiveBank.lengthMin.load(), 0) << "the Bank's own bounds are untouched";
  SetShownWeight({50, 0});
  EXPECT_EQ(LengthSum.load(), 3 * 64) << "summed over 2..4";
  SelectShownView(LengthView);  // the next activation puts it right
  SetShownWeight({50, 0});
  EXPECT_EQ(LengthSum.load(), expectedSum(LiveBank.lengthWeights, 0, 100));
}

TEST_F(DistributionsTest, TheTitlesFollowThePitchMode) {
  for (const auto& [view, title] : {std::pair{VelocityView, "Velocity"}, std::pair{LengthView, "Length"},
                                    std::pair{DensityView, "Density"}, std::pair{VoicesView, "Voices"},
                                    std::pair{NotesView, "Notes"}}) {
    SelectShownView(view);
    EXPECT_EQ(ShownTitle(), title);
  }
  FakeDistributionsWindow window;
  DistributionsWindow = &window;
  DistributionsOpen = 1;
  ApplyPitchSettings({true, 60, 0, 127, false});
  EXPECT_EQ(ColumnTitles[0], "Intervals");
  EXPECT_EQ(ShownTitle(), "Intervals");
  EXPECT_EQ(window.retitles, 1);
  EXPECT_EQ(window.refreshes, 0) << "the view in sight stays";
  ApplyPitchSettings({false, 60, 0, 127, false});
  EXPECT_EQ(ColumnTitles[0], "Notes");
  EXPECT_EQ(window.retitles, 2);
  EXPECT_EQ(ColumnTitles[1], "Velocity");
  EXPECT_EQ(ColumnTitles[2], "Voices");
  EXPECT_EQ(ColumnTitles[3], "Density");
  EXPECT_EQ(ColumnTitles[4], "Length");
}

TEST_F(DistributionsTest, ThePanelsRefreshRetitlesTheNotesColumnOnlyWhileThePanelIsOpen) {
  IntervalMode = 1;
  RefreshControlPanel(nullptr);
  EXPECT_EQ(ColumnTitles[0], "Notes") << "a closed panel leaves the title";
  platform::RecordingView panel;
  ControlPanelWindow = &panel;
  ControlPanelOpen = 1;
  RefreshControlPanel(nullptr);
  EXPECT_EQ(ColumnTitles[0], "Intervals");
}

TEST_F(DistributionsTest, RefreshShowsNotesAgainOnlyWhileTheWindowIsOpen) {
  FakeDistributionsWindow window;
  DistributionsWindow = &window;
  SelectShownView(DensityView);
  RefreshDistributions(nullptr);
  EXPECT_EQ(ShownView, DensityView);
  EXPECT_EQ(window.refreshes, 0);
  DistributionsOpen = 1;
  RefreshDistributions(nullptr);
  EXPECT_EQ(ShownView, NotesView);
  EXPECT_EQ(window.refreshes, 1);
}

// ---- the shown table's file ----

TEST_F(DistributionsTest, ASavedNotesTableHoldsIts128Weights) {
  for (int c = 0; c < NoteEntries; ++c) LiveBank.noteWeights[static_cast<std::size_t>(c)] = static_cast<int16_t>(c);
  ASSERT_EQ(SaveShownTableTo(path("notes.bin")), 1);
  const auto saved = shorts(path("notes.bin"));
  ASSERT_EQ(saved.size(), 128u);
  for (int c = 0; c < NoteEntries; ++c) ASSERT_EQ(saved[static_cast<std::size_t>(c)], c);
  EXPECT_EQ(fs::file_size(path("notes.bin")), 256u);
}

TEST_F(DistributionsTest, ASavedLengthTableRunsOnInto27DensityWeights) {
  for (std::size_t i = 0; i < LiveBank.lengthWeights.size(); ++i) LiveBank.lengthWeights[i] = static_cast<int16_t>(i);
  for (std::size_t i = 0; i < LiveBank.densityWeights.size(); ++i) {
    LiveBank.densityWeights[i] = static_cast<int16_t>(200 + i);
  }
  SelectShownView(LengthView);
  const auto image = ShownTableImage();
  for (int i = 0; i < 101; ++i) ASSERT_EQ(image[static_cast<std::size_t>(i)], i);
  for (int i = 0; i < 27; ++i) ASSERT_EQ(image[static_cast<std::size_t>(101 + i)], 200 + i);
}

TEST_F(DistributionsTest, ASavedDensityTableRunsOnInto7VoicesWeights) {
  LiveBank.voiceWeights[6] = 99;
  LiveBank.voiceWeights[7] = 98;
  SelectShownView(DensityView);
  const auto image = ShownTableImage();
  EXPECT_EQ(image[120], 64);
  EXPECT_EQ(image[121 + 6], 99);
}

TEST_F(DistributionsTest, ASavedVoicesTableRunsOnIntoTheBoundsTheChannelsTheTimeAndTheFirstBoard) {
  LiveBank.noteMin = 11;
  LiveBank.lengthMax = 88;
  LiveBank.channelMask = 0x8001;
  LiveBank.timeControl = 241;
  LiveBank.boardCurves[0][0] = 5;
  LiveBank.boardCurves[0][82] = 6;
  LiveBank.boardCurves[0][83] = 7;
  SelectShownView(VoicesView);
  ASSERT_EQ(SaveShownTableTo(path("voices.bin")), 1);
  const auto saved = shorts(path("voices.bin"));
  ASSERT_EQ(saved.size(), 128u);
  EXPECT_EQ(saved[32], 64);
  EXPECT_EQ(saved[33], 11) << "noteMin";
  EXPECT_EQ(saved[34], 127) << "noteMax";
  EXPECT_EQ(saved[42], 88) << "lengthMax";
  EXPECT_EQ(static_cast<uint16_t>(saved[43]), 0x8001) << "channelMask";
  EXPECT_EQ(saved[44], 241) << "timeControl";
  EXPECT_EQ(saved[45], 5) << "the first board's first point";
  EXPECT_EQ(saved[127], 6) << "and its point 82, the last that fits";
}

TEST_F(DistributionsTest, ReloadingASavedShortTableSaysHowManyShortsWereNotLoaded) {
  for (const auto& [view, extra] : {std::pair{LengthView, 27}, std::pair{DensityView, 7}, std::pair{VoicesView, 95}}) {
    SelectShownView(view);
    ASSERT_EQ(SaveShownTableTo(path("t.bin")), 1);
    const std::size_t before = prompts.shown().size();
    ASSERT_EQ(LoadShownTableFrom(path("t.bin")), 1);
    ASSERT_EQ(prompts.shown().size(), before + 1);
    EXPECT_EQ(prompts.shown().back().text,
              std::to_string(extra) +
                  " shorts were not loaded from file due to the length of the function. You could change function "
                  "length to reload the entire file.");
    EXPECT_EQ(prompts.shown().back().title, "Velmora");
  }
  SelectShownView(NotesView);
  ASSERT_EQ(SaveShownTableTo(path("n.bin")), 1);
  const std::size_t before = prompts.shown().size();
  ASSERT_EQ(LoadShownTableFrom(path("n.bin")), 1);
  EXPECT_EQ(prompts.shown().size(), before) << "a Notes table fits: no message";
}

TEST_F(DistributionsTest, ALoadedTableIsSummedOverTheViewsCopyOfTheBounds) {
  SelectShownView(VelocityView);
  ShownMin = 0;
  ShownMax = 1;
  std::array<int16_t, 128> values{};
  values[0] = 10;
  values[1] = 20;
  values[2] = 30;
  ASSERT_EQ(SaveDistributionFile(path("v.bin"), values), 1);
  ASSERT_EQ(LoadShownTableFrom(path("v.bin")), 1);
  EXPECT_EQ(VelocitySum.load(), 30);
}

TEST_F(DistributionsTest, AFailedLoadStillSumsTheShownTable) {
  SelectShownView(VelocityView);
  ShownMin = 0;
  ShownMax = 0;
  EXPECT_EQ(LoadShownTableFrom(path("missing.bin")), 0);
  EXPECT_EQ(prompts.shown().back().text, "Could not open file.");
  EXPECT_EQ(VelocitySum.load(), 64);
}

TEST_F(DistributionsTest, TheSaveAndLoadButtonsGoThroughTheCurveDialogs) {
  prompts.planFile(path("d.bin"));
  SaveShownTable(nullptr);
  ASSERT_TRUE(fs::exists(path("d.bin")));
  EXPECT_EQ(prompts.shown().back().dialog.filters.front().label, "Fuctions Files (*.bin)");
  LiveBank.noteWeights[0] = 1;
  prompts.planFile(path("d.bin"));
  LoadShownTable(nullptr);
  EXPECT_EQ(LiveBank.noteWeights[0].load(), 64);
  EXPECT_EQ(DistributionFilesDir, scratch.root.string());
}

// ---- the Boards window's edit curve ----

TEST_F(DistributionsTest, TheEditCurveTakes127AtTheTopRowAnd0AtTheBottom) {
  EditCurve.fill(0);
  SetEditPoint(*CurveEditArea.cellAt(10, 10));
  SetEditPoint(*CurveEditArea.cellAt(137, 137));
  SetEditPoint(*CurveEditArea.cellAt(74, 74));
  EXPECT_EQ(EditCurve[0], 127);
  EXPECT_EQ(EditCurve[127], 0);
  EXPECT_EQ(EditCurve[64], 63);
  EXPECT_FALSE(CurveEditArea.cellAt(138, 50)) << "the right edge lies outside";
  EXPECT_FALSE(CurveEditArea.cellAt(50, 138)) << "the bottom edge lies outside";
}

TEST_F(DistributionsTest, StoreCopiesTheEditCurveIntoItsBoardAndDoubleClickPicksABoardUp) {
  for (std::size_t i = 0; i < EditCurve.size(); ++i) EditCurve[i] = static_cast<int16_t>(127 - i);
  StoreEditCurve(305);
  for (std::size_t i = 0; i < EditCurve.size(); ++i) ASSERT_EQ(LiveBank.boardCurves[4][i].load(), 127 - int(i));
  EXPECT_EQ(LiveBank.boardCurves[5][0].load(), 0) << "only the button's board";
  StoreEditCurve(311);
  LiveBank.boardCurves[9][3] = 42;
  PickUpBoard(9);
  EXPECT_EQ(EditCurve[3], 42);
  EXPECT_EQ(EditCurve[0], 0);
  PickUpBoard(10);
  EXPECT_EQ(EditCurve[3], 42) << "no such board: nothing changes";
}

TEST_F(DistributionsTest, TheThumbnailsLieInTwoRowsOfFive) {
  EXPECT_EQ(ThumbnailAt(158, 10), 0);
  EXPECT_EQ(ThumbnailAt(221, 73), 0);
  EXPECT_EQ(ThumbnailAt(222, 10), -1) << "the right edge lies outside";
  EXPECT_EQ(ThumbnailAt(478, 106), 9);
  EXPECT_EQ(ThumbnailAt(238, 169), 6);
  EXPECT_EQ(ThumbnailAt(238, 170), -1);
  EXPECT_EQ(ThumbnailAt(100, 100), -1);
  EXPECT_EQ(std::string(BoardLabels[0]), "Pitch Wheel");
  EXPECT_EQ(std::string(BoardLabels[7]), "Main Volume");
  EXPECT_EQ(std::string(BoardLabels[9]), "Key Aft");
}

}  // namespace
