#pragma once
// The record that the freedesktop Trash (version 1.0) keeps of each entry: where it came from and when it was
// moved there, so that any desktop can put it back.

#include "Base/LocalTime.h"

#include <string>
#include <string_view>

namespace korvell {

inline constexpr std::string_view trashInfoSuffix = ".trashinfo";

/// `path` is absolute in the user's own Trash and relative to the volume's top in a volume's; any bytes. The
/// date is the local one, as that format wants it.
std::string trashInfo(std::string_view path, const LocalTime& deleted);

/// The name to try at the n-th attempt (from 1) for an entry: "name", "name.2", "name.3", cut at the end of a
/// character so that a name with the record's suffix fits into 255 bytes.
std::string trashName(std::string_view name, int attempt);

} // namespace korvell
