#include "generator/functions_window.h"

#include <algorithm>
#include <cstdlib>

#include "generator/functions.h"
#include "midi/transport_words.h"
#include "platform/command_ids.h"
#include "platform/prompts.h"
#include "platform/view_registry.h"

uint32_t FunctionViewMask = 0;
int32_t GraphScroll = 0;

namespace {

constexpr int32_t ScrollControlMaximum = 0xFFFF;  // the up-down control's range and position are 16 bits

int8_t* functionArray(int function) {
  if (function < 0 || function >= FunctionCount) return nullptr;
  return FunctionArrays[static_cast<std::size_t>(function)].get();
}

int32_t length() { return std::max<int32_t>(FunctionLength, 0); }

}  // namespace

GraphSample GraphSampleAt(PlotCell cell) {
  return {cell.column + GraphScroll, CurveEditArea.valueOfRow(cell.row)};
}

bool SetScratchSample(GraphSample sample) {
  if (sample.index < 0 || sample.index >= length() || sample.value > 127 || !ScratchCurve) return false;
  ScratchCurve[static_cast<std::size_t>(sample.index)] = static_cast<int8_t>(sample.value);
  return true;
}

void PickUpFunction(int function) {
  const int8_t* from = functionArray(function);
  if (from == nullptr || !ScratchCurve) return;
  std::copy(from, from + length(), ScratchCurve.get());
}

int ApplyScratchCurve(uint32_t id) {
  const int function = static_cast<int>(id) - static_cast<int>(ID_FUNCTION_FIRST_APPLY);
  int8_t* to = functionArray(function);
  const int8_t* opposite = functionArray(OppositeFunction(function));
  if (to == nullptr || opposite == nullptr || !ScratchCurve) return 0;
  const bool isMax = function < 5;
  const int limit = FunctionUpperLimits[static_cast<std::size_t>(function)];
  int clipped = 0;
  for (int32_t k = 0; k < length(); ++k) {
    const int s = ScratchCurve[static_cast<std::size_t>(k)];
    const int m = opposite[k];
    int value = s;
    if (isMax ? s < m : s > m) {
      value = m;
    } else if (s > limit) {
      value = limit;
    }
    clipped += value != s ? 1 : 0;
    to[k] = static_cast<int8_t>(value);
  }
  if (clipped != 0) platform::ShowMessageBox("Clipped values: " + std::to_string(clipped), "Velmora", platform::MB_OK);
  return clipped;
}

int32_t GraphScrollMaximum() { return std::clamp<int32_t>(length() - 1, 0, ScrollControlMaximum); }

void ClampGraphScroll() { GraphScroll = std::clamp<int32_t>(GraphScroll, 0, GraphScrollMaximum()); }

bool ScrollGraph(int32_t position) {
  if (position == GraphScroll) return false;
  GraphScroll = position;
  return true;
}

std::vector<PlotPoint> FunctionThumbnailPoints(int function) {
  std::vector<PlotPoint> points;
  const int8_t* array = functionArray(function);
  const int32_t n = length();
  if (array == nullptr || n == 0) return points;
  const float step = static_cast<float>(n) * 0.015625f;
  for (float f = 0; f < static_cast<float>(n); f += step) {
    const auto at = std::min(static_cast<int32_t>(f), n - 1);
    // A value below 0 (a damaged set-up) is drawn on the bottom row rather than below the thumbnail.
    const int value = std::max<int>(array[at], 0);
    const int x = static_cast<int>(f / step);
    if (x >= ThumbnailSize) break;  // a step rounded short would reach a 65th column
    points.push_back({x, (127 - value) / 2});
  }
  return points;
}

void RefreshFunctionsWindow(platform::MessageTarget*) {
  if (FunctionsOpen != 1) return;
  ClampGraphScroll();
  RefreshIfOpen(FunctionsOpen, FunctionsWindow);
}

int32_t FunctionsLengthValue(const std::string& text) {
  const std::string field = text.substr(0, 24);
  const long long value = std::strtoll(field.c_str(), nullptr, 10);
  if (value < 0) return 0;
  return static_cast<int32_t>(std::min<long long>(value, INT32_MAX));
}

FunctionsSettingsOutcome ApplyFunctionsSettings(platform::MessageTarget* window, bool periodic,
                                                const std::string& lengthText) {
  FunctionsPeriodic = periodic ? 1 : 0;
  const int32_t wanted = FunctionsLengthValue(lengthText);
  if (wanted == FunctionLength) return {true, false};
  if (Generating == 1) {
    platform::ShowMessageBox("Turn off the random generator before changing length.", "Velmora",
                             platform::MB_ICONSTOP);
    return {false, false};
  }
  if (ResizeFunctions(window, wanted) == 0) return {false, false};
  FunctionLength = wanted;
  return {true, true};
}
