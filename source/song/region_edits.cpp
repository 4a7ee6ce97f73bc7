#include "song/region_edits.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "platform/command_ids.h"
#include "platform/field_checks.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "song/events_list.h"
#include "song/note_linking.h"

uint32_t EditFrom = 0, EditTo = 0, EditTotal = 0;
uint32_t PasteTime = 0;
uint16_t PasteRepetitions = 1;
uint8_t PasteMode = PasteBlend;
uint32_t DeleteHole = 0;
EventBuffer CopyBuffer, RepeatBuffer, KeepBuffer, SplitBuffer;

namespace {

// The buffer takes the list's events in a new block; on an exhausted heap the
// box shows, the buffer keeps what it held, and false says the edit stops.
bool fill(EventBuffer& buffer, const EventList& list) {
  MidiEvent* block = nullptr;
  if (list.length() != 0) {
    block = AllocateEvents(list.length());
    if (block == nullptr) {
      NotEnoughMemory();
      return false;
    }
    std::copy(list.events.begin(), list.events.end(), block);
  }
  FreeEvents(buffer.events);
  buffer.events = block;
  buffer.count = list.length();
  return true;
}

// The track's events before a time go into the list, each counted in the
// balance; the index of the first one left.
uint32_t takeBefore(const TrackRecord& t, uint32_t time, EventList& list, NoteBalanceTable& balance) {
  uint32_t i = 0;
  for (; i < t.count && t.events[i].time < time; ++i) {
    AppendEvent(&t.events[i], &list);
    NoteBalance(&t.events[i], balance);
  }
  return i;
}

// From index i on, the events after a time; i at the first one.
uint32_t skipThrough(const TrackRecord& t, uint32_t i, uint32_t time) {
  while (i < t.count && t.events[i].time <= time) ++i;
  return i;
}

// The rest of the track from index i, each event that the balance keeps, moved by shift.
void takeRest(const TrackRecord& t, uint32_t i, uint32_t shift, EventList& list) {
  auto balance = std::make_unique<NoteBalanceTable>();
  for (; i < t.count; ++i) {
    if (NoteBalance(&t.events[i], *balance) == 0) continue;
    MidiEvent moved = t.events[i];
    moved.time += shift;
    AppendEvent(&moved, &list);
  }
}

// The track up to PasteTime, its open notes ended there, and the index after
// it: the head that Replace and Insert keep.
uint32_t takeHeadBeforePaste(const TrackRecord& t, EventList& list) {
  auto balance = std::make_unique<NoteBalanceTable>();
  const uint32_t i = takeBefore(t, PasteTime, list, *balance);
  CloseOpenNotes(&list, PasteTime, *balance);
  return i;
}

// The selected track whose next scanned event comes first; the head of the list wins ties.
TrackRecord* earliestScanned() {
  TrackRecord* chosen = nullptr;
  uint32_t best = 0xFFFFFFFFu;
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    TrackRecord& t = Tracks[SelectedTracks[static_cast<std::size_t>(i)]];
    if (t.remaining == 0) continue;
    const uint32_t time = t.events[t.cursor].time;
    if (chosen == nullptr || time < best) {
      chosen = &t;
      best = time;
    }
  }
  return chosen;
}

void repaintViews() {
  if (SelectedTrackCount != 0) {
    RefreshEventsList();
    if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
  }
}

std::string regionText(const std::string& text) { return text.substr(0, 15); }

}  // namespace

void ScanTrack(TrackRecord* t, uint32_t from, uint32_t to) {
  EditTotal = 0;
  if (t == nullptr) return;
  uint32_t i = 0;
  while (i < t->count && t->events[i].time < from) ++i;
  t->cursor = i;
  t->remaining = skipThrough(*t, i, to) - i;
}

void ScanSelectedTracks() {
  uint32_t total = 0;
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    TrackRecord& t = Tracks[SelectedTracks[static_cast<std::size_t>(i)]];
    ScanTrack(&t, EditFrom, EditTo);
    total += t.remaining;
  }
  EditTotal = total;
}

bool TakeRegion() {
  if (EditTotal == 0) return true;
  EventList list;
  auto balance = std::make_unique<NoteBalanceTable>();
  while (EditTotal != 0) {
    TrackRecord* t = earliestScanned();
    if (t == nullptr) break;
    const MidiEvent& e = t->events[t->cursor];
    if (NoteBalance(&e, *balance) == 1) {
      MidiEvent copy = e;
      copy.time = e.time - EditFrom;
      AppendEvent(&copy, &list);
    }
    ++t->cursor;
    --t->remaining;
    --EditTotal;
  }
  CloseOpenNotes(&list, EditTo - EditFrom, *balance);
  // A copy that kept nothing (only note-offs of earlier notes) leaves the last region in the buffer, as an empty one does.
  if (list.length() == 0) return true;
  return fill(CopyBuffer, list);
}

bool CutTrack(uint8_t track, uint32_t from, uint32_t to) {
  TrackRecord& t = Tracks[track];
  if (t.count == 0 || t.events == nullptr) {
    KeepBuffer.count = 0;
    return true;
  }
  EventList list;
  uint32_t i = 0;
  {
    auto balance = std::make_unique<NoteBalanceTable>();
    i = takeBefore(t, from, list, *balance);
    if (i != 0) CloseOpenNotes(&list, from, *balance);
  }
  i = skipThrough(t, i, to);
  takeRest(t, i, DeleteHole == 1 ? from - to : 0, list);
  if (list.length() == 0) {
    KeepBuffer.count = 0;
    DeleteTrack(track);
    if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
    if (SelectedTrackCount != 0) RefreshEventsList();
    return true;
  }
  if (!fill(KeepBuffer, list)) return false;
  AbsoluteToDelta(KeepBuffer.events, KeepBuffer.count);
  InstallTrack(track, KeepBuffer.count, KeepBuffer.events);
  return true;
}

bool BuildRepeatBuffer() {
  const uint64_t total = uint64_t{PasteRepetitions} * CopyBuffer.count;
  // A paste past what 32 bits count is a paste that no memory holds.
  const auto count = static_cast<uint32_t>(std::min<uint64_t>(total, 0xFFFFFFFFu));
  RepeatBuffer.count = count;
  if (count == 0) return true;
  MidiEvent* block = total <= 0xFFFFFFFFu ? AllocateEvents(count) : nullptr;
  if (block == nullptr) {
    RepeatBuffer.count = 0;
    NotEnoughMemory();
    return false;
  }
  FreeEvents(RepeatBuffer.events);
  RepeatBuffer.events = block;
  AbsoluteToDelta(CopyBuffer.events, CopyBuffer.count);
  uint32_t n = 0;
  for (uint32_t r = 0; r < PasteRepetitions; ++r) {
    for (uint32_t i = 0; i < CopyBuffer.count; ++i) {
      block[n] = CopyBuffer.events[i];
      if (r != 0 && i == 0) block[n].time += 1;
      ++n;
    }
  }
  DeltaToAbsolute(CopyBuffer.events, CopyBuffer.count);
  block[0].time += PasteTime;
  DeltaToAbsolute(block, count);
  return true;
}

bool ReplaceTrackRegion(uint8_t track) {
  const TrackRecord& t = Tracks[track];
  if (t.count == 0 || t.events == nullptr) {
    KeepBuffer.count = 0;
    return true;
  }
  EventList list;
  uint32_t i = takeHeadBeforePaste(t, list);
  const uint32_t end = (EditTo - EditFrom) * PasteRepetitions + PasteTime;
  i = skipThrough(t, i, end);
  takeRest(t, i, 0, list);
  return fill(KeepBuffer, list);
}

bool SplitTrack(uint8_t track) {
  const TrackRecord& t = Tracks[track];
  if (t.count == 0 || t.events == nullptr) return true;
  EventList list;
  const uint32_t i = takeHeadBeforePaste(t, list);
  const uint32_t gap = (EditTo - EditFrom) * PasteRepetitions + PasteRepetitions;
  takeRest(t, i, gap, list);
  return fill(SplitBuffer, list);
}

void CopyRegion() {
  ScanSelectedTracks();
  TakeRegion();
  UpdateCommandStates();
  if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
}

void CutRegion() {
  ScanSelectedTracks();
  // Without the copy the cut would lose the region: it is abandoned.
  if (!TakeRegion()) return;
  UpdateCommandStates();
  // The count is read afresh: a track emptied and deleted closes the list up, and the next one is passed over.
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    if (!CutTrack(static_cast<uint8_t>(SelectedTracks[static_cast<std::size_t>(i)]), EditFrom, EditTo)) break;
  }
  repaintViews();
}

void PasteRegion() {
  if (PasteRepetitions == 0) return;
  const uint8_t track = PasteTrack;
  EventBuffer own{Tracks[track].events, Tracks[track].count};
  const EventBuffer* first = &own;
  bool ready = false;
  switch (PasteMode) {
    case PasteBlend: ready = BuildRepeatBuffer(); break;
    case PasteReplace:
      ready = ReplaceTrackRegion(track) && BuildRepeatBuffer();
      first = &KeepBuffer;
      break;
    default:
      ready = SplitTrack(track) && BuildRepeatBuffer();
      first = &SplitBuffer;
      break;
  }
  if (!ready) return;
  if (Tracks[track].events != nullptr) {
    MidiEvent* const sources[2] = {first->events, RepeatBuffer.events};
    uint32_t counts[2] = {first->count, RepeatBuffer.count};
    MergeIntoTrack(sources, 2, counts, track);
  } else {
    AbsoluteToDelta(RepeatBuffer.events, RepeatBuffer.count);
    InstallTrack(track, RepeatBuffer.count, RepeatBuffer.events);
    BuildTrackRow(track);
    if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
  }
  repaintViews();
}

bool PasteAvailable() { return CopyBuffer.events != nullptr && CopyBuffer.count != 0; }

void FreeEditBuffers() {
  for (EventBuffer* buffer : {&CopyBuffer, &RepeatBuffer, &KeepBuffer, &SplitBuffer}) {
    FreeEvents(buffer->events);
    *buffer = {};
  }
}

// ---- the dialogs ----

RegionTexts OpenRegionDialog() {
  EditFrom = SelectFrom;
  EditTo = SelectTo;
  return {TimeText(EditFrom), TimeText(EditTo)};
}

void AcceptRegionDialog(const RegionTexts& texts) {
  EditFrom = ParseTimeText(regionText(texts.from));
  EditTo = ParseTimeText(regionText(texts.to));
  SongDirty = 1;
}

void AcceptCutDialog(const RegionTexts& texts, bool deleteHole) {
  AcceptRegionDialog(texts);
  DeleteHole = deleteHole ? 1 : 0;
}

PasteTexts OpenPasteDialog() {
  if (PasteRepetitions == 0) PasteRepetitions = 1;
  PasteTrack = RecordTrack;
  return {std::to_string(PasteRepetitions), TimeText(PasteTime), std::to_string(PasteTrack + 1u), PasteMode};
}

uint32_t AcceptPasteDialog(const std::string& repetitions, const std::string& time, const std::string& track,
                           bool blendChecked, bool replaceChecked) {
  const double count = std::strtod(regionText(repetitions).c_str(), nullptr);
  // A count that no 16 bits hold, or a negative one, is refused rather than wrapped into a huge paste.
  if (!(count >= 0 && count < 65536)) {
    platform::ShowMessageBox("Value is not in the range 0 to 65535.", "Velmora", platform::MB_ICONSTOP);
    return ID_PASTE_REPETITIONS;
  }
  PasteRepetitions = static_cast<uint16_t>(count);
  PasteTime = ParseTimeText(regionText(time));
  PasteTrack = static_cast<uint8_t>(FieldValue(regionText(track)) - 1);
  if (blendChecked) PasteMode = PasteBlend;
  PasteMode = replaceChecked ? PasteReplace : PasteInsert;
  SongDirty = 1;
  return 0;
}
