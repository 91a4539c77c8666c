#pragma once

#include "Base/Record.h"

namespace korvell {

/// How many processes of a cycle hid something from this user.
struct PrivilegedUse {
  int told = 0;   ///< the privileged helper told what was hidden
  int hidden = 0; ///< it stayed hidden; their figures count as 0

  bool operator==(const PrivilegedUse&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"told", &PrivilegedUse::told}, Field{"hidden", &PrivilegedUse::hidden}};
  }
};

} // namespace korvell
