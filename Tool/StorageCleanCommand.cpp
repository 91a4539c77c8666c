// korvell storage clean: measures again, says what will happen, asks, does it and tells what it freed.

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Storage/PendingCleanup.h"
#include "Core/Storage/StorageCleanup.h"
#include "Core/Storage/StorageHost.h"
#include "Core/Storage/StorageLog.h"
#include "Tool/Commands.h"
#include "Tool/Confirmation.h"
#include "Tool/Interruptible.h"
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

/// What a step does, one line for each thing that it touches.
std::vector<std::string> preview(const CleanupPlan::Step& step, Host& host) {
  std::vector<std::string> lines;
  const auto mounts = host.fileTree->mounts();
  const auto add = [&](const std::string& what, const std::string& path) {
    const auto* mount = mountInside(path, mounts);
    lines.push_back(mount ? localized("leave alone: ") + path + " (" + refusal(*mount) + ")" : what + path);
  };
  switch (step.action.type) {
  case StorageAction::Type::trash:
    for (const auto& item : step.items)
      for (const auto& path : item.urls) add(localized("move to the Trash: "), path);
    break;
  case StorageAction::Type::emptyTrash:
    for (const auto& item : step.items)
      for (const auto& folder : item.urls)
        for (const auto& entry : host.fileTree->list(folder).entries)
          add(localized("delete permanently: "), folder + "/" + entry.name);
    break;
  case StorageAction::Type::command: {
    auto line = step.action.path;
    for (const auto& argument : step.action.arguments) line += " " + argument;
    std::string reason;
    for (const auto& item : step.items)
      for (const auto& place : item.commandPlaces)
        if (const auto* mount = mountInside(place, mounts)) reason = refusal(*mount);
    lines.push_back(reason.empty() ? localized("run: ") + line
                                   : localized("leave alone: ") + line + " (" + reason + ")");
  }
  }
  return lines;
}

std::vector<std::string> preview(const CleanupPlan& plan, Host& host) {
  std::vector<std::string> lines;
  for (const auto& step : plan.steps) std::ranges::move(preview(step, host), std::back_inserter(lines));
  return lines;
}

Value describe(const PendingCleanup& pending, const std::vector<std::string>& steps) {
  return Value::object({{"title", pending.title()},
                        {"message", pending.message()},
                        {"items", toValue(pending.items)},
                        {"steps", toValue(steps)}});
}

/// Title and message, wrapped for the terminal that the question is put on.
std::string question(const Context& context, const PendingCleanup& pending) {
  std::string text = pending.title();
  const std::string message = pending.message();
  for (const auto paragraph : split(message, '\n')) {
    const auto lines = wrapped(escapedControls(paragraph), std::min(context.err.columns(), widestSummary));
    if (lines.empty()) text += '\n';
    for (const auto& line : lines) text += '\n' + line;
  }
  return text;
}

int dryRun(Context& context, const Arguments& arguments, const PendingCleanup& pending,
           const CleanupPlan& plan) {
  const auto steps = preview(plan, context.host);
  if (arguments.flag("--json")) {
    auto value = describe(pending, steps);
    value.set("dryRun", true);
    printJSON(context.out, value);
    return exitOK;
  }
  context.out.line(question(context, pending));
  context.out.line();
  for (const auto& step : steps) context.out.line(localized("would ") + escapedControls(step));
  return exitOK;
}

int carryOut(Context& context, const Arguments& arguments, const PendingCleanup& pending,
             const CleanupPlan& plan, const StorageWork& work) {
  const auto steps = preview(plan, context.host);
  CleanupOutcome outcome;
  runInterruptibly([&](const Cancellation& cancellation) { outcome = carryOut(plan, work, cancellation); },
                   [&] {
                     context.err.line("korvell: " +
                                      localized("interrupted: ending what is under way, then measuring"));
                     context.err.flush();
                   });
  const auto freed = freedBytes(plan, outcome);
  const auto feedback = korvell::feedback(outcome, freed);
  if (!StorageLog::record(freed.logged(), context.clock.now(), *context.host.defaults))
    context.err.line(
        "korvell: " +
        localized("What was freed could not be added to the log or to its total in the settings."));
  for (const auto& problem : outcome.problems) context.err.line("korvell: " + escapedControls(problem));
  if (arguments.flag("--json")) {
    auto value = describe(pending, steps);
    value.set("dryRun", false);
    value.set(
        "freed",
        Value::object({{"moved", freed.moved}, {"emptied", freed.emptied}, {"commands", freed.commands}}));
    value.set("feedback", feedback);
    value.set("problems", toValue(outcome.problems));
    value.set("interrupted", outcome.interrupted);
    printJSON(context.out, value);
  } else {
    context.out.line(feedback);
  }
  const bool failed = outcome.interrupted || outcome.commandFailed || freed == FreedBytes{};
  return failed ? exitFailed : exitOK;
}

/// With the notes, which may tell why.
int nothingFound(Context& context, const StorageScanResult& result) {
  for (const auto& category : result.categories)
    if (category.note)
      context.err.line("korvell: " + escapedControls(title(category.kind) + ": " + *category.note));
  return fail(context, localized("nothing of that kind was found"));
}

} // namespace

int runStorageClean(Context& context, const Arguments& arguments) {
  const auto scan = makeStorageScan(context.host, context.clock);
  const auto measured = measureStorage(context, *scan, storageKinds(arguments));
  if (!measured) return exitFailed;
  const auto& result = *measured;
  const auto picked = pick(result, arguments.list("--item"), scan->locations().home);
  if (!picked.refusal.empty()) return fail(context, escapedControls(picked.refusal));

  const auto pending = PendingCleanup::of(result, picked.ids, scan->locations().home);
  const auto plan = CleanupPlan::of(result, pending.items);
  if (plan.empty()) return nothingFound(context, result);
  if (arguments.flag("--dry-run")) return dryRun(context, arguments, pending, plan);

  if (!confirmed(context, arguments, question(context, pending))) return exitFailed;
  return carryOut(context, arguments, pending, plan, storageWork(scan, context.host.folders.data));
}

} // namespace korvell
