// The real timer and the music's clock on it, over a minute (or the given
// seconds): the sync clock runs at 10 ms a pass on the timer's thread, with
// the thread's real-time scheduling as this machine grants it. Counters, in
// milliseconds where they are times:
//   median_ms, p99_ms, max_ms  how late each pass woke against its place on
//                              the grid (the earliest pass marks the grid)
//   caught_up, skipped         passes run back to back after a late wake-up,
//                              and passes of stalls beyond the bound, skipped
//   drift_ms                   the music's clock against the wall clock at
//                              the end: its ticks as time, less the time gone
// The Loaded variant keeps every core busy with threads of normal priority.
// The scheduling the timer's thread got is printed in the benchmark's label.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <chrono>
#include <thread>
#include <vector>

#include "midi/live_devices.h"
#include "midi/sync_clock.h"
#include "midi/transport_words.h"
#include "platform/installed_seams.h"
#include "platform/message_loop.h"
#include "platform/realtime.h"
#include "platform/timers.h"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int PeriodMs = 10;

// The passes' wake-up times, taken inside the pass.
struct Passes {
  std::vector<Clock::time_point> times;
  std::atomic<std::size_t> count{0};
};
Passes* measured = nullptr;

void notePass() {
  const std::size_t at = measured->count.load(std::memory_order_relaxed);
  if (at < measured->times.size()) measured->times[at] = Clock::now();
  measured->count.store(at + 1, std::memory_order_release);
}

double percentile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

// Threads that keep every core busy until stopped.
class Load {
 public:
  explicit Load(bool on) {
    if (!on) return;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) {
      threads_.emplace_back([this] {
        volatile uint64_t spin = 0;
        while (!stop_.load(std::memory_order_relaxed)) spin = spin + 1;
      });
    }
  }
  ~Load() {
    stop_ = true;
    for (auto& thread : threads_) thread.join();
  }

 private:
  std::atomic<bool> stop_{false};
  std::vector<std::thread> threads_;
};

void runMusicClock(benchmark::State& state, bool loaded) {
  const auto seconds = state.range(0);
  for (auto _ : state) {
    platform::ThreadTimers timers;
    platform::ManualLoop loop;
    const platform::InstalledSeams seams({.loop = &loop, .timers = &timers});
    Passes passes;
    passes.times.resize(static_cast<std::size_t>(seconds * 1000 / PeriodMs) * 2);
    measured = &passes;
    ClockHooks = {};
    ClockHooks.generatorTick = notePass;
    SyncClock* clock = nullptr;
    OpenSync(&clock, nullptr, SYNC_INTERNAL, PeriodMs);
    SetResolution(clock, 100);
    SetTempo(clock, 1000000);  // 100 ticks a second: one tick a pass
    const platform::TimerCounts before = platform::TimerCatchUpCounts();
    const Load load(loaded);
    Generating = 1;
    const auto start = Clock::now();
    StartSync(clock);
    std::this_thread::sleep_for(std::chrono::seconds(seconds));
    const auto end = Clock::now();
    const uint32_t ticks = clock->now;
    StopSync(clock);
    Generating = 0;
    CloseSync(&clock);
    ClockHooks = {};
    loop.pump();

    const std::size_t count = std::min(passes.count.load(std::memory_order_acquire), passes.times.size());
    // The timer's grid began when the clock opened: its origin is where the
    // earliest pass puts it, and each pass's lateness is measured from there.
    std::vector<double> onGrid;
    for (std::size_t k = 0; k < count; ++k) {
      onGrid.push_back(std::chrono::duration<double, std::milli>(passes.times[k] - start).count() -
                       static_cast<double>(PeriodMs) * static_cast<double>(k));
    }
    const double origin = onGrid.empty() ? 0 : *std::min_element(onGrid.begin(), onGrid.end());
    std::vector<double> lateness;
    for (const double at : onGrid) lateness.push_back(at - origin);
    const platform::TimerCounts after = platform::TimerCatchUpCounts();
    const double wallMs = std::chrono::duration<double, std::milli>(end - start).count();
    state.counters["median_ms"] = lateness.empty() ? 0 : percentile(lateness, 0.5);
    state.counters["p99_ms"] = lateness.empty() ? 0 : percentile(lateness, 0.99);
    state.counters["max_ms"] = lateness.empty() ? 0 : *std::max_element(lateness.begin(), lateness.end());
    state.counters["caught_up"] = static_cast<double>(after.caughtUp - before.caughtUp);
    state.counters["skipped"] = static_cast<double>(after.skipped - before.skipped);
    // The wall clock's time rounded down to whole passes, as the clock counts them.
    state.counters["drift_ms"] = static_cast<double>(ticks) * PeriodMs - std::floor(wallMs / PeriodMs) * PeriodMs;
    state.SetLabel(platform::TimerSchedulingText());
  }
}

void BM_MusicClock_AtTenMsAPass(benchmark::State& state) { runMusicClock(state, false); }
void BM_MusicClock_AtTenMsAPass_Loaded(benchmark::State& state) { runMusicClock(state, true); }
BENCHMARK(BM_MusicClock_AtTenMsAPass)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(BM_MusicClock_AtTenMsAPass_Loaded)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
