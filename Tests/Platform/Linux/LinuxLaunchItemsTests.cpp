#include "Platform/Linux/LinuxLaunchItems.h"

#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

class LaunchItemsTests : public testing::Test {
protected:
  TemporaryFolder disk;
  UserFolders folders{.home = disk / "home/me",
                      .runtime = disk / "run/user/1/korvell",
                      .dataHome = disk / "home/me/data",
                      .configHome = disk / "home/me/config"};
  std::vector<std::string> commands;
  LinuxLaunchItems items{folders,
                         [this](const std::string& path, const std::vector<std::string>& arguments, Seconds,
                                const Cancellation&) -> std::optional<ShellResult> {
                           std::string line = path.substr(path.rfind('/') + 1);
                           for (const auto& argument : arguments) line += " " + argument;
                           commands.push_back(line);
                           return std::nullopt; // nothing can be started
                         },
                         {.session = "", .system = ""},
                         "/opt/own/bin:relative::" + (disk / "usr/bin"),
                         disk.path().string()};

  std::vector<std::string> paths() {
    std::vector<std::string> result;
    for (const auto& file : items.files()) result.push_back(file.path.substr(disk.path().string().size()));
    return result;
  }
};

TEST_F(LaunchItemsTests, filesOfEveryFolderInOrder) {
  for (const char* name :
       {"etc/systemd/system/z.service", "etc/systemd/system/a.service", "etc/systemd/user/u.service",
        "etc/xdg/autostart/x.desktop", "home/me/config/systemd/user/own.service",
        "home/me/config/autostart/own.desktop", "etc/systemd/system/a.timer", "etc/systemd/system/.service",
        "etc/systemd/system/readme"})
    disk.write(name, name);
  EXPECT_THAT(paths(),
              ElementsAre("/home/me/config/autostart/own.desktop", "/home/me/config/systemd/user/own.service",
                          "/etc/xdg/autostart/x.desktop", "/etc/systemd/user/u.service",
                          "/etc/systemd/system/a.service", "/etc/systemd/system/z.service"));
  const auto last = items.files().back();
  struct stat status {};
  ASSERT_EQ(lstat(last.path.c_str(), &status), 0);
  EXPECT_EQ(last, (LaunchFile{LaunchScope::system,
                              LaunchFormat::systemdService,
                              disk / "etc/systemd/system/z.service",
                              "etc/systemd/system/z.service",
                              disk / "etc/systemd/system/z.service",
                              {status.st_dev, status.st_ino}}));
}

TEST_F(LaunchItemsTests, aFolderBehindALinkHasItsFilesElsewhere) {
  disk.write("dotfiles/autostart/own.desktop", "");
  disk.write("home/me/readme", "");
  std::filesystem::create_symlink(disk / "dotfiles", disk / "home/me/config");
  EXPECT_THAT(paths(), ElementsAre("/home/me/config/autostart/own.desktop"));
  EXPECT_EQ(items.files().front().location, disk / "dotfiles/autostart/own.desktop");
}

TEST_F(LaunchItemsTests, onlyRegularFilesOfASensibleSize) {
  const std::string folder = "etc/systemd/system/";
  disk.write(folder + "huge.service", std::string(300 * 1024, '#'));
  disk.write("usr/lib/real.service", "");
  std::filesystem::create_symlink(disk / "usr/lib/real.service", disk / (folder + "alias.service"));
  std::filesystem::create_directory(disk / (folder + "folder.service"));
  ASSERT_EQ(mkfifo((disk / (folder + "pipe.service")).c_str(), 0600), 0);
  EXPECT_THAT(paths(), IsEmpty());
}

TEST_F(LaunchItemsTests, dropInsOfEveryFolderFollowTheirService) {
  disk.write("etc/systemd/user/a-b.service", "file");
  const std::pair<const char*, const char*> written[] = {
      {"home/me/data/systemd/user/a-b.service.d/10.conf", "own data"},
      {"run/systemd/user/a-.service.d/15.conf", "prefix"},
      {"etc/systemd/user/a-b.service.d/20.conf", "etc"},
      {"usr/lib/systemd/user/a-b.service.d/20.conf", "hidden by etc"},
      {"run/user/1/systemd/user.control/service.d/30.conf", "type, after those by name"},
      {"etc/systemd/user/a-.service.d/30.conf", "prefix before type"},
      {"usr/lib/systemd/user/service.d/40.conf", "type"},
      {"usr/lib/systemd/user/a-b.service.d/50.conf", "masked"},
      {"etc/systemd/system/a-b.service.d/60.conf", "another manager's"},
      {"etc/systemd/user/b-.service.d/60.conf", "another unit's"}};
  for (const auto& [path, text] : written) disk.write(path, text);
  std::filesystem::create_symlink("/dev/null", disk / "etc/systemd/user/a-b.service.d/50.conf");
  const auto bytes = items.files().front().bytes;
  EXPECT_EQ(bytes.substr(0, bytes.find_last_not_of('\n') + 1),
            "file\nown data\nprefix\netc\nprefix before type\ntype");
}

TEST_F(LaunchItemsTests, dropInsFollowTheirService) {
  disk.write("etc/systemd/system/a.service", "[Service]\nExecStart=/one");
  disk.write("etc/systemd/system/a.service.d/20.conf", "[Service]\nRestart=no\n");
  disk.write("etc/systemd/system/a.service.d/10.conf", "[Service]\nExecStart=\nExecStart=/two\n");
  disk.write("etc/systemd/system/a.service.d/notes", "no drop-in");
  EXPECT_EQ(items.files().front().bytes,
            "[Service]\nExecStart=/one\n[Service]\nExecStart=\nExecStart=/two\n\n"
            "[Service]\nRestart=no\n");
}

TEST_F(LaunchItemsTests, whatIsMissing) {
  disk.write("opt/here", "");
  std::filesystem::create_symlink(disk / "opt/here", disk / "opt/link");
  std::filesystem::create_symlink(disk / "opt/gone", disk / "opt/dangling");
  std::filesystem::create_symlink(disk / "opt/circle", disk / "opt/circle");
  EXPECT_FALSE(items.isMissing(disk / "opt/here"));
  EXPECT_FALSE(items.isMissing(disk / "opt/link"));
  EXPECT_TRUE(items.isMissing(disk / "opt/gone"));
  EXPECT_TRUE(items.isMissing(disk / "opt/dangling"));
  EXPECT_TRUE(items.isMissing(disk / "opt/here/below"));
  EXPECT_FALSE(items.isMissing(disk / "opt/circle")) << "can't be told";
}

TEST_F(LaunchItemsTests, whereProgramsAreLookedFor) {
  const auto& searched = items.places().folders;
  for (const std::string& folder : {disk / "usr/bin", disk / "usr/games", disk / "usr/local/games",
                                    disk / "snap/bin", disk / "home/me/bin", disk / "home/me/.local/bin",
                                    disk / "home/me/.cargo/bin", std::string("/opt/own/bin")})
    EXPECT_EQ(std::ranges::count(searched, folder), 1) << folder;
  EXPECT_TRUE(std::ranges::all_of(searched, [](const auto& folder) { return folder.starts_with('/'); }));
}

TEST_F(LaunchItemsTests, jobsAreStoppedByTheirManager) {
  std::filesystem::create_directories(disk / "units");
  const auto job = [&](LaunchScope scope, const std::string& label) {
    return LaunchJob{scope, disk / ("units/" + label), label};
  };
  EXPECT_TRUE(items.stop(job(LaunchScope::user, "own.service")));
  items.removed(job(LaunchScope::user, "own.service"));
  EXPECT_TRUE(items.stop(job(LaunchScope::allUsers, "u.service")));
  EXPECT_TRUE(items.stop(job(LaunchScope::system, "-a.service")));
  items.removed(job(LaunchScope::system, "-a.service"));
  EXPECT_TRUE(items.stop(job(LaunchScope::user, "my-app.desktop")));
  EXPECT_THAT(commands,
              ElementsAre("systemctl --no-ask-password --user disable --now -- own.service",
                          "systemctl --no-ask-password --user daemon-reload",
                          "systemctl --no-ask-password --global disable -- u.service",
                          "systemctl --no-ask-password --user disable --now -- u.service",
                          "systemctl --no-ask-password --system disable --now -- -a.service",
                          "systemctl --no-ask-password --system daemon-reload",
                          R"(systemctl --no-ask-password --user stop -- app-my\x2dapp@autostart.service)"));
}

TEST_F(LaunchItemsTests, theJobOfAFileThatGoesBeforeIsLeftAlone) {
  const LaunchJob unit{LaunchScope::allUsers, disk / "etc/systemd/user/foo.service", "foo.service"};
  const LaunchJob entry{LaunchScope::allUsers, disk / "etc/xdg/autostart/foo.desktop", "foo.desktop"};
  disk.write("etc/systemd/user/foo.service", "");
  disk.write("etc/xdg/autostart/foo.desktop", "");
  disk.write("run/systemd/user/foo.service", ""); // goes after it
  EXPECT_TRUE(items.stop(unit) && items.stop(entry));
  EXPECT_EQ(commands.size(), 3u) << "nothing goes before them";
  commands.clear();
  disk.write("home/me/config/systemd/user/foo.service", "");
  disk.write("home/me/config/autostart/foo.desktop", "");
  EXPECT_TRUE(items.stop(unit) && items.stop(entry));
  EXPECT_THAT(commands, IsEmpty());
  EXPECT_TRUE(
      items.stop({LaunchScope::user, disk / "home/me/config/systemd/user/foo.service", "foo.service"}));
  EXPECT_EQ(commands.size(), 1u) << "the user's own";
}

TEST_F(LaunchItemsTests, aFileThatMayNotBeRemovedKeepsItsJob) {
  const auto outcome = items.stop({LaunchScope::system, disk / "no/such/folder/a.service", "a.service"});
  ASSERT_FALSE(outcome);
  EXPECT_THAT(outcome.reason(), EndsWith("a.service: that takes an administrator."));
  EXPECT_THAT(commands, IsEmpty());
}

} // namespace
} // namespace korvell
