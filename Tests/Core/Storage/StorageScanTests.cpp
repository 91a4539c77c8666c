#include "StorageWorld.h"

#include "Base/Files.h"
#include "Tests/FixturesFolder.h"

#include <cmath>
#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using enum StorageKind;
using namespace std::string_literals;

struct StorageScanTests : testing::Test {
  StorageWorld world;
  GeneratedTree& disk = world.disk;

  std::optional<StorageCategory> scan(StorageKind kind) { return world.scan().scan(kind); }
  /// The items' places below the home folder.
  std::vector<std::string> ids(const std::vector<StorageItem>& items) {
    std::vector<std::string> names;
    for (const auto& item : items) names.push_back(item.id.substr((disk / "home/").size()));
    return names;
  }
  std::vector<std::string> ids(StorageKind kind) { return ids(scan(kind).value_or(StorageCategory{}).items); }
  static std::string fixture(const std::string& name) {
    return readFile(fixturePath("Storage/" + name), 1 << 20).value();
  }
};

TEST_F(StorageScanTests, everyLinuxKindMeasuresWhatLiesOnTheDisk) {
  const struct {
    StorageKind kind;
    std::vector<std::string> places;
  } rows[] = {
      {npm, {".npm/_cacache"}},
      {pnpm, {".local/share/pnpm/store", ".cache/pnpm"}},
      {yarn, {".cache/yarn", ".yarn/berry/cache"}},
      {pip, {".cache/pip"}},
      {uv, {".cache/uv"}},
      {cargo, {".cargo/registry/cache", ".cargo/registry/src"}},
      {go, {".cache/go-build"}},
      {gradle, {".gradle/caches"}},
      {homebrew, {".cache/Homebrew"}},
      {appCaches, {".cache/browser", ".cache/mesa_shader_cache"}},
      {nodeModules, {"code/old/node_modules"}},
  };
  std::size_t bytes = 1000;
  for (const auto& row : rows)
    for (const auto& place : row.places) disk.file("home/" + place + "/a/one", bytes += 5000);
  world.program("brew");
  for (const auto& row : rows) {
    const auto found = scan(row.kind);
    ASSERT_TRUE(found) << rawValue(row.kind);
    std::int64_t sum = 0;
    for (const auto& place : row.places) sum += world.size(place);
    EXPECT_EQ(found->bytes, sum) << rawValue(row.kind);
    EXPECT_EQ(found->items.size(), row.places.size()) << rawValue(row.kind);
    for (const auto& item : found->items) EXPECT_EQ(item.bytes, world.scan().size(item.id)) << item.id;
  }
  StorageWorld empty;
  for (const auto& row : allCases<StorageKind>()) EXPECT_FALSE(empty.scan().scan(row.value)) << row.rawValue;
}

TEST_F(StorageScanTests, whatIsNoCacheIsNotMeasuredAsOne) {
  disk.file("home/Documents/thesis", 100'000);
  disk.link("../Documents", "home/.npm/_cacache");
  disk.link("../Documents", "home/.cache/innocent");
  disk.file("home/.cache/real/x", 1);
  disk.link("../../Documents", "home/.cache/real/link");
  disk.file("home/.cache/.Trash-1000/files/x", 1);
  FolderTrash onVolume(disk / "home/.cache/.Trash-1000/files");
  auto places = world.locations();
  EXPECT_FALSE(scan(npm));
  const auto scanWith = [&] {
    return StorageScan(places, world.files, onVolume, {}, world.clock).scan(appCaches);
  };
  const auto found = scanWith().value();
  EXPECT_THAT(ids(found.items), ElementsAre(".cache/real"));
  EXPECT_EQ(found.bytes, world.size(".cache/real"));
  for (const auto& holdsHome : {disk / "home", disk.root(), "/"s}) {
    places.cacheHome = holdsHome;
    EXPECT_FALSE(scanWith()) << holdsHome;
  }
}

TEST_F(StorageScanTests, xcodeKeepsFoldersOfKnownNames) {
  world.onMac = true;
  for (const auto* name : {"DerivedData/App-abc/x", "DerivedData/file", "iOS DeviceSupport/17.0/x",
                           "watchOS DeviceSupport/10.0/x", "Amiga DeviceSupport/1.3/x",
                           "Archives/2024-01-01/App.xcarchive/x", "Archives/2024-01-01/notes/x"})
    disk.file("home/Library/Developer/Xcode/" + std::string(name), 5000);
  disk.file("home/Library/Developer/CoreSimulator/Caches/dyld/x", 5000);
  disk.date("home/Library/Developer/Xcode/Archives/2024-01-01/App.xcarchive", Date{1'704'100'000});
  const std::string xcode = "Library/Developer/Xcode/";
  EXPECT_THAT(ids(derivedData), ElementsAre(xcode + "DerivedData/App-abc"));
  EXPECT_THAT(ids(deviceSupport),
              ElementsAre(xcode + "iOS DeviceSupport/17.0", xcode + "watchOS DeviceSupport/10.0"));
  EXPECT_THAT(ids(archives), ElementsAre(xcode + "Archives/2024-01-01/App.xcarchive"));
  EXPECT_EQ(scan(archives)->items[0].date, Date{1'704'100'000});
  EXPECT_EQ(scan(simulatorCaches)->items[0].detail, "~/Library/Developer/CoreSimulator/Caches");
}

TEST_F(StorageScanTests, simulatorsAreOneItemThatSimctlDeletes) {
  world.onMac = true;
  world.printed["xcrun simctl list devices --json"] = {fixture("simctl-devices.json")};
  const std::string devices = "Library/Developer/CoreSimulator/Devices/0A1B2C3D-0000-4000-8000-00000000000";
  for (const int last : {1, 2, 3, 4})
    disk.file("home/" + devices + std::to_string(last) + "/data/x", std::size_t(last) * 9000);
  disk.file("home/Documents/x", 100'000);
  const auto found = scan(simulatorDevices);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->items[0].title, "2 simulators");
  EXPECT_THAT(found->items[0].urls, IsEmpty());
  EXPECT_EQ(found->bytes, world.size(devices + "1") + world.size(devices + "4"));
  EXPECT_EQ(found->action,
            StorageAction::command(disk / "bin/xcrun", {"simctl", "delete", "unavailable"}, Seconds{120}));
  EXPECT_THAT(world.ran, ElementsAre("xcrun simctl list devices --json (15 s)"));
  for (const auto* text : {"", "[]", "{\"devices\":[]}", "{\"devices\":{\"a\":{}}}", "no JSON"}) {
    world.printed["xcrun simctl list devices --json"] = {text};
    EXPECT_FALSE(scan(simulatorDevices)) << text;
  }
}

TEST_F(StorageScanTests, homebrewTellsItsCache) {
  world.program("brew");
  disk.file("home/elsewhere/bottle", 9000);
  disk.file("home/.cache/Homebrew/bottle", 5000);
  const auto id = [&](ShellResult result) {
    world.printed["brew --cache"] = std::move(result);
    const auto found = ids(homebrew);
    return found.empty() ? "none" : found[0];
  };
  EXPECT_EQ(id({disk / "home/elsewhere/\nsecond line\n"}), "elsewhere");
  for (const ShellResult& unusable :
       {ShellResult{"Error: no such command\n"}, ShellResult{disk / "home"}, ShellResult{disk.root()},
        ShellResult{disk / "home/elsewhere", 1}, ShellResult{disk / "home/elsewhere", 0, true}})
    EXPECT_EQ(id(unusable), ".cache/Homebrew") << unusable.output;
  const auto found = scan(homebrew);
  EXPECT_THAT(found->items[0].urls, IsEmpty()) << "only the program cleans it";
  EXPECT_EQ(found->action,
            StorageAction::command(disk / "bin/brew", {"cleanup", "--prune=all"}, Seconds{600}));
  EXPECT_EQ(world.ran[0], "brew --cache (10 s)");
}

TEST_F(StorageScanTests, dockerTellsWhatItWouldPrune) {
  EXPECT_FALSE(scan(docker));
  world.program("docker");
  const std::string line = "docker system df --format {{json .}}";
  world.printed[line] = {fixture("docker-df.jsonl")};
  const auto found = scan(docker);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->bytes, 12'300 + 2'250'000'000);
  EXPECT_EQ(found->items[0].detail, "Up to this much, plus dangling images");
  EXPECT_EQ(
      found->note,
      "Kept: 1.55 GB in unused images, 500 MB in volumes. Remove those from Docker itself if you are sure.");
  EXPECT_EQ(world.ran[0], line + " (3 s)");

  const std::string idle = "Docker is installed but not running, so there is nothing to measure.";
  for (const ShellResult& unusable :
       {ShellResult{"Cannot connect\n"}, ShellResult{fixture("docker-df.jsonl"), 1},
        ShellResult{"{\"Type\":\"Images\"}\n[1]\n{\"Type\":7}"}}) {
    world.printed[line] = unusable;
    EXPECT_EQ(scan(docker)->note, idle);
    EXPECT_THAT(scan(docker)->items, IsEmpty());
  }
  world.printed.clear();
  EXPECT_EQ(scan(docker)->note, idle);
  world.printed[line] = {R"({"Type":"Images","Reclaimable":"0B"})"};
  EXPECT_FALSE(scan(docker));
}

TEST_F(StorageScanTests, onlyTheTenLargestAppCachesAreItems) {
  for (int i = 0; i < 12; ++i)
    disk.file("home/.cache/app" + std::to_string(i) + "/x", std::size_t(i) * 8192 + 1);
  disk.file("home/.cache/pip/x", 1);
  disk.file("home/.cache/file", 1);
  const auto found = scan(appCaches);
  EXPECT_EQ(found->items.size(), 10u);
  EXPECT_EQ(found->items[0].title, "app11");
  EXPECT_EQ(found->items[9].title, "app2");
  EXPECT_EQ(found->note, "Showing the 10 largest of 12 folders. macOS caches are left alone.");

  world.onMac = true;
  disk.file("home/Library/Caches/com.apple.Safari/x", 1);
  disk.file("home/Library/Caches/CocoaPods/x", 1);
  disk.file("home/Library/Caches/org.example/x", 1);
  EXPECT_THAT(ids(appCaches), ElementsAre("Library/Caches/org.example"));
  EXPECT_EQ(scan(appCaches)->note, std::nullopt);
}

TEST_F(StorageScanTests, theTrashIsMeasuredAsAWhole) {
  disk.file("home/trash/a/b", 5000);
  disk.file("home/trash/c", 5000);
  disk.file("home/trash/.DS_Store", 5000);
  disk.link("/", "home/trash/link");
  const auto found = scan(trash);
  ASSERT_EQ(found->items.size(), 1u);
  EXPECT_EQ(found->items[0].detail, "3 items in the Trash");
  EXPECT_EQ(found->bytes, world.size("trash/a") + world.size("trash/c"));
  EXPECT_EQ(found->action, StorageAction::emptyTrash());

  const AsOrdinaryUser user(disk);
  disk.mode("home/trash", 0000);
  const auto denied = scan(trash);
  EXPECT_THAT(denied->note.value(), testing::HasSubstr("Full Disk Access"));
  EXPECT_THAT(denied->items, IsEmpty());
  disk.mode("home/trash", 0700);
}

TEST_F(StorageScanTests, dependenciesOfProjectsThatRest) {
  const Date old = world.clock.wall - Seconds{31 * 86400.0},
             recent = world.clock.wall - Seconds{29 * 86400.0};
  const auto project = [&](const std::string& name, Date date) {
    disk.file("home/" + name + "/node_modules/x/y", 5000);
    disk.file("home/" + name + "/src/index.js", 10);
    for (const auto* part : {"/src/index.js", "/src"}) disk.date("home/" + name + part, date);
  };
  project("code/old", old);
  project("code/recent", recent);
  project("code/old/packages/inner", old);
  project("a/b/c/d", old);
  project("a/b/c/d/five-is-too-deep", old);
  project(".hidden/p", old);
  project("code/old/node_modules/nested", old);
  disk.file("home/code/old/.git/index", 10); // work on the history is no work on the project
  disk.date("home/code/old/.git/index", recent);
  for (const auto* part : {"code/old/packages", "code/old/packages/inner", "a/b/c/d/five-is-too-deep"})
    disk.date(std::string("home/") + part, old);
  disk.link("code/old/node_modules", "home/code/linked/node_modules");
  disk.file("home/code/bare/node_modules/x", 1);
  disk.date("home/code/bare", old);

  const auto found = world.scan().staleNodeModules(std::nullopt, old + Seconds{30 * 86400.0 + 1});
  EXPECT_THAT(ids(found), ElementsAre("a/b/c/d/node_modules", "code/bare/node_modules",
                                      "code/old/node_modules", "code/old/packages/inner/node_modules"));
  EXPECT_EQ(found[2].title, "old");
  EXPECT_EQ(found[2].detail, "~/code/old");
  EXPECT_EQ(found[2].bytes, world.size("code/old/node_modules"));
  EXPECT_EQ(world.scan().lastActivity(disk / "home/code/recent").sinceEpoch, std::floor(recent.sinceEpoch));
  EXPECT_THAT(world.scan().staleNodeModules(std::nullopt, old + Seconds{30 * 86400.0 - 1}), IsEmpty());
}

TEST_F(StorageScanTests, whatProgramsConsistOfIsNoProject) {
  for (const auto* project :
       {"node-v20/lib", "venv/lib", "Editor/resources/app", "Editor/resources/app/extensions/git",
        "Chat/resources/app.asar.unpacked", "work/lib", "work/resources/web", "work/resources"})
    disk.file("home/" + std::string(project) + "/node_modules/x", 100);
  disk.file("home/node-v20/bin/node", 1);
  disk.file("home/venv/bin/node", 1);
  for (const auto* described : {"venv/lib", "Editor/resources/app", "work/lib"})
    disk.file("home/" + std::string(described) + "/package.json", 1);
  EXPECT_THAT(
      ids(world.scan().staleNodeModules(std::nullopt, world.clock.now() + Seconds{99 * 86400.0})),
      ElementsAre("work/lib/node_modules", "work/resources/node_modules", "work/resources/web/node_modules"));
}

TEST_F(StorageScanTests, aCacheFolderThatIsTheHomeFolderHoldsNoCaches) {
  disk.link("home", "cache"); // the variable names a link: its text alone doesn't tell
  disk.file("home/pip/own.py", 5000);
  disk.file("home/yarn/own.txt", 5000);
  auto folders = world.folders();
  folders.cacheHome = disk / "cache";
  const auto locations = linuxStorageLocations(resolvedFolders(folders, world.files), "");
  const StorageScan scan(locations, world.files, world.trash, Shell::run, world.clock);
  for (const auto kind : {pip, yarn, appCaches}) EXPECT_FALSE(scan.scan(kind)) << rawValue(kind);
}

TEST_F(StorageScanTests, largeOldDownloadsAreFilesAndPackages) {
  world.onMac = true;
  disk.file("home/Downloads/exact", 8192);
  disk.file("home/Downloads/small", 4096);
  disk.file("home/Downloads/folder/x", 50'000);
  disk.file("home/Downloads/Tool.app/Contents/x", 50'000);
  disk.link("/etc/hostname", "home/Downloads/link");
  for (const auto* machine : {"VM.utm", "Disk.sparsebundle"})
    disk.file("home/Downloads/" + std::string(machine) + "/x", 4096 * 25);
  const auto added = world.clock.wall - Seconds{60 * 86400.0}; // restored today, with the date that they had
  for (const auto* name : {"exact", "small", "Tool.app", "VM.utm", "Disk.sparsebundle"})
    disk.date("home/Downloads/" + std::string(name), added);
  const auto find = [&](Seconds later) {
    return ids(world.scan().largeOldDownloads(disk / "home/Downloads", 8192, added + later));
  };
  EXPECT_THAT(find(Seconds{31 * 86400.0}), ElementsAre("Downloads/Disk.sparsebundle", "Downloads/Tool.app",
                                                       "Downloads/VM.utm", "Downloads/exact"));
  EXPECT_THAT(find(Seconds{29 * 86400.0}), IsEmpty());
  EXPECT_FALSE(scan(downloads)) << "nothing of half a gigabyte";
}

TEST_F(StorageScanTests, whatIsMountedIsLeftOutAndTold) {
  for (const auto* name : {".cache/app/x", ".cache/uv/x", ".npm/_cacache/x", ".cargo/registry/src/x",
                           "Downloads/x", "mnt/x", ".hidden/mnt/x"})
    disk.file("home/" + std::string(name), 5000);
  const auto mount = [&](const std::string& name, bool mayBlock = false) {
    world.files.mounted.push_back({disk / ("home/" + name), mayBlock});
  };
  const auto note = [&](StorageKind kind) {
    const auto found = scan(kind);
    const std::string text = found ? found->note.value_or("") : "nothing";
    return text.substr(text.rfind("there: ") == text.npos ? 0 : text.rfind("there: ") + 7);
  };
  world.files.mounted = {{"/", true}}; // a root from a server, as the home folder: that is no reason
  mount(".cache/app/mnt");
  mount(".cache/pip/mnt");
  mount(".npm/_cacache");
  mount(".cargo");
  mount("mnt");
  EXPECT_EQ(note(appCaches), "~/.cache/app/mnt.");
  EXPECT_EQ(note(npm), "~/.npm/_cacache.") << "it can't be moved";
  EXPECT_THAT(scan(npm)->items, IsEmpty());
  EXPECT_EQ(scan(npm)->bytes, 0);
  EXPECT_EQ(note(cargo), "") << "what lies on it can be";
  EXPECT_EQ(note(nodeModules), "nothing") << "no news that other disks are not looked at";

  for (const auto* place : {".cache/uv", "Downloads", "mnt", ".hidden/mnt", ".cargo"}) mount(place, true);
  for (const auto kind : {uv, downloads, cargo}) EXPECT_THAT(scan(kind)->items, IsEmpty());
  EXPECT_EQ(note(uv), "~/.cache/uv.");
  EXPECT_EQ(note(downloads), "~/Downloads.");
  EXPECT_EQ(note(cargo), "~/.cargo.");
  EXPECT_EQ(note(nodeModules), "~/Downloads, ~/mnt.");
  EXPECT_EQ(resolvedFolders(world.folders(), world.files).home, disk / "home");
}

TEST_F(StorageScanTests, theFirstProgramThatMayBeRunCounts) {
  disk.write("bin/plain", "");
  world.program("good");
  EXPECT_EQ(world.scan().executable(
                {disk / "bin/absent", disk / "bin/plain", disk / "bin", disk / "bin/good", "/bin/sh"}),
            disk / "bin/good");
}

TEST_F(StorageScanTests, linksInTheUsersFoldersAreResolvedOnce) {
  disk.folder("data/cache");
  disk.link("../data/cache", "home/.cache");
  const auto folders = resolvedFolders(world.folders(), world.files);
  EXPECT_EQ(folders.cacheHome, disk / "data/cache");
  EXPECT_EQ(folders.home, disk / "home");
}

TEST_F(StorageScanTests, linksToWhatMayBlockAreNotFollowed) {
  for (const auto* name : {"cache/app/x", "cache/uv/x", "npm/_cacache/x", "Downloads/x"})
    disk.file("server/" + std::string(name), 5000);
  disk.file("home/.cargo/registry/src/x", 5000);
  disk.write("server/docker", "");
  disk.mode("server/docker", 0755);
  disk.link("../server/cache", "home/.cache");
  disk.link(disk / "server/npm", "home/.npm");
  disk.link("../server/docker", "bin/docker");
  const auto folders = resolvedFolders(world.folders(), world.files);
  const std::vector<StorageKind> kinds = {appCaches, uv, npm, docker};
  for (const auto kind : kinds) EXPECT_TRUE(scan(kind)) << "a link alone is no reason";
  world.files.mounted = {{disk / "server", true}};
  EXPECT_EQ(resolvedFolders(world.folders(), world.files), folders);
  for (const auto kind : kinds) {
    const auto found = scan(kind);
    EXPECT_TRUE(!found || found->items.empty());
    if (kind == docker) continue;
    EXPECT_THAT(found.value().note.value(), testing::HasSubstr("there: " + disk / "server."));
  }
  EXPECT_EQ(scan(cargo)->items.size(), 1u);
}

} // namespace
} // namespace korvell
