#include "App/JSONDocuments.h"

#include "Core/Health/AlertPosting.h"
#include "Core/Storage/StorageLog.h"

namespace korvell {

Value alertKindsValue(const UserDefaults& defaults) {
  Value kinds = Value::array();
  for (const auto& kind : allCases<HealthAlert::Kind>())
    kinds.append(Value::object({{"kind", kind.rawValue},
                                {"title", localized(kind.title)},
                                {"enabled", isEnabled(kind.value, defaults)}}));
  return Value::object({{"kinds", std::move(kinds)}});
}

Value storageLogValue(const UserDefaults& defaults) {
  return Value::object(
      {{"freedTotal", StorageLog::total(defaults)}, {"entries", toValue(StorageLog::entries(defaults))}});
}

} // namespace korvell
