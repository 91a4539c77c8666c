// What disks, other processes and people do to the file. The loop goes on, and so does the history.

#include "HistoryFixture.h"

#include <fstream>

namespace korvell {
namespace {

using HistoryFaultTests = HistoryFixture;

TEST_F(HistoryFaultTests, whatIsNoHistoryIsKeptAsideAndANewOneBegun) {
  const auto foreign = [&](const char* sql) {
    std::filesystem::remove(folder / "foreign.sqlite");
    Database::open(folder / "foreign.sqlite", Database::Mode::readWriteCreate).exec(sql);
    return contentOf(folder / "foreign.sqlite");
  };
  for (int i = 0; i < 50; ++i) record(i * 60, 1);
  store.reset();

  const std::pair<const char*, std::string> files[] = {
      {"text", std::string(3000, 'x')},
      {"a database cut short", contentOf(path).substr(0, 5000)},
      {"another program's database", foreign("CREATE TABLE bookmarks(url TEXT)")},
      {"the name, but other columns", foreign("CREATE TABLE system(ts INTEGER, text TEXT)")},
      {"other application rows", foreign("CREATE TABLE system(ts INTEGER PRIMARY KEY, cpu, memory, disk, "
                                         "network, gpu, energy, disk_write); CREATE TABLE apps(ts, cpu)")}};
  for (const auto& [what, content] : files) {
    SCOPED_TRACE(what);
    for (const auto& name : filesLike("history")) std::filesystem::remove(folder / name);
    std::ofstream(path, std::ios::binary) << content;
    EXPECT_FALSE(open(HistoryAccess::reader)->isReadable());
    store = open();
    record(6000, 10);
    record(6060, 11);
    EXPECT_THAT(stored(), ElementsAre("10.0"));
    store.reset();
    const auto aside = filesLike("damaged");
    ASSERT_THAT(aside, ElementsAre(testing::StartsWith("history-damaged-2026-03-01-")));
    EXPECT_EQ(contentOf(folder / aside[0]), content);
  }
}

TEST_F(HistoryFaultTests, damageFoundLaterLosesNoMinute) {
  for (int i = 0; i < 200; ++i) record(i * 60, 1);
  reopen();
  {
    std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(2 * 4096); // behind the schema
    file << std::string(6 * 4096, '\xff');
  }
  record(20'000, 7);
  record(20'060, 8);
  EXPECT_THAT(stored(), ElementsAre("7.0"));
  EXPECT_FALSE(filesLike("damaged").empty());
}

TEST_F(HistoryFaultTests, minutesWaitUntilTheFaultIsOver) {
  Database other;
  const auto failWrites = [&](int code) { return [this, code] { disk.writeError = code; }; };
  const auto lock = [&] {
    other = Database::open(path, Database::Mode::readWrite);
    EXPECT_EQ(other.exec("BEGIN IMMEDIATE"), SQLITE_OK);
  };
  const auto failToOpen = [&] {
    store->close();
    disk.openError = SQLITE_CANTOPEN;
    store = open();
  };
  struct Fault {
    const char* name;
    std::function<void()> begin;
    bool isReadable;
  };
  for (const auto& fault : {Fault{"no room", failWrites(SQLITE_FULL), true},
                            {"a broken disk", failWrites(SQLITE_IOERR_WRITE), true},
                            {"locked", lock, true},
                            {"can't be opened", failToOpen, false}}) {
    SCOPED_TRACE(fault.name);
    record(0, 1);
    record(60, 2);
    fault.begin();
    record(120, 3);
    record(180, 4);
    EXPECT_EQ(store->average(Metric::cpu, start, 0), fault.isReadable ? 1 : 0);
    EXPECT_EQ(store->topApps(Metric::cpu, HistoryRange::d30, 3).size(), fault.isReadable ? 1u : 0u);
    EXPECT_EQ(open(HistoryAccess::reader)->isReadable(), fault.isReadable);
    disk.writeError = disk.openError = SQLITE_OK;
    other.close();
    record(240, 5);
    EXPECT_THAT(stored(), ElementsAre("1.0", "2.0", "3.0", "4.0"));
    EXPECT_THAT(stored("apps"), ElementsAre("1.0", "2.0", "3.0", "4.0"));
    EXPECT_THAT(filesLike("damaged"), IsEmpty());
    store.reset();
    std::filesystem::remove(path);
    store = open();
  }
}

TEST_F(HistoryFaultTests, aLongFaultCostsOldMinutesNotMemory) {
  disk.writeError = SQLITE_FULL;
  for (int i = 0; i < 40; ++i) record(i * 60, i);
  disk.writeError = SQLITE_OK;
  record(2400, 0);
  EXPECT_THAT(rows("SELECT MIN(cpu) || ' ' || MAX(cpu) || ' ' || COUNT(*) FROM system"),
              ElementsAre("25.0 39.0 15"));
}

TEST_F(HistoryFaultTests, aFileThatWasDeletedIsMadeAgain) {
  record(0, 1);
  record(60, 2);
  std::filesystem::remove_all(folder.path());
  record(120, 3);
  record(180, 4);
  EXPECT_THAT(stored(), ElementsAre("2.0", "3.0"));
}

TEST_F(HistoryFaultTests, clocksThatJumpNeverStopTheHistory) {
  for (double seconds : {0.0, 1e12, -1e12, 5e17, -5e17, 60.0}) record(seconds, 1);
  record(120, 2);
  record(180, 2);
  EXPECT_THAT(rows("SELECT cpu FROM system WHERE ts = 1772366520"), ElementsAre("2.0"));
}

} // namespace
} // namespace korvell
