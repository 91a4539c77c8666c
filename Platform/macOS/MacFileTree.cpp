#include "Platform/macOS/MacFileTree.h"

#include "Platform/Posix/FileStatus.h"

#include <fcntl.h>
#include <sys/attr.h>
#include <unistd.h>

namespace korvell {

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
