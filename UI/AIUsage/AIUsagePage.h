#pragma once
// What AI coding tools used and what it would cost, as the page shows it: cut from the accounting's summary.
// Tokens of models without a price are told apart, and never cost $0.

#include "Base/LocalTime.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "UI/Kit/DayBarsData.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct AIUsagePage {
  struct Tile {
    std::string caption, figure, note;
    std::string reason; ///< why the figure is "–"
    bool operator==(const Tile&) const = default;
  };
  struct Limit {
    std::string name;      ///< "Weekly limit"
    double level = 0;      ///< 0 to 1
    std::string percent;   ///< "84%"
    bool isTight = false;  ///< so much of it is spent that Codex's alert has been raised
    bool hasReset = false; ///< nobody knows the new window yet
    std::string reset;     ///< "resets Monday 09:00"
    std::string spoken;
    bool operator==(const Limit&) const = default;
  };
  struct Plan {
    std::string title; ///< "Codex plan: plus"
    std::string read;  ///< "read 15:38"
    std::vector<Limit> limits;
    std::string sentence; ///< instead of limits
    bool operator==(const Plan&) const = default;
  };
  struct Row {
    std::string name;
    std::string detail; ///< the tool, or that there is no price
    std::string tokens, cost;
    std::string spoken;
    bool operator==(const Row&) const = default;
  };

  std::string sentence; ///< instead of everything else: nothing is counted, or nothing yet
  bool isReading = false;
  std::vector<Tile> tiles; ///< two
  Plan plan;
  std::optional<DayBarsData> days; ///< absent when none of them has usage
  std::string daysNote;            ///< which days, where they are not the period's
  std::string noUsage;             ///< instead of the tables
  std::vector<Row> models, projects;
  std::string leftOut; ///< what the costs leave out; empty when nothing
  std::string explanation, source, updated;
  std::string problem; ///< why the figures are those of before; empty when they are not

  bool operator==(const AIUsagePage&) const = default;
};

struct AIUsageContext {
  const TimeZone& zone;
  Date now;
  AIPeriod period = AIPeriod::week;
  bool isScanning = false;
  AIUsageScanner::Outcome outcome = AIUsageScanner::Outcome::done; ///< of the last scan
};

AIUsagePage aiUsagePage(const AIUsageSummary& summary, const AIUsageContext& context);

/// Today's dollars for the sidebar; nothing without any usage in 30 days, or without a price.
std::optional<double> costToday(const AIUsageSummary& summary, Date now, const TimeZone& zone);

} // namespace korvell
