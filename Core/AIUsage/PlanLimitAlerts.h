#pragma once
// One alert for each reset window of a Codex allowance of which four fifths are spent.

#include "Base/LocalTime.h"
#include "Core/AIUsage/CodexLimits.h"
#include "Core/Health/HealthAlert.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <map>

namespace korvell {

/// From here on a limit alerts, and is shown as a warning.
inline constexpr double alertPercent = 80;

class PlanLimitAlerts {
public:
  struct Seams {
    UserDefaults& defaults; ///< remembers the windows across starts
    const TimeZone& zone;
    std::function<std::string()> newID;           ///< a UUID
    std::function<bool(const HealthAlert&)> post; ///< false: alerts of this kind are switched off
  };
  explicit PlanLimitAlerts(Seams seams) : seams_(std::move(seams)) {}

  /// What is to be alerted. It is marked before it is posted, so that a window counts as alerted even when
  /// the alert is held back. Stores settings, which waits for the disk: not on the main thread, and always on
  /// the same queue.
  std::vector<AIPlanLimit> markDue(const AICodexLimits& limits, Date now);
  /// Posts them and returns the alerts that were accepted. Main thread.
  std::vector<HealthAlert> post(const std::vector<AIPlanLimit>& due, Date now) const;
  const TimeZone& zone() const { return seams_.zone; }

private:
  bool mark(const std::string& key, const AIPlanLimit& limit);
  HealthAlert alert(const AIPlanLimit& limit, Date now) const;

  Seams seams_;
  /// By the settings' keys: settings that can't be stored must not make the alert come back every five
  /// minutes.
  std::map<std::string, Date> alerted_;
};

/// "Monday 3:05 PM"
std::string resetText(const TimeZone& zone, Date date);

} // namespace korvell
