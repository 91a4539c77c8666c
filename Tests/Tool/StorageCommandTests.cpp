#include "Core/Storage/StorageLog.h"
#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/FolderTrash.h"
#include "Tests/Fakes/GeneratedTree.h"
#include "Tests/Fakes/PortableFileTree.h"

#include "CommandFixture.h"

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// No program of the machine that runs the test is ever started.
class OwnProgramsOnly final : public PortableFileTree {
public:
  OwnProgramsOnly(std::string root) : PortableFileTree(1u), root_(std::move(root)) {}
  bool isExecutable(const std::string& path) override {
    return path.starts_with(root_) && PortableFileTree::isExecutable(path);
  }

private:
  std::string root_;
};

struct StorageCommandTests : CommandFixture {
  GeneratedTree disk;

  StorageCommandTests() {
    host.system = SystemKind::linuxDesktop;
    host.folders = linuxUserFolders(fakeEnvironment({{"HOME", disk / "home"}}));
    host.fileTree = std::make_unique<PortableFileTree>(1u);
    host.trash = std::make_unique<FolderTrash>(disk / "home/trash");
    host.defaults = std::make_unique<FakeUserDefaults>();
    disk.file("home/.npm/_cacache/x", 8192);
    disk.file("home/.cargo/registry/cache/x", 4096);
    disk.file("home/.cargo/registry/src/x", 4096);
  }
  int run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "storage");
    return CommandFixture::run({storageCommand()}, arguments);
  }
};

TEST_F(StorageCommandTests, kindsStandUnderTheirGroups) {
  EXPECT_EQ(run({"--kind", "npm", "--kind", "cargo", "--kind", "pip"}), exitOK);
  EXPECT_EQ(output, "Storage              Size  Items  Kind   Safety\n"
                    "Package managers\n"
                    "  npm cache       8.19 KB      1  npm    Safe to remove\n"
                    "  Cargo registry  8.19 KB      2  cargo  Safe to remove\n"
                    "\n16.4 KB can be freed.\n");
  EXPECT_EQ(run({"--kind", "pip"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Nothing to clean\n"));
  EXPECT_EQ(run({"--kind", "nonsense"}), exitUsage);
}

TEST_F(StorageCommandTests, itemsAreNamedAsCleanTakesThem) {
  EXPECT_EQ(run({"--kind", "cargo", "--items"}), exitOK);
  EXPECT_THAT(output, HasSubstr("   4.10 KB  ~/.cargo/registry/cache\n"));
  EXPECT_EQ(run({"--kind", "cargo", "--json"}), exitOK);
  const auto document = parseJSON(output);
  const auto category = document->find("categories")->asArray()->front();
  EXPECT_EQ(*category.find("kind")->asString(), "cargo");
  EXPECT_EQ(category.find("bytes")->asInt(), 8192);
  EXPECT_EQ(*category.find("items")->asArray()->front().find("id")->asString(),
            disk / "home/.cargo/registry/cache");
}

TEST_F(StorageCommandTests, aDryRunSaysEverythingAndChangesNothing) {
  disk.file("home/trash/old\x1b[2J", 100);
  EXPECT_EQ(run({"clean", "--kind", "cargo", "--kind", "trash", "--dry-run"}), exitOK);
  EXPECT_THAT(output, HasSubstr("Free 12.3 KB?\nMoves to the Trash:\n~/.cargo/registry/cache\n"));
  EXPECT_THAT(output, HasSubstr("\n  Delete permanently: " + (disk / "home/trash/old\\x1b[2J") + "\n" +
                                "  Move to the Trash: " + (disk / "home/.cargo/registry/cache") + "\n"));
  EXPECT_EQ(disk.names("home/trash").size(), 1u);
  EXPECT_THAT(disk.names("home/.cargo/registry"), ElementsAre("cache", "src"));
}

TEST_F(StorageCommandTests, onlyWhatWasNamedIsCleanedAndLogged) {
  const auto id = disk / "home/.cargo/registry/src";
  EXPECT_EQ(run({"clean", "--kind", "cargo", "--item", id, "--yes"}), exitOK);
  EXPECT_EQ(output, "Moved 4.10 KB to the Trash. Empty the Trash to get the space back.\n");
  EXPECT_THAT(disk.names("home/.cargo/registry"), ElementsAre("cache"));
  EXPECT_EQ(run({"clean", "--kind", "trash", "--yes", "--json"}), exitOK);
  EXPECT_EQ(parseJSON(output)->find("freed")->find("emptied")->asInt(), 4096);
  EXPECT_EQ(run({"log", "--json"}), exitOK);
  EXPECT_EQ(parseJSON(output)->find("freedTotal")->asInt(), 4096);
  EXPECT_EQ(parseJSON(output)->find("entries")->asArray()->size(), 1u);
  EXPECT_EQ(run({"log"}), exitOK);
  EXPECT_THAT(output, HasSubstr("4.10 KB\n\nFreed with Korvell: 4.10 KB\n"));
}

TEST_F(StorageCommandTests, itemsAreTakenAsTheyAreShown) {
  disk.file("home/.cache/caf\xe9\x1b/x", 4096);
  disk.file("home/.cache/a\x01/x", 4096);
  disk.file("home/.cache/a\\x01/x", 4096);
  const auto clean = [&](const std::string& item) {
    return run({"clean", "--kind", "appCaches", "--item", item, "--yes"});
  };
  EXPECT_EQ(clean("~/.cache/caf\xef\xbf\xbd\\x1b"), exitOK) << errors;
  disk.file("home/.cache/th\xe9/x", 8192);
  EXPECT_EQ(run({"--kind", "appCaches", "--json"}), exitOK);
  const auto document = parseJSON(output);
  const auto& largest = document->find("categories")->asArray()->front().find("items")->asArray()->front();
  EXPECT_EQ(clean(*largest.find("id")->asString()), exitOK) << errors;
  EXPECT_EQ(clean("~/.cache/a\\x01"), exitFailed);
  EXPECT_THAT(errors, HasSubstr("several items are shown as ~/.cache/a\\x01; nothing was done"));
  EXPECT_THAT(disk.names("home/.cache"), ElementsAre("a\x01", "a\\x01"));
  EXPECT_EQ(clean(disk / "home/.cache/a\x01"), exitOK) << errors;
  EXPECT_THAT(disk.names("home/.cache"), ElementsAre("a\\x01"));
}

TEST_F(StorageCommandTests, whatIsNotSureIsNotDone) {
  const auto gone = disk / "home/.cargo/registry/gone";
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{"clean", "--kind", "npm"},
       "Move 8.19 KB to the Trash?\nMoves to the Trash:\n~/.npm/_cacache\nYou can put it back from the "
       "Trash.\n"
       "korvell: Not done: there is no terminal to ask on"},
      {{"clean", "--kind", "npm", "--item", gone, "--yes"}, "there is no such item any more"},
      {{"clean", "--kind", "npm", "--item", disk / "home/.cargo/registry/src", "--yes"},
       "there is no such item"},
      {{"clean", "--kind", "pip", "--yes"}, "Nothing of that kind was found."},
  };
  for (const auto& [arguments, message] : rows) {
    EXPECT_EQ(run(arguments), exitFailed) << message;
    EXPECT_THAT(errors, HasSubstr(message));
  }
  EXPECT_EQ(run({"clean", "--yes"}), exitUsage) << "no kind";
  EXPECT_TRUE(host.fileTree->info(disk / "home/.npm/_cacache"));
  EXPECT_TRUE(StorageLog::entries(*host.defaults).empty());
}

TEST_F(StorageCommandTests, anInterruptEndsTheCommandAndWhatItFreedIsToldAndLogged) {
  host.fileTree = std::make_unique<OwnProgramsOnly>(disk.root());
  const std::string done = disk / "done", docker = "home/.docker/bin/docker";
  // Interrupts the command line in the middle of its work, as a user at the terminal does.
  disk.write(docker, "#!/bin/sh\nif [ $2 = prune ]; then\n  trap 'exit 7' TERM\n  : >" + done +
                         "\n  kill -INT $PPID; kill -HUP $PPID\n  sleep 30 & wait\n  echo never >>" + done +
                         "\nelif [ -e " + done +
                         R"( ]; then echo '{"Type":"Containers","Reclaimable":"1MB"}')" +
                         R"(; else echo '{"Type":"Containers","Reclaimable":"5MB"}'; fi)" + "\n");
  disk.mode(docker, 0755);
  EXPECT_EQ(run({"clean", "--kind", "docker", "--yes"}), exitFailed);
  EXPECT_EQ(output, "Freed 4.00 MB.\n");
  EXPECT_EQ(errors, "korvell: interrupted: ending what is under way, then measuring\n"
                    "korvell: docker system prune -f was asked to end and has ended.\n");
  EXPECT_EQ(StorageLog::total(*host.defaults), 4'000'000);

  // The same while it is measured: nothing was begun yet.
  disk.write(docker, "#!/bin/sh\nkill -TERM $PPID\nsleep 30 & wait\n");
  EXPECT_EQ(run({"clean", "--kind", "docker", "--yes"}), exitFailed);
  EXPECT_EQ(errors, "korvell: Interrupted. Nothing was done.\n");
  EXPECT_EQ(output, "");
}

TEST_F(StorageCommandTests, itemsToKeepMustBeNamed) {
  host.system = SystemKind::macOS;
  const std::string archives = "home/Library/Developer/Xcode/Archives/2024-01-01/";
  disk.file(archives + "App.xcarchive/x", 100);
  EXPECT_EQ(run({"clean", "--kind", "archives", "--yes"}), exitFailed);
  EXPECT_THAT(errors, HasSubstr("must be named with --item"));
  EXPECT_EQ(run({"clean", "--kind", "archives", "--item", disk / (archives + "App.xcarchive"), "--yes"}),
            exitOK);
  EXPECT_THAT(disk.names(archives), IsEmpty());
}

} // namespace
} // namespace korvell
