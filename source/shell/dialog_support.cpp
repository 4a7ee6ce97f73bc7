#include "shell/dialog_support.h"

#include <QApplication>
#include <QPushButton>
#include <QScreen>

#include "platform/field_checks.h"

namespace shell {

QLineEdit* NumberField(QWidget* parent, uint32_t id, const QString& text) {
  auto* field = new QLineEdit(text, parent);
  field->setObjectName(QString::number(id));
  field->setModified(false);
  // Wide enough for a time as measure:beat:tick, and no wider.
  field->setMaximumWidth(field->fontMetrics().horizontalAdvance(QStringLiteral("00000:00:000")) + 24);
  return field;
}

QDialogButtonBox* OkCancelButtons(QDialog* dialog) {
  auto* buttons = new QDialogButtonBox(dialog);
  QPushButton* ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
  QPushButton* cancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
  ok->setObjectName(QStringLiteral("1"));
  cancel->setObjectName(QStringLiteral("2"));
  ok->setDefault(true);
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  return buttons;
}

QLineEdit* FindField(const QWidget* dialog, uint32_t id) { return dialog->findChild<QLineEdit*>(QString::number(id)); }

void SelectField(QLineEdit* field) {
  if (field == nullptr) return;
  field->setFocus(Qt::OtherFocusReason);
  field->selectAll();
}

void RefuseField(QLineEdit* field, const QString& goodText, bool beep) {
  if (field == nullptr) return;
  field->setText(goodText);
  SelectField(field);
  if (beep) QApplication::beep();
}

std::string EditedText(const QLineEdit* field) { return field->text().left(15).toStdString(); }

void CenterOnDesktop(QWidget* dialog) {
  const QScreen* screen = dialog->screen() != nullptr ? dialog->screen() : QApplication::primaryScreen();
  if (screen == nullptr) return;
  const QRect desktop = screen->geometry();
  const QSize size = dialog->frameSize().isValid() && dialog->isVisible() ? dialog->frameSize() : dialog->sizeHint();
  const Rect place = CenterWindow({0, 0, size.width(), size.height()}, nullptr, desktop.width(), desktop.height());
  dialog->move(desktop.x() + place.x, desktop.y() + place.y);
}

CenteredDialog::CenteredDialog(QWidget* parent, const QString& title) : QDialog(parent) {
  setWindowTitle(title);
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
}

void CenteredDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  CenterOnDesktop(this);
}

}  // namespace shell
