#pragma once
// Thirty days of minutes that were made up, the same in every run.

#include "Base/SQLite.h"
#include "Core/History/HistoryTypes.h"

#include <cstdint>
#include <random>
#include <string>

namespace korvell {

constexpr int minutesInAMonth = 43'200;
constexpr int knownApps = 60;

HistoryApp app(int index);
HistoryMinute minuteRow(std::int64_t ts, int apps, std::mt19937& random);

/// The statements of a minute without anything around them.
class PlainWriter {
public:
  explicit PlainWriter(Database& database);
  void write(const HistoryMinute& minute);
  void writeRows(const HistoryMinute& minute);

private:
  Database& database_;
  Statement system_, app_;
};

/// A database with a minute for each until `last`, with that many application rows in each.
void generateMonth(const std::string& path, std::int64_t last, int apps);

} // namespace korvell
