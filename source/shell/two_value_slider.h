#pragma once
// The two-value slider of the Controllers window: a horizontal fader whose
// main value (0..127) is the cap the user drags, and a second value (0..127)
// marked by a red pointer under the groove that the user drags by itself, a
// mark to come back to. Both answer the requests SLIDER_SET_MAIN..GET_SECOND,
// and every change the user makes is reported to the host: code 1 for the
// main value, 0 for the second. Drawn from the widget's size, so it stays
// clear at any scale.
#include "shell/controls.h"

namespace shell {

class TwoValueSlider final : public Control {
 public:
  TwoValueSlider(QWidget* parent, platform::MessageTarget* host, uint32_t id);
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  int mainValue() const { return main_; }
  int secondValue() const { return second_; }
  // A user's change of either value, reported when it changes anything.
  void moveMain(int value);
  void moveSecond(int value);
  // Where a value stands along the groove, in the widget's pixels.
  int xOf(int value) const;
  int valueAt(int x) const;
  // The band under the groove that holds the second value's pointer, the cap excepted.
  bool inSecondBand(QPoint point) const;
  bool onCap(QPoint point) const;
  QSize sizeHint() const override { return {145, 32}; }

 protected:
  void paintEvent(QPaintEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;
  void wheelEvent(QWheelEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  void resizeEvent(QResizeEvent*) override;
  bool event(QEvent* event) override;

 private:
  enum class Drag { None, Main, Second };
  int drawnHeight() const;
  int grooveLeft() const;
  int grooveRight() const;
  int grooveY() const;
  int main_ = 0;
  int second_ = 0;
  Drag drag_ = Drag::None;
};

}  // namespace shell
