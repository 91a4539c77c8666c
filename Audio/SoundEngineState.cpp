// What the engine shows of what it knows.

#include "Audio/SoundEngine.h"
#include "Base/Text.h"

#include <algorithm>
#include <tuple>

namespace korvell {

namespace {

constexpr Seconds forgetLeeway{30};

} // namespace

AudioApp SoundEngine::listed(const std::string& key, const App& app) const {
  AudioApp shown{.key = key,
                 .name = app.owner.name,
                 .bundlePath = app.owner.bundlePath,
                 .volume = app.volume,
                 .muted = app.muted};
  const auto chosen = remembered_.find(key);
  shown.isRemembered = chosen != remembered_.end();
  if (shown.isRemembered && isKeeper()) {
    shown.volume = chosen->second.volume;
    shown.muted = chosen->second.muted;
  }
  const auto streams = streamsOf(key);
  for (const auto* stream : streams) {
    shown.playing |= stream->told.isPlaying;
    if (const auto pid = stream->owner.pid; pid > 0) shown.pids.push_back(pid);
  }
  std::ranges::sort(shown.pids);
  shown.pids.erase(std::unique(shown.pids.begin(), shown.pids.end()), shown.pids.end());
  shown.isAdjustable = streams.empty() || std::ranges::any_of(streams, [](const auto* stream) {
                         return stream->told.isAdjustable;
                       });
  showReal(shown, streams);
  const auto waiting = changes_.waiting(key);
  if (shown.isAdjustable) {
    shown.volume = waiting.volume.value_or(shown.volume);
    shown.muted = waiting.muted.value_or(shown.muted);
  }
  if (shown.playing) shown.level = app.level;
  return shown;
}

/// The loudest of those that play; of all where none does. Those that nobody can change count where there are
/// no others.
void SoundEngine::showReal(AudioApp& shown, const std::vector<const Stream*>& streams) const {
  const auto now = queue_.clock().monotonic();
  bool isFirst = true;
  for (const auto* stream : streams) {
    const auto& told = stream->told;
    const auto volume = stream->volume.value(now);
    const auto muted = stream->muted.value(now);
    if (!volume || !muted || told.isPlaying != shown.playing || told.isAdjustable != shown.isAdjustable)
      continue;
    const auto heard = std::clamp(*volume, 0.0, loudestApp);
    shown.volume = isFirst ? heard : std::max(shown.volume, heard);
    shown.muted = (isFirst || shown.muted) && *muted;
    isFirst = false;
  }
}

bool SoundEngine::hasOpenStream(const std::string& app) const {
  return std::ranges::any_of(
      streams_, [&](const auto& row) { return row.second.owner.owner.key == app && row.second.told.isOpen; });
}

Seconds SoundEngine::heardUntil(const App& app) { return app.heard ? *app.heard + recent : Seconds(0); }

SoundState SoundEngine::state() const {
  const auto now = queue_.clock().monotonic();
  SoundState state{.connection = connection_, .access = access_, .output = output_, .isStored = isStored_};
  if (auto& output = state.output) {
    const auto waiting = changes_.waiting(outputTarget);
    output->volume = waiting.volume.value_or(outputVolume_.value(now).value_or(output->volume));
    output->muted = waiting.muted.value_or(outputMuted_.value(now).value_or(output->muted));
  }
  for (const auto& [key, app] : apps_)
    if (hasOpenStream(key) || heardUntil(app) > now) state.apps.push_back(listed(key, app));
  for (const auto& [key, app] : remembered_) state.remembered.push_back(app);
  const auto rank = [](const AudioApp& app) {
    return std::tuple(!app.playing, lowercased(app.name), app.key);
  };
  std::ranges::sort(state.apps, {}, rank);
  std::ranges::sort(state.remembered, {},
                    [](const RememberedApp& app) { return std::tuple(lowercased(app.name), app.key); });
  return state;
}

void SoundEngine::forgetSilent() {
  const auto now = queue_.clock().monotonic();
  std::optional<Seconds> next;
  for (auto app = apps_.begin(); app != apps_.end();) {
    const auto until = heardUntil(app->second);
    if (until <= now && streamsOf(app->first).empty()) {
      app = apps_.erase(app);
      continue;
    }
    if (until > now && !hasOpenStream(app->first)) next = std::min(next.value_or(until), until);
    ++app;
  }
  if (isWatched_ && next)
    forgetting_->schedule(*next - now, Seconds(0), forgetLeeway);
  else
    forgetting_->cancel();
}

/// Once for all that one turn of the queue has changed.
void SoundEngine::publishSoon() {
  if (std::exchange(isPublishing_, true)) return;
  queue_.async([watch = life_.watch()] {
    auto* engine = watch.get();
    if (!engine) return;
    engine->isPublishing_ = false;
    engine->forgetSilent();
    engine->services_.publish(engine->state());
  });
}

} // namespace korvell
