#pragma once
// The settings dialogs behind the Settings, Realtime, Select and Goto menus:
// filters, quantize record, tempo, resolution, meter, metronome, MIDI
// devices, From, To, Go to and Seed. Each is modal and centred on the
// desktop; its fields and buttons carry their ids as object names.
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QStringList>
#include <array>
#include <functional>
#include <map>
#include <memory>

#include "shell/dialog_support.h"

namespace shell {

// One field under a label, with notes below it, and OK and Cancel. OK asks
// the acceptor, which applies the field or refuses it (false keeps the
// dialog open). Tempo, Resolution, Quantize record, From, To, Go to and Seed.
class FieldDialog : public CenteredDialog {
 public:
  using Acceptor = std::function<bool(QLineEdit* field)>;
  FieldDialog(QWidget* parent, const QString& title, uint32_t id, const QString& label, const QString& text,
              const QStringList& notes, Acceptor acceptor);
  QLineEdit* field() const { return field_; }
  // A button beside OK and Cancel that opens something more.
  QPushButton* addButton(uint32_t id, const QString& text, std::function<void()> action);
  void accept() override;

 protected:
  QLineEdit* field_;
  Acceptor acceptor_;
};

// 105 "Tempo", 109 "Resolution", 102 "Quantizar", 106 "From", 107 "To",
// 108 "Go to" and 130 "Seed", ready to run.
std::unique_ptr<FieldDialog> MakeFieldDialog(QWidget* parent, uint32_t dialogId);

// 103 "Input Filters", 104 "Output Filtros", 101 "Filters": seven boxes,
// one for each kind of event, bits 0 to 6 of the dialog's filter word.
class FilterDialog final : public CenteredDialog {
 public:
  FilterDialog(QWidget* parent, uint32_t dialogId);
  QCheckBox* box(uint32_t id) const;
  void accept() override;

 private:
  uint32_t dialogId_;
  uint32_t base_;
  std::array<QCheckBox*, 7> boxes_{};
};

// 115 "Measure": beats per measure and the beat's value, checked by range
// and by picture.
class MeterDialog final : public CenteredDialog {
 public:
  explicit MeterDialog(QWidget* parent);
  QLineEdit* field(uint32_t id) const { return id == 2102 ? numerator_ : denominator_; }
  void accept() override;

 private:
  QLineEdit* numerator_;
  QLineEdit* denominator_;
};

// 116 "Metronome": count-in, click length and the two clicks, with the
// switches for play and record.
class MetronomeDialog final : public CenteredDialog {
 public:
  explicit MetronomeDialog(QWidget* parent);
  QLineEdit* field(uint32_t id) const;
  QCheckBox* box(uint32_t id) const { return id == 2105 ? onPlay_ : onRecord_; }
  void accept() override;

 private:
  std::map<uint32_t, QLineEdit*> fields_;
  QCheckBox* onPlay_;
  QCheckBox* onRecord_;
};

// 114 "Devices": every input and output of every backend. A double click
// chooses a device; OK opens the chosen ones again.
class DevicesDialog final : public CenteredDialog {
 public:
  explicit DevicesDialog(QWidget* parent);
  QListWidget* list(uint32_t id) const { return id == 1106 ? inputs_ : outputs_; }
  QLabel* chosen(uint32_t id) const { return id == 1108 ? inName_ : outName_; }
  QLineEdit* gain() const { return gain_; }
  void accept() override;

 private:
  QLineEdit* gain_;
  QListWidget* inputs_;
  QListWidget* outputs_;
  QLabel* inName_;
  QLabel* outName_;
};

}  // namespace shell
