// The Distributions and Boards windows in the real frame: strokes drawn with
// the mouse, read back from the window's pixels and from the set-up, and what
// the generator then plays on the loopback output.
#include <QDir>
#include <QMdiSubWindow>
#include <QMouseEvent>
#include <QPushButton>
#include <QRadioButton>
#include <algorithm>

#include "generator/bank.h"
#include "generator/boards.h"
#include "generator/distributions.h"
#include "midi/transport_words.h"
#include "shell/generator/boards_window.h"
#include "shell/generator/control_panel_window.h"
#include "shell/generator/distributions_window.h"
#include "shell/generator/functions_window.h"
#include "generator/functions.h"
#include "generator/functions_window.h"
#include <QCheckBox>
#include <QLineEdit>
#include "shell_bench.h"

namespace {

const QColor Black(0, 0, 0), White(255, 255, 255), Blue(0, 0, 255), Yellow(255, 255, 0), Red(255, 0, 0),
    Face(192, 192, 192), InvertedFace(63, 63, 63);

class CurveWindows : public ShellBench {
 protected:
  shell::DistributionsWindow& openDistributions() {
    frame->command(1623);
    deliver();
    return *static_cast<shell::DistributionsWindow*>(::DistributionsWindow);
  }
  shell::FunctionsWindow& openFunctions() {
    frame->command(1622);
    deliver();
    return *static_cast<shell::FunctionsWindow*>(::FunctionsWindow);
  }
  shell::BoardsWindow& openBoards() {
    frame->command(1625);
    deliver();
    return *static_cast<shell::BoardsWindow*>(::BoardsWindow);
  }
  // A move of the pointer with buttons and keys held, as the window receives it.
  static void move(QWidget& widget, QPoint at, Qt::MouseButtons buttons = Qt::LeftButton,
                   Qt::KeyboardModifiers keys = Qt::NoModifier) {
    QMouseEvent event(QEvent::MouseMove, QPointF(at), widget.mapToGlobal(QPointF(at)), Qt::NoButton, buttons, keys);
    QApplication::sendEvent(&widget, &event);
  }
  static void press(QWidget& widget, QPoint at, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mousePress(&widget, button, Qt::NoModifier, at);
    QTest::mouseRelease(&widget, button, Qt::NoModifier, at);
  }
  static QColor pixel(QWidget& widget, int x, int y) { return widget.grab().toImage().pixelColor(x, y); }
  // The x of a Notes entry's bar and the y of a weight.
  static int barX(int entry) { return 60 + entry * 4 + 2; }
  static int weightY(int weight) { return 50 + 127 - weight; }
  std::vector<uint32_t> channelMessages() const {
    std::vector<uint32_t> words;
    for (const auto& sent : devices->sent()) {
      if (sent.bytes.empty() && (sent.word & 0xFF) >= 0x80 && (sent.word & 0xFF) < 0xF0) words.push_back(sent.word);
    }
    return words;
  }
};

// ---- Distributions ----

TEST_F(CurveWindows, ViewDistributionsOpensAtTheClientsWidthAnd278HighAndOnlyOnce) {
  start();
  EXPECT_TRUE(menuEnabled(1623));
  EXPECT_TRUE(menuEnabled(1625));
  openDistributions();
  ASSERT_EQ(DistributionsOpen, 1u);
  QMdiSubWindow* child = frame->client()->activeSubWindow();
  ASSERT_NE(child, nullptr);
  EXPECT_EQ(child->windowTitle(), QStringLiteral("Distributions"));
  EXPECT_EQ(child->geometry(), QRect(0, 0, frame->clientRect().width(), 278));
  const auto count = frame->client()->subWindowList().size();
  frame->command(1623);
  deliver();
  EXPECT_EQ(frame->client()->subWindowList().size(), count);
  child->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(DistributionsOpen, 0u);
}

TEST_F(CurveWindows, TheControlPanelsDistributionsButtonOpensTheWindow) {
  start();
  auto& panel = *static_cast<shell::ControlPanelWindow*>(::ControlPanelWindow);
  QTest::mouseClick(panel.button(405), Qt::LeftButton);
  deliver();
  EXPECT_EQ(DistributionsOpen, 1u);
}

TEST_F(CurveWindows, TheWindowHasItsButtonsLabelsAndTheNotesViewChecked) {
  start();
  auto& window = openDistributions();
  const std::pair<uint32_t, const char*> buttons[] = {
      {200, "Notes"}, {201, "Velocity"}, {204, "Voices"}, {203, "Density"}, {202, "Length"}};
  int x = 200;
  for (const auto& [id, text] : buttons) {
    ASSERT_NE(window.viewButton(id), nullptr) << id;
    EXPECT_EQ(window.viewButton(id)->text(), QString::fromLatin1(text));
    EXPECT_EQ(window.viewButton(id)->geometry(), QRect(x, 218, 84, 27));
    x += 84;
  }
  EXPECT_TRUE(window.viewButton(200)->isChecked());
  EXPECT_EQ(window.fileButton(402)->pos(), QPoint(8, 4));
  EXPECT_EQ(window.fileButton(403)->pos(), QPoint(31, 4));
  EXPECT_EQ(window.label(2552)->text(), QStringLiteral("Notes"));
  EXPECT_EQ(window.label(2550)->geometry(), QRect(5, 223, 44, 18));
  EXPECT_EQ(window.label(2552)->geometry(), QRect(119, 223, 66, 18));
}

TEST_F(CurveWindows, AViewButtonShowsItsTableAndTitleAndARefreshChecksNotesAgain) {
  start();
  auto& window = openDistributions();
  QTest::mouseClick(window.viewButton(204), Qt::LeftButton);
  deliver();
  EXPECT_EQ(ShownView, VoicesView);
  EXPECT_EQ(window.label(2552)->text(), QStringLiteral("Voices"));
  EXPECT_TRUE(window.viewButton(204)->isChecked());
  EXPECT_FALSE(window.viewButton(200)->isChecked());
  EXPECT_EQ(pixel(window, 554, 100), White) << "entry 32, above the Voices bounds 1..1, ends at x 555";
  EXPECT_EQ(pixel(window, 555, 100), Face);
  RefreshDistributions(nullptr);
  deliver();
  EXPECT_EQ(ShownView, NotesView);
  EXPECT_TRUE(window.viewButton(200)->isChecked());
  EXPECT_EQ(window.label(2552)->text(), QStringLiteral("Notes"));
}

TEST_F(CurveWindows, TheBarsAreBlueUnderAYellowPointOnBlack) {
  start();
  auto& window = openDistributions();
  EXPECT_EQ(pixel(window, barX(10), weightY(64) - 1), Black);
  EXPECT_EQ(pixel(window, barX(10), weightY(64)), Yellow);
  EXPECT_EQ(pixel(window, barX(10), weightY(64) + 1), Blue);
  EXPECT_EQ(pixel(window, barX(10), 177), Blue);
  EXPECT_EQ(pixel(window, barX(10) + 1, 150), Black) << "between bars the plot is black";
}

TEST_F(CurveWindows, AStrokeSetsTheWeightUnderEachReportedPointWithoutFillingTheGaps) {
  start();
  auto& window = openDistributions();
  press(window, QPoint(barX(20), weightY(100)));
  EXPECT_EQ(LiveBank.noteWeights[20].load(), 100);
  move(window, QPoint(barX(21), weightY(110)));
  move(window, QPoint(barX(25), weightY(120)));
  EXPECT_EQ(LiveBank.noteWeights[21].load(), 110);
  EXPECT_EQ(LiveBank.noteWeights[25].load(), 120);
  EXPECT_EQ(LiveBank.noteWeights[23].load(), 64) << "no interpolation";
  EXPECT_EQ(window.label(2550)->text(), QStringLiteral("x:25"));
  EXPECT_EQ(window.label(2551)->text(), QStringLiteral("y:120"));
  EXPECT_EQ(pixel(window, barX(25), weightY(120)), Yellow);
  EXPECT_EQ(pixel(window, barX(25), weightY(120) - 1), Black);
  EXPECT_EQ(pixel(window, barX(25), weightY(64)), Blue);
  EXPECT_EQ(NoteSum.load(), 125 * 64 + 100 + 110 + 120);
}

TEST_F(CurveWindows, APressLeavesTheLabelsAndAnotherButtonOrKeyStopsTheDrawing) {
  start();
  auto& window = openDistributions();
  press(window, QPoint(barX(3), weightY(7)));
  EXPECT_EQ(window.label(2550)->text(), QString()) << "a press does not touch the labels";
  move(window, QPoint(barX(4), weightY(9)), Qt::LeftButton, Qt::ShiftModifier);
  move(window, QPoint(barX(5), weightY(9)), Qt::LeftButton | Qt::RightButton);
  move(window, QPoint(barX(6), weightY(9)), Qt::LeftButton, Qt::ControlModifier);
  move(window, QPoint(barX(7), weightY(9)), Qt::NoButton);
  for (int entry = 4; entry <= 7; ++entry) EXPECT_EQ(LiveBank.noteWeights[entry].load(), 64) << entry;
  EXPECT_EQ(window.label(2550)->text(), QStringLiteral("x:7")) << "the numbers still follow";
  press(window, QPoint(barX(8), weightY(9)), Qt::RightButton);
  EXPECT_EQ(LiveBank.noteWeights[8].load(), 64);
}

TEST_F(CurveWindows, APointerOutsideThePlotDoesNothingNotEvenClearTheLabels) {
  start();
  auto& window = openDistributions();
  move(window, QPoint(barX(1), weightY(1)), Qt::NoButton);
  move(window, QPoint(572, 100));
  move(window, QPoint(100, 178));
  press(window, QPoint(572, 100));
  EXPECT_EQ(window.label(2550)->text(), QStringLiteral("x:1"));
  EXPECT_EQ(LiveBank.noteWeights[127].load(), 64);
}

TEST_F(CurveWindows, TheZonesOutsideTheBoundsAreInvertedAndARedrawThereLeavesTheYellowPoint) {
  start();
  LiveBank.noteMin = 10;
  LiveBank.noteMax = 100;
  auto& window = openDistributions();
  const int x = barX(5);
  EXPECT_EQ(pixel(window, x, weightY(64) - 1), White) << "black inverted";
  EXPECT_EQ(pixel(window, x, weightY(64)), Blue) << "yellow inverted";
  EXPECT_EQ(pixel(window, x, weightY(64) + 1), Yellow) << "blue inverted";
  EXPECT_EQ(pixel(window, barX(10), weightY(64) + 1), Blue) << "the bounds are the edges of the normal area";
  EXPECT_EQ(pixel(window, barX(101), weightY(64) + 1), Yellow);
  press(window, QPoint(x, weightY(30)));
  EXPECT_EQ(pixel(window, x, weightY(30)), Yellow) << "the one-bar redraw keeps the point yellow in a zone";
  EXPECT_EQ(pixel(window, x, weightY(30) - 1), White);
  EXPECT_EQ(pixel(window, x, weightY(30) + 1), Yellow);
  window.refresh();
  deliver();
  EXPECT_EQ(pixel(window, x, weightY(30)), Blue) << "a full paint shows it blue";
}

TEST_F(CurveWindows, CrossedBoundsInvertTheOverlapTwice) {
  start();
  LiveBank.noteMin = 30;
  LiveBank.noteMax = 10;
  auto& window = openDistributions();
  EXPECT_EQ(pixel(window, barX(20), weightY(64) + 1), Blue) << "in both zones: inverted twice";
  EXPECT_EQ(pixel(window, barX(5), weightY(64) + 1), Yellow);
  EXPECT_EQ(pixel(window, barX(40), weightY(64) + 1), Yellow);
  press(window, QPoint(barX(20), weightY(30)));
  EXPECT_EQ(pixel(window, barX(20), weightY(30) + 1), Blue) << "the redraw in the overlap draws it plain";
}

TEST_F(CurveWindows, TheCursorMarksInvertWhatIsUnderThemAndFollowThePointer) {
  start();
  auto& window = openDistributions();
  // At first in the middle of the plot: x 316, y 114.
  EXPECT_EQ(pixel(window, 316, 180), InvertedFace);
  EXPECT_EQ(pixel(window, 45, 114), InvertedFace);
  move(window, QPoint(barX(7) + 1, 70), Qt::NoButton);
  EXPECT_EQ(pixel(window, 316, 180), Face) << "the old mark is drawn over";
  EXPECT_EQ(pixel(window, 45, 114), Face);
  EXPECT_EQ(pixel(window, barX(7), 180), InvertedFace) << "the new one snaps to the bar";
  EXPECT_EQ(pixel(window, 45, 70), InvertedFace);
  EXPECT_EQ(LiveBank.noteWeights[7].load(), 64) << "a move without the button draws nothing";
}

TEST_F(CurveWindows, TheAxesCarryTicksAndNumbers) {
  start();
  auto& window = openDistributions();
  const int axis = 178 + 20;
  EXPECT_EQ(pixel(window, barX(10), axis - 11), Black) << "a 12-pixel tick at every tenth entry";
  EXPECT_EQ(pixel(window, barX(10), axis - 12), Face);
  EXPECT_EQ(pixel(window, barX(15), axis - 7), Black) << "8 pixels at every fifth";
  EXPECT_EQ(pixel(window, barX(15), axis - 8), Face);
  EXPECT_EQ(pixel(window, barX(13), axis), Black) << "1 pixel elsewhere";
  EXPECT_EQ(pixel(window, barX(13), axis - 1), Face);
  const int weight110 = 50 + 17;  // v 18: (18 + 2) % 20 == 0, the number 110
  EXPECT_EQ(pixel(window, 41, weight110), Black);
  EXPECT_EQ(pixel(window, 42, weight110), Face);
}

TEST_F(CurveWindows, FocusReadsTheBoundsBackFromTheSetUp) {
  start();
  auto& window = openDistributions();
  EXPECT_EQ(pixel(window, barX(5), 177), Blue);
  LiveBank.noteMin = 10;  // as a function step moves it
  EXPECT_EQ(ShownMin, 0);
  QFocusEvent focus(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
  QApplication::sendEvent(&window, &focus);
  deliver();
  EXPECT_EQ(ShownMin, 10);
  EXPECT_EQ(pixel(window, barX(5), 177), Yellow);
}

TEST_F(CurveWindows, ThePitchModeRetitlesTheNotesButtonAndTheLabel) {
  start();
  auto& window = openDistributions();
  shell::PitchSelectionDialog dialog(frame.get());
  dialog.intervalMode()->setChecked(true);
  dialog.accept();
  deliver();
  EXPECT_EQ(window.viewButton(200)->text(), QStringLiteral("Intervals"));
  EXPECT_EQ(window.label(2552)->text(), QStringLiteral("Intervals"));
  QTest::mouseClick(window.viewButton(201), Qt::LeftButton);
  shell::PitchSelectionDialog back(frame.get());
  back.noteMode()->setChecked(true);
  back.accept();
  deliver();
  EXPECT_EQ(window.viewButton(200)->text(), QStringLiteral("Notes"));
  EXPECT_EQ(window.label(2552)->text(), QStringLiteral("Velocity")) << "another view keeps its title";
}

TEST_F(CurveWindows, LoadAndSaveGoThroughTheFileDialogs) {
  start();
  auto& window = openDistributions();
  const std::string file = QDir::temp().filePath(QStringLiteral("velmora-notes-window.bin")).toStdString();
  press(window, QPoint(barX(0), weightY(1)));
  prompts.planFile(file);
  QTest::mouseClick(window.fileButton(403), Qt::LeftButton);
  press(window, QPoint(barX(0), weightY(99)));
  prompts.planFile(file);
  QTest::mouseClick(window.fileButton(402), Qt::LeftButton);
  deliver();
  EXPECT_EQ(LiveBank.noteWeights[0].load(), 1);
  EXPECT_EQ(pixel(window, barX(0), weightY(1)), Yellow);
  std::remove(file.c_str());
}

TEST_F(CurveWindows, ATableOfOnlyCEAndGPlaysOnlyCEAndG) {
  start();
  auto& window = openDistributions();
  press(window, QPoint(barX(0), 177));
  for (int entry = 0; entry < NoteEntries; ++entry) move(window, QPoint(barX(entry), 177));
  ASSERT_EQ(NoteSum.load(), 0);
  for (int entry = 0; entry < NoteEntries; ++entry) {
    if (entry % 12 == 0 || entry % 12 == 4 || entry % 12 == 7) press(window, QPoint(barX(entry), weightY(127)));
  }
  devices->clearSent();
  click(200);  // the die
  passes(400);
  click(200);
  int ons = 0;
  for (const uint32_t word : channelMessages()) {
    if ((word & 0xF0) != 0x90 || (word >> 16 & 0xFF) == 0) continue;
    ++ons;
    const uint32_t note = word >> 8 & 0x7F;
    EXPECT_TRUE(note % 12 == 0 || note % 12 == 4 || note % 12 == 7) << "note " << note;
  }
  EXPECT_GT(ons, 10);
}

// ---- Boards ----

TEST_F(CurveWindows, ViewBoardsOpensWithItsThumbnailsButtonsAndLabels) {
  start();
  EditCurve.fill(0);
  LiveBank.boardFlags = 1u << 6;
  auto& window = openBoards();
  ASSERT_EQ(BoardsOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, frame->clientRect().width(), 278));
  EXPECT_EQ(window.button(301)->geometry(), QRect(154, 80, 36, 12));
  EXPECT_EQ(window.button(350)->geometry(), QRect(202, 80, 36, 12));
  EXPECT_EQ(window.button(310)->geometry(), QRect(474, 176, 36, 12));
  EXPECT_TRUE(window.button(356)->isDown()) << "the on buttons follow the flags";
  EXPECT_FALSE(window.button(355)->isDown());
  EXPECT_EQ(window.label(3000)->geometry(), QRect(10, 148, 58, 18));
  EXPECT_EQ(window.label(3001)->geometry(), QRect(80, 148, 58, 18));
  EXPECT_EQ(pixel(window, 20, 10 + 127), Red) << "the edit curve starts at 0";
  EXPECT_EQ(pixel(window, 20, 10 + 126), Black);
  EXPECT_EQ(pixel(window, 158 + 10, 10 + 63), Red) << "a thumbnail of a curve at 0";
}

TEST_F(CurveWindows, AStrokeInTheEditAreaDrawsTheCurveAndStoreCopiesItIntoTheBoard) {
  start();
  EditCurve.fill(0);
  auto& window = openBoards();
  press(window, QPoint(10 + 5, 10 + 27));
  move(window, QPoint(10 + 6, 10 + 20));
  move(window, QPoint(10 + 9, 10 + 10), Qt::LeftButton, Qt::AltModifier);
  EXPECT_EQ(EditCurve[5], 100);
  EXPECT_EQ(EditCurve[6], 107);
  EXPECT_EQ(EditCurve[9], 0) << "a key held stops the drawing";
  EXPECT_EQ(window.label(3000)->text(), QStringLiteral("x:9"));
  EXPECT_EQ(window.label(3001)->text(), QStringLiteral("y:117"));
  EXPECT_EQ(pixel(window, 16, 30), Red);
  EXPECT_EQ(pixel(window, 16, 137), Black) << "the column is drawn again";
  QTest::mouseClick(window.button(303), Qt::LeftButton);
  deliver();
  EXPECT_EQ(LiveBank.boardCurves[2][6].load(), 107);
  const QRect thumb(318, 10, 64, 64);
  EXPECT_EQ(pixel(window, thumb.left() + 3, thumb.top() + (127 - 107) / 2), Red);
}

TEST_F(CurveWindows, ADoubleClickOnAThumbnailPicksItsCurveUpAndElsewhereDoesNothingMore) {
  start();
  for (int i = 0; i < BoardPoints; ++i) LiveBank.boardCurves[8][static_cast<std::size_t>(i)] = static_cast<int16_t>(i);
  EditCurve.fill(0);
  auto& window = openBoards();
  QTest::mouseDClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(398 + 30, 106 + 30));
  deliver();
  EXPECT_EQ(EditCurve[77], 77);
  EXPECT_EQ(pixel(window, 10 + 77, 10 + 127 - 77), Red);
  press(window, QPoint(10 + 3, 10 + 27));
  EXPECT_EQ(EditCurve[3], 100) << "the press before it draws";
  EditCurve[3] = 5;
  QTest::mouseDClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(10 + 3, 10 + 27));
  EXPECT_EQ(EditCurve[3], 5) << "the double click itself draws nothing";
}

TEST_F(CurveWindows, APitchBoardRaisesTheOtherAndItsResetsGoOutAtOnce) {
  startWithoutThru();
  auto& window = openBoards();
  QTest::mouseClick(window.button(351), Qt::LeftButton);
  QTest::mouseClick(window.button(355), Qt::LeftButton);
  devices->clearSent();
  QTest::mouseClick(window.button(353), Qt::LeftButton);
  deliver();
  EXPECT_FALSE(window.button(351)->isDown());
  EXPECT_TRUE(window.button(353)->isDown());
  EXPECT_TRUE(window.button(355)->isDown());
  EXPECT_EQ(LiveBank.boardFlags.load(), (1u << 3) | (1u << 5));
  EXPECT_EQ(SelectedPitchBoard.load(), 3);
  const std::vector<uint32_t> sent = channelMessages();
  ASSERT_EQ(sent.size(), 32u) << "pitch wheel centre and mod wheel 0 on 16 channels";
  EXPECT_EQ(sent[0], 0x4000EFu) << "channel 16 first";
  EXPECT_EQ(sent[1], 0x0001BFu);
  EXPECT_EQ(sent[31], 0x0001B0u);
}

TEST_F(CurveWindows, ClearAndRefreshSetTheOnButtonsOfAnOpenWindow) {
  start();
  auto& window = openBoards();
  QTest::mouseClick(window.button(357), Qt::LeftButton);
  ClearBoards(nullptr);
  deliver();
  EXPECT_FALSE(window.button(357)->isDown());
  PendingBoardFlags = (1u << 2) | (1u << 9);
  RefreshBoards(nullptr);
  deliver();
  EXPECT_TRUE(window.button(352)->isDown());
  EXPECT_TRUE(window.button(359)->isDown());
}

TEST_F(CurveWindows, AStoreWhileGeneratingChangesTheNextChordsBoardMessages) {
  start();
  auto& window = openBoards();
  QTest::mouseClick(window.button(355), Qt::LeftButton);  // Mod Wheel on
  click(200);
  passes(300);
  auto modWheels = [&] {
    std::vector<uint32_t> values;
    for (const uint32_t word : channelMessages()) {
      if ((word & 0xF0) == 0xB0 && (word >> 8 & 0x7F) == 1) values.push_back(word >> 16 & 0x7F);
    }
    return values;
  };
  const auto before = modWheels();
  ASSERT_FALSE(before.empty());
  for (const uint32_t value : before) EXPECT_EQ(value, 0u) << "a board never drawn sends 0";
  press(window, QPoint(10, 10 + 27));
  for (int column = 1; column < BoardPoints; ++column) move(window, QPoint(10 + column, 10 + 27));
  QTest::mouseClick(window.button(306), Qt::LeftButton);
  devices->clearSent();
  passes(300);
  click(200);
  const auto after = modWheels();
  EXPECT_NE(std::find(after.begin(), after.end(), 100u), after.end()) << "the stored curve plays at once";
}

// ---- Functions ----

TEST_F(CurveWindows, ViewFunctionsOpensAt235HighWithItsControls) {
  start();
  EXPECT_TRUE(menuEnabled(1622));
  auto& window = openFunctions();
  ASSERT_EQ(FunctionsOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, frame->clientRect().width(), 235));
  EXPECT_EQ(window.button(301)->geometry(), QRect(154, 80, 36, 12));
  EXPECT_EQ(window.button(359)->geometry(), QRect(522, 176, 36, 12));
  EXPECT_EQ(window.scroll()->geometry(), QRect(117, 145, 22, 22));
  EXPECT_EQ(window.button(402)->pos(), QPoint(8, 144));
  EXPECT_EQ(window.button(404)->pos(), QPoint(571, 162));
  EXPECT_EQ(window.label(3000)->geometry(), QRect(10, 176, 58, 18));
  EXPECT_EQ(window.scroll()->high(), 127);
  for (uint32_t id = 350; id <= 359; ++id) EXPECT_TRUE(window.button(id)->isDown()) << "all functions stepped";
  const int8_t first = ScratchCurve[0];
  EXPECT_EQ(pixel(window, 10, 10 + 127 - first), Red) << "the scratch curve in red";
}

TEST_F(CurveWindows, AStrokeInTheGraphSetsTheScratchCurveAndTheLabelsGoOnPastTheEnd) {
  start();
  auto& window = openFunctions();
  press(window, QPoint(10 + 4, 10 + 27));
  move(window, QPoint(10 + 5, 10 + 7));
  move(window, QPoint(10 + 6, 10 + 7), Qt::LeftButton, Qt::ShiftModifier);
  EXPECT_EQ(ScratchCurve[4], 100);
  EXPECT_EQ(ScratchCurve[5], 120);
  EXPECT_NE(ScratchCurve[6], 120);
  EXPECT_EQ(window.label(3000)->text(), QStringLiteral("x:6"));
  EXPECT_EQ(window.label(3001)->text(), QStringLiteral("y:120"));
  EXPECT_EQ(pixel(window, 15, 17), Red);
}

TEST_F(CurveWindows, TheRedPointOfARedrawnColumnLandsOnTheLastOverlaidFunction) {
  start();
  auto& window = openFunctions();
  shell::FunctionsSettingsDialog dialog(&window);
  dialog.viewBox(0)->click();  // Max Notes overlaid
  dialog.accept();
  deliver();
  const int8_t maxNotes = FunctionArrays[0][20];
  press(window, QPoint(10 + 20, 10 + 127 - 3));
  EXPECT_EQ(ScratchCurve[20], 3);
  EXPECT_EQ(pixel(window, 30, 10 + 127 - maxNotes), Red) << "on the overlaid function's row";
  EXPECT_EQ(pixel(window, 30, 10 + 127 - 3), Black);
  window.refresh();
  deliver();
  EXPECT_EQ(pixel(window, 30, 10 + 127 - 3), Red) << "the next full paint puts it right";
}

TEST_F(CurveWindows, ADoubleClickOnAFunctionsThumbnailCopiesItIntoTheScratchCurve) {
  start();
  auto& window = openFunctions();
  QTest::mouseDClick(&window, Qt::LeftButton, Qt::NoModifier, QPoint(238 + 20, 106 + 20));
  deliver();
  for (int i = 0; i < FunctionLength; ++i) ASSERT_EQ(ScratchCurve[static_cast<std::size_t>(i)], FunctionArrays[6][static_cast<std::size_t>(i)]);
}

TEST_F(CurveWindows, TheArrowsScrollTheGraphThroughALongCurve) {
  start();
  auto& window = openFunctions();
  shell::FunctionsSettingsDialog dialog(&window);
  dialog.length()->setText(QStringLiteral("200"));
  dialog.accept();
  deliver();
  ASSERT_EQ(FunctionLength.load(), 200);
  window.refresh();
  EXPECT_EQ(window.scroll()->high(), 199);
  QTest::mouseClick(window.scroll(), Qt::LeftButton, Qt::NoModifier, QPoint(18, 11));
  deliver();
  EXPECT_EQ(GraphScroll, 1);
  GraphScroll = 100;
  window.refresh();
  deliver();
  EXPECT_EQ(pixel(window, 10 + 99, 10 + 127 - ScratchCurve[199]), Red);
  for (int y = 10; y < 138; ++y) ASSERT_EQ(pixel(window, 10 + 100, y), Black) << "past the end the graph is black";
}

TEST_F(CurveWindows, TheSettingsDialogRefusesANewLengthWhileGeneratingAndCancelPutsTheViewBoxesBack) {
  start();
  auto& window = openFunctions();
  click(200);  // the die
  {
    shell::FunctionsSettingsDialog dialog(&window);
    dialog.length()->setText(QStringLiteral("64"));
    dialog.nonPeriodic()->setChecked(true);
    dialog.accept();
    EXPECT_EQ(dialog.result(), QDialog::Rejected) << "the dialog stays open";
    EXPECT_EQ(prompts.shown().back().text, "Turn off the random generator before changing length.");
    EXPECT_EQ(FunctionsPeriodic.load(), 0u);
    EXPECT_EQ(FunctionLength.load(), 128);
  }
  click(200);
  shell::FunctionsSettingsDialog dialog(&window);
  dialog.viewBox(2)->click();
  dialog.viewBox(7)->click();
  EXPECT_EQ(FunctionViewMask, (1u << 2) | (1u << 7)) << "each box acts at once";
  dialog.reject();
  EXPECT_EQ(FunctionViewMask, 0u);
}

TEST_F(CurveWindows, AReopenedFunctionsWindowShowsNoOverlaysAndColumn0AndKeepsTheScratchCurve) {
  start();
  openFunctions();
  FunctionViewMask = 3;
  GraphScroll = 5;
  ScratchCurve[0] = 42;
  frame->command(24365);  // Close all
  deliver();
  ASSERT_EQ(FunctionsOpen, 0u);
  auto& window = openFunctions();
  EXPECT_EQ(FunctionViewMask, 0u);
  EXPECT_EQ(GraphScroll, 0);
  EXPECT_EQ(ScratchCurve[0], 42);
  EXPECT_EQ(pixel(window, 10, 10 + 127 - 42), Red);
}

TEST_F(CurveWindows, AnApplyThatClipsSaysSoAndDrawsTheThumbnailAgain) {
  start();
  auto& window = openFunctions();
  std::fill(ScratchCurve.get(), ScratchCurve.get() + FunctionLength, int8_t{50});
  QTest::mouseClick(window.button(303), Qt::LeftButton);
  deliver();
  EXPECT_EQ(prompts.shown().back().text, "Clipped values: 128");
  EXPECT_EQ(pixel(window, 318 + 10, 10 + (127 - 32) / 2), shell::FunctionColour(2));
}

TEST_F(CurveWindows, ASwitchButtonFlipsItsFunctionsFilterBitAndKeepsItsOwnState) {
  start();
  auto& window = openFunctions();
  const uint32_t before = FunctionsFilters;
  QTest::mouseClick(window.button(354), Qt::LeftButton);
  deliver();
  EXPECT_EQ(FunctionsFilters.load(), before ^ (1u << 4));
  EXPECT_FALSE(window.button(354)->isDown());
  EXPECT_TRUE(window.button(353)->isDown());
}

}  // namespace
