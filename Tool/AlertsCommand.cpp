// korvell alerts: what the keeper has raised, and the switches of the kinds.

#include "App/JSONDocuments.h"
#include "App/SettingsCheck.h"
#include "Base/LocalTime.h"
#include "Base/Result.h"
#include "Base/Text.h"
#include "Core/Health/AlertPosting.h"
#include "Core/Health/SeenAlerts.h"
#include "Tool/AskKeeper.h"
#include "Tool/CommandActions.h"
#include "Tool/Commands.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <fmt/format.h>
#include <utility>

namespace korvell {

namespace {

using Kind = HealthAlert::Kind;

std::string localTimeText(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  return fmt::format("{} {:02}:{:02}", shownDay(localDay(zone, date)), time.hour, time.minute);
}

Result<std::vector<HealthAlert>> raisedAlerts(Context& context) {
  const auto state = keeperState(context, {"alerts"});
  const auto* told = state ? state->find("alerts") : nullptr;
  if (std::vector<HealthAlert> alerts; told && fromValue(*told, alerts)) return alerts;
  return Failure{state.isSilent
                     ? silence(state)
                     : localized("alerts need a running Korvell: the application, or \"korvell run\"")};
}

/// The time in a column of its own, title and detail beside it.
void printAlerts(Context& context, const std::vector<HealthAlert>& alerts) {
  constexpr int gap = 2, narrowestText = 20;
  Terminal& out = context.out;
  if (alerts.empty()) return out.line(localized("Korvell has raised no alerts yet."));
  for (const auto& alert : alerts) {
    const auto time = localTimeText(*context.host.zone, alert.date);
    const auto margin = std::size_t(displayWidth(time)) + std::size_t(gap);
    const int width = std::max(narrowestText, out.columns() - int(margin));
    auto before = out.ink(Ink::dim, time) + std::string(gap, ' ');
    for (const auto& [ink, text] : {std::pair(Ink::bold, &alert.title), std::pair(Ink::plain, &alert.detail)})
      for (const auto& line : wrapped(escapedControls(*text), width))
        out.line(std::exchange(before, std::string(margin, ' ')) + out.ink(ink, line));
  }
}

int listAlerts(Context& context, const Arguments& arguments) {
  const auto alerts = raisedAlerts(context);
  if (!alerts) return fail(context, alerts.reason());
  const auto count = newAlerts(*alerts, *context.host.defaults, context.clock.now());
  if (arguments.flag("--json"))
    printJSON(context.out, alertsValue(*alerts, count));
  else
    printAlerts(context, *alerts);
  if (count > 0 && !arguments.flag("--json"))
    context.out.line(context.out.ink(Ink::dim, localized("Not yet marked as seen: {count}. Mark them with "
                                                         "\"korvell alerts seen\".",
                                                         {{"count", std::to_string(count)}})));
  return exitOK;
}

int markAlertsSeen(Context& context, const Arguments& arguments) {
  const auto alerts = raisedAlerts(context);
  if (!alerts) return fail(context, alerts.reason());
  auto& defaults = *context.host.defaults;
  const auto now = context.clock.now();
  const auto count = newAlerts(*alerts, defaults, now);
  if (!markSeen(*alerts, defaults, now)) return fail(context, storingTrouble(defaults));
  if (arguments.flag("--json"))
    printJSON(context.out, Value::object({{"marked", std::int64_t(count)}}));
  else
    context.out.line(localized("Alerts marked as seen: {count}.", {{"count", std::to_string(count)}}));
  return exitOK;
}

int listKinds(Context& context, const Arguments& arguments) {
  const auto& defaults = *context.host.defaults;
  if (arguments.flag("--json")) {
    printJSON(context.out, alertKindsValue(defaults));
    return exitOK;
  }
  Table table({{localized("Kind")}, {localized("Alerts")}, {localized("When"), Column::Align::left, true}});
  for (const auto& kind : allCases<Kind>()) {
    const bool on = isEnabled(kind.value, defaults);
    table.row({std::string(kind.rawValue),
               {on ? localized("on") : localized("off"), on ? Ink::good : Ink::dim},
               localized(kind.title)});
  }
  table.print(context.out);
  return exitOK;
}

int setKind(Context& context, const Arguments& arguments, bool enabled) {
  const auto kind = *fromRawValue<Kind>(arguments.text("KIND").value_or(""));
  const auto answer = CommandActions(context, CommandActions::Where::keeperOrHere)
                          .perform(SwitchAlertsRequest{kind, enabled});
  return answer.worked ? listKinds(context, arguments) : fail(context, answer.message);
}

Option kindOption() { return {"KIND", Option::Kind::positional, "Which alerts", choicesOf<Kind>(), true}; }

} // namespace

Command alertsCommand() {
  return {"alerts",
          "Show what Korvell has alerted about, and choose what it alerts about",
          {jsonOption()},
          listAlerts,
          {{"list", "List them, the newest first", {jsonOption()}, listAlerts},
           writing({"seen", "Mark all as seen", {jsonOption()}, markAlertsSeen}),
           {"kinds", "List the kinds and their switches", {jsonOption()}, listKinds},
           writing({"on",
                    "Switch a kind on",
                    {kindOption(), jsonOption()},
                    [](Context& context, const Arguments& arguments) {
                      return setKind(context, arguments, true);
                    }}),
           writing({"off",
                    "Switch a kind off",
                    {kindOption(), jsonOption()},
                    [](Context& context, const Arguments& arguments) {
                      return setKind(context, arguments, false);
                    }})}};
}

} // namespace korvell
