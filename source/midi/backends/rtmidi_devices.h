#pragma once
// The system's MIDI ports through RtMidi: one instance lists and opens the
// ports of one interface (the ALSA sequencer, JACK, or CoreMIDI and WinMM
// elsewhere). Where the interface's system is absent (no sequencer device, no
// JACK server running), it lists no ports and nothing fails. Ports are found
// again by name when they open, so a port list taken earlier stays right when
// other programs come and go.
//
// RtMidi's exceptions and error reports end here, turned into result codes.
//
// Threads: listing, opening and closing ports run on the UI thread. An output
// port sends from whichever thread the output toolkit sends on: the UI thread
// or the clock's pass. An input port's messages come on RtMidi's own thread
// and go on through InputDelivery, whose rules hold.

#include <RtMidi.h>
#include <memory>
#include <string>
#include <vector>

#include "midi/backends/input_delivery.h"
#include "platform/midi_devices.h"

class RtMidiDevices final : public platform::MidiDevices {
 public:
  RtMidiDevices(RtMidi::Api api, std::string clientName);
  // Lists the ports anew.
  void refresh();
  // Whether the interface's system can be reached on this machine.
  static bool Reachable(RtMidi::Api api);

  uint32_t outCount() override { return static_cast<uint32_t>(outNames_.size()); }
  uint32_t outName(uint32_t id, std::string& name) override;
  uint32_t outOpen(uint32_t id, platform::MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<platform::MidiOutPort>& port) override;
  uint32_t inCount() override { return static_cast<uint32_t>(inNames_.size()); }
  uint32_t inName(uint32_t id, std::string& name) override;
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override;

 private:
  RtMidi::Api api_;
  std::string clientName_;
  std::vector<std::string> outNames_;
  std::vector<std::string> inNames_;
};

// One input port of Velmora's own, which other programs connect to and play
// into: a virtual port of the first given interface that can have one and is
// reachable here (the ALSA sequencer, JACK, CoreMIDI). It lists no input
// where none can, and never an output.
class VirtualInputDevices final : public platform::MidiDevices {
 public:
  VirtualInputDevices(const std::vector<RtMidi::Api>& apis, std::string clientName);
  // The port's name as other programs see it, beside the client's.
  static constexpr const char* PortName = "Virtual In";

  uint32_t outCount() override { return 0; }
  uint32_t outName(uint32_t, std::string&) override { return platform::MMSYSERR_BADDEVICEID; }
  uint32_t outOpen(uint32_t, platform::MidiOutCallbackFn, uintptr_t, std::unique_ptr<platform::MidiOutPort>&) override {
    return platform::MMSYSERR_BADDEVICEID;
  }
  uint32_t inCount() override { return available_ ? 1 : 0; }
  uint32_t inName(uint32_t id, std::string& name) override;
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override;

 private:
  RtMidi::Api api_ = RtMidi::UNSPECIFIED;
  bool available_ = false;
  std::string clientName_;
};

// The result code for an RtMidi error.
uint32_t ResultOfRtMidiError(RtMidiError::Type type);
