// korvell startup: what the system starts by itself; leftovers of deleted applications can be removed.

#include "Base/Format.h"
#include "Core/Startup/StartupScanner.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {

namespace {

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

void printItems(Terminal& out, const std::vector<StartupItem>& items) {
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
  const auto explanation = localized(
      "Background programs that launch with your Mac. Leftovers point to programs that no longer exist, "
      "usually from apps you already deleted.");
  for (const auto& line : wrapped(explanation, std::min(out.columns(), widestSummary)))
    out.line(out.ink(Ink::dim, line));
}

int runList(Context& context, const Arguments& arguments) {
  const auto items = StartupScanner::scan(*context.host.launchItems);
  if (arguments.flag("--json"))
    printJSON(context.out, Value::object({{"items", toValue(items)}}));
  else
    printItems(context.out, items);
  return exitOK;
}

/// The only item of that label or path; otherwise says what is wrong.
std::optional<StartupItem> findItem(Context& context, const std::string& name) {
  auto items = StartupScanner::scan(*context.host.launchItems);
  std::erase_if(items, [&](const StartupItem& item) { return item.label != name && item.plistPath != name; });
  if (items.size() == 1) return std::move(items.front());
  if (items.empty()) {
    fail(context, localized("there is no startup item {name}", {{"name", name}}));
  } else {
    fail(context,
         localized("several startup items are called {name}; name one by its file:", {{"name", name}}));
    for (const auto& item : items) context.err.line("  " + item.plistPath);
  }
  return std::nullopt;
}

int runRemove(Context& context, const Arguments& arguments) {
  const auto item = findItem(context, arguments.text("LABEL").value_or(""));
  if (!item) return exitFailed;
  if (!item->isLeftover)
    return fail(context,
                localized("{label} is no leftover: only items whose program no longer exists are removed",
                          {{"label", item->label}}));
  if (!confirmed(context, arguments, item->label + "\n" + StartupScanner::confirmation(*item)))
    return exitFailed;
  const auto removed = StartupScanner::remove(*item, *context.host.launchItems, *context.host.trash);
  if (!removed) return fail(context, removed.reason());
  context.out.line(localized("Moved {path} to the Trash.", {{"path", item->plistPath}}));
  return exitOK;
}

} // namespace

Command startupCommand() {
  return {"startup",
          "Show the programs that start by themselves, and remove leftovers",
          {jsonOption()},
          runList,
          {{"list", "List them, leftovers first", {jsonOption()}, runList},
           {"remove",
            "Move a leftover's file to the Trash",
            {{"LABEL", Option::Kind::positional, "The item's name or the path of its file", {}, true},
             yesOption()},
            runRemove}}};
}

} // namespace korvell
