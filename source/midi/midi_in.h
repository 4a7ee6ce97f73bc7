#pragma once
// The input handle: one MIDI input device with its ring of stamped events and
// its chain of sysex buffers.
//
// Threads: the driver callback writes the ring (writeIndex), the generator's
// capture is a second writer from the timer thread, and MidiIn on the UI
// thread reads it (readIndex). The count-in's end on the timer thread empties
// it by setting both indices to 0.

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "midi/midi_event.h"
#include "platform/message_loop.h"
#include "platform/midi_devices.h"
#include "platform/shared_word.h"

struct SyncClock;
struct SysexNode;

struct MidiInHandle {
  platform::MidiInPort* device = nullptr;
  platform::MessageTarget* window = nullptr;  // receives 963
  uint32_t deviceId = 0;
  std::atomic<SyncClock*> clock{nullptr};
  std::atomic<uint32_t> flags{0};
  SharedWord<uint32_t> filter;
  MidiEvent current{};  // the event that MidiIn returns for sysex bytes
  platform::MessageTarget* hiddenWindow = nullptr;
  uint32_t sysexSize = 0;
  std::atomic<uint32_t> writeIndex{0};
  std::atomic<uint32_t> readIndex{0};
  std::unique_ptr<MidiEvent[]> ring;
  uint32_t ringSize = 0;  // last slot index
  SysexNode* sysexList = nullptr;
  uint32_t sysexIndex = 0;
  std::unique_ptr<platform::MidiHeader*[]> returnedHeaders;
  platform::MidiHeader** returnedCursor = nullptr;
  SharedWord<uint32_t> lastEventTime;
};

// The name of an input device; 0 when there is no device with that number, so
// callers walk the numbers from 0 until 0 comes back.
uint32_t GetMidiInDescription(uint32_t deviceId, std::string& text);
