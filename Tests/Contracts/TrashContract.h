#pragma once
// The contract of Trash. Instantiate it with makers of a Trash that lives in a generated tree.

#include "Platform/Trash.h"
#include "Tests/Fakes/GeneratedTree.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>
#include <sys/stat.h>

namespace korvell {

using namespace std::string_literals;

using TrashMaker = std::function<std::unique_ptr<Trash>(const GeneratedTree&)>;

inline FileIdentity identityAt(const std::string& path) {
  struct stat status {};
  lstat(path.c_str(), &status);
  return {std::uint64_t(status.st_dev), std::uint64_t(status.st_ino)};
}

class TrashContract : public testing::TestWithParam<TrashMaker> {
protected:
  GeneratedTree disk;
  std::unique_ptr<Trash> trash = GetParam()(disk);

  std::vector<bool> move(const std::vector<TrashRequest>& requests) {
    std::vector<bool> done;
    for (const auto& outcome : trash->move(requests)) done.push_back(bool(outcome));
    return done;
  }
  /// The objects that lie in the Trash.
  std::vector<FileIdentity> inside() {
    std::vector<FileIdentity> found;
    for (const auto& folder : trash->folders())
      for (const auto& entry : std::filesystem::directory_iterator(folder.entries))
        found.push_back(identityAt(entry.path()));
    return found;
  }
};

TEST_P(TrashContract, filesFoldersAndLinksAreMovedWhole) {
  disk.file("home/things/file", 10);
  disk.file("home/things/folder/inner", 10);
  disk.link("nowhere", "home/things/dangling");
  disk.link("folder", "home/things/link");
  std::vector<TrashRequest> requests;
  std::vector<FileIdentity> objects;
  for (const char* name : {"link", "dangling", "folder", "file"}) {
    requests.push_back({disk / ("home/things/"s + name)});
    objects.push_back(identityAt(requests.back().path));
  }
  requests.back().picked = objects.back();
  EXPECT_THAT(move(requests), testing::Each(true));
  EXPECT_THAT(inside(), testing::UnorderedElementsAreArray(objects));
  EXPECT_THAT(disk.names("home/things"), testing::IsEmpty());
  disk.file("home/things/file", 10);
  EXPECT_THAT(move({{disk / "home/things/file"}}), testing::ElementsAre(true)) << "the name is taken";
  EXPECT_EQ(inside().size(), 5u);
}

TEST_P(TrashContract, whatIsNotWhatWasPickedStays) {
  disk.file("home/things/picked", 10);
  disk.file("home/things/project/modules/x", 10);
  const auto picked = identityAt(disk / "home/things/picked"),
             modules = identityAt(disk / "home/things/project/modules");
  disk.file("home/things/other", 10);
  disk.move("home/things/other", "home/things/picked"); // another file in its place
  EXPECT_THAT(move({{disk / "home/things/picked", picked}}), testing::ElementsAre(false));
  disk.move("home/things/project",
            "home/things/elsewhere"); // a link in place of a folder on the way, to the very same object
  disk.link("elsewhere", "home/things/project");
  EXPECT_THAT(move({{disk / "home/things/project/modules", modules}}), testing::ElementsAre(false));
  EXPECT_THAT(disk.names("home/things"), testing::ElementsAre("elsewhere", "picked", "project"));
  EXPECT_THAT(disk.names("home/things/elsewhere"), testing::ElementsAre("modules"));
  EXPECT_TRUE(trash->folders().empty() || inside().empty());
}

TEST_P(TrashContract, oneThatCannotBeMovedDoesNotHinderTheOthers) {
  disk.file("home/things/b", 10);
  auto outcomes = trash->move({{disk / "home/things/absent"},
                               {"relative"},
                               {""},
                               {"/"},
                               {disk / "home/things/b/.."},
                               {disk / "home/things/b"}});
  ASSERT_EQ(outcomes.size(), 6u);
  EXPECT_TRUE(outcomes.back());
  outcomes.pop_back();
  for (const auto& outcome : outcomes) EXPECT_TRUE(!outcome && !outcome.reason().empty());
}

} // namespace korvell
