#include "UI/Window/Sidebar.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Parts/HealthParts.h"

#include <algorithm>

namespace korvell {

namespace {

struct Place {
  SidebarItem section;
  Icon icon;
  const char* group; ///< of the first of a group: its title
};
constexpr Place places[] = {
    {SidebarItem::overview, Icon::heart, ""},       {SidebarItem::cpu, Icon::cpu, "Measures"},
    {SidebarItem::memory, Icon::memory, nullptr},   {SidebarItem::disk, Icon::disk, nullptr},
    {SidebarItem::network, Icon::network, nullptr}, {SidebarItem::gpu, Icon::gpu, nullptr},
    {SidebarItem::energy, Icon::battery, nullptr},  {SidebarItem::storage, Icon::storage, "Tools"},
    {SidebarItem::aiUsage, Icon::ai, nullptr},      {SidebarItem::devServers, Icon::servers, nullptr},
    {SidebarItem::sound, Icon::sound, nullptr},     {SidebarItem::sensors, Icon::sensors, "System"},
    {SidebarItem::startup, Icon::startup, nullptr}, {SidebarItem::alerts, Icon::alerts, nullptr},
};
static_assert(std::size(places) == std::size(EnumTable<SidebarItem>::cases));

std::optional<Tone> toneOf(const HealthReport& report) {
  if (report.insights.empty()) return std::nullopt;
  const auto tone = toneOf(report.insights.front().severity);
  return tone == Tone::info ? std::nullopt : std::optional(tone);
}

std::string share(double percent, bool isKnown) { return isKnown ? Format::percent(percent) : std::string(); }

std::string memoryShare(const MemoryStats& memory) {
  const auto share = memory.usedShare();
  return share ? Format::percent(*share) : std::string();
}

std::size_t serverCount(const std::vector<DevProject>& projects) {
  std::size_t count = 0;
  for (const auto& project : projects) count += project.servers.size();
  return count;
}

std::string countText(std::size_t count) { return count > 0 ? std::to_string(count) : std::string(); }

std::size_t leftovers(const std::vector<StartupItem>& items) {
  return std::size_t(std::ranges::count_if(items, &StartupItem::isLeftover));
}

/// What does not need a second measurement.
void fillSlow(Sidebar::Row& row, const Model& model, const SidebarFacts& facts) {
  switch (row.section) {
  case SidebarItem::storage:
    if (facts.reclaimable) row.value = Format::bytes(double(*facts.reclaimable));
    break;
  case SidebarItem::aiUsage:
    if (facts.aiCostToday) row.value = Format::dollars(*facts.aiCostToday);
    break;
  case SidebarItem::devServers:
    row.value = countText(serverCount(*model.projects));
    break;
  case SidebarItem::sensors:
    if (*model.sensors && (*model.sensors)->cpuCelsius)
      row.value = temperatureText(*(*model.sensors)->cpuCelsius, facts.temperatures);
    break;
  case SidebarItem::startup:
    row.value = countText(leftovers(*model.startupItems));
    if (!row.value.empty()) row.tone = Tone::info;
    break;
  case SidebarItem::alerts:
    row.badge = facts.newAlerts;
    break;
  default:
    break;
  }
}

void fillMeasured(Sidebar::Row& row, const Model& model) {
  const auto& snapshot = *model.snapshot;
  const auto& known = *model.known;
  switch (row.section) {
  case SidebarItem::overview:
    row.value = std::to_string(model.report->score);
    row.tone = toneOf(*model.report);
    break;
  case SidebarItem::cpu:
    row.value = share(snapshot.cpu.total, known.has(KnownPart::processor));
    break;
  case SidebarItem::memory:
    if (known.has(KnownPart::memory)) row.value = memoryShare(snapshot.memory);
    break;
  case SidebarItem::disk:
    if (known.has(KnownPart::disks))
      row.value = Format::rate(snapshot.disk.readRate + snapshot.disk.writeRate);
    break;
  case SidebarItem::network:
    if (known.has(KnownPart::network))
      row.value = Format::rate(snapshot.network.inRate + snapshot.network.outRate);
    break;
  case SidebarItem::gpu:
    row.value = share(snapshot.gpu.utilization, known.has(KnownPart::graphics));
    break;
  case SidebarItem::energy:
    if (snapshot.battery.present)
      row.value = share(snapshot.battery.percent, known.has(KnownPart::battery));
    else if (known.has(KnownPart::power))
      row.value = Format::watts(snapshot.battery.systemPower);
    break;
  default:
    break;
  }
}

std::string nameOf(const Sidebar::Row& row) {
  if (row.badge > 0)
    return localized("{title}, {n} new", {{"title", row.title}, {"n", std::to_string(row.badge)}});
  if (row.value.empty()) return row.title;
  if (row.tone == Tone::critical || row.tone == Tone::warning)
    return localized("{title}, {value}, {severity}",
                     {{"title", row.title},
                      {"value", row.value},
                      {"severity", title(row.tone == Tone::critical ? Insight::Severity::critical
                                                                    : Insight::Severity::warning)}});
  return localized("{title}, {value}", {{"title", row.title}, {"value", row.value}});
}

} // namespace

Sidebar sidebar(const Model& model, SidebarItem selected, const SidebarFacts& facts) {
  Sidebar result{.selected = selected};
  const char* pending = nullptr; // a group's title goes with the first of its rows that is there
  for (const auto& place : places) {
    if (place.group) pending = place.group;
    if (!facts.sections.contains(place.section)) continue;
    if (pending) result.groups.push_back({*pending ? localized(pending) : std::string(), {}});
    pending = nullptr;
    Sidebar::Row row{.section = place.section, .icon = place.icon, .title = title(place.section)};
    fillSlow(row, model, facts);
    if (*model.hasSample) fillMeasured(row, model);
    row.name = nameOf(row);
    result.groups.back().rows.push_back(std::move(row));
  }
  return result;
}

} // namespace korvell
