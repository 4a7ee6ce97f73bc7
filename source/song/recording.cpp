#include "song/recording.h"

#include "midi/live_devices.h"
#include "midi/midi_in.h"
#include "midi/sync_clock.h"
#include "platform/command_ids.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"
#include "song/note_linking.h"
#include "song/song_store.h"
#include "song/events_list.h"

std::array<uint32_t, 128> SoundingInput{};
uint32_t QuantizeRecord = 0;
uint32_t RecordResolution = RecordResolutionStart;
uint32_t RecordRounding = RecordResolutionStart >> 1;
uint32_t QuantizeFilters = 0;
uint32_t QuantizedClock = 0;
uint32_t RawClock = 0;

namespace {

// Writes one entry of the take. The block's spare room holds what may follow
// the last regular place; beyond it nothing is written.
void putInTake(const MidiEvent& e) {
  if (TakeCount >= TakeSlots) return;
  MidiEvent& entry = TakeBuffer[TakeCount];
  entry.time = e.time;
  entry.status = e.status;
  entry.value1 = e.value1;
  entry.value2 = e.value2;
  entry.value3 = e.value3;
  ++TakeCount;
}

void takeFull(platform::MessageTarget* window) {
  platform::ShowMessageBox("Can't continue.Input buffer full.", "Velmora", platform::MB_ICONSTOP);
  platform::post(window, WM_COMMAND, CMD_STOP, 0);
}

// Notes a note-on or note-off in SoundingInput; true for a note-on of a key
// that is already held on its channel.
bool noteDoubled(const MidiEvent& e) {
  if (e.value1 >= 128) return false;  // no key: nothing to follow
  const uint32_t bit = 1u << (e.status & 0x0F);
  uint32_t& held = SoundingInput[e.value1];
  const uint32_t kind = e.status & 0xF0u;
  if (kind == 0x90 && e.value2 != 0) {
    if ((held & bit) != 0) return true;
    held |= bit;
  } else if (kind == 0x80 || kind == 0x90) {
    held &= ~bit;
  }
  return false;
}

}  // namespace

uint32_t QuantizedDelta(uint32_t delta) {
  const uint32_t error = QuantizedClock - RawClock;
  const uint32_t q = (delta - error + RecordRounding) / RecordResolution * RecordResolution;
  RawClock += delta;
  QuantizedClock += q;
  return q;
}

void RecordEvent(platform::MessageTarget* window, MidiEvent* e) {
  const int kind = MidiFilterBit(e->status);
  const bool leftAlone = kind >= 0 && (QuantizeFilters >> kind & 1u) != 0;
  if (QuantizeRecord != 0 && !leftAlone) e->time = QuantizedDelta(e->time);
  putInTake(*e);
  if (TakeCount == TakeCapacity) takeFull(window);
}

void DrainInput(platform::MessageTarget* window) {
  while (MidiEvent* e = MidiIn(TheMidiIn)) {
    if (TakeCount >= TakeCapacity) return;  // the take is full: this entry is lost
    if (noteDoubled(*e)) {
      // A second note-on of a held key ends the key first, at the same time.
      const uint8_t velocity = e->value2;
      e->value2 = 0;
      RecordEvent(window, e);
      e->time = 0;
      e->value2 = velocity;
    }
    RecordEvent(window, e);
  }
}

void CloseTakeNotes() {
  const uint32_t now = TheClock != nullptr ? TheClock->now.load() : 0;
  const uint32_t last = TheMidiIn != nullptr ? TheMidiIn->lastEventTime.load() : 0;
  for (uint32_t key = 0; key < 128; ++key) {
    const uint32_t held = SoundingInput[key];
    if (held == 0) continue;
    uint32_t channel = 0;
    while ((held >> channel & 1u) == 0) ++channel;
    // Only the lowest channel gets its note-off here; InstallTrack closes the others.
    putInTake(MidiEvent{now - last, static_cast<uint8_t>(0x90 | channel), static_cast<uint8_t>(key), 0, 0, nullptr,
                        0, 0, 0, 0});
    SoundingInput[key] = 0;
  }
}

uint32_t GetQuantizeFilters() { return QuantizeFilters; }

void SetQuantizeFilters(uint32_t filters) { QuantizeFilters = filters; }

bool SetRecordResolution(uint32_t ticks) {
  if (ticks == 0) return false;
  RecordResolution = ticks;
  RecordRounding = ticks >> 1;
  return true;
}

void KeepTake() {
  const uint32_t track = RecordTrack;
  TouchTrack(track);
  DeleteTrack(track);
  InstallTrack(track, TakeCount, TakeBuffer.data());
  BuildTrackRow(track);
  if (TracksOpen == 1 && TracksList != nullptr) TracksList->repaint();
  // The take's new array shows in the list when its track is selected.
  RefreshEventsList();
}
