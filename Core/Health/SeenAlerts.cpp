#include "Core/Health/SeenAlerts.h"

#include <algorithm>

namespace korvell {

namespace {

/// To which settings keep an instant, rounded either way.
constexpr Seconds precision{0.001};

/// Of what is stored; what lies after `now` is none.
Date lastLook(const std::optional<Value>& stored, Date now) {
  const auto date = stored ? stored->asDate() : std::nullopt;
  return date && *date <= now + precision ? *date : Date::distantPast();
}

} // namespace

bool isNew(const HealthAlert& alert, const UserDefaults& defaults, Date now) {
  return newAlerts({&alert, 1}, defaults, now) == 1;
}

std::size_t newAlerts(std::span<const HealthAlert> alerts, const UserDefaults& defaults, Date now) {
  const auto seen = lastLook(defaults.value(alertsSeenKey), now);
  return std::size_t(std::ranges::count_if(
      alerts, [&](const HealthAlert& alert) { return alert.date > seen + precision && alert.date <= now; }));
}

bool markSeen(std::span<const HealthAlert> alerts, UserDefaults& defaults, Date now) {
  Date newest = Date::distantPast();
  for (const auto& alert : alerts)
    if (alert.date <= now) newest = std::max(newest, alert.date);
  if (newest == Date::distantPast()) return true;
  return defaults.update(alertsSeenKey, [&](const std::optional<Value>& stored) {
    return std::optional<Value>(std::max(newest, lastLook(stored, now)));
  });
}

} // namespace korvell
