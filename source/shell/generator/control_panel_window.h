#pragma once
// The Control Panel view: ten bars for the bounds of the five Distributions,
// sixteen channel buttons, Overlap, the time scale and the functions' rate,
// and the Pitch Selection Settings dialog behind its settings button.
#include <QDialog>
#include <QLabel>
#include <QWidget>
#include <array>
#include <map>

#include "platform/message_loop.h"
#include "platform/view_registry.h"
#include "shell/controls.h"
#include "shell/dialog_support.h"

class QButtonGroup;
class QCheckBox;
class QLineEdit;
class QRadioButton;

namespace shell {

class ControlPanelWindow final : public QWidget, public platform::MessageTarget, public platform::RefreshableView {
 public:
  explicit ControlPanelWindow(QWidget* parent = nullptr);
  ~ControlPanelWindow() override;

  intptr_t handleMessage(uint32_t msg, uintptr_t param1, uintptr_t param2) override;
  // Sets the buttons and bars from the set-up; their commits follow.
  void refresh() override;

  Bar* bar(uint32_t id) const;
  Button* button(uint32_t id) const;
  QLabel* number(uint32_t id) const;
  QSize sizeHint() const override { return {650, 280}; }

 protected:
  void paintEvent(QPaintEvent*) override;

 private:
  void createControls();
  QLabel* addNumber(uint32_t id, QRect place, QColor ink);
  void commitBoundBar(uint32_t id, uint32_t code);
  void commitHorizontalBar(uint32_t id, uint32_t code);
  void command(uint32_t id, uint32_t code);
  std::map<uint32_t, Bar*> bars_;
  std::map<uint32_t, Button*> buttons_;
  std::map<uint32_t, QLabel*> numbers_;
};

// "Pitch Selection Settings": note or interval mode, and the interval mode's
// start note, bounds and mirror.
class PitchSelectionDialog final : public CenteredDialog {
 public:
  explicit PitchSelectionDialog(QWidget* parent);
  QLineEdit* field(uint32_t id) const;
  QRadioButton* noteMode() const { return note_; }
  QRadioButton* intervalMode() const { return interval_; }
  QCheckBox* mirror() const { return mirror_; }
  void accept() override;

 private:
  QRadioButton* note_;
  QRadioButton* interval_;
  QCheckBox* mirror_;
  std::map<uint32_t, QLineEdit*> fields_;
};

}  // namespace shell
