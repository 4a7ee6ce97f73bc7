#include "shell/generator/boards_window.h"

#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "generator/boards.h"
#include "platform/command_ids.h"

namespace shell {

namespace {

const QColor Black(0, 0, 0);
const QColor Red(255, 0, 0);
const QColor Green(0, 128, 0);

// A curve point off 0..127 (a damaged set-up) is drawn at the nearer end.
int shownValue(int16_t value) { return std::clamp<int>(value, 0, 127); }

std::array<QString, ThumbnailCount> boardNames() {
  std::array<QString, ThumbnailCount> names;
  for (int n = 0; n < ThumbnailCount; ++n) {
    names[static_cast<std::size_t>(n)] =
        QStringLiteral("board %1 (%2)").arg(n + 1).arg(QLatin1String(BoardLabels[static_cast<std::size_t>(n)]));
  }
  return names;
}

// The window's font, made small enough for the widest label to fit a thumbnail.
QFont labelFont(const QFont& font) {
  QStringList labels;
  for (const char* label : BoardLabels) labels << QString::fromLatin1(label);
  return FontToFit(font, labels, ThumbnailSize);
}

}  // namespace

BoardsWindow::BoardsWindow(QWidget* parent) : CanvasView(parent) {
  setObjectName(QStringLiteral("BoardsWin"));
  setWindowTitle(QStringLiteral("Boards"));
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(sizeHint());
  BoardsOpen = 1;
  ::BoardsWindow = this;
  ThumbnailButtons thumbs = MakeThumbnailButtons(this, this, ID_BOARD_FIRST_STORE, ID_PITCH_BOARD_FIRST_ON, boardNames());
  buttons_.insert(thumbs.push.begin(), thumbs.push.end());
  buttons_.insert(thumbs.onOff.begin(), thumbs.onOff.end());
  labels_[ID_CURVE_X_LABEL] = MakeLabel(this, ID_CURVE_X_LABEL, QRect(10, 148, 58, 18));
  labels_[ID_CURVE_Y_LABEL] = MakeLabel(this, ID_CURVE_Y_LABEL, QRect(80, 148, 58, 18));
  showOnButtons();
}

BoardsWindow::~BoardsWindow() {
  BoardsOpen = 0;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

Button* BoardsWindow::button(uint32_t id) const { return FindById(buttons_, id); }

QLabel* BoardsWindow::label(uint32_t id) const { return FindById(labels_, id); }

void BoardsWindow::showOnButtons() {
  const uint32_t flags = LiveBank.boardFlags;
  for (uint32_t n = 0; n < BoardCount; ++n) buttons_[ID_PITCH_BOARD_FIRST_ON + n]->setDown((flags >> n & 1) != 0);
}

void BoardsWindow::refresh() {
  showOnButtons();
  repaintAll();
}

intptr_t BoardsWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg != WM_COMMAND) return 0;
  const auto id = static_cast<uint32_t>(param1 & 0xFFFF);
  if (id >= ID_BOARD_FIRST_STORE && id <= ID_BOARD_LAST_STORE) {
    StoreEditCurve(id);
    drawThumbnail(liveCanvas(), static_cast<int>(id - ID_BOARD_FIRST_STORE));
    update(ThumbnailRect(static_cast<int>(id - ID_BOARD_FIRST_STORE)));
  } else if (id >= ID_PITCH_BOARD_FIRST_ON && id <= ID_BOARD_LAST_ON) {
    // A Pitch Wheel board raises the one that was on; the buttons follow the flags.
    PressBoardButton(id);
    showOnButtons();
  }
  return 0;
}

void BoardsWindow::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  const auto cell = CurveEditArea.cellAt(point.x(), point.y());
  if (!cell) return;
  labels_[ID_CURVE_X_LABEL]->setText(QStringLiteral("x:%1").arg(cell->column));
  labels_[ID_CURVE_Y_LABEL]->setText(QStringLiteral("y:%1").arg(CurveEditArea.valueOfRow(cell->row)));
  if (LeftButtonAlone(event->buttons(), event->modifiers())) setPointAt(point);
}

void BoardsWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) setPointAt(event->position().toPoint());
}

void BoardsWindow::mouseDoubleClickEvent(QMouseEvent* event) {
  // The press before it has already drawn; a double click elsewhere than on a thumbnail does nothing more.
  if (event->button() != Qt::LeftButton) return;
  const QPoint point = event->position().toPoint();
  const int board = ThumbnailAt(point.x(), point.y());
  if (board < 0) return;
  PickUpBoard(board);
  QImage& canvas = liveCanvas();
  for (int column = 0; column < BoardPoints; ++column) drawColumn(canvas, column);
  update(GridRect(CurveEditArea));
}

void BoardsWindow::setPointAt(QPoint point) {
  const auto cell = CurveEditArea.cellAt(point.x(), point.y());
  if (!cell) return;
  SetEditPoint(*cell);
  drawColumn(liveCanvas(), cell->column);
  update(QRect(CurveEditArea.left + cell->column, CurveEditArea.top, 1, CurveEditArea.rows));
}

void BoardsWindow::drawColumn(QImage& canvas, int column) {
  const int x = CurveEditArea.left + column;
  DrawVerticalLine(canvas, x, CurveEditArea.top, CurveEditArea.bottom(), Black);
  const int value = shownValue(EditCurve[static_cast<std::size_t>(column)]);
  DrawPixel(canvas, x, CurveEditArea.top + 127 - value, Red);
}

void BoardsWindow::drawThumbnail(QImage& canvas, int board) {
  const QRect place = ThumbnailRect(board);
  {
    QPainter painter(&canvas);
    painter.fillRect(place, Black);
    painter.setFont(labelFont(font()));
    painter.setPen(Green);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignBottom,
                     QString::fromLatin1(BoardLabels[static_cast<std::size_t>(board)]));
  }
  const auto& curve = LiveBank.boardCurves[static_cast<std::size_t>(board)];
  for (int i = 0; i < BoardPoints; ++i) {
    const int value = shownValue(curve[static_cast<std::size_t>(i)]);
    DrawPixel(canvas, place.left() + i / 2, place.top() + (127 - value) / 2, Red);
  }
}

void BoardsWindow::drawAll(QImage& canvas) {
  {
    QPainter painter(&canvas);
    PaintFrameAround(painter, GridRect(CurveEditArea));
    for (int n = 0; n < ThumbnailCount; ++n) PaintFrameAround(painter, ThumbnailRect(n));
    PaintLabelBox(painter, QRect(8, 146, 61, 21));
    PaintLabelBox(painter, QRect(78, 146, 61, 21));
  }
  for (int column = 0; column < BoardPoints; ++column) drawColumn(canvas, column);
  for (int n = 0; n < ThumbnailCount; ++n) drawThumbnail(canvas, n);
}

}  // namespace shell
