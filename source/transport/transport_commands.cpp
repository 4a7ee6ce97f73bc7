#include "transport/transport_commands.h"

#include <algorithm>

#include "generator/generator_tick.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "smf/smf.h"
#include "song/clock_placing.h"
#include "song/recording.h"
#include "song/song_files.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "transport/playback_feed.h"

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

void checkMenu(uint32_t id, bool checked) {
  if (FrameWindow != nullptr) FrameWindow->checkMenuItem(id, checked);
}

void setOutputFlag(uint32_t flag, bool on) {
  if (TheMidiOut == nullptr) return;
  if (on) {
    TheMidiOut->flags.fetch_or(flag);
  } else {
    TheMidiOut->flags.fetch_and(~flag);
  }
}

bool outputFlag(uint32_t flag) { return TheMidiOut != nullptr && (TheMidiOut->flags & flag) != 0; }

// The clock stops where it is, unless the generator still runs on it: then
// the clock runs on, and the position stays.
void stopClockUnlessGenerating() {
  if (Generating != 1) StopClockAtNow();
}

void stopPlaying() {
  enable(CMD_RECORD, true);
  enable(CMD_PLAY, true);
  setButton(CMD_PLAY, 0);
  stopClockUnlessGenerating();
  setOutputFlag(METRONOME_ON, false);
  ResetMidiOut(TheMidiOut);
  Playing = 0;
  releasePedalsAndBenders();
}

void stopRecording() {
  enable(CMD_RECORD, true);
  enable(CMD_PLAY, true);
  platform::send(ControlBarControl(CMD_RECORD), BUTTON_SET_STATE, 0, 0);
  stopClockUnlessGenerating();
  setOutputFlag(METRONOME_ON, false);
  Capturing = 0;
  Recording = 0;
  // What reached the ring before Stop belongs to this take, not to the next.
  DrainInput(ControlBarWindow);
  if (TakeCount == 0) return;
  CloseTakeNotes();
  ResetMidiOut(TheMidiOut);
  releasePedalsAndBenders();
  if (platform::ShowMessageBox("Keep take?", "Velmora", platform::MB_YESNO | platform::MB_ICONQUESTION) ==
      platform::IDYES) {
    KeepTake();
  }
}

// The Events list's top row, to come back to when the transport stops.
void rememberEventsTop() {
  if (eventsListOpen()) EventsListTop = static_cast<uint32_t>(std::max(EventsList->topIndex(), 0));
}

// A transport start with Link on presses the generator button too.
void startLinkedGenerator() {
  if (Generating != 1 && Linked == 1) {
    setButton(CMD_GENERATE, 1);
    TransportCommand(CMD_GENERATE);
  }
}

void stopForGenerator() {
  if (Generating != 1) return;
  StopSync(TheClock);
  SongPosition = ClockNow();
}

// The end of the song: the first event of the first listed track, or the
// last event of any further song track, whichever is later.
// The first event of the first active track, then by min (start) or max
// (end) the first or last event of every further song track.
uint32_t songBound(bool end) {
  if (ActiveTrackCount <= 0) return 0;
  const TrackRecord& first = Tracks[ActiveTracks[0]];
  uint32_t bound = first.count != 0 ? first.events[0].time : 0;
  for (int32_t i = 1; i < ActiveTrackCount; ++i) {
    const uint32_t number = ActiveTracks[static_cast<std::size_t>(i)];
    const TrackRecord& t = Tracks[number];
    if (number == TempoTrack || t.count == 0) continue;
    bound = end ? std::max(bound, t.events[t.count - 1].time) : std::min(bound, t.events[0].time);
  }
  return bound;
}

}  // namespace

uint32_t SongStart() { return songBound(false); }

uint32_t SongEnd() { return songBound(true); }

void PlayCommand() {
  stopForGenerator();
  if (TheClock != nullptr) TheClock->followEnabled = 1;
  rememberEventsTop();
  for (uint32_t id : {CMD_RECORD, CMD_PLAY, CMD_INTERNAL_CLOCK, CMD_MIDI_SYNC}) enable(id, false);
  const uint32_t p = SongPosition;
  PrepareMetronome(p);
  SeekFeed(p);
  SendEvent(TheMidiOut);
  StartClockAt(p);
  Playing = 1;
  startLinkedGenerator();
}

void RecordCommand() {
  stopForGenerator();
  rememberEventsTop();
  enable(CMD_INTERNAL_CLOCK, false);
  enable(CMD_MIDI_SYNC, false);
  Recording = 1;
  const uint32_t p = SongPosition;
  SyncClock* clock = TheClock;
  PlaceMetronome(clock, p);
  const bool countIn = outputFlag(METRONOME_RECORD);
  if (countIn && clock != nullptr) {
    clock->beatCount = 0;
    clock->flags.fetch_or(SYNC_COUNT_IN);
    setOutputFlag(METRONOME_ON, true);
    setButton(CMD_METRONOME, 1);
  }
  CloseSMF(&SongReadHandle);
  enable(CMD_PLAY, false);
  enable(CMD_RECORD, false);
  TakeCount = 0;
  if (ActiveTrackCount != 0) {  // the song plays along with the take
    SeekFeed(p);
    SendEvent(TheMidiOut);
  }
  StartClockAt(p);
  // With a count-in the clock starts capturing when the count-in ends.
  if (!countIn) Capturing.publish(1);
  startLinkedGenerator();
}

void StopCommand() {
  setButton(CMD_METRONOME, 0);
  enable(CMD_INTERNAL_CLOCK, true);
  enable(CMD_MIDI_SYNC, true);
  if (Playing == 1) {
    stopPlaying();
  } else if (Recording == 1) {
    stopRecording();
  }
  highlightLyrics(platform::LyricsEditView::NoSelection, 0);
}

void ClockSourceCommand(uint32_t id) {
  const bool midiSync = id == CMD_MIDI_SYNC || id == CMD_MENU_MIDI_SYNC;
  const uint32_t chosen = midiSync ? CMD_MIDI_SYNC : CMD_INTERNAL_CLOCK;
  const uint32_t other = midiSync ? CMD_INTERNAL_CLOCK : CMD_MIDI_SYNC;
  enable(other, true);
  enable(chosen, false);
  setButton(other, 0);
  // The menu's entries also press the chosen button, which the button itself is.
  if (id == CMD_MENU_INTERNAL_CLOCK || id == CMD_MENU_MIDI_SYNC) setButton(chosen, 1);
  OpenSync(&TheClock, ControlBarWindow, midiSync ? SYNC_MIDI : SYNC_INTERNAL, SYNC_KEEP);
  const uint32_t filter = GetMidiInFilters(TheMidiIn);
  SetMidiInFilters(TheMidiIn, midiSync ? filter & ~FILTER_MIDI_SYNC : filter | FILTER_MIDI_SYNC);
  checkMenu(CMD_MENU_INTERNAL_CLOCK, !midiSync);
  checkMenu(CMD_MENU_MIDI_SYNC, midiSync);
}

void MetronomeCommand() {
  if (!outputFlag(METRONOME_ON)) {
    setOutputFlag(METRONOME_ON, true);
    return;
  }
  setOutputFlag(METRONOME_ON, false);
  if (TheClock == nullptr || TheMidiOut == nullptr) return;
  // Both clicks end at once, without a note in the table of sounding notes.
  platform::midiOutShortMsg(TheMidiOut->device, TheClock->firstBeatMsg & 0xFFFF);
  platform::midiOutShortMsg(TheMidiOut->device, TheClock->otherBeatsMsg & 0xFFFF);
}

void MidiThruCommand() {
  if (TheMidiIn == nullptr) return;
  const bool on = (TheMidiIn->flags.fetch_xor(MIDI_THRU) & MIDI_THRU) == 0;
  checkMenu(CMD_MIDI_THRU, on);
}

void LinkCommand() {
  Linked = Linked == 1 ? 0 : 1;
  checkMenu(CMD_MENU_LINK, Linked == 1);
}

void PanicCommand() {
  platform::WaitCursor wait;
  ResetNotesAndControllers(TheMidiOut);
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
  const uint32_t end = SongEnd();
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
    case CMD_RECORD: RecordCommand(); break;
    case CMD_GENERATE: GeneratorToggle(); break;
    case CMD_QUANTIZE_RECORD: QuantizeRecord = QuantizeRecord != 0 ? 0 : 1; return;
    case CMD_PANIC: PanicCommand(); return;
    case CMD_MIDI_SYNC:
    case CMD_INTERNAL_CLOCK:
    case CMD_MENU_INTERNAL_CLOCK:
    case CMD_MENU_MIDI_SYNC: ClockSourceCommand(id); return;
    case CMD_METRONOME: MetronomeCommand(); return;
    case CMD_LINK: LinkCommand(); return;
    case CMD_MIDI_THRU: MidiThruCommand(); return;
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
    case platform::MIM_DATA: DrainInput(ControlBarWindow); break;
    default: break;
  }
  return 0;
}
