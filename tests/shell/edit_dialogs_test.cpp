// The Edit menu in the real frame: its gray states, and Copy, Cut, Paste and
// the five transforms through their dialogs, with each dialog's refusal.
#include <QAbstractButton>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <functional>

#include "midi/transport_words.h"
#include "shell/song/tracks_window.h"
#include "song/region_edits.h"
#include "song/song_files.h"
#include "song/transforms.h"
#include "shell_bench.h"

namespace {

constexpr uint32_t EditMenu[] = {CMD_COPY, CMD_CUT, CMD_QUANTIZE, CMD_LENGTH, CMD_TRANSPOSE, CMD_VELOCITY, CMD_SLIDE};

class EditDialogsTest : public ShellBench {
 protected:
  void SetUp() override {
    FreeEditBuffers();
    PasteRepetitions = 1;
    PasteMode = PasteBlend;
    QuantizeGrid = 30;
    QuantizeSwing = 50;
    TransposeAmount = 0;
  }
  // The buffers outlive a song: a later test starts without this one's copy.
  void TearDown() override {
    FreeEditBuffers();
    ShellBench::TearDown();
  }
  // The song loaded and track 1 ticked in the Tracks manager.
  void loadAndSelectTrack1() {
    ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_track_names.mid"));
    frame->command(CMD_VIEW_TRACKS);
    deliver();
    auto& tracks = *static_cast<shell::TracksListWidget*>(::TracksList);
    const QPoint at(5, tracks.rowHeight() / 2);
    QTest::mousePress(tracks.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseRelease(tracks.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    ASSERT_EQ(SelectedTrackCount, 1);
  }
  static QLineEdit* field(QDialog& dialog, uint32_t id) { return dialog.findChild<QLineEdit*>(QString::number(id)); }
  // Runs a menu command whose dialog the act answers.
  void run(uint32_t command, std::function<void(QDialog&)> act) {
    inNextDialog([this, act](QDialog& dialog) {
      titles.push_back(dialog.windowTitle());
      act(dialog);
    });
    frame->command(command);
    deliver();
  }
  std::vector<QString> titles;
};

TEST_F(EditDialogsTest, TheEditCommandsWaitForASelectedTrackAndPasteForACopy) {
  start();
  for (uint32_t id : EditMenu) EXPECT_FALSE(menuEnabled(id)) << id;
  EXPECT_FALSE(menuEnabled(CMD_PASTE));
  loadAndSelectTrack1();
  for (uint32_t id : EditMenu) EXPECT_TRUE(menuEnabled(id)) << id;
  EXPECT_FALSE(menuEnabled(CMD_PASTE)) << "nothing copied yet";
  run(CMD_COPY, [](QDialog& d) {
    field(d, ID_REGION_FROM)->setText(QStringLiteral("1:1:0"));
    field(d, ID_REGION_TO)->setText(QStringLiteral("2:1:0"));
    d.accept();
  });
  EXPECT_EQ(titles, (std::vector<QString>{QStringLiteral("Copy")}));
  EXPECT_GT(CopyBuffer.count, 0u);
  EXPECT_TRUE(menuEnabled(CMD_PASTE));
  EXPECT_TRUE(frame->toolAction(CMD_PASTE)->isEnabled());
  click(101);  // Play
  for (uint32_t id : EditMenu) EXPECT_FALSE(menuEnabled(id)) << id;
  EXPECT_FALSE(menuEnabled(CMD_PASTE));
  click(100);
}

TEST_F(EditDialogsTest, CutWithItsHoleAndPasteIntoAnotherTrackThroughTheDialogs) {
  start();
  loadAndSelectTrack1();
  const uint32_t count = Tracks[0].count;
  run(CMD_CUT, [](QDialog& d) {
    field(d, ID_REGION_FROM)->setText(QStringLiteral("1:1:0"));
    field(d, ID_REGION_TO)->setText(QStringLiteral("1:1:55"));
    d.findChild<QAbstractButton*>(QString::number(ID_CUT_DELETE_HOLE))->setChecked(true);
    d.accept();
  });
  EXPECT_EQ(DeleteHole, 1u);
  EXPECT_LT(Tracks[0].count, count);
  const uint32_t copied = CopyBuffer.count;
  ASSERT_GT(copied, 0u);
  run(CMD_PASTE, [](QDialog& d) {
    EXPECT_EQ(field(d, ID_PASTE_TRACK)->text(), QStringLiteral("1")) << "the current track, from 1";
    field(d, ID_PASTE_TRACK)->setText(QStringLiteral("9"));
    field(d, ID_PASTE_REPETITIONS)->setText(QStringLiteral("2"));
    d.accept();
  });
  EXPECT_EQ(Tracks[8].count, 2 * copied);
  EXPECT_EQ(PasteMode, PasteInsert) << "Blend, checked at first, leaves Insert";
}

TEST_F(EditDialogsTest, ARefusedRepetitionsKeepsThePasteDialogOpenOnItsField) {
  start();
  loadAndSelectTrack1();
  run(CMD_COPY, [](QDialog& d) {
    field(d, ID_REGION_TO)->setText(QStringLiteral("2:1:0"));
    d.accept();
  });
  run(CMD_PASTE, [](QDialog& d) {
    QLineEdit* repetitions = field(d, ID_PASTE_REPETITIONS);
    repetitions->setText(QStringLiteral("-1"));
    d.accept();
    EXPECT_TRUE(d.isVisible());
    EXPECT_EQ(repetitions->selectedText(), QStringLiteral("-1"));
    d.reject();
  });
  EXPECT_EQ(prompts.shown().back().text, "Value is not in the range 0 to 65535.");
}

TEST_F(EditDialogsTest, EachTransformRefusesANumberOutOfRangeAndPutsBackTheLastAcceptedText) {
  start();
  loadAndSelectTrack1();
  struct Case {
    uint32_t command, field;
    const char* title;
    const char* wrong;
    const char* message;
  };
  const Case cases[] = {
      {CMD_QUANTIZE, ID_QUANTIZE_SWING, "Quantize", "100", "Value is not in the range 1 to 99."},
      {CMD_QUANTIZE, ID_QUANTIZE_OFFSET, "Quantize", "1000", "Value is not in the range -999 to 999."},
      {CMD_LENGTH, ID_LENGTH_PERCENTAGE, "Length", "-1", "Value is not in the range 0 to 999."},
      {CMD_SLIDE, ID_TRANSFORM_AMOUNT, "Slide", "40000", "Value is not in the range -32768 to 32767."},
      {CMD_TRANSPOSE, ID_TRANSFORM_AMOUNT, "Transpose", "-128", "Value is not in the range -127 to 127."},
      {CMD_VELOCITY, ID_VELOCITY_END, "Velocity", "128", "Value is not in the range 0 to 127."},
  };
  for (const Case& c : cases) {
    QString shown;
    run(c.command, [&](QDialog& d) {
      QLineEdit* edit = field(d, c.field);
      ASSERT_NE(edit, nullptr) << c.title;
      shown = edit->text();
      edit->setText(QString::fromLatin1(c.wrong));
      d.accept();
      EXPECT_TRUE(d.isVisible()) << c.title;
      EXPECT_EQ(edit->text(), shown) << c.title << ": the last accepted text is back";
      EXPECT_EQ(edit->selectedText(), shown) << c.title;
      d.reject();
    });
    ASSERT_FALSE(titles.empty());
    EXPECT_EQ(titles.back(), QString::fromLatin1(c.title));
    EXPECT_EQ(prompts.shown().back().text, c.message) << c.title;
  }
}

TEST_F(EditDialogsTest, TransposeThroughItsDialogMovesTheSelectedTracksNotes) {
  start();
  loadAndSelectTrack1();
  std::vector<uint8_t> keys;
  for (uint32_t i = 0; i < Tracks[0].count; ++i) keys.push_back(Tracks[0].events[i].value1);
  run(CMD_TRANSPOSE, [](QDialog& d) {
    field(d, ID_TRANSFORM_AMOUNT)->setText(QStringLiteral("2"));
    field(d, ID_REGION_TO)->setText(QStringLiteral("99:1:0"));
    d.accept();
  });
  EXPECT_EQ(TransposeAmount, 2);
  for (uint32_t i = 0; i < Tracks[0].count; ++i) {
    if ((Tracks[0].events[i].status & 0xF0) == 0x90) {
      EXPECT_EQ(Tracks[0].events[i].value1, keys[i] + 2) << i;
    }
  }
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EditDialogsTest, TheQuantizeComboShowsTheGridsItemAndTakesATickCount) {
  start();
  loadAndSelectTrack1();
  run(CMD_QUANTIZE, [](QDialog& d) {
    auto* combo = d.findChild<QComboBox*>(QString::number(ID_QUANTIZE_RESOLUTION));
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->currentText(), QStringLiteral("Sixteenth"));
    EXPECT_EQ(combo->count(), 9);
    combo->setEditText(QStringLiteral("45"));
    d.accept();
  });
  EXPECT_EQ(QuantizeGrid, 45);
}

}  // namespace
