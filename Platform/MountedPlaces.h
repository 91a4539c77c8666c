#pragma once
// What is mounted where, as far as files are concerned.

#include "Base/Files.h"
#include "Base/Localization.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct MountedPlace {
  std::string path; ///< absolute, without links
  /// Served by another machine or by a program: looking at it may take for ever.
  bool mayBlock = false;
  bool operator==(const MountedPlace&) const = default;
};

/// The first that lies at a path or below it; null when there is none.
inline const MountedPlace* mountInside(std::string_view path, const std::vector<MountedPlace>& mounts) {
  const auto found =
      std::ranges::find_if(mounts, [&](const MountedPlace& mount) { return isInside(mount.path, path); });
  return found == mounts.end() ? nullptr : &*found;
}

const MountedPlace* mountInside(std::string_view path, std::vector<MountedPlace>&& mounts) = delete;

/// What a path lies on: of the mounts at the path or above it the deepest, and of several at one place the
/// last, which hides the others. Null when the list has none.
inline const MountedPlace* mountHolding(std::string_view path, const std::vector<MountedPlace>& mounts) {
  const MountedPlace* found = nullptr;
  for (const auto& mount : mounts)
    if (isInside(path, mount.path) && (!found || mount.path.size() >= found->path.size())) found = &mount;
  return found;
}

/// Why something that holds a mount is neither moved nor removed.
inline std::string refusal(const MountedPlace& mount) {
  return localized("Something is mounted on {place}. Unmount it first.", {{"place", mount.path}});
}

} // namespace korvell
