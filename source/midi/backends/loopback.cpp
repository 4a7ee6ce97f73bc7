#include "midi/backends/loopback.h"

#include <thread>

#include "platform/timers.h"

using namespace platform;

struct LoopbackDevices::Output {
  std::atomic<bool> open{false};
  std::atomic<uint32_t> notReadyShort{0};
  std::atomic<uint32_t> notReadyLong{0};
  std::atomic<uint32_t> resets{0};
  mutable std::mutex logMutex;
  std::vector<Sent> log;
};

struct LoopbackDevices::Input {
  std::atomic<bool> open{false};
  std::atomic<bool> started{false};
  std::atomic<int> inFlight{0};  // deliveries under way on any thread
  std::atomic<uint32_t> startTime{0};
  MidiInCallbackFn callback = nullptr;  // written at open, before `open` is set
  uintptr_t instance = 0;
  MidiInPort* port = nullptr;
  mutable std::mutex bufferMutex;
  std::deque<MidiHeader*> buffers;  // queued sysex buffers; the first one is filling
};

namespace {

using Output = LoopbackDevices::Output;
using Input = LoopbackDevices::Input;

// Above 0 while this thread runs a loopback input's callback.
thread_local int deliveringDepth = 0;

bool takeOne(std::atomic<uint32_t>& count) {
  uint32_t left = count.load();
  while (left > 0 && !count.compare_exchange_weak(left, left - 1)) {
  }
  return left > 0;
}

// Runs a delivery into a started input, unless this thread is already
// delivering one: that is the echo of a thru, and it stops here.
template <class Deliver>
bool deliver(Input& input, Deliver&& call) {
  if (deliveringDepth > 0) return false;
  input.inFlight.fetch_add(1);
  const bool started = input.started.load();
  if (started) {
    ++deliveringDepth;
    call();
    --deliveringDepth;
  }
  input.inFlight.fetch_sub(1);
  return started;
}

// Stops deliveries and waits until none is under way on another thread.
void quiesce(Input& input) {
  input.started.store(false);
  if (deliveringDepth > 0) return;
  while (input.inFlight.load() > 0) std::this_thread::yield();
}

void callIn(Input& input, uint32_t message, uintptr_t param1, uintptr_t param2) {
  if (input.callback != nullptr) input.callback(input.port, message, input.instance, param1, param2);
}

void returnBuffer(Input& input, MidiHeader* header, uint32_t message = MIM_LONGDATA) {
  MarkHeaderDone(*header);
  callIn(input, message, reinterpret_cast<uintptr_t>(header), timeGetTime() - input.startTime.load());
}

// A short message that is not real-time cuts a sysex message short: its
// partly filled buffer comes back as an error, as a driver returns it.
void cutSysexShort(Input& input, uint32_t word) {
  if ((word & 0xFF) >= 0xF8) return;
  MidiHeader* cut = nullptr;
  {
    std::lock_guard lock(input.bufferMutex);
    if (input.buffers.empty() || input.buffers.front()->dwBytesRecorded == 0) return;
    cut = input.buffers.front();
    input.buffers.pop_front();
  }
  returnBuffer(input, cut, MIM_LONGERROR);
}

bool deliverShort(Input& input, uint32_t word) {
  return deliver(input, [&] {
    cutSysexShort(input, word);
    callIn(input, MIM_DATA, word, timeGetTime() - input.startTime.load());
  });
}

bool deliverSysex(Input& input, std::span<const uint8_t> bytes) {
  return deliver(input, [&] {
    std::vector<MidiHeader*> filled;
    {
      std::lock_guard lock(input.bufferMutex);
      for (const uint8_t byte : bytes) {
        if (input.buffers.empty()) break;
        MidiHeader* header = input.buffers.front();
        header->lpData[header->dwBytesRecorded++] = byte;
        if (header->dwBytesRecorded == header->dwBufferLength || byte == 0xF7) {
          input.buffers.pop_front();
          filled.push_back(header);
        }
      }
    }
    for (MidiHeader* header : filled) returnBuffer(input, header);
  });
}

// Hands back queued buffers: all of them, or only a partly filled first one.
void returnBuffers(Input& input, bool all) {
  std::vector<MidiHeader*> returned;
  {
    std::lock_guard lock(input.bufferMutex);
    while (!input.buffers.empty() && (all || input.buffers.front()->dwBytesRecorded > 0)) {
      returned.push_back(input.buffers.front());
      input.buffers.pop_front();
      if (!all) break;
    }
  }
  for (MidiHeader* header : returned) returnBuffer(input, header);
}

class OutPort final : public MidiOutPort {
 public:
  OutPort(Output& output, Input* cable, const std::atomic<bool>& recording, MidiOutCallbackFn callback,
          uintptr_t instance)
      : output_(output), cable_(cable), recording_(recording), callback_(callback), instance_(instance) {}

  uint32_t shortMsg(uint32_t word) override {
    if (takeOne(output_.notReadyShort)) return MIDIERR_NOTREADY;
    record(word, {});
    if (cable_ != nullptr) deliverShort(*cable_, word);
    return MMSYSERR_NOERROR;
  }

  uint32_t longMsg(MidiHeader& header) override {
    if (takeOne(output_.notReadyLong)) return MIDIERR_NOTREADY;
    const std::span<const uint8_t> bytes(header.lpData, header.dwBufferLength);
    record(0, bytes);
    if (cable_ != nullptr) deliverSysex(*cable_, bytes);
    MarkHeaderDone(header);
    notify(MOM_DONE, reinterpret_cast<uintptr_t>(&header));
    return MMSYSERR_NOERROR;
  }

  uint32_t reset() override {
    output_.resets.fetch_add(1);
    return MMSYSERR_NOERROR;
  }

  uint32_t close() override {
    output_.open.store(false);
    notify(MOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
  }

  void notify(uint32_t message, uintptr_t param1) {
    if (callback_ != nullptr) callback_(this, message, instance_, param1, 0);
  }

 private:
  void record(uint32_t word, std::span<const uint8_t> bytes) {
    if (!recording_.load(std::memory_order_relaxed)) return;
    std::lock_guard lock(output_.logMutex);
    output_.log.push_back({timeGetTime(), word, {bytes.begin(), bytes.end()}});
  }

  Output& output_;
  Input* cable_;
  const std::atomic<bool>& recording_;
  MidiOutCallbackFn callback_;
  uintptr_t instance_;
};

class InPort final : public MidiInPort {
 public:
  explicit InPort(Input& input) : input_(input) {}

  uint32_t start() override {
    input_.startTime.store(timeGetTime());
    input_.started.store(true);
    return MMSYSERR_NOERROR;
  }

  uint32_t stop() override {
    quiesce(input_);
    returnBuffers(input_, false);
    return MMSYSERR_NOERROR;
  }

  uint32_t reset() override {
    quiesce(input_);
    returnBuffers(input_, true);
    return MMSYSERR_NOERROR;
  }

  uint32_t addBuffer(MidiHeader& header) override {
    header.dwBytesRecorded = 0;
    std::lock_guard lock(input_.bufferMutex);
    input_.buffers.push_back(&header);
    return MMSYSERR_NOERROR;
  }

  uint32_t close() override {
    {
      std::lock_guard lock(input_.bufferMutex);
      if (!input_.buffers.empty()) return MIDIERR_STILLPLAYING;
    }
    quiesce(input_);
    callIn(input_, MIM_CLOSE, 0, 0);
    input_.open.store(false);
    return MMSYSERR_NOERROR;
  }

 private:
  Input& input_;
};

uint32_t loopbackName(uint32_t id, std::size_t count, std::string& name) {
  if (id >= count) return MMSYSERR_BADDEVICEID;
  name = id == 0 ? std::string("Velmora Loopback") : "Velmora Loopback " + std::to_string(id + 1);
  return MMSYSERR_NOERROR;
}

}  // namespace

LoopbackDevices::LoopbackDevices(uint32_t outputs, uint32_t inputs) {
  for (uint32_t i = 0; i < outputs; ++i) outputs_.push_back(std::make_unique<Output>());
  for (uint32_t i = 0; i < inputs; ++i) inputs_.push_back(std::make_unique<Input>());
}

LoopbackDevices::~LoopbackDevices() = default;

uint32_t LoopbackDevices::outCount() { return static_cast<uint32_t>(outputs_.size()); }

uint32_t LoopbackDevices::outName(uint32_t id, std::string& name) { return loopbackName(id, outputs_.size(), name); }

uint32_t LoopbackDevices::outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                                  std::unique_ptr<MidiOutPort>& port) {
  if (id >= outputs_.size()) return MMSYSERR_BADDEVICEID;
  Output& output = *outputs_[id];
  if (output.open.exchange(true)) return MMSYSERR_ALLOCATED;
  Input* cable = id < inputs_.size() ? inputs_[id].get() : nullptr;
  auto opened = std::make_unique<OutPort>(output, cable, recording_, callback, instance);
  opened->notify(MOM_OPEN, 0);
  port = std::move(opened);
  return MMSYSERR_NOERROR;
}

uint32_t LoopbackDevices::inCount() { return static_cast<uint32_t>(inputs_.size()); }

uint32_t LoopbackDevices::inName(uint32_t id, std::string& name) { return loopbackName(id, inputs_.size(), name); }

uint32_t LoopbackDevices::inOpen(uint32_t id, MidiInCallbackFn callback, uintptr_t instance,
                                 std::unique_ptr<MidiInPort>& port) {
  if (id >= inputs_.size()) return MMSYSERR_BADDEVICEID;
  Input& input = *inputs_[id];
  if (input.open.load()) return MMSYSERR_ALLOCATED;
  auto opened = std::make_unique<InPort>(input);
  input.callback = callback;
  input.instance = instance;
  input.port = opened.get();
  input.open.store(true);
  callIn(input, MIM_OPEN, 0, 0);
  port = std::move(opened);
  return MMSYSERR_NOERROR;
}

void LoopbackDevices::setRecording(bool on) { recording_.store(on); }

std::vector<LoopbackDevices::Sent> LoopbackDevices::sent(uint32_t output) const {
  if (output >= outputs_.size()) return {};
  std::lock_guard lock(outputs_[output]->logMutex);
  return outputs_[output]->log;
}

void LoopbackDevices::clearSent(uint32_t output) {
  if (output >= outputs_.size()) return;
  std::lock_guard lock(outputs_[output]->logMutex);
  outputs_[output]->log.clear();
}

void LoopbackDevices::answerNotReady(uint32_t shortTimes, uint32_t longTimes, uint32_t output) {
  if (output >= outputs_.size()) return;
  outputs_[output]->notReadyShort.store(shortTimes);
  outputs_[output]->notReadyLong.store(longTimes);
}

uint32_t LoopbackDevices::resetCount(uint32_t output) const {
  return output < outputs_.size() ? outputs_[output]->resets.load() : 0;
}

bool LoopbackDevices::outputOpen(uint32_t output) const {
  return output < outputs_.size() && outputs_[output]->open.load();
}

bool LoopbackDevices::inputStarted(uint32_t input) const {
  return input < inputs_.size() && inputs_[input]->started.load();
}

bool LoopbackDevices::inject(uint32_t word, uint32_t input) {
  return input < inputs_.size() && deliverShort(*inputs_[input], word);
}

bool LoopbackDevices::injectSysex(std::span<const uint8_t> bytes, uint32_t input) {
  return input < inputs_.size() && deliverSysex(*inputs_[input], bytes);
}

std::size_t LoopbackDevices::queuedBuffers(uint32_t input) const {
  if (input >= inputs_.size()) return 0;
  std::lock_guard lock(inputs_[input]->bufferMutex);
  return inputs_[input]->buffers.size();
}
