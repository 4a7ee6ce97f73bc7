#include "song/transforms.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>

#include "platform/view_registry.h"
#include "song/events_list.h"
#include "song/note_linking.h"
#include "song/region_edits.h"

int32_t QuantizeGrid = 30;
int32_t QuantizeStrength = 100;
int32_t QuantizeSwing = 50;
int32_t QuantizeWindow = 100;
int32_t QuantizeOffset = 0;
uint32_t QuantizeStart = 1;
uint32_t QuantizeDuration = 1;
uint32_t LengthStart = 0;
uint32_t LengthDuration = 1;
uint32_t SlideInTicks = 1;
double SlideAmount = 0.0;
int32_t TransposeAmount = 0;
int32_t VelocityBegin = 0, VelocityEnd = 0;

namespace {

// Calls the action on each event of the track's span, then marks the span used up.
void forEachInSpan(TrackRecord* t, const std::function<void(MidiEvent&)>& action) {
  for (uint32_t i = t->cursor; i < t->cursor + t->remaining && i < t->count; ++i) action(t->events[i]);
  t->cursor += t->remaining;
  t->remaining = 0;
}

bool spanEmpty(const TrackRecord* t) { return t == nullptr || t->events == nullptr || t->remaining == 0; }

// A time moved by a number of ticks, held within 0 and the last tick that 32 bits count.
uint32_t slid(uint32_t time, double amount) {
  return static_cast<uint32_t>(std::clamp(std::trunc(static_cast<double>(time) + amount), 0.0, 4294967295.0));
}

void forEachSelected(const std::function<void(TrackRecord*)>& transform) {
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    TrackRecord* t = &Tracks[SelectedTracks[static_cast<std::size_t>(i)]];
    ScanTrack(t, EditFrom, EditTo);
    transform(t);
  }
}

// After a transform that moved events: the list's rows are rebuilt.
void rebuildEventsList() {
  if (SelectedTrackCount != 0) RefreshEventsList();
}

void repaintEventsList() {
  if (EventsOpen == 1 && EventsList != nullptr) EventsList->repaint();
}

}  // namespace

std::array<double, 2> QuantizeSteps() {
  const int32_t step = (QuantizeGrid * 2 * QuantizeSwing) / 100;
  return {static_cast<double>(step), static_cast<double>(QuantizeGrid * 2 - step)};
}

uint32_t QuantizeWindowTicks() { return static_cast<uint32_t>((QuantizeWindow * QuantizeGrid) / 100); }

uint32_t QuantizeTime(uint32_t t, const std::array<double, 2>& s, uint32_t window) {
  const int32_t grid = std::max(QuantizeGrid, 1);
  const int32_t off = QuantizeOffset % grid;  // with the sign of the offset
  const uint32_t u = t + static_cast<uint32_t>(grid / 2);
  const uint32_t k = u / static_cast<uint32_t>(grid);
  const double g = static_cast<double>(k) * grid;
  double a = g + off;
  double b = g + off;
  if (k % 2 == 1) {
    a += grid;
    b -= grid;
  }
  // a walks down to the last grid point at or below u, b up to the first at or above it.
  for (int i = 1; u < a; i ^= 1) a -= s[static_cast<std::size_t>(i)];
  for (int i = 0; u > b; i ^= 1) b += s[static_cast<std::size_t>(i)];
  // The window is measured from the straight grid, without swing or offset.
  if (std::abs(static_cast<int64_t>(static_cast<double>(t) - g)) > window) return t;
  const auto fromGrid = [g](double point) { return std::abs(static_cast<int64_t>(point - g)); };
  const double target = fromGrid(a) < fromGrid(b) ? a : b;
  const long double pulled = static_cast<long double>(t) - (static_cast<long double>(t) - target) * QuantizeStrength * 0.01L;
  double r = static_cast<double>(pulled);
  if (r < 0) r = 0;
  return static_cast<uint32_t>(r);
}

void QuantizeTrack(TrackRecord* t) {
  if (spanEmpty(t)) return;
  const std::array<double, 2> s = QuantizeSteps();
  const uint32_t window = QuantizeWindowTicks();
  forEachInSpan(t, [&](MidiEvent& e) {
    if (IsNoteOff(e)) return;
    const uint32_t n = QuantizeStart == 1 ? QuantizeTime(e.time, s, window) : e.time;
    if (MidiEvent* off = NoteOffOf(e)) {
      off->time = QuantizeDuration == 1 ? QuantizeTime(off->time, s, window) : off->time + (n - e.time);
      e.time = n;
      if (off->time == e.time) off->time += static_cast<uint32_t>(QuantizeGrid);
      return;
    }
    e.time = n;
  });
  RelinkTrack(t);
}

void LengthTrack(TrackRecord* t, int32_t percent) {
  if (spanEmpty(t)) return;
  const auto p = static_cast<uint32_t>(percent);
  forEachInSpan(t, [&](MidiEvent& e) {
    if (IsNoteOff(e)) return;
    MidiEvent* off = NoteOffOf(e);
    if (LengthStart == 1) {
      const uint32_t n = e.time * p / 100;
      if (off != nullptr) off->time += n - e.time;
      e.time = n;
    }
    if (off == nullptr) return;
    if (LengthDuration == 1) off->time = (off->time - e.time) * p / 100 + e.time;
    if (off->time == e.time) off->time += 1;
  });
  RelinkTrack(t);
}

void SlideTrack(TrackRecord* t, double amount) {
  if (spanEmpty(t)) return;
  forEachInSpan(t, [&](MidiEvent& e) {
    if (IsNoteOff(e)) return;
    MidiEvent* off = NoteOffOf(e);
    e.time = slid(e.time, amount);
    if (off == nullptr) return;
    off->time = slid(off->time, amount);
    if (off->time == e.time) off->time += 1;
  });
  RelinkTrack(t);
}

void TransposeTrack(TrackRecord* t) {
  if (spanEmpty(t)) return;
  forEachInSpan(t, [](MidiEvent& e) {
    if (!IsNoteOn(e)) return;
    const auto key = static_cast<uint8_t>(FoldKey(e.value1 + TransposeAmount));
    e.value1 = key;
    if (MidiEvent* off = NoteOffOf(e)) off->value1 = key;
  });
}

void VelocityTrack(TrackRecord* t) {
  if (spanEmpty(t)) return;
  const MidiEvent* first = t->events + t->cursor;
  const auto notes = static_cast<int32_t>(
      std::count_if(first, first + std::min(t->remaining, t->count - t->cursor), [](const MidiEvent& e) { return IsNoteOn(e); }));
  if (notes == 0) {
    t->cursor += t->remaining;  // the span is used up all the same
    t->remaining = 0;
    return;
  }
  const double step = (std::abs(VelocityBegin - VelocityEnd) + 1) / static_cast<double>(notes);
  const bool rising = VelocityBegin <= VelocityEnd;
  int32_t i = rising ? 0 : notes - 1;
  bool silenced = false;
  forEachInSpan(t, [&](MidiEvent& e) {
    if (!IsNoteOn(e)) return;
    e.value2 = static_cast<uint8_t>(static_cast<int32_t>(std::floor(step * i)) + (rising ? VelocityBegin : VelocityEnd));
    silenced = silenced || e.value2 == 0;
    i += rising ? 1 : -1;
  });
  // A note brought to velocity 0 is a note-off from now on: the track is linked again so that every link keeps the rule.
  if (silenced) RelinkTrack(t);
}

void QuantizeSelectedTracks() {
  forEachSelected(QuantizeTrack);
  rebuildEventsList();
}

void LengthSelectedTracks(int32_t percent) {
  forEachSelected([percent](TrackRecord* t) { LengthTrack(t, percent); });
  rebuildEventsList();
}

void SlideSelectedTracks() {
  uint32_t first = 0xFFFFFFFFu;
  for (int32_t i = 0; i < SelectedTrackCount; ++i) {
    TrackRecord& t = Tracks[SelectedTracks[static_cast<std::size_t>(i)]];
    ScanTrack(&t, EditFrom, EditTo);
    if (t.remaining != 0 && t.events[t.cursor].time < first) first = t.events[t.cursor].time;
  }
  const double amount = static_cast<double>(first) + SlideAmount >= 0 ? SlideAmount : -static_cast<double>(first);
  for (int32_t i = 0; i < SelectedTrackCount; ++i) SlideTrack(&Tracks[SelectedTracks[static_cast<std::size_t>(i)]], amount);
  rebuildEventsList();
}

void TransposeSelectedTracks() {
  forEachSelected(TransposeTrack);
  repaintEventsList();
}

void VelocitySelectedTracks() {
  forEachSelected(VelocityTrack);
  // A note silenced by the ramp has lost its row: the rows are rebuilt.
  RefreshEventsList();
}
