#include "shell/song/list_painting.h"

#include <QScreen>
#include <QStyle>
#include <QWidget>
#include <algorithm>

#include "shell/controls.h"

namespace shell {

void UseListFont(QWidget* view) {
  QFont small = view->font();
  small.setPixelSize(11);
  view->setFont(small);
}

void PaintHeaderCell(QPainter& painter, const QRect& cell, const QString& title) {
  PaintEdge(painter, cell.adjusted(0, 0, -1, -1), false);
  painter.setPen(Qt::black);
  painter.drawText(cell, Qt::AlignCenter, title);
}

void PaintRowBackground(QPainter& painter, const QRect& cells, bool focus) {
  painter.fillRect(cells, Qt::white);  // under the pattern, whose other pixels are left as they are
  if (focus) painter.fillRect(cells, QBrush(QColor(160, 160, 160), Qt::Dense6Pattern));
}

void PaintCellFrame(QPainter& painter, const QRect& cell) {
  static const QColor frame = ColorOfWord(0x808000);
  painter.setPen(frame);
  painter.drawRect(cell.adjusted(0, 0, 0, -1));
}

int ListRightEdge(const QWidget* widget, int minimum) {
  const QScreen* screen = widget->screen();
  const int screenWidth = screen != nullptr ? screen->geometry().width() : 1024;
  const int frames = 2 * widget->style()->pixelMetric(QStyle::PM_MdiSubWindowFrameWidth);
  const int scrollBar = widget->style()->pixelMetric(QStyle::PM_ScrollBarExtent);
  return std::max(minimum, screenWidth - scrollBar - frames);
}

}  // namespace shell
