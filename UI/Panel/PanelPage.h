#pragma once
// The panel: what someone wants to know within five seconds, and the buttons that mend it.

#include "UI/Parts/HealthParts.h"
#include "UI/Parts/Tiles.h"
#include "UI/Parts/TopApps.h"

namespace korvell {

struct PanelPage {
  static constexpr std::size_t mostFindings = 3, mostApps = 5;

  HealthHead head;  ///< all findings: the ring has an arc for each
  std::string more; ///< "2 more"; empty when all are shown
  std::vector<Tile> tiles;
  UsageKey sortedBy = UsageKey::memory;
  std::vector<AppRow> apps;

  bool operator==(const PanelPage&) const = default;
};

/// The applications by CPU or by memory.
PanelPage panelPage(const Model& model, UsageKey sortedBy, std::optional<double> weekScore,
                    bool hasBatterySettings);

} // namespace korvell
