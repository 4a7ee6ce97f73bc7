#pragma once
// RealtimeKit over the system's D-Bus: the way a desktop session grants
// real-time scheduling to a thread of a user without an RLIMIT_RTPRIO. The
// timer's threads ask it when SCHED_FIFO is refused.

#include <cstdint>
#include <string>

namespace shell {

// Asks RealtimeKit to make the thread real-time at the priority (at most the
// kit's own maximum); false with the reason when there is no kit or it says no.
bool AskRealtimeKit(uint64_t threadId, uint32_t priority, std::string& why);

// Installs AskRealtimeKit as the timers' way to RealtimeKit.
void UseRealtimeKit();

}  // namespace shell
