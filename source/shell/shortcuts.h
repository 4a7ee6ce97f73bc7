#pragma once
// The keyboard shortcuts of the frame's commands, and the rule that a focused
// text field, list or slider keeps the keys it uses itself: typing "r" in a
// field types an r, Home in a list goes to its first row, Ctrl+C copies the
// field's text. The frame's shortcuts fire everywhere else in the frame.
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

// Installed on the application: while a text field has the focus, the
// frame's shortcuts give way to it.
class TextFieldsKeepShortcutKeys final : public QObject {
 public:
  using QObject::QObject;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
};

}  // namespace shell
