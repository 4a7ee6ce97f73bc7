// Velmora: a MIDI note generator that composes with chance, joined to a small
// multi-track MIDI sequencer.
#include <QApplication>

#include "midi/backends/device_list.h"
#include "platform/midi_devices.h"
#include "platform/timers.h"
#include "shell/application.h"
#include "shell/qt_platform.h"
#include "transport/product_info.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QApplication::setApplicationName(QString::fromStdString(ProductName()));
  QApplication::setApplicationVersion(QString::fromStdString(ProductVersion()));

  shell::QtMessageLoop loop;
  platform::ThreadTimers timers;
  StandardDevices devices;
  shell::QtSettingsStore settings;
  shell::QtPrompts prompts;
  platform::installMessageLoop(&loop);
  platform::installTimers(&timers);
  platform::installMidiDevices(&devices.list);
  platform::installSettingsStore(&settings);
  platform::installPrompts(&prompts);

  const int code = shell::RunVelmora(app, {});

  loop.close();
  platform::installPrompts(nullptr);
  platform::installSettingsStore(nullptr);
  platform::installMidiDevices(nullptr);
  platform::installTimers(nullptr);
  platform::installMessageLoop(nullptr);
  return code;
}
