#include "song/tracks_manager.h"

#include <gtest/gtest.h>

#include "support/song_bench.h"

namespace {

class TracksManagerTest : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    TracksList = &tracks;
    EventsList = &events;
    TracksOpen = 1;
    RecordTrack = 4;
    devices.clearSent();
  }
  void TearDown() override {
    TracksOpen = EventsOpen = 0;
    Playing = Recording = Capturing = 0;
    TrackFields = {};
    SongBench::TearDown();
  }
  // The words sent at once on the output.
  std::vector<uint32_t> sentWords() const {
    std::vector<uint32_t> words;
    for (const auto& s : devices.sent()) {
      if (s.bytes.empty()) words.push_back(s.word);
    }
    return words;
  }
  static TrackDialogEntries entries() {
    TrackDialogEntries e;
    e.name = "Bass";
    e.key = "0";
    e.velocity = "0";
    e.time = "00001:01:000";
    e.repeats = "0";
    e.pan = "-1";
    e.patch = "-1";
    e.volume = "-1";
    e.play = true;
    e.channelItem = 0;
    return e;
  }
  RecordingList tracks;
  RecordingList events;
};

TEST_F(TracksManagerTest, TheFieldsShowTheCurrentTracksSettingsWithNoneAsMinus1) {
  TrackRecord& t = Tracks[4];
  t.keyOffset = -12;
  t.velocityOffset = 7;
  t.timeOffset = 480;
  t.repeats = 65535;
  t.pan = 64;
  TrackNames[4] = "Lead";
  LoadTrackFields();
  EXPECT_EQ(TrackFields.name, "Lead");
  EXPECT_EQ(TrackFields.key, "-12");
  EXPECT_EQ(TrackFields.velocity, "7");
  EXPECT_EQ(TrackFields.time, "00002:01:000");
  EXPECT_EQ(TrackFields.repeats, "65535");
  EXPECT_EQ(TrackFields.pan, "64");
  EXPECT_EQ(TrackFields.volume, "-1");
  EXPECT_EQ(TrackFields.patch, "-1");
  RecordTrack = 9;
  LoadTrackFields();
  EXPECT_EQ(TrackFields.name, "") << "a track without a name gives an empty text";
}

TEST_F(TracksManagerTest, ApplyingSetsTheRecordTheRowAndSendsPanVolumeAndPatchAtOnce) {
  Tracks[4].channel = 2;
  TrackFields = {"Strings", "+5", "-3", "00002:01:000", "2", "64", "100", "48"};
  SongDirty = 0;
  ApplyTrackFields(4);
  const TrackRecord& t = Tracks[4];
  EXPECT_EQ(t.keyOffset, 5);
  EXPECT_EQ(t.velocityOffset, -3);
  EXPECT_EQ(t.timeOffset, 480u);
  EXPECT_EQ(t.repeats, 2);
  EXPECT_EQ(t.pan, 64);
  EXPECT_EQ(t.volume, 100);
  EXPECT_EQ(t.patch, 48);
  EXPECT_EQ(TrackNames[4], "Strings");
  const TrackRow* row = TrackRowAt(4);
  ASSERT_NE(row, nullptr);
  EXPECT_STREQ(row->key, "+5") << "the row shows the text as entered";
  EXPECT_STREQ(row->channel, "3");
  EXPECT_STREQ(row->time, "00002:01:000");
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x400AB2, 0x6407B2, 0x30C2}));
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(TracksManagerTest, Minus1ForPanHidesItInTheRowAndTheNextStartStillSendsIt) {
  Tracks[4].pan = 64;
  Tracks[4].channel = 0;
  TrackFields = {"", "0", "0", "00001:01:000", "0", "-1", "-1", "-1"};
  ApplyTrackFields(4);
  EXPECT_STREQ(TrackRowAt(4)->pan, "- - -");
  EXPECT_EQ(Tracks[4].pan, 64) << "-1 does not clear a pan once set";
  EXPECT_TRUE(sentWords().empty());
  EXPECT_EQ(TrackNames[4], "") << "an empty name is a name too";
  BuildTrackRow(4);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x400AB0}));
}

TEST_F(TracksManagerTest, Minus01PassesTheRangeAndClearsThePanShowingTheTextAsTyped) {
  Tracks[4].pan = 64;
  TrackFields = {"", "0", "0", "00001:01:000", "0", "-01", "-1", "-1"};
  ApplyTrackFields(4);
  EXPECT_EQ(Tracks[4].pan, 255) << "-01 is the number -1: no pan";
  EXPECT_STREQ(TrackRowAt(4)->pan, "-01");
  EXPECT_TRUE(sentWords().empty());
}

TEST_F(TracksManagerTest, ATrackWithoutAChannelSendsItsSettingsWithStatus0xFF) {
  Tracks[4].channel = 255;
  TrackFields = {"", "0", "0", "00001:01:000", "0", "64", "-1", "-1"};
  ApplyTrackFields(4);
  ASSERT_EQ(devices.sent().size(), 1u);
  EXPECT_EQ(devices.sent()[0].word & 0xFF, 0xFFu);
}

TEST_F(TracksManagerTest, TimePlusChangedWhileThePlayRunsKeepsItsOldValueWithoutAWord) {
  Tracks[4].timeOffset = 120;
  TrackFields = {"", "0", "0", "00003:01:000", "0", "-1", "-1", "-1"};
  for (SharedWord<uint32_t>* running : {&Playing, &Capturing}) {
    *running = 1;
    ApplyTrackFields(4);
    *running = 0;
    EXPECT_EQ(Tracks[4].timeOffset, 120u);
    EXPECT_STREQ(TrackRowAt(4)->time, "00001:02:000") << "the row shows the value in force";
  }
  EXPECT_TRUE(prompts.shown().empty());
  ApplyTrackFields(4);
  EXPECT_EQ(Tracks[4].timeOffset, 960u);
}

TEST_F(TracksManagerTest, OkReadsTheFieldsInOrderAndStopsAtTheFirstRefusal) {
  TrackFields.pan = "10";
  TrackDialogEntries e = entries();
  e.key = " 12 ";
  e.repeats = "65536";
  e.pan = "20";
  EXPECT_EQ(AcceptTrackDialog(e), ID_TRACK_REPEATS);
  EXPECT_EQ(TrackFields.key, "12") << "stored trimmed once it passed";
  EXPECT_EQ(TrackFields.pan, "10") << "not reached";
  EXPECT_EQ(TrackFieldText(ID_TRACK_REPEATS), TrackFields.repeats);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Value is not in the range 0 to 65535.");
  e.repeats = "65535";
  EXPECT_EQ(AcceptTrackDialog(e), 0u);
  EXPECT_EQ(TrackFields.repeats, "65535");
}

TEST_F(TracksManagerTest, EveryRangeOfTheDialogHoldsItsEnds) {
  const struct {
    std::string TrackDialogEntries::*field;
    const char* low;
    const char* below;
    const char* high;
    const char* above;
    uint32_t id;
  } ranges[] = {{&TrackDialogEntries::key, "-127", "-128", "127", "128", ID_TRACK_KEY},
                {&TrackDialogEntries::velocity, "-127", "-128", "127", "128", ID_TRACK_VELOCITY},
                {&TrackDialogEntries::repeats, "0", "-1", "65535", "65536", ID_TRACK_REPEATS},
                {&TrackDialogEntries::pan, "-1", "-2", "127", "255", ID_TRACK_PAN},
                {&TrackDialogEntries::patch, "-1", "-2", "127", "128", ID_TRACK_PATCH},
                {&TrackDialogEntries::volume, "-1", "-2", "127", "128", ID_TRACK_VOLUME}};
  for (const auto& range : ranges) {
    for (const auto& [text, refused] :
         {std::pair{range.low, 0u}, {range.below, range.id}, {range.high, 0u}, {range.above, range.id}}) {
      TrackDialogEntries e = entries();
      e.*range.field = text;
      EXPECT_EQ(AcceptTrackDialog(e), refused) << text;
    }
  }
}

TEST_F(TracksManagerTest, OkWritesPlayAndChannelStraightToTheCurrentTrack) {
  TrackDialogEntries e = entries();
  e.play = false;
  e.channelItem = 10;
  e.name = std::string(80, 'n');
  SongDirty = 0;
  ASSERT_EQ(AcceptTrackDialog(e), 0u);
  EXPECT_EQ(Tracks[4].playOff, 1);
  EXPECT_EQ(Tracks[4].channel, 9);
  EXPECT_EQ(TrackFields.name.size(), 63u);
  EXPECT_EQ(SongDirty, 1u);
  e.channelItem = 0;
  AcceptTrackDialog(e);
  EXPECT_EQ(Tracks[4].channel, 255) << "None";
}

TEST_F(TracksManagerTest, TheDialogOpensWithPlayAndTheChannelItemOfTheTrack) {
  Tracks[4].playOff = 0;
  Tracks[4].channel = 255;
  EXPECT_TRUE(TrackPlayChecked(4));
  EXPECT_EQ(TrackChannelItem(4), 0);
  Tracks[4].channel = 15;
  EXPECT_EQ(TrackChannelItem(4), 16);
  Tracks[4].channel = 40;
  EXPECT_EQ(TrackChannelItem(4), 0) << "a damaged channel shows as None";
}

TEST_F(TracksManagerTest, WithTheManagerClosedOnlyPlayAndChannelTakeEffect) {
  TracksOpen = 0;
  TrackFields = {"Old", "0", "0", "00001:01:000", "0", "-1", "-1", "-1"};
  Tracks[4].keyOffset = 3;
  BeforeTrackDialog();
  EXPECT_EQ(TrackFields.name, "Old") << "the texts last left";
  TrackDialogEntries e = entries();
  e.key = "9";
  e.channelItem = 2;
  ASSERT_EQ(AcceptTrackDialog(e), 0u);
  AfterTrackDialog();
  EXPECT_EQ(Tracks[4].keyOffset, 3);
  EXPECT_EQ(Tracks[4].channel, 1);
  EXPECT_EQ(TrackRowAt(4), nullptr);
  EXPECT_NE(TouchedTracks[0] & 1u << 4, 0u);
}

TEST_F(TracksManagerTest, WithTheManagerOpenOkAppliesTheFieldsAndRepaintsTheList) {
  Tracks[4].keyOffset = 3;
  BeforeTrackDialog();
  EXPECT_EQ(TrackFields.key, "3");
  TrackDialogEntries e = entries();
  e.key = "9";
  ASSERT_EQ(AcceptTrackDialog(e), 0u);
  AfterTrackDialog();
  EXPECT_EQ(Tracks[4].keyOffset, 9);
  ASSERT_NE(TrackRowAt(4), nullptr) << "a track without events has a row once given settings";
  EXPECT_EQ(tracks.repaints, 1);
  EXPECT_NE(TouchedTracks[0] & 1u << 4, 0u);
}

TEST_F(TracksManagerTest, OnlyATrackWithEventsMayBeToggledAndOnlyWhileStopped) {
  InstallTrack(2, 1, std::vector<MidiEvent>{ev(0, 0x90, 60, 1)}.data());
  EXPECT_TRUE(TrackRowMayToggle(2));
  EXPECT_FALSE(TrackRowMayToggle(3));
  EXPECT_FALSE(TrackRowMayToggle(TempoTrack));
  Playing = 1;
  EXPECT_FALSE(TrackRowMayToggle(2));
  Playing = 0;
  Recording = 1;
  EXPECT_FALSE(TrackRowMayToggle(2));
}

TEST_F(TracksManagerTest, SelectTogglesTheCurrentTrackAndRebuildsTheOpenEventsList) {
  InstallTrack(4, 1, std::vector<MidiEvent>{ev(0, 0x90, 60, 1)}.data());
  EventsOpen = 1;
  SelectCurrentTrack();
  EXPECT_EQ(tracks.selected, (std::set<int>{4}));
  EXPECT_EQ(SelectedTrackCount, 1);
  EXPECT_EQ(SelectedTracks[0], 4u);
  EXPECT_EQ(EventRowCount, 1u) << "the note's row";
  EXPECT_EQ(events.repaints, 1);
  SelectCurrentTrack();
  EXPECT_TRUE(tracks.selected.empty());
  EXPECT_EQ(SelectedTrackCount, 0);
  EXPECT_EQ(EventRowCount, 0u);
  EXPECT_EQ(events.clears, 1) << "no rows: the list is emptied";
  RecordTrack = 5;  // no events
  SelectCurrentTrack();
  EXPECT_TRUE(tracks.selected.empty());
  TracksOpen = 0;
  RecordTrack = 4;
  SelectCurrentTrack();
  EXPECT_TRUE(tracks.selected.empty()) << "only with the manager open";
}

}  // namespace
