#include "midi/backends/peak_limiter.h"

#include <algorithm>
#include <cmath>

PeakLimiter::PeakLimiter(int sampleRate)
    : delay_(static_cast<std::size_t>(std::max(1.0, std::ceil(LookAheadSeconds * sampleRate)))),
      release_(static_cast<float>(1.0 - std::exp(-1.0 / (ReleaseSeconds * std::max(sampleRate, 1))))),
      delayed_(2 * delay_, 0.0f),
      window_(delay_ + 1) {}

// Takes one frame in and gives back, in its place, the frame delay_ frames older, limited.
void PeakLimiter::limitOne(float& left, float& right) {
  const float peak = std::max(std::fabs(left), std::fabs(right));
  const float need = peak > Ceiling ? Ceiling / peak : 1.0f;
  const std::size_t size = window_.size();
  // The window covers the frame going out now and every frame up to the one
  // coming in: delay_ + 1 frames, so the older needs leave before this one comes.
  while (needs_ > 0 && window_[first_].at + delay_ < count_) {
    first_ = (first_ + 1) % size;
    --needs_;
  }
  while (needs_ > 0 && window_[(first_ + needs_ - 1) % size].gain >= need) --needs_;
  window_[(first_ + needs_++) % size] = {count_, need};
  const float target = window_[first_].gain;
  gain_ = target < gain_ ? target : std::min(target, gain_ + (1.0f - gain_) * release_);
  if (gain_ > 1.0f - 1e-4f && target == 1.0f) gain_ = 1.0f;  // the release ends at unity, not just below it
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
