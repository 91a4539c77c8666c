#pragma once
// This program's own signature.

#include <optional>
#include <string>

namespace korvell {

/// The team that signed the running program; nothing for an unsigned or ad-hoc build. Read once.
const std::optional<std::string>& ownTeamIdentifier();

} // namespace korvell
