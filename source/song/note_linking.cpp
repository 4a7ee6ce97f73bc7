#include "song/note_linking.h"

#include <algorithm>
#include <memory>
#include <new>
#include <vector>


namespace {

// A key is taken as its low 7 bits: a damaged file's 0x80 and above cannot index past the tables.
uint32_t keyOf(const MidiEvent& e) { return e.value1 & 0x7F; }
uint32_t channelOf(const MidiEvent& e) { return e.status & 0x0F; }

}  // namespace

bool IsNoteOn(const MidiEvent& e) { return (e.status & 0xF0) == 0x90 && e.value2 != 0; }

MidiEvent* NoteOffOf(MidiEvent& e) { return IsNoteOn(e) && e.link != nullptr && e.link != &e ? e.link : nullptr; }

bool IsNoteOff(const MidiEvent& e) { return (e.status & 0xF0) == 0x80 || ((e.status & 0xF0) == 0x90 && e.value2 == 0); }

int NoteBalance(const MidiEvent* e, NoteBalanceTable& table) {
  uint32_t& open = table.open[keyOf(*e)][channelOf(*e)];
  if (IsNoteOn(*e)) {
    ++open;
    return 1;
  }
  if (!IsNoteOff(*e)) return 1;
  if (open == 0) return 0;
  --open;
  return 1;
}

void CloseOpenNotes(EventList* list, uint32_t time, NoteBalanceTable& table) {
  for (uint32_t key = 0; key < 128; ++key) {
    for (uint32_t channel = 0; channel < 16; ++channel) {
      for (uint32_t& open = table.open[key][channel]; open > 0; --open) {
        const MidiEvent off{
            time, static_cast<uint8_t>(0x90 | channel), static_cast<uint8_t>(key), 0, 0, nullptr, 0, 0, 0, 0};
        AppendEvent(&off, list);
      }
    }
  }
}

void LinkNote(MidiEvent* events, NoteLinkTable& table, uint32_t i) {
  MidiEvent& e = events[i];
  if (IsNoteOn(e)) {
    table.pending[keyOf(e)][channelOf(e)].push_back(i);
    return;
  }
  if (!IsNoteOff(e)) {
    e.link = &e;
    return;
  }
  auto& waiting = table.pending[keyOf(e)][channelOf(e)];
  if (waiting.empty()) {
    e.link = nullptr;
    return;
  }
  MidiEvent& on = events[waiting.front()];  // the oldest open note ends first
  waiting.pop_front();
  e.link = &on;
  on.link = &e;
}

void RelinkTrack(TrackRecord* track) {
  if (track == nullptr || track->events == nullptr) return;
  std::stable_sort(track->events, track->events + track->count,
                   [](const MidiEvent& a, const MidiEvent& b) { return CompareEventTime(a, b) < 0; });
  // Links are cleared first, so a note-on whose note-off now stands before it
  // keeps no stale pointer: it is left without a partner, as that note-off is.
  for (uint32_t i = 0; i < track->count; ++i) track->events[i].link = nullptr;
  auto table = std::make_unique<NoteLinkTable>();
  for (uint32_t i = 0; i < track->count; ++i) LinkNote(track->events, *table, i);
}

void InstallTrack(uint32_t track, uint32_t n, MidiEvent* a) {
  if (n == 0 || a == nullptr || track > SongTrackCount) return;
  DeltaToAbsolute(a, n);
  NoteBalanceTable balance;
  EventList list;
  for (uint32_t i = 0; i < n; ++i) {
    if (NoteBalance(&a[i], balance) == 1) AppendEvent(&a[i], &list);
  }
  if (list.events.empty()) return;  // the track keeps what it held
  CloseOpenNotes(&list, list.events.back().time, balance);
  // The new block is made before the old one goes, so that a failure leaves the track as it was.
  MidiEvent* block = AllocateEvents(list.length());
  if (block == nullptr) {
    NotEnoughMemory();
    return;
  }
  TrackRecord& t = Tracks[track];
  if (t.events != nullptr) {
    FreeEvents(t.events);
  } else {
    ActiveTracks[ActiveTrackCount++] = track;
  }
  auto table = std::make_unique<NoteLinkTable>();
  for (uint32_t i = 0; i < list.length(); ++i) {
    block[i] = list.events[i];
    LinkNote(block, *table, i);
  }
  t.count = list.length();
  t.events = block;
}

void MergeIntoTrack(MidiEvent* const* sources, uint32_t k, uint32_t* counts, uint32_t track) {
  uint64_t total = 0;
  for (uint32_t s = 0; s < k; ++s) total += counts[s];
  if (total == 0) return;
  std::vector<MidiEvent> out;
  try {
    out.reserve(total);
  } catch (const std::exception&) {
    NotEnoughMemory();
    return;
  }
  std::vector<uint32_t> position(k, 0);
  while (out.size() < total) {
    uint32_t best = 0xFFFFFFFFu;
    uint32_t chosen = k;
    // Strictly earlier wins: at equal times the lower source, the track's own events, goes first.
    for (uint32_t s = 0; s < k; ++s) {
      if (counts[s] != 0 && (chosen == k || sources[s][position[s]].time < best)) {
        best = sources[s][position[s]].time;
        chosen = s;
      }
    }
    out.push_back(sources[chosen][position[chosen]++]);
    --counts[chosen];
  }
  AbsoluteToDelta(out.data(), static_cast<uint32_t>(out.size()));
  InstallTrack(track, static_cast<uint32_t>(out.size()), out.data());
}
