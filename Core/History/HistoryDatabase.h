#pragma once
// The file behind the history: schema, rows, retention and queries. No queue of its own: the HistoryStore
// calls it on "Korvell.history".
//
// One row a minute in `system`, for the same minute one row for each kept application in `apps`; rows older
// than thirty days are deleted. Every failure is a value: a query that fails answers like one without data,
// and a write says whether trying again later makes sense. A file that turns out to be damaged, or to be no
// history at all, is renamed to "history-damaged-DATE.sqlite" and a new one begun.
//
// A reader opens the file read-only: it creates, changes, prunes and renames nothing.

#include "Base/SQLite.h"
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
  /// `now` names a file that is moved aside.
  HistoryDatabase(std::string path, HistoryAccess access) : path_(std::move(path)), access_(access) {}

  /// Opens the file, or makes sure that it still is the one that stands at the path. False when there is no
  /// usable database now; calling again later tries again.
  bool ensureOpen(Date now);
  /// SQLite met damage: the next ensureOpen() of a keeper moves the file aside.
  bool isDamaged() const { return damaged_; }
  /// False when there is a file that can't be read, is damaged or no history; a missing one has no rows, and
  /// that is all. Damage may lie anywhere: ask after the queries.
  bool isReadable();
  void close();

  /// Writes one minute in one transaction, in place of any rows that it has. False when nothing was stored.
  bool write(const HistoryMinute& minute);
  void deleteExpired();

  // Queries; `since` is Unix time in whole seconds.
  std::vector<HistoryPoint> series(Metric metric, std::int64_t since, int bucket);
  /// Of the minutes themselves, each weighing the same; nothing when none has a value.
  std::optional<SeriesSummary> summary(Metric metric, std::int64_t since);
  std::vector<double> recent(Metric metric, std::int64_t since);
  std::vector<AppTotal> topApps(Metric metric, std::int64_t since, std::size_t limit, bool wholeHistory);
  double average(Metric metric, std::int64_t since, int minimumMinutes);
  std::optional<double> averageScore(std::int64_t since);
  double totalBytes(std::string_view column, std::int64_t since);
  /// What is stored of one minute, the applications in the order in which they were written.
  std::optional<HistoryMinute> minute(std::int64_t ts);

private:
  bool open();
  bool prepareForWriting();
  bool isForeign();
  void putAside(Date now);
  bool commit();
  bool writeSystemRow(const HistoryMinute& minute);
  void writeAppRow(std::int64_t ts, const HistoryApp& app);

  // Preparing, running and stepping that notice damage: the next ensureOpen() of a keeper acts on it.
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
  Statement insertSystem_;
  Statement deleteApps_;
  Statement insertApp_;
};

} // namespace korvell
