#include "shell/generator/distributions_window.h"

#include <QButtonGroup>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "generator/distributions.h"
#include "platform/command_ids.h"

namespace shell {

namespace {

const QColor Black(0, 0, 0);
const QColor White(255, 255, 255);
const QColor Blue(0, 0, 255);
const QColor Yellow(255, 255, 0);

constexpr uint32_t ViewButtonIds[] = {ID_DIST_NOTES, ID_DIST_VELOCITY, ID_DIST_VOICES, ID_DIST_DENSITY, ID_DIST_LENGTH};

// The y of an entry's weight. A weight off 0..127 (a damaged set-up) is drawn at the nearer end of the plot.
int weightY(int16_t weight) { return PlotRect.top + (127 - std::clamp<int>(weight, 0, 127)) * RowStep; }

}  // namespace

DistributionsWindow::DistributionsWindow(QWidget* parent) : CanvasView(parent) {
  setObjectName(QStringLiteral("DistributionsWin"));
  setWindowTitle(QStringLiteral("Distributions"));
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(sizeHint());
  DistributionsOpen = 1;
  ::DistributionsWindow = this;
  SelectShownView(NotesView);  // the geometry as for Notes
  createControls();
  RefreshDistributions(this);
}

DistributionsWindow::~DistributionsWindow() {
  DistributionsOpen = 0;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

void DistributionsWindow::createControls() {
  auto* group = new QButtonGroup(this);
  for (int k = 0; k < DistributionCount; ++k) {
    const uint32_t id = ViewButtonIds[k];
    auto* button = new QPushButton(QString::fromStdString(ColumnTitles[static_cast<std::size_t>(k)]), this);
    button->setObjectName(QString::number(id));
    button->setGeometry(200 + 84 * k, 218, 84, 27);
    // "Checked" marks the view in sight; a refresh checks Notes.
    button->setCheckable(true);
    button->setFocusPolicy(Qt::TabFocus);
    group->addButton(button);
    connect(button, &QPushButton::clicked, this, [this, id] { selectView(ButtonView(id)); });
    viewButtons_[id] = button;
  }
  int fileX = 8;
  for (const auto& [id, face, hint] : {std::tuple{ID_CURVE_LOAD, Face::Load, "Load the table from a file"},
                                       std::tuple{ID_CURVE_SAVE, Face::Save, "Save the table to a file"}}) {
    auto* button = new Button(this, this, id, Button::Kind::Push, face);
    button->move(fileX, 4);
    button->setToolTip(QString::fromLatin1(hint));
    fileButtons_[id] = button;
    fileX += 23;
  }
  labels_[ID_DIST_X_LABEL] = MakeLabel(this, ID_DIST_X_LABEL, QRect(5, 223, 44, 18));
  labels_[ID_DIST_Y_LABEL] = MakeLabel(this, ID_DIST_Y_LABEL, QRect(61, 223, 44, 18));
  labels_[ID_DIST_TITLE_LABEL] = MakeLabel(this, ID_DIST_TITLE_LABEL, QRect(119, 223, 66, 18));
}

QPushButton* DistributionsWindow::viewButton(uint32_t id) const { return FindById(viewButtons_, id); }

Button* DistributionsWindow::fileButton(uint32_t id) const { return FindById(fileButtons_, id); }

QLabel* DistributionsWindow::label(uint32_t id) const { return FindById(labels_, id); }

void DistributionsWindow::refresh() { showShownView(); }

void DistributionsWindow::showColumnTitles() {
  const QString notes = QString::fromStdString(ColumnTitles[NotesDistribution]);
  viewButtons_[ID_DIST_NOTES]->setText(notes);
  if ((ShownView & NotesView) != 0) labels_[ID_DIST_TITLE_LABEL]->setText(notes);
}

void DistributionsWindow::showShownView() {
  labels_[ID_DIST_TITLE_LABEL]->setText(QString::fromStdString(ShownTitle()));
  viewButtons_[ViewButton(ShownView)]->setChecked(true);
  repaintAll();
}

void DistributionsWindow::selectView(uint32_t view) {
  SelectShownView(view);
  showShownView();
}

intptr_t DistributionsWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg != WM_COMMAND) return 0;
  const auto id = static_cast<uint32_t>(param1 & 0xFFFF);
  if (id == ID_CURVE_LOAD) {
    LoadShownTable(this);
    repaintAll();
  } else if (id == ID_CURVE_SAVE) {
    SaveShownTable(this);
  }
  return 0;
}

void DistributionsWindow::focusInEvent(QFocusEvent* event) {
  // Each activation reads the bounds back from the set-up.
  selectView(ShownView);
  CanvasView::focusInEvent(event);
}

void DistributionsWindow::mouseMoveEvent(QMouseEvent* event) {
  const QPoint point = event->position().toPoint();
  const auto cell = PlotRect.cellAt(point.x(), point.y());
  if (!cell) return;
  labels_[ID_DIST_X_LABEL]->setText(QStringLiteral("x:%1").arg(cell->column));
  labels_[ID_DIST_Y_LABEL]->setText(QStringLiteral("y:%1").arg(PlotRect.valueOfRow(cell->row)));
  QImage& canvas = liveCanvas();
  invertCursorMarks(canvas);
  MoveCursorMarks(*cell);
  invertCursorMarks(canvas);
  update();
  if (LeftButtonAlone(event->buttons(), event->modifiers())) setWeightAt(point);
}

void DistributionsWindow::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) setWeightAt(event->position().toPoint());
}

void DistributionsWindow::setWeightAt(QPoint point) {
  const auto cell = PlotRect.cellAt(point.x(), point.y());
  if (!cell) return;
  SetShownWeight(*cell);
  // The bar is redrawn in place. Inside a zone its point stays yellow, where
  // a full paint shows it blue.
  const int x = PlotRect.columnX(cell->column);
  drawBar(liveCanvas(), x, PlotRect.rowY(cell->row), RedrawInverted(x));
  update(QRect(x, PlotRect.top, 1, PlotRect.bottom() - PlotRect.top));
}

// A bar with its point at y, black above and blue below, or drawn as inverted
// by hand (white above, yellow below); the point itself is yellow either way.
void DistributionsWindow::drawBar(QImage& canvas, int x, int y, bool inverted) {
  DrawVerticalLine(canvas, x, PlotRect.top, y, inverted ? White : Black);
  DrawVerticalLine(canvas, x, y, PlotRect.bottom(), inverted ? Yellow : Blue);
  DrawPixel(canvas, x, y, Yellow);
}

void DistributionsWindow::drawAll(QImage& canvas) {
  {
    QPainter painter(&canvas);
    for (const auto& [id, label] : labels_) PaintLabelBox(painter, label->geometry().adjusted(-2, -2, 1, 1));
    painter.fillRect(GridRect(PlotRect), Black);
  }
  for (int column = 0; column < ShownEntries; ++column) {
    drawBar(canvas, PlotRect.columnX(column), weightY(ShownTable[static_cast<std::size_t>(column)]), false);
  }
  const int height = PlotRect.bottom() - PlotRect.top;
  for (const ZoneSpan zone : {BelowZone(), AboveZone()}) {
    if (!zone.empty()) InvertRect(canvas, QRect(zone.left, PlotRect.top, zone.right - zone.left, height));
  }
  drawAxes(canvas);
  invertCursorMarks(canvas);
}

void DistributionsWindow::drawAxes(QImage& canvas) {
  QPainter painter(&canvas);
  painter.setFont(font());
  painter.setPen(Black);
  const int textHeight = painter.fontMetrics().height();
  const int axisY = PlotRect.bottom() + 20;
  for (int i = 0; i < ShownEntries; ++i) {
    const int x = PlotRect.columnX(i);
    const int tick = i % 10 == 0 ? 12 : i % 5 == 0 ? 8 : 1;
    painter.drawLine(x, axisY, x, axisY - tick + 1);
    if (i % 10 == 0) painter.drawText(QRect(x - 20, axisY, 40, textHeight), Qt::AlignHCenter | Qt::AlignTop,
                                      QString::number(i));
  }
  for (int v = 128; v >= 1; --v) {
    const int y = PlotRect.top + (v - 1) * RowStep;
    const int tick = (v + 2) % 20 == 0 ? 12 : (v + 2) % 10 == 0 ? 8 : (v + 2) % 5 == 0 ? 1 : 0;
    if (tick > 0) painter.drawLine(30, y, 30 + tick - 1, y);
    if ((v + 2) % 20 == 0) {
      painter.drawText(QRect(10 - 15, y, 30, textHeight), Qt::AlignHCenter | Qt::AlignTop, QString::number(128 - v));
    }
  }
}

void DistributionsWindow::invertCursorMarks(QImage& canvas) {
  InvertRect(canvas, QRect(CursorX, PlotRect.bottom(), 1, 20));
  InvertRect(canvas, QRect(PlotRect.left - 20, CursorY, 20, 1));
}

}  // namespace shell
