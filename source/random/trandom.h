#pragma once
// The generator's only source of chance: three linear congruential generators
// and a shuffle table of 97 entries. The same seed gives the same numbers.
//
// Threads: tdseed runs on the UI thread while the generator is off (or the
// clock is inside SYNC_IN_TICK); tdrand runs only on the clock's timer thread.
// The two never overlap, so the state is plain.

#include <cstdint>

// The seeds whose draws stay in range: below SeedMin the state turns
// negative, above SeedMax the seed's addition wraps to a negative state.
inline constexpr int32_t SeedMin = -54780;
inline constexpr int32_t SeedMax = 2147428874;
constexpr bool SeedInRange(int64_t seed) { return seed >= SeedMin && seed <= SeedMax; }

// Fills the state and the table. Any signed seed is taken as it is.
void tdseed(int32_t seed);

// Returns a number in [0, 1) for a non-negative state. A negative seed below
// -54780 drives the state negative; the table index then falls out of range
// and the process ends with the internal-error line and exit status 1.
double tdrand();

// Told the internal-error line before the process ends, on the thread that
// drew; the application shows it to the user. It should not return; if it
// does, the process ends as without it.
using InternalErrorHandler = void (*)(const char* line);
void SetInternalErrorHandler(InternalErrorHandler handler);

// Module state, exposed read-only for tests.
extern int32_t ix1, ix2, ix3;
