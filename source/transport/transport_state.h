#pragma once
// The transport words: what the transport is doing now. Flags are 0 or 1 and
// are tested for the value 1. The UI thread writes them; the clock's pass,
// the generator and the device callbacks read them.

#include <cstdint>

#include "platform/shared_word.h"

extern SharedWord<uint32_t> Playing;
extern SharedWord<uint32_t> Recording;
extern SharedWord<uint32_t> Capturing;   // input and the generator's notes go into the take
extern SharedWord<uint32_t> Generating;  // the generator runs in every pass
extern SharedWord<uint32_t> Draining;    // the generator only ends what still sounds
extern SharedWord<uint32_t> Linked;      // the generator follows the transport
extern SharedWord<uint32_t> SongPosition;
