#include "shell/dialogs.h"

#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "platform/field_checks.h"
#include "live/settings_dialogs.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "shell/controls.h"
#include "song/song_store.h"

namespace shell {

namespace {

QString text(const std::string& s) { return QString::fromStdString(s); }

QLabel* note(QWidget* parent, const QString& line) {
  auto* label = new QLabel(line, parent);
  label->setAlignment(Qt::AlignCenter);
  return label;
}

}  // namespace

// ---------------------------------------------------------------------------

FieldDialog::FieldDialog(QWidget* parent, const QString& title, uint32_t id, const QString& label,
                         const QString& initial, const QStringList& notes, Acceptor acceptor)
    : CenteredDialog(parent, title), acceptor_(std::move(acceptor)) {
  auto* layout = new QVBoxLayout(this);
  auto* row = new QHBoxLayout;
  field_ = NumberField(this, id, initial);
  auto* caption = new QLabel(label, this);
  caption->setBuddy(field_);
  row->addWidget(caption);
  row->addWidget(field_);
  layout->addLayout(row);
  for (const QString& line : notes) layout->addWidget(note(this, line));
  layout->addWidget(OkCancelButtons(this));
  field_->selectAll();
}

QPushButton* FieldDialog::addButton(uint32_t id, const QString& label, std::function<void()> action) {
  auto* buttons = findChild<QDialogButtonBox*>();
  QPushButton* button = buttons->addButton(label, QDialogButtonBox::ActionRole);
  button->setObjectName(QString::number(id));
  button->setAutoDefault(false);
  QObject::connect(button, &QPushButton::clicked, this, std::move(action));
  return button;
}

void FieldDialog::accept() {
  if (acceptor_(field_)) QDialog::accept();
}

std::unique_ptr<FieldDialog> MakeFieldDialog(QWidget* parent, uint32_t dialogId) {
  // The silent refusal: the old text back, selected, with a beep.
  const auto silently = [](const std::string& old, auto apply) {
    return [old, apply](QLineEdit* field) {
      if (apply(EditedText(field), field->isModified())) return true;
      RefuseField(field, text(old), true);
      return false;
    };
  };
  // The time dialogs act only on an edited field, and never refuse.
  const auto timeDialog = [&](const QString& title, uint32_t id, const QString& label, uint32_t ticks, auto apply) {
    return std::make_unique<FieldDialog>(parent, title, id, label, text(TimeText(ticks)), QStringList{},
                                         [apply](QLineEdit* field) {
                                           apply(EditedText(field), field->isModified());
                                           return true;
                                         });
  };
  switch (dialogId) {
    case DLG_TEMPO: {
      const std::string old = TempoDialogText();
      return std::make_unique<FieldDialog>(
          parent, QStringLiteral("Tempo"), ID_TEMPO_FIELD, QStringLiteral("Tempo:"), text(old),
          QStringList{QStringLiteral("(Beats"), QStringLiteral("per minutes)")}, silently(old, ApplyTempoDialog));
    }
    case DLG_RESOLUTION: {
      const std::string old = ResolutionDialogText();
      return std::make_unique<FieldDialog>(
          parent, QStringLiteral("Resolution"), ID_RESOLUTION_FIELD, QStringLiteral("Resolution:"), text(old),
          QStringList{QStringLiteral("(Ticks per Beat)")}, silently(old, ApplyResolutionDialog));
    }
    case DLG_QUANTIZE_RECORD: {
      auto dialog = std::make_unique<FieldDialog>(
          parent, QStringLiteral("Quantizar"), ID_QUANTIZE_RESOLUTION_FIELD, QStringLiteral("Resolution:"),
          text(QuantizeRecordDialogText()), QStringList{QStringLiteral("(Ticks)")},
          [](QLineEdit* field) { return ApplyQuantizeRecordDialog(EditedText(field), field->isModified()); });
      FieldDialog* owner = dialog.get();
      dialog->addButton(ID_QUANTIZE_FILTERS_BUTTON, QStringLiteral("Filters"), [owner] {
        FilterDialog filters(owner, DLG_QUANTIZE_FILTERS);
        filters.exec();
      });
      return dialog;
    }
    case DLG_FROM:
      return timeDialog(QStringLiteral("From"), ID_FROM_FIELD, QStringLiteral("Time:"), SelectFrom, ApplyFromDialog);
    case DLG_TO:
      return timeDialog(QStringLiteral("To"), ID_TO_FIELD, QStringLiteral("Time:"), SelectTo, ApplyToDialog);
    case DLG_GO_TO:
      return timeDialog(QStringLiteral("Go to"), ID_GO_TO_FIELD, QStringLiteral("Time:"), SongPosition,
                        ApplyGoToDialog);
    case DLG_SEED:
      return std::make_unique<FieldDialog>(parent, QStringLiteral("Seed"), ID_SEED_FIELD, QStringLiteral("Seed:"),
                                           text(SeedDialogText()), QStringList{}, [](QLineEdit* field) {
                                             ApplySeedDialog(field->text().toStdString());
                                             return true;
                                           });
    default: return nullptr;
  }
}

// ---------------------------------------------------------------------------

namespace {

struct FilterDialogPlace {
  uint32_t dialogId;
  const char* title;
  const char* group;
  uint32_t base;
};

constexpr FilterDialogPlace FilterDialogs[] = {
    {DLG_INPUT_FILTERS, "Input Filters", "Reject this kind of events:", ID_INPUT_FILTER_BOXES},
    {DLG_OUTPUT_FILTERS, "Output Filtros", "Reject this kind of events:", ID_OUTPUT_FILTER_BOXES},
    {DLG_QUANTIZE_FILTERS, "Filters", "Prevent from quantize:", ID_QUANTIZE_FILTER_BOXES},
};

constexpr const char* FilterCaptions[7] = {"Note O&ff",          "Note &On",          "&Key Pressure", "&Control Change",
                                           "P&rogram Change", "C&hannel Pressure", "Pitch &Bend"};

const FilterDialogPlace& filterPlace(uint32_t dialogId) {
  for (const FilterDialogPlace& place : FilterDialogs) {
    if (place.dialogId == dialogId) return place;
  }
  return FilterDialogs[0];
}

}  // namespace

FilterDialog::FilterDialog(QWidget* parent, uint32_t dialogId)
    : CenteredDialog(parent, QString::fromLatin1(filterPlace(dialogId).title)),
      dialogId_(filterPlace(dialogId).dialogId),
      base_(filterPlace(dialogId).base) {
  auto* layout = new QVBoxLayout(this);
  auto* group = new QGroupBox(QString::fromLatin1(filterPlace(dialogId).group), this);
  auto* groupLayout = new QVBoxLayout(group);
  const uint32_t bits = FilterDialogBits(dialogId_);
  for (uint32_t i = 0; i < 7; ++i) {
    auto* box = new QCheckBox(QString::fromLatin1(FilterCaptions[i]), group);
    box->setObjectName(QString::number(base_ + i));
    box->setChecked((bits >> i & 1) != 0);
    groupLayout->addWidget(box);
    boxes_[i] = box;
  }
  layout->addWidget(group);
  layout->addWidget(OkCancelButtons(this));
}

QCheckBox* FilterDialog::box(uint32_t id) const { return id >= base_ && id < base_ + 7 ? boxes_[id - base_] : nullptr; }

void FilterDialog::accept() {
  uint32_t bits = 0;
  for (uint32_t i = 0; i < 7; ++i) bits |= (boxes_[i]->isChecked() ? 1u : 0u) << i;
  ApplyFilterDialog(dialogId_, bits);
  QDialog::accept();
}

// ---------------------------------------------------------------------------

MeterDialog::MeterDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Measure")) {
  setObjectName(QString::number(DLG_METER));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  numerator_ = NumberField(this, ID_METER_NUMERATOR, text(NumeratorText));
  denominator_ = NumberField(this, ID_METER_DENOMINATOR, text(DenominatorText));
  form->addRow(QStringLiteral("&Beats per Measure :"), numerator_);
  form->addRow(QStringLiteral("Beats &Valor :"), denominator_);
  layout->addLayout(form);
  layout->addWidget(OkCancelButtons(this));
}

void MeterDialog::accept() {
  const uint32_t refused = ApplyMeterDialog(numerator_->text().toStdString(), denominator_->text().toStdString());
  if (refused == 0) {
    QDialog::accept();
    return;
  }
  RefuseField(field(refused), text(refused == ID_METER_NUMERATOR ? NumeratorText : DenominatorText), false);
}

// ---------------------------------------------------------------------------

MetronomeDialog::MetronomeDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Metronome")) {
  setObjectName(QString::number(DLG_METRONOME));
  auto* layout = new QVBoxLayout(this);
  auto* top = new QFormLayout;
  const auto add = [this](QFormLayout* form, std::size_t order, const QString& label) {
    const MetronomeField& place = MetronomeFields[order];
    QLineEdit* edit = NumberField(this, place.id, text(*place.text));
    form->addRow(label, edit);
    fields_[place.id] = edit;
  };
  add(top, 0, QStringLiteral("Count:"));
  add(top, 1, QStringLiteral("Duración:"));
  layout->addLayout(top);
  auto* beats = new QHBoxLayout;
  const QString labels[2][3] = {{QStringLiteral("&Channel:"), QStringLiteral("&Key:"), QStringLiteral("&Velocity:")},
                                {QStringLiteral("Cha&nnel:"), QStringLiteral("Ke&y:"), QStringLiteral("Ve&locity:")}};
  const QString groups[2] = {QStringLiteral("First beat"), QStringLiteral("Other beats")};
  for (std::size_t g = 0; g < 2; ++g) {
    auto* group = new QGroupBox(groups[g], this);
    auto* form = new QFormLayout(group);
    for (std::size_t i = 0; i < 3; ++i) add(form, 2 + 3 * g + i, labels[g][i]);
    beats->addWidget(group);
  }
  layout->addLayout(beats);
  auto* switches = new QHBoxLayout;
  onPlay_ = new QCheckBox(QStringLiteral("&Play"), this);
  onRecord_ = new QCheckBox(QStringLiteral("&Record"), this);
  onPlay_->setObjectName(QString::number(ID_METRONOME_ON_PLAY));
  onRecord_->setObjectName(QString::number(ID_METRONOME_ON_RECORD));
  onPlay_->setChecked(MetronomeOnPlay());
  onRecord_->setChecked(MetronomeOnRecord());
  switches->addWidget(onPlay_);
  switches->addWidget(onRecord_);
  layout->addLayout(switches);
  layout->addWidget(OkCancelButtons(this));
}

QLineEdit* MetronomeDialog::field(uint32_t id) const { return FindById(fields_, id); }

void MetronomeDialog::accept() {
  std::array<std::string, 8> texts;
  for (std::size_t i = 0; i < texts.size(); ++i) texts[i] = field(MetronomeFields[i].id)->text().toStdString();
  const uint32_t refused = CheckMetronomeDialog(texts, onPlay_->isChecked(), onRecord_->isChecked());
  if (refused == 0) {
    QDialog::accept();
    return;
  }
  for (const MetronomeField& place : MetronomeFields) {
    if (place.id == refused) RefuseField(field(refused), text(*place.text), false);
  }
}

// ---------------------------------------------------------------------------

DevicesDialog::DevicesDialog(QWidget* parent) : CenteredDialog(parent, QStringLiteral("Devices")) {
  auto* layout = new QVBoxLayout(this);
  auto* columns = new QHBoxLayout;
  const auto column = [&](uint32_t labelId, uint32_t listId, const QString& title,
                          const std::vector<std::string>& names, uint32_t chosen, QLabel*& name, QListWidget*& list) {
    auto* group = new QGroupBox(title, this);
    auto* groupLayout = new QVBoxLayout(group);
    name = new QLabel(group);
    name->setObjectName(QString::number(labelId));
    name->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    list = new QListWidget(group);
    list->setObjectName(QString::number(listId));
    for (const std::string& device : names) list->addItem(text(device));
    if (chosen < names.size()) {
      list->setCurrentRow(static_cast<int>(chosen));
      name->setText(text(names[chosen]));
    }
    groupLayout->addWidget(name);
    groupLayout->addWidget(list);
    columns->addWidget(group);
    // A double click chooses the device; a single click only moves the selection.
    QObject::connect(list, &QListWidget::itemDoubleClicked, this, [list, name, listId](QListWidgetItem* item) {
      (listId == 1106 ? MidiInDevice : MidiOutDevice) = static_cast<uint32_t>(list->row(item));
      name->setText(item->text());
    });
  };
  column(ID_DEVICES_IN_NAME, ID_DEVICES_IN_LIST, QStringLiteral("MIDI In"), MidiInDeviceNames(), MidiInDevice, inName_,
         inputs_);
  column(ID_DEVICES_OUT_NAME, ID_DEVICES_OUT_LIST, QStringLiteral("MIDI Out"), MidiOutDeviceNames(), MidiOutDevice,
         outName_, outputs_);
  layout->addLayout(columns);
  // The built-in synthesizer's output level, applied on OK.
  auto* gainRow = new QHBoxLayout;
  auto* gainLabel = new QLabel(QStringLiteral("Built-in synthesizer &gain (above 0, at most 10):"), this);
  gain_ = new QLineEdit(text(SynthGainDialogText()), this);
  gain_->setObjectName(QStringLiteral("synth gain"));
  gain_->setMaximumWidth(60);
  gain_->setToolTip(QStringLiteral("Half the gain is 6 dB quieter. The output never clips: loud chords are held "
                                   "under -1 dBFS."));
  gainLabel->setBuddy(gain_);
  gainRow->addWidget(gainLabel);
  gainRow->addWidget(gain_);
  gainRow->addStretch(1);
  layout->addLayout(gainRow);
  for (const std::string& line : DevicesStatusLines()) {
    auto* status = new QLabel(text(line), this);
    status->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(status);
  }
  layout->addWidget(OkCancelButtons(this));
  resize(620, 380);
}

void DevicesDialog::accept() {
  const auto row = [](const QListWidget* list, uint32_t fallback) {
    return list->currentRow() >= 0 ? static_cast<uint32_t>(list->currentRow()) : fallback;
  };
  if (gain_->isModified() && !ApplySynthGainDialog(gain_->text().toStdString())) {
    gain_->setText(text(SynthGainDialogText()));
    gain_->setFocus();
    return;
  }
  ReopenMidiDevices(row(inputs_, MidiInDevice), row(outputs_, MidiOutDevice));
  QDialog::accept();
}

}  // namespace shell
