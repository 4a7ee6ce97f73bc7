// The Control Panel: its bars, channel buttons, time scale and the Pitch
// Selection Settings.
#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>

#include "generator/bank.h"
#include "generator/generator_tick.h"
#include "shell/generator/control_panel_window.h"
#include "shell_bench.h"

namespace {

class ControlPanel : public ShellBench {
 protected:
  shell::ControlPanelWindow& panel() { return *static_cast<shell::ControlPanelWindow*>(::ControlPanelWindow); }
  // A drag of a bar from where it is to a value, ended there.
  void drag(shell::Bar* bar, int to) {
    bar->trackTo(to);
    bar->moveTo(to);
    deliver();
  }
};

TEST_F(ControlPanel, ItsBarsShowTheBoundsOfTheSetUp) {
  start();
  EXPECT_EQ(panel().bar(1280)->value(), LiveBank.noteMax);
  EXPECT_EQ(panel().bar(1281)->value(), LiveBank.noteMin);
  EXPECT_EQ(panel().bar(1284)->maximum(), 32) << "a bar 35 high runs from 0 to 32";
  EXPECT_EQ(panel().bar(1286)->maximum(), 120);
  EXPECT_EQ(panel().bar(1300)->maximum(), 395);
  EXPECT_EQ(panel().number(1231)->text(), QString::number(LiveBank.noteMax));
}

TEST_F(ControlPanel, DraggingTheLowerNoteBarPastTheUpperPushesItUpWhenTheDragEnds) {
  start();
  drag(panel().bar(1280), 60);
  drag(panel().bar(1281), 40);
  panel().bar(1281)->trackTo(90);
  deliver();
  EXPECT_EQ(panel().bar(1280)->value(), 60) << "nothing moves during the drag";
  EXPECT_EQ(panel().number(1242)->text(), QStringLiteral("90")) << "the red number shows where it heads";
  panel().bar(1281)->moveTo(90);
  deliver();
  EXPECT_EQ(LiveBank.noteMin, 90);
  EXPECT_EQ(LiveBank.noteMax, 90);
  EXPECT_EQ(panel().bar(1280)->value(), 90);
  EXPECT_EQ(panel().number(1231)->text(), QStringLiteral("90"));
}

TEST_F(ControlPanel, TheOnlyLitChannelCannotBeTurnedOff) {
  start();
  // Channel 1 alone, as the default set-up has it.
  for (uint32_t id = 202; id <= 216; ++id) {
    if (panel().button(id)->isDown()) {
      QTest::mouseClick(panel().button(id), Qt::LeftButton);
      deliver();
    }
  }
  const uint16_t mask = LiveBank.channelMask;
  ASSERT_EQ(__builtin_popcount(mask), 1);
  shell::Button* last = nullptr;
  for (uint32_t id = 201; id <= 216; ++id) {
    if (panel().button(id)->isDown()) last = panel().button(id);
  }
  ASSERT_NE(last, nullptr);
  QTest::mouseClick(last, Qt::LeftButton);
  deliver();
  EXPECT_TRUE(last->isDown());
  EXPECT_EQ(LiveBank.channelMask, mask);
}

TEST_F(ControlPanel, TimeControl241Gives250And240Gives240) {
  start();
  panel().bar(1300)->moveTo(241);
  deliver();
  EXPECT_EQ(TimeBase, 250u);
  EXPECT_EQ(panel().number(1241)->text(), QStringLiteral("250"));
  panel().bar(1300)->moveTo(240);
  EXPECT_EQ(TimeBase, 240u);
  panel().bar(1301)->moveTo(241);
  EXPECT_EQ(FunctionsRate, 241u) << "the rate in force stays raw";
  EXPECT_EQ(panel().number(1247)->text(), QStringLiteral("250"));
}

TEST_F(ControlPanel, AFunctionStepMovesTheBarWhileTheGeneratorRuns) {
  start();
  const int before = panel().bar(1281)->value();
  click(200);
  passes(200);
  EXPECT_NE(LiveBank.noteMin, before) << "the start-up curves move the lower note bound";
  EXPECT_EQ(panel().bar(1281)->value(), LiveBank.noteMin) << "the bar follows the stepped bound";
  EXPECT_EQ(panel().number(1232)->text(), QString::number(LiveBank.noteMin));
  click(200);
}

class PitchSelection : public ControlPanel {
 protected:
  void SetUp() override {
    start();
    dialog = std::make_unique<shell::PitchSelectionDialog>(&panel());
    dialog->show();
    dialog->intervalMode()->setChecked(true);
  }
  void TearDown() override {
    dialog.reset();  // before the panel, its parent, goes
    ControlPanel::TearDown();
  }
  void set(uint32_t id, const char* text) { dialog->field(id)->setText(QString::fromLatin1(text)); }
  std::unique_ptr<shell::PitchSelectionDialog> dialog;
};

TEST_F(PitchSelection, AMinimumOf116WithAMaximumOf127IsAccepted) {
  set(101, "116");
  set(102, "127");
  set(513, "120");
  dialog->accept();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(IntervalMode, 1u);
  EXPECT_EQ(IntervalMin, 116);
  EXPECT_TRUE(prompts.shown().empty());
}

TEST_F(PitchSelection, AMinimumOf117IsRefusedWithTheFocusOnIt) {
  set(101, "117");
  set(102, "127");
  dialog->accept();
  EXPECT_NE(dialog->result(), QDialog::Accepted);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Minimum Bound is not in the range 0 to 116.");
  EXPECT_EQ(prompts.shown()[0].style, platform::MB_OK | platform::MB_ICONSTOP);
  EXPECT_EQ(dialog->focusWidget(), dialog->field(101));
  EXPECT_EQ(dialog->field(101)->selectedText(), QStringLiteral("117"));
}

TEST_F(PitchSelection, TwentyToThirtyFailsTheDifferenceTestOnTheMaximum) {
  set(101, "20");
  set(102, "30");
  dialog->accept();
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text,
            "Maximun Bound and Minimum Bound diference must be equal or greater than 11.");
  EXPECT_EQ(dialog->focusWidget(), dialog->field(102));
}

TEST_F(PitchSelection, AFromNoteOutsideTheBoundsNamesThem) {
  set(101, "20");
  set(102, "60");
  set(513, "61");
  dialog->accept();
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Value is not in the range 20 to 60.");
  EXPECT_EQ(dialog->focusWidget(), dialog->field(513));
}

TEST_F(PitchSelection, AFieldWithoutLeadingDigitsCountsAs0) {
  set(101, "abc");
  set(102, "30x");
  set(513, "12");
  dialog->accept();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(IntervalMin, 0);
  EXPECT_EQ(IntervalMax, 30);
  EXPECT_EQ(FromNote, 12);
}

TEST_F(PitchSelection, TurningIntervalModeOffLeavesTheWalkWhereItWas) {
  set(101, "20");
  set(102, "80");
  set(513, "50");
  dialog->accept();
  ASSERT_EQ(PitchWalk, 50);
  shell::PitchSelectionDialog again(&panel());
  again.noteMode()->setChecked(true);
  again.accept();
  EXPECT_EQ(IntervalMode, 0u);
  EXPECT_EQ(PitchWalk, 50);
}

TEST_F(PitchSelection, NoteModeDropsTheFieldsUnchecked) {
  set(101, "letters");
  dialog->noteMode()->setChecked(true);
  dialog->mirror()->setChecked(true);
  dialog->accept();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(IntervalMode, 0u);
  EXPECT_EQ(Mirror, 1);
  EXPECT_TRUE(prompts.shown().empty());
}

}  // namespace
