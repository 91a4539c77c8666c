#include "Core/Health/AlertEngine.h"

#include "Base/Format.h"
#include "Core/Health/AlertPosting.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

using Kind = HealthAlert::Kind;

constexpr Seconds evaluationInterval{30};
constexpr Seconds cooldown{3600};

constexpr double busyPercentOfACore = 90;
constexpr Seconds busyFor{600};
constexpr Seconds trafficFor{300};
constexpr double muchDiskTraffic = 50'000'000;
constexpr double muchNetworkTraffic = 20'000'000;
constexpr Seconds growthCoverage{3000}; ///< of the hour, so that it can be over before the oldest is dropped
constexpr double muchGrowth = 1'000'000'000;
constexpr double muchMemory = 2'000'000'000;
constexpr std::int64_t littleSpace = 9'999'999'999;

using Texts = Wording;

/// One application as the rules see it.
struct AppFacts {
  const std::string& name;
  const SampleWindow& window;
  Date now;
  double cores;

  std::string words(std::string_view text) const { return localized(text, {{"app", name}}); }
};

std::optional<Texts> busyProcessor(const AppFacts& app) {
  const auto average = app.window.average(&UsageSample::cpu, busyFor, app.now);
  if (!average || !(*average > busyPercentOfACore / app.cores)) return std::nullopt;
  return Texts{app.words("{app} is keeping the CPU busy"),
               localized("{n}% of your Mac, about {c} cores, for 10 minutes.",
                         {{"n", fmt::format("{:.0f}", std::trunc(*average))},
                          {"c", Format::decimal(app.cores * *average / 100, 1)}})};
}

// First and last sample, no trend: a peak in between is none of our business.
std::optional<Texts> growingMemory(const AppFacts& app) {
  if (app.window.empty() || !(app.now - app.window.oldest().date > growthCoverage)) return std::nullopt;
  const double memory = app.window.newest().memory;
  const double growth = memory - app.window.oldest().memory;
  if (!(growth > muchGrowth && memory > muchMemory)) return std::nullopt;
  return Texts{app.words("{app} keeps using more memory"),
               localized("Up {growth} in an hour, now {memory}.",
                         {{"growth", Format::memory(growth)}, {"memory", Format::memory(memory)}})};
}

std::optional<Texts> traffic(const AppFacts& app, double UsageSample::*figure, double much,
                             std::string_view title) {
  const auto average = app.window.average(figure, trafficFor, app.now);
  if (!average || !(*average > much)) return std::nullopt;
  return Texts{app.words(title),
               localized("{rate} on average for 5 minutes.", {{"rate", Format::rate(*average)}})};
}

std::optional<Texts> diskTraffic(const AppFacts& app) {
  return traffic(app, &UsageSample::disk, muchDiskTraffic, "{app} is hammering the disk");
}

std::optional<Texts> networkTraffic(const AppFacts& app) {
  return traffic(app, &UsageSample::network, muchNetworkTraffic, "{app} is using a lot of network");
}

std::optional<Texts> fullDisk(const SystemSnapshot& snapshot) {
  const auto& volumes = snapshot.disk.volumes;
  if (volumes.empty() || volumes.front().available > littleSpace) return std::nullopt;
  return Texts{localized("{volume} is almost full", {{"volume", volumes.front().name}}),
               localized("{free} left.", {{"free", Format::bytes(double(volumes.front().available))}})};
}

std::optional<Texts> exhaustedMemory(const SystemSnapshot& snapshot) {
  if (snapshot.memory.pressure != MemoryStats::Pressure::critical) return std::nullopt;
  return Texts{localized("Your Mac is running out of memory"),
               localized("Memory pressure is critical. Quitting the heaviest app will help most.")};
}

template <class Subject>
struct Rule {
  Kind kind;
  std::optional<Texts> (*check)(const Subject&);
};
constexpr Rule<AppFacts> appRules[] = {{Kind::cpu, busyProcessor},
                                       {Kind::memoryGrowth, growingMemory},
                                       {Kind::disk, diskTraffic},
                                       {Kind::network, networkTraffic}};
constexpr Rule<SystemSnapshot> machineRules[] = {{Kind::diskSpace, fullDisk},
                                                 {Kind::memoryPressure, exhaustedMemory}};

/// Whether an alert that was raised at `last` may be raised again. A clock that was corrected by minutes
/// brings nobody the same alert twice; one that was set back further does not silence it for as long.
bool isOver(Date last, Date now) { return now - last >= cooldown || last - now > cooldown; }

std::string alertKey(Kind kind, std::string_view subject) {
  return fmt::format("{}:{}", rawValue(kind), subject);
}

} // namespace

/// One evaluation: asks the switches at most once each and collects what fires.
class AlertEngine::Round {
public:
  Round(AlertEngine& engine, Date now) : engine_(engine), now_(now) {}

  template <class Subject>
  void check(const Rule<Subject>& rule, const Subject& subject, std::string_view key, const App* app) {
    auto texts = rule.check(subject);
    if (!texts || !isWanted(rule.kind)) return;
    auto& last = engine_.lastFired_.try_emplace(alertKey(rule.kind, key), Date::distantPast()).first->second;
    if (!isOver(last, now_)) return;
    last = now_;
    HealthAlert alert{.id = engine_.services_.makeID(),
                      .kind = rule.kind,
                      .title = std::move(texts->title),
                      .detail = std::move(texts->detail),
                      .date = now_,
                      .wordings = wordingsOf([&] { return rule.check(subject).value_or(Texts{}); })};
    if (app) {
      alert.appName = app->name;
      alert.bundlePath = app->bundlePath;
    }
    post(alert, engine_.services_.defaults, engine_.services_.notifications);
    fired_.push_back(std::move(alert));
  }
  std::vector<HealthAlert> take() { return std::move(fired_); }

private:
  bool isWanted(Kind kind) {
    auto& wanted = wanted_[std::size_t(kind)];
    if (!wanted) wanted = isEnabled(kind, engine_.services_.defaults);
    return *wanted;
  }

  AlertEngine& engine_;
  Date now_;
  std::array<std::optional<bool>, std::size(EnumTable<Kind>::cases)> wanted_;
  std::vector<HealthAlert> fired_;
};

AlertEngine::AlertEngine(Services services, std::string systemKey, int cores)
    : services_(std::move(services)), systemKey_(std::move(systemKey)), cores_(std::max(1, cores)) {}

std::vector<HealthAlert> AlertEngine::evaluate(const SystemSnapshot& snapshot) {
  const Date now = snapshot.date;
  if (isDue(lastRecorded_, SampleWindow::interval, now)) record(snapshot);
  if (!isDue(lastEvaluated_, evaluationInterval, now)) return {};
  lastEvaluated_ = now;
  // What may fire again needs no memory of having fired.
  std::erase_if(lastFired_, [&](const auto& entry) { return isOver(entry.second, now); });

  Round round(*this, now);
  for (const auto& [key, app] : apps_)
    for (const auto& rule : appRules)
      round.check(rule, AppFacts{app.name, app.window, now, double(cores_)}, key, &app);
  for (const auto& rule : machineRules) round.check(rule, snapshot, "system", nullptr);
  return round.take();
}

void AlertEngine::record(const SystemSnapshot& snapshot) {
  lastRecorded_ = snapshot.date;
  for (const auto& usage : snapshot.apps) {
    if (usage.id == systemKey_) continue;
    auto& app = apps_[usage.id];
    app.name = usage.name;
    app.bundlePath = usage.bundlePath;
    app.seen = snapshot.date;
    app.window.add({.date = snapshot.date,
                    .cpu = usage.cpu() / cores_, // a process's 100 percent are one core
                    .memory = double(usage.memory()),
                    .disk = usage.diskRead() + usage.diskWrite(),
                    .network = usage.netIn() + usage.netOut()});
  }
  std::erase_if(apps_, [&](const auto& entry) { return entry.second.seen != snapshot.date; });
}

} // namespace korvell
