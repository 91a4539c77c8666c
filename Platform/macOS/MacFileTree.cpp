#include "Platform/macOS/MacFileTree.h"

#include "Platform/Posix/FileStatus.h"

#include <algorithm>
#include <fcntl.h>
#include <string_view>
#include <sys/attr.h>
#include <sys/mount.h>
#include <unistd.h>

namespace korvell {

std::vector<MountedPlace> MacFileTree::mounts() {
  constexpr int room = 16; // for what is mounted between the two calls
  // MNT_NOWAIT: what the kernel remembers, so that no server is asked.
  const int expected = getfsstat(nullptr, 0, MNT_NOWAIT);
  if (expected < 0) return {};
  std::vector<struct statfs> table(std::size_t(expected + room));
  const int count = getfsstat(table.data(), int(table.size() * sizeof table[0]), MNT_NOWAIT);
  table.resize(std::size_t(std::max(count, 0)));
  std::vector<MountedPlace> places;
  for (const auto& mount : table) {
    const bool byProgram = std::string_view(mount.f_fstypename).find("fuse") != std::string_view::npos;
    places.push_back({mount.f_mntonname, byProgram || !(mount.f_flags & MNT_LOCAL)});
  }
  return places;
}

Descriptor MacFileTree::openWithoutLinks(const std::string& folder) {
  return Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW_ANY | O_CLOEXEC));
}

Date MacFileTree::added(const std::string& path, const struct stat& status) {
  struct __attribute__((packed, aligned(4))) {
    std::uint32_t length; // of the answer
    timespec added;
  } answer{};
  attrlist wanted{};
  wanted.bitmapcount = ATTR_BIT_MAP_COUNT;
  wanted.commonattr = ATTR_CMN_ADDEDTIME;
  if (getattrlist(path.c_str(), &wanted, &answer, sizeof answer, FSOPT_NOFOLLOW) != 0 ||
      answer.length < sizeof answer)
    return PosixFileTree::added(path, status); // a file system that keeps no such record
  const timespec added = answer.added;
  return dateOf(added);
}

} // namespace korvell
