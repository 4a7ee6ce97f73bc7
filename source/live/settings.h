#pragma once
// The program's settings in the settings store: read once when the live
// system starts, written once when it stops. Two levels: the user's values
// win, the machine's are the fallback, and a value missing from both is born
// at both with its built-in default. UI thread only.

#include <cstdint>
#include <string>

// The record handed between the store and the live system, in the store's order.
struct SettingsRecord {
  uint32_t inDevice = 0;
  uint32_t outDevice = 0;
  uint32_t numerator = 1;  // a first run starts with a bar of one beat
  uint32_t denominator = 4;
  uint8_t firstKey = 42;
  uint8_t firstVelocity = 100;
  uint8_t firstChannel = 9;  // channels count from 1 here
  uint8_t otherKey = 42;
  uint8_t otherVelocity = 72;
  uint8_t otherChannel = 9;
  uint8_t noteDuration = 2;
  uint32_t metronomeRecord = 1;  // this and the next two: on for anything but 0
  uint32_t metronomePlay = 0;
  uint32_t metronomeCount = 1;
  uint32_t midiThru = 1;
  bool operator==(const SettingsRecord&) const = default;
};

// The longest text a directory value holds, its terminator not counted.
inline constexpr std::size_t SettingsTextLimit = 255;

// "Software\NQuillon\<product name>\<product version>"; the values lie in its key "Settings".
std::string SettingsKeyPath();

// Fills the record, the four file folders (MidiFilesDir and its kin) and
// FunctionsFilters, value by value: the user's value, else the machine's,
// else the default, which is then written to the machine's level; whatever
// was taken from the machine or the default is written to the user's level.
// A stored value of the wrong kind or size counts as missing.
void LoadSettings(SettingsRecord& settings);
// Writes the record, the four folders and FunctionsFilters to the user's
// level only; a key that is not there takes nothing.
void SaveSettings(const SettingsRecord& settings);

// The built-in synthesizer's gain, kept as a text ("3") in its own key beside
// the settings ("...\Synthesizer", value "Gain"): the stored gain, or the
// default when it is missing, unreadable or out of range.
double LoadSynthGain();
void SaveSynthGain(double gain);
