#pragma once
// How Velmora ends other than by its Exit command. SIGINT, SIGTERM and SIGHUP
// close the frame as the window's close button does: the generator stops,
// a changed song is offered for saving, and the live system's end stops the
// clock, ends every sounding note and resets the controllers. And the random
// source's internal error, which must end the program, is shown in a box first.

#include <QObject>
#include <QSocketNotifier>
#include <QWidget>
#include <memory>

namespace shell {

// Catches the three signals while it lives and closes the window each time
// one comes; the earlier handlers come back after it.
class SignalCloser final : public QObject {
 public:
  explicit SignalCloser(QWidget* window);
  ~SignalCloser() override;
  SignalCloser(const SignalCloser&) = delete;
  SignalCloser& operator=(const SignalCloser&) = delete;

 private:
  QWidget* window_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

// From now on the random source's internal error is shown in a message box
// (through the prompts seam, on the UI thread) before the program ends with
// exit status 1. The thread that drew waits for the end.
void ShowInternalErrorsInABox();

// The box's text for the error line.
QString InternalErrorText(const char* line);

}  // namespace shell
