#pragma once
// From a slider's position to a factor on samples, without a click on the way.
//
// The curve is the one that both of Linux's sound servers use, so that 50 % sounds the same everywhere: the
// cube, 0 dB at 1, -18 dB at 0.5, +10.6 dB at 1.5.

#include <algorithm>

namespace korvell {

/// The factor of a volume from 0 to 1.5.
constexpr float gainOf(double volume) { return float(volume * volume * volume); }

/// A factor that follows its target in steps too small to hear, one a frame. For one thread.
class RampedGain {
public:
  /// How long a change by a factor of one takes.
  static constexpr double rampSeconds = 0.01;

  explicit RampedGain(double sampleRate) : step_(float(1 / (rampSeconds * std::max(sampleRate, 1000.0)))) {}

  void setTarget(float target) { target_ = target; }
  /// The factor of the next frame.
  float next() {
    gain_ += std::clamp(target_ - gain_, -step_, step_);
    return gain_;
  }
  bool isSilent() const { return gain_ == 0 && target_ == 0; }
  /// The largest change from one frame to the next.
  float step() const { return step_; }

private:
  float step_;
  float gain_ = 0;
  float target_ = 0;
};

} // namespace korvell
