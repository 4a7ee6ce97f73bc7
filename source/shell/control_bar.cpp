#include "shell/control_bar.h"

#include <QApplication>
#include <QLinearGradient>
#include <QPainter>
#include <cstdio>

#include "live/live_system.h"
#include "live/status_line.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"
#include "song/song_store.h"
#include "song/song_tempo.h"
#include "transport/transport_commands.h"

namespace shell {

namespace {

struct ButtonPlace {
  uint32_t id;
  Button::Kind kind;
  Face face;
  int x, y, width, height;
  const char* tip;
};

constexpr Button::Kind TwoState = Button::Kind::TwoState;
constexpr Button::Kind Push = Button::Kind::Push;

// The buttons in their order of creation, where they stand and what they do.
constexpr ButtonPlace ButtonPlaces[] = {
    {CMD_PLAY, TwoState, Face::Play, 230, 10, 22, 22, "Play"},
    {CMD_STOP, Push, Face::Stop, 253, 10, 22, 22, "Stop"},
    {CMD_RECORD, TwoState, Face::Record, 276, 10, 22, 22, "Record"},
    {CMD_REWIND, Push, Face::Rewind, 305, 10, 22, 22, "Rewind to the song's start"},
    {CMD_GO_TO_END, Push, Face::End, 328, 10, 22, 22, "Go to the song's end"},
    {CMD_GENERATE, TwoState, Face::Generate, 230, 42, 52, 36, "Generator on and off"},
    {CMD_LINK, TwoState, Face::Link, 289, 42, 36, 36, "Link: Play and Record start the generator"},
    {CMD_QUANTIZE_RECORD, TwoState, Face::Quantize, 402, 10, 22, 22, "Quantize record"},
    {CMD_METRONOME, TwoState, Face::Metronome, 427, 10, 22, 22, "Metronome"},
    {CMD_MIDI_SYNC, TwoState, Face::MidiSync, 452, 10, 22, 22, "Follow MIDI sync"},
    {CMD_INTERNAL_CLOCK, TwoState, Face::InternalClock, 477, 10, 22, 22, "Follow the internal clock"},
    {CMD_PANIC, Push, Face::Panic, 158, 43, 40, 36, "Panic: reset notes and controllers"},
};

struct FieldPlace {
  uint32_t id;
  int x, y, width, height;
  const char* text;
};

// The fields in their order of creation.
constexpr FieldPlace FieldPlaces[] = {
    {ID_NUMERATOR_FIELD, 415, 44, 24, 18, "1"},    {ID_DENOMINATOR_FIELD, 415, 62, 24, 18, "4"},
    {ID_TEMPO_FIELD, 463, 53, 63, 18, "120.00"},   {ID_FROM_FIELD, 50, 42, 94, 18, "00001:01:000"},
    {ID_TO_FIELD, 50, 62, 94, 18, "00001:01:000"},
};

// The program's mark beside the clock buttons.
void paintMark(QPainter& painter, const QRect& r) {
  QLinearGradient gradient(r.topLeft(), r.bottomLeft());
  gradient.setColorAt(0, QColor(0, 96, 96));
  gradient.setColorAt(1, QColor(0, 150, 140));
  painter.fillRect(r, gradient);
  QFont font(QStringLiteral("DejaVu Serif"));
  font.setPixelSize(22);
  font.setItalic(true);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(QColor(240, 230, 150));
  painter.drawText(r, Qt::AlignCenter, QStringLiteral("Velmora"));
}

}  // namespace

QString CounterText(uint32_t ticks) {
  const BarBeat at = BarBeatAt(ticks);
  char text[32];
  std::snprintf(text, sizeof text, "%05u:%02u:%03u", static_cast<unsigned>(at.bar), static_cast<unsigned>(at.beat),
                static_cast<unsigned>(at.tick));
  return QString::fromLatin1(text);
}

ControlBarWidget::ControlBarWidget(QWidget* parent) : QWidget(parent) {
  setObjectName(QStringLiteral("ControlBar"));
  setFixedHeight(Height);
  setAutoFillBackground(false);
  createControls();
  ControlBar = this;
  StartLiveSystem(this);  // the song's reset inside it sets the frame's title and gray states
}

ControlBarWidget::~ControlBarWidget() {
  StopLiveSystem();
  for (const auto& [id, button] : buttons_) SetControlBarControl(id, nullptr);
  if (ControlBar == this) ControlBar = nullptr;
  if (ControlBarWindow == this) ControlBarWindow = nullptr;
  if (platform::MessageLoop* loop = platform::messageLoop()) loop->forget(this);
}

void ControlBarWidget::createControls() {
  for (const FieldPlace& place : FieldPlaces) {
    auto* label = new QLabel(QString::fromLatin1(place.text), this);
    label->setObjectName(QString::number(place.id));
    label->setGeometry(place.x, place.y, place.width, place.height);
    label->setAlignment(Qt::AlignCenter);
    label->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    label->setAutoFillBackground(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, QColor(255, 255, 255));
    label->setPalette(palette);
    fields_[place.id] = label;
  }
  for (const ButtonPlace& place : ButtonPlaces) {
    auto* button = new Button(this, this, place.id, place.kind, place.face, QString::fromLatin1(place.tip));
    button->setGeometry(place.x, place.y, place.width, place.height);
    buttons_[place.id] = button;
    SetControlBarControl(place.id, button);
  }
  // The tempo's arrows stand at the right of their field.
  const QRect tempoField = fields_[ID_TEMPO_FIELD]->geometry();
  tempo_ = new UpDown(this, this, ID_TEMPO_UPDOWN, 10, 240);
  tempo_->setGeometry(tempoField.right() + 1, tempoField.top(), 16, tempoField.height());
  counter_ = new SegmentCounter(this);
  counter_->move(8, 8);
  counter_->setText(CounterText(0));
}

intptr_t ControlBarWidget::handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) {
  if (msg == WM_VSCROLL) {
    // The up-down control: every notice but the drag's gives a new tempo.
    if ((param1 & 0xFFFF) != SB_THUMBTRACK) TempoEntry(static_cast<int32_t>(param1 >> 16 & 0xFFFF));
    return 0;
  }
  return ControlBarMessage(msg, param1, param2);
}

void ControlBarWidget::setFieldText(uint32_t id, const std::string& text) {
  if (QLabel* label = field(id)) label->setText(QString::fromStdString(text));
}

void ControlBarWidget::showTempoField(double beatsPerMinute) {
  char text[32];
  std::snprintf(text, sizeof text, "%3.2f", beatsPerMinute);
  setFieldText(ID_TEMPO_FIELD, text);
}

void ControlBarWidget::showTempo(double beatsPerMinute) {
  showTempoField(beatsPerMinute);
  tempo_->setPosition(static_cast<int32_t>(beatsPerMinute));
}

void ControlBarWidget::enableControl(uint32_t id, bool enabled) {
  if (Button* b = button(id)) b->setEnabled(enabled);
}

void ControlBarWidget::drawCounter(uint32_t ticks) { counter_->setText(CounterText(ticks)); }

Button* ControlBarWidget::button(uint32_t id) const { return FindById(buttons_, id); }

QLabel* ControlBarWidget::field(uint32_t id) const { return FindById(fields_, id); }

void ControlBarWidget::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), QColor(192, 192, 192));
  PaintEdge(painter, QRect(QPoint(0, 1), QPoint(208, 83)), false);
  PaintEdge(painter, QRect(QPoint(208, 1), QPoint(387, 83)), false);
  PaintEdge(painter, QRect(QPoint(387, 40), QPoint(width(), 83)), false);
  PaintEdge(painter, QRect(QPoint(387, 1), QPoint(521, 40)), false);
  painter.fillRect(QRect(QPoint(5, 5), QPoint(201, 37)), QColor(16, 24, 16));
  PaintEdge(painter, QRect(QPoint(4, 4), QPoint(202, 38)), true);
  paintMark(painter, QRect(521, 1, 150, 39));
  QFont font = QApplication::font();
  painter.setFont(font);
  painter.setPen(QColor(0, 0, 0));
  painter.drawText(QRect(QPoint(8, 42), QPoint(50, 60)), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("From"));
  painter.drawText(QRect(QPoint(8, 62), QPoint(50, 80)), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("To"));
}

}  // namespace shell
