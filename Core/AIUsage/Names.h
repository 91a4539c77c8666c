#pragma once
// What a line's texts become in the usage table: project names, model names, instants, keys.

#include "Base/Date.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

/// The project of a working directory: its last component; a worktree inside ".claude/worktrees" belongs to
/// the project around it, any other "worktrees" folder is followed by the name. Without a working directory
/// the last word of a log folder's name, which spells a path with dashes. "Home" where nothing remains and
/// for the home folder itself.
std::string projectName(std::optional<std::string_view> cwd, std::string_view folder, std::string_view home);

/// A model without its variant in brackets and its date: "claude-sonnet-4-5-20250929[1m]" is
/// "claude-sonnet-4-5".
std::string_view normalizedModel(std::string_view model);

/// Seconds since 1970 of the first 19 bytes of "2025-01-31T12:34:56.789Z", always taken as UTC; nothing for
/// shorter texts. Separators are not looked at and bytes that are no digits give wrong numbers: every line
/// pays for this.
std::optional<std::int64_t> logInstant(std::optional<std::string_view> timestamp);
std::optional<Date> logDate(std::optional<std::string_view> timestamp);

/// 64-bit FNV-1a; `seed` continues an earlier call.
constexpr std::uint64_t fnv1a(std::string_view text, std::uint64_t seed = 0xcbf29ce484222325) {
  for (const char c : text) seed = (seed ^ static_cast<unsigned char>(c)) * 0x100000001b3;
  return seed;
}

} // namespace korvell
