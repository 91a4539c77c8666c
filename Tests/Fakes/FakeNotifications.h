#pragma once
// Records what would have been shown. On one thread.

#include "Platform/Notifications.h"

#include <vector>

namespace korvell {

class FakeNotifications final : public Notifications {
public:
  std::vector<Notification> posted;
  int permissionRequests = 0;

  void requestPermission() override { ++permissionRequests; }
  void post(const Notification& notification) override { posted.push_back(notification); }
  std::vector<std::string> titles() const {
    std::vector<std::string> titles;
    for (const auto& notification : posted) titles.push_back(notification.title);
    return titles;
  }
};

} // namespace korvell
