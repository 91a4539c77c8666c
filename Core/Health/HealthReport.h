#pragma once
// One measurement of the machine as a score from 0 to 100 and the findings that lower it.
//
// Pure but for what it asks the machine's state (temperature, uptime), which answers at once: fit for the
// main thread after every cycle. Whether programs exist was asked when the startup items were scanned. The
// rules are one table, in HealthReport.cpp.

#include "Base/Enum.h"
#include "Base/Record.h"
#include "Core/DevServers/DevServer.h"
#include "Core/Health/Wordings.h"
#include "Core/Machine/Models.h"
#include "Core/Startup/StartupItem.h"
#include "Platform/MachineState.h"
#include "Sensors/SensorsSnapshot.h"

#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace korvell {

/// One finding.
struct Insight {
  enum class Severity { info = 0, warning = 1, critical = 2 };

  /// What the user can do about it.
  struct Action {
    enum class Kind { quitApp, stopIdleServers, freeUpSpace, showStartupItems, openBatterySettings };

    Kind kind = Kind::quitApp;
    std::optional<std::string> bundlePath; ///< of the application to quit; absent for the other kinds
    std::optional<std::string> name;       ///< its display name

    bool operator==(const Action&) const = default;
    static constexpr auto fields() {
      return std::tuple{Field{"kind", &Action::kind}, Field{"bundlePath", &Action::bundlePath},
                        Field{"name", &Action::name}};
    }
  };

  Severity severity = Severity::info;
  std::string title;  ///< localised
  std::string detail; ///< one or two sentences, localised
  int penalty = 0;    ///< points that it takes from 100
  std::optional<Action> action;
  Wordings wordings{}; ///< title and detail in all languages

  /// The same for equal findings.
  std::size_t id() const;
  bool operator==(const Insight&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"severity", &Insight::severity}, Field{"title", &Insight::title},
                      Field{"detail", &Insight::detail}, Field{"penalty", &Insight::penalty},
                      Field{"action", &Insight::action}};
  }
};

template <>
struct EnumTable<Insight::Severity> {
  using enum Insight::Severity;
  static constexpr EnumCase<Insight::Severity> cases[] = {
      {info, "info", "Info"}, {warning, "warning", "Warning"}, {critical, "critical", "Critical"}};
};

template <>
struct EnumTable<Insight::Action::Kind> {
  using enum Insight::Action::Kind;
  /// The titles are what the fix is called where it is offered.
  static constexpr EnumCase<Insight::Action::Kind> cases[] = {
      {quitApp, "quitApp", "Quit {app}"},
      {stopIdleServers, "stopIdleServers", "Stop idle servers"},
      {freeUpSpace, "freeUpSpace", "Free up space"},
      {showStartupItems, "showStartupItems", "Review startup items"},
      {openBatterySettings, "openBatterySettings", "Open battery settings"}};
};

/// The fix in words: "Quit Firefox", "Free up space".
std::string title(const Insight::Action& action);

struct HealthReport {
  int score = 100;
  std::vector<Insight> insights; ///< the most severe first

  /// The score in a word: "Excellent", "Good", "Fair", "Needs attention".
  std::string label() const;

  /// `cpuTenMinuteAverage` is percent of the whole machine; `now` is the moment from which idle servers
  /// count.
  static HealthReport make(const SystemSnapshot& snapshot, const std::optional<SensorsSnapshot>& sensors,
                           double cpuTenMinuteAverage, const std::vector<DevProject>& projects,
                           const std::vector<StartupItem>& startup, const MachineState& state, Date now);

  bool operator==(const HealthReport&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"score", &HealthReport::score}, Field{"insights", &HealthReport::insights}};
  }
};

/// {"score", "label", "insights"}
Value reportValue(const HealthReport& report);
/// The same for readers of any language.
Value toldValue(const HealthReport& report);

/// In the language in effect, as far as it is told in it.
[[nodiscard]] bool fromValue(const Value& value, Insight& insight);

KORVELL_CONVERTED_ONCE(HealthReport);

} // namespace korvell
