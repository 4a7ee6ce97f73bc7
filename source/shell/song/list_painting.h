#pragma once
// What the Tracks manager and the Events list draw alike: the raised header
// band over the columns, the row's background (white, or a dotted pattern on
// the row with the focus) and the frames of its cells.
#include <QPainter>

namespace shell {

inline constexpr int ListHeaderHeight = 27;
// The margin kept right of a cell's text.
inline constexpr int CellTextMargin = 5;

// The font of both views: the columns' widths are set for the system's small
// dialog font, in which a time fits its cell.
void UseListFont(QWidget* view);
// A raised header cell with its title centred.
void PaintHeaderCell(QPainter& painter, const QRect& cell, const QString& title);
// The background of a row's cells: white, or the focus pattern over white.
void PaintRowBackground(QPainter& painter, const QRect& cells, bool focus);
// A cell's frame, in the lists' dark cyan.
void PaintCellFrame(QPainter& painter, const QRect& cell);
// Where the last column ends: the right edge of the screen less the view's
// scroll bar and frames, and never closer than minimum.
int ListRightEdge(const QWidget* widget, int minimum);

}  // namespace shell
