#pragma once
// An empty song for a test: every track without events or settings.

#include <gtest/gtest.h>

#include "song/events_list.h"
#include "song/song_store.h"

// A channel or meta event at an absolute time, not yet linked.
inline MidiEvent ev(uint32_t time, uint8_t status, uint8_t v1 = 0, uint8_t v2 = 0) {
  return MidiEvent{time, status, v1, v2, 0, nullptr, 0, 0, 0, 0};
}

inline void ClearSongTracks() {
  for (auto& track : Tracks) {
    FreeEvents(track.events);
    track = TrackRecord{};
  }
  ActiveTrackCount = 0;
  RecordTrack = 0;
  for (auto& name : TrackNames) name.reset();
  TouchedTracks = {};
  SelectedTrackCount = 0;
  DropEventRows();
}

// The Events list's rows of the tracks named, as an open list would hold them.
inline void ListEventRowsOf(std::initializer_list<uint32_t> tracks) {
  SelectedTrackCount = 0;
  for (uint32_t t : tracks) SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = t;
  EventRowCount = BuildEventRows();
}

// A test on an empty song at 120 ticks a quarter in 4/4.
class EmptySongTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ClearSongTracks();
    SongResolution = 120;
    Numerator = 4;
  }
  void TearDown() override { ClearSongTracks(); }
};
