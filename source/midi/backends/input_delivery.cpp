#include "midi/backends/input_delivery.h"

#include <algorithm>
#include <array>
#include <thread>
#include <vector>

#include "platform/timers.h"

using namespace platform;

namespace {

// The inputs this thread is delivering to now, innermost last.
thread_local std::array<const InputDelivery*, 8> delivering{};
thread_local std::size_t deliveringCount = 0;

bool deliveringOnThisThread(const InputDelivery* input) {
  return std::find(delivering.begin(), delivering.begin() + deliveringCount, input) !=
         delivering.begin() + deliveringCount;
}

}  // namespace

void InputDelivery::open(MidiInCallbackFn callback, uintptr_t instance, MidiInPort* port) {
  callback_ = callback;
  instance_ = instance;
  port_ = port;
  call(MIM_OPEN, 0);
}

void InputDelivery::start() {
  startTime_.store(timeGetTime());
  started_.store(true);
}

void InputDelivery::stop() {
  quiesce();
  returnBuffers(false);
}

void InputDelivery::reset() {
  quiesce();
  returnBuffers(true);
}

uint32_t InputDelivery::addBuffer(MidiHeader& header) {
  header.dwBytesRecorded = 0;
  std::lock_guard lock(bufferMutex_);
  buffers_.push_back(&header);
  return MMSYSERR_NOERROR;
}

uint32_t InputDelivery::close() {
  if (queuedBuffers() != 0) return MIDIERR_STILLPLAYING;
  quiesce();
  call(MIM_CLOSE, 0);
  return MMSYSERR_NOERROR;
}

std::size_t InputDelivery::queuedBuffers() const {
  std::lock_guard lock(bufferMutex_);
  return buffers_.size();
}

template <class Deliver>
bool InputDelivery::deliver(Deliver&& call) {
  if (deliveringOnThisThread(this) || deliveringCount == delivering.size()) return false;
  inFlight_.fetch_add(1);
  const bool started = started_.load();
  if (started) {
    delivering[deliveringCount++] = this;
    call();
    --deliveringCount;
  }
  inFlight_.fetch_sub(1);
  return started;
}

void InputDelivery::quiesce() {
  started_.store(false);
  if (deliveringOnThisThread(this)) return;  // stopped from inside its own callback
  while (inFlight_.load() > 0) std::this_thread::yield();
}

void InputDelivery::call(uint32_t message, uintptr_t param1) {
  if (callback_ != nullptr) callback_(port_, message, instance_, param1, timeGetTime() - startTime_.load());
}

void InputDelivery::returnBuffer(MidiHeader* header, uint32_t message) {
  MarkHeaderDone(*header);
  call(message, reinterpret_cast<uintptr_t>(header));
}

void InputDelivery::returnBuffers(bool all) {
  std::vector<MidiHeader*> returned;
  {
    std::lock_guard lock(bufferMutex_);
    while (!buffers_.empty() && (all || buffers_.front()->dwBytesRecorded > 0)) {
      returned.push_back(buffers_.front());
      buffers_.pop_front();
      if (!all) break;
    }
    notePartialSysex();
  }
  for (MidiHeader* header : returned) returnBuffer(header, MIM_LONGDATA);
}

void InputDelivery::cutSysexShort(uint32_t word) {
  if ((word & 0xFF) >= 0xF8) return;  // real-time messages may come inside sysex
  if (!partialSysex_.load(std::memory_order_acquire)) return;  // the common case: no lock
  MidiHeader* cut = nullptr;
  {
    std::lock_guard lock(bufferMutex_);
    if (buffers_.empty() || buffers_.front()->dwBytesRecorded == 0) return;
    cut = buffers_.front();
    buffers_.pop_front();
    notePartialSysex();
  }
  returnBuffer(cut, MIM_LONGERROR);
}

void InputDelivery::notePartialSysex() {
  partialSysex_.store(!buffers_.empty() && buffers_.front()->dwBytesRecorded > 0, std::memory_order_release);
}

bool InputDelivery::deliverShort(uint32_t word) {
  return deliver([&] {
    cutSysexShort(word);
    call(MIM_DATA, word);
  });
}

bool InputDelivery::deliverSysex(std::span<const uint8_t> bytes) {
  return deliver([&] {
    std::array<MidiHeader*, 64> filled{};
    std::size_t filledCount = 0;
    auto flush = [&] {
      for (std::size_t i = 0; i < filledCount; ++i) returnBuffer(filled[i], MIM_LONGDATA);
      filledCount = 0;
    };
    std::unique_lock lock(bufferMutex_);
    for (const uint8_t byte : bytes) {
      if (buffers_.empty()) break;
      MidiHeader* header = buffers_.front();
      header->lpData[header->dwBytesRecorded++] = byte;
      if (header->dwBytesRecorded == header->dwBufferLength || byte == 0xF7) {
        buffers_.pop_front();
        filled[filledCount++] = header;
        if (filledCount == filled.size()) {
          lock.unlock();
          flush();
          lock.lock();
        }
      }
    }
    notePartialSysex();
    lock.unlock();
    flush();
  });
}
