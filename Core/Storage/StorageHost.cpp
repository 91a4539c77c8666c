#include "Core/Storage/StorageHost.h"

#include "Base/Files.h"

namespace korvell {

std::shared_ptr<const StorageScan> makeStorageScan(const Host& host, const Clock& clock, CommandRunner run) {
  constexpr std::size_t longestUserDirs = 1 << 20;
  const auto folders = resolvedFolders(host.folders, *host.fileTree);
  const auto locations =
      host.system == SystemKind::macOS
          ? macOSStorageLocations(folders)
          : linuxStorageLocations(
                folders, readFile(folders.configHome + "/user-dirs.dirs", longestUserDirs).value_or(""));
  return std::make_shared<const StorageScan>(locations, *host.fileTree, *host.trash, std::move(run), clock);
}

} // namespace korvell
