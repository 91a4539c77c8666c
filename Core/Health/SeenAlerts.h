#pragma once
// Which alerts the user has seen: all up to the instant "alerts.lastSeen" in the settings, so that every view
// of them tells the same. From any thread.

#include "Core/Health/HealthAlert.h"
#include "Platform/UserDefaults.h"

#include <cstddef>
#include <span>
#include <string_view>

namespace korvell {

inline constexpr std::string_view alertsSeenKey = "alerts.lastSeen";

/// Whether the alert was raised since the user last looked. An instant after `now` was dated by a clock that
/// has been set back since: neither a last look then counts, nor is an alert of then new.
bool isNew(const HealthAlert& alert, const UserDefaults& defaults, Date now);
std::size_t newAlerts(std::span<const HealthAlert> alerts, const UserDefaults& defaults, Date now);

/// The user has seen these, and with them all older ones. One that is raised meanwhile stays new. False when
/// that could not be stored.
[[nodiscard]] bool markSeen(std::span<const HealthAlert> alerts, UserDefaults& defaults, Date now);

} // namespace korvell
