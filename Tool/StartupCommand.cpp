// korvell startup: what the system starts by itself; leftovers of deleted applications can be removed.

#include "App/JSONDocuments.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Startup/StartupScanner.h"
#include "Tool/CommandActions.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Suggestions.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {

namespace {

/// As of now. A keeper looks again and then shows the same.
std::vector<StartupItem> scan(Context& context, CommandActions& actions) {
  const auto answer = actions.isKeepers() ? actions.perform(RescanStartupItemsRequest{}) : ActionAnswer{};
  const auto* told = answer.json.find("startupItems");
  std::vector<StartupItem> items;
  return told && fromValue(*told, items) ? items : StartupScanner::scan(*context.host.launchItems);
}

Table::Cell state(const StartupItem& item) {
  if (item.isLeftover) return {localized("leftover"), Ink::warning};
  if (item.isLoaded) return {localized("loaded"), Ink::good};
  return {item.runsAtLoad || item.keepAlive ? localized("starts by itself") : localized("waits to be asked"),
          Ink::dim};
}

std::string program(const StartupItem& item) {
  if (runsInsideApplication(item) && !item.isLeftover) return localized("Runs from inside its app");
  return item.program.value_or(noFigure);
}

void printHint(Terminal& out, std::string_view text) {
  for (const auto& line : wrapped(text, std::min(out.columns(), widestSummary)))
    out.line(out.ink(Ink::dim, line));
}

/// Why the states of some of the items say nothing about being loaded.
std::vector<std::string> silences(const std::vector<StartupItem>& items, LaunchItems& launchItems) {
  const auto jobs = launchItems.loadedJobs();
  std::map<std::string, std::set<LaunchScope>> scopes; // by reason
  for (const auto& item : items)
    if (const auto& reason = jobs.of(item.scope).silence; !reason.empty()) scopes[reason].insert(item.scope);
  std::vector<std::string> lines;
  for (const auto& [reason, of] : scopes) {
    std::string line;
    for (const auto scope : of) line += (line.empty() ? "" : ", ") + title(scope);
    lines.push_back(line + ": " + reason);
  }
  return lines;
}

void printItems(Terminal& out, const std::vector<StartupItem>& items, LaunchItems& launchItems) {
  if (items.empty()) {
    out.line(localized("No startup items"));
    return;
  }
  Table table({{localized("Name"), Column::Align::left, true, 16},
               {localized("For")},
               {localized("State")},
               {localized("Program"), Column::Align::left, true, 16}});
  for (const auto& item : items) {
    const bool gone = item.isLeftover;
    table.row(
        {item.label, title(item.scope), state(item), {program(item), gone ? Ink::warning : Ink::plain}});
  }
  table.print(out);
  out.line();
  printHint(out, localized("Background programs that launch with your Mac. Leftovers point to programs that "
                           "no longer exist, usually from apps you already deleted."));
  const auto reasons = silences(items, launchItems);
  if (!reasons.empty()) printHint(out, localized("Which of them are loaded is not known."));
  for (const auto& reason : reasons) printHint(out, reason);
}

int runList(Context& context, const Arguments& arguments) {
  CommandActions actions(context, CommandActions::Where::keeperOrHere);
  const auto items = scan(context, actions);
  if (arguments.flag("--json"))
    printJSON(context.out, startupItemsValue(items));
  else
    printItems(context.out, items, *context.host.launchItems);
  return exitOK;
}

/// The only item of that label or path; otherwise says what is wrong.
std::optional<StartupItem> findItem(Context& context, std::vector<StartupItem> items,
                                    const std::string& name) {
  std::erase_if(items, [&](const StartupItem& item) { return item.label != name && item.plistPath != name; });
  if (items.size() == 1) return std::move(items.front());
  if (items.empty()) {
    fail(context, localized("There is no startup item {name}.", {{"name", escapedControls(name)}}));
  } else {
    fail(context, localized("Several startup items are called {name}; name one by its file:",
                            {{"name", escapedControls(name)}}));
    for (const auto& item : items) context.err.line("  " + escapedControls(item.plistPath));
  }
  return std::nullopt;
}

int runRemove(Context& context, const Arguments& arguments) {
  CommandActions actions(context, CommandActions::Where::keeperOrHere);
  const auto item = findItem(context, scan(context, actions), arguments.text("LABEL").value_or(""));
  if (!item) return exitFailed;
  const auto described =
      actions.describe(RemoveStartupItemRequest{item->plistPath, item->label, item->program});
  if (!described) return fail(context, escapedControls(described.reason()));
  const auto& asked = described->description;
  if (!actions.isConfirmed(arguments, escapedControls(item->label) + "\n" + escapedControls(asked.message)))
    return exitFailed;
  return tell(context, arguments, asked, actions.perform(described->request));
}

} // namespace

Command startupCommand() {
  return {"startup",
          "Show the programs that start by themselves, and remove leftovers",
          {jsonOption()},
          runList,
          {{"list", "List them, leftovers first", {jsonOption()}, runList},
           writing({"remove",
                    "Move a leftover's file to the Trash",
                    {{"LABEL",
                      Option::Kind::positional,
                      "The item's name or the path of its file",
                      {},
                      true,
                      suggestedLeftovers},
                     yesOption(),
                     jsonOption()},
                    runRemove})}};
}

} // namespace korvell
