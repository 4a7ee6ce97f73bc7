// The Controllers and Lyrics views in the real frame: the strips, their
// sliders and the binding dialog; the words of a song with lyrics followed
// syllable by syllable as it plays, and the transport's Stop, Rewind and End.
#include <QComboBox>
#include <QDialog>
#include <QFontDialog>
#include <QMdiSubWindow>
#include <QTimer>
#include <functional>

#include "midi/transport_words.h"
#include "shell/controllers_window.h"
#include "shell/song/lyrics_window.h"
#include "shell_bench.h"
#include "song/song_files.h"

namespace {

class ControllersLyricsTest : public ShellBench {
 protected:
  shell::ControllersWindow& openControllers() {
    frame->command(CMD_VIEW_CONTROLLERS);
    deliver();
    return *static_cast<shell::ControllersWindow*>(frame->client()->activeSubWindow()->widget());
  }
  shell::LyricsWindow& openLyrics() {
    frame->command(CMD_VIEW_LYRICS);
    deliver();
    return *static_cast<shell::LyricsWindow*>(frame->client()->activeSubWindow()->widget());
  }
  // The short messages the output was sent since the last look.
  std::vector<uint32_t> sent() {
    std::vector<uint32_t> words;
    for (const auto& s : devices->sent()) {
      if (s.bytes.empty()) words.push_back(s.word);
    }
    devices->clearSent();
    return words;
  }
  static QString text(shell::ControllersWindow& window, uint32_t id) { return window.staticText(id)->text(); }
  // Closes a modal dialog that a step opens, and tells whether one did.
  bool opensADialog(const std::function<void()>& step) {
    bool opened = false;
    QTimer::singleShot(0, [&opened] {
      if (QWidget* dialog = QApplication::activeModalWidget()) {
        opened = true;
        dialog->close();
      }
    });
    step();
    deliver();
    return opened;
  }
};

// ---- Controllers ----

TEST_F(ControllersLyricsTest, ViewControlersOpensSixteenStripsAndSendsMainVolume90OnEveryChannel) {
  startWithoutThru();
  EXPECT_TRUE(menuEnabled(CMD_VIEW_CONTROLLERS));
  sent();
  auto& window = openControllers();
  ASSERT_EQ(ControllersOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->windowTitle(), QStringLiteral("Controlers"));
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, frame->clientRect().width(), 278));
  std::vector<uint32_t> expected;
  for (uint32_t c = 0; c < 16; ++c) expected.push_back((0xB0 | c) | 7u << 8 | 90u << 16);
  EXPECT_EQ(sent(), expected);
  EXPECT_EQ(window.sliderWidget(0)->geometry(), QRect(129, 1, 145, 32));
  EXPECT_EQ(window.sliderWidget(8)->geometry(), QRect(441, 1, 145, 32));
  EXPECT_EQ(window.staticText(SlotLabelId(15))->geometry(), QRect(321, 7 * 28 + 1, 66, 26));
  EXPECT_EQ(window.staticText(SlotSentValueId(8))->geometry(), QRect(587, 6, 24, 16));
  EXPECT_EQ(window.staticText(SlotSecondValueId(1))->geometry(), QRect(100, 28 + 6, 20, 12));
  EXPECT_EQ(text(window, SlotLabelId(0)), QStringLiteral("7 Main Vol Channel 1"));
  EXPECT_EQ(text(window, SlotLabelId(15)), QStringLiteral("7 Main Vol Channel 16"));
  EXPECT_EQ(window.sliderWidget(3)->mainValue(), 90);
  EXPECT_EQ(text(window, SlotSentValueId(3)), QString()) << "empty until the first move";
}

TEST_F(ControllersLyricsTest, DraggingTheCapSendsTheControllerAndTheRedPointerSendsNothing) {
  startWithoutThru();
  auto& window = openControllers();
  sent();
  shell::TwoValueSlider& slider = *window.sliderWidget(4);
  const int y = slider.height() / 4;
  QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(slider.xOf(30), y));
  QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, QPoint(slider.xOf(30), y));
  EXPECT_EQ(slider.mainValue(), 30);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB4u | 7u << 8 | 30u << 16}));
  EXPECT_EQ(text(window, SlotSentValueId(4)), QStringLiteral("30"));
  const QPoint pointer(slider.xOf(100), 24);
  ASSERT_TRUE(slider.inSecondBand(pointer));
  QTest::mousePress(&slider, Qt::LeftButton, Qt::NoModifier, pointer);
  QTest::mouseRelease(&slider, Qt::LeftButton, Qt::NoModifier, pointer);
  EXPECT_EQ(slider.secondValue(), 100);
  EXPECT_EQ(text(window, SlotSecondValueId(4)), QStringLiteral("100"));
  EXPECT_TRUE(sent().empty());
  QTest::keyClick(&slider, Qt::Key_Right);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB4u | 7u << 8 | 31u << 16})) << "each step sends";
}

TEST_F(ControllersLyricsTest, ADoubleClickOnALabelRebindsItsStripWithoutSendingAndTheDialogStartsAtMainVolume) {
  startWithoutThru();
  auto& window = openControllers();
  sent();
  const QPoint label3(30, 3 * 28 + 10);
  for (int round = 0; round < 2; ++round) {
    inNextDialog([](QDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Controlers"));
      auto* controllers = dialog.findChild<QComboBox*>(QString::number(ID_CONTROLLERS_CONTROLLER));
      auto* channels = dialog.findChild<QComboBox*>(QString::number(ID_CONTROLLERS_CHANNEL));
      EXPECT_EQ(controllers->currentText(), QStringLiteral("7 Main Volume")) << "also after a rebind";
      EXPECT_EQ(channels->currentText(), QStringLiteral("Channel 1"));
      EXPECT_EQ(controllers->count(), 128);
      controllers->setCurrentIndex(10);
      channels->setCurrentIndex(1);
      dialog.accept();
    });
    QTest::mouseDClick(&window, Qt::LeftButton, Qt::NoModifier, label3);
    deliver();
  }
  EXPECT_EQ(AssociateSlot, 3);
  EXPECT_EQ(text(window, SlotLabelId(3)), QStringLiteral("10 Pan Channel 2"));
  EXPECT_TRUE(sent().empty()) << "nothing sent on a rebind";
  QTest::keyClick(window.sliderWidget(3), Qt::Key_Left);
  EXPECT_EQ(sent(), (std::vector<uint32_t>{0xB1u | 10u << 8 | 89u << 16}));
}

TEST_F(ControllersLyricsTest, ADoubleClickOnASliderOrBetweenStripsOpensNothing) {
  startWithoutThru();
  auto& window = openControllers();
  EXPECT_FALSE(opensADialog([&] { window.doubleClickAt(QPoint(200, 10)); }));
  EXPECT_FALSE(opensADialog([&] { window.doubleClickAt(QPoint(30, 27)); }));
  EXPECT_FALSE(
      opensADialog([&] { QTest::mouseDClick(window.sliderWidget(2), Qt::LeftButton, Qt::NoModifier, QPoint(20, 5)); }));
}

TEST_F(ControllersLyricsTest, AControllerComingInLeavesTheSlidersWhereTheyAre) {
  startWithoutThru();
  auto& window = openControllers();
  ASSERT_TRUE(devices->inject(0x7F07B0));
  deliver();
  EXPECT_EQ(window.sliderWidget(0)->mainValue(), 90);
}

// ---- Lyrics ----

TEST_F(ControllersLyricsTest, ViewLyricsShowsTheWordsInTimesNewRomanWithTheFontButton) {
  start();
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  EXPECT_TRUE(menuEnabled(CMD_VIEW_LYRICS));
  auto& window = openLyrics();
  ASSERT_EQ(LyricsOpen, 1u);
  EXPECT_EQ(frame->client()->activeSubWindow()->geometry(), QRect(0, 0, frame->clientRect().width(), 156));
  EXPECT_EQ(window.field()->toPlainText(), QStringLiteral("Hel lo world\nline two"));
  EXPECT_EQ(window.fontButton()->geometry(), QRect(16, 4, 80, 16));
  EXPECT_EQ(window.fontButton()->text(), QStringLiteral("Font..."));
  EXPECT_EQ(window.field()->geometry(), QRect(10, 27, window.width() - 20, window.height() - 37));
  EXPECT_EQ(window.field()->font().family(), QStringLiteral("Times New Roman"));
  EXPECT_EQ(window.textColour(), QColor(Qt::black));
  EXPECT_EQ(window.field()->textCursor().position(), 0);
}

TEST_F(ControllersLyricsTest, PlayingASongWithLyricsHighlightsEachSyllableInTurnAndStopTakesItAway) {
  startWithoutThru();
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  auto& window = openLyrics();
  frame->client()->subWindowList().front()->setFocus();  // the highlight shows without the focus too
  click(101);                                            // Play
  std::vector<QString> sung;
  for (int pass = 0; pass < 400 && Playing == 1; ++pass) {
    passes(1);
    const QString selected = window.field()->textCursor().selectedText();
    if (!selected.isEmpty() && (sung.empty() || sung.back() != selected)) sung.push_back(selected);
  }
  EXPECT_EQ(sung, (std::vector<QString>{QStringLiteral("Hel"), QStringLiteral(" lo"), QStringLiteral(" world"),
                                        QString(QChar::ParagraphSeparator) + QStringLiteral("line two")}));
  const QPalette colours = window.field()->palette();
  EXPECT_EQ(colours.color(QPalette::Inactive, QPalette::Highlight),
            colours.color(QPalette::Active, QPalette::Highlight));
  click(102);  // Rewind
  click(101);
  passes(5);
  ASSERT_TRUE(window.field()->textCursor().hasSelection());
  click(100);  // Stop
  EXPECT_FALSE(window.field()->textCursor().hasSelection());
}

TEST_F(ControllersLyricsTest, AWindowOpenedDuringPlayHighlightsNothingUntilTheNextLyric) {
  startWithoutThru();
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  ASSERT_EQ(LyricsEdit, nullptr);
  click(101);  // Play: "Hel" at tick 0 comes while no window is there
  passes(10);
  auto& window = openLyrics();
  EXPECT_FALSE(window.field()->textCursor().hasSelection());
  for (int pass = 0; pass < 100 && !window.field()->textCursor().hasSelection(); ++pass) passes(1);
  EXPECT_EQ(window.field()->textCursor().selectedText(), QStringLiteral(" lo"));
  click(100);
}

TEST_F(ControllersLyricsTest, RewindPutsTheCaretAtTheStartAndEndTakesTheSelectionAway) {
  startWithoutThru();
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  auto& window = openLyrics();
  window.field()->setHighlight(6, 12);
  ASSERT_EQ(window.field()->textCursor().selectedText(), QStringLiteral(" world"));
  click(102);  // Rewind
  EXPECT_FALSE(window.field()->textCursor().hasSelection());
  EXPECT_EQ(window.field()->textCursor().position(), 0);
  window.field()->setHighlight(6, 12);
  click(103);  // End
  EXPECT_FALSE(window.field()->textCursor().hasSelection());
}

TEST_F(ControllersLyricsTest, NewEmptiesTheWordsAndANewWindowStartsFromTheFirstFont) {
  start();
  ASSERT_TRUE(LoadSong(VELMORA_TEST_DATA "/format1_lyrics.mid"));
  auto& window = openLyrics();
  QFont big = window.field()->font();
  big.setFamily(QStringLiteral("DejaVu Sans"));
  window.useFont(big, Qt::red);
  frame->command(CMD_NEW_SONG);
  deliver();
  EXPECT_EQ(window.field()->toPlainText(), QString());
  frame->client()->activeSubWindow()->close();
  deliver();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  ASSERT_EQ(LyricsOpen, 0u);
  EXPECT_EQ(LyricsEdit, nullptr);
  auto& again = openLyrics();
  EXPECT_EQ(again.field()->font().family(), QStringLiteral("Times New Roman"));
  EXPECT_EQ(again.textColour(), QColor(Qt::black));
}

TEST_F(ControllersLyricsTest, TheFontButtonChoosesTheFontAndItsColour) {
  start();
  auto& window = openLyrics();
  QFont chosen;
  inNextDialog([&chosen](QDialog& dialog) {
    auto& lyricsDialog = static_cast<shell::LyricsFontDialog&>(dialog);
    QFont bigger = lyricsDialog.fonts()->currentFont();
    bigger.setPointSize(30);
    lyricsDialog.fonts()->setCurrentFont(bigger);
    lyricsDialog.colours()->setCurrentIndex(lyricsDialog.colours()->findText(QStringLiteral("Red")));
    chosen = lyricsDialog.selectedFont();
    dialog.accept();
  });
  QTest::mouseClick(window.fontButton(), Qt::LeftButton);
  deliver();
  EXPECT_EQ(window.textColour(), QColor(Qt::red));
  EXPECT_EQ(window.field()->font(), chosen);
  EXPECT_EQ(window.field()->font().pointSize(), 30);
}

}  // namespace
