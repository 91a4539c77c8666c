#include "Core/Storage/StorageCleanup.h"

#include "Base/FileLock.h"
#include "Base/Format.h"
#include "Base/UserFolders.h"
#include "Core/Storage/StorageScan.h"

#include <algorithm>
#include <fmt/ranges.h>
#include <set>

namespace korvell {

StorageWork storageWork(std::function<const StorageScan&()> scan, bool asksForAccess,
                        std::string dataFolder) {
  using Items = std::vector<StorageItem>;
  return {.measure = [scan](StorageKind kind,
                            const Cancellation& cancellation) { return scan().scan(kind, cancellation); },
          .perform =
              [scan](const StorageAction& action, const Items& items, const Cancellation& cancellation) {
                return scan().perform(action, items, cancellation);
              },
          .asksForAccess = asksForAccess,
          .dataFolder = std::move(dataFolder),
          .preview = [scan](const StorageAction& action,
                            const Items& items) { return scan().preview(action, items); },
          .home = [scan] { return scan().locations().home; }};
}

CleanupPlan CleanupPlan::of(const StorageScanResult& result, const std::vector<StorageItem>& items) {
  CleanupPlan plan;
  for (const auto& category : result.categories)
    for (const auto& item : category.items) {
      if (std::ranges::find(items, item) == items.end()) continue;
      plan.before.emplace(category.kind, category);
      auto step = std::ranges::find(plan.steps, category.action, &Step::action);
      if (step == plan.steps.end()) step = plan.steps.insert(step, {category.action, {}});
      step->items.push_back(item);
    }
  std::stable_partition(plan.steps.begin(), plan.steps.end(),
                        [](const Step& step) { return step.action.type == StorageAction::Type::emptyTrash; });
  return plan;
}

namespace {

/// Bytes that are left of what the category held. Of application caches only the largest are listed, so that
/// one that moves up the list when another goes was there before and is not counted. Of a tool that no longer
/// answers nothing is known to be gone.
std::int64_t bytesLeft(const StorageCategory& before, const StorageCategory& now) {
  if (!now.isMeasured) return before.bytes;
  if (before.kind != StorageKind::appCaches) return now.bytes;
  std::int64_t left = 0;
  for (const auto& item : now.items)
    if (std::ranges::find(before.items, item.id, &StorageItem::id) != before.items.end())
      left = checkedSum(left, item.bytes);
  return left;
}

bool isCommand(const CleanupPlan::Step& step) { return step.action.type == StorageAction::Type::command; }

/// Held for as long as a clean-up with a command lasts; `isHeld` when somebody else has it.
std::optional<FileLock> lockFor(const CleanupPlan& plan, const StorageWork& work,
                                const Cancellation& cancellation, bool& isHeld) {
  isHeld = false;
  if (work.dataFolder.empty() || std::ranges::none_of(plan.steps, isCommand)) return std::nullopt;
  ensurePrivateFolder(work.dataFolder);
  return FileLock::acquire(work.dataFolder + "/clean-up.lock", work.patience, &isHeld, cancellation);
}

ActionReport runCommand(const CleanupPlan::Step& step, const StorageWork& work,
                        const Cancellation& cancellation) {
  const auto kind = step.items.front().kind;
  const auto begun = work.measure(kind, {});
  auto report = work.perform(step.action, step.items, cancellation);
  report.done[kind].bytes = begun && !report.notStarted ? begun->bytes : 0;
  return report;
}

} // namespace

CleanupOutcome carryOut(const CleanupPlan& plan, const StorageWork& work, const Cancellation& cancellation) {
  CleanupOutcome outcome;
  std::set<StorageKind> untouched;
  const auto lock = lockFor(plan, work, cancellation, outcome.isBusy);
  for (const auto& step : plan.steps) {
    if (cancellation.isCancelled() || outcome.isBusy) {
      for (const auto& item : step.items) untouched.insert(item.kind);
      continue;
    }
    auto report = isCommand(step) ? runCommand(step, work, cancellation)
                                  : work.perform(step.action, step.items, cancellation);
    if (isCommand(step) && report.done[step.items.front().kind].count == 0) outcome.commandFailed = true;
    outcome.done.merge(report.done);
    std::ranges::move(report.problems, std::back_inserter(outcome.problems));
    if (step.action.type != StorageAction::Type::emptyTrash) continue;
    // Counted now, before the next step moves something into the Trash.
    const auto trash = work.measure(StorageKind::trash, {});
    outcome.after[StorageKind::trash] = trash ? trash->bytes : 0;
  }
  outcome.interrupted = cancellation.isCancelled();
  if (!untouched.empty() && outcome.interrupted)
    outcome.problems.push_back(localized("What was not begun by then was left alone."));
  for (const auto& [kind, before] : plan.before) {
    if (untouched.contains(kind)) {
      outcome.after[kind] = before.bytes;
      outcome.rescanned.push_back(before);
      continue;
    }
    auto now = work.measure(kind, {});
    outcome.after.try_emplace(kind, now ? bytesLeft(before, *now) : 0);
    if (now) outcome.rescanned.push_back(std::move(*now));
  }
  return outcome;
}

FreedBytes freedBytes(const CleanupPlan& plan, const CleanupOutcome& outcome) {
  FreedBytes freed;
  for (const auto& [kind, before] : plan.before) {
    const auto found = outcome.done.find(kind);
    const auto done = found == outcome.done.end() ? ActionReport::Done{} : found->second;
    const auto measured = outcome.after.find(kind);
    const auto after = measured == outcome.after.end() ? 0 : measured->second;
    const auto lost = [&](std::int64_t start) { return std::max<std::int64_t>(0, start - after); };
    switch (before.action.type) {
    case StorageAction::Type::trash:
      freed.moved = checkedSum(freed.moved, std::min(lost(before.bytes), done.bytes));
      freed.itemsMoved += done.count;
      break;
    case StorageAction::Type::emptyTrash:
      freed.emptied = checkedSum(freed.emptied, std::min(lost(before.bytes), done.bytes));
      freed.entriesRemoved += done.count;
      break;
    case StorageAction::Type::command:
      freed.commands = checkedSum(freed.commands, lost(std::min(before.bytes, done.bytes)));
      freed.commandsRun += done.count;
    }
  }
  return freed;
}

namespace {

std::string counted(std::size_t count, const char* one, const char* several) {
  return count == 1 ? localized(one) : localized(several, {{"count", std::to_string(count)}});
}

} // namespace

std::string FreedBytes::feedback() const {
  std::vector<std::string> sentences;
  const auto gone = checkedSum(commands, emptied);
  if (gone >= 1)
    sentences.push_back(localized("Freed {size}.", {{"size", Format::bytes(double(gone))}}));
  else if (entriesRemoved > 0)
    sentences.push_back(
        counted(entriesRemoved, "Removed 1 item from the Trash.", "Removed {count} items from the Trash."));
  else if (commandsRun > 0)
    sentences.push_back(localized("The command ran, but nothing that can be measured was freed."));
  if (moved >= 1)
    sentences.push_back(localized("Moved {size} to the Trash. Empty the Trash to get the space back.",
                                  {{"size", Format::bytes(double(moved))}}));
  else if (itemsMoved > 0)
    sentences.push_back(
        counted(itemsMoved, "Moved 1 item to the Trash.", "Moved {count} items to the Trash."));
  if (sentences.empty()) return localized("Nothing changed. The files may be in use or protected.");
  return fmt::format("{}", fmt::join(sentences, " "));
}

std::string feedback(const CleanupOutcome& outcome, const FreedBytes& freed) {
  if (outcome.interrupted && freed == FreedBytes{})
    return localized("Interrupted before anything was freed.");
  if (outcome.isBusy) return localized("Another clean-up is running. Nothing was done.");
  return freed.feedback();
}

StorageScanResult merged(StorageScanResult result, const CleanupPlan& plan, const CleanupOutcome& outcome) {
  std::erase_if(result.categories,
                [&](const StorageCategory& category) { return plan.before.contains(category.kind); });
  std::ranges::copy(outcome.rescanned, std::back_inserter(result.categories));
  std::ranges::stable_sort(result.categories, {}, &StorageCategory::kind);
  return result;
}

} // namespace korvell
