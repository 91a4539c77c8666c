#include "HistoryFixture.h"

#include <fmt/format.h>
#include <random>

namespace korvell {
namespace {

using HistoryStoreTests = HistoryFixture;

constexpr double day = 86'400, month = 30 * day;

TEST_F(HistoryStoreTests, aMinuteIsWrittenWhenTheNextOneBeginsOrTheStoreIsClosed) {
  record(0, 10, 90);
  record(30, 30);
  EXPECT_THAT(stored(), IsEmpty());
  record(60, 1);
  EXPECT_THAT(rows("SELECT ts || ' ' || cpu || ' ' || score FROM system"),
              ElementsAre("1772366400 20.0 90.0"));
  EXPECT_THAT(rows("SELECT app || ' ' || name || ' ' || ifnull(path, '-') || ' ' || cpu FROM apps"),
              ElementsAre("app App - 20.0"));
  store->close();
  record(120, 10); // too late
  record(180, 10);
  EXPECT_THAT(rows("SELECT cpu || ' ' || ifnull(score, 'NULL') FROM system ORDER BY ts"),
              ElementsAre("20.0 90.0", "1.0 NULL"));
}

TEST_F(HistoryStoreTests, aMinuteThatIsThereIsReplacedNotDoubled) {
  record(0, 10);
  reopen(); // a restart within the minute
  record(30, 50);
  record(60, 20);
  record(120, 30);
  record(65, 40); // the clock was set back
  record(180, 1);
  EXPECT_THAT(stored(), ElementsAre("50.0", "40.0", "30.0"));
  EXPECT_THAT(stored("apps"), ElementsAre("50.0", "40.0", "30.0"));
}

TEST_F(HistoryStoreTests, queriesAnswerFromTheirRange) {
  record(-864'000, 5); // ten days
  record(-1000, 80, 10);
  record(0, 10, 60);
  record(60, 20);
  record(120, 60, 90);
  record(240, 0);
  EXPECT_THAT(store->recent(Metric::cpu, 5), ElementsAre(10, 20, 60));
  EXPECT_EQ(store->average(Metric::cpu, start, 3), 30);
  EXPECT_EQ(store->average(Metric::cpu, start, 4), 0) << "the fourth is in progress";
  EXPECT_EQ(store->average(Metric::cpu, start + Seconds{60.9}, 0), 40) << "whole seconds";
  EXPECT_EQ(store->averageScore(start), 75);
  EXPECT_EQ(store->averageScore(start + Seconds{121}), std::nullopt);
  EXPECT_EQ(store->totalBytes("network", start), (100 + 200 + 600) * 60);
  EXPECT_EQ(store->totalBytes("ts", start), 0);
  EXPECT_EQ(
      usageTotals(*store, start, clock.now()),
      (Totals{
          .cpuToday = 30, .networkToday = 900 * 60, .network7Days = 1700 * 60, .network30Days = 1750 * 60}));

  EXPECT_THAT(store->series(Metric::cpu, HistoryRange::h12), // buckets of three minutes
              ElementsAre(HistoryPoint{Date{1'772'365'320}, 80}, HistoryPoint{start, 30}));
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::h12), (SeriesSummary{10, 42.5, 80}));
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::live), (SeriesSummary{10, 30, 60}));

  const auto chart = store->chart(Metric::cpu, HistoryRange::h12, 240);
  EXPECT_EQ(chart.stretch, Seconds{180});
  EXPECT_EQ(chart.end - chart.begin, Seconds{43'200});
  EXPECT_THAT(chart.points,
              ElementsAre(ChartPoint{Date{1'772'365'320}, 80, 80, 80}, ChartPoint{start, 10, 30, 60}));

  const auto minute = store->minute(start + Seconds{70});
  ASSERT_TRUE(minute);
  EXPECT_EQ(minute->system[cpuColumn], 20);
  EXPECT_EQ(minute->score, std::nullopt);
  EXPECT_EQ(minute->apps.at(0).id, "app");
  EXPECT_FALSE(store->minute(start + Seconds{600}));
}

TEST_F(HistoryStoreTests, aStretchOfTimeTellsWhatWasReadAndWrittenAndByWhom) {
  EXPECT_EQ(store->recordedSince(), std::nullopt);
  const auto record = [&](int minute, const char* app, double read, double written) {
    auto snapshot = SystemSnapshot::empty(start + Seconds{minute * 60.0});
    snapshot.disk = {.readRate = read, .writeRate = written, .volumes = {}};
    snapshot.apps = {
        {.id = app, .name = app, .processes = {{.pid = 1, .diskRead = read, .diskWrite = written}}}};
    HistoryFixture::record(snapshot);
  };
  record(0, "copy", 100, 10);
  record(1, "copy", 300, 0);
  record(2, "index", 50, 40);
  record(3, "index", 0, 0);
  const auto charts = store->diskCharts(HistoryRange::h12, 240);
  EXPECT_THAT(charts.read.points, ElementsAre(ChartPoint{start, 50, 150, 300}));
  EXPECT_NEAR(charts.written.points.at(0).mean, 50.0 / 3, 1e-9);
  EXPECT_EQ(charts.written.points.at(0).maximum, 40);
  EXPECT_EQ(store->recordedSince(), start);

  const auto apps = [&](double from, double to) {
    std::vector<std::string> found;
    for (const auto& app : store->topApps(Metric::disk, start + Seconds{from}, start + Seconds{to}, 5))
      found.push_back(fmt::format("{} {}", app.name, app.value));
    return found;
  };
  EXPECT_THAT(apps(0, 120), ElementsAre("copy 205"));
  EXPECT_THAT(apps(60, 180), ElementsAre("copy 150", "index 45"));
  EXPECT_THAT(apps(-600, 0), IsEmpty());
}

TEST_F(HistoryStoreTests, topApplicationsAnswerAsThePlainStatementDoes) {
  std::mt19937 random(7);
  for (int minute = 0; minute < 200; ++minute) {
    auto snapshot = SystemSnapshot::empty(start + Seconds{minute * 60.0});
    for (int i = 0; i < 25; ++i)
      if (random() % 3 != 0)
        snapshot.apps.push_back(
            {.id = fmt::format("id{}", i),
             .name = fmt::format("name{} in minute {}", i, minute), // the last one of the range is shown
             .bundlePath = i % 2 ? std::optional<std::string>("/p") : std::nullopt,
             .processes = {{.pid = i, .cpu = double(random()), .memory = random()}}});
    record(snapshot);
  }
  reopen();
  EXPECT_THAT(rows("SELECT COUNT(*) FROM summed_hours"), ElementsAre("3"));
  // Whoever changes a row, and whatever becomes of the hours' sums: the answer is that of the rows.
  for (auto* change :
       {"", "UPDATE apps SET cpu = cpu * 2 WHERE ts % 7200 < 600",
        "DELETE FROM apps WHERE ts % 3600 = 60 AND app < 'id2'",
        "INSERT INTO apps SELECT ts, 'id99', 'late', path, 1e12, 1e12, 0, 0, 0, 0, 0 FROM apps "
        "WHERE ts % 3600 = 120 LIMIT 1",
        "DROP TABLE summed_hours"})
    for (auto [range, metric] : {std::pair(HistoryRange::d30, Metric::cpu),
                                 {HistoryRange::d30, Metric::memory},
                                 {HistoryRange::live, Metric::cpu}}) {
      SCOPED_TRACE(change);
      Database::open(path, Database::Mode::readWrite).exec(std::exchange(change, ""));
      const auto since = std::int64_t(clock.now().sinceEpoch) - spanOf(range).seconds;
      const auto expected = rows(fmt::format(
          "SELECT name || '|' || ifnull(path, '') || '|' || CAST(SUM({0}) / (SELECT COUNT(*) FROM system "
          "WHERE ts >= {1}) AS INTEGER), MAX(ts) FROM apps WHERE ts >= {1} GROUP BY app ORDER BY SUM({0}) "
          "DESC LIMIT "
          "10",
          rawValue(metric), since));
      std::vector<std::string> answer;
      for (const auto& app : store->topApps(metric, range, 10))
        answer.push_back(
            fmt::format("{}|{}|{}", app.name, app.bundlePath.value_or(""), std::int64_t(app.value)));
      EXPECT_EQ(answer.size(), 10u);
      EXPECT_EQ(answer, expected);
    }
}

TEST_F(HistoryStoreTests, anApplicationIsCalledWhatItWasCalledLast) {
  const auto recordAs = [&](int minute, const char* name) {
    auto snapshot = SystemSnapshot::empty(start + Seconds{minute * 60.0});
    snapshot.apps = {{.id = "app", .name = name, .processes = {{.pid = 1, .cpu = 1}}}};
    record(snapshot);
  };
  const auto nameOf = [&] { return store->topApps(Metric::cpu, HistoryRange::d30, 1).at(0).name; };
  for (int minute = 0; minute < 240; ++minute) recordAs(minute, minute < 150 ? "Old" : "New");
  EXPECT_EQ(nameOf(), "New");
  // Caught up with anew, the newest hours first.
  Database::open(path, Database::Mode::readWrite).exec("DELETE FROM summed_hours; DELETE FROM app_names");
  reopen();
  recordAs(241, "Newest");
  recordAs(242, "Newest");
  EXPECT_EQ(rows("SELECT name FROM app_names"), std::vector<std::string>{"New"});
  EXPECT_EQ(nameOf(), "Newest");
}

TEST_F(HistoryStoreTests, rowsOlderThanThirtyDaysGoAtTheHourAndAtOpening) {
  record(0, 1);
  record(60, 2);
  for (int i = 1; i <= 30; ++i) record(i * day + 1800, 3);
  record(month + 1860, 4);
  EXPECT_EQ(stored().size(), 32u) << "no whole hour was written meanwhile";
  record(month + 3600, 5);
  record(month + 3660, 6);
  EXPECT_EQ(stored().size(), 32u);
  EXPECT_EQ(stored("apps").size(), 32u);
  EXPECT_EQ(stored().front(), "3.0");
  EXPECT_EQ(stored("apps").front(), "3.0");
  record(month + day + 1860, 7);
  reopen();
  for (const auto& table : {"system", "apps"})
    EXPECT_THAT(rows(fmt::format("SELECT (MIN(ts) - 1772366400) || ' ' || COUNT(*) FROM {}", table)),
                ElementsAre("174600 33")); // the second day's
}

TEST_F(HistoryStoreTests, aClockThatIsWrongDeletesNothingAndShowsNothing) {
  const std::string mine = "SELECT COUNT(*) FROM system WHERE cpu = 1";
  const double now = 30 * day;
  for (const double error : {60 * day, 20 * day, 4000 * day, -60 * day, -20'000 * day, -10 * day - 1800}) {
    SCOPED_TRACE(error / day);
    store.reset();
    for (const auto& name : filesLike("history")) std::filesystem::remove(folder / name);
    store = open();
    for (int i = 0; i <= 30; ++i) record(i * day, 1); // a minute a day
    reopen();                                         // which writes the last one
    const auto before = rows(mine);
    clock.setNow(start + Seconds{now + error});
    reopen();                   // prunes
    for (int i = 0; i < 5; ++i) // for days, with the pruning of the full hour
      for (double minute : {0.0, 60.0, 120.0}) record(now + error + i * day + minute, 50);
    EXPECT_EQ(rows(mine), before);
    clock.setNow(start + Seconds{now + 60});
    reopen();
    EXPECT_EQ(rows(mine), before);
    if (error < 0) continue; // what lies in the past by now is history
    EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::d30), (SeriesSummary{1, 1, 1}));
    EXPECT_EQ(store->series(Metric::cpu, HistoryRange::d30).back().value, 1);
    EXPECT_EQ(store->average(Metric::cpu, start, 0), 1);
    EXPECT_THAT(store->recent(Metric::cpu, 2), ElementsAre(1));
    EXPECT_EQ(store->averageScore(start), std::nullopt);
    EXPECT_EQ(store->totalBytes("network", start + Seconds{now}), 10 * 60);
    EXPECT_EQ(store->topApps(Metric::cpu, HistoryRange::d30, 1)[0].value, 1);
    EXPECT_FALSE(store->minute(start + Seconds{now + error}));
  }
}

TEST_F(HistoryStoreTests, afterALongRestTheOldMinutesGoWhenSevenDaysProveTheClock) {
  for (int i = 0; i < 30; ++i) record(i * day, 1);
  for (int i = 0; i < 7; ++i) {
    for (double minute : {0.0, 60.0, 120.0}) record(100 * day + i * day + minute, 2);
    EXPECT_EQ(rows("SELECT COUNT(*) FROM system WHERE cpu = 1"), rows(i < 6 ? "SELECT 30" : "SELECT 0")) << i;
  }
}

TEST_F(HistoryStoreTests, anOlderDatabaseGainsTheScore) {
  store.reset();
  std::filesystem::remove(path);
  Database::open(path, Database::Mode::readWriteCreate)
      .exec("CREATE TABLE system(ts INTEGER PRIMARY KEY, cpu REAL, memory REAL, disk REAL, network REAL, gpu "
            "REAL, energy REAL, disk_write REAL); INSERT INTO system VALUES(1772366340,1,2,3,4,5,6,7);");
  store = open();
  record(0, 10, 50);
  record(60, 10);
  EXPECT_THAT(rows("SELECT score FROM system ORDER BY ts"), ElementsAre("NULL", "50.0"));
  EXPECT_THAT(filesLike("damaged"), IsEmpty());
}

TEST_F(HistoryStoreTests, aReaderChangesNothing) {
  record(0, 10);
  record(60, 10);
  store.reset();
  const auto before = contentOf(path);
  clock.setNow(start + Seconds{1e7}); // everything has expired
  store = open(HistoryAccess::reader);
  record(1e7, 50);
  EXPECT_EQ(store->average(Metric::cpu, start, 0), 10);
  EXPECT_EQ(store->summary(Metric::cpu, HistoryRange::h12), std::nullopt);
  EXPECT_TRUE(store->isReadable());
  store.reset();
  EXPECT_EQ(contentOf(path), before);

  std::filesystem::remove(path);
  store = open(HistoryAccess::reader);
  EXPECT_EQ(store->average(Metric::cpu, start, 0), 0);
  EXPECT_TRUE(store->isReadable()) << "nothing was recorded, that is all";
  EXPECT_FALSE(std::filesystem::exists(path));
}

} // namespace
} // namespace korvell
