#pragma once
// The model's values by the names under which processes tell them to each other.

#include "App/AppModel.h"
#include "Base/Value.h"

#include <span>
#include <string_view>

namespace korvell {

struct ModelPart {
  std::string_view name;
  Value (*value)(const AppModel&); ///< null when there is nothing to tell
};

/// In the order in which they are printed.
std::span<const ModelPart> modelParts();

/// {"hasSample":…} and the parts whose names the list has; all of them without a list.
Value stateValue(const AppModel& model, const Value* wanted);

} // namespace korvell
