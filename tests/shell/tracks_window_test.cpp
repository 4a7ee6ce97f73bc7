// The Tracks manager in the real frame: its rows, the check cell and the
// caret under the mouse and the keys, the Tracks dialog, and the Track menu.
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <algorithm>
#include <functional>

#include "midi/transport_words.h"
#include "shell/song/tracks_window.h"
#include "song/events_list.h"
#include "song/song_files.h"
#include "song/track_rows.h"
#include "song/tracks_manager.h"
#include "shell_bench.h"

namespace {

class TracksWindowTest : public ShellBench {
 protected:
  void TearDown() override {
    TrackFields = {};
    ShellBench::TearDown();
  }
  shell::TracksWindow& openTracks() {
    frame->command(CMD_VIEW_TRACKS);
    deliver();
    auto* list = static_cast<shell::TracksListWidget*>(::TracksList);
    return *static_cast<shell::TracksWindow*>(list->parentWidget());
  }
  static void loadSong() { ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_track_names.mid")); }
  // A point in a row of the list: in the check cell, or in the Name column.
  static QPoint inCheckCell(shell::TracksListWidget& list, int row) {
    return {5, row * list.rowHeight() + list.rowHeight() / 2};
  }
  static QPoint inName(shell::TracksListWidget& list, int row) {
    return {shell::TracksListWidget::checkCellWidth() + 60, row * list.rowHeight() + list.rowHeight() / 2};
  }
  static void pressAt(shell::TracksListWidget& list, QPoint at) {
    QTest::mousePress(list.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, Qt::NoModifier, at);
  }
  // Answers the Tracks dialog once it shows, keeping its title.
  void answerTheDialog(std::function<void(QDialog&)> edit) {
    inNextDialog([this, edit](QDialog& dialog) {
      dialogTitle = dialog.windowTitle();
      edit(dialog);
    });
  }
  static QLineEdit* field(QDialog& dialog, uint32_t id) { return dialog.findChild<QLineEdit*>(QString::number(id)); }
  QString dialogTitle;
};

TEST_F(TracksWindowTest, ViewTracksOpensAtTheClientsWidthAnd156HighWithTheCaretOnTrack1) {
  start();
  EXPECT_TRUE(menuEnabled(CMD_VIEW_TRACKS));
  EXPECT_TRUE(menuEnabled(CMD_TRACK_DELETE));
  EXPECT_TRUE(menuEnabled(CMD_TRACK_PROPERTIES));
  EXPECT_TRUE(menuEnabled(CMD_TRACK_SELECT));
  RecordTrack = 6;
  auto& window = openTracks();
  ASSERT_EQ(TracksOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, frame->clientRect().width(), 156));
  EXPECT_EQ(window.list()->geometry().top(), 27);
  EXPECT_EQ(window.list()->count(), 256);
  EXPECT_EQ(window.list()->caret(), 0);
  window.list()->grab();
  EXPECT_EQ(RecordTrack, 0) << "the caret's row, painted with the focus, is the current track";
  const std::array<int, 13> edges = shell::TrackColumnEdges(&window);
  EXPECT_EQ(edges[0], 19);
  EXPECT_EQ(edges[1] - edges[0], 40);
  EXPECT_EQ(edges[11] - edges[10], 38);
}

TEST_F(TracksWindowTest, APressInTheCheckCellSelectsATrackWithEventsAndOnlyMovesTheCaretOtherwise) {
  start();
  loadSong();
  auto& window = openTracks();
  auto& list = *window.list();
  ASSERT_GT(Tracks[1].count, 0u);
  pressAt(list, inCheckCell(list, 1));
  EXPECT_EQ(SelectedTrackCount, 1);
  EXPECT_EQ(SelectedTracks[0], 1u);
  EXPECT_EQ(list.caret(), 1);
  ASSERT_EQ(Tracks[3].count, 0u);
  pressAt(list, inCheckCell(list, 3));
  EXPECT_EQ(SelectedTrackCount, 1) << "a track without events is not selected";
  EXPECT_EQ(list.caret(), 3);
  pressAt(list, inName(list, 1));
  EXPECT_EQ(SelectedTrackCount, 1) << "right of the check cell the selection stays";
  EXPECT_EQ(list.caret(), 1);
  list.grab();
  EXPECT_EQ(RecordTrack, 1);
}

TEST_F(TracksWindowTest, WhilePlayingAPressOrSpaceMovesOnlyTheCaret) {
  start();
  loadSong();
  auto& list = *openTracks().list();
  Playing = 1;
  pressAt(list, inCheckCell(list, 1));
  QTest::keyClick(&list, Qt::Key_Space);
  Playing = 0;
  EXPECT_EQ(SelectedTrackCount, 0);
  EXPECT_EQ(list.caret(), 1);
  QTest::keyClick(&list, Qt::Key_Space);
  EXPECT_EQ(SelectedTrackCount, 1) << "stopped, Space toggles the caret's row";
}

TEST_F(TracksWindowTest, TheArrowKeysMoveTheCaretAndWithItTheCurrentTrack) {
  start();
  auto& list = *openTracks().list();
  QTest::keyClick(&list, Qt::Key_Down);
  QTest::keyClick(&list, Qt::Key_Down);
  list.grab();
  EXPECT_EQ(list.caret(), 2);
  EXPECT_EQ(RecordTrack, 2);
  QTest::keyClick(&list, Qt::Key_End);
  list.grab();
  EXPECT_EQ(RecordTrack, 255);
  EXPECT_GT(list.topIndex(), 200) << "the caret's row is scrolled into sight";
  QTest::keyClick(&list, Qt::Key_Up);
  QTest::keyClick(&list, Qt::Key_Home);
  list.grab();
  EXPECT_EQ(RecordTrack, 0);
}

TEST_F(TracksWindowTest, ADoubleClickInTheCheckCellTogglesTwice) {
  start();
  loadSong();
  auto& list = *openTracks().list();
  const QPoint at = inCheckCell(list, 2);
  pressAt(list, at);
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_EQ(SelectedTrackCount, 0);
}

TEST_F(TracksWindowTest, ADoubleClickOnARowOpensDatosAndOkAppliesTheSettingsToThatTrack) {
  start();
  loadSong();
  auto& list = *openTracks().list();
  const QPoint at = inName(list, 3);
  pressAt(list, at);
  answerTheDialog([](QDialog& dialog) {
    field(dialog, ID_TRACK_KEY)->setText(QStringLiteral("7"));
    dialog.findChild<QComboBox*>(QString::number(ID_TRACK_CHANNEL))->setCurrentIndex(5);
    dialog.accept();
  });
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, at);
  EXPECT_EQ(dialogTitle, QStringLiteral("Datos"));
  EXPECT_EQ(RecordTrack, 3);
  EXPECT_EQ(Tracks[3].keyOffset, 7);
  EXPECT_EQ(Tracks[3].channel, 4);
  ASSERT_NE(TrackRowAt(3), nullptr);
  EXPECT_STREQ(TrackRowAt(3)->channel, "5");
}

TEST_F(TracksWindowTest, ARefusedNumberKeepsTheDialogOpenWithItsOldTextSelected) {
  start();
  openTracks();
  answerTheDialog([](QDialog& dialog) {
    QLineEdit* repeats = field(dialog, ID_TRACK_REPEATS);
    repeats->setText(QStringLiteral("65536"));
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible()) << "the dialog stays open";
    EXPECT_EQ(repeats->text(), QStringLiteral("0"));
    EXPECT_EQ(repeats->selectedText(), QStringLiteral("0"));
    dialog.reject();
  });
  frame->command(CMD_TRACK_PROPERTIES);
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Value is not in the range 0 to 65535.");
}

TEST_F(TracksWindowTest, ClosingKeepsTheSelectionAndReopeningMarksTheSameRows) {
  start();
  loadSong();
  auto& list = *openTracks().list();
  pressAt(list, inCheckCell(list, 1));
  frame->command(24365);  // Close all
  deliver();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ASSERT_EQ(TracksOpen, 0u);
  EXPECT_EQ(SelectedTrackCount, 1);
  auto& reopened = *openTracks().list();
  EXPECT_EQ(reopened.selectedItems(), (std::vector<int>{1}));
}

TEST_F(TracksWindowTest, TrackSelectAndDeleteActOnTheCurrentTrack) {
  start();
  loadSong();
  auto& list = *openTracks().list();
  pressAt(list, inName(list, 2));
  list.grab();
  ASSERT_EQ(RecordTrack, 2);
  frame->command(CMD_TRACK_SELECT);
  EXPECT_EQ(list.selectedItems(), (std::vector<int>{2}));
  SongDirty = 0;
  frame->command(CMD_TRACK_DELETE);
  EXPECT_EQ(Tracks[2].count, 0u);
  EXPECT_TRUE(list.selectedItems().empty());
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(TracksWindowTest, AMutedAndATransposedTrackPlayTheFilesNotesWithThoseChanges) {
  startWithoutThru();  // the loopback's input would echo every note back out
  loadSong();
  auto& list = *openTracks().list();
  // Track 1 (Piano) an octave up, track 2 (Bass) muted, through the dialog.
  for (const auto& [row, change] :
       {std::pair<int, std::function<void(QDialog&)>>{0, [](QDialog& d) { field(d, ID_TRACK_KEY)->setText("12"); }},
        {1, [](QDialog& d) { d.findChild<QCheckBox*>(QString::number(ID_TRACK_PLAY))->setChecked(false); }}}) {
    pressAt(list, inName(list, row));
    answerTheDialog([change](QDialog& dialog) {
      change(dialog);
      dialog.accept();
    });
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, inName(list, row));
  }
  ASSERT_EQ(Tracks[0].keyOffset, 12);
  ASSERT_EQ(Tracks[1].playOff, 1);
  // Both views show: the two tracks selected, their events listed below.
  pressAt(list, inCheckCell(list, 0));
  pressAt(list, inCheckCell(list, 1));
  frame->command(CMD_VIEW_EVENTS);
  deliver();
  ASSERT_EQ(EventsOpen, 1u);
  EXPECT_EQ(EventRowCount, EventRowsOf(SelectedTracks.data(), SelectedTrackCount).size());
  devices->clearSent();
  click(101);  // Play
  passes(150);
  click(100);  // Stop
  std::vector<uint32_t> noteOns;
  for (const auto& sent : devices->sent()) {
    if (sent.bytes.empty() && (sent.word & 0xF0) == 0x90 && (sent.word >> 16 & 0x7F) != 0) {
      noteOns.push_back(sent.word & 0xFFFF);
    }
  }
  std::sort(noteOns.begin(), noteOns.end());
  EXPECT_EQ(noteOns, (std::vector<uint32_t>{0x4890, 0x4892, 0x4C90, 0x4F90}))
      << "Piano's 60, 64 and 67 an octave up on channel 1, track 3's 72 on channel 3, no Bass";
}

}  // namespace
