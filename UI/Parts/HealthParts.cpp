#include "UI/Parts/HealthParts.h"

#include "Base/Localization.h"
#include "Base/Text.h"
#include "UI/Parts/Figures.h"

#include <cmath>

namespace korvell {

Tone toneOf(Insight::Severity severity) {
  switch (severity) {
  case Insight::Severity::critical:
    return Tone::critical;
  case Insight::Severity::warning:
    return Tone::warning;
  case Insight::Severity::info:
    break;
  }
  return Tone::info;
}

namespace {

/// A button grows with its words, so that a name in it is of modest length; the question that follows names
/// it.
std::string quitWords(const std::string& name) {
  constexpr int longestName = 24;
  return name.empty() || displayWidth(name) > longestName ? localized("Quit…")
                                                          : localized("Quit {name}…", {{"name", name}});
}

std::optional<Step> stepOf(const Insight::Action& action, bool hasBatterySettings) {
  using enum Insight::Action::Kind;
  switch (action.kind) {
  case quitApp:
    if (!action.bundlePath && !action.name) return std::nullopt;
    return Step{quitWords(action.name.value_or("")),
                ActionRequest(QuitRequest{.app = action.bundlePath ? std::nullopt : action.name,
                                          .bundlePath = action.bundlePath})};
  case stopIdleServers:
    return Step{localized("Stop All Idle…"), ActionRequest(StopIdleServersRequest{})};
  case freeUpSpace:
    return Step{localized("Free Up Space"), SidebarItem::storage};
  case showStartupItems:
    return Step{localized("Review"), SidebarItem::startup};
  case openBatterySettings:
    if (!hasBatterySettings) return std::nullopt;
    return Step{localized("Battery Settings"), OpenBatterySettings{}};
  }
  return std::nullopt;
}

FindingRow rowOf(const Insight& insight, bool hasBatterySettings) {
  FindingRow row{.tone = toneOf(insight.severity),
                 .penalty = insight.penalty,
                 .title = insight.title,
                 .detail = insight.detail};
  if (insight.action) row.fix = stepOf(*insight.action, hasBatterySettings);
  row.name = localized("{severity}, {points}: {title}. {detail}",
                       {{"severity", title(insight.severity)},
                        {"points", counted(insight.penalty, "1 point", "{n} points")},
                        {"title", insight.title},
                        {"detail", insight.detail}});
  return row;
}

std::string lossText(int points, std::size_t findings) {
  if (findings == 0) return localized("Nothing to fix");
  const auto count = std::to_string(findings);
  if (findings == 1) return counted(points, "1 point lost to 1 finding", "{n} points lost to 1 finding");
  return localized("{points} points lost to {findings} findings",
                   {{"points", std::to_string(points)}, {"findings", count}});
}

} // namespace

HealthHead healthHead(const Model& model, std::optional<double> weekScore, bool hasBatterySettings) {
  if (!*model.hasSample)
    return {.label = localized("Measuring…"),
            .loss = localized("Measuring…"),
            .name = localized("Health, measuring")};
  const auto& report = *model.report;
  const bool isSettled = model.known->has(KnownPart::tenMinuteAverage);
  HealthHead head{.score = report.score,
                  .label =
                      isSettled ? report.label() : localized("{label} so far", {{"label", report.label()}}),
                  .loss = lossText(100 - report.score, report.insights.size())};
  if (weekScore)
    head.average =
        localized("{score} on average over 7 days", {{"score", std::to_string(std::lround(*weekScore))}});
  for (const auto& insight : report.insights) head.findings.push_back(rowOf(insight, hasBatterySettings));
  head.name =
      localized("Health {score} of 100, {label}. {loss}.",
                {{"score", std::to_string(report.score)}, {"label", head.label}, {"loss", head.loss}});
  return head;
}

} // namespace korvell
