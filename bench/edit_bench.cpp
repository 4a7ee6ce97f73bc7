// The Edit menu's heavy moments on a track of 32768 events: Quantize (one
// pass, a sort and a link pass), Transpose (one pass, no sort), and a Paste of
// a 64-event region repeated 100 times into it.

#include <benchmark/benchmark.h>

#include <vector>

#include "platform/installed_seams.h"
#include "platform/prompts.h"
#include "song/events_list.h"
#include "song/note_linking.h"
#include "song/region_edits.h"
#include "song/song_store.h"
#include "song/transforms.h"

namespace {

constexpr uint32_t Events = 32768;

// Notes of 6 ticks every 10 ticks, a little off the grid, in delta time.
std::vector<MidiEvent> trackEvents() {
  std::vector<MidiEvent> events;
  events.reserve(Events);
  for (uint32_t i = 0; i < Events / 2; ++i) {
    const auto key = static_cast<uint8_t>(36 + i % 48);
    events.push_back(MidiEvent{i == 0 ? 3u : 4u, 0x90, key, 90, 0, nullptr, 0, 0, 0, 0});
    events.push_back(MidiEvent{6, 0x90, key, 0, 0, nullptr, 0, 0, 0, 0});
  }
  return events;
}

// Track 0 holds the big track and is the one selected; the region is all of it.
class Stage {
 public:
  Stage() {
    reinstall();
    SelectedTracks[0] = 0;
    SelectedTrackCount = 1;
    EditFrom = 0;
    EditTo = 0xFFFFFFFFu;
  }
  ~Stage() {
    FreeEvents(Tracks[0].events);
    Tracks[0] = TrackRecord{};
    SelectedTrackCount = 0;
    ActiveTrackCount = 0;
  }
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  void reinstall() {
    std::vector<MidiEvent> events = source;
    InstallTrack(0, Events, events.data());
  }

  std::vector<MidiEvent> source = trackEvents();
  platform::ScriptedPrompts prompts;
  platform::InstalledSeams seams{{.prompts = &prompts}};
};

void BM_Quantize_32768Events(benchmark::State& state) {
  Stage stage;
  QuantizeGrid = 30;
  for (auto _ : state) {
    state.PauseTiming();
    stage.reinstall();
    state.ResumeTiming();
    QuantizeSelectedTracks();
  }
  state.SetItemsProcessed(state.iterations() * Events);
}
BENCHMARK(BM_Quantize_32768Events)->Unit(benchmark::kMillisecond);

void BM_Transpose_32768Events(benchmark::State& state) {
  Stage stage;
  TransposeAmount = 1;
  for (auto _ : state) TransposeSelectedTracks();
  state.SetItemsProcessed(state.iterations() * Events);
}
BENCHMARK(BM_Transpose_32768Events)->Unit(benchmark::kMicrosecond);

void BM_Paste_64EventsRepeated100TimesInto32768(benchmark::State& state) {
  Stage stage;
  EditFrom = 0;
  EditTo = 319;  // 32 notes
  CopyRegion();
  if (CopyBuffer.count != 64) state.SkipWithError("the region did not hold 64 events");
  PasteRepetitions = 100;
  PasteMode = PasteBlend;
  PasteTrack = 0;
  PasteTime = 1000;
  for (auto _ : state) {
    state.PauseTiming();
    stage.reinstall();
    state.ResumeTiming();
    PasteRegion();
  }
  if (Tracks[0].count != Events + 6400) state.SkipWithError("the paste did not land whole");
  state.SetItemsProcessed(state.iterations() * (Events + 6400));
}
BENCHMARK(BM_Paste_64EventsRepeated100TimesInto32768)->Unit(benchmark::kMillisecond);

}  // namespace
