#include "live/settings_dialogs.h"

#include <gtest/gtest.h>

#include "generator/bank.h"
#include "midi/backends/synth.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "song/note_linking.h"
#include "song/recording.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "support/live_bench.h"
#include "support/stop_box.h"
#include "transport/playback_feed.h"

namespace {

class Dialogs : public LiveBench {
 protected:
  void SetUp() override {
    LiveBench::SetUp();
    start();
  }
  void TearDown() override {
    DropEventRows();
    LiveBench::TearDown();
  }

  // Four beats a bar at 120 ticks a beat.
  static void fourFour() {
    ASSERT_EQ(ApplyMeterDialog("4", "4"), 0u);
    ApplyMeter();
  }

  static MidiEvent note(uint32_t time, uint8_t velocity = 90) {
    return MidiEvent{time, 0x90, 60, velocity, 0, nullptr, 0, 0, 0, 0};
  }

  // A track from events in absolute time.
  static void install(uint32_t track, std::vector<MidiEvent> absolute) {
    AbsoluteToDelta(absolute.data(), static_cast<uint32_t>(absolute.size()));
    InstallTrack(track, static_cast<uint32_t>(absolute.size()), absolute.data());
  }

  static std::vector<uint32_t> times(uint32_t track) {
    std::vector<uint32_t> found;
    for (uint32_t i = 0; i < Tracks[track].count; ++i) found.push_back(Tracks[track].events[i].time);
    return found;
  }

  void expectOneBox(const std::string& text) { ExpectOneStopBox(prompts, text); }

  RecordingList list;
};

// ---- Tempo ----

TEST_F(Dialogs, TheTempoFieldShowsTheClocksBeatsPerMinute) {
  EXPECT_EQ(TempoDialogText(), "60.00");
  SetTempo(TheClock, 450011);
  EXPECT_EQ(TempoDialogText(), "133.33");
}

TEST_F(Dialogs, Tempo240IsTakenAnd24001IsRefused) {
  EXPECT_TRUE(ApplyTempoDialog("240", true));
  EXPECT_EQ(GetTempo(TheClock), 250000u);
  EXPECT_FALSE(ApplyTempoDialog("240.01", true));
  EXPECT_EQ(GetTempo(TheClock), 250000u);
}

TEST_F(Dialogs, Tempo10IsTakenAnd999IsRefused) {
  EXPECT_FALSE(ApplyTempoDialog("9.99", true));
  EXPECT_EQ(GetTempo(TheClock), 1000000u);
  EXPECT_EQ(SongDirty, 0u) << "a refusal changes nothing";
  EXPECT_TRUE(ApplyTempoDialog("10", true));
  EXPECT_EQ(GetTempo(TheClock), 6000000u);
}

TEST_F(Dialogs, ATempoOfLettersReadsAsZeroAndIsRefused) {
  EXPECT_FALSE(ApplyTempoDialog("fast", true));
  EXPECT_FALSE(ApplyTempoDialog("", true));
  EXPECT_FALSE(ApplyTempoDialog("0x78", true)) << "no hexadecimal";
  EXPECT_EQ(GetTempo(TheClock), 1000000u);
}

TEST_F(Dialogs, ATempoMayStandBetweenBlanksAndCarryASign) {
  EXPECT_TRUE(ApplyTempoDialog("  +120.5", true));
  EXPECT_EQ(GetTempo(TheClock), 497925u);
}

TEST_F(Dialogs, Tempo13333LeavesTheTempo450011AndTheBarShows13333WithItsControlAt133) {
  ASSERT_TRUE(ApplyTempoDialog("133.33", true));
  EXPECT_EQ(GetTempo(TheClock), 450011u);
  EXPECT_EQ(EventTempo(Tracks[TempoTrack].events[0]), 450011u);
  EXPECT_NEAR(bar.tempo, 133.33, 0.005);
  EXPECT_NEAR(bar.upDownTempo, 133.33, 0.005) << "the up-down control moves too";
  EXPECT_NEAR(TempoFraction, 0.33, 1e-9);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(Dialogs, TheTempoControlAddsTheFractionBack) {
  ASSERT_TRUE(ApplyTempoDialog("100.5", true));
  TempoEntry(101);
  EXPECT_NEAR(bar.tempo, 101.50, 0.005);
  EXPECT_EQ(GetTempo(TheClock), static_cast<uint32_t>(60000000.0 / 101.5));
}

TEST_F(Dialogs, TempoOkWithoutAnEditStillMarksTheSongChangedAndKeepsTheTempo) {
  SetSongTempo(450011);
  SongDirty = 0;
  EXPECT_TRUE(ApplyTempoDialog("nonsense", false));
  EXPECT_EQ(SongDirty, 1u);
  EXPECT_EQ(GetTempo(TheClock), 450011u);
  EXPECT_NEAR(bar.tempo, 133.33, 0.005);
}

// ---- Resolution ----

TEST_F(Dialogs, Resolution960IsTakenAnd961And0AreRefused) {
  EXPECT_EQ(ResolutionDialogText(), "120");
  EXPECT_FALSE(ApplyResolutionDialog("961", true));
  EXPECT_FALSE(ApplyResolutionDialog("0", true));
  EXPECT_FALSE(ApplyResolutionDialog("", true));
  EXPECT_EQ(GetResolution(TheClock), 120u);
  EXPECT_EQ(SongDirty, 0u);
  EXPECT_TRUE(ApplyResolutionDialog("960", true));
  EXPECT_EQ(GetResolution(TheClock), 960u);
  EXPECT_EQ(SongResolution.load(), 960u);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(Dialogs, ResolutionOkWithoutAnEditMarksTheSongChangedAndKeepsTheResolution) {
  EXPECT_TRUE(ApplyResolutionDialog("480", false));
  EXPECT_EQ(GetResolution(TheClock), 120u);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(Dialogs, ResolutionFrom120To240DoublesEveryTimeInAllTracks) {
  fourFour();
  install(0, {note(0), note(120, 0), note(480), note(600, 0)});
  install(5, {note(60), note(1000, 0)});
  Tracks[TempoTrack].events[0].time = 30;  // the tempo track is scaled too
  EventsOpen = 1;
  EventsList = &list;
  const uint32_t old = GetResolution(TheClock);
  ASSERT_TRUE(ApplyResolutionDialog("240", true));
  RescaleSongTimes(old, GetResolution(TheClock));
  EXPECT_EQ(times(0), (std::vector<uint32_t>{0, 240, 960, 1200}));
  EXPECT_EQ(times(5), (std::vector<uint32_t>{120, 2000}));
  EXPECT_EQ(Tracks[TempoTrack].events[0].time, 60u);
  EXPECT_EQ(TicksPerBar.load(), 960u);
  EXPECT_EQ(list.repaints, 1);
}

TEST_F(Dialogs, RescalingDropsTheRemainderAndLetsTheProductWrap) {
  install(0, {note(7), note(0x30000000u, 0)});
  RescaleSongTimes(120, 90);
  EXPECT_EQ(times(0)[0], 5u);
  EXPECT_EQ(times(0)[1], 0xE0000000u / 120) << "90 times 0x30000000 wraps before the division";
}

// ---- Meter ----

TEST_F(Dialogs, MeterThreeEighthsIsAcceptedAndApplied) {
  EXPECT_EQ(ApplyMeterDialog("3", "8"), 0u);
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(NumeratorText, "3");
  EXPECT_EQ(DenominatorText, "8");
  EXPECT_EQ(SongDirty, 1u);
  ApplyMeter();
  expectMeter(3, 8);
}

TEST_F(Dialogs, ANumeratorOf0GivesTheRangeMessage) {
  EXPECT_EQ(ApplyMeterDialog("0", "4"), 2102u);
  expectOneBox("Value is not in the range 1 to 99.");
  EXPECT_EQ(NumeratorText, "1");
  EXPECT_EQ(SongDirty, 0u);
}

TEST_F(Dialogs, ADenominatorOf12GivesThePictureMessageAndTheNumeratorStaysStored) {
  EXPECT_EQ(ApplyMeterDialog("5", "12"), 2101u);
  expectOneBox("Input does not conform to picture:\n32,16,8,4,2,1");
  EXPECT_EQ(NumeratorText, "5") << "the partial store is kept";
  EXPECT_EQ(DenominatorText, "4");
  EXPECT_EQ(SongDirty, 0u);
  EXPECT_EQ(Numerator.load(), 1u) << "not applied until a later OK";
}

TEST_F(Dialogs, AnEightBetweenBlanksIsAcceptedAfterTrimming) {
  EXPECT_EQ(ApplyMeterDialog(" 4\t", " 8 "), 0u);
  EXPECT_EQ(NumeratorText, "4");
  EXPECT_EQ(DenominatorText, "8");
}

TEST_F(Dialogs, ADenominatorTextOf0IsAppliedAsFourAndRewritten) {
  DenominatorText.assign(1, '0');  // said so to spare GCC 12 a false -Wrestrict
  ApplyMeter();
  EXPECT_EQ(Denominator.load(), 4u);
  EXPECT_EQ(DenominatorText, "4");
  EXPECT_EQ(bar.fields[1181], "4");
}

TEST_F(Dialogs, ANewMeterRereadsTheSameTicks) {
  install(0, {note(0), note(1000, 0)});
  ApplyMeterDialog("7", "8");
  ApplyMeter();
  EXPECT_EQ(times(0), (std::vector<uint32_t>{0, 1000}));
}

// ---- Metronome ----

TEST_F(Dialogs, TheMetronomeFieldsAreCheckedAndStoredAndApplied) {
  std::array<std::string, 8> fields = {"2", " 4 ", "10", "60", "90", "11", "61", "50"};
  EXPECT_EQ(CheckMetronomeDialog(fields, true, false), 0u);
  EXPECT_TRUE(prompts.shown().empty());
  EXPECT_EQ(fields[1], "4");
  EXPECT_EQ(CountInText, "2");
  EXPECT_EQ(ClickLengthText, "4");
  EXPECT_EQ(FirstBeatChannelText, "10");
  EXPECT_EQ(OtherBeatsVelocityText, "50");
  EXPECT_TRUE(MetronomeOnPlay());
  EXPECT_FALSE(MetronomeOnRecord());
  ApplyMetronome();
  EXPECT_EQ(TheClock->firstBeatMsg.load(), 0x99u | 60u << 8 | 90u << 16);
  EXPECT_EQ(TheClock->otherBeatsMsg.load(), 0x9Au | 61u << 8 | 50u << 16);
  EXPECT_EQ(TheClock->noteDivisor.load(), 4);
  EXPECT_EQ(TheClock->countInBars.load(), 2u);
  EXPECT_EQ(SongDirty, 0u) << "the song stays unmarked";
}

TEST_F(Dialogs, ADurationOf25GivesTheRangeMessageAndKeepsItsOldText) {
  std::array<std::string, 8> fields = {"3", "25", "10", "60", "90", "11", "61", "50"};
  EXPECT_EQ(CheckMetronomeDialog(fields, true, false), 2104u);
  expectOneBox("Value is not in the range 1 to 24.");
  EXPECT_EQ(ClickLengthText, "2") << "the field gets this back, selected";
  EXPECT_EQ(CountInText, "3") << "the field checked ahead of it is stored";
  EXPECT_EQ(FirstBeatChannelText, "9") << "the fields after it are not";
  EXPECT_FALSE(MetronomeOnPlay()) << "the boxes wait for all eight fields";
  EXPECT_TRUE(MetronomeOnRecord());
}

TEST_F(Dialogs, EachMetronomeFieldHasItsLimits) {
  const std::array<std::string, 8> good = {"0", "1", "1", "0", "0", "16", "127", "127"};
  const std::array<uint32_t, 8> ids = {2113, 2104, 2107, 2109, 2111, 2108, 2110, 2112};
  const std::array<std::string, 8> bad = {"17", "0", "17", "128", "-1", "0", "128", "200"};
  for (std::size_t i = 0; i < 8; ++i) {
    std::array<std::string, 8> fields = good;
    fields[i] = bad[i];
    EXPECT_EQ(CheckMetronomeDialog(fields, false, false), ids[i]) << i;
    EXPECT_EQ(MetronomeFields[i].id, ids[i]);
  }
  std::array<std::string, 8> fields = good;
  EXPECT_EQ(CheckMetronomeDialog(fields, false, false), 0u);
}

// ---- MIDI devices ----

TEST_F(Dialogs, TheDeviceListsNameEveryDevice) {
  EXPECT_EQ(MidiInDeviceNames().size(), 3u);
  EXPECT_EQ(MidiOutDeviceNames().size(), 3u);
  std::string name;
  devices.outName(1, name);
  EXPECT_EQ(MidiOutDeviceNames()[1], name);
}

TEST_F(Dialogs, TheSynthesizerStartsWithItsDefaultGainAndAGainGivenIsAppliedAndKept) {
  EXPECT_EQ(devices.synthGain, DefaultSynthGain) << "the live system's start gives the stored or default gain";
  EXPECT_EQ(SynthGainDialogText(), "3");
  ASSERT_TRUE(ApplySynthGainDialog(" 1.5 "));
  EXPECT_EQ(devices.synthGain, 1.5);
  EXPECT_EQ(SynthGainDialogText(), "1.5");
  EXPECT_EQ(store.query(platform::SettingsLevel::User, SettingsKeyPath() + "\\Synthesizer", "Gain"),
            platform::SettingsValue::text("1.5"));
  EXPECT_EQ(LoadSynthGain(), 1.5);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(Dialogs, AGainThatIsNoNumberOrOutOfRangeIsRefusedAndChangesNothing) {
  std::size_t boxes = 0;
  for (const char* wrong : {"0", "-2", "10.5", "loud", "", "2x"}) {
    EXPECT_FALSE(ApplySynthGainDialog(wrong)) << wrong;
    ASSERT_EQ(prompts.shown().size(), ++boxes) << wrong;
    EXPECT_EQ(prompts.shown().back().text, "The gain is a number above 0 and at most 10.");
  }
  EXPECT_EQ(devices.synthGain, DefaultSynthGain);
  EXPECT_EQ(SynthGainDialogText(), "3");
}

TEST_F(Dialogs, AStoredGainThatCannotBeReadGivesTheDefault) {
  const std::string key = SettingsKeyPath() + "\\Synthesizer";
  store.createKey(platform::SettingsLevel::User, key);
  for (const auto& stored : {platform::SettingsValue::text("12"), platform::SettingsValue::text("half"),
                             platform::SettingsValue::text("1,5"), platform::SettingsValue::word(11),
                             platform::SettingsValue::byte(2)}) {
    store.set(platform::SettingsLevel::User, key, "Gain", stored);
    EXPECT_EQ(LoadSynthGain(), DefaultSynthGain);
  }
  store.set(platform::SettingsLevel::User, key, "Gain", platform::SettingsValue::word(2));
  EXPECT_EQ(LoadSynthGain(), 2.0) << "a whole number typed into the file by hand";
  store.set(platform::SettingsLevel::User, key, "Gain", platform::SettingsValue::text("0.25"));
  EXPECT_EQ(LoadSynthGain(), 0.25);
}

TEST_F(Dialogs, ConfirmingTheDevicesTurnsTheMetronomeOnPlayOff) {
  SetMidiOutFlag(METRONOME_PLAY, true);
  ReopenMidiDevices(2, 1);
  EXPECT_EQ(TheMidiIn->deviceId, 2u);
  EXPECT_EQ(TheMidiOut->deviceId, 1u);
  EXPECT_EQ(MidiInDevice, 2u);
  EXPECT_EQ(MidiOutDevice, 1u);
  EXPECT_FALSE(MidiOutFlag(METRONOME_PLAY));
  EXPECT_TRUE(MidiOutFlag(METRONOME_RECORD));
  EXPECT_TRUE(MidiInFlag(MIDI_THRU));
  EXPECT_TRUE(devices.loopback.inputStarted(2));
  EXPECT_FALSE(devices.loopback.outputOpen(0));
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(Dialogs, ConfirmingTheSameDevicesReopensThemAndKeepsThruAndRecordOff) {
  SetMidiInFlag(MIDI_THRU, false);
  SetMidiOutFlag(METRONOME_RECORD, false);
  ReopenMidiDevices(0, 0);
  ASSERT_NE(TheMidiOut, nullptr);
  EXPECT_EQ(TheMidiOut->deviceId, 0u);
  EXPECT_FALSE(MidiInFlag(MIDI_THRU));
  EXPECT_FALSE(MidiOutFlag(METRONOME_RECORD));
  EXPECT_TRUE(devices.loopback.inputStarted(0));
}

TEST_F(Dialogs, ADeviceThatFailsIsToldAndTheDialogGoesOn) {
  devices.refusedInputs = {1};
  ReopenMidiDevices(1, 2);
  expectOneBox(platform::midiInGetErrorText(platform::MMSYSERR_ALLOCATED));
  EXPECT_EQ(TheMidiIn, nullptr);
  EXPECT_EQ(MidiInDevice, 1u);
  ASSERT_NE(TheMidiOut, nullptr);
  EXPECT_EQ(TheMidiOut->deviceId, 2u);
  SettingsRecord r;
  CollectSettings(r);
  EXPECT_EQ(r.outDevice, 2u);
}

// ---- From, To, Go to ----

TEST_F(Dialogs, From3210AtFourBeatsAnd120TicksIs1090) {
  fourFour();
  SelectTo = 5000;
  ApplyFromDialog("3:2:10", true);
  EXPECT_EQ(SelectFrom, 1090u);
  EXPECT_EQ(SelectTo, 5000u);
  EXPECT_EQ(bar.fields[2050], "00003:02:010");
}

TEST_F(Dialogs, FromBeyondToMovesToWithItAndBothFieldsShowTheText) {
  fourFour();
  bar.fields.clear();
  ApplyFromDialog("3:2:10", true);
  EXPECT_EQ(SelectFrom, 1090u);
  EXPECT_EQ(SelectTo, 1090u);
  EXPECT_EQ(bar.fields[2050], "00003:02:010");
  EXPECT_EQ(bar.fields[2051], "00003:02:010");
}

TEST_F(Dialogs, ToBelowFromMovesFromWithIt) {
  fourFour();
  SelectFrom = 1000;
  SelectTo = 2000;
  ApplyToDialog("1:2:0", true);
  EXPECT_EQ(SelectTo, 120u);
  EXPECT_EQ(SelectFrom, 120u);
  EXPECT_EQ(bar.fields[2050], "00001:02:000");
  EXPECT_EQ(bar.fields[2051], "00001:02:000");
}

TEST_F(Dialogs, TheBoundsTextIsAsParsedNotNormalised) {
  fourFour();
  SelectTo = 100000;
  ApplyFromDialog("0:9:500", true);
  EXPECT_EQ(SelectFrom, (8u * 120) + 500);
  EXPECT_EQ(bar.fields[2050], "00001:09:500");
  ApplyFromDialog("later", true);
  EXPECT_EQ(SelectFrom, 0u);
  EXPECT_EQ(bar.fields[2050], "00001:01:000");
}

TEST_F(Dialogs, EditingNothingInFromToOrGoToLeavesTheBoundsUntouched) {
  SelectFrom = 100;
  SelectTo = 200;
  SongPosition = 300;
  bar.fields.clear();
  bar.counter.clear();
  ApplyFromDialog("3:2:10", false);
  ApplyToDialog("1:1:0", false);
  ApplyGoToDialog("9:1:0", false);
  EXPECT_EQ(SelectFrom, 100u);
  EXPECT_EQ(SelectTo, 200u);
  EXPECT_EQ(SongPosition.load(), 300u);
  EXPECT_TRUE(bar.fields.empty());
  EXPECT_TRUE(bar.counter.empty());
}

TEST_F(Dialogs, GoToMovesTheSongAndTheClockAndTheEventsListsRow) {
  fourFour();
  install(0, {note(0), note(240), note(480), note(960)});
  ListEventRowsOf({0});
  ASSERT_EQ(EventRowCount, 4u);
  EventsOpen = 1;
  EventsList = &list;
  ApplyGoToDialog("2:1:0", true);
  EXPECT_EQ(SongPosition.load(), 480u);
  EXPECT_EQ(TheClock->now.load(), 480u);
  EXPECT_EQ(bar.counter.back(), 480u);
  EXPECT_EQ(FeedCursorRow, 2u);
  EXPECT_EQ(list.top, 2);
  EXPECT_EQ(list.current, 2);
  ApplyGoToDialog("9:1:0", true);
  EXPECT_EQ(FeedCursorRow, 4u) << "past the last event: the row count";
}

// ---- Select and Goto commands ----

TEST_F(Dialogs, TheSongRunsFromTheFirstListedTracksFirstEventToTheLatestLastEvent) {
  install(3, {note(100), note(2000, 0)});
  install(7, {note(50), note(900, 0)});
  EXPECT_EQ(ActiveTracks[0], TempoTrack);
  EXPECT_EQ(SongStart(), 0u) << "the tempo event stands first";
  EXPECT_EQ(SongEnd(), 2000u);
}

TEST_F(Dialogs, AfterADeletionTheFirstListedTrackCountsByItsFirstEventOnly) {
  install(3, {note(100), note(2000, 0)});
  install(5, {note(10), note(20, 0)});
  install(7, {note(50), note(900, 0)});
  DeleteTrack(5);  // the list is rebuilt from track 0 up: 3, 7, then the tempo track
  ASSERT_EQ(ActiveTracks[0], 3u);
  EXPECT_EQ(SongStart(), 50u);
  EXPECT_EQ(SongEnd(), 900u);
}

TEST_F(Dialogs, SelectFromNowAndToNowTakeTheClocksTime) {
  TheClock->now = 300;
  SelectFromNow();
  EXPECT_EQ(SelectFrom, 300u);
  EXPECT_EQ(SelectTo, 300u);
  EXPECT_EQ(bar.fields[2050], TimeText(300));
  EXPECT_EQ(bar.fields[2051], TimeText(300));
  TheClock->now = 100;
  SelectToNow();
  EXPECT_EQ(SelectTo, 100u);
  EXPECT_EQ(SelectFrom, 100u);
  EXPECT_EQ(bar.fields[2050], TimeText(100));
}

TEST_F(Dialogs, SelectFromHomeAndToEndTakeTheSongsBounds) {
  install(2, {note(480), note(1440, 0)});
  SelectFrom = 600;
  SelectTo = 700;
  SelectToEnd();
  EXPECT_EQ(SelectTo, 1440u);
  EXPECT_EQ(SelectFrom, 600u);
  EXPECT_EQ(bar.fields[2051], TimeText(1440));
  SelectFromHome();
  EXPECT_EQ(SelectFrom, 0u);
  EXPECT_EQ(bar.fields[2050], TimeText(0));
}

TEST_F(Dialogs, GoToBeginningAndEndMoveOnlyTheTime) {
  install(2, {note(480), note(1440, 0)});
  FeedCursorRow = 7;
  GoToSongEnd();
  EXPECT_EQ(SongPosition.load(), 1440u);
  EXPECT_EQ(TheClock->now.load(), 1440u);
  EXPECT_EQ(bar.counter.back(), 1440u);
  GoToBeginning();
  EXPECT_EQ(SongPosition.load(), 0u);
  EXPECT_EQ(TheClock->now.load(), 0u);
  EXPECT_EQ(bar.counter.back(), 0u);
  EXPECT_EQ(FeedCursorRow, 7u);
}

// ---- Filters ----

TEST_F(Dialogs, TheFilterDialogsSetTheSevenLowBitsAndKeepTheOthers) {
  EXPECT_EQ(FilterDialogBits(DLG_INPUT_FILTERS), GetMidiInFilters(TheMidiIn) & 0x7F);
  const uint32_t input = GetMidiInFilters(TheMidiIn);
  ApplyFilterDialog(DLG_INPUT_FILTERS, 0x05);
  EXPECT_EQ(GetMidiInFilters(TheMidiIn), (input & ~0x7Fu) | 0x05);
  EXPECT_EQ(FilterDialogBits(DLG_INPUT_FILTERS), 0x05u);

  SetMidiOutFilters(TheMidiOut, 0x300);
  ApplyFilterDialog(DLG_OUTPUT_FILTERS, 0xFF);
  EXPECT_EQ(GetMidiOutFilters(TheMidiOut), 0x37Fu);

  SetQuantizeFilters(0x17F);
  EXPECT_EQ(FilterDialogBits(DLG_QUANTIZE_FILTERS), 0x7Fu);
  ApplyFilterDialog(DLG_QUANTIZE_FILTERS, 0x41);
  EXPECT_EQ(GetQuantizeFilters(), 0x141u);
}

// ---- Quantize record ----

TEST_F(Dialogs, TheQuantizeGridTakesTheFieldAndHalfOfItTheRounding) {
  EXPECT_EQ(QuantizeRecordDialogText(), "30");
  EXPECT_TRUE(ApplyQuantizeRecordDialog("60", true));
  EXPECT_EQ(RecordResolution, 60u);
  EXPECT_EQ(RecordRounding, 30u);
  EXPECT_TRUE(ApplyQuantizeRecordDialog("15", false));
  EXPECT_EQ(RecordResolution, 60u);
}

TEST_F(Dialogs, AQuantizeGridOf0KeepsTheOldGrid) {
  ApplyQuantizeRecordDialog("45", true);
  EXPECT_TRUE(ApplyQuantizeRecordDialog("", true));
  EXPECT_EQ(RecordResolution, 45u);
  EXPECT_EQ(RecordRounding, 22u);
}

// ---- Seed ----

TEST_F(Dialogs, TheSeedIsASignedDecimalAndNoNumberGivesZero) {
  ApplySeedDialog("-123");
  EXPECT_EQ(Seed.load(), -123);
  EXPECT_EQ(SeedDialogText(), "-123");
  ApplySeedDialog("42xyz");
  EXPECT_EQ(Seed.load(), 42);
  ApplySeedDialog("none");
  EXPECT_EQ(Seed.load(), 0);
}

}  // namespace
