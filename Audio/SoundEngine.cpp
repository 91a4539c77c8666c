#include "Audio/SoundEngine.h"

#include "Base/Text.h"

#include <algorithm>
#include <array>
#include <tuple>
#include <utility>

namespace korvell {

namespace {

constexpr std::array<Seconds, 5> pauses{Seconds(1), Seconds(2), Seconds(5), Seconds(10), Seconds(30)};
constexpr double retryLeeway = 0.2; ///< of the pause
constexpr Seconds forgetLeeway{30};
constexpr int mostReplaced = 3;
const std::string outputTarget; ///< no application has an empty key

} // namespace

SoundEngine::SoundEngine(Queue& queue, Services services)
    : queue_(queue), services_(std::move(services)), memory_(services_.defaults),
      changes_(queue, [this](const auto& target, const auto& change) { sendTo(target, change); }),
      retrying_(queue.timer([this] {
        isWaiting_ = false;
        followNeed();
      })),
      levels_(queue.timer([this] { readLevels(); })), storing_(queue.timer([this] { store(); })),
      forgetting_(queue.timer([this] { publishSoon(); })) {
  loadMemory();
  followNeed();
  publishSoon();
}

SoundEngine::~SoundEngine() {
  changes_.finish();
  if (isOpen_) system_->disconnect();
  store();
}

// What is needed, and the connection.

void SoundEngine::setWatched(bool list, bool levels) {
  isWatched_ = list;
  wantsLevels_ = levels;
  followNeed();
  measureLevels();
  publishSoon();
}

void SoundEngine::followNeed() {
  const bool isNeeded = isWatched_ || (isKeeper() && !remembered_.empty());
  if (isNeeded && !isOpen_ && !isWaiting_) return connect();
  if (!isNeeded && (isOpen_ || isWaiting_ || connection_ != SoundConnection::idle)) disconnect();
}

void SoundEngine::connect() {
  if (!system_) system_ = services_.makeSystem(queue_);
  isOpen_ = true;
  if (failures_ == 0) connection_ = SoundConnection::connecting;
  publishSoon();
  system_->connect(*this);
}

void SoundEngine::disconnect() {
  changes_.finish();
  if (isOpen_) system_->disconnect();
  retrying_->cancel();
  isOpen_ = isWaiting_ = false;
  failures_ = 0;
  connection_ = SoundConnection::idle;
  clear();
}

/// The applications stay for those who look what played a minute ago.
void SoundEngine::clear() {
  while (!streams_.empty()) streamEnded(streams_.begin()->first);
  output_.reset();
  measuresLevels_ = false;
  levels_->cancel();
  publishSoon();
}

void SoundEngine::connectionChanged(SoundConnection connection) {
  connection_ = connection;
  if (connection == SoundConnection::connected) {
    failures_ = 0;
    owners(); // what it reads takes time that the first stream has not got
  }
  if (connection == SoundConnection::noServer || connection == SoundConnection::noLibrary) {
    isOpen_ = false;
    clear();
  }
  if (connection == SoundConnection::noServer) {
    const auto pause = pauses[std::min(failures_++, pauses.size() - 1)];
    isWaiting_ = true;
    retrying_->schedule(pause, Seconds(0), pause * retryLeeway);
  }
  measureLevels();
  publishSoon();
}

void SoundEngine::accessChanged(SoundAccess access) {
  access_ = access;
  publishSoon();
}

void SoundEngine::outputChanged(const std::optional<OutputDevice>& output) {
  output_ = output;
  publishSoon();
}

// Streams.

void SoundEngine::streamChanged(const SoundStream& stream) {
  const auto known = streams_.find(stream.id);
  if (known == streams_.end())
    begin(stream);
  else
    hear(known->second, stream);
  measureLevels();
  publishSoon();
}

StreamOwners& SoundEngine::owners() {
  if (!owners_) owners_ = services_.makeOwners();
  return *owners_;
}

void SoundEngine::begin(const SoundStream& stream) {
  loadMemory(); // another process may have changed it
  auto owner = owners().owner(stream);
  const auto key = owner.owner.key;
  auto& app = apps_[key];
  app.owner = owner.owner;
  auto& added = streams_[stream.id];
  added.owner = std::move(owner);
  added.since = queue_.clock().monotonic();
  if (const auto chosen = remembered_.find(key); isKeeper() && chosen != remembered_.end())
    send(key, {stream.id}, {chosen->second.volume, chosen->second.muted});
  hear(added, stream);
}

void SoundEngine::hear(Stream& stream, const SoundStream& now) {
  if (stream.told.isPlaying || now.isPlaying)
    apps_[stream.owner.owner.key].heard = queue_.clock().monotonic();
  const auto before = std::exchange(stream.told, now);
  if (!now.isSettled) {
    // Between two outputs it has none: its volume is what it was.
    stream.told.volume = before.volume;
    stream.told.muted = before.muted;
    stream.told.isSettled = stream.hasSettled;
    return;
  }
  stream.hasSettled = true;
  const auto at = queue_.clock().monotonic();
  const bool volume = stream.volume.told(now.volume, at) == ValueNews::others;
  const bool muted = stream.muted.told(now.muted, at) == ValueNews::others;
  if (volume || muted) heedOthers(stream, volume, muted);
}

void SoundEngine::heedOthers(Stream& stream, bool volume, bool muted) {
  const auto& key = stream.owner.owner.key;
  const auto chosen = remembered_.find(key);
  if (!isKeeper() || chosen == remembered_.end()) return;
  const bool isStarting = queue_.clock().monotonic() - stream.since < settling;
  if (!isStarting || stream.replaced >= mostReplaced)
    return adopt(chosen->second, stream.told, volume, muted);
  ++stream.replaced;
  SoundChange again;
  if (volume) again.volume = chosen->second.volume;
  if (muted) again.muted = chosen->second.muted;
  send(key, {stream.told.id}, again);
}

void SoundEngine::adopt(RememberedApp entry, const SoundStream& told, bool volume, bool muted) {
  if (volume) entry.volume = std::clamp(told.volume, 0.0, loudestApp);
  if (muted) entry.muted = told.muted;
  remember(std::move(entry));
}

void SoundEngine::streamEnded(StreamID id) {
  const auto ended = streams_.find(id);
  if (ended == streams_.end()) return;
  const auto key = ended->second.owner.owner.key;
  auto& app = apps_[key];
  const auto last = listed(key, app);
  if (ended->second.told.isPlaying) app.heard = queue_.clock().monotonic();
  app.volume = last.volume;
  app.muted = last.muted;
  streams_.erase(ended);
  measureLevels();
  publishSoon();
}

std::vector<const SoundEngine::Stream*> SoundEngine::streamsOf(const std::string& app) const {
  std::vector<const Stream*> found;
  for (const auto& [id, stream] : streams_)
    if (stream.owner.owner.key == app) found.push_back(&stream);
  return found;
}

// Changes.

void SoundEngine::change(const std::string& app, const SoundChange& change) {
  if (!remembered_.contains(app) && !apps_.contains(app)) return;
  auto entry = entryOf(app);
  if (change.volume) entry.volume = std::clamp(*change.volume, 0.0, loudestApp);
  if (change.muted) entry.muted = *change.muted;
  SoundChange sent;
  if (change.volume) sent.volume = entry.volume;
  if (change.muted) sent.muted = entry.muted;
  remember(std::move(entry));
  changes_.add(app, sent);
  followNeed();
}

void SoundEngine::changeOutput(const SoundChange& change) {
  SoundChange sent = change;
  if (sent.volume) sent.volume = std::clamp(*sent.volume, 0.0, 1.0);
  changes_.add(outputTarget, sent);
}

void SoundEngine::reset(const std::string& app) {
  remembered_.erase(app);
  unstored_.erase(app);
  isStored_ = memory_.forget(app);
  changes_.add(app, {1.0, false});
  followNeed();
  publishSoon();
}

void SoundEngine::resetAll() {
  for (const auto& [key, app] : std::exchange(remembered_, {})) changes_.add(key, {1.0, false});
  unstored_.clear();
  isStored_ = memory_.forgetAll();
  followNeed();
  publishSoon();
}

void SoundEngine::sendTo(const std::string& target, const SoundChange& change) {
  if (!isOpen_ || services_.role == SoundRole::rememberer) return;
  if (target == outputTarget) {
    if (change.volume) system_->setOutputVolume(*change.volume);
    if (change.muted) system_->setOutputMuted(*change.muted);
    return;
  }
  std::vector<StreamID> ids;
  for (const auto* stream : streamsOf(target))
    if (stream->told.isAdjustable) ids.push_back(stream->told.id);
  send(target, ids, change);
}

void SoundEngine::send(const std::string& app, const std::vector<StreamID>& streams,
                       const SoundChange& change) {
  if (streams.empty()) return;
  const auto now = queue_.clock().monotonic();
  for (const auto id : streams) {
    auto& stream = streams_[id];
    // Shown as if it were done: what comes of it is told anyway.
    if (change.volume) stream.volume.sent(stream.told.volume = *change.volume, now);
    if (change.muted) stream.muted.sent(stream.told.muted = *change.muted, now);
  }
  if (change.volume) system_->setVolume({app, streams}, *change.volume);
  if (change.muted) system_->setMuted({app, streams}, *change.muted);
  publishSoon();
}

// What is remembered.

RememberedApp SoundEngine::entryOf(const std::string& key) const {
  if (const auto chosen = remembered_.find(key); chosen != remembered_.end()) return chosen->second;
  const auto& app = apps_.at(key);
  const auto shown = listed(key, app);
  return {key, app.owner.name, app.owner.bundlePath, std::min(shown.volume, loudestApp), shown.muted};
}

void SoundEngine::remember(RememberedApp app) {
  unstored_.insert(app.key);
  const auto key = app.key;
  remembered_[key] = std::move(app);
  storing_->schedule(storePause, Seconds(0), Seconds(0));
  publishSoon();
}

void SoundEngine::loadMemory() {
  std::map<std::string, RememberedApp> loaded;
  for (auto& app : memory_.all()) {
    const auto key = app.key;
    loaded[key] = std::move(app);
  }
  for (const auto& key : unstored_) loaded[key] = remembered_[key];
  remembered_ = std::move(loaded);
}

void SoundEngine::store() {
  if (unstored_.empty()) return;
  std::vector<RememberedApp> apps;
  for (const auto& key : unstored_) apps.push_back(remembered_[key]);
  isStored_ = memory_.remember(apps);
  if (isStored_) unstored_.clear();
  publishSoon();
}

// Levels.

void SoundEngine::measureLevels() {
  const bool isWanted =
      wantsLevels_ && connection_ == SoundConnection::connected &&
      std::ranges::any_of(streams_, [](const auto& stream) { return stream.second.told.isPlaying; });
  if (isWanted == measuresLevels_) return;
  measuresLevels_ = isWanted;
  system_->measureLevels(isWanted);
  if (isWanted) return levels_->schedule(levelPause, levelPause, levelPause / 10);
  levels_->cancel();
  for (auto& [key, app] : apps_) app.level.reset();
}

void SoundEngine::readLevels() {
  std::map<std::string, double> levels;
  for (const auto& [id, peak] : system_->takeLevels())
    if (const auto stream = streams_.find(id); stream != streams_.end()) {
      auto& level = levels[stream->second.owner.owner.key];
      level = std::max(level, std::clamp(peak, 0.0, 1.0));
    }
  // Who told nothing this time keeps its level: two beats of ten a second drift past each other.
  for (const auto& [key, level] : levels) apps_[key].level = level;
  publishSoon();
}

// What is shown.

AudioApp SoundEngine::listed(const std::string& key, const App& app) const {
  AudioApp shown{.key = key,
                 .name = app.owner.name,
                 .bundlePath = app.owner.bundlePath,
                 .volume = app.volume,
                 .muted = app.muted};
  const auto streams = streamsOf(key);
  bool isFirst = true;
  for (const auto* stream : streams) {
    const auto& told = stream->told;
    shown.playing |= told.isPlaying;
    if (const auto pid = stream->owner.pid; pid > 0) shown.pids.push_back(pid);
    if (!told.isSettled) continue;
    shown.volume = isFirst ? told.volume : std::max(shown.volume, told.volume);
    shown.muted = (isFirst || shown.muted) && told.muted;
    isFirst = false;
  }
  std::ranges::sort(shown.pids);
  shown.pids.erase(std::unique(shown.pids.begin(), shown.pids.end()), shown.pids.end());
  shown.isAdjustable = streams.empty() || std::ranges::any_of(streams, [](const auto* stream) {
                         return stream->told.isAdjustable;
                       });
  if (shown.playing) shown.level = app.level;
  const auto chosen = remembered_.find(key);
  shown.isRemembered = chosen != remembered_.end();
  if (shown.isRemembered && isKeeper() && shown.isAdjustable) {
    shown.volume = chosen->second.volume;
    shown.muted = chosen->second.muted;
  }
  return shown;
}

bool SoundEngine::hasOpenStream(const std::string& app) const {
  return std::ranges::any_of(
      streams_, [&](const auto& row) { return row.second.owner.owner.key == app && row.second.told.isOpen; });
}

Seconds SoundEngine::heardUntil(const App& app) { return app.heard ? *app.heard + recent : Seconds(0); }

SoundState SoundEngine::state() const {
  const auto now = queue_.clock().monotonic();
  SoundState state{.connection = connection_, .access = access_, .output = output_, .isStored = isStored_};
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
