// Kinds whose items qualify by their age: dependencies of old projects and large old downloads.

#include "Base/Files.h"
#include "Base/Text.h"
#include "Core/Storage/StorageScan.h"

#include <algorithm>

namespace korvell {
namespace {

constexpr Seconds oldAge{2'592'000}; // 30 days
constexpr std::int64_t largeDownload = 500'000'000;
constexpr int deepestProject = 5;
constexpr std::string_view dependencies = "node_modules";

/// True in the folders from which installed Electron programs run, and below them.
bool isInstalledProgram(std::string_view path) {
  const auto parts = split(path, '/');
  const auto found = std::ranges::adjacent_find(parts, [](std::string_view folder, std::string_view inside) {
    return folder == "resources" && (inside == "app" || inside == "app.asar.unpacked");
  });
  return found != parts.end();
}

} // namespace

StorageScan::Found StorageScan::nodeModules(const Cancellation& cancellation) const {
  return category(StorageKind::nodeModules, staleNodeModules(std::nullopt, clock_.now(), cancellation));
}

StorageScan::Found StorageScan::downloads(const Cancellation& cancellation) const {
  return category(StorageKind::downloads,
                  largeOldDownloads(locations_.downloads, largeDownload, clock_.now(), cancellation));
}

std::vector<StorageItem> StorageScan::staleNodeModules(const std::optional<std::vector<std::string>>& roots,
                                                       Date now, const Cancellation& cancellation) const {
  std::vector<std::string> projects;
  for (const auto& root : roots.value_or(std::vector{locations_.home}))
    findProjects(root, projects, cancellation);

  const Date oldest = now - oldAge;
  std::vector<StorageItem> items;
  for (const auto& project : projects) {
    if (cancellation.isCancelled()) return {};
    const auto last = activity(project, oldest, cancellation);
    if (!last || *last >= oldest) continue;
    auto found = item(StorageKind::nodeModules, project + "/" + std::string(dependencies));
    if (!found) continue;
    const auto folder = found->id.substr(0, found->id.rfind('/'));
    found->title = folder.substr(folder.rfind('/') + 1);
    found->detail = tildePath(folder, locations_.home);
    found->date = last;
    items.push_back(std::move(*found));
  }
  measure(items, cancellation);
  return items;
}

void StorageScan::findProjects(const std::string& root, std::vector<std::string>& found,
                               const Cancellation& cancellation) const {
  struct Folder {
    std::string path;
    int level;
  };
  const auto isSkipped = [&](const std::string& name, int level) {
    if (name.starts_with('.')) return true;
    if (level == 0 && root == locations_.home && locations_.hiddenFolders.contains(name)) return true;
    return std::ranges::any_of(locations_.packageExtensions,
                               [&](auto ending) { return name.ends_with(ending); });
  };
  // What Node itself installs into, next to its program or without a description of a project.
  const auto isNodeLibrary = [&](const std::string& path) {
    if (!path.ends_with("/lib")) return false;
    const auto prefix = path.substr(0, path.rfind('/'));
    return files_.info(prefix + "/bin/node") || !files_.info(path + "/package.json");
  };
  const auto start = files_.info(root);
  std::vector<Folder> waiting = {{root, 0}};
  while (start && !waiting.empty() && !cancellation.isCancelled()) {
    const Folder folder = std::move(waiting.back());
    waiting.pop_back();
    if (isInstalledProgram(std::string_view(folder.path).substr(root.size()))) continue;
    const auto listing = files_.list(folder.path);
    if (listing.device != start->identity.device) continue;
    const auto prefix = folder.path == "/" ? "/" : folder.path + "/";
    std::vector<Folder> inside;
    for (const auto& entry : listing.entries) {
      if (entry.kind != FileKind::folder) continue;
      if (entry.name == dependencies) {
        if (!isNodeLibrary(folder.path)) found.push_back(folder.path);
      } else if (folder.level + 1 < deepestProject && !isSkipped(entry.name, folder.level)) {
        inside.push_back({prefix + entry.name, folder.level + 1});
      }
    }
    std::ranges::move(inside.rbegin(), inside.rend(),
                      std::back_inserter(waiting)); // in the order of the names
  }
}

std::optional<Date> StorageScan::activity(const std::string& project, Date enough,
                                          const Cancellation& cancellation) const {
  if (const auto newest = files_.newestChange(project, {dependencies, ".git"}, enough, cancellation))
    return newest;
  // Nothing but its dependencies: what remains is when the folder itself was changed.
  const auto info = files_.info(project);
  return info ? std::optional(info->modified) : std::nullopt;
}

Date StorageScan::lastActivity(const std::string& project) const {
  constexpr Date never{1e18};
  return activity(project, never, {}).value_or(Date::distantPast());
}

std::vector<StorageItem> StorageScan::largeOldDownloads(const std::string& folder, std::int64_t minimum,
                                                        Date now, const Cancellation& cancellation) const {
  const auto isFile = [&](const FolderEntry& entry) {
    if (entry.kind == FileKind::regular) return true;
    return entry.kind == FileKind::folder &&
           std::ranges::any_of(locations_.packageExtensions,
                               [&](auto ending) { return entry.name.ends_with(ending); });
  };
  std::vector<StorageItem> items;
  for (const auto& entry : files_.list(folder).entries) {
    const auto path = folder + "/" + entry.name;
    const auto info = isFile(entry) ? files_.info(path) : std::nullopt;
    if (!info || info->added >= now - oldAge) continue;
    if (auto found = item(StorageKind::downloads, path)) {
      found->date = info->added;
      items.push_back(std::move(*found));
    }
  }
  measure(items, cancellation);
  std::erase_if(items, [&](const StorageItem& item) { return item.bytes < minimum; });
  return items;
}

} // namespace korvell
