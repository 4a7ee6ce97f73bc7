// The device path end to end over JACK. Out: a JACK client of this test's own
// listens on a MIDI port; Velmora opens that port through the RtMidi backend,
// and the real timer plays a timed sequence through the sync clock. Every
// message must arrive in order, within 15 ms of the pass that was due to send
// it. In: a client of the test plays MIDI clock and notes into Velmora's own
// input port, and Velmora records them in MIDI sync.
//
// The test script starts a JACK server with the dummy driver. Without one the
// test is skipped, except under CI, where it fails.

#include <jack/jack.h>
#include <jack/midiport.h>

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "midi/backends/device_list.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "smf/smf.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "transport/playback_feed.h"
#include "transport/transport_commands.h"

using namespace platform;
using Clock = std::chrono::steady_clock;

namespace {

// A sanitizer slows every thread so far that JACK's server may drop whole
// cycles: such a build checks the threads, the memory and the order of what
// arrives, and the plain build checks that everything arrives, on time.
#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr bool SlowedDown = true;
#else
constexpr bool SlowedDown = false;
#endif

struct Arrival {
  Clock::time_point at;
  uint8_t bytes[3];
};

// The listening client: its process callback keeps what arrives, with the time.
struct Listener {
  jack_client_t* client = nullptr;
  jack_port_t* port = nullptr;
  std::array<Arrival, 4096> arrivals{};
  std::atomic<std::size_t> count{0};

  static int process(jack_nframes_t frames, void* self) {
    auto* listener = static_cast<Listener*>(self);
    void* buffer = jack_port_get_buffer(listener->port, frames);
    const uint32_t events = jack_midi_get_event_count(buffer);
    const auto now = Clock::now();
    for (uint32_t i = 0; i < events; ++i) {
      jack_midi_event_t event;
      if (jack_midi_event_get(&event, buffer, i) != 0) continue;
      const std::size_t at = listener->count.load(std::memory_order_relaxed);
      if (at == listener->arrivals.size()) return 0;
      Arrival& arrival = listener->arrivals[at];
      arrival.at = now;
      for (std::size_t b = 0; b < 3; ++b) arrival.bytes[b] = b < event.size ? event.buffer[b] : 0;
      listener->count.store(at + 1, std::memory_order_release);
    }
    return 0;
  }

  bool start() {
    client = jack_client_open("velmora-test", JackNoStartServer, nullptr);
    if (client == nullptr) return false;
    port = jack_port_register(client, "in", JACK_DEFAULT_MIDI_TYPE, JackPortIsInput, 0);
    jack_set_process_callback(client, &Listener::process, this);
    return port != nullptr && jack_activate(client) == 0;
  }

  ~Listener() {
    if (client != nullptr) jack_client_close(client);
  }
};

// The time of the first pass that counted, taken inside the pass.
std::atomic<int64_t> firstPassNs{0};

void noteFirstPass() {
  int64_t none = 0;
  firstPassNs.compare_exchange_strong(none, Clock::now().time_since_epoch().count());
}

class Window final : public MessageTarget {
 public:
  intptr_t handleMessage(uint32_t, uintptr_t, uintptr_t) override { return 0; }
};

TEST(JackDevice, ATimedSequenceArrivesInOrderAndOnTime) {
  Listener listener;
  if (!listener.start()) {
    if (std::getenv("CI") != nullptr) FAIL() << "no JACK server: the test script should have started one";
    GTEST_SKIP() << "no JACK server running (start one with: jackd -d dummy)";
  }

  // Hooks are installed before the clock's timer starts, and taken away after it ends.
  firstPassNs = 0;
  ClockHooks.generatorTick = noteFirstPass;
  ThreadTimers timers;
  ThreadedLoop loop;
  StandardDevices devices;
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices.list});

  uint32_t device = 0;
  std::string name;
  while (GetMidiOutDescription(device, name) != 0 && name != "velmora-test:in") ++device;
  ASSERT_EQ(name, "velmora-test:in") << "the RtMidi backend lists the test's JACK port";

  Window window;
  SyncClock* clock = nullptr;
  MidiOutHandle* out = nullptr;
  ASSERT_EQ(OpenSync(&clock, &window, SYNC_INTERNAL, 10), 0u);
  SetResolution(clock, 120);
  SetTempo(clock, 500000);
  ASSERT_EQ(OpenMidiOut(&out, &window, device, clock, MIDI_OPEN_WORD), 0u);
  SetMidiOutFilters(out, 1u << 14 | 1u << 16 | 1u << 18);  // no MIDI clock, Start or Stop here
  // JACK makes a new connection live in its graph a little after the call returns.
  const auto connecting = Clock::now() + std::chrono::seconds(5);
  while (jack_port_connected(listener.port) == 0 && Clock::now() < connecting) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  ASSERT_GT(jack_port_connected(listener.port), 0) << "Velmora's port is connected to the test's";
  std::this_thread::sleep_for(std::chrono::milliseconds(50));  // a few process cycles

  // Notes every 12 ticks: at 2.4 ticks a pass, exactly on every fifth pass.
  constexpr int Notes = 40;
  for (int i = 0; i < Notes; ++i) {
    const uint8_t key = static_cast<uint8_t>(48 + i);
    MidiEvent note{i == 0 ? 0u : 12u, static_cast<uint8_t>(i % 2 == 0 ? 0x90 : 0x80), key, 100, 0, nullptr, 0, 0, 0, 0};
    ASSERT_EQ(MidiOut(out, &note), 0u);
  }
  Generating = 1;
  StartSync(clock);

  const auto deadline = Clock::now() + std::chrono::seconds(5);
  while (listener.count.load(std::memory_order_acquire) < Notes && Clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  StopSync(clock);
  Generating = 0;
  CloseSync(&clock);
  ClockHooks = {};
  CloseMidiOut(&out);
  loop.stop();

  const std::size_t arrived = listener.count.load(std::memory_order_acquire);
  if (SlowedDown) {
    int lastKey = -1;
    for (std::size_t i = 0; i < arrived; ++i) {
      const Arrival& arrival = listener.arrivals[i];
      if (arrival.bytes[2] != 100) continue;  // the test's notes only: Stop resets notes and controllers too
      EXPECT_GT(arrival.bytes[1], lastKey);
      lastKey = arrival.bytes[1];
    }
    EXPECT_GE(lastKey, 0) << "some notes arrived";
    return;
  }
  ASSERT_GE(arrived, static_cast<std::size_t>(Notes));
  const Clock::time_point first{Clock::duration(firstPassNs.load())};
  double worstMs = 0;
  for (int i = 0; i < Notes; ++i) {
    const Arrival& arrival = listener.arrivals[i];
    EXPECT_EQ(arrival.bytes[0], i % 2 == 0 ? 0x90 : 0x80) << "message " << i;
    EXPECT_EQ(arrival.bytes[1], 48 + i) << "message " << i << " out of order";
    // Tick 12 i falls due on pass 5 i (pass 1 for the first).
    const int pass = std::max(1, 5 * i);
    const auto due = first + std::chrono::milliseconds(10 * (pass - 1));
    const double lateMs = std::chrono::duration<double, std::milli>(arrival.at - due).count();
    worstMs = std::max(worstMs, lateMs);
    EXPECT_GE(lateMs, -1.0) << "message " << i << " came early";
    EXPECT_LE(lateMs, 15.0) << "message " << i << " came late";
  }
  std::printf("worst lateness over JACK: %.2f ms\n", worstMs);
}

}  // namespace

namespace {

// The playing client: a batch of messages a process cycle, in order.
struct Player {
  static constexpr std::size_t MaxBatch = 3;
  struct Batch {
    std::array<std::array<uint8_t, 3>, MaxBatch> messages{};
    std::size_t count = 0;
  };
  jack_client_t* client = nullptr;
  jack_port_t* port = nullptr;
  std::vector<Batch> batches;          // written before the first release
  std::atomic<std::size_t> released{0};
  std::atomic<std::size_t> sent{0};
  std::atomic<uint32_t> xruns{0};      // cycles that JACK reported late

  static int process(jack_nframes_t frames, void* self) {
    auto* player = static_cast<Player*>(self);
    void* buffer = jack_port_get_buffer(player->port, frames);
    jack_midi_clear_buffer(buffer);
    const std::size_t next = player->sent.load(std::memory_order_relaxed);
    if (next >= player->released.load(std::memory_order_acquire)) return 0;
    const Batch& batch = player->batches[next];
    for (std::size_t i = 0; i < batch.count; ++i) {
      const auto& message = batch.messages[i];
      const std::size_t size = 1 + static_cast<std::size_t>(MidiDataBytes(message[0]));
      jack_midi_event_write(buffer, static_cast<jack_nframes_t>(i), message.data(), size);
    }
    player->sent.store(next + 1, std::memory_order_release);
    return 0;
  }

  static int xrun(void* self) {
    static_cast<Player*>(self)->xruns.fetch_add(1);
    return 0;
  }

  bool start() {
    client = jack_client_open("velmora-player", JackNoStartServer, nullptr);
    if (client == nullptr) return false;
    port = jack_port_register(client, "out", JACK_DEFAULT_MIDI_TYPE, JackPortIsOutput, 0);
    jack_set_process_callback(client, &Player::process, this);
    jack_set_xrun_callback(client, &Player::xrun, this);
    return port != nullptr && jack_activate(client) == 0;
  }

  // Plays batch `at` in a coming cycle: the next batch, or again one that a
  // late cycle lost. Called once every batch released before has been
  // written, so that the process thread is not writing `sent` meanwhile.
  void play(std::size_t at) {
    sent.store(at, std::memory_order_relaxed);
    released.store(at + 1, std::memory_order_release);
  }

  // Connects the player to a port whose name holds the given text.
  bool connectTo(const char* portText) {
    const char** ports = jack_get_ports(client, portText, JACK_DEFAULT_MIDI_TYPE, JackPortIsInput);
    if (ports == nullptr) return false;
    const bool connected = jack_connect(client, jack_port_name(port), ports[0]) == 0;
    jack_free(ports);
    return connected;
  }

  void add(std::initializer_list<std::array<uint8_t, 3>> messages) {
    Batch batch;
    for (const auto& message : messages) batch.messages[batch.count++] = message;
    batches.push_back(batch);
  }

  ~Player() {
    if (client != nullptr) jack_client_close(client);
  }
};

// Another program plays MIDI clock and notes into Velmora's own JACK input;
// Velmora follows the clock in MIDI sync, records, keeps the take and saves
// it; the file holds the notes at the ticks of the clocks they came with.
TEST(JackDevice, NotesAndMidiClockPlayedIntoTheVirtualInputAreRecordedAtTheirTicks) {
  Player player;
  if (!player.start()) {
    if (std::getenv("CI") != nullptr) FAIL() << "no JACK server: the test script should have started one";
    GTEST_SKIP() << "no JACK server running (start one with: jackd -d dummy)";
  }
  // The clock's own timer never runs: time moves only with the incoming clocks.
  VirtualTimers timers;
  ThreadedLoop loop;
  LoopbackDevices silent(1, 0);
  VirtualInputDevices jackInput({RtMidi::UNIX_JACK}, "Velmora");
  DeviceList devices;
  devices.add(&silent);
  devices.add(&jackInput);
  const platform::InstalledSeams installed({.loop = &loop, .timers = &timers, .devices = &devices});
  ScriptedPrompts prompts;
  installPrompts(&prompts);
  ASSERT_EQ(jackInput.inCount(), 1u) << "JACK gives Velmora a virtual input";

  ClockHooks = {};
  InstallFeedHooks();
  TransportWindow controlBar;
  ControlBarWindow = &controlBar;
  ASSERT_EQ(OpenSync(&TheClock, &controlBar, SYNC_INTERNAL, 10), 0u);
  ASSERT_EQ(OpenMidiOut(&TheMidiOut, &controlBar, 0, TheClock, MIDI_OPEN_WORD), 0u);
  ResetSong();
  ASSERT_EQ(OpenMidiIn(&TheMidiIn, &controlBar, 0, TheClock, MIDI_OPEN_WORD), 0u);
  StartMidiIn(TheMidiIn);
  send(&controlBar, WM_COMMAND, CMD_MIDI_SYNC, 0);
  send(&controlBar, WM_COMMAND, CMD_RECORD, 0);

  ASSERT_TRUE(player.connectTo(VirtualInputDevices::PortName)) << "the player reaches Velmora's port";
  const auto connecting = Clock::now() + std::chrono::seconds(5);
  while (jack_port_connected(player.port) == 0 && Clock::now() < connecting) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(50));

  // Start, two beats of clocks (five ticks each at 120 a quarter), notes
  // played right after the clocks of ticks 120, 180 and 240, then Stop.
  player.add({{0xFA, 0, 0}});
  for (int clock = 1; clock <= 48; ++clock) {
    if (clock == 24) {
      player.add({{0xF8, 0, 0}, {0x90, 60, 100}});
    } else if (clock == 36) {
      player.add({{0xF8, 0, 0}, {0x90, 64, 90}});
    } else if (clock == 48) {
      player.add({{0xF8, 0, 0}, {0x80, 60, 0}, {0x80, 64, 0}});
    } else {
      player.add({{0xF8, 0, 0}});
    }
  }
  player.add({{0xFC, 0, 0}});
  // One batch at a time, each once Velmora has taken the one before: the
  // Start sets the clock counting, clock k brings it to tick 5 k, the Stop
  // ends the counting. Under load JACK may run Velmora's client late for a
  // cycle (an xrun), and what the player wrote in that cycle never reaches
  // it: such a batch is played again. A batch lost without an xrun fails.
  const std::size_t last = player.batches.size() - 1;
  auto taken = [&](std::size_t at) {
    const bool counting = (TheClock->flags.load() & SYNC_COUNTING) != 0;
    if (at == 0) return counting;
    if (at == last) return !counting;
    return TheClock->now.load() >= 5 * at;
  };
  const auto deadline = Clock::now() + std::chrono::seconds(10);
  std::size_t replayed = 0;
  for (std::size_t at = 0; at <= last; ++at) {
    uint32_t xruns = player.xruns.load();
    player.play(at);
    auto playedAt = Clock::now();
    while (!taken(at) && Clock::now() < deadline) {
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
      const bool written = player.sent.load(std::memory_order_acquire) > at;
      if (written && player.xruns.load() != xruns && Clock::now() - playedAt > std::chrono::milliseconds(100)) {
        xruns = player.xruns.load();
        player.play(at);
        playedAt = Clock::now();
        ++replayed;
      }
    }
    ASSERT_TRUE(taken(at)) << "batch " << at << " of the player never reached the clock";
  }
  if (replayed != 0) std::printf("JACK lost %zu of the player's batches in xruns; they were played again\n", replayed);
  loop.waitIdle();
  EXPECT_EQ(TheClock->now.load(), 240u) << "48 clocks of 5 ticks";

  prompts.planAnswer(IDYES);
  send(&controlBar, WM_COMMAND, CMD_STOP, 0);
  const std::string path = (std::filesystem::temp_directory_path() / "velmora-jack-take.mid").string();
  const uint32_t written = WriteSong(path);

  CloseSync(&TheClock);
  CloseMidiIn(&TheMidiIn);
  CloseMidiOut(&TheMidiOut);
  loop.stop();
  ControlBarWindow = nullptr;
  ClockHooks = {};
  installPrompts(nullptr);
  ASSERT_NE(written, 0u);

  // What the file holds, in absolute ticks.
  SmfFile* smf = nullptr;
  uint32_t format = 0;
  ASSERT_NE(OpenSMF(&smf, path.c_str(), &format, 'r'), SMF_FAILED);
  std::array<MidiEvent, 16> events{};
  const uint32_t n = ReadSMF(smf, 1, events.data(), static_cast<uint32_t>(events.size()));
  CloseSMF(&smf);
  ASSERT_EQ(n, 4u);
  std::vector<std::pair<uint32_t, uint32_t>> notes;
  uint32_t tick = 0;
  for (uint32_t i = 0; i < n; ++i) {
    tick += events[i].time;
    notes.emplace_back(tick, PackedMessage(events[i]));
  }
  const std::vector<std::pair<uint32_t, uint32_t>> expected = {
      {120, 0x643C90}, {180, 0x5A4090}, {240, 0x003C80}, {240, 0x004080}};
  EXPECT_EQ(notes, expected);
}

}  // namespace
