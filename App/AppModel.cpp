#include "App/AppModel.h"

namespace korvell {

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
  timer_.reset();
  self_.reset();
}

void AppModel::stop(const DevServer& server, std::function<void(StopOutcome)> done) {
  const auto finished = [&main = main_, weak = std::weak_ptr(self_), done](StopOutcome outcome) {
    main.async([weak, done, outcome] {
      if (!weak.expired()) done(outcome);
    });
  };
  sampler_->queue().async([sampler = sampler_.get(), pid = server.pid, startedAt = server.startedAt,
                           finished] { sampler->stopServer(pid, startedAt, finished); });
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
  if (ticks_ < 2) return;
  hasSample.setIfChanged(true);
  extendLiveSeries(tick.snapshot);
  if (seams_.state) judge(tick);
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
