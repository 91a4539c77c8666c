#pragma once
// What Korvell has freed so far, kept in the user's settings: "storage.freedTotal", the sum, and
// "storage.freedLog", one {"date", "bytes"} for each clean-up that freed something, in time order and never
// trimmed. A value of another type counts as 0 or as an empty log, an entry that can't be read as none; both
// stay as they are.

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
  /// Nothing happens below 1 byte. Safe beside another process that records at the same time. False when one
  /// of the two can't be stored: the settings refuse it, or what stands there is of another type or too large
  /// to add to. The other one is stored all the same.
  static bool record(std::int64_t bytes, Date date, UserDefaults& defaults);
};

} // namespace korvell
