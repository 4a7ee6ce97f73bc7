#pragma once
// The dialogs of the Edit menu's five transforms: Quantize (118), Length
// (119), Slide (121), Transpose (122) and Velocity (123), each with its
// region. Their logic is song/transform_dialogs.h; these only show it.
#include <map>

#include "shell/dialog_support.h"

class QAbstractButton;
class QComboBox;
class QFormLayout;

namespace shell {

class TransformDialog final : public CenteredDialog {
 public:
  TransformDialog(QWidget* parent, uint32_t dialog);
  QLineEdit* field(uint32_t id) const;
  QAbstractButton* box(uint32_t id) const;
  QComboBox* resolution() const { return resolution_; }
  void accept() override;

 private:
  // An edit in its row, with the unit it counts in to its right when there is one.
  QLineEdit* addField(QFormLayout* form, uint32_t id, const QString& label, const std::string& text,
                      const QString& unit = QString());
  QAbstractButton* addBox(QAbstractButton* box, uint32_t id, bool checked);
  QWidget* regionGroup(const std::string& from, const std::string& to, bool lowerFrom);

  uint32_t dialog_;
  std::map<uint32_t, QLineEdit*> fields_;
  std::map<uint32_t, QAbstractButton*> boxes_;
  QComboBox* resolution_ = nullptr;
};

// The transform's dialog, and on its OK the transform on the selected tracks.
void TransformCommand(QWidget* parent, uint32_t dialog);

}  // namespace shell
