#include "Base/Files.h"
#include "Core/Storage/StorageLocations.h"
#include "Core/Storage/StorageModels.h"
#include "Platform/Formats/LinuxWords.h"
#include "Tests/Fakes/FakeEnvironment.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using enum StorageKind;

TEST(CatalogueTests, twentyKindsInFiveGroupsThatFollowEachOther) {
  std::vector<int> sizes(allCases<StorageGroup>().size());
  std::vector<StorageKind> check, keep;
  auto last = StorageGroup::xcode;
  for (const auto& [kind, name, title] : allCases<StorageKind>()) {
    EXPECT_GE(group(kind), last) << name;
    last = group(kind);
    ++sizes[size_t(last)];
    if (safety(kind) == StorageSafety::check) check.push_back(kind);
    if (safety(kind) == StorageSafety::keep) keep.push_back(kind);
  }
  EXPECT_THAT(sizes, ElementsAre(5, 1, 10, 1, 3));
  EXPECT_THAT(check, ElementsAre(docker, appCaches, trash, downloads));
  EXPECT_THAT(keep, ElementsAre(archives));
}

TEST(CatalogueTests, macOSKeepsPackagesInItsLibrary) {
  const auto places = macOSStorageLocations(macOSUserFolders(fakeEnvironment({{"HOME", "/Users/u"}})));
  EXPECT_THAT(places.cachePaths(pnpm),
              ElementsAre("/Users/u/Library/pnpm/store", "/Users/u/Library/Caches/pnpm"));
  EXPECT_THAT(places.cachePaths(uv), ElementsAre("/Users/u/.cache/uv", "/Users/u/Library/Caches/uv"));
  EXPECT_EQ(places.brewCache, "/Users/u/Library/Caches/Homebrew");
  EXPECT_THAT(places.countedElsewhere,
              UnorderedElementsAre("Homebrew", "pip", "go-build", "CocoaPods", "Yarn", "pnpm", "uv"));
  for (const auto kind : packageCacheKinds()) EXPECT_FALSE(places.cachePaths(kind).empty()) << rawValue(kind);
}

TEST(CatalogueTests, linuxFollowsTheBaseDirectories) {
  const auto folders = linuxUserFolders(
      fakeEnvironment({{"HOME", "/home/u"}, {"XDG_CACHE_HOME", "/c"}, {"XDG_DATA_HOME", "/d"}}));
  const auto places = linuxStorageLocations(folders, "");
  EXPECT_THAT(places.cachePaths(pnpm), ElementsAre("/d/pnpm/store", "/c/pnpm"));
  EXPECT_THAT(places.cachePaths(yarn), ElementsAre("/c/yarn", "/home/u/.yarn/berry/cache"));
  EXPECT_THAT(places.cachePaths(cocoapods), IsEmpty());
  EXPECT_EQ(places.brewCache, "/c/Homebrew");
  EXPECT_THAT(places.countedElsewhere,
              UnorderedElementsAre("Homebrew", "pip", "go-build", "yarn", "pnpm", "uv"));
}

TEST(CatalogueTests, linuxTakesTheDownloadsFolderFromTheDesktop) {
  const std::pair<const char*, const char*> rows[] = {
      {"", "/home/u/Downloads"},
      {"# a comment\nXDG_DOWNLOAD_DIR=\"$HOME/Téléchargements/\"\n", "/home/u/Téléchargements"},
      {"XDG_DOWNLOAD_DIR=\"/data/in\\\"box\"", "/data/in\"box"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/a\"\nXDG_DOWNLOAD_DIR=\"$HOME/b\"", "/home/u/b"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/\"", "/home/u/Downloads"}, // how the desktop says "none"
      {"XDG_DOWNLOAD_DIR=\"/home\"", "/home/u/Downloads"},  // would hold the home folder
      {"XDG_DOWNLOAD_DIR=\"relative\"", "/home/u/Downloads"},
      {"XDG_DOWNLOAD_DIR=\"$HOMEWARD/x\"", "/home/u/Downloads"},
      {"XDG_DOWNLOAD_DIR=\"$HOME/unclosed\\", "/home/u/Downloads"},
      {"XDG_DOWNLOAD_DIR=$HOME/bare", "/home/u/Downloads"},
  };
  const auto folders = linuxUserFolders(fakeEnvironment({{"HOME", "/home/u"}}));
  for (const auto& [text, folder] : rows)
    EXPECT_EQ(linuxStorageLocations(folders, text).downloads, folder) << text;
}

TEST(CatalogueTests, aCategoryIsSortedBySizeAndKeepsTheOrderOfEquals) {
  EXPECT_EQ(category(npm, {}), std::nullopt);
  const auto found =
      category(npm, {{.id = "a", .bytes = 1}, {.id = "b", .bytes = 2}, {.id = "c", .bytes = 1}});
  ASSERT_TRUE(found);
  EXPECT_EQ(found->bytes, 4);
  EXPECT_EQ(found->items[0].id + found->items[1].id + found->items[2].id, "bac");
  EXPECT_DEATH((void)category(npm, {{.bytes = INT64_MAX}, {.bytes = 1}}), "64 bits");
}

TEST(CatalogueTests, theHomeFolderIsShownAsATilde) {
  EXPECT_EQ(tildePath("/home/u/.npm", "/home/u"), "~/.npm");
  EXPECT_EQ(tildePath("/home/u", "/home/u"), "~");
  EXPECT_EQ(tildePath("/home/user2/x", "/home/u"), "/home/user2/x");
  EXPECT_EQ(tildePath("/x", "/"), "/x");
}

TEST(CatalogueTests, resultsPrintAsJSON) {
  const auto action = StorageAction::command("/bin/docker", {"prune", "-f"}, Seconds{300});
  const StorageScanResult result{{{.kind = docker, .bytes = 7, .action = action, .note = "n"}}, Date{0}};
  EXPECT_EQ(dumpJSON(toValue(result)),
            R"({"date":"1970-01-01T00:00:00.000Z","categories":[{"kind":"docker","bytes":7,"items":[],)"
            R"("action":{"type":"command","path":"/bin/docker","arguments":["prune","-f"],"timeout":300.0},)"
            R"("note":"n"}]})");
}

TEST(CatalogueTests, linuxNamesItsOwnFolders) {
  setLocalization(linuxWords());
  EXPECT_EQ(title(StorageGroup::mac), "Your computer");
  EXPECT_THAT(explanation(appCaches), testing::HasSubstr("~/.cache"));
  setLocalization({});
}

} // namespace
} // namespace korvell
