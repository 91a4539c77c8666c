#include "Agents/DesktopConsent.h"

#include "Agents/MCPServer.h"
#include "Agents/Seal.h"
#include "Agents/Strangers.h"
#include "Base/Localization.h"

#include <mutex>
#include <utility>

namespace korvell {

/// The way to the main queue, for as long as there is one.
struct DesktopConsent::Mailbox {
  std::mutex mutex;
  Queue* main;

  void post(Task task) {
    const std::lock_guard lock(mutex);
    if (main) main->async(std::move(task));
  }
};

/// A question on the screen.
struct DesktopConsent::Open {
  Notifications& notifications;
  std::string identifier;
  std::function<void(Consent)> answered;
  std::unique_ptr<Timer> timer = {};

  Open(Notifications& shown, std::string name, std::function<void(Consent)> told)
      : notifications(shown), identifier(std::move(name)), answered(std::move(told)) {}
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;
  ~Open() {
    if (answered) notifications.withdraw(identifier);
  }
  void settle(Consent consent) {
    if (const auto tell = std::exchange(answered, {})) tell(consent);
  }
};

DesktopConsent::DesktopConsent(Queue& main, Notifications& notifications)
    : main_(main), notifications_(notifications), mailbox_(std::make_shared<Mailbox>()) {
  mailbox_->main = &main;
}

DesktopConsent::~DesktopConsent() {
  const std::lock_guard lock(mailbox_->mutex);
  mailbox_->main = nullptr;
}

namespace {

Consent consentOf(NotificationAnswer answer) {
  return answer == NotificationAnswer::yes  ? Consent::given
         : answer == NotificationAnswer::no ? Consent::declined
                                            : Consent::impossible;
}

} // namespace

std::shared_ptr<void> DesktopConsent::ask(const AgentQuestion& question,
                                          std::function<void(Consent)> answered) {
  const auto open = std::make_shared<Open>(notifications_, "agent-" + randomLabel(), std::move(answered));
  const auto settle = [watch = std::weak_ptr(open)](Consent consent) {
    return [watch, consent] {
      if (const auto still = watch.lock()) still->settle(consent);
    };
  };
  open->timer = main_.timer([this, watch = std::weak_ptr(open), settle] {
    const auto still = watch.lock();
    if (!still) return;
    notifications_.withdraw(still->identifier);
    main_.async(settle(Consent::unanswered)); // later: the timer ends with the question
  });
  open->timer->schedule(MCPServer::patience, Seconds{0}, Seconds{1});
  const Notification notification{
      .identifier = open->identifier,
      .title = localized("An agent asks: {question}", {{"question", cleanedText(question.title)}}),
      .body = questionText(question),
      .urgency = Notification::Urgency::critical};
  notifications_.ask(
      notification, question.button, localized("Don't"),
      [mailbox = mailbox_, settle](NotificationAnswer answer) { mailbox->post(settle(consentOf(answer))); });
  return open;
}

} // namespace korvell
