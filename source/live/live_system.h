#pragma once
// The live system that the Control Bar owns, without its window: at the bar's
// creation the settings are read and the clock and both MIDI devices opened;
// at its destruction the settings are saved and everything closed again.
// UI thread only.

#include <cstdint>

#include "live/settings.h"
#include "platform/message_loop.h"

// The Control Bar's creation after its controls exist: the live Bank's
// defaults, the settings, an empty song at 120 ticks a quarter and 60 beats
// a minute, the clock (internal, 10 ms) and its window, the input and the
// output from the settings (a device that cannot be opened is told in the
// driver's words and the next one is tried), the meter, the metronome and
// thru from the settings, each held to its range, and the input started. The
// Control Bar's fields and buttons and the frame's check marks are reached
// through the view registry and ControlBarControl, if present. Sets
// ControlBarWindow to window, and installs the generator and the feed in the
// clock's pass. The generator's own start-up (GeneratorStartUp) must come
// before this, not after: it would put FunctionsFilters back to its default.
void StartLiveSystem(platform::MessageTarget* window);

// The record as the live state has it now: the devices open, the meter, the
// metronome's texts read back as numbers, and the three flags as 1 or 0.
void CollectSettings(SettingsRecord& settings);

// The Control Bar's destruction: the settings collected and saved, the input
// stopped, an open MIDI file closed, the clock, the input and the output
// closed (the clock first, so that the output's clock pointer is cleared
// while both exist), and every track's events and name freed. The window
// handles are the window owner's affair and stay.
void StopLiveSystem();

// Opens the live input or output (TheMidiIn, TheMidiOut) on ControlBarWindow
// and TheClock with the open word 209696. A failure is shown in the driver's
// words, in a box titled "Velmora" with a stop icon. The open's result.
uint32_t OpenLiveInput(uint32_t device);
uint32_t OpenLiveOutput(uint32_t device);

// Sets or clears a flag of the live input's or output's flags word (MIDI_THRU,
// METRONOME_RECORD, ...); nothing while the device is not open.
void SetMidiInFlag(uint32_t flag, bool on);
void SetMidiOutFlag(uint32_t flag, bool on);
bool MidiInFlag(uint32_t flag);
bool MidiOutFlag(uint32_t flag);

// The feed's initialisation, given the addresses of FeedRemaining,
// ActiveTrackCount, ActiveTracks, RecordTrack, Capturing, Tracks,
// FeedLastTime and TicksPerBar. The feed reaches these as globals, so it
// does nothing; it is called once at start-up.
void MyIni(void* feedRemaining, void* activeTrackCount, void* activeTracks, void* recordTrack, void* capturing,
           void* tracks, void* feedLastTime, void* ticksPerBar);
