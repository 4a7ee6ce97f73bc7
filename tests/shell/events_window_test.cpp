// The Events list in the real frame: its rows over a loaded song, picking a
// row with the mouse and the keys, the swallowed input while the transport
// runs, the event dialogs, Insert and Delete, and the follow during play.
#include <QDialog>
#include <QLineEdit>
#include <QMdiSubWindow>
#include <QRadioButton>
#include <functional>

#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "shell/song/events_window.h"
#include "transport/playback_feed.h"
#include "shell/song/tracks_window.h"
#include "song/song_files.h"
#include "shell_bench.h"

namespace {

class EventsWindowTest : public ShellBench {
 protected:
  shell::TracksListWidget& openTracks() {
    frame->command(CMD_VIEW_TRACKS);
    deliver();
    return *static_cast<shell::TracksListWidget*>(::TracksList);
  }
  shell::EventsListWidget& openEvents() {
    frame->command(CMD_VIEW_EVENTS);
    deliver();
    return *static_cast<shell::EventsListWidget*>(::EventsList);
  }
  static void loadSong() { ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_track_names.mid")); }
  // Ticks the check cell of a track in the Tracks manager.
  static void selectTrack(shell::TracksListWidget& tracks, int row) {
    const QPoint at(5, row * tracks.rowHeight() + tracks.rowHeight() / 2);
    QTest::mousePress(tracks.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseRelease(tracks.viewport(), Qt::LeftButton, Qt::NoModifier, at);
  }
  static QPoint inRow(shell::EventsListWidget& list, int row) {
    return {200, (row - list.topIndex()) * list.rowHeight() + list.rowHeight() / 2};
  }
  static void clickRow(shell::EventsListWidget& list, int row) {
    QTest::mousePress(list.viewport(), Qt::LeftButton, Qt::NoModifier, inRow(list, row));
    QTest::mouseRelease(list.viewport(), Qt::LeftButton, Qt::NoModifier, inRow(list, row));
  }
  static void doubleClickRow(shell::EventsListWidget& list, int row) {
    clickRow(list, row);
    QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, inRow(list, row));
  }
  // The song loaded, tracks 1 and 2 selected and both views open.
  shell::EventsListWidget& showTwoTracks() {
    auto& tracks = openTracks();
    selectTrack(tracks, 0);
    selectTrack(tracks, 1);
    return openEvents();
  }
  int firstRowOfKind(int wanted) {
    for (uint32_t r = 0; r < EventRowCount; ++r) {
      int kind = -1;
      EventText(*EventRows[r].event, &kind);
      if (kind == wanted) return static_cast<int>(r);
    }
    return -1;
  }
  static QLineEdit* field(QDialog& dialog, uint32_t id) { return dialog.findChild<QLineEdit*>(QString::number(id)); }
  // Answers the next dialog, keeping its title.
  void answer(std::function<void(QDialog&)> act) {
    inNextDialog([this, act](QDialog& dialog) {
      titles.push_back(dialog.windowTitle());
      act(dialog);
    });
  }
  std::vector<QString> titles;
};

TEST_F(EventsWindowTest, ViewEventsListOpensBelowTheTracksAndShowsTheSelectedTracksRows) {
  start();
  EXPECT_TRUE(menuEnabled(CMD_VIEW_EVENTS));
  loadSong();
  auto& list = showTwoTracks();
  ASSERT_EQ(EventsOpen, 1u);
  QMdiSubWindow* view = frame->client()->activeSubWindow();
  EXPECT_EQ(view->windowTitle(), QStringLiteral("Events List"));
  EXPECT_EQ(view->geometry(), QRect(0, 156, frame->clientRect().width(), frame->clientRect().height() - 156));
  EXPECT_EQ(list.geometry().top(), 27);
  const uint32_t expected = static_cast<uint32_t>(EventRowsOf(SelectedTracks.data(), SelectedTrackCount).size());
  EXPECT_GT(expected, 0u);
  EXPECT_EQ(EventRowCount, expected);
  EXPECT_EQ(list.count(), static_cast<int>(expected));
  EXPECT_TRUE(list.selectedItems().empty());
  EXPECT_GT(EventsRowsInSight, 0u);
  const std::array<int, 9> edges = shell::EventColumnEdges(&list);
  EXPECT_EQ(edges[1], 50);
  EXPECT_EQ(edges[7], 490);
  EXPECT_GE(edges[8], 600);
}

TEST_F(EventsWindowTest, ClosingTheListDropsItsRows) {
  start();
  loadSong();
  showTwoTracks();
  ASSERT_GT(EventRowCount, 0u);
  frame->client()->activeSubWindow()->close();
  deliver();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(EventsOpen, 0u);
  EXPECT_EQ(EventRowCount, 0u);
  EXPECT_TRUE(EventRows.empty());
}

TEST_F(EventsWindowTest, ClickingARowMovesTheSongPositionAndTheCounterToItsTime) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  ASSERT_GT(EventRowCount, 3u);
  clickRow(list, 3);
  EXPECT_EQ(list.selectedItems(), (std::vector<int>{3}));
  const uint32_t time = EventRows[3].event->time;
  EXPECT_EQ(SongPosition.load(), time);
  EXPECT_EQ(TheClock->now.load(), time);
  EXPECT_EQ(bar().counter()->text(), shell::CounterText(time));
}

TEST_F(EventsWindowTest, AnArrowKeyMovesTheRowAndItsReleaseMovesTheCounter) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  clickRow(list, 0);
  QTest::keyPress(&list, Qt::Key_Down);
  EXPECT_EQ(list.selectedItems(), (std::vector<int>{1}));
  EXPECT_EQ(SongPosition.load(), EventRows[0].event->time) << "the press moves the row only";
  QTest::keyRelease(&list, Qt::Key_Down);
  EXPECT_EQ(SongPosition.load(), EventRows[1].event->time);
  QTest::keyClick(&list, Qt::Key_End);
  EXPECT_EQ(SongPosition.load(), EventRows[EventRowCount - 1].event->time);
}

TEST_F(EventsWindowTest, WhileTheSongPlaysClicksAndKeysAreSwallowed) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  clickRow(list, 1);
  Playing = 1;
  clickRow(list, 4);
  QTest::keyClick(&list, Qt::Key_Down);
  QTest::keyClick(&list, Qt::Key_Delete);
  const uint32_t rows = EventRowCount;
  Playing = 0;
  EXPECT_EQ(list.selectedItems(), (std::vector<int>{1}));
  EXPECT_EQ(EventRowCount, rows);
  EXPECT_EQ(SongPosition.load(), EventRows[1].event->time);
  Recording = 1;
  QTest::mouseDClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, inRow(list, 1));
  Recording = 0;
  EXPECT_TRUE(titles.empty()) << "no dialog while recording";
}

TEST_F(EventsWindowTest, ADoubleClickOpensTheRowsOwnDialogAndOkWritesTheEvent) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  const int note = firstRowOfKind(1);
  ASSERT_GE(note, 0);
  MidiEvent* event = EventRows[static_cast<std::size_t>(note)].event;
  answer([](QDialog& dialog) {
    EXPECT_EQ(field(dialog, ID_EVENT_END)->text().size(), 12);
    field(dialog, ID_EVENT_VELOCITY)->setText(QStringLiteral("33"));
    dialog.accept();
  });
  doubleClickRow(list, note);
  ASSERT_EQ(titles.size(), 1u);
  EXPECT_EQ(titles[0], QStringLiteral("Note parameters"));
  EXPECT_EQ(event->value2, 33);
  EXPECT_EQ(SongDirty, 1u);
}

TEST_F(EventsWindowTest, AWrongNoteNameIsRefusedWithThePictureAndTheDialogStaysOpen) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  const int note = firstRowOfKind(1);
  ASSERT_GE(note, 0);
  const uint8_t key = EventRows[static_cast<std::size_t>(note)].event->value1;
  answer([](QDialog& dialog) {
    QLineEdit* name = field(dialog, ID_EVENT_KEY);
    name->setText(QStringLiteral("A#"));
    dialog.accept();
    EXPECT_TRUE(dialog.isVisible());
    EXPECT_EQ(name->text(), QStringLiteral("A#")) << "the text stays as typed";
    EXPECT_EQ(name->selectedText(), QStringLiteral("A#"));
    dialog.reject();
  });
  doubleClickRow(list, note);
  ASSERT_FALSE(prompts.shown().empty());
  EXPECT_EQ(prompts.shown().back().text, "Input does not conform to picture::\nC,C#,D,D#,E,F,F#,G,G#,A,Bb,B");
  EXPECT_EQ(EventRows[static_cast<std::size_t>(note)].event->value1, key);
}

TEST_F(EventsWindowTest, InsertAddsAPatchThroughItsDialogAndTouchesTheCurrentTrack) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  clickRow(list, 0);
  const uint32_t track = static_cast<uint32_t>(EventRows[0].track);
  const uint32_t count = Tracks[track].count;
  RecordTrack = 9;
  answer([this](QDialog& dialog) {
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QString::number(ID_INSERT_TRACK))->text().toUInt(),
              static_cast<uint32_t>(EventRows[0].track) + 1);
    EXPECT_TRUE(dialog.findChild<QRadioButton*>(QString::number(ID_INSERT_FIRST_KIND))->isChecked());
    dialog.findChild<QRadioButton*>(QString::number(ID_INSERT_FIRST_KIND + 3))->setChecked(true);
    answer([](QDialog& patch) {
      field(patch, ID_EVENT_VALUE)->setText(QStringLiteral("42"));
      patch.accept();
    });
    dialog.accept();
  });
  QTest::keyClick(&list, Qt::Key_Insert);
  ASSERT_EQ(titles.size(), 2u);
  EXPECT_EQ(titles[0], QStringLiteral("Event insert"));
  EXPECT_EQ(titles[1], QStringLiteral("Patch parameters"));
  EXPECT_EQ(Tracks[track].count, count + 1);
  EXPECT_NE(TouchedTracks[0] & 1u << 9, 0u) << "RecordTrack is touched";
  EXPECT_GE(firstRowOfKind(4), 0);
}

TEST_F(EventsWindowTest, DeleteTakesTheSelectedRowAway) {
  start();
  loadSong();
  auto& list = showTwoTracks();
  const uint32_t rows = EventRowCount;
  const int note = firstRowOfKind(1);
  ASSERT_GE(note, 0);
  const uint32_t track = static_cast<uint32_t>(EventRows[static_cast<std::size_t>(note)].track);
  const uint32_t count = Tracks[track].count;
  clickRow(list, note);
  QTest::keyClick(&list, Qt::Key_Delete);
  EXPECT_EQ(Tracks[track].count, count - 2) << "the note with its note-off";
  EXPECT_EQ(EventRowCount, rows - 1);
}

TEST_F(EventsWindowTest, AKeptTakeLandsInTheCaretsTrackAndShowsInTheList) {
  startWithoutThru();
  auto& tracks = openTracks();
  const QPoint row4(80, 4 * tracks.rowHeight() + tracks.rowHeight() / 2);
  QTest::mousePress(tracks.viewport(), Qt::LeftButton, Qt::NoModifier, row4);
  tracks.grab();
  ASSERT_EQ(RecordTrack, 4);
  auto& list = openEvents();
  click(104);  // Record
  ASSERT_EQ(Recording, 1u);
  for (int i = 0; i < 2000 && Capturing == 0; ++i) passes(1);  // the count-in
  ASSERT_EQ(Capturing, 1u);
  ASSERT_TRUE(devices->inject(0x647C90));
  passes(20);
  ASSERT_TRUE(devices->inject(0x007C90));
  passes(5);
  prompts.planAnswer(platform::IDYES);
  click(100);  // Stop
  ASSERT_EQ(Recording, 0u);
  ASSERT_EQ(Tracks[4].count, 2u) << "the take went into the caret's track";
  EXPECT_EQ(Tracks[4].events[0].value1, 0x7C);
  selectTrack(tracks, 4);
  ASSERT_EQ(EventRowCount, 1u);
  list.grab();
  EXPECT_EQ(EventText(*EventRows[0].event).substr(0, 13), " 1,Nota,E 10,");
}

TEST_F(EventsWindowTest, TheListFollowsThePlayingSong) {
  startWithoutThru();
  loadSong();
  auto& list = showTwoTracks();
  ASSERT_GT(EventRowCount, 2u);
  click(101);  // Play
  passes(30);
  ASSERT_EQ(Playing, 1u);
  const std::vector<int> during = list.selectedItems();
  ASSERT_EQ(during.size(), 1u);
  EXPECT_GT(during[0], 0) << "the selection went on with the song";
  EXPECT_EQ(static_cast<uint32_t>(during[0]), FeedCursorRow);
  EXPECT_LE(EventRows[static_cast<std::size_t>(during[0]) - 1].event->time, TheClock->now.load());
  click(100);  // Stop
}

}  // namespace
