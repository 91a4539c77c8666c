#pragma once
// What the last scan of each kind found, kept in the user's settings under "storage.lastFound":
// {"npm":{"bytes":…,"date":…},…}. For who tells the sum later, or in another process: the scan's result
// itself ends with the process. An entry that can't be read counts as none.

#include "Base/Record.h"
#include "Core/Storage/StorageKind.h"
#include "Core/Storage/StorageModels.h"
#include "Platform/UserDefaults.h"

#include <map>
#include <string_view>
#include <tuple>
#include <vector>

namespace korvell {

struct StorageFound {
  static constexpr std::string_view key = "storage.lastFound";

  std::int64_t bytes = 0; ///< that can be given back
  Date date;              ///< of the scan
  bool operator==(const StorageFound&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"bytes", &StorageFound::bytes, Unit::bytes}, Field{"date", &StorageFound::date}};
  }

  using ByKind = std::map<StorageKind, StorageFound>;
  static ByKind all(const UserDefaults& defaults);
  /// Of the kinds that a scan measured; one without findings counts as zero. What is known of others
  /// stays, also of those that could not be measured this time.
  static void remember(const StorageScanResult& result, const std::vector<StorageKind>& kinds,
                       UserDefaults& defaults);
};

} // namespace korvell
