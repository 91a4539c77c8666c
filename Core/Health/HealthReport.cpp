#include "Core/Health/HealthReport.h"

#include "Base/Format.h"
#include "Core/DevServers/DevServerRules.h"
#include "Core/Health/HealthAlert.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <numeric>

namespace korvell {

namespace {

using Action = Insight::Action;
using Severity = Insight::Severity;
using Pressure = MemoryStats::Pressure;

constexpr std::uint64_t muchSwap = 4'000'000'000;
constexpr double busyPercent = 80;
constexpr double almostFull = 0.1; ///< share of the volume that is free
constexpr double gettingFull = 0.2;
constexpr double wornPercent = 80;
constexpr Seconds longUptime{14 * 86'400.0};

/// What the rules look at. What only the texts need is worked out when a rule applies.
struct Facts {
  const SystemSnapshot& snapshot;
  std::optional<double> cpuCelsius;
  double cpuTenMinuteAverage = 0;
  ThermalState thermal = ThermalState::nominal;
  Seconds uptime{0};
  std::vector<DevServer> idle; ///< in the order of projects and servers
  int leftovers = 0;

  /// Free share of the first volume, which is the one that the system lives on.
  std::optional<double> freeShare() const {
    const auto& volumes = snapshot.disk.volumes;
    if (volumes.empty() || volumes.front().total < 1) return std::nullopt;
    return double(volumes.front().available) / double(volumes.front().total);
  }
};

/// The first of the applications with the largest figure.
template <class Figure, class Eligible>
const AppUsage* heaviest(const std::vector<AppUsage>& apps, Figure figure, Eligible eligible) {
  const AppUsage* best = nullptr;
  decltype(figure(apps.front())) most{};
  for (const auto& app : apps) {
    if (!eligible(app)) continue;
    const auto value = figure(app);
    if (best && !(value > most)) continue;
    best = &app;
    most = value;
  }
  return best;
}

/// Only an application that can be quit is worth naming where quitting is the fix.
const AppUsage* heaviestByMemory(const Facts& facts) {
  return heaviest(
      facts.snapshot.apps, [](const AppUsage& app) { return app.memory(); },
      [](const AppUsage& app) { return app.bundlePath.has_value(); });
}

/// Whoever keeps the processor busy is named, an application or not.
const AppUsage* heaviestByCPU(const Facts& facts) {
  return heaviest(
      facts.snapshot.apps, [](const AppUsage& app) { return app.cpu(); },
      [](const AppUsage&) { return true; });
}

std::string truncatedNumber(double value) { return fmt::format("{:.0f}", std::trunc(value)); }

std::string idlePorts(const Facts& facts) {
  std::string ports;
  for (const auto& server : facts.idle)
    for (const int port : server.ports) ports += (ports.empty() ? "" : ", ") + std::to_string(port);
  return ports;
}

std::uint64_t idleMemory(const Facts& facts) {
  return std::accumulate(facts.idle.begin(), facts.idle.end(), std::uint64_t{0},
                         [](std::uint64_t sum, const DevServer& server) { return sum + server.memory; });
}

using Values = std::vector<LocalizedValue>;

Values volumeValues(const Facts& facts) {
  const auto& volume = facts.snapshot.disk.volumes.front();
  return {{"volume", volume.name}, {"free", Format::bytes(double(volume.available))}};
}

/// An application that a finding names, in a sentence of its own behind the detail.
struct Culprit {
  std::string_view sentence;
  const AppUsage* (*find)(const Facts&);
};

struct Penalty {
  int points; ///< in all, or for each that is counted
  int most = 0;
  int (*count)(const Facts&) = nullptr;

  int of(const Facts& facts) const { return count ? std::min(points * count(facts), most) : points; }
};

struct Rule {
  bool (*applies)(const Facts&);
  Severity severity;
  Penalty penalty;
  std::string_view title;
  std::string_view detail;
  Values (*values)(const Facts&) = nullptr; ///< of both texts
  std::optional<Action::Kind> action = std::nullopt;
  std::optional<Culprit> culprit = std::nullopt; ///< whom quitApp is about
};

int idleCount(const Facts& facts) { return int(facts.idle.size()); }
int leftoverCount(const Facts& facts) { return facts.leftovers; }

constexpr Rule rules[] = {
    {[](const Facts& f) { return f.snapshot.memory.pressure == Pressure::warning; },
     Severity::warning,
     {15},
     "Memory is under pressure",
     "Apps are competing for RAM.",
     nullptr,
     Action::Kind::quitApp,
     Culprit{"{app} is the biggest at {memory}.", heaviestByMemory}},
    {[](const Facts& f) { return f.snapshot.memory.pressure == Pressure::critical; },
     Severity::critical,
     {30},
     "Memory is exhausted",
     "macOS is compressing and swapping heavily, so everything slows down.",
     nullptr,
     Action::Kind::quitApp,
     Culprit{"{app} uses {memory}.", heaviestByMemory}},
    {[](const Facts& f) { return f.snapshot.memory.swapUsed > muchSwap; },
     Severity::warning,
     {8},
     "{swap} of swap in use",
     "Memory is spilling to disk. A restart clears it if pressure stays normal.",
     [](const Facts& f) -> Values {
       return {{"swap", Format::memory(double(f.snapshot.memory.swapUsed))}};
     }},
    {[](const Facts& f) { return f.cpuTenMinuteAverage > busyPercent; },
     Severity::warning,
     {15},
     "CPU busy for 10 minutes",
     "{n}% on average.",
     [](const Facts& f) -> Values {
       return {{"n", truncatedNumber(f.cpuTenMinuteAverage)}};
     },
     Action::Kind::quitApp,
     Culprit{"{app} is the main load.", heaviestByCPU}},
    {[](const Facts& f) { return f.freeShare() && *f.freeShare() < almostFull; },
     Severity::critical,
     {20},
     "{volume} is almost full",
     "{free} free. macOS needs room for swap and updates.",
     volumeValues,
     Action::Kind::freeUpSpace},
    {[](const Facts& f) {
       return f.freeShare() && *f.freeShare() >= almostFull && *f.freeShare() < gettingFull;
     },
     Severity::warning,
     {8},
     "Disk space is getting low",
     "{free} free on {volume}.",
     volumeValues,
     Action::Kind::freeUpSpace},
    {[](const Facts& f) {
       const auto& battery = f.snapshot.battery;
       return battery.present && battery.health > 0 && battery.health < wornPercent;
     },
     Severity::warning,
     {10},
     "Battery at {n}% of original capacity",
     "{cycles} cycles. Apple recommends service below 80%.",
     [](const Facts& f) -> Values {
       const auto& battery = f.snapshot.battery;
       return {{"n", truncatedNumber(battery.health)}, {"cycles", std::to_string(battery.cycles)}};
     },
     Action::Kind::openBatterySettings},
    {[](const Facts& f) { return f.thermal == ThermalState::fair; },
     Severity::info,
     {3},
     "Running warm",
     "Thermal state is elevated but not throttling yet."},
    {[](const Facts& f) { return f.thermal >= ThermalState::serious && f.cpuCelsius; },
     Severity::critical,
     {15},
     "Your Mac is throttling",
     "It is too hot to run at full speed, CPU at {n}°.",
     [](const Facts& f) -> Values {
       return {{"n", truncatedNumber(*f.cpuCelsius)}};
     }},
    {[](const Facts& f) { return f.thermal >= ThermalState::serious && !f.cpuCelsius; },
     Severity::critical,
     {15},
     "Your Mac is throttling",
     "It is too hot to run at full speed."},
    {[](const Facts& f) { return !f.idle.empty(); },
     Severity::info,
     {2, 8, idleCount},
     "{n} idle dev servers",
     "Stopping them frees {memory} and ports {ports}.",
     [](const Facts& f) -> Values {
       return {{"n", std::to_string(f.idle.size())},
               {"memory", Format::memory(double(idleMemory(f)))},
               {"ports", idlePorts(f)}};
     },
     Action::Kind::stopIdleServers},
    {[](const Facts& f) { return f.leftovers > 0; },
     Severity::info,
     {1, 5, leftoverCount},
     "{n} leftover startup items",
     "They point to programs that no longer exist, usually from apps you uninstalled.",
     [](const Facts& f) -> Values {
       return {{"n", std::to_string(f.leftovers)}};
     },
     Action::Kind::showStartupItems},
    {[](const Facts& f) { return f.uptime > longUptime; },
     Severity::info,
     {4},
     "Up for {duration}",
     "A restart clears leaked memory and applies pending updates.",
     [](const Facts& f) -> Values {
       return {{"duration", Format::duration(f.uptime)}};
     }},
};

std::optional<Action> actionOf(const Rule& rule, const AppUsage* culprit) {
  if (!rule.action) return std::nullopt;
  if (*rule.action != Action::Kind::quitApp) return Action{.kind = *rule.action};
  if (!culprit || !culprit->bundlePath) return std::nullopt;
  return Action{Action::Kind::quitApp, culprit->bundlePath, culprit->name};
}

Wording wordingOf(const Rule& rule, const Facts& facts, const AppUsage* culprit) {
  const auto values = rule.values ? rule.values(facts) : Values{};
  auto detail = localized(rule.detail, values);
  if (culprit)
    detail +=
        " " + localized(rule.culprit->sentence,
                        {{"app", culprit->name}, {"memory", Format::memory(double(culprit->memory()))}});
  return {localized(rule.title, values), std::move(detail)};
}

Insight insightOf(const Rule& rule, const Facts& facts) {
  const auto* culprit = rule.culprit ? rule.culprit->find(facts) : nullptr;
  auto own = wordingOf(rule, facts, culprit);
  return {.severity = rule.severity,
          .title = std::move(own.title),
          .detail = std::move(own.detail),
          .penalty = rule.penalty.of(facts),
          .action = actionOf(rule, culprit),
          .wordings = wordingsOf([&] { return wordingOf(rule, facts, culprit); })};
}

struct LabelFrom {
  int score;
  std::string_view label;
};
constexpr LabelFrom labels[] = {{90, "Excellent"}, {75, "Good"}, {50, "Fair"}};

} // namespace

std::string title(const Insight::Action& action) {
  return localized(EnumTable<Action::Kind>::cases[std::size_t(action.kind)].title,
                   {{"app", action.name.value_or("")}});
}

std::string HealthReport::label() const {
  for (const auto& [from, label] : labels)
    if (score >= from) return localized(label);
  return localized("Needs attention");
}

Value reportValue(const HealthReport& report) {
  return Value::object(
      {{"score", report.score}, {"label", report.label()}, {"insights", toValue(report.insights)}});
}

HealthReport HealthReport::make(const SystemSnapshot& snapshot, const std::optional<SensorsSnapshot>& sensors,
                                double cpuTenMinuteAverage, const std::vector<DevProject>& projects,
                                const std::vector<StartupItem>& startup, const MachineState& state,
                                Date now) {
  Facts facts{.snapshot = snapshot,
              .cpuCelsius = sensors ? sensors->cpuCelsius : std::nullopt,
              .cpuTenMinuteAverage = cpuTenMinuteAverage,
              .thermal = state.thermalState(),
              .uptime = state.uptime(),
              .idle = idleServers(projects, now)};
  facts.leftovers = int(std::ranges::count_if(startup, &StartupItem::isLeftover));

  HealthReport report;
  for (const auto& rule : rules)
    if (rule.applies(facts)) report.insights.push_back(insightOf(rule, facts));
  for (const auto& insight : report.insights) report.score -= insight.penalty;
  report.score = std::max(report.score, 0);
  std::ranges::stable_sort(report.insights, std::ranges::greater{}, &Insight::severity);
  return report;
}

Value toldValue(const HealthReport& report) {
  const InLanguage speaking("en");
  auto insights = Value::array();
  for (const auto& insight : report.insights) {
    auto value = toValue(insight);
    tellWordings(insight.wordings, value);
    insights.append(std::move(value));
  }
  return reportValue(report).set("insights", std::move(insights));
}

Value toldValue(const HealthAlert& alert) {
  auto value = toValue(alert);
  tellWordings(alert.wordings, value);
  return value;
}

Value toldValue(const std::vector<HealthAlert>& alerts) {
  auto list = Value::array();
  for (const auto& alert : alerts) list.append(toldValue(alert));
  return list;
}

bool fromValue(const Value& value, Insight& insight) {
  if (!fromValue<Insight>(value, insight)) return false;
  insight.wordings = readWordings(value);
  speakHere(insight);
  return true;
}

bool fromValue(const Value& value, HealthAlert& alert) {
  if (!fromValue<HealthAlert>(value, alert)) return false;
  alert.wordings = readWordings(value);
  speakHere(alert);
  return true;
}

KORVELL_CONVERT_HERE(HealthReport);
KORVELL_CONVERT_HERE(std::vector<HealthAlert>);

std::size_t Insight::id() const { return hashOf(*this); }

} // namespace korvell
