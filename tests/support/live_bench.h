#pragma once
// A bench for the live system as the Control Bar starts and stops it: the
// settings in memory, three loopback outputs and inputs of which any can be
// told to refuse to open, the virtual timer, the manual loop, scripted
// prompts, and the fakes of the Control Bar, its clock button and the frame.

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>

#include "live/live_system.h"
#include "midi/backends/loopback.h"
#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "song/song_store.h"
#include "support/song_fixture.h"
#include "support/song_views.h"
#include "transport/transport_commands.h"

// Loopback devices, with some that answer an open as a device in use would.
class RefusingDevices final : public platform::MidiDevices {
 public:
  RefusingDevices() { loopback.setRecording(true); }
  uint32_t outCount() override { return loopback.outCount(); }
  uint32_t outName(uint32_t id, std::string& name) override { return loopback.outName(id, name); }
  uint32_t outOpen(uint32_t id, platform::MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<platform::MidiOutPort>& port) override {
    if (refusedOutputs.contains(id)) return platform::MMSYSERR_ALLOCATED;
    return loopback.outOpen(id, callback, instance, port);
  }
  uint32_t inCount() override { return loopback.inCount(); }
  uint32_t inName(uint32_t id, std::string& name) override { return loopback.inName(id, name); }
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override {
    if (refusedInputs.contains(id)) return platform::MMSYSERR_ALLOCATED;
    return loopback.inOpen(id, callback, instance, port);
  }
  void setSynthGain(double gain) override { synthGain = gain; }

  LoopbackDevices loopback{3, 3};
  double synthGain = 0;  // the last gain given to a built-in synthesizer
  std::set<uint32_t> refusedInputs, refusedOutputs;
};

class LiveBench : public ::testing::Test {
 protected:
  void SetUp() override {
    seams.emplace(platform::Seams{
        .loop = &loop, .timers = &timers, .devices = &devices, .settings = &store, .prompts = &prompts});
    ClearViewRegistry();
    ClearSongTracks();
    ControlBar = &bar;
    FrameWindow = &frame;
    SetControlBarControl(CMD_INTERNAL_CLOCK, &clockButton);
    ClockHooks = {};
    Playing = Recording = Capturing = Generating = Draining = Linked = 0;
    SongDirty = 0;
  }

  void TearDown() override {
    stop();
    SetControlBarControl(CMD_INTERNAL_CLOCK, nullptr);
    ControlBarWindow = nullptr;
    ClearViewRegistry();
    ClearSongTracks();
    ClockHooks = {};
    seams.reset();
  }

  void start() {
    StartLiveSystem(&controlBar);
    loop.pump();
    started = true;
  }

  void stop() {
    if (!started) return;
    StopLiveSystem();
    loop.pump();
    started = false;
  }

  static std::string key() { return SettingsKeyPath() + "\\Settings"; }

  std::optional<platform::SettingsValue> stored(platform::SettingsLevel level, const std::string& name) const {
    return store.query(level, key(), name);
  }
  std::optional<platform::SettingsValue> user(const std::string& name) const {
    return stored(platform::SettingsLevel::User, name);
  }
  std::optional<platform::SettingsValue> machine(const std::string& name) const {
    return stored(platform::SettingsLevel::Machine, name);
  }

  void storeAt(platform::SettingsLevel level, const std::string& name, const platform::SettingsValue& value) {
    store.createKey(level, key());
    store.set(level, key(), name, value);
  }
  void storeUser(const std::string& name, const platform::SettingsValue& value) {
    storeAt(platform::SettingsLevel::User, name, value);
  }
  void storeMachine(const std::string& name, const platform::SettingsValue& value) {
    storeAt(platform::SettingsLevel::Machine, name, value);
  }

  // The meter in force, in the clock and in the Control Bar's fields, at 120 ticks a beat.
  void expectMeter(uint32_t numerator, uint32_t denominator) {
    EXPECT_EQ(Numerator.load(), numerator);
    EXPECT_EQ(Denominator.load(), denominator);
    ASSERT_NE(TheClock, nullptr);
    EXPECT_EQ(TheClock->beatsPerBar.load(), numerator);
    EXPECT_EQ(TicksPerBar.load(), numerator * 120);
    EXPECT_EQ(bar.fields[1180], std::to_string(numerator));
    EXPECT_EQ(bar.fields[1181], std::to_string(denominator));
  }

  // The boxes shown, as their texts.
  std::vector<std::string> boxes() const {
    std::vector<std::string> texts;
    for (const auto& shown : prompts.shown()) texts.push_back(shown.text);
    return texts;
  }

  platform::MemorySettingsStore store;
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  RefusingDevices devices;
  platform::ScriptedPrompts prompts;
  std::optional<platform::InstalledSeams> seams;
  TransportWindow controlBar;
  RecordingControlBar bar;
  RecordingFrame frame;
  RecordingButton clockButton;
  bool started = false;
};
