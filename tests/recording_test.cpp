#include "song/recording.h"

#include <gtest/gtest.h>

#include <map>
#include <thread>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/generator_tick.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/installed_seams.h"
#include "platform/view_registry.h"
#include "support/song_bench.h"

using namespace platform;

namespace {

// The song bench with the input opened on the loopback as the Control Bar
// opens it, started, and recording's words at their start values.
class Recorder : public SongBench {
 protected:
  void SetUp() override {
    SongBench::SetUp();
    SetTempo(clock, 500000);
    ASSERT_EQ(OpenMidiIn(&in, &controlBar, 0, clock, MIDI_OPEN_WORD), 0u);
    ASSERT_EQ(StartMidiIn(in), 0u);
    TheMidiIn = in;
    for (uint32_t id : ButtonIds) SetControlBarControl(id, &buttons[id]);
    SoundingInput.fill(0);
    QuantizeRecord = 0;
    SetRecordResolution(RecordResolutionStart);
    QuantizeFilters = 0;
    QuantizedClock = RawClock = 0;
    TakeCount = 0;
    RecordTrack = 0;
  }

  void TearDown() override {
    for (uint32_t id : ButtonIds) SetControlBarControl(id, nullptr);
    TheMidiIn = nullptr;
    CloseMidiIn(&in);
    ClockHooks = {};
    InstallFeedHooks();
    SongBench::TearDown();
  }

  // Plays a message into the input and lets the Control Bar drain it.
  void play(uint32_t word) {
    ASSERT_TRUE(devices.inject(word));
    loop.pump();
  }

  // Runs n passes, delivering the notices of each.
  void run(int n) {
    for (int i = 0; i < n; ++i) {
      timers.step();
      loop.pump();
    }
  }

  // Runs passes until the clock stands at or past tick t.
  void runTo(uint32_t t) {
    for (int i = 0; i < 100000 && clock->now < t; ++i) run(1);
  }

  std::vector<MidiEvent> take() const { return {TakeBuffer.begin(), TakeBuffer.begin() + TakeCount}; }

  static std::vector<uint32_t> times(const std::vector<MidiEvent>& events) {
    std::vector<uint32_t> t;
    for (const MidiEvent& e : events) t.push_back(e.time);
    return t;
  }

  static std::vector<uint32_t> messages(const std::vector<MidiEvent>& events) {
    std::vector<uint32_t> m;
    for (const MidiEvent& e : events) m.push_back(PackedMessage(e));
    return m;
  }

  std::vector<MidiEvent> trackEvents(uint32_t track) const {
    const TrackRecord& t = Tracks[track];
    return {t.events, t.events + t.count};
  }

  // Puts events straight into the input ring, as the driver callback does.
  void putInRing(uint32_t time, uint32_t word) { WriteInputSlot(in, time, word); }

  // The generator at its start-up set-up, with the Control Panel's sums made
  // as at start-up, installed in the clock's pass.
  static void startGenerator() {
    InstallGeneratorHooks();
    GeneratorStartUp();
    RefreshControlPanel(nullptr);
    CommitPanelFromBank();
  }

  static constexpr std::array<uint32_t, 6> ButtonIds = {101, 104, 107, 108, 109, 200};
  MidiInHandle* in = nullptr;
  std::map<uint32_t, RecordingButton> buttons;
};

// ---- quantize on record ----

TEST_F(Recorder, RawDeltas14And16And15GiveZeroThirtyAndThirtyAtTheLimitOfFifteenTicks) {
  EXPECT_EQ(QuantizedDelta(14), 0u);
  EXPECT_EQ(QuantizedDelta(16), 30u);
  EXPECT_EQ(QuantizedDelta(15), 30u);
  EXPECT_EQ(QuantizedClock, 60u);
  EXPECT_EQ(RawClock, 45u);
}

TEST_F(Recorder, TheRunningErrorDoesNotAccumulate) {
  for (int i = 0; i < 100; ++i) QuantizedDelta(10);
  EXPECT_EQ(RawClock, 1000u);
  EXPECT_LE(QuantizedClock > RawClock ? QuantizedClock - RawClock : RawClock - QuantizedClock, 15u);
  EXPECT_EQ(QuantizedClock % 30, 0u);
}

TEST_F(Recorder, ARecordResolutionOf0IsRefusedAndTheOldOneStays) {
  EXPECT_TRUE(SetRecordResolution(48));
  EXPECT_EQ(RecordRounding, 24u);
  EXPECT_FALSE(SetRecordResolution(0));
  EXPECT_EQ(RecordResolution, 48u);
  EXPECT_EQ(RecordRounding, 24u);
}

TEST_F(Recorder, WithNoteOffCheckedNoteOffsKeepRawDeltasWhileNoteOnsAreRounded) {
  QuantizeRecord = 1;
  SetQuantizeFilters(GetQuantizeFilters() | FILTER_NOTE_OFF);
  putInRing(14, 0x403C90);
  putInRing(16, 0x403C80);
  putInRing(16, 0x403E90);
  DrainInput(&controlBar);
  EXPECT_EQ(times(take()), (std::vector<uint32_t>{0, 16, 30}));
  EXPECT_EQ(RawClock, 30u) << "the note-off's delta is not entered in the clocks";
}

TEST_F(Recorder, TheQuantizeFiltersLeaveTheOtherBitsAlone) {
  SetQuantizeFilters(0xFFFF0000u | FILTER_PITCH_BEND);
  EXPECT_EQ(GetQuantizeFilters(), 0xFFFF0040u);
}

// ---- doubled note-ons and held keys ----

TEST_F(Recorder, ASecondNoteOnOfAHeldKeyYieldsAVelocityZeroNoteOnAndTheNewNoteOnAtDelta0) {
  putInRing(10, 0x403C91);
  putInRing(25, 0x503C91);
  DrainInput(&controlBar);
  EXPECT_EQ(messages(take()), (std::vector<uint32_t>{0x403C91, 0x003C91, 0x503C91}));
  EXPECT_EQ(times(take()), (std::vector<uint32_t>{10, 25, 0}));
}

TEST_F(Recorder, WithQuantizeTheEndOfADoubledKeyTakesTheQuantizedArrivalAndTheNoteOnIsQuantizedFrom0) {
  QuantizeRecord = 1;
  putInRing(31, 0x403C90);
  putInRing(44, 0x503C90);
  DrainInput(&controlBar);
  // 31 lands on 30; the arrival at 75 lies halfway and rounds up to 90.
  EXPECT_EQ(times(take()), (std::vector<uint32_t>{30, 60, 0}));
  EXPECT_EQ(RawClock, 75u);
  EXPECT_EQ(QuantizedClock, 90u);
}

TEST_F(Recorder, AKeyHeldAtStopOnOneChannelGetsItsNoteOffAtTheStopTime) {
  putInRing(0, 0x403C92);
  in->lastEventTime = 100;
  DrainInput(&controlBar);
  clock->now = 160;
  CloseTakeNotes();
  const auto events = take();
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(PackedMessage(events[1]), 0x003C92u);
  EXPECT_EQ(events[1].time, 60u);
  EXPECT_EQ(SoundingInput[0x3C], 0u);
}

TEST_F(Recorder, AKeyHeldOnTwoChannelsIsClosedOnlyOnTheLowestAndKeepingTheTakeClosesTheOther) {
  putInRing(0, 0x403C93);
  putInRing(0, 0x403C95);
  DrainInput(&controlBar);
  clock->now = 50;
  CloseTakeNotes();
  const auto events = take();
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(PackedMessage(events[2]), 0x003C93u);
  KeepTake();
  const auto kept = trackEvents(0);
  ASSERT_EQ(kept.size(), 4u) << "InstallTrack closes the key on the other channel";
  EXPECT_EQ(PackedMessage(kept[3]), 0x003C95u);
}

TEST_F(Recorder, TwoHeldKeysGetNoteOffsThatEachCarryTheSameDelta) {
  putInRing(0, 0x403C90);
  putInRing(0, 0x403E90);
  DrainInput(&controlBar);
  clock->now = 40;
  CloseTakeNotes();
  EXPECT_EQ(times(take()), (std::vector<uint32_t>{0, 0, 40, 40}));
}

// ---- the take's limit ----

TEST_F(Recorder, Event32768IsStoredThenTheBoxComesAndStopIsPosted) {
  for (uint32_t i = 0; i < TakeCapacity - 1; ++i) TakeBuffer[i] = event(0, 0xB0, 1, 0);
  TakeCount = TakeCapacity - 1;
  putInRing(5, 0x7F01B0);
  putInRing(5, 0x7E01B0);  // arrives after the box: dropped
  DrainInput(&controlBar);
  EXPECT_EQ(TakeCount, TakeCapacity);
  EXPECT_EQ(PackedMessage(TakeBuffer[TakeCapacity - 1]), 0x7F01B0u);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Can't continue.Input buffer full.");
  EXPECT_EQ(prompts.shown()[0].title, "Velmora");
  EXPECT_EQ(prompts.shown()[0].style, MB_ICONSTOP);
  const auto pending = loop.pending();
  ASSERT_EQ(pending.size(), 1u);
  EXPECT_EQ(pending[0].msg, WM_COMMAND);
  EXPECT_EQ(pending[0].param1, CMD_STOP);
  EXPECT_EQ(MidiIn(in), nullptr) << "the entry taken after the limit is lost";
}

TEST_F(Recorder, ADoubledNoteOnAsEntry32767FillsTheTakeWritesItsNoteOnBehindAndShowsOneBox) {
  for (uint32_t i = 0; i < TakeCapacity - 1; ++i) TakeBuffer[i] = event(0, 0xB0, 1, 0);
  TakeCount = TakeCapacity - 1;
  SoundingInput[0x3C] = 1;
  putInRing(3, 0x403C90);
  DrainInput(&controlBar);
  EXPECT_EQ(TakeCount, TakeCapacity + 1);
  EXPECT_EQ(PackedMessage(TakeBuffer[TakeCapacity - 1]), 0x003C90u);
  EXPECT_EQ(PackedMessage(TakeBuffer[TakeCapacity]), 0x403C90u);
  EXPECT_EQ(prompts.shown().size(), 1u);
  clock->now = 10;
  for (uint32_t key = 0; key < 128; ++key) SoundingInput[key] = 0xFFFF;
  CloseTakeNotes();
  EXPECT_EQ(TakeCount, TakeSlots) << "the note-offs of Stop still have room";
}

TEST_F(Recorder, ATakeFullDuringRecordingEndsLikeStopAndOffersTheTake) {
  TransportCommand(CMD_RECORD);
  for (uint32_t i = 0; i < TakeCapacity - 1; ++i) TakeBuffer[i] = event(0, 0xB0, 1, 0);
  TakeCount = TakeCapacity - 1;
  prompts.planAnswer(IDOK);
  prompts.planAnswer(IDNO);
  play(0x7F01B0);  // the posted Stop runs in the same pump
  EXPECT_EQ(Recording.load(), 0u);
  ASSERT_EQ(prompts.shown().size(), 2u);
  EXPECT_EQ(prompts.shown()[1].text, "Keep take?");
}

// ---- Record, Stop and Keep take ----

TEST_F(Recorder, WithoutTheRecordingMetronomeThereIsNoCountInAndCapturingIsOnAtOnce) {
  TransportCommand(CMD_RECORD);
  EXPECT_EQ(Recording.load(), 1u);
  EXPECT_EQ(Capturing.load(), 1u);
  EXPECT_EQ(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_FALSE(bar.enabled[101]);
  EXPECT_FALSE(bar.enabled[104]);
  EXPECT_FALSE(bar.enabled[107]);
  EXPECT_FALSE(bar.enabled[108]);
  EXPECT_GT(frame.updates, 0);
}

TEST_F(Recorder, NotesPlayedWhileRecordingAreKeptAsTheRecordTrackAtTheirSongTicks) {
  SongPosition = 240;
  TransportCommand(CMD_RECORD);
  runTo(300);
  play(0x403C90);
  const uint32_t on = clock->now;
  runTo(400);
  play(0x003C90);
  const uint32_t off = clock->now;
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Keep take?");
  EXPECT_EQ(prompts.shown()[0].style, MB_YESNO | MB_ICONQUESTION);
  const auto kept = trackEvents(0);
  ASSERT_EQ(kept.size(), 2u);
  // The first delta counts from the input's start (0), so the take sits at song time.
  EXPECT_EQ(kept[0].time, on);
  EXPECT_EQ(kept[1].time, off);
  EXPECT_EQ(kept[0].link, &Tracks[0].events[1]);
  EXPECT_EQ(SongDirty, 1u);
  EXPECT_EQ(Recording.load(), 0u);
  EXPECT_EQ(Capturing.load(), 0u);
  EXPECT_TRUE(bar.enabled[104]);
  EXPECT_EQ(buttons[104].states.back(), 0);
}

TEST_F(Recorder, NoToKeepTakeLeavesTheTrackAsItWas) {
  install(0, {event(0, 0x90, 50, 90), event(60, 0x90, 50, 0)});
  TransportCommand(CMD_RECORD);
  run(10);
  play(0x403C90);
  prompts.planAnswer(IDNO);
  TransportCommand(CMD_STOP);
  const auto events = trackEvents(0);
  ASSERT_EQ(events.size(), 2u);
  EXPECT_EQ(events[0].value1, 50);
  EXPECT_EQ(TakeCount, 2u) << "the take stays until the next Record";
}

TEST_F(Recorder, TheRecordTrackIsSilentWhileCapturingAndTheSongPlaysAlong) {
  install(0, {event(0, 0x90, 50, 90), event(30, 0x90, 50, 0)});
  install(1, {event(0, 0x91, 52, 90), event(30, 0x91, 52, 0)});
  TransportCommand(CMD_RECORD);
  run(20);
  const auto words = sentMessages();
  EXPECT_NE(std::find(words.begin(), words.end(), 0x5A3491u), words.end()) << "track 1 plays along";
  EXPECT_EQ(std::find(words.begin(), words.end(), 0x5A3290u), words.end()) << "the record track is left out";
  TransportCommand(CMD_STOP);
}

TEST_F(Recorder, AnEmptyTakeEndsWithoutTheQuestionWithoutResetAndWithoutTheImmediateEvents) {
  TransportCommand(CMD_RECORD);
  run(5);
  devices.clearSent();
  const uint32_t resets = devices.resetCount();
  TransportCommand(CMD_STOP);
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(devices.resetCount(), resets + 1u) << "StopSync's own reset of the output, and no second";
  EXPECT_TRUE(sentMessages().empty());
}

TEST_F(Recorder, ATakeOfOnlyNoteOffsIsOfferedAndOnYesTheTrackIsDeletedWithNothingInItsPlace) {
  install(0, {event(0, 0x90, 50, 90), event(60, 0x90, 50, 0)});
  TransportCommand(CMD_RECORD);
  run(5);
  play(0x003C80);
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(Tracks[0].count, 0u);
  EXPECT_EQ(Tracks[0].events, nullptr);
}

TEST_F(Recorder, AKeyHeldAtStopIsClosedAtTheStopTimeInTheKeptTrack) {
  TransportCommand(CMD_RECORD);
  runTo(100);
  play(0x403C90);
  runTo(200);
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  const auto kept = trackEvents(0);
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[1].value2, 0);
  EXPECT_EQ(kept[1].time, SongPosition.load());
}

TEST_F(Recorder, WithTheRecordingMetronomeTheCountInDropsWhatIsPlayedAndTimesTheTakeFromTheStart) {
  out->flags |= METRONOME_RECORD;
  clock->beatsPerBar = 4;
  clock->countInBars = 1;
  // The loopback cable brings the clicks back to the input: they are program
  // changes here, which the input blocks.
  clock->firstBeatMsg = clock->otherBeatsMsg = 0x01C9;
  SetMidiInFilters(in, GetMidiInFilters(in) | FILTER_PROGRAM_CHANGE);
  SongPosition = 480;
  TransportCommand(CMD_RECORD);
  EXPECT_EQ(Capturing.load(), 0u);
  EXPECT_NE(clock->flags & SYNC_COUNT_IN, 0u);
  EXPECT_EQ(buttons[109].states.size(), 0u) << "posted, not yet delivered";
  loop.pump();
  EXPECT_EQ(buttons[109].states, std::vector<int>{1});
  run(20);
  putInRing(0, 0x403C90);  // played during the count-in
  EXPECT_EQ(Capturing.load(), 0u);
  while ((clock->flags & SYNC_COUNT_IN) != 0) run(1);
  EXPECT_EQ(Capturing.load(), 1u);
  EXPECT_EQ(clock->now.load(), 480u);
  EXPECT_EQ(MidiIn(in), nullptr) << "the count-in's end emptied the ring";
  runTo(500);
  play(0x403E90);
  const uint32_t at = clock->now;
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  const auto kept = trackEvents(0);
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].value1, 0x3E);
  EXPECT_EQ(kept[0].time, at);
}

TEST_F(Recorder, RewindStopsATakeButNotACountIn) {
  out->flags |= METRONOME_RECORD;
  clock->beatsPerBar = 4;
  clock->countInBars = 1;
  TransportCommand(CMD_RECORD);
  TransportCommand(CMD_REWIND);
  EXPECT_EQ(Recording.load(), 1u) << "the count-in goes on";
  while ((clock->flags & SYNC_COUNT_IN) != 0) run(1);
  TransportCommand(CMD_REWIND);
  EXPECT_EQ(Recording.load(), 0u);
}

TEST_F(Recorder, ARecordWithLinkOnStartsTheGeneratorAndItsNotesGoIntoTheTake) {
  startGenerator();
  Linked = 1;
  TransportCommand(CMD_RECORD);
  EXPECT_EQ(Generating.load(), 1u);
  run(100);
  EXPECT_GT(TakeCount, 0u);
  Generating = 0;
  Draining = 0;
  prompts.planAnswer(IDNO);
  TransportCommand(CMD_STOP);
}

// The generator's take holds what the generator played, note for note, at the
// ticks at which it played them.
TEST_F(Recorder, TheGeneratorsTakeHoldsTheNotesItPlayedAtTheTicksItPlayedThem) {
  startGenerator();
  // The loopback cable's copies of the played notes are blocked at the input;
  // the generator's capture does not pass through the input's filter.
  SetMidiInFilters(in, GetMidiInFilters(in) | 0x7F);
  TransportCommand(CMD_RECORD);
  TransportCommand(CMD_GENERATE);
  std::vector<std::pair<uint32_t, uint32_t>> played;  // tick, message
  std::size_t seen = 0;
  for (int i = 0; i < 400; ++i) {
    run(1);
    const auto words = sentMessages();
    for (; seen < words.size(); ++seen) played.emplace_back(clock->now.load(), words[seen]);
  }
  GeneratorToggle();
  for (int i = 0; i < 2000 && Draining == 1; ++i) {
    run(1);
    const auto words = sentMessages();
    for (; seen < words.size(); ++seen) played.emplace_back(clock->now.load(), words[seen]);
  }
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  std::vector<std::pair<uint32_t, uint32_t>> kept;
  for (const MidiEvent& e : trackEvents(0)) kept.emplace_back(e.time, PackedMessage(e));
  // The notes struck: the ends may differ, as the track drops note-offs that end nothing.
  auto strikesOnly = [](auto& notes) {
    std::erase_if(notes, [](const auto& n) { return (n.second & 0xF0) != 0x90 || (n.second >> 16) == 0; });
    std::sort(notes.begin(), notes.end());
  };
  strikesOnly(played);
  strikesOnly(kept);
  ASSERT_GT(kept.size(), 10u);
  EXPECT_EQ(kept, played);
  const auto events = trackEvents(0);
  EXPECT_EQ(std::count_if(events.begin(), events.end(), IsNoteOn),
            std::count_if(events.begin(), events.end(), IsNoteOff))
      << "every note of the kept take ends";
}

TEST_F(Recorder, CapturingWithNoInputBoundToTheClockTakesNothing) {
  clock->midiIn = nullptr;
  Capturing = 1;
  CaptureGeneratorEvent(event(0, 0x90, 60, 100));
  EXPECT_EQ(MidiIn(in), nullptr);
  EXPECT_EQ(TakeCount, 0u);
  clock->midiIn = in;
}

TEST_F(Recorder, AKeyByteOf255FromAFailedNoteDrawIsTakenButNotFollowed) {
  putInRing(0, 0x40FF90);
  putInRing(0, 0x40FF90);
  DrainInput(&controlBar);
  EXPECT_EQ(TakeCount, 2u) << "no doubled key to split";
  for (uint32_t held : SoundingInput) EXPECT_EQ(held, 0u);
}

TEST_F(Recorder, ABoardPassThatBuildsNoMessageCapturesNothing) {
  startGenerator();
  SetMidiInFilters(in, GetMidiInFilters(in) | 0x7F);  // the loopback cable's copies stay out
  TransportCommand(CMD_RECORD);
  TransportCommand(CMD_GENERATE);
  LiveBank.boardFlags = 1;  // a pitch board, which the mask then leaves out
  PitchBoardMask = 0;
  run(200);
  ASSERT_GT(TakeCount, 0u);
  for (const MidiEvent& e : take()) EXPECT_EQ(e.status & 0xF0, 0x90) << "only the chords' notes";
  Generating = 0;
  Draining = 0;
  prompts.planAnswer(IDNO);
  TransportCommand(CMD_STOP);
}

// ---- the clock source, thru, quantize, metronome and link buttons ----

TEST_F(Recorder, MidiSyncOpensTheClockInMidiModeAndLetsTheTimingMessagesIn) {
  TransportCommand(CMD_MIDI_SYNC);
  EXPECT_EQ(clock->mode, SYNC_MIDI);
  EXPECT_EQ(clock->period, 10u) << "the period is kept";
  EXPECT_EQ(GetMidiInFilters(in) & FILTER_MIDI_SYNC, 0u);
  EXPECT_TRUE(bar.enabled[108]);
  EXPECT_FALSE(bar.enabled[107]);
  EXPECT_TRUE(frame.checked[CMD_MENU_MIDI_SYNC]);
  EXPECT_FALSE(frame.checked[CMD_MENU_INTERNAL_CLOCK]);
  loop.pump();
  EXPECT_EQ(buttons[108].states, std::vector<int>{0});
  EXPECT_TRUE(buttons[107].states.empty()) << "the button pressed is already down";
  TransportCommand(CMD_INTERNAL_CLOCK);
  EXPECT_EQ(clock->mode, SYNC_INTERNAL);
  EXPECT_EQ(GetMidiInFilters(in) & FILTER_MIDI_SYNC, FILTER_MIDI_SYNC);
  EXPECT_TRUE(frame.checked[CMD_MENU_INTERNAL_CLOCK]);
}

TEST_F(Recorder, TheMenusClockEntriesAlsoPressTheChosenButton) {
  TransportCommand(CMD_MENU_MIDI_SYNC);
  loop.pump();
  EXPECT_EQ(clock->mode, SYNC_MIDI);
  EXPECT_EQ(buttons[107].states, std::vector<int>{1});
  EXPECT_EQ(buttons[108].states, std::vector<int>{0});
  TransportCommand(CMD_MENU_INTERNAL_CLOCK);
  loop.pump();
  EXPECT_EQ(buttons[108].states, (std::vector<int>{0, 1}));
}

TEST_F(Recorder, InMidiSyncRecordWaitsForStartAndTheTakeFollowsTheIncomingClock) {
  TransportCommand(CMD_MIDI_SYNC);
  TransportCommand(CMD_RECORD);
  run(20);
  EXPECT_EQ(clock->now.load(), 0u) << "time begins with the first Start";
  play(0xFA);
  for (int i = 0; i < 24; ++i) play(0xF8);  // one beat
  play(0x403C90);
  for (int i = 0; i < 24; ++i) play(0xF8);
  play(0x003C90);
  play(0xFC);
  prompts.planAnswer(IDYES);
  TransportCommand(CMD_STOP);
  const auto kept = trackEvents(0);
  ASSERT_EQ(kept.size(), 2u);
  EXPECT_EQ(kept[0].time, 120u);
  EXPECT_EQ(kept[1].time, 240u);
}

TEST_F(Recorder, ThruTogglesTheInputsEchoAndItsCheckMark) {
  TransportCommand(CMD_MIDI_THRU);
  EXPECT_NE(in->flags & MIDI_THRU, 0u);
  EXPECT_TRUE(frame.checked[CMD_MIDI_THRU]);
  play(0x403C90);
  EXPECT_EQ(sentMessages(), std::vector<uint32_t>{0x403C90u});
  TransportCommand(CMD_MIDI_THRU);
  EXPECT_EQ(in->flags & MIDI_THRU, 0u);
  EXPECT_FALSE(frame.checked[CMD_MIDI_THRU]);
}

TEST_F(Recorder, QuantizeRecordLinkAndMetronomeToggle) {
  TransportCommand(CMD_QUANTIZE_RECORD);
  EXPECT_EQ(QuantizeRecord, 1u);
  TransportCommand(CMD_QUANTIZE_RECORD);
  EXPECT_EQ(QuantizeRecord, 0u);
  TransportCommand(CMD_LINK);
  EXPECT_EQ(Linked.load(), 1u);
  EXPECT_TRUE(frame.checked[CMD_MENU_LINK]);
  clock->firstBeatMsg = 0x642A99;
  clock->otherBeatsMsg = 0x482A99;
  TransportCommand(CMD_METRONOME);
  EXPECT_NE(out->flags & METRONOME_ON, 0u);
  EXPECT_TRUE(sentMessages().empty());
  TransportCommand(CMD_METRONOME);
  EXPECT_EQ(out->flags & METRONOME_ON, 0u);
  EXPECT_EQ(sentMessages(), (std::vector<uint32_t>{0x2A99, 0x2A99})) << "both clicks end";
}

TEST_F(Recorder, PanicResetsNotesAndControllersUnderTheWaitCursor) {
  TransportCommand(CMD_PANIC);
  EXPECT_EQ(sentMessages().size(), 128u);
  EXPECT_EQ(prompts.waitCursorShows(), 1);
  EXPECT_EQ(prompts.waitDepth(), 0);
}

// ---- the capture's send from another thread ----

// The timer thread waits in its send until the UI thread drains; closing the
// clock while it waits releases it.
TEST(CaptureThreads, ASendThatWaitsIsReleasedWhenTheClockCloses) {
  ThreadTimers timers;
  ManualLoop loop;
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  RecordingWindow window;
  SyncClock* clock = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 10), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  MidiInHandle* input = nullptr;
  ASSERT_EQ(OpenMidiIn(&input, &window, 0, clock, MIDI_OPEN_WORD), 0u);
  TheClock = clock;
  static std::atomic<int> captures;
  captures = 0;
  ClockHooks = {};
  ClockHooks.generatorTick = [] {
    ++captures;
    CaptureGeneratorEvent(MidiEvent{0, 0x90, 60, 100, 0, nullptr, 0, 0, 0, 0});
  };
  Capturing = 1;
  Generating.publish(1);
  ReStartSync(clock);
  while (loop.pending().empty()) std::this_thread::yield();  // the timer thread waits in its send
  EXPECT_EQ(captures.load(), 1);
  CloseSync(&clock);  // must not hang
  EXPECT_EQ(clock, nullptr);
  loop.pump();
  Generating = 0;
  Capturing = 0;
  TheClock = nullptr;
  ClockHooks = {};
  CloseMidiIn(&input);
}

// A drain on a UI thread of its own answers the timer thread's sends.
TEST(CaptureThreads, EveryCapturedMessageIsInTheTakeBeforeTheNextPass) {
  ThreadTimers timers;
  ThreadedLoop loop;
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  class Drainer final : public MessageTarget {
   public:
    intptr_t handleMessage(uint32_t msg, uintptr_t, uintptr_t) override {
      if (msg == MIM_DATA) DrainInput(nullptr);
      return 0;
    }
  } drainer;
  SyncClock* clock = nullptr;
  ASSERT_EQ(OpenSync(&clock, &drainer, SYNC_INTERNAL, 1), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  MidiInHandle* input = nullptr;
  ASSERT_EQ(OpenMidiIn(&input, &drainer, 0, clock, MIDI_OPEN_WORD), 0u);
  TheClock = clock;
  TheMidiIn = input;
  TakeCount = 0;
  SoundingInput.fill(0);
  QuantizeRecord = 0;
  static std::atomic<uint32_t> sent;
  static std::atomic<bool> inTakeBeforeNext;
  sent = 0;
  inTakeBeforeNext = true;
  ClockHooks = {};
  ClockHooks.generatorTick = [] {
    if (TakeCount != sent.load()) inTakeBeforeNext = false;
    if (sent.load() >= 200) return;
    const auto key = static_cast<uint8_t>(sent.load() % 128);
    CaptureGeneratorEvent(MidiEvent{0, 0xB0, key, 1, 0, nullptr, 0, 0, 0, 0});
    ++sent;
  };
  Capturing = 1;
  Generating.publish(1);
  ReStartSync(clock);
  while (sent.load() < 200) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  Generating = 0;
  CloseSync(&clock);
  loop.waitIdle();
  EXPECT_EQ(TakeCount, 200u);
  EXPECT_TRUE(inTakeBeforeNext.load());
  Capturing = 0;
  TheClock = nullptr;
  TheMidiIn = nullptr;
  ClockHooks = {};
  loop.stop();
  CloseMidiIn(&input);
}

}  // namespace
