#pragma once
// The controls of the Control Bar and the Control Panel: the two-state button,
// the push button, the vertical and horizontal bars, the tempo's up-down
// control and the seven-segment position counter. Each answers the messages
// that the system sends its controls, and reports to its host as a control
// reports to its parent window: WM_COMMAND with the id in the low word and a
// notification code in the high word.
#include <QColor>
#include <QString>
#include <QWidget>
#include <cstdint>

#include "platform/command_ids.h"
#include "platform/message_loop.h"

namespace shell {


// 0x00BBGGRR, the platform's colour word.
QColor ColorOfWord(uint32_t word);
uint32_t WordOfColor(const QColor& color);

// What a button shows: a drawn symbol, or its text.
enum class Face {
  Text, Play, Stop, Record, Rewind, End, Generate, Link, Quantize, Metronome, MidiSync, InternalClock, Panic,
  Store, On, Load, Save, Settings
};

// The common part: an id, a host to report to, and the message entry.
class Control : public QWidget, public platform::MessageTarget {
 public:
  Control(QWidget* parent, platform::MessageTarget* host, uint32_t id);
  ~Control() override;
  uint32_t id() const { return id_; }

 protected:
  // WM_COMMAND to the host, at once, as a control notifies its parent.
  void report(uint32_t code);

 private:
  platform::MessageTarget* host_;
  uint32_t id_;
};

// A button with a face. The two-state kind stays down after a click until a
// second click or BUTTON_SET_STATE 0 raises it; the push kind ("SpeedBarButton")
// is down only while held. Both report a click with code 0.
class Button : public Control {
 public:
  enum class Kind { TwoState, Push };
  Button(QWidget* parent, platform::MessageTarget* host, uint32_t id, Kind kind, Face face, QString text = {});
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  bool isDown() const { return down_; }
  void setDown(bool down);
  // A lit face: the control's command runs (playing, recording, generating,
  // waiting for a clock), also while the button itself is disabled.
  bool isLit() const { return lit_; }
  void setLit(bool lit);
  // A two-state text button that names its state: this text while raised.
  void setRaisedText(QString text);
  QString shownText() const { return !down_ && !raisedText_.isEmpty() ? raisedText_ : text_; }
  // A user's click, as the mouse or the keyboard gives it.
  void click();
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  void changeEvent(QEvent*) override;

 private:
  Kind kind_;
  Face face_;
  QString text_;
  QString raisedText_;
  bool down_ = false;
  bool held_ = false;
  bool lit_ = false;
};

// The colour of a lit face: green for Play, red for Record, amber for the
// generator and for a clock awaited, light green for a pressed text button.
QColor LitColor(Face face);

// A bar that the user drags; its range runs from 0 to its length less 3.
class Bar : public Control {
 public:
  enum class Orientation { Vertical, Horizontal };
  Bar(QWidget* parent, platform::MessageTarget* host, uint32_t id, Orientation orientation, int length);
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  int value() const { return value_; }
  int track() const { return track_; }
  int maximum() const { return length_ - 3; }
  // A finished move to a value, as the user's drag ends there.
  void moveTo(int value);
  // The value under the pointer during a drag, reported with code 0.
  void trackTo(int value);

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;
  void keyPressEvent(QKeyEvent*) override;

 private:
  int valueAt(QPoint point) const;
  QColor barColor();
  Orientation orientation_;
  int length_;
  int value_ = 0;
  int track_ = 0;
  bool dragging_ = false;
  QColor color_{0, 128, 128};
  platform::MessageTarget* host_;
};

// Two arrows: up and down beside the tempo's field (WM_VSCROLL to the host),
// or left and right under the Functions window's graph (WM_HSCROLL).
class UpDown : public Control {
 public:
  enum class Orientation { Vertical, Horizontal };
  UpDown(QWidget* parent, platform::MessageTarget* host, uint32_t id, int low, int high,
         Orientation orientation = Orientation::Vertical);
  intptr_t handleMessage(uint32_t, uintptr_t, uintptr_t) override { return 0; }
  int position() const { return position_; }
  int low() const { return low_; }
  int high() const { return high_; }
  void setPosition(int position);
  void setRange(int low, int high);
  // One step up or down, as a click on an arrow: the host gets the new
  // position with SB_THUMBPOSITION, then SB_ENDSCROLL.
  void step(int delta);

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void wheelEvent(QWheelEvent*) override;

 private:
  void scroll(uint32_t code);
  int low_, high_, position_;
  Orientation orientation_;
  platform::MessageTarget* host_;
};

// The position counter: digits and colons in seven segments, cells of 16 by 28.
class SegmentCounter : public QWidget {
 public:
  explicit SegmentCounter(QWidget* parent);
  void setText(const QString& text);
  QString text() const { return text_; }
  QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent*) override;

 private:
  QString text_;
};

// A raised or sunken edge around a rectangle, in the platform's 3-D look.
void PaintEdge(QPainter& painter, const QRect& r, bool sunken);

// A control kept in a map by its id, or null.
template <typename Map>
typename Map::mapped_type FindById(const Map& controls, uint32_t id) {
  const auto found = controls.find(id);
  return found != controls.end() ? found->second : nullptr;
}

// Draws a face in a square, in the pen's colour, for buttons and the toolbar.
void PaintFace(QPainter& painter, Face face, const QRectF& box, const QColor& ink);

}  // namespace shell
