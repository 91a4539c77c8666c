#pragma once
// What a scan finds. Sizes are allocated bytes on the disk.

#include "Base/Date.h"
#include "Base/Record.h"
#include "Core/Storage/StorageKind.h"
#include "Platform/FileTree.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

/// What cleaning a category does. Clean-ups are grouped by equal actions.
struct StorageAction {
  enum class Type {
    command,    ///< run an external program
    trash,      ///< move the items to the Trash, from where they can be put back
    emptyTrash, ///< remove what is in the Trash for good
  };
  Type type = Type::trash;
  std::string path; ///< of the program; only for commands, as the two below
  std::vector<std::string> arguments;
  Seconds timeout{0};

  static StorageAction command(std::string path, std::vector<std::string> arguments, Seconds timeout) {
    return {Type::command, std::move(path), std::move(arguments), timeout};
  }
  static StorageAction toTrash() { return {}; }
  static StorageAction emptyTrash() { return {.type = Type::emptyTrash}; }

  bool operator==(const StorageAction&) const = default;
};

template <>
struct EnumTable<StorageAction::Type> {
  using enum StorageAction::Type;
  static constexpr EnumCase<StorageAction::Type> cases[] = {{command, "command", "Command"},
                                                            {trash, "trash", "Move to Trash"},
                                                            {emptyTrash, "emptyTrash", "Empty Trash"}};
};

/// The program's name and its arguments, as a person would type them.
std::string commandLine(const StorageAction& action);

/// One removable thing: a folder, a file, all unavailable simulators, a project's dependencies.
struct StorageItem {
  std::string id; ///< the path, and so the same in every scan; "simctl-unavailable" and "docker-prune"
  StorageKind kind = StorageKind::derivedData;
  std::string title;
  std::optional<std::string> detail;
  std::int64_t bytes = 0;
  std::vector<std::string> urls; ///< the paths that cleaning removes; empty for commands
  std::optional<Date> date;      ///< what qualified it: a project's last activity, the day a file was added

  /// What each of `urls` was when it was measured, so that nothing else is removed in its place. No part of
  /// what the item says.
  std::vector<FileIdentity> identities = {};
  /// The folders that a command cleans, as far as they are known. Nor are they part of what the item says.
  std::vector<std::string> commandPlaces = {};

  static constexpr auto fields() {
    return std::tuple{Field{"id", &StorageItem::id},
                      Field{"kind", &StorageItem::kind},
                      Field{"title", &StorageItem::title},
                      Field{"detail", &StorageItem::detail},
                      Field{"bytes", &StorageItem::bytes, Unit::bytes},
                      Field{"urls", &StorageItem::urls},
                      Field{"date", &StorageItem::date}};
  }
  bool operator==(const StorageItem& other) const;
};

/// One kind's finding; a result has at most one of each kind.
struct StorageCategory {
  StorageKind kind = StorageKind::derivedData;
  std::int64_t bytes = 0;         ///< the sum of the items
  std::vector<StorageItem> items; ///< largest first
  StorageAction action;
  std::optional<std::string> note; ///< shown under the items, or in their place
  bool isMeasured = true;          ///< false when the tool that measures it gave no answer

  bool operator==(const StorageCategory&) const = default;
};

/// What became of an action.
struct ActionReport {
  struct Done {
    std::size_t count = 0;  ///< items moved, entries removed or programs that succeeded
    std::int64_t bytes = 0; ///< of what was moved or removed
  };
  std::map<StorageKind, Done> done;  ///< what this action itself did, and nobody else meanwhile
  std::vector<std::string> problems; ///< sentences about what could not be done
  bool notStarted = false;           ///< a command that was refused or is not there: what is gone is not its
};

struct StorageScanResult {
  std::vector<StorageCategory> categories; ///< in the order of the kinds; kinds without findings are left out
  Date date;                               ///< when the scan ended

  const StorageCategory* category(StorageKind kind) const;
  /// The sum of the categories.
  std::int64_t reclaimableBytes() const;

  bool operator==(const StorageScanResult&) const = default;
};

/// The sum; ends the program when it doesn't fit: a wrapped figure must neither be shown nor stored.
std::int64_t checkedSum(std::int64_t a, std::int64_t b);

/// What a kind found as a category whose items go to the Trash; nothing without items. Items of equal size
/// keep their order.
std::optional<StorageCategory> category(StorageKind kind, std::vector<StorageItem> items);

/// {"date", "categories": [{"kind", "bytes", "items", "action", "note"}]}
Value toValue(const StorageScanResult& result);
Value toValue(const StorageCategory& category);
/// {"type"} and, for commands, "path", "arguments" and "timeout" in seconds.
Value toValue(const StorageAction& action);

} // namespace korvell
