#pragma once
// Note pairing: every note-on of a track points at the note-off that ends it
// and back. These passes keep the pairs true, and InstallTrack, the one way by
// which a track receives an event array, combines them. UI thread only, with
// the transport stopped.

#include <array>
#include <cstdint>
#include <deque>

#include "song/song_store.h"

// Open notes by key and channel, for one pass over one array.
struct NoteBalanceTable {
  std::array<std::array<uint32_t, 16>, 128> open{};
};

// The note-ons of each key and channel that wait for their note-off, oldest first.
struct NoteLinkTable {
  std::array<std::array<std::deque<uint32_t>, 16>, 128> pending;
};

bool IsNoteOn(const MidiEvent& e);
bool IsNoteOff(const MidiEvent& e);
// The note-off that ends a linked note-on; null for any other event, and for
// a note-on without a partner.
MidiEvent* NoteOffOf(MidiEvent& e);

// 1 when the event may be kept; 0 for a note-off with nothing to end.
int NoteBalance(const MidiEvent* e, NoteBalanceTable& table);
// Appends at time a velocity-0 note-on for every open note, key by key, channel by channel.
void CloseOpenNotes(EventList* list, uint32_t time, NoteBalanceTable& table);
// Sets the link of event i; called for i = 0, 1, 2 ... with one table per pass.
void LinkNote(MidiEvent* events, NoteLinkTable& table, uint32_t i);
void RelinkTrack(TrackRecord* track);
// Replaces a track's array with the events of a delta-time array, which is
// left in absolute time.
void InstallTrack(uint32_t track, uint32_t n, MidiEvent* deltaEvents);
// Merges k sorted arrays of absolute times into a track; counts is used up.
void MergeIntoTrack(MidiEvent* const* sources, uint32_t k, uint32_t* counts, uint32_t track);
