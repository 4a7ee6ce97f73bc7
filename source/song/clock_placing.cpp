#include "song/clock_placing.h"

#include <algorithm>

#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "song/song_store.h"

void PlaceClock(SyncClock* clock, uint32_t p) {
  if (clock == nullptr) return;
  const uint32_t resolution = clock->resolution;
  const uint32_t withinBeat = resolution != 0 ? p % resolution : 0;  // no beats at a resolution of 0
  const bool midiSync = clock->mode == SYNC_MIDI;
  clock->remainder = midiSync ? p : 0;
  clock->now = p;
  clock->clockTicks = midiSync ? p : 0;
  clock->sinceEvent = p;
  clock->beatTicks = withinBeat;
  clock->dispatchBase = 0;
  clock->freeTicks = midiSync ? p : 0;
  clock->lastClockPos = midiSync ? p : 0;
}

void PlaceMetronome(SyncClock* clock, uint32_t p) {
  if (clock == nullptr) return;
  const uint32_t resolution = clock->resolution;
  const uint32_t withinBeat = resolution != 0 ? p % resolution : 0;
  clock->nextBeat = withinBeat == 0 ? p : p - withinBeat + resolution;
  // On this first beat the click's length counts forward from the beat.
  clock->noteOffAt = clock->nextBeat + resolution / std::max<uint32_t>(clock->noteDivisor, 1);
}

void PlaceBeat(SyncClock* clock, uint32_t p) {
  if (clock == nullptr) return;
  // A resolution or a numerator of 0 (never set) counts as 1.
  const auto beats = static_cast<uint16_t>(p / std::max<uint32_t>(SongResolution, 1));
  clock->beat = static_cast<uint8_t>(beats % std::max<uint32_t>(Numerator, 1));
  clock->startPosition = p;
  clock->metronomeMsg = clock->beat == 0 ? clock->firstBeatMsg.load() : clock->otherBeatsMsg.load();
}

void PrepareMetronome(uint32_t p) {
  SyncClock* clock = TheClock;
  if (clock == nullptr) return;
  clock->beatCount = 0;
  clock->flags.fetch_and(~SYNC_COUNT_IN);
  PlaceMetronome(clock, p);
  if (TheMidiOut != nullptr && (TheMidiOut->flags & METRONOME_PLAY) != 0) {
    TheMidiOut->flags.fetch_or(METRONOME_ON);
    platform::post(ControlBarControl(CMD_METRONOME), BUTTON_SET_STATE, 1, 0);
  }
}

void StartClockAt(uint32_t p) {
  SyncClock* clock = TheClock;
  if (clock == nullptr) return;
  PlaceClock(clock, p);
  PlaceBeat(clock, p);
  platform::send(ControlBarWindow, NM_SYNC_TICK, 0, reinterpret_cast<uintptr_t>(clock));
  ReStartSync(clock);
}

void MoveSongPosition(uint32_t p) {
  SongPosition = p;
  if (TheClock != nullptr) TheClock->now = p;
  if (ControlBar != nullptr) ControlBar->drawCounter(p);
}

uint32_t ClockNow() { return TheClock != nullptr ? TheClock->now.load() : 0; }

void PostSyncTick() { platform::post(ControlBarWindow, NM_SYNC_TICK, 0, reinterpret_cast<uintptr_t>(TheClock)); }

void StopClockAtNow() {
  StopSync(TheClock);
  SongPosition = ClockNow();
  PostSyncTick();
}

void StartClockForGenerator() {
  const uint32_t p = SongPosition;
  PrepareMetronome(p);
  StartClockAt(p);
}
