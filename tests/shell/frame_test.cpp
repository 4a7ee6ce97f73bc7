// The frame's menus, toolbar, gray rules and views.
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QToolBar>

#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "shell/generator/control_panel_window.h"
#include "shell_bench.h"
#include "song/clock_placing.h"
#include "song/song_store.h"

namespace {

class Frame : public ShellBench {};

TEST(GrayRules, CopyCutAndTheEditsNeedASelectedTrackWhileIdle) {
  Playing = 0;
  Recording = 0;
  SelectedTrackCount = 0;
  for (const uint32_t id : {1186u, 1187u, 1609u, 1614u, 1613u, 1612u, 1611u}) {
    EXPECT_EQ(shell::CommandAllowed(id), false) << id;
  }
  SelectedTrackCount = 1;
  for (const uint32_t id : {1186u, 1187u, 1609u, 1614u, 1613u, 1612u, 1611u}) {
    EXPECT_EQ(shell::CommandAllowed(id), true) << id;
  }
  Playing = 1;
  EXPECT_EQ(shell::CommandAllowed(1186), false);
  EXPECT_EQ(shell::CommandAllowed(1606), std::nullopt) << "Tempo is never grayed";
  EXPECT_EQ(shell::CommandAllowed(1188), false) << "Paste needs a filled buffer";
  Playing = 0;
  SelectedTrackCount = 0;
}

TEST_F(Frame, TheMenuBarHoldsTheMenusInTheirOrder) {
  start();
  QStringList titles;
  for (QAction* menu : frame->menuBar()->actions()) titles << menu->text();
  EXPECT_EQ(titles, (QStringList{"&File", "&View", "&Realtime", "&Select", "&Goto...", "&Edit", "&Track", "&Settings",
                                 "&Window", "&Help"}));
  EXPECT_EQ(frame->menuAction(1621)->text(), QStringLiteral("Controlers"));
  EXPECT_EQ(frame->menuAction(1617)->text(), QStringLiteral("Save &Velmora as..."));
  EXPECT_EQ(frame->menuAction(1601)->text(), QStringLiteral("&MIDI sync"));
}

TEST_F(Frame, TheToolbarHasSixButtonsWithTheirTipsAndCutCopyPasteStartGray) {
  start();
  int buttons = 0;
  for (QAction* action : frame->toolbar()->actions()) buttons += action->isSeparator() ? 0 : 1;
  EXPECT_EQ(buttons, 6);
  EXPECT_EQ(frame->toolAction(24331)->toolTip(), QStringLiteral("Clean all sequencer data"));
  EXPECT_EQ(frame->toolAction(1187)->toolTip(), QStringLiteral("Cut MIDI events"));
  EXPECT_TRUE(frame->toolAction(24332)->isEnabled());
  for (const uint32_t id : {1187u, 1186u, 1188u}) EXPECT_FALSE(frame->toolAction(id)->isEnabled()) << id;
}

TEST_F(Frame, EveryToolbarButtonShowsItsImageFromTheResources) {
  start();
  for (const uint32_t id : {24331u, 24332u, 24333u, 1187u, 1186u, 1188u}) {
    const QImage image = frame->toolAction(id)->icon().pixmap(16, 16).toImage();
    ASSERT_FALSE(image.isNull()) << id;
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
      for (int x = 0; x < image.width(); ++x) inked += image.pixelColor(x, y).alpha() != 0 ? 1 : 0;
    }
    EXPECT_GT(inked, 20) << id << ": the image is drawn, not blank";
  }
}

TEST_F(Frame, PlayGraysTheCommandsThatWouldDisturbItAndStopRestoresThem) {
  start();
  click(101);
  ASSERT_EQ(Playing, 1u);
  for (const uint32_t id : {24331u, 24332u, 24333u, 24334u, 24310u, 1615u, 1607u, 1554u, 1600u, 1601u}) {
    EXPECT_FALSE(menuEnabled(id)) << id;
  }
  EXPECT_FALSE(frame->toolAction(24333)->isEnabled());
  EXPECT_TRUE(menuEnabled(1606)) << "Tempo stays";
  EXPECT_TRUE(menuEnabled(1610)) << "Meter stays";
  click(100);
  ASSERT_EQ(Playing, 0u);
  for (const uint32_t id : {24331u, 24332u, 24333u, 24334u, 24310u, 1615u, 1607u, 1554u, 1600u, 1601u}) {
    EXPECT_TRUE(menuEnabled(id)) << id;
  }
  EXPECT_TRUE(frame->toolAction(24333)->isEnabled());
}

TEST_F(Frame, RecordGraysTheSameCommands) {
  start();
  click(104);
  ASSERT_EQ(Recording, 1u);
  EXPECT_FALSE(menuEnabled(24331));
  EXPECT_FALSE(menuEnabled(1554));
  EXPECT_FALSE(bar().button(101)->isEnabled());
  click(100);
  EXPECT_TRUE(menuEnabled(24331));
}

TEST_F(Frame, TheGeneratorGraysNothing) {
  start();
  click(200);
  ASSERT_EQ(Generating, 1u);
  EXPECT_TRUE(menuEnabled(24331));
  EXPECT_TRUE(menuEnabled(1554));
  click(200);
}

TEST_F(Frame, AViewThatIsOpenIsBroughtBackNotOpenedTwice) {
  start();
  QMdiSubWindow* panel = frame->client()->subWindowList().front();
  panel->showMinimized();
  frame->command(1624);
  deliver();
  EXPECT_EQ(frame->client()->subWindowList().size(), 1);
  EXPECT_FALSE(panel->isMinimized()) << "a minimised view is restored";
}

TEST_F(Frame, AViewOpenedAfterAResizeTakesItsSizeFromTheStartUpClient) {
  start();
  const QRect startClient = frame->clientRect();
  frame->command(24365);  // Close all
  deliver();
  ASSERT_EQ(ControlPanelOpen, 0u);
  frame->resize(frame->width() / 2, frame->height() / 2);
  frame->command(1624);
  deliver();
  ASSERT_EQ(ControlPanelOpen, 1u);
  EXPECT_EQ(frame->client()->subWindowList().front()->size(), startClient.size());
}

TEST_F(Frame, FromNowAfterTheEndMovesBothBoundsAndBothFields) {
  start();
  SongPosition = 0;
  SelectFrom = 0;
  SelectTo = 0;
  click(200);   // the generator runs the clock
  passes(100);  // a second at 60 beats a minute: 120 ticks
  frame->command(1190);
  deliver();
  click(200);
  EXPECT_GT(SelectFrom, 0u);
  EXPECT_EQ(SelectTo, SelectFrom);
  EXPECT_EQ(bar().field(2050)->text(), bar().field(2051)->text());
  EXPECT_EQ(bar().field(2050)->text().toStdString(), TimeText(SelectFrom));
}

TEST_F(Frame, LinkFromTheMenuChecksItAndPressesTheButton) {
  start();
  frame->command(1618);
  deliver();
  EXPECT_EQ(Linked, 1u);
  EXPECT_TRUE(frame->menuAction(1618)->isChecked());
  EXPECT_TRUE(bar().button(110)->isDown());
  frame->command(1618);
  deliver();
  EXPECT_EQ(Linked, 0u);
  EXPECT_FALSE(bar().button(110)->isDown());
}

TEST_F(Frame, MidiSyncFromTheMenuSwapsTheClockButtonsAndChecks) {
  start();
  frame->command(1601);
  deliver();
  EXPECT_TRUE(frame->menuAction(1601)->isChecked());
  EXPECT_FALSE(frame->menuAction(1600)->isChecked());
  EXPECT_TRUE(bar().button(107)->isDown());
  EXPECT_FALSE(bar().button(107)->isEnabled());
  EXPECT_FALSE(bar().button(108)->isDown());
  EXPECT_TRUE(bar().button(108)->isEnabled());
  frame->command(1600);
  deliver();
  EXPECT_TRUE(frame->menuAction(1600)->isChecked());
  EXPECT_TRUE(bar().button(108)->isDown());
}

TEST_F(Frame, TheCounterFollowsTheClockOnItsSyncTicks) {
  start();
  click(200);
  passes(100);  // 120 ticks at 60 beats a minute: the second beat of the first bar
  EXPECT_EQ(bar().counter()->text(), shell::CounterText(ClockNow()));
  EXPECT_NE(bar().counter()->text(), QStringLiteral("00001:01:000"));
  click(200);
}

TEST(CounterText, BarBeatAndTickByTheMeterWithTheBeatCountIn16Bits) {
  Numerator = 4;
  SongResolution = 120;
  EXPECT_EQ(shell::CounterText(1090), QStringLiteral("00003:02:010"));
  EXPECT_EQ(shell::CounterText(65536u * 120 + 5), QStringLiteral("00001:01:005")) << "the beat count wraps at 16 bits";
  Numerator = 0;
  EXPECT_EQ(shell::CounterText(240), QStringLiteral("00003:01:000")) << "no meter counts as one beat a bar";
  Numerator = 4;
}

TEST_F(Frame, TheTempoArrowsSetTheTempo) {
  start();
  bar().tempoControl()->step(1);
  deliver();
  EXPECT_EQ(bar().field(1175)->text(), QStringLiteral("61.00"));
  EXPECT_EQ(GetTempo(TheClock), 60000000u / 61);
}

}  // namespace
