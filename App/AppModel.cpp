#include "App/AppModel.h"

#include <algorithm>
#include <unistd.h>

namespace korvell {

namespace {

/// Most applications that were asked to quit have done so by then.
constexpr Seconds timeToQuit{0.5};

} // namespace

AppModel::AppModel(Queue& main, std::unique_ptr<Sampler> sampler, const Attention& attention, Seams seams,
                   std::unique_ptr<AIUsageStore> aiUsage)
    : snapshot(SystemSnapshot::empty(main.clock().now())), menuBar(seams.defaults), main_(main),
      sampler_(std::move(sampler)), attention_(attention), seams_(seams),
      self_(std::make_shared<AppModel*>(this)), aiUsage_(std::move(aiUsage)) {
  if (seams_.notifications) seams_.notifications->requestPermission();
  // The handler outlives no model: the timer is destroyed first, and what is on its way to the main queue
  // finds the weak pointer empty.
  timer_ = sampler_->queue().timer([sampler = sampler_.get(), &main, weak = std::weak_ptr(self_)] {
    main.async([tick = sampler->tick(), weak] {
      if (const auto self = weak.lock()) (*self)->apply(tick);
    });
  });
  timer_->schedule(Seconds(0), watchedPace.interval, watchedPace.leeway);
  if (!aiUsage_) return;
  aiUsage_->onAlert = [this](const HealthAlert& alert) { addAlerts({alert}); };
  aiUsage_->start();
}

AppModel::~AppModel() {
  aiUsage_.reset();
  removals_.reset(); // waits for one that is under way
  timer_.reset();
  self_.reset();
}

// A cycle that was under way when a list's clock was reset has handed its tick over before: queues keep their
// order. So the next tick to be applied is one of after the reset.
void AppModel::afterCycle(Task done) {
  afterCycle_.push_back(std::move(done));
  timer_->schedule(Seconds(0), paceFor(watched_).interval, paceFor(watched_).leeway);
}

void AppModel::stop(const DevServer& server, std::function<void(StopOutcome)> done) {
  const auto finished = [&main = main_, weak = std::weak_ptr(self_), done](StopOutcome outcome) {
    main.async([weak, done, outcome] {
      if (const auto self = weak.lock()) (*self)->afterCycle([done, outcome] { done(outcome); });
    });
  };
  sampler_->queue().async([sampler = sampler_.get(), pid = server.pid, startedAt = server.startedAt,
                           finished] { sampler->stopServer(pid, startedAt, finished); });
}

void AppModel::quit(const AppUsage& app, bool force, std::function<void(QuitResult)> done) {
  sampler_->queue().async([weak = std::weak_ptr(self_), sampler = sampler_.get(), &main = main_, app, force,
                           done = std::move(done)] {
    main.async([weak, targets = sampler->targets(app, force, getpid()), force, done] {
      if (const auto self = weak.lock()) (*self)->quit(targets, force, done);
    });
  });
}

void AppModel::quit(const std::string& bundlePath, std::function<void(QuitResult)> done) {
  const auto app = std::ranges::find(snapshot->apps, bundlePath, &AppUsage::bundlePath);
  if (app == snapshot->apps.end()) return done({});
  quit(*app, false, std::move(done));
}

void AppModel::quit(std::vector<QuitTarget> targets, bool force, std::function<void(QuitResult)> done) {
  sampler_->queue().async([sampler = sampler_.get(), weak = std::weak_ptr(self_), &main = main_,
                           targets = std::move(targets), force, done = std::move(done)] {
    main.async([weak, result = sampler->quit(targets, force), done] {
      const auto self = weak.lock();
      if (!self) return;
      auto& model = **self;
      model.timer_->schedule(timeToQuit, paceFor(model.watched_).interval, paceFor(model.watched_).leeway);
      done(result);
    });
  });
}

void AppModel::rescanStartupItems(Task done) {
  sampler_->queue().async(
      [sampler = sampler_.get(), weak = std::weak_ptr(self_), &main = main_, done = std::move(done)] {
        sampler->rescanStartup();
        main.async([weak, done] {
          if (const auto self = weak.lock()) (*self)->afterCycle(done);
        });
      });
}

void AppModel::remove(const StartupItem& item, std::function<void(Outcome)> done) {
  if (!seams_.launchItems || !seams_.trash || !seams_.makeQueue)
    return done(Failure{localized("Startup items can't be removed here.")});
  // Stopping a job may take seconds, which the sampling loop must not wait for.
  if (!removals_) removals_ = seams_.makeQueue("Korvell.removals");
  removals_->async([weak = std::weak_ptr(self_), &main = main_, items = seams_.launchItems,
                    trash = seams_.trash, item, done = std::move(done)] {
    main.async([weak, outcome = StartupScanner::remove(item, *items, *trash), done] {
      if (const auto self = weak.lock()) (*self)->rescanStartupItems([done, outcome] { done(outcome); });
    });
  });
}

void AppModel::wake() {
  if (!watched_) setWatched(true, Seconds(0));
}

void AppModel::setWatched(bool watched, Seconds first) {
  watched_ = watched;
  sampler_->queue().async([sampler = sampler_.get(), watched] { sampler->setWatched(watched); });
  timer_->schedule(first, paceFor(watched).interval, paceFor(watched).leeway);
}

void AppModel::apply(const Tick& tick) {
  ++ticks_;
  if (const bool watched = attention_.isWatched(); watched != watched_)
    setWatched(watched, paceFor(watched).first);
  publish(tick);
  if (ticks_ >= 2) {
    hasSample.setIfChanged(true);
    extendLiveSeries(tick.snapshot);
    if (seams_.state) judge(tick);
  }
  for (const auto& done : std::exchange(afterCycle_, {})) done();
}

void AppModel::publish(const Tick& tick) {
  privileged.setIfChanged(tick.privileged);
  snapshot.set(tick.snapshot);
  if (tick.sensors) sensors.set(tick.sensors);
  if (tick.peripherals) peripherals.set(*tick.peripherals);
  if (tick.projects) projects.set(*tick.projects);
  if (tick.startupItems) startupItems.set(*tick.startupItems);
  if (tick.totals) totals.set(*tick.totals);
  if (!tick.alerts.empty()) addAlerts(tick.alerts);
}

void AppModel::addAlerts(std::vector<HealthAlert> newest) {
  newest.insert(newest.end(), alerts->begin(), alerts->end());
  if (newest.size() > mostAlerts) newest.resize(mostAlerts);
  alerts.set(std::move(newest));
}

void AppModel::judge(const Tick& tick) {
  report.set(HealthReport::make(tick.snapshot, *sensors, tick.cpuTenMinuteAverage, *projects, *startupItems,
                                *seams_.state, main_.clock().now()));
  const auto& memory = tick.snapshot.memory;
  const double share = memory.total > 0 ? double(memory.used()) / double(memory.total) * 100 : 0;
  const double cpu = tick.snapshot.cpu.total;
  menuBar.update(report->score, int(cpu), int(share), cpu);
  sampler_->queue().async(
      [sampler = sampler_.get(), score = report->score] { sampler->setLastScore(score); });
}

void AppModel::extendLiveSeries(const SystemSnapshot& snapshot) {
  auto series = *live;
  for (const auto& metric : allCases<Metric>()) {
    auto& points = series[metric.value];
    points.push_back({snapshot.date, metricValue(metric.value, snapshot)});
    // A clock that was set back leaves points in the future; they do not belong to the last minutes either.
    std::erase_if(points, [&](const HistoryPoint& point) {
      return snapshot.date - point.date > liveSpan || point.date > snapshot.date;
    });
  }
  live.set(std::move(series));
}

} // namespace korvell
