#pragma once
// Recording: moves what the input ring holds (played and generated events)
// into the take, in delta time, quantized on the way when asked, with doubled
// note-ons split and the keys still held closed at the end; and keeps the
// take as the record track when the user says so.
//
// Threads: all of it runs on the UI thread. The ring's producers are the
// input's driver callback and the generator's capture.

#include <array>
#include <cstdint>

#include "midi/midi_event.h"
#include "platform/message_loop.h"

// By key: bit c set while that key is held on channel c in the take.
extern std::array<uint32_t, 128> SoundingInput;
extern uint32_t QuantizeRecord;    // quantize on record is on; the Control Bar's 105 toggles it
extern uint32_t RecordResolution;  // grid of quantize on record, ticks
extern uint32_t RecordRounding;    // half the grid
extern uint32_t QuantizeFilters;   // kinds of event that quantize on record leaves alone
// Running sums of the deltas that quantize gave out and took in; never reset,
// so a take's last rounding error is paid off by the next take's first event.
extern uint32_t QuantizedClock;
extern uint32_t RawClock;

inline constexpr uint32_t RecordResolutionStart = 30;

// The Control Bar's answer to MIM_DATA: takes every waiting event of the
// input into the take, until the input is empty or the take is full.
void DrainInput(platform::MessageTarget* window);
// Stores one event in the take; quantize may change its time. When the take
// has just filled, a box tells so and Stop (100) is posted to window.
void RecordEvent(platform::MessageTarget* window, MidiEvent* e);
// Ends every key still held in the take, at the clock's time.
void CloseTakeNotes();
// The delta that quantize on record gives for a raw delta, moving both clocks.
uint32_t QuantizedDelta(uint32_t delta);

uint32_t GetQuantizeFilters();
void SetQuantizeFilters(uint32_t filters);
// The grid of quantize on record, and its rounding. A grid of 0 has no
// multiples: it is refused and the old grid stays; false then.
bool SetRecordResolution(uint32_t ticks);

// Yes to "Keep take?": the take replaces the record track, its name and settings.
void KeepTake();
