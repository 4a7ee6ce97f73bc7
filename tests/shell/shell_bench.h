#pragma once
// A bench for the window tests: Velmora started in this process on the Qt
// message loop, with the virtual timer, loopback devices, settings in memory
// and scripted answers to every prompt.
#include <optional>
#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QTest>
#include <QTimer>
#include <functional>
#include <memory>

#include "live/product_info.h"
#include "midi/backends/loopback.h"
#include "platform/installed_seams.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"
#include "platform/timers.h"
#include "shell/application.h"
#include "shell/control_bar.h"
#include "shell/qt_platform.h"

class ShellBench : public ::testing::Test {
 protected:
  // outputs and inputs: how many loopback devices the machine has.
  void install(uint32_t outputs = 1, uint32_t inputs = 1) {
    devices = std::make_unique<LoopbackDevices>(outputs, inputs);
    devices->setRecording(true);
    seams.emplace(platform::Seams{
        .loop = &loop, .timers = &timers, .devices = devices.get(), .settings = &settings, .prompts = &prompts});
  }

  // Velmora as the program starts it, without the splash.
  void start() {
    install();
    frame = shell::StartVelmora({.splash = false, .maximized = false, .file = {}});
    ASSERT_NE(frame, nullptr);
    deliver();
  }

  // Velmora started with MIDI thru off, so that what the loopback cable brings
  // back to the input is not echoed to the output.
  void startWithoutThru() {
    install();
    const std::string key = settingsKey();
    settings.createKey(platform::SettingsLevel::User, key);
    settings.set(platform::SettingsLevel::User, key, "Midi Thru", platform::SettingsValue::word(0));
    frame = shell::StartVelmora({.splash = false, .maximized = false, .file = {}});
    ASSERT_NE(frame, nullptr);
    deliver();
  }

  void TearDown() override {
    if (frame) {
      frame->hide();
      frame.reset();
    }
    deliver();
    seams.reset();
  }

  // Delivers what waits on the message loop and in Qt's queue.
  void deliver() {
    for (int i = 0; i < 4; ++i) {
      QApplication::processEvents();
      loop.deliverQueued();
    }
  }

  // n passes of the clock, each followed by what they posted.
  void passes(int n) {
    for (int i = 0; i < n; ++i) {
      timers.step();
      loop.deliverQueued();
    }
    deliver();
  }

  shell::ControlBarWidget& bar() { return *frame->controlBar(); }
  void click(uint32_t buttonId) {
    shell::Button* button = bar().button(buttonId);
    ASSERT_NE(button, nullptr);
    QTest::mouseClick(button, Qt::LeftButton);
    deliver();
  }
  // What the user does in the next modal dialog, once it shows.
  static void inNextDialog(std::function<void(QDialog&)> act) {
    QTimer::singleShot(0, [act] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr) << "no dialog showed";
      act(*dialog);
    });
  }
  bool menuEnabled(uint32_t id) { return frame->menuAction(id)->isEnabled(); }

  std::string settingsKey() const { return "Software\\NQuillon\\" + ProductName() + "\\" + ProductVersion() + "\\Settings"; }

  shell::QtMessageLoop loop;
  platform::VirtualTimers timers;
  std::unique_ptr<LoopbackDevices> devices;
  platform::MemorySettingsStore settings;
  platform::ScriptedPrompts prompts;
  std::optional<platform::InstalledSeams> seams;
  std::unique_ptr<shell::MainFrame> frame;
};
