#pragma once
// The timed event of the whole system: the element of the output and input
// rings, the take, every song track, the region buffers and the Standard MIDI
// File arrays. A plain record, copied by value.

#include <cstdint>
#include <type_traits>

struct MidiEvent {
  // Ticks: absolute in a song track; a delta in a ring, in the take and in what
  // the file reader returns. SEND_NOW handed to MidiOut means "send at once".
  uint32_t time;
  uint8_t status;  // status byte with channel; 0xF0: one sysex byte; 0: meta event
  uint8_t value1;  // first data byte; the sysex byte; meta data
  uint8_t value2;
  uint8_t value3;  // 0 for channel messages; meta data
  // In a song track: a note's partner, null on a note-off without one, and the
  // event's own address on any other event. Event arrays never move while they live.
  MidiEvent* link;
  uint8_t playedChannel;  // note-on: channel it last went out on; lyric: low byte of its end
  uint8_t playedKey;      // note-on: key it last went out on
  uint8_t reserved;
  uint8_t metaType;  // META_TEMPO or META_LYRIC on a meta event
};
static_assert(std::is_trivially_copyable_v<MidiEvent>);
static_assert(std::is_standard_layout_v<MidiEvent>);

inline constexpr uint32_t SEND_NOW = 0xFFFFFFFFu;
inline constexpr uint8_t META_TEMPO = 81;
inline constexpr uint8_t META_LYRIC = 5;

// A key moved by an offset, folded back into 0..127 by whole octaves: -12
// folds to 12, not to 0.
constexpr int FoldKey(int k) {
  if (k < 0) return (k / -12 + 1) * 12 + k;
  if (k > 127) return k - ((k - 127) / 12 + 1) * 12;
  return k;
}

// The four bytes from status to value3 are the packed short message, status lowest.
constexpr uint32_t PackedMessage(const MidiEvent& event) {
  return uint32_t{event.status} | uint32_t{event.value1} << 8 | uint32_t{event.value2} << 16 |
         uint32_t{event.value3} << 24;
}

// Data bytes that follow a status byte, shared by the devices and the file
// layer. Sysex (0xF0) has its own framing and counts 0 here, as does a byte
// below 0x80, which is no status.
constexpr int MidiDataBytes(uint8_t status) {
  switch (status >> 4) {
    case 0x8:
    case 0x9:
    case 0xA:
    case 0xB:
    case 0xE:
      return 2;
    case 0xC:
    case 0xD:
      return 1;
    case 0xF:
      return (status & 0xF) == 2 ? 2 : (status & 0xF) == 1 || (status & 0xF) == 3 ? 1 : 0;
    default:
      return 0;
  }
}

// MidiFilter: a word of block bits by status, shared by output and input. A set
// bit blocks that kind of message.
using MidiFilter = uint32_t;

inline constexpr MidiFilter FILTER_NOTE_OFF = 1u << 0;
inline constexpr MidiFilter FILTER_NOTE_ON = 1u << 1;
inline constexpr MidiFilter FILTER_KEY_PRESSURE = 1u << 2;
inline constexpr MidiFilter FILTER_CONTROL_CHANGE = 1u << 3;
inline constexpr MidiFilter FILTER_PROGRAM_CHANGE = 1u << 4;
inline constexpr MidiFilter FILTER_CHANNEL_PRESSURE = 1u << 5;
inline constexpr MidiFilter FILTER_PITCH_BEND = 1u << 6;
inline constexpr MidiFilter FILTER_SYSEX = 1u << 7;

// The bit that blocks a status, or -1 for a status that no bit blocks: 0 (meta
// events) and 0xF7, and also bytes below 0x80, which are no status at all.
constexpr int MidiFilterBit(uint8_t status) {
  if (status >= 0x80 && status <= 0xEF) return (status >> 4) - 0x8;  // 0..6 by kind
  if (status >= 0xF0 && status <= 0xF6) return status - 0xF0 + 7;    // 7..13
  if (status >= 0xF8) return status - 0xF8 + 14;                     // 14..21
  return -1;
}

constexpr bool MidiFilterBlocks(MidiFilter filter, uint8_t status) {
  const int bit = MidiFilterBit(status);
  return bit >= 0 && (filter >> bit & 1u) != 0;
}
