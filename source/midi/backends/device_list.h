#pragma once
// One device list over several backends: device numbers run over the
// backends in the order they were added, outputs and inputs alike.
//
// Threads: backends are added before the list is installed, and the list
// never changes after; counting, naming and opening run on the UI thread.
// The ports it opens are the backends' own, with their own thread rules.

#include <memory>
#include <vector>

#include "midi/backends/loopback.h"
#include "midi/backends/rtmidi_devices.h"
#include "midi/backends/synth.h"
#include "platform/midi_devices.h"

class DeviceList final : public platform::MidiDevices {
 public:
  void add(platform::MidiDevices* backend) { backends_.push_back(backend); }

  uint32_t outCount() override;
  uint32_t outName(uint32_t id, std::string& name) override;
  uint32_t outOpen(uint32_t id, platform::MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<platform::MidiOutPort>& port) override;
  uint32_t inCount() override;
  uint32_t inName(uint32_t id, std::string& name) override;
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override;
  void setSynthGain(double gain) override {
    for (platform::MidiDevices* backend : backends_) backend->setSynthGain(gain);
  }

 private:
  std::vector<platform::MidiDevices*> backends_;
};

// Every device of this machine, in Velmora's numbering. Outputs: the built-in
// synthesizer, the loopback, then the system's ports (ALSA sequencer, then
// JACK, or CoreMIDI or WinMM elsewhere). Inputs: the loopback, Velmora's own
// virtual input where the system allows one, then the system's ports. So a
// machine without MIDI hardware still has both.
struct StandardDevices {
  explicit StandardDevices(std::string soundFont = SynthDevices::FindSoundFont());

  SynthDevices synth;
  LoopbackDevices loopback;
  VirtualInputDevices virtualInput;
  std::vector<std::unique_ptr<RtMidiDevices>> system;
  DeviceList list;
};
