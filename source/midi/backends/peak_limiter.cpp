#include "midi/backends/peak_limiter.h"

#include <algorithm>
#include <cmath>

PeakLimiter::PeakLimiter(int sampleRate)
    : delay_(static_cast<std::size_t>(std::max(1.0, std::ceil(LookAheadSeconds * sampleRate)))),
      release_(static_cast<float>(1.0 - std::exp(-1.0 / (ReleaseSeconds * std::max(sampleRate, 1))))),
      delayed_(2 * delay_, 0.0f) {}

// Takes one frame in and gives back, in its place, the frame delay_ frames older, limited.
void PeakLimiter::limitOne(float& left, float& right) {
  const float peak = std::max(std::fabs(left), std::fabs(right));
  const float need = peak > Ceiling ? Ceiling / peak : 1.0f;
  while (!window_.empty() && window_.back().gain >= need) window_.pop_back();
  window_.push_back({count_, need});
  // The window covers the frame going out now and every frame up to the one coming in.
  while (window_.front().at + delay_ < count_) window_.pop_front();
  const float target = window_.front().gain;
  gain_ = target < gain_ ? target : std::min(target, gain_ + (1.0f - gain_) * release_);
  const std::size_t slot = 2 * (count_ % delay_);
  const float outLeft = delayed_[slot] * gain_;
  const float outRight = delayed_[slot + 1] * gain_;
  delayed_[slot] = left;
  delayed_[slot + 1] = right;
  left = outLeft;
  right = outRight;
  ++count_;
}

void PeakLimiter::process(float* left, float* right, std::size_t frames) {
  for (std::size_t i = 0; i < frames; ++i) limitOne(left[i], right[i]);
}
