#include "song/song_store.h"

std::array<TrackRecord, SongTrackCount + 1> Tracks;
SharedWord<uint32_t> TicksPerBar = 480;

int FoldKey(int k) {
  if (k < 0) return (k / -12 + 1) * 12 + k;
  if (k > 127) return k - ((k - 127) / 12 + 1) * 12;
  return k;
}
