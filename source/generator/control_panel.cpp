#include "generator/control_panel.h"

#include <algorithm>
#include <cstdio>

#include "generator/bank.h"
#include "generator/distributions.h"
#include "generator/generator_tick.h"
#include "platform/command_ids.h"
#include "platform/view_registry.h"

SharedWord<uint32_t> BarGuard = 1;

namespace {

const char* notesTitle() { return IntervalMode != 0 ? "Intervals" : "Notes"; }

}  // namespace

void RefreshControlPanel(platform::MessageTarget*) {
  int16_t count = 0;
  for (int n = 0; n < 16; ++n) {
    const bool on = (LiveBank.channelMask >> n & 1) != 0;
    ChannelWeights[n] = on ? 1 : 0;
    if (on) ++count;
  }
  ChannelCount = count;
  for (const Distribution d :
       {NotesDistribution, VelocityDistribution, LengthDistribution, DensityDistribution, VoicesDistribution}) {
    SumDistribution(d);
  }
  if (ControlPanelOpen != 1) return;
  ColumnTitles[NotesDistribution] = notesTitle();
  BarGuard = 0;
  RefreshIfOpen(ControlPanelOpen, ControlPanelWindow);  // the panel sets its buttons and bars
  BarGuard = 1;
}

uint32_t CommitBoundBar(uint32_t bar, int16_t v) {
  if (bar < ID_PANEL_FIRST_BAR || bar > ID_PANEL_LAST_BAR) return 0;
  const auto d = static_cast<Distribution>((bar - ID_PANEL_FIRST_BAR) / 2);
  const bool upper = (bar - ID_PANEL_FIRST_BAR) % 2 == 0;
  (upper ? UpperBound(d) : LowerBound(d)) = v;
  CommitShownBound(bar, v);
  uint32_t partner = 0;
  if (BarGuard == 1) {
    if (upper && LowerBound(d) > v) partner = bar + 1;
    if (!upper && UpperBound(d) < v) partner = bar - 1;
  }
  SumDistribution(d);
  return partner;
}

void CommitPanelFromBank() {
  static constexpr int16_t BarRange[DistributionCount] = {127, 127, 32, 120, 100};
  constexpr int32_t HorizontalRange = 395;
  BarGuard = 0;
  CommitTimeControl(static_cast<uint32_t>(std::clamp<int32_t>(LiveBank.timeControl, 0, HorizontalRange)));
  CommitFunctionsRate(std::min<uint32_t>(FunctionsRate, HorizontalRange));
  for (int d = 0; d < DistributionCount; ++d) {
    const auto distribution = static_cast<Distribution>(d);
    const auto bar = static_cast<uint32_t>(ID_PANEL_FIRST_BAR + 2 * d);
    CommitBoundBar(bar, std::clamp<int16_t>(UpperBound(distribution), 0, BarRange[d]));
    CommitBoundBar(bar + 1, std::clamp<int16_t>(LowerBound(distribution), 0, BarRange[d]));
  }
  BarGuard = 1;
}

uint32_t MapTimeScale(uint32_t position) { return position <= 240 ? position : 240 + (position - 240) * 10; }

void CommitTimeControl(uint32_t position) {
  LiveBank.timeControl = static_cast<int16_t>(position);
  TimeBase = MapTimeScale(position);
}

void CommitFunctionsRate(uint32_t position) { FunctionsRate = position; }

bool SwitchChannel(uint32_t id) {
  if (id < ID_PANEL_FIRST_CHANNEL || id > ID_PANEL_LAST_CHANNEL) return true;
  const uint32_t n = id - ID_PANEL_FIRST_CHANNEL;
  const auto bit = static_cast<uint16_t>(1u << n);
  if ((LiveBank.channelMask & bit) != 0) {
    if (ChannelCount == 1) return false;
    ChannelWeights[n] = 0;
    ChannelCount = static_cast<int16_t>(ChannelCount - 1);
  } else {
    ChannelCount = static_cast<int16_t>(ChannelCount + 1);
    ChannelWeights[n] = 1;
  }
  LiveBank.channelMask = static_cast<uint16_t>(LiveBank.channelMask ^ bit);
  return true;
}

PitchSettingsCheck CheckPitchSettings(const PitchSettings& s) {
  if (!s.intervalMode) return {true, {}, 0};
  if (s.minimum < 0 || s.minimum > 116) return {false, "Minimum Bound is not in the range 0 to 116.", ID_PITCH_MINIMUM};
  if (s.maximum < 11 || s.maximum > 127) {
    return {false, "Maximum Bound is not in the range 11 to 127.", ID_PITCH_MAXIMUM};
  }
  if (s.maximum - s.minimum < 11) {
    return {false, "Maximun Bound and Minimum Bound diference must be equal or greater than 11.", ID_PITCH_MAXIMUM};
  }
  if (s.fromNote < s.minimum || s.fromNote > s.maximum) {
    char text[64];
    std::snprintf(text, sizeof text, "Value is not in the range %d to %d.", s.minimum, s.maximum);
    return {false, text, ID_PITCH_FROM_NOTE};
  }
  return {true, {}, 0};
}

void ApplyPitchSettings(const PitchSettings& s) {
  if (s.intervalMode) {
    IntervalMode = 1;
    FromNote = static_cast<int16_t>(s.fromNote);
    PitchWalk = s.fromNote;
    IntervalMin = static_cast<int16_t>(s.minimum);
    IntervalMax = static_cast<int16_t>(s.maximum);
  } else {
    IntervalMode = 0;
  }
  ColumnTitles[NotesDistribution] = notesTitle();
  if (DistributionsOpen == 1 && DistributionsWindow != nullptr) DistributionsWindow->showColumnTitles();
  Mirror = s.mirror ? 1 : 0;
}
