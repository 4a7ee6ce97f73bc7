#include "midi/backends/rtmidi_devices.h"

#include <jack/jack.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <mutex>

#include "midi/backends/wire_check.h"
#include "midi/midi_event.h"

using namespace platform;

namespace {

// RtMidi reports here instead of throwing or printing; the last error stands
// until it is read.
struct ErrorSink {
  std::atomic<int> last{-1};

  static void report(RtMidiError::Type type, const std::string&, void* sink) {
    if (type == RtMidiError::WARNING || type == RtMidiError::DEBUG_WARNING) return;
    static_cast<ErrorSink*>(sink)->last.store(type);
  }
  uint32_t take() {
    const int type = last.exchange(-1);
    return type < 0 ? MMSYSERR_NOERROR : ResultOfRtMidiError(static_cast<RtMidiError::Type>(type));
  }
};

// JACK reports through its own printouts; the result codes say what matters.
void quietJack(const char*) {}
void silenceJack() {
  static std::once_flag once;
  std::call_once(once, [] {
    jack_set_error_function(quietJack);
    jack_set_info_function(quietJack);
  });
}

bool jackServerRunning() {
  silenceJack();
  jack_status_t status{};
  jack_client_t* client = jack_client_open("velmora-probe", JackNoStartServer, &status);
  if (client == nullptr) return false;
  jack_client_close(client);
  return true;
}

template <class Midi>
std::vector<std::string> portNames(Midi& midi) {
  std::vector<std::string> names;
  const unsigned count = midi.getPortCount();
  for (unsigned i = 0; i < count; ++i) names.push_back(midi.getPortName(i));
  return names;
}

// The port's place in the list as it stands now, or none when it is gone.
template <class Midi>
bool findPort(Midi& midi, const std::string& name, unsigned& index) {
  const auto names = portNames(midi);
  for (index = 0; index < names.size(); ++index) {
    if (names[index] == name) return true;
  }
  return false;
}

template <class Midi>
uint32_t openByName(Midi& midi, ErrorSink& errors, const std::string& name, const std::string& ownPortName) {
  unsigned index = 0;
  if (!findPort(midi, name, index)) return MMSYSERR_NODRIVER;
  midi.openPort(index, ownPortName);
  const uint32_t result = errors.take();
  if (result == MMSYSERR_NOERROR && !midi.isPortOpen()) return MMSYSERR_ERROR;
  return result;
}

class RtOutPort final : public MidiOutPort {
 public:
  RtOutPort(RtMidi::Api api, const std::string& clientName, MidiOutCallbackFn callback, uintptr_t instance)
      : midi_(api, clientName), callback_(callback), instance_(instance) {
    midi_.setErrorCallback(&ErrorSink::report, &errors_);
  }

  uint32_t open(const std::string& name) { return openByName(midi_, errors_, name, "Velmora Out"); }

  uint32_t shortMsg(uint32_t word) override {
    const auto status = static_cast<uint8_t>(word);
    // A meta event or a lone data byte is no message for a device.
    if (status < 0x80 || status == 0xF0) return MMSYSERR_NOERROR;
    if (!ShortMessageFitsWire(word)) {
      CountDroppedMessage();
      return MMSYSERR_NOERROR;
    }
    const unsigned char bytes[3] = {status, static_cast<unsigned char>(word >> 8),
                                    static_cast<unsigned char>(word >> 16)};
    midi_.sendMessage(bytes, 1 + static_cast<std::size_t>(MidiDataBytes(status)));
    return errors_.take();
  }

  uint32_t longMsg(MidiHeader& header) override {
    if (SysexFitsWire({header.lpData, header.dwBufferLength})) {
      midi_.sendMessage(header.lpData, header.dwBufferLength);
      const uint32_t result = errors_.take();
      if (result != MMSYSERR_NOERROR) return result;
    } else {
      CountDroppedMessage();
    }
    MarkHeaderDone(header);
    notify(MOM_DONE, reinterpret_cast<uintptr_t>(&header));
    return MMSYSERR_NOERROR;
  }

  // Ends every note on every channel, and the sustain pedal with them.
  uint32_t reset() override {
    for (unsigned char channel = 0; channel < 16; ++channel) {
      for (int controller : {64, 123}) {
        const unsigned char bytes[3] = {static_cast<unsigned char>(0xB0 | channel),
                                        static_cast<unsigned char>(controller), 0};
        midi_.sendMessage(bytes, 3);
      }
    }
    return errors_.take();
  }

  uint32_t close() override {
    midi_.closePort();
    notify(MOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
  }

  void notify(uint32_t message, uintptr_t param1) {
    if (callback_ != nullptr) callback_(this, message, instance_, param1, 0);
  }

 private:
  ErrorSink errors_;
  RtMidiOut midi_;
  MidiOutCallbackFn callback_;
  uintptr_t instance_;
};

class RtInPort final : public MidiInPort {
 public:
  RtInPort(RtMidi::Api api, const std::string& clientName) : midi_(api, clientName) {
    midi_.setErrorCallback(&ErrorSink::report, &errors_);
    midi_.ignoreTypes(false, false, false);  // sysex, time code and sensing all come in
  }

  uint32_t open(const std::string& name, MidiInCallbackFn callback, uintptr_t instance) {
    delivery_.open(callback, instance, this);
    midi_.setCallback(&RtInPort::received, this);
    return openByName(midi_, errors_, name, "Velmora In");
  }

  // A port of our own that others connect to.
  uint32_t openVirtual(const std::string& portName, MidiInCallbackFn callback, uintptr_t instance) {
    delivery_.open(callback, instance, this);
    midi_.setCallback(&RtInPort::received, this);
    midi_.openVirtualPort(portName);
    return errors_.take();
  }

  uint32_t start() override {
    delivery_.start();
    return MMSYSERR_NOERROR;
  }
  uint32_t stop() override {
    delivery_.stop();
    return MMSYSERR_NOERROR;
  }
  uint32_t reset() override {
    delivery_.reset();
    return MMSYSERR_NOERROR;
  }
  uint32_t addBuffer(MidiHeader& header) override { return delivery_.addBuffer(header); }
  uint32_t close() override {
    const uint32_t result = delivery_.close();
    if (result == MMSYSERR_NOERROR) midi_.closePort();
    return result;
  }

 private:
  // On RtMidi's thread: a whole message at a time, sysex included.
  static void received(double, std::vector<unsigned char>* message, void* self) {
    auto* port = static_cast<RtInPort*>(self);
    if (message == nullptr || message->empty()) return;
    const auto& bytes = *message;
    if (bytes[0] == 0xF0) {
      port->delivery_.deliverSysex(bytes);
      return;
    }
    uint32_t word = 0;
    for (std::size_t i = 0; i < bytes.size() && i < 3; ++i) word |= uint32_t{bytes[i]} << (8 * i);
    port->delivery_.deliverShort(word);
  }

  ErrorSink errors_;
  InputDelivery delivery_;
  RtMidiIn midi_;  // last, so that its thread has ended before the rest goes
};

// Runs an open, turning what RtMidi throws into a result code.
template <class Open>
uint32_t guarded(Open&& open) {
  try {
    return open();
  } catch (const RtMidiError& error) {
    return ResultOfRtMidiError(error.getType());
  } catch (const std::bad_alloc&) {
    return MMSYSERR_NOMEM;
  }
}

}  // namespace

uint32_t ResultOfRtMidiError(RtMidiError::Type type) {
  switch (type) {
    case RtMidiError::WARNING:
    case RtMidiError::DEBUG_WARNING:
      return MMSYSERR_NOERROR;
    case RtMidiError::NO_DEVICES_FOUND:
    case RtMidiError::INVALID_DEVICE:
      return MMSYSERR_BADDEVICEID;
    case RtMidiError::MEMORY_ERROR:
      return MMSYSERR_NOMEM;
    case RtMidiError::INVALID_PARAMETER:
      return MMSYSERR_INVALPARAM;
    case RtMidiError::DRIVER_ERROR:
      return MMSYSERR_NODRIVER;
    default:
      return MMSYSERR_ERROR;
  }
}

bool RtMidiDevices::Reachable(RtMidi::Api api) {
  switch (api) {
    case RtMidi::LINUX_ALSA: {
      std::error_code error;
      return std::filesystem::exists("/dev/snd/seq", error);
    }
    case RtMidi::UNIX_JACK:
      return jackServerRunning();
    case RtMidi::RTMIDI_DUMMY:
      return false;
    default:
      return true;
  }
}

RtMidiDevices::RtMidiDevices(RtMidi::Api api, std::string clientName) : api_(api), clientName_(std::move(clientName)) {
  refresh();
}

void RtMidiDevices::refresh() {
  outNames_.clear();
  inNames_.clear();
  if (!Reachable(api_)) return;
  try {
    ErrorSink errors;
    RtMidiOut out(api_, clientName_);
    out.setErrorCallback(&ErrorSink::report, &errors);
    outNames_ = portNames(out);
    RtMidiIn in(api_, clientName_);
    in.setErrorCallback(&ErrorSink::report, &errors);
    inNames_ = portNames(in);
  } catch (const RtMidiError&) {
    // The interface failed as it started: it lists no ports.
  }
}

uint32_t RtMidiDevices::outName(uint32_t id, std::string& name) {
  if (id >= outNames_.size()) return MMSYSERR_BADDEVICEID;
  name = outNames_[id];
  return MMSYSERR_NOERROR;
}

uint32_t RtMidiDevices::inName(uint32_t id, std::string& name) {
  if (id >= inNames_.size()) return MMSYSERR_BADDEVICEID;
  name = inNames_[id];
  return MMSYSERR_NOERROR;
}

uint32_t RtMidiDevices::outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                                std::unique_ptr<MidiOutPort>& port) {
  if (id >= outNames_.size()) return MMSYSERR_BADDEVICEID;
  return guarded([&] {
    auto opened = std::make_unique<RtOutPort>(api_, clientName_, callback, instance);
    const uint32_t result = opened->open(outNames_[id]);
    if (result != MMSYSERR_NOERROR) return result;
    opened->notify(MOM_OPEN, 0);
    port = std::move(opened);
    return MMSYSERR_NOERROR;
  });
}

VirtualInputDevices::VirtualInputDevices(const std::vector<RtMidi::Api>& apis, std::string clientName)
    : clientName_(std::move(clientName)) {
  std::vector<RtMidi::Api> compiled;
  RtMidi::getCompiledApi(compiled);
  for (RtMidi::Api api : apis) {
    const bool canHaveOne = api == RtMidi::LINUX_ALSA || api == RtMidi::UNIX_JACK || api == RtMidi::MACOSX_CORE;
    if (!canHaveOne || std::find(compiled.begin(), compiled.end(), api) == compiled.end()) continue;
    if (!RtMidiDevices::Reachable(api)) continue;
    api_ = api;
    available_ = true;
    return;
  }
}

uint32_t VirtualInputDevices::inName(uint32_t id, std::string& name) {
  if (id >= inCount()) return MMSYSERR_BADDEVICEID;
  name = clientName_ + " virtual input (" + RtMidi::getApiDisplayName(api_) + ")";
  return MMSYSERR_NOERROR;
}

uint32_t VirtualInputDevices::inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                                     std::unique_ptr<MidiInPort>& port) {
  if (id >= inCount()) return MMSYSERR_BADDEVICEID;
  return guarded([&] {
    auto opened = std::make_unique<RtInPort>(api_, clientName_);
    const uint32_t result = opened->openVirtual(PortName, callback, instance);
    if (result != MMSYSERR_NOERROR) return result;
    port = std::move(opened);
    return MMSYSERR_NOERROR;
  });
}

uint32_t RtMidiDevices::inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                               std::unique_ptr<MidiInPort>& port) {
  if (id >= inNames_.size()) return MMSYSERR_BADDEVICEID;
  return guarded([&] {
    auto opened = std::make_unique<RtInPort>(api_, clientName_);
    const uint32_t result = opened->open(inNames_[id], callback, instance);
    if (result != MMSYSERR_NOERROR) return result;
    port = std::move(opened);
    return MMSYSERR_NOERROR;
  });
}
