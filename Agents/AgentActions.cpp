#include "Agents/AgentActions.h"

#include "App/Assembly.h"
#include "App/KeeperAnswer.h"
#include "App/KeeperClient.h"
#include "App/RemoteActions.h"
#include "Base/Localization.h"
#include "Platform/Attention.h"

#include <condition_variable>
#include <mutex>

namespace korvell {

/// The tools' queue sleeps in it.
struct AgentActions::Rest {
  std::mutex mutex;
  std::condition_variable changed;
  bool isResting = false, isOver = false;

  void wait() {
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return !isResting || isOver; });
  }
  void set(bool resting) {
    const std::lock_guard lock(mutex);
    isResting = resting;
    changed.notify_all();
  }
  void finish() {
    const std::lock_guard lock(mutex);
    isOver = true;
    changed.notify_all();
  }
};

/// The model of one request, and what acts on it.
class AgentActions::Own {
public:
  explicit Own(const Services& services)
      : assembly_(services.host, services.clock), storage_(assembly_.lateStorageScanner(services.main)),
        model_(assembly_.makeWatchingModel(services.main, unwatched_)),
        actions_(assembly_.makeActions(
            services.main, [this]() -> AppModel& { return *model_; }, storage_)) {}
  Actions& actions() { return *actions_; }

private:
  Assembly assembly_;
  const FixedAttention unwatched_{false};
  const std::function<StorageScanner&()> storage_;
  std::unique_ptr<AppModel> model_;
  std::unique_ptr<Actions> actions_;
};

AgentActions::AgentActions(Services services, std::function<Queue&()> tools)
    : services_(std::move(services)), tools_(std::move(tools)), rest_(std::make_shared<Rest>()) {}

AgentActions::~AgentActions() {
  life_.cut();
  rest_->finish();
}

Actions& AgentActions::keeper() {
  if (!keeper_)
    keeper_ = std::make_unique<RemoteActions>(services_.main, services_.makeQueue, services_.host.folders,
                                              services_.patience);
  return *keeper_;
}

void AgentActions::begin(std::function<void(Doer)> then) {
  tools_().async([&services = services_, rest = rest_, watch = life_.watch(), then = std::move(then)] {
    const auto answer = measuredState(services.host.folders, services.patience, {});
    const auto doer = answer.value ? Doer::keeper : answer.isRunning() ? Doer::silentKeeper : Doer::here;
    if (doer == Doer::here) rest->set(true);
    services.main.async([watch, then, doer] {
      if (watch.get()) then(doer);
    });
    rest->wait();
  });
}

void AgentActions::end() {
  // Later: the model ends with what called.
  services_.main.async([watch = life_.watch()] {
    auto* actions = watch.get();
    if (!actions) return;
    actions->own_.reset();
    actions->rest_->set(false);
  });
}

namespace {

std::string isSilent() { return localized("Korvell is running but does not answer: it is busy or hangs."); }

} // namespace

void AgentActions::describe(const ActionRequest& request, Described done) {
  begin([this, request, done = std::move(done)](Doer doer) {
    if (doer == Doer::silentKeeper) return done(Failure{isSilent()});
    if (doer == Doer::keeper) return keeper().describe(request, done);
    own_ = std::make_unique<Own>(services_);
    own_->actions().describe(request, [this, done](const Result<DescribedAction>& described) {
      end();
      done(described);
    });
  });
}

void AgentActions::perform(const ActionRequest& request, Performed done) {
  begin([this, request, done = std::move(done)](Doer doer) {
    if (doer == Doer::silentKeeper) return done(ActionAnswer::refused(isSilent()));
    if (doer == Doer::keeper) return keeper().perform(request, done);
    own_ = std::make_unique<Own>(services_);
    const auto finish = [this, done](const ActionAnswer& answer) {
      end();
      done(answer);
    };
    // A model that has just been made lists nothing before it has looked.
    own_->actions().describe(request, [this, finish](const Result<DescribedAction>& described) {
      if (!described) return finish(ActionAnswer::refused(described.reason()));
      own_->actions().perform(described->request, finish);
    });
  });
}

} // namespace korvell
