#include "generator/generator_tick.h"

#include <algorithm>

#include "generator/bank.h"
#include "generator/distributions.h"
#include "generator/functions.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "random/trandom.h"
#include "song/clock_placing.h"

std::array<SoundingChord, RingSlots> SoundingRing;
SharedWord<uint32_t> Now, NextChordTick, NextStepTick, WriteSlot;
SharedWord<int16_t> ChordChannel;
SharedWord<uint32_t> ChordStart, ChordDuration, BoardIndex, LastBoardIndex;
SharedWord<int32_t> PitchWalk;
SharedWord<uint32_t> PitchBoardMask = 31;

namespace {

// A message as the take keeps it; value3 and the rest stay 0.
MidiEvent message(uint8_t status, uint8_t data1, uint8_t data2) {
  return MidiEvent{SEND_NOW, status, data1, data2, 0, nullptr, 0, 0, 0, 0};
}

void play(uint8_t status, uint8_t data1, uint8_t data2) { MidiOutNow(TheMidiOut, status, data1, data2); }

// Plays a message, and while capturing also puts it into the take.
void playAndCapture(uint8_t status, uint8_t data1, uint8_t data2) {
  play(status, data1, data2);
  if (Capturing == 1) CaptureGeneratorEvent(message(status, data1, data2));
}

// The note-offs of one pass: every voice of every chord of the ring may end
// in the same pass, and they all go to the output in one call.
class Endings {
 public:
  // Adds a note-on of velocity 0 for each of the chord's voices, and frees its slot.
  void add(SoundingChord& chord) {
    const auto voices = static_cast<std::size_t>(std::clamp<int>(chord.voiceCount, 0, MaxVoices));
    for (std::size_t v = 0; v < voices; ++v) {
      const auto& voice = chord.voices[v];
      offs_[count_++] = uint32_t{static_cast<uint8_t>(0x90 | voice[0])} | uint32_t{voice[1]} << 8;
    }
    chord.offTime = 0;
  }

  // Plays them, and while capturing also puts them into the take.
  void send() const {
    if (count_ == 0) return;
    EndNotesNow(TheMidiOut, std::span(offs_.data(), count_));
    if (Capturing != 1) return;
    for (std::size_t i = 0; i < count_; ++i) {
      CaptureGeneratorEvent(message(static_cast<uint8_t>(offs_[i]), static_cast<uint8_t>(offs_[i] >> 8), 0));
    }
  }

 private:
  std::array<uint32_t, RingSlots * MaxVoices> offs_;
  std::size_t count_ = 0;
};

void endDueChords() {
  Endings endings;
  for (SoundingChord& chord : SoundingRing) {
    const uint32_t off = chord.offTime;
    if (off != 0 && off < Now) endings.add(chord);
  }
  endings.send();
}

void stepFunctions() {
  if (FunctionLength == 0 || FunctionsFilters == 0 || Now < NextStepTick) return;
  if (ControlPanelOpen == 1) {
    PostFunctionStep(FunctionIndex);
  } else {
    ApplyFunctionStep(FunctionIndex);
  }
  if (FunctionsRate != 0) NextStepTick += FunctionsRate;
  FunctionIndex += 1;
  if (FunctionIndex >= static_cast<uint32_t>(FunctionLength.load())) {
    FunctionIndex = 0;
    if (FunctionsPeriodic == 0) {
      Generating = 0;
      Draining = 1;
    }
  }
}

uint8_t drawNote() {
  const Bank& bank = LiveBank;
  const int16_t drawn = DrawWeighted(bank.noteWeights, NoteSum, bank.noteMin);
  if (IntervalMode == 0) return static_cast<uint8_t>(drawn);
  int32_t step = drawn;
  const auto coin = static_cast<int32_t>(tdrand() * 1.0 + 0.0 + 0.5);
  if (coin == Mirror) step = -step;
  int32_t walk = PitchWalk + step;
  while (walk < IntervalMin) walk += 12;
  while (walk > IntervalMax) walk -= 12;
  PitchWalk = walk;
  return static_cast<uint8_t>(walk);
}

void drawChord() {
  const Bank& bank = LiveBank;
  VelocityMask = 255;
  int16_t d = DrawWeighted(bank.densityWeights, DensitySum, bank.densityMin);
  if (VelocityMask == 0) d = 10;
  const uint32_t timeBase = TimeBase;
  NextChordTick += static_cast<uint32_t>(d) * timeBase / 120;
  if (FunctionsRate == 0) NextStepTick = NextChordTick.load();
  const int16_t length = DrawWeighted(bank.lengthWeights, LengthSum, bank.lengthMin);
  const int16_t l = Overlap != 0 ? length : static_cast<int16_t>(int32_t{length} * d / 120);
  ChordDuration = static_cast<uint32_t>(l) * timeBase / 100;
  ChordStart = Now.load();
  SoundingChord& chord = SoundingRing[WriteSlot];
  chord.offTime = Now + ChordDuration;
  LastBoardIndex = 0xFFFFFFFFu;
  chord.voiceCount = DrawWeighted(bank.voiceWeights, VoicesSum, bank.voicesMin);
  const int16_t channel = DrawChannel();
  ChordChannel = channel;
  for (int v = 0; v < chord.voiceCount; ++v) {
    auto& voice = chord.voices[v];
    voice[0] = static_cast<uint8_t>(channel);
    voice[1] = drawNote();
    voice[2] = static_cast<uint8_t>(DrawWeighted(bank.velocityWeights, VelocitySum, bank.velocityMin));
    playAndCapture(static_cast<uint8_t>(0x90 | channel), voice[1], static_cast<uint8_t>(voice[2] & VelocityMask));
  }
  WriteSlot = WriteSlot + 1 == RingSlots ? 0 : WriteSlot + 1;
}

// A curve's entry at the board index; the index runs on through the following
// curves, and past the last curve it reads 0.
uint8_t curveValue(uint32_t curve, uint32_t index) {
  const uint64_t flat = uint64_t{curve} * BoardPoints + index;
  if (flat >= uint64_t{BoardCount} * BoardPoints) return 0;
  return static_cast<uint8_t>(LiveBank.boardCurves[flat / BoardPoints][flat % BoardPoints].load());
}

void playBoards() {
  const uint32_t flags = LiveBank.boardFlags;
  if (flags == 0) return;
  const uint32_t duration = ChordDuration;
  // A chord of no length is over as it starts: its curves stand at their end.
  const uint32_t index = duration != 0 ? (Now - ChordStart) * 127 / duration : 127;
  BoardIndex = index;
  if (index == LastBoardIndex) return;
  LastBoardIndex = index;
  const auto channel = static_cast<uint8_t>(ChordChannel.load() & 0x0F);
  // Every board on is played; only the last message built goes into the take.
  std::array<uint8_t, 3> last{};
  auto board = [&last](uint8_t status, uint8_t data1, uint8_t data2) {
    last = {status, data1, data2};
    play(status, data1, data2);
  };
  if ((flags & PitchBoardMask) != 0) board(0xE0 | channel, 0, curveValue(SelectedPitchBoard, index));
  static constexpr uint8_t Controllers[4] = {1, 2, 7, 10};
  for (uint32_t b = 5; b <= 8; ++b) {
    if ((flags >> b & 1) != 0) board(0xB0 | channel, Controllers[b - 5], curveValue(b, index));
  }
  if ((flags >> 9 & 1) != 0) board(0xD0 | channel, curveValue(9, index), 0);
  // Bits that PitchBoardMask masks may leave no message built, and then nothing is taken.
  if (Capturing == 1 && last[0] != 0) CaptureGeneratorEvent(message(last[0], last[1], last[2]));
}

}  // namespace

int16_t DrawChannel() {
  // With no channel to draw (a mask never refreshed) the draw fails as any
  // other does: the chord goes out silent, on channel 1.
  return std::max<int16_t>(DrawWeighted(ChannelWeights, ChannelCount, 0), 0);
}

void GeneratorTick() {
  Now = ClockNow();
  endDueChords();
  stepFunctions();
  if (Now >= NextChordTick) drawChord();
  playBoards();
}

void GeneratorDrain() {
  Now = ClockNow();
  Draining = 0;
  Endings endings;
  for (SoundingChord& chord : SoundingRing) {
    const uint32_t off = chord.offTime;
    if (off == 0) continue;
    Draining = 1;
    if (off < Now) endings.add(chord);
  }
  endings.send();
  if (Draining == 1) return;
  platform::post(ControlBarControl(CMD_GENERATE), BUTTON_SET_STATE, 0, 0);
  if (Recording == 1 || Playing == 1) return;
  platform::post(ControlBarControl(CMD_METRONOME), BUTTON_SET_STATE, 0, 0);
  if (TheMidiOut != nullptr) TheMidiOut->flags.fetch_and(~METRONOME_ON);
  StopClockAtNow();
  ResetMidiOut(TheMidiOut);
}

void GeneratorReset() {
  if (FunctionLength != 0) ApplyFirstStep();
  FunctionIndex = 0;
  PitchWalk = FromNote.load();
  PitchBoardMask = 31;
  Now = ClockNow();
  NextStepTick = Now.load();
  NextChordTick = Now.load();
  tdseed(Seed);
}

void GeneratorToggle() {
  if (Generating == 1) {
    Generating = 0;
    Draining = 1;
    return;
  }
  if (Recording != 1 && Playing != 1) StartClockForGenerator();
  GeneratorReset();
  Generating.publish(1);  // the pass that sees it sees the reset too
}

void CaptureGeneratorEvent(MidiEvent event) {
  SyncClock* clock = TheClock;
  MidiInHandle* in = clock != nullptr ? clock->midiIn.load() : nullptr;
  // Capturing with no input bound to the clock has no ring to go to: the message is not taken.
  if (in == nullptr) return;
  const uint32_t now = clock->now;
  const uint32_t delta = now - in->lastEventTime;
  in->lastEventTime = now;
  WriteInputSlot(in, delta, PackedMessage(event));
  platform::send(in->window, platform::MIM_DATA, 0, reinterpret_cast<uintptr_t>(in));
}

void GeneratorStartUp() {
  LiveBank = Bank{};
  SetBankDefaults();
  InitFunctionArrays();
  FunctionsFilters = 0xFFFFFFFFu;  // the settings' default
  FunctionsPeriodic = 1;
  Seed = 0;
  IntervalMode = 0;
  ColumnTitles[NotesDistribution] = "Notes";
  FromNote = 60;
  IntervalMin = 0;
  IntervalMax = 127;
  Mirror = 0;
  PendingBoardFlags = 0;
  SelectedPitchBoard = 0;
  for (auto& chord : SoundingRing) chord.offTime = 0;
  WriteSlot = 0;
  FunctionIndex = 0;
  Generating = 0;
  Draining = 0;
}

void InstallGeneratorHooks() {
  ClockHooks.generatorTick = GeneratorTick;
  ClockHooks.generatorDrain = GeneratorDrain;
}
