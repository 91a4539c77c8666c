#pragma once
// A history in a folder of its own, with time and the disk in the test's hand.

#include "Base/Files.h"
#include "Base/ManualQueue.h"
#include "Core/History/HistoryStore.h"
#include "Tests/Fakes/TemporaryFolder.h"
#include "Tests/Fakes/TestVFS.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace korvell {

using testing::ElementsAre;
using testing::IsEmpty;

class HistoryFixture : public testing::Test {
protected:
  HistoryFixture() { store = open(); }

  std::unique_ptr<HistoryStore> open(HistoryAccess access = HistoryAccess::keeper) {
    auto opened = std::make_unique<HistoryStore>(scheduler.factory(), clock, folder.path().string(), access);
    scheduler.run();
    return opened;
  }
  void reopen() {
    store.reset();
    store = open();
  }

  /// Records a sample `seconds` after the start of the test, with one application.
  void record(double seconds, double cpu, std::optional<int> score = {}) {
    auto snapshot = SystemSnapshot::empty(start + Seconds{seconds});
    snapshot.cpu.total = cpu;
    snapshot.network.inRate = cpu * 10;
    snapshot.apps = {{.id = "app", .name = "App", .processes = {{.pid = 1, .cpu = cpu}}}};
    record(snapshot, score);
  }
  void record(const SystemSnapshot& snapshot, std::optional<int> score = {}) {
    clock.setNow(snapshot.date);
    store->record(snapshot, score);
    scheduler.run();
  }

  /// The first column of every row of a query on the file, as another program sees it.
  std::vector<std::string> rows(const std::string& sql) {
    auto database = Database::open(path, Database::Mode::readOnly);
    auto statement = database.prepare(sql);
    EXPECT_TRUE(statement) << sql << ": " << database.lastErrorMessage();
    std::vector<std::string> result;
    while (statement.stepRow()) result.push_back(statement.isNull(0) ? "NULL" : statement.text(0));
    return result;
  }
  /// The processor's load in the stored minutes of a table.
  std::vector<std::string> stored(const std::string& table = "system") {
    return rows("SELECT cpu FROM " + table + " ORDER BY ts");
  }
  std::vector<std::string> filesLike(const std::string& part) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      if (auto name = entry.path().filename().string(); name.find(part) != std::string::npos)
        names.push_back(name);
    return names;
  }
  static std::string contentOf(const std::string& file) { return readFile(file, 1 << 20).value_or(""); }

  const Date start{1'772'366'400}; ///< a whole hour
  TemporaryFolder folder;
  const std::string path = folder / "history.sqlite";
  ManualScheduler scheduler{start};
  ManualClock& clock = scheduler.clock();
  TestVFS disk{clock};
  std::unique_ptr<HistoryStore> store;
};

} // namespace korvell
