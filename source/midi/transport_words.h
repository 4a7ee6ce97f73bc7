#pragma once
// The transport words: what the transport is doing now. Flags are 0 or 1 and
// are tested for the value 1. They live beside the clock because its pass,
// the input's callback and the generator read them on their threads; the UI
// thread's transport commands write them (Generating with publish, so that
// the pass sees the generator's reset with it).

#include <cstdint>

#include "platform/shared_word.h"

extern SharedWord<uint32_t> Playing;
extern SharedWord<uint32_t> Recording;
extern SharedWord<uint32_t> Capturing;   // input and the generator's notes go into the take
extern SharedWord<uint32_t> Generating;  // the generator runs in every pass; set with publish
extern SharedWord<uint32_t> Draining;    // the generator only ends what still sounds
extern SharedWord<uint32_t> Linked;      // the generator follows the transport
extern SharedWord<uint32_t> SongPosition;
