#include "Core/Storage/StorageFound.h"

namespace korvell {

StorageFound::ByKind StorageFound::all(const UserDefaults& defaults) {
  ByKind all;
  const auto stored = defaults.value(key);
  if (!stored || !stored->asObject()) return all;
  for (const auto& [name, value] : *stored->asObject()) {
    const auto kind = fromRawValue<StorageKind>(name);
    if (StorageFound found; kind && value.asObject() && fromValue(value, found)) all[*kind] = found;
  }
  return all;
}

void StorageFound::remember(const StorageScanResult& result, const std::vector<StorageKind>& kinds,
                            UserDefaults& defaults) {
  defaults.update(key, [&](const std::optional<Value>& stored) -> std::optional<Value> {
    Value all = stored && stored->asObject() ? *stored : Value::object();
    for (const auto kind : kinds) {
      const auto* category = result.category(kind);
      if (category && !category->isMeasured) continue;
      all.set(rawValue(kind), toValue(StorageFound{category ? category->bytes : 0, result.date}));
    }
    return all;
  });
}

} // namespace korvell
