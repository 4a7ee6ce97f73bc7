// The settings dialogs, driven as a musician fills them in.
#include <QLineEdit>

#include "live/settings_dialogs.h"
#include "midi/live_devices.h"
#include "midi/midi_out.h"
#include "midi/sync_clock.h"
#include "shell/dialogs.h"
#include "shell_bench.h"
#include "song/song_store.h"

namespace {

class Dialogs : public ShellBench {
 protected:
  void SetUp() override { start(); }
  // Types into a field as the user does, so that it counts as edited.
  static void type(QLineEdit* field, const QString& text) {
    field->selectAll();
    field->del();
    QTest::keyClicks(field, text);
  }
};

TEST_F(Dialogs, TempoAboveTheLimitIsRefusedSilentlyWithTheOldTextSelected) {
  auto dialog = shell::MakeFieldDialog(frame.get(), 105);
  dialog->show();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Tempo"));
  EXPECT_EQ(dialog->field()->text(), QStringLiteral("60.00"));
  type(dialog->field(), QStringLiteral("240.01"));
  dialog->accept();
  EXPECT_NE(dialog->result(), QDialog::Accepted);
  EXPECT_TRUE(prompts.shown().empty()) << "no box, only a beep";
  EXPECT_EQ(dialog->field()->text(), QStringLiteral("60.00"));
  EXPECT_EQ(dialog->field()->selectedText(), QStringLiteral("60.00"));
  type(dialog->field(), QStringLiteral("133.33"));
  dialog->accept();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(GetTempo(TheClock), 450011u);
  EXPECT_EQ(bar().field(1175)->text(), QStringLiteral("133.33"));
  EXPECT_EQ(bar().tempoControl()->position(), 133);
}

TEST_F(Dialogs, ResolutionTwiceAsFineDoublesEveryTime) {
  const uint32_t old = SongResolution;
  auto dialog = shell::MakeFieldDialog(frame.get(), 109);
  dialog->show();
  type(dialog->field(), QStringLiteral("961"));
  dialog->accept();
  EXPECT_NE(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(dialog->field()->text(), QString::number(old));
  type(dialog->field(), QString::number(old * 2));
  dialog->accept();
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(SongResolution, old * 2);
}

TEST_F(Dialogs, MeterRefusesZeroBeatsWithTheRangeMessageAndTheOldText) {
  shell::MeterDialog dialog(frame.get());
  dialog.show();
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Measure"));
  const QString old = dialog.field(2102)->text();
  dialog.field(2102)->setText(QStringLiteral("0"));
  dialog.accept();
  EXPECT_NE(dialog.result(), QDialog::Accepted);
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Value is not in the range 1 to 99.");
  EXPECT_EQ(dialog.field(2102)->text(), old);
  EXPECT_EQ(dialog.focusWidget(), dialog.field(2102));
}

TEST_F(Dialogs, MeterOfThreeEightsReachesTheControlBar) {
  shell::MeterDialog dialog(frame.get());
  dialog.field(2102)->setText(QStringLiteral("3"));
  dialog.field(2101)->setText(QStringLiteral(" 8 "));
  dialog.accept();
  ASSERT_EQ(dialog.result(), QDialog::Accepted);
  ApplyMeter();
  EXPECT_EQ(Numerator, 3u);
  EXPECT_EQ(Denominator, 8u);
  EXPECT_EQ(bar().field(1180)->text(), QStringLiteral("3"));
  EXPECT_EQ(bar().field(1181)->text(), QStringLiteral("8"));
}

TEST_F(Dialogs, AClickLengthOf25IsRefusedWithItsLimits) {
  shell::MetronomeDialog dialog(frame.get());
  dialog.show();
  const QString old = dialog.field(2104)->text();
  dialog.field(2104)->setText(QStringLiteral("25"));
  dialog.accept();
  ASSERT_EQ(prompts.shown().size(), 1u);
  EXPECT_EQ(prompts.shown()[0].text, "Value is not in the range 1 to 24.");
  EXPECT_EQ(dialog.field(2104)->text(), old);
  EXPECT_EQ(dialog.field(2104)->selectedText(), old);
}

TEST_F(Dialogs, FromThreeTwoTenAtFourBeatsIs1090Ticks) {
  Numerator = 4;
  SongResolution = 120;
  SelectTo = 0;
  auto dialog = shell::MakeFieldDialog(frame.get(), 106);
  dialog->show();
  type(dialog->field(), QStringLiteral("3:2:10"));
  dialog->accept();
  EXPECT_EQ(SelectFrom, 1090u);
  EXPECT_EQ(SelectTo, 1090u) << "To follows a From beyond it";
  EXPECT_EQ(bar().field(2050)->text(), bar().field(2051)->text());
}

TEST_F(Dialogs, FromWithoutAnEditLeavesTheBound) {
  SelectFrom = 240;
  auto dialog = shell::MakeFieldDialog(frame.get(), 106);
  dialog->accept();
  EXPECT_EQ(SelectFrom, 240u);
}

TEST_F(Dialogs, TheInputFiltersKeepTheHigherBits) {
  shell::FilterDialog dialog(frame.get(), 103);
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Input Filters"));
  dialog.box(1401)->setChecked(true);
  dialog.accept();
  EXPECT_EQ(FilterDialogBits(103) & 0x02u, 0x02u);
  shell::FilterDialog output(frame.get(), 104);
  EXPECT_EQ(output.windowTitle(), QStringLiteral("Output Filtros"));
}

TEST_F(Dialogs, ConfirmingTheDevicesTurnsTheMetronomeOnPlayOff) {
  shell::MetronomeDialog metronome(frame.get());
  metronome.box(2105)->setChecked(true);
  metronome.accept();
  ASSERT_TRUE(MetronomeOnPlay());
  shell::DevicesDialog dialog(frame.get());
  EXPECT_EQ(dialog.list(1106)->count(), 1);
  EXPECT_EQ(dialog.list(1107)->count(), 1);
  dialog.accept();
  EXPECT_FALSE(MetronomeOnPlay());
  EXPECT_NE(TheMidiIn, nullptr);
  EXPECT_NE(TheMidiOut, nullptr);
}

TEST_F(Dialogs, TheDevicesDialogShowsTheSynthesizersGainAndRefusesOneOutOfRange) {
  shell::DevicesDialog dialog(frame.get());
  EXPECT_EQ(dialog.gain()->text(), QStringLiteral("3"));
  dialog.gain()->setText(QStringLiteral("20"));
  dialog.gain()->setModified(true);
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Rejected) << "the dialog stays open";
  EXPECT_EQ(dialog.gain()->text(), QStringLiteral("3")) << "the field shows the gain in force again";
  EXPECT_EQ(prompts.shown().back().text, "The gain is a number above 0 and at most 10.");
  dialog.gain()->setText(QStringLiteral("1.5"));
  dialog.gain()->setModified(true);
  dialog.accept();
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
  EXPECT_EQ(SynthGainDialogText(), "1.5");
  ApplySynthGainDialog("3");
}

TEST_F(Dialogs, TheSeedTakesASignedNumber) {
  auto dialog = shell::MakeFieldDialog(frame.get(), 130);
  dialog->field()->setText(QStringLiteral("-54774"));
  dialog->accept();
  EXPECT_EQ(SeedDialogText(), "-54774");
}

}  // namespace
