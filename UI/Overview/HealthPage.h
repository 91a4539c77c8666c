#pragma once
// The Health page: the score and what it lost, the six measures, who uses most, today, the newest alerts.

#include "UI/Parts/HealthParts.h"
#include "UI/Parts/Tiles.h"
#include "UI/Parts/TopApps.h"

#include "Base/LocalTime.h"

namespace korvell {

struct HealthPage {
  static constexpr std::size_t mostApps = 7, mostAlerts = 2;

  struct Total {
    std::string title;
    Figure figure;
    std::string reason; ///< why the figure is "–"; empty where it is none
    bool operator==(const Total&) const = default;
  };
  struct Alert {
    Icon icon = Icon::alerts;
    std::string title, time;
    bool operator==(const Alert&) const = default;
  };

  std::string updated; ///< "Updated 15:42:08"; empty before the first report
  HealthHead head;
  std::string reassurance; ///< where there are no findings
  std::vector<Tile> tiles;
  UsageKey sortedBy = UsageKey::cpu;
  std::vector<AppRow> apps;
  std::vector<Total> today;
  std::vector<Alert> alerts; ///< the newest first

  bool operator==(const HealthPage&) const = default;
};

/// What the page needs beside the model.
struct HealthContext {
  const TimeZone& zone;
  std::optional<double> weekScore;
  bool hasBatterySettings = false;
};

HealthPage healthPage(const Model& model, const HealthContext& context);

/// Of the kind of an alert.
Icon alertIcon(HealthAlert::Kind kind);

} // namespace korvell
