#include "midi/midi_in.h"

#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "support/midi_fixture.h"

using namespace platform;

namespace {

class MidiInTest : public MidiBench {
 protected:
  void TearDown() override {
    CloseMidiIn(&in);
    MidiBench::TearDown();
  }

  // The application's set-up: clock, output, and the input on the clock with
  // the open word, started.
  void openAll(uint32_t mode = SYNC_INTERNAL, uint32_t flagsWord = MIDI_OPEN_WORD) {
    openClockAndOutput(mode);
    ASSERT_EQ(OpenMidiIn(&in, &window, 0, clock, flagsWord), 0u);
    ASSERT_EQ(StartMidiIn(in), 0u);
  }

  // Every event MidiIn gives now.
  std::vector<MidiEvent> drain() {
    std::vector<MidiEvent> events;
    while (MidiEvent* e = MidiIn(in)) events.push_back(*e);
    return events;
  }

  static uint32_t message(const MidiEvent& e) { return PackedMessage(e); }

  MidiInHandle* in = nullptr;
};

TEST_F(MidiInTest, OpeningGivesTheChannelOnlyFilterBindsTheClockAndMakesTheRingAndBuffers) {
  openAll();
  EXPECT_EQ(GetMidiInFilters(in), 0x3FFF80u);
  EXPECT_EQ(clock->midiIn.load(), in);
  EXPECT_EQ(in->ringSize, 512u);
  EXPECT_EQ(in->sysexSize, 512u);
  EXPECT_EQ(devices.queuedBuffers(), 32u);
  EXPECT_NE(in->flags & MIDI_STARTED, 0u);
}

TEST_F(MidiInTest, OpeningABadDeviceOrANonLiveHandleFails) {
  EXPECT_EQ(OpenMidiIn(&in, &window, 5, nullptr, MIDI_OPEN_WORD), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(in, nullptr);
  MidiInHandle stranger;
  MidiInHandle* notOurs = &stranger;
  EXPECT_EQ(OpenMidiIn(&notOurs, &window, 0, nullptr, MIDI_OPEN_WORD), MIDI_IN_FAILED);
  EXPECT_EQ(notOurs, nullptr);
}

TEST_F(MidiInTest, TheNullHandleIsToleratedEverywhere) {
  EXPECT_EQ(MidiIn(nullptr), nullptr);
  EXPECT_EQ(GetMidiInFilters(nullptr), 0u);
  EXPECT_EQ(StartMidiIn(nullptr), 1u);
  EXPECT_EQ(StopMidiIn(nullptr), 1u);
  EXPECT_EQ(CloseMidiIn(&in), 0u);
  SetMidiInFilters(nullptr, 0);
}

TEST_F(MidiInTest, MidiInOnAnEmptyInputReturnsNull) {
  openAll();
  EXPECT_EQ(MidiIn(in), nullptr);
}

TEST_F(MidiInTest, ANotePlayedWhileNotCapturingWithThruOnSoundsAndIsNotStored) {
  openAll();
  in->flags |= MIDI_THRU;
  ASSERT_TRUE(devices.inject(0x403C90));
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x403C90u}) << "echoed to the output";
  EXPECT_NE(out->soundingNotes[0x3C].load() & 1u, 0u) << "noted as sounding";
  EXPECT_EQ(MidiIn(in), nullptr);
  loop.pump();
  EXPECT_TRUE(window.of(MIM_DATA).empty());
}

TEST_F(MidiInTest, TheThruEchoesEvenWhatTheOutputFilterBlocksButNotWhatTheInputFilterBlocks) {
  openAll();
  in->flags |= MIDI_THRU;
  SetMidiOutFilters(out, 0xFFFFFFFF);
  devices.inject(0x7F0AB0);
  devices.inject(0xF8);  // blocked at the input
  EXPECT_EQ(sentWords(), std::vector<uint32_t>{0x7F0AB0u});
}

TEST_F(MidiInTest, WhileCapturingEachMessageIsStampedWithTheTicksSinceTheLastAndNoticed) {
  openAll();
  StartSync(clock);
  Capturing = 1;
  passes(5);  // 12 ticks
  devices.inject(0x403C90);
  passes(5);
  devices.inject(0x003C80);
  devices.inject(0x2040B0);
  const auto events = drain();
  ASSERT_EQ(events.size(), 3u);
  EXPECT_EQ(events[0].time, 12u);
  EXPECT_EQ(message(events[0]), 0x403C90u);
  EXPECT_EQ(events[1].time, 12u);
  EXPECT_EQ(events[2].time, 0u);
  EXPECT_EQ(in->lastEventTime.load(), 24u);
  loop.pump();
  const auto notices = window.of(MIM_DATA);
  ASSERT_EQ(notices.size(), 3u);
  EXPECT_EQ(notices[0].param2, reinterpret_cast<uintptr_t>(in));
}

TEST_F(MidiInTest, WithoutAClockTheDriversTimestampIsTheTime) {
  openClockAndOutput();
  ASSERT_EQ(OpenMidiIn(&in, &window, 0, nullptr, MIDI_OPEN_WORD), 0u);
  StartMidiIn(in);
  Capturing = 1;
  timers.advance(37);
  devices.inject(0x403C90);
  const auto events = drain();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].time, 37u);
}

TEST_F(MidiInTest, InInternalModeAMidiClockWithItsBitClearedIsAPlainMessageAndStored) {
  openAll();
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  StartSync(clock);
  Capturing = 1;
  devices.inject(0xF8);
  const auto events = drain();
  ASSERT_EQ(events.size(), 1u);
  EXPECT_EQ(events[0].status, 0xF8);
}

TEST_F(MidiInTest, AClockMessageWhileTheClockIsNotRunningGoesOnToTheRing) {
  openAll(SYNC_MIDI);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  Capturing = 1;
  devices.inject(0xFA);
  devices.inject(0xF8);
  EXPECT_EQ(clock->flags & SYNC_COUNTING, 0u);
  EXPECT_EQ(drain().size(), 2u);
}

TEST_F(MidiInTest, InMidiSyncStartAndClocksMoveTheClockAndStopHaltsIt) {
  openAll(SYNC_MIDI);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  ReStartSync(clock);
  passes(10);
  EXPECT_EQ(clock->now.load(), 0u) << "nothing moves before Start";
  devices.inject(0xFA);
  EXPECT_NE(clock->flags & SYNC_COUNTING, 0u);
  for (int i = 0; i < 6; ++i) devices.inject(0xF8);
  EXPECT_EQ(clock->now.load(), 30u) << "six clocks of five ticks";
  devices.inject(0xFC);
  EXPECT_EQ(clock->flags & SYNC_COUNTING, 0u);
  passes(10);
  devices.inject(0xF8);
  EXPECT_EQ(clock->now.load(), 30u) << "a stopped clock's pass does nothing";
  Capturing = 1;
  EXPECT_EQ(MidiIn(in), nullptr) << "the clock took every sync message";
}

TEST_F(MidiInTest, AContinueSetsCountingAsStartDoesAndDoesNotMoveThePosition) {
  openAll(SYNC_MIDI);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  clock->now = 500;
  ReStartSync(clock);
  devices.inject(0xFB);
  EXPECT_NE(clock->flags & SYNC_COUNTING, 0u);
  EXPECT_EQ(clock->now.load(), 500u);
}

TEST_F(MidiInTest, AHeldClockIgnoresIncomingMidiClock) {
  openAll(SYNC_MIDI);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  ReStartSync(clock);
  devices.inject(0xFA);
  HoldClockPasses(clock);
  devices.inject(0xF8);
  EXPECT_EQ(clock->now.load(), 0u);
  ReleaseClockPasses(clock);
  devices.inject(0xF8);
  EXPECT_EQ(clock->now.load(), 5u);
}

TEST_F(MidiInTest, QuarterFramesReachAnSmpteClockOpenedByCode) {
  openAll(SYNC_SMPTE25);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~(1u << 8));  // let quarter frames in
  StartSync(clock);
  // 00:00:01:00 at 25 frames: pieces 0 to 7.
  const std::array<uint8_t, 8> pieces = {0x00, 0x10, 0x21, 0x30, 0x40, 0x50, 0x60, 0x72};
  for (uint8_t piece : pieces) devices.inject(0xF1u | uint32_t{piece} << 8);
  EXPECT_EQ(clock->smpteType.load(), static_cast<uint32_t>(SYNC_SMPTE25));
  EXPECT_EQ(SmpteTimeWord(clock), 0x00000101u) << "loaded at piece 7 and moved one frame";
  devices.inject(0xF1 | 0x00u << 8);
  EXPECT_NE(clock->flags & SYNC_SMPTE_LOCKED, 0u);
  EXPECT_GT(clock->now.load(), 0u) << "a locked clock runs the tick on each quarter frame";
}

TEST_F(MidiInTest, StartingTwiceLeavesTheRingAsItIs) {
  openAll();
  Capturing = 1;
  devices.inject(0x403C90);
  EXPECT_EQ(StartMidiIn(in), 0u);
  EXPECT_EQ(drain().size(), 1u);
}

TEST_F(MidiInTest, TheRingHas513SlotsAndThe513thUnreadEventMakesItLookEmpty) {
  openAll();
  Capturing = 1;
  for (uint32_t i = 0; i < 512; ++i) devices.inject(0x403C90 | (i % 128) << 8);
  EXPECT_EQ(drain().size(), 512u);
  for (uint32_t i = 0; i < 513; ++i) devices.inject(0x403C90);
  EXPECT_EQ(MidiIn(in), nullptr) << "the write index caught up with the read index";
}

TEST_F(MidiInTest, SysexComesAsOneEventPerByteBeforeAnyShortMessage) {
  openAll();
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_SYSEX);
  StartSync(clock);
  Capturing = 1;
  passes(5);
  devices.inject(0x403C90);
  const std::array<uint8_t, 4> bytes = {0xF0, 0x7E, 0x09, 0xF7};
  ASSERT_TRUE(devices.injectSysex(bytes));
  loop.pump();  // the hidden window takes the buffer over
  const auto events = drain();
  ASSERT_EQ(events.size(), 5u);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(events[static_cast<std::size_t>(i)].status, 0xF0);
    EXPECT_EQ(events[static_cast<std::size_t>(i)].value1, bytes[static_cast<std::size_t>(i)]);
  }
  EXPECT_EQ(events[1].time, 0u) << "a byte inside the message carries no time";
  EXPECT_EQ(message(events[4]), 0x403C90u) << "the short message waits behind the sysex";
  EXPECT_EQ(devices.queuedBuffers(), 32u) << "the buffer was renewed";
}

TEST_F(MidiInTest, SysexAcrossTwoBuffersComesAsTwoRunsEachStampedByItsBuffer) {
  openClockAndOutput();
  // Two buffers of 64 bytes: buffer count 2, size index 0, ring index 3.
  ASSERT_EQ(OpenMidiIn(&in, &window, 0, clock, 2 | MIDI_SYSEX | MIDI_SYNC | 3u << 12), 0u);
  StartMidiIn(in);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_SYSEX);
  StartSync(clock);
  Capturing = 1;
  passes(50);  // 120 ticks
  std::vector<uint8_t> first(64, 0x11);
  first[0] = 0xF0;
  ASSERT_TRUE(devices.injectSysex(first));
  passes(50);
  const std::vector<uint8_t> second = {0x22, 0x22, 0xF7};
  ASSERT_TRUE(devices.injectSysex(second));
  loop.pump();
  const auto events = drain();
  ASSERT_EQ(events.size(), 67u);
  // 64 bytes take 64 x 320 us on the wire: 20480 us, 4 ticks at 120 a half second.
  EXPECT_EQ(events[0].time, 120u - 4u) << "the first byte: the buffer's stamp";
  EXPECT_EQ(events[1].time, 0u);
  EXPECT_EQ(events[63].time, 120u - 4u) << "the buffer's last byte carries the stamp too";
  EXPECT_EQ(events[64].time, 0u);
  EXPECT_EQ(events[66].time, 4u + 120u - 0u) << "the delta from the first buffer's stamp";
}

TEST_F(MidiInTest, TheSysexFilterBitHandsTheBuffersBackAndClearingItMakesThemAgain) {
  openAll();
  EXPECT_NE(in->flags & MIDI_SYSEX, 0u);
  SetMidiInFilters(in, GetMidiInFilters(in) | FILTER_SYSEX);
  EXPECT_EQ(in->flags & MIDI_SYSEX, 0u);
  EXPECT_EQ(devices.queuedBuffers(), 0u);
  EXPECT_TRUE(in->buffers.empty());
  EXPECT_TRUE(devices.inputStarted()) << "listening goes on after the reset";
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_SYSEX);
  EXPECT_EQ(devices.queuedBuffers(), 32u);
}

TEST_F(MidiInTest, SysexIsDroppedWhileItsFilterBitIsSet) {
  openAll();
  const std::array<uint8_t, 3> bytes = {0xF0, 0x01, 0xF7};
  devices.injectSysex(bytes);
  loop.pump();
  EXPECT_EQ(MidiIn(in), nullptr);
}

TEST_F(MidiInTest, ClosingReleasesEverythingAndTheClockLetsGo) {
  openAll();
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_SYSEX);
  const std::array<uint8_t, 3> bytes = {0xF0, 0x01, 0xF7};
  devices.injectSysex(bytes);  // a filled buffer waits on the loop
  EXPECT_EQ(CloseMidiIn(&in), 0u);
  EXPECT_EQ(in, nullptr);
  EXPECT_EQ(clock->midiIn.load(), nullptr);
  loop.pump();  // the notices of the closed input are gone with it
  EXPECT_TRUE(window.of(MIM_DATA).empty());
}

TEST_F(MidiInTest, AStopKeepsTheInputFromDeliveringAndTheDescriptionNamesTheDevice) {
  openAll();
  EXPECT_EQ(StopMidiIn(in), 0u);
  EXPECT_EQ(in->flags & MIDI_STARTED, 0u);
  EXPECT_FALSE(devices.inject(0x403C90));
  std::string name;
  EXPECT_EQ(GetMidiInDescription(0, name), 1u);
  EXPECT_FALSE(name.empty());
  EXPECT_EQ(GetMidiInDescription(9, name), 0u);
}

TEST_F(MidiInTest, TheWireTimeOfSysexIsTakenOffItsStamp) {
  openAll();
  clock->now = 1000;
  // 512 bytes at 320 us: 163840 us, at 120 ticks a 500000 us quarter: 39 ticks.
  EXPECT_EQ(StampEvent(in, 0, 512), 1000u - 39u);
  EXPECT_EQ(in->lastEventTime.load(), 961u);
  EXPECT_EQ(StampEvent(in, 0, 0), 39u);
}

TEST_F(MidiInTest, AClockWithoutTempoStampsWithoutDividingByZero) {
  openAll();
  clock->tempo = 0;
  clock->now = 10;
  EXPECT_EQ(StampEvent(in, 0, 100), 10u);
}

// The driver thread and the UI thread on one input: a thread plays into it
// while the UI thread drains; every event arrives once and in order.
TEST(MidiInThreads, APlayerThreadAndTheDrainingThreadShareTheRingWithoutLoss) {
  ThreadTimers timers;
  ManualLoop loop;
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  MidiInHandle* in = nullptr;
  RecordingWindow window;
  ASSERT_EQ(OpenMidiIn(&in, &window, 0, nullptr, MIDI_OPEN_WORD), 0u);
  StartMidiIn(in);
  Capturing = 1;
  constexpr uint32_t Events = 5000;
  auto unread = [in] {
    const uint32_t slots = in->ringSize + 1;
    return (in->writeIndex.load() + slots - in->readIndex.load()) % slots;
  };
  std::thread player([&] {
    for (uint32_t i = 0; i < Events; ++i) {
      while (unread() > 400) std::this_thread::yield();  // a player no faster than the reader
      devices.inject(0x400090 | (i % 128) << 8);
    }
  });
  std::vector<uint32_t> keys;
  while (keys.size() < Events) {
    if (MidiEvent* e = MidiIn(in)) {
      keys.push_back(e->value1);
    } else {
      std::this_thread::yield();
    }
  }
  player.join();
  for (uint32_t i = 0; i < Events; ++i) ASSERT_EQ(keys[i], i % 128);
  EXPECT_EQ(MidiIn(in), nullptr);
  Capturing = 0;
  CloseMidiIn(&in);
  loop.pump();
}

// A MIDI clock runs the tick on the device's thread, and the tick may wait
// in a send to the UI thread (the generator's capture). Closing the input
// then must not wait for that thread forever.
TEST(MidiInThreads, ClosingTheInputWhileItsTickWaitsInASendDoesNotHang) {
  VirtualTimers timers;
  ManualLoop loop;  // never pumped: the send waits until it is refused
  LoopbackDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  RecordingWindow window;
  static RecordingWindow* sendTo;
  sendTo = &window;
  SyncClock* clock = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_MIDI, 10), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  MidiInHandle* in = nullptr;
  ASSERT_EQ(OpenMidiIn(&in, &window, 0, clock, MIDI_OPEN_WORD), 0u);
  SetMidiInFilters(in, GetMidiInFilters(in) & ~FILTER_MIDI_SYNC);
  StartMidiIn(in);
  ClockHooks = {};
  ClockHooks.generatorTick = [] { send(sendTo, MIM_DATA, 0, 0); };
  Generating.publish(1);
  ReStartSync(clock);
  clock->flags |= SYNC_COUNTING;
  std::thread device([&] { devices.inject(0xF8); });
  while (loop.pending().empty()) std::this_thread::yield();  // the tick waits in its send
  EXPECT_EQ(CloseMidiIn(&in), 0u);
  device.join();
  EXPECT_EQ(in, nullptr);
  Generating = 0;
  ClockHooks = {};
  CloseSync(&clock);
  loop.pump();
}

}  // namespace
