#include "Platform/Linux/LinuxTrash.h"

#include "Tests/Contracts/TrashContract.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FolderTrash.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/wait.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// A home folder and a volume, which is a folder that the table of mounts names.
struct World {
  explicit World(const GeneratedTree& tree) : disk(tree) {
    clock.wall = {1'772'366'400.75}; // 2026-03-01 12:00 UTC
    std::filesystem::create_directories(disk / "volume");
    std::ofstream(disk / "mountinfo") << "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
                                      << "21 20 8:2 / " << disk / "volume"
                                      << " rw - ext4 /dev/sdb1 rw\n"
                                      << "22 20 0:9 / " << disk / "home/.cache"
                                      << " rw - tmpfs tmpfs rw\n"
                                      << "23 20 0:10 / " << disk / "server"
                                      << " rw - nfs4 host:/export rw\n";
  }
  std::unique_ptr<LinuxTrash> trash() {
    return std::make_unique<LinuxTrash>(disk / "home/.local/share", geteuid(), clock, zone,
                                        disk / "mountinfo");
  }
  const GeneratedTree& disk;
  FakeClock clock;
  FakeTimeZone zone{3600};
};

class LinuxTrashTests : public testing::Test {
protected:
  GeneratedTree disk;
  World world{disk};
  std::unique_ptr<LinuxTrash> trash = world.trash();
  const std::string mine = ".Trash-" + std::to_string(geteuid());

  std::string text(const std::string& name) {
    std::ostringstream text;
    text << std::ifstream(disk / name).rdbuf();
    return text.str();
  }
  bool move(const std::string& name) { return bool(trash->move({{disk / name}}).front()); }
};

TEST_F(LinuxTrashTests, theRecordSaysFromWhereAndWhen) {
  disk.file("home/\xc3\xa4 a%20b\n\xff", 1);
  ASSERT_TRUE(move("home/\xc3\xa4 a%20b\n\xff"));
  EXPECT_EQ(text("home/.local/share/Trash/info/\xc3\xa4 a%20b\n\xff.trashinfo"),
            "[Trash Info]\nPath=" + (disk / "home") +
                "/%C3%A4%20a%2520b%0A%FF\nDeletionDate=2026-03-01T13:00:00\n");
  struct stat status {};
  lstat((disk / "home/.local/share/Trash").c_str(), &status);
  EXPECT_EQ(status.st_mode & 07777, 0700u);
}

TEST_F(LinuxTrashTests, aVolumeKeepsWhatWasOnIt) {
  disk.file("volume/in/file", 1);
  ASSERT_TRUE(move("volume/in/file"));
  EXPECT_THAT(text("volume/" + mine + "/info/file.trashinfo"), testing::HasSubstr("Path=in/file\n"));
  EXPECT_THAT(disk.names("volume/" + mine + "/files"), ElementsAre("file"));

  // An administrator's Trash is preferred, once it has the sticky bit.
  disk.folder("volume/.Trash");
  disk.file("volume/second", 1);
  ASSERT_TRUE(move("volume/second"));
  EXPECT_THAT(disk.names("volume/.Trash"), IsEmpty());
  disk.mode("volume/.Trash", 01777);
  disk.file("volume/third", 1);
  ASSERT_TRUE(move("volume/third"));
  EXPECT_THAT(disk.names("volume/.Trash/" + std::to_string(geteuid()) + "/files"), ElementsAre("third"));

  std::vector<std::string> folders;
  for (const auto& folder : trash->folders()) folders.push_back(folder.entries);
  EXPECT_THAT(folders, ElementsAre(disk / "volume/.Trash/" + std::to_string(geteuid()) + "/files",
                                   disk / ("volume/" + mine + "/files")));
}

TEST_F(LinuxTrashTests, whateverWasMovedIsListed) {
  disk.file("home/.cache/pip/x", 1);
  disk.folder("server/" + mine);
  ASSERT_TRUE(move("home/.cache/pip"));
  const auto folders = trash->folders();
  ASSERT_EQ(folders.size(), 1u) << "servers are not asked: one that is gone blocks";
  EXPECT_EQ(folders[0].entries, disk / ("home/.cache/" + mine + "/files"));
  EXPECT_THAT(disk.names("home/.cache/" + mine + "/files"), ElementsAre("pip"));
}

TEST_F(LinuxTrashTests, aTrashThatIsALinkIsNotUsed) {
  disk.file("precious/files/keep", 1);
  disk.folder("precious/info");
  disk.file("volume/file", 1);
  disk.link("../precious", "volume/" + mine);
  EXPECT_FALSE(move("volume/file"));
  disk.file("home/file", 1);
  disk.link("../../../precious", "home/.local/share/Trash");
  EXPECT_FALSE(move("home/file"));
  EXPECT_THAT(trash->folders(), IsEmpty());
  std::filesystem::remove(disk / "home/.local/share/Trash");
  disk.folder("home/.local/share/Trash");
  disk.link(disk / "precious/files", "home/.local/share/Trash/files");
  EXPECT_FALSE(move("home/file"));
  EXPECT_THAT(disk.names("precious/files"), ElementsAre("keep"));
  EXPECT_THAT(disk.names("precious/info"), IsEmpty()) << "no record stays behind";
}

TEST_F(LinuxTrashTests, theTrashAndWhatHoldsItStay) {
  disk.file("home/.local/share/Trash/files/entry", 1);
  disk.folder("home/.local/share/Trash/info");
  disk.file("volume/" + mine + "/files/entry", 1);
  for (const std::string& name :
       std::vector<std::string>{"home/.local/share/Trash", "home/.local/share/Trash/files/entry",
                                "home/.local/share", "home", "volume", "volume/" + mine + "/files/entry"})
    EXPECT_FALSE(move(name)) << name;
}

TEST_F(LinuxTrashTests, takenNamesAreNumberedAndLongOnesAreCut) {
  disk.file("home/.local/share/Trash/files/lonely", 1); // an entry without a record
  disk.file("home/lonely", 1);
  ASSERT_TRUE(move("home/lonely"));
  EXPECT_THAT(disk.names("home/.local/share/Trash/files"), ElementsAre("lonely", "lonely.2"));
  EXPECT_THAT(disk.names("home/.local/share/Trash/info"), ElementsAre("lonely.2.trashinfo"));

  std::string longName;
  while (longName.size() + 2 <= 255) longName += "\xc3\xa4";
  for (int i = 0; i < 2; ++i) {
    disk.file("home/" + longName, 1);
    ASSERT_TRUE(move("home/" + longName));
  }
  for (const auto& name : disk.names("home/.local/share/Trash/files")) {
    EXPECT_LE(name.size(), 245u);
    const auto body = name.substr(0, name.find('.'));
    EXPECT_TRUE(name[0] == 'l' || body.size() % 2 == 0) << "cut within a character";
  }
}

TEST_F(LinuxTrashTests, aLinkOnTheWayIsRecordedAsTheRealPlace) {
  disk.file("home/real/file", 1);
  disk.link("real", "home/alias");
  ASSERT_TRUE(move("home/alias/file"));
  EXPECT_THAT(text("home/.local/share/Trash/info/file.trashinfo"), testing::HasSubstr("/home/real/file\n"));
}

TEST_F(LinuxTrashTests, withoutPermissionNothingIsLeftBehind) {
  disk.file("home/closed/file", 1);
  const AsOrdinaryUser user(disk);
  trash = world.trash();
  disk.mode("home/closed", 0500);
  const auto outcome = trash->move({{disk / "home/closed/file"}}).front();
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "You may not move it.");
  EXPECT_THAT(disk.names("home/.local/share/Trash/info"), IsEmpty());
  disk.mode("home/closed", 0700);
}

/// Ends the process, as a power cut would, when it is asked for the time once too often.
struct DeadlyClock final : Clock {
  explicit DeadlyClock(int allowed) : left(allowed) {}
  Date now() const override {
    if (left-- == 0) raise(SIGKILL);
    return Date{0};
  }
  Seconds monotonic() const override { return Seconds{0}; }
  mutable int left;
};

TEST_F(LinuxTrashTests, dyingMidwayLosesNothing) {
  std::vector<TrashRequest> requests;
  for (int i = 0; i < 20; ++i) {
    disk.file("home/things/" + std::to_string(i), 1);
    requests.push_back({disk / ("home/things/" + std::to_string(i))});
  }
  const pid_t child = fork();
  if (child == 0) {
    const DeadlyClock clock(12);
    (void)LinuxTrash(disk / "home/.local/share", geteuid(), clock, world.zone, disk / "mountinfo")
        .move(requests);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(disk.names("home/things").size(), 8u);
  const auto entries = disk.names("home/.local/share/Trash/files");
  EXPECT_EQ(entries.size(), 12u);
  for (const auto& name : entries)
    EXPECT_THAT(text("home/.local/share/Trash/info/" + name + ".trashinfo"),
                testing::HasSubstr("/things/" + name));
}

std::unique_ptr<Trash> linuxTrash(const GeneratedTree& disk) {
  static std::vector<std::unique_ptr<World>> worlds; // outlive the Trash that uses their clocks
  worlds.push_back(std::make_unique<World>(disk));
  return worlds.back()->trash();
}
std::unique_ptr<Trash> folderTrash(const GeneratedTree& disk) {
  return std::make_unique<FolderTrash>(disk / "trash");
}

} // namespace

INSTANTIATE_TEST_SUITE_P(Linux, TrashContract, testing::Values(linuxTrash));
INSTANTIATE_TEST_SUITE_P(Folder, TrashContract, testing::Values(folderTrash));

} // namespace korvell
