#pragma once
// The input half of the MIDI toolkit. An input handle wraps one MIDI input
// device. Its driver callback filters, echoes to the output (thru), hands MIDI
// clock, transport and time code to the sync clock, and while the transport
// captures, stamps each message with the clock's ticks and stores it in a
// ring. A hidden window takes the sysex buffers over to the UI thread. The
// owner drains the input with MidiIn, one MidiEvent at a time.
//
// Threads: the driver callback writes the ring (writeIndex), the generator's
// capture is a second writer from the timer thread, and MidiIn on the UI
// thread reads it (readIndex). The count-in's end on the timer thread empties
// it by setting both indices to 0. A slot is one atomic word, so two writers
// meeting on one slot lose an event (two rare writers make that loss
// acceptable) but never tear it.
// Everything else of the handle belongs to the UI thread.

#include <atomic>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "midi/midi_event.h"
#include "platform/message_loop.h"
#include "platform/midi_devices.h"
#include "platform/shared_word.h"

struct SyncClock;
struct MidiInHandle;

// The hidden input window's notice of a filled sysex buffer.
inline constexpr uint32_t NM_SYSEX_IN = 20817;

// What OpenMidiIn gives a handle variable that holds no live handle.
inline constexpr uint32_t MIDI_IN_FAILED = 0xFFFFFFFFu;

// The filter after OpenMidiIn: only channel messages pass.
inline constexpr uint32_t MIDI_IN_OPEN_FILTER = 0x3FFF80;
// The filter bits of MIDI clock, Start, Continue and Stop.
inline constexpr uint32_t FILTER_MIDI_SYNC = 0x74000;

// The hidden input window: renews sysex buffers on the UI thread.
class MidiInWindow final : public platform::MessageTarget {
 public:
  explicit MidiInWindow(MidiInHandle* in) : in_(in) {}
  intptr_t handleMessage(uint32_t message, uintptr_t param1, uintptr_t param2) override;
  MidiInHandle* handle() const { return in_; }

 private:
  MidiInHandle* in_;
};

// One sysex buffer that the handle made: the driver's header and its bytes.
struct InputBuffer {
  platform::MidiHeader header{};
  std::unique_ptr<uint8_t[]> block;
};

// A ring slot: the delta time in the low word, the packed message above it.
using InputSlot = std::atomic<uint64_t>;

struct MidiInHandle {
  platform::MidiInPort* device = nullptr;
  platform::MessageTarget* window = nullptr;  // receives 963
  uint32_t deviceId = 0;
  std::atomic<SyncClock*> clock{nullptr};
  std::atomic<uint32_t> flags{0};
  SharedWord<uint32_t> filter;
  MidiEvent current{};  // the event that MidiIn returns
  std::unique_ptr<MidiInWindow> hiddenWindow;
  uint32_t sysexSize = 0;
  std::atomic<uint32_t> writeIndex{0};
  std::atomic<uint32_t> readIndex{0};
  std::unique_ptr<InputSlot[]> ring;  // ringSize + 1 slots
  uint32_t ringSize = 0;              // last slot index
  std::deque<platform::MidiHeader*> sysexList;  // filled buffers waiting for MidiIn, oldest first
  uint32_t sysexIndex = 0;                      // next byte of the first of them
  // Every buffer the handle made and has not freed, wherever it is now: at
  // the driver, on its way back, or waiting in sysexList. UI thread only.
  std::vector<std::unique_ptr<InputBuffer>> buffers;
  SharedWord<uint32_t> lastEventTime;  // clock position of the last event stamped, less its wire time
};

// The name of an input device; 0 when there is no device with that number, so
// callers walk the numbers from 0 until 0 comes back.
uint32_t GetMidiInDescription(uint32_t deviceId, std::string& text);
uint32_t OpenMidiIn(MidiInHandle** in, platform::MessageTarget* window, uint32_t deviceId, SyncClock* clock,
                    uint32_t flagsWord);
uint32_t CloseMidiIn(MidiInHandle** in);
uint32_t GetMidiInFilters(MidiInHandle* in);
void SetMidiInFilters(MidiInHandle* in, uint32_t filter);
uint32_t StartMidiIn(MidiInHandle* in);
uint32_t StopMidiIn(MidiInHandle* in);
// The next received event, sysex bytes first; null when nothing waits. The
// pointer is good until the next call.
MidiEvent* MidiIn(MidiInHandle* in);
void MidiInCallback(platform::MidiInPort* device, uint32_t message, uintptr_t instance, uintptr_t param1,
                    uintptr_t param2);
intptr_t MidiInProc(MidiInWindow* window, uint32_t message, uintptr_t param1, uintptr_t param2);

// The delta for an event that arrives now: with a clock, the ticks since the
// last event stamped, less the wire time of sysexBytes; without one, the
// driver's timestamp as given. Moves lastEventTime.
uint32_t StampEvent(MidiInHandle* in, uint32_t timestamp, uint32_t sysexBytes);
// Puts an event into the ring as the driver callback does: a delta time and
// the packed message.
void WriteInputSlot(MidiInHandle* in, uint32_t time, uint32_t message);
