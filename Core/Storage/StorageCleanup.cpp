#include "Core/Storage/StorageCleanup.h"

#include "Base/Format.h"
#include "Core/Storage/StorageScan.h"

#include <algorithm>
#include <set>

namespace korvell {

StorageWork storageWork(std::shared_ptr<const StorageScan> scan) {
  return {.measure = [scan](StorageKind kind,
                            const Cancellation& cancellation) { return scan->scan(kind, cancellation); },
          .perform = [scan](const StorageAction& action,
                            const std::vector<StorageItem>& items) { return scan->perform(action, items); },
          .asksForAccess = scan->locations().asksForAccess};
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
/// one that moves up the list when another goes was there before and is not counted.
std::int64_t bytesLeft(const StorageCategory& before, const StorageCategory& now) {
  if (before.kind != StorageKind::appCaches) return now.bytes;
  std::int64_t left = 0;
  for (const auto& item : now.items)
    if (std::ranges::find(before.items, item.id, &StorageItem::id) != before.items.end())
      left = checkedSum(left, item.bytes);
  return left;
}

} // namespace

CleanupOutcome carryOut(const CleanupPlan& plan, const StorageWork& work) {
  CleanupOutcome outcome;
  for (const auto& step : plan.steps) {
    std::ranges::move(work.perform(step.action, step.items), std::back_inserter(outcome.problems));
    if (step.action.type != StorageAction::Type::emptyTrash) continue;
    // Counted now, before the next step moves something into the Trash.
    const auto trash = work.measure(StorageKind::trash, {});
    outcome.after[StorageKind::trash] = trash ? trash->bytes : 0;
  }
  for (const auto& [kind, before] : plan.before) {
    auto now = work.measure(kind, {});
    outcome.after.try_emplace(kind, now ? bytesLeft(before, *now) : 0);
    if (now) outcome.rescanned.push_back(std::move(*now));
  }
  return outcome;
}

FreedBytes freedBytes(const CleanupPlan& plan, const CleanupOutcome& outcome) {
  FreedBytes freed;
  for (const auto& [kind, before] : plan.before) {
    auto& sum = before.action.type == StorageAction::Type::trash        ? freed.moved
                : before.action.type == StorageAction::Type::emptyTrash ? freed.emptied
                                                                        : freed.commands;
    const auto after = outcome.after.find(kind);
    sum = checkedSum(
        sum, std::max<std::int64_t>(0, before.bytes - (after == outcome.after.end() ? 0 : after->second)));
  }
  return freed;
}

std::string FreedBytes::feedback() const {
  const auto gone = checkedSum(commands, emptied);
  std::string text;
  if (gone >= 1) text = localized("Freed {size}.", {{"size", Format::bytes(double(gone))}});
  if (moved >= 1) {
    if (!text.empty()) text += ' ';
    text += localized("Moved {size} to the Trash. Empty the Trash to get the space back.",
                      {{"size", Format::bytes(double(moved))}});
  }
  return text.empty() ? localized("Nothing changed. The files may be in use or protected.") : text;
}

StorageScanResult merged(StorageScanResult result, const CleanupPlan& plan, const CleanupOutcome& outcome) {
  std::erase_if(result.categories,
                [&](const StorageCategory& category) { return plan.before.contains(category.kind); });
  std::ranges::copy(outcome.rescanned, std::back_inserter(result.categories));
  std::ranges::stable_sort(result.categories, {}, &StorageCategory::kind);
  return result;
}

} // namespace korvell
