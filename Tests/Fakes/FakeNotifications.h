#pragma once
// Records what would have been shown. On one thread.

#include "Platform/Notifications.h"

#include <vector>

namespace korvell {

class FakeNotifications final : public Notifications {
public:
  std::vector<Notification> posted;
  int permissionRequests = 0;
  AnswerHandler answered; ///< of the last question
  bool canAsk = false;
  std::vector<std::string> withdrawn;

  void requestPermission() override { ++permissionRequests; }
  void post(const Notification& notification) override { posted.push_back(notification); }
  void ask(const Notification& notification, const std::string&, const std::string&,
           AnswerHandler told) override {
    if (!canAsk) return told(NotificationAnswer::impossible);
    posted.push_back(notification);
    answered = std::move(told);
  }
  void withdraw(const std::string& identifier) override { withdrawn.push_back(identifier); }
  std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const auto& notification : posted) titles.push_back(notification.title);
    return titles;
  }
};

} // namespace korvell
