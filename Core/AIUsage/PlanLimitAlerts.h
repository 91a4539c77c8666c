#pragma once
// One alert for each reset window of a Codex allowance of which four fifths are spent. Main thread.

#include "Base/LocalTime.h"
#include "Core/AIUsage/CodexLimits.h"
#include "Core/Health/HealthAlert.h"
#include "Platform/UserDefaults.h"

#include <functional>
#include <map>

namespace korvell {

class PlanLimitAlerts {
public:
  struct Seams {
    UserDefaults& defaults; ///< remembers the windows across starts
    const TimeZone& zone;
    std::function<std::string()> newID;           ///< a UUID
    std::function<bool(const HealthAlert&)> post; ///< false: alerts of this kind are switched off
  };
  explicit PlanLimitAlerts(Seams seams) : seams_(std::move(seams)) {}

  /// Posts what is due and returns what was accepted.
  std::vector<HealthAlert> check(const AICodexLimits& limits, Date now);
  const TimeZone& zone() const { return seams_.zone; }

private:
  bool markAlerted(const AIPlanLimit& limit);
  HealthAlert alert(const AIPlanLimit& limit, Date now) const;

  Seams seams_;
  /// By window length: settings that can't be stored must not make the alert come back every five minutes.
  std::map<std::int64_t, Date> alerted_;
};

/// "Monday 3:05 PM"
std::string resetText(const TimeZone& zone, Date date);

} // namespace korvell
