#include "Core/Storage/StorageMounts.h"

#include "Base/Files.h"
#include "Base/Text.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <set>

namespace korvell {
namespace {

/// Where a kind's items come from.
struct Places {
  std::vector<std::string> folders;
  bool areItems = false; ///< the folders themselves, not what lies in them
};

Places placesOf(StorageKind kind, const StorageLocations& locations,
                const std::optional<StorageCategory>& found) {
  Places told{.areItems = true}; // by the tool that cleans them
  if (found)
    for (const auto& item : found->items)
      std::ranges::copy(item.commandPlaces, std::back_inserter(told.folders));
  if (!told.folders.empty()) return told;
  switch (kind) {
  case StorageKind::derivedData:
  case StorageKind::deviceSupport:
  case StorageKind::archives:
    return {{locations.xcode}};
  case StorageKind::simulatorCaches:
    return {{locations.coreSimulator + "/Caches"}, true};
  case StorageKind::homebrew:
    return {{locations.brewCache}, true};
  case StorageKind::nodeModules:
    return {{locations.home}};
  case StorageKind::appCaches:
    return {{locations.cacheHome}};
  case StorageKind::downloads:
    return {{locations.downloads}};
  default:
    return {locations.cachePaths(kind), true};
  }
}

/// True for what lies in one of a kind's folders but is no business of the kind.
bool isOverlooked(std::string_view path, StorageKind kind, const StorageLocations& locations) {
  if (kind != StorageKind::nodeModules && kind != StorageKind::appCaches) return false;
  const auto& folder = kind == StorageKind::appCaches ? locations.cacheHome : locations.home;
  const auto parts = split(path.substr(std::min(path.size(), folder.size() + 1)), '/');
  if (kind == StorageKind::nodeModules)
    return locations.hiddenFolders.contains(parts.front()) ||
           std::ranges::any_of(parts, [](std::string_view part) { return part.starts_with('.'); });
  const auto& prefix = locations.systemCachePrefix;
  return locations.countedElsewhere.contains(parts.front()) ||
         (!prefix.empty() && parts.front().starts_with(prefix));
}

bool isLeftOut(const MountedPlace& mount, const std::string& folder, bool isItem, bool isBlocked) {
  if (folder.empty()) return false;
  if (mount.path == folder) return isItem || isBlocked;
  return isInside(mount.path, folder) || (isBlocked && mount.mayBlock && isInside(folder, mount.path));
}

std::vector<MountedPlace> leftOut(const Places& places, StorageKind kind, const StorageLocations& locations,
                                  const std::vector<MountedPlace>& mounts, bool foundSomething) {
  std::vector<MountedPlace> result;
  std::set<std::string_view> known;
  const BlockingPlaces blocking(mounts, locations.home);
  for (const auto& folder : places.folders) {
    const bool blocked = blocking.hold(folder);
    for (const auto& mount : mounts) {
      if (!foundSomething && !places.areItems && !mount.mayBlock) continue;
      if (!isLeftOut(mount, folder, places.areItems, blocked)) continue;
      if (mount.path != folder && isInside(mount.path, folder) && isOverlooked(mount.path, kind, locations))
        continue;
      if (isInside(locations.home, mount.path)) continue;
      if (known.insert(mount.path).second) result.push_back(mount);
    }
  }
  return result;
}

std::string noteOn(const std::vector<MountedPlace>& mounts, const std::string& home) {
  constexpr std::size_t shown = 4;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < std::min(shown, mounts.size()); ++i)
    names.push_back(tildePath(mounts[i].path, home));
  const auto places = fmt::format("{}", fmt::join(names, ", "));
  if (mounts.size() > shown)
    return localized(
        "Neither counted nor cleaned, because something is mounted there: {places} and {count} more.",
        {{"places", places}, {"count", std::to_string(mounts.size() - shown)}});
  return localized("Neither counted nor cleaned, because something is mounted there: {places}.",
                   {{"places", places}});
}

bool isMountPoint(const StorageItem& item, const std::vector<MountedPlace>& mounts) {
  const auto isMounted = [&](const std::string& path) {
    return std::ranges::find(mounts, path, &MountedPlace::path) != mounts.end();
  };
  return std::ranges::any_of(item.urls, isMounted) || std::ranges::any_of(item.commandPlaces, isMounted);
}

} // namespace

StorageLocations withoutBlocked(StorageLocations locations, const std::vector<MountedPlace>& mounts) {
  const BlockingPlaces blocking(mounts, locations.home);
  const auto blocked = [&](const std::string& path) { return blocking.hold(path); };
  for (auto* path : {&locations.cacheHome, &locations.xcode, &locations.coreSimulator, &locations.brewCache,
                     &locations.downloads})
    if (blocked(*path)) path->clear();
  for (auto& [kind, paths] : locations.packageCaches) std::erase_if(paths, blocked);
  for (auto* programs : {&locations.brewPrograms, &locations.dockerPrograms})
    std::erase_if(*programs, blocked);
  return locations;
}

std::optional<StorageCategory> withMounts(std::optional<StorageCategory> found, StorageKind kind,
                                          const StorageLocations& locations,
                                          const std::vector<MountedPlace>& mounts) {
  const auto places = placesOf(kind, locations, found);
  if (found) {
    std::erase_if(found->items, [&](const StorageItem& item) {
      if (!isMountPoint(item, mounts)) return false;
      found->bytes -= item.bytes;
      return true;
    });
    if (found->items.empty() && !found->note) found.reset();
  }
  const auto unseen = leftOut(places, kind, locations, mounts, found.has_value());
  if (unseen.empty()) return found;
  if (!found) found = StorageCategory{.kind = kind};
  auto& note = found->note;
  note = (note ? *note + ' ' : std::string()) + noteOn(unseen, locations.home);
  return found;
}

} // namespace korvell
