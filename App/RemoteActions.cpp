#include "App/RemoteActions.h"

#include "App/KeeperActions.h"
#include "App/KeeperClient.h"
#include "App/LineServer.h"
#include "Base/Localization.h"

#include <mutex>

namespace korvell {

namespace {

/// A cycle of a busy machine, and what a question has to look up on the disk.
constexpr Seconds toDescribe{10};

constexpr Seconds patienceFor(const QuitRequest&) { return Seconds{3}; }
/// The first signal, three seconds, the second one, and some time for a busy keeper.
constexpr Seconds patienceFor(const StopServerRequest&) { return Seconds{8}; }
constexpr Seconds patienceFor(const StopIdleServersRequest&) { return Seconds{8}; }
constexpr Seconds patienceFor(const RescanStartupItemsRequest&) { return Seconds{6}; }
/// Stopping and disabling a job, and having the system read its files again.
constexpr Seconds patienceFor(const RemoveStartupItemRequest&) { return Seconds{40}; }
/// As long as slow disks and other programs' commands take.
constexpr Seconds patienceFor(const ScanStorageRequest&) { return Seconds{3600}; }
constexpr Seconds patienceFor(const CleanStorageRequest&) { return Seconds{3600}; }
constexpr Seconds patienceFor(const SwitchAlertsRequest&) { return Seconds{3}; }
constexpr Seconds patienceFor(const ChangeSettingRequest&) { return Seconds{3}; }

} // namespace

/// The connection in use, so that the end can hang up.
class RemoteActions::Line {
public:
  explicit Line(UserFolders folders, Seconds silence) : folders_(std::move(folders)), silence_(silence) {}

  /// On the queue. `begun` tells whether the keeper may have done it though it did not answer.
  Result<Value> ask(const Value& request, Seconds patience, bool& begun) {
    begun = false;
    auto connected = KeeperClient::connect(folders_);
    if (!connected) return Failure{localized("No Korvell is running any more.")};
    const auto client = std::make_shared<KeeperClient>(std::move(*connected));
    if (!use(client)) return Failure{""};
    if (dumpJSON(request).size() >= LineServer::Limits().line)
      return Failure{localized("That is more than can be told to Korvell at once.")};
    const Value greeting = Value::object({{"ask", "state"}, {"parts", Value::array()}});
    if (!client->ask(greeting, silence_))
      return Failure{localized("Korvell is running but does not answer: it is busy or hangs.")};
    begun = true;
    if (auto answer = client->ask(request, patience)) return *answer;
    return Failure{localized("Korvell did not answer. What was asked for may still be done.")};
  }
  void end() {
    const std::lock_guard lock(mutex_);
    ended_ = true;
    if (client_) client_->hangUp();
  }

private:
  bool use(std::shared_ptr<KeeperClient> client) {
    const std::lock_guard lock(mutex_);
    client_ = std::move(client);
    return !ended_;
  }

  const UserFolders folders_;
  const Seconds silence_;
  std::mutex mutex_;
  bool ended_ = false;
  std::shared_ptr<KeeperClient> client_;
};

RemoteActions::RemoteActions(Queue& main, const QueueFactory& makeQueue, UserFolders folders, Seconds silence)
    : main_(main), line_(std::make_shared<Line>(std::move(folders), silence)),
      queue_(makeQueue("Korvell.remote")) {}

RemoteActions::~RemoteActions() {
  line_->end();
  queue_.reset();
}

void RemoteActions::ask(Value request, Seconds patience,
                        std::function<void(const Result<Value>&, bool begun)> done) {
  queue_->async([&main = main_, line = line_, watch = life_.watch(), request = std::move(request), patience,
                 done = std::move(done)] {
    bool begun = false;
    auto answer = line->ask(request, patience, begun);
    main.async([watch, done, answer = std::move(answer), begun] {
      if (watch.get()) done(answer, begun);
    });
  });
}

void RemoteActions::describe(const ActionRequest& request, Described done) {
  ask(toValue(request, "describe").set(languageName, currentLanguage().code), toDescribe,
      [done = std::move(done)](const Result<Value>& answer, bool) {
        done(answer ? readDescribed(*answer) : Failure{answer.reason()});
      });
}

void RemoteActions::perform(const ActionRequest& request, Performed done) {
  const auto patience = std::visit([](const auto& asked) { return patienceFor(asked); }, request);
  ask(toValue(request).set(languageName, currentLanguage().code), patience,
      [done = std::move(done)](const Result<Value>& answer, bool begun) {
        if (answer) return done(readAnswer(*answer));
        auto failed = ActionAnswer::refused(answer.reason());
        failed.isKnown = !begun;
        done(failed);
      });
}

} // namespace korvell
