#pragma once
// The generator: on every pass of the clock it ends the chords that are due,
// steps the function arrays, draws a new chord when one is due, and plays the
// board curves inside the latest chord. Off, it drains what still sounds.
//
// Threads: GeneratorTick and GeneratorDrain run only in the clock's pass;
// GeneratorReset and GeneratorToggle on the UI thread, while the tick is not
// running (generator off, or the clock held off).

#include <array>
#include <cstdint>

#include "midi/midi_event.h"
#include "platform/shared_word.h"

inline constexpr int RingSlots = 120;
inline constexpr int MaxVoices = 32;

struct SoundingChord {
  SharedWord<uint32_t> offTime;                            // tick at which the chord ends; 0: the slot is free
  std::array<std::array<uint8_t, 3>, MaxVoices> voices{};  // channel, note, velocity as drawn
  int16_t voiceCount = 0;                                  // -1 after a failed voices draw
};

extern std::array<SoundingChord, RingSlots> SoundingRing;
extern SharedWord<uint32_t> Now, NextChordTick, NextStepTick, WriteSlot;
extern SharedWord<int16_t> ChordChannel;
extern SharedWord<uint32_t> ChordStart, ChordDuration, BoardIndex, LastBoardIndex;
extern SharedWord<int32_t> PitchWalk;
extern SharedWord<uint32_t> PitchBoardMask;

void GeneratorTick();
void GeneratorDrain();
void GeneratorReset();
// The generator button (command 200 of the Control Bar).
void GeneratorToggle();
// Puts a played message into the input ring of the clock's input, timed like
// input, and sends MIM_DATA to the input's window, waiting until the UI thread
// has taken it into the take. Timer thread, while Capturing.
void CaptureGeneratorEvent(MidiEvent event);
// The channel of a new chord, drawn over ChannelWeights.
int16_t DrawChannel();
// The generator's set-up as the program starts it, with the built-in default
// settings: the live record's defaults, the start-up function arrays, every
// set-up global at its start value, the ring empty and the generator off.
void GeneratorStartUp();
// Installs the tick and the drain in the clock's pass.
void InstallGeneratorHooks();
