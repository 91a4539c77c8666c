#pragma once
// Keeps what was made louder within full scale: up to -1 dB nothing changes, above it a curve that begins
// with slope 1 and never reaches beyond 1, so that peaks are rounded off where cutting them would crackle.
// Always in the way, whatever the gain: switched on and off it would click.

#include <cmath>

namespace korvell {

inline constexpr float limiterKnee = 0.8913F; ///< -1 dB

inline float limited(float sample) {
  constexpr float room = 1 - limiterKnee;
  const float size = std::abs(sample);
  if (size <= limiterKnee) return sample;
  if (std::isnan(size)) return 0;
  return std::copysign(limiterKnee + room * (1 - room / (size - limiterKnee + room)), sample);
}

} // namespace korvell
