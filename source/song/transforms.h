#pragma once
// The five transforms of the Edit menu: Quantize, Length, Slide, Transpose and
// Velocity. Each works in place on the events of the region (EditFrom to
// EditTo) in every selected track. A note moves as a pair: its note-on decides
// whether it is in the region, and its note-off goes along wherever it lies;
// note-offs are never touched for themselves. Quantize, Length and Slide sort
// and link each track again afterwards; Transpose and Velocity need not.
//
// The settings survive from one use to the next, across New and Open too.
// UI thread only, with the transport stopped: the spans are the tracks'
// cursor and remaining, which the feed sets again at every start.

#include <array>
#include <cstdint>

#include "song/song_store.h"

extern int32_t QuantizeGrid;      // ticks, at least 1
extern int32_t QuantizeStrength;  // percent of the way to the grid point
extern int32_t QuantizeSwing;     // percent of the double grid step given to its first half
extern int32_t QuantizeWindow;    // percent of the grid within which an event moves at all
extern int32_t QuantizeOffset;    // ticks by which the grid is shifted
extern uint32_t QuantizeStart;    // 1: the times of events change
extern uint32_t QuantizeDuration; // 1: note ends are quantized as points of their own
extern uint32_t LengthStart;      // 1: the times of events are scaled
extern uint32_t LengthDuration;   // 1: the durations of notes are scaled
extern uint32_t SlideInTicks;     // 1 ticks, 0 measures
extern double SlideAmount;        // ticks
extern int32_t TransposeAmount;   // semitones
extern int32_t VelocityBegin, VelocityEnd;

// The grid's two steps with swing: the first half and the rest of a double step.
std::array<double, 2> QuantizeSteps();
// The window in ticks.
uint32_t QuantizeWindowTicks();
// A time moved toward the nearest swung, shifted grid point by the strength,
// unless it lies farther than window from the straight grid; never below 0.
uint32_t QuantizeTime(uint32_t t, const std::array<double, 2>& s, uint32_t window);

// Each works on the span that ScanTrack left in the track's cursor and
// remaining, and uses it up; an empty span changes nothing.
void QuantizeTrack(TrackRecord* t);
// percent scales from tick 0 of the song; the products wrap at 32 bits.
void LengthTrack(TrackRecord* t, int32_t percent);
void SlideTrack(TrackRecord* t, double amount);
void TransposeTrack(TrackRecord* t);
void VelocityTrack(TrackRecord* t);

// The commands after their dialog's OK: every selected track, then the
// Events list rebuilt (Quantize, Length, Slide) or repainted.
void QuantizeSelectedTracks();
void LengthSelectedTracks(int32_t percent);
// The earliest event of the selected regions stops at tick 0: the amount is
// held so that the others keep their distance from it.
void SlideSelectedTracks();
void TransposeSelectedTracks();
void VelocitySelectedTracks();
