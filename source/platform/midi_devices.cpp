#include "platform/midi_devices.h"

#include <atomic>

namespace platform {

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

// A driver that refuses a header leaves it as it was handed in, not queued.
uint32_t unqueueOnError(MidiHeader* header, uint32_t result) {
  if (result != MMSYSERR_NOERROR) header->dwFlags &= ~MHDR_INQUEUE;
  return result;
}

}  // namespace

void installMidiDevices(MidiDevices* devices) { installedDevices.store(devices, std::memory_order_release); }

MidiDevices* midiDevices() { return installedDevices.load(std::memory_order_acquire); }

uint32_t midiOutGetNumDevs() {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->outCount() : 0;
}

uint32_t midiOutGetDevCaps(uint32_t id, std::string& name) {
  MidiDevices* devices = midiDevices();
  return devices != nullptr ? devices->outName(mappedId(id), name) : MMSYSERR_BADDEVICEID;
}

uint32_t midiOutOpen(MidiOutPort** port, uint32_t id, MidiOutCallbackFn callback, uintptr_t instance) {
  if (port == nullptr) return MMSYSERR_INVALPARAM;
  *port = nullptr;
  MidiDevices* devices = midiDevices();
  if (devices == nullptr) return MMSYSERR_BADDEVICEID;
  std::unique_ptr<MidiOutPort> opened;
  const uint32_t result = devices->outOpen(mappedId(id), callback, instance, opened);
  if (result == MMSYSERR_NOERROR) *port = opened.release();
  return result;
}

uint32_t midiOutClose(MidiOutPort* port) {
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t result = port->close();
  if (result == MMSYSERR_NOERROR) delete port;
  return result;
}

uint32_t midiOutShortMsg(MidiOutPort* port, uint32_t word) {
  return port != nullptr ? port->shortMsg(word) : MMSYSERR_INVALHANDLE;
}

uint32_t midiOutPrepareHeader(MidiOutPort* port, MidiHeader* header) {
  return port != nullptr ? prepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiOutUnprepareHeader(MidiOutPort* port, MidiHeader* header) {
  return port != nullptr ? unprepare(header) : MMSYSERR_INVALHANDLE;
}

uint32_t midiOutLongMsg(MidiOutPort* port, MidiHeader* header) {
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t checked = queueHeader(header);
  if (checked != MMSYSERR_NOERROR) return checked;
  return unqueueOnError(header, port->longMsg(*header));
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
  if (port == nullptr) return MMSYSERR_INVALPARAM;
  *port = nullptr;
  MidiDevices* devices = midiDevices();
  if (devices == nullptr) return MMSYSERR_BADDEVICEID;
  std::unique_ptr<MidiInPort> opened;
  const uint32_t result = devices->inOpen(id, callback, instance, opened);
  if (result == MMSYSERR_NOERROR) *port = opened.release();
  return result;
}

uint32_t midiInClose(MidiInPort* port) {
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t result = port->close();
  if (result == MMSYSERR_NOERROR) delete port;
  return result;
}

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
  if (port == nullptr) return MMSYSERR_INVALHANDLE;
  const uint32_t checked = queueHeader(header);
  if (checked != MMSYSERR_NOERROR) return checked;
  return unqueueOnError(header, port->addBuffer(*header));
}

}  // namespace platform
