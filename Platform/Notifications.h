#pragma once
// Notifications on the user's desktop. Fire and forget: without a notification service, without permission or
// when the service hangs, nothing is shown and nothing else happens. Everything returns at once and may be
// called from any thread.

#include "Base/Enum.h"

#include <functional>
#include <string>

namespace korvell {

struct Notification {
  enum class Urgency {
    low,
    normal,
    critical, ///< stays until the user has seen it, where the system can do that
  };

  std::string identifier; ///< one posted later with the same identifier replaces the earlier one
  std::string title;      ///< plain text
  std::string body;       ///< plain text
  Urgency urgency = Urgency::normal;

  bool operator==(const Notification&) const = default;
};

class Notifications {
public:
  using OpenHandler = std::function<void(const std::string& identifier)>;

  virtual ~Notifications() = default;
  /// Asks the user once, where the system wants that, whether notifications may be shown.
  virtual void requestPermission() {}
  virtual void post(const Notification& notification) = 0;
  /// Called on a thread of the implementation's when the user opens a notification. With a handler,
  /// notifications offer "Open"; without one there is nothing to open. Set before the first post().
  virtual void setOpenHandler(OpenHandler) {}
};

} // namespace korvell
