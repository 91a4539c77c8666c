#pragma once
// Where each kind's files are, as one table for macOS and one for Linux. Both are compiled everywhere; main
// picks the one of its system.

#include "Base/Files.h"
#include "Base/UserFolders.h"
#include "Core/Storage/StorageKind.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

/// Absolute paths. An empty one means that the system has no such place.
struct StorageLocations {
  std::string home;
  std::string cacheHome; ///< application caches: the folders directly inside it
  std::map<StorageKind, std::vector<std::string>> packageCaches;
  std::string xcode;         ///< holds DerivedData, Archives and the device-support folders
  std::string coreSimulator; ///< holds Caches and Devices
  std::string xcrun;
  std::vector<std::string> brewPrograms; ///< the first that exists counts
  std::string brewCache;                 ///< when Homebrew doesn't tell
  std::vector<std::string> dockerPrograms;
  std::string downloads;

  std::set<std::string, std::less<>> countedElsewhere; ///< folders of `cacheHome` that package managers own
  std::string systemCachePrefix;                       ///< names of the system's own caches begin with it
  std::set<std::string, std::less<>> hiddenFolders;    ///< directly in the home folder and out of sight
  std::vector<std::string_view> packageExtensions;     ///< of folders that the desktop shows as one file
  bool asksForAccess = false; ///< the system asks the user before some folders are read

  /// The fixed places of a package manager's cache; empty for every other kind.
  const std::vector<std::string>& cachePaths(StorageKind kind) const;
};

StorageLocations macOSStorageLocations(const UserFolders& folders);
/// `userDirs` is the text of user-dirs.dirs, which names the downloads folder; empty where there is none.
StorageLocations linuxStorageLocations(const UserFolders& folders, std::string_view userDirs);

} // namespace korvell
