#include "Bench/History/Month.h"

#include "Core/History/AppSums.h"
#include "Core/History/HistoryDatabase.h"

#include <fmt/format.h>

namespace korvell {

HistoryApp app(int index) {
  return {.id = fmt::format("/usr/share/applications/org.example.application{}.desktop", index),
          .name = fmt::format("Application {}", index),
          .path = fmt::format("/usr/share/applications/org.example.application{}.desktop", index),
          .values = {}};
}

HistoryMinute minuteRow(std::int64_t ts, int apps, std::mt19937& random) {
  std::uniform_real_distribution<double> value(0, 1e9);
  HistoryMinute minute{.ts = ts, .system = {}, .score = 90, .apps = {}};
  for (double& v : minute.system) v = value(random);
  const int offset = apps < knownApps ? int(random() % knownApps) : 0;
  for (int i = 0; i < apps; ++i) {
    minute.apps.push_back(app((offset + i) % knownApps));
    for (double& v : minute.apps.back().values) v = value(random);
    minute.apps.back().values[gpuColumn] = 0;
  }
  return minute;
}

PlainWriter::PlainWriter(Database& database)
    : database_(database),
      system_(database.prepare("INSERT OR REPLACE INTO system(ts, cpu, memory, disk, network, gpu, energy, "
                               "disk_write, score) VALUES(?,?,?,?,?,?,?,?,?)")),
      app_(database.prepare("INSERT INTO apps VALUES(?,?,?,?,?,?,?,?,?,?,?)")) {}

void PlainWriter::write(const HistoryMinute& minute) {
  database_.exec("BEGIN");
  writeRows(minute);
  database_.exec("COMMIT");
}

void PlainWriter::writeRows(const HistoryMinute& minute) {
  system_.bind(1, minute.ts);
  for (int i = 0; i < int(historyColumnCount); ++i) system_.bind(2 + i, minute.system[std::size_t(i)]);
  system_.bind(9, minute.score);
  system_.run();
  for (const HistoryApp& row : minute.apps) {
    app_.bind(1, minute.ts);
    app_.bind(2, row.id);
    app_.bind(3, row.name);
    app_.bind(4, row.path);
    for (int i = 0; i < int(historyColumnCount); ++i) app_.bind(5 + i, row.values[std::size_t(i)]);
    app_.run();
  }
}

void generateMonth(const std::string& path, std::int64_t last, int apps) {
  HistoryDatabase(path, HistoryAccess::keeper).ensureOpen(Date{double(last)}); // the schema
  auto database = Database::open(path, Database::Mode::readWrite);
  database.exec("PRAGMA synchronous=OFF");
  std::mt19937 random(42);
  PlainWriter writer(database);
  database.exec("BEGIN");
  for (int i = 0; i < minutesInAMonth; ++i)
    writer.writeRows(minuteRow(last - std::int64_t(minutesInAMonth - 1 - i) * 60, apps, random));
  database.exec("COMMIT");
  while (addHourSums(database, last).value_or(false)) {
  }
  database.exec("PRAGMA wal_checkpoint(TRUNCATE)");
}

} // namespace korvell
