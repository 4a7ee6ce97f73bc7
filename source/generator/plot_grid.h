#pragma once
// The geometry shared by the windows that draw a curve or a table with the
// mouse: a grid of cells (one per entry across, one per value down, value 0
// at the bottom), the pointer's cell, and the ten thumbnails of the Boards and
// Functions windows. Pixels of the window's client area; no window needed.

#include <optional>

struct PlotCell {
  int column;
  int row;  // 0 at the top
};

struct PlotGrid {
  int left = 0;
  int top = 0;
  int columns = 0;
  int rows = 0;
  int columnStep = 1;
  int rowStep = 1;

  int right() const { return left + columns * columnStep; }
  int bottom() const { return top + rows * rowStep; }
  bool contains(int x, int y) const { return x >= left && x < right() && y >= top && y < bottom(); }
  // The cell under a pointer, or nothing outside the grid. The right and
  // bottom edges lie outside, as a region's do: a pointer there would name an
  // entry past the table or the value -1.
  std::optional<PlotCell> cellAt(int x, int y) const {
    if (!contains(x, y)) return std::nullopt;
    return PlotCell{(x - left) / columnStep, (y - top) / rowStep};
  }
  // The value a row stands for: the top row is the highest.
  int valueOfRow(int row) const { return rows - 1 - row; }
  // The x of a column's bar, in the middle of its cell, and the y of a row.
  int columnX(int column) const { return left + column * columnStep + columnStep / 2; }
  int rowY(int row) const { return top + row * rowStep; }
};

// The large edit area of the Boards and Functions windows: 128 by 128, one pixel per step.
inline constexpr PlotGrid CurveEditArea{10, 10, 128, 128, 1, 1};

// Ten thumbnails of 64 by 64: 0..4 across the top row, 5..9 across the second.
inline constexpr int ThumbnailCount = 10;
inline constexpr int ThumbnailSize = 64;
struct PlotPoint {
  int x;
  int y;
};
inline constexpr PlotPoint ThumbnailOrigin(int n) { return {158 + 80 * (n % 5), n < 5 ? 10 : 106}; }
// The thumbnail under a pointer, or -1.
inline int ThumbnailAt(int x, int y) {
  for (int n = 0; n < ThumbnailCount; ++n) {
    const PlotPoint o = ThumbnailOrigin(n);
    if (x >= o.x && x < o.x + ThumbnailSize && y >= o.y && y < o.y + ThumbnailSize) return n;
  }
  return -1;
}
