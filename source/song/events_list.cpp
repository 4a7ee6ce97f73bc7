#include "song/events_list.h"

#include <algorithm>
#include <cstdio>
#include <functional>

#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/field_checks.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "song/clock_placing.h"
#include "song/note_linking.h"

std::vector<EventRow> EventRows;
uint32_t EventRowCount = 0;
uint8_t PasteTrack = 0;

namespace {

bool listOpen() { return EventsOpen == 1 && EventsList != nullptr; }

void repaintTracksList() {
  if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
}

// The selected row, or row 0 when none is; -1 with no rows.
int selectedOrFirstRow() {
  if (EventRowCount == 0) return -1;
  const int row = SelectedEventRow();
  return row >= 0 ? row : 0;
}

uint32_t timeOfLink(const MidiEvent& e) { return e.link != nullptr ? e.link->time : e.time; }

std::string numberText(int value) { return std::to_string(value); }

// A time field is read from at most 63 characters.
uint32_t timeOf(const std::string& text) { return ParseTimeText(text.substr(0, 63)); }

void setChannel(MidiEvent& e, int32_t channel) {
  // The number is ORed in unmasked: a channel outside 1..16 spoils the status byte.
  e.status = static_cast<uint8_t>((e.status & 0xF0) | ((channel - 1) & 255));
}

// One number of a dialog: its field, its range, and where it goes.
struct NumberField {
  uint32_t id;
  int32_t low, high;
  std::function<void(MidiEvent&, int32_t)> write;
};

const NumberField ChannelField{ID_EVENT_CHANNEL, 1, 16, setChannel};
const NumberField Value1Field{ID_EVENT_VALUE, 0, 127,
                              [](MidiEvent& e, int32_t v) { e.value1 = static_cast<uint8_t>(v); }};
const NumberField Value2Field{ID_EVENT_VALUE, 0, 127,
                              [](MidiEvent& e, int32_t v) { e.value2 = static_cast<uint8_t>(v); }};

// The numbers of dialogs 124 to 128, in the order they are read.
std::vector<NumberField> numberFields(uint32_t dialog) {
  const auto first = [](uint32_t id) {
    return NumberField{id, 0, 127, [](MidiEvent& e, int32_t v) { e.value1 = static_cast<uint8_t>(v); }};
  };
  switch (dialog) {
    case DLG_KEY_AFTERTOUCH_EVENT: return {ChannelField, first(ID_EVENT_PITCH), Value2Field};
    // The Controler dialog takes its channel from 0 to 127, unlike the others.
    case DLG_CONTROLLER_EVENT: return {{ID_EVENT_CHANNEL, 0, 127, setChannel}, first(ID_EVENT_CONTROLLER), Value2Field};
    case DLG_PITCH_WHEEL_EVENT:
      return {ChannelField, {ID_EVENT_VALUE, -8192, 8191, [](MidiEvent& e, int32_t v) {
                               const int32_t wheel = v + 8192;
                               e.value1 = static_cast<uint8_t>(wheel & 127);
                               e.value2 = static_cast<uint8_t>(wheel / 128);
                             }}};
    default: return {ChannelField, Value1Field};
  }
}

uint32_t acceptNumbers(uint32_t dialog, MidiEvent& e, const EventFieldTexts& entries) {
  e.time = timeOf(FieldText(entries, ID_EVENT_TIME));
  for (const NumberField& field : numberFields(dialog)) {
    const std::string& text = FieldText(entries, field.id);
    if (CheckRange(text, field.low, field.high) == 0) return field.id;
    field.write(e, FieldValue(text));
  }
  return 0;
}

void refuseNoteName() {
  platform::ShowMessageBox("Input does not conform to picture::\nC,C#,D,D#,E,F,F#,G,G#,A,Bb,B", "Velmora",
                           platform::MB_ICONSTOP);
}

uint32_t acceptNote(MidiEvent& e, const EventFieldTexts& entries) {
  const int name = NoteNameIndex(FieldText(entries, ID_EVENT_KEY));
  if (name < 0) {
    refuseNoteName();
    return ID_EVENT_KEY;
  }
  const std::string& octave = FieldText(entries, ID_EVENT_OCTAVE);
  if (CheckRange(octave, 0, 10) == 0) return ID_EVENT_OCTAVE;
  const auto key = static_cast<uint8_t>(NoteKey(name, FieldValue(octave)));
  // A note-on without a partner has no end to write: only the note-on takes the fields.
  MidiEvent* off = NoteOffOf(e);
  const uint32_t start = timeOf(FieldText(entries, ID_EVENT_TIME));
  uint32_t end = timeOf(FieldText(entries, ID_EVENT_END));
  if (start >= end) end = start + 1;
  e.time = start;
  if (off != nullptr) off->time = end;
  const std::string& channel = FieldText(entries, ID_EVENT_CHANNEL);
  if (CheckRange(channel, 1, 16) == 0) return ID_EVENT_CHANNEL;
  for (MidiEvent* n : {&e, off}) {
    if (n == nullptr) continue;
    setChannel(*n, FieldValue(channel));
    n->value1 = key;
  }
  const std::string& velocity = FieldText(entries, ID_EVENT_VELOCITY);
  if (CheckRange(velocity, 0, 127) == 0) return ID_EVENT_VELOCITY;
  e.value2 = static_cast<uint8_t>(FieldValue(velocity));
  return 0;
}

bool sameEvent(const MidiEvent& a, const MidiEvent& b) {
  return a.time == b.time && a.status == b.status && a.value1 == b.value1 && a.value2 == b.value2;
}

// The new events into PasteTrack: merged after the track's own at equal
// times, or as the track's first array.
void placeInsertedEvents(EventInsert& insert) {
  TrackRecord& t = Tracks[PasteTrack];
  if (t.events != nullptr) {
    MidiEvent* const sources[2] = {t.events, insert.events.data()};
    uint32_t counts[2] = {t.count, insert.count};
    MergeIntoTrack(sources, 2, counts, PasteTrack);
    return;
  }
  AbsoluteToDelta(insert.events.data(), insert.count);
  InstallTrack(PasteTrack, insert.count, insert.events.data());
  BuildTrackRow(PasteTrack);
}

}  // namespace

uint32_t BuildEventRows() {
  EventRows = EventRowsOf(SelectedTracks.data(), SelectedTrackCount);
  return static_cast<uint32_t>(EventRows.size());
}

void RefreshEventsList() {
  if (!listOpen()) return;  // a closed list keeps no rows
  // The wait cursor goes back also when the list comes out empty.
  platform::WaitCursor wait;
  const uint32_t n = BuildEventRows();
  if (n == 0) {
    EventsList->clear();
    EventRowCount = 0;
    return;
  }
  EventRowCount = n;
  EventsList->repaint();
}

void DropEventRows() {
  EventRows.clear();
  EventRows.shrink_to_fit();
  EventRowCount = 0;
}

bool EventsListTakesInput() { return Playing == 0 && Recording == 0; }

int SelectedEventRow() {
  if (!listOpen() || EventRowCount == 0) return -1;
  const std::vector<int> selected = EventsList->selectedItems();
  if (selected.empty()) return -1;
  const int row = selected.front();
  return row >= 0 && row < static_cast<int>(std::min<std::size_t>(EventRowCount, EventRows.size())) ? row : -1;
}

void MoveToSelectedEventRow() {
  const int row = SelectedEventRow();
  if (row < 0) return;
  MoveSongPosition(EventRows[static_cast<std::size_t>(row)].event->time);
}

void DeleteEvent(TrackRecord* t, MidiEvent* e) {
  if (t == nullptr || t->events == nullptr || e < t->events || e >= t->events + t->count) return;
  const auto a = static_cast<uint32_t>(e - t->events);
  const MidiEvent* partner = NoteOffOf(*e);
  const uint32_t b = partner != nullptr ? static_cast<uint32_t>(partner - t->events) : a;
  const uint32_t count = t->count - (b != a ? 2 : 1);
  MidiEvent* block = nullptr;
  if (count != 0) {
    block = AllocateEvents(count);
    // Without room for the new block the track keeps its events, so nothing is lost.
    if (block == nullptr) {
      NotEnoughMemory();
      return;
    }
    uint32_t n = 0;
    for (uint32_t i = 0; i < t->count; ++i) {
      if (i != a && i != b) block[n++] = t->events[i];
    }
  }
  FreeEvents(t->events);
  t->events = block;
  t->count = count;
  RelinkTrack(t);
}

void DeleteSelectedEventRow() {
  const int row = SelectedEventRow();
  if (row < 0) return;
  const EventRow selected = EventRows[static_cast<std::size_t>(row)];
  if (selected.event->status == 0) return;  // tempo changes and lyrics are never deleted here
  TrackRecord& t = Tracks[static_cast<std::size_t>(selected.track)];
  DeleteEvent(&t, selected.event);
  if (t.events != nullptr) {
    RefreshEventsList();
    repaintTracksList();
  } else {
    DeleteTrack(static_cast<uint32_t>(selected.track));
  }
  SongDirty = 1;
}

// ---- the event dialogs ----

uint32_t EventDialogOf(int kind) {
  switch (kind) {
    case 1: return DLG_NOTE_EVENT;
    case 2: return DLG_KEY_AFTERTOUCH_EVENT;
    case 3: return DLG_CONTROLLER_EVENT;
    case 4: return DLG_PATCH_EVENT;
    case 5: return DLG_CHANNEL_AFTERTOUCH_EVENT;
    case 6: return DLG_PITCH_WHEEL_EVENT;
    default: return 0;
  }
}

const EventDialogForm& EventDialogFormOf(uint32_t dialog) {
  static const EventDialogField time{ID_EVENT_TIME, "&Time:"};
  static const EventDialogField channel{ID_EVENT_CHANNEL, "&Channel:"};
  static const EventDialogField value{ID_EVENT_VALUE, "&Value:"};
  static const std::map<uint32_t, EventDialogForm> forms = {
      {DLG_NOTE_EVENT,
       {"Note parameters",
        {time,
         {ID_EVENT_KEY, "&Key:"},
         {ID_EVENT_OCTAVE, "&Octave:"},
         {ID_EVENT_VELOCITY, "&Velocity:"},
         {ID_EVENT_END, "&Duración:"},
         channel}}},
      {DLG_KEY_AFTERTOUCH_EVENT, {"Key Aftertouch parameters", {time, {ID_EVENT_PITCH, "&Pitch:"}, value, channel}}},
      {DLG_CONTROLLER_EVENT,
       {"Controler parameters", {time, {ID_EVENT_CONTROLLER, "&Controler:"}, value, {ID_EVENT_CHANNEL, "Cha&nnel:"}}}},
      {DLG_PATCH_EVENT, {"Patch parameters", {time, value, channel}}},
      {DLG_CHANNEL_AFTERTOUCH_EVENT, {"Channel Aftertouch parameters", {time, value, channel}}},
      {DLG_PITCH_WHEEL_EVENT, {"Pitch Wheel parameters", {time, value, channel}}},
  };
  const auto found = forms.find(dialog);
  return found != forms.end() ? found->second : forms.at(DLG_PATCH_EVENT);
}

EventFieldTexts EventDialogTexts(uint32_t dialog, const MidiEvent& e) {
  EventFieldTexts texts{{ID_EVENT_TIME, TimeText(e.time)}, {ID_EVENT_CHANNEL, numberText((e.status & 15) + 1)}};
  switch (dialog) {
    case DLG_NOTE_EVENT: {
      std::string name = NoteNames[e.value1 % 12];
      name.pop_back();
      texts[ID_EVENT_KEY] = name;
      texts[ID_EVENT_OCTAVE] = numberText(e.value1 / 12);
      texts[ID_EVENT_VELOCITY] = numberText(e.value2);
      texts[ID_EVENT_END] = TimeText(timeOfLink(e));  // the note's end, whatever the label says
      break;
    }
    case DLG_KEY_AFTERTOUCH_EVENT:
      texts[ID_EVENT_PITCH] = numberText(e.value1);
      texts[ID_EVENT_VALUE] = numberText(e.value2);
      break;
    case DLG_CONTROLLER_EVENT:
      texts[ID_EVENT_CONTROLLER] = numberText(e.value1);
      texts[ID_EVENT_VALUE] = numberText(e.value2);
      break;
    case DLG_PITCH_WHEEL_EVENT: texts[ID_EVENT_VALUE] = numberText((e.value1 | e.value2 * 128) - 8192); break;
    default: texts[ID_EVENT_VALUE] = numberText(e.value1); break;
  }
  return texts;
}

uint32_t AcceptEventDialog(uint32_t dialog, MidiEvent& e, const EventFieldTexts& entries) {
  const uint32_t refused = dialog == DLG_NOTE_EVENT ? acceptNote(e, entries) : acceptNumbers(dialog, e, entries);
  if (refused == 0) SongDirty = 1;
  return refused;
}

EventEdit BeginEditEvent() {
  EventEdit edit;
  const int row = SelectedEventRow();
  if (row < 0) return edit;
  const EventRow& selected = EventRows[static_cast<std::size_t>(row)];
  int kind = 0;
  EventText(*selected.event, &kind);
  edit.dialog = EventDialogOf(kind);
  edit.event = selected.event;
  edit.track = selected.track;
  edit.before = *selected.event;
  if (const MidiEvent* partner = NoteOffOf(*selected.event)) edit.partnerBefore = *partner;
  return edit;
}

void EndEditEvent(const EventEdit& edit, bool accepted) {
  if (edit.dialog == 0 || edit.event == nullptr) return;
  const MidiEvent* partner = NoteOffOf(*edit.event);
  const bool written = !sameEvent(edit.before, *edit.event) ||
                       (partner != nullptr && !sameEvent(edit.partnerBefore, *partner));
  // A cancelled dialog that wrote some fields keeps them; its track is sorted and linked as after an OK, and the
  // song counts as changed, so that the array stays in time order and the change is not lost unasked.
  if (!accepted && !written) return;
  if (!accepted) SongDirty = 1;
  platform::WaitCursor wait;
  RelinkTrack(&Tracks[static_cast<std::size_t>(edit.track)]);
  // The list takes the new row count: a note silenced to velocity 0 leaves no row past the table's end.
  RefreshEventsList();
}

// ---- Insert ----

std::string InsertTrackText() {
  const int row = selectedOrFirstRow();
  // The track is shown counted from 1, as it is read back less 1.
  const int track = row >= 0 ? EventRows[static_cast<std::size_t>(row)].track : RecordTrack;
  return numberText(track + 1);
}

void PrepareInsertEvent(EventInsert& insert, const std::string& trackText, int kind) {
  // Not held to a range: the byte wraps, so 0 gives 255 and 257 gives 0.
  PasteTrack = static_cast<uint8_t>(FieldValue(trackText.substr(0, 15)) - 1);
  uint32_t first = 0, second = 1;
  if (const int row = selectedOrFirstRow(); row >= 0) {
    const MidiEvent& e = *EventRows[static_cast<std::size_t>(row)].event;
    first = e.time;
    second = timeOfLink(e);
  }
  struct Template {
    uint32_t dialog;
    uint8_t status, value1, value2;
  };
  static constexpr std::array<Template, 6> templates = {{{DLG_NOTE_EVENT, 0x90, 64, 64},
                                                         {DLG_KEY_AFTERTOUCH_EVENT, 0xA0, 64, 0},
                                                         {DLG_CONTROLLER_EVENT, 0xB0, 7, 64},
                                                         {DLG_PATCH_EVENT, 0xC0, 0, 0},
                                                         {DLG_CHANNEL_AFTERTOUCH_EVENT, 0xD0, 0, 0},
                                                         {DLG_PITCH_WHEEL_EVENT, 0xE0, 0, 64}}};
  const Template& made = templates[static_cast<std::size_t>(std::clamp(kind, 0, 5))];
  insert.dialog = made.dialog;
  insert.count = made.dialog == DLG_NOTE_EVENT ? 2 : 1;
  insert.events[0] = MidiEvent{first, made.status, made.value1, made.value2, 0, nullptr, 0, 0, 0, 0};
  insert.events[1] = MidiEvent{second, made.status, made.value1, 0, 0, nullptr, 0, 0, 0, 0};
  insert.events[0].link = &insert.events[1];
  insert.events[1].link = &insert.events[0];
}

void FinishInsertEvent(EventInsert& insert, bool accepted) {
  if (!accepted || insert.count == 0) return;
  placeInsertedEvents(insert);
  if (TracksOpen == 1 && TracksList != nullptr) {
    TracksList->setSelected(PasteTrack, true);
    ReadSelection();
  }
  RelinkTrack(&Tracks[PasteTrack]);
  RefreshEventsList();
  repaintTracksList();
}
