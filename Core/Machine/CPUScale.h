#pragma once
// What a share of CPU is a percentage of: the one answer, for every screen and document.
//
// The machine's own figure is 100 % when every core is busy. What an application, a process or a server uses
// is 100 % for each core that it keeps busy, so that the figure of a busy thread is the same on every
// machine.

#include "Base/Enum.h"

#include <string>

namespace korvell {

enum class CPUScale { machine, core };

template <>
struct EnumTable<CPUScale> {
  using enum CPUScale;
  static constexpr EnumCase<CPUScale> cases[] = {{machine, "machine", "of the machine"},
                                                 {core, "core", "of one core"}};
};

/// Above a column of figures on that scale.
inline std::string cpuColumnTitle(CPUScale scale) {
  return scale == CPUScale::core ? localized("CPU/core") : localized("CPU");
}

} // namespace korvell
