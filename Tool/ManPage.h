#pragma once
// The manual page in mdoc(7), made from the commands' own definitions.

#include "Tool/Command.h"

#include <span>
#include <string>
#include <string_view>

namespace korvell {

/// `date` as "November 22, 2026". English only, 7-bit but for what the commands' own texts hold.
std::string manPage(std::span<const Command> commands, std::string_view date);

} // namespace korvell
