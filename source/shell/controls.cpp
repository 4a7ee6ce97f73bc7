#include "shell/controls.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QWheelEvent>
#include <algorithm>
#include <array>
#include <cmath>


namespace shell {

QColor ColorOfWord(uint32_t word) {
  return QColor(static_cast<int>(word & 0xFF), static_cast<int>(word >> 8 & 0xFF), static_cast<int>(word >> 16 & 0xFF));
}

uint32_t WordOfColor(const QColor& color) {
  return static_cast<uint32_t>(color.red()) | static_cast<uint32_t>(color.green()) << 8 |
         static_cast<uint32_t>(color.blue()) << 16;
}

// ---------------------------------------------------------------------------

Control::Control(QWidget* parent, platform::MessageTarget* host, uint32_t id) : QWidget(parent), host_(host), id_(id) {
  setObjectName(QString::number(id));
}

Control::~Control() {
  // A control's queued messages die with it, as a destroyed window's do.
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

void Control::report(uint32_t code) {
  if (host_ != nullptr) host_->handleMessage(WM_COMMAND, id_ | code << 16, reinterpret_cast<uintptr_t>(this));
}

// ---------------------------------------------------------------------------

void PaintEdge(QPainter& painter, const QRect& r, bool sunken) {
  const QColor light(255, 255, 255), shadow(128, 128, 128), dark(64, 64, 64);
  painter.setPen(sunken ? shadow : light);
  painter.drawLine(r.topLeft(), r.topRight());
  painter.drawLine(r.topLeft(), r.bottomLeft());
  painter.setPen(sunken ? light : dark);
  painter.drawLine(r.bottomLeft(), r.bottomRight());
  painter.drawLine(r.topRight(), r.bottomRight());
}

Button::Button(QWidget* parent, platform::MessageTarget* host, uint32_t id, Kind kind, Face face, QString text)
    : Control(parent, host, id), kind_(kind), face_(face), text_(std::move(text)) {
  setFocusPolicy(Qt::TabFocus);
  if (!text_.isEmpty()) setToolTip(text_);
  resize(sizeHint());
}

QSize Button::sizeHint() const {
  if (face_ == Face::Text) return {fontMetrics().horizontalAdvance(text_) + 12, 22};
  return {22, 22};
}

intptr_t Button::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg == BUTTON_SET_STATE) setDown(param1 != 0);
  return 0;
}

void Button::setDown(bool down) {
  if (down_ == down) return;
  down_ = down;
  update();
}

void Button::setLit(bool lit) {
  if (lit_ == lit) return;
  lit_ = lit;
  update();
}

void Button::setRaisedText(QString text) {
  raisedText_ = std::move(text);
  update();
}

QColor LitColor(Face face) {
  switch (face) {
    case Face::Play: return {70, 200, 90};
    case Face::Record: return {235, 80, 70};
    case Face::Generate:
    case Face::MidiSync: return {245, 190, 60};
    default: return {140, 215, 140};
  }
}

void Button::click() {
  if (!isEnabled()) return;
  if (kind_ == Kind::TwoState) setDown(!down_);
  report(0);
}

void Button::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  held_ = true;
  update();
}

void Button::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !held_) return;
  held_ = false;
  update();
  if (rect().contains(event->position().toPoint())) click();
}

void Button::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return) {
    click();
    return;
  }
  QWidget::keyPressEvent(event);
}

void Button::changeEvent(QEvent* event) {
  if (event->type() == QEvent::EnabledChange) update();
  QWidget::changeEvent(event);
}

void Button::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing, false);
  const bool pressed = down_ || held_;
  const QRect r = rect().adjusted(0, 0, -1, -1);
  // A pressed text button (a channel, Overlap) is lit, and so is any pressed
  // button too small for the lamp (a board's switch), so its state reads at a glance.
  const bool lit = lit_ || (kind_ == Kind::TwoState && down_ && (face_ == Face::Text || height() < 18));
  QColor fill = pressed ? QColor(176, 176, 176) : QColor(212, 212, 212);
  if (lit) fill = LitColor(face_);
  painter.fillRect(rect(), fill);
  PaintEdge(painter, r, pressed);
  if (hasFocus()) {
    painter.setPen(QPen(QColor(0, 0, 0), 1, Qt::DotLine));
    painter.drawRect(r.adjusted(2, 2, -2, -2));
  }
  // A lit face keeps its black ink while its command is disabled: it runs, it is not unavailable.
  const QColor ink = isEnabled() || lit ? QColor(0, 0, 0) : QColor(150, 150, 150);
  const double inset = height() < 16 ? 1 : 3;  // the channel buttons are 12 high
  const QRectF box = QRectF(rect()).adjusted(inset, inset, -inset, -inset).translated(pressed ? 1 : 0, pressed ? 1 : 0);
  if (face_ == Face::Text) {
    QFont font = painter.font();
    font.setBold(lit);
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(box, Qt::AlignCenter, shownText());
  } else {
    painter.setRenderHint(QPainter::Antialiasing, true);
    PaintFace(painter, face_, box, ink);
  }
  // A two-state button that is on shows a lamp in its corner.
  if (kind_ == Kind::TwoState && down_ && height() >= 18) {
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() || lit ? QColor(40, 200, 60) : QColor(120, 160, 120));
    painter.drawEllipse(QRectF(width() - 6.5, 2.5, 4, 4));
  }
}

// ---------------------------------------------------------------------------

Bar::Bar(QWidget* parent, platform::MessageTarget* host, uint32_t id, Orientation orientation, int length)
    : Control(parent, host, id), orientation_(orientation), length_(std::max(length, 3)), host_(host) {
  setFocusPolicy(Qt::ClickFocus);
}

intptr_t Bar::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) {
  switch (msg) {
    case BAR_SET_VALUE:
    case HBAR_SET_VALUE:
      moveTo(static_cast<int16_t>(param1));
      return 0;
    case BAR_GET_VALUE:
    case HBAR_GET_VALUE: return value_;
    case BAR_GET_TRACK: return track_;
    case BAR_SET_COLOR:
      color_ = ColorOfWord(static_cast<uint32_t>(param2));
      update();
      return 0;
    default: return 0;  // HBAR_INIT: the bar needs nothing more to start
  }
}

void Bar::moveTo(int value) {
  value_ = std::clamp(value, 0, maximum());
  track_ = value_;
  update();
  report(BAR_MOVED);
}

void Bar::trackTo(int value) {
  track_ = std::clamp(value, 0, maximum());
  update();
  report(BAR_TRACKING);
}

int Bar::valueAt(QPoint point) const {
  if (orientation_ == Orientation::Vertical) return maximum() - (point.y() - 1);
  return point.x() - 1;
}

void Bar::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  dragging_ = true;
  trackTo(valueAt(event->position().toPoint()));
}

void Bar::mouseMoveEvent(QMouseEvent* event) {
  if (dragging_) trackTo(valueAt(event->position().toPoint()));
}

void Bar::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !dragging_) return;
  dragging_ = false;
  moveTo(valueAt(event->position().toPoint()));
}

void Bar::keyPressEvent(QKeyEvent* event) {
  const bool vertical = orientation_ == Orientation::Vertical;
  switch (event->key()) {
    case Qt::Key_Up: moveTo(value_ + (vertical ? 1 : 0)); break;
    case Qt::Key_Down: moveTo(value_ - (vertical ? 1 : 0)); break;
    case Qt::Key_Right: moveTo(value_ + (vertical ? 0 : 1)); break;
    case Qt::Key_Left: moveTo(value_ - (vertical ? 0 : 1)); break;
    case Qt::Key_PageUp: moveTo(value_ + 10); break;
    case Qt::Key_PageDown: moveTo(value_ - 10); break;
    default: QWidget::keyPressEvent(event);
  }
}

QColor Bar::barColor() {
  if (orientation_ == Orientation::Horizontal && host_ != nullptr) {
    const auto answer = static_cast<uint32_t>(host_->handleMessage(HBAR_GET_COLOR, id(), 0));
    if ((answer & 1u << 24) != 0) return ColorOfWord(answer & 0xFFFFFF);
  }
  return color_;
}

void Bar::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const QRect r = rect();
  painter.fillRect(r, QColor(255, 255, 255));
  const int shown = dragging_ ? track_ : value_;
  QColor color = barColor();
  if (!isEnabled()) color = QColor(160, 160, 160);
  if (orientation_ == Orientation::Vertical) {
    const int top = 1 + (maximum() - shown);
    painter.fillRect(QRect(1, top, r.width() - 2, r.height() - 1 - top), color);
    painter.setPen(color.darker(150));
    painter.drawLine(1, top, r.width() - 2, top);
  } else {
    painter.fillRect(QRect(1, 1, shown + 1, r.height() - 2), color);
    painter.setPen(color.darker(150));
    painter.drawLine(shown + 1, 1, shown + 1, r.height() - 2);
  }
  PaintEdge(painter, r.adjusted(0, 0, -1, -1), true);
}

// ---------------------------------------------------------------------------

UpDown::UpDown(QWidget* parent, platform::MessageTarget* host, uint32_t id, int low, int high,
               Orientation orientation)
    : Control(parent, host, id), low_(low), high_(high), position_(low), orientation_(orientation), host_(host) {
  resize(orientation == Orientation::Vertical ? QSize(16, 18) : QSize(22, 22));
}

void UpDown::setPosition(int position) {
  position_ = std::clamp(position, low_, std::max(low_, high_));
  update();
}

void UpDown::setRange(int low, int high) {
  low_ = low;
  high_ = high;
  setPosition(position_);
}

void UpDown::step(int delta) {
  if (!isEnabled()) return;
  setPosition(position_ + delta);
  scroll(SB_THUMBPOSITION);
  scroll(SB_ENDSCROLL);
}

void UpDown::scroll(uint32_t code) {
  const uint32_t message = orientation_ == Orientation::Vertical ? WM_VSCROLL : WM_HSCROLL;
  if (host_ != nullptr) {
    host_->handleMessage(message, code | static_cast<uint32_t>(position_ & 0xFFFF) << 16,
                         reinterpret_cast<uintptr_t>(this));
  }
}

void UpDown::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  if (orientation_ == Orientation::Vertical) {
    step(event->position().y() < height() / 2.0 ? 1 : -1);
  } else {
    step(event->position().x() < width() / 2.0 ? -1 : 1);
  }
}

void UpDown::wheelEvent(QWheelEvent* event) {
  if (event->angleDelta().y() != 0) step(event->angleDelta().y() > 0 ? 1 : -1);
}

void UpDown::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const bool vertical = orientation_ == Orientation::Vertical;
  const int half = (vertical ? height() : width()) / 2;
  for (int i = 0; i < 2; ++i) {
    const int odd = i == 1 ? (vertical ? height() : width()) % 2 : 0;
    const QRect r = vertical ? QRect(0, i * half, width() - 1, half - 1 + odd)
                             : QRect(i * half, 0, half - 1 + odd, height() - 1);
    painter.fillRect(r, QColor(212, 212, 212));
    PaintEdge(painter, r, false);
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isEnabled() ? QColor(0, 0, 0) : QColor(150, 150, 150));
    const QPointF c = QRectF(r).center();
    const double s = 3;
    const double dir = i == 0 ? -1 : 1;  // up or left first
    if (vertical) {
      painter.drawPolygon(QPolygonF{{c.x() - s, c.y() - dir * s / 2}, {c.x() + s, c.y() - dir * s / 2},
                                    {c.x(), c.y() + dir * s / 2}});
    } else {
      painter.drawPolygon(QPolygonF{{c.x() - dir * s / 2, c.y() - s}, {c.x() - dir * s / 2, c.y() + s},
                                    {c.x() + dir * s / 2, c.y()}});
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
  }
}

// ---------------------------------------------------------------------------

SegmentCounter::SegmentCounter(QWidget* parent) : QWidget(parent) {
  setAttribute(Qt::WA_OpaquePaintEvent);
  resize(sizeHint());
}

QSize SegmentCounter::sizeHint() const { return {12 * 16, 28}; }

void SegmentCounter::setText(const QString& text) {
  if (text_ == text) return;
  text_ = text;
  update();
}

namespace {

// Segments a to g of each digit, as bits 0 to 6.
constexpr std::array<uint8_t, 10> DigitSegments = {0x3F, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D, 0x07, 0x7F, 0x6F};

void paintSegments(QPainter& painter, const QRectF& cell, uint8_t lit, const QColor& on, const QColor& off) {
  const double w = cell.width() - 4, h = cell.height() - 4, t = 2.6;
  const double x = cell.x() + 2, y = cell.y() + 2, mid = y + h / 2;
  const std::array<QRectF, 7> segments = {
      QRectF(x + t, y, w - 2 * t, t),            // a
      QRectF(x + w - t, y + t, t, h / 2 - t),    // b
      QRectF(x + w - t, mid, t, h / 2 - t),      // c
      QRectF(x + t, y + h - t, w - 2 * t, t),    // d
      QRectF(x, mid, t, h / 2 - t),              // e
      QRectF(x, y + t, t, h / 2 - t),            // f
      QRectF(x + t, mid - t / 2, w - 2 * t, t),  // g
  };
  for (int s = 0; s < 7; ++s) painter.fillRect(segments[static_cast<std::size_t>(s)], (lit >> s & 1) ? on : off);
}

}  // namespace

void SegmentCounter::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(16, 24, 16));
  const QColor on(120, 255, 90), off(30, 52, 30);
  for (int i = 0; i < text_.size(); ++i) {
    const QRectF cell(i * 16.0, 0, 16, 28);
    const QChar c = text_.at(i);
    if (c.isDigit()) {
      paintSegments(painter, cell, DigitSegments[static_cast<std::size_t>(c.digitValue())], on, off);
    } else if (c == u':') {
      painter.fillRect(QRectF(cell.center().x() - 1.5, 8, 3, 3), on);
      painter.fillRect(QRectF(cell.center().x() - 1.5, 18, 3, 3), on);
    }
  }
}

// ---------------------------------------------------------------------------

namespace {

QPolygonF triangle(const QRectF& b, bool right) {
  if (right) return QPolygonF{b.topLeft(), QPointF(b.right(), b.center().y()), b.bottomLeft()};
  return QPolygonF{b.topRight(), QPointF(b.left(), b.center().y()), b.bottomRight()};
}

QRectF square(const QRectF& box, double scale) {
  const double side = std::min(box.width(), box.height()) * scale;
  return QRectF(box.center().x() - side / 2, box.center().y() - side / 2, side, side);
}

}  // namespace

void PaintFace(QPainter& painter, Face face, const QRectF& box, const QColor& ink) {
  const QRectF b = square(box, 0.9);
  painter.save();
  painter.setPen(QPen(ink, 1.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  painter.setBrush(ink);
  const double u = b.width() / 8;
  switch (face) {
    case Face::Play: painter.drawPolygon(triangle(b.adjusted(u, 0, -u / 2, 0), true)); break;
    case Face::Stop: painter.drawRect(b.adjusted(u, u, -u, -u)); break;
    case Face::Record:
      painter.setBrush(ink == QColor(0, 0, 0) ? QColor(210, 30, 30) : ink);
      painter.setPen(Qt::NoPen);
      painter.drawEllipse(b.adjusted(u, u, -u, -u));
      break;
    case Face::Rewind:
      painter.drawRect(QRectF(b.left(), b.top() + u, u, b.height() - 2 * u));
      painter.drawPolygon(triangle(QRectF(b.left() + u, b.top() + u, 3.5 * u, b.height() - 2 * u), false));
      painter.drawPolygon(triangle(QRectF(b.left() + 4.5 * u, b.top() + u, 3.5 * u, b.height() - 2 * u), false));
      break;
    case Face::End:
      painter.drawPolygon(triangle(QRectF(b.left(), b.top() + u, 3.5 * u, b.height() - 2 * u), true));
      painter.drawPolygon(triangle(QRectF(b.left() + 3.5 * u, b.top() + u, 3.5 * u, b.height() - 2 * u), true));
      painter.drawRect(QRectF(b.right() - u, b.top() + u, u, b.height() - 2 * u));
      break;
    case Face::Generate: {  // a die showing five
      painter.setBrush(Qt::NoBrush);
      painter.drawRoundedRect(b.adjusted(u / 2, u / 2, -u / 2, -u / 2), u, u);
      painter.setBrush(ink);
      painter.setPen(Qt::NoPen);
      const double r = u * 0.75;
      for (const QPointF& p : {b.center(), b.topLeft() + QPointF(2.3 * u, 2.3 * u),
                               b.topRight() + QPointF(-2.3 * u, 2.3 * u), b.bottomLeft() + QPointF(2.3 * u, -2.3 * u),
                               b.bottomRight() + QPointF(-2.3 * u, -2.3 * u)})
        painter.drawEllipse(p, r, r);
      break;
    }
    case Face::Link: {  // two chain links
      painter.setBrush(Qt::NoBrush);
      painter.setPen(QPen(ink, 1.6));
      painter.save();
      painter.translate(b.center());
      painter.rotate(-45);
      painter.drawRoundedRect(QRectF(-3.6 * u, -1.3 * u, 4.4 * u, 2.6 * u), 1.3 * u, 1.3 * u);
      painter.drawRoundedRect(QRectF(-0.8 * u, -1.3 * u, 4.4 * u, 2.6 * u), 1.3 * u, 1.3 * u);
      painter.restore();
      break;
    }
    case Face::Quantize: {  // notes snapped to a grid
      painter.setPen(QPen(ink, 1));
      for (int i = 0; i <= 2; ++i) {
        const double x = b.left() + u + i * 3 * u;
        painter.drawLine(QPointF(x, b.top()), QPointF(x, b.bottom()));
      }
      painter.setPen(Qt::NoPen);
      painter.drawRect(QRectF(b.left() + u, b.top() + 1.5 * u, 3 * u, 1.6 * u));
      painter.drawRect(QRectF(b.left() + 4 * u, b.top() + 4.5 * u, 3 * u, 1.6 * u));
      break;
    }
    case Face::Metronome: {
      painter.setBrush(Qt::NoBrush);
      painter.drawPolygon(QPolygonF{QPointF(b.center().x() - u, b.top()), QPointF(b.center().x() + u, b.top()),
                                    QPointF(b.right() - u, b.bottom()), QPointF(b.left() + u, b.bottom())});
      painter.drawLine(QPointF(b.center().x(), b.bottom() - u), QPointF(b.right() - u / 2, b.top() + u));
      painter.drawLine(QPointF(b.left() + 1.5 * u, b.bottom() - 2 * u), QPointF(b.right() - 1.5 * u, b.bottom() - 2 * u));
      break;
    }
    case Face::MidiSync: {  // a MIDI socket
      painter.setBrush(Qt::NoBrush);
      painter.drawEllipse(b.adjusted(u / 2, u / 2, -u / 2, -u / 2));
      painter.setBrush(ink);
      painter.setPen(Qt::NoPen);
      const double r = b.width() / 2 - 2.2 * u;
      for (int pin = 0; pin < 5; ++pin) {
        const double a = (180.0 + 45.0 * pin) * 3.14159265358979 / 180.0;
        painter.drawEllipse(b.center() + QPointF(r * std::cos(a), -r * std::sin(a) + u), 0.6 * u, 0.6 * u);
      }
      painter.drawRect(QRectF(b.center().x() - 0.7 * u, b.bottom() - 1.8 * u, 1.4 * u, 0.9 * u));
      break;
    }
    case Face::InternalClock: {
      painter.setBrush(Qt::NoBrush);
      painter.drawEllipse(b.adjusted(u / 2, u / 2, -u / 2, -u / 2));
      painter.drawLine(b.center(), b.center() + QPointF(0, -2.6 * u));
      painter.drawLine(b.center(), b.center() + QPointF(1.9 * u, 0.6 * u));
      break;
    }
    case Face::Panic: {
      painter.setBrush(QColor(230, 190, 30));
      painter.drawPolygon(QPolygonF{QPointF(b.center().x(), b.top()), b.bottomRight(), b.bottomLeft()});
      painter.setPen(QPen(ink, 1.6));
      painter.drawLine(QPointF(b.center().x(), b.top() + 3 * u), QPointF(b.center().x(), b.bottom() - 2.4 * u));
      painter.drawPoint(QPointF(b.center().x(), b.bottom() - 1.2 * u));
      break;
    }
    case Face::Store:  // an arrow into a tray
    case Face::Load: {  // an arrow out of a tray
      painter.setBrush(Qt::NoBrush);
      painter.drawPolyline(QPolygonF{QPointF(b.left() + u, b.bottom() - 3 * u), QPointF(b.left() + u, b.bottom() - u),
                                     QPointF(b.right() - u, b.bottom() - u), QPointF(b.right() - u, b.bottom() - 3 * u)});
      const double x = b.center().x();
      const bool in = face == Face::Store;
      painter.drawLine(QPointF(x, b.top()), QPointF(x, b.bottom() - 2.5 * u));
      const double tip = in ? b.bottom() - 2.5 * u : b.top();
      const double back = in ? tip - 2 * u : tip + 2 * u;
      painter.drawPolyline(QPolygonF{QPointF(x - 2 * u, back), QPointF(x, tip), QPointF(x + 2 * u, back)});
      break;
    }
    case Face::Save: {  // a diskette
      painter.setBrush(Qt::NoBrush);
      painter.drawRect(b.adjusted(u / 2, u / 2, -u / 2, -u / 2));
      painter.drawRect(QRectF(b.left() + 2 * u, b.top() + u / 2, 4 * u, 2.5 * u));
      painter.drawRect(QRectF(b.left() + 1.5 * u, b.bottom() - 3.5 * u, 5 * u, 3 * u));
      break;
    }
    case Face::On: {
      painter.setBrush(Qt::NoBrush);
      painter.drawArc(b.adjusted(u, u, -u, -u), 120 * 16, 300 * 16);
      painter.drawLine(QPointF(b.center().x(), b.top()), QPointF(b.center().x(), b.center().y()));
      break;
    }
    case Face::Settings: {  // a cog
      painter.setBrush(Qt::NoBrush);
      painter.setPen(QPen(ink, 1.2));
      for (int tooth = 0; tooth < 8; ++tooth) {
        const double a = tooth * 3.14159265358979 / 4;
        painter.drawLine(b.center() + QPointF(2.4 * u * std::cos(a), 2.4 * u * std::sin(a)),
                         b.center() + QPointF(3.7 * u * std::cos(a), 3.7 * u * std::sin(a)));
      }
      painter.setPen(QPen(ink, 1.6));
      painter.drawEllipse(b.center(), 2.4 * u, 2.4 * u);
      painter.drawEllipse(b.center(), 0.9 * u, 0.9 * u);
      break;
    }
    case Face::Text: break;
  }
  painter.restore();
}

}  // namespace shell
