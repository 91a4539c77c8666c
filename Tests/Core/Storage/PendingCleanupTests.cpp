#include "Core/Storage/PendingCleanup.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::HasSubstr;
using enum StorageKind;

StorageCategory pipCategory(int count) {
  std::vector<StorageItem> items;
  for (int i = 1; i <= count; ++i) {
    const auto path = "/home/u/" + std::to_string(i);
    items.push_back({.id = path, .kind = pip, .title = "t", .bytes = 1'000'000, .urls = {path}});
  }
  return *category(pip, items);
}

StorageCategory commandCategory(StorageKind kind, StorageItem item, StorageAction action) {
  item.kind = kind;
  auto found = *category(kind, {std::move(item)});
  found.action = std::move(action);
  return found;
}

PendingCleanup everything(const StorageScanResult& result) {
  std::vector<std::string> ids;
  for (const auto& category : result.categories)
    for (const auto& item : category.items) ids.push_back(item.id);
  return PendingCleanup::of(result, ids, "/home/u");
}

TEST(PendingCleanupTests, movingNamesTheFirstFourItems) {
  const std::pair<int, std::string> rows[] = {
      {1, "~/1\nYou can put it back"},
      {4, "~/1\n~/2\n~/3\n~/4\nYou can put them back"},
      {5, "~/1\n~/2\n~/3\n~/4\nand 1 more\nYou can put them back"},
  };
  for (const auto& [count, text] : rows) {
    const auto pending = everything({{pipCategory(count)}, Date{}});
    EXPECT_EQ(pending.message(), "Moves to the Trash:\n" + text + " from the Trash.");
    EXPECT_EQ(pending.title(), "Move " + std::to_string(count) + ".00 MB to the Trash?");
    EXPECT_EQ(pending.button(), "Move to Trash");
  }
}

TEST(PendingCleanupTests, whatIsLostForGoodIsSaid) {
  const auto xcrun = StorageAction::command("/usr/bin/xcrun", {"simctl"}, Seconds{1});
  const auto brew = StorageAction::command("/usr/bin/brew", {"cleanup", "--all"}, Seconds{1});
  const auto other = StorageAction::command("/bin/x", {"y"}, Seconds{1});
  const struct {
    StorageKind kind;
    StorageItem item;
    StorageAction action;
    const char *says, *actionTitle;
  } rows[] = {
      {simulatorDevices, {.title = "3 simulators"}, xcrun, "deletes 3 simulators for", "Clean Up…"},
      {homebrew, {.id = "/home/u/a/b"}, brew, "Runs \"brew cleanup --all\". Perm", "Clean Up…"},
      {homebrew, {.id = "/home/u/a/b"}, brew, "the downloads in ~/a/b and", "Clean Up…"},
      {docker, {}, other, "Runs \"x y\". Permanently deletes every stopped container", "Prune…"},
      {trash,
       {.urls = {"/home/u/.Trash", "/disk/.Trash-1000/files"}},
       StorageAction::emptyTrash(),
       "everything in your Trash (~/.Trash, /disk/.Trash-1000/files). This cannot be undone.",
       "Empty Trash…"},
      {npm, {}, other, "Runs \"x y\". This cannot be undone.", "Clean Up…"},
  };
  for (const auto& row : rows) {
    auto category = commandCategory(row.kind, row.item, row.action);
    category.items[0].bytes = 5;
    const auto pending = everything({{category}, Date{}});
    EXPECT_THAT(pending.message(), HasSubstr(row.says));
    EXPECT_EQ(pending.title(), "Free 5 B?");
    EXPECT_EQ(actionTitle(category), row.actionTitle);
  }
}

TEST(PendingCleanupTests, noSizeIsAskedAboutThatIsNone) {
  const auto prune = StorageAction::command("/usr/bin/docker", {"system", "prune"}, Seconds{1});
  const auto move = [](int count) {
    auto category = pipCategory(count);
    for (auto& item : category.items) item.bytes = 0;
    return category;
  };
  const auto docked = commandCategory(docker, {.id = "d"}, prune),
             bin = commandCategory(trash, {.id = "t"}, StorageAction::emptyTrash());
  const std::pair<std::vector<StorageCategory>, const char*> rows[] = {
      {{move(1)}, "Move 1 item to the Trash?"},   {{move(2)}, "Move 2 items to the Trash?"},
      {{docked}, "Run \"docker system prune\"?"}, {{bin}, "Empty the Trash?"},
      {{move(2), bin}, "Clean up 3 items?"},
  };
  for (const auto& [categories, title] : rows) EXPECT_EQ(everything({categories, Date{}}).title(), title);
}

TEST(PendingCleanupTests, onePermanentCategoryMakesTheWholeCleanupPermanent) {
  const auto bin = commandCategory(trash, {.id = "t"}, StorageAction::emptyTrash());
  const auto pending = everything({{pipCategory(1), bin}, Date{}});
  EXPECT_EQ(pending.button(), "Delete Permanently");
  EXPECT_THAT(pending.message(),
              HasSubstr("~/1\nYou can put it back from the Trash.\n\nPermanently deletes"));
}

TEST(PendingCleanupTests, onlyTickedItemsOfTheResultAreTaken) {
  const StorageScanResult result{{pipCategory(3)}, Date{}};
  const auto first = PendingCleanup::of(result, {"/home/u/2", "/gone"}, "/home/u");
  ASSERT_EQ(first.items.size(), 1u);
  EXPECT_EQ(first.items[0].id, "/home/u/2");
  const auto none = PendingCleanup::of(result, {"/gone"}, "/home/u");
  EXPECT_TRUE(none.items.empty() && none.categories.empty());
  EXPECT_NE(first.id, none.id);
}

} // namespace
} // namespace korvell
