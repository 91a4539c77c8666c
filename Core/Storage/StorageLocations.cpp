#include "Core/Storage/StorageLocations.h"

#include "Platform/Formats/UserDirs.h"

#include <span>

namespace korvell {
namespace {

using enum StorageKind;

enum class Root { home, cache, data };

struct CacheRow {
  StorageKind kind;
  Root root;
  std::string_view path;
};

constexpr CacheRow macOSCaches[] = {
    {npm, Root::home, ".npm/_cacache"},
    {pnpm, Root::home, "Library/pnpm/store"},
    {pnpm, Root::cache, "pnpm"},
    {yarn, Root::cache, "Yarn"},
    {yarn, Root::home, ".yarn/berry/cache"},
    {pip, Root::cache, "pip"},
    {uv, Root::home, ".cache/uv"},
    {uv, Root::cache, "uv"},
    {cargo, Root::home, ".cargo/registry/cache"},
    {cargo, Root::home, ".cargo/registry/src"},
    {go, Root::cache, "go-build"},
    {cocoapods, Root::cache, "CocoaPods"},
    {gradle, Root::home, ".gradle/caches"},
    {homebrew, Root::cache, "Homebrew"},
};

constexpr CacheRow linuxCaches[] = {
    {npm, Root::home, ".npm/_cacache"},
    {pnpm, Root::data, "pnpm/store"},
    {pnpm, Root::cache, "pnpm"},
    {yarn, Root::cache, "yarn"},
    {yarn, Root::home, ".yarn/berry/cache"},
    {pip, Root::cache, "pip"},
    {uv, Root::cache, "uv"},
    {cargo, Root::home, ".cargo/registry/cache"},
    {cargo, Root::home, ".cargo/registry/src"},
    {go, Root::cache, "go-build"},
    {gradle, Root::home, ".gradle/caches"},
    {homebrew, Root::cache, "Homebrew"},
};

void fill(StorageLocations& locations, const UserFolders& folders, std::span<const CacheRow> rows) {
  locations.home = folders.home;
  locations.cacheHome = folders.cacheHome;
  // A cache folder that holds the home folder is a mistake in someone's settings: what bears a package
  // manager's name there is the user's own.
  const bool believed = !isInside(folders.home, folders.cacheHome);
  for (const auto& row : rows) {
    if (row.root == Root::cache && !believed) continue;
    const auto& root = row.root == Root::home    ? folders.home
                       : row.root == Root::cache ? folders.cacheHome
                                                 : folders.dataHome;
    const auto path = root + "/" + std::string(row.path);
    if (row.root == Root::cache) locations.countedElsewhere.emplace(row.path.substr(0, row.path.find('/')));
    if (row.kind == homebrew)
      locations.brewCache = path;
    else
      locations.packageCaches[row.kind].push_back(path);
  }
}

} // namespace

const std::vector<std::string>& StorageLocations::cachePaths(StorageKind kind) const {
  static const std::vector<std::string> none;
  const auto found = packageCaches.find(kind);
  return found == packageCaches.end() ? none : found->second;
}

StorageLocations macOSStorageLocations(const UserFolders& folders) {
  StorageLocations locations;
  fill(locations, folders, macOSCaches);
  locations.xcode = folders.home + "/Library/Developer/Xcode";
  locations.coreSimulator = folders.home + "/Library/Developer/CoreSimulator";
  locations.xcrun = "/usr/bin/xcrun";
  locations.brewPrograms = {"/opt/homebrew/bin/brew", "/usr/local/bin/brew"};
  locations.dockerPrograms = {"/opt/homebrew/bin/docker", "/usr/local/bin/docker",
                              "/Applications/Docker.app/Contents/Resources/bin/docker",
                              folders.home + "/.docker/bin/docker", folders.home + "/.orbstack/bin/docker"};
  locations.downloads = folders.home + "/Downloads";
  locations.systemCachePrefix = "com.apple";
  locations.hiddenFolders = {"Library"};
  locations.packageExtensions = {
      ".app",       ".bundle",      ".framework",     ".kext",         ".mpkg",
      ".pkg",       ".playground",  ".plugin",        ".rtfd",         ".xcarchive",
      ".xcodeproj", ".xcworkspace", ".photoslibrary", ".key",          ".pages",
      ".numbers",   ".band",        ".logicx",        ".fcpbundle",    ".pvm",
      ".macvm",     ".vmwarevm",    ".utm",           ".sparsebundle", ".backupbundle"};
  locations.asksForAccess = true;
  return locations;
}

StorageLocations linuxStorageLocations(const UserFolders& folders, std::string_view userDirs) {
  StorageLocations locations;
  fill(locations, folders, linuxCaches);
  locations.brewPrograms = {"/home/linuxbrew/.linuxbrew/bin/brew"};
  locations.dockerPrograms = {"/usr/bin/docker", "/usr/local/bin/docker",
                              folders.home + "/.docker/bin/docker", folders.home + "/.orbstack/bin/docker"};
  // A user folder that is the home folder itself is how that file says "none".
  const auto downloads = userDirectory(userDirs, "DOWNLOAD", folders.home);
  locations.downloads =
      downloads && !isInside(folders.home, *downloads) ? *downloads : folders.home + "/Downloads";
  return locations;
}

} // namespace korvell
