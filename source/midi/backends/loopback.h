#pragma once
// The loopback devices: a cable from each loopback output to the input of the
// same number. What an output is sent arrives at its input, and a test can
// inject input of its own. Outputs can record what they are sent and when (a
// test turns that on), and can be told to answer not-ready a number of times.
//
// Threads: any thread may send; the input's callback runs on the sending (or
// injecting) thread, as a driver callback would. A message sent while its
// thread is delivering one is not delivered, so a thru that echoes into the
// loopback output can never flood or recurse. After stop, reset or close of an
// input returns, no callback of it runs any more. Sending takes no lock and
// allocates nothing, unless recording is on: then each message is logged
// under a lock, which only tests ask for.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/midi_devices.h"

class LoopbackDevices final : public platform::MidiDevices {
 public:
  // What reached an output: a short message word, or the bytes of a long one.
  struct Sent {
    uint32_t timeMs;
    uint32_t word;               // 0 for a long message
    std::vector<uint8_t> bytes;  // empty for a short message
  };

  explicit LoopbackDevices(uint32_t outputs = 1, uint32_t inputs = 1);
  ~LoopbackDevices() override;
  LoopbackDevices(const LoopbackDevices&) = delete;
  LoopbackDevices& operator=(const LoopbackDevices&) = delete;

  uint32_t outCount() override;
  uint32_t outName(uint32_t id, std::string& name) override;
  uint32_t outOpen(uint32_t id, platform::MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<platform::MidiOutPort>& port) override;
  uint32_t inCount() override;
  uint32_t inName(uint32_t id, std::string& name) override;
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override;

  // Recording is off until a test turns it on.
  void setRecording(bool on);
  std::vector<Sent> sent(uint32_t output = 0) const;
  void clearSent(uint32_t output = 0);
  // The next shortTimes short and longTimes long messages answer MIDIERR_NOTREADY.
  void answerNotReady(uint32_t shortTimes, uint32_t longTimes = 0, uint32_t output = 0);
  uint32_t resetCount(uint32_t output = 0) const;
  bool outputOpen(uint32_t output = 0) const;
  bool inputStarted(uint32_t input = 0) const;

  // Plays into an input as if it came down the cable; false if the input is
  // not open and started, or the message came while this thread delivered one.
  bool inject(uint32_t word, uint32_t input = 0);
  // Fills the input's queued sysex buffers; a buffer comes back when it is full
  // or holds 0xF7. Bytes with no buffer to take them are lost. A short message
  // other than real-time that comes while a buffer is partly filled returns
  // that buffer with MIM_LONGERROR. False as above.
  bool injectSysex(std::span<const uint8_t> bytes, uint32_t input = 0);
  // Sysex buffers the input holds now.
  std::size_t queuedBuffers(uint32_t input = 0) const;

  struct Output;
  struct Input;

 private:
  std::vector<std::unique_ptr<Output>> outputs_;
  std::vector<std::unique_ptr<Input>> inputs_;
  std::atomic<bool> recording_{false};
};
