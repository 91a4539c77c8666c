#include "Core/Loop/Sampler.h"

#include "Core/Health/WeeklyReport.h"
#include "Core/Loop/Pace.h"

namespace korvell {

namespace {

constexpr Seconds totalsInterval{60};
constexpr Seconds weeklyCheckInterval{600};
constexpr Seconds startupInterval{
    1800}; // whether watched or not: people look at the list, not at its changes

} // namespace

Sampler::Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine, Subjects subjects)
    : queue_(std::move(queue)), system_(machine, queue_->clock()), subjects_(std::move(subjects)) {
  if (subjects_.table && subjects_.control) stopper_.emplace(*queue_, *subjects_.table, *subjects_.control);
}

// The stopper's timers before their queue, on it; the queue before everything else, which a task that still
// runs there may use.
Sampler::~Sampler() {
  queue_->sync([this] { stopper_.reset(); });
  queue_.reset();
}

void Sampler::stopServer(ProcessID pid, Date startedAt, ServerStopper::Done done) {
  if (!stopper_) return done(StopOutcome::gone);
  stopper_->stop(pid, startedAt, [this, done = std::move(done)](StopOutcome outcome) {
    lastDevScan_ = Date::distantPast();
    done(outcome);
  });
}

std::vector<QuitTarget> Sampler::targets(const AppUsage& app, bool force, ProcessID self) const {
  if (!subjects_.processes) return {};
  return quitTargets(app, startTimes(app, *subjects_.processes), force, self);
}

QuitResult Sampler::quit(const std::vector<QuitTarget>& targets, bool force) {
  if (!subjects_.table || !subjects_.control || !subjects_.applications) return {.gone = int(targets.size())};
  return quitProcesses(targets, force, {*subjects_.table, *subjects_.applications, *subjects_.control});
}

// The order of a cycle: the machine, its processes, then the tasks with clocks of their own (sensors,
// development servers, peripherals, startup items), then, from the second cycle on because the first has no
// rates, what is made of the sample (history, weekly report, alerts, averages, totals).
Tick Sampler::tick() {
  Tick tick;
  tick.snapshot = SystemSnapshot::empty(queue_->clock().now());
  system_.sample(tick.snapshot);
  auto& servers = subjects_.devServers;
  if (subjects_.processes) {
    tick.snapshot.apps = subjects_.processes->sample(servers ? servers->portsByPID() : PortsByPID());
    tick.privileged = subjects_.processes->privilegedUse();
  }
  refreshState(tick.snapshot.date);
  scanDevServers(tick);
  scanStartup(tick);
  if (count_ >= 1) useSample(tick);
  ++count_;
  return tick;
}

void Sampler::scanDevServers(Tick& tick) {
  const Date now = tick.snapshot.date;
  if (!subjects_.devServers || !isDue(lastDevScan_, paceFor(isWatched_).sensors, now)) return;
  const auto& processes = subjects_.processes;
  tick.projects = subjects_.devServers->scan(usageByPID(tick.snapshot.apps),
                                             processes ? processes->parents() : ParentsByPID());
  lastDevScan_ = now;
}

void Sampler::scanStartup(Tick& tick) {
  const Date now = tick.snapshot.date;
  if (!subjects_.launchItems) return;
  const bool isTime = isDue(lastStartupScan_, startupInterval, now);
  if (isTime) {
    startupItems_ = StartupScanner::scan(*subjects_.launchItems);
    lastStartupScan_ = now;
  }
  if (isTime || StartupScanner::refreshLeftovers(startupItems_, *subjects_.launchItems))
    tick.startupItems = startupItems_;
}

void Sampler::refreshState(Date now) {
  // The second cycle too: what is told by differences needs two readings.
  if (!subjects_.state || (count_ > 1 && !isDue(lastState_, paceFor(isWatched_).sensors, now))) return;
  subjects_.state->refresh();
  lastState_ = now;
}

void Sampler::useSample(Tick& tick) {
  if (subjects_.history) subjects_.history->record(tick.snapshot, lastScore_);
  sendWeeklyReport(tick.snapshot.date);
  if (subjects_.alerts) tick.alerts = subjects_.alerts->evaluate(tick.snapshot);
  if (subjects_.history) readHistory(tick);
}

void Sampler::sendWeeklyReport(Date now) {
  auto* history = subjects_.history;
  auto* zone = subjects_.zone;
  if (!history || !zone || !subjects_.defaults || !subjects_.notifications) return;
  if (!isDue(lastWeeklyCheck_, weeklyCheckInterval, now)) return;
  zone->reload();
  WeeklyReport::sendIfDue(*history, *subjects_.defaults, *subjects_.notifications, now, *zone);
  lastWeeklyCheck_ = now;
}

void Sampler::readHistory(Tick& tick) {
  HistoryStore& history = *subjects_.history;
  const Date now = tick.snapshot.date;
  tick.cpuTenMinuteAverage = history.average(Metric::cpu, now - Seconds{600}, 8);
  if (!subjects_.zone || !isDue(lastTotals_, totalsInterval, now)) return;
  subjects_.zone->reload();
  tick.totals = usageTotals(history, startOfDay(*subjects_.zone, localDay(*subjects_.zone, now)), now);
  lastTotals_ = now;
}

} // namespace korvell
