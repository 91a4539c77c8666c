#include "Core/Storage/StorageScanner.h"

#include "Base/ManualQueue.h"
#include "Core/Storage/StorageFound.h"
#include "Core/Storage/StorageLog.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StorageKind;

/// What lies on a disk that only the test knows: bytes of a kind, one item each.
struct StorageScannerTests : testing::Test {
  ManualScheduler time;
  std::unique_ptr<Queue> main = time.makeMainQueue();
  std::unique_ptr<Queue> slow = time.makeQueue("Korvell.storage");
  FakeUserDefaults defaults;
  std::map<StorageKind, std::int64_t> disk = {{npm, 100}, {pip, 50}, {trash, 30}};
  std::function<void(StorageKind)> whileMeasuring;
  std::function<void()> whilePerforming;
  bool endedMeanwhile = false;
  bool asks = false;
  std::unique_ptr<StorageScanner> scanner = make();

  std::unique_ptr<StorageScanner> make() {
    StorageWork work{
        .measure = [this](StorageKind kind, const Cancellation&) -> std::optional<StorageCategory> {
          if (whileMeasuring) whileMeasuring(kind);
          const auto size = disk.find(kind);
          if (size == disk.end()) return std::nullopt;
          auto found =
              category(kind, {{.id = std::string(rawValue(kind)), .kind = kind, .bytes = size->second}});
          if (kind == trash) found->action = StorageAction::emptyTrash();
          return found;
        },
        .perform =
            [this](const StorageAction&, const std::vector<StorageItem>& items, const Cancellation& ending) {
              if (whilePerforming) whilePerforming();
              endedMeanwhile = ending.isCancelled();
              ActionReport report;
              for (const auto& item : items)
                if (disk.erase(item.kind) > 0) report.done[item.kind] = {1, item.bytes};
              return report;
            },
        .asksForAccess = asks};
    return std::make_unique<StorageScanner>(std::move(work), defaults, *main, *slow);
  }
  void scan(const std::vector<StorageKind>& kinds) {
    scanner->scan(kinds);
    time.run();
  }
  std::vector<StorageItem> items(StorageKind kind) { return (*scanner->result)->category(kind)->items; }
  std::vector<StorageKind> found() const {
    std::vector<StorageKind> kinds;
    for (const auto& category : (*scanner->result)->categories) kinds.push_back(category.kind);
    return kinds;
  }
  void clean(StorageKind kind) {
    scanner->clean(items(kind));
    time.run();
  }
};

TEST_F(StorageScannerTests, whatAScanFoundOutlivesTheProcess) {
  const auto bytes = [this](StorageKind kind) -> std::optional<std::int64_t> {
    const auto all = StorageFound::all(defaults);
    const auto found = all.find(kind);
    return found == all.end() ? std::nullopt : std::optional(found->second.bytes);
  };
  EXPECT_TRUE(StorageFound::all(defaults).empty());
  scan({npm, pip, yarn});
  const auto first = time.clock().now();
  EXPECT_EQ(bytes(npm), 100);
  EXPECT_EQ(bytes(yarn), 0) << "looked for, and nothing is there";
  EXPECT_EQ(bytes(trash), std::nullopt);
  time.advance(Seconds{60});
  disk[pip] = 70;
  scan({pip});
  EXPECT_EQ(bytes(pip), 70);
  EXPECT_EQ(bytes(npm), 100) << "another kind's scan says nothing of it";
  EXPECT_EQ(StorageFound::all(defaults)[npm].date, first);
  clean(pip);
  EXPECT_EQ(bytes(pip), 0);
  auto unmeasured = **scanner->result;
  unmeasured.categories = {{.kind = npm, .isMeasured = false}};
  StorageFound::remember(unmeasured, {npm}, defaults);
  EXPECT_EQ(bytes(npm), 100);
  defaults.set(StorageFound::key, Value::object({{"npm", 7}, {"sun", Value::object()}}));
  EXPECT_TRUE(StorageFound::all(defaults).empty());
}

TEST_F(StorageScannerTests, aScanTellsWhereItIsAndWhatItFound) {
  std::vector<double> progress;
  std::vector<std::string> steps;
  const auto one = scanner->progress.observe([&](double value) { progress.push_back(value); });
  const auto two = scanner->step.observe([&](const std::string& value) { steps.push_back(value); });
  scanner->selection.set({"npm"});
  scanner->scan({npm, go, pip, trash});
  EXPECT_TRUE(*scanner->isScanning);
  EXPECT_THAT(*scanner->selection, IsEmpty());
  EXPECT_EQ(scanner->reclaimableBytes(), std::nullopt) << "absent while one runs";
  time.run();
  EXPECT_FALSE(*scanner->isScanning);
  EXPECT_THAT(progress, ElementsAre(0, 0, 0.25, 0.5, 0.75, 1));
  EXPECT_THAT(steps, ElementsAre("", "npm cache", "Go build cache", "pip cache", "Trash", ""));
  EXPECT_THAT(found(), ElementsAre(npm, pip, trash));
  EXPECT_EQ((*scanner->result)->date, time.clock().now());
  EXPECT_EQ(scanner->reclaimableBytes(), 180);
}

TEST_F(StorageScannerTests, onlyTheSecondOfTwoScansIsPublished) {
  int results = 0;
  const auto seen = scanner->result.observe([&](const auto& result) { results += result.has_value(); });
  scanner->scan({npm});
  scan({pip});
  EXPECT_EQ(results, 1);
  EXPECT_THAT(found(), ElementsAre(pip));

  // The same when the second begins while the first is measuring.
  whileMeasuring = [&](StorageKind kind) {
    if (kind == npm) main->async([&] { scanner->scan({trash}); });
    whileMeasuring = {};
  };
  scan({npm, pip});
  EXPECT_THAT(found(), ElementsAre(trash));
}

TEST_F(StorageScannerTests, aCancelledScanLeavesNothing) {
  scanner->cancel(); // without a scan nothing changes
  std::vector<StorageKind> measured;
  whileMeasuring = [&](StorageKind kind) {
    measured.push_back(kind);
    main->sync([&] { scanner->cancel(); });
  };
  scan({npm, pip});
  EXPECT_THAT(measured, ElementsAre(npm));
  EXPECT_FALSE(*scanner->isScanning);
  EXPECT_EQ(*scanner->result, std::nullopt);
  EXPECT_EQ(*scanner->step, "");
}

TEST_F(StorageScannerTests, whereTheSystemAsksTheUserIsTold) {
  std::vector<std::optional<std::string>> notices;
  for (const bool system : {false, true}) {
    asks = system;
    scanner = make();
    const auto seen = scanner->notice.observe([&](const auto& notice) { notices.push_back(notice); });
    scan({npm, trash, downloads, pip});
  }
  const std::string text =
      "macOS may ask Korvell for access to this folder. The scan continues once you answer.";
  EXPECT_THAT(notices, ElementsAre(text, text, std::nullopt));
}

TEST_F(StorageScannerTests, aCleanupIsMeasuredToldAndLoggedOnce) {
  scan({npm, pip, trash});
  const auto date = time.clock().now();
  scanner->selection.set({"npm", "pip"});
  scanner->clean(items(npm));
  EXPECT_THAT(*scanner->working, ElementsAre(npm));
  time.run();
  EXPECT_THAT(*scanner->working, IsEmpty());
  EXPECT_THAT(*scanner->selection, ElementsAre("pip"));
  EXPECT_EQ(*scanner->feedback, "Moved 100 B to the Trash. Empty the Trash to get the space back.");
  EXPECT_EQ(scanner->reclaimableBytes(), 80);

  clean(trash);
  EXPECT_EQ(*scanner->feedback, "Freed 30 B.");
  EXPECT_EQ(*scanner->freedTotal, 100) << "what was emptied was logged when it was moved";
  EXPECT_THAT(StorageLog::entries(defaults), ElementsAre(FreedEntry{date, 100}));
}

TEST_F(StorageScannerTests, itemsOfAnEarlierScanAreRefused) {
  scan({npm});
  const auto earlier = items(npm);
  disk[npm] = 101;
  scan({npm});
  scanner->clean(earlier);
  EXPECT_EQ(*scanner->feedback, "Nothing changed. The files may be in use or protected.");
  const auto present = items(npm);
  scanner->scan({npm});
  scanner->clean(present); // the scan runs: there is no result to pick from
  time.run();
  EXPECT_TRUE(disk.contains(npm));
}

TEST_F(StorageScannerTests, aCleanupIsLoggedOnceThoughAnotherOrAScanOvertakesIt) {
  scan({npm, pip});
  scanner->clean(items(npm));
  scanner->clean(items(npm)); // is being cleaned
  scan({npm, pip});
  EXPECT_EQ(*scanner->freedTotal, 100);
  EXPECT_THAT(found(), ElementsAre(pip));
  EXPECT_THAT(*scanner->working, IsEmpty());
}

TEST_F(StorageScannerTests, aCleanupThatTheEndOvertakesIsCutShortAndLoggedOnce) {
  const auto end = [this] { scanner.reset(); };
  const struct {
    const char* when;
    std::function<void()> arrange;
    bool performed, cutShort;
  } rows[] = {
      {"before it began", [&] { end(); }, false, false},
      {"while it runs", [&] { whilePerforming = end; }, true, true},
      {"before it was told", [&] { whilePerforming = [&] { main->async(end); }; }, true, false},
  };
  for (const auto& row : rows) {
    disk = {{npm, 100}, {pip, 50}};
    defaults.remove("storage.freedLog");
    defaults.remove("storage.freedTotal");
    whilePerforming = {};
    endedMeanwhile = false;
    scanner = make();
    scan({npm, pip});
    scanner->clean(items(npm));
    row.arrange();
    time.run();
    EXPECT_FALSE(scanner) << row.when;
    EXPECT_EQ(disk.contains(npm), !row.performed) << row.when;
    EXPECT_EQ(endedMeanwhile, row.cutShort) << row.when;
    EXPECT_EQ(StorageLog::total(defaults), row.performed ? 100 : 0) << row.when;
    EXPECT_EQ(StorageLog::entries(defaults).size(), row.performed ? 1u : 0u) << row.when;
  }
  whilePerforming = {};
  scanner = make();
  scan({pip});
  clean(pip);
  EXPECT_EQ(StorageLog::total(defaults), 150) << "the next one logs only its own";
}

} // namespace
} // namespace korvell
