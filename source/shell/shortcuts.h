#pragma once
// The keyboard shortcuts of the frame's commands, and the rules that keep them
// out of the user's way: while a text field has the focus none of them fires
// (typing "r" types an r, Ctrl+C copies the field's text, Ctrl+S does
// nothing until the focus leaves the field); a focused list, combo box or
// fader keeps the plain keys it answers (Home goes to its first row), and a
// focused Qt button keeps Space. The shortcuts fire everywhere else in the frame.
#include <QEvent>
#include <QKeySequence>
#include <QList>
#include <QObject>
#include <map>

class QWidget;

namespace shell {

// The shortcut of a command, or an empty sequence.
QKeySequence CommandShortcut(uint32_t id);
// Every command that has a shortcut.
const std::map<uint32_t, QKeySequence>& CommandShortcuts();

// A widget where typing goes: a line or text edit, a spin box, an editable combo box.
bool IsTextField(const QWidget* widget);

// For a widget's event(): a shortcut override for one of these keys (without
// Ctrl or Alt) is accepted, so the widget gets the key and no shortcut fires.
bool KeepOwnKeys(QEvent* event, const QList<int>& keys);

// Installed on the application: the frame's shortcuts give way to a focused
// text field, and their plain keys to a focused combo box, item view or Qt button.
class TextFieldsKeepShortcutKeys final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace shell
