#pragma once
// What the Control Panel does to the set-up, apart from drawing: the channel
// table and the sums, the commits of its bars, the maps of its two horizontal
// bars, the channel buttons, and the checks of the Pitch Selection Settings.
// The window itself calls these on the UI thread.

#include <cstdint>
#include <string>

#include "platform/message_loop.h"
#include "platform/shared_word.h"

// 0 while RefreshControlPanel sets the bars: the bars of a pair then do not push each other.
extern SharedWord<uint32_t> BarGuard;

// Rebuilds the channel table and the five sums from the live record, and, with
// the panel open, has the panel set its controls from them.
void RefreshControlPanel(platform::MessageTarget* window);

// The commit of a vertical bar (1280..1289) at value v: stores the bound and
// sums the Distribution. Returns the bar whose value must follow to keep the
// pair ordered (the panel sets it, and its commit follows), or 0.
uint32_t CommitBoundBar(uint32_t bar, int16_t v);

// What opening the panel does to the set-up: each bar takes its value from the
// record, within its range (the vertical bars 127, 127, 32, 120, 100; the
// horizontal ones 395), and commits it, the pairs not pushing each other.
void CommitPanelFromBank();

// The map of the two horizontal bars: a position up to 240 stands for itself,
// above it for 240 + (position - 240) * 10.
uint32_t MapTimeScale(uint32_t position);
// Bar 1300: timeControl and TimeBase. Bar 1301: FunctionsRate, kept raw.
void CommitTimeControl(uint32_t position);
void CommitFunctionsRate(uint32_t position);

// A channel button, 201..216. False when the press is refused: the last
// channel cannot be turned off, and its button must be pressed again.
bool SwitchChannel(uint32_t id);

// The Pitch Selection Settings: what the fields hold, and the outcome of OK.
struct PitchSettings {
  bool intervalMode;
  int fromNote;
  int minimum;
  int maximum;
  bool mirror;
};
struct PitchSettingsCheck {
  bool ok;
  std::string message;  // the refusal, for a box titled "Velmora" with a stop icon
  uint32_t focus;       // the field to select
};
PitchSettingsCheck CheckPitchSettings(const PitchSettings& settings);
// Applies settings that passed the check.
void ApplyPitchSettings(const PitchSettings& settings);
