#include "App/WidgetDocument.h"

#include "Base/Format.h"
#include "Base/Localization.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <span>

namespace korvell {

namespace {

constexpr std::size_t mostFixes = 3, mostApps = 3;
constexpr int tileMinutes = 30;
constexpr Metric tileMetrics[] = {Metric::cpu, Metric::memory, Metric::disk, Metric::network};

std::span<const Insight> shownInsights(const HealthReport& report) {
  return std::span(report.insights).first(std::min(report.insights.size(), mostFixes));
}

SidebarItem pageOf(const std::optional<Insight::Action>& action) {
  using enum Insight::Action::Kind;
  if (!action) return SidebarItem::overview;
  switch (action->kind) {
  case stopIdleServers:
    return SidebarItem::devServers;
  case freeUpSpace:
    return SidebarItem::storage;
  case showStartupItems:
    return SidebarItem::startup;
  case openBatterySettings:
    return SidebarItem::energy;
  case quitApp:
    break;
  }
  return SidebarItem::overview;
}

WidgetSnapshot::Tile figures(Metric metric, const SystemSnapshot& snapshot) {
  WidgetSnapshot::Tile tile{.page = std::string(rawValue(metric))};
  if (metric == Metric::cpu) {
    tile.value = Format::percent(snapshot.cpu.total);
    tile.detail = localized("load {load}", {{"load", Format::decimal(snapshot.cpu.load1, 1)}});
    tile.maxValue = 100;
  } else if (metric == Metric::memory) {
    const auto total = double(snapshot.memory.total);
    tile.value = Format::memory(metricValue(metric, snapshot));
    tile.detail = localized("of {total}", {{"total", Format::memory(total)}});
    if (total > 0) tile.maxValue = total;
  } else if (metric == Metric::disk) {
    const auto& volumes = snapshot.disk.volumes;
    tile.value = volumes.empty() ? noFigure : Format::bytes(double(volumes.front().available));
    tile.detail = localized("free");
  } else {
    tile.value = "↓ " + Format::rate(snapshot.network.inRate);
    tile.detail = "↑ " + Format::rate(snapshot.network.outRate);
  }
  return tile;
}

} // namespace

std::vector<WidgetSnapshot::Fix> widgetFixes(const HealthReport& report) {
  std::vector<WidgetSnapshot::Fix> fixes;
  for (const auto& insight : shownInsights(report))
    fixes.push_back({.title = insight.title,
                     .detail = insight.detail,
                     .critical = insight.severity == Insight::Severity::critical,
                     .page = std::string(rawValue(pageOf(insight.action)))});
  return fixes;
}

std::vector<WidgetSnapshot::TopApp> widgetApps(const std::vector<AppUsage>& apps,
                                               std::string_view systemGroup) {
  std::vector<std::pair<std::uint64_t, const AppUsage*>> heaviest;
  for (const auto& app : apps)
    if (app.name != systemGroup) heaviest.emplace_back(app.memory(), &app);
  const auto shown = heaviest.begin() + std::ptrdiff_t(std::min(heaviest.size(), mostApps));
  std::partial_sort(heaviest.begin(), shown, heaviest.end(),
                    [](const auto& one, const auto& other) { return one.first > other.first; });
  std::vector<WidgetSnapshot::TopApp> rows;
  const auto reference = heaviest.empty() || heaviest.front().first < 2 ? 1 : heaviest.front().first;
  for (auto each = heaviest.begin(); each != shown; ++each)
    rows.push_back({.name = each->second->name,
                    .bundlePath = each->second->bundlePath,
                    .memory = Format::memory(double(each->first)),
                    .fraction = double(each->first) / double(reference)});
  return rows;
}

std::vector<WidgetSnapshot::Tile> widgetTiles(const SystemSnapshot& snapshot, HistoryStore& history) {
  std::vector<WidgetSnapshot::Tile> tiles;
  for (const auto metric : tileMetrics) {
    auto& tile = tiles.emplace_back(figures(metric, snapshot));
    tile.points = history.recent(metric, tileMinutes);
    std::erase_if(tile.points, [](double point) { return !std::isfinite(point); }); // JSON has no word for it
  }
  return tiles;
}

std::vector<WidgetSnapshot::Tile> widgetTiles(const SystemSnapshot& snapshot) {
  std::vector<WidgetSnapshot::Tile> tiles;
  for (const auto metric : tileMetrics) tiles.push_back(figures(metric, snapshot));
  return tiles;
}

std::string widgetContentKey(const HealthReport& report) {
  std::string titles;
  for (const auto& insight : shownInsights(report)) titles += (titles.empty() ? "" : "|") + insight.title;
  return std::to_string(report.score) + "|" + report.label() + "|" + titles;
}

} // namespace korvell
