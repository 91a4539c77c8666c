#include "Audio/SoundVisit.h"

#include "Audio/SoundEngine.h"
#include "Base/Localization.h"

#include <algorithm>

namespace korvell {

std::optional<AudioApp> shownApp(const SoundState& state, std::string_view key) {
  if (const auto app = std::ranges::find(state.apps, key, &AudioApp::key); app != state.apps.end())
    return *app;
  const auto app = std::ranges::find(state.remembered, key, &RememberedApp::key);
  if (app == state.remembered.end()) return std::nullopt;
  return AudioApp{.key = app->key,
                  .name = app->name,
                  .bundlePath = app->bundlePath,
                  .volume = app->volume,
                  .muted = app->muted,
                  .isRemembered = true};
}

AudioApp forgotten(AudioApp app) {
  app.volume = 1;
  app.muted = app.isRemembered = false;
  return app;
}

std::string unadjustable(const std::string& name) {
  return localized("The system lets nobody change the volume of {name}.", {{"name", name}});
}

SoundVisit::SoundVisit(SoundMixer::Services services, Seconds patience)
    : patience_(patience), queue_(services.makeQueue(SoundMixer::queueLabel)) {
  const auto publish = [this](SoundState state) {
    {
      const std::lock_guard lock(mutex_);
      state_ = std::move(state);
    }
    changed_.notify_all();
  };
  queue_->async([this, publish, services = std::move(services)]() mutable {
    engine_ = std::make_unique<SoundEngine>(
        *queue_, SoundEngine::Services{std::move(services.makeSystem), std::move(services.makeOwners),
                                       services.defaults, services.role, publish});
    engine_->setWatched(true, false);
  });
}

SoundVisit::~SoundVisit() {
  queue_->sync([this] { engine_.reset(); });
}

SoundState SoundVisit::state() {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, patience_, [this] { return isSettled(state_.connection); });
  return state_;
}

/// With everything that was asked before.
SoundState SoundVisit::publishedNow() {
  queue_->sync([] {});
  queue_->sync([] {}); // what the first one's predecessors added
  const std::lock_guard lock(mutex_);
  return state_;
}

Result<AudioApp> SoundVisit::change(const SoundRequest& request) {
  const auto before = state();
  const auto chosen = chooseSoundApp(before, request.app);
  if (!chosen) return Failure{chosen.reason()};
  const auto shown = shownApp(before, chosen->key);
  if (shown && !shown->isAdjustable) return Failure{unadjustable(chosen->name)};
  queue_->sync([&] {
    if (request.reset)
      engine_->reset(chosen->key);
    else
      engine_->change(chosen->key, {request.volume, request.muted});
    engine_->store();
  });
  const auto after = publishedNow();
  if (!after.isStored)
    return Failure{localized("The volume of {name} could not be stored.", {{"name", chosen->name}})};
  const auto now = shownApp(after, chosen->key);
  return now ? *now : forgotten(*shown);
}

} // namespace korvell
