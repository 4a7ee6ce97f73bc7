#include "shell/application.h"

#include <QScreen>

#include "generator/generator_tick.h"
#include "platform/midi_devices.h"
#include "platform/prompts.h"
#include "shell/ending.h"
#include "shell/recent_files.h"
#include "shell/generator/control_panel_window.h"
#include "song/region_edits.h"
#include "song/track_rows.h"
#include "shell/splash.h"

namespace shell {

bool CheckMidiDevices() {
  const bool input = platform::midiInGetNumDevs() != 0;
  const bool output = platform::midiOutGetNumDevs() != 0;
  if (!input) {
    platform::ShowMessageBox("No Midi In device on your system, or drivers have not yet been installed", "Velmora",
                             platform::MB_OK);
  }
  if (!output) {
    platform::ShowMessageBox("No Midi Out device on your system, or drivers have not yet been installed", "Velmora",
                             platform::MB_OK);
  }
  return input && output;
}

std::unique_ptr<MainFrame> StartVelmora(const StartOptions& options) {
  if (!CheckMidiDevices()) return nullptr;
  ClearViewRegistry();
  ClearTrackRows();
  FreeEditBuffers();
  // The generator's set-up comes first, so that the settings the Control Bar reads are not reset after it.
  GeneratorStartUp();
  auto frame = std::make_unique<MainFrame>();
  if (const QScreen* screen = QApplication::primaryScreen()) frame->setGeometry(screen->availableGeometry());
  std::unique_ptr<QWidget> splash(options.splash ? CreateSplash() : nullptr);
  if (options.maximized) {
    frame->showMaximized();
  } else {
    frame->show();
  }
  frame->takeClientRect();
  const QRect client = frame->clientRect();
  frame->openMdiChild(new ControlPanelWindow, 0, 0, client.width(), client.height());
  if (!options.file.isEmpty()) OpenGivenFile(options.file);
  return frame;  // the splash goes now that the first view is open
}

QString FileArgument(const QStringList& arguments) {
  for (qsizetype i = 1; i < arguments.size(); ++i) {
    if (!arguments[i].startsWith(u'-')) return arguments[i];
  }
  return {};
}

int RunVelmora(QApplication& app, const StartOptions& options) {
  std::unique_ptr<MainFrame> frame = StartVelmora(options);
  if (!frame) return 0;
  QApplication::setQuitOnLastWindowClosed(true);
  ShowInternalErrorsInABox();
  const SignalCloser closer(frame.get());
  app.exec();
  frame.reset();
  return 0;
}

}  // namespace shell
