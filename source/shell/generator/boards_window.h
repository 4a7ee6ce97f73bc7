#pragma once
// The Boards view: a 128 by 128 edit area to draw a curve in, the ten boards
// as thumbnails, each with its "store" and "on" button, and the "x:" and "y:"
// labels. A double click on a thumbnail picks its curve up for editing.
#include <map>

#include "platform/message_loop.h"
#include "platform/view_registry.h"
#include "shell/generator/curve_kit.h"

namespace shell {

class BoardsWindow final : public CurveEditView, public platform::MessageTarget, public platform::RefreshableView {
 public:
  explicit BoardsWindow(QWidget* parent = nullptr);
  ~BoardsWindow() override;

  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  // The "on" buttons from the board flags, and the thumbnails drawn again.
  void refresh() override;

  Button* button(uint32_t id) const;
  QSize sizeHint() const override { return {560, 200}; }

 protected:
  void drawAll(QImage& canvas) override;
  PlotPoint pointNumbers(PlotCell cell) const override;
  bool setPoint(PlotCell cell) override;
  void drawColumn(QImage& canvas, int column) override;
  void pickUp(int board) override;

 private:
  void drawThumbnail(QImage& canvas, int board);
  void showOnButtons();
  std::map<uint32_t, Button*> buttons_;
};

}  // namespace shell
