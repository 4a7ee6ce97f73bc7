#include "transport/transport_commands.h"

#include <gtest/gtest.h>

#include "generator/generator_tick.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "song/song_tempo.h"
#include "support/song_bench.h"

namespace {

class Transport : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    for (uint32_t id : {101u, 109u, 200u}) SetControlBarControl(id, &buttons[id]);
  }
  void TearDown() override {
    for (uint32_t id : {101u, 109u, 200u}) SetControlBarControl(id, nullptr);
    ClockHooks = {};
    InstallFeedHooks();
    SongBench::TearDown();
  }
  // The generator button released and its notes drained.
  void endGenerator() {
    GeneratorToggle();
    for (int i = 0; i < 2000 && Draining == 1; ++i) passes(1);
    loop.pump();
  }
  // The generator at its start-up state, installed in the clock's pass.
  static void prepareGenerator() {
    InstallGeneratorHooks();
    GeneratorStartUp();
  }
  std::map<uint32_t, RecordingButton> buttons;
};

TEST_F(Transport, PlayOnASongOfOnlyTheTempoEventStopsByItselfAtTheFirstSyncTickAndRewinds) {
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(Playing.load(), 1u);
  int passes = 0;
  while (Playing == 1 && passes < 20) {
    timers.step();
    loop.pump();
    ++passes;
  }
  EXPECT_EQ(Playing.load(), 0u);
  EXPECT_LE(passes, 6) << "the first NM_SYNC_TICK, within 50 ms";
  EXPECT_EQ(SongPosition.load(), 0u);
}

TEST_F(Transport, PlayGraysTheTransportButtonsAndStopGivesThemBack) {
  install(0, {event(0, 0x90, 60, 90), event(480, 0x90, 60, 0)});
  const int updates = frame.updates;
  TransportCommand(CMD_PLAY);
  for (uint32_t id : {104u, 101u, 108u, 107u}) EXPECT_FALSE(bar.enabled[id]) << id;
  EXPECT_EQ(frame.updates, updates + 1);
  passes(10);
  TransportCommand(CMD_STOP);
  loop.pump();
  for (uint32_t id : {104u, 101u, 108u, 107u}) EXPECT_TRUE(bar.enabled[id]) << id;
  EXPECT_EQ(buttons[101].states.back(), 0);
  EXPECT_EQ(buttons[109].states.back(), 0);
  EXPECT_EQ(Playing.load(), 0u);
  EXPECT_GT(SongPosition.load(), 0u) << "the position is where the clock stopped";
  EXPECT_EQ(SongPosition.load(), clock->now.load());
}

TEST_F(Transport, StopWhilePlayingLetsGoOfTheDamperAndCentresTheBenderOnEveryChannel) {
  install(0, {event(0, 0x90, 60, 90), event(480, 0x90, 60, 0)});
  TransportCommand(CMD_PLAY);
  passes(3);
  devices.clearSent();
  TransportCommand(CMD_STOP);
  std::vector<uint32_t> words = sentMessages();
  std::erase_if(words, [](uint32_t w) { return (w & 0xF0) == 0x80 || ((w & 0xF0) == 0x90); });  // the reset's note-offs
  ASSERT_EQ(words.size(), 32u);
  for (uint32_t channel = 0; channel < 16; ++channel) {
    EXPECT_EQ(words[channel], 0xB0 | channel | 64u << 8);
    EXPECT_EQ(words[16 + channel], 0xE0 | channel | 64u << 16);
  }
}

TEST_F(Transport, StopWhileNeitherPlayingNorRecordingEnablesBothClockButtonsAndChangesNothingElse) {
  bar.enabled[108] = false;
  SongPosition = 77;
  TransportCommand(CMD_STOP);
  EXPECT_TRUE(bar.enabled[108]);
  EXPECT_TRUE(bar.enabled[107]);
  EXPECT_EQ(bar.enabled.count(101), 0u);
  EXPECT_EQ(SongPosition.load(), 77u);
  EXPECT_TRUE(sentMessages().empty());
}

TEST_F(Transport, APositionBeyondTheSongFeedsNothingAndPlayStopsAtTheFirstNotification) {
  install(0, {event(0, 0x90, 60, 90), event(120, 0x90, 60, 0)});
  SongPosition = 5000;
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(FeedRemaining.load(), 0u);
  EXPECT_EQ(out->ringCount.load(), 0u);
  playToTheEnd(20);
  EXPECT_EQ(Playing.load(), 0u);
}

TEST_F(Transport, RewindStopsPlayAndPutsEveryPositionBackTo0) {
  install(0, {event(0, 0x90, 60, 90), event(4800, 0x90, 60, 0)});
  TransportCommand(CMD_PLAY);
  passes(30);
  RecordingLyrics lyrics;
  LyricsEdit = &lyrics;
  TransportCommand(CMD_REWIND);
  EXPECT_EQ(Playing.load(), 0u);
  EXPECT_EQ(SongPosition.load(), 0u);
  EXPECT_EQ(clock->now.load(), 0u);
  EXPECT_EQ(clock->sinceEvent.load(), 0u);
  EXPECT_EQ(clock->beatTicks.load(), 0u);
  EXPECT_EQ(lyrics.highlights.back(), (std::pair<uint32_t, uint32_t>{0, 0}));
}

TEST_F(Transport, GoToEndTakesTheLastEventOfTheSongTracks) {
  install(0, {event(0, 0x90, 60, 90), event(300, 0x90, 60, 0)});
  install(1, {event(10, 0x90, 62, 90), event(700, 0x90, 62, 0)});
  TransportCommand(CMD_GO_TO_END);
  EXPECT_EQ(SongPosition.load(), 700u);
  EXPECT_EQ(clock->now.load(), 700u);
  EXPECT_EQ(bar.counter.back(), 700u);
}

TEST_F(Transport, AfterADeletionGoToEndCountsOnlyTheFirstEventOfTheFirstListedTrack) {
  install(0, {event(0, 0x90, 60, 90), event(900, 0x90, 60, 0)});
  install(1, {event(10, 0x90, 62, 90), event(700, 0x90, 62, 0)});
  install(2, {event(20, 0x90, 64, 90), event(30, 0x90, 64, 0)});
  DeleteTrack(2);  // ActiveTracks: 0, 1, 256
  TransportCommand(CMD_GO_TO_END);
  EXPECT_EQ(SongPosition.load(), 700u) << "track 0 stands first: its first event, not its last, counts";
}

TEST_F(Transport, GoToEndInASongWithoutTracksGoesTo0) {
  ClearSongTracks();
  SongPosition = 90;
  TransportCommand(CMD_GO_TO_END);
  EXPECT_EQ(SongPosition.load(), 0u);
}

TEST_F(Transport, GoToEndSetsTheEventsListOnTheRowBeforeThePosition) {
  install(0, {event(0, 0xB0, 7, 90), event(300, 0xB0, 7, 1)});
  ListEventRowsOf({0});
  RecordingList events;
  EventsList = &events;
  EventsOpen = 1;
  TransportCommand(CMD_GO_TO_END);
  EXPECT_EQ(FeedCursorRow, 1u);
  EXPECT_EQ(events.top, 0);
  EXPECT_EQ(events.current, 0);
}

TEST_F(Transport, TheEndOfASongWhileTheGeneratorRunsLeavesThePositionAndRewindIsLost) {
  prepareGenerator();
  install(0, {event(0, 0xB0, 7, 90)});
  SongPosition = 0;
  TransportCommand(CMD_GENERATE);
  ASSERT_EQ(Generating.load(), 1u);
  passes(20);
  const uint32_t start = clock->now;
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(SongPosition.load(), start) << "play starts where the generator's clock stood";
  passes(20);
  loop.pump();
  EXPECT_EQ(Playing.load(), 0u) << "the song ran out";
  EXPECT_EQ(SongPosition.load(), start) << "the clock runs on for the generator and the position stays";
  EXPECT_GT(clock->now.load(), start);
  EXPECT_EQ(Generating.load(), 1u);
  EXPECT_NE(clock->now.load(), 0u) << "Rewind did nothing";
  endGenerator();
}

TEST_F(Transport, WithLinkOnPlayStartsTheGenerator) {
  prepareGenerator();
  Linked = 1;
  install(0, {event(0, 0x90, 60, 90), event(480, 0x90, 60, 0)});
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(Generating.load(), 1u);
  loop.pump();
  EXPECT_EQ(buttons[200].states, (std::vector<int>{1}));
  TransportCommand(CMD_STOP);
  endGenerator();
}

TEST_F(Transport, WithLinkOnAndTheGeneratorRunningPlayRestartsTheClockWithTheSong) {
  prepareGenerator();
  Linked = 1;
  install(0, {event(0, 0x90, 60, 90), event(480, 0x90, 60, 0)});
  TransportCommand(CMD_GENERATE);
  passes(50);
  const uint32_t now = clock->now;
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(SongPosition.load(), now) << "play starts where the generator's clock stood";
  EXPECT_EQ(Generating.load(), 1u) << "the generator goes on";
  EXPECT_TRUE(buttons[200].states.empty()) << "the generator button is not pressed again";
  EXPECT_EQ(Playing.load(), 1u);
  TransportCommand(CMD_STOP);
  endGenerator();
}

TEST_F(Transport, PlayRemembersTheEventsListsTopRowAndTheSeekPlacesItsCursor) {
  install(0, {event(0, 0xB0, 7, 90), event(100, 0xB0, 7, 80), event(200, 0xB0, 7, 1)});
  ListEventRowsOf({0});
  RecordingList events;
  events.top = 1;
  EventsList = &events;
  EventsOpen = 1;
  SongPosition = 100;
  TransportCommand(CMD_PLAY);
  EXPECT_EQ(EventsListTop, 1u);
  EXPECT_EQ(FeedCursorRow, 1u) << "the first row at or after the position";
  EXPECT_EQ(events.current, 1);
  TransportCommand(CMD_STOP);
}

TEST_F(Transport, TheFollowMovesTheCursorWithTheMusicAndTurnsTheListAPageAtATime) {
  install(0, {event(0, 0xB0, 7, 90), event(10, 0xB0, 7, 80), event(20, 0xB0, 7, 70), event(30, 0xB0, 7, 60),
              event(40, 0xB0, 7, 50), event(50, 0xB0, 7, 40)});
  ListEventRowsOf({0});
  ASSERT_EQ(EventRowCount, 6u);
  RecordingList events;
  EventsList = &events;
  EventsOpen = 1;
  EventsRowsInSight = 2;
  FeedCursorRow = 0;
  FeedShownRow = 0;
  EventsListTop = 0;
  EventFollowNotice(10);
  EXPECT_EQ(FeedCursorRow, 2u);
  EXPECT_EQ(events.current, 2);
  EXPECT_EQ(events.top, 2) << "top 0 + 2 rows in sight reached row 2: the page turns";
  EventFollowNotice(20);
  EXPECT_EQ(FeedCursorRow, 3u);
  EXPECT_EQ(events.top, 2) << "no row-by-row scrolling";
  EventFollowNotice(1000);
  EXPECT_EQ(FeedCursorRow, 6u);
  EventFollowNotice(2000);
  EXPECT_EQ(FeedShownRow, 6u) << "past the last row nothing moves";
  EXPECT_EQ(clock->followEnabled.load(), 1u);
}

TEST_F(Transport, PlayedNotesPostTheFollowAtMostOncePerClockTick) {
  install(0, {event(7, 0x90, 60, 90), event(7, 0x90, 64, 90), event(240, 0x90, 60, 0), event(240, 0x90, 64, 0)});
  TransportCommand(CMD_PLAY);
  int follows = 0;
  for (int i = 0; i < 20; ++i) {  // 24 ticks at 60 beats a minute
    timers.step();
    for (const auto& m : loop.pending()) follows += m.msg == NM_EVENT_FOLLOW;
    loop.pump();
  }
  EXPECT_EQ(follows, 1) << "two note-ons at one tick, one notification";
  TransportCommand(CMD_STOP);
}

TEST_F(Transport, TheControlBarTakesItsMessagesThroughItsWindow) {
  install(0, {event(0, 0x90, 60, 90), event(480, 0x90, 60, 0)});
  controlBar.handleMessage(WM_COMMAND, CMD_PLAY, 0);
  EXPECT_EQ(Playing.load(), 1u);
  controlBar.handleMessage(NM_SYNC_TICK, 0, 0);
  EXPECT_FALSE(bar.counter.empty());
  controlBar.handleMessage(WM_COMMAND, CMD_STOP, 0);
  EXPECT_EQ(Playing.load(), 0u);
}

}  // namespace

TEST(ControlBarControls, ClearingButtonsOneAfterAnotherLeavesNoneStanding) {
  RecordingButton play, stop;
  SetControlBarControl(CMD_STOP, &stop);
  SetControlBarControl(CMD_PLAY, &play);
  SetControlBarControl(CMD_STOP, nullptr);
  SetControlBarControl(CMD_PLAY, nullptr);
  EXPECT_EQ(ControlBarControl(CMD_STOP), nullptr);
  EXPECT_EQ(ControlBarControl(CMD_PLAY), nullptr) << "a control gone is never addressed again";
}
