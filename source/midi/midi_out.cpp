#include "midi/midi_out.h"

#include <algorithm>
#include <new>
#include <vector>

#include "midi/sync_clock.h"

using namespace platform;

std::atomic<MidiOutHandle*> LastMidiOut{nullptr};

intptr_t MidiOutWindow::handleMessage(uint32_t message, uintptr_t param1, uintptr_t param2) {
  return MidiOutProc(this, message, param1, param2);
}

namespace {

// Handles that are open now; UI thread only.
std::vector<MidiOutHandle*> liveOutputs;

bool isLive(const MidiOutHandle* out) {
  return std::find(liveOutputs.begin(), liveOutputs.end(), out) != liveOutputs.end();
}

// A device that answers not-ready this often is taken as broken, not busy.
constexpr int MaxNotReadyRetries = 1000000;

uintptr_t asParam(const void* pointer) { return reinterpret_cast<uintptr_t>(pointer); }

void postToHidden(MidiOutHandle* out, uint32_t message, uintptr_t param1) {
  post(out->hiddenWindow.get(), message, param1, asParam(out));
}

// ---- the sysex buffer chain (UI thread, but for PutSysexByte) ----

SysexNode* makeSysexNode(MidiOutHandle* out) {
  auto* node = new (std::nothrow) SysexNode;
  if (node == nullptr) return nullptr;
  node->block.reset(new (std::nothrow) uint8_t[out->sysexSize]{});
  if (node->block) {
    node->header = {node->block.get(), out->sysexSize, 0, 0, 0};
    if (midiOutPrepareHeader(out->device, &node->header) != MMSYSERR_NOERROR) node->block.reset();
  }
  return node;  // a node whose buffer failed stays in the chain and takes no bytes
}

void appendSysexBuffer(MidiOutHandle* out) {
  SysexNode* node = makeSysexNode(out);
  if (node == nullptr) return;
  if (out->sysexHead == nullptr) {
    out->sysexHead = node;
  } else {
    SysexNode* last = out->sysexHead;
    while (last->next.load() != nullptr) last = last->next.load();
    node->prev = last;
    last->next.store(node, std::memory_order_release);
  }
  // A filling pointer that ran off the end of the chain takes up the new node.
  SysexNode* none = nullptr;
  out->sysexList.compare_exchange_strong(none, node);
}

SysexNode* findNode(SysexNode* first, const MidiHeader* header) {
  for (SysexNode* node = first; node != nullptr; node = node->next.load()) {
    if (&node->header == header) return node;
  }
  return nullptr;
}

void unlinkNode(SysexNode*& first, SysexNode* node) {
  SysexNode* next = node->next.load();
  if (node->prev != nullptr) {
    node->prev->next.store(next);
  } else {
    first = next;
  }
  if (next != nullptr) next->prev = node->prev;
  node->prev = nullptr;
  node->next.store(nullptr);
}

void freeNode(MidiOutHandle* out, SysexNode* node) {
  if (node->block) midiOutUnprepareHeader(out->device, &node->header);
  delete node;
}

void freeChain(MidiOutHandle* out, SysexNode*& first) {
  while (first != nullptr) {
    SysexNode* node = first;
    unlinkNode(first, node);
    freeNode(out, node);
  }
}

void releaseSysexBuffers(MidiOutHandle* out) {
  out->sysexList.store(nullptr);
  freeChain(out, out->sysexHead);
}

void sendSysexBuffer(MidiOutHandle* out, MidiHeader* header) {
  SysexNode* node = findNode(out->sysexHead, header);
  if (node == nullptr) return;  // released meanwhile
  if (!node->rewound) {         // only the first attempt moves the data pointer back
    header->lpData -= header->dwBytesRecorded;
    header->dwBufferLength = header->dwBytesRecorded;
    node->rewound = true;
  }
  const uint32_t result = midiOutLongMsg(out->device, header);
  if (result == MIDIERR_NOTREADY) {
    postToHidden(out, NM_SYSEX_OUT_RETRY, asParam(header));
    return;
  }
  unlinkNode(out->sysexHead, node);
  if (result == MMSYSERR_NOERROR) {
    node->next.store(out->sentList);  // lives on until the driver reports it done
    if (out->sentList != nullptr) out->sentList->prev = node;
    out->sentList = node;
  } else {
    freeNode(out, node);  // a refused buffer is never reported done: release it now
  }
}

void sysexBufferDone(MidiOutHandle* out, MidiHeader* header) {
  SysexNode* node = findNode(out->sentList, header);
  if (node == nullptr) return;
  unlinkNode(out->sentList, node);
  freeNode(out, node);
}

// Sends the ring of an output without a clock, as fast as it arrives.
void flushRing(MidiOutHandle* out) {
  while (out->ringCount.load(std::memory_order_acquire) != 0) {
    const uint32_t at = out->readIndex.load(std::memory_order_relaxed);
    const uint32_t word = PackedMessage(out->ring[at]);
    out->readIndex.store(at == out->ringSize ? 0 : at + 1, std::memory_order_relaxed);
    out->ringCount.fetch_sub(1, std::memory_order_release);
    SendShortWithRetry(out, word);
    NoteSounding(out, word);
  }
}

// A note-off's key and channel leave the table of sounding notes. A locked
// read-modify-write only when the bit is set: most note-offs of a busy pass
// end a note that an earlier one already ended.
inline void noteEnded(MidiOutHandle* out, uint32_t word) {
  const uint32_t key = word >> 8 & 0xFF;
  if (key >= 128) return;
  std::atomic<uint32_t>& entry = out->soundingNotes[key];
  const uint32_t bit = 1u << (word & 0x0F);
  if ((entry.load(std::memory_order_relaxed) & bit) != 0) entry.fetch_and(~bit, std::memory_order_relaxed);
}

// The driver refused the first try as not ready: tries again, a bounded number of times.
[[gnu::noinline]] uint32_t retryNotReady(MidiOutHandle* out, uint32_t word) {
  uint32_t result = MIDIERR_NOTREADY;
  for (int tries = 1; result == MIDIERR_NOTREADY && tries < MaxNotReadyRetries; ++tries) {
    result = midiOutShortMsg(out->device, word);
  }
  return result;
}

uint32_t sendNow(MidiOutHandle* out, uint32_t word) {
  if ((word & 0xFF) == 0xF0) return 0;  // sysex cannot be sent at once
  SendShortWithRetry(out, word);
  NoteSounding(out, word);
  return 0;
}

void destroyHiddenWindow(MidiOutHandle* out) {
  if (!out->hiddenWindow) return;
  if (MessageLoop* loop = messageLoop()) loop->forget(out->hiddenWindow.get());
  out->hiddenWindow.reset();
}

// After this no clock pass can reach the handle: it is off its clock's list and
// no longer the metronome's output, and every pass that began before has ended.
void keepPassesOff(MidiOutHandle* out) {
  if (SyncClock* clock = out->clock.load()) DetachClockOutput(clock, out);
  MidiOutHandle* self = out;
  LastMidiOut.compare_exchange_strong(self, nullptr);
  WaitForClockPasses();
}

void freeHandle(MidiOutHandle* out) {
  liveOutputs.erase(std::remove(liveOutputs.begin(), liveOutputs.end(), out), liveOutputs.end());
  delete out;
}

}  // namespace

uint32_t SizeFromTable(uint32_t index) { return SizeTable[std::min<std::size_t>(index, SizeTable.size() - 1)]; }

uint32_t SendShortWithRetry(MidiOutHandle* out, uint32_t word) {
  const uint32_t result = midiOutShortMsg(out->device, word);
  return result == MIDIERR_NOTREADY ? retryNotReady(out, word) : result;
}

void NoteSounding(MidiOutHandle* out, uint32_t word) {
  const uint32_t kind = word & 0xF0;
  if (kind != 0x80 && kind != 0x90) return;
  const uint32_t key = word >> 8 & 0xFF;
  if (key >= 128) return;
  const uint32_t bit = 1u << (word & 0x0F);
  const uint32_t velocity = word >> 16 & 0xFF;
  std::atomic<uint32_t>& entry = out->soundingNotes[key];
  // A locked read-modify-write only when the bit changes.
  if (kind == 0x90 && velocity != 0) {
    if ((entry.load(std::memory_order_relaxed) & bit) != 0 ||
        (entry.fetch_or(bit, std::memory_order_relaxed) & bit) != 0) {
      SendShortWithRetry(out, word & ~0x00FF0000u);
    }
  } else {
    noteEnded(out, word);
  }
}

void PutSysexByte(MidiOutHandle* out, uint8_t byte) {
  SysexNode* node = out->sysexList.load(std::memory_order_acquire);
  // With no buffer to fill (none could be made, or all wait for the driver) the byte is lost.
  if (node == nullptr || !node->block) return;
  MidiHeader& header = node->header;
  *header.lpData++ = byte;
  ++header.dwBytesRecorded;
  if (header.dwBytesRecorded == header.dwBufferLength || byte == 0xF7) {
    out->sysexList.store(node->next.load(std::memory_order_acquire), std::memory_order_release);
    postToHidden(out, NM_SYSEX_OUT_SEND, asParam(&header));
  }
}

uint32_t GetMidiOutDescription(uint32_t deviceId, std::string& text) {
  std::string name;
  if (midiOutGetDevCaps(deviceId, name) == MMSYSERR_BADDEVICEID) return 0;
  text = name;
  return 1;
}

uint32_t OpenMidiOut(MidiOutHandle** out, MessageTarget* window, uint32_t deviceId, SyncClock* clock,
                     uint32_t flagsWord) {
  if (out == nullptr) return MIDI_OUT_FAILED;
  if (*out != nullptr && !isLive(*out)) {
    *out = nullptr;
    return MIDI_OUT_FAILED;
  }
  if (deviceId >= midiOutGetNumDevs() && deviceId != MIDI_MAPPER) return MMSYSERR_BADDEVICEID;

  auto* handle = new (std::nothrow) MidiOutHandle;
  if (handle == nullptr) return MMSYSERR_NOMEM;
  liveOutputs.push_back(handle);
  *out = handle;
  handle->window = window;
  handle->deviceId = deviceId;
  // Made before the device opens, so that every driver callback finds it.
  handle->hiddenWindow = std::make_unique<MidiOutWindow>(handle);

  const uint32_t opened = midiOutOpen(&handle->device, deviceId, MidiOutCallback, asParam(handle));
  if (opened != MMSYSERR_NOERROR) {
    *out = nullptr;
    destroyHiddenWindow(handle);
    freeHandle(handle);
    return opened;
  }

  handle->sysexSize = SizeFromTable(flagsWord >> 8 & 0xF);
  handle->ringSize = SizeFromTable(flagsWord >> 12 & 0xF);
  handle->ring.reset(new (std::nothrow) MidiEvent[handle->ringSize + 1]{});
  handle->trackOfSlot.reset(new (std::nothrow) uint8_t[handle->ringSize + 1]{});
  if (!handle->ring || !handle->trackOfSlot || (clock != nullptr && !AttachClockOutput(clock, handle))) {
    *out = nullptr;
    midiOutClose(handle->device);
    destroyHiddenWindow(handle);
    freeHandle(handle);
    return MMSYSERR_NOMEM;
  }

  handle->flags = flagsWord & 0xFFFFF;
  handle->filter = (flagsWord & MIDI_SYSEX) != 0 ? 0u : FILTER_SYSEX;
  handle->clock = clock;
  if ((flagsWord & MIDI_SYSEX) != 0) {
    for (uint32_t i = 0; i < (flagsWord & 0xFF); ++i) appendSysexBuffer(handle);
  }
  // The most recently opened output becomes the metronome's only once it is
  // open: a failed open leaves the one before in place.
  LastMidiOut = handle;
  return MMSYSERR_NOERROR;
}

uint32_t CloseMidiOut(MidiOutHandle** out) {
  if (*out == nullptr) return 0;
  MidiOutHandle* handle = *out;
  keepPassesOff(handle);
  if ((handle->flags & MIDI_SYSEX) != 0) releaseSysexBuffers(handle);
  uint32_t result = ResetMidiOut(handle);
  result += midiOutClose(handle->device);
  freeChain(handle, handle->sentList);  // the driver is done with every buffer now
  destroyHiddenWindow(handle);
  freeHandle(handle);
  *out = nullptr;
  return result;
}

uint32_t GetMidiOutFilters(MidiOutHandle* out) { return out != nullptr ? out->filter.load() : 0; }

void SetMidiOutFilters(MidiOutHandle* out, uint32_t filter) {
  if (out == nullptr) return;
  out->filter = filter;
  const bool sysex = (out->flags & MIDI_SYSEX) != 0;
  if ((filter & FILTER_SYSEX) != 0 && sysex) {
    out->flags.fetch_and(~MIDI_SYSEX);
    WaitForClockPasses();  // a pass may be putting a byte into a buffer
    releaseSysexBuffers(out);
    midiOutReset(out->device);
  } else if ((filter & FILTER_SYSEX) == 0 && !sysex) {
    out->flags.fetch_or(MIDI_SYSEX);
    if (out->sysexSize == 0) out->sysexSize = 512;
    if ((out->flags & 0xFF) == 0) out->flags.fetch_or(32);
    releaseSysexBuffers(out);
    for (uint32_t i = 0; i < (out->flags & 0xFF); ++i) appendSysexBuffer(out);
  }
}

void FlushMidiOut(MidiOutHandle* out) {
  if (out == nullptr) return;
  out->ringCount = 0;
  out->writeIndex = 0;
  out->readIndex = 0;
}

uint32_t ResetMidiOut(MidiOutHandle* out) {
  if (out == nullptr) return 1;
  FlushMidiOut(out);
  for (uint32_t key = 0; key < 128; ++key) {
    const uint32_t channels = out->soundingNotes[key].load(std::memory_order_relaxed);
    if (channels == 0) continue;
    for (uint32_t channel = 0; channel < 16; ++channel) {
      if ((channels >> channel & 1) != 0) midiOutShortMsg(out->device, 0x90 | channel | key << 8);
    }
    out->soundingNotes[key].store(0, std::memory_order_relaxed);
  }
  return midiOutReset(out->device);
}

uint32_t ResetNotesAndControllers(MidiOutHandle* out) {
  if (out == nullptr) return 1;
  static constexpr uint8_t Controllers[8][2] = {{1, 0},  {7, 90}, {10, 64}, {64, 0},
                                                {66, 0}, {67, 0}, {121, 0}, {123, 0}};
  for (const auto& [controller, value] : Controllers) {
    for (uint32_t channel = 0; channel < 16; ++channel) {
      midiOutShortMsg(out->device, 0xB0 | channel | uint32_t{controller} << 8 | uint32_t{value} << 16);
    }
  }
  return 0;
}

uint32_t MidiOutNow(MidiOutHandle* out, uint8_t status, uint8_t value1, uint8_t value2) {
  if (out == nullptr) return MIDI_OUT_FAILED;
  // The word is packed in a register: an event built byte by byte in memory and
  // read back whole stalls the store buffer, and the generator sends thousands.
  return sendNow(out, uint32_t{status} | uint32_t{value1} << 8 | uint32_t{value2} << 16);
}

void EndNotesNow(MidiOutHandle* out, std::span<const uint32_t> offs) {
  if (out == nullptr) return;
  if (MidiOutPort* device = out->device) {
    for (std::size_t done = 0; done < offs.size();) {
      std::size_t sent = 0;
      if (device->shortMsgs(offs.subspan(done), sent) != MIDIERR_NOTREADY) break;
      done += sent;
      retryNotReady(out, offs[done++]);
    }
  }
  for (const uint32_t word : offs) noteEnded(out, word);
}

uint32_t MidiOut(MidiOutHandle* out, MidiEvent* event) {
  if (out == nullptr) return MIDI_OUT_FAILED;
  if (event->time == SEND_NOW) return sendNow(out, PackedMessage(*event));
  SyncClock* clock = out->clock.load();
  if (event->status == 0xF0 && (out->flags & MIDI_SYSEX) != 0 &&
      (clock == nullptr || (clock->flags & SYNC_RUNNING) == 0)) {
    PutSysexByte(out, event->value1);
    return 0;
  }
  if (out->ringCount.load(std::memory_order_acquire) == out->ringSize) return MIDI_OUT_FAILED;
  const uint32_t at = out->writeIndex.load(std::memory_order_relaxed);
  out->ring[at] = *event;
  out->writeIndex.store(at == out->ringSize ? 0 : at + 1, std::memory_order_relaxed);
  out->ringCount.fetch_add(1, std::memory_order_release);
  if (clock == nullptr) postToHidden(out, NM_OUT_FLUSH, 0);
  return 0;
}

void MidiOutCallback(MidiOutPort*, uint32_t message, uintptr_t instance, uintptr_t param1, uintptr_t) {
  auto* out = reinterpret_cast<MidiOutHandle*>(instance);
  if (message == MOM_DONE) postToHidden(out, NM_SYSEX_OUT_DONE, param1);
  if (message == MOM_CLOSE) postToHidden(out, MOM_CLOSE, 0);
}

// The driver's close reaches this window as 968, which needs nothing:
// CloseMidiOut releases the record, its ring and its buffers itself.
intptr_t MidiOutProc(MidiOutWindow* window, uint32_t message, uintptr_t param1, uintptr_t) {
  MidiOutHandle* out = window->handle();
  auto* header = reinterpret_cast<MidiHeader*>(param1);
  switch (message) {
    case NM_SYSEX_OUT_DONE:
      sysexBufferDone(out, header);
      break;
    case NM_OUT_FLUSH:
      flushRing(out);
      break;
    case NM_SYSEX_OUT_SEND:
      appendSysexBuffer(out);
      sendSysexBuffer(out, header);
      break;
    case NM_SYSEX_OUT_RETRY:
      sendSysexBuffer(out, header);
      break;
    default:
      break;
  }
  return 0;
}
