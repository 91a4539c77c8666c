#include "Core/AIUsage/UsageSummary.h"

#include "Base/Format.h"
#include "Core/AIUsage/AIPricing.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace korvell {

namespace {

/// Higher cost first, an absent one taken for `missing`; then more tokens.
template <class Key, class Total>
std::vector<Total> sortedByCost(std::map<Key, Total>&& groups, double missing) {
  std::vector<Total> totals;
  for (auto& [key, total] : groups) totals.push_back(std::move(total));
  std::stable_sort(totals.begin(), totals.end(), [&](const Total& a, const Total& b) {
    const double costA = a.cost.value_or(missing), costB = b.cost.value_or(missing);
    return costA != costB ? costA > costB : a.tokens.total() > b.tokens.total();
  });
  return totals;
}

/// Of one tool or of both.
template <class Visit>
void visit(const AIUsageSummary& summary, Date since, std::optional<AITool> tool, Visit visit) {
  for (const auto& row : summary.rows)
    if (row.day >= since && (!tool || row.tool == *tool)) visit(row);
}

} // namespace

std::int64_t AITokens::total() const {
  return addTokens(addTokens(addTokens(input, output), cacheWrite), cacheRead);
}

AITokens& AITokens::operator+=(const AITokens& other) {
  for (const auto member : {&AITokens::input, &AITokens::output, &AITokens::cacheWrite, &AITokens::cacheRead})
    this->*member = addTokens(this->*member, other.*member);
  return *this;
}

std::string AIUsageRow::id() const {
  return fmt::format("{:.1f}|{}|{}|{}", day.sinceEpoch, rawValue(tool), model, project);
}

Date AIUsageSummary::startOfPeriod(int days, Date now, const TimeZone& zone) {
  return startOfDay(zone, localDay(zone, now) + (1 - days));
}

std::vector<AIUsageRow> AIUsageSummary::rowsSince(Date since, std::optional<AITool> tool) const {
  std::vector<AIUsageRow> result;
  visit(*this, since, tool, [&](const AIUsageRow& row) { result.push_back(row); });
  return result;
}

AITokens AIUsageSummary::tokens(Date since, std::optional<AITool> tool) const {
  AITokens sum;
  visit(*this, since, tool, [&](const AIUsageRow& row) { sum += row.tokens; });
  return sum;
}

std::optional<double> AIUsageSummary::cost(Date since, std::optional<AITool> tool) const {
  return total(since, tool).cost;
}

AITotal AIUsageSummary::total(Date since, std::optional<AITool> tool) const {
  AITotal sum;
  visit(*this, since, tool, [&](const AIUsageRow& row) { add(sum, row); });
  if (sum.unpriced == 0 && !sum.cost) sum.cost = 0;
  return sum;
}

std::vector<AIModelTotal> AIUsageSummary::byModel(Date since, std::optional<AITool> tool) const {
  std::map<std::pair<AITool, std::string>, AIModelTotal> groups;
  visit(*this, since, tool, [&](const AIUsageRow& row) {
    auto& total = groups[{row.tool, row.model}];
    total.tool = row.tool;
    total.model = row.model;
    add(total, row);
  });
  return sortedByCost(std::move(groups), -1);
}

std::vector<AIProjectTotal> AIUsageSummary::byProject(Date since, std::optional<AITool> tool) const {
  std::map<std::string, AIProjectTotal> groups;
  visit(*this, since, tool, [&](const AIUsageRow& row) {
    auto& total = groups[row.project];
    total.name = row.project;
    add(total, row);
  });
  return sortedByCost(std::move(groups), 0);
}

Value summaryValue(const AIUsageSummary& summary, const TimeZone& zone) {
  Value rows = Value::array();
  for (const auto& row : summary.rows) {
    Value object = Value::object({{"day", dayText(localDay(zone, row.day))},
                                  {"tool", rawValue(row.tool)},
                                  {"model", row.model},
                                  {"project", row.project},
                                  {"tokens", toValue(row.tokens)}});
    object.set("cost", row.cost);
    rows.append(std::move(object));
  }
  Value result = Value::object({{"rows", std::move(rows)}});
  if (summary.codexLimits) result.set("codexLimits", toValue(*summary.codexLimits));
  result.set("updatedAt", summary.updatedAt);
  if (summary.lastScan) result.set("lastScan", toValue(*summary.lastScan));
  return result;
}

std::optional<double> listCost(std::string_view model, const Counts& counts) {
  const auto price = AIPricing::price(model);
  if (!price) return std::nullopt;
  const auto dollars = [](std::int64_t tokens, double perMillion) { return double(tokens) * perMillion; };
  return (dollars(counts.input, price->input) +
          dollars(subtractTokens(counts.cacheWrite, counts.cacheWrite1h), price->cacheWrite5m) +
          dollars(counts.cacheWrite1h, price->cacheWrite1h) + dollars(counts.output, price->output) +
          dollars(counts.cacheRead, price->cacheRead)) /
         1e6;
}

std::string costText(std::optional<double> cost, std::int64_t unpriced) {
  if (!cost) return noFigure;
  return Format::dollars(*cost) + (unpriced > 0 ? "*" : "");
}

std::string leftOutText(const AITotal& total) {
  if (total.unpriced <= 0) return {};
  return (total.cost ? "* " : "") +
         localized("Costs leave out the tokens of models without a price: {count}.",
                   {{"count", Format::grouped(total.unpriced)}});
}

std::string costExplanation() {
  const auto checked = parseDay(AIPricing::checked);
  return localized("API-equivalent cost is what these tokens would cost at API list prices (checked {date}). "
                   "Subscription plans do not pay per token. Tokens include cache reads and writes. Cursor "
                   "keeps no usage data on this Mac, so it is not shown.",
                   {{"date", checked ? shownDay(*checked) : std::string(AIPricing::checked)}});
}

} // namespace korvell
