#pragma once
// What every input backend does between its source and the toolkit's driver
// callback: delivery only while started, timestamps in milliseconds since the
// start, and the queue of sysex buffers that the toolkit hands in.
//
// Threads: deliveries may come from any thread; start, stop, reset, close and
// addBuffer from the UI thread. Once stop, reset or close returns, no callback
// of this input runs any more. A short message takes no lock and allocates
// nothing; only when it cuts a partly filled sysex buffer short does it take
// the buffer queue's lock, which sysex delivery and the UI thread share. A
// delivery to an input that its own thread is already delivering to (an echo
// of a thru coming straight back) is dropped, so no chain of devices can recurse.

#include <atomic>
#include <cstdint>
#include <deque>
#include <mutex>
#include <span>

#include "platform/midi_devices.h"

class InputDelivery {
 public:
  // Takes the callback, before the input can start.
  void open(platform::MidiInCallbackFn callback, uintptr_t instance, platform::MidiInPort* port);
  void start();
  // Ends delivery; a partly filled sysex buffer comes back with what it holds.
  void stop();
  // Ends delivery and hands back every queued buffer.
  void reset();
  uint32_t addBuffer(platform::MidiHeader& header);
  // MIDIERR_STILLPLAYING while buffers are queued; else ends with MIM_CLOSE.
  uint32_t close();

  // MIM_DATA for a short message. A message other than real-time that comes
  // while a sysex buffer is partly filled first returns that buffer with
  // MIM_LONGERROR, as a driver does when sysex is cut short.
  bool deliverShort(uint32_t word);
  // Fills the queued buffers; each comes back with MIM_LONGDATA when full or
  // ended by 0xF7. Bytes with no buffer left are lost.
  bool deliverSysex(std::span<const uint8_t> bytes);

  bool started() const { return started_.load(); }
  std::size_t queuedBuffers() const;

 private:
  template <class Deliver>
  bool deliver(Deliver&& call);
  void quiesce();
  void call(uint32_t message, uintptr_t param1);
  void returnBuffer(platform::MidiHeader* header, uint32_t message);
  void returnBuffers(bool all);
  void cutSysexShort(uint32_t word);
  // Whether the first queued buffer holds part of a sysex message; called with the lock held.
  void notePartialSysex();

  std::atomic<bool> started_{false};
  std::atomic<int> inFlight_{0};
  std::atomic<uint32_t> startTime_{0};
  platform::MidiInCallbackFn callback_ = nullptr;  // written before the input starts
  uintptr_t instance_ = 0;
  platform::MidiInPort* port_ = nullptr;
  mutable std::mutex bufferMutex_;
  std::deque<platform::MidiHeader*> buffers_;  // the first one is filling
  std::atomic<bool> partialSysex_{false};      // buffers_.front() holds part of a message
};
