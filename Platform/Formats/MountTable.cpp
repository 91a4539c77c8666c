#include "Platform/Formats/MountTable.h"

#include "Base/Files.h"
#include "Base/Text.h"
#include "Platform/Formats/TextScanner.h"

#include <algorithm>
#include <unordered_set>

namespace korvell {

namespace {

bool isOctal(char c) { return c >= '0' && c <= '7'; }

/// The kernel writes blanks and backslashes as \ooo.
std::string unescaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 3 < text.size() && isOctal(text[i + 1]) && isOctal(text[i + 2]) &&
        isOctal(text[i + 3])) {
      result += char((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + (text[i + 3] - '0'));
      i += 3;
    } else {
      result += text[i];
    }
  }
  return result;
}

template <class Range>
bool contains(const Range& range, std::string_view value) {
  return std::ranges::find(range, value) != std::ranges::end(range);
}

constexpr std::string_view poolTypes[] = {"zfs", "btrfs", "bcachefs"};
constexpr std::string_view imageTypes[] = {"squashfs", "iso9660", "erofs", "overlay", "nullfs"};
/// Kernel file systems without a server behind them; whatever else has no device may have one.
constexpr std::string_view pseudoTypes[] = {
    "proc",      "sysfs",    "tmpfs",   "devtmpfs",   "devpts",   "cgroup",     "cgroup2",
    "pstore",    "bpf",      "tracefs", "debugfs",    "configfs", "securityfs", "hugetlbfs",
    "mqueue",    "efivarfs", "ramfs",   "rootfs",     "autofs",   "fusectl",    "binfmt_misc",
    "selinuxfs", "overlay",  "nsfs",    "rpc_pipefs", "resctrl",  "nullfs"};
/// The system's plumbing; a folder itself and all below it.
constexpr std::string_view plumbing[] = {"/boot",
                                         "/efi",
                                         "/snap",
                                         "/var/lib/docker",
                                         "/var/lib/snapd",
                                         "/var/lib/containers",
                                         "/var/lib/kubelet",
                                         "/var/lib/flatpak"};

bool hasDevice(const Mount& mount) {
  return mount.source.starts_with("/dev/") || contains(poolTypes, mount.type);
}

/// Served by another machine or by a program: asking it may take for ever.
bool mayBlock(const Mount& mount) { return !hasDevice(mount) && !contains(pseudoTypes, mount.type); }

bool isPlumbing(std::string_view path) {
  if (isInside(path, "/run") && !isInside(path, "/run/media")) return true;
  if (path.find("/.") != std::string_view::npos) return true;
  return std::ranges::any_of(plumbing, [&](std::string_view folder) { return isInside(path, folder); });
}

/// The places below which asking may block. Machines with containers have tables of tens of thousands of
/// mounts, so a path is looked up by its parents and not compared with every mount.
class Servers {
public:
  /// Those that hold `trusted` are none.
  explicit Servers(const std::vector<Mount>& table, std::string_view trusted = {}) {
    for (const auto& mount : table)
      if (mount.mountPoint != "/" && mayBlock(mount) && !isInside(trusted, mount.mountPoint))
        mountPoints_.insert(mount.mountPoint);
  }

  bool standBefore(std::string_view path) const {
    while (path.size() > 1) {
      if (mountPoints_.contains(path)) return true;
      path = path.substr(0, path.rfind('/'));
    }
    return false;
  }

private:
  std::unordered_set<std::string_view> mountPoints_; ///< of the table, which outlives this
};

/// One name for everything that shares its space: data sets of a ZFS pool are named pool/path.
std::string_view spaceName(const Mount& mount) {
  const std::string_view source = mount.source;
  return mount.type == "zfs" ? source.substr(0, source.find('/')) : source;
}

} // namespace

std::vector<Mount> parseMountInfo(std::string_view text) {
  std::vector<Mount> mounts;
  TextScanner scanner(text);
  do {
    Mount mount;
    scanner.skipWords(2); // mount, parent
    mount.device = scanner.word();
    scanner.word(); // which part of the file system
    mount.mountPoint = unescaped(scanner.word());
    auto word = scanner.word();
    while (!word.empty() && word != "-") word = scanner.word(); // options and tags, any number of them
    mount.type = scanner.word();
    mount.source = unescaped(scanner.word());
    if (!mount.mountPoint.starts_with('/') || mount.type.empty()) continue;
    mounts.push_back(std::move(mount));
  } while (scanner.nextLine());
  return mounts;
}

std::vector<Mount> volumesWorthShowing(const std::vector<Mount>& table) {
  std::vector<Mount> shown;
  const Servers servers(table);
  std::unordered_set<std::string_view> devices, spaces, mountPoints; // of the table
  const auto isNew = [&](const Mount& mount) {
    return !devices.contains(mount.device) && !spaces.contains(spaceName(mount)) &&
           !mountPoints.contains(mount.mountPoint);
  };
  const auto show = [&](const Mount& mount) {
    devices.insert(mount.device);
    if (hasDevice(mount)) spaces.insert(spaceName(mount));
    mountPoints.insert(mount.mountPoint);
    shown.push_back(mount);
  };

  // The last mount on a place is the one that is seen there.
  const auto root = std::ranges::find(table.rbegin(), table.rend(), "/", &Mount::mountPoint);
  const Mount unnamed{.mountPoint = "/"};
  show(root == table.rend() ? unnamed : *root);

  for (const auto& mount : table) {
    if (!hasDevice(mount) || contains(imageTypes, mount.type) || isPlumbing(mount.mountPoint)) continue;
    if (isNew(mount) && !servers.standBefore(mount.mountPoint)) show(mount);
  }
  return shown;
}

std::vector<MountedPlace> mountedPlaces(const std::vector<Mount>& table) {
  std::vector<MountedPlace> places;
  for (const auto& mount : table) places.push_back({mount.mountPoint, mayBlock(mount)});
  return places;
}

std::vector<Mount> mountsForFiles(const std::vector<Mount>& table, std::string_view home) {
  const Servers servers(table, home);
  std::vector<Mount> mounts;
  for (const auto& mount : table) {
    const bool isOverlay = mount.type == "overlay" && !isPlumbing(mount.mountPoint);
    if (contains(imageTypes, mount.type) && !isOverlay) continue;
    const bool keepsFiles = hasDevice(mount) || isOverlay || mount.type == "tmpfs" ||
                            (mayBlock(mount) && isInside(home, mount.mountPoint));
    if (keepsFiles && !servers.standBefore(mount.mountPoint)) mounts.push_back(mount);
  }
  return mounts;
}

std::string mountPointOf(std::string_view path, const std::vector<Mount>& table) {
  std::string_view found = "/";
  for (const auto& mount : table)
    if (mount.mountPoint.size() > found.size() && isInside(path, mount.mountPoint)) found = mount.mountPoint;
  return std::string(found);
}

} // namespace korvell
