#pragma once
// The Tracks manager's rows: each song track's settings as the texts that the
// manager paints, kept ready so that painting formats nothing but the track's
// number and its count of events. A row is made when a track's settings are
// set (BuildTrackRow, the Tracks dialog) and kept until the track goes; rows
// live for the whole program, so the manager shows them whenever it opens.
// A row is not rebuilt by itself when the record changes. UI thread only.

#include <cstdint>

#include "song/song_store.h"

// A row's texts. The row shows the name of TrackNames, which it does not copy.
struct TrackRow {
  char play[30];
  char key[30];
  char velocity[30];
  char time[30];
  char channel[30];
  char repeats[30];
  char pan[30];
  char volume[30];
  char patch[30];
};

// A track's settings as its row shows them; "- - -" stands for none.
TrackRow TrackRowOf(const TrackRecord& track);
// The track's row, or null when it has none (or there is no such track).
const TrackRow* TrackRowAt(uint32_t track);
// Gives a track its row; nothing past the tempo track.
void SetTrackRow(uint32_t track, const TrackRow& row);
void DropTrackRow(uint32_t track);
void ClearTrackRows();
