#include "Core/Storage/StorageScan.h"

#include "Base/Files.h"
#include "Core/Storage/StorageMounts.h"

#include <algorithm>

namespace korvell {

namespace {

constexpr std::size_t shownAppCaches = 10;
constexpr std::string_view platforms[] = {"iOS", "watchOS", "tvOS", "visionOS", "xrOS", "macOS"};

std::string lastPart(const std::string& path) { return path.substr(path.rfind('/') + 1); }

} // namespace

struct StorageScan::Rule {
  StorageKind kind;
  Found (StorageScan::*measure)(const Cancellation&) const;
};

const StorageScan::Rule StorageScan::rules[] = {
    {StorageKind::derivedData, &StorageScan::derivedData},
    {StorageKind::deviceSupport, &StorageScan::deviceSupport},
    {StorageKind::archives, &StorageScan::archives},
    {StorageKind::simulatorDevices, &StorageScan::simulatorDevices},
    {StorageKind::simulatorCaches, &StorageScan::simulatorCaches},
    {StorageKind::nodeModules, &StorageScan::nodeModules},
    {StorageKind::homebrew, &StorageScan::homebrew},
    {StorageKind::docker, &StorageScan::docker},
    {StorageKind::appCaches, &StorageScan::appCaches},
    {StorageKind::trash, &StorageScan::trash},
    {StorageKind::downloads, &StorageScan::downloads},
};

StorageScan::StorageScan(StorageLocations locations, FileTree& files, Trash& trash, CommandRunner run,
                         const Clock& clock)
    : locations_(std::move(locations)), files_(files), trash_(trash), run_(std::move(run)), clock_(clock) {}

std::optional<StorageCategory> StorageScan::scan(StorageKind kind, const Cancellation& cancellation) const {
  const auto mounts = files_.mounts();
  const auto locations = resolvedLocations(BlockingPlaces(mounts, locations_.home));
  auto reachable = *this;
  reachable.locations_ = withoutBlocked(locations, mounts);
  return withMounts(reachable.measure(kind, cancellation), kind, locations, mounts);
}

StorageLocations StorageScan::resolvedLocations(const BlockingPlaces& blocking) const {
  auto locations = locations_;
  for (auto* path : {&locations.cacheHome, &locations.xcode, &locations.coreSimulator})
    if (!path->empty()) *path = files_.resolved(*path, blocking);
  // Of these a link in the last part is never followed.
  const auto resolveParent = [&](std::string& path) {
    if (path.empty()) return;
    const auto parent = files_.resolved(path.substr(0, path.rfind('/') + 1), blocking);
    path = (parent == "/" ? "" : parent) + "/" + lastPart(path);
  };
  for (auto* path : {&locations.brewCache, &locations.downloads}) resolveParent(*path);
  for (auto& [kind, paths] : locations.packageCaches) std::ranges::for_each(paths, resolveParent);
  // Programs keep the names under which they are run.
  for (auto* programs : {&locations.brewPrograms, &locations.dockerPrograms})
    for (auto& program : *programs)
      if (const auto path = files_.resolved(program, blocking); blocking.hold(path)) program = path;
  return locations;
}

StorageScan::Found StorageScan::measure(StorageKind kind, const Cancellation& cancellation) const {
  const auto* rule = std::ranges::find(rules, kind, &Rule::kind);
  return rule == std::end(rules) ? packageCaches(kind, cancellation) : (this->*rule->measure)(cancellation);
}

std::int64_t StorageScan::size(const std::string& path) const { return files_.sizes({path}, {}).front(); }

std::optional<StorageItem> StorageScan::item(StorageKind kind, const std::string& path) const {
  const auto located = files_.located(path);
  const auto info = located ? files_.info(*located) : std::nullopt;
  if (!info || (info->kind != FileKind::folder && info->kind != FileKind::regular)) return std::nullopt;
  return StorageItem{.id = *located,
                     .kind = kind,
                     .title = lastPart(*located),
                     .detail = tildePath(*located, locations_.home),
                     .urls = {*located},
                     .identities = {info->identity}};
}

void StorageScan::measure(std::vector<StorageItem>& items, const Cancellation& cancellation) const {
  std::vector<std::string> paths;
  for (const auto& item : items) paths.push_back(item.urls.front());
  const auto sizes = files_.sizes(paths, cancellation);
  for (std::size_t i = 0; i < items.size(); ++i) items[i].bytes = sizes[i];
}

std::vector<StorageItem> StorageScan::folderItems(StorageKind kind, const std::vector<std::string>& paths,
                                                  const Cancellation& cancellation) const {
  std::vector<StorageItem> items;
  for (const auto& path : paths) {
    const auto info = files_.info(path);
    if (!info || info->kind != FileKind::folder) continue;
    if (auto found = item(kind, path)) items.push_back(std::move(*found));
  }
  measure(items, cancellation);
  return items;
}

std::vector<std::string> StorageScan::foldersIn(const std::string& folder) const {
  std::vector<std::string> paths;
  for (const auto& entry : files_.list(folder).entries)
    if (entry.kind == FileKind::folder) paths.push_back(folder + "/" + entry.name);
  return paths;
}

StorageScan::Found StorageScan::packageCaches(StorageKind kind, const Cancellation& cancellation) const {
  return category(kind, folderItems(kind, locations_.cachePaths(kind), cancellation));
}

StorageScan::Found StorageScan::derivedData(const Cancellation& cancellation) const {
  if (locations_.xcode.empty()) return std::nullopt;
  const auto folders = foldersIn(locations_.xcode + "/DerivedData");
  return category(StorageKind::derivedData, folderItems(StorageKind::derivedData, folders, cancellation));
}

StorageScan::Found StorageScan::deviceSupport(const Cancellation& cancellation) const {
  if (locations_.xcode.empty()) return std::nullopt;
  std::vector<std::string> versions;
  for (const auto platform : platforms)
    std::ranges::move(foldersIn(locations_.xcode + "/" + std::string(platform) + " DeviceSupport"),
                      std::back_inserter(versions));
  return category(StorageKind::deviceSupport,
                  folderItems(StorageKind::deviceSupport, versions, cancellation));
}

StorageScan::Found StorageScan::archives(const Cancellation& cancellation) const {
  if (locations_.xcode.empty()) return std::nullopt;
  std::vector<std::string> archives;
  for (const auto& day : foldersIn(locations_.xcode + "/Archives"))
    std::ranges::copy_if(foldersIn(day), std::back_inserter(archives),
                         [](const std::string& path) { return path.ends_with(".xcarchive"); });
  auto items = folderItems(StorageKind::archives, archives, cancellation);
  for (auto& item : items)
    if (const auto info = files_.info(item.id)) item.date = info->modified;
  return category(StorageKind::archives, std::move(items));
}

StorageScan::Found StorageScan::simulatorCaches(const Cancellation& cancellation) const {
  if (locations_.coreSimulator.empty()) return std::nullopt;
  return category(
      StorageKind::simulatorCaches,
      folderItems(StorageKind::simulatorCaches, {locations_.coreSimulator + "/Caches"}, cancellation));
}

StorageScan::Found StorageScan::appCaches(const Cancellation& cancellation) const {
  // A cache folder that holds the home folder is a mistake in someone's settings.
  if (isInside(locations_.home, locations_.cacheHome)) return std::nullopt;
  const auto listing = files_.list(locations_.cacheHome);
  const auto trashes = trash_.folders();
  const auto holdsTrash = [&](const std::string& path) { // of a cache folder that is a volume of its own
    return std::ranges::any_of(trashes,
                               [&](const TrashFolder& trash) { return isInside(trash.entries, path); });
  };
  std::vector<std::string> folders;
  for (const auto& entry : listing.entries) {
    const auto& prefix = locations_.systemCachePrefix;
    if (entry.kind != FileKind::folder || locations_.countedElsewhere.contains(entry.name)) continue;
    if (!prefix.empty() && entry.name.starts_with(prefix)) continue;
    const auto path = locations_.cacheHome + "/" + entry.name;
    const auto info = files_.info(path);
    if (info && info->identity.device == listing.device && !holdsTrash(path)) folders.push_back(path);
  }
  auto items = folderItems(StorageKind::appCaches, folders, cancellation);
  const auto count = items.size();
  std::ranges::stable_sort(items, std::greater{}, &StorageItem::bytes);
  if (count > shownAppCaches) items.resize(shownAppCaches);
  auto found = category(StorageKind::appCaches, std::move(items));
  if (found && count > shownAppCaches)
    found->note = localized("Showing the 10 largest of {count} folders. macOS caches are left alone.",
                            {{"count", std::to_string(count)}});
  return found;
}

StorageScan::Found StorageScan::trash(const Cancellation& cancellation) const {
  StorageItem all{.kind = StorageKind::trash, .title = title(StorageKind::trash)};
  std::vector<std::string> entries;
  bool denied = false;
  for (const auto& folder : trash_.folders()) {
    const auto listing = files_.list(folder.entries);
    denied = denied || listing.state == FolderListing::State::denied;
    if (all.id.empty()) all.id = folder.entries;
    const auto info = files_.info(folder.entries);
    if (!info) continue;
    all.urls.push_back(folder.entries);
    all.identities.push_back(info->identity);
    for (const auto& entry : listing.entries)
      if (entry.name != ".DS_Store") entries.push_back(folder.entries + "/" + entry.name);
  }
  StorageCategory found{.kind = StorageKind::trash, .action = StorageAction::emptyTrash()};
  if (denied)
    found.note =
        localized("Korvell needs Full Disk Access to see inside the Trash. Allow it in System Settings › "
                  "Privacy & Security.");
  if (!entries.empty()) {
    for (const auto bytes : files_.sizes(entries, cancellation)) all.bytes = checkedSum(all.bytes, bytes);
    all.detail = localized("{count} items in the Trash", {{"count", std::to_string(entries.size())}});
    found.bytes = all.bytes;
    found.items = {std::move(all)};
  }
  return found.items.empty() && !found.note ? std::nullopt : std::optional(std::move(found));
}

UserFolders resolvedFolders(UserFolders folders, FileTree& files) {
  const std::string entry = "/entry";
  if (const auto located = files.located(folders.home + entry))
    folders.home = located->size() > entry.size() ? located->substr(0, located->size() - entry.size()) : "/";
  const auto mounts = files.mounts();
  const BlockingPlaces blocking(mounts, folders.home);
  for (auto* folder : {&folders.cacheHome, &folders.dataHome, &folders.configHome})
    *folder = files.resolved(*folder, blocking);
  return folders;
}

} // namespace korvell
