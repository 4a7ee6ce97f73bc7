#include "platform/view_registry.h"

SharedWord<uint32_t> TracksOpen, EventsOpen, ControllersOpen, LyricsOpen, ControlPanelOpen, DistributionsOpen,
    FunctionsOpen, BoardsOpen, BanksOpen;

platform::ListView* TracksList = nullptr;
platform::ListView* EventsList = nullptr;
platform::RefreshableView* EventsWindow = nullptr;
platform::RefreshableView* LyricsWindow = nullptr;
platform::LyricsEditView* LyricsEdit = nullptr;
platform::RefreshableView* ControlPanelWindow = nullptr;
platform::RefreshableView* DistributionsWindow = nullptr;
platform::RefreshableView* FunctionsWindow = nullptr;
platform::RefreshableView* BoardsWindow = nullptr;
platform::RefreshableView* BanksWindow = nullptr;
platform::ControlBarView* ControlBar = nullptr;
platform::FrameView* FrameWindow = nullptr;
uint32_t EventsRowsInSight = 0;

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
  EventsWindow = nullptr;
  LyricsWindow = ControlPanelWindow = DistributionsWindow = FunctionsWindow = BoardsWindow = BanksWindow = nullptr;
  ControlBar = nullptr;
  FrameWindow = nullptr;
  EventsRowsInSight = 0;
}
