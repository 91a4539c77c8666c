#pragma once
// What a button of a view leads to.

#include "App/ActionRequest.h"
#include "Core/Machine/Models.h"

#include <string>
#include <variant>

namespace korvell {

/// The desktop's own settings of power and battery.
struct OpenBatterySettings {
  bool operator==(const OpenBatterySettings&) const = default;
};

struct Step {
  std::string words;
  std::variant<SidebarItem, ActionRequest, OpenBatterySettings> what;

  /// It leads to a page instead of asking.
  bool leadsOn() const { return std::holds_alternative<SidebarItem>(what); }
  bool operator==(const Step&) const = default;
};

} // namespace korvell
