// The real timer's lateness and drift: a 10 ms periodic event runs for the
// given number of seconds (60 by default), and every pass is measured against
// its ideal time on the grid of the first. Counters, in milliseconds:
// median, 99th percentile and maximum lateness, and drift, the last pass's
// lateness less the first's.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "platform/timers.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Passes {
  std::vector<Clock::time_point> times;
  std::atomic<std::size_t> count{0};
};

void onPass(uint32_t, uint32_t, uintptr_t user, uintptr_t, uintptr_t) {
  auto* passes = reinterpret_cast<Passes*>(user);
  const std::size_t at = passes->count.load(std::memory_order_relaxed);
  if (at < passes->times.size()) {
    passes->times[at] = Clock::now();
    passes->count.store(at + 1, std::memory_order_release);
  }
}

double percentile(std::vector<double> values, double share) {
  std::sort(values.begin(), values.end());
  return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

void BM_RealTimer_LatenessAt10ms(benchmark::State& state) {
  constexpr int PeriodMs = 10;
  const auto seconds = state.range(0);
  for (auto _ : state) {
    platform::ThreadTimers timers;
    Passes passes;
    passes.times.resize(static_cast<std::size_t>(seconds * 1000 / PeriodMs));
    const auto start = Clock::now();
    const uint32_t id =
        timers.setEvent(PeriodMs, 1, onPass, reinterpret_cast<uintptr_t>(&passes), platform::TIME_PERIODIC);
    while (passes.count.load(std::memory_order_acquire) < passes.times.size()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    timers.killEvent(id);

    std::vector<double> lateness;
    for (std::size_t k = 0; k < passes.times.size(); ++k) {
      const auto ideal = start + std::chrono::milliseconds(PeriodMs * static_cast<int64_t>(k + 1));
      lateness.push_back(std::chrono::duration<double, std::milli>(passes.times[k] - ideal).count());
    }
    state.counters["median_ms"] = percentile(lateness, 0.5);
    state.counters["p99_ms"] = percentile(lateness, 0.99);
    state.counters["max_ms"] = *std::max_element(lateness.begin(), lateness.end());
    state.counters["drift_ms"] = lateness.back() - lateness.front();
    state.counters["passes"] = static_cast<double>(lateness.size());
  }
}
BENCHMARK(BM_RealTimer_LatenessAt10ms)->Arg(60)->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
