#include "shell/shortcuts.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "platform/command_ids.h"

namespace shell {

const std::map<uint32_t, QKeySequence>& CommandShortcuts() {
  static const std::map<uint32_t, QKeySequence> shortcuts = {
      {CMD_KEY_PLAY_STOP, QKeySequence(Qt::Key_Space)},
      {CMD_KEY_RECORD, QKeySequence(Qt::Key_R)},
      {CMD_KEY_GENERATE, QKeySequence(Qt::Key_G)},
      {CMD_GO_TO_BEGINNING, QKeySequence(Qt::Key_Home)},
      {CMD_GO_TO_SONG_END, QKeySequence(Qt::Key_End)},
      {CMD_NEW_SONG, QKeySequence(Qt::CTRL | Qt::Key_N)},
      {CMD_OPEN_SONG, QKeySequence(Qt::CTRL | Qt::Key_O)},
      {CMD_SAVE_SONG, QKeySequence(Qt::CTRL | Qt::Key_S)},
      {CMD_SAVE_SONG_AS, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_S)},
      {CMD_EXIT, QKeySequence(Qt::CTRL | Qt::Key_Q)},
      {CMD_HELP_CONTENTS, QKeySequence(Qt::Key_F1)},
      {CMD_COPY, QKeySequence(QKeySequence::Copy)},
      {CMD_CUT, QKeySequence(QKeySequence::Cut)},
      {CMD_PASTE, QKeySequence(QKeySequence::Paste)},
  };
  return shortcuts;
}

QKeySequence CommandShortcut(uint32_t id) {
  const auto found = CommandShortcuts().find(id);
  return found != CommandShortcuts().end() ? found->second : QKeySequence();
}

bool IsTextField(const QWidget* widget) {
  if (widget == nullptr) return false;
  if (const auto* line = qobject_cast<const QLineEdit*>(widget)) return !line->isReadOnly();
  if (const auto* text = qobject_cast<const QTextEdit*>(widget)) return !text->isReadOnly();
  if (const auto* plain = qobject_cast<const QPlainTextEdit*>(widget)) return !plain->isReadOnly();
  if (qobject_cast<const QAbstractSpinBox*>(widget) != nullptr) return true;
  if (const auto* combo = qobject_cast<const QComboBox*>(widget)) return combo->isEditable();
  return false;
}

bool KeepOwnKeys(QEvent* event, const QList<int>& keys) {
  if (event->type() != QEvent::ShortcutOverride) return false;
  auto* key = static_cast<QKeyEvent*>(event);
  if ((key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0) return false;
  if (!keys.contains(key->key())) return false;
  event->accept();
  return true;
}

namespace {

// Whether the focused widget answers this key itself, so that no shortcut of
// the frame may take it: every key of a text field; the plain keys of a combo
// box or an item view (letters pick, Space opens, Home and End move); Space
// for a Qt button, which it presses.
bool widgetKeepsKey(const QWidget* focus, const QKeyEvent& key) {
  if (IsTextField(focus)) return true;
  const bool plain = (key.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) == 0;
  if (!plain) return false;
  if (qobject_cast<const QComboBox*>(focus) != nullptr || qobject_cast<const QAbstractItemView*>(focus) != nullptr) {
    return true;
  }
  return key.key() == Qt::Key_Space && qobject_cast<const QAbstractButton*>(focus) != nullptr;
}

}  // namespace

bool TextFieldsKeepShortcutKeys::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::ShortcutOverride) return QObject::eventFilter(watched, event);
  auto* key = static_cast<QKeyEvent*>(event);
  if (!widgetKeepsKey(QApplication::focusWidget(), *key)) return QObject::eventFilter(watched, event);
  const QKeySequence pressed(key->keyCombination());
  for (const auto& [id, shortcut] : CommandShortcuts()) {
    if (pressed.matches(shortcut) != QKeySequence::ExactMatch) continue;
    event->accept();  // the widget takes the key; the command waits for the focus to leave it
    return false;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace shell
