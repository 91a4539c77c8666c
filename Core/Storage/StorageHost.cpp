#include "Core/Storage/StorageHost.h"

#include "Base/Files.h"

namespace korvell {
namespace {

/// What the user's own list of folders says; empty when it can't be read without waiting for a server.
std::string userDirs(const UserFolders& folders, FileTree& files) {
  constexpr std::size_t longest = 1 << 20;
  const auto mounts = files.mounts();
  const BlockingPlaces blocking(mounts, folders.home);
  const auto path = files.resolved(folders.configHome + "/user-dirs.dirs", blocking);
  return blocking.hold(path) ? "" : readFile(path, longest).value_or("");
}

} // namespace

std::shared_ptr<const StorageScan> makeStorageScan(const Host& host, const Clock& clock, CommandRunner run) {
  const auto folders = resolvedFolders(host.folders, *host.fileTree);
  const auto locations = host.system == SystemKind::macOS
                             ? macOSStorageLocations(folders)
                             : linuxStorageLocations(folders, userDirs(folders, *host.fileTree));
  return std::make_shared<const StorageScan>(locations, *host.fileTree, *host.trash, std::move(run), clock);
}

} // namespace korvell
