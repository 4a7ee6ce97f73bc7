#include "shell/controllers_window.h"

#include <QFormLayout>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

#include "platform/command_ids.h"
#include "platform/view_registry.h"

namespace shell {

namespace {

constexpr int RowHeight = 28;

// A strip's controls, relative to its row in the left column: x, y, width, height.
struct Place {
  int x, y, width, height;
};
constexpr Place LabelPlace{1, 1, 66, 26};
constexpr Place SecondValuePlace{100, 6, 20, 12};
constexpr Place SliderPlace{129, 1, 145, 32};
constexpr Place SentValuePlace{280, 6, 24, 16};
// The right column's controls do not all stand 320 further: its slider starts at 441 and its sent value at 587.
constexpr std::array<int, 4> RightXs = {321, 420, 441, 587};
// The etched cells of a row.
constexpr std::array<std::pair<int, int>, 6> Cells = {
    {{0, 68}, {68, 274}, {274, 310}, {320, 388}, {388, 586}, {586, 622}}};

QRect placeOf(const Place& place, int slot, int rightX) {
  const int x = slot < 8 ? place.x : rightX;
  return {x, (slot % 8) * RowHeight + place.y, place.width, place.height};
}

QLabel* makeStatic(QWidget* parent, const QColor& ink, Qt::Alignment alignment) {
  auto* label = new QLabel(parent);
  QPalette palette = label->palette();
  palette.setColor(QPalette::Window, QColor(192, 192, 192));
  palette.setColor(QPalette::WindowText, ink);
  label->setPalette(palette);
  label->setAutoFillBackground(true);
  label->setAlignment(alignment);
  return label;
}

}  // namespace

ControllersWindow::ControllersWindow(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("SlidersWin"));
  setWindowTitle(QStringLiteral("Controlers"));
  // The platform's default GUI font, in which a label's name fits its 66 pixels on two lines.
  QFont small = font();
  small.setPixelSize(11);
  setFont(small);
  ControllersOpen = 1;
  for (int slot = 0; slot < SliderSlots; ++slot) {
    QLabel* label = makeStatic(this, Qt::black, Qt::AlignLeft | Qt::AlignVCenter);
    label->setWordWrap(true);
    label->setGeometry(placeOf(LabelPlace, slot, RightXs[0]));
    statics_[SlotLabelId(slot)] = label;
    QLabel* second = makeStatic(this, Qt::red, Qt::AlignRight | Qt::AlignVCenter);
    second->setGeometry(placeOf(SecondValuePlace, slot, RightXs[1]));
    statics_[SlotSecondValueId(slot)] = second;
    QLabel* sent = makeStatic(this, Qt::blue, Qt::AlignRight | Qt::AlignVCenter);
    sent->setGeometry(placeOf(SentValuePlace, slot, RightXs[3]));
    statics_[SlotSentValueId(slot)] = sent;
    for (QLabel* text : {label, second, sent}) {
      // A double click on a static goes on to the window, which tests the label rectangles.
      text->setAttribute(Qt::WA_TransparentForMouseEvents);
    }
  }
  for (int slot = 0; slot < SliderSlots; ++slot) {
    auto* slider = new TwoValueSlider(this, this, SlotSliderId(slot));
    slider->setObjectName(QString::number(SlotSliderId(slot)));
    slider->setGeometry(placeOf(SliderPlace, slot, RightXs[2]));
    sliders_[static_cast<std::size_t>(slot)] = slider;
  }
  OpenControllers(*this);
}

ControllersWindow::~ControllersWindow() {
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
  ControllersOpen = 0;
}

intptr_t ControllersWindow::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t) {
  if (msg == WM_COMMAND)
    SliderReport(*this, static_cast<uint32_t>(param1 & 0xFFFF), static_cast<uint32_t>(param1 >> 16));
  return 0;
}

void ControllersWindow::setStaticText(uint32_t id, const std::string& text) {
  if (QLabel* label = staticText(id)) label->setText(QString::fromStdString(text));
}

QLabel* ControllersWindow::staticText(uint32_t id) const { return FindById(statics_, id); }

void ControllersWindow::doubleClickAt(QPoint point) {
  const int slot = SlotAtPoint(point.x(), point.y());
  if (slot < 0) return;
  AssociateSlot = slot;
  ControllerBindingDialog dialog(this);
  if (dialog.exec() != QDialog::Accepted) return;
  BindSlot(*this, AssociateSlot, dialog.controllers()->currentIndex(), dialog.channels()->currentIndex());
}

void ControllersWindow::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) doubleClickAt(event->position().toPoint());
}

void ControllersWindow::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(192, 192, 192));
  for (int row = 0; row < 8; ++row) {
    for (const auto& [left, right] : Cells) {
      const QRect cell(left, row * RowHeight, right - left, RowHeight);
      // An etched frame: a dark line inside a light one.
      painter.setPen(QColor(128, 128, 128));
      painter.drawRect(cell.adjusted(0, 0, -2, -2));
      painter.setPen(Qt::white);
      painter.drawRect(cell.adjusted(1, 1, -1, -1));
    }
  }
}

ControllerBindingDialog::ControllerBindingDialog(QWidget* parent)
    : CenteredDialog(parent, QStringLiteral("Controlers")) {
  setObjectName(QString::number(DLG_CONTROLLERS));
  controllers_ = new QComboBox(this);
  controllers_->setObjectName(QString::number(ID_CONTROLLERS_CONTROLLER));
  for (int n = 0; n < 128; ++n) controllers_->addItem(QString::fromStdString(ControllerName(n)));
  channels_ = new QComboBox(this);
  channels_->setObjectName(QString::number(ID_CONTROLLERS_CHANNEL));
  for (int c = 0; c < 16; ++c) channels_->addItem(QString::fromStdString(ChannelName(c)));
  // Always Main Volume on channel 1, whatever the strip is bound to now.
  controllers_->setCurrentIndex(BindingDialogController);
  channels_->setCurrentIndex(BindingDialogChannel);
  auto* form = new QFormLayout;
  form->addRow(QStringLiteral("Associate with:"), channels_);
  form->addRow(QStringLiteral("Controler:"), controllers_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

}  // namespace shell
