#pragma once
// Notifications through the user-notification centre. A process without a bundle identifier (the tool, a
// test) has no centre: nothing is shown then.

#include "Platform/Notifications.h"

#include <memory>

namespace korvell {

class MacNotifications final : public Notifications {
public:
  MacNotifications();
  ~MacNotifications() override;

  void requestPermission() override;
  void post(const Notification& notification) override;
  void setOpenHandler(OpenHandler handler) override;

private:
  struct Delegate;
  std::unique_ptr<Delegate> delegate_;
};

} // namespace korvell
