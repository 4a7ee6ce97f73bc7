#pragma once
// The generator on a test bench: the start-up set-up, the clock on the
// virtual timer at exactly one tick per pass, and the loopback as output.

#include <optional>
#include <gtest/gtest.h>

#include <vector>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "midi/backends/loopback.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "song/clock_placing.h"
#include "song/song_store.h"

class GeneratorBench : public ::testing::Test {
 protected:
  void SetUp() override {
    devices.setRecording(true);
    seams.emplace(platform::Seams{.loop = &loop, .timers = &timers, .devices = &devices, .prompts = &prompts});
    ClearViewRegistry();
    ClockHooks = {};
    InstallGeneratorHooks();
    GeneratorStartUp();
    Playing = Recording = Capturing = 0;
    SongPosition = 0;
    SongResolution = 120;
    Numerator = 4;
    ASSERT_EQ(OpenSync(&TheClock, nullptr, SYNC_INTERNAL, 10), 0u);
    SetResolution(TheClock, 120);
    SetTempo(TheClock, 1200000);  // 120 ticks of 10 ms: one tick per pass
    ASSERT_EQ(OpenMidiOut(&TheMidiOut, nullptr, 0, TheClock, MIDI_OPEN_WORD), 0u);
    RefreshControlPanel(nullptr);
    CommitPanelFromBank();  // the panel opened once, as at start-up
  }

  void TearDown() override {
    CloseSync(&TheClock);
    CloseMidiOut(&TheMidiOut);
    loop.pump();
    ClockHooks = {};
    seams.reset();
  }

  // A Distribution cut down to the one value v.
  static void only(Distribution d, int16_t v) {
    LowerBound(d) = v;
    UpperBound(d) = v;
    SumDistribution(d);
  }

  void passes(int n) {
    for (int i = 0; i < n; ++i) timers.step();
  }

  struct Note {
    uint32_t tick;  // the pass, which is the tick, at which it went out
    uint32_t word;
  };
  // Channel messages sent, with the tick of their pass (no clock or transport bytes).
  std::vector<Note> sent() const {
    std::vector<Note> notes;
    for (const auto& s : devices.sent()) {
      if (s.bytes.empty() && (s.word & 0xFF) < 0xF0) notes.push_back({s.timeMs / 10, s.word});
    }
    return notes;
  }
  std::vector<Note> noteOns() const {
    std::vector<Note> ons;
    for (const Note& n : sent()) {
      if ((n.word & 0xF0) == 0x90 && (n.word >> 16 & 0xFF) != 0) ons.push_back(n);
    }
    return ons;
  }

  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices;
  platform::ScriptedPrompts prompts;
  std::optional<platform::InstalledSeams> seams;
};
