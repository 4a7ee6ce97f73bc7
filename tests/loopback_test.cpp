#include "midi/backends/loopback.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>
#include <vector>

#include "platform/midi_devices.h"
#include "platform/timers.h"

using namespace platform;

namespace {

struct Call {
  uint32_t message;
  uintptr_t param1;
  uintptr_t param2;
};

// What a driver callback was told, in order.
struct Recorder {
  std::mutex mutex;
  std::vector<Call> calls;
  MidiOutPort* thru = nullptr;  // when set, every MIM_DATA is echoed to this output

  void add(uint32_t message, uintptr_t param1, uintptr_t param2) {
    std::lock_guard lock(mutex);
    calls.push_back({message, param1, param2});
  }
  std::vector<Call> of(uint32_t message) {
    std::lock_guard lock(mutex);
    std::vector<Call> found;
    for (const Call& call : calls) {
      if (call.message == message) found.push_back(call);
    }
    return found;
  }
};

void outCallback(MidiOutPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t param2) {
  reinterpret_cast<Recorder*>(instance)->add(message, param1, param2);
}

void inCallback(MidiInPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t param2) {
  auto* recorder = reinterpret_cast<Recorder*>(instance);
  recorder->add(message, param1, param2);
  if (message == MIM_DATA && recorder->thru != nullptr) {
    midiOutShortMsg(recorder->thru, static_cast<uint32_t>(param1));
  }
}

// A sysex buffer as the toolkit makes one.
struct Buffer {
  explicit Buffer(uint32_t size) : data(size), header{data.data(), size, 0, 0, 0} {}
  std::vector<uint8_t> data;
  MidiHeader header;
  std::vector<uint8_t> recorded() const { return {data.begin(), data.begin() + header.dwBytesRecorded}; }
};

class LoopbackTest : public ::testing::Test {
 protected:
  void SetUp() override {
    devices.setRecording(true);
    installTimers(&timers);
    installMidiDevices(&devices);
  }
  void TearDown() override {
    if (in != nullptr) {
      midiInReset(in);
      midiInClose(in);
    }
    if (out != nullptr) midiOutClose(out);
    installMidiDevices(nullptr);
    installTimers(nullptr);
  }
  void openBoth() {
    ASSERT_EQ(midiOutOpen(&out, 0, outCallback, reinterpret_cast<uintptr_t>(&outCalls)), MMSYSERR_NOERROR);
    ASSERT_EQ(midiInOpen(&in, 0, inCallback, reinterpret_cast<uintptr_t>(&inCalls)), MMSYSERR_NOERROR);
  }

  VirtualTimers timers;
  LoopbackDevices devices;
  Recorder outCalls, inCalls;
  MidiOutPort* out = nullptr;
  MidiInPort* in = nullptr;
};

TEST_F(LoopbackTest, ListsOneOutputAndOneInputWithNames) {
  EXPECT_EQ(midiOutGetNumDevs(), 1u);
  EXPECT_EQ(midiInGetNumDevs(), 1u);
  std::string name;
  EXPECT_EQ(midiOutGetDevCaps(0, name), MMSYSERR_NOERROR);
  EXPECT_EQ(name, "Velmora Loopback");
  EXPECT_EQ(midiInGetDevCaps(0, name), MMSYSERR_NOERROR);
  EXPECT_EQ(midiOutGetDevCaps(1, name), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(midiInGetDevCaps(1, name), MMSYSERR_BADDEVICEID);
}

TEST_F(LoopbackTest, ABadDeviceNumberIsRefused) {
  EXPECT_EQ(midiOutOpen(&out, 1, outCallback, 0), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(midiInOpen(&in, 5, inCallback, 0), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(in, nullptr);
}

TEST_F(LoopbackTest, TheMapperOpensTheFirstOutput) {
  ASSERT_EQ(midiOutOpen(&out, MIDI_MAPPER, outCallback, reinterpret_cast<uintptr_t>(&outCalls)), MMSYSERR_NOERROR);
  EXPECT_TRUE(devices.outputOpen(0));
}

TEST_F(LoopbackTest, AnOpenDeviceCannotBeOpenedTwice) {
  openBoth();
  MidiOutPort* second = nullptr;
  EXPECT_EQ(midiOutOpen(&second, 0, outCallback, 0), MMSYSERR_ALLOCATED);
  MidiInPort* secondIn = nullptr;
  EXPECT_EQ(midiInOpen(&secondIn, 0, inCallback, 0), MMSYSERR_ALLOCATED);
}

TEST_F(LoopbackTest, NoDevicesWhenNoneAreListed) {
  LoopbackDevices none(0, 0);
  installMidiDevices(&none);
  EXPECT_EQ(midiOutGetNumDevs(), 0u);
  EXPECT_EQ(midiInGetNumDevs(), 0u);
  EXPECT_EQ(midiOutOpen(&out, 0, outCallback, 0), MMSYSERR_BADDEVICEID);
  installMidiDevices(&devices);
}

TEST_F(LoopbackTest, NullPortsAreInvalidHandles) {
  EXPECT_EQ(midiOutShortMsg(nullptr, 0x90), MMSYSERR_INVALHANDLE);
  EXPECT_EQ(midiOutClose(nullptr), MMSYSERR_INVALHANDLE);
  EXPECT_EQ(midiInStart(nullptr), MMSYSERR_INVALHANDLE);
}

TEST_F(LoopbackTest, RecordsWhatIsSentAndWhen) {
  openBoth();
  timers.advance(250);
  EXPECT_EQ(midiOutShortMsg(out, 0x403C90), MMSYSERR_NOERROR);
  timers.advance(10);
  EXPECT_EQ(midiOutShortMsg(out, 0x003C80), MMSYSERR_NOERROR);
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[0].timeMs, 250u);
  EXPECT_EQ(sent[0].word, 0x403C90u);
  EXPECT_EQ(sent[1].timeMs, 260u);
  EXPECT_TRUE(sent[1].bytes.empty());
}

TEST_F(LoopbackTest, AnswersNotReadyTheNumberOfTimesItIsTold) {
  openBoth();
  devices.answerNotReady(2);
  EXPECT_EQ(midiOutShortMsg(out, 0x403C90), MIDIERR_NOTREADY);
  EXPECT_EQ(midiOutShortMsg(out, 0x403C90), MIDIERR_NOTREADY);
  EXPECT_EQ(midiOutShortMsg(out, 0x403C90), MMSYSERR_NOERROR);
  EXPECT_EQ(devices.sent().size(), 1u);
}

TEST_F(LoopbackTest, ALongMessageNeedsAPreparedHeader) {
  openBoth();
  Buffer buffer(4);
  EXPECT_EQ(midiOutLongMsg(out, &buffer.header), MIDIERR_UNPREPARED);
  EXPECT_TRUE(devices.sent().empty());
}

TEST_F(LoopbackTest, ALongMessageIsSentAndReportedDone) {
  openBoth();
  Buffer buffer(4);
  buffer.data = {0xF0, 0x7E, 0x01, 0xF7};
  buffer.header.lpData = buffer.data.data();
  ASSERT_EQ(midiOutPrepareHeader(out, &buffer.header), MMSYSERR_NOERROR);
  ASSERT_EQ(midiOutLongMsg(out, &buffer.header), MMSYSERR_NOERROR);
  const auto sent = devices.sent();
  ASSERT_EQ(sent.size(), 1u);
  EXPECT_EQ(sent[0].bytes, buffer.data);
  const auto done = outCalls.of(MOM_DONE);
  ASSERT_EQ(done.size(), 1u);
  EXPECT_EQ(done[0].param1, reinterpret_cast<uintptr_t>(&buffer.header));
  EXPECT_EQ(buffer.header.dwFlags & (MHDR_DONE | MHDR_INQUEUE), MHDR_DONE);
  EXPECT_EQ(midiOutUnprepareHeader(out, &buffer.header), MMSYSERR_NOERROR);
}

TEST_F(LoopbackTest, ALongMessageAnswersNotReadyAndStaysUnqueued) {
  openBoth();
  Buffer buffer(2);
  midiOutPrepareHeader(out, &buffer.header);
  devices.answerNotReady(0, 1);
  EXPECT_EQ(midiOutLongMsg(out, &buffer.header), MIDIERR_NOTREADY);
  EXPECT_EQ(buffer.header.dwFlags & MHDR_INQUEUE, 0u);
  EXPECT_EQ(midiOutLongMsg(out, &buffer.header), MMSYSERR_NOERROR);
}

TEST_F(LoopbackTest, ClosingAnOutputReportsClose) {
  openBoth();
  EXPECT_EQ(midiOutClose(out), MMSYSERR_NOERROR);
  out = nullptr;
  EXPECT_EQ(outCalls.of(MOM_CLOSE).size(), 1u);
  EXPECT_FALSE(devices.outputOpen(0));
}

TEST_F(LoopbackTest, ResetIsCounted) {
  openBoth();
  midiOutReset(out);
  EXPECT_EQ(devices.resetCount(), 1u);
}

TEST_F(LoopbackTest, TheInputReceivesWhatTheOutputSendsOnceStarted) {
  openBoth();
  midiOutShortMsg(out, 0x403C90);  // not started: nowhere to go
  EXPECT_TRUE(inCalls.of(MIM_DATA).empty());
  timers.advance(100);
  ASSERT_EQ(midiInStart(in), MMSYSERR_NOERROR);
  timers.advance(35);
  midiOutShortMsg(out, 0x403E90);
  const auto data = inCalls.of(MIM_DATA);
  ASSERT_EQ(data.size(), 1u);
  EXPECT_EQ(data[0].param1, 0x403E90u);
  EXPECT_EQ(data[0].param2, 35u);  // milliseconds since the input started
}

TEST_F(LoopbackTest, AStoppedInputReceivesNothing) {
  openBoth();
  midiInStart(in);
  midiInStop(in);
  EXPECT_FALSE(devices.inject(0x403C90));
  EXPECT_TRUE(inCalls.of(MIM_DATA).empty());
}

TEST_F(LoopbackTest, ATestCanInjectInput) {
  openBoth();
  midiInStart(in);
  EXPECT_TRUE(devices.inject(0xF8));
  ASSERT_EQ(inCalls.of(MIM_DATA).size(), 1u);
  EXPECT_EQ(inCalls.of(MIM_DATA)[0].param1, 0xF8u);
  EXPECT_TRUE(devices.sent().empty()) << "injected input never reaches the output";
}

TEST_F(LoopbackTest, AnEchoOfTheInputIntoTheOutputIsNotDeliveredAgain) {
  openBoth();
  inCalls.thru = out;
  midiInStart(in);
  midiOutShortMsg(out, 0x403C90);
  EXPECT_EQ(inCalls.of(MIM_DATA).size(), 1u);  // no second round
  EXPECT_EQ(devices.sent().size(), 2u);        // the send and its echo
}

TEST_F(LoopbackTest, SysexFillsQueuedBuffersAndComesBackAtTheEnd) {
  openBoth();
  Buffer first(4), second(4);
  for (Buffer* b : {&first, &second}) {
    midiInPrepareHeader(in, &b->header);
    ASSERT_EQ(midiInAddBuffer(in, &b->header), MMSYSERR_NOERROR);
  }
  midiInStart(in);
  const uint8_t message[] = {0xF0, 1, 2, 3, 4, 0xF7};
  EXPECT_TRUE(devices.injectSysex(message));
  const auto filled = inCalls.of(MIM_LONGDATA);
  ASSERT_EQ(filled.size(), 2u);
  EXPECT_EQ(filled[0].param1, reinterpret_cast<uintptr_t>(&first.header));
  EXPECT_EQ(first.recorded(), (std::vector<uint8_t>{0xF0, 1, 2, 3}));
  EXPECT_EQ(second.recorded(), (std::vector<uint8_t>{4, 0xF7}));
  EXPECT_EQ(second.header.dwFlags & (MHDR_DONE | MHDR_INQUEUE), MHDR_DONE);
}

TEST_F(LoopbackTest, SysexFromTheOutputReachesTheInput) {
  openBoth();
  Buffer outgoing(3), incoming(8);
  outgoing.data = {0xF0, 0x43, 0xF7};
  outgoing.header.lpData = outgoing.data.data();
  midiOutPrepareHeader(out, &outgoing.header);
  midiInPrepareHeader(in, &incoming.header);
  midiInAddBuffer(in, &incoming.header);
  midiInStart(in);
  midiOutLongMsg(out, &outgoing.header);
  EXPECT_EQ(incoming.recorded(), outgoing.data);
}

TEST_F(LoopbackTest, AShortMessageCuttingSysexShortReturnsItsBufferAsAnError) {
  openBoth();
  Buffer buffer(16);
  midiInPrepareHeader(in, &buffer.header);
  midiInAddBuffer(in, &buffer.header);
  midiInStart(in);
  const uint8_t unfinished[] = {0xF0, 0x43, 0x10};
  devices.injectSysex(unfinished);
  devices.inject(0xF8);  // real-time messages may come inside sysex
  EXPECT_TRUE(inCalls.of(MIM_LONGERROR).empty());
  devices.inject(0x403C90);
  const auto errors = inCalls.of(MIM_LONGERROR);
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(errors[0].param1, reinterpret_cast<uintptr_t>(&buffer.header));
  EXPECT_EQ(buffer.recorded(), (std::vector<uint8_t>{0xF0, 0x43, 0x10}));
  ASSERT_EQ(inCalls.calls.back().message, MIM_DATA) << "the error comes before the message that caused it";
}

TEST_F(LoopbackTest, SysexWithNoBufferIsLost) {
  openBoth();
  midiInStart(in);
  const uint8_t message[] = {0xF0, 1, 0xF7};
  EXPECT_TRUE(devices.injectSysex(message));
  EXPECT_TRUE(inCalls.of(MIM_LONGDATA).empty());
}

TEST_F(LoopbackTest, ResetHandsEveryBufferBackEmpty) {
  openBoth();
  Buffer first(4), second(4);
  for (Buffer* b : {&first, &second}) {
    midiInPrepareHeader(in, &b->header);
    midiInAddBuffer(in, &b->header);
  }
  midiInStart(in);
  EXPECT_EQ(midiInClose(in), MIDIERR_STILLPLAYING) << "buffers are still queued";
  EXPECT_EQ(midiInReset(in), MMSYSERR_NOERROR);
  const auto returned = inCalls.of(MIM_LONGDATA);
  ASSERT_EQ(returned.size(), 2u);
  EXPECT_EQ(first.header.dwBytesRecorded, 0u);
  EXPECT_EQ(devices.queuedBuffers(), 0u);
  EXPECT_FALSE(devices.inputStarted());
  EXPECT_EQ(midiInUnprepareHeader(in, &first.header), MMSYSERR_NOERROR);
}

TEST_F(LoopbackTest, AQueuedBufferCannotBeUnprepared) {
  openBoth();
  Buffer buffer(4);
  midiInPrepareHeader(in, &buffer.header);
  midiInAddBuffer(in, &buffer.header);
  EXPECT_EQ(midiInUnprepareHeader(in, &buffer.header), MIDIERR_STILLPLAYING);
  midiInReset(in);  // hand it back before it goes out of scope
  EXPECT_EQ(midiInUnprepareHeader(in, &buffer.header), MMSYSERR_NOERROR);
}

TEST_F(LoopbackTest, ClosingAnInputReportsClose) {
  openBoth();
  EXPECT_EQ(midiInClose(in), MMSYSERR_NOERROR);
  in = nullptr;
  EXPECT_EQ(inCalls.of(MIM_CLOSE).size(), 1u);
}

TEST_F(LoopbackTest, ShortMessagesFromTwoThreadsAllArrive) {
  openBoth();
  midiInStart(in);
  auto play = [this](uint32_t status) {
    for (uint32_t key = 0; key < 1000; ++key) midiOutShortMsg(out, status | (key % 128) << 8 | 64 << 16);
  };
  std::thread a(play, 0x90), b(play, 0x91);
  a.join();
  b.join();
  EXPECT_EQ(inCalls.of(MIM_DATA).size(), 2000u);
  EXPECT_EQ(devices.sent().size(), 2000u);
}

TEST_F(LoopbackTest, RecordingIsOffUntilATestTurnsItOnAndCanBeTurnedOffAgain) {
  LoopbackDevices fresh;
  std::unique_ptr<platform::MidiOutPort> port;
  ASSERT_EQ(fresh.outOpen(0, nullptr, 0, port), 0u);
  port->shortMsg(0x403C90);
  EXPECT_TRUE(fresh.sent().empty()) << "off by default: sending logs nothing";
  openBoth();
  devices.setRecording(false);
  midiOutShortMsg(out, 0x403C90);
  EXPECT_TRUE(devices.sent().empty());
  devices.setRecording(true);
  midiOutShortMsg(out, 0x403C90);
  EXPECT_EQ(devices.sent().size(), 1u);
}

}  // namespace
