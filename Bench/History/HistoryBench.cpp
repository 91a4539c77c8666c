// The history over a full thirty days against plain SQLite, in the same run on the same file.
//
// HistoryBench [FOLDER] makes a database with 30 and one with 60 application rows a minute (0.3 and 0.6 GB,
// in the temporary folder unless told otherwise, removed at the end) and prints CPU milliseconds, medians of
// rounds in which both sides take turns, and their ratio. The cache is warm.

#include "Base/SQLite.h"
#include "Bench/History/Month.h"
#include "Bench/Measure.h"
#include "Core/History/HistoryDatabase.h"
#include "Core/History/MinuteAccumulator.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fmt/format.h>
#include <functional>
#include <random>
#include <sqlite3.h>
#include <string>
#include <vector>

namespace korvell {
namespace {

struct Pair {
  double ours, plain;
};

/// Both sides in turn, so that a busy machine meets both.
Pair measure(int rounds, int callsInARound, const std::function<void()>& ours,
             const std::function<void()>& plain) {
  std::vector<double> oursTimes, plainTimes;
  const auto timed = [&](const std::function<void()>& work, std::vector<double>& times) {
    const double start = cpuMilliseconds();
    for (int i = 0; i < callsInARound; ++i) work();
    times.push_back((cpuMilliseconds() - start) / callsInARound);
  };
  for (int round = 0; round < rounds; ++round) {
    timed(ours, oursTimes);
    timed(plain, plainTimes);
  }
  return {median(oursTimes), median(plainTimes)};
}

void print(const std::string& what, Pair pair, double limit) {
  const double ratio = pair.ours / pair.plain;
  fmt::print("{:<44} {:>10.4f} {:>10.4f} {:>7.2f}  {}\n", what, pair.ours, pair.plain, ratio,
             ratio <= limit ? fmt::format("<= {}", limit) : fmt::format("OVER {}", limit));
}

void benchQueries(const std::string& path, std::int64_t now) {
  HistoryDatabase ours(path, HistoryAccess::reader);
  ours.ensureOpen(Date{double(now)});
  auto plain = Database::open(path, Database::Mode::readOnly);
  const auto rowsOf = [&](const std::string& sql) {
    return [&plain, sql] {
      auto statement = plain.prepare(sql);
      while (statement.stepRow()) {
      }
    };
  };
  const auto within = [&](int seconds) { return fmt::format("ts >= {} AND ts <= {}", now - seconds, now); };
  const auto last = [&](int seconds) { return HistoryPeriod{now - seconds, now}; };
  const auto top = [&](int span, int limit) {
    return rowsOf(fmt::format("SELECT name, path, SUM(memory) / 43200 FROM apps WHERE {} GROUP BY app "
                              "ORDER BY 3 DESC LIMIT {}",
                              within(span), limit));
  };
  print("top application, 30 days",
        measure(
            5, 1, [&] { ours.topApps(Metric::memory, last(2'592'000), 1); }, top(2'592'000, 1)),
        0.05);
  print("top 20, 7 days",
        measure(
            7, 1, [&] { ours.topApps(Metric::memory, last(604'800), 20); }, top(604'800, 20)),
        1.1);
  print("top 20, 24 hours",
        measure(
            15, 3, [&] { ours.topApps(Metric::memory, last(86'400), 20); }, top(86'400, 20)),
        1.1);
  print("series, 30 days",
        measure(
            15, 5, [&] { ours.series(Metric::cpu, last(2'592'000), 10'800); },
            rowsOf(fmt::format("SELECT ts / 10800 * 10800, AVG(cpu) FROM system WHERE {} GROUP BY 1 "
                               "ORDER BY 1",
                               within(2'592'000)))),
        1.1);
  print("series, 24 hours",
        measure(
            15, 50, [&] { ours.series(Metric::cpu, last(86'400), 300); },
            rowsOf(fmt::format("SELECT ts / 300 * 300, AVG(cpu) FROM system WHERE {} GROUP BY 1 ORDER BY 1",
                               within(86'400)))),
        1.1);
  print("total bytes, 30 days",
        measure(
            15, 5, [&] { ours.totalBytes("network", last(2'592'000)); },
            rowsOf(fmt::format("SELECT SUM(network) * 60 FROM system WHERE {}", within(2'592'000)))),
        1.1);
  print("average score, 7 days",
        measure(
            15, 20, [&] { ours.averageScore(last(604'800)); },
            rowsOf(fmt::format("SELECT AVG(score), COUNT(score) FROM system WHERE score IS NOT NULL AND {}",
                               within(604'800)))),
        1.1);
  const auto count = rowsOf(fmt::format("SELECT COUNT(*) FROM system WHERE {}", within(600)));
  const auto mean = rowsOf(fmt::format("SELECT AVG(cpu) FROM system WHERE {}", within(600)));
  print("average, 10 minutes, of at least 8",
        measure(
            15, 500, [&] { ours.average(Metric::cpu, last(600), 8); },
            [&] {
              count();
              mean();
            }),
        1.1);
  print("values of 30 minutes",
        measure(
            15, 500, [&] { ours.recent(Metric::cpu, last(1800)); },
            rowsOf(fmt::format("SELECT cpu FROM system WHERE {} ORDER BY ts", within(1800)))),
        1.1);
}

void compareAnswers(const std::string& path, std::int64_t now) {
  HistoryDatabase ours(path, HistoryAccess::reader);
  ours.ensureOpen(Date{double(now)});
  auto plain = Database::open(path, Database::Mode::readOnly);
  const auto since = now - 2'592'000;
  auto minutes = plain.prepare(fmt::format("SELECT COUNT(*) FROM system WHERE ts >= {}", since));
  minutes.stepRow();
  auto statement = plain.prepare(
      fmt::format("SELECT name, path, SUM(memory) / {} FROM apps WHERE ts >= {} GROUP BY app ORDER BY 3 DESC",
                  minutes.integer(0), since));
  double worst = 0;
  std::size_t count = 0;
  bool sameNames = true;
  for (const auto& total : ours.topApps(Metric::memory, {since, now}, knownApps)) {
    sameNames = sameNames && statement.stepRow() && statement.text(0) == total.name;
    ++count;
    worst = std::max(worst, std::abs(total.value / statement.real(2) - 1));
  }
  fmt::print("30 days, {} applications: {}, largest relative difference {:.1e}\n", count,
             sameNames ? "same names in the same order" : "OTHER NAMES", worst);
}

void benchOpening(const std::string& path, std::int64_t now) {
  const auto plainRetention = [&] {
    auto database = Database::open(path, Database::Mode::readWrite);
    database.exec("DELETE FROM system WHERE ts < strftime('%s','now') - 2592000;"
                  "DELETE FROM apps WHERE ts < strftime('%s','now') - 2592000;");
  };
  plainRetention();
  const auto pair = measure(
      9, 1, [&] { HistoryDatabase(path, HistoryAccess::keeper).ensureOpen(Date{double(now)}); },
      plainRetention);
  fmt::print("opening: {:.2f} ms, of which {:.2f} ms open the file and look for expired rows\n", pair.ours,
             pair.plain);
}

void benchWriting(const std::string& folder, std::int64_t now) {
  HistoryDatabase ours(folder + "/ours.sqlite", HistoryAccess::keeper);
  HistoryDatabase(folder + "/plain.sqlite", HistoryAccess::keeper).ensureOpen(Date{double(now)});
  auto database = Database::open(folder + "/plain.sqlite", Database::Mode::readWrite);
  database.exec("PRAGMA synchronous=NORMAL");
  ours.ensureOpen(Date{double(now)});
  PlainWriter plain(database);
  std::mt19937 random(42);
  std::vector<HistoryMinute> minutes;
  for (int i = 0; i < 2000; ++i) minutes.push_back(minuteRow(now - 60 * i - 60, 60, random));
  std::size_t oursNext = 0, plainNext = 0;
  print("a minute's transaction, 60 applications",
        measure(
            40, 50, [&] { ours.write(minutes[oursNext++]); }, [&] { plain.write(minutes[plainNext++]); }),
        1.3);
}

void benchRecording() {
  auto snapshot = SystemSnapshot::empty(Date{60});
  for (int i = 0; i < 400; ++i)
    snapshot.apps.push_back({.id = app(i).id,
                             .name = app(i).name,
                             .bundlePath = app(i).path,
                             .mainPID = i,
                             .processes = {{.pid = i, .cpu = 1, .memory = 1}, {.pid = 1000 + i, .cpu = 2}}});
  MinuteAccumulator accumulator;
  std::vector<double> reducing, first, adding;
  for (int i = 0; i < 600; ++i) {
    const double start = cpuMilliseconds();
    auto sample = historySample(snapshot, 90);
    const double reduced = cpuMilliseconds();
    accumulator.add(std::move(sample));
    reducing.push_back(reduced - start);
    (i % 6 == 0 ? first : adding).push_back(cpuMilliseconds() - reduced);
    if (i % 6 == 5) accumulator.take();
  }
  fmt::print(
      "a sample of 400 applications: {:.3f} ms on the history's queue, {:.3f} ms for a minute's first, "
      "{:.3f} ms on the caller's\n",
      median(adding), median(first), median(reducing));
}

} // namespace
} // namespace korvell

int main(int argc, char** argv) {
  using namespace korvell;
  namespace fs = std::filesystem;
  const fs::path folder =
      (argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path()) / "korvell-history-bench";
  fs::remove_all(folder);
  fs::create_directories(folder);
  const auto now = std::int64_t(std::time(nullptr)) / 60 * 60;
  fmt::print("SQLite {}, CPU milliseconds\n\n{:<44} {:>10} {:>10} {:>7}\n", sqlite3_libversion(), "",
             "history", "plain", "ratio");
  benchWriting(folder.string(), now);
  benchRecording();
  for (int apps : {30, 60}) {
    const auto path = (folder / fmt::format("month-{}.sqlite", apps)).string();
    generateMonth(path, now, apps);
    fmt::print("\n{} application rows a minute, {} MB\n", apps, fs::file_size(path) / 1'000'000);
    benchQueries(path, now);
    compareAnswers(path, now);
    benchOpening(path, now);
  }
  fs::remove_all(folder);
}
