#include "Core/Storage/StorageHost.h"

#include "Base/Files.h"
#include "Core/Storage/StorageScan.h"

#include <memory>
#include <mutex>

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

StorageLocations locationsOf(const Host& host) {
  const auto folders = resolvedFolders(host.folders, *host.fileTree);
  return host.system == SystemKind::macOS ? macOSStorageLocations(folders)
                                          : linuxStorageLocations(folders, userDirs(folders, *host.fileTree));
}

/// Made once, from whatever thread asks first.
class LateScan {
public:
  LateScan(const Host& host, const Clock& clock) : host_(host), clock_(clock) {}
  const StorageScan& operator*() {
    std::call_once(once_, [this] {
      scan_.emplace(locationsOf(host_), *host_.fileTree, *host_.trash, Shell::run, clock_);
    });
    return *scan_;
  }

private:
  const Host& host_;
  const Clock& clock_;
  std::once_flag once_;
  std::optional<StorageScan> scan_;
};

} // namespace

std::string downloadsFolder(const Host& host) { return locationsOf(host).downloads; }

StorageWork makeStorageWork(const Host& host, const Clock& clock) {
  return storageWork(
      [scan = std::make_shared<LateScan>(host, clock)]() -> auto& { return **scan; },
      host.system == SystemKind::macOS, host.folders.data);
}

} // namespace korvell
