#include "Core/Storage/StorageModels.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <numeric>

namespace korvell {

std::string commandLine(const StorageAction& action) {
  std::string line = action.path.substr(action.path.rfind('/') + 1);
  for (const auto& argument : action.arguments) line += ' ' + argument;
  return line;
}

bool StorageItem::operator==(const StorageItem& other) const {
  return std::apply(
      [&](const auto&... field) { return ((this->*field.member == other.*field.member) && ...); }, fields());
}

const StorageCategory* StorageScanResult::category(StorageKind kind) const {
  const auto found = std::ranges::find(categories, kind, &StorageCategory::kind);
  return found == categories.end() ? nullptr : &*found;
}

std::int64_t checkedSum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  std::fputs("korvell: a sum of sizes exceeds 64 bits\n", stderr);
  std::abort();
}

std::int64_t StorageScanResult::reclaimableBytes() const {
  std::int64_t sum = 0;
  for (const auto& category : categories) sum = checkedSum(sum, category.bytes);
  return sum;
}

std::optional<StorageCategory> category(StorageKind kind, std::vector<StorageItem> items) {
  if (items.empty()) return std::nullopt;
  StorageCategory result{.kind = kind};
  for (const auto& item : items) result.bytes = checkedSum(result.bytes, item.bytes);
  std::ranges::stable_sort(items, std::greater{}, &StorageItem::bytes);
  result.items = std::move(items);
  return result;
}

Value toValue(const StorageAction& action) {
  Value value;
  value.set("type", rawValue(action.type));
  if (action.type != StorageAction::Type::command) return value;
  value.set("path", action.path);
  value.set("arguments", toValue(action.arguments));
  value.set("timeout", action.timeout.count());
  return value;
}

Value toValue(const StorageCategory& category) {
  Value value;
  value.set("kind", rawValue(category.kind));
  value.set("bytes", category.bytes);
  value.set("items", toValue(category.items));
  value.set("action", toValue(category.action));
  value.set("note", category.note);
  return value;
}

Value toValue(const StorageScanResult& result) {
  Value value;
  value.set("date", result.date);
  Value categories = Value::array();
  for (const auto& category : result.categories) categories.append(toValue(category));
  value.set("categories", std::move(categories));
  return value;
}

} // namespace korvell
