#pragma once
// What the tray item shows and says, as plain values: compared, so that the desktop is sent a picture only
// when it changed.

#include "App/MenuBarLabel.h"
#include "App/Model.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct TrayForm {
  MenuBarStyle style = MenuBarStyle::icon;
  bool isFilled = false;    ///< the heart of a score that asks for attention
  std::optional<int> score; ///< absent before the first report
  // Of the styles that show them:
  int cpu = 0;              ///< whole percent
  int memory = 0;           ///< whole percent
  std::vector<double> bars; ///< CPU in percent, oldest first

  bool operator==(const TrayForm&) const = default;
};

TrayForm trayForm(const Model& model, MenuBarStyle style);

/// The form for a menu bar, where there is room beside the symbol.
MenuBarLabel menuBarLabel(const TrayForm& form);

/// "Korvell: health 87, Good. CPU 24%, memory 63%."
std::string trayTooltip(const TrayForm& form, const HealthReport& report);

} // namespace korvell
