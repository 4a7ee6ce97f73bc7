#pragma once
// The Events list's logic, apart from drawing: the rows of the selected
// tracks and their rebuild after every change of an array, Delete, the move
// of the song position to a row, the six event dialogs (their fields, texts,
// read order and partial writes), and Insert.
//
// The rows point into the tracks' arrays and hold no copy, so every change of
// an array is followed by RefreshEventsList before anything reads the rows.
// UI thread only. The list's input is swallowed while the transport runs and
// the song's edits are grayed then, so no array changes under the play
// follow, which reads the rows.

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/field_checks.h"
#include "song/event_text.h"
#include "song/song_store.h"

// The rows of the selected tracks in time order, and the number of rows that
// the list shows. Both are empty while the list is closed.
extern std::vector<EventRow> EventRows;
extern uint32_t EventRowCount;
// The track that Paste and the list's Insert put their events into; a byte,
// so any number typed wraps into 0..255.
extern uint8_t PasteTrack;

// EventRows afresh from SelectedTracks; the number of rows. EventRowCount is
// left to the caller.
uint32_t BuildEventRows();
// Rebuilds the rows while the list is open, gives the list their number, and
// repaints it; empties the list when there are none.
void RefreshEventsList();
// The rows go, before the events they point into are freed.
void DropEventRows();

// Whether the list takes a key or a mouse input: only with the transport stopped.
bool EventsListTakesInput();
// The list's selected row, or -1 when none is selected or there are no rows.
int SelectedEventRow();
// The release of a key from Page Up to Down arrow or of the left button:
// SongPosition and the clock take the time of the selected row's event as it
// is, without the track's Time+, and the counter is redrawn.
void MoveToSelectedEventRow();
// Key Delete: the selected row's event goes, a note with its note-off. A
// meta event is never deleted. The track's last event takes the track along.
void DeleteSelectedEventRow();
// Takes an event out of its track's array, a note-on with its partner, and
// links the rest again. On an exhausted heap the track stays as it was.
void DeleteEvent(TrackRecord* t, MidiEvent* e);

// ---- the event dialogs ----

// Dialog ids by the kind of the event: 120 for a note, 124 to 128 for key
// aftertouch, controller, patch, channel aftertouch and pitch wheel; 0 for a
// kind without a dialog.
uint32_t EventDialogOf(int kind);

struct EventDialogField {
  uint32_t id;
  const char* label;
};
struct EventDialogForm {
  const char* title;
  std::vector<EventDialogField> fields;  // as they stand, the time first
};
const EventDialogForm& EventDialogFormOf(uint32_t dialog);

// The texts of the dialog's fields by id, as the dialog opens on an event.
using EventFieldTexts = FieldTexts;
EventFieldTexts EventDialogTexts(uint32_t dialog, const MidiEvent& e);
// The dialog's OK: the time first, then each number in the dialog's order,
// written into the event (and a note's partner) as soon as it passes. A
// refused field shows its message and gives its id: the dialog stays open,
// and what was written stays. Else the song is marked changed and 0 says
// the dialog closes.
uint32_t AcceptEventDialog(uint32_t dialog, MidiEvent& e, const EventFieldTexts& entries);

// A double click: the selected row's event in its dialog.
struct EventEdit {
  uint32_t dialog = 0;  // 0: the row's kind has no dialog, nothing opens
  MidiEvent* event = nullptr;
  int16_t track = 0;
  // The event and its partner as they were, to see whether a cancelled
  // dialog left a partial write.
  MidiEvent before{}, partnerBefore{};
};
EventEdit BeginEditEvent();
// After the dialog: its track is sorted and linked again and the rows
// rebuilt, when it was accepted or a cancelled dialog had written a part.
void EndEditEvent(const EventEdit& edit, bool accepted);

// ---- Insert ----

// The kinds of event that the Insert dialog offers, as its radio buttons stand.
inline constexpr std::array<const char*, 6> InsertKindLabels = {
    "&Key", "Key &Aftertouch", "&Controlador", "&Patch", "Channel &Aftertouch", "Pitch &Wheel"};
// The Insert dialog's track field at opening: the selected row's track, or
// row 0's when none is selected, or RecordTrack's when the list is empty;
// one-based.
std::string InsertTrackText();

// The event (and for a note its note-off) that Insert makes, in the dialog of
// its kind. The first event's link points at the second, so the events must
// stay where PrepareInsertEvent put them.
struct EventInsert {
  uint32_t dialog = 0;
  uint32_t count = 0;
  std::array<MidiEvent, 2> events{};
  EventInsert() = default;
  EventInsert(const EventInsert&) = delete;
  EventInsert& operator=(const EventInsert&) = delete;
};
// Insert's OK, up to its event dialog: PasteTrack from the track field, the
// template times from the selected row, and the new events by the kind's
// button (0..5).
void PrepareInsertEvent(EventInsert& insert, const std::string& trackText, int kind);
// After the event dialog's OK: the events go into PasteTrack, the Tracks
// manager selects the track, and the views are rebuilt. Nothing on Cancel.
void FinishInsertEvent(EventInsert& insert, bool accepted);
