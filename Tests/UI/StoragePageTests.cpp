#include "UI/Storage/StoragePage.h"

#include "Base/ManualQueue.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StorageKind;
using State = StoragePage::State;

constexpr std::int64_t giga = 1'000'000'000;

struct StoragePageTests : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::unique_ptr<Queue> slow = time.makeQueue("Korvell.storage");
  FakeUserDefaults defaults;
  std::map<StorageKind, StorageCategory> disk;
  StorageScanner scanner{
      {.measure = [this](StorageKind kind, const Cancellation&) -> std::optional<StorageCategory> {
         return disk.contains(kind) ? std::optional(disk.at(kind)) : std::nullopt;
       },
       .asksForAccess = true},
      defaults,
      *main,
      *slow};
  FakeTimeZone zone;
  StorageContext context{zone, *parseRFC3339("2026-11-20T12:00:00Z")};

  void put(StorageKind kind, std::vector<std::int64_t> sizes, StorageAction action = {}) {
    std::vector<StorageItem> items;
    for (const auto size : sizes) {
      const auto path = "/home/u/" + std::string(rawValue(kind)) + std::to_string(items.size());
      items.push_back({.id = path, .kind = kind, .title = "it", .bytes = size, .urls = {path}});
    }
    disk[kind] = items.empty() ? StorageCategory{kind} : *category(kind, items);
    disk[kind].action = std::move(action);
  }
  StoragePage page() const { return storagePage(scanner, context); }
  StoragePage scanned() {
    scanner.scan(allStorageKinds());
    time.run();
    return page();
  }
  StorageRow row(StorageKind kind) const {
    for (const auto& group : page().groups)
      for (const auto& row : group.rows)
        if (row.kind == kind) return row;
    return {};
  }
};

TEST_F(StoragePageTests, aScanIsFollowedFromItsStartToWhatItFound) {
  EXPECT_EQ(page().state, State::unscanned);
  EXPECT_TRUE(page().footer.isEmpty());

  scanner.scan({npm, trash});
  EXPECT_EQ(page().state, State::scanning);
  EXPECT_FALSE(page().canScan);
  std::vector<std::pair<std::string, double>> steps;
  std::string notice;
  const auto watch = scanner.progress.observe([&](double) {
    steps.emplace_back(page().step, page().progress);
    if (page().step == "Trash") notice = page().notice;
  });
  time.run();
  EXPECT_THAT(steps,
              ElementsAre(std::pair("npm cache", 0.0), std::pair("Trash", 0.5), std::pair("Trash", 1.0)));
  EXPECT_EQ(page().state, State::empty);
  EXPECT_TRUE(page().canScan);
  EXPECT_THAT(page().groups, IsEmpty());

  put(npm, {2 * giga});
  EXPECT_EQ(scanned().state, State::found);
  EXPECT_EQ(page().total, (Figure{"2.00", "GB"}));
  EXPECT_FALSE(page().footer.canAct) << "nothing is ticked by itself";
}

TEST_F(StoragePageTests, groupsAndRowsSayWhatWasFoundOnce) {
  put(nodeModules, {giga});
  put(homebrew, {giga});
  put(npm, {2 * giga, giga});
  put(pnpm, {4 * giga});
  put(trash, {});
  disk[trash].note = "No access.";
  put(docker, {giga});
  disk[docker].note = "Kept: 1 GB.";

  std::vector<std::pair<std::string, std::string>> heads;
  for (const auto& group : scanned().groups) heads.emplace_back(group.title, group.size);
  EXPECT_THAT(heads, ElementsAre(std::pair("Projects", "1.00 GB"), std::pair("Package managers", "8.00 GB"),
                                 std::pair("Docker", "1.00 GB"), std::pair("Your Mac", "0 B")));
  EXPECT_EQ(row(homebrew).explanation, explanation(homebrew));
  EXPECT_EQ(row(npm).explanation, explanation(npm));
  EXPECT_EQ(row(pnpm).explanation, "") << "its neighbour has just said it";
  EXPECT_EQ(row(pnpm).level, 1);
  EXPECT_EQ(row(npm).level, 0.75);

  EXPECT_EQ(row(trash).note, "No access.") << "in place of items";
  EXPECT_EQ(row(trash).size, "–");
  EXPECT_FALSE(row(trash).canTick || row(trash).unfolds);
  EXPECT_EQ(row(docker).note, "") << "it stands under the items, which are folded";
  EXPECT_THAT(row(npm).items, IsEmpty());
  context.unfolded = {npm, docker, trash};
  EXPECT_EQ(row(docker).note, "Kept: 1 GB.");
  EXPECT_EQ(row(npm).items.size(), 2u);
  EXPECT_FALSE(row(trash).isUnfolded);
  EXPECT_EQ(row(npm).items[1].spoken, "it, 1.00 gigabytes");
  EXPECT_EQ(row(npm).spoken, "npm cache, 3.00 gigabytes, Safe to remove");
}

TEST_F(StoragePageTests, boxesTickAndOnlyWhatIsTickedIsAskedFor) {
  put(npm, {2 * giga, giga});
  put(docker, {giga}, StorageAction::command("docker", {}, Seconds{1}));
  put(trash, {giga}, StorageAction::emptyTrash());
  scanned();
  EXPECT_EQ(cleanRequest(scanner), std::nullopt);

  toggle(scanner, "/home/u/npm1");
  EXPECT_EQ(row(npm).ticks, Ticks::some);
  EXPECT_EQ(page().footer.headline, "1 item, 1.00 GB");
  EXPECT_EQ(page().footer.action, "Move to Trash…");
  toggle(scanner, npm);
  EXPECT_EQ(row(npm).ticks, Ticks::all);
  toggle(scanner, npm);
  EXPECT_EQ(row(npm).ticks, Ticks::none);
  toggle(scanner, "of no item");
  EXPECT_THAT(*scanner.selection, IsEmpty());

  toggle(scanner, docker);
  EXPECT_EQ(page().footer.action, "Prune…");
  toggle(scanner, trash);
  EXPECT_EQ(page().footer.action, "Clean Up…") << "two sorts of clean-up";
  scanner.working.set({docker});
  EXPECT_EQ(page().footer.action, "Empty Trash…");
  EXPECT_FALSE(row(docker).canTick || page().canScan);
  toggle(scanner, docker);
  EXPECT_TRUE(scanner.selection->contains("/home/u/docker0")) << "it is being cleaned";
  const auto request = cleanRequest(scanner);
  ASSERT_TRUE(request);
  EXPECT_THAT(request->items, ElementsAre("/home/u/trash0"));
  EXPECT_EQ(request->scanned, (*scanner.result)->date);

  untickAll(scanner);
  EXPECT_THAT(*scanner.selection, ElementsAre("/home/u/docker0"));
  EXPECT_EQ(page().footer.headline, "Cleaning…");
  EXPECT_FALSE(page().footer.canAct);
}

TEST_F(StoragePageTests, whatACleanUpDidIsToldUntilSomethingIsTicked) {
  put(npm, {2 * giga, giga});
  scanned();
  scanner.freedTotal.set(128 * giga);
  toggle(scanner, "/home/u/npm0");
  EXPECT_EQ(page().footer.detail, "Freed with Korvell: 128 GB");
  scanner.feedback.set("Freed 5.00 GB.");
  EXPECT_EQ(page().footer.headline, "Freed 5.00 GB.");
  EXPECT_EQ(page().footer.tone, Tone::good);
  EXPECT_EQ(page().footer.detail, "1 item, 2.00 GB") << "what is still ticked is never hidden";
  toggle(scanner, "/home/u/npm1");
  EXPECT_EQ(page().footer.headline, "2 items, 3.00 GB");
  scanner.feedback.set("Nothing changed. The files may be in use or protected.");
  EXPECT_EQ(page().footer.tone, Tone::warning);

  for (int i = 1; i <= 12; ++i) context.log.push_back({context.now - Seconds{3600.0 * (13 - i)}, i * giga});
  EXPECT_EQ(page().log.size(), StoragePage::mostFreed);
  EXPECT_EQ(page().log[0], (StoragePage::Freed{"Today, 11:00", "12.0 GB"}));
}

TEST_F(StoragePageTests, theDiskIsThatOfTheHomeFolderAndItsPartsAreTheWhole) {
  const std::vector<VolumeInfo> volumes = {{"System", "/", 100 * giga, 10 * giga},
                                           {"Home", "/home", 250 * giga, 40 * giga},
                                           {"Other", "/home/u2", 1, 1}};
  EXPECT_EQ(volumeOf(volumes, "/home/u")->name, "Home");
  EXPECT_EQ(volumeOf({volumes.begin() + 1, volumes.end()}, "/root"), std::nullopt);

  put(npm, {30 * giga});
  context.volume = volumes[1];
  auto disk = scanned().disk;
  ASSERT_TRUE(disk);
  EXPECT_EQ(disk->stays.size, "180 GB");
  EXPECT_EQ(disk->outlook, "70.0 GB free if all of it goes");
  context.volume = VolumeInfo{"Small", "/home", 50 * giga, 40 * giga};
  disk = page().disk;
  EXPECT_EQ(disk->stays.bytes, 0) << "what was measured lies elsewhere too";
  EXPECT_EQ(disk->stays.bytes + disk->freed.bytes + disk->free.bytes, double(50 * giga));
  context.volume = VolumeInfo{"None", "/home"};
  EXPECT_EQ(page().disk, std::nullopt);
}

TEST_F(StoragePageTests, aMonthHasItsYearWhereItWouldMeanALaterOne) {
  const std::pair<const char*, const char*> rows[] = {
      {"2026-11-01T00:00:00Z", "last change in November"},
      {"2025-12-31T00:00:00Z", "last change in December"},
      {"2025-11-30T00:00:00Z", "last change in November 2025"},
      {"2026-12-01T00:00:00Z", "last change in December 2026"}};
  context.unfolded = {nodeModules, downloads};
  put(downloads, {giga});
  disk[downloads].items[0].date = context.now;
  for (const auto& [date, words] : rows) {
    put(nodeModules, {giga});
    disk[nodeModules].items[0].date = *parseRFC3339(date);
    scanned();
    EXPECT_EQ(row(nodeModules).items[0].date, words);
  }
  EXPECT_EQ(row(downloads).items[0].date, "added in November");
}

} // namespace
} // namespace korvell
