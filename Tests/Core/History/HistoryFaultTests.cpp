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
  using Kind = DatabaseFault;
  struct Fault {
    const char* name;
    std::function<void()> begin;
    bool isReadable;
    Kind told;
  };
  for (const auto& fault : {Fault{"no room", failWrites(SQLITE_FULL), true, Kind::full},
                            {"a broken disk", failWrites(SQLITE_IOERR_WRITE), true, Kind::failing},
                            {"locked", lock, true, Kind::locked},
                            {"can't be opened", failToOpen, false, Kind::failing}}) {
    SCOPED_TRACE(fault.name);
    EXPECT_EQ(store->problem(), std::nullopt);
    record(0, 1);
    record(60, 2);
    fault.begin();
    record(120, 3);
    record(180, 4);
    EXPECT_EQ(store->average(Metric::cpu, start, 0), fault.isReadable ? 1 : 0);
    EXPECT_EQ(store->topApps(Metric::cpu, HistoryRange::d30, 3).size(), fault.isReadable ? 1u : 0u);
    EXPECT_EQ(open(HistoryAccess::reader)->isReadable(), fault.isReadable);
    EXPECT_EQ(store->problem()->kind, fault.told);
    disk.writeError = disk.openError = SQLITE_OK;
    other.close();
    record(240, 5);
    EXPECT_EQ(store->problem(), std::nullopt);
    EXPECT_THAT(stored(), ElementsAre("1.0", "2.0", "3.0", "4.0"));
    EXPECT_THAT(stored("apps"), ElementsAre("1.0", "2.0", "3.0", "4.0"));
    EXPECT_THAT(filesLike("damaged"), IsEmpty());
    EXPECT_TRUE(store->close());
    std::filesystem::remove(path);
    store = open();
  }
  record(0, 1);
  disk.writeError = SQLITE_FULL;
  EXPECT_FALSE(store->close()) << "a minute is lost";
}

TEST_F(HistoryFaultTests, whatIsNoFileIsNamedAndRecordingBeginsWhenItIsGone) {
  using Kind = DatabaseFault;
  const std::pair<Kind, std::function<void()>> obstacles[] = {
      {Kind::notAFile, [&] { std::filesystem::create_directory(path); }},
      {Kind::danglingLink, [&] { std::filesystem::create_symlink("no/such/folder", path); }}};
  for (const bool whileItRuns : {false, true})
    for (const auto& [kind, obstruct] : obstacles) {
      SCOPED_TRACE(rawValue(kind));
      store.reset();
      for (const auto& name : filesLike("history")) std::filesystem::remove(folder / name);
      if (whileItRuns) {
        store = open();
        std::filesystem::rename(path, path + ".mine");
      }
      obstruct();
      if (!whileItRuns) store = open();
      record(0, 1);
      record(60, 2);
      ASSERT_TRUE(store->problem());
      EXPECT_EQ(*store->problem(), (HistoryProblem{kind, sentence(kind, path)}));
      EXPECT_EQ(open(HistoryAccess::reader)->problem()->kind, kind);
      EXPECT_FALSE(open(HistoryAccess::reader)->isReadable());
      std::filesystem::remove(path);
      record(120, 3);
      EXPECT_EQ(store->problem(), std::nullopt);
      EXPECT_THAT(stored(), ElementsAre("1.0", "2.0"));
      EXPECT_THAT(filesLike("damaged"), IsEmpty());
    }
}

TEST_F(HistoryFaultTests, aNewerVersionsFileIsReadAndLeftAsItIs) {
  record(0, 10);
  record(60, 20);
  for (const char* change : {"ALTER TABLE apps ADD COLUMN wakeups REAL",
                             "ALTER TABLE system ADD COLUMN pressure REAL", "PRAGMA user_version = 2"}) {
    SCOPED_TRACE(change);
    store.reset();
    const auto saved = contentOf(path);
    Database::open(path, Database::Mode::readWrite).exec(change);
    const auto before = contentOf(path);
    store = open();
    record(120, 30);
    record(180, 40);
    EXPECT_EQ(store->problem()->kind, DatabaseFault::newer);
    EXPECT_EQ(open(HistoryAccess::reader)->problem()->kind, DatabaseFault::newer);
    for (auto access : {HistoryAccess::keeper, HistoryAccess::reader}) {
      const auto reader = open(access);
      EXPECT_TRUE(reader->isReadable());
      EXPECT_EQ(reader->average(Metric::cpu, start, 0), 15);
      EXPECT_EQ(reader->topApps(Metric::cpu, HistoryRange::d30, 1)[0].value, 15);
    }
    EXPECT_FALSE(store->close());
    store.reset();
    EXPECT_EQ(contentOf(path), before);
    EXPECT_THAT(filesLike("damaged"), IsEmpty());
    std::ofstream(path, std::ios::binary) << saved;
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
