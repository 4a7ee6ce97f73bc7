#include "generator/functions.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "platform/command_ids.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"

std::array<std::unique_ptr<int8_t[]>, FunctionCount> FunctionArrays;
std::unique_ptr<int8_t[]> ScratchCurve;
std::array<std::atomic<int8_t*>, FunctionCount> WorkingFunctions{};
SharedWord<uint32_t> FunctionIndex;
std::array<std::atomic<platform::MessageTarget*>, 10> ControlPanelBars{};

namespace {

// The order in which a step applies the functions: each Max before its Min.
constexpr std::array<int, FunctionCount> StepOrder = {0, 5, 1, 6, 2, 7, 3, 8, 4, 9};

bool isMax(int function) { return function < 5; }
Distribution distributionOf(int function) { return static_cast<Distribution>(function % 5); }
SharedWord<int16_t>& boundOf(int function) {
  return isMax(function) ? UpperBound(distributionOf(function)) : LowerBound(distributionOf(function));
}
uint32_t barOf(int function) { return ID_PANEL_FIRST_BAR + 2 * (function % 5) + (isMax(function) ? 0 : 1); }

bool stepped(int function) { return (FunctionsFilters >> function & 1u) != 0; }

// Element index of a function as the tick reads it; none while arrays are missing.
bool element(int function, uint32_t index, int8_t& value) {
  const int8_t* array = WorkingFunctions[function].load(std::memory_order_acquire);
  if (array == nullptr) return false;
  value = array[index];
  return true;
}

using Arrays = std::array<std::unique_ptr<int8_t[]>, FunctionCount + 1>;

bool allocate(Arrays& blocks, int32_t size) {
  for (auto& block : blocks) {
    block.reset(new (std::nothrow) int8_t[static_cast<std::size_t>(size)]());
    if (!block) return false;
  }
  return true;
}

void install(Arrays& blocks) {
  for (int f = 0; f < FunctionCount; ++f) {
    FunctionArrays[f] = std::move(blocks[f]);
    WorkingFunctions[f].store(FunctionArrays[f].get(), std::memory_order_release);
  }
  ScratchCurve = std::move(blocks[FunctionCount]);
}

}  // namespace

bool InitFunctionArrays() {
  constexpr int32_t N = StartFunctionLength;
  Arrays blocks;
  if (!allocate(blocks, N)) return false;
  const float W = static_cast<float>(8 * std::atan(1.0));
  for (int32_t i = 0; i < N; ++i) {
    const float s = static_cast<float>(0.5 * std::sin(static_cast<float>(i) * W / N) + 0.5);
    const int32_t q = i / (N / 128);
    const int32_t minDensity = i < 64 ? i % 64 + 15 : 60;
    const auto set = [&](int function, int32_t value) { blocks[function][i] = static_cast<int8_t>(value); };
    set(5, static_cast<int32_t>(25 * s + 40));
    set(0, static_cast<int32_t>(25 * s + 40 + 12));
    set(6, i < N / 2 ? q + 40 : 127 - q + 40);
    set(1, i < N / 2 ? q + 50 : 127 - q + 50);
    set(7, i % 2 == 0 ? 1 : 2);
    set(2, i % 2 == 0 ? 1 : 2);
    set(8, minDensity);
    set(3, i < 64 ? i % 64 + 17 : 65);
    set(9, minDensity * 100 / 120);
    set(4, minDensity * 100 / 120);
  }
  install(blocks);
  FunctionLength = N;
  return true;
}

void FitCurve(const int8_t* from, int32_t fromLength, int8_t* to, int32_t size) {
  const int32_t kept = from != nullptr ? std::clamp(fromLength, 0, size) : 0;
  if (kept > 0) std::memcpy(to, from, static_cast<std::size_t>(kept));
  if (size > kept) std::fill(to + kept, to + size, kept > 0 ? from[kept - 1] : int8_t{0});
}

void UseFunctionArrays() {
  for (int f = 0; f < FunctionCount; ++f) WorkingFunctions[f].store(FunctionArrays[f].get(), std::memory_order_release);
}

int ResizeFunctions(platform::MessageTarget*, int32_t size) {
  if (size == 0) {
    // No new arrays: the tick goes back to the live ones, whatever it read before.
    UseFunctionArrays();
    return 1;
  }
  Arrays blocks;
  if (size < 0 || size > MaxFunctionLength || !allocate(blocks, size)) {
    platform::ShowMessageBox("Not enough memory. Try with another length.", "Velmora", platform::MB_ICONSTOP);
    return 0;
  }
  for (int f = 0; f <= FunctionCount; ++f) {  // the ten arrays and the scratch curve
    const int8_t* from = f < FunctionCount ? FunctionArrays[f].get() : ScratchCurve.get();
    FitCurve(from, FunctionLength, blocks[f].get(), size);
  }
  install(blocks);
  return 1;
}

void ApplyFunctionStep(uint32_t index) {
  for (const int f : StepOrder) {
    int8_t v = 0;
    if (!stepped(f) || !element(f, index, v)) continue;
    const Distribution d = distributionOf(f);
    SharedWord<int16_t>& lower = LowerBound(d);
    SharedWord<int16_t>& upper = UpperBound(d);
    if (isMax(f)) {
      if (v >= lower) {
        upper = v;
      } else {
        lower = v;
        upper = v;
      }
    } else {
      if (v <= upper) {
        lower = v;
      } else {
        lower = v;
        upper = v;
      }
    }
    SumDistribution(d);
  }
}

void PostFunctionStep(uint32_t index) {
  for (const int f : StepOrder) {
    int8_t v = 0;
    if (!stepped(f) || !element(f, index, v)) continue;
    boundOf(f) = v;
    platform::post(ControlPanelBars[barOf(f) - ID_PANEL_FIRST_BAR].load(), BAR_SET_VALUE, static_cast<uintptr_t>(v), 0);
  }
}

void ApplyFirstStep() {
  for (const int f : StepOrder) {
    int8_t v = 0;
    if (stepped(f) && element(f, 0, v)) boundOf(f) = v;
  }
  if (ControlPanelOpen != 1) return;
  for (const int f : StepOrder) {
    const auto value = static_cast<uint16_t>(boundOf(f).load());
    platform::send(ControlPanelBars[barOf(f) - ID_PANEL_FIRST_BAR].load(), BAR_SET_VALUE, value, 0);
  }
}

void SwitchFunction(uint32_t id) {
  if (id < ID_FUNCTION_FIRST_ON || id > ID_FUNCTION_LAST_ON) return;
  FunctionsFilters = FunctionsFilters ^ (1u << (id - ID_FUNCTION_FIRST_ON));
}
