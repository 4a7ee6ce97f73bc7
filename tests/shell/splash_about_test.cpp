// The splash's curtain, the About box and the help manual's look-up. Runs
// under a QApplication on the offscreen platform, where the desktop cannot be
// captured and the curtain comes down over the plain window colour.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFontMetrics>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>
#include <QRegularExpression>
#include <memory>
#include <vector>

#include "platform/field_checks.h"
#include "live/product_info.h"
#include "platform/prompts.h"
#include "shell/about_dialog.h"
#include "shell/help.h"
#include "shell/help_viewer.h"
#include "shell/splash.h"

namespace {

bool IsBlueText(QRgb pixel) { return qBlue(pixel) >= 160 && qRed(pixel) <= 96 && qGreen(pixel) <= 96; }

int CountBlueText(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += IsBlueText(image.pixel(x, y)) ? 1 : 0;
  return count;
}

// A desktop with something to see through the curtain: a gradient, a window
// and a line of text.
QImage SampleDesktop(QSize size) {
  QImage image(size, QImage::Format_RGB32);
  QPainter painter(&image);
  QLinearGradient sky(0, 0, 0, size.height());
  sky.setColorAt(0, QColor(40, 90, 160));
  sky.setColorAt(1, QColor(150, 200, 240));
  painter.fillRect(image.rect(), sky);
  const QRect window(size.width() / 8, size.height() / 6, size.width() / 2, size.height() / 2);
  painter.fillRect(window, QColor(236, 236, 236));
  painter.fillRect(window.adjusted(0, 0, 0, -window.height() + 24), QColor(60, 60, 120));
  painter.setPen(Qt::black);
  painter.drawText(window.adjusted(12, 36, -12, -12), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                   QStringLiteral("A text editor, a terminal, anything that was on the screen."));
  return image;
}

// The prompts of the test for its own life; the previous ones come back.
class PromptsInstalled {
 public:
  explicit PromptsInstalled(platform::Prompts* prompts) : before_(platform::prompts()) {
    platform::installPrompts(prompts);
  }
  ~PromptsInstalled() { platform::installPrompts(before_); }
  PromptsInstalled(const PromptsInstalled&) = delete;
  PromptsInstalled& operator=(const PromptsInstalled&) = delete;

 private:
  platform::Prompts* before_;
};

}  // namespace

// ---- The curtain's arithmetic --------------------------------------------

TEST(Splash, BandOf768LinesIs26) {
  EXPECT_EQ(shell::SplashBand(768), 26);
  EXPECT_EQ(shell::SplashBand(600), 21);
  EXPECT_EQ(shell::SplashBand(29), 1);
}

TEST(Splash, CurtainOf768LinesPassesTheBottomAtThe29thPeriod) {
  EXPECT_EQ(shell::SplashTicksToCover(768), 29);
  // After period k the bottom stands at (k + 1) * band; it has passed when it lies below the screen.
  EXPECT_EQ(shell::SplashTicksToCover(1080), 29);  // band 37: 30 * 37 = 1110
  EXPECT_EQ(shell::SplashTicksToCover(780), 28);   // band 27: 29 * 27 = 783
  EXPECT_EQ(shell::SplashTicksToCover(29), 29);    // band 1: a bottom of 29 has not passed 29 lines
  EXPECT_EQ(shell::SplashTicksToCover(1), 1);
  EXPECT_EQ(shell::SplashTicksToCover(0), 0);
}

TEST(Splash, CurtainTakesBlueFromEveryOtherPixelInTheBandOnly) {
  QImage desktop(16, 16, QImage::Format_RGB32);
  desktop.fill(QColor(200, 150, 100));
  const QImage curtain = shell::ApplyCurtain(desktop, QRect(0, 4, 16, 4));
  for (int y = 0; y < 16; ++y) {
    for (int x = 0; x < 16; ++x) {
      const bool inBand = y >= 4 && y < 8;
      const bool yellow = ((x + y) & 1) == 1;  // rows 0xAA and 0x55: 0 bits, yellow, where x + y is odd
      const QRgb expected = inBand && yellow ? qRgb(200, 150, 0) : qRgb(200, 150, 100);
      EXPECT_EQ(curtain.pixel(x, y), expected) << x << "," << y;
    }
  }
}

TEST(Splash, CurtainOverTheWholeImageIsACheckerboardAndClipsItsBand) {
  QImage desktop(8, 4, QImage::Format_RGB32);
  desktop.fill(Qt::white);
  const QImage once = shell::ApplyCurtain(desktop, QRect(-5, -5, 100, 100));
  EXPECT_EQ(once.pixel(0, 0), qRgb(255, 255, 255));
  EXPECT_EQ(once.pixel(1, 0), qRgb(255, 255, 0));
  EXPECT_EQ(once.pixel(0, 1), qRgb(255, 255, 0));
  EXPECT_EQ(once.pixel(1, 1), qRgb(255, 255, 255));
  // AND with the same pattern again changes nothing.
  EXPECT_EQ(shell::ApplyCurtain(once, once.rect()), once);
}

TEST(Splash, WordIsBlueAndCentred) {
  QImage frame(800, 600, QImage::Format_RGB32);
  frame.fill(QColor(192, 192, 0));
  shell::DrawSplashWord(frame);
  int left = frame.width(), right = -1, top = frame.height(), bottom = -1;
  for (int y = 0; y < frame.height(); ++y) {
    for (int x = 0; x < frame.width(); ++x) {
      if (!IsBlueText(frame.pixel(x, y))) continue;
      left = std::min(left, x);
      right = std::max(right, x);
      top = std::min(top, y);
      bottom = std::max(bottom, y);
    }
  }
  ASSERT_GE(right, 0) << "no blue text drawn";
  EXPECT_NEAR((left + right) / 2.0, 400, 4);
  EXPECT_NEAR((top + bottom) / 2.0, 300, 12);  // capitals and baseline sit a little off the cell's middle
  EXPECT_LT(bottom - top, 72);
  EXPECT_GT(bottom - top, 30);
}

TEST(Splash, FontIsBoldSerifOfCellHeight72) {
  const QFont font = shell::SplashFont();
  EXPECT_EQ(font.weight(), QFont::Bold);
  EXPECT_FALSE(font.italic());
  EXPECT_EQ(font.styleHint(), QFont::Serif);
  EXPECT_EQ(font.family(), QStringLiteral("Times New Roman"));
  EXPECT_NEAR(QFontMetrics(font).height(), 72, 2);
}

// The end flag is process-wide and never reset, so this one test owns the
// animation: a key press ends it, and a second call no longer animates.
TEST(Splash, KeyPressDuringTheCurtainEndsItAtOnceWithoutTheWordAndItRunsOnlyOnce) {
  ASSERT_FALSE(shell::SplashAnimationEnded())
      << "the curtain runs once per process: run this test in a process of its own";
  shell::SplashTiming timing;
  timing.periodMs = 10;
  timing.pauseMs = 5000;  // would show in the time taken, had the pause run
  std::vector<int> periods;
  timing.afterPeriod = [&](QWidget* splash, int period) {
    periods.push_back(period);
    if (period == 3) QTest::keyClick(splash, Qt::Key_Space);
  };

  QElapsedTimer clock;
  clock.start();
  std::unique_ptr<QWidget> splash(shell::CreateSplash(timing));
  const qint64 took = clock.elapsed();

  ASSERT_NE(splash, nullptr);
  EXPECT_TRUE(shell::SplashAnimationEnded());
  EXPECT_EQ(periods, (std::vector<int>{1, 2, 3}));
  EXPECT_LT(took, 2000);
  EXPECT_TRUE(splash->isVisible());
  EXPECT_EQ(splash->geometry(), QGuiApplication::primaryScreen()->geometry());

  const QImage shown = splash->grab().toImage().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(CountBlueText(shown), 0);
  // Three periods covered three bands: the yellow pixels (x + y odd) lost their blue down to there.
  const int band = shell::SplashBand(shown.height());
  const auto yellowAt = [&](int y) { return shown.pixel((y & 1) == 0 ? 1 : 0, y); };
  EXPECT_EQ(qBlue(yellowAt(0)), 0);
  EXPECT_EQ(qBlue(yellowAt(3 * band - 1)), 0);
  EXPECT_EQ(yellowAt(3 * band), qRgb(192, 192, 192)) << "the plain desktop of the offscreen platform";
  EXPECT_EQ(yellowAt(shown.height() - 1), qRgb(192, 192, 192));

  periods.clear();
  timing.afterPeriod = [&](QWidget*, int period) { periods.push_back(period); };
  clock.restart();
  std::unique_ptr<QWidget> again(shell::CreateSplash(timing));
  ASSERT_NE(again, nullptr);
  EXPECT_TRUE(periods.empty());
  EXPECT_LT(clock.elapsed(), 1000);
  EXPECT_EQ(CountBlueText(again->grab().toImage()), 0);
}

// ---- The About box ----------------------------------------------------------

TEST(AboutDialog, ShowsNameAndVersionWithTwoBlanksBetween) {
  shell::AboutDialog dialog;
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("About..."));
  const std::string expected = ProductName() + "  " + ProductVersion();
  EXPECT_EQ(dialog.field(22001)->text().toStdString(), expected);
  EXPECT_EQ(dialog.field(22002)->text().toStdString(), LegalCopyright());
  EXPECT_NE(dialog.findChild<QWidget*>(QStringLiteral("1001")), nullptr) << "the icon";
}

TEST(AboutDialog, SpecialBuildFieldIsEmptyWithoutASpecialBuild) {
  shell::AboutDialog dialog;
  EXPECT_EQ(dialog.field(22003)->text().toStdString(), SpecialBuild());
  if (!SpecialBuild().empty()) GTEST_SKIP() << "this build names itself " << SpecialBuild();
  EXPECT_TRUE(dialog.field(22003)->text().isEmpty());
}

TEST(AboutDialog, FieldsAreReadOnlyOnTheButtonFace) {
  shell::AboutDialog dialog;
  for (int id : {22001, 22002, 22003}) {
    QLineEdit* field = dialog.field(id);
    ASSERT_NE(field, nullptr) << id;
    EXPECT_TRUE(field->isReadOnly()) << id;
    EXPECT_EQ(field->palette().color(QPalette::Base), dialog.palette().color(QPalette::Button)) << id;
    EXPECT_EQ(field->palette().color(QPalette::Text), dialog.palette().color(QPalette::WindowText)) << id;
  }
  EXPECT_TRUE(dialog.field(22001)->alignment() & Qt::AlignHCenter);
  EXPECT_TRUE(dialog.field(22002)->alignment() & Qt::AlignHCenter);
  EXPECT_TRUE(dialog.field(22003)->alignment() & Qt::AlignRight);
}

TEST(AboutDialog, HttpAndMailToOpenTheirLinksAndTheBoxStaysOpen) {
  std::vector<QUrl> opened;
  shell::AboutDialog dialog(nullptr, [&](const QUrl& url) {
    opened.push_back(url);
    return false;  // a link that fails to open is ignored
  });
  dialog.show();
  auto* http = dialog.findChild<QPushButton*>(QStringLiteral("101"));
  auto* mailTo = dialog.findChild<QPushButton*>(QStringLiteral("100"));
  auto* ok = dialog.findChild<QPushButton*>(QStringLiteral("1"));
  ASSERT_NE(http, nullptr);
  ASSERT_NE(mailTo, nullptr);
  ASSERT_NE(ok, nullptr);
  EXPECT_EQ(http->text(), QStringLiteral("http"));
  EXPECT_EQ(mailTo->text(), QStringLiteral("mail to"));
  EXPECT_EQ(ok->text(), QStringLiteral("OK"));

  QTest::mouseClick(http, Qt::LeftButton);
  EXPECT_TRUE(dialog.isVisible());
  QTest::mouseClick(mailTo, Qt::LeftButton);
  EXPECT_TRUE(dialog.isVisible());
  ASSERT_EQ(opened.size(), 2u);
  EXPECT_EQ(opened[0], QUrl(QString::fromLatin1(shell::AboutWebPage)));
  EXPECT_EQ(opened[1].scheme(), QStringLiteral("mailto"));
  EXPECT_EQ(opened[1].path(), QString::fromLatin1(shell::AboutMailAddress));

  QTest::mouseClick(ok, Qt::LeftButton);
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(dialog.result(), QDialog::Accepted);
}

TEST(AboutDialog, OpensCentredOnTheDesktop) {
  shell::AboutDialog dialog;
  dialog.show();
  const QRect desktop = dialog.screen()->geometry();
  const QSize size = dialog.frameGeometry().size();
  const Rect place = CenterWindow({0, 0, size.width(), size.height()}, nullptr, desktop.width(), desktop.height());
  EXPECT_EQ(dialog.frameGeometry().topLeft(), desktop.topLeft() + QPoint(place.x, place.y));
}

// ---- The help manual --------------------------------------------------------

namespace {

void PutPage(const QString& folder) {
  ASSERT_TRUE(QDir().mkpath(folder));
  QFile page(QDir(folder).filePath(QStringLiteral("velmora.html")));
  ASSERT_TRUE(page.open(QIODevice::WriteOnly));
  page.write("<html><body id=\"using-help\">Velmora</body></html>");
}

}  // namespace

TEST(Manual, FoldersAreTheInstalledPlaceThenTheBuildTreeBesideTheProgram) {
  QTemporaryDir root;
  ASSERT_TRUE(root.isValid());
  const QString bin = root.filePath(QStringLiteral("bin"));
  EXPECT_EQ(shell::ManualFolders(bin), (QStringList{root.filePath(QStringLiteral("share/velmora/help")),
                                                    root.filePath(QStringLiteral("bin/help"))}));
}

TEST(Manual, UrlFindsThePageBesideTheProgram) {
  QTemporaryDir root;
  ASSERT_TRUE(root.isValid());
  const QStringList folders = shell::ManualFolders(root.filePath(QStringLiteral("bin")));
  EXPECT_TRUE(shell::ManualUrl({}, folders).isEmpty());

  PutPage(root.filePath(QStringLiteral("bin/help")));
  const QUrl inBuildTree = shell::ManualUrl(QStringLiteral("using-help"), folders);
  EXPECT_TRUE(inBuildTree.isLocalFile());
  EXPECT_EQ(inBuildTree.toLocalFile(), root.filePath(QStringLiteral("bin/help/velmora.html")));
  EXPECT_EQ(inBuildTree.fragment(), QStringLiteral("using-help"));

  PutPage(root.filePath(QStringLiteral("share/velmora/help")));
  const QUrl installed = shell::ManualUrl({}, folders);
  EXPECT_EQ(installed.toLocalFile(), root.filePath(QStringLiteral("share/velmora/help/velmora.html")));
  EXPECT_FALSE(installed.hasFragment());
}

TEST(Manual, MissingPageIsReportedWithTheFileAndWhereItWasLookedFor) {
  QTemporaryDir root;
  ASSERT_TRUE(root.isValid());
  const QStringList folders = shell::ManualFolders(root.filePath(QStringLiteral("bin")));
  platform::ScriptedPrompts scripted;
  PromptsInstalled installed(&scripted);
  int opens = 0;
  EXPECT_FALSE(shell::OpenManual({}, folders, [&](const QUrl&) { return ++opens > 0; }));
  EXPECT_EQ(opens, 0);
  ASSERT_EQ(scripted.shown().size(), 1u);
  const auto& box = scripted.shown()[0];
  EXPECT_EQ(box.title, "Velmora");
  EXPECT_EQ(box.style, platform::MB_ICONSTOP);
  EXPECT_NE(box.text.find("velmora.html"), std::string::npos) << box.text;
  for (const QString& folder : folders)
    EXPECT_NE(box.text.find(QDir::toNativeSeparators(folder).toStdString()), std::string::npos) << box.text;
}

TEST(Manual, OpensThePageAtTheAnchor) {
  QTemporaryDir root;
  ASSERT_TRUE(root.isValid());
  PutPage(root.filePath(QStringLiteral("help")));
  platform::ScriptedPrompts scripted;
  PromptsInstalled installed(&scripted);
  std::vector<QUrl> opened;
  EXPECT_TRUE(shell::OpenManual(QString::fromLatin1(shell::ManualUsingHelp), shell::ManualFolders(root.path()),
                                [&](const QUrl& url) {
                                  opened.push_back(url);
                                  return true;
                                }));
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0].toLocalFile(), root.filePath(QStringLiteral("help/velmora.html")));
  EXPECT_EQ(opened[0].fragment(), QStringLiteral("using-help"));
  EXPECT_TRUE(scripted.shown().empty());
}

TEST(Manual, PageThatCannotBeOpenedIsReported) {
  QTemporaryDir root;
  ASSERT_TRUE(root.isValid());
  PutPage(root.filePath(QStringLiteral("help")));
  platform::ScriptedPrompts scripted;
  PromptsInstalled installed(&scripted);
  EXPECT_FALSE(shell::OpenManual({}, shell::ManualFolders(root.path()), [](const QUrl&) { return false; }));
  ASSERT_EQ(scripted.shown().size(), 1u);
  EXPECT_EQ(scripted.shown()[0].style, platform::MB_ICONSTOP);
  EXPECT_NE(scripted.shown()[0].text.find("velmora.html"), std::string::npos);
}

TEST(Manual, TheBuiltInViewerShowsTheShippedPageAtItsAnchorWithItsPicturesAndNoBrowser) {
  platform::ScriptedPrompts scripted;
  PromptsInstalled installed(&scripted);
  const QString folder = QFileInfo(QStringLiteral(VELMORA_HELP_PAGE)).absolutePath();
  ASSERT_TRUE(shell::OpenManual(QString::fromLatin1(shell::ManualUsingHelp), {folder}, shell::ShowInHelpViewer));
  EXPECT_TRUE(scripted.shown().empty()) << "no box: the page shows without a browser";
  shell::HelpViewer* viewer = shell::TheHelpViewer();
  ASSERT_NE(viewer, nullptr);
  EXPECT_TRUE(viewer->isVisible());
  EXPECT_EQ(viewer->windowTitle(), QStringLiteral("Velmora Help"));
  EXPECT_FALSE(viewer->testAttribute(Qt::WA_QuitOnClose)) << "an open help window does not keep Velmora running";
  EXPECT_EQ(viewer->browser()->source().fragment(), QStringLiteral("using-help"));
  EXPECT_TRUE(viewer->browser()->toPlainText().contains(QStringLiteral("Using this help")));
  // Every picture the page shows is read: the document has it as an image resource.
  const QVariant picture = viewer->browser()->document()->resource(
      QTextDocument::ImageResource, QUrl(QStringLiteral("pictures/frame-playing.png")));
  EXPECT_TRUE(picture.isValid()) << "the picture beside the page loads";
  viewer->button(QStringLiteral("contents"))->click();
  EXPECT_EQ(viewer->browser()->source().fragment(), QStringLiteral("contents"));
  viewer->close();
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(shell::TheHelpViewer(), nullptr) << "closed, it is gone";
}

TEST(Manual, ShippedPageCoversEveryWindowAndToolWithPicturesThatAreShipped) {
  QFile page(QStringLiteral(VELMORA_HELP_PAGE));
  ASSERT_TRUE(page.open(QIODevice::ReadOnly));
  const QString html = QString::fromUtf8(page.readAll());
  const QDir folder = QFileInfo(page).dir();
  int pictures = 0;
  const QRegularExpression image(QStringLiteral("<img src=\"([^\"]+)\""));
  for (auto match = image.globalMatch(html); match.hasNext(); ++pictures) {
    const QString file = match.next().captured(1);
    EXPECT_TRUE(QFileInfo(folder.filePath(file)).isFile()) << file.toStdString();
  }
  EXPECT_GE(pictures, 12);
  for (const char* window : {"frame-playing", "distributions", "functions", "boards", "banks", "tracks", "events",
                             "controllers", "lyrics", "devices", "edit-quantize", "edit-paste"}) {
    EXPECT_TRUE(html.contains(QStringLiteral("pictures/%1.png").arg(QLatin1String(window)))) << window;
  }
  for (const char* section : {"id=\"keyboard\"", "id=\"edit\"", "id=\"velmora-render\"", "id=\"velmora-devices\"",
                              "id=\"synth-gain\"", "id=\"install\"", "--gain G", "Open <u>r</u>ecent"}) {
    EXPECT_TRUE(html.contains(QLatin1String(section))) << section;
  }
}

TEST(Manual, ShippedPageHasTheSectionsTheHelpMenuOpens) {
  QFile page(QStringLiteral(VELMORA_HELP_PAGE));
  ASSERT_TRUE(page.open(QIODevice::ReadOnly)) << VELMORA_HELP_PAGE;
  const QByteArray html = page.readAll();
  EXPECT_TRUE(html.contains("id=\"using-help\""));
  EXPECT_TRUE(html.contains("id=\"contents\""));
  EXPECT_FALSE(html.contains("src=\"http")) << "the page needs nothing from outside";
  EXPECT_FALSE(html.contains("href=\"http")) << "the page needs nothing from outside";
}

// ---- Pictures to look at ----------------------------------------------------

// Saves the About box and two splash frames into the current folder (the
// test's build folder), to be looked at by eye.
TEST(Pictures, SavesTheAboutBoxAndSplashFrames) {
  shell::AboutDialog dialog;
  dialog.show();
  EXPECT_TRUE(dialog.grab().save(QDir::current().filePath(QStringLiteral("about_box.png"))));

  const QImage desktop = SampleDesktop(QSize(800, 600));
  const int band = shell::SplashBand(desktop.height());
  const QImage falling = shell::ApplyCurtain(desktop, QRect(0, 0, desktop.width(), 14 * band));
  EXPECT_TRUE(falling.save(QDir::current().filePath(QStringLiteral("splash_curtain.png"))));

  QImage word = shell::ApplyCurtain(desktop, desktop.rect());
  shell::DrawSplashWord(word);
  EXPECT_TRUE(word.save(QDir::current().filePath(QStringLiteral("splash_word.png"))));
}
