#include "song/song_tempo.h"

#include <cmath>

#include "midi/live_devices.h"
#include "midi/midi_event.h"
#include "midi/sync_clock.h"
#include "platform/view_registry.h"
#include "song/song_store.h"

double TempoFraction = 0;

namespace {

MidiEvent* firstTempoEvent() {
  TrackRecord& t = Tracks[TempoTrack];
  return t.count != 0 ? t.events : nullptr;
}

void storeTempo(MidiEvent& e, uint32_t tempo) {
  e.time = 0;
  e.status = 0;
  e.value1 = static_cast<uint8_t>(tempo >> 16);
  e.value2 = static_cast<uint8_t>(tempo >> 8);
  e.value3 = static_cast<uint8_t>(tempo);
}

}  // namespace

uint32_t EventTempo(const MidiEvent& event) {
  return uint32_t{event.value1} << 16 | uint32_t{event.value2} << 8 | event.value3;
}

uint32_t SongTempo() {
  const MidiEvent* e = firstTempoEvent();
  return e != nullptr ? EventTempo(*e) : GetTempo(TheClock);
}

void WriteTempoEvent() {
  if (MidiEvent* e = firstTempoEvent()) storeTempo(*e, GetTempo(TheClock));
}

void SetSongTempo(uint32_t microsecondsPerQuarter) {
  if (microsecondsPerQuarter == 0) return;
  SetTempo(TheClock, microsecondsPerQuarter);
  if (MidiEvent* e = firstTempoEvent()) storeTempo(*e, microsecondsPerQuarter);
  if (ControlBar != nullptr) ControlBar->showTempo(60000000.0 / microsecondsPerQuarter);
}

void RecallSongTempo(uint32_t microsecondsPerQuarter) {
  if (microsecondsPerQuarter == 0) return;
  const double beatsPerMinute = 60000000.0 / microsecondsPerQuarter;
  TempoFraction = beatsPerMinute - std::trunc(beatsPerMinute);
  SetSongTempo(microsecondsPerQuarter);
}

void StartTempo(double beatsPerMinute) {
  if (!(beatsPerMinute >= 10.0 && beatsPerMinute <= 240.0)) beatsPerMinute = 100.0;
  TempoFraction = beatsPerMinute - static_cast<int32_t>(beatsPerMinute);
  SetTempo(TheClock, static_cast<uint32_t>(60000000.0 / beatsPerMinute));
  if (ControlBar != nullptr) ControlBar->showTempo(beatsPerMinute);
}

void TempoEntry(int32_t position) {
  const double beatsPerMinute = position + TempoFraction;
  // A position at or below 0 would give no tempo or a negative one: the control's range is 10 to 240.
  if (!(beatsPerMinute > 0)) return;
  SetTempo(TheClock, static_cast<uint32_t>(60000000.0 / beatsPerMinute));
  if (ControlBar != nullptr) ControlBar->showTempoField(beatsPerMinute);
  WriteTempoEvent();
}

void SongMetaNotice(uint32_t type, uintptr_t param) {
  if (type == META_TEMPO) {
    const uint32_t tempo = GetTempo(TheClock);
    if (tempo == 0) return;  // no tempo to divide by
    if (ControlBar != nullptr) ControlBar->showTempo(static_cast<double>(60000000 / tempo));
  } else if (type == META_LYRIC && LyricsEdit != nullptr) {
    LyricsEdit->setHighlight(static_cast<uint32_t>(param & 0xFFFF), static_cast<uint32_t>(param >> 16 & 0xFFFF));
  }
}
