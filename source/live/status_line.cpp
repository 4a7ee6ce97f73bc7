#include "live/status_line.h"

#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "song/clock_placing.h"
#include "song/song_store.h"

BarBeat BarBeatAt(uint32_t ticks) {
  const uint32_t resolution = SongResolution == 0 ? 1 : SongResolution.load();
  const uint32_t numerator = Numerator == 0 ? 1 : Numerator.load();
  const auto beats = static_cast<uint16_t>(ticks / resolution);
  return {static_cast<uint16_t>(beats / numerator + 1), static_cast<uint16_t>(beats % numerator + 1),
          ticks % resolution};
}

bool WaitingForMidiClock() {
  const SyncClock* clock = TheClock;
  if (clock == nullptr || clock->mode != SYNC_MIDI) return false;
  const bool started = Playing == 1 || Recording == 1;
  return started && (clock->flags.load() & SYNC_COUNTING) == 0;
}

std::vector<std::string> RunningStates() {
  std::vector<std::string> states;
  if (WaitingForMidiClock()) states.emplace_back("Waiting for MIDI clock");
  if (Playing == 1) states.emplace_back("Playing");
  if (Recording == 1) states.emplace_back("Recording");
  if (Generating == 1) states.emplace_back("Generating");
  return states;
}

namespace {

std::string outputName() {
  if (TheMidiOut == nullptr) return "none";
  std::string name;
  if (GetMidiOutDescription(TheMidiOut->deviceId, name) == 0 || name.empty()) {
    return "device " + std::to_string(TheMidiOut->deviceId);
  }
  return name;
}

}  // namespace

std::string StatusLine() {
  std::string states;
  for (const std::string& state : RunningStates()) states += (states.empty() ? "" : ", ") + state;
  const bool running = !states.empty();
  const BarBeat at = BarBeatAt(running ? ClockNow() : SongPosition.load());
  return (running ? states : "Stopped") + " · bar " + std::to_string(at.bar) + ", beat " + std::to_string(at.beat) +
         " · Out: " + outputName();
}
