#include "midi/midi_event.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstddef>
#include <cstring>

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

TEST(MidiEvent, CopiesByValueIncludingTheLink) {
  MidiEvent partner{};
  MidiEvent event{10, 0x90, 60, 64, 0, &partner, 3, 61, 0, 0};
  const MidiEvent copy = event;
  EXPECT_EQ(copy.link, &partner);
  EXPECT_EQ(copy.playedKey, 61);
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
