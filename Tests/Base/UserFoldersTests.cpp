#include "Base/UserFolders.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

using namespace korvell;

namespace {

Environment environmentOf(std::map<std::string, std::string> variables) {
  return [variables](std::string_view name) -> std::optional<std::string> {
    const auto found = variables.find(std::string(name));
    if (found == variables.end()) return std::nullopt;
    return found->second;
  };
}

mode_t modeOf(const std::string& path) {
  struct stat info {};
  return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

} // namespace

TEST(UserFolders, onLinuxHomeAndTheBaseDirectoriesDecide) {
  const auto plain = linuxUserFolders(environmentOf({{"HOME", "/home/ada/"}}));
  EXPECT_EQ(plain, (UserFolders{"/home/ada", "/home/ada/.local/share/korvell", "/home/ada/.config/korvell",
                                "", "/home/ada/.cache", "/home/ada/.local/share", "/home/ada/.config"}));
  const auto set = linuxUserFolders(environmentOf({{"HOME", "/home/ada"},
                                                   {"XDG_DATA_HOME", "/data/"},
                                                   {"XDG_CONFIG_HOME", "relative/is/ignored"},
                                                   {"XDG_CACHE_HOME", "/"},
                                                   {"XDG_RUNTIME_DIR", "/run/user/1000"}}));
  EXPECT_EQ(set, (UserFolders{"/home/ada", "/data/korvell", "/home/ada/.config/korvell",
                              "/run/user/1000/korvell", "/", "/data", "/home/ada/.config"}));
}

TEST(UserFolders, aHomeThatIsNoneIsTheRoot) {
  for (const auto& variables : {std::map<std::string, std::string>{}, {{"HOME", "ada"}}, {{"HOME", "/"}}}) {
    EXPECT_EQ(linuxUserFolders(environmentOf(variables)).config, "/.config/korvell");
    EXPECT_EQ(macOSUserFolders(environmentOf(variables)).data, "/Library/Application Support/Korvell");
  }
}

TEST(UserFolders, onMacOSTheLibraryHasThem) {
  const auto folders =
      macOSUserFolders(environmentOf({{"HOME", "/Users/ada"}, {"TMPDIR", "/var/folders/x/T/"}}));
  EXPECT_EQ(folders.data, "/Users/ada/Library/Application Support/Korvell");
  EXPECT_EQ(folders.cacheHome, "/Users/ada/Library/Caches");
  EXPECT_EQ(folders.runtime, "/var/folders/x/T/korvell");
}

TEST(PrivateFolder, isMadeWithItsParentsForTheUserOnly) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "open");
  ASSERT_EQ(chmod((folder / "open").c_str(), 0755), 0);
  EXPECT_TRUE(ensurePrivateFolder(folder / "open/a/b"));
  EXPECT_EQ(modeOf(folder / "open"), 0755u) << "what was there stays as it was";
  EXPECT_EQ(modeOf(folder / "open/a"), 0700u);
  EXPECT_EQ(modeOf(folder / "open/a/b"), 0700u);
  EXPECT_TRUE(ensurePrivateFolder(folder / "open/a/b"));

  std::ofstream(folder / "file") << "x";
  EXPECT_FALSE(ensurePrivateFolder(folder / "file"));
  EXPECT_FALSE(ensurePrivateFolder(folder / "file/a"));
  std::filesystem::create_symlink("nowhere", folder / "dangling");
  EXPECT_FALSE(ensurePrivateFolder(folder / "dangling"));
  std::filesystem::create_symlink("open", folder / "link");
  EXPECT_TRUE(ensurePrivateFolder(folder / "link"));
  EXPECT_FALSE(ensurePrivateFolder(""));
}
