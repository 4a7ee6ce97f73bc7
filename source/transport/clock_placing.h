#pragma once
// Placing the clock and the metronome at a song position, as Play, Record,
// the generator button and End do before the clock starts.

#include <cstdint>

struct SyncClock;

// The clock's position fields, for its mode, at p.
void PlaceClock(SyncClock* clock, uint32_t p);
// nextBeat at p or the next beat after it, and the end of its click.
void PlaceMetronome(SyncClock* clock, uint32_t p);
// beat within the bar, the count-in's start and the click of the first beat.
void PlaceBeat(SyncClock* clock, uint32_t p);
// Starts the clock at SongPosition for the generator alone, the song unfed.
void StartClockForGenerator();

// The song's tempo in microseconds per quarter note, as the tempo track's
// first event holds it; setting it sets the clock's tempo too. A tempo of 0
// would stop time: it is refused and the old one stays.
uint32_t SongTempo();
void SetSongTempo(uint32_t microsecondsPerQuarter);
