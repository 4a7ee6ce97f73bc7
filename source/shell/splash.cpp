#include "shell/splash.h"

#include <QApplication>
#include <QEventLoop>
#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <utility>

namespace shell {

namespace {

// Set once the animation has run; never reset.
bool SplashEnded = false;

// Where the desktop cannot be captured (Wayland, no window system), the
// curtain comes down over the window colour instead.
const QColor PlainDesktop(192, 192, 192);

// One timer period's growth of the working rectangle: its bottom moves down by
// a band. True once the bottom has passed the screen's bottom.
bool GrowCurtain(int& bottom, int band, int screenHeight) {
  bottom += band;
  return bottom > screenHeight;
}

// The pattern's 0 bits are yellow (255, 255, 0) and its 1 bits white; rows
// alternate 0xAA and 0x55 from the window's origin, so the yellow pixels are
// those where x + y is odd, and AND with yellow clears their blue.
void CurtainInPlace(QImage& image, const QRect& band) {
  const QRect area = band.intersected(image.rect());
  for (int y = area.top(); y <= area.bottom(); ++y) {
    auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    for (int x = area.left() + ((area.left() + y + 1) & 1); x <= area.right(); x += 2) line[x] &= 0xFFFFFF00u;
  }
}

bool AllBlack(const QImage& image) {
  for (int y = 0; y < image.height(); ++y) {
    const auto* line = reinterpret_cast<const QRgb*>(image.constScanLine(y));
    for (int x = 0; x < image.width(); ++x)
      if ((line[x] & 0x00FFFFFFu) != 0) return false;
  }
  return true;
}

// The screen as it stands, in device pixels, or the plain colour. Platforms
// that cannot read the screen give no picture, or an all-black one (offscreen,
// the root window under XWayland).
QImage CaptureDesktop(QScreen* screen) {
  // Platforms without a desktop of their own to read give no picture, or whatever their buffers hold.
  const QString platform = QGuiApplication::platformName();
  const bool readable = platform != QStringLiteral("offscreen") && platform != QStringLiteral("minimal") &&
                        !platform.startsWith(QStringLiteral("wayland"));
  QImage image = readable ? screen->grabWindow(0).toImage().convertToFormat(QImage::Format_RGB32) : QImage();
  const QSize logical = screen->geometry().size();
  if (image.isNull() || image.width() < logical.width() || image.height() < logical.height() || AllBlack(image)) {
    const qreal ratio = screen->devicePixelRatio();
    image = QImage((QSizeF(logical) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(PlainDesktop);
  }
  return image;
}

// The borderless window over the whole screen. It shows the frame image,
// which starts as the captured desktop, so the desktop seems to stay visible
// through it.
class SplashWindow final : public QWidget {
 public:
  explicit SplashWindow(QImage desktop)
      : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint), frame_(std::move(desktop)) {
    setObjectName(QStringLiteral("SplashWindow"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setCursor(Qt::ArrowCursor);
  }

  QImage& frame() { return frame_; }

 protected:
  void paintEvent(QPaintEvent* event) override {
    QPainter painter(this);
    painter.setClipRegion(event->region());
    painter.drawImage(QPoint(0, 0), frame_);
  }

 private:
  QImage frame_;
};

// Ends the curtain on a key press or a left, right or middle button press,
// and keeps that press from being delivered; everything else passes.
class CurtainStopper final : public QObject {
 public:
  explicit CurtainStopper(std::function<void()> stop) : stop_(std::move(stop)) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::KeyPress:
        stop_();
        return true;
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonDblClick: {
        const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
        if (button == Qt::LeftButton || button == Qt::RightButton || button == Qt::MiddleButton) {
          stop_();
          return true;
        }
        break;
      }
      default:
        break;
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  std::function<void()> stop_;
};

// The curtain, the word and the pause, on a shown splash window.
void RunCurtain(SplashWindow* window, const SplashTiming& timing) {
  QImage& frame = window->frame();
  const int width = frame.width();
  const int height = frame.height();
  const int band = SplashBand(height);
  const qreal ratio = frame.devicePixelRatio();

  QEventLoop loop;
  QTimer timer;
  timer.setTimerType(Qt::PreciseTimer);
  timer.setInterval(std::max(1, timing.periodMs));

  bool interrupted = false;
  bool covered = false;
  int bottom = band;
  int period = 0;

  CurtainStopper stopper([&] {
    if (covered || interrupted) return;
    interrupted = true;
    timer.stop();
    loop.quit();
  });
  qApp->installEventFilter(&stopper);
  window->grabKeyboard();
  window->grabMouse();

  QObject::connect(&timer, &QTimer::timeout, &loop, [&] {
    if (covered || interrupted) return;
    ++period;
    CurtainInPlace(frame, QRect(0, 0, width, bottom));
    window->update(0, 0, window->width(), static_cast<int>(std::ceil(bottom / ratio)));
    const bool passed = GrowCurtain(bottom, band, height);
    if (timing.afterPeriod) timing.afterPeriod(window, period);
    if (interrupted || !passed) return;
    covered = true;
    timer.stop();
    CurtainInPlace(frame, frame.rect());
    DrawSplashWord(frame);
    window->update();
    loop.quit();
  });
  timer.start();
  loop.exec();

  if (covered && timing.pauseMs > 0) {
    // The word stays for the pause. Painting goes on; input waits until after.
    QEventLoop pause;
    QTimer::singleShot(timing.pauseMs, Qt::PreciseTimer, &pause, &QEventLoop::quit);
    pause.exec(QEventLoop::ExcludeUserInputEvents);
  }

  qApp->removeEventFilter(&stopper);
  window->releaseMouse();
  window->releaseKeyboard();
}

}  // namespace

int SplashBand(int screenHeight) { return screenHeight / SplashBandCount + 1; }

int SplashTicksToCover(int screenHeight) {
  if (screenHeight <= 0) return 0;
  const int band = SplashBand(screenHeight);
  int bottom = band;
  int period = 1;
  while (!GrowCurtain(bottom, band, screenHeight)) ++period;
  return period;
}

QImage ApplyCurtain(const QImage& desktop, const QRect& band) {
  QImage image = desktop.convertToFormat(QImage::Format_RGB32);
  CurtainInPlace(image, band);
  return image;
}

QFont SplashFont() {
  QFont font(QStringLiteral("Times New Roman"));
  font.setStyleHint(QFont::Serif, QFont::PreferQuality);
  font.setWeight(QFont::Bold);
  font.setItalic(false);
  font.setUnderline(false);
  font.setStrikeOut(false);
  // A height of 72 is the character cell's, ascent plus descent, not the em.
  constexpr int CellHeight = 72;
  font.setPixelSize(CellHeight);
  const int cell = QFontMetrics(font).height();
  if (cell > 0 && cell != CellHeight) font.setPixelSize(std::max(1, CellHeight * CellHeight / cell));
  return font;
}

void DrawSplashWord(QImage& frame) {
  QPainter painter(&frame);
  painter.setRenderHint(QPainter::TextAntialiasing);
  painter.setFont(SplashFont());
  painter.setPen(QColor(0, 0, 255));
  painter.setBackgroundMode(Qt::TransparentMode);
  const QRect area(QPoint(0, 0), frame.deviceIndependentSize().toSize());
  painter.drawText(area, Qt::AlignCenter | Qt::TextSingleLine, QStringLiteral("Velmora"));
}

QWidget* CreateSplash(const SplashTiming& timing) {
  QScreen* screen = QGuiApplication::primaryScreen();
  if (screen == nullptr || screen->geometry().isEmpty()) return nullptr;

  // Captured before the window shows, so the window is not in the picture.
  auto* window = new SplashWindow(CaptureDesktop(screen));
  window->setGeometry(screen->geometry());
  window->show();
  if (!SplashEnded) {
    RunCurtain(window, timing);
    SplashEnded = true;
  }
  return window;
}

bool SplashAnimationEnded() { return SplashEnded; }

}  // namespace shell
