#include "transport/transport_commands.h"

#include <algorithm>

#include "generator/generator_tick.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "platform/view_registry.h"
#include "song/song_store.h"
#include "transport/clock_placing.h"
#include "transport/playback_feed.h"
#include "transport/song_tempo.h"
#include "transport/transport_state.h"

namespace {

void enable(uint32_t id, bool enabled) {
  if (ControlBar != nullptr) ControlBar->enableControl(id, enabled);
}

void setButton(uint32_t id, uintptr_t down) { platform::post(ControlBarControl(id), BUTTON_SET_STATE, down, 0); }

bool eventsListOpen() { return EventsOpen == 1 && EventsList != nullptr; }

// The Events list's top row and selection, when the list is open.
void showEventsRow(int row) {
  if (!eventsListOpen()) return;
  EventsList->setTopIndex(row);
  EventsList->setCurrent(row);
}

void highlightLyrics(uint32_t start, uint32_t end) {
  if (LyricsEdit != nullptr) LyricsEdit->setHighlight(start, end);
}

// The damper let go and the bender centred on every channel.
void releasePedalsAndBenders() {
  for (uint8_t channel = 0; channel < 16; ++channel) MidiOutNow(TheMidiOut, 0xB0 | channel, 64, 0);
  for (uint8_t channel = 0; channel < 16; ++channel) MidiOutNow(TheMidiOut, 0xE0 | channel, 0, 64);
}

void stopPlaying() {
  enable(104, true);
  enable(101, true);
  setButton(101, 0);
  // While the generator runs the clock runs on, and the position stays.
  if (Generating != 1) StopClockAtNow();
  if (TheMidiOut != nullptr) TheMidiOut->flags.fetch_and(~METRONOME_ON);
  ResetMidiOut(TheMidiOut);
  Playing = 0;
  releasePedalsAndBenders();
}

// The end of the song: the first event of the first listed track, or the
// last event of any further song track, whichever is later.
uint32_t songEnd() {
  if (ActiveTrackCount <= 0) return 0;
  const TrackRecord& first = Tracks[ActiveTracks[0]];
  uint32_t end = first.count != 0 ? first.events[0].time : 0;
  for (int32_t i = 1; i < ActiveTrackCount; ++i) {
    const uint32_t number = ActiveTracks[static_cast<std::size_t>(i)];
    const TrackRecord& t = Tracks[number];
    if (number != TempoTrack && t.count != 0) end = std::max(end, t.events[t.count - 1].time);
  }
  return end;
}

}  // namespace

void PlayCommand() {
  SyncClock* clock = TheClock;
  if (Generating == 1) {
    StopSync(clock);
    SongPosition = ClockNow();
  }
  if (clock != nullptr) clock->followEnabled = 1;
  if (eventsListOpen()) EventsListTop = static_cast<uint32_t>(std::max(EventsList->topIndex(), 0));
  for (uint32_t id : {104u, 101u, 108u, 107u}) enable(id, false);
  const uint32_t p = SongPosition;
  PrepareMetronome(p);
  SeekFeed(p);
  SendEvent(TheMidiOut);
  StartClockAt(p);
  Playing = 1;
  if (Generating != 1 && Linked == 1) {
    setButton(CMD_GENERATE, 1);
    TransportCommand(CMD_GENERATE);
  }
}

void StopCommand() {
  setButton(109, 0);
  enable(108, true);
  enable(107, true);
  if (Playing == 1) stopPlaying();
  highlightLyrics(platform::LyricsEditView::NoSelection, 0);
}

void RewindCommand() {
  if (Generating == 1) return;
  showEventsRow(0);
  if (Playing == 1 || Capturing == 1) TransportCommand(CMD_STOP);
  SongPosition = 0;
  PlaceClock(TheClock, 0);
  PostSyncTick();
  highlightLyrics(0, 0);
}

void GoToEndCommand() {
  if (Generating == 1) return;
  if (Playing == 1 || Capturing == 1) TransportCommand(CMD_STOP);
  const uint32_t end = songEnd();
  SongPosition = end;
  PlaceClock(TheClock, end);
  if (ControlBar != nullptr) ControlBar->drawCounter(end);
  FeedCursorRow = FirstEventRowAt(end);
  showEventsRow(static_cast<int>(FeedCursorRow) - 1);
  highlightLyrics(platform::LyricsEditView::NoSelection, platform::LyricsEditView::NoSelection);
}

void SyncTickNotice() {
  if (TheMidiOut != nullptr && TheMidiOut->ringCount.load(std::memory_order_acquire) == 0 && Playing == 1) {
    TransportCommand(CMD_STOP);
    TransportCommand(CMD_REWIND);
    showEventsRow(0);
    return;
  }
  if (ControlBar != nullptr) ControlBar->drawCounter(ClockNow());
}

void TransportCommand(uint32_t id) {
  switch (id) {
    case CMD_STOP: StopCommand(); break;
    case CMD_PLAY: PlayCommand(); break;
    case CMD_REWIND: RewindCommand(); break;
    case CMD_GO_TO_END: GoToEndCommand(); break;
    case CMD_GENERATE: GeneratorToggle(); break;
    default: return;
  }
  UpdateCommandStates();
}

intptr_t ControlBarMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) {
  switch (msg) {
    case WM_COMMAND: TransportCommand(static_cast<uint32_t>(param1 & 0xFFFF)); break;
    case NM_SYNC_TICK: SyncTickNotice(); break;
    case NM_SONG_META: SongMetaNotice(static_cast<uint32_t>(param1), param2); break;
    case NM_EVENT_FOLLOW: EventFollowNotice(static_cast<uint32_t>(param2)); break;
    default: break;
  }
  return 0;
}
