#include "Audio/SoundMixer.h"

#include "Audio/SoundEngine.h"
#include "Base/Localization.h"
#include "Base/Text.h"

#include <algorithm>
#include <future>
#include <set>
#include <thread>
#include <utility>

namespace korvell {

/// What outlives a mixer whose sound system hangs.
struct SoundMixer::Room {
  std::unique_ptr<SoundEngine> engine; ///< on the queue below
  std::unique_ptr<Queue> queue;        ///< last, so that it ends first
};

SoundMixer::SoundMixer(Queue& main, Services services)
    : state(main), main_(main), farewell_(services.farewell), room_(std::make_shared<Room>()) {
  room_->queue = services.makeQueue(queueLabel);
  const auto publish = [&main, watch = life_.watch()](SoundState now) {
    main.async([watch, now = std::move(now)]() mutable {
      if (auto* mixer = watch.get()) mixer->state.setIfChanged(std::move(now));
    });
  };
  room_->queue->async([room = room_.get(), publish, services = std::move(services)]() mutable {
    room->engine = std::make_unique<SoundEngine>(
        *room->queue, SoundEngine::Services{std::move(services.makeSystem), std::move(services.makeOwners),
                                            services.defaults, services.role, publish});
  });
}

SoundMixer::~SoundMixer() {
  life_.cut();
  auto ended = std::make_shared<std::promise<void>>();
  const auto end = ended->get_future();
  std::thread ending([room = std::move(room_), ended]() mutable {
    room->queue->sync([&room] { room->engine.reset(); });
    room.reset();
    ended->set_value();
  });
  if (end.wait_for(farewell_) == std::future_status::ready)
    ending.join();
  else
    ending.detach();
}

void SoundMixer::tell(std::function<void(SoundEngine&)> what) {
  room_->queue->async([room = room_.get(), what = std::move(what)] { what(*room->engine); });
}

Subscription SoundMixer::watch(Interest interest) {
  auto& count = interest == Interest::levels ? levelWatchers_ : watchers_;
  ++count;
  tell([](SoundEngine& engine) { engine.retry(); });
  countWatchers();
  // Runs where the last copy is let go, which is the main queue.
  return {nullptr, [watch = life_.watch(), interest](void*) {
            auto* mixer = watch.get();
            if (!mixer) return;
            --(interest == Interest::levels ? mixer->levelWatchers_ : mixer->watchers_);
            mixer->countWatchers();
          }};
}

void SoundMixer::countWatchers() {
  tell([list = watchers_ + levelWatchers_ > 0, levels = levelWatchers_ > 0](SoundEngine& engine) {
    engine.setWatched(list, levels);
  });
}

void SoundMixer::setVolume(const std::string& app, double volume) {
  tell([app, volume](SoundEngine& engine) { engine.change(app, {.volume = volume}); });
}

void SoundMixer::setMuted(const std::string& app, bool muted) {
  tell([app, muted](SoundEngine& engine) { engine.change(app, {.muted = muted}); });
}

void SoundMixer::reset(const std::string& app) {
  tell([app](SoundEngine& engine) { engine.reset(app); });
}

void SoundMixer::resetAll() {
  tell([](SoundEngine& engine) { engine.resetAll(); });
}

void SoundMixer::setOutputVolume(double volume) {
  tell([volume](SoundEngine& engine) { engine.changeOutput({.volume = volume}); });
}

void SoundMixer::setOutputMuted(bool muted) {
  tell([muted](SoundEngine& engine) { engine.changeOutput({.muted = muted}); });
}

void SoundMixer::settle(Task done) {
  // What is asked is shown by the task behind it.
  room_->queue->async(
      [room = room_.get(), &main = main_, done = std::move(done), watch = life_.watch()]() mutable {
        room->queue->async([&main, done = std::move(done), watch] {
          main.async([done, watch] {
            if (watch.get()) done();
          });
        });
      });
}

Result<RememberedApp> chooseSoundApp(const SoundState& state, std::string_view what) {
  std::vector<RememberedApp> all = state.remembered;
  for (const auto& app : state.apps)
    if (!std::ranges::count(all, app.key, &RememberedApp::key))
      all.push_back({app.key, app.name, app.bundlePath, app.volume, app.muted});
  const auto exact = std::ranges::find(all, what, &RememberedApp::key);
  if (exact != all.end()) return *exact;
  std::vector<RememberedApp> named;
  for (const auto& app : all)
    if (lowercased(app.name) == lowercased(what)) named.push_back(app);
  if (named.size() == 1) return named.front();
  if (named.empty())
    return Failure{localized("No application called {name} makes a sound or is remembered.",
                             {{"name", std::string(what)}})};
  std::string keys;
  for (const auto& app : named) keys += "\n" + app.key;
  return Failure{
      localized("Several applications are called {name}. Name one of these:", {{"name", std::string(what)}}) +
      keys};
}

} // namespace korvell
