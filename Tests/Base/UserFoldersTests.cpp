#include "Base/UserFolders.h"

#include "Tests/Fakes/FakeEnvironment.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gtest/gtest.h>

using namespace korvell;

TEST(UserFolders, onLinuxHomeAndTheBaseDirectoriesDecide) {
  const auto plain = linuxUserFolders(fakeEnvironment({{"HOME", "/home/ada/"}}));
  EXPECT_EQ(plain, (UserFolders{"/home/ada", "/home/ada/.local/share/korvell", "/home/ada/.config/korvell",
                                "", "/home/ada/.cache", "/home/ada/.local/share", "/home/ada/.config"}));
  const auto set = linuxUserFolders(fakeEnvironment({{"HOME", "/home/ada"},
                                                     {"XDG_DATA_HOME", "/data/"},
                                                     {"XDG_CONFIG_HOME", "relative/is/ignored"},
                                                     {"XDG_CACHE_HOME", "/cache"},
                                                     {"XDG_RUNTIME_DIR", "/run/user/1000"}}));
  EXPECT_EQ(set, (UserFolders{"/home/ada", "/data/korvell", "/home/ada/.config/korvell",
                              "/run/user/1000/korvell", "/cache", "/data", "/home/ada/.config"}));
}

TEST(UserFolders, aCacheFolderThatHoldsTheHomeFolderIsNotBelieved) {
  const std::pair<const char*, const char*> rows[] = {
      {"/home/ada", "/home/ada/.cache"},     {"/home/ada/./x/..", "/home/ada/.cache"},
      {"/home", "/home/ada/.cache"},         {"/", "/home/ada/.cache"},
      {"/home/ada/", "/home/ada/.cache"},    {"/home/ad", "/home/ad"},
      {"/home/ada/Cache", "/home/ada/Cache"}};
  for (const auto& [value, cacheHome] : rows)
    EXPECT_EQ(linuxUserFolders(fakeEnvironment({{"HOME", "/home/ada"}, {"XDG_CACHE_HOME", value}})).cacheHome,
              cacheHome)
        << value;
}

TEST(UserFolders, whereHOMENamesNoneThePasswordDatabaseDecidesAndNeverTheRoot) {
  const auto told = [](std::optional<std::string> home) { return [home] { return home; }; };
  for (const auto& environment :
       {fakeEnvironment({}), fakeEnvironment({{"HOME", "ada"}}), fakeEnvironment({{"HOME", ""}}),
        fakeEnvironment({{"HOME", "/"}}), fakeEnvironment({{"HOME", "//"}}),
        fakeEnvironment({{"HOME", "/."}}), fakeEnvironment({{"HOME", "/../"}}),
        fakeEnvironment({{"HOME", "/home//.././"}})}) {
    EXPECT_EQ(linuxUserFolders(withHome(environment, told("/home/ada/"))).home, "/home/ada");
    for (const auto& useless :
         {std::optional<std::string>(), std::optional<std::string>("/."), std::optional<std::string>("/")}) {
      const auto completed = withHome(environment, told(useless));
      EXPECT_FALSE(completed("HOME"));
      const auto folders = linuxUserFolders(completed);
      EXPECT_FALSE(folders.hasHome());
      EXPECT_FALSE(macOSUserFolders(completed).hasHome());
      for (const auto* folder : {&folders.data, &folders.config, &folders.cacheHome, &folders.dataHome})
        EXPECT_FALSE(ensurePrivateFolder(*folder)) << *folder << ": not even for root";
    }
  }
  const auto own = fakeEnvironment({{"HOME", "/home/eve"}, {"TMPDIR", "tmp"}});
  EXPECT_EQ(withHome(own, told("/home/ada"))("HOME"), "/home/eve");
  EXPECT_TRUE(linuxUserFolders(own).hasHome());
  EXPECT_EQ(macOSUserFolders(own).runtime, "") << "a relative folder is ignored";
}

TEST(UserFolders, theRootIsNobodysFolderForDataEither) {
  for (const char* root : {"/", "//", "/.", "/../", "/x/.."}) {
    std::map<std::string, std::string, std::less<>> variables = {{"HOME", "/home/ada"}, {"TMPDIR", root}};
    for (const char* name : {"DATA_HOME", "CONFIG_HOME", "CACHE_HOME", "RUNTIME_DIR"})
      variables["XDG_" + std::string(name)] = root;
    EXPECT_EQ(linuxUserFolders(fakeEnvironment(variables)),
              linuxUserFolders(fakeEnvironment({{"HOME", "/home/ada"}})))
        << root;
    EXPECT_EQ(macOSUserFolders(fakeEnvironment(variables)).runtime, "") << root;
  }
}

TEST(UserFolders, onMacOSTheLibraryHasThem) {
  const auto folders =
      macOSUserFolders(fakeEnvironment({{"HOME", "/Users/ada"}, {"TMPDIR", "/var/folders/x/T/"}}));
  EXPECT_EQ(folders.data, "/Users/ada/Library/Application Support/Korvell");
  EXPECT_EQ(folders.cacheHome, "/Users/ada/Library/Caches");
  EXPECT_EQ(folders.runtime, "/var/folders/x/T/korvell");
}

TEST(PrivateFolder, isMadeWithItsParentsForTheUserOnly) {
  const TemporaryFolder folder;
  std::filesystem::create_directory(folder / "open");
  ASSERT_EQ(chmod((folder / "open").c_str(), 0755), 0);
  for (int again = 0; again < 2; ++again) {
    EXPECT_TRUE(ensurePrivateFolder(folder / "open/a/b"));
    EXPECT_EQ(folder.permissions("open"), 0755u) << "what was there stays as it was";
    EXPECT_EQ(folder.permissions("open/a"), 0700u);
    EXPECT_EQ(folder.permissions("open/a/b"), 0700u);
  }
  folder.write("file", "x");
  std::filesystem::create_symlink("nowhere", folder / "dangling");
  std::filesystem::create_symlink("open", folder / "link");
  for (const auto& path : {folder / "file", folder / "file/a", folder / "dangling", std::string()})
    EXPECT_FALSE(ensurePrivateFolder(path)) << path;
  EXPECT_TRUE(ensurePrivateFolder(folder / "link"));
}
