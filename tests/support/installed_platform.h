#pragma once
// Installs timers, a message loop and a device list for the life of a test,
// and takes them away again, in the order the engine needs.

#include "platform/message_loop.h"
#include "platform/midi_devices.h"
#include "platform/timers.h"

class InstalledPlatform {
 public:
  InstalledPlatform(platform::Timers& timers, platform::MessageLoop& loop, platform::MidiDevices& devices) {
    platform::installTimers(&timers);
    platform::installMessageLoop(&loop);
    platform::installMidiDevices(&devices);
  }
  ~InstalledPlatform() {
    platform::installMidiDevices(nullptr);
    platform::installMessageLoop(nullptr);
    platform::installTimers(nullptr);
  }
  InstalledPlatform(const InstalledPlatform&) = delete;
  InstalledPlatform& operator=(const InstalledPlatform&) = delete;
};
