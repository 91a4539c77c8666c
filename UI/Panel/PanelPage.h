#pragma once
// The panel: what someone wants to know within five seconds, and the buttons that mend it.

#include "UI/Parts/HealthParts.h"
#include "UI/Parts/Tiles.h"
#include "UI/Parts/TopApps.h"
#include "UI/Sound/SoundPage.h"

namespace korvell {

struct PanelPage {
  static constexpr std::size_t mostFindings = 3, mostApps = 5, mostSounds = 3;

  HealthHead head;  ///< all findings: the ring has an arc for each
  std::string more; ///< "2 more"; empty when all are shown
  std::vector<Tile> tiles;
  std::vector<SoundPage::Row> sounds; ///< who makes one, where the user asked for that
  UsageKey sortedBy = UsageKey::memory;
  std::vector<AppRow> apps;

  bool operator==(const PanelPage&) const = default;
};

/// The applications by CPU or by memory. `sound` is null where it is not to be shown.
PanelPage panelPage(const Model& model, UsageKey sortedBy, std::optional<double> weekScore,
                    bool hasBatterySettings, const SoundState* sound = nullptr);

} // namespace korvell
