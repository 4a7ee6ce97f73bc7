#pragma once
// Velmora's start and end: the check for MIDI devices, the frame (whose
// Control Bar starts the live system), the splash, the frame shown with the
// Control Panel filling its client, the message loop, and the way down.
// The seams are installed by the caller before any of this.
#include <QApplication>
#include <memory>

#include "shell/frame.h"

namespace shell {

struct StartOptions {
  bool splash = true;     // the curtain before the frame shows
  bool maximized = true;  // the frame fills the screen
  QString file;           // a song or set-up file to open once the frame shows
};

// The file named on a command line ("velmora song.mid"), or empty.
QString FileArgument(const QStringList& arguments);

// Both device counts; a machine without an input or an output is told so,
// in this order, and the program must not start (false).
bool CheckMidiDevices();

// The start-up up to the message loop. Null when the program must not start.
std::unique_ptr<MainFrame> StartVelmora(const StartOptions& options);

// The whole program: start, the message loop until the frame closes, and
// the frame's destruction, which saves the settings and closes every device.
// Returns the exit code.
int RunVelmora(QApplication& app, const StartOptions& options);

}  // namespace shell
