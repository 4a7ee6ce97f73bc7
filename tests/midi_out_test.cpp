#include "midi/midi_out.h"

#include <gtest/gtest.h>

#include "support/midi_fixture.h"

using namespace platform;

namespace {

using MidiOutTest = MidiBench;

std::size_t chainLength(const SysexNode* node) {
  std::size_t length = 0;
  for (; node != nullptr; node = node->next.load()) ++length;
  return length;
}

TEST_F(MidiOutTest, OpenWithTheApplicationsWordSetsUpRingBuffersAndFlags) {
  openClockAndOutput();
  EXPECT_EQ(out->flags.load(), MIDI_OPEN_WORD & 0xFFFFF);
  EXPECT_EQ(out->filter.load(), 0u);
  EXPECT_EQ(out->sysexSize, 512u);
  EXPECT_EQ(out->ringSize, 512u);
  EXPECT_EQ(chainLength(out->sysexHead), 32u);
  EXPECT_EQ(out->sysexList.load(), out->sysexHead);
  EXPECT_EQ(out->clock.load(), clock);
  EXPECT_EQ(clock->outputs[0].load(), out);
  EXPECT_EQ(clock->outputs[1].load(), nullptr);
  EXPECT_EQ(LastMidiOut.load(), out);
  EXPECT_TRUE(devices.outputOpen());
}

TEST_F(MidiOutTest, WithoutSysexTheFilterBlocksSysexAndNoBuffersAreMade) {
  openOutputWithoutClock(MIDI_SYNC | 3u << 12);
  EXPECT_EQ(out->filter.load(), FILTER_SYSEX);
  EXPECT_EQ(out->sysexHead, nullptr);
}

TEST_F(MidiOutTest, ABadDeviceNumberIsRefusedButTheMapperIsNot) {
  EXPECT_EQ(OpenMidiOut(&out, &window, 1, nullptr, MIDI_OPEN_WORD), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(OpenMidiOut(&out, &window, MIDI_MAPPER, nullptr, MIDI_OPEN_WORD), 0u);
}

TEST_F(MidiOutTest, AStaleHandleValueIsClearedAndRefused) {
  MidiOutHandle stale;
  out = &stale;
  EXPECT_EQ(OpenMidiOut(&out, &window, 0, nullptr, MIDI_OPEN_WORD), MIDI_OUT_FAILED);
  EXPECT_EQ(out, nullptr);
}

TEST_F(MidiOutTest, ADeviceThatCannotOpenReturnsItsErrorAndKeepsTheLastOutput) {
  openOutputWithoutClock();
  MidiOutHandle* second = nullptr;
  EXPECT_EQ(OpenMidiOut(&second, &window, 0, nullptr, MIDI_OPEN_WORD), MMSYSERR_ALLOCATED);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(LastMidiOut.load(), out);
}

TEST_F(MidiOutTest, NullHandlesAreHarmless) {
  MidiEvent e = event(SEND_NOW, 0x90, 60, 100);
  EXPECT_EQ(MidiOut(nullptr, &e), MIDI_OUT_FAILED);
  EXPECT_EQ(GetMidiOutFilters(nullptr), 0u);
  EXPECT_EQ(ResetMidiOut(nullptr), 1u);
  EXPECT_EQ(ResetNotesAndControllers(nullptr), 1u);
  MidiOutHandle* none = nullptr;
  EXPECT_EQ(CloseMidiOut(&none), 0u);
  SetMidiOutFilters(nullptr, 0);
  FlushMidiOut(nullptr);
}

TEST_F(MidiOutTest, AnImmediateSysexByteSendsNothing) {
  openOutputWithoutClock();
  EXPECT_EQ(put(SEND_NOW, 0xF0, 0xF0), 0u);
  loop.pump();
  EXPECT_TRUE(devices.sent().empty());
}

TEST_F(MidiOutTest, AnImmediateMessageGoesOutAtOnceUnfilteredAndIsNoted) {
  openOutputWithoutClock();
  SetMidiOutFilters(out, FILTER_NOTE_ON);
  EXPECT_EQ(put(SEND_NOW, 0x93, 60, 100), 0u);
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x643C93});
  EXPECT_EQ(out->soundingNotes[60].load(), 1u << 3);
  EXPECT_TRUE(loop.pending().empty()) << "immediate messages do not touch the ring";
}

TEST_F(MidiOutTest, AnImmediateMessageIsRetriedWhileTheDeviceIsNotReady) {
  openOutputWithoutClock();
  devices.answerNotReady(3);
  EXPECT_EQ(put(SEND_NOW, 0x90, 60, 100), 0u);
  EXPECT_EQ(sentWords().size(), 1u);
}

TEST_F(MidiOutTest, ADeviceThatIsNeverReadyIsGivenUpOnInTheEnd) {
  openOutputWithoutClock();
  devices.answerNotReady(2000000);
  EXPECT_EQ(SendShortWithRetry(out, 0x643C90), MIDIERR_NOTREADY);
  EXPECT_TRUE(sentWords().empty());
}

TEST_F(MidiOutTest, NoteEndingsGoOutInOrderInOneCallAndLeaveTheTableOfSoundingNotes) {
  openOutputWithoutClock();
  put(SEND_NOW, 0x90, 60, 100);
  put(SEND_NOW, 0x92, 64, 100);
  devices.clearSent();
  const std::vector<uint32_t> offs{0x003C90, 0x004092, 0x003C90, 0x004392};
  EndNotesNow(out, offs);
  EXPECT_EQ(sentWords(), offs);
  EXPECT_EQ(out->soundingNotes[60].load(), 0u);
  EXPECT_EQ(out->soundingNotes[64].load(), 0u);
}

TEST_F(MidiOutTest, NoteEndingsRefusedAsNotReadyAreRetriedAndNoneIsLostOrDoubled) {
  openOutputWithoutClock();
  std::vector<uint32_t> offs;
  for (uint32_t key = 0; key < 40; ++key) offs.push_back(0x90 | key << 8);
  devices.answerNotReady(5);
  EndNotesNow(out, offs);
  EXPECT_EQ(sentWords(), offs);
}

TEST(MidiOutPort, TheDefaultBurstSendsEachAndStopsAtTheFirstNotReady) {
  struct Port final : platform::MidiOutPort {
    std::vector<uint32_t> words;
    uint32_t shortMsg(uint32_t word) override {
      if (word == 0xFE) return platform::MIDIERR_NOTREADY;
      words.push_back(word);
      return platform::MMSYSERR_NOERROR;
    }
    uint32_t longMsg(platform::MidiHeader&) override { return 0; }
    uint32_t reset() override { return 0; }
    uint32_t close() override { return 0; }
  } port;
  const std::vector<uint32_t> burst{0x90, 0x190, 0xFE, 0x290};
  std::size_t sent = 99;
  EXPECT_EQ(port.shortMsgs(burst, sent), platform::MIDIERR_NOTREADY);
  EXPECT_EQ(sent, 2u);
  EXPECT_EQ(port.shortMsgs(std::span(burst).first(2), sent), platform::MMSYSERR_NOERROR);
  EXPECT_EQ(sent, 2u);
}

TEST_F(MidiOutTest, ARepeatedImmediateNoteOnSoundsAndIsThenCut) {
  openOutputWithoutClock();
  put(SEND_NOW, 0x90, 60, 100);
  put(SEND_NOW, 0x90, 60, 90);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x643C90, 0x5A3C90, 0x003C90}));
  EXPECT_EQ(out->soundingNotes[60].load(), 1u) << "the bit stays set";
}

TEST_F(MidiOutTest, NoteOffsAndZeroVelocityNoteOnsClearTheNote) {
  openOutputWithoutClock();
  put(SEND_NOW, 0x90, 60, 100);
  put(SEND_NOW, 0x91, 60, 100);
  put(SEND_NOW, 0x80, 60, 0);
  EXPECT_EQ(out->soundingNotes[60].load(), 2u);
  put(SEND_NOW, 0x91, 60, 0);
  EXPECT_EQ(out->soundingNotes[60].load(), 0u);
}

TEST_F(MidiOutTest, MessagesThatAreNotNotesAreNotNoted) {
  openOutputWithoutClock();
  put(SEND_NOW, 0xB0, 7, 100);
  put(SEND_NOW, 0xA0, 60, 100);
  for (const auto& entry : out->soundingNotes) EXPECT_EQ(entry.load(), 0u);
}

TEST_F(MidiOutTest, WithoutAClockTheRingIsSentByTheHiddenWindowTimesIgnored) {
  openOutputWithoutClock();
  put(1000, 0x90, 60, 100);
  put(5000, 0x80, 60, 0);
  EXPECT_TRUE(devices.sent().empty());
  const auto pending = loop.pending();
  ASSERT_EQ(pending.size(), 2u);
  EXPECT_EQ(pending[0].msg, NM_OUT_FLUSH);
  EXPECT_EQ(pending[0].param2, reinterpret_cast<uintptr_t>(out));
  devices.answerNotReady(2);  // retried on this road
  loop.pump();
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x643C90, 0x003C80}));
  EXPECT_EQ(out->ringCount.load(), 0u);
  EXPECT_EQ(out->soundingNotes[60].load(), 0u);
}

TEST_F(MidiOutTest, TheRingTakes512EventsThenRefusesAndItsWriteIndexReaches512BeforeWrapping) {
  openClockAndOutput();
  for (int i = 0; i < 512; ++i) ASSERT_EQ(put(0, 0x90, 60, 1), 0u) << i;
  EXPECT_EQ(out->writeIndex.load(), 512u);
  EXPECT_EQ(put(0, 0x90, 60, 1), MIDI_OUT_FAILED);
  EXPECT_EQ(out->ringCount.load(), 512u);
  out->readIndex = 1;  // as if the clock had taken one
  out->ringCount = 511;
  EXPECT_EQ(put(0, 0x90, 61, 1), 0u);
  EXPECT_EQ(out->ring[512].value1, 61);
  EXPECT_EQ(out->writeIndex.load(), 0u);
}

TEST_F(MidiOutTest, ResetWithNothingSoundingStillResetsTheDeviceAndEmptiesTheRing) {
  openClockAndOutput();
  put(0, 0x90, 60, 1);
  EXPECT_EQ(ResetMidiOut(out), 0u);
  EXPECT_EQ(devices.resetCount(), 1u);
  EXPECT_EQ(out->ringCount.load(), 0u);
  EXPECT_TRUE(sentWords().empty());
}

TEST_F(MidiOutTest, ResetEndsEverySoundingNoteByKeyThenChannelWithoutNotingIt) {
  openOutputWithoutClock();
  put(SEND_NOW, 0x95, 64, 100);
  put(SEND_NOW, 0x92, 64, 100);
  put(SEND_NOW, 0x90, 60, 100);
  devices.clearSent();
  ResetMidiOut(out);
  EXPECT_EQ(sentWords(), (std::vector<uint32_t>{0x003C90, 0x004092, 0x004095}));
  for (const auto& entry : out->soundingNotes) EXPECT_EQ(entry.load(), 0u);
}

TEST_F(MidiOutTest, FlushEmptiesTheRingButLeavesTheSoundingNotes) {
  openClockAndOutput();
  put(SEND_NOW, 0x90, 60, 100);
  put(0, 0x90, 62, 100);
  FlushMidiOut(out);
  EXPECT_EQ(out->ringCount.load(), 0u);
  EXPECT_EQ(out->writeIndex.load(), 0u);
  EXPECT_EQ(out->readIndex.load(), 0u);
  EXPECT_EQ(out->soundingNotes[60].load(), 1u);
  EXPECT_EQ(sentWords().size(), 1u);
}

TEST_F(MidiOutTest, ResetNotesAndControllersSends128MessagesInTheirOrderWithoutRetry) {
  openOutputWithoutClock();
  EXPECT_EQ(ResetNotesAndControllers(out), 0u);
  const auto words = sentWords();
  ASSERT_EQ(words.size(), 128u);
  const uint32_t controllers[8][2] = {{1, 0}, {7, 90}, {10, 64}, {64, 0}, {66, 0}, {67, 0}, {121, 0}, {123, 0}};
  for (int c = 0; c < 8; ++c) {
    for (uint32_t channel = 0; channel < 16; ++channel) {
      EXPECT_EQ(words[c * 16 + channel], 0xB0 | channel | controllers[c][0] << 8 | controllers[c][1] << 16);
    }
  }
  devices.clearSent();
  devices.answerNotReady(1);
  ResetNotesAndControllers(out);
  EXPECT_EQ(sentWords().size(), 127u) << "the refused one is not tried again";
}

// Plays a sysex message of the given length into an output without a clock.
void playSysex(MidiOutHandle* out, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const auto byte = static_cast<uint8_t>(i == 0 ? 0xF0 : i + 1 == length ? 0xF7 : i % 128);
    MidiEvent e{0, 0xF0, byte, 0, 0, nullptr, 0, 0, 0, 0};
    ASSERT_EQ(MidiOut(out, &e), 0u);
  }
}

TEST_F(MidiOutTest, ASysexMessageOfExactlyOneBufferIsSentOnce) {
  openOutputWithoutClock();
  playSysex(out, 512);
  ASSERT_EQ(loop.pending().size(), 1u);
  EXPECT_EQ(loop.pending()[0].msg, NM_SYSEX_OUT_SEND);
  loop.pump();
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].bytes.size(), 512u);
  EXPECT_EQ(sent[0].bytes.front(), 0xF0);
  EXPECT_EQ(sent[0].bytes.back(), 0xF7);
  EXPECT_EQ(chainLength(out->sysexHead), 32u) << "a fresh buffer replaces the one sent";
  EXPECT_EQ(out->sentList, nullptr) << "released when the driver was done";
}

TEST_F(MidiOutTest, ALongSysexMessageGoesOutInBuffersOfSysexSize) {
  openOutputWithoutClock();
  playSysex(out, 1200);
  loop.pump();
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 3u);
  EXPECT_EQ(sent[0].bytes.size(), 512u);
  EXPECT_EQ(sent[1].bytes.size(), 512u);
  EXPECT_EQ(sent[2].bytes.size(), 176u);
  EXPECT_EQ(sent[2].bytes.back(), 0xF7);
}

TEST_F(MidiOutTest, ASysexBufferTheDeviceIsNotReadyForIsRetriedByPostedMessage) {
  openOutputWithoutClock();
  devices.answerNotReady(0, 2);
  playSysex(out, 5);
  loop.pump(1);  // NM_SYSEX_OUT_SEND: refused
  ASSERT_EQ(loop.pending().size(), 1u);
  EXPECT_EQ(loop.pending()[0].msg, NM_SYSEX_OUT_RETRY);
  loop.pump();
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].bytes, (std::vector<uint8_t>{0xF0, 1, 2, 3, 0xF7})) << "moved back once, not per try";
}

TEST_F(MidiOutTest, SysexBytesWithNoBufferLeftAreDropped) {
  openOutputWithoutClock(MIDI_SYSEX | 2);  // two buffers of 64 bytes
  playSysex(out, 64 * 3);                  // the third buffer's worth has nowhere to go
  EXPECT_EQ(out->sysexList.load(), nullptr);
  loop.pump();
  EXPECT_EQ(devices.sent().size(), 2u);
  playSysex(out, 10);  // fresh buffers were appended meanwhile
  loop.pump();
  EXPECT_EQ(devices.sent().size(), 3u);
}

TEST_F(MidiOutTest, FilterBit7ReleasesTheBuffersAndClearingItBringsBack32) {
  openOutputWithoutClock(MIDI_SYSEX | 3u << 8 | 3u << 12);  // no buffer count
  EXPECT_EQ(chainLength(out->sysexHead), 0u);
  SetMidiOutFilters(out, FILTER_SYSEX);
  EXPECT_EQ(out->flags & MIDI_SYSEX, 0u);
  EXPECT_EQ(devices.resetCount(), 1u);
  SetMidiOutFilters(out, 0);
  EXPECT_NE(out->flags & MIDI_SYSEX, 0u);
  EXPECT_EQ(out->flags & 0xFF, 32u);
  EXPECT_EQ(chainLength(out->sysexHead), 32u);
  EXPECT_EQ(out->sysexHead->header.dwBufferLength, 512u);
  EXPECT_EQ(GetMidiOutFilters(out), 0u);
}

TEST_F(MidiOutTest, SettingFilterBit7OnAnOutputWithBuffersReleasesThem) {
  openOutputWithoutClock();
  SetMidiOutFilters(out, FILTER_SYSEX | FILTER_NOTE_ON);
  EXPECT_EQ(out->sysexHead, nullptr);
  EXPECT_EQ(out->sysexList.load(), nullptr);
  EXPECT_EQ(GetMidiOutFilters(out), FILTER_SYSEX | FILTER_NOTE_ON);
}

TEST_F(MidiOutTest, CloseResetsAndClosesTheDeviceAndLetsGoOfEverything) {
  openClockAndOutput();
  put(SEND_NOW, 0x90, 60, 100);
  playSysex(out, 20);  // a buffer waiting to be sent
  EXPECT_EQ(CloseMidiOut(&out), 0u);
  EXPECT_EQ(out, nullptr);
  EXPECT_FALSE(devices.outputOpen());
  EXPECT_EQ(sentWords().back(), 0x003C90u) << "the sounding note was ended";
  EXPECT_EQ(clock->outputs[0].load(), nullptr) << "taken off the clock's list";
  EXPECT_EQ(LastMidiOut.load(), nullptr);
  loop.pump();  // messages for the closed output's window are dropped
}

TEST_F(MidiOutTest, DescriptionsNameTheDevicesUntilTheNumbersRunOut) {
  std::string text;
  EXPECT_EQ(GetMidiOutDescription(0, text), 1u);
  EXPECT_EQ(text, "Velmora Loopback");
  EXPECT_EQ(GetMidiOutDescription(1, text), 0u);
}

TEST_F(MidiOutTest, TheSizeTableIndexPastItsEndTakesTheLastEntry) {
  EXPECT_EQ(SizeFromTable(0), 64u);
  EXPECT_EQ(SizeFromTable(9), 32768u);
  EXPECT_EQ(SizeFromTable(15), 32768u);
}

}  // namespace
