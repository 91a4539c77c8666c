#include "Platform/Linux/LinuxFileTree.h"

#include "Platform/Linux/GetdentsReader.h"
#include "Platform/Linux/PlainPath.h"
#include "Platform/Posix/NewestChange.h"
#include "Platform/Posix/TreeSizes.h"

namespace korvell {

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
