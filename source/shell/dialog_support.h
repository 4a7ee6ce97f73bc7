#pragma once
// What every dialog of the shell shares: fields and buttons named by their
// ids, OK and Cancel, selecting a refused field, centring on the desktop.
#include <QDialog>
#include <QDialogButtonBox>
#include <QLineEdit>
#include <QString>
#include <cstdint>
#include <string>

namespace shell {

// An edit field with the id as its object name.
QLineEdit* NumberField(QWidget* parent, uint32_t id, const QString& text);
// "OK" (id 1) and "Cancel" (id 2), tied to the dialog's accept and reject.
QDialogButtonBox* OkCancelButtons(QDialog* dialog);
// The dialog's edit field whose object name is the id; null when it has none.
QLineEdit* FindField(const QWidget* dialog, uint32_t id);
// Focus on the field, its whole text selected.
void SelectField(QLineEdit* field);
// A refused field: its last good text back, selected; the silent kind beeps.
void RefuseField(QLineEdit* field, const QString& goodText, bool beep);
// What an edited field holds, at most 15 characters, as the dialogs read it.
std::string EditedText(const QLineEdit* field);
// Centres a dialog on the desktop at the size it will show with.
void CenterOnDesktop(QWidget* dialog);

// A dialog that centres itself on the desktop when it opens.
class CenteredDialog : public QDialog {
 public:
  explicit CenteredDialog(QWidget* parent, const QString& title);

 protected:
  void showEvent(QShowEvent* event) override;
};

}  // namespace shell
