#pragma once
// Placing the clock and the metronome at a song position, as Play, Record,
// the generator button and End do before the clock starts.
//
// Threads: the UI thread, with the clock stopped, except where a function
// says otherwise: ClockNow reads the clock from any thread, PostSyncTick
// posts from any thread, and StopClockAtNow also runs in the clock's pass,
// when the generator's drain stops the clock it started.

#include <cstdint>

struct SyncClock;

// The clock's position fields, for its mode, at p.
void PlaceClock(SyncClock* clock, uint32_t p);
// nextBeat at p or the next beat after it, and the end of its click.
void PlaceMetronome(SyncClock* clock, uint32_t p);
// beat within the bar, the count-in's start and the click of the first beat.
void PlaceBeat(SyncClock* clock, uint32_t p);
// No count-in, the metronome's first beat at p, and its click switched on
// when it is set to sound during play.
void PrepareMetronome(uint32_t p);
// Places the clock and the beat at p, draws the counter, and starts the clock.
void StartClockAt(uint32_t p);
// Starts the clock at SongPosition for the generator alone, the song unfed.
void StartClockForGenerator();
// Stops the clock, keeps where it stopped in SongPosition, and has the
// Control Bar's counter drawn there.
void StopClockAtNow();
// SongPosition and the clock's time at p, and the counter drawn there.
void MoveSongPosition(uint32_t p);
// The clock's time in ticks; 0 while there is no clock.
uint32_t ClockNow();
// Posts NM_SYNC_TICK to the Control Bar, which draws the counter or ends the song.
void PostSyncTick();
