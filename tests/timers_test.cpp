#include "platform/timers.h"

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/realtime.h"

using namespace platform;

namespace {

// ---- virtual timers: deterministic, advanced by the test ----

struct Fired {
  uint32_t id;
  uint32_t at;
};

struct VirtualLog {
  VirtualTimers* timers = nullptr;
  std::vector<Fired> fired;
  uint32_t killOnFire = 0;  // an event to kill from inside the callback
  bool setOneShotOnFire = false;
};

void logFired(uint32_t id, uint32_t, uintptr_t user, uintptr_t, uintptr_t) {
  auto* log = reinterpret_cast<VirtualLog*>(user);
  log->fired.push_back({id, log->timers->timeMs()});
  if (log->killOnFire != 0) {
    log->timers->killEvent(log->killOnFire);
    log->killOnFire = 0;
  }
  if (log->setOneShotOnFire) {
    log->setOneShotOnFire = false;
    log->timers->setEvent(5, 1, logFired, user, TIME_ONESHOT);
  }
}

class VirtualTimersTest : public ::testing::Test {
 protected:
  void SetUp() override { log.timers = &timers; }
  VirtualTimers timers;
  VirtualLog log;
  uintptr_t user() { return reinterpret_cast<uintptr_t>(&log); }
};

TEST_F(VirtualTimersTest, APeriodicEventFiresOncePerPeriod) {
  const uint32_t id = timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  ASSERT_NE(id, 0u);
  timers.advance(100);
  ASSERT_EQ(log.fired.size(), 10u);
  for (std::size_t i = 0; i < 10; ++i) {
    EXPECT_EQ(log.fired[i].id, id);
    EXPECT_EQ(log.fired[i].at, 10 * (i + 1));
  }
  EXPECT_EQ(timers.timeMs(), 100u);
}

TEST_F(VirtualTimersTest, StepRunsOnePassAtATime) {
  timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  EXPECT_TRUE(timers.step());
  EXPECT_TRUE(timers.step());
  ASSERT_EQ(log.fired.size(), 2u);
  EXPECT_EQ(timers.timeMs(), 20u);
}

TEST(CatchUp, ALateWakeUpRunsThePassesItMissedUpToTheBoundAndSkipsTheRest) {
  EXPECT_EQ(PlanCatchUp(0, 10, 200).run, 1u) << "on time: the one pass due";
  EXPECT_EQ(PlanCatchUp(9, 10, 200).run, 1u) << "late by less than a period";
  const CatchUp threeLate = PlanCatchUp(20, 10, 200);
  EXPECT_EQ(threeLate.run, 3u) << "woken two periods after the deadline: three passes are due";
  EXPECT_EQ(threeLate.skipped, 0u);
  const CatchUp atBound = PlanCatchUp(200, 10, 200);
  EXPECT_EQ(atBound.run, 21u);
  EXPECT_EQ(atBound.skipped, 0u);
  const CatchUp beyond = PlanCatchUp(660, 10, 200);
  EXPECT_EQ(beyond.run, 21u) << "200 ms made up";
  EXPECT_EQ(beyond.skipped, 46u) << "the rest of a 660 ms stall skipped";
}

TEST_F(VirtualTimersTest, AStallOfThreePeriodsRunsThreePassesBackToBackAtTheLateTime) {
  timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  timers.advance(10);
  ASSERT_EQ(log.fired.size(), 1u);
  const TimerCounts before = TimerCatchUpCounts();
  timers.stall(30);  // woken three periods late: the passes of 20, 30 and 40 are due
  ASSERT_TRUE(timers.step());
  ASSERT_EQ(log.fired.size(), 4u);
  for (std::size_t i = 1; i < 4; ++i) EXPECT_EQ(log.fired[i].at, 40u);
  EXPECT_EQ(TimerCatchUpCounts().caughtUp - before.caughtUp, 2u);
  timers.advance(10);
  ASSERT_EQ(log.fired.size(), 5u) << "back on the grid";
  EXPECT_EQ(log.fired[4].at, 50u);
}

TEST_F(VirtualTimersTest, AStallBeyondTheBoundSkipsWhatIsBeyondItAndCountsIt) {
  timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  const TimerCounts before = TimerCatchUpCounts();
  timers.stall(500);  // due at 10, woken at 500: 49 passes of 10 ms behind
  ASSERT_TRUE(timers.step());
  EXPECT_EQ(log.fired.size(), 21u) << "the due pass and 200 ms made up";
  EXPECT_EQ(TimerCatchUpCounts().skipped - before.skipped, 29u);
  timers.advance(10);
  EXPECT_EQ(log.fired.back().at, 510u) << "the grid of the start kept";
}

TEST_F(VirtualTimersTest, StepWithNoEventDoesNothing) {
  EXPECT_FALSE(timers.step());
  EXPECT_EQ(timers.timeMs(), 0u);
}

TEST_F(VirtualTimersTest, AOneShotEventFiresOnce) {
  timers.setEvent(500, 100, logFired, user(), TIME_ONESHOT);
  timers.advance(499);
  EXPECT_TRUE(log.fired.empty());
  timers.advance(10000);
  ASSERT_EQ(log.fired.size(), 1u);
  EXPECT_EQ(log.fired[0].at, 500u);
  EXPECT_EQ(timers.activeEvents(), 0u);
}

TEST_F(VirtualTimersTest, EventsFireInTimeOrder) {
  const uint32_t slow = timers.setEvent(15, 1, logFired, user(), TIME_PERIODIC);
  const uint32_t fast = timers.setEvent(10, 1, logFired, user(), TIME_PERIODIC);
  timers.advance(30);
  ASSERT_EQ(log.fired.size(), 5u);
  const uint32_t order[] = {fast, slow, fast, slow, fast};  // 10, 15, 20, 30, 30
  for (std::size_t i = 0; i < 5; ++i) EXPECT_EQ(log.fired[i].id, order[i]) << i;
}

TEST_F(VirtualTimersTest, AKilledEventFiresNoMore) {
  const uint32_t id = timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  timers.advance(25);
  EXPECT_EQ(timers.killEvent(id), TIMERR_NOERROR);
  timers.advance(100);
  EXPECT_EQ(log.fired.size(), 2u);
  EXPECT_EQ(timers.killEvent(id), TIMERR_NOCANDO);
}

TEST_F(VirtualTimersTest, ACallbackMayKillItsOwnEvent) {
  const uint32_t id = timers.setEvent(10, 10, logFired, user(), TIME_PERIODIC);
  log.killOnFire = id;
  timers.advance(100);
  EXPECT_EQ(log.fired.size(), 1u);
}

TEST_F(VirtualTimersTest, ACallbackMaySetAnEventThatFallsDueInTheSameAdvance) {
  log.setOneShotOnFire = true;
  timers.setEvent(10, 10, logFired, user(), TIME_ONESHOT);
  timers.advance(20);
  ASSERT_EQ(log.fired.size(), 2u);
  EXPECT_EQ(log.fired[1].at, 15u);
}

TEST_F(VirtualTimersTest, ABadDelayOrNoCallbackSetsNoEvent) {
  EXPECT_EQ(timers.setEvent(0, 1, logFired, user(), TIME_PERIODIC), 0u);
  EXPECT_EQ(timers.setEvent(10, 1, nullptr, user(), TIME_PERIODIC), 0u);
}

TEST_F(VirtualTimersTest, PeriodsAreCheckedAndCounted) {
  TimerCaps caps{};
  EXPECT_EQ(timers.getDevCaps(caps), TIMERR_NOERROR);
  EXPECT_EQ(caps.periodMin, 1u);
  EXPECT_EQ(timers.beginPeriod(0), TIMERR_NOCANDO);
  EXPECT_EQ(timers.beginPeriod(10), TIMERR_NOERROR);
  EXPECT_EQ(timers.openPeriods(), 1);
  EXPECT_EQ(timers.endPeriod(10), TIMERR_NOERROR);
  EXPECT_EQ(timers.openPeriods(), 0);
}

TEST_F(VirtualTimersTest, TheFreeFunctionsGoToTheInstalledTimers) {
  installTimers(&timers);
  const uint32_t id = timeSetEvent(10, 10, logFired, user(), TIME_PERIODIC);
  timers.advance(30);
  EXPECT_EQ(timeGetTime(), 30u);
  EXPECT_EQ(timeKillEvent(id), TIMERR_NOERROR);
  EXPECT_EQ(log.fired.size(), 3u);
  installTimers(nullptr);
  EXPECT_EQ(timeSetEvent(10, 10, logFired, user(), TIME_PERIODIC), 0u);
  EXPECT_EQ(timeBeginPeriod(10), TIMERR_NOCANDO);
}

// ---- real timers: these measure real time, and assert loosely ----

struct RealLog {
  std::mutex mutex;
  std::condition_variable changed;
  std::vector<std::chrono::steady_clock::time_point> times;
  std::thread::id thread;
  int wanted = 0;
  ThreadTimers* timers = nullptr;
  std::atomic<uint32_t> killSelf{0};
};

void logReal(uint32_t id, uint32_t, uintptr_t user, uintptr_t, uintptr_t) {
  auto* log = reinterpret_cast<RealLog*>(user);
  if (log->killSelf == id) log->timers->killEvent(id);
  std::lock_guard lock(log->mutex);
  log->times.push_back(std::chrono::steady_clock::now());
  log->thread = std::this_thread::get_id();
  log->changed.notify_all();
}

bool waitForPasses(RealLog& log, std::size_t count, std::chrono::milliseconds limit) {
  std::unique_lock lock(log.mutex);
  return log.changed.wait_for(lock, limit, [&] { return log.times.size() >= count; });
}

TEST(ThreadTimers, APeriodicEventDoesNotDrift) {
  ThreadTimers timers;
  RealLog log;
  constexpr int Period = 20, Passes = 25;
  const auto start = std::chrono::steady_clock::now();
  const uint32_t id = timers.setEvent(Period, 1, logReal, reinterpret_cast<uintptr_t>(&log), TIME_PERIODIC);
  ASSERT_NE(id, 0u);
  ASSERT_TRUE(waitForPasses(log, Passes, std::chrono::seconds(10)));
  timers.killEvent(id);
  std::lock_guard lock(log.mutex);
  const auto elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(log.times[Passes - 1] - start);
  // After N passes the elapsed time is N periods, within one period.
  EXPECT_GE(elapsed.count(), Passes * Period - Period);
  EXPECT_LE(elapsed.count(), Passes * Period + Period);
  EXPECT_NE(log.thread, std::this_thread::get_id());
}

TEST(ThreadTimers, OnceKilledAnEventRunsNoMore) {
  ThreadTimers timers;
  RealLog log;
  const uint32_t id = timers.setEvent(2, 1, logReal, reinterpret_cast<uintptr_t>(&log), TIME_PERIODIC);
  ASSERT_TRUE(waitForPasses(log, 3, std::chrono::seconds(10)));
  EXPECT_EQ(timers.killEvent(id), TIMERR_NOERROR);
  std::size_t count;
  {
    std::lock_guard lock(log.mutex);
    count = log.times.size();
  }
  EXPECT_FALSE(waitForPasses(log, count + 1, std::chrono::milliseconds(30)));
  EXPECT_EQ(timers.killEvent(id), TIMERR_NOCANDO);
}

TEST(ThreadTimers, AOneShotEventFiresOnce) {
  ThreadTimers timers;
  RealLog log;
  timers.setEvent(5, 1, logReal, reinterpret_cast<uintptr_t>(&log), TIME_ONESHOT);
  ASSERT_TRUE(waitForPasses(log, 1, std::chrono::seconds(10)));
  EXPECT_FALSE(waitForPasses(log, 2, std::chrono::milliseconds(30)));
}

TEST(ThreadTimers, ACallbackMayKillItsOwnEvent) {
  ThreadTimers timers;
  RealLog log;
  log.timers = &timers;
  // Long enough a first delay for killSelf to be set before the first pass.
  log.killSelf = timers.setEvent(50, 1, logReal, reinterpret_cast<uintptr_t>(&log), TIME_PERIODIC);
  ASSERT_TRUE(waitForPasses(log, 1, std::chrono::seconds(10)));
  EXPECT_FALSE(waitForPasses(log, 2, std::chrono::milliseconds(120)));
}

TEST(ThreadTimers, TheTimerThreadAsksForRealTimeSchedulingAndSaysWhatItGot) {
  ThreadTimers timers;
  RealLog log;
  timers.setEvent(5, 1, logReal, reinterpret_cast<uintptr_t>(&log), TIME_ONESHOT);
  ASSERT_TRUE(waitForPasses(log, 1, std::chrono::seconds(10)));
  const std::string got = TimerSchedulingText();
  const bool fifo = got.rfind("real-time (SCHED_FIFO, priority ", 0) == 0;
  const bool normal = got.rfind("normal priority (SCHED_FIFO refused: ", 0) == 0;
  EXPECT_TRUE(fifo || normal) << got;
}

// A stand-in for RealtimeKit that grants every request.
std::atomic<uint64_t> kitThread{0};
bool grantingKit(uint64_t threadId, uint32_t priority, std::string&) {
  kitThread = threadId;
  return priority > 0;
}

// Takes CAP_SYS_NICE out of the calling thread's effective capabilities (a
// thread's own), so that SCHED_FIFO is refused to it as to a user without a limit.
void dropSchedulingPrivilege() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[2]{};
  if (syscall(SYS_capget, &header, data) != 0) return;
  data[CAP_SYS_NICE / 32].effective &= ~(1u << (CAP_SYS_NICE % 32));
  syscall(SYS_capset, &header, data);
}

// Asks for real-time scheduling from a thread as a user without an
// RLIMIT_RTPRIO and without privilege would.
void askAsAnUnprivilegedUser() {
  rlimit saved{};
  ASSERT_EQ(getrlimit(RLIMIT_RTPRIO, &saved), 0);
  rlimit none = saved;
  none.rlim_cur = 0;
  ASSERT_EQ(setrlimit(RLIMIT_RTPRIO, &none), 0);
  std::thread([] {
    dropSchedulingPrivilege();
    AskForRealtimeScheduling();
  }).join();
  setrlimit(RLIMIT_RTPRIO, &saved);
}

TEST(RealtimeScheduling, WhereSCHED_FIFOIsRefusedRealtimeKitIsAskedForTheThread) {
  SetRealtimeKitRequest(grantingKit);
  askAsAnUnprivilegedUser();
  SetRealtimeKitRequest(nullptr);
  EXPECT_EQ(TimerSchedulingText(), "real-time through RealtimeKit (priority 0)")
      << "the stand-in kit grants without changing the thread";
  EXPECT_NE(kitThread.load(), 0u) << "the thread's own id is asked for";
}

TEST(RealtimeScheduling, WithNeitherTheThreadRunsAtNormalPriorityAndSaysWhy) {
  askAsAnUnprivilegedUser();
  EXPECT_EQ(TimerSchedulingText(), "normal priority (SCHED_FIFO refused: Operation not permitted; RealtimeKit not asked)");
}

TEST(ThreadTimers, MillisecondTimeMovesWithTheClock) {
  ThreadTimers timers;
  const uint32_t before = timers.timeMs();
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const uint32_t after = timers.timeMs();
  EXPECT_GE(after - before, 19u);
  EXPECT_LT(after - before, 1000u);
}

}  // namespace
