#pragma once
// What is mounted where, as far as files are concerned.

#include "Base/Files.h"
#include "Base/Localization.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
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

/// The places in which looking may take for ever, so that what leads there has to be told without looking.
/// Home folders on such a mount are the exception: there everything would. A path is looked up by its parents
/// and not compared with every mount: machines with containers have tables of tens of thousands.
class BlockingPlaces {
public:
  /// `home` is without links. The mounts outlive this.
  BlockingPlaces(const std::vector<MountedPlace>& mounts, std::string_view home) {
    for (const auto& mount : mounts) mayBlock_[mount.path] = mount.mayBlock; // the last one hides the others
    if (const auto own = holding(home); own != mayBlock_.end()) mayBlock_[own->first] = false;
  }
  BlockingPlaces(std::vector<MountedPlace>&& mounts, std::string_view home) = delete;

  /// True for a path in such a place, as its text says: absolute, without links.
  bool hold(std::string_view path) const {
    const auto mount = holding(path);
    return mount != mayBlock_.end() && mount->second;
  }

private:
  using Places = std::unordered_map<std::string_view, bool>;

  Places::const_iterator holding(std::string_view path) const {
    while (path.starts_with('/')) {
      if (const auto found = mayBlock_.find(path); found != mayBlock_.end() || path == "/") return found;
      path = path.substr(0, std::max<std::size_t>(path.rfind('/'), 1));
    }
    return mayBlock_.end();
  }

  Places mayBlock_; ///< by mount point
};

/// Why something that holds a mount is neither moved nor removed.
inline std::string refusal(const MountedPlace& mount) {
  return localized("Something is mounted on {place}. Unmount it first.", {{"place", mount.path}});
}

} // namespace korvell
