#pragma once
// The contract of FileTree on real folders. Instantiate it with makers of file trees.

#include "Platform/FileTree.h"
#include "Tests/Fakes/GeneratedTree.h"

#include <chrono>
#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <thread>

namespace korvell {

using testing::ElementsAre;

using FileTreeMaker = std::function<std::unique_ptr<FileTree>()>;

class FileTreeContract : public testing::TestWithParam<FileTreeMaker> {
protected:
  GeneratedTree disk;
  std::unique_ptr<FileTree> tree = GetParam()();
  Cancellation never;

  std::int64_t size(const std::string& path) { return tree->sizes({path}, never).front(); }
  /// How many of the entries are gone.
  std::size_t remove(const std::string& folder, const std::vector<std::string>& names) {
    return std::size_t(std::ranges::count_if(tree->remove(folder, names, {}),
                                             [](const Removal& removal) { return bool(removal.outcome); }));
  }
};

TEST_P(FileTreeContract, sizesAreAllocatedBytesOfFilesWithOneName) {
  disk.file("a/small", 1);
  disk.file("a/b/large", 300'000);
  disk.sparseFile("a/b/sparse", 1 << 30, 4096);
  disk.file("a/empty", 0);
  disk.file("outside", 500'000);
  disk.file("a/linked", 70'000);
  disk.hardLink("a/linked", "other-name");
  disk.link("outside", "a/b/link-to-file");
  disk.link("..", "a/b/link-to-folder");
  disk.link("nowhere", "a/b/dangling");
  disk.file("a/\xff\xfe raw\n\t", 9000);
  disk.file("a/-rf", 5000);
  disk.fifo("a/pipe");
  const auto all = tree->sizes({disk / "a", disk / "a/b/large", disk / "a/linked", disk / "a/b/link-to-file",
                                disk / "a/b/link-to-folder", disk / "nowhere", disk / "outside/x"},
                               never);
  EXPECT_THAT(all, ElementsAre(disk.independentSize("a"), disk.independentSize("a/b/large"), 0, 0, 0, 0, 0));
  EXPECT_LT(all[0], 600'000) << "neither the sparse file's length nor what links lead to";
  EXPECT_GE(all[1], 300'000);
}

TEST_P(FileTreeContract, severalThreadsFindWhatOneFinds) {
  // Uneven on purpose: one wide folder, one long branch, many small ones.
  for (int i = 0; i < 400; ++i) disk.file("wide/" + std::to_string(i), 1);
  for (int i = 0; i < 200; ++i)
    disk.file("small/" + std::to_string(i % 10) + "/" + std::to_string(i) + "/f", 1);
  std::string branch = "branch";
  for (int i = 0; i < 60; ++i) disk.file((branch += "/" + std::to_string(i)) + "/f", 5000);
  const auto expected = disk.independentSize(".");
  for (int round = 0; round < 20; ++round) EXPECT_EQ(size(disk / "."), expected);
  EXPECT_THAT(tree->sizes({disk / "wide", disk / "small", disk / "branch"}, never),
              ElementsAre(disk.independentSize("wide"), disk.independentSize("small"),
                          disk.independentSize("branch")));
}

TEST_P(FileTreeContract, depthIsNoLimit) {
  constexpr int depth = 150; // with names of 40 characters longer than any path may be
  disk.deepTree("deep", depth, std::string(40, 'd'));
  const FewDescriptors limit(90);
  // A file, and a folder with another, on each level.
  EXPECT_EQ(size(disk / "deep"), 2 * depth * disk.smallestFile());
  EXPECT_GT(tree->newestChange(disk / "deep", {}, Date{1e18}, never).value().sinceEpoch, 0);
  const Cancellation cancelled;
  cancelled.cancel();
  EXPECT_FALSE(tree->remove(disk.root(), {"deep"}, cancelled).front().outcome);
  EXPECT_EQ(size(disk / "deep"), 2 * depth * disk.smallestFile());
  EXPECT_EQ(remove(disk.root(), {"deep"}), 1u);
  EXPECT_FALSE(tree->info(disk / "deep"));
}

TEST_P(FileTreeContract, foldersThatMayNotBeReadAreSkippedAndClosedOnesOfTheUserRemoved) {
  disk.file("a/open/f", 10'000);
  disk.file("a/closed/f", 10'000);
  disk.file("bin/modules/pkg@1/file", 1);
  disk.file("fixed/entry/f", 10'000);
  const auto expected = disk.independentSize("a/open");
  const AsOrdinaryUser user(disk);
  disk.mode("a/closed", 0000);
  EXPECT_EQ(size(disk / "a"), expected);
  EXPECT_EQ(tree->list(disk / "a/closed").state, FolderListing::State::denied);
  const auto removal = tree->remove(disk.root(), {"a"}, {}).front();
  EXPECT_TRUE(removal.outcome) << removal.outcome.reason();
  EXPECT_EQ(removal.freed, 2 * expected);
  for (const char* readOnly : {"bin/modules/pkg@1", "bin/modules"}) disk.mode(readOnly, 0555);
  EXPECT_EQ(remove(disk / "bin", {"modules"}), 1u);
  EXPECT_THAT(disk.names("bin"), testing::IsEmpty());

  disk.mode("fixed", 0500);
  const auto held = tree->remove(disk / "fixed", {"entry"}, {}).front();
  ASSERT_FALSE(held.outcome);
  EXPECT_EQ(held.outcome.reason(), "You may not remove it.");
  EXPECT_EQ(held.freed, expected) << "what was in it is gone";
  EXPECT_EQ(tree->remove(disk / "fixed", {"nowhere"}, {}).front().outcome.reason(), "It is no longer there.");
  disk.mode("fixed", 0700);
}

TEST_P(FileTreeContract, cancelledWorkStopsWithinAFewEntries) {
  for (int i = 0; i < 300; ++i) disk.file("f/" + std::to_string(i / 20) + "/" + std::to_string(i), 1);
  Cancellation cancelled;
  cancelled.cancel();
  EXPECT_LT(tree->sizes({disk / "f"}, cancelled).front(), disk.independentSize("f") / 2);
  EXPECT_LE(tree->newestChange(disk / "f", {}, Date{1e18}, cancelled).value_or(Date{}), Date{1e18});
}

TEST_P(FileTreeContract, whatAPathNamesIsTold) {
  disk.file("d/file", 5000);
  disk.link("d", "link");
  disk.date("d/file", Date{1'000'000});
  const auto file = tree->info(disk / "d/file");
  ASSERT_TRUE(file);
  EXPECT_EQ(file->kind, FileKind::regular);
  EXPECT_EQ(file->links, 1u);
  EXPECT_GE(file->allocated, 5000);
  EXPECT_EQ(file->modified, Date{1'000'000});
  EXPECT_GE(file->added, file->modified);
  EXPECT_EQ(tree->info(disk / "link/file")->identity, file->identity);
  EXPECT_EQ(tree->info(disk / "link")->kind, FileKind::link);
  EXPECT_NE(tree->info(disk / "d")->identity, file->identity);
  EXPECT_FALSE(tree->info(disk / "nowhere"));

  EXPECT_EQ(tree->located(disk / "link/file"), disk / "d/file");
  EXPECT_EQ(tree->located(disk / "link"), disk / "link") << "the last part is not followed";
  EXPECT_EQ(tree->located(disk / "link/absent"), disk / "d/absent");
  for (const char* path : {"", "relative", "/", "/tmp/", "/tmp/.", "/tmp/..", "/no/such/folder"})
    EXPECT_EQ(tree->located(path), std::nullopt) << path;

  disk.link(disk / "link/../server/in", "away");
  disk.link("away", "again");
  disk.link("loop", "loop");
  disk.file("server/in/d/file", 1);
  disk.link("d", "server/in/link");
  disk.folder("server/home");
  const std::vector<MountedPlace> mounts = {{"/", true}, {disk / "server", true}, {disk / "d", false}};
  const BlockingPlaces blocking(mounts, "/home/user");
  const std::vector<MountedPlace> server = {{disk / "server", true}};
  const BlockingPlaces none(server, disk / "server/home");
  const auto away = disk / "server/in/link/./x";
  EXPECT_EQ(tree->resolved(disk / "again/link/./x", blocking), away) << "as it stands, unseen";
  EXPECT_TRUE(blocking.hold(away));
  EXPECT_FALSE(blocking.hold(disk / "servers"));
  EXPECT_EQ(tree->resolved(disk / "again/link/./x", none), disk / "server/in/d/x") << "home lies there";
  EXPECT_EQ(tree->resolved(disk / "link", blocking), disk / "d");
  EXPECT_EQ(tree->resolved(disk / "link/absent/../x/", blocking), disk / "d/x");
  for (const auto& path : {disk / "loop/x", std::string("relative"), std::string("/"), std::string()})
    EXPECT_EQ(tree->resolved(path, blocking), path);

  for (const char* path : {"d/file", "d", "nowhere"}) EXPECT_FALSE(tree->isExecutable(disk / path)) << path;
  disk.mode("d/file", 0755);
  EXPECT_TRUE(tree->isExecutable(disk / "link/file"));
}

TEST_P(FileTreeContract, listingsAreInTheOrderOfTheNames) {
  disk.file("d/b", 1);
  disk.file("d/a/x", 1);
  disk.link("a", "d/C");
  const auto listing = tree->list(disk / "d");
  EXPECT_EQ(listing.state, FolderListing::State::read);
  EXPECT_EQ(listing.device, tree->info(disk / "d")->identity.device);
  EXPECT_THAT(listing.entries,
              ElementsAre(FolderEntry{"C", FileKind::link}, FolderEntry{"a", FileKind::folder},
                          FolderEntry{"b", FileKind::regular}));
  disk.link("d", "link");
  for (const char* path : {"link", "d/b", "nowhere"})
    EXPECT_EQ(tree->list(disk / path).state, FolderListing::State::missing) << path;
}

TEST_P(FileTreeContract, theNewestChangeBelowAFolderLeavesSomeNamesOut) {
  for (const char* name : {"p/src/deep/er/file", "p/node_modules/x", "p/src/.git/HEAD"}) disk.file(name, 1);
  for (const char* name : {"p/src/deep/er/file", "p/src/deep/er", "p/src/deep", "p/src"})
    disk.date(name, Date{5000});
  const std::vector<std::string_view> ignored = {"node_modules", ".git"};
  EXPECT_EQ(tree->newestChange(disk / "p", ignored, Date{1e18}, never), Date{5000});
  disk.date("p/src/deep/er/file", Date{6000});
  EXPECT_EQ(tree->newestChange(disk / "p", ignored, Date{1e18}, never), Date{6000});
  EXPECT_GT(tree->newestChange(disk / "p", {}, Date{1e18}, never), Date{6000});
  EXPECT_EQ(tree->newestChange(disk / "p/node_modules/x", {}, Date{0}, never), std::nullopt);
  EXPECT_EQ(tree->newestChange(disk / "nowhere", {}, Date{0}, never), std::nullopt);
}

TEST_P(FileTreeContract, removingNeverFollowsALinkAndNeverLeavesTheFolder) {
  disk.file("bin/one/file", 1);
  disk.file("bin/two", 1);
  disk.file("bin/other", 1);
  disk.file("precious/file", 1);
  disk.link("../precious", "bin/link");
  disk.link("../../precious", "bin/one/inner-link");
  disk.link("bin", "bin-link");
  EXPECT_EQ(remove(disk / "bin-link", {"two"}), 0u) << "a link as the folder";
  EXPECT_EQ(remove(disk / "bin-link/one", {"file"}), 0u) << "a link on the way";
  for (const char* name : {"", ".", "..", "../precious", "one/file", "/etc", "link/file"})
    EXPECT_EQ(remove(disk / "bin", {name}), 0u) << name;
  EXPECT_EQ(remove(disk / "bin", {"../precious", "one", "two", "link"}), 3u);
  EXPECT_THAT(disk.names("bin"), ElementsAre("other"));
  EXPECT_THAT(disk.names("precious"), ElementsAre("file"));
}

TEST_P(FileTreeContract, exchangingEntriesForLinksWhileTheyAreRemovedLeadsNowhere) {
  for (int i = 0; i < 50; ++i) disk.file("precious/" + std::to_string(i), 1);
  std::atomic<bool> done = false;
  std::atomic<int> round = 0;
  const auto top = [](int round) { return "x" + std::to_string(round); };
  std::thread attacker([&] {
    for (unsigned i = 0; !done; ++i) {
      const auto entry = disk / ("bin/" + top(round) + "/" + std::to_string(i % 8));
      disk.exchangeForLink(entry, disk / "precious", disk / "aside");
    }
  });
  disk.folder("bin");
  for (int next = 1; next <= 30; ++next) {
    for (int i = 0; i < 8; ++i) disk.file("fresh/" + std::to_string(i) + "/file", 1);
    disk.move("fresh", "bin/" + top(next));
    round = next;
    remove(disk / "bin", {top(next)});
  }
  done = true;
  attacker.join();
  EXPECT_EQ(disk.names("precious").size(), 50u);
}

} // namespace korvell
