// The frame as a desktop program: its keyboard shortcuts and the fields that
// keep their keys, the lit transport faces and the status line, the title's
// modified marker, a file given at start-up, and File > Open recent.
#include <QAbstractScrollArea>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QFileInfo>
#include <QMdiSubWindow>
#include <QMenu>
#include <QTemporaryDir>
#include <QTest>

#include "live/status_line.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "shell/application.h"
#include "shell/recent_files.h"
#include "shell/shortcuts.h"
#include "shell/song/lyrics_window.h"
#include "shell_bench.h"
#include "song/song_store.h"
#include "transport/transport_commands.h"

namespace {

class Desktop : public ShellBench {
 protected:
  void startActive() {
    start();
    frame->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(frame.get()));
  }
  // A key as the user presses it, to the widget that has the focus.
  void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QWidget* target = QApplication::focusWidget() != nullptr ? QApplication::focusWidget() : frame.get();
    QTest::keyClick(target, static_cast<Qt::Key>(key), modifiers);
    deliver();
  }
  std::size_t chooserCount() const {
    std::size_t n = 0;
    for (const auto& shown : prompts.shown()) n += shown.kind != platform::ScriptedPrompts::Kind::MessageBox ? 1 : 0;
    return n;
  }
};

TEST_F(Desktop, EveryShortcutIsShownOnItsMenuEntry) {
  start();
  const std::pair<uint32_t, QKeySequence> expected[] = {
      {CMD_KEY_PLAY_STOP, QKeySequence(Qt::Key_Space)},
      {CMD_KEY_RECORD, QKeySequence(Qt::Key_R)},
      {CMD_KEY_GENERATE, QKeySequence(Qt::Key_G)},
      {CMD_GO_TO_BEGINNING, QKeySequence(Qt::Key_Home)},
      {CMD_GO_TO_SONG_END, QKeySequence(Qt::Key_End)},
      {CMD_NEW_SONG, QKeySequence(QStringLiteral("Ctrl+N"))},
      {CMD_OPEN_SONG, QKeySequence(QStringLiteral("Ctrl+O"))},
      {CMD_SAVE_SONG, QKeySequence(QStringLiteral("Ctrl+S"))},
      {CMD_SAVE_SONG_AS, QKeySequence(QStringLiteral("Ctrl+Shift+S"))},
      {CMD_EXIT, QKeySequence(QStringLiteral("Ctrl+Q"))},
      {CMD_HELP_CONTENTS, QKeySequence(Qt::Key_F1)},
      {CMD_COPY, QKeySequence(QKeySequence::Copy)},
      {CMD_CUT, QKeySequence(QKeySequence::Cut)},
      {CMD_PASTE, QKeySequence(QKeySequence::Paste)},
  };
  for (const auto& [id, keys] : expected) EXPECT_EQ(frame->menuAction(id)->shortcut(), keys) << id;
  EXPECT_EQ(frame->menuAction(CMD_KEY_PLAY_STOP)->text(), QStringLiteral("&Play / Stop"));
  EXPECT_EQ(frame->menuAction(CMD_EXIT)->text(), QStringLiteral("&Exit")) << "the labels stay as they were";
}

TEST_F(Desktop, SpacePlaysAndStopsRRecordsAndGTurnsTheGeneratorOnAndOff) {
  startActive();
  press(Qt::Key_Space);
  EXPECT_EQ(Playing, 1u);
  EXPECT_TRUE(bar().button(CMD_PLAY)->isDown());
  press(Qt::Key_Space);
  EXPECT_EQ(Playing, 0u);
  press(Qt::Key_G);
  EXPECT_EQ(Generating, 1u);
  passes(130);
  EXPECT_NE(bar().counter()->text(), QStringLiteral("00001:01:000")) << "the clock runs and the counter moves";
  press(Qt::Key_G);
  EXPECT_EQ(Generating, 0u);
  press(Qt::Key_R);
  EXPECT_EQ(Recording, 1u);
  prompts.planAnswer(platform::IDNO);
  press(Qt::Key_Space);
  EXPECT_EQ(Recording, 0u);
}

TEST_F(Desktop, HomeAndEndMoveTheSongPosition) {
  startActive();
  ASSERT_TRUE(shell::OpenGivenFile(QStringLiteral(VELMORA_TEST_DATA "/format1_lyrics.mid")));
  deliver();
  press(Qt::Key_End);
  EXPECT_GT(SongPosition, 0u);
  EXPECT_EQ(SongPosition, SongEnd());
  press(Qt::Key_Home);
  EXPECT_EQ(SongPosition, 0u);
  EXPECT_EQ(bar().counter()->text(), QStringLiteral("00001:01:000"));
}

TEST_F(Desktop, TheTracksListKeepsSpaceOnlyWhileItCanSelectTheTrack) {
  startActive();
  frame->command(CMD_VIEW_TRACKS);
  deliver();
  QWidget* list = frame->client()->activeSubWindow()->widget()->findChild<QAbstractScrollArea*>();
  ASSERT_NE(list, nullptr);
  list->setFocus();
  press(Qt::Key_Space);
  EXPECT_EQ(Playing, 1u) << "the caret's track is empty: Space plays";
  press(Qt::Key_Space);
  EXPECT_EQ(Playing, 0u) << "and stops, though the list has the focus";
}

TEST_F(Desktop, AHeldTransportKeyPressesItsButtonOnce) {
  start();
  for (const uint32_t id : {CMD_KEY_PLAY_STOP, CMD_KEY_RECORD, CMD_KEY_GENERATE}) {
    EXPECT_FALSE(frame->menuAction(id)->autoRepeat()) << id;
  }
}

TEST_F(Desktop, CtrlKeysOpenSaveAndSaveAsF1OpensHelpAndCtrlQQuits) {
  startActive();
  int helps = 0;
  QObject::connect(frame->menuAction(CMD_HELP_CONTENTS), &QAction::triggered, [&helps] { ++helps; });
  press(Qt::Key_F1);
  EXPECT_EQ(helps, 1);
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window != frame.get() && window->isVisible()) window->close();
  }
  frame->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(frame.get()));
  const std::size_t boxes = prompts.shown().size() - chooserCount();
  press(Qt::Key_O, Qt::ControlModifier);
  ASSERT_EQ(chooserCount(), 1u);
  EXPECT_EQ(prompts.shown().back().text, "Open");
  EXPECT_EQ(prompts.shown().size() - chooserCount(), boxes);
  press(Qt::Key_S, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_EQ(chooserCount(), 2u);
  EXPECT_EQ(prompts.shown().back().text, "Save as");
  press(Qt::Key_Q, Qt::ControlModifier);
  EXPECT_FALSE(frame->isVisible());
}

TEST_F(Desktop, KeysTypedInATextFieldStayInTheField) {
  startActive();
  frame->command(CMD_VIEW_LYRICS);
  deliver();
  auto* lyrics = static_cast<shell::LyricsWindow*>(frame->client()->activeSubWindow()->widget());
  lyrics->field()->setFocus();
  ASSERT_TRUE(shell::IsTextField(QApplication::focusWidget()));
  press(Qt::Key_R);
  press(Qt::Key_Space);
  press(Qt::Key_G);
  press(Qt::Key_O, Qt::ControlModifier);
  EXPECT_EQ(Recording, 0u) << "typing r in a field does not record";
  EXPECT_EQ(Playing, 0u);
  EXPECT_EQ(Generating, 0u);
  EXPECT_EQ(chooserCount(), 0u);
  EXPECT_EQ(lyrics->field()->toPlainText(), QStringLiteral("r g"));
}

TEST_F(Desktop, TheRunningControlsAreLitAndTheStatusLineSaysWhatRuns) {
  startActive();
  frame->refreshStatus();
  EXPECT_EQ(frame->statusLine()->text(), QStringLiteral("Stopped · bar 1, beat 1 · Out: Velmora Loopback"));
  click(CMD_PLAY);
  frame->refreshStatus();
  EXPECT_TRUE(bar().button(CMD_PLAY)->isLit());
  EXPECT_FALSE(bar().button(CMD_PLAY)->isEnabled()) << "lit, though its command is disabled";
  EXPECT_TRUE(frame->statusLine()->text().startsWith(QStringLiteral("Playing · bar ")));
  EXPECT_TRUE(frame->statusLine()->text().endsWith(QStringLiteral(" · Out: Velmora Loopback")));
  click(CMD_GENERATE);
  frame->refreshStatus();
  EXPECT_TRUE(frame->statusLine()->text().startsWith(QStringLiteral("Playing, Generating · ")));
  EXPECT_TRUE(bar().button(CMD_GENERATE)->isLit());
  click(CMD_GENERATE);
  click(CMD_STOP);
  frame->refreshStatus();
  EXPECT_FALSE(bar().button(CMD_PLAY)->isLit());
  click(CMD_RECORD);
  frame->refreshStatus();
  EXPECT_TRUE(bar().button(CMD_RECORD)->isLit());
  EXPECT_TRUE(frame->statusLine()->text().startsWith(QStringLiteral("Recording · ")));
  click(CMD_STOP);
  click(CMD_MIDI_SYNC);
  click(CMD_PLAY);
  frame->refreshStatus();
  EXPECT_TRUE(WaitingForMidiClock());
  EXPECT_TRUE(bar().button(CMD_MIDI_SYNC)->isLit());
  EXPECT_TRUE(frame->statusLine()->text().startsWith(QStringLiteral("Waiting for MIDI clock, Playing · ")));
  click(CMD_STOP);
}

TEST_F(Desktop, TheTitleShowsTheModifiedMarkerOnlyWhileTheSongHasChanged) {
  start();
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [No name]"));
  SongDirty = 1;
  frame->refreshStatus();
  EXPECT_TRUE(frame->isWindowModified());
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [No name][*]"));
  SongDirty = 0;
  frame->refreshStatus();
  EXPECT_FALSE(frame->isWindowModified());
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [No name]"));
}

TEST(FileArgument, TheFirstArgumentThatIsNoOptionNamesTheFile) {
  EXPECT_EQ(shell::FileArgument({"velmora", "song.mid"}), QStringLiteral("song.mid"));
  EXPECT_EQ(shell::FileArgument({"velmora", "-platform", "song.mid"}), QStringLiteral("song.mid"));
  EXPECT_EQ(shell::FileArgument({"velmora"}), QString());
}

TEST_F(Desktop, ASongGivenAtStartUpOpensWithItsNameInTheTitleAndJoinsTheRecentFiles) {
  install();
  const QString song = QStringLiteral(VELMORA_TEST_DATA "/format1_lyrics.mid");
  frame = shell::StartVelmora({.splash = false, .maximized = false, .file = song});
  ASSERT_NE(frame, nullptr);
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [format1_lyrics.mid]"));
  EXPECT_GT(ActiveTrackCount, 1);
  EXPECT_EQ(shell::RecentFiles().value(0), QFileInfo(song).absoluteFilePath());
}

TEST_F(Desktop, OpenRecentListsTheLastEightNewestFirstAndOpensOne) {
  start();
  QTemporaryDir dir;
  QStringList made;
  for (int n = 0; n < 10; ++n) {
    const QString path = dir.filePath(QStringLiteral("take%1.mid").arg(n));
    QFile::copy(QStringLiteral(VELMORA_TEST_DATA "/format1_lyrics.mid"), path);
    shell::AddRecentFile(path);
    made.prepend(path);
  }
  EXPECT_EQ(shell::RecentFiles(), made.mid(0, 8));
  emit frame->recentMenu()->aboutToShow();
  const QList<QAction*> entries = frame->recentMenu()->actions();
  ASSERT_EQ(entries.size(), 8);
  EXPECT_EQ(entries[0]->text(), QStringLiteral("&1 take9.mid"));
  entries[3]->trigger();
  deliver();
  EXPECT_EQ(frame->windowTitle(), QStringLiteral("Velmora - [take6.mid]"));
  EXPECT_EQ(shell::RecentFiles().value(0), made[3]) << "the file opened comes first";
}

TEST_F(Desktop, AnOpenCancelledAtTheQuestionAboutChangesDoesNotJoinOpenRecent) {
  start();
  QTemporaryDir dir;
  const QString song = dir.filePath(QStringLiteral("kept-out.mid"));
  QFile::copy(QStringLiteral(VELMORA_TEST_DATA "/format1_lyrics.mid"), song);
  SongDirty = 1;
  prompts.planFile(song.toStdString());
  prompts.planAnswer(platform::IDCANCEL);
  frame->command(CMD_OPEN_SONG);
  deliver();
  EXPECT_EQ(SongDirty, 1u) << "the song and its changes stay";
  EXPECT_FALSE(shell::RecentFiles().contains(QFileInfo(song).absoluteFilePath()));
  SongDirty = 0;
}

TEST_F(Desktop, AGivenFileWaitsForTheTransportAndOneThatCannotBeReadKeepsTheChangesMarked) {
  start();
  const QString song = QStringLiteral(VELMORA_TEST_DATA "/format1_lyrics.mid");
  click(CMD_PLAY);
  ASSERT_EQ(Playing, 1u);
  EXPECT_FALSE(shell::OpenGivenFile(song)) << "not while the song plays";
  click(CMD_STOP);
  SongDirty = 1;
  prompts.planAnswer(platform::IDNO);  // do not save: go on
  EXPECT_FALSE(shell::OpenGivenFile(QStringLiteral("/nonexistent/gone.mid")));
  EXPECT_EQ(SongDirty, 1u) << "nothing was loaded, so the song's changes are still unsaved";
  SongDirty = 0;
}

TEST_F(Desktop, AFocusedComboBoxKeepsItsPlainKeysButNotTheCtrlShortcuts) {
  startActive();
  auto* combo = new QComboBox(frame->controlBar());
  combo->addItems({QStringLiteral("Grand"), QStringLiteral("Glock")});
  combo->show();
  combo->setFocus();
  press(Qt::Key_G);
  EXPECT_EQ(Generating, 0u) << "G picks an item of the box";
  press(Qt::Key_O, Qt::ControlModifier);
  EXPECT_EQ(chooserCount(), 1u) << "Ctrl+O still opens";
  delete combo;
}

}  // namespace
