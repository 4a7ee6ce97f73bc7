#include "midi/backends/synth.h"
#include "midi/backends/wire_check.h"

#include <alsa/asoundlib.h>
#include <fluidsynth.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <vector>

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

  ~Engine() {
    if (audio != nullptr) delete_fluid_audio_driver(audio);
    if (synth != nullptr) delete_fluid_synth(synth);
    if (settings != nullptr) delete_fluid_settings(settings);
  }

  bool rendering() const { return wav.isOpen(); }

  // Renders the frames between the last rendered one and the timers' time now.
  void renderUntil(uint32_t nowMs) {
    const uint64_t target = uint64_t{nowMs - renderStart} * sampleRate / 1000;
    std::array<int16_t, 2 * 1024> buffer;
    while (framesDone < target && !renderFailed) {
      const int frames = static_cast<int>(std::min<uint64_t>(target - framesDone, buffer.size() / 2));
      fluid_synth_write_s16(synth, frames, buffer.data(), 0, 2, buffer.data(), 1, 2);
      renderFailed = !wav.write(std::span<const int16_t>(buffer.data(), 2 * static_cast<std::size_t>(frames)));
      framesDone += static_cast<uint64_t>(frames);
    }
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
fluid_audio_driver_t* startAudio(fluid_settings_t* settings, fluid_synth_t* synth) {
#ifndef _WIN32
  setenv("JACK_NO_START_SERVER", "1", 0);
#endif
  if (fluid_audio_driver_t* audio = new_fluid_audio_driver(settings, synth)) return audio;
  for (const char* driver : {"pulseaudio", "alsa", "jack"}) {
    fluid_settings_setstr(settings, "audio.driver", driver);
    if (fluid_audio_driver_t* audio = new_fluid_audio_driver(settings, synth)) return audio;
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
  fluid_settings_setnum(engine->settings, "synth.gain", 0.4);
  engine->synth = new_fluid_synth(engine->settings);
  if (engine->synth == nullptr) return MMSYSERR_NOMEM;
  if (fluid_synth_sfload(engine->synth, soundFont_.c_str(), 1) == FLUID_FAILED) return MMSYSERR_NODRIVER;

  if (!renderPath_.empty()) {
    if (!engine->wav.open(renderPath_, static_cast<uint32_t>(sampleRate_), 2)) return MMSYSERR_ERROR;
    engine->sampleRate = sampleRate_;
    engine->renderStart = timeGetTime();
  } else {
    engine->audio = startAudio(engine->settings, engine->synth);
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
  engine->renderUntil(timeGetTime());
  const bool closed = engine->wav.close();
  return closed && !engine->renderFailed;
}

bool SynthDevices::audible() const {
  const auto engine = engine_.lock();
  return engine && engine->audio != nullptr;
}
