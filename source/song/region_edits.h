#pragma once
// Copy, Cut and Paste of a region: a span of ticks, both ends included, over
// the selected tracks. Copy and Cut fold the span of every selected track into
// one flat buffer with times counted from the region's start and every note
// whole; Paste lays the buffer out a number of times from a chosen tick into
// one track, blended with its events, replacing them, or opening them up.
// No track is changed in place: each edit builds a new array and installs it.
// A buffer that cannot be had shows the memory box and abandons the edit with
// the track untouched.
//
// UI thread only, with the transport stopped: the scans borrow the tracks'
// cursor and remaining, which the feed sets again at every start.

#include <cstdint>
#include <string>

#include "song/song_store.h"

// An event buffer: one block, replaced whole; null while it holds nothing.
struct EventBuffer {
  MidiEvent* events = nullptr;
  uint32_t count = 0;
};

// The region of the next edit, written by the Copy and Cut dialogs and by the
// transforms' dialogs.
extern uint32_t EditFrom, EditTo;
// Events still to take in a scan of several tracks; 0 between edits.
extern uint32_t EditTotal;
// Paste's fields, kept from one Paste to the next. PasteTrack is in events_list.h.
extern uint32_t PasteTime;
extern uint16_t PasteRepetitions;
enum PasteModes : uint8_t { PasteBlend = 0, PasteReplace = 1, PasteInsert = 2 };
extern uint8_t PasteMode;
// The Cut dialog's Delete hole box.
extern uint32_t DeleteHole;
// The copied region, times from its start; the region laid out for a paste;
// a track with a region taken out; a track opened for Insert. They outlive
// New and Open, so a region may be pasted into another song.
extern EventBuffer CopyBuffer, RepeatBuffer, KeepBuffer, SplitBuffer;

// cursor at the first event at or after from, remaining the events from there
// at or before to; EditTotal to 0.
void ScanTrack(TrackRecord* t, uint32_t from, uint32_t to);
// ScanTrack over every selected track with the region, EditTotal their sum.
void ScanSelectedTracks();
// The scanned events into CopyBuffer in time order (the earlier selected
// track first at equal times): a note-off without its note-on drops, a note
// still open at the region's end is closed there. An empty scan, or one that
// keeps nothing, leaves CopyBuffer as it was.
// false when its block could not be had: the box showed and the buffer stands.
bool TakeRegion();
// Takes the region out of a track: notes running into it end at from, the
// note-offs of notes that began before or in it drop, and with DeleteHole the
// later events move left by to - from (right when from is above to). A track
// left empty is deleted. False when its new array could not be had: the
// track stays as it was.
bool CutTrack(uint8_t track, uint32_t from, uint32_t to);
// CopyBuffer laid out PasteRepetitions times from PasteTime: each repetition
// follows the last event of the one before by the first event's offset plus 1.
bool BuildRepeatBuffer();
// Each of these three is false when its buffer could not be had.
// KeepBuffer: the track without the span that the paste covers, as measured
// with the region as it stands now, a note that spans PasteTime cut there.
bool ReplaceTrackRegion(uint8_t track);
// SplitBuffer: the track with everything from PasteTime on moved right by the
// paste's length, a note that spans PasteTime cut there.
bool SplitTrack(uint8_t track);

// The commands after their dialog's OK.
void CopyRegion();
void CutRegion();
void PasteRegion();
// Paste may run: the buffer holds a region.
bool PasteAvailable();
// The four buffers freed and null, as at start.
void FreeEditBuffers();

// ---- the dialogs ----

// Copy (110) and Cut (111) at open: the region from the Control Bar's From
// and To, as texts.
struct RegionTexts {
  std::string from, to;
};
RegionTexts OpenRegionDialog();
// Their OK: the region from at most 15 characters of each text, not tested;
// Cut's box into DeleteHole. The song is marked changed.
void AcceptRegionDialog(const RegionTexts& texts);
void AcceptCutDialog(const RegionTexts& texts, bool deleteHole);

// Paste (112) at open: Repetitions (0 shows as 1), To time, To track (the
// current track, counted from 1) and the checked mode.
struct PasteTexts {
  std::string repetitions, time, track;
  uint8_t mode = PasteBlend;
};
PasteTexts OpenPasteDialog();
// Its OK. The mode is read as two tests in a row, the second overriding the
// first: Blend leaves Insert. Repetitions outside 0..65535 are refused with
// the range message and the field's id (2000) comes back; else 0.
uint32_t AcceptPasteDialog(const std::string& repetitions, const std::string& time, const std::string& track,
                           bool blendChecked, bool replaceChecked);
