#pragma once
// The timer seam: periodic and one-shot events, the lowest period, and
// millisecond time, with the multimedia timer's calls and result codes.
//
// A callback runs on the timer's own thread (ThreadTimers) or on the thread
// that advances virtual time (VirtualTimers). Events of one timer never
// overlap; a callback may set and kill events, its own included.

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace platform {

inline constexpr uint32_t TIMERR_NOERROR = 0;
inline constexpr uint32_t TIMERR_NOCANDO = 97;
inline constexpr uint32_t TIME_ONESHOT = 0;
inline constexpr uint32_t TIME_PERIODIC = 1;

using TimerCallback = void (*)(uint32_t timerId, uint32_t message, uintptr_t user, uintptr_t reserved1,
                               uintptr_t reserved2);

struct TimerCaps {
  uint32_t periodMin;
  uint32_t periodMax;
};

class Timers {
 public:
  virtual ~Timers() = default;
  // Calls back after delay ms, then every delay ms if periodic. Returns the
  // event's id, never 0, or 0 on failure.
  virtual uint32_t setEvent(uint32_t delay, uint32_t resolution, TimerCallback callback, uintptr_t user,
                            uint32_t kind) = 0;
  // TIMERR_NOERROR, or TIMERR_NOCANDO for an unknown id. Once it returns, the
  // callback is not running and will not run again (unless it is the caller).
  virtual uint32_t killEvent(uint32_t id) = 0;
  virtual uint32_t getDevCaps(TimerCaps& caps) = 0;
  virtual uint32_t beginPeriod(uint32_t period) = 0;
  virtual uint32_t endPeriod(uint32_t period) = 0;
  virtual uint32_t timeMs() = 0;
};

void installTimers(Timers* timers);
Timers* timers();

// The multimedia timer's calls, forwarded to the installed timers. With none
// installed they fail with TIMERR_NOCANDO (setEvent with 0) and time is 0.
uint32_t timeSetEvent(uint32_t delay, uint32_t resolution, TimerCallback callback, uintptr_t user, uint32_t kind);
uint32_t timeKillEvent(uint32_t id);
uint32_t timeGetDevCaps(TimerCaps& caps);
uint32_t timeBeginPeriod(uint32_t period);
uint32_t timeEndPeriod(uint32_t period);
uint32_t timeGetTime();

// A periodic event that wakes late runs the passes whose deadlines it missed
// back to back, so that what counts passes (the music's clock) stays on real
// time. Of a stall longer than MaxCatchUpMs only that much is made up; the
// passes beyond it are skipped and counted.
inline constexpr uint32_t MaxCatchUpMs = 200;

struct CatchUp {
  uint64_t run;      // passes to run now, back to back: the one due and those missed
  uint64_t skipped;  // passes missed beyond the bound, not run
};
// For an event of the given period that wakes late by the given time after
// its deadline (both in one unit, the bound converted to it).
constexpr CatchUp PlanCatchUp(uint64_t late, uint64_t period, uint64_t bound) {
  const uint64_t missed = period != 0 ? late / period : 0;
  const uint64_t most = period != 0 ? bound / period : 0;
  const uint64_t madeUp = missed < most ? missed : most;
  return {1 + madeUp, missed - madeUp};
}

// What the periodic events of the process have made up for and skipped.
struct TimerCounts {
  uint64_t caughtUp = 0;  // passes run late, back to back
  uint64_t skipped = 0;   // passes of stalls beyond MaxCatchUpMs
};
TimerCounts TimerCatchUpCounts();
void CountCatchUp(const CatchUp& plan);

// Real timers: a thread per event, waking at absolute deadlines on the steady
// clock, so that the period never drifts, and making up for late wake-ups as
// PlanCatchUp says. Each event's thread asks for real-time scheduling
// (see realtime.h) before its first wait.
class ThreadTimers final : public Timers {
 public:
  ThreadTimers();
  ~ThreadTimers() override;
  uint32_t setEvent(uint32_t delay, uint32_t resolution, TimerCallback callback, uintptr_t user,
                    uint32_t kind) override;
  uint32_t killEvent(uint32_t id) override;
  uint32_t getDevCaps(TimerCaps& caps) override;
  uint32_t beginPeriod(uint32_t period) override;
  uint32_t endPeriod(uint32_t period) override;
  uint32_t timeMs() override;

  struct Event;

 private:
  std::mutex mutex_;
  std::vector<std::shared_ptr<Event>> events_;
  uint32_t nextId_ = 1;
};

// Virtual timers: time moves only when the test (or a headless run) advances
// it, and the due callbacks run on the advancing thread, earliest first.
class VirtualTimers final : public Timers {
 public:
  uint32_t setEvent(uint32_t delay, uint32_t resolution, TimerCallback callback, uintptr_t user,
                    uint32_t kind) override;
  uint32_t killEvent(uint32_t id) override;
  uint32_t getDevCaps(TimerCaps& caps) override;
  uint32_t beginPeriod(uint32_t period) override;
  uint32_t endPeriod(uint32_t period) override;
  uint32_t timeMs() override { return static_cast<uint32_t>(now_); }

  // Moves time forward by ms, running every callback that falls due on the way.
  void advance(uint32_t ms);
  // Moves time to the next due event and runs it: one pass. False if none is set.
  bool step();
  // Moves time forward by ms and runs nothing, as a timer thread that was kept
  // from running; the next step or advance makes up for it as a late wake-up does.
  void stall(uint32_t ms) { now_ += ms; }
  std::size_t activeEvents() const { return events_.size(); }
  // Periods asked for by beginPeriod and not yet given back.
  int openPeriods() const { return openPeriods_; }

 private:
  struct Event {
    uint32_t id;
    uint64_t due;
    uint32_t period;  // 0 for a one-shot event
    TimerCallback callback;
    uintptr_t user;
  };
  bool runNextDueBy(uint64_t limit);
  bool isSet(uint32_t id) const;

  std::vector<Event> events_;
  uint64_t now_ = 0;
  uint32_t nextId_ = 1;
  int openPeriods_ = 0;
};

}  // namespace platform
