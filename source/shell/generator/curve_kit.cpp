#include "shell/generator/curve_kit.h"

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace shell {

bool LeftButtonAlone(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
  return buttons == Qt::LeftButton && (modifiers & ~Qt::KeypadModifier) == Qt::NoModifier;
}

void DrawPixel(QImage& canvas, int x, int y, QColor ink) {
  if (canvas.valid(x, y)) canvas.setPixel(x, y, ink.rgb());
}

void DrawVerticalLine(QImage& canvas, int x, int y0, int y1, QColor ink) {
  const int step = y1 >= y0 ? 1 : -1;
  for (int y = y0; y != y1; y += step) DrawPixel(canvas, x, y, ink);
}

void DrawHorizontalLine(QImage& canvas, int y, int x0, int x1, QColor ink) {
  const int step = x1 >= x0 ? 1 : -1;
  for (int x = x0; x != x1; x += step) DrawPixel(canvas, x, y, ink);
}

void InvertRect(QImage& canvas, const QRect& r) {
  const QRect on = r.intersected(canvas.rect());
  for (int y = on.top(); y <= on.bottom(); ++y) {
    for (int x = on.left(); x <= on.right(); ++x) canvas.setPixel(x, y, canvas.pixel(x, y) ^ 0x00FFFFFFu);
  }
}

void PaintFrameAround(QPainter& painter, const QRect& inner) { PaintEdge(painter, inner.adjusted(-1, -1, 1, 1), true); }

void PaintLabelBox(QPainter& painter, const QRect& box) {
  PaintEdge(painter, box, true);
  painter.setPen(QColor(0, 0, 0));
  painter.drawLine(box.left() + 1, box.top() + 1, box.right() - 1, box.top() + 1);
  painter.drawLine(box.left() + 1, box.top() + 1, box.left() + 1, box.bottom() - 1);
}

QFont FontToFit(QFont font, const QStringList& labels, int width) {
  for (int size = font.pointSize(); size > 5; --size) {
    font.setPointSize(size);
    const QFontMetrics metrics(font);
    if (std::all_of(labels.begin(), labels.end(),
                    [&](const QString& label) { return metrics.horizontalAdvance(label) < width; })) {
      break;
    }
  }
  return font;
}

QLabel* MakeLabel(QWidget* parent, uint32_t id, const QRect& place, QColor ink, QColor paper) {
  auto* label = new QLabel(parent);
  label->setObjectName(QString::number(id));
  label->setGeometry(place);
  label->setAlignment(Qt::AlignCenter);
  label->setAutoFillBackground(true);
  QPalette palette = label->palette();
  palette.setColor(QPalette::Window, paper);
  palette.setColor(QPalette::WindowText, ink);
  label->setPalette(palette);
  return label;
}

CanvasView::CanvasView(QWidget* parent) : QWidget(parent) { setAttribute(Qt::WA_OpaquePaintEvent); }

void CanvasView::repaintAll() {
  stale_ = true;
  update();
}

void CanvasView::drawIfStale() {
  if (!stale_ && canvas_.size() == size()) return;
  canvas_ = QImage(size().expandedTo(QSize(1, 1)), QImage::Format_RGB32);
  canvas_.fill(PanelFace);
  drawAll(canvas_);
  stale_ = false;
}

QImage& CanvasView::liveCanvas() {
  drawIfStale();
  return canvas_;
}

void CanvasView::paintEvent(QPaintEvent*) {
  drawIfStale();
  QPainter painter(this);
  painter.drawImage(0, 0, canvas_);
}

void CanvasView::resizeEvent(QResizeEvent* event) {
  stale_ = true;
  QWidget::resizeEvent(event);
}

CurveEditView::CurveEditView(QWidget* parent, int labelsY) : CanvasView(parent) {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  labels_[ID_CURVE_X_LABEL] = MakeLabel(this, ID_CURVE_X_LABEL, QRect(10, labelsY, 58, 18));
  labels_[ID_CURVE_Y_LABEL] = MakeLabel(this, ID_CURVE_Y_LABEL, QRect(80, labelsY, 58, 18));
}

QLabel* CurveEditView::label(uint32_t id) const { return FindById(labels_, id); }

void CurveEditView::paintLabelBoxes(QPainter& painter) const {
  for (const auto& [id, label] : labels_) PaintLabelBox(painter, label->geometry().adjusted(-2, -2, 1, 1));
}

void CurveEditView::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  const auto cell = CurveEditArea.cellAt(point.x(), point.y());
  if (!cell) return;
  const PlotPoint numbers = pointNumbers(*cell);
  labels_[ID_CURVE_X_LABEL]->setText(QStringLiteral("x:%1").arg(numbers.x));
  labels_[ID_CURVE_Y_LABEL]->setText(QStringLiteral("y:%1").arg(numbers.y));
  if (LeftButtonAlone(event->buttons(), event->modifiers())) setPointAt(point);
}

void CurveEditView::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) setPointAt(event->position().toPoint());
}

void CurveEditView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const QPoint point = event->position().toPoint();
  const int thumbnail = ThumbnailAt(point.x(), point.y());
  if (thumbnail < 0) return;
  pickUp(thumbnail);
  repaintAll();
}

void CurveEditView::setPointAt(QPoint point) {
  const auto cell = CurveEditArea.cellAt(point.x(), point.y());
  if (!cell || !setPoint(*cell)) return;
  drawColumn(liveCanvas(), cell->column);
  update(QRect(CurveEditArea.left + cell->column, CurveEditArea.top, 1, CurveEditArea.rows));
}

ThumbnailButtons MakeThumbnailButtons(QWidget* parent, platform::MessageTarget* host, uint32_t firstPush,
                                      uint32_t firstOn, const std::array<QString, ThumbnailCount>& names) {
  ThumbnailButtons buttons;
  for (int n = 0; n < ThumbnailCount; ++n) {
    const QRect thumb = ThumbnailRect(n);
    const auto offset = static_cast<uint32_t>(n);
    const QString& name = names[static_cast<std::size_t>(n)];
    auto* push = new Button(parent, host, firstPush + offset, Button::Kind::Push, Face::Store,
                            QStringLiteral("Store in %1").arg(name));
    push->setGeometry(thumb.left() - 4, thumb.top() + 70, 36, 12);
    auto* on = new Button(parent, host, firstOn + offset, Button::Kind::TwoState, Face::On,
                          QStringLiteral("%1 on").arg(name));
    on->setGeometry(thumb.left() + 44, thumb.top() + 70, 36, 12);
    buttons.push[firstPush + offset] = push;
    buttons.onOff[firstOn + offset] = on;
  }
  return buttons;
}

}  // namespace shell
