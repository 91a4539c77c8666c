#pragma once
// How each kind of storage is measured and how an action on it is carried out. Holds nothing but what it
// asks: every call looks at the disk anew. Any thread but the main one; calls take as long as the disk and
// the asked programs do. What is missing or can't be read yields no item.

#include "Base/Cancellation.h"
#include "Base/Shell.h"
#include "Core/Storage/StorageLocations.h"
#include "Core/Storage/StorageModels.h"
#include "Platform/FileTree.h"
#include "Platform/Trash.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

class StorageScan {
public:
  /// The locations' folders have no links in them (see resolvedFolders).
  StorageScan(StorageLocations locations, FileTree& files, Trash& trash, CommandRunner run,
              const Clock& clock);

  const StorageLocations& locations() const { return locations_; }

  /// Nothing when nothing of the kind was found. Cancelled, the result is meaningless.
  std::optional<StorageCategory> scan(StorageKind kind, const Cancellation& cancellation = {}) const;
  /// Allocated bytes of a file or a tree.
  std::int64_t size(const std::string& path) const;

  /// The dependencies of projects below the roots, at most five levels down, in which nothing changed for
  /// more than 30 days. Without roots: below the home folder.
  std::vector<StorageItem> staleNodeModules(const std::optional<std::vector<std::string>>& roots, Date now,
                                            const Cancellation& cancellation = {}) const;
  /// The newest change in a project, its dependencies and its history left out.
  Date lastActivity(const std::string& project) const;
  /// Files, and folders that the desktop shows as files, of at least `minimum` bytes that came into the
  /// folder more than 30 days ago.
  std::vector<StorageItem> largeOldDownloads(const std::string& folder, std::int64_t minimum, Date now,
                                             const Cancellation& cancellation = {}) const;
  /// The first that exists and may be run.
  std::optional<std::string> executable(const std::vector<std::string>& candidates) const;

  /// What perform() would do, or leave alone, one line for each thing that it touches.
  std::vector<std::string> preview(const StorageAction& action, const std::vector<StorageItem>& items) const;
  /// Carries out one action for these items. Cancelled, a running command is asked to end, and a sentence
  /// tells what became of it.
  ActionReport perform(const StorageAction& action, const std::vector<StorageItem>& items,
                       const Cancellation& cancellation) const;
  /// Removes for good those of the paths that lie directly in the folder, and tells what became of each; the
  /// others are left alone.
  std::vector<std::pair<std::string, Removal>> removeItems(const std::vector<std::string>& paths,
                                                           const std::string& folder,
                                                           const Cancellation& cancellation = {}) const;

private:
  using Found = std::optional<StorageCategory>;
  struct Rule;
  static const Rule rules[];

  /// The locations as links lead to them now: what leads to where looking may block has its name there.
  StorageLocations resolvedLocations(const BlockingPlaces& blocking) const;
  Found measure(StorageKind kind, const Cancellation& cancellation) const;
  Found packageCaches(StorageKind kind, const Cancellation& cancellation) const;
  Found derivedData(const Cancellation& cancellation) const;
  Found deviceSupport(const Cancellation& cancellation) const;
  Found archives(const Cancellation& cancellation) const;
  Found simulatorDevices(const Cancellation& cancellation) const;
  Found simulatorCaches(const Cancellation& cancellation) const;
  Found nodeModules(const Cancellation& cancellation) const;
  Found homebrew(const Cancellation& cancellation) const;
  Found docker(const Cancellation& cancellation) const;
  Found appCaches(const Cancellation& cancellation) const;
  Found trash(const Cancellation& cancellation) const;
  Found downloads(const Cancellation& cancellation) const;

  /// An item for each path that is a folder, measured; links and what is missing are left out.
  std::vector<StorageItem> folderItems(StorageKind kind, const std::vector<std::string>& paths,
                                       const Cancellation& cancellation) const;
  std::optional<StorageItem> item(StorageKind kind, const std::string& path) const;
  void measure(std::vector<StorageItem>& items, const Cancellation& cancellation) const;
  std::vector<std::string> foldersIn(const std::string& folder) const;
  void findProjects(const std::string& root, std::vector<std::string>& found,
                    const Cancellation& cancellation) const;
  std::optional<Date> activity(const std::string& project, Date enough,
                               const Cancellation& cancellation) const;
  /// What a program printed; nothing when it failed, hung or printed nothing.
  std::optional<std::string> output(const std::string& program, const std::vector<std::string>& arguments,
                                    Seconds timeout, const Cancellation& cancellation) const;
  std::string brewCache(const std::string& brew, const Cancellation& cancellation) const;
  ActionReport runCommand(const StorageAction& action, const std::vector<StorageItem>& items,
                          const Cancellation& cancellation) const;
  ActionReport moveToTrash(const std::vector<StorageItem>& items) const;
  ActionReport emptyTrash(const std::vector<StorageItem>& items, const Cancellation& cancellation) const;
  void empty(const TrashFolder& folder, const Cancellation& cancellation, ActionReport& report) const;

  StorageLocations locations_;
  FileTree& files_;
  Trash& trash_;
  CommandRunner run_;
  const Clock& clock_;
};

/// The user's folders with every link resolved, so that what is found in them has one path only. Of those
/// that can't be looked at without waiting for a server the part that lies there stays as it is.
UserFolders resolvedFolders(UserFolders folders, FileTree& files);

} // namespace korvell
