// The synthesizer's output limiter: quiet sound passes untouched, only later
// by the look-ahead; loud sound is held under the ceiling, and the gain comes
// back after it.
#include "midi/backends/peak_limiter.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace {

constexpr int Rate = 44100;

std::vector<float> sine(double amplitude, std::size_t frames) {
  std::vector<float> wave(frames);
  for (std::size_t i = 0; i < frames; ++i)
    wave[i] = static_cast<float>(amplitude * std::sin(2 * std::numbers::pi * 440.0 * static_cast<double>(i) / Rate));
  return wave;
}

TEST(PeakLimiter, SoundBelowTheCeilingComesOutUntouchedAfterTheLookAhead) {
  PeakLimiter limiter(Rate);
  const std::vector<float> in = sine(0.5, 4096);
  std::vector<float> left = in, right = in;
  limiter.process(left.data(), right.data(), left.size());
  const std::size_t delay = limiter.delay();
  EXPECT_EQ(delay, 111u) << "2.5 ms at 44.1 kHz";
  for (std::size_t i = 0; i < delay; ++i) EXPECT_EQ(left[i], 0.0f) << i;
  for (std::size_t i = delay; i < in.size(); ++i) {
    ASSERT_EQ(left[i], in[i - delay]) << i;
    ASSERT_EQ(right[i], in[i - delay]) << i;
  }
}

TEST(PeakLimiter, ABlastFourTimesFullScaleStaysUnderTheCeilingAndTheGainComesBack) {
  PeakLimiter limiter(Rate);
  std::vector<float> left = sine(4.0, Rate / 2);
  const std::vector<float> after = sine(0.5, Rate);
  left.insert(left.end(), after.begin(), after.end());
  std::vector<float> right = left;
  // In blocks of odd sizes, as an audio driver gives them.
  for (std::size_t at = 0, block = 1; at < left.size(); at += block, block = block % 700 + 37) {
    const std::size_t n = std::min(block, left.size() - at);
    limiter.process(left.data() + at, right.data() + at, n);
  }
  float loudest = 0;
  for (const float s : left) loudest = std::max(loudest, std::fabs(s));
  EXPECT_LE(loudest, PeakLimiter::Ceiling);
  EXPECT_GT(loudest, PeakLimiter::Ceiling * 0.95f) << "turned down to the ceiling, not far below";
  // A second after the blast the quiet sine is back at full level.
  float lastPeak = 0;
  for (std::size_t i = left.size() - 2000; i < left.size(); ++i) lastPeak = std::max(lastPeak, std::fabs(left[i]));
  EXPECT_NEAR(lastPeak, 0.5f, 0.01f);
}

TEST(PeakLimiter, ARisingBlastThatFillsTheWholeLookAheadStaysUnderTheCeiling) {
  PeakLimiter limiter(Rate);
  // Every frame louder than the one before: no coming need ever replaces an older one.
  std::vector<float> left(4000);
  for (std::size_t i = 0; i < left.size(); ++i) left[i] = 1.0f + static_cast<float>(i) * 0.01f;
  std::vector<float> right = left;
  limiter.process(left.data(), right.data(), left.size());
  for (std::size_t i = limiter.delay(); i < left.size(); ++i) ASSERT_LE(left[i], PeakLimiter::Ceiling * 1.0001f) << i;
}

}  // namespace
