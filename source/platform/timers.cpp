#include "platform/timers.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>

#include "platform/realtime.h"

namespace platform {

namespace {

std::atomic<Timers*> installedTimers{nullptr};
std::atomic<uint64_t> caughtUpPasses{0};
std::atomic<uint64_t> skippedPasses{0};

constexpr uint32_t PeriodMin = 1;
constexpr uint32_t PeriodMax = 1000000;

bool validPeriod(uint32_t period) { return period >= PeriodMin && period <= PeriodMax; }

uint32_t fillCaps(TimerCaps& caps) {
  caps = {PeriodMin, PeriodMax};
  return TIMERR_NOERROR;
}

}  // namespace

TimerCounts TimerCatchUpCounts() {
  return {caughtUpPasses.load(std::memory_order_relaxed), skippedPasses.load(std::memory_order_relaxed)};
}

void CountCatchUp(const CatchUp& plan) {
  if (plan.run > 1) caughtUpPasses.fetch_add(plan.run - 1, std::memory_order_relaxed);
  if (plan.skipped > 0) skippedPasses.fetch_add(plan.skipped, std::memory_order_relaxed);
}

void installTimers(Timers* timers) { installedTimers.store(timers, std::memory_order_release); }

Timers* timers() { return installedTimers.load(std::memory_order_acquire); }

uint32_t timeSetEvent(uint32_t delay, uint32_t resolution, TimerCallback callback, uintptr_t user, uint32_t kind) {
  Timers* t = timers();
  return t != nullptr ? t->setEvent(delay, resolution, callback, user, kind) : 0;
}

uint32_t timeKillEvent(uint32_t id) {
  Timers* t = timers();
  return t != nullptr ? t->killEvent(id) : TIMERR_NOCANDO;
}

uint32_t timeGetDevCaps(TimerCaps& caps) {
  Timers* t = timers();
  return t != nullptr ? t->getDevCaps(caps) : TIMERR_NOCANDO;
}

uint32_t timeBeginPeriod(uint32_t period) {
  Timers* t = timers();
  return t != nullptr ? t->beginPeriod(period) : TIMERR_NOCANDO;
}

uint32_t timeEndPeriod(uint32_t period) {
  Timers* t = timers();
  return t != nullptr ? t->endPeriod(period) : TIMERR_NOCANDO;
}

uint32_t timeGetTime() {
  Timers* t = timers();
  return t != nullptr ? t->timeMs() : 0;
}

// ---- real timers ----

struct ThreadTimers::Event {
  uint32_t id = 0;
  uint32_t delay = 0;
  bool periodic = false;
  TimerCallback callback = nullptr;
  uintptr_t user = 0;
  std::mutex mutex;
  std::condition_variable wake;
  // Set under the mutex, for the wait's sake; read without it between the
  // passes of a catch-up, so that the timer's thread takes no lock there.
  std::atomic<bool> stop{false};
  std::thread thread;
};

namespace {

using Clock = std::chrono::steady_clock;

void runEvent(const std::shared_ptr<ThreadTimers::Event>& event, Clock::time_point start) {
  AskForRealtimeScheduling();
  const auto period = std::chrono::milliseconds(event->delay);
  const auto bound = std::chrono::milliseconds(MaxCatchUpMs);
  auto deadline = start + period;
  for (;;) {
    {
      std::unique_lock lock(event->mutex);
      if (event->wake.wait_until(lock, deadline, [&] { return event->stop.load(); })) return;
    }
    if (!event->periodic) {
      event->callback(event->id, 0, event->user, 0, 0);
      return;
    }
    // Deadlines stay on the grid of the start: a late wake-up runs the passes
    // it missed back to back, up to the bound, and skips the rest.
    const auto late = std::max(Clock::duration::zero(), Clock::now() - deadline);
    const CatchUp plan = PlanCatchUp(static_cast<uint64_t>(late.count()), static_cast<uint64_t>(
        std::chrono::duration_cast<Clock::duration>(period).count()), static_cast<uint64_t>(
        std::chrono::duration_cast<Clock::duration>(bound).count()));
    CountCatchUp(plan);
    for (uint64_t pass = 0; pass < plan.run; ++pass) {
      if (pass > 0 && event->stop.load()) return;
      event->callback(event->id, 0, event->user, 0, 0);
    }
    deadline += period * static_cast<int64_t>(plan.run + plan.skipped);
  }
}

}  // namespace

ThreadTimers::ThreadTimers() = default;

ThreadTimers::~ThreadTimers() {
  std::vector<uint32_t> ids;
  {
    std::lock_guard lock(mutex_);
    for (const auto& event : events_) ids.push_back(event->id);
  }
  for (uint32_t id : ids) killEvent(id);
}

uint32_t ThreadTimers::setEvent(uint32_t delay, uint32_t /*resolution*/, TimerCallback callback, uintptr_t user,
                                uint32_t kind) {
  if (callback == nullptr || !validPeriod(delay)) return 0;
  auto event = std::make_shared<Event>();
  event->delay = delay;
  event->periodic = kind == TIME_PERIODIC;
  event->callback = callback;
  event->user = user;
  std::lock_guard lock(mutex_);
  event->id = nextId_++;
  if (nextId_ == 0) nextId_ = 1;
  const auto start = Clock::now();
  event->thread = std::thread(runEvent, event, start);
  events_.push_back(event);
  return event->id;
}

uint32_t ThreadTimers::killEvent(uint32_t id) {
  std::shared_ptr<Event> event;
  {
    std::lock_guard lock(mutex_);
    const auto found = std::find_if(events_.begin(), events_.end(), [id](const auto& e) { return e->id == id; });
    if (found == events_.end()) return TIMERR_NOCANDO;
    event = *found;
    events_.erase(found);
  }
  {
    std::lock_guard lock(event->mutex);
    event->stop = true;
  }
  event->wake.notify_all();
  // A callback that kills its own event cannot wait for itself to end.
  if (event->thread.get_id() == std::this_thread::get_id()) {
    event->thread.detach();
  } else {
    event->thread.join();
  }
  return TIMERR_NOERROR;
}

uint32_t ThreadTimers::getDevCaps(TimerCaps& caps) { return fillCaps(caps); }

uint32_t ThreadTimers::beginPeriod(uint32_t period) { return validPeriod(period) ? TIMERR_NOERROR : TIMERR_NOCANDO; }

uint32_t ThreadTimers::endPeriod(uint32_t period) { return validPeriod(period) ? TIMERR_NOERROR : TIMERR_NOCANDO; }

uint32_t ThreadTimers::timeMs() {
  const auto since = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now().time_since_epoch());
  return static_cast<uint32_t>(since.count());
}

// ---- virtual timers ----

uint32_t VirtualTimers::setEvent(uint32_t delay, uint32_t /*resolution*/, TimerCallback callback, uintptr_t user,
                                 uint32_t kind) {
  if (callback == nullptr || !validPeriod(delay)) return 0;
  const uint32_t id = nextId_++;
  if (nextId_ == 0) nextId_ = 1;
  events_.push_back({id, now_ + delay, kind == TIME_PERIODIC ? delay : 0u, callback, user});
  return id;
}

uint32_t VirtualTimers::killEvent(uint32_t id) {
  const auto found = std::find_if(events_.begin(), events_.end(), [id](const Event& e) { return e.id == id; });
  if (found == events_.end()) return TIMERR_NOCANDO;
  events_.erase(found);
  return TIMERR_NOERROR;
}

uint32_t VirtualTimers::getDevCaps(TimerCaps& caps) { return fillCaps(caps); }

uint32_t VirtualTimers::beginPeriod(uint32_t period) {
  if (!validPeriod(period)) return TIMERR_NOCANDO;
  ++openPeriods_;
  return TIMERR_NOERROR;
}

uint32_t VirtualTimers::endPeriod(uint32_t period) {
  if (!validPeriod(period)) return TIMERR_NOCANDO;
  --openPeriods_;
  return TIMERR_NOERROR;
}

bool VirtualTimers::runNextDueBy(uint64_t limit) {
  // Earliest due first; among equals, the one set first.
  const auto next =
      std::min_element(events_.begin(), events_.end(), [](const Event& a, const Event& b) { return a.due < b.due; });
  if (next == events_.end() || next->due > limit) return false;
  const Event event = *next;
  if (event.period == 0) {
    now_ = std::max(now_, event.due);
    events_.erase(next);
    event.callback(event.id, 0, event.user, 0, 0);
    return true;
  }
  // After a stall the event is late: it makes up for it as the real timer does.
  const CatchUp plan = PlanCatchUp(now_ > event.due ? now_ - event.due : 0, event.period, MaxCatchUpMs);
  CountCatchUp(plan);
  now_ = std::max(now_, event.due);
  next->due += event.period * (plan.run + plan.skipped);
  // The callback may set or kill events; nothing of events_ is held across it.
  for (uint64_t pass = 0; pass < plan.run; ++pass) {
    if (pass > 0 && !isSet(event.id)) break;
    event.callback(event.id, 0, event.user, 0, 0);
  }
  return true;
}

bool VirtualTimers::isSet(uint32_t id) const {
  return std::any_of(events_.begin(), events_.end(), [id](const Event& e) { return e.id == id; });
}

void VirtualTimers::advance(uint32_t ms) {
  const uint64_t target = now_ + ms;
  while (runNextDueBy(target)) {
  }
  now_ = target;
}

bool VirtualTimers::step() { return runNextDueBy(UINT64_MAX); }

}  // namespace platform
