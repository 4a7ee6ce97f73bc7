#include "transport/playback_feed.h"

#include <algorithm>

#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/view_registry.h"
#include "song/song_store.h"
#include "song/events_list.h"

SharedWord<uint32_t> FeedRemaining;
SharedWord<uint32_t> FeedLastTime;
uint32_t FeedCursorRow = 0, FeedShownRow = 0, EventsListTop = 0;

namespace {

// The clock's now at the last note-on shaped, for the Events list's cursor.
SharedWord<uint32_t> lastFollowNow = 0xFFFFFFFFu;

// The time at which the next event of a track is due, its passes counted in.
uint32_t nextKey(const TrackRecord& t) {
  const uint32_t last = t.events[t.count - 1].time;
  const uint32_t bar = TicksPerBar;
  // A bar of no ticks cannot be padded to: the next pass follows at once.
  const uint32_t pad = bar != 0 ? bar - last % bar : 0;
  const uint32_t cycle = last + t.timeOffset + pad;
  return t.events[t.cursor].time + t.timeOffset + cycle * t.repeatsDone + t.repeatsDone;
}

uint32_t eventRowCount() { return std::min<uint32_t>(EventRowCount, static_cast<uint32_t>(EventRows.size())); }

uint32_t rowTime(uint32_t row) { return EventRows[row].event->time; }

}  // namespace

void SeekFeed(uint32_t position) {
  FeedLastTime = 0;
  FeedRemaining = 0;
  for (int32_t i = 0; i < ActiveTrackCount; ++i) {
    const uint32_t number = ActiveTracks[i];
    TrackRecord& t = Tracks[number];
    if (t.events == nullptr || t.count == 0) continue;
    const uint8_t forced = t.channel;
    const uint8_t channel = forced != 255 ? forced : t.events[0].status & 0x0F;
    const uint8_t pan = t.pan, volume = t.volume, patch = t.patch;
    if (pan != 255) MidiOutNow(TheMidiOut, static_cast<uint8_t>(0xB0 | channel), 10, pan);
    if (volume != 255) MidiOutNow(TheMidiOut, static_cast<uint8_t>(0xB0 | channel), 7, volume);
    if (patch != 255) MidiOutNow(TheMidiOut, static_cast<uint8_t>(0xC0 | channel), patch, 0);
    if (number == RecordTrack && Recording == 1) continue;
    t.remaining = t.count;
    t.cursor = 0;
    t.repeatsDone = 0;
    while (t.remaining != 0 && position > t.events[t.cursor].time + t.timeOffset) {
      ++t.cursor;
      --t.remaining;
    }
    FeedRemaining += t.remaining;
  }
  FeedCursorRow = FirstEventRowAt(position);
  if (EventsOpen == 1 && EventsList != nullptr) EventsList->setCurrent(static_cast<int>(FeedCursorRow));
}

uint32_t FirstEventRowAt(uint32_t position) {
  const uint32_t count = eventRowCount();
  uint32_t row = 0;
  while (row < count && rowTime(row) < position) ++row;
  return row;
}

void EventFollowNotice(uint32_t position) {
  const uint32_t count = eventRowCount();
  if (FeedCursorRow >= count) return;
  while (FeedCursorRow < count && rowTime(FeedCursorRow) <= position) ++FeedCursorRow;
  if (FeedCursorRow == FeedShownRow) return;
  if (TheClock != nullptr) TheClock->followEnabled = 0;
  // The list turns over a page at a time rather than row by row.
  if (EventsListTop + EventsRowsInSight <= FeedCursorRow) {
    if (EventsOpen == 1 && EventsList != nullptr) EventsList->setTopIndex(static_cast<int>(FeedCursorRow));
    EventsListTop = FeedCursorRow;
  }
  if (EventsOpen == 1 && EventsList != nullptr) EventsList->setCurrent(static_cast<int>(FeedCursorRow));
  FeedShownRow = FeedCursorRow;
  if (TheClock != nullptr) TheClock->followEnabled = 1;
}

void SendEvent(MidiOutHandle* out) {
  if (out == nullptr) return;
  while (FeedRemaining != 0) {
    uint32_t best = 0xFFFFFFFFu;
    int32_t chosen = -1;
    for (int32_t i = 0; i < ActiveTrackCount; ++i) {
      const uint32_t number = ActiveTracks[i];
      const TrackRecord& t = Tracks[number];
      if (number == RecordTrack && Capturing == 1) continue;
      if (t.remaining == 0 || t.events == nullptr) continue;
      const uint32_t key = nextKey(t);
      if (key < best) {  // strict: at equal keys the first track on the list wins
        best = key;
        chosen = static_cast<int32_t>(number);
      }
    }
    // No track is eligible (only the record track has events left while capturing): the feed stops.
    if (chosen < 0) return;
    TrackRecord& t = Tracks[static_cast<uint32_t>(chosen)];
    const MidiEvent& stored = t.events[t.cursor];
    MidiEvent event{best - FeedLastTime,
                    stored.status,
                    stored.value1,
                    stored.value2,
                    stored.value3,
                    stored.link,
                    stored.playedChannel,
                    0,
                    0,
                    stored.metaType};
    out->trackOfSlot[out->writeIndex.load()] = static_cast<uint8_t>(chosen);
    if (MidiOut(out, &event) != 0) return;  // the ring is full: the same event comes next time
    ++t.cursor;
    --t.remaining;
    FeedLastTime = best;
    FeedRemaining -= 1;
    if (t.remaining == 0 && t.repeatsDone != t.repeats) {
      FeedRemaining += t.count;
      t.cursor = 0;
      t.remaining = t.count;
      ++t.repeatsDone;
    }
  }
}

void ShapeEvent(SyncClock* clock, MidiOutHandle* out, MidiEvent* e) {
  if (out == nullptr || e == nullptr) return;
  const TrackRecord& t = Tracks[out->trackOfSlot[out->readIndex.load()]];
  // The Tracks manager may change the channel meanwhile: one reading decides.
  const uint8_t channel = t.channel;
  const uint8_t kind = e->status & 0xF0;
  const bool noteOn = kind == 0x90 && e->value2 != 0;
  const bool noteOff = kind == 0x80 || (kind == 0x90 && e->value2 == 0);
  if (noteOn) {
    // A note without its partner (a damaged track) passes unchanged.
    if (e->link == nullptr || e->link->link == nullptr) return;
    MidiEvent& stored = *e->link->link;
    if (channel != 255) {
      stored.playedChannel = channel;
      e->status = static_cast<uint8_t>(0x90 | channel);
    } else {
      stored.playedChannel = e->status & 0x0F;
    }
    const auto key = static_cast<uint8_t>(FoldKey(e->value1 + t.keyOffset));
    e->value1 = key;
    stored.playedKey = key;
    e->value2 = t.playOff == 0 ? static_cast<uint8_t>(std::clamp(e->value2 + t.velocityOffset, 1, 127)) : 0;
    if (clock != nullptr && clock->now != lastFollowNow) {
      lastFollowNow = clock->now.load();
      if (clock->followEnabled != 0) platform::post(clock->window, NM_EVENT_FOLLOW, 0, clock->now);
    }
  } else if (noteOff) {
    if (e->link == nullptr) return;
    // A note ends on the channel and key on which it began.
    e->status = static_cast<uint8_t>(kind | (e->link->playedChannel & 0x0F));
    e->value1 = e->link->playedKey;
  } else if (e->status >= 0x80 && e->status < 0xF0 && channel != 255) {
    e->status = static_cast<uint8_t>(kind | channel);
  }
}

void InstallFeedHooks() {
  ClockHooks.shapeEvent = ShapeEvent;
  ClockHooks.sendEvent = SendEvent;
}
