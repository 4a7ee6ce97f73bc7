#include "platform/view_registry.h"

#include <array>
#include <utility>

SharedWord<uint32_t> TracksOpen, EventsOpen, ControllersOpen, LyricsOpen, ControlPanelOpen, DistributionsOpen,
    FunctionsOpen, BoardsOpen, BanksOpen;

platform::ListView* TracksList = nullptr;
platform::ListView* EventsList = nullptr;
platform::RefreshableView* LyricsWindow = nullptr;
platform::LyricsEditView* LyricsEdit = nullptr;
platform::RefreshableView* ControlPanelWindow = nullptr;
platform::DistributionsView* DistributionsWindow = nullptr;
platform::RefreshableView* FunctionsWindow = nullptr;
platform::RefreshableView* BoardsWindow = nullptr;
platform::RefreshableView* BanksWindow = nullptr;
platform::ControlBarView* ControlBar = nullptr;
platform::FrameView* FrameWindow = nullptr;
uint32_t EventsRowsInSight = 0;
platform::MessageTarget* ControlBarWindow = nullptr;

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

void UpdateCommandStates() {
  if (FrameWindow != nullptr) FrameWindow->updateCommandStates();
}

void ClearViewRegistry() {
  for (SharedWord<uint32_t>* flag : {&TracksOpen, &EventsOpen, &ControllersOpen, &LyricsOpen, &ControlPanelOpen,
                                     &DistributionsOpen, &FunctionsOpen, &BoardsOpen, &BanksOpen}) {
    *flag = 0;
  }
  TracksList = EventsList = nullptr;
  LyricsEdit = nullptr;
  LyricsWindow = ControlPanelWindow = FunctionsWindow = BoardsWindow = BanksWindow = nullptr;
  DistributionsWindow = nullptr;
  ControlBar = nullptr;
  FrameWindow = nullptr;
  EventsRowsInSight = 0;
}
