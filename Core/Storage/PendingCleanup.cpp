#include "Core/Storage/PendingCleanup.h"

#include "Base/Files.h"
#include "Base/Format.h"

#include <algorithm>
#include <atomic>
#include <fmt/ranges.h>

namespace korvell {

PendingCleanup PendingCleanup::of(const StorageScanResult& result, const std::vector<std::string>& ids,
                                  const std::string& home) {
  static std::atomic<std::uint64_t> last = 0;
  PendingCleanup pending{.id = ++last, .home = home};
  for (const auto& category : result.categories) {
    const auto before = pending.items.size();
    std::ranges::copy_if(category.items, std::back_inserter(pending.items), [&](const StorageItem& item) {
      return std::ranges::find(ids, item.id) != ids.end();
    });
    if (pending.items.size() > before) pending.categories.push_back(category);
  }
  return pending;
}

bool PendingCleanup::isPermanent() const {
  return std::ranges::any_of(categories, [](const StorageCategory& category) {
    return category.action.type != StorageAction::Type::trash;
  });
}

std::string PendingCleanup::title() const {
  std::int64_t bytes = 0;
  for (const auto& item : items) bytes = checkedSum(bytes, item.bytes);
  if (bytes == 0) return titleWithoutSize();
  return localized(isPermanent() ? "Free {size}?" : "Move {size} to the Trash?",
                   {{"size", Format::bytes(double(bytes))}});
}

std::string PendingCleanup::titleWithoutSize() const {
  const auto count = std::to_string(items.size());
  if (!isPermanent())
    return items.size() == 1 ? localized("Move 1 item to the Trash?")
                             : localized("Move {count} items to the Trash?", {{"count", count}});
  if (categories.size() > 1) return localized("Clean up {count} items?", {{"count", count}});
  const auto& action = categories.front().action;
  if (action.type == StorageAction::Type::emptyTrash) return localized("Empty the Trash?");
  return localized("Run \"{command}\"?", {{"command", commandLine(action)}});
}

std::string PendingCleanup::button() const {
  return localized(isPermanent() ? "Delete Permanently" : "Move to Trash");
}

std::string PendingCleanup::message() const {
  std::string message;
  for (const auto& category : categories) {
    if (!message.empty()) message += "\n\n";
    message += paragraph(category);
  }
  return message;
}

std::string PendingCleanup::paragraph(const StorageCategory& category) const {
  using Type = StorageAction::Type;
  if (category.action.type == Type::trash) return trashParagraph(category.kind);
  if (category.action.type == Type::emptyTrash) return emptyTrashParagraph(category);

  const auto line = commandLine(category.action);
  const StorageItem* item = category.items.empty() ? nullptr : &category.items.front();
  switch (category.kind) {
  case StorageKind::simulatorDevices:
    return localized(
        "Runs \"xcrun simctl delete unavailable\". Permanently deletes {simulators} for OS versions "
        "that are no longer installed, with their apps and data. This cannot be undone.",
        {{"simulators", item ? item->title : localized("the simulators")}});
  case StorageKind::homebrew:
    return localized(
        "Runs \"{command}\". Permanently deletes the downloads in {folder} and old versions of what "
        "you installed. This cannot be undone.",
        {{"command", line}, {"folder", item ? tildePath(item->id, home) : localized("the Homebrew cache")}});
  case StorageKind::docker:
    return localized(
        "Runs \"{command}\". Permanently deletes every stopped container, networks no container uses, "
        "dangling images and unused build cache. Tagged images and volumes are kept. Stopped containers "
        "cannot be recovered.",
        {{"command", line}});
  default:
    return localized("Runs \"{command}\". This cannot be undone.", {{"command", line}});
  }
}

std::string PendingCleanup::emptyTrashParagraph(const StorageCategory& category) const {
  std::vector<std::string> folders;
  for (const auto& item : category.items)
    for (const auto& folder : item.urls) folders.push_back(tildePath(folder, home));
  return localized("Permanently deletes everything in your Trash ({folders}). This cannot be undone.",
                   {{"folders", fmt::format("{}", fmt::join(folders, ", "))}});
}

std::string PendingCleanup::trashParagraph(StorageKind kind) const {
  constexpr std::size_t shown = 4;
  std::string text = localized("Moves to the Trash:");
  std::size_t count = 0;
  for (const auto& item : items) {
    if (item.kind != kind || ++count > shown) continue;
    text += '\n';
    text += item.urls.empty() ? item.title : tildePath(item.urls.front(), home);
  }
  if (count > shown)
    text.append("\n").append(localized("and {count} more", {{"count", std::to_string(count - shown)}}));
  const auto* ending =
      count == 1 ? "You can put it back from the Trash." : "You can put them back from the Trash.";
  return text.append("\n").append(localized(ending));
}

std::string actionTitle(const StorageCategory& category) {
  switch (category.action.type) {
  case StorageAction::Type::trash:
    return localized("Move to Trash…");
  case StorageAction::Type::emptyTrash:
    return localized("Empty Trash…");
  case StorageAction::Type::command:
    break;
  }
  return localized(category.kind == StorageKind::docker ? "Prune…" : "Clean Up…");
}

} // namespace korvell
