// What disks, other processes and people do to the file. The loop goes on, and so does the history.

#include "HistoryFixture.h"

#include <fstream>

namespace korvell {
namespace {

using HistoryFaultTests = HistoryFixture;

std::string contentOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

TEST_F(HistoryFaultTests, whatIsNoHistoryIsKeptAsideAndANewOneBegun) {
  const auto foreign = [&](const char* sql) {
    const auto path = folder / "foreign.sqlite";
    std::filesystem::remove(path);
    Database::open(path, Database::Mode::readWriteCreate).exec(sql);
    return contentOf(path);
  };
  std::string cutShort;
  for (int i = 0; i < 50; ++i) record(i * 60, 1);
  store.reset();
  cutShort = contentOf(folder / "history.sqlite").substr(0, 5000);

  const std::pair<const char*, std::string> files[] = {
      {"text", std::string(3000, 'x')},
      {"a database cut short", cutShort},
      {"another program's database", foreign("CREATE TABLE bookmarks(url TEXT)")},
      {"the name, but other columns", foreign("CREATE TABLE system(ts INTEGER, text TEXT)")},
      {"other application rows", foreign("CREATE TABLE system(ts INTEGER PRIMARY KEY, cpu, memory, disk, "
                                         "network, gpu, energy, disk_write); CREATE TABLE apps(ts, cpu)")}};
  for (const auto& [what, content] : files) {
    SCOPED_TRACE(what);
    for (const auto& name : filesLike("history")) std::filesystem::remove(folder / name);
    std::ofstream(folder / "history.sqlite", std::ios::binary) << content;
    EXPECT_FALSE(open(HistoryAccess::reader)->isReadable());
    store = open();
    record(6000, 10);
    record(6060, 10);
    EXPECT_EQ(row("SELECT COUNT(*) FROM system"), "1");
    store.reset();
    const auto aside = filesLike("damaged");
    ASSERT_EQ(aside.size(), 1u);
    EXPECT_EQ(aside[0].rfind("history-damaged-2026-03-01-", 0), 0u) << aside[0];
    EXPECT_EQ(contentOf(folder / aside[0]), content);
  }
}

TEST_F(HistoryFaultTests, damageFoundLaterLosesNoMinute) {
  for (int i = 0; i < 200; ++i) record(i * 60, 1);
  reopen();
  {
    std::fstream file(folder / "history.sqlite", std::ios::in | std::ios::out | std::ios::binary);
    for (int page = 2; page < 8; ++page) {
      file.seekp(page * 4096);
      file << std::string(4096, '\xff');
    }
  }
  record(20'000, 7); // 200 minutes make several pages, all of which are broken now
  record(20'060, 8);
  record(20'120, 9);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"7.0", "8.0"}));
  EXPECT_FALSE(filesLike("damaged").empty());
}

TEST_F(HistoryFaultTests, minutesWaitForRoomOnTheDisk) {
  for (int error : {SQLITE_FULL, SQLITE_IOERR_WRITE}) {
    SCOPED_TRACE(error);
    std::filesystem::remove(folder / "history.sqlite");
    record(0, 1);
    record(60, 2);
    disk.writeError = error;
    record(120, 3);
    record(180, 4);
    EXPECT_EQ(row("SELECT COUNT(*) FROM system"), "1");
    EXPECT_EQ(store->average(Metric::cpu, start, 0), 1); // reading goes on
    disk.writeError = SQLITE_OK;
    record(240, 5);
    EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"),
              (std::vector<std::string>{"1.0", "2.0", "3.0", "4.0"}));
    EXPECT_EQ(row("SELECT COUNT(*) FROM apps"), "4");
    store->close();
    store = open();
  }
}

TEST_F(HistoryFaultTests, aLongFaultCostsOldMinutesNotMemory) {
  disk.writeError = SQLITE_FULL;
  for (int i = 0; i < 40; ++i) record(i * 60, i);
  disk.writeError = SQLITE_OK;
  record(2400, 0);
  EXPECT_EQ(row("SELECT MIN(cpu) || ' ' || MAX(cpu) || ' ' || COUNT(*) FROM system"), "25.0 39.0 15");
}

TEST_F(HistoryFaultTests, anotherProcessMayHoldTheLock) {
  record(0, 1);
  auto other = Database::open(folder / "history.sqlite", Database::Mode::readWrite);
  ASSERT_EQ(other.exec("BEGIN IMMEDIATE"), SQLITE_OK);
  record(60, 2);
  EXPECT_EQ(store->average(Metric::cpu, start, 0), 0);
  ASSERT_EQ(other.exec("COMMIT"), SQLITE_OK);
  record(120, 3);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"1.0", "2.0"}));
}

TEST_F(HistoryFaultTests, aDatabaseThatCannotBeOpenedIsTriedAgain) {
  store.reset();
  disk.openError = SQLITE_CANTOPEN;
  store = open();
  record(0, 1);
  record(60, 2);
  EXPECT_TRUE(store->series(Metric::cpu, HistoryRange::d30).empty());
  EXPECT_TRUE(store->topApps(Metric::cpu, HistoryRange::d30, 3).empty());
  EXPECT_EQ(store->averageScore(start), std::nullopt);
  EXPECT_FALSE(open(HistoryAccess::reader)->isReadable());
  EXPECT_EQ(store->totalBytes("network", start), 0);
  disk.openError = SQLITE_OK;
  record(120, 3);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"1.0", "2.0"}));
  EXPECT_TRUE(filesLike("damaged").empty());
}

TEST_F(HistoryFaultTests, aFileThatWasDeletedOrReplacedIsNoticed) {
  record(0, 1);
  record(60, 2);
  std::filesystem::remove_all(folder.path()); // the whole folder
  record(120, 3);
  record(180, 4);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"2.0", "3.0"}));
}

TEST_F(HistoryFaultTests, clocksThatJumpNeverStopTheHistory) {
  for (double seconds : {0.0, 1e12, -1e12, 5e17, -5e17, 60.0}) record(seconds, 1);
  record(120, 2);
  record(180, 2);
  EXPECT_EQ(row("SELECT cpu FROM system WHERE ts = 1772366520"), "2.0");
}

} // namespace
} // namespace korvell
