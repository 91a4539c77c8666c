#include "UI/Settings/SettingsPage.h"

#include "App/PanelSoundChoice.h"
#include "Base/Files.h"
#include "Base/Format.h"
#include "Base/Localization.h"
#include "Core/Health/WeeklyReport.h"

#include <fmt/format.h>

#include <algorithm>

namespace korvell {

namespace {

using Page = SettingsPage;

MenuBarFigures presentFigures(const Model& model) {
  auto figures = MenuBarFigures::of(*model.snapshot, *model.report);
  const auto series = model.live->find(Metric::cpu);
  if (series == model.live->end()) return figures;
  const auto& points = series->second;
  const auto first = points.size() - std::min(points.size(), MenuBarState::historyLength);
  for (auto i = first; i < points.size(); ++i) figures.cpuHistory.push_back(points[i].value);
  return figures;
}

MenuBarLabel preview(const Model& model, MenuBarStyle style) {
  if (*model.hasSample) return MenuBarLabel::make(presentFigures(model), style);
  constexpr MenuBarLabel::Symbol quiet = MenuBarLabel::Symbol::heart;
  if (style == MenuBarStyle::icon) return {.symbol = quiet};
  if (style == MenuBarStyle::score) return {.symbol = quiet, .text = noFigure};
  if (style == MenuBarStyle::graphs) return {.drawing = MenuBarGraph::image({}, 0)};
  return {.text = noFigure};
}

std::string helperAction(const SettingsAnswers& answers, bool turnsOn) {
  if (answers.isTurningHelper) return localized("One moment…");
  return turnsOn ? localized("Enable") : localized("Disable");
}

Page::Helper helperPart(const SettingsAnswers& answers) {
  if (!answers.helper) return {};
  const auto& [status, explanation, lacksSignature] = *answers.helper;
  Page::Helper part{.explanation = explanation};
  if (lacksSignature) return part; // the reason stands in the explanation's place
  part.state = title(status);
  part.trouble = answers.helperTrouble;
  part.turnsOn = status == UsageHelperStatus::notEnabled;
  if (status != UsageHelperStatus::notFound) part.action = helperAction(answers, part.turnsOn);
  if (status == UsageHelperStatus::requiresApproval) part.approval = localized("Open Login Items");
  return part;
}

std::string ownCost(const Model& model, ProcessID self) {
  for (const auto& app : model.snapshot->apps)
    for (const auto& process : app.processes)
      if (process.pid == self)
        return localized("{cpu} of one core, {memory}",
                         {{"cpu", Format::figure(Unit::corePercent, process.cpu)},
                          {"memory", Format::memory(double(process.memory))}});
  return noFigure;
}

std::string updatesSentence(bool isPackaged) {
  return isPackaged ? localized("This copy is updated by your system's packages.")
                    : localized("This copy of Korvell has no updater.");
}

Page::Updates updatesPart(const SettingsContext& context) {
  Page::Updates part{.automatically = {.title = localized("Automatically check for updates")}};
  if (const auto* updater = context.updater) {
    part.automatically.isOn = updater->automaticallyChecks();
    part.check = localized("Check Now");
    part.canCheck = updater->canCheck();
  } else {
    part.automatically.detail = updatesSentence(context.isPackaged);
    part.automatically.canChange = false;
  }
  return part;
}

} // namespace

SettingsPage settingsPage(const Model& model, const UserDefaults& defaults, const SettingsContext& context,
                          const SettingsAnswers& answers) {
  Page page{.refusals = answers.refusals};
  if (answers.couldNotStore) page.trouble = localized("The setting could not be stored.");
  if (auto trouble = defaults.trouble()) {
    page.trouble = localized("No setting can be stored at this moment.");
    page.advice = std::move(*trouble);
  }
  for (const auto& style : allCases<MenuBarStyle>())
    page.styles.push_back({title(style.value), preview(model, style.value)});
  page.style = menuBarStyle(defaults);
  page.opensAtLogin = {.title = localized("Open at login"),
                       .isOn = answers.opensAtLogin.value_or(false),
                       .canChange = answers.opensAtLogin.has_value(),
                       .trouble = answers.loginTrouble};
  page.panelSound = {.title = localized("Show in the panel who is making a sound"),
                     .isOn = showsSoundInPanel(defaults)};
  page.appearance = appearanceChoice(defaults);
  page.language = languageChoice(defaults);
  page.temperatures = temperatureUnit(defaults);
  page.helper = helperPart(answers);
  page.tool = {localized("Links korvell into ~/.local/bin so you can run korvell status in Terminal."),
               answers.isInstalling ? localized("Installing…") : localized("Install"), answers.toolOutcome};
  page.agents = {
      localized("Agents can read the health score, top apps and dev servers, and quit apps or stop "
                "servers after asking you."),
      context.claudeCommand, context.clientSnippet};
  page.history = tildePath(context.historyPath, context.home);
  page.ownCost = ownCost(model, context.self);
  page.updates = updatesPart(context);
  for (const auto& kind : allCases<HealthAlert::Kind>())
    page.alerts.push_back(
        {.title = title(kind.value), .isOn = defaults.boolean(defaultsKey(kind.value), true)});
  page.weeklyReport = {.title = localized("Send a weekly report on Monday morning"),
                       .isOn = WeeklyReport::isEnabled(defaults)};
  return page;
}

} // namespace korvell
