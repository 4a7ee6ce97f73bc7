#pragma once
// The MIDI device seam: device count and name, open and close with a driver
// callback, short and long messages, reset, and the input's start, stop and
// buffers, with the driver's own result codes and message numbers.
//
// Device numbers run over one list. A port's callback may run on any thread
// (the driver's, or the thread of whoever made the data arrive); it must only
// do what a driver callback may: no blocking, no allocation.

#include <cstdint>
#include <memory>
#include <span>
#include <string>

namespace platform {

// Result codes.
inline constexpr uint32_t MMSYSERR_NOERROR = 0;
inline constexpr uint32_t MMSYSERR_ERROR = 1;
inline constexpr uint32_t MMSYSERR_BADDEVICEID = 2;
inline constexpr uint32_t MMSYSERR_ALLOCATED = 4;
inline constexpr uint32_t MMSYSERR_INVALHANDLE = 5;
inline constexpr uint32_t MMSYSERR_NODRIVER = 6;
inline constexpr uint32_t MMSYSERR_NOMEM = 7;
inline constexpr uint32_t MMSYSERR_NOTSUPPORTED = 8;
inline constexpr uint32_t MMSYSERR_INVALPARAM = 11;
inline constexpr uint32_t MIDIERR_UNPREPARED = 64;
inline constexpr uint32_t MIDIERR_STILLPLAYING = 65;
inline constexpr uint32_t MIDIERR_NOTREADY = 67;

// Callback messages.
inline constexpr uint32_t MIM_OPEN = 961;
inline constexpr uint32_t MIM_CLOSE = 962;
inline constexpr uint32_t MIM_DATA = 963;
inline constexpr uint32_t MIM_LONGDATA = 964;
inline constexpr uint32_t MIM_ERROR = 965;
inline constexpr uint32_t MIM_LONGERROR = 966;
inline constexpr uint32_t MOM_OPEN = 967;
inline constexpr uint32_t MOM_CLOSE = 968;
inline constexpr uint32_t MOM_DONE = 969;

// The device number that stands for "the default output".
inline constexpr uint32_t MIDI_MAPPER = 0xFFFFFFFFu;

// Header flags.
inline constexpr uint32_t MHDR_DONE = 1;
inline constexpr uint32_t MHDR_PREPARED = 2;
inline constexpr uint32_t MHDR_INQUEUE = 4;

// A long message buffer, shared with the driver while it is queued.
struct MidiHeader {
  uint8_t* lpData;
  uint32_t dwBufferLength;
  uint32_t dwBytesRecorded;
  uintptr_t dwUser;
  uint32_t dwFlags;
};

// The driver gives a header back: no longer queued, done.
inline void MarkHeaderDone(MidiHeader& header) { header.dwFlags = (header.dwFlags & ~MHDR_INQUEUE) | MHDR_DONE; }

class MidiOutPort;
class MidiInPort;
using MidiOutCallbackFn = void (*)(MidiOutPort* port, uint32_t message, uintptr_t instance, uintptr_t param1,
                                   uintptr_t param2);
using MidiInCallbackFn = void (*)(MidiInPort* port, uint32_t message, uintptr_t instance, uintptr_t param1,
                                  uintptr_t param2);

// An open output device.
class MidiOutPort {
 public:
  virtual ~MidiOutPort() = default;
  virtual uint32_t shortMsg(uint32_t word) = 0;
  // Sends short messages in order, as shortMsg each, and stops at the first
  // that the device answers not-ready: MIDIERR_NOTREADY with sent counting
  // those before it, else MMSYSERR_NOERROR with sent the whole count. A port
  // may do it in one call, to spare a burst a call a message.
  virtual uint32_t shortMsgs(std::span<const uint32_t> words, std::size_t& sent);
  // Sends header.dwBufferLength bytes; when done, MarkHeaderDone and a MOM_DONE
  // callback with the header. The header arrives prepared and marked queued.
  virtual uint32_t longMsg(MidiHeader& header) = 0;
  virtual uint32_t reset() = 0;
  // Ends the port's work with a MOM_CLOSE callback; the port is deleted after.
  virtual uint32_t close() = 0;
};

// An open input device.
class MidiInPort {
 public:
  virtual ~MidiInPort() = default;
  virtual uint32_t start() = 0;
  virtual uint32_t stop() = 0;
  // Hands every queued buffer back, empty, with MIM_LONGDATA.
  virtual uint32_t reset() = 0;
  // Queues a prepared buffer for sysex; it comes back filled with MIM_LONGDATA.
  virtual uint32_t addBuffer(MidiHeader& header) = 0;
  // Ends the port's work with a MIM_CLOSE callback; the port is deleted after.
  virtual uint32_t close() = 0;
};

// The device list.
class MidiDevices {
 public:
  virtual ~MidiDevices() = default;
  virtual uint32_t outCount() = 0;
  // MMSYSERR_NOERROR with the name, or MMSYSERR_BADDEVICEID.
  virtual uint32_t outName(uint32_t id, std::string& name) = 0;
  virtual uint32_t outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                           std::unique_ptr<MidiOutPort>& port) = 0;
  virtual uint32_t inCount() = 0;
  virtual uint32_t inName(uint32_t id, std::string& name) = 0;
  virtual uint32_t inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                          std::unique_ptr<MidiInPort>& port) = 0;
  // The output gain of a built-in synthesizer among the devices, now and for
  // its later openings; devices without one ignore it.
  virtual void setSynthGain(double) {}
};

// The text for a result code of the device calls, input or output: the one
// text the program shows when a device cannot be opened.
std::string midiInGetErrorText(uint32_t code);

void installMidiDevices(MidiDevices* devices);
MidiDevices* midiDevices();
// The gain to the installed devices' built-in synthesizer, if any.
void midiSetSynthGain(double gain);

// The driver calls, forwarded to the installed device list. With none
// installed there are no devices. Null ports give MMSYSERR_INVALHANDLE.
uint32_t midiOutGetNumDevs();
uint32_t midiOutGetDevCaps(uint32_t id, std::string& name);
uint32_t midiOutOpen(MidiOutPort** port, uint32_t id, MidiOutCallbackFn callback, uintptr_t instance);
uint32_t midiOutClose(MidiOutPort* port);
inline uint32_t midiOutShortMsg(MidiOutPort* port, uint32_t word) {
  return port != nullptr ? port->shortMsg(word) : MMSYSERR_INVALHANDLE;
}
uint32_t midiOutPrepareHeader(MidiOutPort* port, MidiHeader* header);
uint32_t midiOutUnprepareHeader(MidiOutPort* port, MidiHeader* header);
uint32_t midiOutLongMsg(MidiOutPort* port, MidiHeader* header);
uint32_t midiOutReset(MidiOutPort* port);

uint32_t midiInGetNumDevs();
uint32_t midiInGetDevCaps(uint32_t id, std::string& name);
uint32_t midiInOpen(MidiInPort** port, uint32_t id, MidiInCallbackFn callback, uintptr_t instance);
uint32_t midiInClose(MidiInPort* port);
uint32_t midiInStart(MidiInPort* port);
uint32_t midiInStop(MidiInPort* port);
uint32_t midiInReset(MidiInPort* port);
uint32_t midiInPrepareHeader(MidiInPort* port, MidiHeader* header);
uint32_t midiInUnprepareHeader(MidiInPort* port, MidiHeader* header);
uint32_t midiInAddBuffer(MidiInPort* port, MidiHeader* header);

}  // namespace platform
