// Pictures of the frame with the Control Panel and of every dialog, written
// into the build folder (screenshots/) to be looked at.
#include <QDir>
#include <cmath>
#include <QFileInfo>
#include <QFontInfo>
#include <QDialog>
#include <QLineEdit>
#include <QMdiSubWindow>

#include "shell/about_dialog.h"
#include "shell/dialogs.h"
#include "generator/bank.h"
#include "generator/boards.h"
#include "generator/banks.h"
#include "shell/generator/banks_window.h"
#include "shell/generator/boards_window.h"
#include "shell/controllers_window.h"
#include "shell/song/events_window.h"
#include "shell/song/lyrics_window.h"
#include "shell/song/region_dialogs.h"
#include "shell/song/transform_dialog.h"
#include "shell/song/tracks_window.h"
#include "song/song_files.h"
#include "song/tracks_manager.h"
#include "shell/generator/control_panel_window.h"
#include "shell/generator/distributions_window.h"
#include "shell/generator/functions_window.h"
#include "generator/functions.h"
#include "generator/functions_window.h"
#include "platform/command_ids.h"
#include "shell/help_viewer.h"
#include "shell_bench.h"

namespace {

class Screenshots : public ShellBench {
 protected:
  QString folder() const { return QStringLiteral(QT_TESTCASE_BUILDDIR "/screenshots"); }

  // Velmora at 1024 by 700 with a multi-track song loaded and only the Tracks manager open.
  void showLoadedSongInTracks() {
    ASSERT_TRUE(QDir().mkpath(folder()));
    start();
    frame->resize(1024, 700);
    frame->takeClientRect();
    frame->command(24365);
    ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_track_names.mid"));
    frame->command(1619);
    deliver();
  }
  // Shows the widget, lets it lay itself out, and writes its picture.
  void shoot(QWidget& widget, const QString& name) {
    widget.show();
    deliver();
    const QString path = folder() + u'/' + name + QStringLiteral(".png");
    ASSERT_TRUE(widget.grab().save(path)) << path.toStdString();
    EXPECT_GT(QFileInfo(path).size(), 1000) << path.toStdString();
  }
};

TEST_F(Screenshots, TheFrameWithTheControlPanelAndEveryDialogArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->takeClientRect();
  frame->command(24365);
  frame->command(1624);
  deliver();
  shoot(*frame, QStringLiteral("frame"));
  for (const auto& [id, name] : {std::pair{105u, "tempo"}, std::pair{109u, "resolution"}, std::pair{102u, "quantizar"},
                                 std::pair{106u, "from"}, std::pair{107u, "to"}, std::pair{108u, "goto"},
                                 std::pair{130u, "seed"}}) {
    auto dialog = shell::MakeFieldDialog(frame.get(), id);
    shoot(*dialog, QString::fromLatin1(name));
  }
  for (const auto& [id, name] : {std::pair{103u, "input-filters"}, std::pair{104u, "output-filters"},
                                 std::pair{101u, "quantize-filters"}}) {
    shell::FilterDialog dialog(frame.get(), id);
    shoot(dialog, QString::fromLatin1(name));
  }
  shell::MeterDialog meter(frame.get());
  shoot(meter, QStringLiteral("meter"));
  shell::MetronomeDialog metronome(frame.get());
  shoot(metronome, QStringLiteral("metronome"));
  shell::DevicesDialog devicesDialog(frame.get());
  shoot(devicesDialog, QStringLiteral("devices"));
  shell::AboutDialog about(frame.get());
  shoot(about, QStringLiteral("about"));
  shell::PitchSelectionDialog pitch(frame.get());
  shoot(pitch, QStringLiteral("pitch-selection"));
}

// The two windows that shape the set-up by hand, with a drawn table (a bell
// over the middle octaves, bounds that leave zones at both ends) and drawn
// curves (a bend that rises and falls, a swell of the volume).
TEST_F(Screenshots, TheDistributionsAndBoardsWindowsArePicturedWithDrawnTablesAndCurves) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->takeClientRect();
  frame->command(24365);
  for (int n = 0; n < NoteEntries; ++n) {
    const double d = (n - 64) / 18.0;
    LiveBank.noteWeights[static_cast<std::size_t>(n)] = static_cast<int16_t>(120 * std::exp(-d * d));
  }
  LiveBank.noteMin = 36;
  LiveBank.noteMax = 96;
  for (int i = 0; i < BoardPoints; ++i) {
    const auto at = static_cast<std::size_t>(i);
    LiveBank.boardCurves[0][at] = static_cast<int16_t>(64 + 50 * std::sin(i * 3.14159 / 64));
    LiveBank.boardCurves[7][at] = static_cast<int16_t>(i < 64 ? 40 + i : 167 - i);
    LiveBank.boardCurves[5][at] = static_cast<int16_t>(i);
    EditCurve[at] = static_cast<int16_t>(64 + 40 * std::cos(i * 3.14159 / 32));
  }
  LiveBank.boardFlags = 1u | 1u << 7;
  frame->command(1623);
  deliver();
  shoot(*frame, QStringLiteral("distributions"));
  frame->command(24365);
  frame->command(1625);
  deliver();
  shoot(*frame, QStringLiteral("boards"));
}

// The Functions window with two functions overlaid on a drawn scratch curve,
// and its settings dialog.
TEST_F(Screenshots, TheFunctionsWindowAndItsSettingsArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->takeClientRect();
  frame->command(24365);
  frame->command(1622);
  deliver();
  for (int i = 0; i < FunctionLength; ++i) ScratchCurve[static_cast<std::size_t>(i)] = static_cast<int8_t>(20 + (i * 3) % 90);
  FunctionViewMask = 1u | 1u << 5;
  RefreshFunctionsWindow(nullptr);
  deliver();
  shoot(*frame, QStringLiteral("functions"));
  shell::FunctionsSettingsDialog dialog(frame.get());
  shoot(dialog, QStringLiteral("functions-settings"));
}

// The Banks window with filled, named and empty slots, and the Bank Name dialog.
TEST_F(Screenshots, TheBanksWindowAndTheBankNameDialogArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->command(24365);
  frame->command(1626);
  deliver();
  auto& window = *static_cast<shell::BanksWindow*>(::BanksWindow);
  for (const int slot : {0, 1, 4}) {
    window.list()->setCurrentRow(slot);
    window.button(500)->click();
  }
  window.list()->setCurrentRow(1);
  inNextDialog([this](QDialog& dialog) {
    dialog.findChild<QLineEdit*>(QStringLiteral("2152"))->setText(QStringLiteral("Strings in fifths"));
    dialog.findChild<QLineEdit*>(QStringLiteral("2152"))->setModified(true);
    shoot(dialog, QStringLiteral("bank-name"));
    dialog.accept();
  });
  window.list()->actions().front()->trigger();
  shoot(*frame, QStringLiteral("banks"));
  for (auto& slot : BankSlots) slot.reset();
}

// The Tracks manager over a loaded song, with one track selected, one given
// settings, and the Tracks dialog.
TEST_F(Screenshots, TheTracksManagerWithALoadedSongAndItsDialogArePictured) {
  showLoadedSongInTracks();
  auto* list = static_cast<shell::TracksListWidget*>(::TracksList);
  list->setSelected(1, true);
  TrackSelectionChanged();
  RecordTrack = 2;
  TrackFields = {"Strings", "+12", "-5", "00001:02:000", "1", "64", "48", "100"};
  ApplyTrackFields(2);
  list->setCurrent(2);
  list->setFocus();
  shoot(*frame, QStringLiteral("tracks"));
  LoadTrackFields();
  shell::TrackDialog dialog(frame.get());
  shoot(dialog, QStringLiteral("track-dialog"));
  TrackFields = {};
}

// Both song views over a loaded song: two tracks selected in the manager, their
// events listed below with a note's row selected, and every event dialog.
TEST_F(Screenshots, TheEventsListWithALoadedSongAndItsDialogsArePictured) {
  showLoadedSongInTracks();
  auto* tracks = static_cast<shell::TracksListWidget*>(::TracksList);
  tracks->setSelected(0, true);
  tracks->setSelected(1, true);
  TrackSelectionChanged();
  frame->command(1620);
  deliver();
  auto* events = static_cast<shell::EventsListWidget*>(::EventsList);
  ASSERT_GT(EventRowCount, 2u);
  events->setCurrent(2);
  events->setFocus();
  shoot(*frame, QStringLiteral("events"));
  std::array<MidiEvent, 2> note{{{480, 0x90, 64, 100, 0, nullptr, 0, 0, 0, 0}, {720, 0x90, 64, 0, 0, nullptr, 0, 0, 0, 0}}};
  note[0].link = &note[1];
  shell::EventDialog noteDialog(frame.get(), DLG_NOTE_EVENT, note[0]);
  shoot(noteDialog, QStringLiteral("event-note"));
  const std::pair<uint32_t, MidiEvent> others[] = {
      {DLG_KEY_AFTERTOUCH_EVENT, {120, 0xA1, 60, 30, 0, nullptr, 0, 0, 0, 0}},
      {DLG_CONTROLLER_EVENT, {240, 0xB0, 7, 100, 0, nullptr, 0, 0, 0, 0}},
      {DLG_PATCH_EVENT, {0, 0xC2, 24, 0, 0, nullptr, 0, 0, 0, 0}},
      {DLG_CHANNEL_AFTERTOUCH_EVENT, {360, 0xD0, 50, 0, 0, nullptr, 0, 0, 0, 0}},
      {DLG_PITCH_WHEEL_EVENT, {600, 0xE0, 0, 80, 0, nullptr, 0, 0, 0, 0}}};
  for (auto [dialogId, event] : others) {
    shell::EventDialog dialog(frame.get(), dialogId, event);
    shoot(dialog, QStringLiteral("event-%1").arg(dialogId));
  }
  shell::InsertEventDialog insert(frame.get());
  shoot(insert, QStringLiteral("event-insert"));
}

// The Edit menu's dialogs: Copy, Cut, Paste and the five transforms.
TEST_F(Screenshots, TheEditDialogsArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  shell::RegionDialog copy(frame.get(), false);
  shoot(copy, QStringLiteral("edit-copy"));
  shell::RegionDialog cut(frame.get(), true);
  shoot(cut, QStringLiteral("edit-cut"));
  shell::PasteDialog paste(frame.get());
  shoot(paste, QStringLiteral("edit-paste"));
  const std::pair<uint32_t, const char*> transforms[] = {{DLG_QUANTIZE, "edit-quantize"},
                                                         {DLG_LENGTH, "edit-length"},
                                                         {DLG_SLIDE, "edit-slide"},
                                                         {DLG_TRANSPOSE, "edit-transpose"},
                                                         {DLG_VELOCITY, "edit-velocity"}};
  for (const auto& [id, name] : transforms) {
    shell::TransformDialog dialog(frame.get(), id);
    shoot(dialog, QString::fromLatin1(name));
  }
}

// The Controllers view with some strips moved, its binding dialog, and the
// Lyrics view mid-song with a syllable highlighted, and its font dialog.
TEST_F(Screenshots, TheControllersAndLyricsWindowsArePictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  start();
  frame->resize(1024, 700);
  frame->takeClientRect();
  frame->command(24365);
  frame->command(CMD_VIEW_CONTROLLERS);
  deliver();
  auto* controllers = static_cast<shell::ControllersWindow*>(frame->client()->activeSubWindow()->widget());
  controllers->sliderWidget(0)->moveMain(64);
  controllers->sliderWidget(1)->moveSecond(40);
  controllers->sliderWidget(9)->moveMain(127);
  BindSlot(*controllers, 10, 10, 2);
  shoot(*frame, QStringLiteral("controllers"));
  shell::ControllerBindingDialog binding(frame.get());
  shoot(binding, QStringLiteral("controllers-binding"));
  frame->command(24365);
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  frame->command(CMD_VIEW_LYRICS);
  deliver();
  auto* lyrics = static_cast<shell::LyricsWindow*>(frame->client()->activeSubWindow()->widget());
  lyrics->field()->setHighlight(3, 6);
  shoot(*frame, QStringLiteral("lyrics"));
  QFont rendered = lyrics->field()->font();
  rendered.setFamily(QFontInfo(rendered).family());
  rendered.setStyleName(QFontInfo(rendered).styleName());
  shell::LyricsFontDialog font(frame.get(), rendered, Qt::black);
  shoot(font, QStringLiteral("lyrics-font"));
}

// Run once as it is and once more with QT_SCALE_FACTOR=1.5 (its own CTest entry).
TEST_F(Screenshots, TheFramePlayingASongWithItsStatusLineIsPictured) {
  showLoadedSongInTracks();
  frame->command(CMD_VIEW_CONTROL_PANEL);
  click(CMD_PLAY);
  passes(20);
  frame->refreshStatus();
  EXPECT_TRUE(frame->statusLine()->text().startsWith(QStringLiteral("Playing · bar ")));
  const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR");
  shoot(*frame, scale == QStringLiteral("1.5") ? QStringLiteral("frame-playing-150") : QStringLiteral("frame-playing"));
  click(CMD_STOP);
}

TEST_F(Screenshots, TheBuiltInHelpViewerIsPictured) {
  ASSERT_TRUE(QDir().mkpath(folder()));
  const QString page = QFileInfo(QStringLiteral(VELMORA_HELP_PAGE)).absoluteFilePath();
  QUrl url = QUrl::fromLocalFile(page);
  url.setFragment(QStringLiteral("window"));
  ASSERT_TRUE(shell::ShowInHelpViewer(url));
  shoot(*shell::TheHelpViewer(), QStringLiteral("help-viewer"));
  shell::TheHelpViewer()->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

}  // namespace
