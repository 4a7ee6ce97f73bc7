#pragma once
// The kit of the windows that shape tables and curves with the mouse
// (Distributions, Boards, Functions):
// - CanvasView keeps what was drawn between paints, as a window's surface
//   does, so that a one-column redraw and an inverting cursor mark act on
//   what is shown, and a full paint starts from scratch;
// - pixel drawing on that canvas: lines that stop before their end point,
//   single pixels, inverted rectangles;
// - framed boxes, coordinate labels, and the "left button alone" test;
// - the ten thumbnails' buttons: "store" (or apply) and "on".
#include <QFont>
#include <QImage>
#include <QStringList>
#include <QLabel>
#include <QRect>
#include <QWidget>
#include <array>
#include <cstdint>
#include <map>

#include "generator/plot_grid.h"
#include "shell/controls.h"

namespace shell {

// The face of the panels and curve windows.
inline const QColor PanelFace(192, 192, 192);

// True when the left button is the only button or modifier key down: the
// gesture that draws. Anything else held only shows the numbers.
bool LeftButtonAlone(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers);

// Pixel drawing on a canvas, clipped to it. A line covers from its first
// point up to, not including, its last, in either direction.
void DrawVerticalLine(QImage& canvas, int x, int y0, int y1, QColor ink);
void DrawHorizontalLine(QImage& canvas, int y, int x0, int x1, QColor ink);
void DrawPixel(QImage& canvas, int x, int y, QColor ink);
void InvertRect(QImage& canvas, const QRect& r);

// The one-pixel sunken frame just outside a rectangle: gray along left and
// top, white along right and bottom.
void PaintFrameAround(QPainter& painter, const QRect& inner);
// A label's box: the sunken frame with a black inner line along left and top.
void PaintLabelBox(QPainter& painter, const QRect& box);
// The font made small enough for the widest of the labels to fit the width.
QFont FontToFit(QFont font, const QStringList& labels, int width);
// A centred label named by its id, black on white unless told otherwise.
QLabel* MakeLabel(QWidget* parent, uint32_t id, const QRect& place, QColor ink = QColor(0, 0, 0),
                  QColor paper = QColor(255, 255, 255));

// A view drawn on a canvas of its own size: drawAll() paints everything into
// it, and the view shows it. What is drawn between full paints stays.
class CanvasView : public QWidget {
 public:
  explicit CanvasView(QWidget* parent);
  // The canvas as shown, for reading pixels back.
  const QImage& canvas() const { return canvas_; }

 protected:
  // Paints the whole view into the canvas.
  virtual void drawAll(QImage& canvas) = 0;
  // Marks the whole view for painting again from scratch.
  void repaintAll();
  // The canvas to draw a part into at once; update() shows it.
  QImage& liveCanvas();
  void paintEvent(QPaintEvent*) override;
  void resizeEvent(QResizeEvent*) override;

 private:
  void drawIfStale();
  QImage canvas_;
  bool stale_ = true;
};

// A canvas view with the 128 by 128 edit area and ten thumbnails (Boards,
// Functions): the "x:" and "y:" labels, drawing with the left button alone,
// a press that sets one point, a double click on a thumbnail that picks its
// curve up. The views say what a point is and how a column is drawn.
class CurveEditView : public CanvasView {
 public:
  QLabel* label(uint32_t id) const;

 protected:
  // The labels 3000 and 3001 at this y, in their boxes.
  CurveEditView(QWidget* parent, int labelsY);
  // The numbers the labels show for a cell: the point's index and its value.
  virtual PlotPoint pointNumbers(PlotCell cell) const = 0;
  // Sets the point under a cell; false when there is none to set.
  virtual bool setPoint(PlotCell cell) = 0;
  virtual void drawColumn(QImage& canvas, int column) = 0;
  virtual void pickUp(int thumbnail) = 0;
  void paintLabelBoxes(QPainter& painter) const;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  // The press before it has already drawn; a double click elsewhere than on a thumbnail does nothing more.
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void setPointAt(QPoint point);
  std::map<uint32_t, QLabel*> labels_;
};

// The ten thumbnails' buttons: under each, at its top plus 70, a push button
// at its left less 4 and a two-state button at its left plus 44, 36 by 12.
struct ThumbnailButtons {
  std::map<uint32_t, Button*> push;
  std::map<uint32_t, Button*> onOff;
};
ThumbnailButtons MakeThumbnailButtons(QWidget* parent, platform::MessageTarget* host, uint32_t firstPush,
                                      uint32_t firstOn, const std::array<QString, ThumbnailCount>& names);
inline QRect ThumbnailRect(int n) {
  const PlotPoint o = ThumbnailOrigin(n);
  return {o.x, o.y, ThumbnailSize, ThumbnailSize};
}
inline QRect GridRect(const PlotGrid& grid) {
  return {grid.left, grid.top, grid.right() - grid.left, grid.bottom() - grid.top};
}

}  // namespace shell
