#include "UI/AIUsage/AIUsagePage.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "Base/Text.h"
#include "Core/AIUsage/PlanLimitAlerts.h"
#include "UI/Kit/ChartRules.h"
#include "UI/Parts/Figures.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <map>

namespace korvell {

namespace {

constexpr std::size_t mostRows = 10;
constexpr std::int64_t daysOfWeek = 7;
constexpr int monday = 1;
constexpr std::size_t mostTotals = 12; ///< bars that have room for their totals
constexpr const char* unpricedReason = "No list price is known for what was used.";

std::string tokensText(std::int64_t count) {
  return localized("{count} tokens", {{"count", Format::shortCount(count)}});
}

std::string spokenCost(std::optional<double> cost) {
  return cost ? Format::dollars(*cost) : localized("no list price");
}

// Days

struct DaySums {
  std::vector<std::int64_t> tokens = std::vector<std::int64_t>(std::size(EnumTable<AITool>::cases));
  AITotal total;
};

/// Every day up to today, also those without usage.
std::map<CalendarDay, DaySums> sumsOfDays(const AIUsageSummary& summary, const AIUsageContext& context,
                                          int count) {
  std::map<CalendarDay, DaySums> sums;
  const auto today = localDay(context.zone, context.now);
  for (int back = 0; back < count; ++back) sums.try_emplace(today + (-back));
  auto found = sums.end();
  std::optional<Date> day; // of the row before: hundreds follow each other
  for (const auto& row : summary.rows) {
    if (day != row.day) found = sums.find(localDay(context.zone, row.day));
    day = row.day;
    if (found == sums.end()) continue;
    auto& tool = found->second.tokens[std::size_t(row.tool)];
    tool = addTokens(tool, row.tokens.total());
    add(found->second.total, row);
  }
  for (auto& [day, sum] : sums)
    if (sum.total.unpriced == 0 && !sum.total.cost) sum.total.cost = 0;
  return sums;
}

DayBar barOf(CalendarDay day, const DaySums& sums, const AIUsageContext& context, bool areMany) {
  const auto time = localTime(context.zone, startOfDay(context.zone, day));
  const bool isToday = day == localDay(context.zone, context.now);
  DayBar bar{.label = {},
             .parts = {},
             .total = Format::shortCount(sums.total.tokens.total()),
             .when = shortWeekday(time.weekday) + " " + dayAndMonth(time),
             .beside = costText(sums.total.cost, sums.total.unpriced),
             .spoken = {}};
  if (isToday)
    bar.label = localized("today");
  else if (!areMany)
    bar.label = weekdayAndDay(time);
  else if (time.weekday == monday)
    bar.label = dayAndMonth(time);
  for (const auto& tool : allCases<AITool>()) {
    const auto tokens = sums.tokens[std::size_t(tool.value)];
    bar.parts.push_back({double(tokens), title(tool.value) + " " + Format::shortCount(tokens)});
  }
  bar.spoken = bar.when + ", " + tokensText(sums.total.tokens.total());
  for (const auto& part : bar.parts) bar.spoken += ", " + part.words;
  bar.spoken += ", " + spokenCost(sums.total.cost);
  return bar;
}

/// "25M" beside a gridline, not "25.0M".
std::string tickLabel(double value) {
  auto label = Format::shortCount(std::llround(value));
  if (const auto idle = label.find(".0"); idle != std::string::npos) label.erase(idle, 2);
  return label;
}

/// The smallest 1, 2 or 5 times a power of ten from there on, divided into round steps.
void scale(DayBarsData& data, double most) {
  const double power = std::pow(10.0, std::floor(std::log10(std::max(most, 1.0))));
  const double steps[] = {1, 2, 5, 10};
  const auto* step = std::ranges::find_if(steps, [&](double each) { return each * power >= most; });
  data.top = *step * power;
  const int parts = *step == 5 ? 5 : 4;
  for (int i = 1; i <= parts; ++i) {
    const double value = data.top * i / parts;
    data.ticks.push_back({value, tickLabel(value)});
  }
}

std::optional<DayBarsData> dayBars(const AIUsageSummary& summary, const AIUsageContext& context, int count) {
  DayBarsData data;
  for (const auto& tool : allCases<AITool>()) data.series.push_back(title(tool.value));
  const auto sums = sumsOfDays(summary, context, count);
  const bool areMany = sums.size() > mostTotals;
  double most = 0, all = 0;
  for (const auto& [day, sum] : sums) {
    data.bars.push_back(barOf(day, sum, context, areMany));
    most = std::max(most, double(sum.total.tokens.total()));
    all += double(sum.total.tokens.total());
  }
  if (most <= 0) return std::nullopt;
  data.top = most;
  if (areMany) scale(data, most);
  data.spoken = localized(
      "Tokens per day, {n} days, {total} in all",
      {{"n", std::to_string(count)}, {"total", Format::shortCount(std::int64_t(std::min(all, 9e18)))}});
  return data;
}

// Figures

AIUsagePage::Tile costTile(std::string caption, const AITotal& total, std::string note) {
  return {std::move(caption), costText(total.cost, total.unpriced), std::move(note),
          total.cost ? std::string() : localized(unpricedReason)};
}

std::vector<AIUsagePage::Tile> tilesOf(const AIUsageSummary& summary, const AIUsageContext& context,
                                       Date since) {
  const auto today =
      summary.total(AIUsageSummary::startOfPeriod(days(AIPeriod::today), context.now, context.zone));
  const auto first = costTile(localized("API-equivalent today"), today, localized("at API list prices"));
  if (context.period == AIPeriod::today) {
    const auto& used = today.tokens;
    return {first,
            {localized("Tokens today"),
             Format::shortCount(used.total()),
             localized("{count} of them output", {{"count", Format::shortCount(used.output)}}),
             {}}};
  }
  const auto total = summary.total(since);
  return {first, costTile(localized("API-equivalent, {period}", {{"period", title(context.period)}}), total,
                          tokensText(total.tokens.total()))};
}

template <class Total>
AIUsagePage::Row rowOf(std::string name, std::string detail, const Total& total) {
  AIUsagePage::Row row{.name = escapedControls(name),
                       .detail = std::move(detail),
                       .tokens = Format::shortCount(total.tokens.total()),
                       .cost = costText(total.cost, total.unpriced),
                       .spoken = {}};
  const auto price = localized("no list price");
  if (!total.cost) row.detail = row.detail.empty() ? price : row.detail + " · " + price;
  row.spoken =
      row.name + (row.detail.empty() ? "" : ", " + row.detail) + ", " + tokensText(total.tokens.total());
  if (total.cost) row.spoken += ", " + Format::dollars(*total.cost);
  return row;
}

/// All but the first ones as one row.
template <class Total, class Make>
std::vector<AIUsagePage::Row> rowsOf(const std::vector<Total>& totals, Make make) {
  std::vector<AIUsagePage::Row> rows;
  const auto shown = totals.size() > mostRows ? mostRows - 1 : totals.size();
  for (std::size_t i = 0; i < shown; ++i) rows.push_back(make(totals[i]));
  if (shown == totals.size()) return rows;
  Total rest;
  for (auto i = shown; i < totals.size(); ++i) {
    rest.tokens += totals[i].tokens;
    rest.unpriced = addTokens(rest.unpriced, totals[i].unpriced);
    if (totals[i].cost) rest.cost = rest.cost.value_or(0) + *totals[i].cost;
  }
  rows.push_back(rowOf(localized("{n} more", {{"n", std::to_string(totals.size() - shown)}}), {}, rest));
  return rows;
}

// The plan

std::string resetWords(Date date, const AIUsageContext& context) {
  const auto time = clockText(context.zone, date);
  const auto day = localDay(context.zone, date);
  const auto ahead = day.number - localDay(context.zone, context.now).number;
  if (ahead == 0) return localized("resets {time}", {{"time", time}});
  // A week from now a weekday could be today.
  const auto name = ahead < daysOfWeek ? weekdayName(localTime(context.zone, date).weekday) : shownDay(day);
  return localized("resets {time}", {{"time", name + " " + time}});
}

AIUsagePage::Limit limitOf(const AIPlanLimit& limit, const AIUsageContext& context) {
  const auto percent = limit.wholePercent();
  AIUsagePage::Limit row{.name = localized("{window} limit", {{"window", limit.name()}}),
                         .level = percent ? std::clamp(limit.usedPercent / 100, 0.0, 1.0) : 0,
                         .percent = percent ? Format::percent(double(*percent)) : std::string(noFigure),
                         .hasReset = limit.resetsAt <= context.now,
                         .reset = {},
                         .spoken = {}};
  row.isTight = !row.hasReset && limit.usedPercent >= alertPercent;
  row.reset = row.hasReset ? localized("window has reset") : resetWords(limit.resetsAt, context);
  row.spoken = row.name + ", " + row.percent + ", " + row.reset;
  return row;
}

AIUsagePage::Plan planOf(const AIUsageSummary& summary, const AIUsageContext& context) {
  AIUsagePage::Plan plan{.title = localized("Codex plan"), .read = {}, .limits = {}, .sentence = {}};
  const auto& limits = summary.codexLimits;
  if (!limits) {
    plan.sentence = localized("no Codex sessions yet");
    return plan;
  }
  if (limits->plan && !limits->plan->empty())
    plan.title = localized("Codex plan: {plan}", {{"plan", escapedControls(*limits->plan)}});
  const bool isToday = localDay(context.zone, limits->date) == localDay(context.zone, context.now);
  plan.read =
      localized("read {time}", {{"time", isToday ? clockText(context.zone, limits->date)
                                                 : dayAndTime(context.zone, limits->date, context.now)}});
  for (const auto& limit : limits->limits()) plan.limits.push_back(limitOf(limit, context));
  if (plan.limits.empty()) plan.sentence = localized("The last session told no limits.");
  return plan;
}

// What stands below

std::string updatedWords(const AIUsageSummary& summary, const AIUsageContext& context) {
  if (!summary.updatedAt) return {};
  const auto time = clockText(context.zone, *summary.updatedAt);
  return context.isScanning
             ? localized("Updated {time} from ~/.claude and ~/.codex, refreshing…", {{"time", time}})
             : localized("Updated {time} from ~/.claude and ~/.codex", {{"time", time}});
}

std::string problemOf(AIUsageScanner::Outcome outcome, bool hasFigures) {
  const auto say = [hasFigures](std::string_view reason) {
    const auto sentence = localized(reason);
    return hasFigures ? localized("{reason}; these are the figures from before.", {{"reason", sentence}})
                      : sentence + ".";
  };
  using enum AIUsageScanner::Outcome;
  switch (outcome) {
  case locked:
    return say("Another Korvell is reading the logs");
  case foreign:
    return say("The usage database was changed by another version of Korvell");
  case full:
    return say("There is no room on the disk for the usage database");
  case failed:
    return say("The usage database can't be read or written");
  case done:
  case cancelled:
    break;
  }
  return {};
}

} // namespace

AIUsagePage aiUsagePage(const AIUsageSummary& summary, const AIUsageContext& context) {
  AIUsagePage page;
  page.problem = problemOf(context.outcome, !summary.rows.empty());
  page.explanation = costExplanation();
  page.source = localized("From ~/.claude and ~/.codex, nothing leaves your Mac.");
  page.updated = updatedWords(summary, context);
  if (summary.rows.empty()) {
    page.isReading = !summary.updatedAt;
    page.sentence = page.isReading
                        ? localized("Reading your Claude Code and Codex history for the first time…")
                        : localized("No Claude Code or Codex usage in the last 30 days.");
    return page;
  }
  const auto since = AIUsageSummary::startOfPeriod(days(context.period), context.now, context.zone);
  page.tiles = tilesOf(summary, context, since);
  page.plan = planOf(summary, context);
  const bool isDay = context.period == AIPeriod::today;
  page.days = dayBars(summary, context, isDay ? days(AIPeriod::week) : days(context.period));
  // One bar has nothing to be compared with.
  if (isDay) page.daysNote = localized("the last 7 days");
  if (summary.rowsSince(since).empty()) {
    page.noUsage = localized("No usage in this period.");
    return page;
  }
  page.models = rowsOf(summary.byModel(since), [](const AIModelTotal& total) {
    return rowOf(total.model, title(total.tool), total);
  });
  page.projects = rowsOf(summary.byProject(since),
                         [](const AIProjectTotal& total) { return rowOf(total.name, {}, total); });
  page.leftOut = leftOutText(summary.total(since));
  return page;
}

std::optional<double> costToday(const AIUsageSummary& summary, Date now, const TimeZone& zone) {
  if (summary.rows.empty()) return std::nullopt;
  return summary.cost(AIUsageSummary::startOfPeriod(days(AIPeriod::today), now, zone));
}

} // namespace korvell
