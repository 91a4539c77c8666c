#pragma once
// The file behind the history: schema, rows, retention and queries. No queue of its own: the HistoryStore
// calls it on "Korvell.history".
//
// One row a minute in `system`, for the same minute one row for each kept application in `apps`; rows older
// than thirty days are deleted. Every failure is a value: a query that fails answers like one without data,
// and fault() tells why nothing can be written. A file that turns out to be damaged, or to be no history at
// all, is renamed to "history-damaged-DATE.sqlite" and a new one begun; one of a newer version is only read.
//
// A reader changes no row, prunes and renames nothing; beside the file SQLite may leave its logs.

#include "Base/DatabaseFile.h"
#include "Core/History/HistoryTypes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvell {

enum class HistoryAccess { keeper, reader };

class HistoryDatabase {
public:
  HistoryDatabase(std::string path, HistoryAccess access) : path_(std::move(path)), access_(access) {}

  /// Opens the file, or makes sure that it still is the one that stands at the path. False when there is no
  /// usable database now; calling again later tries again. `now` names a file that is moved aside.
  bool ensureOpen(Date now);
  /// SQLite met damage: the next ensureOpen() of a keeper moves the file aside.
  bool isDamaged() const { return damaged_; }
  /// Why nothing can be written, to a keeper as of the last attempt. To a reader, what is the matter with the
  /// file as far as that can be seen without writing; a missing one has no rows, and that is all.
  std::optional<DatabaseFault> fault();
  /// For a reader. Damage may lie anywhere: ask after the queries.
  bool isReadable();
  void close();

  /// Writes one minute in one transaction, in place of any rows that it has. False when nothing was stored.
  bool write(const HistoryMinute& minute);
  void deleteExpired();

  // Queries.
  std::vector<HistoryPoint> series(Metric metric, HistoryPeriod period, int bucket);
  std::vector<ChartPoint> chart(Metric metric, HistoryPeriod period, int stretch);
  /// The two parts of the disk's figure.
  std::vector<ChartPoint> readChart(HistoryPeriod period, int stretch);
  std::vector<ChartPoint> writtenChart(HistoryPeriod period, int stretch);
  /// Of the minutes themselves, each weighing the same; nothing when none has a value.
  std::optional<SeriesSummary> summary(Metric metric, HistoryPeriod period);
  std::vector<double> recent(Metric metric, HistoryPeriod period);
  std::vector<AppTotal> topApps(Metric metric, HistoryPeriod period, std::size_t limit);
  std::optional<double> average(Metric metric, HistoryPeriod period, int minimumMinutes);
  std::optional<double> averageScore(HistoryPeriod period);
  double totalBytes(std::string_view column, HistoryPeriod period);
  /// When the oldest minute begins; nothing without any.
  std::optional<Date> oldest();
  /// What is stored of one minute, the applications in the order in which they were written.
  std::optional<HistoryMinute> minute(std::int64_t ts);

private:
  bool open();
  bool openWith(Database database);
  bool openToRead();
  bool prepareForWriting();
  void putAside(Date now);
  bool begin();
  bool commit();
  bool writeRows(const HistoryMinute& minute);
  bool writeSystemRow(const HistoryMinute& minute);
  void deriveHourSums(std::int64_t ts);
  void writeAppRow(std::int64_t ts, const HistoryApp& app);

  /// `value` is an expression of columns.
  std::vector<ChartPoint> chart(std::string_view value, HistoryPeriod period, int stretch);
  std::optional<std::int64_t> minuteCount(HistoryPeriod period);

  // Preparing, running and stepping that notice failures; on damage the next ensureOpen() of a keeper acts.
  bool isDamage(int code);
  Statement query(std::string_view sql);
  bool run(Statement& statement);
  bool row(Statement& statement);
  // A single value of a query's first row; nothing when the query fails or has no row.
  std::optional<std::int64_t> scalar(const std::string& sql);
  std::optional<double> scalarDouble(const std::string& sql);

  std::string path_;
  HistoryAccess access_;
  Database db_;
  bool damaged_ = false;
  int failure_ = 0; ///< SQLite's code of the first one since opening or beginning
  std::optional<DatabaseFault> fault_;
  bool hoursAreMissing_ = false;  ///< some whole hours may have no sums yet
  std::int64_t summedBefore_ = 0; ///< the hour when the sums were last looked at
  Statement insertSystem_;
  Statement deleteApps_;
  Statement insertApp_;
};

} // namespace korvell
