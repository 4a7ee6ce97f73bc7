#pragma once
// What a device port may put on the wire. After a status byte every byte of a
// MIDI message is a data byte, below 0x80; a byte of 0x80 or above in a data
// place is a status to the receiver (0xFF resets a synthesizer). A damaged or
// hand-edited set-up can make the generator build such messages; the engine
// and its log keep them as built, and the ports drop them here and count them.

#include <array>
#include <cstdint>
#include <span>

#include "midi/midi_event.h"

// The top bits of a packed message's data places, for each status byte.
inline constexpr auto DataTopBits = [] {
  std::array<uint32_t, 256> bits{};
  for (int status = 0; status < 256; ++status) {
    const int data = MidiDataBytes(static_cast<uint8_t>(status));
    bits[static_cast<std::size_t>(status)] = data == 2 ? 0x808000u : data == 1 ? 0x8000u : 0u;
  }
  return bits;
}();

// A short message, packed status first: its data bytes are all below 0x80.
constexpr bool ShortMessageFitsWire(uint32_t word) { return (word & DataTopBits[word & 0xFF]) == 0; }

// A sysex buffer, whole or a part of one: only its first byte may be 0xF0 and
// only its last 0xF7; every other byte is data.
bool SysexFitsWire(std::span<const uint8_t> bytes);

// The messages the ports have dropped since the program started.
void CountDroppedMessage();
uint64_t DroppedMessages();
