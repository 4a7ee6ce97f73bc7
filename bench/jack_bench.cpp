// The generator's worst pass through a real JACK port: Velmora opens a port of
// this program's own JACK client through the RtMidi backend, as it opens any
// other, and the pass's messages go through RtMidi's ring to the server. The
// client's process callback counts what arrives: arrived_per_pass against the
// pass's messages (120 endings a voice, the chord's notes, six board messages)
// shows whether the ring between RtMidi and the server held them all. Run it with a
// JACK server at hand: scripts/jack-server build/bench/jack_bench

#include <jack/jack.h>
#include <jack/midiport.h>

#include <atomic>
#include <chrono>
#include <string>
#include <thread>

#include "midi/backends/device_list.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/timers.h"
#include "worst_pass.h"

namespace {

using Clock = std::chrono::steady_clock;

// A JACK client with one MIDI input port that counts the events it receives.
struct Counter {
  jack_client_t* client = nullptr;
  jack_port_t* port = nullptr;
  std::atomic<uint64_t> events{0};

  static int process(jack_nframes_t frames, void* self) {
    auto* counter = static_cast<Counter*>(self);
    void* buffer = jack_port_get_buffer(counter->port, frames);
    counter->events.fetch_add(jack_midi_get_event_count(buffer), std::memory_order_relaxed);
    return 0;
  }

  bool start() {
    client = jack_client_open("velmora-bench", JackNoStartServer, nullptr);
    if (client == nullptr) return false;
    port = jack_port_register(client, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(client, &Counter::process, this);
    return port != nullptr && jack_activate(client) == 0;
  }

  // Waits until nothing more has arrived for a few process cycles.
  uint64_t settle() const {
    uint64_t seen = events.load();
    for (;;) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      const uint64_t now = events.load();
      if (now == seen) return now;
      seen = now;
    }
  }

  ~Counter() {
    if (client != nullptr) jack_client_close(client);
  }
};

uint32_t findOutput(const std::string& wanted) {
  std::string name;
  for (uint32_t device = 0; GetMidiOutDescription(device, name) != 0; ++device) {
    if (name == wanted) return device;
  }
  return UINT32_MAX;
}

void BM_GeneratorTick_WorstPassThroughJack(benchmark::State& state) {
  Counter counter;
  if (!counter.start()) {
    state.SkipWithError("no JACK server running (run: scripts/jack-server build/bench/jack_bench)");
    return;
  }
  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  StandardDevices devices;
  const platform::InstalledSeams seams({.loop = &loop, .timers = &timers, .devices = &devices.list});
  const uint32_t device = findOutput("velmora-bench:in");
  if (device == UINT32_MAX || !OpenWorstPass(device)) {
    state.SkipWithError("the RtMidi backend does not list or open velmora-bench:in");
    CloseWorstPass();
    return;
  }
  const auto connecting = Clock::now() + std::chrono::seconds(5);
  while (jack_port_connected(counter.port) == 0 && Clock::now() < connecting) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));

  uint32_t now = 1000;
  uint64_t passes = 0;
  const uint64_t before = counter.settle();
  for (auto _ : state) {
    RunWorstPass(state, static_cast<int>(state.range(0)), now);
    ++passes;
    state.PauseTiming();  // the server drains RtMidi's ring between passes, as between clock passes
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    state.ResumeTiming();
  }
  const uint64_t arrived = counter.settle() - before;
  CloseWorstPass();
  state.counters["arrived_per_pass"] = static_cast<double>(arrived) / static_cast<double>(passes);
}
BENCHMARK(BM_GeneratorTick_WorstPassThroughJack)
    ->ArgName("voicesPerEndingChord")
    ->Arg(1)
    ->Arg(32)
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(200);

}  // namespace
