// Kinds that a program of their own measures and cleans.

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Storage/StorageMounts.h"
#include "Core/Storage/StorageScan.h"
#include "Core/Storage/ToolOutput.h"

#include <algorithm>

namespace korvell {

std::optional<std::string> StorageScan::executable(const std::vector<std::string>& candidates) const {
  const auto found =
      std::ranges::find_if(candidates, [&](const auto& path) { return files_.isExecutable(path); });
  return found == candidates.end() ? std::nullopt : std::optional(*found);
}

std::optional<std::string> StorageScan::output(const std::string& program,
                                               const std::vector<std::string>& arguments, Seconds timeout,
                                               const Cancellation& cancellation) const {
  const auto result = run_(program, arguments, timeout, cancellation);
  if (!result || !result->succeeded() || result->output.empty()) return std::nullopt;
  return result->output;
}

StorageScan::Found StorageScan::simulatorDevices(const Cancellation& cancellation) const {
  if (locations_.xcrun.empty() || locations_.coreSimulator.empty()) return std::nullopt;
  const auto listing =
      output(locations_.xcrun, {"simctl", "list", "devices", "--json"}, Seconds{15}, cancellation);
  if (!listing) return std::nullopt;
  std::vector<std::string> folders;
  for (const auto& udid : unavailableSimulators(*listing))
    folders.push_back(locations_.coreSimulator + "/Devices/" + udid);
  if (folders.empty()) return std::nullopt;

  StorageItem all{.id = "simctl-unavailable", .kind = StorageKind::simulatorDevices};
  all.title = folders.size() == 1
                  ? localized("1 simulator")
                  : localized("{count} simulators", {{"count", std::to_string(folders.size())}});
  all.detail = localized("Deleted with xcrun simctl delete unavailable");
  for (const auto bytes : files_.sizes(folders, cancellation)) all.bytes = checkedSum(all.bytes, bytes);
  all.commandPlaces = std::move(folders);
  auto found = category(StorageKind::simulatorDevices, {std::move(all)});
  found->action = StorageAction::command(locations_.xcrun, {"simctl", "delete", "unavailable"}, Seconds{120});
  return found;
}

std::string StorageScan::brewCache(const std::string& brew, const Cancellation& cancellation) const {
  const auto printed = output(brew, {"--cache"}, Seconds{10}, cancellation).value_or("");
  std::string folder(trimmed(std::string_view(printed).substr(0, printed.find('\n'))));
  while (folder.size() > 1 && folder.ends_with('/')) folder.pop_back();
  // Whatever is no folder, and one that holds the home folder, is no cache.
  const auto mounts = files_.mounts();
  const BlockingPlaces blocking(mounts, locations_.home);
  const bool askable = folder.starts_with('/') && !blocking.hold(files_.resolved(folder, blocking));
  const auto info = askable ? files_.info(folder) : std::nullopt;
  const bool sound = info && info->kind == FileKind::folder && !isInside(locations_.home, folder);
  return sound ? folder : locations_.brewCache;
}

StorageScan::Found StorageScan::homebrew(const Cancellation& cancellation) const {
  const auto brew = executable(locations_.brewPrograms);
  if (!brew) return std::nullopt;
  auto items = folderItems(StorageKind::homebrew, {brewCache(*brew, cancellation)}, cancellation);
  for (auto& item : items) {
    item.commandPlaces = std::move(item.urls);
    item.urls.clear();
    item.identities.clear();
  }
  auto found = category(StorageKind::homebrew, std::move(items));
  if (found) found->action = StorageAction::command(*brew, {"cleanup", "--prune=all"}, Seconds{600});
  return found;
}

namespace {

/// What a prune leaves, and where that can be removed; null where it leaves nothing.
const char* keptNote(const DockerUsage& usage) {
  if (usage.images > 0 && usage.volumes > 0)
    return "Kept: {images} in unused images, {volumes} in volumes. Remove those from Docker itself if you "
           "are "
           "sure.";
  if (usage.images > 0)
    return "Kept: {images} in unused images. Remove those from Docker itself if you are sure.";
  if (usage.volumes > 0)
    return "Kept: {volumes} in volumes. Remove those from Docker itself if you are sure.";
  return nullptr;
}

} // namespace

StorageScan::Found StorageScan::docker(const Cancellation& cancellation) const {
  const auto program = executable(locations_.dockerPrograms);
  if (!program) return std::nullopt;
  StorageCategory found{.kind = StorageKind::docker};
  found.action = StorageAction::command(*program, {"system", "prune", "-f"}, Seconds{300});

  const auto printed = output(*program, {"system", "df", "--format", "{{json .}}"}, Seconds{3}, cancellation);
  const auto usage = printed ? parseDockerUsage(*printed) : std::nullopt;
  if (!usage) {
    found.note = localized("Docker is installed but not running, so there is nothing to measure.");
    found.isMeasured = false;
    return found;
  }
  // Which images dangle, and so go too, Docker doesn't say.
  found.bytes = checkedSum(usage->containers, usage->buildCache);
  if (found.bytes > 0 || usage->images > 0)
    found.items = {{.id = "docker-prune",
                    .kind = StorageKind::docker,
                    .title = localized("Docker"),
                    .detail = localized("Up to this much, plus dangling images"),
                    .bytes = found.bytes}};
  if (const auto* note = keptNote(*usage))
    found.note = localized(note, {{"images", Format::bytes(double(usage->images))},
                                  {"volumes", Format::bytes(double(usage->volumes))}});
  return found.items.empty() && !found.note ? std::nullopt : std::optional(std::move(found));
}

} // namespace korvell
