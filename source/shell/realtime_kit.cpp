#include "shell/realtime_kit.h"

#include <sys/resource.h>

#include <QDBusConnection>
#include <QDBusInterface>
#include <QDBusReply>
#include <algorithm>

#include "platform/realtime.h"

namespace shell {

namespace {

const QString Service = QStringLiteral("org.freedesktop.RealtimeKit1");
const QString Path = QStringLiteral("/org/freedesktop/RealtimeKit1");

// RealtimeKit grants only a process whose real-time threads have a limit on
// the CPU time they may take without sleeping: at most its RTTimeUSecMax.
bool limitRealtimeCpu(QDBusInterface& kit, std::string& why) {
  const qlonglong most = kit.property("RTTimeUSecMax").toLongLong();
  rlimit limit{};
  limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(most > 0 ? std::min<qlonglong>(most, 200000) : 200000);
  if (setrlimit(RLIMIT_RTTIME, &limit) == 0) return true;
  why = "RealtimeKit needs a limit on real-time CPU time, which could not be set";
  return false;
}

}  // namespace

bool AskRealtimeKit(uint64_t threadId, uint32_t priority, std::string& why) {
  QDBusConnection bus = QDBusConnection::systemBus();
  if (!bus.isConnected()) {
    why = "RealtimeKit not reached: no system D-Bus";
    return false;
  }
  QDBusInterface kit(Service, Path, Service, bus);
  kit.setTimeout(2000);  // the timer's first pass waits for the answer
  if (!kit.isValid()) {
    why = "RealtimeKit not running";
    return false;
  }
  if (!limitRealtimeCpu(kit, why)) return false;
  const int most = kit.property("MaxRealtimePriority").toInt();
  const auto asked = static_cast<quint32>(most > 0 ? std::min<int>(static_cast<int>(priority), most) : priority);
  const QDBusReply<void> reply =
      kit.call(QStringLiteral("MakeThreadRealtime"), QVariant::fromValue<quint64>(threadId), QVariant::fromValue(asked));
  if (reply.isValid()) return true;
  why = "RealtimeKit refused: " + reply.error().message().toStdString();
  return false;
}

void UseRealtimeKit() { platform::SetRealtimeKitRequest(AskRealtimeKit); }

}  // namespace shell
