#include "transport/playback_feed.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>
#include <vector>

#include "midi/live_devices.h"
#include "platform/installed_seams.h"
#include "midi/transport_words.h"
#include "song/note_linking.h"
#include "song/song_store.h"
#include "support/midi_fixture.h"
#include "support/song_fixture.h"

namespace {

class FeedTest : public MidiBench {
 protected:
  void SetUp() override {
    MidiBench::SetUp();
    ClearSongTracks();
    Recording = 0;
    TicksPerBar = 480;
    openClockAndOutput();
    TheClock = clock;
    TheMidiOut = out;
    InstallFeedHooks();
  }
  void TearDown() override {
    TheClock = nullptr;
    TheMidiOut = nullptr;
    ClearSongTracks();
    MidiBench::TearDown();
  }
  // A track from events given in absolute time.
  static void song(uint32_t track, std::vector<MidiEvent> absolute) {
    AbsoluteToDelta(absolute.data(), static_cast<uint32_t>(absolute.size()));
    InstallTrack(track, static_cast<uint32_t>(absolute.size()), absolute.data());
  }
  // The absolute times of what waits in the ring, and the keys.
  std::vector<std::pair<uint32_t, uint8_t>> ring() const {
    std::vector<std::pair<uint32_t, uint8_t>> keys;
    uint32_t time = 0;
    uint32_t at = out->readIndex;
    for (uint32_t n = 0; n < out->ringCount; ++n) {
      time += out->ring[at].time;
      keys.emplace_back(time, out->ring[at].value1);
      at = at == out->ringSize ? 0 : at + 1;
    }
    return keys;
  }
};

TEST_F(FeedTest, ATrackWithTwoRepeatsPlaysThreePassesEachABarLaterAndATickMore) {
  song(0, {event(0, 0x90, 60, 100), event(480, 0x90, 60, 0)});  // the last event on a bar line
  Tracks[0].repeats = 2;
  SeekFeed(0);
  SendEvent(out);
  const auto keys = ring();
  ASSERT_EQ(keys.size(), 6u);
  // last 480 on the bar line: a whole empty bar follows; cycle = 480 + 480 = 960.
  EXPECT_EQ(keys[2].first, 961u) << "the second pass starts 1 tick after cycle";
  EXPECT_EQ(keys[4].first, 1922u) << "the third 2 ticks after twice cycle";
  EXPECT_EQ(FeedRemaining.load(), 0u);
}

TEST_F(FeedTest, AtEqualKeysTheTrackFirstOnTheListGoesFirst) {
  song(5, {event(10, 0xB0, 1, 1)});
  song(2, {event(10, 0xB0, 2, 2)});
  SeekFeed(0);
  SendEvent(out);
  const auto keys = ring();
  ASSERT_EQ(keys.size(), 2u);
  EXPECT_EQ(keys[0].second, 1) << "track 5 stands first on ActiveTracks";
}

TEST_F(FeedTest, SysexFedBeforeTheClockRunsGoesStraightToTheSysexBuffer) {
  song(0, {event(0, 0xF0, 0xF0), event(0, 0xF0, 0x7E), event(0, 0xF0, 0xF7), event(0, 0x90, 60, 1)});
  SeekFeed(0);
  SendEvent(out);
  EXPECT_EQ(ring().size(), 2u) << "the note and its closing note-off; the sysex went to its buffer";
  loop.pump();
  ASSERT_FALSE(devices.sent().empty());
  EXPECT_EQ(devices.sent().front().bytes, (std::vector<uint8_t>{0xF0, 0x7E, 0xF7})) << "out before time begins";
}

TEST_F(FeedTest, ATrackWithPlayOffSendsNoteOnsAtVelocity0AndControllersAsTheyAre) {
  song(0, {event(0, 0x90, 60, 100), event(0, 0xB0, 7, 99), event(5, 0x80, 60, 0)});
  Tracks[0].playOff = 1;
  SeekFeed(0);
  SendEvent(out);
  StartSync(clock);
  devices.clearSent();
  passes(5);
  const auto words = sentMessages();
  ASSERT_GE(words.size(), 2u);
  EXPECT_EQ(words[0], 0x003C90u);
  EXPECT_EQ(words[1], 0x6307B0u);
}

TEST_F(FeedTest, KeyOffsetsFoldBackByOctaves) {
  song(0, {event(0, 0x90, 120, 100), event(10, 0x90, 5, 100), event(20, 0x80, 120, 0), event(20, 0x80, 5, 0)});
  Tracks[0].keyOffset = 12;
  SeekFeed(0);
  SendEvent(out);
  StartSync(clock);
  devices.clearSent();
  passes(1);  // tick 2: the first note
  Tracks[0].keyOffset = -17;
  passes(4);  // tick 12: the second
  const auto words = sentMessages();
  ASSERT_EQ(words.size(), 2u);
  EXPECT_EQ(words[0] >> 8 & 0xFF, 120u) << "120 + 12 folds to 120";
  EXPECT_EQ(words[1] >> 8 & 0xFF, 12u) << "5 - 17 folds to 12";
  Tracks[0].keyOffset = 0;  // a change while the notes sound does not strand them
  passes(5);
  const auto all = sentMessages();
  ASSERT_EQ(all.size(), 4u);
  EXPECT_EQ(all[2], 0x007880u) << "a note ends on the key it began with";
  EXPECT_EQ(all[3], 0x000C80u);
}

TEST_F(FeedTest, TheTracksChannelReplacesTheEventsChannel) {
  song(0, {event(0, 0x90, 60, 100), event(0, 0xB2, 7, 1), event(3, 0x80, 60, 0)});
  Tracks[0].channel = 9;
  SeekFeed(0);
  SendEvent(out);
  StartSync(clock);
  devices.clearSent();
  passes(3);
  const auto words = sentMessages();
  ASSERT_EQ(words.size(), 3u);
  EXPECT_EQ(words[0] & 0xFF, 0x99u);
  EXPECT_EQ(words[1] & 0xFF, 0xB9u);
  EXPECT_EQ(words[2] & 0xFF, 0x89u);
}

TEST_F(FeedTest, APositionBeyondEveryEventLeavesTheRingEmpty) {
  song(0, {event(0, 0x90, 60, 100), event(10, 0x80, 60, 0)});
  SeekFeed(500);
  EXPECT_EQ(FeedRemaining.load(), 0u);
  SendEvent(out);
  EXPECT_EQ(out->ringCount.load(), 0u);
}

TEST_F(FeedTest, ASeekIntoTheFirstPassPlaysTheLaterPassesInFull) {
  song(0, {event(0, 0xB0, 1, 1), event(100, 0xB0, 2, 2)});
  Tracks[0].repeats = 1;
  SeekFeed(50);
  SendEvent(out);
  const auto keys = ring();
  ASSERT_EQ(keys.size(), 3u);
  EXPECT_EQ(keys[0].second, 2);
  EXPECT_EQ(keys[1].second, 1) << "the second pass from its first event";
}

TEST_F(FeedTest, SeekSendsPanVolumeAndPatchAtOnceOnTheTracksChannel) {
  song(0, {event(0, 0x93, 60, 1)});
  Tracks[0].pan = 20;
  Tracks[0].volume = 100;
  Tracks[0].patch = 5;
  SeekFeed(0);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x140AB3, 0x6407B3, 0x0005C3}));
}

TEST_F(FeedTest, WithOnlyTheRecordTrackLeftWhileCapturingTheFeedStops) {
  song(0, {event(0, 0xB0, 1, 1)});
  RecordTrack = 0;
  Capturing = 1;
  SeekFeed(0);
  ASSERT_EQ(FeedRemaining.load(), 1u);
  SendEvent(out);  // returns, it does not spin
  EXPECT_EQ(out->ringCount.load(), 0u);
  Capturing = 0;
}

TEST_F(FeedTest, AFullRingPausesTheFeedWhichGoesOnAsTheClockTakesEvents) {
  std::vector<MidiEvent> many;
  for (uint32_t i = 0; i < 1000; ++i) many.push_back(event(i, 0xB0, static_cast<uint8_t>(i % 128), 0));
  song(0, many);
  SeekFeed(0);
  SendEvent(out);
  EXPECT_EQ(out->ringCount.load(), 512u);
  EXPECT_EQ(FeedRemaining.load(), 488u);
  StartSync(clock);
  passes(450);  // 2.4 ticks a pass: a thousand ticks
  EXPECT_EQ(FeedRemaining.load(), 0u);
  EXPECT_EQ(sentMessages().size(), 1000u);
}

TEST_F(FeedTest, ANoteWithoutItsPartnerPassesUnchanged) {
  MidiEvent lonely = event(0, 0x90, 60, 100);
  Tracks[0].keyOffset = 5;
  out->trackOfSlot[out->readIndex.load()] = 0;
  ShapeEvent(clock, out, &lonely);
  EXPECT_EQ(lonely.value1, 60);
  MidiEvent off = event(0, 0x80, 60, 0);
  ShapeEvent(clock, out, &off);
  EXPECT_EQ(off.value1, 60);
}

// The Tracks manager writes a track's settings while the song plays and the
// clock's pass reads them on the timer's thread: ThreadSanitizer watches this.
TEST(FeedRealTimer, SettingsWrittenWhileThePassReadsThemTakeEffectAtALaterNote) {
  platform::ThreadTimers timers;
  platform::ThreadedLoop loop;
  LoopbackDevices devices;
  devices.setRecording(true);
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  ClearSongTracks();
  Recording = 0;
  TicksPerBar = 480;
  ClockHooks = {};
  InstallFeedHooks();
  std::vector<MidiEvent> notes;  // a note of key 60 every 8 ticks, in delta time
  for (uint32_t i = 0; i < 2000; ++i) {
    notes.push_back(MidiEvent{i == 0 ? 0u : 4u, 0x90, 60, 100, 0, nullptr, 0, 0, 0, 0});
    notes.push_back(MidiEvent{4, 0x90, 60, 0, 0, nullptr, 0, 0, 0, 0});
  }
  InstallTrack(0, static_cast<uint32_t>(notes.size()), notes.data());
  RecordingWindow window;
  ASSERT_EQ(OpenSync(&TheClock, &window, SYNC_INTERNAL, 2), 0u);
  SetResolution(TheClock, 960);
  SetTempo(TheClock, 500000);  // about 4 ticks a pass: a note every 4 ms
  ASSERT_EQ(OpenMidiOut(&TheMidiOut, &window, 0, TheClock, MIDI_OPEN_WORD), 0u);
  SeekFeed(0);
  SendEvent(TheMidiOut);
  StartSync(TheClock);

  TrackRecord& t = Tracks[0];
  for (int i = 0; i < 200; ++i) {
    t.keyOffset = static_cast<int8_t>(i % 24 - 12);
    t.velocityOffset = static_cast<int8_t>(i % 10);
    t.channel = static_cast<uint8_t>(i % 2 == 0 ? 255 : i % 16);
    t.playOff = static_cast<uint8_t>(i % 7 == 0);
    t.pan = static_cast<uint8_t>(i % 128);
    t.volume = static_cast<uint8_t>(i % 128);
    t.patch = static_cast<uint8_t>(i % 128);
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  t.keyOffset = 12;
  t.velocityOffset = 0;
  t.channel = 3;
  t.playOff = 0;
  const auto noteOns = [&] {
    std::vector<uint32_t> words;
    for (const auto& sent : devices.sent()) {
      if ((sent.word & 0xF0) == 0x90 && (sent.word >> 16 & 0x7F) != 0) words.push_back(sent.word);
    }
    return words;
  };
  const std::size_t before = noteOns().size();
  for (int waited = 0; waited < 2000 && noteOns().size() < before + 10; ++waited) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  StopSync(TheClock);
  CloseMidiOut(&TheMidiOut);
  CloseSync(&TheClock);
  loop.stop();
  ClockHooks = {};
  ClearSongTracks();

  const std::vector<uint32_t> words = noteOns();
  ASSERT_GE(words.size(), before + 10) << "the song went on playing";
  EXPECT_EQ(words.back(), 0x644893u) << "channel 4, key 60 + 12, velocity 100: the settings last written";
}

}  // namespace
