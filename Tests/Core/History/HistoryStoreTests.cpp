#include "HistoryFixture.h"

#include <fmt/format.h>
#include <fstream>
#include <random>

namespace korvell {
namespace {

using HistoryStoreTests = HistoryFixture;

TEST_F(HistoryStoreTests, aMinuteIsWrittenWhenTheNextOneBeginsOrTheStoreIsClosed) {
  record(0, 10, 90);
  record(30, 30);
  EXPECT_EQ(row("SELECT COUNT(*) FROM system"), "0");
  record(60, 1);
  EXPECT_EQ(rows("SELECT ts || ' ' || cpu || ' ' || score FROM system"),
            std::vector<std::string>{"1772366400 20.0 90.0"});
  EXPECT_EQ(rows("SELECT app || ' ' || name || ' ' || ifnull(path, '-') || ' ' || cpu FROM apps"),
            std::vector<std::string>{"app App - 20.0"});
  store->close();
  record(120, 10); // too late: dropped, not stored, no fault
  EXPECT_EQ(rows("SELECT cpu || ' ' || ifnull(score, 'NULL') FROM system ORDER BY ts"),
            (std::vector<std::string>{"20.0 90.0", "1.0 NULL"}));
  EXPECT_EQ(store->recent(Metric::cpu, 10), std::vector<double>{});
}

TEST_F(HistoryStoreTests, aMinuteThatIsThereIsReplacedNotDoubled) {
  record(0, 10);
  reopen(); // a restart within the minute
  record(30, 50);
  record(60, 20);
  record(120, 30);
  record(65, 40); // the clock was set back
  record(180, 1);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"50.0", "40.0", "30.0"}));
  EXPECT_EQ(rows("SELECT cpu FROM apps ORDER BY ts"), (std::vector<std::string>{"50.0", "40.0", "30.0"}));
}

TEST_F(HistoryStoreTests, averagesWantEnoughMinutes) {
  for (int minute = 0; minute <= 29; ++minute) record(minute * 60, minute);
  record(29 * 60 + 30, 29); // 29 minutes are stored, the thirtieth is in progress
  EXPECT_EQ(store->average(Metric::cpu, start, 30), 0);
  EXPECT_EQ(store->average(Metric::cpu, start, 29), 14);
  EXPECT_EQ(store->average(Metric::cpu, start + Seconds{120.9}, 0), 15); // whole seconds: from minute 2 on
  EXPECT_EQ(store->average(Metric::cpu, start + Seconds{1e6}, 0), 0);
}

TEST_F(HistoryStoreTests, queriesAnswerFromTheirRange) {
  record(-1000, 80, 10);
  record(0, 10, 60);
  record(60, 20);
  record(120, 60, 90);
  record(240, 0);
  EXPECT_EQ(store->recent(Metric::cpu, 5), (std::vector<double>{10, 20, 60}));
  EXPECT_EQ(store->averageScore(start), 75);
  EXPECT_EQ(store->averageScore(start + Seconds{121}), std::nullopt);
  EXPECT_EQ(store->totalBytes("network", start), (100 + 200 + 600) * 60);
  EXPECT_EQ(store->totalBytes("network; DROP TABLE apps", start), 0);

  const auto series = store->series(Metric::cpu, HistoryRange::h12);
  ASSERT_EQ(series.size(), 2u);
  EXPECT_EQ(series[0], (HistoryPoint{Date{1'772'365'320}, 80})); // buckets of three minutes
  EXPECT_EQ(series[1], (HistoryPoint{start, 30}));
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::h12), (SeriesSummary{10, 42.5, 80}))
      << "of the minutes";
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::live), (SeriesSummary{10, 30, 60}));

  const auto minute = store->minute(start + Seconds{70});
  ASSERT_TRUE(minute);
  EXPECT_EQ(minute->system[cpuColumn], 20);
  EXPECT_EQ(minute->score, std::nullopt);
  ASSERT_EQ(minute->apps.size(), 1u);
  EXPECT_EQ(minute->apps[0].id, "app");
  EXPECT_FALSE(store->minute(start + Seconds{600}));
}

TEST_F(HistoryStoreTests, topApplicationsAnswerAsThePlainStatementDoes) {
  EXPECT_TRUE(store->topApps(Metric::cpu, HistoryRange::d30, 5).empty());
  std::mt19937 random(7);
  std::uniform_real_distribution<double> value(0, 1e6);
  for (int minute = 0; minute < 200; ++minute) {
    auto snapshot = SystemSnapshot::empty(start + Seconds{minute * 60.0});
    for (int i = 0; i < 25; ++i)
      if (random() % 3 != 0)
        snapshot.apps.push_back(
            {.id = fmt::format("id{}", i),
             .name = fmt::format("name{} in minute {}", i, minute), // the first one of the range is shown
             .bundlePath = i % 2 ? std::optional<std::string>("/p") : std::nullopt,
             .processes = {{.pid = i, .cpu = i == 7 ? 5 : value(random), .memory = random()}}});
    clock.setNow(snapshot.date);
    store->record(snapshot, {});
  }
  scheduler.run();
  for (auto range : {HistoryRange::d30, HistoryRange::live})
    for (auto metric : {Metric::cpu, Metric::memory}) {
      const auto since = std::int64_t(clock.now().sinceEpoch) - spanOf(range).seconds;
      const auto where = fmt::format("WHERE ts >= {}", since);
      const auto expected = rows(fmt::format("SELECT name || '|' || ifnull(path, '') || '|' || (SUM({}) / "
                                             "(SELECT COUNT(*) FROM system {})) FROM "
                                             "apps {} GROUP BY app ORDER BY SUM({}) DESC LIMIT 10",
                                             rawValue(metric), where, where, rawValue(metric)));
      const auto answer = store->topApps(metric, range, 10);
      ASSERT_EQ(answer.size(), expected.size());
      ASSERT_EQ(answer.size(), 10u);
      for (std::size_t i = 0; i < answer.size(); ++i) {
        const auto bar = expected[i].rfind('|');
        EXPECT_EQ(answer[i].name + "|" + answer[i].bundlePath.value_or(""), expected[i].substr(0, bar));
        const double plain = std::stod(expected[i].substr(bar + 1));
        EXPECT_NEAR(answer[i].value, plain, plain * 1e-9);
      }
    }
}

TEST_F(HistoryStoreTests, rowsOlderThanThirtyDaysGoAtTheHourAndAtOpening) {
  record(0, 1);
  record(60, 2);
  const double month = 2'592'000;
  record(month + 1800, 3);
  record(month + 1860, 4);
  EXPECT_EQ(row("SELECT COUNT(*) FROM system"), "3"); // no whole hour was written meanwhile
  record(month + 3600, 5);
  record(month + 3660, 6);
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"3.0", "4.0", "5.0"}));
  EXPECT_EQ(row("SELECT COUNT(*) FROM apps"), "3");
  clock.setNow(start + Seconds{month * 2 + 3600.0});
  reopen();
  EXPECT_EQ(rows("SELECT cpu FROM system ORDER BY ts"), (std::vector<std::string>{"5.0", "6.0"}));
}

TEST_F(HistoryStoreTests, anOlderDatabaseGainsTheScore) {
  store.reset();
  std::filesystem::remove(folder / "history.sqlite");
  {
    auto old = Database::open(folder / "history.sqlite", Database::Mode::readWriteCreate);
    old.exec(
        "CREATE TABLE system(ts INTEGER PRIMARY KEY, cpu REAL, memory REAL, disk REAL, network REAL, gpu "
        "REAL, energy REAL, disk_write REAL); INSERT INTO system VALUES(1772366340,1,2,3,4,5,6,7);");
  }
  store = open();
  record(0, 10, 50);
  record(60, 10);
  EXPECT_EQ(rows("SELECT score FROM system ORDER BY ts"), (std::vector<std::string>{"NULL", "50.0"}));
  EXPECT_TRUE(filesLike("damaged").empty());
}

TEST_F(HistoryStoreTests, aReaderChangesNothing) {
  record(0, 10);
  record(60, 10);
  store.reset();
  const auto content = [&] {
    std::ifstream file(folder / "history.sqlite", std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  };
  const auto before = content();
  clock.setNow(start + Seconds{1e7}); // everything has expired
  store = open(HistoryAccess::reader);
  record(1e7, 50);
  EXPECT_EQ(store->average(Metric::cpu, start, 0), 10);
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::h12), std::nullopt);
  EXPECT_TRUE(store->isReadable());
  store.reset();
  EXPECT_EQ(content(), before);

  std::filesystem::remove(folder / "history.sqlite");
  store = open(HistoryAccess::reader);
  EXPECT_EQ(store->average(Metric::cpu, start, 0), 0);
  EXPECT_TRUE(store->isReadable()) << "nothing was recorded, that is all";
  EXPECT_FALSE(std::filesystem::exists(folder / "history.sqlite"));
}

} // namespace
} // namespace korvell
