#pragma once
// A test bench for the MIDI toolkit: the manual message loop, the virtual
// timer and one loopback device, with a notification window that records.

#include <optional>
#include <gtest/gtest.h>

#include <vector>

#include "midi/backends/loopback.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"

struct Notice {
  uint32_t msg;
  uintptr_t param1;
  uintptr_t param2;
};

// A window that keeps what it is told.
class RecordingWindow final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override {
    notices.push_back({msg, param1, param2});
    return 0;
  }
  std::vector<Notice> of(uint32_t msg) const {
    std::vector<Notice> found;
    for (const Notice& n : notices) {
      if (n.msg == msg) found.push_back(n);
    }
    return found;
  }
  std::vector<Notice> notices;
};

class MidiBench : public ::testing::Test {
 protected:
  void SetUp() override {
    devices.setRecording(true);
    seams.emplace(platform::Seams{.loop = &loop, .timers = &timers, .devices = &devices});
    ClockHooks = {};
    Generating = 0;
    Draining = 0;
    Capturing = 0;
  }

  void TearDown() override {
    CloseSync(&clock);
    CloseMidiOut(&out);
    loop.pump();
    seams.reset();
  }

  // The clock as the application opens it: internal, 10 ms, 120 ticks a
  // quarter at 500000 microseconds; and the output on it with the open word.
  void openClockAndOutput(uint32_t mode = SYNC_INTERNAL, uint32_t flagsWord = MIDI_OPEN_WORD) {
    ASSERT_EQ(OpenSync(&clock, &window, mode, 10), 0u);
    SetResolution(clock, 120);
    SetTempo(clock, 500000);
    ASSERT_EQ(OpenMidiOut(&out, &window, 0, clock, flagsWord), 0u);
  }

  void openOutputWithoutClock(uint32_t flagsWord = MIDI_OPEN_WORD) {
    ASSERT_EQ(OpenMidiOut(&out, &window, 0, nullptr, flagsWord), 0u);
  }

  // Runs n passes of the clock's timer.
  void passes(int n) {
    for (int i = 0; i < n; ++i) ASSERT_TRUE(timers.step());
  }

  // Short messages that reached the device, in order.
  std::vector<uint32_t> sentWords() const {
    std::vector<uint32_t> words;
    for (const auto& sent : devices.sent()) {
      if (sent.bytes.empty()) words.push_back(sent.word);
    }
    return words;
  }

  // The same without real-time messages (MIDI clock, Start, Stop).
  std::vector<uint32_t> sentMessages() const {
    std::vector<uint32_t> words = sentWords();
    std::erase_if(words, [](uint32_t word) { return (word & 0xFF) >= 0xF8; });
    return words;
  }

  static MidiEvent event(uint32_t time, uint8_t status, uint8_t value1 = 0, uint8_t value2 = 0) {
    return MidiEvent{time, status, value1, value2, 0, nullptr, 0, 0, 0, 0};
  }

  uint32_t put(uint32_t time, uint8_t status, uint8_t value1 = 0, uint8_t value2 = 0) {
    MidiEvent e = event(time, status, value1, value2);
    return MidiOut(out, &e);
  }

  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices;
  std::optional<platform::InstalledSeams> seams;
  RecordingWindow window;
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
};
