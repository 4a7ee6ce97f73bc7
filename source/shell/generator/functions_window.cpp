#include "shell/generator/functions_window.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPainter>
#include <QRadioButton>
#include <QVBoxLayout>
#include <algorithm>
#include <span>

#include "generator/functions.h"
#include "generator/functions_window.h"
#include "generator/raw_files.h"
#include "platform/command_ids.h"

namespace shell {

namespace {

const QColor Black(0, 0, 0);
const QColor Red(255, 0, 0);
const QColor LabelGray(128, 128, 128);

// The settings dialog's names of the functions, in index order.
constexpr const char* ViewBoxNames[FunctionCount] = {"Max Note", "Max Velocity", "Max Voices", "Max Density",
                                                     "Max Length", "Min Note", "Min Velocity", "Min Voices",
                                                     "Min Density", "Min Length"};

// A sample off 0..127 (a damaged set-up) is drawn at the nearer end of the graph.
int graphY(int8_t value) { return CurveEditArea.top + 127 - std::clamp<int>(value, 0, 127); }

int32_t functionLength() { return std::max<int32_t>(FunctionLength, 0); }

std::array<QString, ThumbnailCount> functionNames() {
  std::array<QString, ThumbnailCount> names;
  for (int f = 0; f < FunctionCount; ++f) {
    names[static_cast<std::size_t>(f)] = QString::fromLatin1(FunctionLabels[static_cast<std::size_t>(f)]);
  }
  return names;
}

}  // namespace

QColor FunctionColour(int function) {
  static const QColor colours[FunctionCount] = {{0, 255, 0},   {0, 0, 255},   {0, 255, 255}, {255, 0, 255},
                                                {255, 255, 0}, {0, 192, 0},   {0, 0, 192},   {0, 192, 192},
                                                {192, 0, 192}, {192, 192, 0}};
  return colours[std::clamp(function, 0, FunctionCount - 1)];
}

FunctionsWindow::FunctionsWindow(QWidget* parent) : CurveEditView(parent, 176) {
  setObjectName(QStringLiteral("FunctionsWin"));
  setWindowTitle(QStringLiteral("Functions"));
  setMinimumSize(sizeHint());
  FunctionsOpen = 1;
  ::FunctionsWindow = this;
  GraphScroll = 0;
  FunctionViewMask = 0;
  ThumbnailButtons thumbs =
      MakeThumbnailButtons(this, this, ID_FUNCTION_FIRST_APPLY, ID_FUNCTION_FIRST_ON, functionNames());
  buttons_.insert(thumbs.push.begin(), thumbs.push.end());
  buttons_.insert(thumbs.onOff.begin(), thumbs.onOff.end());
  scroll_ = new UpDown(this, this, ID_FUNCTIONS_SCROLL, 0, 0, UpDown::Orientation::Horizontal);
  scroll_->setGeometry(117, 145, 22, 22);
  scroll_->setToolTip(QStringLiteral("Scroll through the functions"));
  for (const auto& [id, face, x, y, hint] :
       {std::tuple{ID_CURVE_LOAD, Face::Load, 8, 144, "Load the curve from a file"},
        std::tuple{ID_CURVE_SAVE, Face::Save, 31, 144, "Save the curve to a file"},
        std::tuple{ID_FUNCTIONS_SETTINGS, Face::Settings, 571, 162, "Functions settings"}}) {
    auto* button = new Button(this, this, id, Button::Kind::Push, face);
    button->move(x, y);
    button->setToolTip(QString::fromLatin1(hint));
    buttons_[id] = button;
  }
  RefreshFunctionsWindow(this);
}

FunctionsWindow::~FunctionsWindow() {
  FunctionsOpen = 0;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

Button* FunctionsWindow::button(uint32_t id) const { return FindById(buttons_, id); }

void FunctionsWindow::refresh() {
  for (uint32_t f = 0; f < FunctionCount; ++f) {
    buttons_[ID_FUNCTION_FIRST_ON + f]->setDown((FunctionsFilters >> f & 1u) != 0);
  }
  scroll_->setRange(0, GraphScrollMaximum());
  scroll_->setPosition(GraphScroll);
  repaintAll();
}

intptr_t FunctionsWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  const auto low = static_cast<uint32_t>(param1 & 0xFFFF);
  const auto high = static_cast<uint32_t>(param1 >> 16 & 0xFFFF);
  if (msg == WM_COMMAND) {
    command(low);
  } else if (msg == WM_HSCROLL && low != SB_THUMBTRACK && ScrollGraph(static_cast<int32_t>(high))) {
    repaintAll();
  }
  return 0;
}

void FunctionsWindow::command(uint32_t id) {
  if (id >= ID_FUNCTION_FIRST_APPLY && id <= ID_FUNCTION_LAST_APPLY) {
    ApplyScratchCurve(id);
    repaintAll();
  } else if (id >= ID_FUNCTION_FIRST_ON && id <= ID_FUNCTION_LAST_ON) {
    SwitchFunction(id);  // the button keeps its own state; nothing is drawn again
  } else if (id == ID_CURVE_LOAD) {
    if (ScratchCurve) ReadFunctionFile(this, std::span<int8_t>(ScratchCurve.get(), functionLength()));
    repaintAll();
  } else if (id == ID_CURVE_SAVE) {
    if (ScratchCurve) WriteFunctionFile(this, std::span<const int8_t>(ScratchCurve.get(), functionLength()));
  } else if (id == ID_FUNCTIONS_SETTINGS) {
    openSettings();
  }
}

void FunctionsWindow::openSettings() {
  FunctionsSettingsDialog dialog(this);
  dialog.exec();
  if (dialog.lengthChanged()) {
    ClampGraphScroll();
    scroll_->setRange(0, GraphScrollMaximum());
    scroll_->setPosition(GraphScroll);
  }
  repaintAll();
}

PlotPoint FunctionsWindow::pointNumbers(PlotCell cell) const {
  const GraphSample sample = GraphSampleAt(cell);
  return {sample.index, sample.value};
}

bool FunctionsWindow::setPoint(PlotCell cell) { return SetScratchSample(GraphSampleAt(cell)); }

void FunctionsWindow::pickUp(int function) { PickUpFunction(function); }

void FunctionsWindow::drawColumn(QImage& canvas, int column) {
  // The column in place: black, then the overlaid functions, then the red
  // point, which lands on the row of the last function overlaid (the new
  // value's row only with none overlaid) until the next full paint.
  const int x = CurveEditArea.left + column;
  const auto i = static_cast<std::size_t>(column + GraphScroll);
  DrawVerticalLine(canvas, x, CurveEditArea.top, CurveEditArea.bottom(), Black);
  int y = graphY(ScratchCurve[i]);
  for (int f = 0; f < FunctionCount; ++f) {
    if ((FunctionViewMask >> f & 1u) == 0) continue;
    y = graphY(FunctionArrays[static_cast<std::size_t>(f)][i]);
    DrawPixel(canvas, x, y, FunctionColour(f));
  }
  DrawPixel(canvas, x, y, Red);
}

void FunctionsWindow::drawGraph(QImage& canvas) {
  {
    QPainter painter(&canvas);
    painter.fillRect(GridRect(CurveEditArea), Black);
  }
  if (!ScratchCurve) return;
  for (int column = 0; column < CurveEditArea.columns; ++column) {
    const int32_t i = column + GraphScroll;
    if (i >= functionLength()) break;
    const int x = CurveEditArea.left + column;
    for (int f = 0; f < FunctionCount; ++f) {
      if ((FunctionViewMask >> f & 1u) == 0) continue;
      DrawPixel(canvas, x, graphY(FunctionArrays[static_cast<std::size_t>(f)][i]), FunctionColour(f));
    }
    DrawPixel(canvas, x, graphY(ScratchCurve[static_cast<std::size_t>(i)]), Red);
  }
}

void FunctionsWindow::drawThumbnail(QImage& canvas, int function) {
  const QRect place = ThumbnailRect(function);
  {
    QPainter painter(&canvas);
    painter.fillRect(place, Black);
    QStringList labels;
    for (const char* label : FunctionLabels) labels << QString::fromLatin1(label);
    painter.setFont(FontToFit(font(), labels, ThumbnailSize));
    painter.setPen(LabelGray);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignTop,
                     QString::fromLatin1(FunctionLabels[static_cast<std::size_t>(function)]));
  }
  for (const PlotPoint p : FunctionThumbnailPoints(function)) {
    DrawPixel(canvas, place.left() + p.x, place.top() + p.y, FunctionColour(function));
  }
}

void FunctionsWindow::drawAll(QImage& canvas) {
  {
    QPainter painter(&canvas);
    PaintFrameAround(painter, GridRect(CurveEditArea));
    for (int n = 0; n < ThumbnailCount; ++n) PaintFrameAround(painter, ThumbnailRect(n));
    paintLabelBoxes(painter);
  }
  drawGraph(canvas);
  for (int f = 0; f < FunctionCount; ++f) drawThumbnail(canvas, f);
}

// ---------------------------------------------------------------------------

FunctionsSettingsDialog::FunctionsSettingsDialog(QWidget* parent)
    : CenteredDialog(parent, QStringLiteral("Functions Settings")), maskAtOpening_(FunctionViewMask) {
  auto* layout = new QVBoxLayout(this);
  periodic_ = new QRadioButton(QStringLiteral("&Periodic"), this);
  nonPeriodic_ = new QRadioButton(QStringLiteral("&Non Periodic"), this);
  periodic_->setObjectName(QString::number(ID_FUNCTIONS_PERIODIC));
  nonPeriodic_->setObjectName(QString::number(ID_FUNCTIONS_NON_PERIODIC));
  (FunctionsPeriodic != 0 ? periodic_ : nonPeriodic_)->setChecked(true);
  layout->addWidget(periodic_);
  layout->addWidget(nonPeriodic_);
  layout->addWidget(new QLabel(QStringLiteral("Length:"), this));
  length_ = NumberField(this, ID_FUNCTIONS_LENGTH, QString::number(static_cast<uint32_t>(FunctionLength.load())));
  layout->addWidget(length_);
  layout->addWidget(new QLabel(QStringLiteral("View:"), this));
  auto* boxes = new QGridLayout;
  for (int f = 0; f < FunctionCount; ++f) {
    auto* box = new QCheckBox(QString::fromLatin1(ViewBoxNames[f]), this);
    box->setObjectName(QString::number(ID_FUNCTIONS_FIRST_VIEW + static_cast<uint32_t>(f)));
    box->setChecked((FunctionViewMask >> f & 1u) != 0);
    connect(box, &QCheckBox::clicked, this, [f] { FunctionViewMask ^= 1u << f; });
    boxes->addWidget(box, f % 5, f / 5);
    views_[static_cast<std::size_t>(f)] = box;
  }
  layout->addLayout(boxes);
  layout->addWidget(OkCancelButtons(this));
}

void FunctionsSettingsDialog::accept() {
  auto* window = dynamic_cast<platform::MessageTarget*>(parentWidget());
  const FunctionsSettingsOutcome outcome =
      ApplyFunctionsSettings(window, periodic_->isChecked(), length_->text().toStdString());
  lengthChanged_ = lengthChanged_ || outcome.lengthChanged;
  if (outcome.closes) CenteredDialog::accept();
}

void FunctionsSettingsDialog::reject() {
  FunctionViewMask = maskAtOpening_;
  CenteredDialog::reject();
}

}  // namespace shell
