#include "midi/sync_clock.h"

#include <gtest/gtest.h>

#include <thread>

#include "midi/midi_in.h"
#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "support/midi_fixture.h"

using namespace platform;

namespace {

class SyncClockTest : public MidiBench {
 protected:
  // Runs one pass and returns the ticks it added.
  uint32_t onePass() {
    const uint32_t before = clock->now;
    timers.step();
    return clock->now - before;
  }
};

TEST_F(SyncClockTest, PassesYieldTwoTwoThreeTwoThreeTicksAt120TicksAndHalfASecond) {
  openClockAndOutput();
  EXPECT_EQ(clock->increment.load(), 307200000u);
  EXPECT_EQ(clock->tempo.load(), 128000000u);
  StartSync(clock);
  std::vector<uint32_t> ticks;
  for (int i = 0; i < 10; ++i) ticks.push_back(onePass());
  EXPECT_EQ(ticks, (std::vector<uint32_t>{2, 2, 3, 2, 3, 2, 2, 3, 2, 3}));
  EXPECT_EQ(clock->now.load(), 24u);
}

TEST_F(SyncClockTest, AWakeUpThreePeriodsLateRunsThreePassesAndThePositionLandsOnRealTime) {
  openClockAndOutput();
  SetTempo(clock, 1200000);  // 120 ticks a quarter at 50 beats a minute: one tick a 10 ms pass
  StartSync(clock);
  for (int i = 0; i < 5; ++i) timers.step();
  ASSERT_EQ(clock->now.load(), 5u);
  const uint32_t passesBefore = ClockPassCount;
  timers.stall(30);  // the timer thread kept from running for three periods
  timers.step();
  EXPECT_EQ(ClockPassCount - passesBefore, 3u) << "three passes, back to back";
  EXPECT_EQ(clock->now.load(), 8u) << "80 ms of real time: 8 ticks";
  timers.step();
  EXPECT_EQ(clock->now.load(), 9u);
  EXPECT_EQ(timers.timeMs(), 90u);
}

TEST_F(SyncClockTest, AStoppedClocksPassDoesNothing) {
  openClockAndOutput();
  passes(10);
  EXPECT_EQ(clock->now.load(), 0u);
  EXPECT_TRUE(window.notices.empty());
}

TEST_F(SyncClockTest, APassThatComesDuringAnotherIsLost) {
  openClockAndOutput();
  StartSync(clock);
  clock->flags |= SYNC_IN_TICK;
  passes(3);
  EXPECT_EQ(clock->now.load(), 0u);
  EXPECT_EQ(ClockPassCount.load() > 0, true);
}

// The generator's tick holds the clock from inside its pass, so that the pass
// under way ends while the clock is held, as a slow pass does when a set-up
// load takes the hold on the UI thread.
SyncClock* clockToHold = nullptr;
int ticksRun = 0;
void holdOnTheFirstTick() {
  if (++ticksRun == 1) HoldClockPasses(clockToHold);
}

TEST_F(SyncClockTest, AHeldClockRunsNoPassAfterThePassUnderWayHasEnded) {
  openClockAndOutput();
  clockToHold = clock;
  ticksRun = 0;
  ClockHooks.generatorTick = holdOnTheFirstTick;
  Generating = 1;
  StartSync(clock);
  passes(1);  // the hold is taken inside this pass, which then ends
  ASSERT_EQ(ticksRun, 1);
  const uint32_t heldAt = clock->now;
  passes(5);
  EXPECT_EQ(clock->now.load(), heldAt) << "time stands while the clock is held";
  EXPECT_EQ(ticksRun, 1) << "no pass runs the generator while the clock is held";
  ReleaseClockPasses(clock);
  passes(1);
  EXPECT_GT(clock->now.load(), heldAt);
  EXPECT_EQ(ticksRun, 2);
}

TEST_F(SyncClockTest, TheInternalClockSends24MidiClocksPerBeatBetweenStartAndStop) {
  openClockAndOutput();
  StartSync(clock);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0xFA}) << "Start goes out before the first pass";
  passes(50);  // 120 ticks: one beat
  auto words = sentWords();
  EXPECT_EQ(std::count(words.begin(), words.end(), 0xF8u), 24);
  StopSync(clock);
  EXPECT_EQ(sentWords().back(), 0xFCu);
  EXPECT_EQ(clock->flags.load(), 0u);
}

TEST_F(SyncClockTest, TwoStartsInARowSendStartTwice) {
  openClockAndOutput();
  ReStartSync(clock);
  ReStartSync(clock);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0xFA, 0xFA}));
}

TEST_F(SyncClockTest, AnOutputThatFiltersClockOrHasNoSyncGetsNoClock) {
  openClockAndOutput();
  SetMidiOutFilters(out, 1u << 14 | 1u << 16);  // 0xF8 and 0xFA
  StartSync(clock);
  passes(50);
  EXPECT_TRUE(sentWords().empty());
  StopSync(clock);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0xFC});
}

TEST_F(SyncClockTest, AResolutionBelow24GivesNoClockPerBeatAndSendsNoClock) {
  openClockAndOutput();
  SetResolution(clock, 23);
  EXPECT_EQ(clock->ticksPerClock.load(), 0u);
  SetResolution(clock, 1);
  EXPECT_EQ(clock->ticksPerClock.load(), 0u);
  StartSync(clock);
  passes(100);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0xFA});
}

TEST_F(SyncClockTest, SetResolutionAbove960OrBelow0ChangesNothing) {
  openClockAndOutput();
  SetResolution(clock, 961);
  SetResolution(clock, -1);
  EXPECT_EQ(GetResolution(clock), 120u);
  EXPECT_EQ(clock->ticksPerClock.load(), 5u);
  SetResolution(clock, 960);
  EXPECT_EQ(GetResolution(clock), 960u);
}

TEST_F(SyncClockTest, SetTempoRefusesZero) {
  openClockAndOutput();
  EXPECT_EQ(SetTempo(clock, 0), SYNC_TIMER_FAILED);
  EXPECT_EQ(SetTempo(nullptr, 500000), SYNC_TIMER_FAILED);
  EXPECT_EQ(GetTempo(clock), 500000u);
  EXPECT_EQ(GetTempo(nullptr), 0u);
}

TEST_F(SyncClockTest, AClockWithoutATempoStandsStillInsteadOfDividingByZero) {
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 10), 0u);
  SetResolution(clock, 120);
  StartSync(clock);
  passes(5);
  EXPECT_EQ(clock->now.load(), 0u);
}

TEST_F(SyncClockTest, NullClocksAreHarmless) {
  StopSync(nullptr);
  StartSync(nullptr);
  ReStartSync(nullptr);
  SetResolution(nullptr, 120);
  SetStartFrame(nullptr, 5);
  EXPECT_EQ(GetStartFrame(nullptr), 0u);
  EXPECT_EQ(GetResolution(nullptr), 0u);
  SyncClock* none = nullptr;
  EXPECT_EQ(CloseSync(&none), 0u);
}

TEST_F(SyncClockTest, NmSyncTickComesEveryFifthPass) {
  openClockAndOutput();
  StartSync(clock);
  passes(14);
  ASSERT_EQ(loop.pump(), 2u);
  ASSERT_EQ(window.of(NM_SYNC_TICK).size(), 2u);
  EXPECT_EQ(window.of(NM_SYNC_TICK)[0].param2, reinterpret_cast<uintptr_t>(clock));
}

TEST_F(SyncClockTest, TheGeneratorRunsWhileGeneratingAndDrainsWhileDraining) {
  static int ticks, drains;
  ticks = drains = 0;
  ClockHooks.generatorTick = [] { ++ticks; };
  ClockHooks.generatorDrain = [] { ++drains; };
  openClockAndOutput();
  StartSync(clock);
  passes(3);
  Generating = 1;
  Draining = 1;
  passes(4);
  Generating = 0;
  passes(5);
  EXPECT_EQ(ticks, 4);
  EXPECT_EQ(drains, 5);
}

TEST_F(SyncClockTest, EventsAreDispatchedInOrderByDelta) {
  openClockAndOutput();
  put(0, 0x90, 60, 100);
  put(5, 0x80, 60, 0);
  put(0, 0x90, 62, 100);
  StartSync(clock);
  devices.clearSent();
  passes(1);  // now 2
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x643C90});
  passes(1);  // now 4: the delta of 5 is not reached
  EXPECT_EQ(sentWords().size(), 1u);
  passes(1);  // now 7
  EXPECT_EQ(sentMessages(), (std::vector<uint32_t>{0x643C90, 0x003C80, 0x643E90}));
  EXPECT_EQ(clock->dispatchBase.load(), 5u);
  EXPECT_EQ(clock->sinceEvent.load(), 0u) << "an event with a delta sets it back";
  EXPECT_EQ(out->ringCount.load(), 0u);
}

TEST_F(SyncClockTest, DispatchAppliesTheFilterAndSkipsBlockedEvents) {
  openClockAndOutput();
  SetMidiOutFilters(out, FILTER_NOTE_ON);
  put(0, 0x90, 60, 100);
  put(0, 0xB0, 7, 100);
  StartSync(clock);
  devices.clearSent();
  passes(1);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x6407B0});
  EXPECT_EQ(out->ringCount.load(), 0u);
}

TEST_F(SyncClockTest, DispatchNotesFirstSoARepeatedNoteOnEndsTheOldNoteThenSounds) {
  openClockAndOutput();
  put(0, 0x90, 60, 100);
  put(0, 0x90, 60, 90);
  StartSync(clock);
  devices.clearSent();
  passes(1);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x643C90, 0x003C90, 0x5A3C90}));
}

TEST_F(SyncClockTest, TheClocksRoadDoesNotRetryADeviceThatIsNotReady) {
  openClockAndOutput();
  put(0, 0x90, 60, 100);
  StartSync(clock);
  devices.clearSent();
  devices.answerNotReady(1);
  passes(1);
  EXPECT_TRUE(sentWords().empty());
  EXPECT_EQ(out->ringCount.load(), 0u);
}

TEST_F(SyncClockTest, SendEventIsCalledOncePerEventWhileTheSlotStillCounts) {
  static std::vector<uint32_t> countsSeen;
  countsSeen.clear();
  ClockHooks.sendEvent = [](MidiOutHandle* o) { countsSeen.push_back(o->ringCount.load()); };
  openClockAndOutput();
  put(0, 0x90, 60, 100);
  put(0, 0x90, 62, 100);
  StartSync(clock);
  passes(1);
  EXPECT_EQ(countsSeen, (std::vector<uint32_t>{2, 1}));
}

TEST_F(SyncClockTest, ShapeEventShapesTheSlotBeforeItIsNotedAndSent) {
  ClockHooks.shapeEvent = [](SyncClock*, MidiOutHandle*, MidiEvent* e) {
    e->value1 = static_cast<uint8_t>(e->value1 + 12);
  };
  openClockAndOutput();
  put(0, 0x90, 60, 100);
  StartSync(clock);
  devices.clearSent();
  passes(1);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x644890});
  EXPECT_EQ(out->soundingNotes[72].load(), 1u);
}

MidiEvent tempoEvent(uint32_t time, uint32_t microseconds) {
  return MidiEvent{time,
                   0,
                   static_cast<uint8_t>(microseconds >> 16),
                   static_cast<uint8_t>(microseconds >> 8),
                   static_cast<uint8_t>(microseconds),
                   nullptr,
                   0,
                   0,
                   0,
                   META_TEMPO};
}

TEST_F(SyncClockTest, ATempoEventChangesTheNextPassAndTellsTheOutputsWindow) {
  openClockAndOutput();
  MidiEvent tempo = tempoEvent(0, 250000);
  MidiOut(out, &tempo);
  StartSync(clock);
  EXPECT_EQ(onePass(), 2u);  // this pass was reckoned at the old tempo
  EXPECT_EQ(GetTempo(clock), 250000u);
  EXPECT_EQ(onePass(), 5u);  // twice as fast: (51.2M left over + 307.2M) / 64M
  loop.pump();
  const auto meta = window.of(NM_SONG_META);
  ASSERT_EQ(meta.size(), 1u);
  EXPECT_EQ(meta[0].param1, 81u);
  EXPECT_EQ(meta[0].param2, 0u);
  EXPECT_TRUE(sentMessages().empty()) << "meta events are not sent";
}

TEST_F(SyncClockTest, ATempoEventOfZeroKeepsTheTempoButStillTellsTheWindow) {
  openClockAndOutput();
  MidiEvent tempo = tempoEvent(0, 0);
  MidiOut(out, &tempo);
  StartSync(clock);
  passes(1);
  loop.pump();
  EXPECT_EQ(GetTempo(clock), 500000u);
  EXPECT_EQ(window.of(NM_SONG_META).size(), 1u);
}

TEST_F(SyncClockTest, ALyricEventTellsTheWindowItsTextOffsets) {
  openClockAndOutput();
  MidiEvent lyric{0, 0, 0x01, 0x02, 0x03, nullptr, 0x04, 0, 0, META_LYRIC};
  MidiOut(out, &lyric);
  StartSync(clock);
  passes(1);
  loop.pump();
  const auto meta = window.of(NM_SONG_META);
  ASSERT_EQ(meta.size(), 1u);
  EXPECT_EQ(meta[0].param1, 5u);
  EXPECT_EQ(meta[0].param2, 0x0304u << 16 | 0x0102u);
}

TEST_F(SyncClockTest, SysexOnTheClocksRoadIsSentOnceAtExactlySysexSize) {
  openClockAndOutput();
  StartSync(clock);
  for (int i = 0; i < 512; ++i) {
    const auto byte = static_cast<uint8_t>(i == 0 ? 0xF0 : i == 511 ? 0xF7 : 0x11);
    MidiEvent e{0, 0xF0, byte, 0, 0, nullptr, 0, 0, 0, 0};
    ASSERT_EQ(MidiOut(out, &e), 0u);
  }
  passes(1);
  loop.pump();
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 2u);  // the Start, then the one long message
  EXPECT_EQ(sent[1].bytes.size(), 512u);
}

TEST_F(SyncClockTest, AnEndOfSysexNeverWaitsForItsTime) {
  openClockAndOutput();
  StartSync(clock);
  MidiEvent start{0, 0xF0, 0xF0, 0, 0, nullptr, 0, 0, 0, 0};
  MidiEvent end{1000, 0xF0, 0xF7, 0, 0, nullptr, 0, 0, 0, 0};
  MidiOut(out, &start);
  MidiOut(out, &end);
  passes(1);
  EXPECT_EQ(out->ringCount.load(), 0u);
  loop.pump();
  EXPECT_EQ(devices.sent().back().bytes, (std::vector<uint8_t>{0xF0, 0xF7}));
}

TEST_F(SyncClockTest, AStaleEndOfSysexInAnEmptyRingIsNotDispatched) {
  openClockAndOutput();
  out->ring[0] = MidiEvent{0, 0xF0, 0xF7, 0, 0, nullptr, 0, 0, 0, 0};  // left over, not counted
  StartSync(clock);
  passes(3);
  EXPECT_EQ(out->ringCount.load(), 0u);
  EXPECT_EQ(out->readIndex.load(), 0u);
}

class MetronomeTest : public SyncClockTest {
 protected:
  void SetUp() override {
    SyncClockTest::SetUp();
    openClockAndOutput();
    clock->firstBeatMsg = 0x642A99;
    clock->otherBeatsMsg = 0x482A99;
    clock->noteDivisor = 2;
    clock->beatsPerBar = 4;
    out->flags |= METRONOME_ON;
  }
  // Runs passes and returns, per pass, the clock's now and what was sent.
  std::vector<std::pair<uint32_t, std::vector<uint32_t>>> run(int count) {
    std::vector<std::pair<uint32_t, std::vector<uint32_t>>> log;
    for (int i = 0; i < count; ++i) {
      devices.clearSent();
      timers.step();
      auto words = sentWords();
      words.erase(std::remove(words.begin(), words.end(), 0xF8u), words.end());
      log.emplace_back(clock->now.load(), words);
    }
    return log;
  }
};

TEST_F(MetronomeTest, TheClickSoundsEndsAndItsEndRepeatsEveryPassUpToTheNextClick) {
  StartSync(clock);
  const auto log = run(60);
  EXPECT_EQ(log[0].second, std::vector<uint32_t>{0x642A99}) << "the first beat clicks on the first pass";
  bool secondClick = false;
  for (std::size_t i = 1; i < log.size(); ++i) {
    const auto& [now, words] = log[i];
    if (now < 62) {
      EXPECT_TRUE(words.empty()) << "now " << now;
    } else if (now < 120) {
      EXPECT_EQ(words, std::vector<uint32_t>{0x002A99}) << "now " << now;
    } else if (!secondClick) {
      EXPECT_EQ(words, std::vector<uint32_t>{0x482A99}) << "now " << now;
      secondClick = true;
    }
  }
  EXPECT_TRUE(secondClick);
  EXPECT_EQ(clock->beat.load(), 1);
  EXPECT_EQ(clock->beatCount.load(), 2u);
}

TEST_F(MetronomeTest, ASilentMetronomeStillCountsBeats) {
  out->flags.fetch_and(~METRONOME_ON);
  StartSync(clock);
  const auto log = run(60);
  for (const auto& [now, words] : log) EXPECT_TRUE(words.empty());
  EXPECT_EQ(clock->beatCount.load(), 2u);
}

TEST_F(MetronomeTest, TheBarWrapsAfterBeatsPerBar) {
  StartSync(clock);
  run(250);  // 600 ticks: five beats
  EXPECT_EQ(clock->beat.load(), 1);
}

TEST_F(MetronomeTest, ANoteDivisorOf0CountsAs1) {
  clock->noteDivisor = 0;
  StartSync(clock);
  run(1);
  EXPECT_EQ(clock->noteOffAt.load(), clock->nextBeat.load() - 120);
}

class CountInTest : public SyncClockTest {
 protected:
  void startCountIn(uint32_t mode, uint32_t bars) {
    openClockAndOutput(mode);
    clock->beatsPerBar = 2;
    clock->countInBars = bars;
    clock->noteDivisor = 2;
    input.writeIndex = 5;
    input.readIndex = 3;
    input.lastEventTime = 9;
    clock->midiIn = &input;
    // The transport places the clock at the start and sets the count-in.
    clock->now = 1000;
    clock->startPosition = 1000;
    clock->nextBeat = 1000;
    clock->flags |= SYNC_COUNT_IN;
    clock->flags |= SYNC_COUNTING;
    ReStartSync(clock);
  }
  MidiInHandle input;
};

TEST_F(CountInTest, TheCountInEndsAndPlacesTheClockBackAtTheStart) {
  static int generated;
  generated = 0;
  ClockHooks.generatorTick = [] { ++generated; };
  Generating = 1;
  startCountIn(SYNC_INTERNAL, 1);
  put(0, 0x90, 60, 100);
  int count = 0;
  while ((clock->flags & SYNC_COUNT_IN) != 0 && count < 1000) {
    timers.step();
    ++count;
  }
  EXPECT_EQ(count, 100) << "240 ticks of count-in at 2.4 a pass";
  EXPECT_EQ(clock->now.load(), 1000u);
  EXPECT_EQ(clock->sinceEvent.load(), 1000u);
  EXPECT_EQ(clock->beatTicks.load(), 1000u % 120);
  EXPECT_EQ(clock->dispatchBase.load(), 0u);
  EXPECT_EQ(clock->remainder.load(), 0u);
  EXPECT_EQ(input.writeIndex.load(), 0u);
  EXPECT_EQ(input.readIndex.load(), 0u);
  EXPECT_EQ(input.lastEventTime.load(), 0u);
  EXPECT_EQ(Capturing.load(), 1u);
  EXPECT_EQ(generated, 0) << "no generator during the count-in";
  EXPECT_EQ(out->ringCount.load(), 1u) << "no events during the count-in";
  loop.pump();
  EXPECT_TRUE(window.of(NM_SYNC_TICK).empty()) << "no display during the count-in";
  timers.step();
  EXPECT_EQ(generated, 1);
  EXPECT_EQ(out->ringCount.load(), 0u);
}

TEST_F(CountInTest, TheCountInMovesTheBeatsBackByItsLength) {
  startCountIn(SYNC_INTERNAL, 1);  // 240 ticks
  clock->now = 1238;               // the last pass of the count-in, between clicks
  clock->nextBeat = 2000;
  clock->noteOffAt = 1900;
  timers.step();
  ASSERT_EQ(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_EQ(clock->nextBeat.load(), 1760u);
  EXPECT_EQ(clock->noteOffAt.load(), 1660u);
}

TEST_F(CountInTest, ACountInOfNoBarsEndsOnItsFirstPass) {
  startCountIn(SYNC_INTERNAL, 0);
  timers.step();
  EXPECT_EQ(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_EQ(clock->now.load(), 1000u);
}

TEST_F(CountInTest, InMidiSyncTheCountInEndPutsThePositionIntoRemainderAndClockTicks) {
  startCountIn(SYNC_MIDI, 0);
  SyncMidiClock(clock);
  EXPECT_EQ(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_EQ(clock->remainder.load(), 1000u);
  EXPECT_EQ(clock->clockTicks.load(), 1000u);
  EXPECT_EQ(clock->lastClockPos.load(), 1000u);
  EXPECT_EQ(clock->freeTicks.load(), 0u) << "cleared after the received clock's tick";
}

TEST_F(CountInTest, AResolutionOf0EndsTheCountInWithoutDividingByZero) {
  startCountIn(SYNC_INTERNAL, 1);
  SetResolution(clock, 0);
  timers.step();
  EXPECT_EQ(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_EQ(clock->beatTicks.load(), 0u);
}

class MidiSyncTest : public SyncClockTest {
 protected:
  void SetUp() override {
    SyncClockTest::SetUp();
    openClockAndOutput(SYNC_MIDI);
    StartSync(clock);
    clock->flags |= SYNC_COUNTING;  // as an incoming Start does
  }
};

TEST_F(MidiSyncTest, WithoutIncomingClockThePositionStopsOneTickBeforeTheNextClock) {
  passes(20);
  EXPECT_EQ(clock->now.load(), 4u);  // the next clock stands at 5
  EXPECT_NE(clock->flags & SYNC_WAIT_CLOCK, 0u);
  EXPECT_GT(clock->freeTicks.load(), 4u);
}

TEST_F(MidiSyncTest, AReceivedClockBringsThePositionToOneFullClockBeyondTheLast) {
  passes(1);  // now 2: behind
  SyncMidiClock(clock);
  EXPECT_EQ(clock->now.load(), 5u);
  EXPECT_EQ(clock->lastClockPos.load(), 5u);
  EXPECT_EQ(clock->freeTicks.load(), 0u);
  EXPECT_EQ(clock->flags & (SYNC_CLOCK_SEEN | SYNC_WAIT_CLOCK), 0u);
  passes(20);
  SyncMidiClock(clock);
  EXPECT_EQ(clock->now.load(), 10u);
}

TEST_F(MidiSyncTest, StartDoesNotCountAndNoClockIsSentInMidiSync) {
  StopSync(clock);
  devices.clearSent();
  ReStartSync(clock);
  EXPECT_EQ(clock->flags & SYNC_COUNTING, 0u);
  EXPECT_TRUE(sentWords().empty()) << "no Start in SYNC_MIDI";
  clock->flags |= SYNC_COUNTING;
  passes(50);
  for (uint32_t word : sentWords()) EXPECT_NE(word, 0xF8u);
  StopSync(clock);
  for (uint32_t word : sentWords()) EXPECT_NE(word, 0xFCu);
}

TEST_F(MidiSyncTest, AResolutionTooSmallForClocksKeepsTimeStill) {
  SetResolution(clock, 12);
  passes(5);
  SyncMidiClock(clock);
  EXPECT_EQ(clock->now.load(), 0u);
}

// The input's thread calls SyncMidiClock while the timer's pass is under way.
// Here the clocks come from inside that pass (its generator tick), on one
// thread, so that the order is the bad one every time.
SyncClock* clockForInput = nullptr;
int clocksDuringThePass = 0;
int generatorDepth = 0;
int deepestGenerator = 0;
uint32_t nowAfterTheClocks = 0;

void clocksComeDuringThePass() {
  if (++generatorDepth > deepestGenerator) deepestGenerator = generatorDepth;
  if (clocksDuringThePass > 0) {
    while (clocksDuringThePass > 0) {
      --clocksDuringThePass;  // before the call: a pass run inside it comes back here
      SyncMidiClock(clockForInput);
    }
    nowAfterTheClocks = clockForInput->now;
  }
  --generatorDepth;
}

class ClockDuringAPassTest : public MidiSyncTest {
 protected:
  void SetUp() override {
    MidiSyncTest::SetUp();
    clockForInput = clock;
    clocksDuringThePass = 0;
    generatorDepth = 0;
    deepestGenerator = 0;
    nowAfterTheClocks = 0;
    ClockHooks.generatorTick = clocksComeDuringThePass;
    Generating = 1;
  }
};

TEST_F(ClockDuringAPassTest, AClockThatComesDuringTheTimersPassRunsNoPassBesideItAndIsFollowedBeforeItEnds) {
  passes(1);  // now 2
  clocksDuringThePass = 1;
  passes(1);  // interpolates to 4; the clock comes in its generator tick
  EXPECT_EQ(nowAfterTheClocks, 4u) << "the input ran no pass beside the timer's";
  EXPECT_EQ(deepestGenerator, 1) << "the generator never ran inside itself";
  EXPECT_EQ(clock->now.load(), 5u) << "the timer's pass followed the clock before it let go";
  EXPECT_EQ(clock->lastClockPos.load(), 5u);
  EXPECT_EQ(clock->clocksPending.load(), 0u);
  EXPECT_EQ(clock->flags & (SYNC_IN_TICK | SYNC_CLOCK_SEEN | SYNC_WAIT_CLOCK), 0u);
  passes(20);
  SyncMidiClock(clock);
  EXPECT_EQ(clock->now.load(), 10u) << "the clocks after it count from it";
}

TEST_F(ClockDuringAPassTest, TwoClocksThatComeDuringOnePassAreBothFollowed) {
  passes(1);
  clocksDuringThePass = 2;
  passes(1);
  EXPECT_EQ(nowAfterTheClocks, 4u);
  EXPECT_EQ(deepestGenerator, 1);
  EXPECT_EQ(clock->now.load(), 10u) << "two clocks of five ticks, none lost";
  EXPECT_EQ(clock->lastClockPos.load(), 10u);
}

TEST_F(MidiSyncTest, AClockThatFindsThePassTakenIsLeftCountedAndTheNextPassFollowsIt) {
  passes(1);                     // now 2
  clock->flags |= SYNC_IN_TICK;  // a pass under way on the timer's thread
  SyncMidiClock(clock);
  EXPECT_EQ(clock->now.load(), 2u) << "no second pass beside the one under way";
  EXPECT_EQ(clock->clocksPending.load(), 1u);
  EXPECT_NE(clock->flags & SYNC_IN_TICK, 0u) << "the guard stays with the pass that has it";
  clock->flags |= SYNC_WAIT_CLOCK;  // that pass's interpolation reached the clock after it came
  clock->flags &= ~SYNC_IN_TICK;    // and the pass ends
  passes(1);
  EXPECT_EQ(clock->now.load(), 5u) << "the clock is followed, the wait notwithstanding";
  EXPECT_EQ(clock->lastClockPos.load(), 5u);
  EXPECT_EQ(clock->clocksPending.load(), 0u);
  EXPECT_EQ(clock->flags & (SYNC_IN_TICK | SYNC_CLOCK_SEEN | SYNC_WAIT_CLOCK), 0u);
}

TEST_F(MidiSyncTest, AClockBeforeStartIsNotFollowedOnceCountingBegins) {
  StopSync(clock);
  ReStartSync(clock);
  SyncMidiClock(clock);  // not counting yet
  EXPECT_EQ(clock->clocksPending.load(), 0u);
  clock->flags |= SYNC_COUNTING;  // as an incoming Start does
  passes(1);
  EXPECT_EQ(clock->now.load(), 2u) << "interpolated, not a clock ahead";
}

TEST_F(SyncClockTest, AStopLeavesThePassUnderWayItsGuard) {
  openClockAndOutput();
  StartSync(clock);
  clock->flags |= SYNC_IN_TICK;  // a pass under way on another thread
  StopSync(clock);
  EXPECT_EQ(clock->flags.load(), SYNC_IN_TICK) << "no other pass may start beside it";
  clock->flags &= ~SYNC_IN_TICK;
}

class SmpteTest : public SyncClockTest {
 protected:
  void SetUp() override {
    SyncClockTest::SetUp();
    openClockAndOutput(SYNC_SMPTE30DROP);
  }
  // Sends the eight quarter frames of one time code.
  void timeCode(uint8_t frames, uint8_t seconds, uint8_t minutes, uint8_t hours, uint8_t rate) {
    const uint8_t bytes[4] = {frames, seconds, minutes, static_cast<uint8_t>(hours | rate << 5)};
    for (uint8_t piece = 0; piece < 8; ++piece) {
      const uint8_t byte = bytes[piece / 2];
      const auto nibble = static_cast<uint8_t>(piece % 2 == 0 ? byte & 0xF : byte >> 4);
      SyncQuarterFrame(clock, static_cast<uint8_t>(piece << 4 | nibble));
    }
  }
  static uint32_t word(uint32_t frames, uint32_t seconds, uint32_t minutes, uint32_t hours) {
    return frames | seconds << 8 | minutes << 16 | hours << 24;
  }
};

TEST_F(SmpteTest, OpeningAnSmpteModeForcesPeriod500AndSetsNoTimer) {
  EXPECT_EQ(clock->period, 500u);
  EXPECT_EQ(clock->timerId.load(), 0u);
  EXPECT_EQ(timers.activeEvents(), 0u);
  EXPECT_EQ(clock->increment.load(), 2135467u * 120);
}

TEST_F(SmpteTest, QuarterFramesBeforeAFullSetOnlyPostponeTheStopTimer) {
  StartSync(clock);
  for (uint8_t piece = 0; piece < 7; ++piece) {
    SyncQuarterFrame(clock, static_cast<uint8_t>(piece << 4));
    timers.advance(400);
  }
  loop.pump();
  EXPECT_TRUE(window.notices.empty());
  EXPECT_EQ(timers.activeEvents(), 1u);
  timers.advance(100);
  loop.pump();
  ASSERT_EQ(window.of(NM_SMPTE_STOPPED).size(), 1u);
  EXPECT_EQ(clock->smpteType.load(), SYNC_SMPTE30DROP);
  for (const auto& nibble : clock->smpteNibbles) EXPECT_EQ(nibble.load(), 255);
}

TEST_F(SmpteTest, PieceSevenLoadsTheTimeAndTheRateThenMovesOneFrame) {
  StartSync(clock);
  timeCode(10, 20, 30, 1, 3);  // rate code 3: 30 frames, so type 2
  EXPECT_EQ(clock->smpteType.load(), SYNC_SMPTE30);
  EXPECT_EQ(SmpteTimeWord(clock), word(11, 20, 30, 1));
}

TEST_F(SmpteTest, TheDropIsAppliedOnEverySecondOfEveryTenthMinute) {
  StartSync(clock);
  timeCode(28, 59, 9, 0, 2);  // type 3, drop frame; piece 7 moves it to 29
  ASSERT_EQ(SmpteTimeWord(clock), word(29, 59, 9, 0));
  SyncQuarterFrame(clock, 0x00);  // piece 0 moves a frame: the minute rolls to 10
  EXPECT_EQ(SmpteTimeWord(clock), word(2, 0, 10, 0));
  for (int i = 0; i < 27; ++i) SyncQuarterFrame(clock, i % 2 == 0 ? 0x40 : 0x00);
  EXPECT_EQ(SmpteTimeWord(clock), word(29, 0, 10, 0));
  SyncQuarterFrame(clock, 0x40);
  EXPECT_EQ(SmpteTimeWord(clock), word(2, 1, 10, 0)) << "again on the next second, as settled";
}

TEST_F(SmpteTest, NoDropOutsideTheTenthMinutes) {
  StartSync(clock);
  timeCode(28, 59, 10, 0, 2);
  SyncQuarterFrame(clock, 0x00);
  EXPECT_EQ(SmpteTimeWord(clock), word(0, 0, 11, 0));
}

TEST_F(SmpteTest, HoursWrapAfter23) {
  StartSync(clock);
  timeCode(28, 59, 59, 23, 3);
  SyncQuarterFrame(clock, 0x00);
  EXPECT_EQ(SmpteTimeWord(clock), word(0, 0, 0, 0));
}

TEST_F(SmpteTest, TheClockLocksAtPieceZeroOnlyAndThenRunsTheTick) {
  StartSync(clock);
  SetStartFrame(clock, word(12, 0, 0, 0));
  EXPECT_EQ(GetStartFrame(clock), word(12, 0, 0, 0));
  timeCode(10, 0, 0, 0, 3);       // now 11 after piece 7
  SyncQuarterFrame(clock, 0x00);  // piece 0: frame 12 reaches the start frame
  loop.pump();
  ASSERT_EQ(window.of(NM_SMPTE_START).size(), 1u);
  EXPECT_EQ(window.of(NM_SMPTE_START)[0].param2, word(12, 0, 0, 0));
  EXPECT_NE(clock->flags & SYNC_SMPTE_LOCKED, 0u);
  EXPECT_GT(clock->now.load(), 0u) << "the locked quarter frame ran the tick";
}

TEST_F(SmpteTest, AStartFrameBetweenPiecesLocksOnTheNextPieceZero) {
  StartSync(clock);
  SetStartFrame(clock, word(13, 0, 0, 0));
  timeCode(10, 0, 0, 0, 3);       // 11
  SyncQuarterFrame(clock, 0x00);  // piece 0: 12, not yet
  EXPECT_EQ(clock->flags & SYNC_SMPTE_LOCKED, 0u);
  SyncQuarterFrame(clock, 0x40);  // piece 4: 13 reaches it, but no lock here
  EXPECT_EQ(clock->flags & SYNC_SMPTE_LOCKED, 0u);
  SyncQuarterFrame(clock, 0x00);  // piece 0: 14
  EXPECT_NE(clock->flags & SYNC_SMPTE_LOCKED, 0u);
}

TEST_F(SmpteTest, TimeCodeBeforeAnyStartCountsThirtyFramesAndNeverCrashes) {
  for (int i = 0; i < 100; ++i) SyncQuarterFrame(clock, 0x00);  // nibbles are zero, type is 0
  EXPECT_LT(clock->smpteTime[0].load(), 30);
}

TEST_F(SyncClockTest, ReopeningKeepsPositionTempoAndOutputsAnd65535KeepsModeAndPeriod) {
  openClockAndOutput();
  clock->now = 777;
  SyncClock* same = clock;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_KEEP, SYNC_KEEP), 0u);
  EXPECT_EQ(clock, same);
  EXPECT_EQ(clock->now.load(), 777u);
  EXPECT_EQ(GetTempo(clock), 500000u);
  EXPECT_EQ(clock->mode, SYNC_INTERNAL);
  EXPECT_EQ(clock->period, 10u);
  EXPECT_EQ(clock->outputs[0].load(), out);
  EXPECT_EQ(timers.activeEvents(), 1u) << "the old timer was killed";
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_MIDI, SYNC_KEEP), 0u);
  EXPECT_EQ(clock->mode, SYNC_MIDI);
}

TEST_F(SyncClockTest, CloseGivesBackTheTimerAndTheOutputsLetGoOfTheClock) {
  openClockAndOutput();
  EXPECT_EQ(timers.openPeriods(), 1);
  EXPECT_EQ(CloseSync(&clock), 0u);
  EXPECT_EQ(clock, nullptr);
  EXPECT_EQ(timers.activeEvents(), 0u);
  EXPECT_EQ(timers.openPeriods(), 0);
  EXPECT_EQ(out->clock.load(), nullptr);
  put(0, 0x90, 60, 100);  // an output without its clock flushes through its window
  loop.pump();
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x643C90});
}

TEST_F(SyncClockTest, AClosedOutputIsNeverTouchedByAPassAgain) {
  openClockAndOutput();
  MidiOutHandle* second = nullptr;
  LoopbackDevices two(2, 0);
  two.setRecording(true);
  installMidiDevices(&two);
  CloseMidiOut(&out);
  ASSERT_EQ(OpenMidiOut(&out, &window, 0, clock, MIDI_OPEN_WORD), 0u);
  ASSERT_EQ(OpenMidiOut(&second, &window, 1, clock, MIDI_OPEN_WORD), 0u);
  EXPECT_EQ(clock->outputs[0].load(), out);
  EXPECT_EQ(clock->outputs[1].load(), second);
  CloseMidiOut(&out);
  EXPECT_EQ(clock->outputs[0].load(), second);
  EXPECT_EQ(clock->outputs[1].load(), nullptr);
  StartSync(clock);
  passes(10);
  EXPECT_GT(two.sent(1).size(), 0u);
  CloseMidiOut(&second);
  installMidiDevices(&devices);
}

TEST_F(SyncClockTest, ThePeriodIsRaisedToTheTimersLowest) {
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 0), 0u);
  EXPECT_EQ(clock->period, 1u);
}

TEST_F(SyncClockTest, WithoutATimerOpenSyncFailsWith97) {
  installTimers(nullptr);
  EXPECT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 10), SYNC_TIMER_FAILED);
  installTimers(&timers);
}

// The real timer drives the pass on its own thread, while this thread
// starts, stops and closes things: ThreadSanitizer watches this one.
TEST(SyncClockRealTimer, TheRealTimerDrivesThePassesOnItsOwnThread) {
  ThreadTimers timers;
  ThreadedLoop loop;
  LoopbackDevices devices;
  devices.setRecording(true);
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  RecordingWindow window;
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 2), 0u);
  SetResolution(clock, 960);
  SetTempo(clock, 500000);
  ASSERT_EQ(OpenMidiOut(&out, &window, 0, clock, MIDI_OPEN_WORD), 0u);
  StartSync(clock);
  for (int i = 0; i < 200; ++i) {
    MidiEvent note{0, 0x90, static_cast<uint8_t>(i % 128), 100, 0, nullptr, 0, 0, 0, 0};
    MidiOut(out, &note);
    std::this_thread::sleep_for(std::chrono::microseconds(500));
  }
  EXPECT_GT(clock->now.load(), 0u);
  CloseMidiOut(&out);  // while the clock runs
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  StopSync(clock);
  CloseSync(&clock);
  loop.stop();
  EXPECT_GE(devices.sent().size(), 100u);
}

// A Stop that comes while a pass is dispatching on the timer thread waits for
// that pass, and never leaves the ring counting what it does not hold.
std::atomic<bool> passInDispatch{false};
std::atomic<bool> firstDispatchDone{false};

void holdTheFirstDispatch(MidiOutHandle*) {
  if (passInDispatch.exchange(true)) return;
  std::this_thread::sleep_for(std::chrono::milliseconds(30));
  firstDispatchDone = true;
}

TEST(SyncClockRealTimer, AStopDuringADispatchWaitsForThePassAndLeavesTheRingWhole) {
  passInDispatch = false;
  firstDispatchDone = false;
  ClockHooks = {};
  ClockHooks.sendEvent = holdTheFirstDispatch;  // before the timer's thread starts
  ThreadTimers timers;
  ManualLoop loop;
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  RecordingWindow window;
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 2), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  ASSERT_EQ(OpenMidiOut(&out, &window, 0, clock, MIDI_OPEN_WORD), 0u);
  for (int key : {60, 62}) {
    MidiEvent note{0, 0x90, static_cast<uint8_t>(key), 100, 0, nullptr, 0, 0, 0, 0};
    MidiOut(out, &note);
  }
  StartSync(clock);
  while (!passInDispatch.load()) std::this_thread::yield();
  StopSync(clock);  // the pass is inside its dispatch now
  EXPECT_TRUE(firstDispatchDone.load()) << "Stop returned while the pass was still dispatching";
  EXPECT_EQ(out->ringCount.load(), 0u);
  EXPECT_EQ(out->readIndex.load(), 0u);
  CloseSync(&clock);
  CloseMidiOut(&out);
  ClockHooks = {};
}

// A hold taken on the UI thread while a pass runs on another waits for that
// pass to end before it returns, and the clock stands from then on.
std::atomic<bool> passUnderWay{false};
std::atomic<bool> passMayEnd{false};
std::atomic<bool> passEnded{false};

void waitInsideThePass() {
  passUnderWay = true;
  while (!passMayEnd.load()) std::this_thread::yield();
  passEnded = true;
}

TEST(SyncClockThreads, AHoldWaitsForThePassUnderWayAndKeepsTheNextOnesOut) {
  passUnderWay = false;
  passMayEnd = false;
  passEnded = false;
  VirtualTimers timers;
  ManualLoop loop;
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  ClockHooks = {};
  ClockHooks.generatorTick = waitInsideThePass;
  RecordingWindow window;
  SyncClock* clock = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 10), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  StartSync(clock);
  Generating = 1;
  const auto param = reinterpret_cast<uintptr_t>(clock);
  std::thread pass([param] { syncTimer(0, 0, param, 0, 0); });
  while (!passUnderWay.load()) std::this_thread::yield();

  std::atomic<bool> holdReturned{false};
  std::atomic<bool> passEndedFirst{false};
  std::thread holder([&] {
    HoldClockPasses(clock);
    passEndedFirst = passEnded.load();
    holdReturned = true;
  });
  while (clock->held.load() == 0) std::this_thread::yield();
  // A hold that did not wait would return at once; give it a bounded while to show it.
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
  while (!holdReturned.load() && std::chrono::steady_clock::now() < until) std::this_thread::yield();
  EXPECT_FALSE(holdReturned.load()) << "the hold returned while a pass was still under way";
  passMayEnd = true;
  pass.join();
  holder.join();
  EXPECT_TRUE(passEndedFirst.load());

  const uint32_t heldAt = clock->now;
  std::thread later([param] { syncTimer(0, 0, param, 0, 0); });
  later.join();
  EXPECT_EQ(clock->now.load(), heldAt) << "a pass that comes during the hold does nothing";
  ReleaseClockPasses(clock);
  Generating = 0;
  CloseSync(&clock);
  ClockHooks = {};
}

}  // namespace
