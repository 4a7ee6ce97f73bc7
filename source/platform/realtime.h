#pragma once
// Real-time scheduling for the timer's threads, as Linux audio programs ask
// for it: SCHED_FIFO where the user's limits allow it (root, or a group such
// as audio with an RLIMIT_RTPRIO), else through RealtimeKit where it runs
// (the shell installs that request, over D-Bus), else normal priority. What a
// thread got is kept, for the Devices dialog and the benches to show.

#include <cstdint>
#include <string>

namespace platform {

// The priority asked for: above the desktop, below JACK's own threads.
inline constexpr int TimerRealtimePriority = 40;

// Asks RealtimeKit to make a thread real-time at a priority; true if it did.
using RealtimeKitRequest = bool (*)(uint64_t threadId, uint32_t priority, std::string& why);
void SetRealtimeKitRequest(RealtimeKitRequest request);

// Called by a timer thread before its first wait.
void AskForRealtimeScheduling();

// What the last timer thread got, e.g. "real-time (SCHED_FIFO, priority 40)"
// or "normal priority (no real-time: ...)"; "no timer has run yet" before.
std::string TimerSchedulingText();

}  // namespace platform
