#pragma once
// How often things are read, by whether anybody is looking.

#include "Base/Date.h"

namespace korvell {

struct Pace {
  Seconds first;       ///< from the change of pace to the first cycle
  Seconds interval;    ///< between cycles
  Seconds leeway;      ///< how late a cycle may come
  Seconds sensors;     ///< sensors and development servers
  Seconds peripherals; ///< batteries of mice, keyboards, headphones
};

inline constexpr Pace watchedPace{Seconds(0.2), Seconds(2), Seconds(0.2), Seconds(6), Seconds(120)};
inline constexpr Pace unwatchedPace{Seconds(10), Seconds(10), Seconds(2), Seconds(30), Seconds(600)};

constexpr const Pace& paceFor(bool watched) { return watched ? watchedPace : unwatchedPace; }

} // namespace korvell
