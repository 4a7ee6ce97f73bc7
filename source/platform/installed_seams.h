#pragma once
// Installs the seams that a program or a test chose, for the life of one
// object, and takes them away again. One order for everybody: the message
// loop first, since timers and devices post to it; then the timers, the
// devices, the settings and the prompts. They go in the reverse order, so
// that nothing that may still post finds the loop gone. A seam left null is
// neither installed nor taken away.

#include "platform/message_loop.h"
#include "platform/midi_devices.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"
#include "platform/timers.h"

namespace platform {

struct Seams {
  MessageLoop* loop = nullptr;
  Timers* timers = nullptr;
  MidiDevices* devices = nullptr;
  SettingsStore* settings = nullptr;
  Prompts* prompts = nullptr;
};

class InstalledSeams {
 public:
  explicit InstalledSeams(const Seams& seams);
  ~InstalledSeams();
  InstalledSeams(const InstalledSeams&) = delete;
  InstalledSeams& operator=(const InstalledSeams&) = delete;

 private:
  Seams seams_;
};

}  // namespace platform
