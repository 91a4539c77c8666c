#include "App/AppModel.h"

#include "Core/Loop/Pace.h"

#include <algorithm>
#include <unistd.h>

namespace korvell {

namespace {

/// Most applications that were asked to quit have done so by then.
constexpr Seconds timeToQuit{0.5};

} // namespace

AppModel::AppModel(Queue& main, Parts parts, const Attention& attention, Seams seams)
    : Model(main, seams.defaults), main_(main), attention_(attention), seams_(std::move(seams)),
      history_(std::move(parts.history)), alertLog_(std::move(parts.alertLog)),
      sampler_(std::move(parts.sampler)),
      actions_(std::make_unique<ProcessActions>(*sampler_, seams_.processes)), queries_(main, *history_),
      widgets_(std::move(parts.widgets)), aiUsage_(std::move(parts.aiUsage)) {
  if (alertLog_) alerts.set(withOlder(alertLog_->load()));
  seams_.notifications.requestPermission();
  // The handler outlives no model: the timer is destroyed first, and what is on its way to the main queue
  // finds the model gone.
  timer_ = sampler_->queue().timer([sampler = sampler_.get(), &main, watch = life_.watch()] {
    main.async([tick = sampler->tick(), watch] {
      if (auto* model = watch.get()) model->apply(tick);
    });
  });
  timer_->schedule(Seconds(0), watchedPace.interval, watchedPace.leeway);
  if (!aiUsage_) return;
  aiUsage_->onAlert = [this](const HealthAlert& alert) {
    alerts.set(withOlder({alert}));
    if (alertLog_) alertLog_->keep(*alerts);
  };
  aiUsage_->start();
}

AppModel::~AppModel() { stop(); }

void AppModel::stop() {
  aiUsage_.reset();
  removals_.reset(); // waits for one that is under way
  timer_.reset();
  life_.cut();
}

std::optional<HistoryProblem> AppModel::finish() {
  // The history first: what else is under way may hang in a folder that does not answer.
  timer_.reset();
  life_.cut();
  sampler_->queue().sync([] {}); // a cycle that is under way records
  return history_->close() ? std::nullopt : history_->problem();
}

// A cycle that was under way when a list's clock was reset has handed its tick over before: queues keep their
// order. So the next tick to be applied is one of after the reset.
void AppModel::refresh(Task done) {
  afterCycle_.push_back(std::move(done));
  timer_->schedule(Seconds(0), paceFor(watched_).interval, paceFor(watched_).leeway);
}

void AppModel::stop(const DevServer& server, std::function<void(StopOutcome)> done) {
  const auto finished = [&main = main_, watch = life_.watch(), done](StopOutcome outcome) {
    main.async([watch, done, outcome] {
      if (auto* model = watch.get()) model->refresh([done, outcome] { done(outcome); });
    });
  };
  sampler_->queue().async([actions = actions_.get(), pid = server.pid, startedAt = server.startedAt,
                           finished] { actions->stopServer(pid, startedAt, finished); });
}

void AppModel::targets(const AppUsage& app, bool force, std::function<void(std::vector<QuitTarget>)> done) {
  sampler_->queue().async(
      [watch = life_.watch(), actions = actions_.get(), &main = main_, app, force, done = std::move(done)] {
        main.async([watch, targets = actions->targets(app, force, getpid()), done] {
          if (watch.get()) done(targets);
        });
      });
}

void AppModel::identify(ProcessID pid,
                        std::function<void(const std::optional<ProcessSampler::Identity>&)> done) {
  sampler_->queue().async(
      [watch = life_.watch(), sampler = sampler_.get(), &main = main_, pid, done = std::move(done)] {
        const auto* found = sampler->processes().identity(pid);
        main.async([watch, process = found ? std::optional(*found) : std::nullopt, done] {
          if (watch.get()) done(process);
        });
      });
}

void AppModel::quit(const AppUsage& app, bool force, std::function<void(QuitResult)> done) {
  targets(app, force, [this, force, done = std::move(done)](std::vector<QuitTarget> targets) {
    quit(std::move(targets), force, done);
  });
}

void AppModel::quit(const std::string& bundlePath, std::function<void(QuitResult)> done) {
  const auto app = std::ranges::find(snapshot->apps, bundlePath, &AppUsage::bundlePath);
  if (app == snapshot->apps.end()) return done({});
  quit(*app, false, std::move(done));
}

void AppModel::quit(std::vector<QuitTarget> targets, bool force, std::function<void(QuitResult)> done) {
  sampler_->queue().async([actions = actions_.get(), watch = life_.watch(), &main = main_,
                           targets = std::move(targets), force, done = std::move(done)] {
    main.async([watch, result = actions->quit(targets, force), done] {
      auto* model = watch.get();
      if (!model) return;
      const auto& pace = paceFor(model->watched_);
      model->timer_->schedule(timeToQuit, pace.interval, pace.leeway);
      done(result);
    });
  });
}

void AppModel::rescanStartupItems(Task done) {
  sampler_->queue().async(
      [sampler = sampler_.get(), watch = life_.watch(), &main = main_, done = std::move(done)] {
        sampler->runSoon(SlowPart::startupItems);
        main.async([watch, done] {
          if (auto* model = watch.get()) model->refresh(done);
        });
      });
}

void AppModel::remove(const StartupItem& item, std::function<void(Outcome)> done) {
  // Stopping a job may take seconds, which the sampling loop must not wait for.
  if (!removals_) removals_ = seams_.makeQueue("Korvell.removals");
  removals_->async([watch = life_.watch(), &main = main_, &items = seams_.launchItems, &trash = seams_.trash,
                    item, done = std::move(done)] {
    main.async([watch, outcome = StartupScanner::remove(item, items, trash), done] {
      if (auto* model = watch.get()) model->rescanStartupItems([done, outcome] { done(outcome); });
    });
  });
}

void AppModel::wake() {
  if (!watched_) setWatched(true, Seconds(0));
}

void AppModel::setOnlookers(std::size_t count) {
  onlookers_ = count;
  if (count > 0) wake();
}

void AppModel::setWatched(bool watched, Seconds first) {
  watched_ = watched;
  sampler_->queue().async([sampler = sampler_.get(), watched] { sampler->setWatched(watched); });
  timer_->schedule(first, paceFor(watched).interval, paceFor(watched).leeway);
}

void AppModel::apply(const Tick& tick) {
  if (const bool watched = onlookers_ > 0 || attention_.isWatched(); watched != watched_)
    setWatched(watched, paceFor(watched).first);
  {
    Publication publication;
    publish(tick, publication);
    if (*cycle >= 1) {
      publication.setIfChanged(hasSample, true);
      extendLiveSeries(publication);
      judge(tick, publication);
    }
    publication.set(cycle, *cycle + 1);
  }
  for (const auto& done : std::exchange(afterCycle_, {})) done();
}

void AppModel::publish(const Tick& tick, Publication& publication) {
  publication.setIfChanged(privileged, tick.privileged);
  publication.set(snapshot, tick.snapshot);
  publication.setIfChanged(known, tick.known);
  if (tick.sensors) publication.set(sensors, tick.sensors);
  if (tick.peripherals) publication.set(peripherals, *tick.peripherals);
  if (tick.projects) publication.set(projects, *tick.projects);
  if (tick.startupItems) publication.set(startupItems, *tick.startupItems);
  if (tick.totals) publication.set(totals, *tick.totals);
  publication.setIfChanged(historyProblem, tick.historyProblem);
  if (tick.alerts.empty()) return;
  publication.set(alerts, withOlder(tick.alerts));
  if (alertLog_) alertLog_->keep(*alerts);
}

std::vector<HealthAlert> AppModel::withOlder(std::vector<HealthAlert> newest) const {
  newest.insert(newest.end(), alerts->begin(), alerts->end());
  if (newest.size() > mostAlerts) newest.resize(mostAlerts);
  return newest;
}

void AppModel::judge(const Tick& tick, Publication& publication) {
  publication.set(report, HealthReport::make(tick.snapshot, *sensors, tick.cpuTenMinuteAverage, *projects,
                                             *startupItems, seams_.state, main_.clock().now()));
  publishMenuBar();
  sampler_->queue().async(
      [sampler = sampler_.get(), score = report->score] { sampler->setLastScore(score); });
  if (widgets_) widgets_->publish(*report, tick.snapshot, *history_);
}

} // namespace korvell
