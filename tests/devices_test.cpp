#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <vector>

#include "midi/backends/device_list.h"
#include "midi/backends/wav_writer.h"
#include "midi/backends/wire_check.h"
#include "midi/midi_in.h"
#include "support/midi_fixture.h"

using namespace platform;

namespace {

struct Wav {
  uint32_t sampleRate = 0;
  uint16_t channels = 0;
  std::vector<int16_t> samples;
};

uint32_t le(const std::vector<uint8_t>& b, std::size_t at, int n) {
  uint32_t v = 0;
  for (int i = 0; i < n; ++i) v |= uint32_t{b[at + i]} << (8 * i);
  return v;
}

Wav readWav(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), {});
  Wav wav;
  if (bytes.size() < 44 || std::string(bytes.begin(), bytes.begin() + 4) != "RIFF") return wav;
  wav.channels = static_cast<uint16_t>(le(bytes, 22, 2));
  wav.sampleRate = le(bytes, 24, 4);
  const uint32_t dataBytes = le(bytes, 40, 4);
  EXPECT_EQ(le(bytes, 4, 4), 36 + dataBytes);
  EXPECT_EQ(bytes.size(), 44 + dataBytes);
  for (std::size_t at = 44; at + 1 < bytes.size(); at += 2)
    wav.samples.push_back(static_cast<int16_t>(le(bytes, at, 2)));
  return wav;
}

double rms(const std::vector<int16_t>& samples) {
  double sum = 0;
  for (const int16_t s : samples) sum += static_cast<double>(s) * s;
  return samples.empty() ? 0 : std::sqrt(sum / static_cast<double>(samples.size()));
}

// The energy of one frequency in the left channel (Goertzel's filter).
double energyAt(const Wav& wav, double hertz) {
  const double w = 2 * 3.14159265358979 * hertz / wav.sampleRate;
  double s1 = 0, s2 = 0;
  for (std::size_t i = 0; i < wav.samples.size(); i += wav.channels) {
    const double s0 = wav.samples[i] + 2 * std::cos(w) * s1 - s2;
    s2 = s1;
    s1 = s0;
  }
  return s1 * s1 + s2 * s2 - 2 * std::cos(w) * s1 * s2;
}

std::string tempPath(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }

TEST(DeviceList, NumbersRunOverTheBackendsInTheOrderAdded) {
  LoopbackDevices first(2, 1), second(1, 2);
  DeviceList list;
  list.add(&first);
  list.add(&second);
  EXPECT_EQ(list.outCount(), 3u);
  EXPECT_EQ(list.inCount(), 3u);
  std::unique_ptr<MidiOutPort> port;
  ASSERT_EQ(list.outOpen(2, nullptr, 0, port), 0u);
  EXPECT_TRUE(second.outputOpen(0));
  EXPECT_FALSE(first.outputOpen(0));
  std::string name;
  EXPECT_EQ(list.outName(1, name), 0u);
  EXPECT_EQ(name, "Velmora Loopback 2");
  EXPECT_EQ(list.outName(3, name), MMSYSERR_BADDEVICEID);
  std::unique_ptr<MidiInPort> in;
  EXPECT_EQ(list.inOpen(3, nullptr, 0, in), MMSYSERR_BADDEVICEID);
  port->close();
}

TEST(StandardDevices, TheSynthesizerAndTheLoopbackComeFirst) {
  StandardDevices devices;
  installMidiDevices(&devices.list);
  std::string name;
  ASSERT_EQ(GetMidiOutDescription(0, name), 1u);
  EXPECT_EQ(name, "Velmora Synth (General MIDI)");
  ASSERT_EQ(GetMidiOutDescription(1, name), 1u);
  EXPECT_EQ(name, "Velmora Loopback");
  ASSERT_EQ(GetMidiInDescription(0, name), 1u);
  EXPECT_EQ(name, "Velmora Loopback");
  EXPECT_EQ(GetMidiOutDescription(midiOutGetNumDevs(), name), 0u);
  installMidiDevices(nullptr);
}

TEST(RtMidiDevices, AnAbsentSystemListsNoPortsAndNothingFails) {
  if (RtMidiDevices::Reachable(RtMidi::LINUX_ALSA)) GTEST_SKIP() << "this machine has an ALSA sequencer";
  RtMidiDevices alsa(RtMidi::LINUX_ALSA, "Velmora");
  EXPECT_EQ(alsa.outCount(), 0u);
  EXPECT_EQ(alsa.inCount(), 0u);
  std::unique_ptr<MidiOutPort> port;
  EXPECT_EQ(alsa.outOpen(0, nullptr, 0, port), MMSYSERR_BADDEVICEID);
}

TEST(RtMidiDevices, ErrorsBecomeTheSystemsResultCodes) {
  EXPECT_EQ(ResultOfRtMidiError(RtMidiError::WARNING), MMSYSERR_NOERROR);
  EXPECT_EQ(ResultOfRtMidiError(RtMidiError::INVALID_DEVICE), MMSYSERR_BADDEVICEID);
  EXPECT_EQ(ResultOfRtMidiError(RtMidiError::MEMORY_ERROR), MMSYSERR_NOMEM);
  EXPECT_EQ(ResultOfRtMidiError(RtMidiError::DRIVER_ERROR), MMSYSERR_NODRIVER);
  EXPECT_EQ(ResultOfRtMidiError(RtMidiError::SYSTEM_ERROR), MMSYSERR_ERROR);
}

TEST(ErrorText, EveryResultHasAClearText) {
  EXPECT_NE(midiInGetErrorText(MMSYSERR_ALLOCATED).find("in use"), std::string::npos);
  EXPECT_NE(midiInGetErrorText(MMSYSERR_NODRIVER).find("cannot be reached"), std::string::npos);
  EXPECT_NE(midiInGetErrorText(12345).find("12345"), std::string::npos);
}

class SynthTest : public MidiBench {
 protected:
  // What the built-in synthesizer renders in the given time for what play
  // sends it through an output opened on it.
  template <class Play>
  Wav rendered(const char* name, uint32_t ms, Play play) {
    SynthDevices synth;
    const std::string path = tempPath(name);
    synth.renderTo(path);
    installMidiDevices(&synth);
    EXPECT_EQ(OpenMidiOut(&out, &window, 0, nullptr, MIDI_OPEN_WORD), 0u);
    play();
    timers.advance(ms);
    EXPECT_TRUE(synth.finishRender());
    CloseMidiOut(&out);
    installMidiDevices(&devices);
    Wav wav = readWav(path);
    std::filesystem::remove(path);
    return wav;
  }
};

TEST_F(SynthTest, OneSecondOfACMajorChordIsHeardAndNeverClips) {
  ASSERT_FALSE(SynthDevices::FindSoundFont().empty()) << "install timgm6mb-soundfont";
  SynthDevices synth;
  const std::string path = tempPath("velmora-c-major.wav");
  synth.renderTo(path);
  installMidiDevices(&synth);
  ASSERT_EQ(OpenMidiOut(&out, &window, 0, nullptr, MIDI_OPEN_WORD), 0u);
  for (int key : {60, 64, 67}) put(SEND_NOW, 0x90, static_cast<uint8_t>(key), 100);
  timers.advance(1000);
  ASSERT_TRUE(synth.finishRender());
  CloseMidiOut(&out);
  installMidiDevices(&devices);

  const Wav wav = readWav(path);
  EXPECT_EQ(wav.sampleRate, 44100u);
  EXPECT_EQ(wav.channels, 2u);
  EXPECT_EQ(wav.samples.size(), 2u * 44100);
  // Heard: an RMS above 300 of 32767, about -40 dBFS (this chord measures about -34).
  EXPECT_GT(rms(wav.samples), 300.0);
  for (const int16_t s : wav.samples) ASSERT_TRUE(s > -32768 && s < 32767) << "clipped";
  // The notes played are the notes heard: C4, E4 and G4 each outweigh the
  // semitones beside them that were not played.
  for (const double tone : {261.63, 329.63, 392.00}) {
    for (const double neighbour : {tone * 0.9439, tone * 1.0595}) {
      EXPECT_GT(energyAt(wav, tone), 4 * energyAt(wav, neighbour)) << tone << " Hz against " << neighbour;
    }
  }
  std::filesystem::remove(path);
}

TEST_F(SynthTest, NothingPlayedIsSilenceButForDither) {
  EXPECT_LT(rms(rendered("velmora-silence.wav", 200, [] {}).samples), 2.0);  // FluidSynth dithers by one step
}

TEST(Synth, WithoutASoundFontTheDeviceCannotOpen) {
  SynthDevices synth("");
  std::unique_ptr<MidiOutPort> port;
  EXPECT_EQ(synth.outOpen(0, nullptr, 0, port), MMSYSERR_NODRIVER);
}

TEST(Synth, ASoundFontThatIsNoSoundFontCannotOpen) {
  const std::string path = tempPath("velmora-not-a-soundfont.sf2");
  std::ofstream(path) << "this is not a SoundFont";
  SynthDevices synth(path);
  std::unique_ptr<MidiOutPort> port;
  EXPECT_EQ(synth.outOpen(0, nullptr, 0, port), MMSYSERR_NODRIVER);
  std::filesystem::remove(path);
}

TEST(Synth, OpensWithoutAnAudioDeviceAndTakesMessages) {
  SynthDevices synth;
  std::unique_ptr<MidiOutPort> port;
  ASSERT_EQ(synth.outOpen(0, nullptr, 0, port), 0u);
  std::unique_ptr<MidiOutPort> second;
  EXPECT_EQ(synth.outOpen(0, nullptr, 0, second), MMSYSERR_ALLOCATED);
  for (uint32_t word : {0x643C90u, 0x4007B0u, 0x0005C0u, 0x2000E0u, 0x003C80u, 0xFFu}) {
    EXPECT_EQ(port->shortMsg(word), 0u);
  }
  EXPECT_EQ(port->reset(), 0u);
  EXPECT_EQ(port->close(), 0u);
}

TEST_F(SynthTest, AMessageWithADataByteOf0x80OrAboveIsDroppedAndCounted) {
  const uint64_t before = DroppedMessages();
  const Wav wav = rendered("velmora-dropped.wav", 500, [this] {
    put(SEND_NOW, 0x90, 0xFF, 100);  // would sound as key 127 if its top bit were cut off
    put(SEND_NOW, 0x90, 60, 0xC8);
  });
  EXPECT_EQ(DroppedMessages() - before, 2u);
  EXPECT_LT(rms(wav.samples), 2.0) << "nothing sounds";
}

TEST(WavWriter, AFullDiskIsReportedAtClose) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
  WavWriter wav;
  ASSERT_TRUE(wav.open("/dev/full", 44100, 2));
  std::vector<int16_t> samples(100000, 1);
  wav.write(samples);
  EXPECT_FALSE(wav.close());
}

TEST(WavWriter, AFolderThatDoesNotExistCannotBeWritten) {
  WavWriter wav;
  EXPECT_FALSE(wav.open("/nonexistent-folder/x.wav", 44100, 2));
}

}  // namespace
