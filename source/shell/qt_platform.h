#pragma once
// The seams of the platform as Qt provides them: the message loop on the UI
// thread's event loop, the settings store on QSettings, and the prompts as
// Qt's message boxes, file dialogs and override cursor.
#include <QEvent>
#include <QObject>
#include <QString>
#include <atomic>

#include "platform/message_loop.h"
#include "platform/prompts.h"
#include "platform/settings_store.h"

class QWidget;

namespace shell {

// The UI thread's loop. Messages wait in the fixed ring of QueueLoop, so a
// post from the timer or a device thread takes only the short critical
// section and allocates nothing; one byte down a pipe (one event where there
// are no pipes) wakes the Qt event loop to deliver them, also inside a modal
// dialog's loop. A send from another thread blocks until the UI thread has
// handled it.
class QtMessageLoop final : public QObject, public platform::QueueLoop {
 public:
  explicit QtMessageLoop(std::size_t capacity = 8192);
  ~QtMessageLoop() override;
  // Delivers what is queued now, on the calling (UI) thread.
  std::size_t deliverQueued();
  // Releases waiting sends and refuses new ones: the program goes down.
  void close() { shutDown(); }
  // How many messages wait for the UI thread.
  std::size_t waiting() const { return queuedCount(); }

 protected:
  void queued() override;
  bool event(QEvent* event) override;

 private:
  void woken();
  static const QEvent::Type WakeEvent;
  std::atomic<bool> wakePending_{false};
  int wakeRead_ = -1, wakeWrite_ = -1;  // the wake-up pipe, where there is one
};

// The settings of a key path "Software\<Maker>\<Product>\<rest>" as QSettings
// keeps them: the maker is the organisation, the product the application, the
// rest a group path. The user's level is QSettings' user scope, the machine's
// its system scope; on Windows both are the registry itself.
class QtSettingsStore final : public platform::SettingsStore {
 public:
  bool createKey(platform::SettingsLevel level, const std::string& key) override;
  bool keyExists(platform::SettingsLevel level, const std::string& key) const override;
  std::optional<platform::SettingsValue> query(platform::SettingsLevel level, const std::string& key,
                                               const std::string& name) const override;
  bool set(platform::SettingsLevel level, const std::string& key, const std::string& name,
           const platform::SettingsValue& value) override;
};

// Message boxes and file choosers owned by the active window.
class QtPrompts final : public platform::Prompts {
 public:
  int messageBox(const std::string& text, const std::string& title, uint32_t style) override;
  std::optional<std::string> openFileName(const platform::FileDialog& dialog) override;
  std::optional<std::string> saveFileName(const platform::FileDialog& dialog) override;
  void beginWaitCursor() override;
  void endWaitCursor() override;
};

// The filter text of a file dialog: "Label (pattern);;Label (pattern)".
QString FileDialogFilter(const platform::FileDialog& dialog);
// The extension given to a name typed without one: the dialog's default
// extension, or, when that is a wildcard, the first filter's extension if it
// names one ("*.mid" gives "mid", "*.*" nothing). Empty for none.
QString FileDialogDefaultSuffix(const platform::FileDialog& dialog);

}  // namespace shell
