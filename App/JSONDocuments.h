#pragma once
// What the commands print as JSON, where the keeper and programs that talk to agents find it too;
// docs/json.md describes it to others. What is one record, or a report of its own, is made by toValue()
// beside the record.

#include "Base/Value.h"
#include "Platform/UserDefaults.h"

namespace korvell {

/// {"kinds":[{"kind","title","enabled"}]}
Value alertKindsValue(const UserDefaults& defaults);

/// {"freedTotal","entries":[{"date","bytes"}]}
Value storageLogValue(const UserDefaults& defaults);

} // namespace korvell
