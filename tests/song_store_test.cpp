#include "song/song_store.h"
#include "song/track_rows.h"

#include <gtest/gtest.h>

#include "platform/prompts.h"
#include "song/note_linking.h"
#include "support/song_fixture.h"
#include "support/song_views.h"

namespace {

class SongTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ClearSongTracks();
    ClearTrackRows();
    SongResolution = 120;
    Numerator = 4;
    platform::installPrompts(&prompts);
  }
  void TearDown() override {
    ClearSongTracks();
    ClearTrackRows();
    platform::installPrompts(nullptr);
  }
  // Installs absolute-time events, given here in delta time, into a track.
  static void install(uint32_t track, std::vector<MidiEvent> deltas) {
    InstallTrack(track, static_cast<uint32_t>(deltas.size()), deltas.data());
  }
  static std::vector<uint32_t> active() { return {ActiveTracks.begin(), ActiveTracks.begin() + ActiveTrackCount}; }
  platform::ScriptedPrompts prompts;
};

// ---- the store ----

TEST_F(SongTest, PositionZeroReadsAsTheFirstBeatOfTheFirstMeasure) {
  EXPECT_EQ(TimeText(0), "00001:01:000");
  EXPECT_EQ(TimeText(120 * 4 * 2 + 120 + 7), "00003:02:007");
}

TEST_F(SongTest, TheTimesZeroAndOneOneZeroBothReadAsTick0) {
  EXPECT_EQ(ParseTimeText("0:0:0"), 0u);
  EXPECT_EQ(ParseTimeText("1:1:0"), 0u);
  EXPECT_EQ(ParseTimeText("not a time"), 0u);
}

TEST_F(SongTest, ABeatPastTheMeasureCarriesIntoTheNext) {
  EXPECT_EQ(ParseTimeText("2:9:0"), (1u * 4 + 8) * 120);
  EXPECT_EQ(ParseTimeText("1:1:500"), 500u);
}

TEST_F(SongTest, AbsoluteAndDeltaTimesConvertBothWays) {
  std::vector<MidiEvent> a{ev(10, 0x90), ev(10, 0x80), ev(25, 0x90), ev(400, 0x80)};
  AbsoluteToDelta(a.data(), 4);
  EXPECT_EQ(a[1].time, 0u);
  EXPECT_EQ(a[3].time, 375u);
  DeltaToAbsolute(a.data(), 4);
  EXPECT_EQ(a[3].time, 400u);
}

TEST_F(SongTest, DeletingTheOnlyNoteTrackLeavesTheTempoTrack) {
  install(256, {ev(0, 0, 7, 0xA1)});
  install(3, {ev(0, 0x90, 60, 1), ev(5, 0x80, 60, 0)});
  EXPECT_EQ(active(), (std::vector<uint32_t>{256, 3}));
  DeleteTrack(3);
  EXPECT_EQ(active(), std::vector<uint32_t>{256});
  EXPECT_EQ(Tracks[3].events, nullptr);
  EXPECT_EQ(Tracks[3].count, 0u);
}

TEST_F(SongTest, DeletingOneOfTwoPutsTheTempoTrackLast) {
  install(256, {ev(0, 0, 7, 0xA1)});
  install(1, {ev(0, 0x90, 60, 1)});
  install(5, {ev(0, 0x90, 62, 1)});
  DeleteTrack(1);
  EXPECT_EQ(active(), (std::vector<uint32_t>{5, 256}));
}

TEST_F(SongTest, DeletingATrackWhoseEventsAreAlreadyGoneStillTakesItOutOfTheActiveTracks) {
  install(256, {ev(0, 0, 7, 0xA1)});
  install(3, {ev(0, 0x90, 60, 1), ev(5, 0x80, 60, 0)});
  // The Events list takes a track's last event away itself, then deletes the track.
  FreeEvents(Tracks[3].events);
  Tracks[3].events = nullptr;
  Tracks[3].count = 0;
  DeleteTrack(3);
  EXPECT_EQ(active(), std::vector<uint32_t>{256});
  install(3, {ev(0, 0x90, 62, 1), ev(5, 0x80, 62, 0)});
  EXPECT_EQ(active(), (std::vector<uint32_t>{256, 3})) << "a track installed again is listed once";
}

TEST_F(SongTest, DeletingATrackThatHeldNothingAndWasNotListedKeepsTheOrderOfArrival) {
  install(256, {ev(0, 0, 7, 0xA1)});
  install(5, {ev(0, 0x90, 60, 1)});
  install(2, {ev(0, 0x90, 62, 1)});
  DeleteTrack(7);  // as a kept take clears its track first
  EXPECT_EQ(active(), (std::vector<uint32_t>{256, 5, 2}));
}

TEST_F(SongTest, DeleteResetsTheSettingsOfTheCurrentTrackWhicheverIsDeleted) {
  install(2, {ev(0, 0x90, 60, 1)});
  RecordTrack = 7;
  Tracks[7].keyOffset = 5;
  Tracks[2].keyOffset = 3;
  TrackNames[2] = "Bass";
  DeleteTrack(2);
  EXPECT_EQ(Tracks[7].keyOffset, 0);
  EXPECT_EQ(Tracks[2].keyOffset, 3) << "the emptied track keeps its own";
  EXPECT_FALSE(TrackNames[2].has_value());
  EXPECT_NE(TouchedTracks[0] & 1u << 7, 0u);
}

TEST_F(SongTest, DeleteTakesTheTrackOutOfTheOpenTracksListAndRefreshesTheEventsList) {
  install(2, {ev(0, 0x90, 60, 1)});
  install(3, {ev(0, 0x90, 62, 1)});
  RecordingList tracks, events;
  RecordingFrame frame;
  tracks.selected = {2, 3};
  TracksList = &tracks;
  EventsList = &events;
  FrameWindow = &frame;
  TracksOpen = EventsOpen = 1;
  ListEventRowsOf({2, 3});
  BuildTrackRow(2);
  DeleteTrack(2);
  EXPECT_EQ(tracks.selected, (std::set<int>{3}));
  EXPECT_EQ(SelectedTrackCount, 1);
  EXPECT_EQ(SelectedTracks[0], 3u);
  EXPECT_EQ(frame.updates, 1);
  ASSERT_EQ(EventRowCount, 1u) << "the list is rebuilt from the tracks left";
  EXPECT_EQ(EventRows[0].track, 3);
  EXPECT_EQ(events.repaints, 1);
  EXPECT_FALSE(TrackRowAt(2) != nullptr);
  ClearViewRegistry();
}

TEST_F(SongTest, WithTheViewsClosedTheSelectionStillNamesTheDeletedTrack) {
  install(2, {ev(0, 0x90, 60, 1)});
  SelectedTracks[0] = 2;
  SelectedTrackCount = 1;
  DeleteTrack(2);
  EXPECT_EQ(SelectedTrackCount, 1);
  EXPECT_EQ(Tracks[2].count, 0u);
  SelectedTrackCount = 0;
}

TEST_F(SongTest, DeletingASelectedTrackWithOnlyTheEventsListOpenLeavesNoRowInItsFreedEvents) {
  install(2, {ev(0, 0xB0, 7, 1), ev(5, 0xB0, 7, 2)});
  install(3, {ev(0, 0xC0, 4)});
  RecordingList events;
  EventsList = &events;
  EventsOpen = 1;
  ListEventRowsOf({2, 3});
  ASSERT_EQ(EventRowCount, 3u);
  DeleteTrack(2);
  EXPECT_EQ(SelectedTrackCount, 2) << "with the manager closed the selection stands";
  ASSERT_EQ(EventRowCount, 1u);
  EXPECT_EQ(EventRows[0].event, Tracks[3].events);
  ClearViewRegistry();
}

TEST_F(SongTest, TheTempoTrackIsNeverTouched) {
  TouchTrack(TempoTrack);
  TouchTrack(255);
  EXPECT_EQ(TouchedTracks[7], 1u << 31);
  for (uint32_t word = 0; word < 7; ++word) EXPECT_EQ(TouchedTracks[word], 0u);
}

TEST_F(SongTest, BuildingATrackRowHasTheManagerBuildItAndMarksTheSongChanged) {
  Tracks[4].pan = 64;
  SongDirty = 0;
  BuildTrackRow(4);
  ASSERT_NE(TrackRowAt(4), nullptr);
  EXPECT_STREQ(TrackRowAt(4)->pan, "64");
  EXPECT_EQ(SongDirty, 1u);
  BuildTrackRow(SongTrackCount + 1);
  EXPECT_EQ(TrackRowAt(SongTrackCount + 1), nullptr) << "no row past the tempo track";
  SongDirty = 0;
}

// ---- pairing ----

TEST_F(SongTest, TwoNoteOnsOfOneKeyAreEndedFirstInFirstOut) {
  install(0, {ev(0, 0x90, 60, 100), ev(1, 0x90, 60, 90), ev(1, 0x80, 60, 0), ev(1, 0x80, 60, 0)});
  const MidiEvent* e = Tracks[0].events;
  ASSERT_EQ(Tracks[0].count, 4u);
  EXPECT_EQ(e[2].link, &e[0]);
  EXPECT_EQ(e[0].link, &e[2]);
  EXPECT_EQ(e[3].link, &e[1]);
  EXPECT_EQ(e[1].link, &e[3]);
}

TEST_F(SongTest, ANoteOffWithNothingOpenIsDroppedOnInstall) {
  install(0, {ev(0, 0x80, 60, 0), ev(0, 0x90, 62, 1), ev(1, 0x90, 62, 0)});
  ASSERT_EQ(Tracks[0].count, 2u);
  EXPECT_EQ(Tracks[0].events[0].value1, 62);
}

TEST_F(SongTest, ALinkingPassAloneKeepsAnOrphanedNoteOffWithANullLink) {
  std::vector<MidiEvent> a{ev(0, 0x80, 60, 0), ev(1, 0xB0, 7, 1)};
  NoteLinkTable table;
  for (uint32_t i = 0; i < a.size(); ++i) LinkNote(a.data(), table, i);
  EXPECT_EQ(a[0].link, nullptr);
  EXPECT_EQ(a[1].link, &a[1]);
}

TEST_F(SongTest, OnlyOrphanedNoteOffsLeaveTheTrackAsItWas) {
  install(4, {ev(0, 0x90, 60, 1), ev(3, 0x80, 60, 0)});
  MidiEvent* before = Tracks[4].events;
  install(4, {ev(0, 0x80, 61, 0), ev(2, 0x90, 61, 0)});
  EXPECT_EQ(Tracks[4].events, before);
  EXPECT_EQ(Tracks[4].count, 2u);
}

TEST_F(SongTest, ALoneNoteOnBecomesTwoEventsAtOneTime) {
  install(0, {ev(7, 0x90, 60, 100)});
  ASSERT_EQ(Tracks[0].count, 2u);
  EXPECT_EQ(Tracks[0].events[1].time, 7u);
  EXPECT_EQ(Tracks[0].events[1].link, &Tracks[0].events[0]);
}

TEST_F(SongTest, ClosingNoteOffsAreVelocityZeroNoteOnsInKeyOrder) {
  install(0, {ev(0, 0x81, 72, 0), ev(0, 0x91, 72, 1), ev(0, 0x91, 48, 1), ev(0, 0x91, 60, 1), ev(5, 0xB1, 7, 9)});
  const MidiEvent* e = Tracks[0].events;
  ASSERT_EQ(Tracks[0].count, 7u);
  for (int i = 4; i < 7; ++i) {
    EXPECT_EQ(e[i].status, 0x91);
    EXPECT_EQ(e[i].value2, 0);
    EXPECT_EQ(e[i].time, 5u) << "at the time of the last event kept";
  }
  EXPECT_EQ(e[4].value1, 48);
  EXPECT_EQ(e[5].value1, 60);
  EXPECT_EQ(e[6].value1, 72);
}

TEST_F(SongTest, MetaEventsAndSysexPassAndLinkToThemselves) {
  install(0, {ev(0, 0, 7, 0xA1), ev(0, 0xF0, 0xF0), ev(0, 0xF0, 0xF7)});
  ASSERT_EQ(Tracks[0].count, 3u);
  for (uint32_t i = 0; i < 3; ++i) EXPECT_EQ(Tracks[0].events[i].link, &Tracks[0].events[i]);
}

TEST_F(SongTest, MergingWithAnEmptySourceCopiesTheOther) {
  std::vector<MidiEvent> a{ev(0, 0x90, 60, 1), ev(10, 0x80, 60, 0)};
  MidiEvent* sources[2] = {a.data(), nullptr};
  uint32_t counts[2] = {2, 0};
  MergeIntoTrack(sources, 2, counts, 9);
  ASSERT_EQ(Tracks[9].count, 2u);
  EXPECT_EQ(Tracks[9].events[1].time, 10u);
  EXPECT_EQ(counts[0], 0u) << "the counts are used up";
}

TEST_F(SongTest, AtEqualTimesAnOldEventPrecedesAPastedOne) {
  std::vector<MidiEvent> old{ev(5, 0xB0, 7, 1)};
  std::vector<MidiEvent> pasted{ev(5, 0xB0, 10, 2)};
  MidiEvent* sources[2] = {old.data(), pasted.data()};
  uint32_t counts[2] = {1, 1};
  MergeIntoTrack(sources, 2, counts, 1);
  ASSERT_EQ(Tracks[1].count, 2u);
  EXPECT_EQ(Tracks[1].events[0].value1, 7);
  EXPECT_EQ(Tracks[1].events[1].value1, 10);
}

TEST_F(SongTest, InstallingNothingIntoTheTempoTrackLeavesItsTempo) {
  install(256, {ev(0, 0, 7, 0xA1)});
  InstallTrack(256, 0, nullptr);
  ASSERT_EQ(Tracks[256].count, 1u);
  EXPECT_EQ(Tracks[256].events[0].value1, 7);
}

TEST_F(SongTest, RelinkingAfterAnEditLeavesNoStalePointer) {
  install(0, {ev(0, 0x90, 60, 1), ev(10, 0x80, 60, 0)});
  MidiEvent* e = Tracks[0].events;
  e[1].time = 0;  // an edit moved the note-off ...
  e[0].time = 5;  // ... ahead of its note-on
  RelinkTrack(&Tracks[0]);
  EXPECT_EQ(e[0].status, 0x80);
  EXPECT_EQ(e[0].link, nullptr);
  EXPECT_EQ(e[1].link, nullptr) << "the note-on keeps no stale pointer";
}

TEST_F(SongTest, KeysOfADamagedFileCannotIndexPastTheTables) {
  install(0, {ev(0, 0x90, 200, 1), ev(1, 0x80, 200, 0)});
  ASSERT_EQ(Tracks[0].count, 2u);
  EXPECT_EQ(Tracks[0].events[0].link, &Tracks[0].events[1]);
}

}  // namespace
