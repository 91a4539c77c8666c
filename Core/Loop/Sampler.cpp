#include "Core/Loop/Sampler.h"

#include "Core/Health/WeeklyReport.h"
#include "Sensors/Peripherals.h"

namespace korvell {

/// A part of a cycle with a clock of its own: how long it rests while somebody looks and while nobody does.
struct Sampler::SlowTask {
  SlowPart part;
  Seconds watched, idle;
  void (Sampler::*run)(Tick&); ///< fills its part of the tick, or changes what a later step reads
};

const Sampler::SlowTask Sampler::measuringTasks[] = {
    {SlowPart::machineState, Seconds(6), Seconds(30), &Sampler::refreshState},
    {SlowPart::sensors, Seconds(6), Seconds(30), &Sampler::readSensors},
    {SlowPart::devServers, Seconds(6), Seconds(30), &Sampler::scanDevServers},
    {SlowPart::peripherals, Seconds(120), Seconds(600), &Sampler::readPeripherals},
    // Whether watched or not: people look at the list, not at its changes.
    {SlowPart::startupItems, Seconds(1800), Seconds(1800), &Sampler::scanStartup},
};
const Sampler::SlowTask Sampler::keepingTasks[] = {
    {SlowPart::weeklyReport, Seconds(600), Seconds(600), &Sampler::sendWeeklyReport},
    {SlowPart::totals, Seconds(60), Seconds(60), &Sampler::sumTotals},
};

Sampler::Sampler(std::unique_ptr<Queue> queue, MachineCounters& machine, Subjects subjects,
                 std::optional<Keeping> keeping)
    : queue_(std::move(queue)), system_(machine, queue_->clock()), subjects_(std::move(subjects)),
      keeping_(std::move(keeping)) {
  lastRun_.fill(Date::distantPast());
}

// Before everything else, which a task that still runs there may use.
Sampler::~Sampler() { queue_.reset(); }

// The order of a cycle: the machine, its processes, then the slow parts, then, from the second cycle on
// because the first has no rates, what is made of the sample.
Tick Sampler::tick() {
  Tick tick;
  tick.snapshot = SystemSnapshot::empty(queue_->clock().now());
  system_.sample(tick.snapshot);
  tick.snapshot.apps = subjects_.processes->sample(subjects_.devServers->portsByPID());
  tick.privileged = subjects_.processes->privilegedUse();
  tick.known = system_.known();
  subjects_.processes->judge(tick.known);
  runDue(measuringTasks, tick);
  // Programs come and go between two scans.
  if (!tick.startupItems && StartupScanner::refreshLeftovers(startupItems_, subjects_.launchItems))
    tick.startupItems = startupItems_;
  if (count_ >= 1 && keeping_) keep(tick);
  if (keeping_) tick.historyProblem = keeping_->history.problem();
  ++count_;
  return tick;
}

void Sampler::runDue(std::span<const SlowTask> tasks, Tick& tick) {
  const Date now = tick.snapshot.date;
  for (const auto& task : tasks) {
    auto& last = lastRun_[std::size_t(task.part)];
    if (!isDue(last, isWatched_ ? task.watched : task.idle, now)) continue;
    last = now;
    (this->*task.run)(tick);
  }
}

void Sampler::refreshState(Tick&) {
  subjects_.state.refresh();
  // In the second cycle again: what is told by differences needs two readings.
  if (count_ == 0) runSoon(SlowPart::machineState);
}

void Sampler::readSensors(Tick& tick) { tick.sensors = subjects_.sensors->read(); }

void Sampler::readPeripherals(Tick& tick) {
  tick.peripherals = peripheralBatteries(subjects_.peripherals.read());
}

void Sampler::scanDevServers(Tick& tick) {
  tick.projects = subjects_.devServers->scan(usageByPID(tick.snapshot.apps), subjects_.processes->parents());
}

void Sampler::scanStartup(Tick& tick) {
  startupItems_ = StartupScanner::scan(subjects_.launchItems);
  tick.startupItems = startupItems_;
}

void Sampler::keep(Tick& tick) {
  auto& history = keeping_->history;
  history.record(tick.snapshot, lastScore_);
  runDue(keepingTasks, tick);
  tick.alerts = keeping_->alerts->evaluate(tick.snapshot);
  const auto average = history.recordedAverage(Metric::cpu, tick.snapshot.date - Seconds{600}, 8);
  tick.cpuTenMinuteAverage = average.value_or(0);
  tick.known.set(KnownPart::tenMinuteAverage, average.has_value());
}

void Sampler::sendWeeklyReport(Tick& tick) {
  keeping_->zone.reload();
  WeeklyReport::sendIfDue(keeping_->history, keeping_->defaults, keeping_->notifications, tick.snapshot.date,
                          keeping_->zone);
}

void Sampler::sumTotals(Tick& tick) {
  auto& zone = keeping_->zone;
  const Date now = tick.snapshot.date;
  zone.reload();
  tick.totals = usageTotals(keeping_->history, startOfDay(zone, localDay(zone, now)), now);
}

} // namespace korvell
