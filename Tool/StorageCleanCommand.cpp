// korvell storage clean: measures again, says what will happen, asks, does it and tells what it freed.

#include "App/ActionTexts.h"
#include "Base/Text.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/StorageCommand.h"
#include "Tool/Wrap.h"

#include <algorithm>

namespace korvell {
namespace {

/// The ids to clean: those that were named, or everything that need not be named.
struct Picked {
  std::vector<std::string> ids;
  std::string refusal; ///< why nothing is done; empty when there is no reason
};

/// Adds the item that was named, by its path or as one of the outputs shows that. What several are shown as
/// names none of them.
void pickNamed(const std::string& name, const std::vector<std::string>& known, const std::string& home,
               Picked& picked) {
  std::vector<std::string> meant;
  const auto isMeant = [&](const std::string& id) {
    return id == name || shownItem(id, home) == name || escapedControls(id) == name ||
           repairedUTF8(id) == name; // as JSON has it
  };
  std::ranges::copy_if(known, std::back_inserter(meant), isMeant);
  if (meant.size() == 1)
    picked.ids.push_back(meant.front());
  else if (meant.empty())
    picked.refusal = localized("there is no such item any more: {id}; nothing was done", {{"id", name}});
  else
    picked.refusal = localized("several items are shown as {id}; nothing was done", {{"id", name}});
}

Picked pick(const StorageScanResult& result, const std::vector<std::string>& named, const std::string& home) {
  Picked picked;
  std::vector<std::string> known;
  for (const auto& category : result.categories)
    for (const auto& item : category.items) {
      known.push_back(item.id);
      if (safety(category.kind) != StorageSafety::keep) picked.ids.push_back(item.id);
    }
  if (named.empty()) {
    if (picked.ids.size() < known.size())
      picked.refusal =
          localized("items to keep unless you are sure must be named with --item; nothing was done");
    return picked;
  }
  picked.ids.clear();
  for (const auto& name : named) pickNamed(name, known, home, picked);
  return picked;
}

/// Title and message, wrapped for the terminal that the question is put on.
std::string question(const Context& context, const ActionDescription& asked) {
  std::string text = asked.title;
  for (const auto paragraph : split(asked.message, '\n')) {
    const auto lines = wrapped(escapedControls(paragraph), std::min(context.err.columns(), widestSummary));
    if (lines.empty()) text += '\n';
    for (const auto& line : lines) text += '\n' + line;
  }
  return text;
}

int dryRun(Context& context, const Arguments& arguments, const ActionDescription& asked) {
  if (arguments.flag("--json")) {
    auto value = cleanupValue(asked);
    value.set("dryRun", true);
    printJSON(context.out, value);
    return exitOK;
  }
  context.out.line(question(context, asked));
  context.out.line();
  context.out.line(localized("Nothing was done. This is what would be:"));
  for (const auto& step : asked.details) context.out.line("  " + escapedControls(step));
  return exitOK;
}

/// With the notes, which may tell why.
int nothingFound(Context& context, const StorageScanResult& result) {
  for (const auto& category : result.categories)
    if (category.note)
      context.err.line("korvell: " + escapedControls(title(category.kind) + ": " + *category.note));
  return fail(context, localized("Nothing of that kind was found."));
}

} // namespace

int runStorageClean(Context& context, const Arguments& arguments) {
  // In this process: the terminal shows how far it is and can interrupt it, and what the user has ticked in a
  // window stays ticked.
  CommandActions actions(context, CommandActions::Where::here);
  auto& scanner = actions.storage();
  const auto result = measureStorage(context, actions, storageKinds(arguments));
  if (!result) return exitFailed;
  const auto picked = pick(*result, arguments.list("--item"), scanner.work()->home());
  if (!picked.refusal.empty()) return fail(context, escapedControls(picked.refusal));
  if (picked.ids.empty()) return nothingFound(context, *result);
  const auto described = actions.describe(CleanStorageRequest{picked.ids});
  if (!described) return fail(context, escapedControls(described.reason()));
  const auto& asked = described->description;
  if (arguments.flag("--dry-run")) return dryRun(context, arguments, asked);

  if (!actions.isConfirmed(arguments, question(context, asked))) return exitFailed;
  const auto answer = actions.perform(described->request, [&] {
    scanner.interrupt();
    context.err.line("korvell: " + localized("interrupted: ending what is under way, then measuring"));
    context.err.flush();
  });
  return tell(context, arguments, asked, answer, Telling::sum);
}

} // namespace korvell
