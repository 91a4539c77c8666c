#include "Core/History/AppSums.h"

#include <algorithm>
#include <fmt/format.h>
#include <optional>
#include <sqlite3.h>
#include <string>
#include <unordered_map>

namespace korvell {

namespace {

constexpr std::int64_t hour = 3600;
/// Hours added up at once: some milliseconds each, on the history's queue.
constexpr int hoursAtOnce = 12;

struct Sum {
  std::int64_t row = 0; ///< rowid of the newest row, where name and path stand; 0: app_names has them
  double value = 0;
};

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

using Sums = std::unordered_map<std::string, Sum, TextHash, std::equal_to<>>;

constexpr const char* sumsPointer = "korvell-sums";

// app_sums(target, app, value, rowid): the target is a pointer to Sums, bound to the statement.
void addRow(sqlite3_context*, int, sqlite3_value** arguments) {
  auto* sums = static_cast<Sums*>(sqlite3_value_pointer(arguments[0], sumsPointer));
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(arguments[1]));
  if (!sums || !bytes) return;
  const std::string_view app(bytes, std::size_t(sqlite3_value_bytes(arguments[1])));
  auto entry = sums->find(app);
  if (entry == sums->end()) entry = sums->emplace(std::string(app), Sum{}).first;
  auto& sum = entry->second;
  sum.row = std::max<std::int64_t>(sum.row, sqlite3_value_int64(arguments[3]));
  sum.value += sqlite3_value_double(arguments[2]);
}

void finish(sqlite3_context* context) { sqlite3_result_null(context); }

/// Minutes, or hours: from the first to before the last.
struct Span {
  std::int64_t begin = 0, end = 0;
  bool isEmpty() const { return begin >= end; }
};

int addRows(Database& database, std::string_view column, Span minutes, Sums& sums) {
  if (minutes.isEmpty()) return SQLITE_ROW;
  // A span that holds nearly all rows is read in the order of the table: the index would only add a look-up
  // a row.
  constexpr std::int64_t longSpan = 20 * 24 * hour;
  const auto* plus = minutes.end - minutes.begin > longSpan ? "+" : "";
  Statement statement =
      database.prepare(fmt::format("SELECT app_sums(?, app, {0}, rowid) FROM apps WHERE {1}ts >= {2} AND "
                                   "{1}ts < {3}",
                                   column, plus, minutes.begin, minutes.end));
  statement.bindPointer(1, &sums, sumsPointer);
  return statement.step();
}

/// The runs of hours in the span that have no sums; the whole span where there is no table of them.
std::vector<Span> unsummed(Database& database, Span hours) {
  std::vector<Span> gaps;
  Statement marks = database.prepare(fmt::format(
      "SELECT hour FROM summed_hours WHERE hour >= {} AND hour < {} ORDER BY hour", hours.begin, hours.end));
  auto next = hours.begin;
  for (; marks && marks.stepRow(); next = marks.integer(0) + 1)
    if (marks.integer(0) > next) gaps.push_back({next, marks.integer(0)});
  if (next < hours.end) gaps.push_back({next, hours.end});
  return gaps;
}

int addHours(Database& database, std::string_view column, Span hours, const std::vector<Span>& gaps,
             Sums& sums) {
  auto sql = fmt::format("SELECT n.app, s.sum FROM (SELECT app, SUM({}) AS sum FROM app_hours WHERE hour >= "
                         "{} AND hour < {}",
                         column, hours.begin, hours.end);
  for (const auto& gap : gaps) sql += fmt::format(" AND NOT (hour >= {} AND hour < {})", gap.begin, gap.end);
  Statement statement = database.prepare(sql + " GROUP BY app) s JOIN app_names n ON n.id = s.app");
  int code = statement.step();
  for (; code == SQLITE_ROW; code = statement.step()) {
    auto& sum = sums[statement.text(0)];
    sum.value += statement.real(1);
    sum.row = 0;
  }
  return code == SQLITE_DONE ? SQLITE_ROW : code;
}

std::vector<const Sums::value_type*> largest(const Sums& sums, std::size_t limit) {
  std::vector<const Sums::value_type*> order;
  order.reserve(sums.size());
  for (const auto& entry : sums) order.push_back(&entry);
  const auto count = std::min(limit, order.size());
  std::partial_sort(order.begin(), order.begin() + std::ptrdiff_t(count), order.end(),
                    [](const auto* a, const auto* b) {
                      if (a->second.value != b->second.value) return a->second.value > b->second.value;
                      return a->first < b->first;
                    });
  order.resize(count);
  return order;
}

/// Whether a row was found.
bool readNames(Statement& names, AppTotal& total) {
  if (!names.stepRow()) return false;
  total.name = names.text(0);
  if (auto path = names.text(1); !path.empty()) total.bundlePath = std::move(path);
  return true;
}

std::vector<AppTotal> named(Database& database, const std::vector<const Sums::value_type*>& sums) {
  Statement ofRow = database.prepare("SELECT name, path FROM apps WHERE rowid = ?");
  std::vector<AppTotal> totals;
  for (const auto* sum : sums) {
    AppTotal total{.name = {}, .bundlePath = {}, .value = sum->second.value};
    bool found = false;
    if (sum->second.row != 0) {
      ofRow.bind(1, sum->second.row);
      found = readNames(ofRow, total);
      ofRow.reset();
    } else {
      Statement ofApp = database.prepare("SELECT name, path FROM app_names WHERE app = ?");
      ofApp.bind(1, std::string_view(sum->first));
      found = readNames(ofApp, total);
    }
    if (found) totals.push_back(std::move(total));
  }
  return totals;
}

/// In one of the statements' order; stops at the first that fails.
int execAll(Database& database, std::initializer_list<std::string> statements) {
  for (const auto& sql : statements)
    if (const int code = database.exec(sql.c_str()); code != SQLITE_OK) return code;
  return SQLITE_OK;
}

int addHour(Database& database, std::int64_t number) {
  const auto rows = fmt::format("ts >= {} AND ts < {}", number * hour, (number + 1) * hour);
  return execAll(
      database,
      {// The name of the newest row; of the hours, which come in any order, the newest one's.
       fmt::format("INSERT INTO app_names(app, name, path, hour) SELECT app, name, path, {} FROM "
                   "(SELECT app, name, path, MAX(ts) FROM apps WHERE {} GROUP BY app) WHERE true ON "
                   "CONFLICT(app) DO UPDATE SET name = excluded.name, path = excluded.path, hour = "
                   "excluded.hour WHERE excluded.hour >= app_names.hour",
                   number, rows),
       fmt::format("DELETE FROM app_hours WHERE hour = {}", number),
       fmt::format("INSERT INTO app_hours SELECT n.id, {}, SUM(cpu), SUM(memory), SUM(disk), "
                   "SUM(network), SUM(gpu), SUM(energy), SUM(disk_write) FROM apps a JOIN "
                   "app_names n ON n.app = a.app WHERE {} GROUP BY n.id",
                   number, rows),
       fmt::format("INSERT OR REPLACE INTO summed_hours VALUES({})", number)});
}

} // namespace

bool registerAppSums(Database& database) {
  return sqlite3_create_function(database.handle(), "app_sums", 4, SQLITE_UTF8, nullptr, nullptr, addRow,
                                 finish) == SQLITE_OK;
}

AppSumsAnswer sumByApp(Database& database, std::string_view column, HistoryPeriod period, std::size_t limit) {
  const Span minutes{period.since, period.until + 1};
  const Span hours{(minutes.begin + hour - 1) / hour, minutes.end / hour};
  constexpr std::size_t mostGaps = 40; // each is a condition of the statement
  const auto gaps = unsummed(database, hours);
  Sums sums;
  AppSumsAnswer answer{.code = SQLITE_ROW, .sums = {}};
  const auto add = [&](Span rows) {
    if (answer.code == SQLITE_ROW) answer.code = addRows(database, column, rows, sums);
  };
  if (hours.isEmpty() || gaps.size() > mostGaps ||
      (gaps.size() == 1 && gaps[0].begin == hours.begin && gaps[0].end == hours.end)) {
    add(minutes);
  } else {
    add({minutes.begin, hours.begin * hour});
    for (const auto& gap : gaps) add({gap.begin * hour, gap.end * hour});
    if (answer.code == SQLITE_ROW) answer.code = addHours(database, column, hours, gaps, sums);
    add({hours.end * hour, minutes.end}); // last: an application is called what it was called last
  }
  if (answer.code == SQLITE_ROW) answer.sums = named(database, largest(sums, limit));
  return answer;
}

int makeHourSums(Database& database) {
  constexpr auto forget = "BEGIN DELETE FROM summed_hours WHERE hour = {}.ts / 3600; END";
  return execAll(
      database,
      {"CREATE TABLE IF NOT EXISTS summed_hours(hour INTEGER PRIMARY KEY)",
       "CREATE TABLE IF NOT EXISTS app_names(id INTEGER PRIMARY KEY, app TEXT UNIQUE, name TEXT, "
       "path TEXT, hour INTEGER)",
       "CREATE TABLE IF NOT EXISTS app_hours(app INTEGER, hour INTEGER, cpu REAL, memory REAL, disk "
       "REAL, network REAL, gpu REAL, energy REAL, disk_write REAL, PRIMARY KEY(app, hour)) WITHOUT "
       "ROWID",
       "CREATE TRIGGER IF NOT EXISTS apps_added AFTER INSERT ON apps " + fmt::format(forget, "NEW"),
       "CREATE TRIGGER IF NOT EXISTS apps_deleted AFTER DELETE ON apps " + fmt::format(forget, "OLD"),
       "CREATE TRIGGER IF NOT EXISTS apps_changed AFTER UPDATE ON apps " + fmt::format(forget, "OLD")});
}

std::optional<bool> addHourSums(Database& database, std::int64_t minute) {
  Statement missing = database.prepare(
      fmt::format("SELECT DISTINCT ts / {0} FROM system WHERE ts < {1} AND ts / {0} NOT IN (SELECT hour FROM "
                  "summed_hours) ORDER BY ts DESC LIMIT {2}",
                  hour, minute / hour * hour, hoursAtOnce));
  std::vector<std::int64_t> numbers;
  while (missing && missing.stepRow()) numbers.push_back(missing.integer(0));
  for (const auto number : numbers)
    if (addHour(database, number) != SQLITE_OK) return std::nullopt;
  return int(numbers.size()) == hoursAtOnce;
}

int expireHourSums(Database& database) {
  return execAll(database, {"DELETE FROM app_hours WHERE hour < (SELECT MIN(hour) FROM summed_hours)",
                            "DELETE FROM app_names WHERE id NOT IN (SELECT app FROM app_hours)"});
}

} // namespace korvell
