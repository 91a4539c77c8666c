#pragma once
// A clean-up that waits for the user's word, and the words in which it is put.

#include "Core/Storage/StorageModels.h"

#include <cstdint>
#include <string>
#include <vector>

namespace korvell {

struct PendingCleanup {
  std::uint64_t id = 0; ///< another one for each confirmation
  std::vector<StorageItem> items;
  std::vector<StorageCategory> categories; ///< those that the items belong to, in the order of the result
  std::string home;                        ///< written as "~"

  /// The items of a result that have these ids; ids that the result doesn't have are left out.
  static PendingCleanup of(const StorageScanResult& result, const std::vector<std::string>& ids,
                           const std::string& home);

  /// True when something is removed for good.
  bool isPermanent() const;
  /// With the size, or without one where that is nothing: hard-linked files, what a program can't tell.
  std::string title() const;
  std::string button() const;
  /// A paragraph for each category, with an empty line in between.
  std::string message() const;

private:
  std::string titleWithoutSize() const;
  std::string emptyTrashParagraph(const StorageCategory& category) const;
  std::string paragraph(const StorageCategory& category) const;
  std::string trashParagraph(StorageKind kind) const;
};

/// The button that begins the clean-up of a category.
std::string actionTitle(const StorageCategory& category);

} // namespace korvell
