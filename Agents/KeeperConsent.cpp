#include "Agents/KeeperConsent.h"

#include "App/ConsentDesk.h"
#include "App/KeeperClient.h"
#include "App/LineServer.h"

#include <mutex>
#include <utility>

namespace korvell {

namespace {

/// Beyond the person's time, so that it is the keeper who ends it.
constexpr Seconds grace{15};

bool isOK(const Value& answer) {
  const auto* ok = answer.find("ok");
  return ok && ok->asBool() == true;
}

Consent consentOf(const std::optional<Value>& answer) {
  if (!answer) return Consent::unanswered;
  const auto *error = answer->find("error"), *said = answer->find("consent");
  if (error && *error == Value(unknownRequest)) return Consent::impossible;
  const auto* text = isOK(*answer) && said ? said->asString() : nullptr;
  return text ? fromRawValue<Consent>(*text).value_or(Consent::unanswered) : Consent::unanswered;
}

/// The connection, which another thread can cut.
class Line {
public:
  explicit Line(const UserFolders& folders, Seconds silence) : folders_(folders), silence_(silence) {}

  Consent ask(const Value& request) {
    auto connected = KeeperClient::connect(folders_);
    if (!connected || dumpJSON(request).size() >= LineServer::Limits().line) return Consent::impossible;
    const auto client = std::make_shared<KeeperClient>(std::move(*connected));
    if (!use(client)) return Consent::unanswered;
    const Value greeting = Value::object({{"ask", "state"}, {"parts", Value::array()}});
    if (!client->ask(greeting, silence_)) return Consent::impossible;
    return consentOf(client->ask(request, ConsentDesk::patience + grace));
  }
  void end() {
    const std::lock_guard lock(mutex_);
    hasEnded_ = true;
    if (client_) client_->hangUp();
  }

private:
  bool use(std::shared_ptr<KeeperClient> client) {
    const std::lock_guard lock(mutex_);
    client_ = std::move(client);
    return !hasEnded_;
  }

  const UserFolders folders_;
  const Seconds silence_;
  std::mutex mutex_;
  bool hasEnded_ = false;
  std::shared_ptr<KeeperClient> client_;
};

struct Open {
  std::shared_ptr<Line> line;
  std::function<void(Consent)> answered;
  std::unique_ptr<Queue> queue;

  Open(std::shared_ptr<Line> asked, std::function<void(Consent)> told, std::unique_ptr<Queue> waits)
      : line(std::move(asked)), answered(std::move(told)), queue(std::move(waits)) {}
  Open(const Open&) = delete;
  Open& operator=(const Open&) = delete;
  ~Open() { line->end(); }
};

} // namespace

std::shared_ptr<void> KeeperConsent::ask(const ActionRequest& request,
                                         std::function<void(Consent)> answered) const {
  const auto open = std::make_shared<Open>(std::make_shared<Line>(services_.folders, services_.silence),
                                           std::move(answered), services_.makeQueue("Korvell.consent"));
  open->queue->async([&main = services_.main, line = open->line, watch = std::weak_ptr(open),
                      asked = Value::object({{"ask", "consent"}, {"of", toValue(request)}})] {
    const auto consent = line->ask(asked);
    main.async([watch, consent] {
      const auto still = watch.lock();
      if (!still) return;
      if (const auto tell = std::exchange(still->answered, {})) tell(consent);
    });
  });
  return open;
}

} // namespace korvell
