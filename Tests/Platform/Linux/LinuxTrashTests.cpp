#include "Platform/Linux/LinuxTrash.h"

#include "Tests/Contracts/TrashContract.h"
#include "Tests/Fakes/FakeClock.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FolderTrash.h"

#include <csignal>
#include <sys/wait.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace std::string_literals;

/// A home folder and a volume, which is a folder that the table of mounts names.
struct World {
  explicit World(const GeneratedTree& tree) : disk(tree) {
    clock.wall = {1'772'366'400.75}; // 2026-03-01 12:00 UTC
    std::filesystem::create_directories(disk / "volume");
    disk.write("mountinfo", "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n21 20 8:2 / " + disk / "volume" +
                                " rw - ext4 /dev/sdb1 rw\n22 20 0:9 / " + disk / "home/.cache" +
                                " rw - tmpfs tmpfs rw\n23 20 0:10 / " + disk / "server" +
                                " rw - nfs4 host:/export rw\n24 20 0:11 / " + disk / "layers" +
                                " rw - overlay overlay rw\n");
  }
  std::unique_ptr<LinuxTrash> trash() {
    return std::make_unique<LinuxTrash>(disk / "home", disk / "home/.local/share", geteuid(), clock, zone,
                                        disk / "mountinfo");
  }
  const GeneratedTree& disk;
  FakeClock clock;
  FakeTimeZone zone{3600};
};

struct LinuxTrashTests : testing::Test {
  GeneratedTree disk;
  World world{disk};
  std::unique_ptr<LinuxTrash> trash = world.trash();
  const std::string user = std::to_string(geteuid()), mine = ".Trash-" + user;
  const std::string files = "home/.local/share/Trash/files", info = "home/.local/share/Trash/info/";

  bool move(const std::string& name) { return bool(trash->move({{disk / name}}).front()); }
};

TEST_F(LinuxTrashTests, theRecordSaysFromWhereAndWhen) {
  disk.file("home/\xc3\xa4 a%20b\n\xff", 1);
  ASSERT_TRUE(move("home/\xc3\xa4 a%20b\n\xff"));
  EXPECT_EQ(disk.text(info + "\xc3\xa4 a%20b\n\xff.trashinfo"),
            "[Trash Info]\nPath=" + (disk / "home") +
                "/%C3%A4%20a%2520b%0A%FF\nDeletionDate=2026-03-01T13:00:00\n");
  EXPECT_EQ(disk.permissions("home/.local/share/Trash"), 0700u);

  disk.file("home/real/file", 1);
  disk.link("real", "home/alias");
  ASSERT_TRUE(move("home/alias/file"));
  EXPECT_THAT(disk.text(info + "file.trashinfo"), HasSubstr("/home/real/file\n"))
      << "not the link on the way";
}

TEST_F(LinuxTrashTests, aVolumeKeepsWhatWasOnIt) {
  disk.file("volume/in/file", 1);
  ASSERT_TRUE(move("volume/in/file"));
  EXPECT_THAT(disk.text("volume/" + mine + "/info/file.trashinfo"), HasSubstr("Path=in/file\n"));
  EXPECT_THAT(disk.names("volume/" + mine + "/files"), ElementsAre("file"));

  // An administrator's Trash is preferred, once it has the sticky bit.
  disk.folder("volume/.Trash");
  disk.file("volume/second", 1);
  ASSERT_TRUE(move("volume/second"));
  EXPECT_THAT(disk.names("volume/.Trash"), IsEmpty());
  disk.mode("volume/.Trash", 01777);
  disk.file("volume/third", 1);
  ASSERT_TRUE(move("volume/third"));
  EXPECT_THAT(disk.names("volume/.Trash/" + user + "/files"), ElementsAre("third"));

  disk.file("home/.cache/pip/x", 1);
  disk.file("layers/file", 1);
  disk.file("server/file", 1);
  disk.folder("server/" + mine);
  ASSERT_TRUE(move("home/.cache/pip"));
  ASSERT_TRUE(move("layers/file"));
  EXPECT_FALSE(move("server/file")) << "what is put there is not found again";
  EXPECT_THAT(disk.names("home/.cache/" + mine + "/files"), ElementsAre("pip"));
  std::vector<std::string> listed;
  for (const auto& folder : trash->folders()) listed.push_back(folder.entries);
  EXPECT_THAT(listed, UnorderedElementsAre(
                          disk / ("volume/.Trash/" + user + "/files"), disk / ("volume/" + mine + "/files"),
                          disk / ("layers/" + mine + "/files"), disk / ("home/.cache/" + mine + "/files")))
      << "servers are not asked: one that is gone blocks";
}

TEST_F(LinuxTrashTests, whatIsMountedIsNeitherMovedNorEmptied) {
  disk.file("home/x/mounted/file", 1);
  disk.link("x", "home/alias");
  disk.folder("home/.local/share/Trash/files");
  disk.folder("home/.local/share/Trash/info");
  const auto alone = disk.text("mountinfo");
  disk.write("mountinfo", alone + "25 20 8:1 /docs " + disk / "home/x/mounted" + " rw - ext4 /dev/sda1 rw\n");
  for (const auto* name : {"home/x", "home/x/mounted", "home/alias/mounted"})
    EXPECT_EQ(trash->move({{disk / name}}).front().reason(),
              "Something is mounted on " + disk / "home/x/mounted" + ". Unmount it first.")
        << name;
  EXPECT_THAT(disk.names("home/x/mounted"), ElementsAre("file"));
  EXPECT_EQ(trash->folders().size(), 1u);
  disk.write("mountinfo", alone + "25 20 8:1 /docs " + disk / files + " rw - ext4 /dev/sda1 rw\n");
  EXPECT_THAT(trash->folders(), IsEmpty()) << "what somebody mounted there was not thrown away";
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

TEST_F(LinuxTrashTests, aDataHomeOnAServerIsNotAskedForATrash) {
  for (const auto* name : {"files/x", "info/x.trashinfo"})
    disk.file("server/share/Trash/" + std::string(name), 1);
  disk.file("home/.cache/x", 1);
  disk.link(disk / "server/share", "home/.local/share");
  EXPECT_TRUE(move("home/.cache/x")) << "a volume of its own";
  EXPECT_THAT(disk.names("server/share/Trash/files"), ElementsAre("x"));
  ASSERT_EQ(trash->folders().size(), 1u);
  EXPECT_EQ(trash->folders().front().entries, disk / ("home/.cache/" + mine + "/files"));
  // A home folder on the same server would not be there either.
  LinuxTrash remote(disk / "server", disk / "server/share", geteuid(), world.clock, world.zone,
                    disk / "mountinfo");
  EXPECT_EQ(remote.folders().size(), 2u);
}

TEST_F(LinuxTrashTests, theTrashAndWhatHoldsItStay) {
  disk.file(files + "/entry", 1);
  disk.folder(info);
  disk.file("volume/" + mine + "/files/entry", 1);
  for (const auto& name : {"home/.local/share/Trash"s, files + "/entry", "home/.local/share"s, "home"s,
                           "volume"s, "volume/" + mine + "/files/entry"})
    EXPECT_FALSE(move(name)) << name;
}

TEST_F(LinuxTrashTests, takenNamesAreNumberedAndLongOnesAreCut) {
  disk.file(files + "/lonely", 1); // an entry without a record
  disk.file("home/lonely", 1);
  ASSERT_TRUE(move("home/lonely"));
  EXPECT_THAT(disk.names(files), ElementsAre("lonely", "lonely.2"));
  EXPECT_THAT(disk.names(info), ElementsAre("lonely.2.trashinfo"));

  std::string longName;
  while (longName.size() + 2 <= 255) longName += "\xc3\xa4";
  for (int i = 0; i < 2; ++i) {
    disk.file("home/" + longName, 1);
    ASSERT_TRUE(move("home/" + longName));
  }
  for (const auto& name : disk.names(files)) {
    EXPECT_LE(name.size(), 245u);
    const auto body = name.substr(0, name.find('.'));
    EXPECT_TRUE(name[0] == 'l' || body.size() % 2 == 0) << "cut within a character";
  }
}

TEST_F(LinuxTrashTests, withoutPermissionNothingIsLeftBehind) {
  disk.file("home/closed/file", 1);
  const AsOrdinaryUser ordinary(disk);
  trash = world.trash();
  disk.mode("home/closed", 0500);
  const auto outcome = trash->move({{disk / "home/closed/file"}}).front();
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.reason(), "You may not move it.");
  EXPECT_THAT(disk.names(info), IsEmpty());
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
    (void)LinuxTrash(disk / "home", disk / "home/.local/share", geteuid(), clock, world.zone,
                     disk / "mountinfo")
        .move(requests);
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(disk.names("home/things").size(), 8u);
  const auto entries = disk.names(files);
  EXPECT_EQ(entries.size(), 12u);
  for (const auto& name : entries)
    EXPECT_THAT(disk.text(info + name + ".trashinfo"), HasSubstr("/things/" + name));
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
