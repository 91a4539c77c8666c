#pragma once
// Notifications on the user's desktop. Fire and forget: without a notification service, without permission or
// when the service hangs, nothing is shown and nothing else happens; only a question is told of it.
// Everything returns at once and may be called from any thread.

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

/// What came of a question.
enum class NotificationAnswer {
  yes,        ///< its button was pressed
  no,         ///< the other one was, or the notification went away
  impossible, ///< it was never seen: nothing here shows buttons
};

class Notifications {
public:
  using AnswerHandler = std::function<void(NotificationAnswer)>;
  using OpenHandler = std::function<void(const std::string& identifier)>;

  virtual ~Notifications() = default;
  /// Asks the user once, where the system wants that, whether notifications may be shown.
  virtual void requestPermission() {}
  virtual void post(const Notification& notification) = 0;
  /// Shows a notification with two buttons, which say `yes` and `no`; a click beside them says neither.
  /// `answered` is called once at most, on any thread, also within this call, and not any more once the
  /// object has ended.
  virtual void ask(const Notification&, const std::string& yes, const std::string& no,
                   AnswerHandler answered) {
    static_cast<void>(yes), static_cast<void>(no);
    answered(NotificationAnswer::impossible);
  }
  /// Takes a notification from the screen; a question is not answered any more.
  virtual void withdraw(const std::string& identifier) { static_cast<void>(identifier); }
  /// Called on a thread of the implementation's when the user opens a notification. With a handler,
  /// notifications offer "Open"; without one there is nothing to open. Set before the first post().
  virtual void setOpenHandler(OpenHandler) {}
};

} // namespace korvell
