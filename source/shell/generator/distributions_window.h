#pragma once
// The Distributions view: one weight table at a time as a bar graph, drawn
// with the mouse, with what lies outside the shown bounds inverted; five view
// buttons, the load and save of the shown table, and the "x:", "y:" and title
// labels.
#include <QLabel>
#include <QPushButton>
#include <map>

#include "platform/message_loop.h"
#include "platform/view_registry.h"
#include "shell/generator/curve_kit.h"

namespace shell {

class DistributionsWindow final : public CanvasView,
                                  public platform::MessageTarget,
                                  public platform::DistributionsView {
 public:
  explicit DistributionsWindow(QWidget* parent = nullptr);
  ~DistributionsWindow() override;

  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  // The Notes view in sight, its button checked, everything shown again.
  void refresh() override;
  void showColumnTitles() override;

  QPushButton* viewButton(uint32_t id) const;
  Button* fileButton(uint32_t id) const;
  QLabel* label(uint32_t id) const;
  QSize sizeHint() const override { return {640, 250}; }

 protected:
  void drawAll(QImage& canvas) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;

 private:
  void createControls();
  // Shows the view the state holds: its title, its button checked, a full paint.
  void showShownView();
  void selectView(uint32_t view);
  void setWeightAt(QPoint point);
  void drawBar(QImage& canvas, int x, int y, bool inverted);
  void drawAxes(QImage& canvas);
  void invertCursorMarks(QImage& canvas);
  std::map<uint32_t, QPushButton*> viewButtons_;
  std::map<uint32_t, Button*> fileButtons_;
  std::map<uint32_t, QLabel*> labels_;
};

}  // namespace shell
