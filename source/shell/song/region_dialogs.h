#pragma once
// The Edit menu's Copy (110), Cut (111) and Paste (112) dialogs. Their logic
// is song/region_edits.h; these only show it.
#include <array>

#include "shell/dialog_support.h"

class QCheckBox;
class QRadioButton;

namespace shell {

// Copy, and Cut with its Delete hole box: the region's From and To.
class RegionDialog final : public CenteredDialog {
 public:
  RegionDialog(QWidget* parent, bool cut);
  QLineEdit* from() const { return from_; }
  QLineEdit* to() const { return to_; }
  QCheckBox* deleteHole() const { return hole_; }
  void accept() override;

 private:
  QLineEdit* from_;
  QLineEdit* to_;
  QCheckBox* hole_ = nullptr;
};

// Paste: Repetitions, To time, To track and the mode.
class PasteDialog final : public CenteredDialog {
 public:
  explicit PasteDialog(QWidget* parent);
  QLineEdit* field(uint32_t id) const;
  QRadioButton* mode(int mode) const { return modes_[static_cast<std::size_t>(mode)]; }
  void accept() override;

 private:
  std::array<QLineEdit*, 3> fields_{};
  std::array<QRadioButton*, 3> modes_{};
};

// The commands: each dialog, and on its OK the edit.
void CopyCommand(QWidget* parent);
void CutCommand(QWidget* parent);
void PasteCommand(QWidget* parent);

}  // namespace shell
