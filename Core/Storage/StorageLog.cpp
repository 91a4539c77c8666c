#include "Core/Storage/StorageLog.h"

#include "Core/Storage/StorageModels.h"

#include <algorithm>

namespace korvell {
namespace {

/// The stored array, or an empty one when what is stored is no array of objects.
Value::Array storedLog(const std::optional<Value>& stored) {
  const auto* array = stored ? stored->asArray() : nullptr;
  if (!array) return {};
  const bool sound = std::ranges::all_of(*array, [](const Value& entry) { return entry.asObject(); });
  return sound ? *array : Value::Array{};
}

} // namespace

std::int64_t StorageLog::total(const UserDefaults& defaults) {
  return defaults.integer(totalKey).value_or(0);
}

std::vector<FreedEntry> StorageLog::entries(const UserDefaults& defaults) {
  std::vector<FreedEntry> entries;
  for (const auto& stored : storedLog(defaults.value(logKey)))
    if (FreedEntry entry; fromValue(stored, entry)) entries.push_back(entry);
  return entries;
}

bool StorageLog::record(std::int64_t bytes, Date date, UserDefaults& defaults) {
  if (bytes < 1) return true;
  const bool counted = defaults.update(totalKey, [&](std::optional<Value> stored) -> std::optional<Value> {
    return Value(checkedSum(stored ? stored->asInt().value_or(0) : 0, bytes));
  });
  const bool logged = defaults.update(logKey, [&](std::optional<Value> stored) -> std::optional<Value> {
    auto log = storedLog(stored);
    log.push_back(Value::object({{"date", date}, {"bytes", bytes}}));
    return Value(std::move(log));
  });
  return counted && logged;
}

} // namespace korvell
