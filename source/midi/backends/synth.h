#pragma once
// The built-in synthesizer: one output device played by FluidSynth with a
// General MIDI SoundFont, so that Velmora makes sound with no MIDI hardware.
// Where no audio device can be had (a server), it still opens and works,
// silently. It can instead render into a WAV file in the timer's time, which
// is how the headless programs make sound files: every message is rendered at
// the millisecond that the installed timers give when it arrives.
//
// Threads: messages may come from any thread; FluidSynth's own calls are
// thread-safe, and rendering takes a lock inside the device, as a driver does.

#include <memory>
#include <optional>
#include <string>

#include "platform/midi_devices.h"

// The synthesizer's output gain, FluidSynth's "synth.gain": a factor on every
// voice's level. The default leaves the default set-up's single voices near
// -3 dBFS; denser chords are held under -1 dBFS by the output's peak limiter.
// The range is FluidSynth's own.
inline constexpr double DefaultSynthGain = 3.0;
inline constexpr double MaxSynthGain = 10.0;
// A gain the synthesizer takes: above 0 and at most MaxSynthGain.
bool SynthGainInRange(double gain);
// A gain as the settings and the messages write it: "2", "0.35", with a point
// whatever the locale.
std::string SynthGainText(double gain);
// A gain's text read back the same way; nothing when it is no number or out of range.
std::optional<double> ReadSynthGain(const std::string& text);

class SynthDevices final : public platform::MidiDevices {
 public:
  // The first General MIDI SoundFont at the usual Debian places, or "".
  static std::string FindSoundFont();

  explicit SynthDevices(std::string soundFont = FindSoundFont());
  ~SynthDevices() override;
  SynthDevices(const SynthDevices&) = delete;
  SynthDevices& operator=(const SynthDevices&) = delete;

  uint32_t outCount() override { return 1; }
  uint32_t outName(uint32_t id, std::string& name) override;
  uint32_t outOpen(uint32_t id, platform::MidiOutCallbackFn callback, uintptr_t instance,
                   std::unique_ptr<platform::MidiOutPort>& port) override;
  uint32_t inCount() override { return 0; }
  uint32_t inName(uint32_t id, std::string& name) override;
  uint32_t inOpen(uint32_t id, platform::MidiInCallbackFn callback, uintptr_t instance,
                  std::unique_ptr<platform::MidiInPort>& port) override;

  // The gain, for the open synthesizer at once and for every later opening;
  // one out of range is ignored.
  void setSynthGain(double gain) override;
  double gain() const { return gain_; }

  // Set before the device opens: render into this file instead of playing.
  void renderTo(const std::string& wavPath, int sampleRate = 44100);
  // Renders up to the timers' time now; false once writing the file failed.
  bool renderUntilNow();
  // Renders up to now and closes the file; false if anything failed.
  bool finishRender();

  const std::string& soundFont() const { return soundFont_; }
  // True while an audio device plays what the synthesizer makes.
  bool audible() const;

  struct Engine;

 private:
  std::string soundFont_;
  std::string renderPath_;
  int sampleRate_ = 44100;
  double gain_ = DefaultSynthGain;
  std::weak_ptr<Engine> engine_;  // lives as long as the open port
};
