#include "midi/midi_in.h"

#include <algorithm>
#include <new>
#include <string>

#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/timers.h"

using namespace platform;

intptr_t MidiInWindow::handleMessage(uint32_t message, uintptr_t param1, uintptr_t param2) {
  return MidiInProc(this, message, param1, param2);
}

namespace {

// Handles that are open now; UI thread only.
std::vector<MidiInHandle*> liveInputs;

bool isLive(const MidiInHandle* in) { return std::find(liveInputs.begin(), liveInputs.end(), in) != liveInputs.end(); }

uintptr_t asParam(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

// Stops, resets or closes the device. Its callback may be running the clock's
// tick for a MIDI clock, and the tick may be waiting in the generator's send
// to this thread: sends are refused meanwhile, so that the device's wait for
// its callback can never wait for this thread.
uint32_t quietDevice(uint32_t (*call)(MidiInPort*), MidiInPort* device) {
  const SendsRefused refused;
  return call(device);
}

// Microseconds that one byte takes on a MIDI cable.
constexpr uint32_t MicrosecondsPerByte = 320;

// ---- sysex buffers (UI thread) ----

InputBuffer* findBuffer(MidiInHandle* in, const MidiHeader* header) {
  for (const auto& buffer : in->buffers) {
    if (&buffer->header == header) return buffer.get();
  }
  return nullptr;
}

void freeBuffer(MidiInHandle* in, MidiHeader* header) {
  midiInUnprepareHeader(in->device, header);
  std::erase_if(in->buffers, [header](const auto& buffer) { return &buffer->header == header; });
}

// Hands the driver a fresh buffer of sysexSize; a buffer that cannot be made
// or queued is lost, and the driver holds one buffer fewer.
void addFreshBuffer(MidiInHandle* in) {
  auto buffer = std::unique_ptr<InputBuffer>(new (std::nothrow) InputBuffer);
  if (!buffer) return;
  buffer->block.reset(new (std::nothrow) uint8_t[in->sysexSize]{});
  if (!buffer->block) return;
  buffer->header = {buffer->block.get(), in->sysexSize, 0, 0, 0};
  MidiHeader* header = &buffer->header;
  if (midiInPrepareHeader(in->device, header) != MMSYSERR_NOERROR) return;
  in->buffers.push_back(std::move(buffer));
  if (midiInAddBuffer(in->device, header) != MMSYSERR_NOERROR) freeBuffer(in, header);
}

void addFreshBuffers(MidiInHandle* in) {
  for (uint32_t i = 0; i < (in->flags & 0xFF); ++i) addFreshBuffer(in);
}

// The driver gives every buffer back, and those that no filled data waits in
// are freed; the filled ones are freed as MidiIn hands out their last byte.
void releaseIdleBuffers(MidiInHandle* in) {
  quietDevice(midiInReset, in->device);
  std::vector<MidiHeader*> idle;
  for (const auto& buffer : in->buffers) {
    MidiHeader* header = &buffer->header;
    if (std::find(in->sysexList.begin(), in->sysexList.end(), header) == in->sysexList.end()) idle.push_back(header);
  }
  for (MidiHeader* header : idle) freeBuffer(in, header);
}

// Filled buffers that MidiIn has not finished are dropped with their bytes.
void dropWaitingSysex(MidiInHandle* in) {
  for (MidiHeader* header : in->sysexList) freeBuffer(in, header);
  in->sysexList.clear();
  in->sysexIndex = 0;
}

void releaseAllBuffers(MidiInHandle* in) {
  dropWaitingSysex(in);
  while (!in->buffers.empty()) freeBuffer(in, &in->buffers.back()->header);
}

void destroyHiddenWindow(MidiInHandle* in) {
  if (!in->hiddenWindow) return;
  if (MessageLoop* loop = messageLoop()) loop->forget(in->hiddenWindow.get());
  in->hiddenWindow.reset();
}

void freeHandle(MidiInHandle* in) {
  liveInputs.erase(std::remove(liveInputs.begin(), liveInputs.end(), in), liveInputs.end());
  delete in;
}

// ---- the driver callback's steps (driver thread) ----

void echo(uint32_t word) {
  MidiOutHandle* out = LastMidiOut.load();
  if (out == nullptr) return;
  SendShortWithRetry(out, word);
  NoteSounding(out, word);
}

// The sync clock's share of a message; true when the clock has taken it.
bool followSync(MidiInHandle* in, uint32_t word) {
  SyncClock* clock = in->clock.load();
  if ((in->flags & MIDI_SYNC) == 0 || clock == nullptr) return false;
  const uint32_t status = word & 0xFF;
  const uint32_t mode = clock->mode;
  if (status == 0xF1 && mode >= SYNC_SMPTE30) {
    SyncQuarterFrame(clock, static_cast<uint8_t>(word >> 8));
    return true;
  }
  const bool following = mode == SYNC_MIDI && (clock->flags.load(std::memory_order_acquire) & SYNC_RUNNING) != 0;
  if (!following) return false;
  switch (status) {
    case 0xF8: SyncMidiClock(clock); return true;
    case 0xFA:
    case 0xFB: clock->flags.fetch_or(SYNC_COUNTING, std::memory_order_release); return true;
    case 0xFC: clock->flags.fetch_and(~SYNC_COUNTING, std::memory_order_release); return true;
    default: return false;
  }
}

void takeShortMessage(MidiInHandle* in, uint32_t word, uint32_t timestamp) {
  if (MidiFilterBlocks(in->filter, static_cast<uint8_t>(word))) return;
  if ((in->flags & MIDI_THRU) != 0) echo(word);
  if (followSync(in, word)) return;
  if (Capturing.acquire() != 1) return;  // input that is not being recorded goes no further
  WriteInputSlot(in, StampEvent(in, timestamp, 0), word);
  post(in->window, MIM_DATA, 0, asParam(in));
}

void takeSysexBuffer(MidiInHandle* in, MidiHeader* header) {
  if ((in->filter & FILTER_SYSEX) != 0) return;
  // An empty buffer is the driver handing it back on a reset: the handle's
  // list of buffers still owns it and frees it.
  if (header->dwBytesRecorded == 0) return;
  header->dwUser = StampEvent(in, timeGetTime(), header->dwBytesRecorded);
  post(in->hiddenWindow.get(), NM_SYSEX_IN, asParam(header), asParam(in));
}

}  // namespace

uint32_t GetMidiInDescription(uint32_t deviceId, std::string& text) {
  std::string name;
  if (midiInGetDevCaps(deviceId, name) == MMSYSERR_BADDEVICEID) return 0;
  text = name;
  return 1;
}

uint32_t OpenMidiIn(MidiInHandle** in, MessageTarget* window, uint32_t deviceId, SyncClock* clock,
                    uint32_t flagsWord) {
  if (in == nullptr) return MIDI_IN_FAILED;
  if (*in != nullptr && !isLive(*in)) {
    *in = nullptr;
    return MIDI_IN_FAILED;
  }
  if (deviceId >= midiInGetNumDevs()) return MMSYSERR_BADDEVICEID;

  auto* handle = new (std::nothrow) MidiInHandle;
  if (handle == nullptr) return MMSYSERR_NOMEM;
  liveInputs.push_back(handle);
  handle->window = window;
  handle->deviceId = deviceId;
  // The ring and the hidden window are made before the device opens, so that
  // no driver callback can find them missing.
  handle->ringSize = SizeFromTable(flagsWord >> 12 & 0xF);
  handle->ring.reset(new (std::nothrow) InputSlot[handle->ringSize + 1]{});
  handle->hiddenWindow.reset(new (std::nothrow) MidiInWindow(handle));
  if (!handle->ring || !handle->hiddenWindow) {
    *in = nullptr;
    freeHandle(handle);
    return MMSYSERR_NOMEM;
  }
  handle->flags = flagsWord & 0xFFFFF;
  handle->filter = MIDI_IN_OPEN_FILTER;
  handle->sysexSize = SizeFromTable(flagsWord >> 8 & 0xF);
  handle->clock = clock;

  const uint32_t opened = midiInOpen(&handle->device, deviceId, MidiInCallback, asParam(handle));
  if (opened != MMSYSERR_NOERROR) {
    *in = nullptr;
    destroyHiddenWindow(handle);
    freeHandle(handle);
    return opened;
  }
  *in = handle;
  if ((flagsWord & MIDI_SYNC) != 0 && clock != nullptr) clock->midiIn = handle;
  if ((flagsWord & MIDI_SYSEX) != 0) addFreshBuffers(handle);
  return MMSYSERR_NOERROR;
}

uint32_t CloseMidiIn(MidiInHandle** in) {
  if (in == nullptr || *in == nullptr) return 0;
  MidiInHandle* handle = *in;
  if ((handle->flags & MIDI_STARTED) != 0) StopMidiIn(handle);
  uint32_t result = quietDevice(midiInReset, handle->device);
  // No pass may reach the handle once it is freed: the clock lets go of it,
  // and every pass under way, which may be capturing into it, ends.
  if (SyncClock* clock = handle->clock.load()) {
    MidiInHandle* self = handle;
    clock->midiIn.compare_exchange_strong(self, nullptr);
  }
  WaitForClockPasses();
  result += quietDevice(midiInClose, handle->device);
  releaseAllBuffers(handle);
  destroyHiddenWindow(handle);
  // The record is freed here and not by the hidden window's 962, which the
  // window's end has dropped.
  freeHandle(handle);
  *in = nullptr;
  return result;
}

uint32_t GetMidiInFilters(MidiInHandle* in) { return in != nullptr ? in->filter.load() : 0; }

void SetMidiInFilters(MidiInHandle* in, uint32_t filter) {
  if (in == nullptr) return;
  in->filter = filter;
  const bool sysex = (in->flags & MIDI_SYSEX) != 0;
  if ((filter & FILTER_SYSEX) != 0 && sysex) {
    in->flags.fetch_and(~MIDI_SYSEX);
    releaseIdleBuffers(in);
    if ((in->flags & MIDI_STARTED) != 0) midiInStart(in->device);  // the reset stopped it
  } else if ((filter & FILTER_SYSEX) == 0 && !sysex) {
    in->flags.fetch_or(MIDI_SYSEX);
    if (in->sysexSize == 0) in->sysexSize = 512;
    if ((in->flags & 0xFF) == 0) in->flags.fetch_or(32);
    dropWaitingSysex(in);
    addFreshBuffers(in);
  }
}

uint32_t StartMidiIn(MidiInHandle* in) {
  if (in == nullptr) return 1;
  if ((in->flags & MIDI_STARTED) != 0) return 0;
  in->writeIndex = 0;
  in->readIndex = 0;
  const uint32_t result = midiInStart(in->device);
  if (result == MMSYSERR_NOERROR) in->flags.fetch_or(MIDI_STARTED);
  in->lastEventTime = 0;
  return result;
}

uint32_t StopMidiIn(MidiInHandle* in) {
  if (in == nullptr) return 1;
  const uint32_t result = quietDevice(midiInStop, in->device);
  if (result == MMSYSERR_NOERROR) in->flags.fetch_and(~MIDI_STARTED);
  return result;
}

MidiEvent* MidiIn(MidiInHandle* in) {
  if (in == nullptr) return nullptr;
  if (!in->sysexList.empty()) {
    MidiHeader* header = in->sysexList.front();
    const uint8_t byte = header->lpData[in->sysexIndex];
    const bool last = in->sysexIndex + 1 >= header->dwBytesRecorded;
    const bool stamped = byte == 0xF0 || byte == 0xF7 || last;
    in->current = MidiEvent{stamped ? static_cast<uint32_t>(header->dwUser) : 0, 0xF0, byte, 0, 0, nullptr, 0, 0, 0, 0};
    ++in->sysexIndex;
    if (last) {
      in->sysexList.pop_front();
      in->sysexIndex = 0;
      freeBuffer(in, header);
    }
    return &in->current;
  }
  const uint32_t at = in->readIndex.load(std::memory_order_relaxed);
  if (at == in->writeIndex.load(std::memory_order_acquire)) return nullptr;
  const uint64_t slot = in->ring[at].load(std::memory_order_relaxed);
  const auto message = static_cast<uint32_t>(slot >> 32);
  in->current = MidiEvent{static_cast<uint32_t>(slot),
                          static_cast<uint8_t>(message),
                          static_cast<uint8_t>(message >> 8),
                          static_cast<uint8_t>(message >> 16),
                          static_cast<uint8_t>(message >> 24),
                          nullptr,
                          0,
                          0,
                          0,
                          0};
  in->readIndex.store(at >= in->ringSize ? 0 : at + 1, std::memory_order_relaxed);
  return &in->current;
}

uint32_t StampEvent(MidiInHandle* in, uint32_t timestamp, uint32_t sysexBytes) {
  SyncClock* clock = in->clock.load();
  if (clock == nullptr) return timestamp;
  const uint32_t quarter = clock->tempo / 256;
  // A clock that was never given a tempo has no wire time to take off.
  const uint32_t lag = quarter != 0 ? sysexBytes * clock->resolution * MicrosecondsPerByte / quarter : 0;
  const uint32_t now = clock->now;
  const uint32_t delta = now - in->lastEventTime - lag;
  in->lastEventTime = now - lag;
  return delta;
}

void WriteInputSlot(MidiInHandle* in, uint32_t time, uint32_t message) {
  const uint32_t at = in->writeIndex.load(std::memory_order_relaxed);
  in->ring[at].store(uint64_t{message} << 32 | time, std::memory_order_relaxed);
  in->writeIndex.store(at == in->ringSize ? 0 : at + 1, std::memory_order_release);
}

void MidiInCallback(MidiInPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t param2) {
  ClockPassGuard guard;  // the thru and the clock reach what the UI thread may be closing
  auto* in = reinterpret_cast<MidiInHandle*>(instance);
  switch (message) {
    case MIM_DATA: takeShortMessage(in, static_cast<uint32_t>(param1), static_cast<uint32_t>(param2)); break;
    case MIM_LONGDATA:
    case MIM_LONGERROR: takeSysexBuffer(in, reinterpret_cast<MidiHeader*>(param1)); break;
    case MIM_CLOSE: post(in->hiddenWindow.get(), MIM_CLOSE, 0, asParam(in)); break;
    default: break;
  }
}

// The driver's close reaches this window as 962, which needs nothing:
// CloseMidiIn releases the record, its ring and its buffers itself.
intptr_t MidiInProc(MidiInWindow* window, uint32_t message, uintptr_t param1, uintptr_t) {
  MidiInHandle* in = window->handle();
  if (message != NM_SYSEX_IN) return 0;
  auto* header = reinterpret_cast<MidiHeader*>(param1);
  if (findBuffer(in, header) == nullptr) return 0;  // released meanwhile
  addFreshBuffer(in);
  in->sysexList.push_back(header);
  post(in->window, MIM_DATA, 0, asParam(in));
  return 0;
}
