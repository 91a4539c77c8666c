#include "Core/Storage/StorageLog.h"

#include "Core/Storage/StorageModels.h"

namespace korvell {
namespace {

/// What stands below a key afterwards; nothing where that can't be done without a loss.
using Addition = std::function<std::optional<Value>(const std::optional<Value>& stored)>;

bool add(UserDefaults& defaults, std::string_view key, const Addition& addition) {
  bool added = true;
  const bool kept = defaults.update(key, [&](std::optional<Value> stored) {
    auto sum = addition(stored);
    added = sum.has_value();
    return added ? sum : stored;
  });
  return kept && added;
}

} // namespace

std::int64_t StorageLog::total(const UserDefaults& defaults) {
  return defaults.integer(totalKey).value_or(0);
}

std::vector<FreedEntry> StorageLog::entries(const UserDefaults& defaults) {
  std::vector<FreedEntry> entries;
  const auto log = defaults.value(logKey);
  if (!log || !log->asArray()) return entries;
  for (const auto& stored : *log->asArray())
    if (FreedEntry entry; stored.asObject() && fromValue(stored, entry)) entries.push_back(entry);
  return entries;
}

bool StorageLog::record(std::int64_t bytes, Date date, UserDefaults& defaults) {
  if (bytes < 1) return true;
  const bool counted = add(defaults, totalKey, [&](const auto& stored) -> std::optional<Value> {
    const auto before = stored ? stored->asInt() : 0;
    std::int64_t sum = 0;
    if (!before || __builtin_add_overflow(*before, bytes, &sum)) return std::nullopt;
    return Value(sum);
  });
  const bool logged = add(defaults, logKey, [&](const auto& stored) -> std::optional<Value> {
    auto log = stored.value_or(Value::array());
    if (!log.asArray()) return std::nullopt;
    log.append(Value::object({{"date", date}, {"bytes", bytes}}));
    return log;
  });
  return counted && logged;
}

} // namespace korvell
