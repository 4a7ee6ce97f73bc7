#include "shell/generator/boards_window.h"

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

BoardsWindow::BoardsWindow(QWidget* parent) : CurveEditView(parent, 148) {
  setObjectName(QStringLiteral("BoardsWin"));
  setWindowTitle(QStringLiteral("Boards"));
  setMinimumSize(sizeHint());
  BoardsOpen = 1;
  ::BoardsWindow = this;
  ThumbnailButtons thumbs = MakeThumbnailButtons(this, this, ID_BOARD_FIRST_STORE, ID_PITCH_BOARD_FIRST_ON, boardNames());
  buttons_.insert(thumbs.push.begin(), thumbs.push.end());
  buttons_.insert(thumbs.onOff.begin(), thumbs.onOff.end());
  showOnButtons();
}

BoardsWindow::~BoardsWindow() {
  BoardsOpen = 0;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

Button* BoardsWindow::button(uint32_t id) const { return FindById(buttons_, id); }

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

PlotPoint BoardsWindow::pointNumbers(PlotCell cell) const { return {cell.column, CurveEditArea.valueOfRow(cell.row)}; }

bool BoardsWindow::setPoint(PlotCell cell) {
  SetEditPoint(cell);
  return true;
}

void BoardsWindow::pickUp(int board) { PickUpBoard(board); }

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
    paintLabelBoxes(painter);
  }
  for (int column = 0; column < BoardPoints; ++column) drawColumn(canvas, column);
  for (int n = 0; n < ThumbnailCount; ++n) drawThumbnail(canvas, n);
}

}  // namespace shell
