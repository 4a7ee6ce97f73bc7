#pragma once
// The Controllers view ("Controlers"): sixteen strips in two columns, each a
// label, the second value in red, a two-value slider and the value last sent
// in blue. Moving a slider sends its controller at once; a double click on a
// label rebinds the strip through the Controlers dialog. Its logic is
// live/controllers.h; this only shows it.
#include <QComboBox>
#include <QLabel>
#include <array>
#include <map>

#include "live/controllers.h"
#include "shell/dialog_support.h"
#include "shell/two_value_slider.h"

namespace shell {

class ControllersWindow final : public QWidget, public platform::MessageTarget, public ControllersView {
 public:
  explicit ControllersWindow(QWidget* parent = nullptr);
  ~ControllersWindow() override;

  // WM_COMMAND from a slider: its id, and the code of the value that changed.
  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  platform::MessageTarget* slider(int slot) override { return sliders_[static_cast<std::size_t>(slot)]; }
  void setStaticText(uint32_t id, const std::string& text) override;

  TwoValueSlider* sliderWidget(int slot) const { return sliders_[static_cast<std::size_t>(slot)]; }
  QLabel* staticText(uint32_t id) const;
  // A double click at a point of the window: the Controlers dialog for the
  // strip whose label holds it.
  void doubleClickAt(QPoint point);

 protected:
  void paintEvent(QPaintEvent*) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  std::array<TwoValueSlider*, SliderSlots> sliders_{};
  std::map<uint32_t, QLabel*> statics_;
};

// Dialog 113, "Controlers": the controller and the channel for a strip.
class ControllerBindingDialog final : public CenteredDialog {
 public:
  explicit ControllerBindingDialog(QWidget* parent);
  QComboBox* controllers() const { return controllers_; }
  QComboBox* channels() const { return channels_; }

 private:
  QComboBox* controllers_;
  QComboBox* channels_;
};

}  // namespace shell
