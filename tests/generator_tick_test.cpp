#include "generator/generator_tick.h"

#include <gtest/gtest.h>

#include <set>

#include "generator/boards.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/transport_words.h"
#include "platform/view_registry.h"
#include "random/trandom.h"
#include "support/generator_fixture.h"

namespace {

class GeneratorTest : public GeneratorBench {
 protected:
  // A fixed set-up: no stepping, one voice, channel 1.
  void fixed() {
    FunctionsFilters = 0;
    only(VoicesDistribution, 1);
  }
};

TEST_F(GeneratorTest, WithTimeBase120AndDensity60ChordsComeEvery60Ticks) {
  fixed();
  only(DensityDistribution, 60);
  ASSERT_EQ(TimeBase.load(), 120u);
  GeneratorToggle();
  passes(250);
  const auto ons = noteOns();
  ASSERT_GE(ons.size(), 4u);
  EXPECT_EQ(ons[0].tick, 1u);  // the first pass draws at once; the chords keep to the grid of tick 0
  for (std::size_t i = 2; i < ons.size(); ++i) EXPECT_EQ(ons[i].tick - ons[i - 1].tick, 60u);
}

TEST_F(GeneratorTest, AChordOfFullLengthEndsOnePassAfterTheNextChordBegins) {
  fixed();
  only(DensityDistribution, 60);
  only(LengthDistribution, 100);
  Overlap = 0;
  GeneratorToggle();
  passes(200);
  // Chord 2 begins at tick 60 with offTime 120; chord 3 begins at 120, and
  // chord 2 ends at 121, when its offTime is strictly below Now.
  std::vector<uint32_t> offs;
  for (const auto& n : sent()) {
    if ((n.word >> 16 & 0xFF) == 0) offs.push_back(n.tick);
  }
  const auto ons = noteOns();
  ASSERT_GE(ons.size(), 3u);
  EXPECT_EQ(ons[1].tick, 60u);
  EXPECT_EQ(ons[2].tick, 120u);
  EXPECT_NE(std::find(offs.begin(), offs.end(), 121u), offs.end());
}

TEST_F(GeneratorTest, DensityZeroPutsAChordIntoEveryPassAndTheRingWrapsAfter120) {
  fixed();
  only(DensityDistribution, 0);
  only(LengthDistribution, 100);
  only(VelocityDistribution, 100);
  Overlap = 1;  // every chord lasts 120 ticks
  GeneratorToggle();
  passes(130);
  EXPECT_EQ(noteOns().size(), 130u);
  EXPECT_EQ(WriteSlot.load(), 10u);
  // Each of the ten oldest chords was overwritten in the pass it was due to
  // end, before its offTime was below Now: none of them got a note-off. (A key
  // drawn while it still sounds is cut at once by a velocity-0 message right
  // after its note-on; those cuts are not note-offs of a chord.)
  const auto all = sent();
  int chordEnds = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    const bool off = (all[i].word >> 16 & 0xFF) == 0;
    const bool cut = i > 0 && (all[i - 1].word & 0xFFFF) == (all[i].word & 0xFFFF);
    if (off && !cut) ++chordEnds;
  }
  EXPECT_EQ(chordEnds, 0);
}

TEST_F(GeneratorTest, AFailedVoicesDrawStillAdvancesTheChordTimeAndTheSlot) {
  fixed();
  only(DensityDistribution, 60);
  for (auto& w : LiveBank.voiceWeights) w = 0;
  SumDistribution(VoicesDistribution);
  GeneratorToggle();
  passes(125);
  EXPECT_TRUE(noteOns().empty());
  EXPECT_EQ(WriteSlot.load(), 3u);  // chords at ticks 1, 60, 120
  EXPECT_EQ(SoundingRing[0].voiceCount, -1);
  EXPECT_EQ(NextChordTick.load(), 180u);
}

TEST_F(GeneratorTest, AFailedDensityDrawPutsTheNextChord10TicksLater) {
  fixed();
  for (auto& w : LiveBank.densityWeights) w = 0;
  SumDistribution(DensityDistribution);
  ASSERT_EQ(TimeBase.load(), 120u);
  GeneratorToggle();
  passes(1);  // the first chord, at tick 1
  EXPECT_EQ(NextChordTick.load(), 10u);
  passes(9);  // tick 10: the second
  EXPECT_EQ(NextChordTick.load(), 20u);
  passes(10);
  EXPECT_EQ(NextChordTick.load(), 30u);
  EXPECT_EQ(WriteSlot.load(), 3u) << "chords at ticks 1, 10 and 20";
}

TEST_F(GeneratorTest, AFailedLengthDrawWithOverlapOnGivesADurationOf42949671) {
  fixed();
  only(DensityDistribution, 60);
  for (auto& w : LiveBank.lengthWeights) w = 0;
  SumDistribution(LengthDistribution);
  Overlap = 1;
  GeneratorToggle();
  passes(1);
  EXPECT_EQ(ChordDuration.load(), 42949671u) << "a length of -1 times the time base of 120, over 100";
  EXPECT_EQ(SoundingRing[0].offTime.load(), 1u + 42949671u);
}

TEST_F(GeneratorTest, ChordsEndingInOnePassEndInRingOrderEachVoiceOnceAndFreeTheirSlots) {
  for (auto& chord : SoundingRing) chord.offTime = 0;
  for (uint8_t c = 0; c < 3; ++c) {
    SoundingChord& chord = SoundingRing[c * 40u];
    chord.offTime = 1;
    chord.voiceCount = 2;
    chord.voices[0] = {c, static_cast<uint8_t>(60 + c), 100};
    chord.voices[1] = {c, static_cast<uint8_t>(70 + c), 100};
  }
  SoundingRing[100].offTime = 50;  // not due yet
  SoundingRing[100].voiceCount = 1;
  TheClock->now = 5;
  devices.clearSent();
  GeneratorDrain();
  std::vector<uint32_t> words;
  for (const auto& n : sent()) words.push_back(n.word);
  EXPECT_EQ(words, (std::vector<uint32_t>{0x3C90, 0x4690, 0x3D91, 0x4791, 0x3E92, 0x4892}));
  for (uint32_t c = 0; c < 3; ++c) EXPECT_EQ(SoundingRing[c * 40].offTime.load(), 0u);
  EXPECT_EQ(SoundingRing[100].offTime.load(), 50u);
  EXPECT_EQ(Draining.load(), 1u) << "a chord still sounds";
  SoundingRing[100].offTime = 0;
}

TEST_F(GeneratorTest, AFailedNoteDrawSendsKey255AtVelocity0) {
  fixed();
  only(VelocityDistribution, 100);
  for (auto& w : LiveBank.noteWeights) w = 0;
  SumDistribution(NotesDistribution);
  GeneratorToggle();
  passes(1);
  std::vector<uint32_t> noteMessages;
  for (const auto& n : sent()) {
    if ((n.word & 0xF0) == 0x90) noteMessages.push_back(n.word);
  }
  EXPECT_EQ(noteMessages, std::vector<uint32_t>{0x00FF90u}) << "note-on, channel 1, key 255, velocity 0";
}

TEST_F(GeneratorTest, OneChannelStillConsumesARandomNumberPerChord) {
  fixed();
  only(NotesDistribution, 60);
  only(VelocityDistribution, 100);
  ASSERT_EQ(ChannelCount.load(), 1);
  tdseed(0);
  for (int i = 0; i < 6; ++i) tdrand();
  const double seventh = tdrand();
  GeneratorReset();  // seeds with Seed 0
  Generating = 1;
  GeneratorTick();  // one chord of one voice: density, length, voices, channel, note, velocity
  EXPECT_EQ(noteOns().size(), 1u);
  EXPECT_EQ(tdrand(), seventh);
}

TEST_F(GeneratorTest, TheChannelIsDrawnAmongTheLitChannels) {
  fixed();
  LiveBank.channelMask = 0b1010'0000'0000'0100;  // channels 3, 14 and 16
  RefreshControlPanel(nullptr);
  GeneratorToggle();
  passes(3000);
  std::set<uint32_t> channels;
  for (const auto& n : noteOns()) channels.insert(n.word & 0x0F);
  EXPECT_EQ(channels, (std::set<uint32_t>{2, 13, 15}));
}

TEST_F(GeneratorTest, AChordWithNoChannelToDrawIsSilentOnChannel1) {
  ChannelCount = 0;
  for (auto& w : ChannelWeights) w = 0;
  VelocityMask = 255;
  EXPECT_EQ(DrawChannel(), 0);
  EXPECT_EQ(VelocityMask, 0u) << "a failed draw silences the chord";
}

TEST_F(GeneratorTest, InIntervalModeEveryNoteFallsIntoTheOctave60To71) {
  fixed();
  only(VoicesDistribution, 3);
  IntervalMode = 1;
  IntervalMin = 60;
  IntervalMax = 71;
  FromNote = 64;
  GeneratorToggle();
  passes(2000);
  ASSERT_GT(noteOns().size(), 50u);
  for (const auto& n : noteOns()) {
    const uint32_t key = n.word >> 8 & 0xFF;
    EXPECT_GE(key, 60u);
    EXPECT_LE(key, 71u);
  }
}

TEST_F(GeneratorTest, MirrorReversesEveryStepOfTheWalk) {
  fixed();
  IntervalMode = 1;
  IntervalMin = 0;
  IntervalMax = 127;
  FromNote = 64;
  only(NotesDistribution, 5);  // every interval is 5
  const auto walk = [&](int16_t mirror) {
    devices.clearSent();
    Mirror = mirror;
    GeneratorReset();
    Generating = 1;
    std::vector<int> keys;
    for (int chord = 0; chord < 8; ++chord) {
      TheClock->now = NextChordTick.load();
      GeneratorTick();
    }
    for (const auto& n : noteOns()) keys.push_back(static_cast<int>(n.word >> 8 & 0xFF));
    return keys;
  };
  const auto plain = walk(0);
  const auto mirrored = walk(1);
  ASSERT_EQ(plain.size(), 8u);
  ASSERT_EQ(plain.size(), mirrored.size());
  for (std::size_t i = 0; i < plain.size(); ++i) EXPECT_EQ(plain[i] - 64, 64 - mirrored[i]);
}

TEST_F(GeneratorTest, TheLastElementOfANonPeriodicRunIsAppliedAndItsChordStillDrawn) {
  FunctionsFilters = 1;  // Max Notes only
  FunctionsRate = 0;     // a step with every chord
  FunctionsPeriodic = 0;
  ASSERT_EQ(ResizeFunctions(nullptr, 2), 1);
  FunctionLength = 2;
  FunctionArrays[0][1] = 90;
  only(DensityDistribution, 10);
  GeneratorToggle();
  passes(30);
  EXPECT_EQ(LiveBank.noteMax.load(), 90);
  EXPECT_EQ(Generating.load(), 0u);
  EXPECT_EQ(noteOns().size(), 2u) << "the chord of the last step's pass was drawn";
}

TEST_F(GeneratorTest, TheDrainEndsTheNotesThenStopsTheClockAndPopsTheButton) {
  struct Button final : platform::MessageTarget {
    std::vector<uintptr_t> states;
    intptr_t handleMessage(uint32_t, uintptr_t p1, uintptr_t) override {
      states.push_back(p1);
      return 0;
    }
  } generatorButton;
  SetControlBarControl(200, &generatorButton);
  fixed();
  only(LengthDistribution, 100);
  Overlap = 1;
  GeneratorToggle();
  passes(10);
  GeneratorToggle();  // off: the drain takes over
  EXPECT_EQ(Draining.load(), 1u);
  passes(200);
  EXPECT_EQ(Draining.load(), 0u);
  EXPECT_EQ(TheClock->flags.load() & SYNC_COUNTING, 0u) << "the clock was stopped";
  EXPECT_EQ(SongPosition.load(), TheClock->now.load());
  for (const auto& chord : SoundingRing) EXPECT_EQ(chord.offTime.load(), 0u);
  loop.pump();
  EXPECT_EQ(generatorButton.states, std::vector<uintptr_t>{0});
  SetControlBarControl(200, nullptr);
}

TEST_F(GeneratorTest, TurningTheGeneratorOnWhilePlayingLeavesTheClockAlone) {
  Playing = 1;
  TheClock->now = 500;
  ReStartSync(TheClock);  // as Play started it
  GeneratorToggle();
  EXPECT_EQ(TheClock->now.load(), 500u) << "the button does not place a clock the transport runs";
  passes(100);
  GeneratorToggle();
  passes(300);  // the drain ends ...
  EXPECT_EQ(Draining.load(), 0u);
  EXPECT_NE(TheClock->flags.load() & SYNC_COUNTING, 0u) << "... and the song goes on";
  Playing = 0;
}

TEST_F(GeneratorTest, TurningTheGeneratorOnFromAStoppedTransportStartsTheClockAtTheSongPosition) {
  SongPosition = 240;
  GeneratorToggle();
  EXPECT_EQ(Generating.load(), 1u);
  EXPECT_EQ(TheClock->now.load(), 240u);
  EXPECT_NE(TheClock->flags.load() & SYNC_COUNTING, 0u);
  EXPECT_EQ(NextChordTick.load(), 240u);
  EXPECT_EQ(TheClock->beat.load(), 2) << "tick 240 is the third beat of the bar";
}

TEST_F(GeneratorTest, BoardsPlayInsideTheChordOnlyWhenTheIndexMoves) {
  fixed();
  only(DensityDistribution, 120);
  only(LengthDistribution, 100);
  Overlap = 1;                                                                         // chords of 120 ticks
  for (int i = 0; i < 128; ++i) LiveBank.boardCurves[5][i] = static_cast<int16_t>(i);  // mod wheel ramp
  LiveBank.boardFlags = 1u << 5;
  GeneratorToggle();
  passes(60);
  std::vector<uint32_t> mods;
  for (const auto& n : sent()) {
    if ((n.word & 0xFF) == 0xB0 && (n.word >> 8 & 0xFF) == 1) mods.push_back(n.word >> 16 & 0xFF);
  }
  ASSERT_FALSE(mods.empty());
  for (std::size_t i = 1; i < mods.size(); ++i) EXPECT_GT(mods[i], mods[i - 1]) << "sent only on a change";
}

TEST_F(GeneratorTest, AChordOfNoLengthWithABoardOnPlaysTheCurvesEnd) {
  fixed();
  only(LengthDistribution, 0);  // every duration is 0
  LiveBank.boardCurves[9][127] = 99;
  LiveBank.boardFlags = 1u << 9;  // key aftertouch
  GeneratorToggle();
  passes(5);
  bool pressure = false;
  for (const auto& n : sent()) {
    if ((n.word & 0xF0) == 0xD0) {
      EXPECT_EQ(n.word >> 8 & 0xFF, 99u);
      pressure = true;
    }
  }
  EXPECT_TRUE(pressure);
}

TEST_F(GeneratorTest, ABoardIndexPastTheLastCurveReadsZero) {
  fixed();
  only(DensityDistribution, 120);
  only(LengthDistribution, 1);
  Overlap = 1;  // a chord of one tick, then a long wait for the next
  for (auto& point : LiveBank.boardCurves[9]) point = 50;
  LiveBank.boardFlags = 1u << 9;
  GeneratorToggle();
  passes(119);  // the index runs far past 127 after the chord has ended
  const auto all = sent();
  ASSERT_FALSE(all.empty());
  EXPECT_EQ(all.back().word & 0xF0, 0xD0u);
  EXPECT_EQ(all.back().word >> 8 & 0xFF, 0u);
}

TEST_F(GeneratorTest, ThePitchBoardPlaysTheSelectedCurveAsTheWheelsHighByte) {
  fixed();
  for (auto& point : LiveBank.boardCurves[3]) point = 70;
  LiveBank.boardFlags = 1u << 3;
  SelectedPitchBoard = 3;
  GeneratorToggle();
  passes(3);
  bool wheel = false;
  for (const auto& n : sent()) {
    if ((n.word & 0xF0) == 0xE0) {
      EXPECT_EQ(n.word & 0xFFFF00, 70u << 16);
      wheel = true;
    }
  }
  EXPECT_TRUE(wheel);
}

// Every board on, each curve flat at its own value: board b stands at 10 + b.
void everyBoardOn() {
  for (int b = 0; b < BoardCount; ++b) {
    for (auto& point : LiveBank.boardCurves[b]) point = static_cast<int16_t>(10 + b);
  }
  LiveBank.boardFlags = 1u | 0x3E0u;  // pitch board 1 and boards 6 to 10
  SelectedPitchBoard = 0;
}

// What the boards send on channel 1 with everyBoardOn, in order: the pitch
// bend (the curve as its high byte), controllers 1, 2, 7 and 10 (modulation
// wheel, breath, volume, pan), and the channel pressure.
const std::vector<uint32_t> EveryBoardsMessage = {
    0xE0u | 10u << 16,           0xB0u | 1u << 8 | 15u << 16,  0xB0u | 2u << 8 | 16u << 16,
    0xB0u | 7u << 8 | 17u << 16, 0xB0u | 10u << 8 | 18u << 16, 0xD0u | 19u << 8};

TEST_F(GeneratorTest, BoardsSendPitchBendThenControllers1_2_7_10ThenChannelPressure) {
  fixed();
  everyBoardOn();
  GeneratorToggle();
  passes(1);
  std::vector<uint32_t> boards;
  for (const auto& n : sent()) {
    if ((n.word & 0xE0) != 0x80) boards.push_back(n.word);  // all but the notes
  }
  EXPECT_EQ(boards, EveryBoardsMessage);
}

TEST_F(GeneratorTest, OnlyThePassesLastBoardMessageGoesIntoTheTake) {
  struct Input final : platform::MessageTarget {
    int data = 0;
    intptr_t handleMessage(uint32_t msg, uintptr_t, uintptr_t) override {
      if (msg == platform::MIM_DATA) ++data;
      return 0;
    }
  } inputWindow;
  MidiInHandle* in = nullptr;
  ASSERT_EQ(OpenMidiIn(&in, &inputWindow, 0, TheClock, MIDI_OPEN_WORD), 0u);
  ASSERT_EQ(TheClock->midiIn.load(), in);
  fixed();
  only(VelocityDistribution, 100);
  everyBoardOn();
  GeneratorToggle();
  Capturing = 1;
  passes(1);
  Capturing = 0;
  std::vector<uint32_t> taken;
  while (const MidiEvent* e = MidiIn(in)) taken.push_back(PackedMessage(*e));
  std::vector<uint32_t> boards;
  for (uint32_t word : taken) {
    if ((word & 0xE0) != 0x80) boards.push_back(word);
  }
  EXPECT_EQ(boards, std::vector<uint32_t>{EveryBoardsMessage.back()}) << "six sent, the last one taken";
  EXPECT_EQ(taken.size(), 2u) << "the chord's one note and the last board message";
  EXPECT_EQ(inputWindow.data, 2);
  CloseMidiIn(&in);
}

TEST_F(GeneratorTest, TwoResetsWithTheSameSeedGiveTheSameChords) {
  const auto run = [&] {
    devices.clearSent();
    GeneratorReset();
    Generating = 1;
    for (int i = 0; i < 30; ++i) {
      TheClock->now = NextChordTick.load();
      GeneratorTick();
    }
    Generating = 0;
    std::vector<uint32_t> chords;  // the ring is not cleared by a reset, so note-offs of the last run differ
    for (const auto& n : noteOns()) chords.push_back(n.word);
    return chords;
  };
  const auto first = run();
  EXPECT_GE(first.size(), 30u);
  TheClock->now = 0;
  EXPECT_EQ(run(), first);
}

}  // namespace
