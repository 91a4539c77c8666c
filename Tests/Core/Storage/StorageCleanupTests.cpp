#include "Core/Storage/StorageCleanup.h"

#include "Base/FileLock.h"
#include "Core/Storage/StorageLog.h"
#include "StorageWorld.h"
#include "Tests/Fakes/FakeUserDefaults.h"

#include <gmock/gmock.h>
#include <tuple>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StorageKind;

StorageItem item(StorageKind kind, const std::string& id, std::int64_t bytes) {
  return {.id = id, .kind = kind, .title = id, .bytes = bytes, .urls = {id}};
}

StorageCategory found(StorageKind kind, std::vector<StorageItem> items, StorageAction action = {}) {
  auto result = *category(kind, std::move(items));
  result.action = std::move(action);
  return result;
}

const auto prune = StorageAction::command("/usr/bin/docker", {"system", "prune", "-f"}, Seconds{300});

TEST(StorageCleanupTests, theTrashIsEmptiedBeforeAnythingIsMovedThere) {
  const auto emptying = StorageAction::emptyTrash();
  const StorageScanResult result{
      {found(npm, {item(npm, "a", 5)}), found(pip, {item(pip, "b", 7), item(pip, "c", 1)}),
       found(docker, {item(docker, "d", 9)}, prune), found(trash, {item(trash, "t", 3)}, emptying),
       found(downloads, {item(downloads, "e", 2)})},
      Date{}};
  const auto plan = CleanupPlan::of(
      result, {item(trash, "t", 3), item(docker, "d", 9), item(pip, "b", 7), item(npm, "a", 5)});
  std::vector<std::string> order;
  const StorageWork work{
      .measure = [&](StorageKind kind, const Cancellation&) -> std::optional<StorageCategory> {
        order.push_back("measure " + std::string(rawValue(kind)));
        if (kind == trash && order.size() > 2) return found(trash, {item(trash, "t", 12)}, emptying);
        if (kind == pip) return found(pip, {item(pip, "c", 1)});
        if (kind == docker && order.size() < 6) return found(docker, {item(docker, "d", 9)}, prune);
        return std::nullopt;
      },
      .perform =
          [&](const StorageAction& action, const std::vector<StorageItem>& items, const Cancellation&) {
            order.push_back(std::string(rawValue(action.type)) + " " + std::to_string(items.size()));
            ActionReport report;
            for (const auto& item : items) report.done[item.kind] = {1, item.bytes};
            return report;
          }};
  const auto outcome = carryOut(plan, work);
  EXPECT_THAT(order, ElementsAre("emptyTrash 1", "measure trash", "trash 2", "measure docker", "command 1",
                                 "measure npm", "measure pip", "measure docker", "measure trash"));
  const auto freed = freedBytes(plan, outcome);
  EXPECT_THAT((std::tuple{freed.moved, freed.emptied, freed.commands}), testing::FieldsAre(12, 3, 9));
  const auto after = merged(result, plan, outcome);
  ASSERT_EQ(after.categories.size(), 3u);
  EXPECT_EQ(after.categories[0].kind, pip);
  EXPECT_EQ(after.category(trash)->bytes, 12) << "what was just moved lies there now";
}

TEST(StorageCleanupTests, anInterruptedCleanupLeavesTheRestAndMeasuresWhatItDid) {
  const StorageScanResult result{
      {found(npm, {item(npm, "a", 5)}), found(docker, {item(docker, "d", 9)}, prune)}, Date{}};
  const auto plan = CleanupPlan::of(result, {item(npm, "a", 5), item(docker, "d", 9)});
  const Cancellation cancellation;
  std::vector<StorageKind> measured;
  const StorageWork work{
      .measure =
          [&](StorageKind kind, const Cancellation& measuring) {
            EXPECT_FALSE(measuring.isCancelled());
            measured.push_back(kind);
            return std::optional<StorageCategory>();
          },
      .perform =
          [&](const StorageAction&, const std::vector<StorageItem>&, const Cancellation& work) {
            cancellation.cancel();
            EXPECT_TRUE(work.isCancelled());
            return ActionReport{.done = {{npm, {1, 5}}}, .problems = {"It was cut short."}};
          }};
  const auto outcome = carryOut(plan, work, cancellation);
  EXPECT_TRUE(outcome.interrupted);
  EXPECT_THAT(measured, ElementsAre(npm));
  EXPECT_THAT(outcome.problems,
              ElementsAre("It was cut short.", "What was not begun by then was left alone."));
  EXPECT_EQ(freedBytes(plan, outcome).moved, 5);
  EXPECT_EQ(freedBytes(plan, outcome).commands, 0);
  EXPECT_EQ(merged(result, plan, outcome).categories, std::vector{result.categories[1]});
}

TEST(StorageCleanupTests, aCommandThatWasStoppedIsToldAsItEnded) {
  StorageWorld world;
  const auto scan = world.scan();
  const auto line = commandLine(prune);
  const std::pair<ShellResult, std::string> rows[] = {
      {{.exitStatus = 1}, " did not succeed."},
      {{.exitStatus = 143, .timedOut = true}, " did not succeed."},
      {{.exitStatus = 143, .interrupted = true}, " was asked to end and has ended."},
      {{.exitStatus = 137, .interrupted = true}, " did not end when it was asked to and was killed."},
      {{.exitStatus = -1, .timedOut = true, .lingers = true}, " was killed, but has not ended yet."},
  };
  for (const auto& [answer, sentence] : rows) {
    world.printed[line] = answer;
    EXPECT_THAT(scan.perform(prune, {}, {}).problems, ElementsAre(line + sentence));
  }
  world.printed[line] = {};
  EXPECT_THAT(scan.perform(prune, {}, {}).problems, IsEmpty());
}

TEST(StorageCleanupTests, ofAToolThatNoLongerAnswersNothingIsKnownToBeFreed) {
  StorageWorld world;
  world.program("docker");
  const std::string usage = "docker system df --format {{json .}}";
  world.printed[usage] = {R"({"Type":"Containers","Reclaimable":"5MB"})"};
  const auto work = world.work();
  const auto before = work.measure(docker, {}).value();
  const auto plan = CleanupPlan::of({{before}, Date{}}, before.items);
  world.printed.erase(usage);
  EXPECT_EQ(freedBytes(plan, carryOut(plan, work)).logged(), 0);
}

TEST(StorageCleanupTests, anInterruptedEmptyingLeavesTheRestWithItsRecords) {
  StorageWorld world;
  world.disk.file("home/trash/a/x", 1);
  world.disk.file("home/trash/held/x", 1);
  const auto place = world.disk / "home/trash/held/x";
  world.files.mounted = {{place}};
  const Cancellation cancellation;
  cancellation.cancel();
  const auto scan = world.scan();
  EXPECT_THAT(scan.perform(StorageAction::emptyTrash(), scan.scan(trash)->items, cancellation).problems,
              ElementsAre("~/trash/held: Something is mounted on " + place + ". Unmount it first.",
                          "Emptying the Trash was cut short."));
  EXPECT_THAT(world.disk.names("home/trash"), ElementsAre("a", "held"));
}

TEST(StorageCleanupTests, aTrashThatWasExchangedSinceTheScanStays) {
  StorageWorld world;
  world.disk.file("home/trash/old", 1);
  const auto scan = world.scan();
  const auto items = scan.scan(trash)->items;
  world.disk.move("home/trash", "home/aside");
  world.disk.file("home/trash/another", 1);
  EXPECT_THAT(scan.perform(StorageAction::emptyTrash(), items, {}).problems,
              ElementsAre("~/trash: It is no longer there."));
  EXPECT_THAT(world.disk.names("home/trash"), ElementsAre("another"));
}

TEST(StorageCleanupTests, cleanupsByCommandRunOneAtATime) {
  StorageWorld world;
  const StorageScanResult result{
      {found(npm, {item(npm, "a", 5)}), found(docker, {item(docker, "d", 9)}, prune)}, Date{}};
  const auto both = CleanupPlan::of(result, {item(npm, "a", 5), item(docker, "d", 9)});
  const auto lockFile = world.folders().data + "/clean-up.lock";
  int performed = 0;
  bool wasHeld = false;
  StorageWork work{
      .measure = [](StorageKind, const Cancellation&) { return std::optional<StorageCategory>(); },
      .perform =
          [&](const StorageAction&, const std::vector<StorageItem>&, const Cancellation&) {
            ++performed;
            wasHeld = FileLock::isHeld(lockFile);
            return ActionReport{};
          },
      .dataFolder = world.folders().data};
  carryOut(CleanupPlan::of(result, {item(npm, "a", 5)}), work);
  EXPECT_FALSE(wasHeld) << "what is moved is counted without measuring";
  carryOut(both, work);
  EXPECT_TRUE(wasHeld);
  EXPECT_FALSE(FileLock::isHeld(lockFile));
  EXPECT_EQ(performed, 3);

  const auto another = FileLock::acquire(lockFile, Seconds{0});
  ASSERT_TRUE(another);
  work.patience = Seconds{0.01};
  auto outcome = carryOut(both, work);
  EXPECT_EQ(feedback(outcome, freedBytes(both, outcome)), "Another clean-up is running. Nothing was done.");
  EXPECT_THAT(outcome.problems, IsEmpty());
  EXPECT_EQ(merged(result, both, outcome), result);
  const Cancellation cancellation;
  cancellation.cancel();
  work.patience = Seconds{1e9};
  outcome = carryOut(both, work, cancellation);
  EXPECT_EQ(feedback(outcome, freedBytes(both, outcome)), "Interrupted before anything was freed.");
  EXPECT_EQ(performed, 3);
  work.dataFolder = world.folders().data + "/clean-up.lock/none";
  EXPECT_FALSE(carryOut(both, work).isBusy) << "no folder to write to";
  EXPECT_EQ(performed, 5);
}

TEST(StorageCleanupTests, noCommandRunsWhereSomethingIsMountedInWhatItCleans) {
  StorageWorld world;
  world.onMac = true;
  world.program("brew");
  world.printed["brew cleanup --prune=all"] = world.printed["xcrun simctl delete unavailable"] = {};
  world.printed["xcrun simctl list devices --json"] = {
      R"({"devices":{"one":[{"udid":"0A1B2C3D-0000-4000-8000-000000000001","isAvailable":false}]}})"};
  const std::pair<StorageKind, std::string> rows[] = {
      {homebrew, "Library/Caches/Homebrew"},
      {simulatorDevices, "Library/Developer/CoreSimulator/Devices/0A1B2C3D-0000-4000-8000-000000000001"}};
  for (const auto& [kind, folder] : rows) {
    const auto inner = "home/" + folder + "/inner";
    world.disk.file(inner + "/x", 9000);
    world.files.mounted.clear();
    const auto work = world.work();
    const CleanupPlan plan = [&, kind = kind] {
      const auto before = work.measure(kind, {}).value();
      return CleanupPlan::of({{before}, Date{}}, before.items);
    }();
    world.ran.clear();
    world.files.mounted = {{world.disk / inner}}; // after the scan
    EXPECT_EQ(work.measure(kind, {})->note,
              "Neither counted nor cleaned, because something is mounted there: ~/" + folder + "/inner.");
    const auto outcome = carryOut(plan, work);
    EXPECT_TRUE(outcome.commandFailed);
    EXPECT_THAT(outcome.problems, ElementsAre("~/" + folder + ": Something is mounted on " +
                                              (world.disk / inner) + ". Unmount it first."));
    for (const auto& line : world.ran)
      EXPECT_THAT(line, testing::AnyOf(testing::HasSubstr("--cache"), testing::HasSubstr(" list ")));
    world.files.mounted = {{world.disk / ("home/" + folder)}};
    EXPECT_THAT(work.measure(kind, {})->items, IsEmpty()) << "it is a mount itself";
  }
}

TEST(StorageCleanupTests, whatWasDoneBoundsWhatWasFreedAndIsTold) {
  const auto emptying = StorageAction::emptyTrash();
  const StorageScanResult result{{found(npm, {item(npm, "a", 5)}),
                                  found(docker, {item(docker, "d", 9)}, prune),
                                  found(trash, {item(trash, "t", 3)}, emptying)},
                                 Date{}};
  const auto plan = CleanupPlan::of(result, {item(npm, "a", 5), item(docker, "d", 9), item(trash, "t", 3)});
  const std::string nothing = "Nothing changed. The files may be in use or protected.";
  const struct {
    std::map<StorageKind, std::int64_t> after;
    std::map<StorageKind, ActionReport::Done> done;
    std::string feedback;
  } rows[] = {
      {{{npm, 50}, {docker, 9}, {trash, 3}}, {}, nothing},
      {{{npm, 0}, {docker, 10}, {trash, 3}},
       {{npm, {1, 5}}},
       "Moved 5 B to the Trash. Empty the Trash to get the space back."},
      {{{npm, 0}, {docker, 0}, {trash, 0}},
       {{npm, {1, 5}}, {docker, {1, 9}}, {trash, {1, 3}}},
       "Freed 12 B. Moved 5 B to the Trash. Empty the Trash to get the space back."},
      // Somebody else was faster, or took part.
      {{{npm, 0}, {docker, 0}, {trash, 0}}, {{npm, {0, 0}}, {docker, {0, 0}}, {trash, {0, 0}}}, nothing},
      {{{npm, 0}, {docker, 2}, {trash, 0}}, {{docker, {1, 4}}, {trash, {1, 1}}}, "Freed 3 B."},
      // Nothing that shows in a size, and something all the same.
      {{{npm, 5}, {docker, 9}, {trash, 3}}, {{npm, {1, 0}}}, "Moved 1 item to the Trash."},
      {{{npm, 5}, {docker, 9}, {trash, 3}},
       {{npm, {2, 0}}, {trash, {2, 0}}},
       "Removed 2 items from the Trash. Moved 2 items to the Trash."},
      {{{npm, 5}, {docker, 9}, {trash, 3}},
       {{docker, {1, 9}}},
       "The command ran, but nothing that can be measured was freed."},
  };
  for (const auto& row : rows)
    EXPECT_EQ(freedBytes(plan, {.after = row.after, .done = row.done}).feedback(), row.feedback);
}

TEST(StorageCleanupTests, anAppCacheThatMovesUpTheListIsNoLoss) {
  StorageWorld world;
  for (int i = 0; i < 12; ++i) world.disk.file("home/.cache/app" + std::to_string(10 + i) + "/x", 40'000);
  const auto work = world.work();
  const StorageScanResult result{{*work.measure(appCaches, {})}, Date{}};
  const auto plan = CleanupPlan::of(result, {result.categories[0].items[3]});
  const auto outcome = carryOut(plan, work);
  EXPECT_EQ(freedBytes(plan, outcome).moved, result.categories[0].items[3].bytes);
  EXPECT_EQ(outcome.rescanned[0].items.size(), 10u);
}

/// Picks everything that a kind found and carries it out.
FreedBytes cleanAll(
    StorageWorld& world, StorageKind kind, std::vector<std::string>& problems,
    const std::function<void()>& meanwhile = [] {}) {
  const auto work = world.work();
  const auto before = work.measure(kind, {}).value();
  meanwhile();
  const auto plan = CleanupPlan::of({{before}, Date{}}, before.items);
  const auto outcome = carryOut(plan, work);
  problems = outcome.problems;
  return freedBytes(plan, outcome);
}

TEST(StorageCleanupTests, whatWasExchangedSinceTheScanStays) {
  StorageWorld world;
  auto& disk = world.disk;
  disk.file("home/.npm/_cacache/x", 5000);
  std::vector<std::string> problems;
  const auto freed = cleanAll(world, npm, problems, [&] {
    disk.move("home/.npm/_cacache", "home/.npm/aside");
    disk.file("home/.npm/_cacache/another", 5000);
  });
  EXPECT_EQ(freed.logged(), 0);
  EXPECT_THAT(problems, ElementsAre("~/.npm/_cacache: It is no longer there."));
  EXPECT_THAT(disk.names("home/.npm"), ElementsAre("_cacache", "aside"));
}

TEST(StorageCleanupTests, emptyingReachesNothingOutsideTheTrash) {
  StorageWorld world;
  auto& disk = world.disk;
  disk.file("home/precious/x", 1);
  disk.file("home/trash/entry", 9000);
  disk.link("../precious", "home/trash/link");
  const auto scan = world.scan();
  scan.removeItems({disk / "home/precious/x", disk / "home/trash/../precious/x", disk / "home/trash/link/x",
                    disk / "home/trash", disk / "home/trash/", "entry", "", "/"},
                   disk / "home/trash");
  EXPECT_THAT(disk.names("home/trash"), ElementsAre("entry", "link"));
  scan.removeItems({disk / "home/./trash//entry"}, disk / "home/trash/");
  EXPECT_THAT(disk.names("home/trash"), ElementsAre("link"));
  StorageItem another{.kind = trash, .urls = {disk / "home/other-trash"}};
  (void)scan.perform(StorageAction::emptyTrash(), {another}, {});
  EXPECT_THAT(disk.names("home/trash"), ElementsAre("link")) << "not the one that was confirmed";
  (void)scan.perform(StorageAction::emptyTrash(), scan.scan(trash)->items, {});
  EXPECT_THAT(disk.names("home/trash"), IsEmpty());
  EXPECT_THAT(disk.names("home/precious"), ElementsAre("x"));
}

/// A Trash with a record beside each entry.
struct RecordedTrash final : Trash {
  explicit RecordedTrash(std::string top) : top_(std::move(top)) {}
  std::vector<Outcome> move(const std::vector<TrashRequest>&) override { return {}; }
  std::vector<TrashFolder> folders() override { return {{top_ + "/files", top_ + "/info", ".trashinfo"}}; }

private:
  std::string top_;
};

TEST(StorageCleanupTests, recordsGoWithTheirEntriesAndWhatHoldsAMountStays) {
  StorageWorld world;
  auto& disk = world.disk;
  for (const std::string name :
       {"files/gone/x", "files/stays/inner/x", "info/gone.trashinfo", "info/stays.trashinfo",
        "info/orphan.trashinfo", "info/coming.trashinfo", "info/notes"})
    disk.file("home/bin/" + name, 1);
  disk.date("home/bin/info/coming.trashinfo", world.clock.wall - Seconds{59});
  disk.date("home/bin/info/orphan.trashinfo", world.clock.wall - Seconds{61});
  const auto place = disk / "home/bin/files/stays/inner";
  world.files.mounted = {{place}};
  RecordedTrash trash(disk / "home/bin");
  const StorageScan scan(world.locations(), world.files, trash, {}, world.clock);
  const auto report = scan.perform(StorageAction::emptyTrash(), scan.scan(StorageKind::trash)->items, {});
  EXPECT_THAT(report.problems,
              ElementsAre("~/bin/files/stays: Something is mounted on " + place + ". Unmount it first."));
  EXPECT_EQ(report.done.at(StorageKind::trash).count, 1u);
  EXPECT_EQ(report.done.at(StorageKind::trash).bytes, disk.smallestFile());
  EXPECT_THAT(disk.names("home/bin/files"), ElementsAre("stays"));
  EXPECT_THAT(disk.names("home/bin/files/stays/inner"), ElementsAre("x"));
  EXPECT_THAT(disk.names("home/bin/info"), ElementsAre("coming.trashinfo", "notes", "stays.trashinfo"));
}

TEST(StorageCleanupTests, commandsThatFailFreeNothing) {
  StorageWorld world;
  world.disk.file("home/.cache/Homebrew/x", 50'000);
  world.program("brew");
  std::vector<std::string> problems;
  for (const bool starts : {false, true}) {
    if (starts) world.printed["brew cleanup --prune=all"] = {"", 1};
    EXPECT_EQ(cleanAll(world, homebrew, problems), FreedBytes{});
    EXPECT_THAT(problems, ElementsAre("brew cleanup --prune=all did not succeed."));
  }
}

TEST(StorageLogTests, recordsAddUpAndOddValuesStay) {
  constexpr std::int64_t large = std::int64_t{1} << 40;
  FakeUserDefaults defaults;
  for (const int nothing : {0, -3}) StorageLog::record(nothing, Date{5}, defaults);
  EXPECT_THAT(defaults.changed, IsEmpty());
  StorageLog::record(10, Date{5}, defaults);
  StorageLog::record(large, Date{6}, defaults);
  EXPECT_EQ(StorageLog::total(defaults), 10 + large);
  EXPECT_THAT(StorageLog::entries(defaults),
              ElementsAre(FreedEntry{Date{5}, 10}, FreedEntry{Date{6}, large}));

  const auto entry = Value::object({{"date", Date{5}}, {"bytes", 10}});
  const Value::Array mixed = {entry, Value::object({{"bytes", "many"}}), 5};
  defaults.set("storage.freedLog", Value(mixed));
  EXPECT_THAT(StorageLog::entries(defaults), ElementsAre(FreedEntry{Date{5}, 10})) << "what can be read";
  for (const Value& odd : {Value("333"), Value(333.5), Value(std::int64_t{INT64_MAX})}) {
    defaults.set("storage.freedTotal", odd);
    EXPECT_FALSE(StorageLog::record(7, Date{7}, defaults)) << dumpJSON(odd);
    EXPECT_EQ(defaults.value("storage.freedTotal"), odd);
  }
  auto grown = mixed;
  grown.insert(grown.end(), 3, Value::object({{"date", Date{7}}, {"bytes", 7}}));
  EXPECT_EQ(defaults.value("storage.freedLog"), Value(grown)) << "the log is kept without its total";

  defaults.set("storage.freedTotal", 1);
  defaults.set("storage.freedLog", entry);
  EXPECT_FALSE(StorageLog::record(7, Date{7}, defaults));
  EXPECT_EQ(StorageLog::total(defaults), 8) << "and the total without its log";
  EXPECT_EQ(defaults.value("storage.freedLog"), entry);
}

} // namespace
} // namespace korvell
