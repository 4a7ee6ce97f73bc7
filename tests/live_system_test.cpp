#include "live/live_system.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "generator/bank.h"
#include "live/settings_dialogs.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "song/note_linking.h"
#include "song/recording.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "support/live_bench.h"

using platform::SettingsLevel;
using platform::SettingsValue;

namespace {

using LiveSystem = LiveBench;

uint32_t click(uint32_t channel, uint32_t key, uint32_t velocity) {
  return (0x90 + channel - 1) | key << 8 | velocity << 16;
}

TEST_F(LiveSystem, AFirstRunStartsWithTheDefaults) {
  start();
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(store.valueCount(SettingsLevel::User), 20u);
  EXPECT_EQ(store.valueCount(SettingsLevel::Machine), 20u);
  ASSERT_NE(TheClock, nullptr);
  EXPECT_EQ(TheClock->mode, SYNC_INTERNAL);
  EXPECT_EQ(TheClock->period, 10u);
  EXPECT_EQ(TheClock->window, &controlBar);
  EXPECT_EQ(ControlBarWindow, &controlBar);
  ASSERT_NE(TheMidiIn, nullptr);
  ASSERT_NE(TheMidiOut, nullptr);
  EXPECT_EQ(TheMidiIn->deviceId, 0u);
  EXPECT_EQ(TheMidiOut->deviceId, 0u);
  EXPECT_EQ(MidiInDevice, 0u);
  EXPECT_EQ(MidiOutDevice, 0u);
  EXPECT_TRUE(devices.loopback.inputStarted(0));
  expectMeter(1, 4);
  EXPECT_EQ(RecordTrack, 0);
  EXPECT_EQ(SongPosition.load(), 0u);
  EXPECT_EQ(QuantizeRecord, 0u);
  EXPECT_EQ(RecordResolution, 30u);
  EXPECT_EQ(RecordRounding, 15u);
  EXPECT_EQ(QuantizeFilters, 0u);
  EXPECT_EQ(FunctionsFilters.load(), 0xFFFFFFFFu);
  EXPECT_EQ(LiveBank.noteMax.load(), 127) << "the live Bank has its defaults";
}

TEST_F(LiveSystem, TheSongStartsEmptyAt120TicksAndSixtyBeatsAMinute) {
  start();
  EXPECT_EQ(SongResolution.load(), 120u);
  EXPECT_EQ(GetResolution(TheClock), 120u);
  EXPECT_EQ(GetTempo(TheClock), 1000000u);
  EXPECT_EQ(TempoFraction, 0.0);
  EXPECT_NEAR(bar.tempo, 60.00, 0.005);
  EXPECT_NEAR(bar.upDownTempo, 60, 0.005) << "the up-down control moves too";
  ASSERT_EQ(ActiveTrackCount, 1);
  EXPECT_EQ(ActiveTracks[0], TempoTrack);
  ASSERT_EQ(Tracks[TempoTrack].count, 1u);
  const MidiEvent& tempo = Tracks[TempoTrack].events[0];
  EXPECT_EQ(tempo.time, 0u);
  EXPECT_EQ(tempo.status, 0);
  EXPECT_EQ(EventTempo(tempo), 1000000u);
  EXPECT_EQ(SongReadHandle, nullptr);
  for (uint32_t t = 0; t <= SongTrackCount; ++t) {
    EXPECT_EQ(Tracks[t].channel, 255) << t;
    EXPECT_EQ(Tracks[t].volume, 255) << t;
  }
}

TEST_F(LiveSystem, TheClockStandsAtZero) {
  start();
  EXPECT_EQ(TheClock->now.load(), 0u);
  EXPECT_EQ(TheClock->remainder.load(), 0u);
  EXPECT_EQ(TheClock->beatTicks.load(), 0u);
  EXPECT_EQ(TheClock->beat.load(), 0);
  EXPECT_EQ(TheClock->flags & SYNC_RUNNING, 0u);
}

TEST_F(LiveSystem, TheMetronomeStartsFromTheDefaults) {
  start();
  EXPECT_EQ(TheClock->firstBeatMsg.load(), click(9, 42, 100));
  EXPECT_EQ(TheClock->otherBeatsMsg.load(), click(9, 42, 72));
  EXPECT_EQ(TheClock->metronomeMsg.load(), TheClock->firstBeatMsg.load());
  EXPECT_EQ(TheClock->noteDivisor.load(), 2);
  EXPECT_EQ(TheClock->countInBars.load(), 1u);
  EXPECT_NE(TheMidiOut->flags & METRONOME_RECORD, 0u);
  EXPECT_EQ(TheMidiOut->flags & METRONOME_PLAY, 0u);
  EXPECT_NE(TheMidiIn->flags & MIDI_THRU, 0u);
  EXPECT_EQ(CountInText, "1");
  EXPECT_EQ(ClickLengthText, "2");
  EXPECT_EQ(FirstBeatChannelText, "9");
  EXPECT_EQ(FirstBeatKeyText, "42");
  EXPECT_EQ(FirstBeatVelocityText, "100");
  EXPECT_EQ(OtherBeatsVelocityText, "72");
}

TEST_F(LiveSystem, TheClockMenuEntryAndThruAreCheckedAndTheClockButtonIsDownAndDisabled) {
  start();
  EXPECT_TRUE(frame.checked[CMD_MENU_INTERNAL_CLOCK]);
  EXPECT_TRUE(frame.checked[CMD_MIDI_THRU]);
  EXPECT_EQ(clockButton.states, std::vector<int>{1});
  ASSERT_TRUE(bar.enabled.contains(CMD_INTERNAL_CLOCK));
  EXPECT_FALSE(bar.enabled[CMD_INTERNAL_CLOCK]);
}

TEST_F(LiveSystem, TheFlagsFollowTheSettingsAndAnyNonZeroValueIsOn) {
  storeUser("Metronome record", SettingsValue::word(0));
  storeUser("Metronome play", SettingsValue::word(5));
  storeUser("Midi Thru", SettingsValue::word(0));
  start();
  EXPECT_EQ(TheMidiOut->flags & METRONOME_RECORD, 0u);
  EXPECT_NE(TheMidiOut->flags & METRONOME_PLAY, 0u);
  EXPECT_EQ(TheMidiIn->flags & MIDI_THRU, 0u);
  EXPECT_FALSE(frame.checked[CMD_MIDI_THRU]);
}

TEST_F(LiveSystem, AMetronomeCountOf17StartsAs1AndIsSavedBackAs1) {
  storeUser("Metronome count", SettingsValue::word(17));
  start();
  EXPECT_EQ(TheClock->countInBars.load(), 1u);
  EXPECT_EQ(CountInText, "1");
  stop();
  EXPECT_EQ(user("Metronome count"), SettingsValue::word(1));
}

TEST_F(LiveSystem, MetronomeValuesOutOfRangeTakeTheirFirstRunValues) {
  storeUser("Key first beat", SettingsValue::byte(128));
  storeUser("Velocity first beat", SettingsValue::byte(200));
  storeUser("Channel first beat", SettingsValue::byte(0));
  storeUser("Key other beats", SettingsValue::byte(127));
  storeUser("Velocity other beats", SettingsValue::byte(128));
  storeUser("Channel other beats", SettingsValue::byte(17));
  storeUser("Metronome note Duration", SettingsValue::byte(25));
  start();
  EXPECT_EQ(TheClock->firstBeatMsg.load(), click(9, 42, 100));
  EXPECT_EQ(TheClock->otherBeatsMsg.load(), click(9, 127, 72));
  EXPECT_EQ(TheClock->noteDivisor.load(), 2);
}

TEST_F(LiveSystem, AClickLengthOfZeroBecomesTwoAnd24IsKept) {
  storeUser("Metronome note Duration", SettingsValue::byte(0));
  start();
  EXPECT_EQ(TheClock->noteDivisor.load(), 2);
  stop();
  storeUser("Metronome note Duration", SettingsValue::byte(24));
  start();
  EXPECT_EQ(TheClock->noteDivisor.load(), 24);
}

TEST_F(LiveSystem, TheMetronomeSettingsMakeTheClicks) {
  storeUser("Key first beat", SettingsValue::byte(76));
  storeUser("Velocity first beat", SettingsValue::byte(127));
  storeUser("Channel first beat", SettingsValue::byte(16));
  storeUser("Key other beats", SettingsValue::byte(77));
  storeUser("Velocity other beats", SettingsValue::byte(0));
  storeUser("Channel other beats", SettingsValue::byte(1));
  storeUser("Metronome count", SettingsValue::word(0));
  start();
  EXPECT_EQ(TheClock->firstBeatMsg.load(), click(16, 76, 127));
  EXPECT_EQ(TheClock->otherBeatsMsg.load(), click(1, 77, 0));
  EXPECT_EQ(TheClock->countInBars.load(), 0u);
  EXPECT_EQ(FirstBeatChannelText, "16");
}

TEST_F(LiveSystem, ANumeratorOf0AndADenominatorOf12BecomeFourAndAreShown) {
  storeUser("Numerator", SettingsValue::word(0));
  storeUser("Denominator", SettingsValue::word(12));
  start();
  expectMeter(4, 4);
  EXPECT_EQ(NumeratorText, "4");
  EXPECT_EQ(DenominatorText, "4");
}

TEST_F(LiveSystem, ANumeratorAbove99BecomesFourAnd99IsKept) {
  storeUser("Numerator", SettingsValue::word(100));
  start();
  EXPECT_EQ(Numerator.load(), 4u);
  stop();
  storeUser("Numerator", SettingsValue::word(99));
  storeUser("Denominator", SettingsValue::word(32));
  start();
  expectMeter(99, 32);
}

TEST_F(LiveSystem, AStoredDeviceAboveTheDeviceCountStartsDevice0And0IsSaved) {
  storeUser("In Device", SettingsValue::word(7));
  storeUser("Out Device", SettingsValue::word(3));
  start();
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(TheMidiIn->deviceId, 0u);
  EXPECT_EQ(TheMidiOut->deviceId, 0u);
  stop();
  EXPECT_EQ(user("In Device"), SettingsValue::word(0));
  EXPECT_EQ(user("Out Device"), SettingsValue::word(0));
}

TEST_F(LiveSystem, TheStoredDevicesAreOpened) {
  storeUser("In Device", SettingsValue::word(2));
  storeUser("Out Device", SettingsValue::word(1));
  start();
  EXPECT_EQ(TheMidiIn->deviceId, 2u);
  EXPECT_EQ(TheMidiOut->deviceId, 1u);
  EXPECT_EQ(MidiInDevice, 2u);
  EXPECT_EQ(MidiOutDevice, 1u);
  EXPECT_TRUE(devices.loopback.inputStarted(2));
  EXPECT_TRUE(devices.loopback.outputOpen(1));
}

TEST_F(LiveSystem, ClosingEndsEverySoundingNoteAndResetsTheControllersBeforeTheOutputCloses) {
  storeUser("Out Device", SettingsValue::word(1));  // its cable leads to an input nobody opened: no thru echo
  start();
  MidiOutNow(TheMidiOut, 0x92, 64, 100);
  devices.loopback.clearSent(1);
  stop();
  std::vector<uint32_t> words;
  for (const auto& sent : devices.loopback.sent(1)) words.push_back(sent.word);
  ASSERT_FALSE(words.empty());
  EXPECT_NE(std::find(words.begin(), words.end(), 0x004092u), words.end()) << "the note ends";
  for (uint32_t channel = 0; channel < 16; ++channel) {
    EXPECT_NE(std::find(words.begin(), words.end(), 0xB0u | channel | 121u << 8), words.end()) << channel;
  }
  EXPECT_FALSE(devices.loopback.outputOpen(1));
}

TEST_F(LiveSystem, TheDevicesDialogSaysHowTheTimerRunsAndWhatWasDropped) {
  const auto lines = DevicesStatusLines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].rfind("Timer: ", 0), 0u);
  EXPECT_EQ(lines[1].rfind("Late timer passes made up: ", 0), 0u);
  EXPECT_NE(lines[1].find("; skipped after stalls over 200 ms: "), std::string::npos);
  EXPECT_EQ(lines[2].rfind("Messages dropped for a data byte of 0x80 or above: ", 0), 0u);
}

TEST_F(LiveSystem, ADeviceThatFailsToOpenShowsItsErrorTextAndTheNextIsTried) {
  storeUser("In Device", SettingsValue::word(1));
  storeUser("Out Device", SettingsValue::word(0));
  devices.refusedInputs = {1};
  devices.refusedOutputs = {0};
  start();
  const std::string inUse = platform::midiInGetErrorText(platform::MMSYSERR_ALLOCATED);
  ASSERT_EQ(prompts.shown().size(), 2u);
  for (const auto& box : prompts.shown()) {
    EXPECT_EQ(box.text, inUse);
    EXPECT_EQ(box.title, "Velmora");
    EXPECT_EQ(box.style, platform::MB_ICONSTOP);
  }
  ASSERT_NE(TheMidiIn, nullptr);
  ASSERT_NE(TheMidiOut, nullptr);
  EXPECT_EQ(TheMidiIn->deviceId, 2u);
  EXPECT_EQ(TheMidiOut->deviceId, 1u);
  EXPECT_EQ(MidiInDevice, 2u);
  EXPECT_EQ(MidiOutDevice, 1u);
}

TEST_F(LiveSystem, WhenTheLastDevicesFailTheHandleStaysNullAndTheSystemRunsOn) {
  storeUser("Out Device", SettingsValue::word(1));
  devices.refusedOutputs = {1, 2};
  start();
  EXPECT_EQ(boxes().size(), 2u) << "devices 1 and 2 told, device 0 not tried";
  EXPECT_EQ(TheMidiOut, nullptr);
  EXPECT_EQ(MidiOutDevice, 0u);
  EXPECT_EQ(TheClock->firstBeatMsg.load(), click(9, 42, 100));
  stop();
  EXPECT_EQ(user("Out Device"), SettingsValue::word(0));
  EXPECT_EQ(user("Metronome record"), SettingsValue::word(0)) << "no output holds the flag";
}

TEST_F(LiveSystem, CollectSettingsReadsTheLiveState) {
  start();
  Numerator = 7;
  Denominator = 8;
  FirstBeatKeyText = "60";
  FirstBeatVelocityText = "90";
  FirstBeatChannelText = "10";
  OtherBeatsKeyText = "61";
  OtherBeatsVelocityText = "50";
  OtherBeatsChannelText = "11";
  ClickLengthText = "4";
  CountInText = "2";
  SetMidiOutFlag(METRONOME_RECORD, false);
  SetMidiOutFlag(METRONOME_PLAY, true);
  SetMidiInFlag(MIDI_THRU, false);
  SettingsRecord r;
  CollectSettings(r);
  const SettingsRecord live{.inDevice = 0,
                            .outDevice = 0,
                            .numerator = 7,
                            .denominator = 8,
                            .firstKey = 60,
                            .firstVelocity = 90,
                            .firstChannel = 10,
                            .otherKey = 61,
                            .otherVelocity = 50,
                            .otherChannel = 11,
                            .noteDuration = 4,
                            .metronomeRecord = 0,
                            .metronomePlay = 1,
                            .metronomeCount = 2,
                            .midiThru = 0};
  EXPECT_EQ(r, live);
}

TEST_F(LiveSystem, StopSavesTheUserLevelOnlyAndClosesEverything) {
  start();
  Numerator = 3;
  MidiFilesDir = "/songs";
  SetMidiInFlag(MIDI_THRU, false);
  stop();
  EXPECT_EQ(user("Numerator"), SettingsValue::word(3));
  EXPECT_EQ(user("Midi Thru"), SettingsValue::word(0));
  EXPECT_EQ(user("Midi Files Dir"), SettingsValue::text("/songs"));
  EXPECT_EQ(machine("Numerator"), SettingsValue::word(1));
  EXPECT_EQ(machine("Midi Thru"), SettingsValue::word(1));
  EXPECT_EQ(TheClock, nullptr);
  EXPECT_EQ(TheMidiIn, nullptr);
  EXPECT_EQ(TheMidiOut, nullptr);
  EXPECT_FALSE(devices.loopback.outputOpen(0));
  EXPECT_FALSE(devices.loopback.inputStarted(0));
  EXPECT_EQ(ActiveTrackCount, 0);
  EXPECT_EQ(Tracks[TempoTrack].events, nullptr);
  EXPECT_EQ(ControlBarWindow, &controlBar) << "the window is its owner's";
}

TEST_F(LiveSystem, StopFreesEveryTrackAndItsName) {
  start();
  MidiEvent notes[2] = {{0, 0x90, 60, 90, 0, nullptr, 0, 0, 0, 0}, {120, 0x90, 60, 0, 0, nullptr, 0, 0, 0, 0}};
  AbsoluteToDelta(notes, 2);
  InstallTrack(4, 2, notes);
  TrackNames[4] = "bass";
  stop();
  EXPECT_EQ(Tracks[4].events, nullptr);
  EXPECT_EQ(Tracks[4].count, 0u);
  EXPECT_FALSE(TrackNames[4].has_value());
}

TEST_F(LiveSystem, ASecondRunStartsWithWhatTheFirstLeft) {
  storeUser("Out Device", SettingsValue::word(2));
  start();
  FirstBeatKeyText = "37";
  Numerator = 6;
  stop();
  start();
  EXPECT_EQ(TheMidiOut->deviceId, 2u);
  EXPECT_EQ(Numerator.load(), 6u);
  EXPECT_EQ(TheClock->firstBeatMsg.load(), click(9, 37, 100));
}

TEST_F(LiveSystem, RecordAfterStartCountsInWithTheSettingsClick) {
  storeUser("Key first beat", SettingsValue::byte(76));
  start();
  TransportCommand(CMD_RECORD);
  for (int i = 0; i < 20; ++i) {
    timers.step();
    loop.pump();
  }
  TransportCommand(CMD_STOP);
  loop.pump();
  bool clicked = false;
  for (const auto& sent : devices.loopback.sent(0)) clicked = clicked || sent.word == click(9, 76, 100);
  EXPECT_TRUE(clicked);
}

}  // namespace
