#include "shell/song/transform_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>
#include <QVBoxLayout>

#include "platform/command_ids.h"
#include "shell/controls.h"
#include "song/transform_dialogs.h"

namespace shell {

namespace {

QString titleOf(uint32_t dialog) {
  switch (dialog) {
    case DLG_QUANTIZE: return QStringLiteral("Quantize");
    case DLG_LENGTH: return QStringLiteral("Length");
    case DLG_SLIDE: return QStringLiteral("Slide");
    case DLG_TRANSPOSE: return QStringLiteral("Transpose");
    default: return QStringLiteral("Velocity");
  }
}

QGroupBox* group(QWidget* parent, const QString& title, QLayout* layout) {
  auto* box = new QGroupBox(title, parent);
  box->setLayout(layout);
  return box;
}

}  // namespace

QLineEdit* TransformDialog::addField(QFormLayout* form, uint32_t id, const QString& label, const std::string& text,
                                     const QString& unit) {
  auto* edit = new QLineEdit(QString::fromStdString(text), this);
  edit->setObjectName(QString::number(id));
  edit->setMaxLength(id == ID_LENGTH_PERCENTAGE ? 3 : 63);
  fields_[id] = edit;
  if (unit.isEmpty()) {
    form->addRow(label, edit);
    return edit;
  }
  auto* row = new QHBoxLayout;
  row->addWidget(edit);
  row->addWidget(new QLabel(unit, this));
  auto* title = new QLabel(label, this);
  title->setBuddy(edit);  // the label's access key reaches the edit
  form->addRow(title, row);
  return edit;
}

QAbstractButton* TransformDialog::addBox(QAbstractButton* box, uint32_t id, bool checked) {
  box->setObjectName(QString::number(id));
  box->setChecked(checked);
  boxes_[id] = box;
  return box;
}

QWidget* TransformDialog::regionGroup(const std::string& from, const std::string& to, bool lowerFrom) {
  auto* form = new QFormLayout;
  addField(form, ID_REGION_FROM, lowerFrom ? QStringLiteral("&from:") : QStringLiteral("&From:"), from);
  addField(form, ID_REGION_TO, QStringLiteral("&To:"), to);
  return group(this, QStringLiteral("Region"), form);
}

TransformDialog::TransformDialog(QWidget* parent, uint32_t dialog)
    : CenteredDialog(parent, titleOf(dialog)), dialog_(dialog) {
  setObjectName(QString::number(dialog));
  const TransformEntries entries = OpenTransformDialog(dialog);
  const auto text = [&](uint32_t id) { return entries.texts.at(id); };
  const auto checked = [&](uint32_t id) { return entries.checks.count(id) != 0 && entries.checks.at(id); };
  auto* layout = new QVBoxLayout(this);
  const auto changeGroup = [&](const char* startLabel) {
    auto* boxes = new QVBoxLayout;
    boxes->addWidget(addBox(new QCheckBox(QString::fromLatin1(startLabel), this), ID_CHANGE_START, checked(ID_CHANGE_START)));
    boxes->addWidget(
        addBox(new QCheckBox(QStringLiteral("&Note durations"), this), ID_CHANGE_DURATIONS, checked(ID_CHANGE_DURATIONS)));
    layout->addWidget(group(this, QStringLiteral("Change"), boxes));
  };
  switch (dialog) {
    case DLG_QUANTIZE: {
      auto* grid = new QVBoxLayout;
      resolution_ = new QComboBox(this);
      resolution_->setObjectName(QString::number(ID_QUANTIZE_RESOLUTION));
      resolution_->setEditable(true);
      for (const ResolutionItem& item : ResolutionItems) resolution_->addItem(QString::fromLatin1(item.name));
      resolution_->setEditText(QString::fromStdString(text(ID_QUANTIZE_RESOLUTION)));
      grid->addWidget(resolution_);
      grid->addWidget(new QLabel(QStringLiteral("Select a duratior or enter a tick value"), this));
      layout->addWidget(group(this, QStringLiteral("&Resolution"), grid));
      auto* options = new QFormLayout;
      const QString percentage = QStringLiteral("percentage");
      addField(options, ID_QUANTIZE_STRENGTH, QStringLiteral("&Strength:"), text(ID_QUANTIZE_STRENGTH), percentage);
      addField(options, ID_QUANTIZE_SWING, QStringLiteral("Sw&ing:"), text(ID_QUANTIZE_SWING), percentage);
      addField(options, ID_QUANTIZE_WINDOW, QStringLiteral("&Window:"), text(ID_QUANTIZE_WINDOW), percentage);
      addField(options, ID_QUANTIZE_OFFSET, QStringLiteral("&Offset:"), text(ID_QUANTIZE_OFFSET), QStringLiteral("ticks"));
      layout->addWidget(group(this, QStringLiteral("Options"), options));
      changeGroup("&Start time");
      break;
    }
    case DLG_LENGTH: {
      changeGroup("&Start times");
      auto* form = new QFormLayout;
      addField(form, ID_LENGTH_PERCENTAGE, QStringLiteral("&Percentage:"), text(ID_LENGTH_PERCENTAGE));
      layout->addLayout(form);
      break;
    }
    case DLG_SLIDE: {
      auto* amount = new QVBoxLayout;
      auto* form = new QFormLayout;
      addField(form, ID_TRANSFORM_AMOUNT, QString(), text(ID_TRANSFORM_AMOUNT));
      amount->addLayout(form);
      amount->addWidget(addBox(new QRadioButton(QStringLiteral("&Measures"), this), ID_SLIDE_MEASURES,
                               checked(ID_SLIDE_MEASURES)));
      amount->addWidget(
          addBox(new QRadioButton(QStringLiteral("T&icks"), this), ID_SLIDE_TICKS, checked(ID_SLIDE_TICKS)));
      layout->addWidget(group(this, QStringLiteral("&Amount"), amount));
      break;
    }
    case DLG_TRANSPOSE: {
      auto* form = new QFormLayout;
      addField(form, ID_TRANSFORM_AMOUNT, QStringLiteral("Amount:"), text(ID_TRANSFORM_AMOUNT));
      layout->addLayout(form);
      break;
    }
    default: {
      auto* range = new QFormLayout;
      addField(range, ID_VELOCITY_BEGIN, QStringLiteral("&Begin:"), text(ID_VELOCITY_BEGIN));
      addField(range, ID_VELOCITY_END, QStringLiteral("&End:"), text(ID_VELOCITY_END));
      layout->addWidget(group(this, QStringLiteral("Value range"), range));
      break;
    }
  }
  layout->addWidget(regionGroup(text(ID_REGION_FROM), text(ID_REGION_TO), dialog == DLG_SLIDE));
  layout->addWidget(OkCancelButtons(this));
}

QLineEdit* TransformDialog::field(uint32_t id) const { return FindById(fields_, id); }

QAbstractButton* TransformDialog::box(uint32_t id) const { return FindById(boxes_, id); }

void TransformDialog::accept() {
  TransformEntries entries;
  for (const auto& [id, edit] : fields_) entries.texts[id] = edit->text().toStdString();
  for (const auto& [id, button] : boxes_) entries.checks[id] = button->isChecked();
  if (resolution_ != nullptr) entries.texts[ID_QUANTIZE_RESOLUTION] = resolution_->currentText().toStdString();
  if (const uint32_t refused = AcceptTransformDialog(dialog_, entries); refused != 0) {
    QLineEdit* wrong = field(refused);
    wrong->setText(QString::fromStdString(AcceptedTransformText(dialog_, refused)));
    SelectField(wrong);
    return;
  }
  QDialog::accept();
}

void TransformCommand(QWidget* parent, uint32_t dialog) {
  TransformDialog transform(parent, dialog);
  if (transform.exec() == QDialog::Accepted) RunTransform(dialog);
}

}  // namespace shell
