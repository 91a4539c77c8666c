#include "Core/AIUsage/PlanLimitAlerts.h"

#include "Base/Text.h"

#include <fmt/format.h>

namespace korvell {

namespace {

constexpr double alertPercent = 80;

} // namespace

std::string resetText(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  return fmt::format("{} {}:{:02} {}", weekdayName(time.weekday), time.hour % 12 == 0 ? 12 : time.hour % 12,
                     time.minute, localized(time.hour < 12 ? "AM" : "PM"));
}

std::vector<HealthAlert> PlanLimitAlerts::check(const AICodexLimits& limits, Date now) {
  std::vector<HealthAlert> accepted;
  for (const auto& limit : limits.limits()) {
    // Written so that a figure that is no number alerts nobody.
    if (!(limit.usedPercent >= alertPercent && limit.resetsAt > now) || !markAlerted(limit)) continue;
    auto alert = this->alert(limit, now);
    if (seams_.post(alert)) accepted.push_back(std::move(alert));
  }
  return accepted;
}

/// Before posting, so that a window counts as alerted even when the alert is held back.
bool PlanLimitAlerts::markAlerted(const AIPlanLimit& limit) {
  const std::string key = "aiPlanLimit.lastReset." + std::to_string(limit.windowMinutes);
  const auto known = alerted_.find(limit.windowMinutes);
  if (known != alerted_.end() && known->second == limit.resetsAt) return false;
  if (seams_.defaults.number(key).value_or(0) == limit.resetsAt.sinceEpoch) return false;
  alerted_[limit.windowMinutes] = limit.resetsAt;
  (void)seams_.defaults.set(key, limit.resetsAt.sinceEpoch);
  return true;
}

HealthAlert PlanLimitAlerts::alert(const AIPlanLimit& limit, Date now) const {
  const auto percent = std::to_string(std::int64_t(std::min(limit.usedPercent, 1e15)));
  return {.id = seams_.newID(),
          .kind = HealthAlert::Kind::aiPlanLimit,
          .appName = "Codex",
          .title = localized("Codex {limit} limit at {percent}%",
                             {{"limit", lowercased(limit.name())}, {"percent", percent}}),
          .detail = localized("Resets {time}.", {{"time", resetText(seams_.zone, limit.resetsAt)}}),
          .date = now};
}

} // namespace korvell
