#pragma once
// The song's tempo, held in three places that move together: the clock, the
// first event of the tempo track, and what the Control Bar shows. UI thread only; a running clock takes a new tempo at its
// next pass.

#include <cstdint>

#include "midi/midi_event.h"

// The part of the beats-per-minute value that the up-down control cannot hold.
extern double TempoFraction;

// The three tempo bytes of a meta event, high byte first.
uint32_t EventTempo(const MidiEvent& event);
// Microseconds per quarter note, from the tempo track's first event; the
// clock's while the tempo track holds no event.
uint32_t SongTempo();
// A tempo for the clock and the tempo track's first event, shown in the
// Control Bar. A tempo of 0 would stop time: it is refused and the old one stays.
void SetSongTempo(uint32_t microsecondsPerQuarter);
// SetSongTempo for a tempo that a whole set-up brings: TempoFraction takes
// the part of its beats per minute that the up-down control cannot hold, so
// that a step of the control goes on from the tempo shown.
void RecallSongTempo(uint32_t microsecondsPerQuarter);
// Starts the song at a tempo in beats per minute: outside 10 to 240 it is
// 100. The clock takes it and the Control Bar shows it; the tempo track is
// not written.
void StartTempo(double beatsPerMinute);
// The tempo track's first event becomes a tempo at time 0 holding the clock's tempo.
void WriteTempoEvent();

// The up-down control moved to a position: the clock, the field and the
// tempo track's first event follow, with TempoFraction kept.
void TempoEntry(int32_t position);
// NM_SONG_META: a tempo event of the song reached the clock (the Control Bar
// shows it), or a lyric event came due (the Lyrics view selects its span).
void SongMetaNotice(uint32_t type, uintptr_t param);
