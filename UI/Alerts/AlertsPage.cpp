#include "UI/Alerts/AlertsPage.h"

#include "Base/Localization.h"
#include "Core/Health/AlertPosting.h"
#include "Core/Health/SeenAlerts.h"
#include "Core/Health/WeeklyReport.h"
#include "UI/Overview/HealthPage.h"
#include "UI/Parts/Figures.h"

#include <algorithm>

namespace korvell {

namespace {

/// As far back as a chart reaches.
constexpr Seconds kept{30 * 86'400.0};

SidebarItem sectionOf(HealthAlert::Kind kind) {
  switch (kind) {
  case HealthAlert::Kind::cpu:
    return SidebarItem::cpu;
  case HealthAlert::Kind::memoryGrowth:
  case HealthAlert::Kind::memoryPressure:
    return SidebarItem::memory;
  case HealthAlert::Kind::disk:
    return SidebarItem::disk;
  case HealthAlert::Kind::network:
    return SidebarItem::network;
  case HealthAlert::Kind::diskSpace:
    return SidebarItem::storage;
  case HealthAlert::Kind::aiPlanLimit:
    break;
  }
  return SidebarItem::aiUsage;
}

std::optional<AlertsPage::Lead> leadOf(const HealthAlert& alert, const AlertsContext& context, Date now) {
  const auto section = sectionOf(alert.kind);
  if (!context.sections.contains(section)) return std::nullopt;
  if (section == SidebarItem::storage) return AlertsPage::Lead{localized("Free Up Space"), section, {}};
  if (section == SidebarItem::aiUsage) return AlertsPage::Lead{localized("Show AI Usage"), section, {}};
  if (now - alert.date >= kept || alert.date > now) return std::nullopt;
  return AlertsPage::Lead{
      localized("Show {section} at {time}",
                {{"section", title(section)}, {"time", clockText(context.zone, alert.date)}}),
      section, alert.date};
}

AlertsPage::Alert rowOf(const HealthAlert& alert, const AlertsContext& context, Date now) {
  AlertsPage::Alert row{.id = alert.id,
                        .icon = alertIcon(alert.kind),
                        .title = alert.title,
                        .detail = alert.detail,
                        .time = clockText(context.zone, alert.date),
                        .isNew = context.fresh.contains(alert.id),
                        .lead = leadOf(alert, context, now),
                        .spoken = {}};
  row.spoken = row.title + ". " + row.detail + " " + dayAndTime(context.zone, alert.date, now);
  if (row.isNew) row.spoken = localized("New: {alert}", {{"alert", row.spoken}});
  return row;
}

void fillDays(AlertsPage& page, const Model& model, const AlertsContext& context) {
  const auto now = model.snapshot->date;
  std::optional<CalendarDay> shown;
  std::int64_t fresh = 0;
  for (const auto& alert : *model.alerts) {
    const auto day = localDay(context.zone, alert.date);
    if (shown != day) page.days.push_back({dayWords(context.zone, alert.date, now), {}});
    shown = day;
    page.days.back().alerts.push_back(rowOf(alert, context, now));
    if (page.days.back().alerts.back().isNew) ++fresh;
  }
  if (fresh > 0) page.summary = localized("{n} new", {{"n", std::to_string(fresh)}});
}

/// "Monday 09:00"; of an earlier week with its date.
std::string reportTime(const AlertsContext& context, Date date, Date now) {
  return localized("{day} {time}",
                   {{"day", dayWords(context.zone, date, now)}, {"time", clockText(context.zone, date)}});
}

} // namespace

AlertsPage alertsPage(const Model& model, const AlertsContext& context) {
  AlertsPage page;
  fillDays(page, model, context);
  for (const auto& kind : allCases<HealthAlert::Kind>())
    page.switches.push_back({kind.value, localized(kind.title), isEnabled(kind.value, context.defaults)});
  page.sendsReport = WeeklyReport::isEnabled(context.defaults);
  if (const auto last = WeeklyReport::last(context.defaults))
    page.report = {last->title, last->body, reportTime(context, last->date, model.snapshot->date)};
  else if (page.sendsReport)
    page.reportHint = localized("The first one comes on Monday at 9:00, after a week with a score.");
  return page;
}

std::set<std::string> newAlertIDs(const Model& model, const UserDefaults& defaults) {
  const auto now = model.snapshot->date;
  std::set<std::string> ids;
  // Mostly there is none: one look at the settings then.
  if (newAlerts(*model.alerts, defaults, now) == 0) return ids;
  for (const auto& alert : *model.alerts)
    if (isNew(alert, defaults, now)) ids.insert(alert.id);
  return ids;
}

} // namespace korvell
