#include "shell/song/painted_list.h"

#include "shell/shortcuts.h"

#include <QKeyEvent>
#include <QScrollBar>
#include <algorithm>

namespace shell {

PaintedList::PaintedList(QWidget* parent, const QString& name) : QAbstractScrollArea(parent) {
  setObjectName(name);
  setFocusPolicy(Qt::StrongFocus);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  connect(verticalScrollBar(), &QScrollBar::valueChanged, viewport(), [this] { viewport()->update(); });
}

int PaintedList::topIndex() { return verticalScrollBar()->value(); }

void PaintedList::setTopIndex(int item) { verticalScrollBar()->setValue(std::max(item, 0)); }

int PaintedList::rowHeight() const { return fontMetrics().height() + 4; }

int PaintedList::rowAt(QPoint at) {
  const int row = verticalScrollBar()->value() + at.y() / rowHeight();
  return at.y() >= 0 && row < count() ? row : -1;
}

void PaintedList::updateScrollRange() {
  const int inSight = std::max(1, viewport()->height() / rowHeight());
  verticalScrollBar()->setRange(0, std::max(0, count() - inSight));
  verticalScrollBar()->setPageStep(inSight);
}

void PaintedList::scrollIntoSight(int row) {
  const int top = verticalScrollBar()->value();
  const int inSight = verticalScrollBar()->pageStep();
  if (row < top) verticalScrollBar()->setValue(row);
  if (row >= top + inSight) verticalScrollBar()->setValue(row - inSight + 1);
}

void PaintedList::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  updateScrollRange();
}

void PaintedList::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  viewport()->update();
}

void PaintedList::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  viewport()->update();
}

bool PaintedList::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (keepsKey(key) && KeepOwnKeys(event, {key})) return true;
  }
  return QAbstractScrollArea::event(event);
}

}  // namespace shell
