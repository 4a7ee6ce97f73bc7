#include "shell/song/region_dialogs.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QRadioButton>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/command_ids.h"
#include "song/region_edits.h"

namespace shell {

namespace {

QLineEdit* addField(QWidget* dialog, QFormLayout* form, uint32_t id, const char* label, const std::string& text) {
  auto* field = new QLineEdit(QString::fromStdString(text), dialog);
  field->setObjectName(QString::number(id));
  field->setMaxLength(15);
  form->addRow(QString::fromLatin1(label), field);
  return field;
}

}  // namespace

RegionDialog::RegionDialog(QWidget* parent, bool cut)
    : CenteredDialog(parent, cut ? QStringLiteral("Cut") : QStringLiteral("Copy")) {
  setObjectName(QString::number(cut ? DLG_CUT : DLG_COPY));
  const RegionTexts texts = OpenRegionDialog();
  auto* form = new QFormLayout;
  from_ = addField(this, form, ID_REGION_FROM, "&From:", texts.from);
  to_ = addField(this, form, ID_REGION_TO, "&To:", texts.to);
  if (cut) {
    hole_ = new QCheckBox(QStringLiteral("&Delete hole"), this);
    hole_->setObjectName(QString::number(ID_CUT_DELETE_HOLE));
    hole_->setChecked(DeleteHole == 1);
    form->addRow(QString(), hole_);
  }
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

void RegionDialog::accept() {
  const RegionTexts texts{from_->text().toStdString(), to_->text().toStdString()};
  if (hole_ != nullptr) {
    AcceptCutDialog(texts, hole_->isChecked());
  } else {
    AcceptRegionDialog(texts);
  }
  QDialog::accept();
}

PasteDialog::PasteDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Paste")) {
  setObjectName(QString::number(DLG_PASTE));
  const PasteTexts texts = OpenPasteDialog();
  auto* form = new QFormLayout;
  fields_[0] = addField(this, form, ID_PASTE_REPETITIONS, "Repetitions:", texts.repetitions);
  fields_[1] = addField(this, form, ID_PASTE_TIME, "To &time:", texts.time);
  fields_[2] = addField(this, form, ID_PASTE_TRACK, "To tr&ack:", texts.track);
  auto* group = new QGroupBox(this);
  auto* buttons = new QVBoxLayout(group);
  const char* labels[] = {"&Blend with existing events", "&Replace existing events", "&Insert in existing events"};
  for (std::size_t m = 0; m < modes_.size(); ++m) {
    modes_[m] = new QRadioButton(QString::fromLatin1(labels[m]), group);
    modes_[m]->setObjectName(QString::number(ID_PASTE_BLEND + m));
    buttons->addWidget(modes_[m]);
  }
  modes_[std::min<std::size_t>(texts.mode, 2)]->setChecked(true);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(form);
  layout->addWidget(group);
  layout->addWidget(OkCancelButtons(this));
}

QLineEdit* PasteDialog::field(uint32_t id) const { return FindField(this, id); }

void PasteDialog::accept() {
  const auto text = [this](uint32_t id) { return field(id)->text().toStdString(); };
  if (const uint32_t refused = AcceptPasteDialog(text(ID_PASTE_REPETITIONS), text(ID_PASTE_TIME),
                                                 text(ID_PASTE_TRACK), modes_[0]->isChecked(), modes_[1]->isChecked());
      refused != 0) {
    SelectField(field(refused));
    return;
  }
  QDialog::accept();
}

void CopyCommand(QWidget* parent) {
  RegionDialog dialog(parent, false);
  if (dialog.exec() == QDialog::Accepted) CopyRegion();
}

void CutCommand(QWidget* parent) {
  RegionDialog dialog(parent, true);
  if (dialog.exec() == QDialog::Accepted) CutRegion();
}

void PasteCommand(QWidget* parent) {
  PasteDialog dialog(parent);
  if (dialog.exec() == QDialog::Accepted) PasteRegion();
}

}  // namespace shell
