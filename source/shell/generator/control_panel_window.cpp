#include "shell/generator/control_panel_window.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QVBoxLayout>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/distributions.h"
#include "generator/functions.h"
#include "platform/field_checks.h"
#include "platform/command_ids.h"
#include "platform/prompts.h"
#include "shell/dialog_support.h"
#include "shell/frame.h"
#include "shell/generator/curve_kit.h"

namespace shell {

namespace {

constexpr int BarHeights[5] = {130, 130, 35, 123, 103};
const QColor Teal(0, 128, 128);

}  // namespace

ControlPanelWindow::ControlPanelWindow(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("ControlPanelWin"));
  setWindowTitle(QStringLiteral("Control Panel"));
  ControlPanelOpen = 1;
  ::ControlPanelWindow = this;
  createControls();
  for (const uint32_t id : {ID_PANEL_TIME_CONTROL_BAR, ID_PANEL_FUNCTIONS_RATE_BAR})
    bars_[id]->handleMessage(HBAR_INIT, 100, 0);
  for (uint32_t i = 0; i < 10; ++i) ControlPanelBars[i] = bars_[ID_PANEL_FIRST_BAR + i];
  RefreshControlPanel(this);
}

ControlPanelWindow::~ControlPanelWindow() {
  ControlPanelOpen = 0;
  for (auto& bar : ControlPanelBars) bar = nullptr;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

QLabel* ControlPanelWindow::addNumber(uint32_t id, QRect place, QColor ink) {
  QLabel* label = MakeLabel(this, id, place, ink, ink == Qt::red ? PanelFace : QColor(255, 255, 255));
  numbers_[id] = label;
  return label;
}

void ControlPanelWindow::createControls() {
  for (int k = 0; k < 5; ++k) {
    const int x = 80 * k;
    const auto id = static_cast<uint32_t>(k);
    addNumber(ID_PANEL_FIRST_SUM + id, QRect(x + 45, 15, 26, 18), Qt::red);
    addNumber(ID_PANEL_FIRST_BOUND + 2 * id, QRect(x + 9, 47, 26, 18), Qt::black);
    addNumber(ID_PANEL_FIRST_BOUND + 1 + 2 * id, QRect(x + 45, 47, 26, 18), Qt::black);
    for (int lower = 0; lower < 2; ++lower) {
      const uint32_t barId = ID_PANEL_FIRST_BAR + 2 * id + static_cast<uint32_t>(lower);
      auto* bar = new Bar(this, this, barId, Bar::Orientation::Vertical, BarHeights[k]);
      bar->setGeometry(x + 9 + 36 * lower, 75, 26, BarHeights[k]);
      bar->handleMessage(BAR_SET_COLOR, 0, WordOfColor(Teal));
      bars_[barId] = bar;
    }
  }
  for (uint32_t channel = 0; channel < 16; ++channel) {
    const uint32_t id = ID_PANEL_FIRST_CHANNEL + channel;
    auto* button = new Button(this, this, id, Button::Kind::TwoState, Face::Text, QString::number(channel + 1));
    const int column = static_cast<int>(channel % 2), row = static_cast<int>(channel / 2);
    button->setGeometry(column == 0 ? 420 : 496, 10 + 19 * row, 36, 12);
    button->setToolTip(QStringLiteral("Channel %1").arg(channel + 1));
    buttons_[id] = button;
  }
  auto* overlap = new Button(this, this, ID_PANEL_OVERLAP, Button::Kind::TwoState, Face::Text, QStringLiteral("On"));
  overlap->setRaisedText(QStringLiteral("Off"));
  // Under its label and inside the Length panel, which ends at x 398.
  overlap->setGeometry(341, 194, 36, 12);
  overlap->setToolTip(QStringLiteral("Overlap"));
  buttons_[ID_PANEL_OVERLAP] = overlap;
  addNumber(ID_PANEL_TIME_BASE_NUMBER, QRect(96, 225, 64, 18), Qt::black);
  addNumber(ID_PANEL_FUNCTIONS_RATE_NUMBER, QRect(96, 249, 64, 18), Qt::black);
  for (const auto& [id, y] : {std::pair{ID_PANEL_TIME_CONTROL_BAR, 225}, std::pair{ID_PANEL_FUNCTIONS_RATE_BAR, 249}}) {
    auto* bar = new Bar(this, this, id, Bar::Orientation::Horizontal, 398);
    bar->setGeometry(167, y, 398, 18);
    bars_[id] = bar;
  }
  auto* settings = new Button(this, this, ID_PANEL_PITCH_SETTINGS, Button::Kind::Push, Face::Settings,
                              QStringLiteral("Pitch selection"));
  settings->setGeometry(571, 233, 24, 24);
  buttons_[ID_PANEL_PITCH_SETTINGS] = settings;
  // The way to draw the tables whose bounds the bars set.
  auto* distributions = new Button(this, this, ID_PANEL_DISTRIBUTIONS, Button::Kind::Push, Face::Text,
                                   QStringLiteral("Distributions"));
  distributions->setGeometry(420, 176, 112, 20);
  buttons_[ID_PANEL_DISTRIBUTIONS] = distributions;
  QFont numbers = font();
  numbers.setPixelSize(11);
  QFont buttonFont = numbers;
  buttonFont.setPixelSize(9);
  for (QObject* child : children()) {
    auto* widget = qobject_cast<QWidget*>(child);
    if (widget != nullptr) widget->setFont(dynamic_cast<Button*>(widget) != nullptr ? buttonFont : numbers);
  }
}

Bar* ControlPanelWindow::bar(uint32_t id) const { return FindById(bars_, id); }

Button* ControlPanelWindow::button(uint32_t id) const { return FindById(buttons_, id); }

QLabel* ControlPanelWindow::number(uint32_t id) const { return FindById(numbers_, id); }

void ControlPanelWindow::refresh() {
  update();  // the first column's title follows the pitch mode
  for (uint32_t n = 0; n < 16; ++n) buttons_[ID_PANEL_FIRST_CHANNEL + n]->setDown(ChannelWeights[n] == 1);
  buttons_[ID_PANEL_OVERLAP]->setDown(Overlap == 1);
  bars_[ID_PANEL_TIME_CONTROL_BAR]->handleMessage(HBAR_SET_VALUE, static_cast<uint16_t>(LiveBank.timeControl), 0);
  bars_[ID_PANEL_FUNCTIONS_RATE_BAR]->handleMessage(HBAR_SET_VALUE, FunctionsRate, 0);
  for (uint32_t i = 0; i < 10; ++i) {
    const auto d = static_cast<Distribution>(i / 2);
    const int16_t bound = i % 2 == 0 ? UpperBound(d) : LowerBound(d);
    bars_[ID_PANEL_FIRST_BAR + i]->handleMessage(BAR_SET_VALUE, static_cast<uint16_t>(bound), 0);
  }
}

intptr_t ControlPanelWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg == HBAR_GET_COLOR) return static_cast<intptr_t>(WordOfColor(Teal) | 1u << 24);
  if (msg != WM_COMMAND) return 0;
  const auto id = static_cast<uint32_t>(param1 & 0xFFFF);
  const auto code = static_cast<uint32_t>(param1 >> 16 & 0xFFFF);
  if (id >= ID_PANEL_FIRST_BAR && id <= ID_PANEL_LAST_BAR) {
    commitBoundBar(id, code);
  } else if (id == ID_PANEL_TIME_CONTROL_BAR || id == ID_PANEL_FUNCTIONS_RATE_BAR) {
    commitHorizontalBar(id, code);
  } else {
    command(id, code);
  }
  return 0;
}

void ControlPanelWindow::commitBoundBar(uint32_t id, uint32_t code) {
  Bar* moved = bars_[id];
  const uint32_t column = (id - ID_PANEL_FIRST_BAR) / 2;
  if (code == BAR_TRACKING) {
    numbers_[ID_PANEL_FIRST_SUM + column]->setNum(static_cast<int>(moved->handleMessage(BAR_GET_TRACK, 0, 0)));
    return;
  }
  const auto v = static_cast<int16_t>(moved->handleMessage(BAR_GET_VALUE, 0, 0));
  const uint32_t partner = CommitBoundBar(id, v);
  if (partner != 0) bars_[partner]->handleMessage(BAR_SET_VALUE, static_cast<uint16_t>(v), 0);
  numbers_[ID_PANEL_FIRST_BOUND + (id - ID_PANEL_FIRST_BAR)]->setNum(v);
}

void ControlPanelWindow::commitHorizontalBar(uint32_t id, uint32_t code) {
  if (code == BAR_TRACKING) return;
  const auto position = static_cast<uint32_t>(bars_[id]->handleMessage(HBAR_GET_VALUE, 0, 0));
  if (id == ID_PANEL_TIME_CONTROL_BAR) {
    CommitTimeControl(position);
    numbers_[ID_PANEL_TIME_BASE_NUMBER]->setNum(static_cast<int>(TimeBase.load()));
  } else {
    CommitFunctionsRate(position);
    numbers_[ID_PANEL_FUNCTIONS_RATE_NUMBER]->setNum(static_cast<int>(MapTimeScale(position)));
  }
}

void ControlPanelWindow::command(uint32_t id, uint32_t) {
  if (id >= ID_PANEL_FIRST_CHANNEL && id <= ID_PANEL_LAST_CHANNEL) {
    // The last lit channel cannot be turned off: its button is pressed again.
    if (!SwitchChannel(id)) buttons_[id]->handleMessage(BUTTON_SET_STATE, 1, 0);
  } else if (id == ID_PANEL_OVERLAP) {
    Overlap = Overlap == 1 ? 0 : 1;
  } else if (id == ID_PANEL_DISTRIBUTIONS) {
    if (auto* frame = dynamic_cast<MainFrame*>(window())) frame->command(CMD_VIEW_DISTRIBUTIONS);
  } else if (id == ID_PANEL_PITCH_SETTINGS) {
    PitchSelectionDialog dialog(this);
    dialog.exec();
    update();
  }
}

void ControlPanelWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), PanelFace);
  for (int k = 0; k < 5; ++k) PaintEdge(painter, QRect(80 * k, 0, 78, 209), false);
  PaintEdge(painter, QRect(400, 0, std::max(width() - 401, 1), 209), false);
  QFont small = font();
  small.setPointSize(std::max(small.pointSize() - 1, 6));
  painter.setFont(small);
  painter.setPen(QColor(0, 0, 0));
  // The titles stand above the sums' fields, so that none is covered by one.
  for (int k = 0; k < 5; ++k) {
    painter.drawText(QRect(80 * k + 4, 1, 72, 14), Qt::AlignLeft | Qt::AlignVCenter,
                     QString::fromStdString(ColumnTitles[static_cast<std::size_t>(k)]));
  }
  for (const auto& [id, label] : numbers_) {
    if (id < ID_PANEL_FIRST_SUM || id > ID_PANEL_LAST_SUM)
      PaintEdge(painter, label->geometry().adjusted(-1, -1, 0, 0), true);
  }
  for (const auto& [id, b] : bars_) PaintEdge(painter, b->geometry().adjusted(-1, -1, 0, 0), true);
  painter.setPen(QColor(0, 0, 0));
  painter.setFont(small);
  painter.drawText(QRect(320, 180, 78, 14), Qt::AlignCenter, QStringLiteral("Overlap"));
  painter.setFont(font());
  const int descent = painter.fontMetrics().descent();
  painter.drawText(QPoint(2, 238 - descent), QStringLiteral("Time Control"));
  painter.drawText(QPoint(2, 262 - descent), QStringLiteral("Functions Rate"));
}

// ---------------------------------------------------------------------------

PitchSelectionDialog::PitchSelectionDialog(QWidget* parent)
    : CenteredDialog(parent, QStringLiteral("Pitch Selection Settings")) {
  auto* layout = new QVBoxLayout(this);
  auto* modeBox = new QGroupBox(QStringLiteral("Pitch selection mode"), this);
  auto* modeLayout = new QVBoxLayout(modeBox);
  note_ = new QRadioButton(QStringLiteral("&Note"), modeBox);
  interval_ = new QRadioButton(QStringLiteral("&Interval"), modeBox);
  note_->setObjectName(QString::number(ID_PITCH_NOTES));
  interval_->setObjectName(QString::number(ID_PITCH_INTERVALS));
  modeLayout->addWidget(note_);
  modeLayout->addWidget(interval_);
  layout->addWidget(modeBox);
  auto* intervalBox = new QGroupBox(QStringLiteral("Interval mode settings"), this);
  auto* form = new QFormLayout(intervalBox);
  for (const auto& [id, label, value] : {std::tuple{ID_PITCH_FROM_NOTE, "From note:", FromNote.load()},
                                         std::tuple{ID_PITCH_MINIMUM, "Minimum bound:", IntervalMin.load()},
                                         std::tuple{ID_PITCH_MAXIMUM, "Maximum Bound:", IntervalMax.load()}}) {
    auto* edit = NumberField(intervalBox, id, QString::number(value));
    form->addRow(QString::fromLatin1(label), edit);
    fields_[id] = edit;
  }
  mirror_ = new QCheckBox(QStringLiteral("Mirror"), intervalBox);
  mirror_->setObjectName(QString::number(ID_PITCH_MIRROR));
  form->addRow(mirror_);
  layout->addWidget(intervalBox);
  layout->addWidget(OkCancelButtons(this));
  (IntervalMode == 1 ? interval_ : note_)->setChecked(true);
  mirror_->setChecked(Mirror != 0);
}

QLineEdit* PitchSelectionDialog::field(uint32_t id) const { return FindById(fields_, id); }

void PitchSelectionDialog::accept() {
  PitchSettings settings{interval_->isChecked(), FieldValue(field(ID_PITCH_FROM_NOTE)->text().toStdString()),
                         FieldValue(field(ID_PITCH_MINIMUM)->text().toStdString()),
                         FieldValue(field(ID_PITCH_MAXIMUM)->text().toStdString()), mirror_->isChecked()};
  if (settings.intervalMode) {
    const PitchSettingsCheck check = CheckPitchSettings(settings);
    if (!check.ok) {
      platform::ShowMessageBox(check.message, "Velmora", platform::MB_OK | platform::MB_ICONSTOP);
      SelectField(field(check.focus));
      return;
    }
  }
  ApplyPitchSettings(settings);
  CenteredDialog::accept();
}

}  // namespace shell
