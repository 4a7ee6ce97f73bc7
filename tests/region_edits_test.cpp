#include "song/region_edits.h"

#include <gtest/gtest.h>

#include "platform/command_ids.h"
#include "song/track_rows.h"
#include "support/song_bench.h"

namespace {

class RegionEditsTest : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    EditFrom = EditTo = PasteTime = 0;
    PasteRepetitions = 1;
    PasteMode = PasteBlend;
    DeleteHole = 0;
    FreeEditBuffers();
  }
  void TearDown() override {
    EventBlockLimit = 0xFFFFFFFFu;
    FreeEditBuffers();
    SongBench::TearDown();
  }
  static void selectTracks(std::initializer_list<uint32_t> tracks) {
    SelectedTrackCount = 0;
    for (uint32_t t : tracks) SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = t;
  }
  static void region(uint32_t from, uint32_t to) {
    EditFrom = from;
    EditTo = to;
  }
  // Time, status, key and velocity of each event, for comparing whole arrays.
  struct Plain {
    uint32_t time;
    uint8_t status, value1, value2;
    bool operator==(const Plain&) const = default;
  };
  static std::vector<Plain> plain(const MidiEvent* events, uint32_t count) {
    std::vector<Plain> out;
    for (uint32_t i = 0; i < count; ++i) out.push_back({events[i].time, events[i].status, events[i].value1, events[i].value2});
    return out;
  }
  static std::vector<Plain> track(uint32_t t) { return plain(Tracks[t].events, Tracks[t].count); }
  static std::vector<Plain> copied() { return plain(CopyBuffer.events, CopyBuffer.count); }
  static std::vector<uint32_t> times(const std::vector<Plain>& events) {
    std::vector<uint32_t> out;
    for (const Plain& e : events) out.push_back(e.time);
    return out;
  }
  // Copies a region of the tracks named.
  static void copy(std::initializer_list<uint32_t> tracks, uint32_t from, uint32_t to) {
    selectTracks(tracks);
    region(from, to);
    CopyRegion();
  }
  RecordingList list;
};

// ---- scanning and Copy ----

TEST_F(RegionEditsTest, AScanFindsTheEventsOfTheRegionWithBothEndsIncluded) {
  install(1, {ev(0, 0xB0, 7, 1), ev(100, 0xB0, 7, 2), ev(150, 0xB0, 7, 3), ev(200, 0xB0, 7, 4), ev(201, 0xB0, 7, 5)});
  EditTotal = 9;
  ScanTrack(&Tracks[1], 100, 200);
  EXPECT_EQ(Tracks[1].cursor, 1u);
  EXPECT_EQ(Tracks[1].remaining, 3u);
  EXPECT_EQ(EditTotal, 0u);
}

TEST_F(RegionEditsTest, CopyKeepsWholeNotesWithTimesFromTheRegionsStart) {
  // 60 starts before the region and ends in it; 62 starts in it and ends after; 64 spans it.
  install(1, {ev(50, 0x90, 64, 80), ev(80, 0x90, 60, 90), ev(120, 0x90, 60, 0), ev(150, 0x90, 62, 90),
              ev(250, 0x90, 62, 0), ev(400, 0x90, 64, 0)});
  copy({1}, 100, 200);
  EXPECT_EQ(copied(), (std::vector<Plain>{{50, 0x90, 62, 90}, {100, 0x90, 62, 0}}));
  EXPECT_TRUE(PasteAvailable());
}

TEST_F(RegionEditsTest, EventsOfEqualTimeEnterTheBufferInTheOrderOfTheSelection) {
  install(2, {ev(10, 0xB0, 1, 2)});
  install(5, {ev(10, 0xB0, 1, 5)});
  copy({2, 5}, 0, 100);
  ASSERT_EQ(CopyBuffer.count, 2u);
  EXPECT_EQ(CopyBuffer.events[0].value2, 2);
  EXPECT_EQ(CopyBuffer.events[1].value2, 5);
}

TEST_F(RegionEditsTest, AnEmptyRegionOrOneOfOnlyDroppedNoteOffsLeavesTheBufferAsItWas) {
  install(1, {ev(0, 0x90, 60, 90), ev(300, 0x90, 60, 0), ev(500, 0xC0, 4)});
  copy({1}, 450, 550);
  ASSERT_EQ(copied(), (std::vector<Plain>{{50, 0xC0, 4, 0}}));
  copy({1}, 600, 700);
  EXPECT_EQ(copied(), (std::vector<Plain>{{50, 0xC0, 4, 0}})) << "no event in the region";
  copy({1}, 200, 400);
  EXPECT_EQ(copied(), (std::vector<Plain>{{50, 0xC0, 4, 0}})) << "only a note-off whose note began before";
}

TEST_F(RegionEditsTest, PasteStaysUnavailableUntilSomethingIsCopied) {
  EXPECT_FALSE(PasteAvailable());
  copy({1}, 0, 100);
  EXPECT_FALSE(PasteAvailable());
}

// ---- Cut ----

TEST_F(RegionEditsTest, CutWithAHoleMovesTheLaterEventsLeftByToLessFrom) {
  install(1, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2), ev(201, 0xB0, 7, 3)});
  selectTracks({1});
  region(100, 200);
  DeleteHole = 1;
  CutRegion();
  EXPECT_EQ(times(track(1)), (std::vector<uint32_t>{50, 101}));
  EXPECT_EQ(copied(), (std::vector<Plain>{{50, 0xB0, 7, 2}}));
}

TEST_F(RegionEditsTest, CutWithoutAHoleLeavesTheLaterEventsWhereTheyAre) {
  install(1, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2), ev(201, 0xB0, 7, 3)});
  selectTracks({1});
  region(100, 200);
  CutRegion();
  EXPECT_EQ(times(track(1)), (std::vector<uint32_t>{50, 201}));
}

TEST_F(RegionEditsTest, ANoteSpanningTheRegionIsEndedAtItsStartAndItsOwnEndDrops) {
  install(1, {ev(50, 0x90, 64, 80), ev(400, 0x90, 64, 0), ev(500, 0xC0, 1)});
  selectTracks({1});
  region(100, 200);
  CutRegion();
  EXPECT_EQ(track(1), (std::vector<Plain>{{50, 0x90, 64, 80}, {100, 0x90, 64, 0}, {500, 0xC0, 1, 0}}));
  EXPECT_FALSE(PasteAvailable()) << "Copy took neither end of it";
}

TEST_F(RegionEditsTest, ACutThatEmptiesATrackDeletesItAndResetsTheCurrentTracksSettings) {
  install(1, {ev(150, 0xB0, 7, 2)});
  BuildTrackRow(1);
  RecordTrack = 6;
  Tracks[6].keyOffset = 4;
  selectTracks({1});
  region(100, 200);
  CutRegion();
  EXPECT_EQ(Tracks[1].events, nullptr);
  EXPECT_EQ(TrackRowAt(1), nullptr);
  EXPECT_EQ(Tracks[6].keyOffset, 0);
}

TEST_F(RegionEditsTest, WithTheManagerOpenTheTrackAfterAnEmptiedOneIsPassedOver) {
  for (uint32_t t : {1u, 2u, 3u}) install(t, {ev(150, 0xB0, 7, static_cast<uint8_t>(t))});
  RecordingList tracks;
  tracks.selected = {1, 2, 3};
  TracksList = &tracks;
  TracksOpen = 1;
  ReadSelection();
  region(100, 200);
  CutRegion();
  EXPECT_EQ(Tracks[1].count, 0u);
  EXPECT_EQ(Tracks[2].count, 1u) << "the middle track survives";
  EXPECT_EQ(Tracks[3].count, 0u);
}

TEST_F(RegionEditsTest, AFromAboveToRemovesNothingAndWithAHoleMovesTheLaterEventsRight) {
  install(1, {ev(50, 0x90, 60, 90), ev(250, 0x90, 60, 0), ev(300, 0xB0, 7, 3)});
  selectTracks({1});
  region(200, 100);
  DeleteHole = 1;
  CutRegion();
  EXPECT_EQ(track(1), (std::vector<Plain>{{50, 0x90, 60, 90}, {200, 0x90, 60, 0}, {400, 0xB0, 7, 3}}))
      << "the note spanning From is still cut there";
}

TEST_F(RegionEditsTest, ACutWhoseNewArrayCannotBeHadLeavesTheTrackAndStops) {
  install(1, {ev(50, 0xB0, 7, 1), ev(60, 0xB0, 7, 1), ev(150, 0xB0, 7, 2), ev(201, 0xB0, 7, 3)});
  install(2, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2)});
  selectTracks({1, 2});
  region(100, 200);
  EventBlockLimit = 2;  // room for the copy of two events, not for what is left of track 1
  const auto before = track(1);
  CutRegion();
  EXPECT_EQ(track(1), before);
  EXPECT_EQ(Tracks[2].count, 2u) << "the cut stopped at the first failure";
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Not enough memory. Close one or more applications and try again");
}

TEST_F(RegionEditsTest, ACutWhoseCopyCannotBeHadIsAbandoned) {
  install(1, {ev(150, 0xB0, 7, 2), ev(160, 0xB0, 7, 3)});
  selectTracks({1});
  region(100, 200);
  EventBlockLimit = 1;
  CutRegion();
  EXPECT_EQ(Tracks[1].count, 2u) << "the region is not lost";
  EXPECT_FALSE(PasteAvailable());
}

// ---- Paste ----

TEST_F(RegionEditsTest, TwoRepetitionsFollowEachOtherByTheFirstEventsOffsetPlusOneTick) {
  install(1, {ev(0, 0xB0, 7, 1), ev(240, 0xB0, 7, 2)});
  copy({1}, 0, 480);
  PasteRepetitions = 2;
  PasteTime = 1000;
  PasteTrack = 4;
  PasteRegion();
  EXPECT_EQ(times(track(4)), (std::vector<uint32_t>{1000, 1240, 1241, 1481}));
  EXPECT_NE(TrackRowAt(4), nullptr) << "a new track gets its row";
  EXPECT_EQ(times(copied()), (std::vector<uint32_t>{0, 240})) << "the buffer is back in its own times";
}

TEST_F(RegionEditsTest, NoRepetitionsPasteNothing) {
  install(1, {ev(0, 0xB0, 7, 1)});
  copy({1}, 0, 10);
  PasteRepetitions = 0;
  PasteTrack = 4;
  PasteRegion();
  EXPECT_EQ(Tracks[4].events, nullptr);
}

TEST_F(RegionEditsTest, BlendMergesAfterTheTracksOwnEventsAtEqualTimes) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 10);
  install(3, {ev(100, 0xB0, 7, 1), ev(300, 0xB0, 7, 2)});
  PasteTime = 100;
  PasteTrack = 3;
  PasteRegion();
  EXPECT_EQ(track(3), (std::vector<Plain>{{100, 0xB0, 7, 1}, {100, 0xB0, 7, 9}, {300, 0xB0, 7, 2}}));
}

TEST_F(RegionEditsTest, ReplaceClearsTheSpanMeasuredWithTheRegionAsItStandsNow) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 100);
  install(3, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2), ev(250, 0xB0, 7, 3), ev(400, 0xB0, 7, 4)});
  PasteTime = 100;
  PasteTrack = 3;
  PasteMode = PasteReplace;
  region(0, 200);  // a transform's region accepted since the copy
  PasteRegion();
  EXPECT_EQ(track(3), (std::vector<Plain>{{50, 0xB0, 7, 1}, {100, 0xB0, 7, 9}, {400, 0xB0, 7, 4}}))
      << "100 to 300 cleared: the length of the later region";
}

TEST_F(RegionEditsTest, ReplaceAndInsertCutANoteThatSpansThePasteTime) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 10);
  install(3, {ev(50, 0x90, 60, 90), ev(500, 0x90, 60, 0)});
  PasteTime = 100;
  PasteTrack = 3;
  PasteMode = PasteInsert;
  PasteRegion();
  EXPECT_EQ(track(3), (std::vector<Plain>{{50, 0x90, 60, 90}, {100, 0x90, 60, 0}, {100, 0xB0, 7, 9}}))
      << "the first half ends at the paste, its own note-off drops";
}

TEST_F(RegionEditsTest, InsertMovesTheRestRightByTheRegionTimesTheRepetitionsAndOneEach) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 100);
  install(3, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2)});
  PasteTime = 100;
  PasteTrack = 3;
  PasteMode = PasteInsert;
  PasteRepetitions = 2;
  PasteRegion();
  EXPECT_EQ(times(track(3)), (std::vector<uint32_t>{50, 100, 101, 352})) << "gap 100 x 2 + 2";
}

TEST_F(RegionEditsTest, ReplaceIntoAnEmptyTrackMakesItAsBlendDoes) {
  install(1, {ev(0, 0xB0, 7, 9), ev(20, 0xB0, 7, 8)});
  copy({1}, 0, 100);
  PasteTime = 40;
  PasteTrack = 7;
  PasteMode = PasteReplace;
  PasteRegion();
  EXPECT_EQ(times(track(7)), (std::vector<uint32_t>{40, 60}));
}

TEST_F(RegionEditsTest, APasteIntoATrackThatIsNotSelectedDoesNotShowInTheEventsList) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 100);
  EventsList = &list;
  EventsOpen = 1;
  RefreshEventsList();
  ASSERT_EQ(EventRowCount, 1u);
  PasteTrack = 3;
  PasteRegion();
  EXPECT_EQ(Tracks[3].count, 1u);
  EXPECT_EQ(EventRowCount, 1u);
}

TEST_F(RegionEditsTest, APasteWhoseMergeCannotBeHadLeavesTheTrackAsItWas) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 100);
  install(3, {ev(50, 0xB0, 7, 1), ev(150, 0xB0, 7, 2)});
  EventBlockLimit = 2;
  PasteTrack = 3;
  PasteRegion();
  EXPECT_EQ(Tracks[3].count, 2u);
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Not enough memory. Close one or more applications and try again");
}

TEST_F(RegionEditsTest, TheBuffersOutliveNewSoARegionPastesIntoAnotherSong) {
  install(1, {ev(0, 0xB0, 7, 9)});
  copy({1}, 0, 10);
  PasteRepetitions = 3;
  ResetSong();
  EXPECT_TRUE(PasteAvailable());
  EXPECT_EQ(PasteRepetitions, 3);
  PasteTrack = 0;
  PasteRegion();
  EXPECT_EQ(Tracks[0].count, 3u);
}

TEST_F(RegionEditsTest, APasteLongerThan32BitsCountIsRefusedAsOutOfMemory) {
  std::vector<MidiEvent> events;
  for (uint32_t i = 0; i < 70000; ++i) events.push_back(ev(i, 0xB0, 7, 1));
  install(1, events);
  copy({1}, 0, 70000);
  ASSERT_EQ(CopyBuffer.count, 70000u);
  PasteRepetitions = 65535;  // 4.6 billion events
  PasteTrack = 2;
  PasteRegion();
  EXPECT_EQ(Tracks[2].events, nullptr);
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Not enough memory. Close one or more applications and try again");
}

// ---- the dialogs ----

TEST_F(RegionEditsTest, TheRegionDialogsStartFromTheControlBarsFromAndTo) {
  SelectFrom = 480;
  SelectTo = 960;
  const RegionTexts texts = OpenRegionDialog();
  EXPECT_EQ(texts.from, "00002:01:000");
  EXPECT_EQ(texts.to, "00003:01:000");
  SongDirty = 0;
  AcceptCutDialog({"1:2:0", "not a time"}, true);
  EXPECT_EQ(EditFrom, 120u);
  EXPECT_EQ(EditTo, 0u) << "not tested: text that is no time reads as 0";
  EXPECT_EQ(DeleteHole, 1u);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(RegionEditsTest, ThePasteDialogShowsOneForNoRepetitionsAndTheCurrentTrack) {
  PasteRepetitions = 0;
  PasteTime = 120;
  RecordTrack = 5;
  PasteMode = PasteInsert;
  const PasteTexts texts = OpenPasteDialog();
  EXPECT_EQ(texts.repetitions, "1");
  EXPECT_EQ(texts.time, "00001:02:000");
  EXPECT_EQ(texts.track, "6");
  EXPECT_EQ(texts.mode, PasteInsert);
  EXPECT_EQ(PasteTrack, 5);
}

TEST_F(RegionEditsTest, BlendCheckedInThePasteDialogLeavesInsert) {
  ASSERT_EQ(AcceptPasteDialog("2.7", "2:1:0", "3", true, false), 0u);
  EXPECT_EQ(PasteMode, PasteInsert);
  EXPECT_EQ(PasteRepetitions, 2) << "a real number, truncated";
  EXPECT_EQ(PasteTime, 480u);
  EXPECT_EQ(PasteTrack, 2);
  ASSERT_EQ(AcceptPasteDialog("1", "0", "0", false, true), 0u);
  EXPECT_EQ(PasteMode, PasteReplace);
  EXPECT_EQ(PasteTrack, 255) << "not tested: 0 wraps";
}

TEST_F(RegionEditsTest, RepetitionsOutsideSixteenBitsAreRefused) {
  PasteRepetitions = 3;
  EXPECT_EQ(AcceptPasteDialog("-1", "0", "1", false, false), ID_PASTE_REPETITIONS);
  EXPECT_EQ(prompts.shown().back().text, "Value is not in the range 0 to 65535.");
  EXPECT_EQ(AcceptPasteDialog("65536", "0", "1", false, false), ID_PASTE_REPETITIONS);
  EXPECT_EQ(PasteRepetitions, 3);
  EXPECT_EQ(AcceptPasteDialog("65535", "0", "1", false, false), 0u);
  EXPECT_EQ(PasteRepetitions, 65535);
}

}  // namespace
