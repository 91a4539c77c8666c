#include "Core/Health/AlertPosting.h"

namespace korvell {

namespace {

/// What may soon keep the user from working stays on the screen until it was seen.
Notification::Urgency urgencyOf(HealthAlert::Kind kind) {
  const bool pressing = kind == HealthAlert::Kind::memoryPressure || kind == HealthAlert::Kind::diskSpace;
  return pressing ? Notification::Urgency::critical : Notification::Urgency::normal;
}

} // namespace

bool isEnabled(HealthAlert::Kind kind, const UserDefaults& defaults) {
  return defaults.boolean(defaultsKey(kind), true);
}

bool post(const HealthAlert& alert, const UserDefaults& defaults, Notifications& notifications) {
  if (!isEnabled(alert.kind, defaults)) return false;
  notifications.post({alert.id, alert.title, alert.detail, urgencyOf(alert.kind)});
  return true;
}

} // namespace korvell
