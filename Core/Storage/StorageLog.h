#pragma once
// What Korvell has freed so far, kept in the user's settings: "storage.freedTotal", the sum, and
// "storage.freedLog", one {"date", "bytes"} for each clean-up that freed something, in time order and never
// trimmed. Stored values of other types count as 0 and as an empty log.

#include "Base/Date.h"
#include "Base/Record.h"
#include "Platform/UserDefaults.h"

#include <cstdint>
#include <string_view>
#include <tuple>
#include <vector>

namespace korvell {

struct FreedEntry {
  Date date;
  std::int64_t bytes = 0;
  bool operator==(const FreedEntry&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &FreedEntry::date}, Field{"bytes", &FreedEntry::bytes, Unit::bytes}};
  }
};

struct StorageLog {
  static constexpr std::string_view totalKey = "storage.freedTotal", logKey = "storage.freedLog";

  static std::int64_t total(const UserDefaults& defaults);
  static std::vector<FreedEntry> entries(const UserDefaults& defaults);
  /// Nothing happens below 1 byte. Safe beside another process that records at the same time. False when the
  /// settings can't be stored.
  static bool record(std::int64_t bytes, Date date, UserDefaults& defaults);
};

} // namespace korvell
