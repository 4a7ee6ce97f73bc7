#include "song/tracks_manager.h"

#include <algorithm>
#include <vector>

#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/field_checks.h"
#include "platform/view_registry.h"
#include "song/song_store.h"
#include "song/track_rows.h"
#include "song/events_list.h"

TrackFieldTexts TrackFields;

namespace {

constexpr std::size_t MaxNameLength = 63;
constexpr std::size_t MaxFieldLength = 29;

std::string signedByte(uint8_t value) { return std::to_string(static_cast<int8_t>(value)); }

template <std::size_t N>
void setText(char (&cell)[N], const std::string& text) {
  const std::size_t length = std::min(text.size(), N - 1);
  std::copy_n(text.begin(), length, cell);
  cell[length] = '\0';
}

// Pan, Vol or Patch: exactly "-1" hides the setting in the row and keeps it in
// the record; any other text sets it, and a set one goes out at once.
// "-01" passes the range check as -1 does but is not "-1": it sets 255, no setting, and shows as typed.
template <std::size_t N>
void applySetting(char (&cell)[N], const std::string& text, SharedWord<uint8_t>& setting, uint8_t status,
                  uint8_t controller) {
  if (text == "-1") {
    setText(cell, "- - -");
    return;
  }
  setText(cell, text);
  setting = static_cast<uint8_t>(FieldValue(text));
  SendTrackSetting(setting, status, controller);
}

// A number field at OK: trimmed, checked, and stored once it passes.
bool passes(std::string text, int32_t low, int32_t high, std::string& field) {
  TrimBlanks(text);
  if (CheckRange(text, low, high) == 0) return false;
  field = text.substr(0, MaxFieldLength);
  return true;
}

bool hasEvents(uint32_t track) { return track < SongTrackCount && Tracks[track].count > 0; }

}  // namespace

void LoadTrackFields() {
  const TrackRecord& t = Tracks[RecordTrack];
  TrackFields.name = TrackNames[RecordTrack].value_or("");
  TrackFields.key = std::to_string(int{t.keyOffset});
  TrackFields.velocity = std::to_string(int{t.velocityOffset});
  TrackFields.time = TimeText(t.timeOffset);
  TrackFields.repeats = std::to_string(unsigned{t.repeats});
  TrackFields.pan = signedByte(t.pan);
  TrackFields.volume = signedByte(t.volume);
  TrackFields.patch = signedByte(t.patch);
}

void ApplyTrackFields(uint32_t track) {
  if (track >= SongTrackCount) return;
  TrackRecord& t = Tracks[track];
  TrackNames[track] = TrackFields.name;  // an empty name is a name too
  t.keyOffset = static_cast<int8_t>(FieldValue(TrackFields.key));
  t.velocityOffset = static_cast<int8_t>(FieldValue(TrackFields.velocity));
  // The feed adds Time+ to every event it sends: a change while the song runs would put it out of order.
  if (Capturing == 0 && Playing == 0) t.timeOffset = ParseTimeText(TrackFields.time);
  t.repeats = static_cast<uint16_t>(FieldValue(TrackFields.repeats));
  // Play, Time+ and Chn show the record; the other cells show the texts as entered.
  TrackRow row = TrackRowOf(t);
  setText(row.key, TrackFields.key);
  setText(row.velocity, TrackFields.velocity);
  setText(row.repeats, TrackFields.repeats);
  const auto controlStatus = static_cast<uint8_t>(t.channel | 0xB0);
  applySetting(row.pan, TrackFields.pan, t.pan, controlStatus, 10);
  applySetting(row.volume, TrackFields.volume, t.volume, controlStatus, 7);
  applySetting(row.patch, TrackFields.patch, t.patch, static_cast<uint8_t>(t.channel | 0xC0), 0);
  SetTrackRow(track, row);
  SongDirty = 1;
}

bool TrackPlayChecked(uint32_t track) { return track <= SongTrackCount && Tracks[track].playOff == 0; }

int TrackChannelItem(uint32_t track) {
  if (track > SongTrackCount) return 0;
  const int item = static_cast<int8_t>(Tracks[track].channel + 1);
  // A channel past 16 (a damaged record) has no item: the list shows None.
  return item >= 0 && item <= 16 ? item : 0;
}

uint32_t AcceptTrackDialog(const TrackDialogEntries& entries) {
  TrackFields.name = entries.name.substr(0, MaxNameLength);
  if (!passes(entries.key, -127, 127, TrackFields.key)) return ID_TRACK_KEY;
  if (!passes(entries.velocity, -127, 127, TrackFields.velocity)) return ID_TRACK_VELOCITY;
  TrackFields.time = entries.time.substr(0, MaxFieldLength);
  if (!passes(entries.repeats, 0, 65535, TrackFields.repeats)) return ID_TRACK_REPEATS;
  if (!passes(entries.pan, -1, 127, TrackFields.pan)) return ID_TRACK_PAN;
  if (!passes(entries.patch, -1, 127, TrackFields.patch)) return ID_TRACK_PATCH;
  if (!passes(entries.volume, -1, 127, TrackFields.volume)) return ID_TRACK_VOLUME;
  TrackRecord& t = Tracks[RecordTrack];
  t.playOff = entries.play ? 0 : 1;
  t.channel = static_cast<uint8_t>(std::clamp(entries.channelItem, 0, 16) - 1);
  SongDirty = 1;
  return 0;
}

const std::string& TrackFieldText(uint32_t id) {
  switch (id) {
    case ID_TRACK_KEY: return TrackFields.key;
    case ID_TRACK_VELOCITY: return TrackFields.velocity;
    case ID_TRACK_TIME: return TrackFields.time;
    case ID_TRACK_REPEATS: return TrackFields.repeats;
    case ID_TRACK_PAN: return TrackFields.pan;
    case ID_TRACK_PATCH: return TrackFields.patch;
    case ID_TRACK_VOLUME: return TrackFields.volume;
    default: return TrackFields.name;
  }
}

void BeforeTrackDialog() {
  if (TracksOpen == 1) LoadTrackFields();
}

void AfterTrackDialog() {
  if (TracksOpen == 1) {
    ApplyTrackFields(RecordTrack);
    if (TracksList != nullptr) TracksList->repaint();
  }
  TouchTrack(RecordTrack);
}

bool TrackRowMayToggle(uint32_t row) { return Playing == 0 && Recording == 0 && hasEvents(row); }

void TrackSelectionChanged() {
  ReadSelection();
  RefreshEventsList();
}

void SelectCurrentTrack() {
  if (TracksOpen != 1 || TracksList == nullptr || !hasEvents(RecordTrack)) return;
  const std::vector<int> selected = TracksList->selectedItems();
  const bool wasSelected = std::find(selected.begin(), selected.end(), int{RecordTrack}) != selected.end();
  TracksList->setSelected(RecordTrack, !wasSelected);
  TrackSelectionChanged();
}
