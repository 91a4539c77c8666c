// Carrying out what was confirmed.

#include "Core/Storage/StorageScan.h"

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

} // namespace

std::vector<std::string> StorageScan::perform(const StorageAction& action,
                                              const std::vector<StorageItem>& items) const {
  switch (action.type) {
  case StorageAction::Type::trash:
    return moveToTrash(items);
  case StorageAction::Type::emptyTrash:
    for (const auto& folder : trash_.folders()) empty(folder);
    return {};
  case StorageAction::Type::command:
    break;
  }
  const auto result = run_(action.path, action.arguments, action.timeout);
  const bool failed = !result || result->timedOut || result->exitStatus != 0;
  if (!failed) return {};
  return {localized("{command} did not succeed.", {{"command", commandLine(action)}})};
}

std::vector<std::string> StorageScan::moveToTrash(const std::vector<StorageItem>& items) const {
  std::vector<TrashRequest> requests;
  for (const auto& item : items)
    for (std::size_t i = 0; i < item.urls.size() && i < item.identities.size(); ++i)
      requests.push_back({item.urls[i], item.identities[i]});
  const auto outcomes = trash_.move(requests);
  std::vector<std::string> problems;
  for (std::size_t i = 0; i < outcomes.size(); ++i)
    if (!outcomes[i])
      problems.push_back(tildePath(requests[i].path, locations_.home) + ": " + outcomes[i].reason());
  return problems;
}

void StorageScan::removeItems(const std::vector<std::string>& paths, const std::string& folder) const {
  const std::filesystem::path home = standardized(folder);
  std::vector<std::string> names;
  for (const auto& path : paths) {
    const std::filesystem::path standard = standardized(path);
    if (standard.parent_path() == home && standard != home) names.push_back(standard.filename().string());
  }
  files_.remove(home.string(), names);
}

void StorageScan::empty(const TrashFolder& folder) const {
  const bool hasRecords = !folder.records.empty();
  const auto records = hasRecords ? files_.list(folder.records) : FolderListing{};
  std::vector<std::string> entries;
  std::set<std::string> names;
  for (const auto& entry : files_.list(folder.entries).entries) {
    entries.push_back(folder.entries + "/" + entry.name);
    names.insert(entry.name);
  }
  removeItems(entries, folder.entries);

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
