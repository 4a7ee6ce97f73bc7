#pragma once
// The Tracks manager's logic, apart from drawing: the Tracks dialog's texts
// and what its OK does, what a press, Space, a double click and Track >
// Select do to the selection, and the settings' effect: some are heard at
// the next note, pan, volume and patch go out at once, and Time+ is held
// back while the song runs. UI thread only; the clock's pass reads the
// settings that the dialog writes, each a single shared word.

#include <cstdint>
#include <string>

// The Tracks dialog's texts, kept between two openings. Key+, Vel+, Time+,
// Rep, Pan, Vol and Patch each hold up to 29 characters.
struct TrackFieldTexts {
  std::string name, key, velocity, time, repeats, pan, volume, patch;
};
extern TrackFieldTexts TrackFields;

// RecordTrack's settings into TrackFields: Pan, Vol and Patch as signed
// bytes, so that none shows as -1.
void LoadTrackFields();
// TrackFields into the track: its name, its row, its settings. Pan, Vol or
// Patch of exactly "-1" hide the setting in the row and keep it in the
// record; any other goes out at once on the track's channel. Time+ is
// dropped while capturing or playing. The song is marked changed.
void ApplyTrackFields(uint32_t track);

// What the dialog holds at OK.
struct TrackDialogEntries {
  std::string name, key, velocity, time, repeats, pan, patch, volume;
  bool play = true;     // the Play box
  int channelItem = 0;  // 0 "None", 1..16 the channels
};
// The Play box and the Channel item of a track at opening.
bool TrackPlayChecked(uint32_t track);
int TrackChannelItem(uint32_t track);
// The dialog's OK: the fields are read in the order Name, Key+, Vel+, Time+,
// Rep, Pan, Patch, Vol, each stored in TrackFields once it passes. A number
// out of range shows the range message and gives the field's id (103..111):
// the field gets TrackFields' text back, and the dialog stays open. Else
// Play and Channel go straight to RecordTrack's record, the song is marked
// changed, and 0 says the dialog closes.
uint32_t AcceptTrackDialog(const TrackDialogEntries& entries);
// TrackFields' text of a field by its id, for a refused field.
const std::string& TrackFieldText(uint32_t id);

// Before the dialog opens and after its OK, from the manager or from Track >
// Properties: with the manager closed TrackFields are neither filled nor
// applied, so only Play and Channel take effect. OK marks RecordTrack touched.
void BeforeTrackDialog();
void AfterTrackDialog();

// Whether a press in the check cell or Space may toggle a row: only with the
// transport stopped and a track that holds events.
bool TrackRowMayToggle(uint32_t row);
// A row's selection was toggled: the selection is read again and the Events
// list, if open, rebuilt.
void TrackSelectionChanged();
// Track > Select: toggles RecordTrack's row when its track holds events and
// the manager is open.
void SelectCurrentTrack();
