#pragma once
// The Functions view: the graph of the scratch curve over the functions in
// the view mask, the ten functions as thumbnails with their apply and switch
// buttons, the scroll through long arrays, the load and save of the scratch
// curve, and the Functions Settings dialog behind its settings button.
#include <map>

#include "platform/message_loop.h"
#include "platform/view_registry.h"
#include "shell/dialog_support.h"
#include "shell/generator/curve_kit.h"

class QCheckBox;
class QRadioButton;

namespace shell {

// The colour each function is drawn in.
QColor FunctionColour(int function);

class FunctionsWindow final : public CurveEditView, public platform::MessageTarget, public platform::RefreshableView {
 public:
  explicit FunctionsWindow(QWidget* parent = nullptr);
  ~FunctionsWindow() override;

  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  // The switch buttons from the filters, the scroll's range and position, everything drawn again.
  void refresh() override;

  Button* button(uint32_t id) const;
  UpDown* scroll() const { return scroll_; }
  QSize sizeHint() const override { return {600, 200}; }

 protected:
  void drawAll(QImage& canvas) override;
  PlotPoint pointNumbers(PlotCell cell) const override;
  bool setPoint(PlotCell cell) override;
  void drawColumn(QImage& canvas, int column) override;
  void pickUp(int function) override;

 private:
  void command(uint32_t id);
  void openSettings();
  void drawGraph(QImage& canvas);
  void drawThumbnail(QImage& canvas, int function);
  std::map<uint32_t, Button*> buttons_;
  UpDown* scroll_ = nullptr;
};

// "Functions Settings": periodic or not, the length of all arrays, and the
// functions overlaid on the graph, whose boxes act at once and are put back by Cancel.
class FunctionsSettingsDialog final : public CenteredDialog {
 public:
  explicit FunctionsSettingsDialog(QWidget* parent);
  QLineEdit* length() const { return length_; }
  QRadioButton* periodic() const { return periodic_; }
  QRadioButton* nonPeriodic() const { return nonPeriodic_; }
  QCheckBox* viewBox(int function) const { return views_[static_cast<std::size_t>(function)]; }
  bool lengthChanged() const { return lengthChanged_; }
  void accept() override;
  void reject() override;

 private:
  QRadioButton* periodic_;
  QRadioButton* nonPeriodic_;
  QLineEdit* length_;
  std::array<QCheckBox*, 10> views_{};
  uint32_t maskAtOpening_;
  bool lengthChanged_ = false;
};

}  // namespace shell
