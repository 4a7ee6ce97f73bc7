#pragma once
// What the settings dialogs do, without their windows: the Qt dialog fills
// its fields from the functions and globals here, and on OK hands back the
// field texts, with `edited` telling whether the user changed the field since
// it was filled. Two styles of refusal:
//  - silent (Tempo, Resolution): false comes back; the dialog puts the old
//    text back, selects it, beeps and stays open;
//  - checked (Meter, Metronome): the check has already shown its message box;
//    the refused field's id comes back, and the dialog puts back the field's
//    last accepted text (its global below), focuses and selects it, and stays open.
// A field that acts only when edited is read as at most 15 characters.
// UI thread only.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "platform/command_ids.h"
#include "transport/transport_commands.h"  // SongStart, SongEnd

// ---- Settings held as text, exactly as typed after trimming ----

extern std::string NumeratorText;    // dialog 115, field 2102
extern std::string DenominatorText;  // dialog 115, field 2101
extern std::string CountInText;      // dialog 116, field 2113
extern std::string ClickLengthText;  // dialog 116, field 2104

// Dialog 116, fields 2107, 2109, 2111 and 2108, 2110, 2112.
extern std::string FirstBeatChannelText, FirstBeatKeyText, FirstBeatVelocityText;
extern std::string OtherBeatsChannelText, OtherBeatsKeyText, OtherBeatsVelocityText;

// The devices the Devices dialog shows as chosen: at start, the ones opened.
extern uint32_t MidiInDevice;
extern uint32_t MidiOutDevice;

// ---- Tempo, dialog 105 ----

// The field's text: "%3.2f" of the clock's beats per minute.
std::string TempoDialogText();
// OK. An edited text is read as beats per minute: below 10 or above 240 is
// refused (false). Otherwise the tempo goes to the clock, the tempo track's
// first event and the Control Bar, its fraction to TempoFraction, and the
// song is marked changed, edited or not.
bool ApplyTempoDialog(const std::string& text, bool edited);

// ---- Resolution, dialog 109 ----

// The field's text: the clock's ticks per quarter note.
std::string ResolutionDialogText();
// OK. An edited text outside 1 to 960 is refused (false); a good one goes to
// SongResolution and the clock. The song is marked changed in any case.
bool ApplyResolutionDialog(const std::string& text, bool edited);
// The command's work after OK, with the resolution from before the dialog and
// the clock's present one: TicksPerBar, and every event time of every active
// track, the tempo track too, scaled by new / old in 32-bit arithmetic
// (an overflow wraps); the Events list is repainted if open.
void RescaleSongTimes(uint32_t oldResolution, uint32_t newResolution);

// ---- Meter, dialog 115 (fields filled from NumeratorText and DenominatorText) ----

// OK: 0 when both fields pass, or the id of the refused one (2102: not 1 to
// 99; 2101: not one of 32,16,8,4,2,1). Each field that passes is stored in its
// text at once, so a numerator stored before a refused denominator stays
// stored. Marks the song changed when both pass.
uint32_t ApplyMeterDialog(std::string numerator, std::string denominator);
// The command's work after OK: Numerator, the clock's beatsPerBar and
// TicksPerBar from NumeratorText; Denominator from DenominatorText, where 0
// becomes 4 and the text is rewritten; the Control Bar's fields 1180 and 1181.
void ApplyMeter();

// ---- Metronome, dialog 116 ----

// The eight fields in the order they are checked, with their limits and the
// text each fills from and stores into.
struct MetronomeField {
  uint32_t id;
  int32_t low, high;
  std::string* text;
};
extern const std::array<MetronomeField, 8> MetronomeFields;
// Check boxes 2105 ("&Play") and 2106 ("&Record") show these.
bool MetronomeOnPlay();
bool MetronomeOnRecord();
// OK: the fields, in the order of MetronomeFields, are trimmed in place and
// checked; each that passes is stored in its text at once, and the first
// refused one's id comes back. When all pass, the two check boxes set
// METRONOME_PLAY and METRONOME_RECORD of the output, and 0 comes back.
uint32_t CheckMetronomeDialog(std::array<std::string, 8>& fields, bool onPlay, bool onRecord);
// The command's work after OK: the two clicks' messages, noteDivisor and
// countInBars from the texts. The song stays unmarked.
void ApplyMetronome();

// ---- MIDI devices, dialog 114 ----

// The devices' names, from device 0 up until one has none.
std::vector<std::string> MidiInDeviceNames();
std::vector<std::string> MidiOutDeviceNames();
// OK, always, also with the same devices: both devices are closed and opened
// again as chosen, each failure told in the driver's words. MIDI thru and
// the metronome on record stay as they were; the metronome on play is off.
void ReopenMidiDevices(uint32_t in, uint32_t out);
// The built-in synthesizer's gain as the dialog shows it: "3".
extern double SynthGain;
std::string SynthGainDialogText();
// OK with the gain's text: a number above 0 and at most 10 goes to the
// synthesizer at once and to the settings; anything else is refused with
// "The gain is a number above 0 and at most 10." (false), and nothing changes.
bool ApplySynthGainDialog(const std::string& text);
// The lines under the lists: the scheduling the timer got, the passes it
// made up for and skipped, and the messages the devices dropped.
std::vector<std::string> DevicesStatusLines();

// ---- From 106, To 107, Go to 108 (fields shown by TimeText) ----

// OK with an edited text (measure:beat:tick): the bound takes it, and the
// other bound follows if they would cross; the Control Bar's fields 2050 and
// 2051 show the text as parsed, not normalised. An unedited field changes nothing.
void ApplyFromDialog(const std::string& text, bool edited);
void ApplyToDialog(const std::string& text, bool edited);
// OK with an edited text: SongPosition and the clock's time take it, the
// counter is redrawn, and the Events list's cursor row moves there, shown as
// its top and selected row when the list is open.
void ApplyGoToDialog(const std::string& text, bool edited);

// ---- Select (1190 to 1193) and Goto (1194, 1195) menu commands ----

// A bound takes a time; the other follows if they would cross, and the
// Control Bar's fields show both.
void SelectFromNow();
void SelectToNow();
void SelectFromHome();
void SelectToEnd();
// SongPosition and the clock's time move there and the counter is redrawn;
// the feed's cursor and the Events list stay.
void GoToBeginning();
void GoToSongEnd();

// ---- Filters 103 (input), 104 (output), 101 (quantize on record) ----

// DLG_INPUT_FILTERS: "Input Filters", check boxes from 1400; DLG_OUTPUT_FILTERS:
// "Output Filtros", check boxes from 1500; DLG_QUANTIZE_FILTERS: "Filters",
// check boxes from 1700.

// The seven low bits of the dialog's filter word: bit i is check box base + i.
uint32_t FilterDialogBits(uint32_t dialogId);
// OK: bits 0 to 6 of the word take the boxes; the higher bits stay.
void ApplyFilterDialog(uint32_t dialogId, uint32_t sevenBits);

// ---- Quantize record, dialog 102 ----

// The field's text: RecordResolution by "%u".
std::string QuantizeRecordDialogText();
// OK: an edited text becomes the record grid, and half of it the rounding.
// A grid of 0 is refused by the recording and the old grid stays. The dialog
// closes in every case: always true.
bool ApplyQuantizeRecordDialog(const std::string& text, bool edited);

// ---- Seed, dialog 130 ----

std::string SeedDialogText();
// OK: the text as a signed decimal becomes Seed; no number gives 0. It takes
// effect at the generator's next reset.
void ApplySeedDialog(const std::string& text);
