#include "transport/transport_state.h"

#include <array>
#include <utility>

SharedWord<uint32_t> Playing, Recording, Capturing, Generating, Draining, Linked, SongPosition;
SharedWord<uint32_t> SongResolution = 120;
SharedWord<uint32_t> Numerator = 1;
SharedWord<uint32_t> Denominator = 4;

SyncClock* TheClock = nullptr;
MidiInHandle* TheMidiIn = nullptr;
MidiOutHandle* TheMidiOut = nullptr;
platform::MessageTarget* ControlBarWindow = nullptr;
std::string MidiFilesDir, VelmoraFilesDir, DistributionFilesDir, FunctionFilesDir;

namespace {

// The Control Bar's buttons that others address, by control id.
std::array<std::pair<uint32_t, platform::MessageTarget*>, 16> controls{};

}  // namespace

platform::MessageTarget* ControlBarControl(uint32_t id) {
  for (const auto& [controlId, target] : controls) {
    if (controlId == id && target != nullptr) return target;
  }
  return nullptr;
}

void SetControlBarControl(uint32_t id, platform::MessageTarget* control) {
  // The control's own entry first: an empty one met earlier must not leave it standing.
  for (auto& entry : controls) {
    if (entry.first == id) {
      entry.second = control;
      return;
    }
  }
  for (auto& entry : controls) {
    if (entry.second == nullptr) {
      entry = {id, control};
      return;
    }
  }
}
