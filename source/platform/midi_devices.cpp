#include "platform/midi_devices.h"

#include <atomic>

namespace platform {

uint32_t MidiOutPort::shortMsgs(std::span<const uint32_t> words, std::size_t& sent) {
  for (sent = 0; sent < words.size(); ++sent) {
    if (shortMsg(words[sent]) == MIDIERR_NOTREADY) return MIDIERR_NOTREADY;
  }
  return MMSYSERR_NOERROR;
}

namespace {

std::atomic<MidiDevices*> installedDevices{nullptr};

// The mapper stands for the first device of the list.
uint32_t mappedId(uint32_t id) { return id == MIDI_MAPPER ? 0 : id; }

uint32_t prepare(MidiHeader* header) {
  if (header == nullptr) return MMSYSERR_INVALPARAM;
  header->dwFlags |= MHDR_PREPARED;
  return MMSYSERR_NOERROR;
}

uint32_t unprepare(MidiHeader* header) {
  if (header == nullptr) return MMSYSERR_INVALPARAM;
  if ((header->dwFlags & MHDR_INQUEUE) != 0) return MIDIERR_STILLPLAYING;
  header->dwFlags &= ~MHDR_PREPARED;
  return MMSYSERR_NOERROR;
}

// Checks a header before it goes to the driver and marks it queued.
uint32_t queueHeader(MidiHeader* header) {
  if (header == nullptr || header->lpData == nullptr) return MMSYSERR_INVALPARAM;
  if ((header->dwFlags & MHDR_PREPARED) == 0) return MIDIERR_UNPREPARED;
  if ((header->dwFlags & MHDR_INQUEUE) != 0) return MIDIERR_STILLPLAYING;
  header->dwFlags = (header->dwFlags & ~MHDR_DONE) | MHDR_INQUEUE;
  return MMSYSERR_NOERROR;
}

// Hands a checked header to the port; one the driver refuses is left as it
// was handed in, not queued.
template <class Port, class Take>
uint32_t handToDriver(Port* port, MidiHeader* header, Take&& take) {
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t checked = queueHeader(header);
  if (checked != MMSYSERR_NOERROR) return checked;
  const uint32_t result = take(*port, *header);
  if (result != MMSYSERR_NOERROR) header->dwFlags &= ~MHDR_INQUEUE;
  return result;
}

// Opens a port through the installed list; *port is null unless it opened.
template <class Port, class Open>
uint32_t openPort(Port** port, Open&& open) {
  if (port == nullptr) return MMSYSERR_INVALPARAM;
  *port = nullptr;
  MidiDevices* devices = midiDevices();
  if (devices == nullptr) return MMSYSERR_BADDEVICEID;
  std::unique_ptr<Port> opened;
  const uint32_t result = open(*devices, opened);
  if (result == MMSYSERR_NOERROR) *port = opened.release();
  return result;
}

// A port that closed is gone; one that refused to close stays open.
template <class Port>
uint32_t closePort(Port* port) {
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t result = port->close();
  if (result == MMSYSERR_NOERROR) delete port;
  return result;
}

}  // namespace

std::string midiInGetErrorText(uint32_t code) {
  switch (code) {
    case MMSYSERR_NOERROR:
      return "The MIDI device works.";
    case MMSYSERR_BADDEVICEID:
      return "There is no MIDI device with this number. It may have been unplugged.";
    case MMSYSERR_ALLOCATED:
      return "The MIDI device is in use by another program, or already open. Close the other program and try again.";
    case MMSYSERR_INVALHANDLE:
      return "The MIDI device is not open.";
    case MMSYSERR_NODRIVER:
      return "The MIDI device cannot be reached: its driver, server or sound bank is missing, or it is gone.";
    case MMSYSERR_NOMEM:
      return "There is not enough memory to open the MIDI device.";
    case MMSYSERR_NOTSUPPORTED:
      return "The MIDI device cannot do this.";
    case MMSYSERR_INVALPARAM:
      return "The MIDI device was given a value it does not accept.";
    case MIDIERR_UNPREPARED:
      return "A MIDI buffer was not made ready for the device.";
    case MIDIERR_STILLPLAYING:
      return "The MIDI device is still using a buffer.";
    case MIDIERR_NOTREADY:
      return "The MIDI device is busy. Wait a moment and try again.";
    default:
      return "The MIDI device reported error " + std::to_string(code) + ".";
  }
}

void installMidiDevices(MidiDevices* devices) { installedDevices.store(devices, std::memory_order_release); }

MidiDevices* midiDevices() { return installedDevices.load(std::memory_order_acquire); }

void midiSetSynthGain(double gain) {
  if (MidiDevices* devices = midiDevices()) devices->setSynthGain(gain);
}

uint32_t midiOutGetNumDevs() {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->outCount() : 0;
}

uint32_t midiOutGetDevCaps(uint32_t id, std::string& name) {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->outName(mappedId(id), name) : MMSYSERR_BADDEVICEID;
}

uint32_t midiOutOpen(MidiOutPort** port, uint32_t id, MidiOutCallbackFn callback, uintptr_t instance) {
  return openPort(port, [&](MidiDevices& devices, std::unique_ptr<MidiOutPort>& opened) {
    return devices.outOpen(mappedId(id), callback, instance, opened);
  });
}

uint32_t midiOutClose(MidiOutPort* port) { return closePort(port); }

uint32_t midiOutPrepareHeader(MidiOutPort* port, MidiHeader* header) {
  return port != nullptr ? prepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiOutUnprepareHeader(MidiOutPort* port, MidiHeader* header) {
  return port != nullptr ? unprepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiOutLongMsg(MidiOutPort* port, MidiHeader* header) {
  return handToDriver(port, header, [](MidiOutPort& out, MidiHeader& h) { return out.longMsg(h); });
}

uint32_t midiOutReset(MidiOutPort* port) { return port != nullptr ? port->reset() : MMSYSERR_INVALHANDLE; }

uint32_t midiInGetNumDevs() {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->inCount() : 0;
}

uint32_t midiInGetDevCaps(uint32_t id, std::string& name) {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->inName(id, name) : MMSYSERR_BADDEVICEID;
}

uint32_t midiInOpen(MidiInPort** port, uint32_t id, MidiInCallbackFn callback, uintptr_t instance) {
  return openPort(port, [&](MidiDevices& devices, std::unique_ptr<MidiInPort>& opened) {
    return devices.inOpen(id, callback, instance, opened);
  });
}

uint32_t midiInClose(MidiInPort* port) { return closePort(port); }

uint32_t midiInStart(MidiInPort* port) { return port != nullptr ? port->start() : MMSYSERR_INVALHANDLE; }

uint32_t midiInStop(MidiInPort* port) { return port != nullptr ? port->stop() : MMSYSERR_INVALHANDLE; }

uint32_t midiInReset(MidiInPort* port) { return port != nullptr ? port->reset() : MMSYSERR_INVALHANDLE; }

uint32_t midiInPrepareHeader(MidiInPort* port, MidiHeader* header) {
  return port != nullptr ? prepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiInUnprepareHeader(MidiInPort* port, MidiHeader* header) {
  return port != nullptr ? unprepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiInAddBuffer(MidiInPort* port, MidiHeader* header) {
  return handToDriver(port, header, [](MidiInPort& in, MidiHeader& h) { return in.addBuffer(h); });
}

}  // namespace platform
