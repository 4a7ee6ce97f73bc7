#pragma once
// A look-ahead peak limiter for the built-in synthesizer's stereo output, so
// that a dense chord is turned down instead of clipped. The gain falls, ahead
// of time, to what the loudest sample in the coming window allows, and comes
// back up smoothly; below the ceiling the signal passes untouched. The output
// is the input delayed by the look-ahead.
//
// Threads: one caller at a time (the audio callback, or the render under its
// lock). Every buffer is made by the constructor: process allocates nothing.

#include <cstddef>
#include <vector>

class PeakLimiter {
 public:
  static constexpr float Ceiling = 0.891f;  // -1 dBFS
  static constexpr double LookAheadSeconds = 0.0025;
  static constexpr double ReleaseSeconds = 0.1;

  explicit PeakLimiter(int sampleRate);

  // Limits frames in place: each channel's samples come out delayed by delay() frames.
  void process(float* left, float* right, std::size_t frames);
  std::size_t delay() const { return delay_; }

 private:
  struct Need {
    std::size_t at;
    float gain;
  };
  void limitOne(float& left, float& right);

  std::size_t delay_;
  float release_;
  float gain_ = 1.0f;
  std::size_t count_ = 0;       // frames taken in so far
  std::vector<float> delayed_;  // a ring of delay_ stereo frames
  // The gains the coming frames need, rising from the front: a ring of
  // delay_ + 1 entries, from first_ for count_ entries.
  std::vector<Need> window_;
  std::size_t first_ = 0, needs_ = 0;
};
