// Velmora: a MIDI note generator that composes with chance, joined to a small
// multi-track MIDI sequencer.
#include <QApplication>
#include <QIcon>

#include "live/product_info.h"
#include "midi/backends/device_list.h"
#include "platform/installed_seams.h"
#include "shell/application.h"
#include "shell/qt_platform.h"
#include "shell/realtime_kit.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QString::fromStdString(ProductName()));
  QApplication::setApplicationVersion(QString::fromStdString(ProductVersion()));
  // The desktop entry and the icon that the package installs.
  QGuiApplication::setDesktopFileName(QStringLiteral("org.nquillon.Velmora"));
  QApplication::setWindowIcon(QIcon::fromTheme(QStringLiteral("velmora")));

  shell::UseRealtimeKit();  // for the timer's threads, where SCHED_FIFO is refused
  shell::QtMessageLoop loop;
  platform::ThreadTimers timers;
  StandardDevices devices;
  shell::QtSettingsStore settings;
  shell::QtPrompts prompts;
  const platform::InstalledSeams seams({
      .loop = &loop, .timers = &timers, .devices = &devices.list, .settings = &settings, .prompts = &prompts});

  const int code = shell::RunVelmora(app, {.splash = true, .maximized = true, .file = shell::FileArgument(QApplication::arguments())});

  loop.close();
  return code;
}
