#include "live/settings_dialogs.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "generator/bank.h"
#include "platform/field_checks.h"
#include "live/live_system.h"
#include "midi/backends/synth.h"
#include "midi/backends/wire_check.h"
#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/midi_devices.h"
#include "platform/prompts.h"
#include "platform/realtime.h"
#include "platform/timers.h"
#include "platform/view_registry.h"
#include "song/clock_placing.h"
#include "song/recording.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "transport/playback_feed.h"

// The first-run values, until the live system takes the settings.
std::string NumeratorText = "1";
std::string DenominatorText = "4";
std::string CountInText = "1";
std::string ClickLengthText = "2";
std::string FirstBeatChannelText = "9", FirstBeatKeyText = "42", FirstBeatVelocityText = "100";
std::string OtherBeatsChannelText = "9", OtherBeatsKeyText = "42", OtherBeatsVelocityText = "72";
uint32_t MidiInDevice = 0;
uint32_t MidiOutDevice = 0;

const std::array<MetronomeField, 8> MetronomeFields = {
    {{ID_METRONOME_COUNT_IN, 0, 16, &CountInText},
     {ID_METRONOME_CLICK_LENGTH, 1, 24, &ClickLengthText},
     {ID_METRONOME_FIRST_CHANNEL, 1, 16, &FirstBeatChannelText},
     {ID_METRONOME_FIRST_KEY, 0, 127, &FirstBeatKeyText},
     {ID_METRONOME_FIRST_VELOCITY, 0, 127, &FirstBeatVelocityText},
     {ID_METRONOME_OTHER_CHANNEL, 1, 16, &OtherBeatsChannelText},
     {ID_METRONOME_OTHER_KEY, 0, 127, &OtherBeatsKeyText},
     {ID_METRONOME_OTHER_VELOCITY, 0, 127, &OtherBeatsVelocityText}}};

namespace {

// What an edit control gives of a field that the dialog reads only when edited.
std::string edited15(const std::string& text) { return text.substr(0, 15); }

void showField(uint32_t id, const std::string& text) {
  if (ControlBar != nullptr) ControlBar->setFieldText(id, text);
}

// A decimal fraction as typed: leading blanks and a plus sign are passed
// over, and anything that is not a number reads as 0.
double fieldReal(const std::string& text) {
  const char* first = text.c_str();
  const char* last = first + text.size();
  while (first != last && (*first == ' ' || *first == '\t')) ++first;
  if (first != last && *first == '+') ++first;
  double value = 0;
  if (std::from_chars(first, last, value).ec != std::errc{}) return 0;
  return value;
}

// The Control Bar's field text of a parsed time: measure:beat:tick as the
// user gave them, a measure or beat of 0 raised to 1, nothing normalised.
std::string parsedTimeText(const std::string& text) {
  unsigned measure = 0, beat = 0, tick = 0;
  std::sscanf(text.c_str(), "%u:%u:%u", &measure, &beat, &tick);
  char shown[40];
// GCC finds the format's 0 flag redundant beside its precision; the format is kept, it makes the fields' text.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat"
  std::snprintf(shown, sizeof shown, "%0.5u:%0.2u:%0.3u", std::max(measure, 1u), std::max(beat, 1u), tick);
#pragma GCC diagnostic pop
  return shown;
}

// A region bound takes a time; the other bound follows it when they would
// cross, and the Control Bar shows the text in the fields of both.
void moveBound(bool from, uint32_t ticks, const std::string& text) {
  uint32_t& bound = from ? SelectFrom : SelectTo;
  uint32_t& other = from ? SelectTo : SelectFrom;
  bound = ticks;
  if (from ? bound > other : bound < other) {
    other = bound;
    showField(from ? ID_TO_FIELD : ID_FROM_FIELD, text);
  }
  showField(from ? ID_FROM_FIELD : ID_TO_FIELD, text);
}

void moveBoundTo(bool from, uint32_t ticks) { moveBound(from, ticks, TimeText(ticks)); }

void applyBoundDialog(bool from, const std::string& text, bool edited) {
  if (!edited) return;
  const std::string field = edited15(text);
  moveBound(from, ParseTimeText(field), parsedTimeText(field));
}

// A click: a note-on of the key and velocity on the channel, counted from 1.
uint32_t clickMessage(const std::string& channel, const std::string& key, const std::string& velocity) {
  const auto byte = [](int32_t value) { return static_cast<uint32_t>(value) & 0xFF; };
  return byte(0x90 + FieldValue(channel) - 1) | byte(FieldValue(key)) << 8 | byte(FieldValue(velocity)) << 16;
}

template <typename Describe>
std::vector<std::string> deviceNames(Describe describe) {
  std::vector<std::string> names;
  std::string name;
  for (uint32_t device = 0; describe(device, name) != 0; ++device) names.push_back(name);
  return names;
}

uint32_t filterWord(uint32_t dialogId) {
  switch (dialogId) {
    case DLG_INPUT_FILTERS:
      return GetMidiInFilters(TheMidiIn);
    case DLG_OUTPUT_FILTERS:
      return GetMidiOutFilters(TheMidiOut);
    case DLG_QUANTIZE_FILTERS:
      return GetQuantizeFilters();
    default:
      return 0;
  }
}

}  // namespace

// ---- Tempo ----

std::string TempoDialogText() {
  const uint32_t tempo = GetTempo(TheClock);
  char text[32];
  std::snprintf(text, sizeof text, "%3.2f", tempo != 0 ? 60000000.0 / tempo : 0.0);
  return text;
}

bool ApplyTempoDialog(const std::string& text, bool edited) {
  // An unedited field keeps the clock's tempo exactly, rather than a round
  // trip through its beats per minute that could lose a microsecond.
  uint32_t tempo = GetTempo(TheClock);
  double beatsPerMinute = tempo != 0 ? 60000000.0 / tempo : 0.0;
  if (edited) {
    beatsPerMinute = fieldReal(edited15(text));
    if (!(beatsPerMinute >= 10.0 && beatsPerMinute <= 240.0)) return false;
    tempo = static_cast<uint32_t>(60000000.0 / beatsPerMinute);
  }
  TempoFraction = beatsPerMinute - std::trunc(beatsPerMinute);
  SetSongTempo(tempo);
  SongDirty = 1;
  return true;
}

// ---- Resolution ----

std::string ResolutionDialogText() { return std::to_string(static_cast<int32_t>(GetResolution(TheClock))); }

bool ApplyResolutionDialog(const std::string& text, bool edited) {
  if (edited) {
    const int32_t resolution = FieldValue(edited15(text));
    if (resolution < 1 || resolution > 960) return false;
    SongResolution = static_cast<uint32_t>(resolution);
    SetResolution(TheClock, resolution);
  }
  SongDirty = 1;
  return true;
}

void RescaleSongTimes(uint32_t oldResolution, uint32_t newResolution) {
  TicksPerBar = Numerator * newResolution;
  // Without an old resolution there is nothing to scale from: the times stay.
  if (oldResolution != 0) {
    for (int32_t i = 0; i < ActiveTrackCount; ++i) {
      TrackRecord& t = Tracks[ActiveTracks[static_cast<std::size_t>(i)]];
      for (uint32_t e = 0; e < t.count; ++e) t.events[e].time = newResolution * t.events[e].time / oldResolution;
    }
  }
  if (EventsOpen == 1 && EventsList != nullptr) EventsList->repaint();
}

// ---- Meter ----

uint32_t ApplyMeterDialog(std::string numerator, std::string denominator) {
  if (CheckRange(TrimBlanks(numerator), 1, 99) == 0) return ID_METER_NUMERATOR;
  NumeratorText = numerator;
  if (CheckPicture(TrimBlanks(denominator), "32,16,8,4,2,1") == 0) return ID_METER_DENOMINATOR;
  DenominatorText = denominator;
  SongDirty = 1;
  return 0;
}

void ApplyMeter() {
  Numerator = static_cast<uint32_t>(FieldValue(NumeratorText));
  if (TheClock != nullptr) TheClock->beatsPerBar = static_cast<uint8_t>(Numerator.load());
  TicksPerBar = Numerator * SongResolution;
  showField(ID_NUMERATOR_FIELD, NumeratorText);
  Denominator = static_cast<uint32_t>(FieldValue(DenominatorText));
  if (Denominator == 0) {
    Denominator = 4;
    DenominatorText = std::to_string(4);
  }
  showField(ID_DENOMINATOR_FIELD, DenominatorText);
}

// ---- Metronome ----

bool MetronomeOnPlay() { return MidiOutFlag(METRONOME_PLAY); }

bool MetronomeOnRecord() { return MidiOutFlag(METRONOME_RECORD); }

uint32_t CheckMetronomeDialog(std::array<std::string, 8>& fields, bool onPlay, bool onRecord) {
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const MetronomeField& f = MetronomeFields[i];
    if (CheckRange(TrimBlanks(fields[i]), f.low, f.high) == 0) return f.id;
    *f.text = fields[i];
  }
  SetMidiOutFlag(METRONOME_PLAY, onPlay);
  SetMidiOutFlag(METRONOME_RECORD, onRecord);
  return 0;
}

void ApplyMetronome() {
  if (TheClock == nullptr) return;
  TheClock->firstBeatMsg = clickMessage(FirstBeatChannelText, FirstBeatKeyText, FirstBeatVelocityText);
  TheClock->otherBeatsMsg = clickMessage(OtherBeatsChannelText, OtherBeatsKeyText, OtherBeatsVelocityText);
  TheClock->noteDivisor = static_cast<uint8_t>(FieldValue(ClickLengthText));
  TheClock->countInBars = static_cast<uint32_t>(FieldValue(CountInText));
}

// ---- MIDI devices ----

std::vector<std::string> MidiInDeviceNames() { return deviceNames(GetMidiInDescription); }

std::vector<std::string> MidiOutDeviceNames() { return deviceNames(GetMidiOutDescription); }

void ReopenMidiDevices(uint32_t in, uint32_t out) {
  const bool thru = MidiInFlag(MIDI_THRU);
  const bool countIn = MidiOutFlag(METRONOME_RECORD);
  MidiInDevice = in;
  StopMidiIn(TheMidiIn);
  CloseMidiIn(&TheMidiIn);
  OpenLiveInput(MidiInDevice);
  MidiOutDevice = out;
  CloseMidiOut(&TheMidiOut);
  OpenLiveOutput(MidiOutDevice);
  SetMidiInFlag(MIDI_THRU, thru);
  SetMidiOutFlag(METRONOME_RECORD, countIn);
  SetMidiOutFlag(METRONOME_PLAY, false);
  StartMidiIn(TheMidiIn);
}

double SynthGain = DefaultSynthGain;

std::string SynthGainDialogText() { return SynthGainText(SynthGain); }

bool ApplySynthGainDialog(const std::string& text) {
  std::string trimmed = text;
  const std::optional<double> read = ReadSynthGain(TrimBlanks(trimmed));
  if (!read) {
    platform::ShowMessageBox("The gain is a number above 0 and at most " + SynthGainText(MaxSynthGain) + ".",
                             "Velmora", platform::MB_OK | platform::MB_ICONEXCLAMATION);
    return false;
  }
  SynthGain = *read;
  platform::midiSetSynthGain(SynthGain);
  SaveSynthGain(SynthGain);
  return true;
}

std::vector<std::string> DevicesStatusLines() {
  const platform::TimerCounts counts = platform::TimerCatchUpCounts();
  return {"Timer: " + platform::TimerSchedulingText(),
          "Late timer passes made up: " + std::to_string(counts.caughtUp) +
              "; skipped after stalls over " + std::to_string(platform::MaxCatchUpMs) + " ms: " +
              std::to_string(counts.skipped),
          "Messages dropped for a data byte of 0x80 or above: " + std::to_string(DroppedMessages())};
}

// ---- From, To, Go to ----

void ApplyFromDialog(const std::string& text, bool edited) { applyBoundDialog(true, text, edited); }

void ApplyToDialog(const std::string& text, bool edited) { applyBoundDialog(false, text, edited); }

void ApplyGoToDialog(const std::string& text, bool edited) {
  if (!edited) return;
  MoveSongPosition(ParseTimeText(edited15(text)));
  FeedCursorRow = FirstEventRowAt(SongPosition);
  if (EventsOpen == 1 && EventsList != nullptr) {
    EventsList->setTopIndex(static_cast<int>(FeedCursorRow));
    EventsList->setCurrent(static_cast<int>(FeedCursorRow));
  }
}

// ---- Select and Goto commands ----

void SelectFromNow() { moveBoundTo(true, ClockNow()); }

void SelectToNow() { moveBoundTo(false, ClockNow()); }

void SelectFromHome() { moveBoundTo(true, SongStart()); }

void SelectToEnd() { moveBoundTo(false, SongEnd()); }

void GoToBeginning() { MoveSongPosition(SongStart()); }

void GoToSongEnd() { MoveSongPosition(SongEnd()); }

// ---- Filters ----

uint32_t FilterDialogBits(uint32_t dialogId) { return filterWord(dialogId) & 0x7F; }

void ApplyFilterDialog(uint32_t dialogId, uint32_t sevenBits) {
  const uint32_t word = (filterWord(dialogId) & ~0x7Fu) | (sevenBits & 0x7F);
  switch (dialogId) {
    case DLG_INPUT_FILTERS:
      SetMidiInFilters(TheMidiIn, word);
      break;
    case DLG_OUTPUT_FILTERS:
      SetMidiOutFilters(TheMidiOut, word);
      break;
    case DLG_QUANTIZE_FILTERS:
      SetQuantizeFilters(word);
      break;
    default:
      break;
  }
}

// ---- Quantize record ----

std::string QuantizeRecordDialogText() { return std::to_string(RecordResolution); }

bool ApplyQuantizeRecordDialog(const std::string& text, bool edited) {
  if (edited) SetRecordResolution(static_cast<uint32_t>(FieldValue(edited15(text))));
  return true;
}

// ---- Seed ----

std::string SeedDialogText() { return std::to_string(Seed.load()); }

void ApplySeedDialog(const std::string& text) { Seed = FieldValue(text); }
