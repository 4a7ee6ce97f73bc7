#include "midi/backends/synth.h"
#include "midi/backends/wire_check.h"

#include <alsa/asoundlib.h>
#include <fluidsynth.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <vector>

#include "midi/backends/peak_limiter.h"
#include "midi/backends/wav_writer.h"
#include "midi/midi_event.h"
#include "platform/timers.h"

using namespace platform;

namespace {

constexpr const char* SynthName = "Velmora Synth (General MIDI)";

void quietAlsa(const char*, int, const char*, int, const char*, ...) {}

// FluidSynth reports through its log, and ALSA's library prints as audio
// devices are tried; a musician needs none of it, and a failure shows as the
// device's result instead.
void silenceFluidSynth() {
  static std::once_flag once;
  std::call_once(once, [] {
    for (int level = FLUID_PANIC; level < LAST_LOG_LEVEL; ++level) fluid_set_log_function(level, nullptr, nullptr);
    snd_lib_error_set_handler(quietAlsa);
  });
}

}  // namespace

// One running synthesizer: settings, synth, audio driver or WAV file.
struct SynthDevices::Engine {
  fluid_settings_t* settings = nullptr;
  fluid_synth_t* synth = nullptr;
  fluid_audio_driver_t* audio = nullptr;
  std::mutex renderMutex;
  WavWriter wav;
  uint32_t renderStart = 0;  // timer milliseconds at which the file begins
  uint64_t framesDone = 0;
  int sampleRate = 44100;
  bool renderFailed = false;
  std::optional<PeakLimiter> limiter;
  std::size_t framesToDrop = 0;  // the limiter's delay, at the head of a render
  static constexpr std::size_t Block = 1024;
  std::array<float, Block> leftBlock{}, rightBlock{};
  std::array<int16_t, 2 * Block> samples{};

  ~Engine() {
    if (audio != nullptr) delete_fluid_audio_driver(audio);
    if (synth != nullptr) delete_fluid_synth(synth);
    if (settings != nullptr) delete_fluid_settings(settings);
  }

  bool rendering() const { return wav.isOpen(); }

  // Fills both channels with the synthesizer's next frames, limited; the
  // limiter is made before the first block, at the sample rate in force.
  void synthesize(float* left, float* right, int frames) {
    std::fill_n(left, frames, 0.0f);
    std::fill_n(right, frames, 0.0f);
    float* channels[2] = {left, right};
    float* effects[4] = {left, right, left, right};  // reverb and chorus mixed into the dry sound
    fluid_synth_process(synth, frames, 4, effects, 2, channels);
    limiter->process(left, right, static_cast<std::size_t>(frames));
  }

  // Renders the frames between the last rendered one and the timers' time now.
  // The limiter's delay is taken back: the first frames it gives are dropped,
  // and finishing renders as many more, so every sound stays at its millisecond.
  void renderUntil(uint32_t nowMs, std::size_t extraFrames = 0) {
    const uint64_t target = uint64_t{nowMs - renderStart} * sampleRate / 1000 + extraFrames;
    while (framesDone < target && !renderFailed) {
      const int frames = static_cast<int>(std::min<uint64_t>(target - framesDone, Block));
      synthesize(leftBlock.data(), rightBlock.data(), frames);
      const std::size_t skip = std::min<std::size_t>(framesToDrop, static_cast<std::size_t>(frames));
      framesToDrop -= skip;
      std::size_t count = 0;
      for (std::size_t i = skip; i < static_cast<std::size_t>(frames); ++i) {
        samples[count++] = toSample(leftBlock[i]);
        samples[count++] = toSample(rightBlock[i]);
      }
      renderFailed = !wav.write(std::span<const int16_t>(samples.data(), count));
      framesDone += static_cast<uint64_t>(frames);
    }
  }

  void finishRendering(uint32_t nowMs) { renderUntil(nowMs, limiter ? limiter->delay() : 0); }

  static int16_t toSample(float value) {
    return static_cast<int16_t>(std::lrint(std::clamp(value, -1.0f, 1.0f) * 32767.0f));
  }

  void play(uint32_t word) {
    const auto status = static_cast<uint8_t>(word);
    const int channel = status & 0x0F;
    const int data1 = word >> 8 & 0x7F;
    const int data2 = word >> 16 & 0x7F;
    switch (status >> 4) {
      case 0x8:
        fluid_synth_noteoff(synth, channel, data1);
        break;
      case 0x9:
        fluid_synth_noteon(synth, channel, data1, data2);
        break;  // velocity 0 ends the note
      case 0xA:
        fluid_synth_key_pressure(synth, channel, data1, data2);
        break;
      case 0xB:
        fluid_synth_cc(synth, channel, data1, data2);
        break;
      case 0xC:
        fluid_synth_program_change(synth, channel, data1);
        break;
      case 0xD:
        fluid_synth_channel_pressure(synth, channel, data1);
        break;
      case 0xE:
        fluid_synth_pitch_bend(synth, channel, data1 | data2 << 7);
        break;
      default:
        if (status == 0xFF) fluid_synth_system_reset(synth);
        break;  // other system and real-time messages mean nothing to a synthesizer
    }
  }

  template <class Work>
  void atTimeNow(Work&& work) {
    if (!rendering()) {
      work();
      return;
    }
    std::lock_guard lock(renderMutex);
    renderUntil(timeGetTime());
    work();
  }
};

namespace {

class SynthPort final : public MidiOutPort {
 public:
  SynthPort(std::shared_ptr<SynthDevices::Engine> engine, MidiOutCallbackFn callback, uintptr_t instance)
      : engine_(std::move(engine)), callback_(callback), instance_(instance) {}

  uint32_t shortMsg(uint32_t word) override {
    if (!ShortMessageFitsWire(word)) {
      CountDroppedMessage();
      return MMSYSERR_NOERROR;
    }
    engine_->atTimeNow([&] { engine_->play(word); });
    return MMSYSERR_NOERROR;
  }

  uint32_t longMsg(MidiHeader& header) override {
    // A whole message, 0xF0 to 0xF7, goes to the synthesizer; a part of one means nothing to it.
    const uint32_t length = header.dwBufferLength;
    const bool fits = SysexFitsWire({header.lpData, length});
    if (!fits) CountDroppedMessage();
    if (fits && length >= 2 && header.lpData[0] == 0xF0 && header.lpData[length - 1] == 0xF7) {
      engine_->atTimeNow([&] {
        fluid_synth_sysex(engine_->synth, reinterpret_cast<const char*>(header.lpData + 1),
                          static_cast<int>(length - 2), nullptr, nullptr, nullptr, 0);
      });
    }
    MarkHeaderDone(header);
    notify(MOM_DONE, reinterpret_cast<uintptr_t>(&header));
    return MMSYSERR_NOERROR;
  }

  uint32_t reset() override {
    engine_->atTimeNow([&] { fluid_synth_all_notes_off(engine_->synth, -1); });
    return MMSYSERR_NOERROR;
  }

  uint32_t close() override {
    notify(MOM_CLOSE, 0);
    return MMSYSERR_NOERROR;
  }

  void notify(uint32_t message, uintptr_t param1) {
    if (callback_ != nullptr) callback_(this, message, instance_, param1, 0);
  }

 private:
  std::shared_ptr<SynthDevices::Engine> engine_;
  MidiOutCallbackFn callback_;
  uintptr_t instance_;
};

// Tries the system's usual audio servers; none at all leaves the synthesizer
// silent. JACK is used when it runs, never started on the user's behalf.
// The audio driver's callback: the synthesizer's frames through the limiter.
int playAudio(void* data, int frames, int, float**, int outputs, float** out) {
  if (outputs < 2) return FLUID_FAILED;
  static_cast<SynthDevices::Engine*>(data)->synthesize(out[0], out[1], frames);
  return FLUID_OK;
}

fluid_audio_driver_t* startAudio(fluid_settings_t* settings, SynthDevices::Engine* engine) {
#ifndef _WIN32
  setenv("JACK_NO_START_SERVER", "1", 0);
#endif
  double rate = 44100;
  fluid_settings_getnum(settings, "synth.sample-rate", &rate);
  engine->sampleRate = static_cast<int>(rate);
  engine->limiter.emplace(engine->sampleRate);  // before the audio thread runs, which may not allocate
  if (fluid_audio_driver_t* audio = new_fluid_audio_driver2(settings, playAudio, engine)) return audio;
  for (const char* driver : {"pulseaudio", "alsa", "jack"}) {
    fluid_settings_setstr(settings, "audio.driver", driver);
    if (fluid_audio_driver_t* audio = new_fluid_audio_driver2(settings, playAudio, engine)) return audio;
  }
  return nullptr;
}

}  // namespace

std::string SynthDevices::FindSoundFont() {
  for (const char* path : {"/usr/share/sounds/sf2/TimGM6mb.sf2", "/usr/share/sounds/sf2/FluidR3_GM.sf2",
                           "/usr/share/sounds/sf2/default-GM.sf2"}) {
    std::error_code error;
    if (std::filesystem::is_regular_file(path, error)) return path;
  }
  return {};
}

SynthDevices::SynthDevices(std::string soundFont) : soundFont_(std::move(soundFont)) { silenceFluidSynth(); }

SynthDevices::~SynthDevices() = default;

uint32_t SynthDevices::outName(uint32_t id, std::string& name) {
  if (id != 0) return MMSYSERR_BADDEVICEID;
  name = SynthName;
  return MMSYSERR_NOERROR;
}

uint32_t SynthDevices::inName(uint32_t, std::string&) { return MMSYSERR_BADDEVICEID; }

uint32_t SynthDevices::inOpen(uint32_t, MidiInCallbackFn, uintptr_t, std::unique_ptr<MidiInPort>&) {
  return MMSYSERR_BADDEVICEID;
}

bool SynthGainInRange(double gain) { return gain > 0 && gain <= MaxSynthGain; }

std::string SynthGainText(double gain) {
  char text[32];
  const auto written = std::to_chars(text, text + sizeof text, gain);
  return std::string(text, written.ptr);
}

std::optional<double> ReadSynthGain(const std::string& text) {
  double gain = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, gain);
  if (text.empty() || read.ec != std::errc() || read.ptr != end || !SynthGainInRange(gain)) return std::nullopt;
  return gain;
}

void SynthDevices::setSynthGain(double gain) {
  if (!SynthGainInRange(gain)) return;
  gain_ = gain;
  if (const auto engine = engine_.lock()) fluid_synth_set_gain(engine->synth, static_cast<float>(gain));
}

void SynthDevices::renderTo(const std::string& wavPath, int sampleRate) {
  renderPath_ = wavPath;
  sampleRate_ = sampleRate;
}

uint32_t SynthDevices::outOpen(uint32_t id, MidiOutCallbackFn callback, uintptr_t instance,
                               std::unique_ptr<MidiOutPort>& port) {
  if (id != 0) return MMSYSERR_BADDEVICEID;
  if (!engine_.expired()) return MMSYSERR_ALLOCATED;
  if (soundFont_.empty()) return MMSYSERR_NODRIVER;

  auto engine = std::make_shared<Engine>();
  engine->settings = new_fluid_settings();
  if (engine->settings == nullptr) return MMSYSERR_NOMEM;
  fluid_settings_setnum(engine->settings, "synth.sample-rate", sampleRate_);
  fluid_settings_setnum(engine->settings, "synth.gain", gain_);
  engine->synth = new_fluid_synth(engine->settings);
  if (engine->synth == nullptr) return MMSYSERR_NOMEM;
  if (fluid_synth_sfload(engine->synth, soundFont_.c_str(), 1) == FLUID_FAILED) return MMSYSERR_NODRIVER;

  if (!renderPath_.empty()) {
    if (!engine->wav.open(renderPath_, static_cast<uint32_t>(sampleRate_), 2)) return MMSYSERR_ERROR;
    engine->sampleRate = sampleRate_;
    engine->renderStart = timeGetTime();
    engine->limiter.emplace(sampleRate_);
    engine->framesToDrop = engine->limiter->delay();
  } else {
    engine->audio = startAudio(engine->settings, engine.get());
  }
  engine_ = engine;
  auto opened = std::make_unique<SynthPort>(std::move(engine), callback, instance);
  opened->notify(MOM_OPEN, 0);
  port = std::move(opened);
  return MMSYSERR_NOERROR;
}

bool SynthDevices::renderUntilNow() {
  const auto engine = engine_.lock();
  if (!engine || !engine->rendering()) return false;
  std::lock_guard lock(engine->renderMutex);
  engine->renderUntil(timeGetTime());
  return !engine->renderFailed;
}

bool SynthDevices::finishRender() {
  const auto engine = engine_.lock();
  if (!engine || !engine->rendering()) return true;
  std::lock_guard lock(engine->renderMutex);
  engine->finishRendering(timeGetTime());
  const bool closed = engine->wav.close();
  return closed && !engine->renderFailed;
}

bool SynthDevices::audible() const {
  const auto engine = engine_.lock();
  return engine && engine->audio != nullptr;
}
