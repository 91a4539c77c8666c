#include "Audio/TapSound.h"

#include <algorithm>
#include <mutex>

namespace korvell {

namespace {

/// How often processes are looked at, as nothing tells that they begin to play.
constexpr Seconds looksEvery{1};

} // namespace

/// Closed by disconnect(), after which the queue may end. What comes in a crowd is one task.
struct TapSound::Door {
  std::mutex lock;
  Queue* queue = nullptr;
  bool isExpected = false; ///< a look at what has changed is on its way

  void let(Task task) {
    const std::lock_guard guard(lock);
    if (queue) queue->async(std::move(task));
  }
  void letOne(Task task) {
    const std::lock_guard guard(lock);
    if (queue && !std::exchange(isExpected, true)) queue->async(std::move(task));
  }
  void pass() {
    const std::lock_guard guard(lock);
    isExpected = false;
  }
  void close() {
    const std::lock_guard guard(lock);
    queue = nullptr;
  }
};

TapSound::TapSound(Queue& queue, std::unique_ptr<TapSystem> system)
    : queue_(queue), system_(std::move(system)), timer_(queue.timer([this] { turn(); })) {}

TapSound::~TapSound() { disconnect(); }

void TapSound::connect(SoundListener& listener) {
  listener_ = &listener;
  door_ = std::make_shared<Door>();
  door_->queue = &queue_;
  const auto changed = [watch = life_.watch(), door = door_] {
    door->letOne([watch, door] {
      door->pass();
      if (auto* sound = watch.get(); sound && sound->door_ == door) sound->refresh();
    });
  };
  const auto asleep = [watch = life_.watch(), door = door_](bool isAsleep,
                                                            const std::shared_ptr<void>& hold) {
    door->let([watch, door, isAsleep, hold] {
      if (auto* sound = watch.get(); sound && sound->door_ == door) sound->fallAsleep(isAsleep);
    });
  };
  system_->observe({.changed = changed, .asleep = asleep});
  listener_->accessChanged(access_);
  refresh();
  if (listener_) listener_->connectionChanged(SoundConnection::connected);
}

void TapSound::disconnect() {
  if (!std::exchange(listener_, nullptr)) return;
  std::exchange(door_, nullptr)->close();
  system_->observe({});
  timer_->cancel();
  apps_.clear();
  processes_.clear();
  told_.clear();
  toldOutput_.reset();
  output_.reset();
  isAsleep_ = false;
}

void TapSound::setVolume(const StreamSet& streams, double volume) {
  set(streams, [volume](TapMachine::Wish& wish) { wish.volume = std::clamp(volume, 0.0, loudestApp); });
}

void TapSound::setMuted(const StreamSet& streams, bool muted) {
  set(streams, [muted](TapMachine::Wish& wish) { wish.isMuted = muted; });
}

void TapSound::setOutputVolume(double volume) {
  if (!listener_) return;
  system_->setOutputVolume(volume);
  tellOutput();
}

void TapSound::setOutputMuted(bool muted) {
  if (!listener_) return;
  system_->setOutputMuted(muted);
  tellOutput();
}

void TapSound::measureLevels(bool measured) {
  if (std::exchange(isMeasured_, measured) != measured && listener_) schedule();
}

std::vector<StreamLevel> TapSound::takeLevels() {
  std::vector<StreamLevel> levels;
  for (auto& [key, app] : apps_)
    if (const auto peak = app.machine.takePeak(); peak && !app.streams.empty())
      levels.push_back({*app.streams.begin(), *peak});
  return levels;
}

/// The application with those of the streams that are there; null when none is.
TapSound::App* TapSound::appOf(const StreamSet& streams) {
  if (!listener_ || std::ranges::none_of(streams.ids, [&](StreamID id) { return processes_.contains(id); }))
    return nullptr;
  auto& app = apps_.try_emplace(streams.app, *this).first->second;
  for (const auto id : streams.ids) {
    if (!processes_.contains(id)) continue;
    for (auto& [key, other] : apps_) other.streams.erase(id);
    app.streams.insert(id);
  }
  return &app;
}

void TapSound::set(const StreamSet& streams, const std::function<void(TapMachine::Wish&)>& change) {
  auto* app = appOf(streams);
  if (!app) return;
  auto wish = app->machine.wish();
  change(wish);
  app->machine.set(wish);
  step();
}

void TapSound::refresh() {
  lookedAt_ = queue_.clock().monotonic();
  processes_.clear();
  for (auto& process : system_->processes()) processes_.emplace(process.id, std::move(process));
  const auto output = system_->output();
  output_ = output ? std::optional(output->first) : std::nullopt;
  tellOutput();
  if (!listener_) return; // it has heard enough
  tellStreams();
  step();
}

void TapSound::tellOutput() {
  const auto output = system_->output();
  auto device = output ? std::optional(output->second) : std::nullopt;
  if (toldOutput_ == device) return;
  toldOutput_ = std::move(device);
  listener_->outputChanged(toldOutput_);
}

/// Those that are new before those that ended: when an application replaces its process, its tap goes on with
/// the new one.
void TapSound::tellStreams() {
  const auto processes = processes_; // a listener may end the connection
  for (const auto& [id, process] : processes) {
    auto stream = streamOf(process);
    const auto known = told_.find(id);
    if (known != told_.end() && known->second == stream) continue;
    told_.insert_or_assign(id, stream);
    listener_->streamChanged(stream);
    if (!listener_) return;
  }
  std::vector<StreamID> ended;
  for (const auto& [id, stream] : told_)
    if (!processes.contains(id)) ended.push_back(id);
  for (const auto id : ended) {
    told_.erase(id);
    for (auto& [key, app] : apps_) app.streams.erase(id);
    listener_->streamEnded(id);
    if (!listener_) return;
  }
}

SoundStream TapSound::streamOf(const TapSystem::Process& process) const {
  SoundStream stream{.id = process.id,
                     .pid = process.pid,
                     .isPIDCertain = true,
                     .applicationID = process.bundleID,
                     .isPlaying = process.isPlaying,
                     .isOpen = process.isPlaying,
                     .isAdjustable = !(process.isPlaying && process.isRecording)};
  if (const auto* app = appWith(process.id)) {
    stream.volume = app->machine.wish().volume;
    stream.muted = app->machine.wish().isMuted;
  }
  return stream;
}

const TapSound::App* TapSound::appWith(StreamID stream) const {
  for (const auto& [key, app] : apps_)
    if (app.streams.contains(stream)) return &app;
  return nullptr;
}

TapMachine::Facts TapSound::factsOf(const App& app) {
  TapMachine::Facts facts;
  std::string elsewhere;
  for (const auto id : app.streams) {
    const auto found = processes_.find(id);
    if (found == processes_.end()) continue;
    const auto& process = found->second;
    if (process.isPlaying && process.isRecording) continue;
    facts.processes.push_back(process.id);
    facts.isPlaying |= process.isPlaying;
    const auto& outputs = process.outputs;
    if (process.isPlaying && output_ && !outputs.empty() &&
        std::ranges::find(outputs, output_->uid) == outputs.end())
      elsewhere = outputs.front();
  }
  if (!isAsleep_) facts.output = elsewhere.empty() ? output_ : system_->outputNamed(elsewhere);
  return facts;
}

void TapSound::step() {
  for (auto& [key, app] : apps_) app.machine.step(factsOf(app));
  std::erase_if(apps_, [](const auto& entry) {
    const auto& machine = entry.second.machine;
    return machine.phase() == TapMachine::Phase::off &&
           (entry.second.streams.empty() || !machine.wish().isTap());
  });
  tellAccess();
  schedule();
}

void TapSound::tellAccess() {
  auto access = access_;
  for (const auto& [key, app] : apps_) {
    if (app.machine.hasHeard()) access = SoundAccess::granted;
    if (app.machine.hearsNothing() && access_ != SoundAccess::granted) access = SoundAccess::denied;
  }
  if (std::exchange(access_, access) != access && listener_) listener_->accessChanged(access);
}

void TapSound::schedule() {
  std::optional<Seconds> next;
  if (isMeasured_ || !apps_.empty()) next = looksEvery;
  for (const auto& [key, app] : apps_)
    if (const auto due = app.machine.dueIn()) next = std::min(*next, *due);
  if (next && listener_ && !isAsleep_)
    timer_->schedule(*next, Seconds{0}, *next / 10);
  else
    timer_->cancel();
}

void TapSound::turn() {
  if (!listener_) return;
  if (queue_.clock().monotonic() - lookedAt_ >= looksEvery * 0.9) return refresh();
  step();
}

void TapSound::fallAsleep(bool isAsleep) {
  isAsleep_ = isAsleep;
  if (isAsleep)
    step();
  else
    refresh();
}

} // namespace korvell
