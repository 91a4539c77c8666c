#include "Audio/SoundEngine.h"

#include <algorithm>
#include <array>
#include <utility>

namespace korvell {

namespace {

constexpr std::array<Seconds, 5> pauses{Seconds(1), Seconds(2), Seconds(5), Seconds(10), Seconds(30)};
constexpr double retryLeeway = 0.2; ///< of the pause
constexpr int mostReplaced = 3;

/// The newest last, and no more than an application keeps.
std::vector<std::string> joined(const std::optional<std::vector<std::string>>& stored,
                                const std::vector<std::string>& met) {
  std::vector<std::string> all;
  for (const auto& memory : stored.value_or(std::vector<std::string>()))
    if (!std::ranges::count(met, memory)) all.push_back(memory);
  all.insert(all.end(), met.begin(), met.end());
  if (all.size() > RememberedApp::mostMemories)
    all.erase(all.begin(), all.end() - RememberedApp::mostMemories);
  return all;
}

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
  store(); // before anything that could hang
  changes_.finish();
  if (isOpen_) system_->disconnect();
}

// What is needed, and the connection.

void SoundEngine::setWatched(bool list, bool levels) {
  isWatched_ = list;
  wantsLevels_ = levels;
  followNeed();
  measureLevels();
  publishSoon();
}

void SoundEngine::retry() {
  if (!isWaiting_) return;
  retrying_->cancel();
  isWaiting_ = false;
  failures_ = 0;
  followNeed();
}

void SoundEngine::followNeed() {
  const bool isNeeded = isWatched_ || (isKeeper() && (!remembered_.empty() || !owed_.empty()));
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
  outputChanged(std::nullopt);
  measuresLevels_ = false;
  levels_->cancel();
  publishSoon();
}

void SoundEngine::connectionChanged(SoundConnection connection) {
  connection_ = connection;
  if (connection == SoundConnection::connected) {
    failures_ = 0;
    owners(); // what it reads takes time that the first stream has not got
    payOwed();
    followNeed(); // it may have been for that alone
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
  if (!output || !output_ || output->name != output_->name) {
    outputVolume_ = {};
    outputMuted_ = {};
  }
  output_ = output;
  if (output) {
    const auto now = queue_.clock().monotonic();
    outputVolume_.told(output->volume, now);
    outputMuted_.told(output->muted, now);
  }
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

/// It is heard until its volume has arrived: nothing that can wait comes before.
void SoundEngine::begin(const SoundStream& stream) {
  auto owner = owners().owner(stream);
  const auto key = owner.owner.key;
  auto& added = streams_[stream.id];
  added.told.id = stream.id;
  added.since = queue_.clock().monotonic();
  added.owner = std::move(owner);
  const auto chosen = [&] {
    const auto found = remembered_.find(key);
    return found == remembered_.end() ? std::nullopt : std::optional(found->second);
  };
  const auto given = chosen();
  give(key, stream.id);
  loadMemory(); // another process may have changed it
  if (chosen() != given) give(key, stream.id);
  apps_[key].owner = added.owner.owner;
  noteMemory(key, stream.memory);
  hear(added, stream);
}

void SoundEngine::give(const std::string& app, StreamID stream) {
  const auto chosen = remembered_.find(app);
  if (isKeeper() && chosen != remembered_.end())
    send(app, {stream}, {chosen->second.volume, chosen->second.muted});
}

void SoundEngine::hear(Stream& stream, const SoundStream& now) {
  if (stream.told.isPlaying || now.isPlaying)
    apps_[stream.owner.owner.key].heard = queue_.clock().monotonic();
  stream.told = now;
  if (!now.isSettled) return; // between two outputs it has none: its volume is what it was
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
  if (!isStarting || stream.replaced >= mostReplaced) return adopt(key);
  ++stream.replaced;
  SoundChange again;
  if (volume) again.volume = chosen->second.volume;
  if (muted) again.muted = chosen->second.muted;
  send(key, {stream.told.id}, again);
}

/// What is remembered is what the row shows, which one stream of several need not change.
void SoundEngine::adopt(const std::string& app) {
  auto entry = remembered_.at(app);
  const auto shown = listed(app, apps_.at(app));
  entry.volume = std::clamp(shown.volume, 0.0, loudestApp);
  entry.muted = shown.muted;
  if (entry != remembered_.at(app)) remember(std::move(entry));
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
  publishSoon();
}

void SoundEngine::reset(const std::string& app) {
  forgetMemories(app);
  remembered_.erase(app);
  unstored_.erase(app);
  isStored_ = memory_.forget(app);
  followNeed();
  publishSoon();
}

void SoundEngine::resetAll() {
  for (const auto& [key, app] : remembered_) forgetMemories(key);
  remembered_.clear();
  unstored_.clear();
  isStored_ = memory_.forgetAll();
  followNeed();
  publishSoon();
}

/// Of what it plays, and of what it will play: a server gives a new stream what the last one had.
void SoundEngine::forgetMemories(const std::string& app) {
  changes_.add(app, {1.0, false});
  if (const auto known = apps_.find(app); known != apps_.end()) {
    known->second.volume = 1;
    known->second.muted = false;
    owed_.insert(known->second.memories.begin(), known->second.memories.end());
  }
  if (const auto entry = remembered_.find(app); entry != remembered_.end() && entry->second.memories)
    owed_.insert(entry->second.memories->begin(), entry->second.memories->end());
  payOwed();
}

void SoundEngine::payOwed() {
  if (owed_.empty() || connection_ != SoundConnection::connected) return;
  if (services_.role != SoundRole::rememberer) system_->forget(owed_);
  owed_.clear();
}

void SoundEngine::noteMemory(const std::string& app, const std::string& memory) {
  if (memory.empty()) return;
  auto& known = apps_[app].memories;
  if (std::ranges::count(known, memory)) return;
  if (known.size() == RememberedApp::mostMemories) known.erase(known.begin());
  known.push_back(memory);
  if (!isKeeper() || !remembered_.contains(app)) return;
  auto entry = entryOf(app);
  if (entry != remembered_.at(app)) remember(std::move(entry));
}

void SoundEngine::sendTo(const std::string& target, const SoundChange& change) {
  if (!isOpen_ || services_.role == SoundRole::rememberer) return;
  if (target == outputTarget) {
    const auto now = queue_.clock().monotonic();
    if (change.volume) outputVolume_.sent(*change.volume, now);
    if (change.muted) outputMuted_.sent(*change.muted, now);
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
    if (change.volume) stream.volume.sent(*change.volume, now);
    if (change.muted) stream.muted.sent(*change.muted, now);
  }
  if (change.volume) system_->setVolume({app, streams}, *change.volume);
  if (change.muted) system_->setMuted({app, streams}, *change.muted);
  publishSoon();
}

// What is remembered.

RememberedApp SoundEngine::entryOf(const std::string& key) const {
  const auto chosen = remembered_.find(key);
  const auto known = apps_.find(key);
  if (known == apps_.end()) return chosen->second;
  const auto& app = known->second;
  const auto shown = listed(key, app);
  auto entry = chosen != remembered_.end() ? chosen->second
                                           : RememberedApp{key, app.owner.name, app.owner.bundlePath,
                                                           std::min(shown.volume, loudestApp), shown.muted};
  if (!app.memories.empty()) entry.memories = joined(entry.memories, app.memories);
  return entry;
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

} // namespace korvell
