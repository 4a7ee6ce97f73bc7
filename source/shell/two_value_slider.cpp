#include "shell/two_value_slider.h"

#include "shell/shortcuts.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "live/controllers.h"

namespace shell {

namespace {

constexpr int Top = 127;

int clampValue(int value) { return std::clamp(value, 0, Top); }

}  // namespace

TwoValueSlider::TwoValueSlider(QWidget* parent, platform::MessageTarget* host, uint32_t id)
    : Control(parent, host, id) {
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(60, 24);
}

intptr_t TwoValueSlider::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  switch (msg) {
    case SLIDER_SET_MAIN:
      main_ = clampValue(static_cast<int>(param1));
      update();
      return 0;
    case SLIDER_GET_MAIN:
      return main_;
    case SLIDER_SET_SECOND:
      second_ = clampValue(static_cast<int>(param1));
      update();
      return 0;
    case SLIDER_GET_SECOND:
      return second_;
    default:
      return 0;
  }
}

void TwoValueSlider::moveMain(int value) {
  value = clampValue(value);
  if (value == main_) return;
  main_ = value;
  update();
  report(SLIDER_MAIN_CHANGED);
}

void TwoValueSlider::moveSecond(int value) {
  value = clampValue(value);
  if (value == second_) return;
  second_ = value;
  update();
  report(SLIDER_SECOND_CHANGED);
}

// The slider draws and answers within its first 27 pixels: below them the next strip's slider stands.
int TwoValueSlider::drawnHeight() const { return std::min(height(), 27); }
// Wide enough for every one of the 128 values to have a pixel of its own at the strip's 145 pixels.
int TwoValueSlider::grooveLeft() const { return 6; }
int TwoValueSlider::grooveRight() const { return width() - 7; }
int TwoValueSlider::grooveY() const { return drawnHeight() * 2 / 5; }

int TwoValueSlider::xOf(int value) const {
  return grooveLeft() + static_cast<int>(std::lround(double(value) * (grooveRight() - grooveLeft()) / Top));
}

int TwoValueSlider::valueAt(int x) const {
  const double span = std::max(1, grooveRight() - grooveLeft());
  return clampValue(static_cast<int>(std::lround((x - grooveLeft()) * Top / span)));
}

bool TwoValueSlider::onCap(QPoint point) const {
  return std::abs(point.x() - xOf(main_)) <= drawnHeight() / 6 + 1 && point.y() <= drawnHeight() * 4 / 5;
}

bool TwoValueSlider::inSecondBand(QPoint point) const {
  return !onCap(point) && point.y() > grooveY() + drawnHeight() / 5;
}

void TwoValueSlider::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const double h = drawnHeight();
  const int y = grooveY();
  // The groove, sunken, with a tick every 16 steps.
  const QRectF groove(grooveLeft(), y - h / 16, grooveRight() - grooveLeft(), h / 8);
  painter.setPen(QPen(QColor(128, 128, 128), 1));
  painter.setBrush(QColor(64, 64, 64));
  painter.drawRoundedRect(groove, 2, 2);
  painter.setPen(QPen(QColor(96, 96, 96), 1));
  for (int v = 0; v <= Top + 1; v += 16) {
    const double x = xOf(std::min(v, Top));
    painter.drawLine(QPointF(x, y + h / 8), QPointF(x, y + h / 5));
  }
  // The second value: a red pointer under the groove.
  const double sx = xOf(second_);
  QPainterPath pointer;
  pointer.moveTo(sx, y + h / 5);
  pointer.lineTo(sx - h / 7, h - 2);
  pointer.lineTo(sx + h / 7, h - 2);
  pointer.closeSubpath();
  painter.setPen(QPen(QColor(128, 0, 0), 1));
  painter.setBrush(isEnabled() ? QColor(220, 0, 0) : QColor(160, 120, 120));
  painter.drawPath(pointer);
  // The main value: a fader cap across the groove, with its centre line.
  const double mx = xOf(main_);
  const QRectF cap(mx - h / 6, 1, h / 3, h * 4 / 5 - 2);
  QLinearGradient shade(cap.topLeft(), cap.bottomLeft());
  shade.setColorAt(0, QColor(245, 245, 245));
  shade.setColorAt(1, QColor(170, 170, 170));
  painter.setPen(QPen(hasFocus() ? QColor(0, 0, 160) : QColor(60, 60, 60), 1));
  painter.setBrush(shade);
  painter.drawRoundedRect(cap, 2, 2);
  painter.setPen(QPen(Qt::black, 1.5));
  painter.drawLine(QPointF(mx, cap.top() + 2), QPointF(mx, cap.bottom() - 2));
}

void TwoValueSlider::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  setFocus();
  const QPoint at = event->position().toPoint();
  drag_ = inSecondBand(at) ? Drag::Second : Drag::Main;
  if (drag_ == Drag::Second) {
    moveSecond(valueAt(at.x()));
  } else {
    moveMain(valueAt(at.x()));
  }
}

void TwoValueSlider::mouseMoveEvent(QMouseEvent* event) {
  const int value = valueAt(event->position().toPoint().x());
  if (drag_ == Drag::Main) moveMain(value);
  if (drag_ == Drag::Second) moveSecond(value);
}

void TwoValueSlider::mouseReleaseEvent(QMouseEvent*) { drag_ = Drag::None; }

void TwoValueSlider::resizeEvent(QResizeEvent*) { setMask(QRegion(0, 0, width(), drawnHeight())); }

void TwoValueSlider::wheelEvent(QWheelEvent* event) {
  const int steps = event->angleDelta().y() / 120;
  if (steps != 0) moveMain(main_ + steps);
  event->accept();
}

void TwoValueSlider::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Left:
    case Qt::Key_Down:
      moveMain(main_ - 1);
      return;
    case Qt::Key_Right:
    case Qt::Key_Up:
      moveMain(main_ + 1);
      return;
    case Qt::Key_PageDown:
      moveMain(main_ - 16);
      return;
    case Qt::Key_PageUp:
      moveMain(main_ + 16);
      return;
    case Qt::Key_Home:
      moveMain(0);
      return;
    case Qt::Key_End:
      moveMain(Top);
      return;
    default:
      Control::keyPressEvent(event);
  }
}

// Home and End move the fader while it has the focus, not the song.
bool TwoValueSlider::event(QEvent* event) {
  if (KeepOwnKeys(event, {Qt::Key_Home, Qt::Key_End})) return true;
  return Control::event(event);
}

}  // namespace shell
