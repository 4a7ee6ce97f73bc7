#include "song/track_rows.h"

#include <array>
#include <cstdio>
#include <memory>

namespace {

std::array<std::unique_ptr<TrackRow>, SongTrackCount + 1> rows;

template <std::size_t N, typename... Args>
void format(char (&field)[N], const char* pattern, Args... args) {
  std::snprintf(field, N, pattern, args...);
}

void settingText(char (&field)[30], uint8_t value) {
  if (value == 255) {
    format(field, "%s", "- - -");
  } else {
    format(field, "%u", unsigned{value});
  }
}

}  // namespace

TrackRow TrackRowOf(const TrackRecord& t) {
  TrackRow row{};
  format(row.play, "%s", t.playOff == 0 ? "On" : "Off");
  format(row.key, "%d", int{t.keyOffset});
  format(row.velocity, "%d", int{t.velocityOffset});
  format(row.time, "%s", TimeText(t.timeOffset).c_str());
  if (t.channel == 255) {
    format(row.channel, "%s", "- - -");
  } else {
    format(row.channel, "%u", t.channel + 1u);
  }
  format(row.repeats, "%u", unsigned{t.repeats});
  settingText(row.pan, t.pan);
  settingText(row.volume, t.volume);
  settingText(row.patch, t.patch);
  return row;
}

const TrackRow* TrackRowAt(uint32_t track) { return track < rows.size() ? rows[track].get() : nullptr; }

void SetTrackRow(uint32_t track, const TrackRow& row) {
  if (track < rows.size()) rows[track] = std::make_unique<TrackRow>(row);
}

void DropTrackRow(uint32_t track) {
  if (track < rows.size()) rows[track].reset();
}

void ClearTrackRows() {
  for (auto& row : rows) row.reset();
}
