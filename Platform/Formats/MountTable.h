#pragma once
// The mount table of Linux (/proc/self/mountinfo), and which of its entries are volumes worth showing.

#include "Platform/MountedPlaces.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

struct Mount {
  std::string device;     ///< "254:0"
  std::string mountPoint; ///< unescaped
  std::string type;       ///< of the file system, "ext4"
  std::string source;     ///< "/dev/sda1", a pool's name, a server
  bool operator==(const Mount&) const = default;
};

/// Far more than any machine has.
inline constexpr std::size_t largestMountTable = 16 << 20;

/// In the file's order, which is the order of mounting. Lines that are not understood are left out.
std::vector<Mount> parseMountInfo(std::string_view text);

/// The mounts to show: "/" first and always (also where the table does not name it, as in a change of root),
/// then, in the table's order, every device or pool once. Left out are read-only images, what holds the
/// system's own plumbing, and network and user-space file systems: asking a server that is gone for its space
/// blocks. For the same reason nothing is shown that lies on or below such a mount.
std::vector<Mount> volumesWorthShowing(const std::vector<Mount>& table);

/// What the table says about each place, in its order.
std::vector<MountedPlace> mountedPlaces(const std::vector<Mount>& table);

/// The mounts that may hold a Trash of their own: every place of every device, file systems in memory and
/// overlays too, also where they are out of sight (a cache folder of its own). Neither images, nor the roots
/// of containers and the like, nor what may block, unless `home` lies on it too: then everything would.
std::vector<Mount> mountsForFiles(const std::vector<Mount>& table, std::string_view home);

/// Where the file system of a path begins: the mount point that it lies on or below, "/" when there is none.
/// The path has no links in it.
std::string mountPointOf(std::string_view path, const std::vector<Mount>& table);

} // namespace korvell
