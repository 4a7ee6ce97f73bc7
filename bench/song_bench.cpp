// The song's heavy moments: reading and writing a file of 64 tracks of 32768
// events each, installing one track of 32768 events, and Play's start in the
// middle of that song (SeekFeed and the first SendEvent).

#include <benchmark/benchmark.h>

#include <filesystem>
#include <vector>

#include "midi/backends/loopback.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/timers.h"
#include "smf/smf.h"
#include "song/note_linking.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "transport/playback_feed.h"

namespace {

constexpr uint32_t TrackCount = 64;
constexpr uint32_t EventsPerTrack = 32768;

class Sink final : public platform::MessageTarget {
 public:
  intptr_t handleMessage(uint32_t, uintptr_t, uintptr_t) override { return 0; }
};

// A clock, an output that keeps nothing, and an empty song.
class Stage {
 public:
  Stage() {
    OpenSync(&TheClock, &window, SYNC_INTERNAL, 10);
    OpenMidiOut(&TheMidiOut, &window, 0, TheClock, MIDI_OPEN_WORD);
    ResetSong();
  }
  ~Stage() {
    ResetSong();
    CloseSync(&TheClock);
    CloseMidiOut(&TheMidiOut);
    loop.pump();
  }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  platform::ManualLoop loop;
  platform::VirtualTimers timers;
  LoopbackDevices devices{1, 0};
  platform::ScriptedPrompts prompts;
  platform::InstalledSeams seams{{.loop = &loop, .timers = &timers, .devices = &devices, .prompts = &prompts}};
  Sink window;
};

// One track's events in delta time: notes of 6 ticks every 10 ticks, on a channel of its own.
std::vector<MidiEvent> trackEvents(uint32_t track) {
  std::vector<MidiEvent> events;
  events.reserve(EventsPerTrack);
  const auto channel = static_cast<uint8_t>(track % 16);
  for (uint32_t i = 0; i < EventsPerTrack / 2; ++i) {
    const auto key = static_cast<uint8_t>(36 + (i + track) % 48);
    events.push_back(MidiEvent{i == 0 ? 0u : 4u, static_cast<uint8_t>(0x90 | channel), key, 90, 0, nullptr, 0, 0, 0, 0});
    events.push_back(MidiEvent{6, static_cast<uint8_t>(0x90 | channel), key, 0, 0, nullptr, 0, 0, 0, 0});
  }
  return events;
}

void buildBigSong() {
  for (uint32_t t = 0; t < TrackCount; ++t) {
    std::vector<MidiEvent> events = trackEvents(t);
    InstallTrack(t, EventsPerTrack, events.data());
  }
}

std::string bigSongFile() { return (std::filesystem::temp_directory_path() / "velmora-bench-song.mid").string(); }

void BM_WriteSong_64TracksOf32768Events(benchmark::State& state) {
  Stage stage;
  buildBigSong();
  for (auto _ : state) benchmark::DoNotOptimize(WriteSong(bigSongFile()));
  state.SetItemsProcessed(state.iterations() * TrackCount * EventsPerTrack);
}
BENCHMARK(BM_WriteSong_64TracksOf32768Events)->Unit(benchmark::kMillisecond);

void BM_LoadSong_64TracksOf32768Events(benchmark::State& state) {
  Stage stage;
  buildBigSong();
  WriteSong(bigSongFile());
  for (auto _ : state) {
    LoadSong(bigSongFile());
    stage.loop.pump();
  }
  if (ActiveTrackCount != TrackCount + 1) state.SkipWithError("the song did not load whole");
  state.SetItemsProcessed(state.iterations() * TrackCount * EventsPerTrack);
  std::filesystem::remove(bigSongFile());
}
BENCHMARK(BM_LoadSong_64TracksOf32768Events)->Unit(benchmark::kMillisecond);

void BM_InstallTrack_32768Events(benchmark::State& state) {
  Stage stage;
  const std::vector<MidiEvent> source = trackEvents(0);
  std::vector<MidiEvent> events;
  for (auto _ : state) {
    state.PauseTiming();
    events = source;
    state.ResumeTiming();
    InstallTrack(0, EventsPerTrack, events.data());
  }
  state.SetItemsProcessed(state.iterations() * EventsPerTrack);
}
BENCHMARK(BM_InstallTrack_32768Events)->Unit(benchmark::kMicrosecond);

void BM_PlayStart_SeekFeedAndFirstSendEventMidSong(benchmark::State& state) {
  Stage stage;
  buildBigSong();
  const uint32_t middle = Tracks[0].events[EventsPerTrack / 2].time;
  for (auto _ : state) {
    state.PauseTiming();
    ResetMidiOut(TheMidiOut);
    state.ResumeTiming();
    SeekFeed(middle);
    SendEvent(TheMidiOut);
  }
  if (TheMidiOut->ringCount == 0) state.SkipWithError("the ring stayed empty");
}
BENCHMARK(BM_PlayStart_SeekFeedAndFirstSendEventMidSong)->Unit(benchmark::kMicrosecond);

}  // namespace
