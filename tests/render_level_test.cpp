// The level of a WAV render: the default set-up near -3 dBFS, a 32-voice run
// without a clipped sample, and --gain scaling both.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "generator/bank.h"
#include "generator/control_panel.h"
#include "generator/functions.h"
#include "generator/generator_tick.h"
#include "generator/setup_files.h"
#include "midi/backends/synth.h"
#include "render/render.h"

namespace {

namespace fs = std::filesystem;

std::string temp(const char* name) { return (fs::temp_directory_path() / name).string(); }

struct Level {
  double peakDbfs = -200;
  double rmsDbfs = -200;
  std::size_t fullScale = 0;  // samples at either end of the 16-bit range
};

Level measure(const std::string& wav) {
  std::ifstream file(wav, std::ios::binary);
  const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), {});
  Level level;
  double sum = 0;
  int peak = 0;
  std::size_t count = 0;
  for (std::size_t at = 44; at + 1 < bytes.size(); at += 2, ++count) {
    const auto s = static_cast<int16_t>(bytes[at] | bytes[at + 1] << 8);
    sum += static_cast<double>(s) * s;
    peak = std::max(peak, std::abs(static_cast<int>(s)));
    level.fullScale += (s == 32767 || s == -32768) ? 1 : 0;
  }
  if (count == 0 || peak == 0) return level;
  level.peakDbfs = 20 * std::log10(peak / 32768.0);
  level.rmsDbfs = 20 * std::log10(std::sqrt(sum / static_cast<double>(count)) / 32768.0);
  return level;
}

Level render(RenderOptions options, const char* name) {
  options.seconds = 30;
  options.wav = temp(name);
  std::string error;
  EXPECT_TRUE(Render(options, error)) << error;
  const Level level = measure(options.wav);
  fs::remove(options.wav);
  return level;
}

// A parameter file of the default set-up whose chords always have 32 voices.
// Written without a clock or a song, it holds no tempo or resolution: the run
// gives the defaults'.
std::string thirtyTwoVoiceSetUp() {
  GeneratorStartUp();
  LiveBank.voicesMin = 32;
  LiveBank.voicesMax = 32;
  for (const std::size_t voices : {2u, 7u}) {  // Max Voices and Min Voices hold 32 too
    std::fill_n(FunctionArrays[voices].get(), FunctionLength.load(), int8_t{32});
  }
  const auto bytes = ParameterFileBytes();
  const std::string path = temp("velmora-32-voices.vlm");
  std::ofstream(path, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  return path;
}

TEST(RenderLevel, TheDefaultSetUpPeaksNearMinus3DbfsWithoutClipping) {
  const Level level = render({}, "velmora-level-default.wav");
  EXPECT_GT(level.peakDbfs, -6.0);
  EXPECT_LT(level.peakDbfs, -1.0);
  EXPECT_GT(level.rmsDbfs, -30.0) << "loud enough to hear beside other programs";
  EXPECT_EQ(level.fullScale, 0u);
}

TEST(RenderLevel, AThirtyTwoVoiceRunIsLouderButNeverClips) {
  RenderOptions options;
  options.params = thirtyTwoVoiceSetUp();
  options.tempoBpm = 60;
  options.resolution = 120;
  const Level level = render(options, "velmora-level-32.wav");
  fs::remove(options.params);
  EXPECT_GT(level.rmsDbfs, render({}, "velmora-level-1.wav").rmsDbfs) << "32 voices sound louder than one";
  EXPECT_LT(level.peakDbfs, -0.5);
  EXPECT_EQ(level.fullScale, 0u);
}

TEST(RenderLevel, GainScalesTheRenderAndItsDefaultIsTheSynthesizers) {
  RenderOptions quieter;
  quieter.gain = DefaultSynthGain / 4;
  const Level quiet = render(quieter, "velmora-level-quiet.wav");
  const Level normal = render({}, "velmora-level-normal.wav");
  EXPECT_NEAR(normal.rmsDbfs - quiet.rmsDbfs, 12.0, 1.5) << "a quarter of the gain is 12 dB down";
  RenderOptions explicitDefault;
  explicitDefault.gain = DefaultSynthGain;
  EXPECT_DOUBLE_EQ(render(explicitDefault, "velmora-level-explicit.wav").rmsDbfs, normal.rmsDbfs)
      << "without --gain the synthesizer plays at its default";
  EXPECT_EQ(DefaultSynthGain, 3.0);
}

TEST(RenderLevel, TheGainArgumentIsReadAndCheckedAsTheDialogChecksIt) {
  std::string error;
  const auto options = ParseRenderArguments({"--gain", "1.5", "--wav", "x.wav"}, error);
  ASSERT_TRUE(options) << error;
  EXPECT_DOUBLE_EQ(*options->gain, 1.5);
  for (const char* wrong : {"0", "-1", "11", "loud", ""}) {
    EXPECT_FALSE(ParseRenderArguments({"--gain", wrong, "--wav", "x.wav"}, error)) << wrong;
    EXPECT_EQ(error, "--gain takes a number above 0 and at most 10, the synthesizer's gain (default " +
                         SynthGainText(DefaultSynthGain) + ")")
        << wrong;
  }
  EXPECT_FALSE(ParseRenderArguments({"--gain", "2"}, error)) << "a gain needs a WAV to act on";
  EXPECT_EQ(error, "--gain sets the built-in synthesizer's level and goes with --wav or --realtime");
}

}  // namespace
