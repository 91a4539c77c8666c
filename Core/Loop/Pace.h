#pragma once
// How often the machine is measured, by whether anybody is looking.

#include "Base/Date.h"

namespace korvell {

struct Pace {
  Seconds first;    ///< from the change of pace to the first cycle
  Seconds interval; ///< between cycles
  Seconds leeway;   ///< how late a cycle may come
};

inline constexpr Pace watchedPace{Seconds(0.2), Seconds(2), Seconds(0.2)};
inline constexpr Pace unwatchedPace{Seconds(10), Seconds(10), Seconds(2)};

constexpr const Pace& paceFor(bool watched) { return watched ? watchedPace : unwatchedPace; }

} // namespace korvell
