#include "platform/view_registry.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

TEST(ViewRegistry, AtStartEveryViewIsClosed) {
  ClearViewRegistry();
  for (uint32_t flag :
       {TracksOpen.load(), EventsOpen.load(), ControllersOpen.load(), LyricsOpen.load(), ControlPanelOpen.load(),
        DistributionsOpen.load(), FunctionsOpen.load(), BoardsOpen.load(), BanksOpen.load()}) {
    EXPECT_EQ(flag, 0u);
  }
  EXPECT_EQ(ControlPanelWindow, nullptr);
  EXPECT_EQ(LyricsEdit, nullptr);
}

TEST(ViewRegistry, ARefreshReachesAViewOnlyWhileItsFlagReadsOne) {
  ClearViewRegistry();
  platform::RecordingView panel;
  ControlPanelWindow = &panel;  // a stale handle of a closed view
  RefreshIfOpen(ControlPanelOpen, ControlPanelWindow);
  EXPECT_EQ(panel.refreshes, 0);
  ControlPanelOpen = 1;
  RefreshIfOpen(ControlPanelOpen, ControlPanelWindow);
  EXPECT_EQ(panel.refreshes, 1);
  ControlPanelOpen = 2;  // users test for the value 1
  RefreshIfOpen(ControlPanelOpen, ControlPanelWindow);
  EXPECT_EQ(panel.refreshes, 1);
  ClearViewRegistry();
}

TEST(ViewRegistry, AnOpenFlagWithoutAHandleIsHarmless) {
  ClearViewRegistry();
  BoardsOpen = 1;  // the flag is up before the view has published its handle
  // In a process of its own, so that a call through the null handle shows as
  // this test's failure rather than as the end of every test.
  EXPECT_EXIT(
      {
        RefreshIfOpen(BoardsOpen, BoardsWindow);
        std::exit(0);
      },
      ::testing::ExitedWithCode(0), "");
  EXPECT_EQ(BoardsOpen.load(), 1u) << "the flag stays as the view set it";
  ClearViewRegistry();
}

}  // namespace
