#include "song/transforms.h"

#include <gtest/gtest.h>

#include "song/events_list.h"
#include "song/note_linking.h"
#include "platform/command_ids.h"
#include "song/region_edits.h"
#include "song/transform_dialogs.h"
#include "support/song_bench.h"

namespace {

class TransformsTest : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    QuantizeGrid = 30;
    QuantizeStrength = 100;
    QuantizeSwing = 50;
    QuantizeWindow = 100;
    QuantizeOffset = 0;
    QuantizeStart = QuantizeDuration = 1;
    LengthStart = 0;
    LengthDuration = 1;
    SlideAmount = 0;
    SlideInTicks = 1;
    TransposeAmount = 0;
    VelocityBegin = VelocityEnd = 0;
    EditFrom = 0;
    EditTo = 0xFFFFFFFFu;
    select({1});
  }
  static void select(std::initializer_list<uint32_t> tracks) {
    SelectedTrackCount = 0;
    for (uint32_t t : tracks) SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = t;
  }
  static uint32_t quantize(uint32_t t) { return QuantizeTime(t, QuantizeSteps(), QuantizeWindowTicks()); }
  static std::vector<uint32_t> times(uint32_t track) {
    std::vector<uint32_t> out;
    for (uint32_t i = 0; i < Tracks[track].count; ++i) out.push_back(Tracks[track].events[i].time);
    return out;
  }
  static std::vector<int> velocities(uint32_t track) {
    std::vector<int> out;
    for (uint32_t i = 0; i < Tracks[track].count; ++i) {
      if (IsNoteOn(Tracks[track].events[i])) out.push_back(Tracks[track].events[i].value2);
    }
    return out;
  }
  static std::vector<MidiEvent> notes(std::initializer_list<std::pair<uint32_t, uint32_t>> spans, uint8_t key = 60) {
    std::vector<MidiEvent> out;
    for (auto [on, off] : spans) {
      out.push_back(ev(on, 0x90, key, 90));
      out.push_back(ev(off, 0x90, key, 0));
    }
    std::stable_sort(out.begin(), out.end(), [](const MidiEvent& a, const MidiEvent& b) { return a.time < b.time; });
    return out;
  }
};

// ---- QuantizeTime ----

TEST_F(TransformsTest, TheStraightGridRoundsToTheNearestPointWithTheHalfGoingUp) {
  EXPECT_EQ(quantize(44), 30u);
  EXPECT_EQ(quantize(45), 60u);
  EXPECT_EQ(quantize(0), 0u);
  EXPECT_EQ(quantize(15), 30u);
}

TEST_F(TransformsTest, SwingMovesTheMiddlePoint) {
  QuantizeSwing = 60;
  EXPECT_EQ(QuantizeSteps(), (std::array<double, 2>{36, 24}));
  EXPECT_EQ(quantize(40), 36u);
  EXPECT_EQ(quantize(47), 60u);
}

TEST_F(TransformsTest, StrengthMovesPartOfTheWay) {
  QuantizeStrength = 50;
  EXPECT_EQ(quantize(44), 37u);
}

TEST_F(TransformsTest, OnlyTimesWithinTheWindowOfTheStraightGridMove) {
  QuantizeWindow = 10;
  EXPECT_EQ(QuantizeWindowTicks(), 3u);
  EXPECT_EQ(quantize(40), 40u);
  EXPECT_EQ(quantize(32), 30u);
}

TEST_F(TransformsTest, TheOffsetShiftsTheGridAndANegativeOneStopsAtZero) {
  QuantizeOffset = 5;
  EXPECT_EQ(quantize(44), 35u);
  QuantizeOffset = -5;
  EXPECT_EQ(quantize(2), 0u) << "the target -5 is held at 0";
  EXPECT_EQ(quantize(44), 55u) << "the distances are taken from the straight grid's 30, not from 44";
}

// ---- the transforms ----

TEST_F(TransformsTest, QuantizeMovesANoteAndQuantizesItsEndAsAPoint) {
  install(1, notes({{44, 100}}));
  QuantizeSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{30, 90}));
}

TEST_F(TransformsTest, QuantizeWithoutDurationsKeepsTheNotesLength) {
  QuantizeDuration = 0;
  install(1, notes({{44, 100}}));
  QuantizeSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{30, 86}));
}

TEST_F(TransformsTest, ANoteWhoseEndsMeetGetsOneGridStep) {
  install(1, notes({{40, 44}}));
  QuantizeSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{30, 60}));
}

TEST_F(TransformsTest, OnlyTheRegionsEventsMoveAndANoteOffIsNeverMovedForItself) {
  install(1, {ev(14, 0x90, 60, 90), ev(44, 0x90, 60, 0), ev(44, 0xB0, 7, 1), ev(100, 0xB0, 7, 2)});
  EditFrom = 40;
  EditTo = 50;
  QuantizeSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{14, 30, 44, 100}))
      << "the controller moved to 30; the note-off in the region stayed";
}

TEST_F(TransformsTest, LengthScalesFromTheSongsStartAndWrapsAt32Bits) {
  LengthStart = 1;
  LengthDuration = 1;
  install(1, notes({{1000, 1100}}));
  LengthSelectedTracks(50);
  EXPECT_EQ(times(1), (std::vector<uint32_t>{500, 550}));
  install(2, {ev(50000000, 0xB0, 7, 1)});
  select({2});
  LengthSelectedTracks(100);
  EXPECT_EQ(times(2), (std::vector<uint32_t>{static_cast<uint32_t>(50000000u * 100u) / 100u}))
      << "the product's low 32 bits";
  EXPECT_NE(times(2)[0], 50000000u);
}

TEST_F(TransformsTest, LengthAtZeroPercentPutsTheRegionAtTickZero) {
  LengthStart = 1;
  LengthDuration = 0;
  install(1, notes({{100, 130}}));
  LengthSelectedTracks(0);
  EXPECT_EQ(times(1), (std::vector<uint32_t>{0, 30})) << "the note keeps its length";
  LengthDuration = 1;
  LengthSelectedTracks(0);
  EXPECT_EQ(times(1), (std::vector<uint32_t>{0, 1})) << "with durations scaled it is one tick long";
}

TEST_F(TransformsTest, TransposeFoldsIntoTheKeysRangeByWholeOctaves) {
  install(1, {ev(0, 0x90, 120, 90), ev(10, 0x90, 120, 0), ev(20, 0x90, 3, 90), ev(30, 0x90, 3, 0)});
  TransposeAmount = 12;
  EditTo = 15;
  TransposeSelectedTracks();
  EXPECT_EQ(Tracks[1].events[0].value1, 120);
  EXPECT_EQ(Tracks[1].events[1].value1, 120);
  TransposeAmount = -5;
  EditFrom = 20;
  EditTo = 25;
  TransposeSelectedTracks();
  EXPECT_EQ(Tracks[1].events[2].value1, 10);
  EXPECT_EQ(Tracks[1].events[3].value1, 10) << "the note-off follows";
}

TEST_F(TransformsTest, VelocityRampsOverTheNotesInEitherDirection) {
  install(1, notes({{0, 5}, {10, 15}, {20, 25}, {30, 35}, {40, 45}}));
  VelocityBegin = 10;
  VelocityEnd = 20;
  VelocitySelectedTracks();
  EXPECT_EQ(velocities(1), (std::vector<int>{10, 12, 14, 16, 18}));
  VelocityBegin = 20;
  VelocityEnd = 10;
  VelocitySelectedTracks();
  EXPECT_EQ(velocities(1), (std::vector<int>{18, 16, 14, 12, 10}));
}

TEST_F(TransformsTest, ARampFromZeroMakesTheFirstNoteANoteOffAndTheLinksFollow) {
  install(1, notes({{0, 5}, {10, 15}}));
  VelocityBegin = 0;
  VelocityEnd = 10;
  VelocitySelectedTracks();
  const TrackRecord& t = Tracks[1];
  EXPECT_TRUE(IsNoteOff(t.events[0]));
  EXPECT_EQ(t.events[0].link, nullptr) << "a note-off with nothing to end";
  EXPECT_EQ(t.events[1].link, nullptr);
  EXPECT_EQ(t.events[2].link, &t.events[3]);
}

TEST_F(TransformsTest, SlideStopsTheEarliestEventAtTickZero) {
  install(1, {ev(40, 0xB0, 7, 1), ev(100, 0xB0, 7, 2)});
  install(2, notes({{60, 90}}));
  select({1, 2});
  SlideAmount = -100;
  SlideSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{0, 60}));
  EXPECT_EQ(times(2), (std::vector<uint32_t>{20, 50}));
}

TEST_F(TransformsTest, ARegionWithoutNotesLeavesVelocityAndTransposeButLengthAndSlideMoveItsEvents) {
  install(1, {ev(100, 0xB0, 7, 1)});
  TransposeAmount = 5;
  VelocityBegin = VelocityEnd = 3;
  TransposeSelectedTracks();
  VelocitySelectedTracks();
  EXPECT_EQ(Tracks[1].events[0].value1, 7);
  EXPECT_EQ(Tracks[1].events[0].value2, 1);
  SlideAmount = 20;
  SlideSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{120}));
}

TEST_F(TransformsTest, AMovingTransformRebuildsTheOpenEventsListsRows) {
  install(1, {ev(44, 0xB0, 7, 1), ev(50, 0xB0, 7, 2)});
  RecordingList list;
  EventsList = &list;
  EventsOpen = 1;
  RefreshEventsList();
  ASSERT_EQ(EventRowCount, 2u);
  QuantizeSelectedTracks();
  EXPECT_EQ(times(1), (std::vector<uint32_t>{30, 60}));
  EXPECT_EQ(EventRows[0].event->time, 30u);
  EXPECT_EQ(EventRows[1].event->time, 60u);
  EXPECT_GE(list.repaints, 2);
  ClearViewRegistry();
}

// ---- the dialogs ----

TEST_F(TransformsTest, TheResolutionComboShowsTheItemOfTheGridOrItsTicks) {
  EXPECT_EQ(ResolutionText(100), "Quarter") << "480 / 100 is 4";
  EXPECT_EQ(ResolutionText(30), "Sixteenth");
  EXPECT_EQ(ResolutionText(40), "Eighth Triplet");
  EXPECT_EQ(ResolutionText(7), "7");
  EXPECT_EQ(ResolutionGrid("Quarter"), 120);
  EXPECT_EQ(ResolutionGrid("Eighth Triplet"), 40);
  EXPECT_EQ(ResolutionGrid("32nd"), 15);
  EXPECT_EQ(ResolutionGrid("32nd Triplet"), 10);
  EXPECT_EQ(ResolutionGrid("45"), 45);
  EXPECT_EQ(ResolutionGrid("0"), 1);
  EXPECT_EQ(ResolutionGrid("a lot"), 1);
}

TEST_F(TransformsTest, QuantizeStoresRegionBoxesAndGridFirstThenEachNumberUntilARefusal) {
  SelectFrom = 120;
  SelectTo = 240;
  TransformEntries entries = OpenTransformDialog(DLG_QUANTIZE);
  EXPECT_EQ(entries.texts.at(ID_QUANTIZE_RESOLUTION), "Sixteenth");
  EXPECT_EQ(entries.texts.at(ID_QUANTIZE_STRENGTH), "100");
  EXPECT_EQ(entries.texts.at(ID_REGION_FROM), "00001:02:000");
  entries.texts[ID_REGION_FROM] = "2:1:0";
  entries.texts[ID_QUANTIZE_RESOLUTION] = "Eighth";
  entries.texts[ID_QUANTIZE_STRENGTH] = " 50 ";
  entries.texts[ID_QUANTIZE_SWING] = "100";
  entries.checks[ID_CHANGE_DURATIONS] = false;
  SongDirty = 0;
  EXPECT_EQ(AcceptTransformDialog(DLG_QUANTIZE, entries), ID_QUANTIZE_SWING);
  EXPECT_EQ(prompts.shown().back().text, "Value is not in the range 1 to 99.");
  EXPECT_EQ(EditFrom, 480u);
  EXPECT_EQ(QuantizeDuration, 0u);
  EXPECT_EQ(QuantizeGrid, 60);
  EXPECT_EQ(QuantizeStrength, 50) << "the field before the refused one is stored";
  EXPECT_EQ(QuantizeSwing, 50);
  EXPECT_EQ(AcceptedTransformText(DLG_QUANTIZE, ID_QUANTIZE_SWING), "50") << "what the field showed comes back";
  EXPECT_EQ(SongDirty, 0u);
}

TEST_F(TransformsTest, LengthReadsItsPercentageFirstAndAnEmptyOnePassesAsZero) {
  TransformEntries entries = OpenTransformDialog(DLG_LENGTH);
  EXPECT_EQ(entries.texts.at(ID_LENGTH_PERCENTAGE), "") << "nothing accepted yet";
  EditFrom = 7;
  entries.texts[ID_LENGTH_PERCENTAGE] = "-5";
  entries.texts[ID_REGION_FROM] = "1:1:50";
  EXPECT_EQ(AcceptTransformDialog(DLG_LENGTH, entries), ID_LENGTH_PERCENTAGE);
  EXPECT_EQ(EditFrom, 7u) << "the region is stored after the percentage";
  entries.texts[ID_LENGTH_PERCENTAGE] = "";
  EXPECT_EQ(AcceptTransformDialog(DLG_LENGTH, entries), 0u);
  EXPECT_EQ(EditFrom, 50u);
  entries.texts[ID_LENGTH_PERCENTAGE] = "0500";
  EXPECT_EQ(AcceptTransformDialog(DLG_LENGTH, entries), 0u);
  EXPECT_EQ(OpenTransformDialog(DLG_LENGTH).texts.at(ID_LENGTH_PERCENTAGE), "050")
      << "the field holds three characters";
}

TEST_F(TransformsTest, LengthRunsWithTheAcceptedPercentage) {
  LengthStart = 1;
  install(1, {ev(1000, 0xB0, 7, 1)});
  TransformEntries entries = OpenTransformDialog(DLG_LENGTH);
  entries.texts[ID_LENGTH_PERCENTAGE] = "50";
  entries.texts[ID_REGION_TO] = "99:1:0";
  entries.checks[ID_CHANGE_START] = true;
  ASSERT_EQ(AcceptTransformDialog(DLG_LENGTH, entries), 0u);
  RunTransform(DLG_LENGTH);
  EXPECT_EQ(times(1), (std::vector<uint32_t>{500}));
}

TEST_F(TransformsTest, SlideInMeasuresDividesItsAmountAtOpeningAndKeepsHalfMeasures) {
  SlideInTicks = 0;
  SlideAmount = 960;  // two measures of 480
  TransformEntries entries = OpenTransformDialog(DLG_SLIDE);
  EXPECT_EQ(entries.texts.at(ID_TRANSFORM_AMOUNT), "2");
  EXPECT_TRUE(entries.checks.at(ID_SLIDE_MEASURES));
  EXPECT_EQ(SlideAmount, 2.0);
  OpenTransformDialog(DLG_SLIDE);
  EXPECT_DOUBLE_EQ(SlideAmount, 2.0 / 480) << "a cancelled opening leaves it divided, and the next divides again";
  entries.texts[ID_TRANSFORM_AMOUNT] = "1.5";
  ASSERT_EQ(AcceptTransformDialog(DLG_SLIDE, entries), 0u);
  EXPECT_EQ(SlideAmount, 720.0);
  entries.checks[ID_SLIDE_MEASURES] = false;
  entries.texts[ID_TRANSFORM_AMOUNT] = "40000";
  EXPECT_EQ(AcceptTransformDialog(DLG_SLIDE, entries), ID_TRANSFORM_AMOUNT);
  EXPECT_EQ(SlideInTicks, 1u) << "the unit is stored before the amount";
  SlideInTicks = 1;
}

TEST_F(TransformsTest, TransposeAndVelocityStoreTheRegionThenTheirNumbersInOrder) {
  TransformEntries transpose = OpenTransformDialog(DLG_TRANSPOSE);
  transpose.texts[ID_TRANSFORM_AMOUNT] = "128";
  transpose.texts[ID_REGION_TO] = "3:1:0";
  EXPECT_EQ(AcceptTransformDialog(DLG_TRANSPOSE, transpose), ID_TRANSFORM_AMOUNT);
  EXPECT_EQ(prompts.shown().back().text, "Value is not in the range -127 to 127.");
  EXPECT_EQ(EditTo, 960u);
  TransformEntries velocity = OpenTransformDialog(DLG_VELOCITY);
  velocity.texts[ID_VELOCITY_BEGIN] = "30";
  velocity.texts[ID_VELOCITY_END] = "300";
  EXPECT_EQ(AcceptTransformDialog(DLG_VELOCITY, velocity), ID_VELOCITY_END);
  EXPECT_EQ(VelocityBegin, 30);
  EXPECT_EQ(VelocityEnd, 0);
}

}  // namespace

