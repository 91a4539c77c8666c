#pragma once
// Notifications through the freedesktop service of the session bus.
//
// Everything that talks to the bus happens on a thread of its own that the first post() starts and that
// sleeps until there is something to send or a notification is opened. A service that does not answer within
// ten seconds, a bus that is not there or goes away: what was to be shown is dropped, and the next post()
// tries again. What the service can do is asked before each notification, because services are replaced while
// we run.

#include "Platform/Notifications.h"

#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace korvell {

class DesktopNotifications final : public Notifications {
public:
  /// `busAddress` as in DBUS_SESSION_BUS_ADDRESS; empty where there is no session bus.
  explicit DesktopNotifications(std::string busAddress);
  ~DesktopNotifications() override;

  void post(const Notification& notification) override;
  void ask(const Notification& notification, const std::string& yes, const std::string& no,
           AnswerHandler answered) override;
  void withdraw(const std::string& identifier) override;
  void setOpenHandler(OpenHandler handler) override { openHandler_ = std::move(handler); }

private:
  class Worker;
  Worker& worker();
  const std::string busAddress_;
  OpenHandler openHandler_;
  std::mutex mutex_; ///< for the start
  std::unique_ptr<Worker> worker_;
};

} // namespace korvell
