#pragma once
// Whether the user wants alerts of a kind, and showing one. From any thread.

#include "Core/Health/HealthAlert.h"
#include "Platform/Notifications.h"
#include "Platform/UserDefaults.h"

namespace korvell {

/// The switch "alert.KIND" in the settings; on when it was never set, or to something that is no switch.
bool isEnabled(HealthAlert::Kind kind, const UserDefaults& defaults);

/// Shows the alert as a notification unless its kind is switched off; false then.
bool post(const HealthAlert& alert, const UserDefaults& defaults, Notifications& notifications);

} // namespace korvell
