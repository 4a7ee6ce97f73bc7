#include "platform/realtime.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>
#ifdef __linux__
#include <sys/syscall.h>
#endif

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>

namespace platform {

namespace {

std::atomic<RealtimeKitRequest> realtimeKit{nullptr};
std::mutex textMutex;
std::string schedulingText = "no timer has run yet";

void tell(std::string text) {
  std::lock_guard lock(textMutex);
  schedulingText = std::move(text);
}

// The highest FIFO priority this process may take without privilege: its
// RLIMIT_RTPRIO (0 when none is granted); a privileged process may take any.
int allowedPriority() {
  rlimit limit{};
  if (getrlimit(RLIMIT_RTPRIO, &limit) != 0) return 0;
  return limit.rlim_cur == RLIM_INFINITY ? sched_get_priority_max(SCHED_FIFO) : static_cast<int>(limit.rlim_cur);
}

bool trySchedFifo(int priority, std::string& why) {
  sched_param param{};
  param.sched_priority = priority;
  const int error = pthread_setschedparam(pthread_self(), SCHED_FIFO, &param);
  if (error == 0) return true;
  why = std::string("SCHED_FIFO refused: ") + std::strerror(error);
  return false;
}

uint64_t threadId() {
#ifdef __linux__
  return static_cast<uint64_t>(syscall(SYS_gettid));
#else
  return 0;
#endif
}

}  // namespace

void SetRealtimeKitRequest(RealtimeKitRequest request) { realtimeKit.store(request); }

void AskForRealtimeScheduling() {
  // A privileged process (CAP_SYS_NICE) may go above its limit; one without
  // privilege may take at most its limit, so it asks for no more than that.
  const int limit = allowedPriority();
  const int priority = std::clamp(limit > 0 ? std::min(limit, TimerRealtimePriority) : TimerRealtimePriority,
                                  sched_get_priority_min(SCHED_FIFO), sched_get_priority_max(SCHED_FIFO));
  std::string why;
  if (trySchedFifo(priority, why)) {
    tell("real-time (SCHED_FIFO, priority " + std::to_string(priority) + ")");
    return;
  }
  std::string kitWhy = "RealtimeKit not asked";
  if (RealtimeKitRequest kit = realtimeKit.load()) {
    if (kit(threadId(), static_cast<uint32_t>(priority), kitWhy)) {
      int policy = 0;
      sched_param param{};
      pthread_getschedparam(pthread_self(), &policy, &param);
      tell("real-time through RealtimeKit (priority " + std::to_string(param.sched_priority) + ")");
      return;
    }
  }
  tell("normal priority (" + why + "; " + kitWhy + ")");
}

std::string TimerSchedulingText() {
  std::lock_guard lock(textMutex);
  return schedulingText;
}

}  // namespace platform
