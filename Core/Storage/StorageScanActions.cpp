// Carrying out what was confirmed.

#include "Core/Storage/StorageScan.h"

#include "Base/Files.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>

namespace korvell {
namespace {

/// Without "." and ".." and doubled or trailing slashes; links are not looked at.
std::string standardized(const std::string& path) {
  auto normal = std::filesystem::path(path).lexically_normal().string();
  while (normal.size() > 1 && normal.ends_with('/')) normal.pop_back();
  return normal;
}

/// A record without an entry may belong to something that is just being moved into the Trash.
constexpr Seconds youngRecord{60};

/// What became of a command that did not end well.
std::string_view sentence(const std::optional<ShellResult>& result) {
  constexpr int killed = 128 + SIGKILL;
  if (result && result->lingers) return "{command} was killed, but has not ended yet.";
  if (!result || !result->interrupted) return "{command} did not succeed.";
  return result->exitStatus == killed ? "{command} did not end when it was asked to and was killed."
                                      : "{command} was asked to end and has ended.";
}

/// What was at a path when these items were measured; nothing when none of them has it.
std::optional<FileIdentity> measuredIdentity(const std::string& path, const std::vector<StorageItem>& items) {
  for (const auto& item : items)
    for (std::size_t i = 0; i < std::min(item.urls.size(), item.identities.size()); ++i)
      if (item.urls[i] == path) return item.identities[i];
  return std::nullopt;
}

} // namespace

ActionReport StorageScan::perform(const StorageAction& action, const std::vector<StorageItem>& items,
                                  const Cancellation& cancellation) const {
  switch (action.type) {
  case StorageAction::Type::trash:
    return moveToTrash(items);
  case StorageAction::Type::emptyTrash:
    return emptyTrash(items, cancellation);
  case StorageAction::Type::command:
    break;
  }
  return runCommand(action, items, cancellation);
}

ActionReport StorageScan::runCommand(const StorageAction& action, const std::vector<StorageItem>& items,
                                     const Cancellation& cancellation) const {
  ActionReport report;
  const auto mounts = files_.mounts();
  for (const auto& item : items)
    for (const auto& place : item.commandPlaces)
      if (const auto* mount = mountInside(place, mounts))
        report.problems.push_back(tildePath(place, locations_.home) + ": " + refusal(*mount));
  report.notStarted = true;
  if (!report.problems.empty()) return report;
  const auto result = run_(action.path, action.arguments, action.timeout, cancellation);
  report.notStarted = !result;
  if (result && result->succeeded())
    for (const auto& item : items) ++report.done[item.kind].count;
  else
    report.problems.push_back(localized(sentence(result), {{"command", commandLine(action)}}));
  return report;
}

std::vector<std::string> StorageScan::preview(const StorageAction& action,
                                              const std::vector<StorageItem>& items) const {
  std::vector<std::string> lines;
  const auto mounts = files_.mounts();
  const auto add = [&](std::string_view what, const std::string& object, const MountedPlace* mount) {
    lines.push_back(mount ? localized("Leave alone: {object} ({reason})",
                                      {{"object", object}, {"reason", refusal(*mount)}})
                          : localized(what, {{"object", object}}));
  };
  switch (action.type) {
  case StorageAction::Type::trash:
    for (const auto& item : items)
      for (const auto& path : item.urls) add("Move to the Trash: {object}", path, mountInside(path, mounts));
    break;
  case StorageAction::Type::emptyTrash:
    for (const auto& item : items)
      for (const auto& folder : item.urls)
        for (const auto& entry : files_.list(folder).entries) {
          const auto path = folder + "/" + entry.name;
          add("Delete permanently: {object}", path, mountInside(path, mounts));
        }
    break;
  case StorageAction::Type::command: {
    const MountedPlace* mount = nullptr;
    for (const auto& item : items)
      for (const auto& place : item.commandPlaces)
        if (const auto* inside = mountInside(place, mounts)) mount = inside;
    auto line = action.path;
    for (const auto& argument : action.arguments) line += " " + argument;
    add("Run: {object}", line, mount);
  }
  }
  return lines;
}

ActionReport StorageScan::moveToTrash(const std::vector<StorageItem>& items) const {
  std::vector<TrashRequest> requests;
  std::vector<const StorageItem*> owners; // of each request
  for (const auto& item : items)
    for (std::size_t i = 0; i < item.urls.size() && i < item.identities.size(); ++i) {
      requests.push_back({item.urls[i], item.identities[i]});
      owners.push_back(&item);
    }
  const auto outcomes = trash_.move(requests);
  ActionReport report;
  for (std::size_t i = 0; i < outcomes.size(); ++i) {
    if (!outcomes[i]) {
      report.problems.push_back(tildePath(requests[i].path, locations_.home) + ": " + outcomes[i].reason());
      continue;
    }
    auto& done = report.done[owners[i]->kind];
    ++done.count;
    done.bytes = checkedSum(done.bytes, owners[i]->bytes);
  }
  return report;
}

std::vector<std::pair<std::string, Removal>>
StorageScan::removeItems(const std::vector<std::string>& paths, const std::string& folder,
                         const Cancellation& cancellation) const {
  const std::filesystem::path home = standardized(folder);
  std::vector<std::string> names;
  for (const auto& path : paths) {
    const std::filesystem::path standard = standardized(path);
    if (standard.parent_path() == home && standard != home) names.push_back(standard.filename().string());
  }
  const auto removals = files_.remove(home.string(), names, cancellation);
  std::vector<std::pair<std::string, Removal>> results;
  for (std::size_t i = 0; i < removals.size(); ++i)
    results.emplace_back((home / names[i]).string(), removals[i]);
  return results;
}

ActionReport StorageScan::emptyTrash(const std::vector<StorageItem>& items,
                                     const Cancellation& cancellation) const {
  ActionReport report;
  // One that has come since the scan, with a disk, was not named in the question.
  for (const auto& folder : trash_.folders()) {
    const auto measured = measuredIdentity(folder.entries, items);
    if (!measured) continue;
    if (const auto info = files_.info(folder.entries); info && info->identity == *measured)
      empty(folder, cancellation, report);
    else
      report.problems.push_back(tildePath(folder.entries, locations_.home) + ": " +
                                localized("It is no longer there."));
  }
  if (cancellation.isCancelled()) report.problems.push_back(localized("Emptying the Trash was cut short."));
  return report;
}

void StorageScan::empty(const TrashFolder& folder, const Cancellation& cancellation,
                        ActionReport& report) const {
  const bool hasRecords = !folder.records.empty();
  const auto records = hasRecords ? files_.list(folder.records) : FolderListing{};
  const auto mounts = files_.mounts();
  const auto tell = [&](const std::string& path, const std::string& reason) {
    report.problems.push_back(tildePath(path, locations_.home) + ": " + reason);
  };
  std::vector<std::string> entries;
  std::set<std::string> names;
  for (const auto& entry : files_.list(folder.entries).entries) {
    const auto path = folder.entries + "/" + entry.name;
    names.insert(entry.name);
    if (const auto* mount = mountInside(path, mounts))
      tell(path, refusal(*mount));
    else
      entries.push_back(path);
  }
  auto& done = report.done[StorageKind::trash];
  for (const auto& [path, removal] : removeItems(entries, folder.entries, cancellation)) {
    done.bytes = checkedSum(done.bytes, removal.freed);
    if (removal.outcome)
      ++done.count;
    else if (!removal.cutShort)
      tell(path, removal.outcome.reason());
  }

  // The records of what is gone, and old ones of what was never there.
  std::vector<std::string> obsolete;
  for (const auto& record : records.entries) {
    if (!record.name.ends_with(folder.recordSuffix)) continue;
    const auto name = record.name.substr(0, record.name.size() - folder.recordSuffix.size());
    const auto path = folder.records + "/" + record.name;
    if (files_.info(folder.entries + "/" + name)) continue;
    const auto info = files_.info(path);
    if (names.contains(name) || (info && info->modified < clock_.now() - youngRecord))
      obsolete.push_back(path);
  }
  if (hasRecords) removeItems(obsolete, folder.records);
}

} // namespace korvell
