#pragma once
// What was used, priced, and rolled up for display.

#include "Core/AIUsage/CodexLimits.h"
#include "Core/AIUsage/UsageRecords.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct AITokens {
  std::int64_t input = 0, output = 0;
  std::int64_t cacheWrite = 0; ///< those held for an hour included
  std::int64_t cacheRead = 0;

  std::int64_t total() const;
  AITokens& operator+=(const AITokens& other);
  bool operator==(const AITokens&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"input", &AITokens::input}, Field{"output", &AITokens::output},
                      Field{"cacheWrite", &AITokens::cacheWrite}, Field{"cacheRead", &AITokens::cacheRead}};
  }
};

struct AIUsageRow {
  Date day; ///< its local midnight
  AITool tool = AITool::claude;
  std::string model;
  std::string project;
  AITokens tokens;
  std::optional<double> cost; ///< dollars; absent for a model without a price

  /// Tells rows of one summary apart.
  std::string id() const;
  bool operator==(const AIUsageRow&) const = default;
};

/// Of any rows.
struct AITotal {
  AITokens tokens;
  std::optional<double> cost; ///< of the rows that have one; absent when tokens were used and no row has
  std::int64_t unpriced = 0;  ///< tokens that the cost leaves out
  bool operator==(const AITotal&) const = default;
};

struct AIModelTotal {
  AITool tool = AITool::claude;
  std::string model;
  AITokens tokens;
  std::optional<double> cost;
  std::int64_t unpriced = 0; ///< tokens that the cost leaves out
  bool operator==(const AIModelTotal&) const = default;
};

struct AIProjectTotal {
  std::string name;
  AITokens tokens;
  std::optional<double> cost;
  std::int64_t unpriced = 0; ///< tokens that the cost leaves out
  bool operator==(const AIProjectTotal&) const = default;
};

/// Adds a row to any of these totals.
template <class Total>
void add(Total& total, const AIUsageRow& row) {
  total.tokens += row.tokens;
  if (row.cost)
    total.cost = total.cost.value_or(0) + *row.cost;
  else
    total.unpriced = addTokens(total.unpriced, row.tokens.total());
}

enum class AIPeriod { today, week, month };

template <>
struct EnumTable<AIPeriod> {
  /// The raw values are what the command line takes.
  static constexpr EnumCase<AIPeriod> cases[] = {{AIPeriod::today, "today", "Today"},
                                                 {AIPeriod::week, "7d", "7 days"},
                                                 {AIPeriod::month, "30d", "30 days"}};
};

constexpr int days(AIPeriod period) {
  return period == AIPeriod::today ? 1 : period == AIPeriod::week ? 7 : 30;
}

struct AIUsageSummary {
  std::vector<AIUsageRow> rows; ///< oldest day first
  std::optional<AICodexLimits> codexLimits;
  std::optional<Date> updatedAt;
  std::optional<AIScanStats> lastScan;

  /// The local midnight with which a period of that many days, today included, begins.
  static Date startOfPeriod(int days, Date now, const TimeZone& zone);

  // What happened on `since` and later, of one tool or of both.
  std::vector<AIUsageRow> rowsSince(Date since, std::optional<AITool> tool = {}) const;
  AITokens tokens(Date since, std::optional<AITool> tool = {}) const;
  /// Without the rows that have none; absent when none has, 0 when there are no rows.
  std::optional<double> cost(Date since, std::optional<AITool> tool = {}) const;
  AITotal total(Date since, std::optional<AITool> tool = {}) const;

  /// The most expensive first, then the one with more tokens. A model of which no row has a price has none,
  /// and comes after all that have.
  std::vector<AIModelTotal> byModel(Date since, std::optional<AITool> tool = {}) const;
  std::vector<AIProjectTotal> byProject(Date since, std::optional<AITool> tool = {}) const;

  bool operator==(const AIUsageSummary&) const = default;
};

/// As commands and the keeper tell it: days as texts in the zone, absent figures left out.
Value summaryValue(const AIUsageSummary& summary, const TimeZone& zone);

/// Dollars at list prices; nothing for a model without a price.
std::optional<double> listCost(std::string_view model, const Counts& counts);

/// "$24.90"; a star says that it leaves out tokens, "–" that no model of them has a price.
std::string costText(std::optional<double> cost, std::int64_t unpriced);
/// What the star means; empty when nothing is left out. Localised.
std::string leftOutText(const AITotal& total);
/// What API-equivalent cost means, and since when the prices hold; localised.
std::string costExplanation();

} // namespace korvell
