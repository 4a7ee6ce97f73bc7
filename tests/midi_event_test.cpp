#include "midi/midi_event.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <vector>

#include "midi/backends/loopback.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"

namespace {

TEST(MidiEvent, FieldsStandInTheirOrder) {
  EXPECT_EQ(offsetof(MidiEvent, time), 0u);
  EXPECT_EQ(offsetof(MidiEvent, status), 4u);
  EXPECT_EQ(offsetof(MidiEvent, value1), 5u);
  EXPECT_EQ(offsetof(MidiEvent, value2), 6u);
  EXPECT_EQ(offsetof(MidiEvent, value3), 7u);
  EXPECT_LT(offsetof(MidiEvent, value3), offsetof(MidiEvent, link));
  EXPECT_LT(offsetof(MidiEvent, link), offsetof(MidiEvent, playedChannel));
  EXPECT_EQ(offsetof(MidiEvent, playedKey), offsetof(MidiEvent, playedChannel) + 1);
  EXPECT_EQ(offsetof(MidiEvent, reserved), offsetof(MidiEvent, playedChannel) + 2);
  EXPECT_EQ(offsetof(MidiEvent, metaType), offsetof(MidiEvent, playedChannel) + 3);
}

TEST(MidiEvent, PackedMessageHasTheStatusLowest) {
  const MidiEvent event{0, 0x93, 60, 100, 0, nullptr, 0, 0, 0, 0};
  EXPECT_EQ(PackedMessage(event), 0x00643C93u);
}

TEST(MidiEvent, TheFourBytesFromStatusAreThePackedWordInMemory) {
  if constexpr (std::endian::native == std::endian::little) {
    const MidiEvent event{7, 0xB2, 7, 90, 0, nullptr, 0, 0, 0, 0};
    uint32_t word = 0;
    std::memcpy(&word, &event.status, sizeof word);
    EXPECT_EQ(word, PackedMessage(event));
  }
}

// What the clock's pass hands the shaping hook, which follows a note's link.
MidiEvent shaped{};

// An event handed to an output goes into its ring as a copy, link and all: the
// caller may reuse its record at once, and the pass still shapes the event as
// it was queued, with the partner it had.
TEST(MidiEvent, CopiesByValueIncludingTheLink) {
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices;
  devices.setRecording(true);
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  ClockHooks = {};
  ClockHooks.shapeEvent = [](SyncClock*, MidiOutHandle*, MidiEvent* event) { shaped = *event; };
  shaped = MidiEvent{};
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
  ASSERT_EQ(OpenSync(&clock, nullptr, SYNC_INTERNAL, 10), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  ASSERT_EQ(OpenMidiOut(&out, nullptr, 0, clock, MIDI_OPEN_WORD), 0u);
  MidiEvent partner{};
  MidiEvent event{0, 0x90, 60, 64, 0, &partner, 3, 61, 0, 0};
  ASSERT_EQ(MidiOut(out, &event), 0u);
  event = MidiEvent{0, 0x91, 72, 1, 0, nullptr, 0, 0, 0, 0};  // the record is reused before the pass
  StartSync(clock);
  timers.step();
  EXPECT_EQ(shaped.link, &partner);
  EXPECT_EQ(shaped.status, 0x90);
  EXPECT_EQ(shaped.value1, 60);
  EXPECT_EQ(shaped.value2, 64);
  EXPECT_EQ(shaped.playedChannel, 3);
  EXPECT_EQ(shaped.playedKey, 61);
  std::vector<uint32_t> words;
  for (const auto& sent : devices.sent()) words.push_back(sent.word);
  EXPECT_NE(std::find(words.begin(), words.end(), 0x00403C90u), words.end()) << "the queued note went out";
  EXPECT_EQ(std::find(words.begin(), words.end(), 0x00014891u), words.end()) << "the reused record did not";
  CloseSync(&clock);
  CloseMidiOut(&out);
  loop.pump();
  ClockHooks = {};
}

TEST(MidiFilter, ChannelMessagesTakeBitsZeroToSixByKindOnEveryChannel) {
  for (int channel = 0; channel < 16; ++channel) {
    for (int kind = 0; kind < 7; ++kind) {
      EXPECT_EQ(MidiFilterBit(static_cast<uint8_t>(0x80 + kind * 16 + channel)), kind);
    }
  }
}

TEST(MidiFilter, SystemMessagesTakeTheirBits) {
  const std::pair<uint8_t, int> table[] = {{0xF0, 7},  {0xF1, 8},  {0xF2, 9},  {0xF3, 10}, {0xF4, 11},
                                           {0xF5, 12}, {0xF6, 13}, {0xF8, 14}, {0xF9, 15}, {0xFA, 16},
                                           {0xFB, 17}, {0xFC, 18}, {0xFD, 19}, {0xFE, 20}, {0xFF, 21}};
  for (const auto& [status, bit] : table) EXPECT_EQ(MidiFilterBit(status), bit) << std::hex << int{status};
}

TEST(MidiFilter, MetaEventsAndEndOfSysexAlwaysPass) {
  EXPECT_FALSE(MidiFilterBlocks(0xFFFFFFFFu, 0x00));
  EXPECT_FALSE(MidiFilterBlocks(0xFFFFFFFFu, 0xF7));
}

TEST(MidiFilter, DataBytesInPlaceOfAStatusPass) {
  for (int byte = 1; byte < 0x80; ++byte) EXPECT_FALSE(MidiFilterBlocks(0xFFFFFFFFu, static_cast<uint8_t>(byte)));
}

TEST(MidiFilter, EachStatusIsBlockedByItsOwnBitAlone) {
  for (int status = 0x80; status <= 0xFF; ++status) {
    if (status == 0xF7) continue;
    const int bit = MidiFilterBit(static_cast<uint8_t>(status));
    ASSERT_GE(bit, 0);
    EXPECT_TRUE(MidiFilterBlocks(1u << bit, static_cast<uint8_t>(status)));
    EXPECT_FALSE(MidiFilterBlocks(~(1u << bit), static_cast<uint8_t>(status)));
  }
}

TEST(MidiFilter, TheInputsOpeningFilterLetsOnlyChannelMessagesThrough) {
  constexpr MidiFilter opening = 0x3FFF80;
  EXPECT_EQ(opening, 4194176u);
  for (int status = 0x80; status <= 0xEF; ++status)
    EXPECT_FALSE(MidiFilterBlocks(opening, static_cast<uint8_t>(status)));
  for (int status = 0xF0; status <= 0xFF; ++status) {
    EXPECT_EQ(MidiFilterBlocks(opening, static_cast<uint8_t>(status)), status != 0xF7) << std::hex << status;
  }
}

TEST(MidiFilter, ClearingTheSyncBitsLetsClockStartContinueAndStopThrough) {
  constexpr MidiFilter sync = 0x3FFF80 & ~0x74000u;
  for (int status : {0xF8, 0xFA, 0xFB, 0xFC}) EXPECT_FALSE(MidiFilterBlocks(sync, static_cast<uint8_t>(status)));
  EXPECT_TRUE(MidiFilterBlocks(sync, 0xF1));
  EXPECT_TRUE(MidiFilterBlocks(sync, 0xF0));
}

}  // namespace
