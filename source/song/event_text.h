#pragma once
// What the Events list shows of an event: which events get a row, the row's
// text as seven comma-separated items (channel, kind, two cells of value, the
// time and, for a note, the time of its end), the kind number that picks the
// row's icon, and the rows of the selected tracks in time order. UI thread only.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "midi/midi_event.h"

inline constexpr int EventKindCount = 24;
// The kind column's words, by kind: 0..6 channel messages by the status's
// high nibble, 7..22 the system messages 0xF0..0xFF, 23 a byte of sysex data.
extern const std::array<const char*, EventKindCount> KindNames;
// The label beside the second data byte, by kind; empty where there is none.
extern const std::array<const char*, EventKindCount> KindLabels;
// The note names by key modulo 12, each with its trailing blank.
extern const std::array<const char*, 12> NoteNames;
// The kind that EventText returns for a tempo or lyric event: it picks the icon only.
inline constexpr int MetaEventKind = 8;

// A key as the list writes it: its name and key / 12, "C 5" for key 60.
std::string NoteText(uint8_t key);
// A note name as the Note dialog reads it: its first 3 characters, in any
// case, equal to one of the twelve names without the blank ("bb" is Bb, "A#"
// is no name). The name's index, or -1.
int NoteNameIndex(const std::string& text);
// The key of a name's index at an octave; past 127 it folds down by whole
// octaves, so G 10 is 127 and G# 10 is 116.
int NoteKey(int nameIndex, int octave);
// The kind of an event by its status, or by value1 where that is a status
// byte itself (128 or above).
int EventKind(const MidiEvent& e);
// The row's text, and the kind into kind when it is given.
std::string EventText(const MidiEvent& e, int* kind = nullptr);
// The icon of the selected row by the kind that EventText gave; 0 for none.
uint32_t EventIcon(int kind);

// Note-offs (0x8n, or 0x9n at velocity 0) and sysex bytes (status 0xF0) get no row.
bool HasEventRow(const MidiEvent& e);

struct EventRow {
  MidiEvent* event;  // in its track's array
  int16_t track;
};
// The rows of the tracks named, track by track and each in array order, then
// sorted by time; the sort is not stable, so equal times may stand in any order.
std::vector<EventRow> EventRowsOf(const uint32_t* tracks, int32_t count);
