#include "song/event_text.h"

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>

#include "song/song_store.h"

const std::array<const char*, EventKindCount> KindNames = {
    "Note Off",   "Nota",          "KeyAft",  "Contrl",     "Patch",     "ChanAft",        "Wheel",
    "SysEx",      "MTC Quarter Frame", "Song Position Pointer", "Song Select", "Undefined", "Undefined",
    "Tune Request", "EOX",         "Timing Clock", "Undefined", "Start",  "Continue",       "Stop",
    "Undefined",  "Active Sensing", "System Reset", ""};

const std::array<const char*, EventKindCount> KindLabels = {
    "Velocity", "Velocity", "Pressure", "Value", "", "", "MSB", "", "", "MSB", "", "", "",
    "",         "",         "",         "",      "", "", "",    "", "", "",    ""};

const std::array<const char*, 12> NoteNames = {"C ",  "C# ", "D ",  "D# ", "E ",  "F ",
                                               "F# ", "G ",  "G# ", "A ",  "Bb ", "B "};

namespace {

constexpr int SysexDataKind = 23;
// A status below 0x80 is no status byte; such an event is shown as this kind.
constexpr int UndefinedKind = 11;

// How a kind's text is made: 0 name only, 1 one data byte, 2 two data bytes, 3 sysex data.
constexpr std::array<int, EventKindCount> KindClasses = {2, 2, 2, 2, 1, 1, 2, 0, 1, 2, 1, 0,
                                                         0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 3};

// The icons of the selected row, by kind up to the tempo and lyric events' 8.
constexpr std::array<uint32_t, MetaEventKind + 1> KindIcons = {215, 215, 214, 219, 216, 218, 217, 220, 213};

[[gnu::format(printf, 1, 2)]] std::string format(const char* pattern, ...) {
  char text[160];
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text, sizeof text, pattern, arguments);
  va_end(arguments);
  return text;
}

std::string metaText(const MidiEvent& e, const std::string& t) {
  if (e.metaType == META_TEMPO) return format("Tempo change, , , , ,%s", t.c_str());
  if (e.metaType == META_LYRIC) return format("Lyric, , , , ,%s", t.c_str());
  // No other meta event is kept in a track; one that is shows as a meta event at its time.
  return format("Meta, , , , ,%s", t.c_str());
}

// The end of a note: the time of its partner. A note-on without one ends where it starts.
std::string endText(const MidiEvent& e) { return TimeText(e.link != nullptr ? e.link->time : e.time); }

std::string twoByteText(const MidiEvent& e, int kind, int channel, const std::string& t) {
  const char* name = KindNames[static_cast<std::size_t>(kind)];
  const char* label = KindLabels[static_cast<std::size_t>(kind)];
  switch (kind) {
    case 1:
      return format("%2d,%s,%s,%s,%4d,%s,%s", channel, name, NoteText(e.value1).c_str(), label, e.value2, t.c_str(),
                    endText(e).c_str());
    case 2:
      return format("%2d,%s,%s,%s,%4d,%s, ", channel, name, NoteText(e.value1).c_str(), label, e.value2, t.c_str());
    case 6:
      return format("%2d,%s, ,Valor ,%4d,%s, ", channel, name, (e.value1 | e.value2 * 128) - 8192, t.c_str());
    default:
      return format("%2d,%s,%3d,%s,%4d,%s, ", channel, name, e.value1, label, e.value2, t.c_str());
  }
}

}  // namespace

std::string NoteText(uint8_t key) { return format("%s%d", NoteNames[key % 12], key / 12); }

int NoteNameIndex(const std::string& text) {
  const std::string typed = text.substr(0, 3);
  for (std::size_t n = 0; n < NoteNames.size(); ++n) {
    std::string name = NoteNames[n];
    name.pop_back();  // the trailing blank
    const bool same = std::equal(typed.begin(), typed.end(), name.begin(), name.end(), [](char a, char b) {
      return std::toupper(static_cast<unsigned char>(a)) == std::toupper(static_cast<unsigned char>(b));
    });
    if (same) return static_cast<int>(n);
  }
  return -1;
}

int NoteKey(int nameIndex, int octave) {
  int key = nameIndex + octave * 12;
  if (key > 127) key -= ((key - 127) / 12 + 1) * 12;
  return key;
}

int EventKind(const MidiEvent& e) {
  const int s = e.value1 >= 128 ? e.value1 : e.status;
  if (s < 0x80) return UndefinedKind;
  if ((s & 0xF0) < 0xF0) return (s >> 4) - 8;
  if (s == 0xF0 && e.value1 < 128) return SysexDataKind;
  return (s & 15) + 7;
}

std::string EventText(const MidiEvent& e, int* kind) {
  const std::string t = TimeText(e.time);
  if (e.status == 0) {
    if (kind != nullptr) *kind = MetaEventKind;
    return metaText(e, t);
  }
  const int k = EventKind(e);
  if (kind != nullptr) *kind = k;
  const int channel = (e.status & 15) + 1;
  const char* name = KindNames[static_cast<std::size_t>(k)];
  switch (KindClasses[static_cast<std::size_t>(k)]) {
    case 0: return format("%s, , , , ,%s, ", name, t.c_str());
    case 1: return format("%d,%s,%d, , ,%s, ", channel, name, e.value1, t.c_str());
    case 2: return twoByteText(e, k, channel, t);
    default: return format("Sysex Data,%d, , , , , ", e.value1);
  }
}

uint32_t EventIcon(int kind) {
  // The kinds past the tempo and lyric events' 8 have no icon: their row's icon cell stays blank.
  return kind >= 0 && kind <= MetaEventKind ? KindIcons[static_cast<std::size_t>(kind)] : 0;
}

bool HasEventRow(const MidiEvent& e) {
  const int high = e.status & 0xF0;
  if (high == 0x80 || (high == 0x90 && e.value2 == 0)) return false;
  return e.status != 0xF0;
}

std::vector<EventRow> EventRowsOf(const uint32_t* tracks, int32_t count) {
  std::vector<EventRow> rows;
  for (int32_t i = 0; i < count; ++i) {
    const uint32_t track = tracks[i];
    if (track >= SongTrackCount) continue;  // the tempo track cannot be selected
    TrackRecord& t = Tracks[track];
    for (uint32_t n = 0; t.events != nullptr && n < t.count; ++n) {
      if (HasEventRow(t.events[n])) rows.push_back({&t.events[n], static_cast<int16_t>(track)});
    }
  }
  std::sort(rows.begin(), rows.end(), [](const EventRow& a, const EventRow& b) { return a.event->time < b.event->time; });
  return rows;
}
