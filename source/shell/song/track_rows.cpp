#include "shell/song/track_rows.h"

#include <cstdio>

namespace shell {

namespace {

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

void TrackRowTable::buildRow(uint32_t track) {
  if (track >= rows_.size()) return;
  rows_[track] = std::make_unique<TrackRow>(TrackRowOf(Tracks[track]));
}

void TrackRowTable::dropRow(uint32_t track) {
  if (track < rows_.size()) rows_[track].reset();
}

const TrackRow* TrackRowTable::row(uint32_t track) const { return track < rows_.size() ? rows_[track].get() : nullptr; }

void TrackRowTable::clear() {
  for (auto& row : rows_) row.reset();
}

TrackRowTable& TheTrackRows() {
  static TrackRowTable table;
  return table;
}

}  // namespace shell
