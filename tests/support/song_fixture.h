#pragma once
// An empty song for a test: every track without events or settings.

#include "song/song_store.h"

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
}
