#include "song/song_store.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>

#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "song/track_rows.h"
#include "song/events_list.h"

std::array<TrackRecord, SongTrackCount + 1> Tracks;
SharedWord<uint32_t> SongResolution = 120;
SharedWord<uint32_t> Numerator = 1;
SharedWord<uint32_t> Denominator = 4;
SharedWord<uint32_t> TicksPerBar = 480;
std::array<uint32_t, SongTrackCount + 1> ActiveTracks{};
int32_t ActiveTrackCount = 0;
uint8_t RecordTrack = 0;
std::array<uint32_t, 8> TouchedTracks{};
std::array<std::optional<std::string>, SongTrackCount + 1> TrackNames;
std::array<uint32_t, SongTrackCount> SelectedTracks{};
int32_t SelectedTrackCount = 0;
uint32_t SelectFrom = 0, SelectTo = 0;
std::array<MidiEvent, TakeSlots> TakeBuffer{};
uint32_t TakeCount = 0;
std::unique_ptr<char[]> LyricText;
std::string SongFilePath;
std::string SongTitle = "No name";
uint32_t SongDirty = 0;

void ShowSongTitle() {
  if (FrameWindow != nullptr) FrameWindow->showSongTitle(SongTitle);
}

namespace {
// A resolution or numerator of 0 (never set) counts as 1 rather than dividing by zero.
uint32_t atLeastOne(uint32_t value) { return value != 0 ? value : 1; }
}  // namespace

std::string TimeText(uint32_t ticks) {
  const uint32_t resolution = atLeastOne(SongResolution);
  const uint32_t numerator = atLeastOne(Numerator);
  const uint32_t beats = ticks / resolution;
  char text[40];
// GCC finds the format's 0 flag redundant beside its precision; the format is kept, it makes the counter's text.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
  std::snprintf(text, sizeof text, "%0.5lu:%0.2lu:%0.3lu", static_cast<unsigned long>(beats / numerator + 1),
                static_cast<unsigned long>(beats % numerator + 1), static_cast<unsigned long>(ticks % resolution));
#pragma GCC diagnostic pop
  return text;
}

uint32_t ParseTimeText(const std::string& text) {
  unsigned measure = 0, beat = 0, tick = 0;
  std::sscanf(text.c_str(), "%u:%u:%u", &measure, &beat, &tick);
  measure = measure < 1 ? 1 : measure;
  beat = beat < 1 ? 1 : beat;
  return ((measure - 1) * Numerator + (beat - 1)) * SongResolution + tick;
}

void AbsoluteToDelta(MidiEvent* events, uint32_t n) {
  uint32_t previous = 0;
  for (uint32_t i = 0; i < n; ++i) {
    const uint32_t absolute = events[i].time;
    events[i].time = absolute - previous;
    previous = absolute;
  }
}

void DeltaToAbsolute(MidiEvent* events, uint32_t n) {
  uint32_t time = 0;
  for (uint32_t i = 0; i < n; ++i) {
    time += events[i].time;
    events[i].time = time;
  }
}

int CompareEventTime(const MidiEvent& a, const MidiEvent& b) { return a.time > b.time ? 1 : a.time < b.time ? -1 : 0; }

int AppendEvent(const MidiEvent* event, EventList* list) {
  if (event == nullptr || list == nullptr) return 0;
  try {
    list->events.push_back(*event);
  } catch (const std::bad_alloc&) {
    return 0;
  }
  return 1;
}

void ResetTrackSettings(TrackRecord& track) {
  track.keyOffset = 0;
  track.velocityOffset = 0;
  track.channel = 255;
  track.playOff = 0;
  track.pan = 255;
  track.patch = 255;
  track.volume = 255;
  track.timeOffset = 0;
  track.repeats = 0;
}

void TouchTrack(uint32_t track) {
  // Only song tracks have rows; the tempo track's number is past the set's 256 bits.
  if (track < SongTrackCount) TouchedTracks[track / 32] |= 1u << (track % 32);
}

void NotEnoughMemory() {
  platform::ShowMessageBox("Not enough memory. Close one or more applications and try again", "Velmora",
                           platform::MB_ICONSTOP);
}

uint32_t EventBlockLimit = 0xFFFFFFFFu;

MidiEvent* AllocateEvents(uint32_t count) {
  if (count > EventBlockLimit) return nullptr;
  return new (std::nothrow) MidiEvent[count]{};
}

void FreeEvents(MidiEvent* events) { delete[] events; }

void SendTrackSetting(uint8_t value, uint8_t status, uint8_t controller) {
  if (value == 255) return;
  // A track without a channel holds 255 there, so its setting goes out with the status byte 0xFF.
  if (status >> 4 == 0xC) {
    MidiOutNow(TheMidiOut, status, value, 0);
  } else {
    MidiOutNow(TheMidiOut, status, controller, value);
  }
}

void ReadSelection() {
  if (TracksOpen != 1 || TracksList == nullptr) return;  // no list to read: the selection stands
  std::vector<int> rows = TracksList->selectedItems();
  std::sort(rows.begin(), rows.end());
  SelectedTrackCount = 0;
  for (int row : rows) {
    if (row >= 0 && row < static_cast<int>(SongTrackCount)) {
      SelectedTracks[static_cast<std::size_t>(SelectedTrackCount++)] = static_cast<uint32_t>(row);
    }
  }
  UpdateCommandStates();
}

void BuildTrackRow(uint32_t track) {
  if (track > SongTrackCount) return;
  const TrackRecord& t = Tracks[track];
  SendTrackSetting(t.pan, static_cast<uint8_t>(t.channel | 0xB0), 10);
  SendTrackSetting(t.volume, static_cast<uint8_t>(t.channel | 0xB0), 7);
  SendTrackSetting(t.patch, static_cast<uint8_t>(t.channel | 0xC0), 0);
  SetTrackRow(track, TrackRowOf(t));
  SongDirty = 1;
}

void DeleteTrack(uint32_t track) {
  if (track > SongTrackCount) return;
  if (TracksOpen == 1 && TracksList != nullptr) {
    TracksList->setSelected(static_cast<int>(track), false);
    TracksList->repaint();
    ReadSelection();
  }
  // Deleting any track puts the current track's settings back to their
  // defaults; the deleted track's own record keeps its settings.
  TouchTrack(RecordTrack);
  ResetTrackSettings(Tracks[RecordTrack]);
  TrackNames[track].reset();
  DropTrackRow(track);
  TrackRecord& t = Tracks[track];
  // The Events list takes a track's last event away itself before it deletes
  // the track, which then still stands in ActiveTracks: the list is rebuilt
  // for it as for a track that held events. A track that is in neither (the
  // take's track, cleared before the take goes in) leaves the list in its order.
  const bool listed = std::find(ActiveTracks.begin(), ActiveTracks.begin() + ActiveTrackCount, track) !=
                      ActiveTracks.begin() + ActiveTrackCount;
  if (t.events != nullptr || listed) {
    FreeEvents(t.events);
    t.events = nullptr;
    t.count = 0;
    ActiveTrackCount = 0;
    for (uint32_t n = 0; n <= SongTrackCount; ++n) {
      if (Tracks[n].events != nullptr) ActiveTracks[ActiveTrackCount++] = n;
    }
  }
  // The list is rebuilt once the events are gone: with the manager closed the
  // track stays selected, and rows built before the free would point into it.
  RefreshEventsList();
}
