#include "midi/backends/wire_check.h"

#include <gtest/gtest.h>

#include <vector>

#include "midi/backends/loopback.h"
#include "platform/midi_devices.h"

using namespace platform;

namespace {

TEST(WireCheck, ChannelMessagesFitOnlyWithEveryDataByteBelow0x80) {
  EXPECT_TRUE(ShortMessageFitsWire(0x7F7F90u));
  EXPECT_FALSE(ShortMessageFitsWire(0x00FF90u)) << "a failed note draw's key 255";
  EXPECT_FALSE(ShortMessageFitsWire(0x803C90u)) << "velocity 128";
  EXPECT_FALSE(ShortMessageFitsWire(0xC801E0u)) << "a pitch bend of 200";
  EXPECT_FALSE(ShortMessageFitsWire(0xFF07B0u)) << "a controller value of -1";
}

TEST(WireCheck, OnlyTheDataPlacesOfTheStatusAreLookedAt) {
  EXPECT_TRUE(ShortMessageFitsWire(0xFF05C0u)) << "a program change has one data byte";
  EXPECT_TRUE(ShortMessageFitsWire(0xFF40D0u)) << "channel pressure has one data byte";
  EXPECT_FALSE(ShortMessageFitsWire(0x00C8D0u)) << "a pressure of 200";
  EXPECT_TRUE(ShortMessageFitsWire(0xFFFFF8u)) << "a clock byte has none";
  EXPECT_FALSE(ShortMessageFitsWire(0x0080F2u)) << "a song position pointer has two";
  EXPECT_TRUE(ShortMessageFitsWire(0x007FF2u));
}

TEST(WireCheck, SysexMayOpenWith0xF0AndCloseWith0xF7Only) {
  EXPECT_TRUE(SysexFitsWire(std::vector<uint8_t>{0xF0, 0x7E, 0x7F, 0x09, 0x01, 0xF7}));
  EXPECT_TRUE(SysexFitsWire(std::vector<uint8_t>{0x01, 0x02, 0xF7})) << "the last part of a long message";
  EXPECT_TRUE(SysexFitsWire(std::vector<uint8_t>{0xF0, 0x01, 0x02})) << "the first part of one";
  EXPECT_TRUE(SysexFitsWire(std::vector<uint8_t>{}));
  EXPECT_FALSE(SysexFitsWire(std::vector<uint8_t>{0xF0, 0x41, 0xFF, 0xF7}));
  EXPECT_FALSE(SysexFitsWire(std::vector<uint8_t>{0xF0, 0xF7, 0x01, 0xF7})) << "an end in the middle";
  EXPECT_FALSE(SysexFitsWire(std::vector<uint8_t>{0x01, 0xF0, 0xF7})) << "a start in the middle";
}

struct Received {
  std::vector<uint32_t> words;
  static void callback(MidiInPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t) {
    if (message == MIM_DATA) reinterpret_cast<Received*>(instance)->words.push_back(static_cast<uint32_t>(param1));
  }
};

TEST(WireCheck, TheLoopbackLogsWhatItIsSentButItsCableCarriesOnlyWhatFits) {
  LoopbackDevices devices;
  devices.setRecording(true);
  Received received;
  std::unique_ptr<MidiInPort> in;
  std::unique_ptr<MidiOutPort> out;
  ASSERT_EQ(devices.inOpen(0, &Received::callback, reinterpret_cast<uintptr_t>(&received), in), 0u);
  ASSERT_EQ(in->start(), 0u);
  ASSERT_EQ(devices.outOpen(0, nullptr, 0, out), 0u);
  const uint64_t before = DroppedMessages();
  for (uint32_t word : {0x403C90u, 0x00FF90u, 0x003C90u}) EXPECT_EQ(out->shortMsg(word), MMSYSERR_NOERROR);
  EXPECT_EQ(received.words, (std::vector<uint32_t>{0x403C90u, 0x003C90u}));
  EXPECT_EQ(DroppedMessages() - before, 1u);
  ASSERT_EQ(devices.sent().size(), 3u) << "the log keeps what the engine sent";
  EXPECT_EQ(devices.sent()[1].word, 0x00FF90u);
  in->stop();
  in->close();
  out->close();
}

}  // namespace
