#pragma once
// Asks whoever sits at the desktop, by a notification with two buttons. Main queue only.

#include "Agents/MCPTool.h"
#include "Base/Queue.h"
#include "Platform/Notifications.h"

#include <functional>
#include <memory>

namespace korvell {

class DesktopConsent {
public:
  /// Both outlive it.
  DesktopConsent(Queue& main, Notifications& notifications);
  ~DesktopConsent();
  DesktopConsent(const DesktopConsent&) = delete;
  DesktopConsent& operator=(const DesktopConsent&) = delete;

  /// `answered` is called once, later, as long as what is handed back is kept: then the notification goes.
  std::shared_ptr<void> ask(const AgentQuestion& question, std::function<void(Consent)> answered);

private:
  struct Open;
  struct Mailbox;

  Queue& main_;
  Notifications& notifications_;
  std::shared_ptr<Mailbox> mailbox_; ///< shared with answers that are on their way
};

} // namespace korvell
