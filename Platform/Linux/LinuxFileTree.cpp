#include "Platform/Linux/LinuxFileTree.h"

#include "Base/Files.h"
#include "Platform/Formats/MountTable.h"
#include "Platform/Linux/GetdentsReader.h"
#include "Platform/Linux/PlainPath.h"
#include "Platform/Posix/NewestChange.h"
#include "Platform/Posix/TreeSizes.h"

#include <cerrno>

namespace korvell {

LinuxFileTree::LinuxFileTree(unsigned threads, std::string mountInfo)
    : PosixFileTree(threads), mountInfo_(std::move(mountInfo)) {}

std::vector<MountedPlace> LinuxFileTree::mounts() {
  return mountedPlaces(parseMountInfo(readFile(mountInfo_, largestMountTable).value_or("")));
}

FolderOpener LinuxFileTree::opener() const { return GetdentsReader::open; }

bool LinuxFileTree::isMountPoint(int folder, const char* name) const {
  // No O_DIRECTORY: with it the kernel would mount what is mounted on demand.
  return !openOnMount(folder, name, O_PATH | O_NOFOLLOW | O_CLOEXEC) && errno == EXDEV;
}

std::vector<std::int64_t> LinuxFileTree::sizes(const std::vector<std::string>& paths,
                                               const Cancellation& cancellation) {
  return TreeSizes<GetdentsReader>(paths, threads(), cancellation).measure();
}

std::optional<Date> LinuxFileTree::newestChange(const std::string& folder,
                                                const std::vector<std::string_view>& ignored, Date enough,
                                                const Cancellation& cancellation) {
  return korvell::newestChange<GetdentsReader>(folder, ignored, enough, cancellation);
}

Descriptor LinuxFileTree::openWithoutLinks(const std::string& folder) {
  const Descriptor found = plainFolder(folder);
  return found ? Descriptor(openat(found.get(), ".", folderFlags)) : Descriptor();
}

} // namespace korvell
