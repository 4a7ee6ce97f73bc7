#pragma once
// The Tracks manager's rows: each song track's settings as the texts that the
// manager paints, built from the track's record when the song says so and
// kept until the track goes. They live for the whole program, so that the
// manager shows them whenever it opens. UI thread only.

#include <array>
#include <cstdint>
#include <memory>

#include "platform/view_registry.h"
#include "song/song_store.h"

namespace shell {

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

class TrackRowTable final : public platform::TrackRowsView {
 public:
  void buildRow(uint32_t track) override;
  void dropRow(uint32_t track) override;
  // The track's row, or null when it has none.
  const TrackRow* row(uint32_t track) const;
  void clear();

 private:
  std::array<std::unique_ptr<TrackRow>, SongTrackCount + 1> rows_;
};

// The table that the application registers as TrackRows.
TrackRowTable& TheTrackRows();

}  // namespace shell
