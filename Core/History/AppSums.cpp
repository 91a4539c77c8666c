#include "Core/History/AppSums.h"

#include <algorithm>
#include <fmt/format.h>
#include <sqlite3.h>
#include <string>
#include <unordered_map>

namespace korvell {

namespace {

struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

using Sums = std::unordered_map<std::string, AppSum, TextHash, std::equal_to<>>;

constexpr const char* sumsPointer = "korvell-sums";

// app_sums(target, app, value, rowid): the target is a pointer to Sums, bound to the statement.
void addRow(sqlite3_context*, int, sqlite3_value** arguments) {
  auto* sums = static_cast<Sums*>(sqlite3_value_pointer(arguments[0], sumsPointer));
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_value_text(arguments[1]));
  if (!sums || !bytes) return;
  const std::string_view app(bytes, std::size_t(sqlite3_value_bytes(arguments[1])));
  auto entry = sums->find(app);
  if (entry == sums->end())
    entry = sums->emplace(std::string(app), AppSum{.firstRow = sqlite3_value_int64(arguments[3])}).first;
  entry->second.sum += sqlite3_value_double(arguments[2]);
}

void finish(sqlite3_context* context) { sqlite3_result_null(context); }

std::vector<AppSum> largest(const Sums& sums, std::size_t limit) {
  std::vector<const Sums::value_type*> order;
  order.reserve(sums.size());
  for (const auto& entry : sums) order.push_back(&entry);
  const auto count = std::min(limit, order.size());
  std::partial_sort(order.begin(), order.begin() + std::ptrdiff_t(count), order.end(),
                    [](const auto* a, const auto* b) {
                      if (a->second.sum != b->second.sum) return a->second.sum > b->second.sum;
                      return a->first < b->first;
                    });
  std::vector<AppSum> result;
  for (std::size_t i = 0; i < count; ++i) result.push_back(order[i]->second);
  return result;
}

} // namespace

bool registerAppSums(Database& database) {
  return sqlite3_create_function(database.handle(), "app_sums", 4, SQLITE_UTF8, nullptr, nullptr, addRow,
                                 finish) == SQLITE_OK;
}

AppSumsAnswer sumByApp(Database& database, std::string_view column, HistoryPeriod period, std::size_t limit,
                       bool scan) {
  const auto sql =
      fmt::format("SELECT app_sums(?, app, {0}, rowid) FROM apps WHERE {1}ts >= {2} AND {1}ts <= {3}", column,
                  scan ? "+" : "", period.since, period.until);
  Statement statement = database.prepare(sql);
  Sums sums;
  statement.bindPointer(1, &sums, sumsPointer);
  AppSumsAnswer answer{.code = statement.step(), .sums = {}};
  if (answer.code == SQLITE_ROW) answer.sums = largest(sums, limit);
  return answer;
}

} // namespace korvell
