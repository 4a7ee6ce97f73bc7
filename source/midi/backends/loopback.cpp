#include "midi/backends/loopback.h"

#include "midi/backends/input_delivery.h"
#include "midi/backends/wire_check.h"
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
  InputDelivery delivery;
};

namespace {

using Output = LoopbackDevices::Output;
using Input = LoopbackDevices::Input;

bool takeOne(std::atomic<uint32_t>& count) {
  uint32_t left = count.load(std::memory_order_relaxed);
  if (left == 0) return false;
  while (left > 0 && !count.compare_exchange_weak(left, left - 1)) {
  }
  return left > 0;
}

class OutPort final : public MidiOutPort {
 public:
  OutPort(Output& output, Input* cable, const std::atomic<bool>& recording, MidiOutCallbackFn callback,
          uintptr_t instance)
      : output_(output), cable_(cable), recording_(recording), callback_(callback), instance_(instance) {}

  uint32_t shortMsg(uint32_t word) override { return send(word); }

  uint32_t shortMsgs(std::span<const uint32_t> words, std::size_t& sent) override {
    // Neither logging, nor answering not-ready, nor carrying to an input: only
    // the wire's check is left to do, for the whole burst at once.
    if (cable_ == nullptr && !recording_.load(std::memory_order_relaxed) &&
        output_.notReadyShort.load(std::memory_order_relaxed) == 0) {
      for (const uint32_t word : words) {
        if (!ShortMessageFitsWire(word)) CountDroppedMessage();
      }
      sent = words.size();
      return MMSYSERR_NOERROR;
    }
    std::size_t count = 0;  // counted here, not through the reference, which would be stored each time
    uint32_t result = MMSYSERR_NOERROR;
    for (; count < words.size() && result == MMSYSERR_NOERROR; ++count) result = send(words[count]);
    sent = result == MIDIERR_NOTREADY ? count - 1 : count;
    return result;
  }

  uint32_t longMsg(MidiHeader& header) override {
    if (takeOne(output_.notReadyLong)) return MIDIERR_NOTREADY;
    const std::span<const uint8_t> bytes(header.lpData, header.dwBufferLength);
    record(0, bytes);
    if (!SysexFitsWire(bytes)) {
      CountDroppedMessage();
    } else if (cable_ != nullptr) {
      cable_->delivery.deliverSysex(bytes);
    }
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
  uint32_t send(uint32_t word) {
    if (takeOne(output_.notReadyShort)) return MIDIERR_NOTREADY;
    record(word, {});
    if (!ShortMessageFitsWire(word)) {
      CountDroppedMessage();
    } else if (cable_ != nullptr) {
      cable_->delivery.deliverShort(word);
    }
    return MMSYSERR_NOERROR;
  }

  void record(uint32_t word, std::span<const uint8_t> bytes) {
    if (recording_.load(std::memory_order_relaxed)) append(word, bytes);
  }
  [[gnu::noinline]] void append(uint32_t word, std::span<const uint8_t> bytes) {
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
    input_.delivery.start();
    return MMSYSERR_NOERROR;
  }
  uint32_t stop() override {
    input_.delivery.stop();
    return MMSYSERR_NOERROR;
  }
  uint32_t reset() override {
    input_.delivery.reset();
    return MMSYSERR_NOERROR;
  }
  uint32_t addBuffer(MidiHeader& header) override { return input_.delivery.addBuffer(header); }
  uint32_t close() override {
    const uint32_t result = input_.delivery.close();
    if (result == MMSYSERR_NOERROR) input_.open.store(false);
    return result;
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
  input.delivery.open(callback, instance, opened.get());
  input.open.store(true);
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
  return input < inputs_.size() && inputs_[input]->delivery.started();
}

bool LoopbackDevices::inject(uint32_t word, uint32_t input) {
  return input < inputs_.size() && inputs_[input]->delivery.deliverShort(word);
}

bool LoopbackDevices::injectSysex(std::span<const uint8_t> bytes, uint32_t input) {
  return input < inputs_.size() && inputs_[input]->delivery.deliverSysex(bytes);
}

std::size_t LoopbackDevices::queuedBuffers(uint32_t input) const {
  return input < inputs_.size() ? inputs_[input]->delivery.queuedBuffers() : 0;
}
