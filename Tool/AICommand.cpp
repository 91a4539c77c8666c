// korvell ai: what the AI coding tools used, by day, model or project, and how much of a plan is spent.

#include "Base/Format.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Core/AIUsage/PlanLimitAlerts.h"
#include "Tool/Commands.h"
#include "Tool/Progress.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

/// Scans that read less are over before a progress line could be read.
constexpr std::int64_t longScan = std::int64_t{64} << 20;
constexpr int barWidth = 16;

struct Usage {
  const TimeZone& zone;
  Date now;
  AIUsageSummary summary = {};
  AIUsageScanner::Outcome outcome = AIUsageScanner::Outcome::done;
};

Usage readUsage(Context& context) {
  auto& host = context.host;
  Usage usage{*host.zone, context.clock.now()};
  AIUsageScanner scanner(AIUsageScanner::defaults(host.folders), *host.logFiles, *host.zone, context.clock);
  Progress progress(context.err, context.clock);
  const auto text = localized("Reading your Claude Code and Codex history for the first time…");
  const auto stats = scanner.refresh(usage.now, [&](std::int64_t bytes, std::int64_t of) {
    if (of >= longScan) progress.show(std::min(1.0, double(bytes) / double(of)), text);
  });
  usage.outcome = scanner.lastOutcome();
  usage.summary = scanner.summary(days(AIPeriod::month), usage.now);
  usage.summary.lastScan = stats;
  return usage;
}

/// Says what kept the figures from being up to date.
int report(Context& context, AIUsageScanner::Outcome outcome) {
  switch (outcome) {
  case AIUsageScanner::Outcome::locked:
    return fail(context, localized("another Korvell is reading the logs; these are the figures from before"));
  case AIUsageScanner::Outcome::foreign:
    return fail(context, localized("the usage database was changed by another version of Korvell"));
  case AIUsageScanner::Outcome::failed:
    return fail(context, localized("the usage database can't be written; the figures may be old"));
  case AIUsageScanner::Outcome::cancelled:
  case AIUsageScanner::Outcome::done:
    break;
  }
  return exitOK;
}

Value json(const Usage& usage, Date since, std::optional<AITool> tool) {
  auto shown = usage.summary;
  shown.rows = shown.rowsSince(since, tool);
  return summaryValue(shown, usage.zone);
}

std::string dollars(std::optional<double> cost) {
  if (!cost) return noFigure;
  const auto cents = std::int64_t(*cost * 100 + 0.5);
  return fmt::format("${}.{:02}", Format::grouped(cents / 100), cents % 100);
}

const std::vector<Column>& tokenColumns() {
  using enum Column::Align;
  static const std::vector<Column> columns = {
      {localized("Input"), right},      {localized("Output"), right}, {localized("Cache write"), right},
      {localized("Cache read"), right}, {localized("Total"), right},  {localized("Cost"), right}};
  return columns;
}

std::vector<Table::Cell> cells(std::vector<Table::Cell> leading, const AITokens& tokens,
                               std::optional<double> cost, Ink ink = Ink::plain) {
  for (const auto count : {tokens.input, tokens.output, tokens.cacheWrite, tokens.cacheRead, tokens.total()})
    leading.push_back({Format::grouped(count), ink});
  leading.push_back({dollars(cost), ink});
  return leading;
}

Table tableWith(std::vector<Column> columns) {
  columns.insert(columns.end(), tokenColumns().begin(), tokenColumns().end());
  return Table(std::move(columns));
}

/// Every day from the first with usage to today, with a bar for its share of the busiest day's tokens.
Table dayTable(const Usage& usage, Date since, std::optional<AITool> tool) {
  std::map<CalendarDay, std::pair<AITokens, double>> sums;
  for (const auto& row : usage.summary.rowsSince(since, tool)) {
    auto& [tokens, cost] = sums[localDay(usage.zone, row.day)];
    tokens += row.tokens;
    cost += row.cost.value_or(0);
  }
  double most = 1;
  for (const auto& [day, sum] : sums) most = std::max(most, double(sum.first.total()));
  Table table = tableWith({{localized("Day")}, {localized("Tokens per day")}});
  if (sums.empty()) return table;
  const auto last = std::max(sums.rbegin()->first, localDay(usage.zone, usage.now));
  for (auto day = sums.begin()->first; day <= last; day = day + 1) {
    const auto& [tokens, cost] = sums[day];
    table.row(
        cells({dayText(day), {bar(double(tokens.total()) / most, barWidth), Ink::accent}}, tokens, cost));
  }
  return table;
}

Table modelTable(const Usage& usage, Date since, std::optional<AITool> tool) {
  Table table = tableWith({{localized("Tool")}, {localized("Model"), Column::Align::left, true, 12}});
  for (const auto& total : usage.summary.byModel(since, tool))
    table.row(cells({title(total.tool), total.model}, total.tokens, total.cost));
  return table;
}

Table projectTable(const Usage& usage, Date since, std::optional<AITool> tool) {
  Table table = tableWith({{localized("Project"), Column::Align::left, true, 12}, {""}});
  for (const auto& total : usage.summary.byProject(since, tool))
    table.row(cells({total.name, ""}, total.tokens, total.cost));
  return table;
}

void print(Context& context, const Usage& usage, Date since, const Arguments& arguments,
           std::optional<AITool> tool, AIPeriod period) {
  auto& out = context.out;
  if (usage.summary.rowsSince(since, tool).empty()) {
    out.line(period == AIPeriod::month && !tool
                 ? localized("No Claude Code or Codex usage in the last 30 days.")
                 : localized("No usage in this period."));
    return;
  }
  const auto by = arguments.text("--by").value_or("day");
  Table table = by == "model"     ? modelTable(usage, since, tool)
                : by == "project" ? projectTable(usage, since, tool)
                                  : dayTable(usage, since, tool);
  table.row(cells({{localized("Total"), Ink::bold}, ""}, usage.summary.tokens(since, tool),
                  usage.summary.cost(since, tool), Ink::bold));
  table.print(out);
  out.line();
  out.line(out.ink(Ink::dim, localized("Cost: API-equivalent, ") + localized("at API list prices") + "."));
  out.line(out.ink(Ink::dim, localized("From ~/.claude and ~/.codex, nothing leaves your Mac.")));
}

int runAI(Context& context, const Arguments& arguments) {
  const auto usage = readUsage(context);
  const auto period =
      fromRawValue<AIPeriod>(arguments.text("--period").value_or("30d")).value_or(AIPeriod::month);
  std::optional<AITool> tool;
  if (const auto name = arguments.text("--tool")) tool = *name == "codex" ? AITool::codex : AITool::claude;
  const auto since = AIUsageSummary::startOfPeriod(days(period), usage.now, usage.zone);
  if (arguments.flag("--json"))
    printJSON(context.out, json(usage, since, tool));
  else
    print(context, usage, since, arguments, tool, period);
  if (arguments.flag("--explain") && !arguments.flag("--json")) {
    context.out.line();
    for (const auto& line : wrapped(costExplanation(), std::min(context.out.columns(), widestSummary)))
      context.out.line(line);
  }
  return report(context, usage.outcome);
}

int runLimits(Context& context, const Arguments& arguments) {
  const auto usage = readUsage(context);
  const auto& limits = usage.summary.codexLimits;
  if (arguments.flag("--json")) {
    Value result = Value::object();
    if (limits) result.set("codexLimits", toValue(*limits));
    result.set("updatedAt", usage.summary.updatedAt);
    printJSON(context.out, result);
  } else if (!limits) {
    context.out.line(localized("no Codex sessions yet"));
  } else {
    context.out.line(localized("Codex plan") + (limits->plan ? ": " + *limits->plan : ""));
    Table table({{""}, {""}, {"", Column::Align::right}, {""}});
    for (const auto& limit : limits->limits()) {
      const bool running = limit.resetsAt > usage.now;
      const auto ink = !running ? Ink::dim : limit.usedPercent >= 80 ? Ink::warning : Ink::good;
      table.row({limit.name() + localized(" limit"),
                 {bar(limit.usedPercent / 100, barWidth), ink},
                 {Format::percent(limit.usedPercent), ink},
                 {running ? localized("resets ") + resetText(usage.zone, limit.resetsAt)
                          : localized("window has reset"),
                  Ink::dim}});
    }
    table.print(context.out);
  }
  return report(context, usage.outcome);
}

} // namespace

Command aiCommand() {
  using Kind = Option::Kind;
  return {"ai",
          "Show what Claude Code and Codex used, and what it would cost at list prices",
          {{"--period", Kind::text, "How far back (30d)", {"today", "7d", "30d"}},
           {"--by", Kind::text, "What a line stands for (day)", {"day", "model", "project"}},
           {"--tool", Kind::text, "Of one tool only", {"claude", "codex"}},
           {"--explain", Kind::flag, "Say what API-equivalent cost means"},
           jsonOption()},
          runAI,
          {{"limits", "Show how much of the Codex plan is spent", {jsonOption()}, runLimits}}};
}

} // namespace korvell
