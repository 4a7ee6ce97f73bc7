#include "shell/ending.h"

#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QThread>
#include <array>
#include <chrono>
#include <cstdlib>
#include <thread>

#include "platform/prompts.h"
#include "random/trandom.h"

namespace shell {

namespace {

constexpr std::array<int, 3> Signals{SIGINT, SIGTERM, SIGHUP};
std::array<struct sigaction, 3> earlier{};
// The signal handler's end of a socket pair; the notifier reads the other.
int signalWriteEnd = -1;
int signalReadEnd = -1;

extern "C" void onSignal(int signal) {
  const char byte = static_cast<char>(signal);
  [[maybe_unused]] const ssize_t written = ::write(signalWriteEnd, &byte, 1);  // a full pipe already says it
}

[[noreturn]] void showAndEnd(const char* line) {
  platform::ShowMessageBox(InternalErrorText(line).toStdString(), "Velmora", platform::MB_ICONSTOP);
  std::_Exit(1);
}

[[noreturn]] void onInternalError(const char* line) {
  QCoreApplication* app = QCoreApplication::instance();
  if (app == nullptr || QThread::currentThread() == app->thread()) showAndEnd(line);
  QMetaObject::invokeMethod(app, [line] { showAndEnd(line); }, Qt::QueuedConnection);
  for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
}

}  // namespace

SignalCloser::SignalCloser(QWidget* window) : window_(window) {
  int ends[2];
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) return;
  signalWriteEnd = ends[0];
  signalReadEnd = ends[1];
  notifier_ = std::make_unique<QSocketNotifier>(signalReadEnd, QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, this, [this] {
    char byte = 0;
    while (::read(signalReadEnd, &byte, 1) == 1) {
    }
    if (window_ != nullptr) window_->close();
  });
  struct sigaction action {};
  action.sa_handler = onSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < Signals.size(); ++i) sigaction(Signals[i], &action, &earlier[i]);
}

SignalCloser::~SignalCloser() {
  if (!notifier_) return;
  for (std::size_t i = 0; i < Signals.size(); ++i) sigaction(Signals[i], &earlier[i], nullptr);
  notifier_.reset();
  ::close(signalWriteEnd);
  ::close(signalReadEnd);
  signalWriteEnd = signalReadEnd = -1;
}

void ShowInternalErrorsInABox() { SetInternalErrorHandler(onInternalError); }

QString InternalErrorText(const char* line) {
  return QStringLiteral("Velmora must close: the random source failed (%1). The seed of the set-up is outside "
                        "the range it can take, %2 to %3.")
      .arg(QString::fromLatin1(line))
      .arg(SeedMin)
      .arg(SeedMax);
}

}  // namespace shell
