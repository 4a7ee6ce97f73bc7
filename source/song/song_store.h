#pragma once
// The song: 256 song tracks and the tempo track, each an array of events
// sorted by time with the settings that shape it at output.
//
// Threads: the UI thread changes tracks only while the transport is stopped;
// the clock's pass reads settings while it plays, and a change of a setting
// takes effect at the next event.

#include <array>
#include <cstdint>

#include "midi/midi_event.h"
#include "platform/shared_word.h"

inline constexpr std::size_t SongTrackCount = 256;
inline constexpr std::size_t TempoTrack = 256;

struct TrackRecord {
  uint32_t cursor = 0;     // index of the next event
  uint32_t count = 0;      // events in the array
  uint32_t remaining = 0;  // events left from cursor
  MidiEvent* events = nullptr;
  int8_t keyOffset = 0;       // semitones added to each note at output
  int8_t velocityOffset = 0;  // added to each note-on's velocity at output
  uint8_t channel = 255;      // 0..15 forces the channel; 255: the events keep their own
  uint8_t playOff = 0;        // 1: note-ons go out with velocity 0
  uint8_t pan = 255;          // controller 10; 255: none
  uint8_t patch = 255;        // program; 255: none
  uint8_t volume = 255;       // controller 7; 255: none
  uint32_t timeOffset = 0;    // ticks added to every event time at output
  uint16_t repeats = 0;       // extra passes through the track
};

extern std::array<TrackRecord, SongTrackCount + 1> Tracks;
extern SharedWord<uint32_t> TicksPerBar;

// A key moved by an offset, folded back into 0..127 by whole octaves: -12
// folds to 12, not to 0.
int FoldKey(int key);
