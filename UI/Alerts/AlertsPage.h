#pragma once
// The alerts that were raised, by day, and what Korvell alerts about, as their page shows them.

#include "App/Model.h"
#include "Base/LocalTime.h"
#include "Platform/UserDefaults.h"
#include "UI/Kit/Icon.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace korvell {

struct AlertsPage {
  /// Leads to the page of what it was about; to the moment, where the history still has it.
  struct Lead {
    std::string words; ///< "Show CPU at 13:58"
    SidebarItem section = SidebarItem::cpu;
    std::optional<Date> moment;
    bool operator==(const Lead&) const = default;
  };
  struct Alert {
    std::string id;
    Icon icon = Icon::alerts;
    std::string title, detail, time;
    bool isNew = false;
    std::optional<Lead> lead;
    std::string spoken;
    bool operator==(const Alert&) const = default;
  };
  struct Day {
    std::string title;
    std::vector<Alert> alerts;
    bool operator==(const Day&) const = default;
  };
  struct Switch {
    HealthAlert::Kind kind = HealthAlert::Kind::cpu;
    std::string words;
    bool isOn = true;
    bool operator==(const Switch&) const = default;
  };
  struct Report {
    std::string title, body, time;
    bool operator==(const Report&) const = default;
  };

  std::string summary; ///< "2 new"; empty without new ones
  std::vector<Day> days;
  std::vector<Switch> switches;
  bool sendsReport = true;
  std::optional<Report> report; ///< the last one that was sent
  std::string reportHint;       ///< when the first one comes; empty when there was one

  bool operator==(const AlertsPage&) const = default;
};

struct AlertsContext {
  const TimeZone& zone;
  const UserDefaults& defaults;
  std::set<SidebarItem> sections; ///< those that have a page to lead to
  /// Alerts that were new when the page began to show them: they stay marked as long as it is open.
  std::set<std::string> fresh{};
};

AlertsPage alertsPage(const Model& model, const AlertsContext& context);

/// The ids of the alerts that the user has not seen.
std::set<std::string> newAlertIDs(const Model& model, const UserDefaults& defaults);

} // namespace korvell
