// korvell startup: what the system starts by itself; leftovers of deleted applications can be removed.

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Startup/StartupScanner.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {

namespace {

struct Scanned {
  std::vector<StartupItem> items;
  bool fromKeeper = false;
};

constexpr Seconds scanPatience{6};
/// Stopping and disabling a job, and having the system read its files again.
constexpr Seconds removalPatience{40};

/// As of now. A keeper looks again and then shows the same.
Scanned scan(Context& context) {
  Scanned scanned;
  const auto answer = tellKeeper(context, Value::object({{"do", "rescanStartupItems"}}), scanPatience);
  const auto* told = answer ? answer->find("startupItems") : nullptr;
  scanned.fromKeeper = told && fromValue(*told, scanned.items);
  if (!scanned.fromKeeper) scanned.items = StartupScanner::scan(*context.host.launchItems);
  return scanned;
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
  const auto items = scan(context).items;
  if (arguments.flag("--json"))
    printJSON(context.out, Value::object({{"items", toValue(items)}}));
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
    fail(context, localized("there is no startup item {name}", {{"name", escapedControls(name)}}));
  } else {
    fail(context, localized("several startup items are called {name}; name one by its file:",
                            {{"name", escapedControls(name)}}));
    for (const auto& item : items) context.err.line("  " + escapedControls(item.plistPath));
  }
  return std::nullopt;
}

/// The keeper does it, so that nothing that it shows is out of date afterwards. Nothing when it does not
/// answer.
std::optional<Outcome> removeThroughKeeper(Context& context, const StartupItem& item) {
  Value request =
      Value::object({{"do", "removeStartupItem"}, {"plistPath", item.plistPath}, {"label", item.label}});
  request.set("program", item.program);
  const auto answer = tellKeeper(context, request, removalPatience);
  if (!answer) return std::nullopt;
  const auto *done = answer->find("ok"), *error = answer->find("error");
  if (done && done->asBool() == true) return success();
  return Failure{error && error->asString() ? *error->asString() : localized("Korvell refused.")};
}

Value outcomeValue(const StartupItem& item, const std::optional<Outcome>& removed) {
  Value value = Value::object({{"item", toValue(item)}});
  if (removed) value.set("outcome", *removed ? "trashed" : "failed");
  if (removed && !*removed) value.set("error", removed->reason());
  return value;
}

int runRemove(Context& context, const Arguments& arguments) {
  auto scanned = scan(context);
  const auto item = findItem(context, std::move(scanned.items), arguments.text("LABEL").value_or(""));
  if (!item) return exitFailed;
  const auto label = escapedControls(item->label);
  if (!item->isLeftover)
    return fail(context,
                localized("{label} is no leftover: only items whose program no longer exists are removed",
                          {{"label", label}}));
  if (!confirmed(context, arguments, label + "\n" + escapedControls(StartupScanner::confirmation(*item))))
    return exitFailed;
  const std::optional<Outcome> removed =
      scanned.fromKeeper ? removeThroughKeeper(context, *item)
                         : StartupScanner::remove(*item, *context.host.launchItems, *context.host.trash);
  const bool json = arguments.flag("--json");
  if (json) printJSON(context.out, outcomeValue(*item, removed));
  if (!removed)
    return fail(context,
                localized("Korvell did not answer; {label} may still be removed.", {{"label", label}}));
  if (!*removed) return fail(context, escapedControls(removed->reason()));
  if (!json)
    context.out.line(localized("Moved {path} to the Trash.", {{"path", escapedControls(item->plistPath)}}));
  return exitOK;
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
                    {{"LABEL", Option::Kind::positional, "The item's name or the path of its file", {}, true},
                     yesOption(),
                     jsonOption()},
                    runRemove})}};
}

} // namespace korvell
