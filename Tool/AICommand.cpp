// korvell ai: what the AI coding tools used, by day, model or project, and how much of a plan is spent.

#include "App/JSONDocuments.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Core/AIUsage/PlanLimitAlerts.h"
#include "Tool/Commands.h"
#include "Tool/Progress.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

enum class AIGrouping { day, model, project };

template <>
struct EnumTable<AIGrouping> {
  using enum AIGrouping;
  static constexpr EnumCase<AIGrouping> cases[] = {
      {day, "day", "Tokens per day"}, {model, "model", "By model"}, {project, "project", "Top projects"}};
};

namespace {

/// Scans that read less are over before a progress line could be read.
constexpr std::int64_t longScan = std::int64_t{64} << 20;
constexpr int limitBarWidth = 16;

struct Usage {
  const TimeZone& zone;
  Date now;
  std::string databasePath;
  AIUsageSummary summary = {};
  AIUsageScanner::Outcome outcome = AIUsageScanner::Outcome::done;
  std::optional<std::string> putAside = {}; ///< where a damaged database is kept
};

/// What of the usage is shown, and how.
struct View {
  Date since;
  AIPeriod period;
  std::optional<AITool> tool;
  AIGrouping by;
};

Usage readUsage(Context& context) {
  auto& host = context.host;
  const auto options = AIUsageScanner::defaults(host.folders);
  Usage usage{*host.zone, context.clock.now(), options.cacheURL};
  AIUsageScanner scanner(options, *host.logFiles, *host.zone, context.clock);
  const bool isFirst = scanner.summary(days(AIPeriod::month), usage.now).rows.empty();
  const auto text = isFirst ? localized("Reading your Claude Code and Codex history for the first time…")
                            : localized("Reading ~/.claude and ~/.codex…");
  Progress progress(context.err, context.clock);
  const auto stats = scanner.refresh(usage.now, [&](std::int64_t bytes, std::int64_t of) {
    if (of >= longScan) progress.show(std::min(1.0, double(bytes) / double(of)), text);
  });
  usage.summary = scanner.summary(days(AIPeriod::month), usage.now);
  usage.summary.lastScan = stats;
  usage.outcome = scanner.lastOutcome();
  usage.putAside = scanner.putAside();
  return usage;
}

struct OutcomeRow {
  AIUsageScanner::Outcome outcome;
  const char* sentence;
  const char* withFigures; ///< where there are some, from before
};
constexpr OutcomeRow outcomes[] = {
    {AIUsageScanner::Outcome::locked, "another Korvell is reading the logs",
     "another Korvell is reading the logs; these are the figures from before"},
    {AIUsageScanner::Outcome::foreign, "{path} was changed by another version of Korvell",
     "{path} was changed by another version of Korvell; these are the figures from before"},
    {AIUsageScanner::Outcome::full, "there is no room on the disk for {path}",
     "there is no room on the disk for {path}; these are the figures from before"},
    {AIUsageScanner::Outcome::failed, "{path} can't be read or written",
     "{path} can't be read or written; these are the figures from before"},
};

/// Says what kept the figures from being up to date.
int report(Context& context, const Usage& usage) {
  const auto path = escapedControls(usage.putAside.value_or(usage.databasePath));
  const auto say = [&](const char* text) { return fail(context, localized(text, {{"path", path}})); };
  const auto row = std::ranges::find(outcomes, usage.outcome, &OutcomeRow::outcome);
  if (row != std::end(outcomes)) return say(usage.summary.rows.empty() ? row->sentence : row->withFigures);
  if (usage.putAside)
    say("the usage database was damaged and is kept as {path}; the last 30 days were counted anew");
  return exitOK;
}

Value json(const Usage& usage, const View& view) {
  auto shown = usage.summary;
  shown.rows = shown.rowsSince(view.since, view.tool);
  return summaryValue(shown, usage.zone);
}

/// What gives way, step by step, until a table fits the terminal.
struct Layout {
  bool splitsCache; ///< writes and reads in columns of their own
  int barWidth;
  bool cutsNames = false;
  bool sumsUp = true; ///< has a column for all tokens
};
constexpr Layout layouts[] = {{true, 16}, {true, 8},        {false, 16},
                              {false, 6}, {false, 1, true}, {false, 1, true, false}};

class UsageTables {
public:
  UsageTables(const Usage& usage, const View& view, Layout layout)
      : usage_(usage), view_(view), layout_(layout) {}

  Table make() const {
    Table table = view_.by == AIGrouping::model     ? byModel()
                  : view_.by == AIGrouping::project ? byProject()
                                                    : byDay();
    std::vector<Table::Cell> leading = {{localized("Total"), Ink::bold}};
    if (view_.by == AIGrouping::day || namesTools()) leading.emplace_back("");
    table.row(cells(std::move(leading), usage_.summary.total(view_.since, view_.tool), Ink::bold));
    return table;
  }

private:
  /// A model's name tells its tool, too.
  bool namesTools() const { return view_.by == AIGrouping::model && layout_.splitsCache; }

  Table tableWith(std::vector<Column> columns) const {
    std::vector<const char*> names = {"Input", "Output"};
    if (layout_.splitsCache)
      names.insert(names.end(), {"Cache write", "Cache read"});
    else
      names.push_back("Cache");
    if (layout_.sumsUp) names.push_back("Total");
    names.push_back("Cost");
    for (const char* name : names) columns.push_back({localized(name), Column::Align::right});
    return Table(std::move(columns));
  }

  template <class Total>
  std::vector<Table::Cell> cells(std::vector<Table::Cell> leading, const Total& total,
                                 Ink ink = Ink::plain) const {
    const AITokens& tokens = total.tokens;
    const auto add = [&](std::int64_t count) { leading.push_back({Format::grouped(count), ink}); };
    add(tokens.input);
    add(tokens.output);
    if (layout_.splitsCache) {
      add(tokens.cacheWrite);
      add(tokens.cacheRead);
    } else {
      add(AITokens{.cacheWrite = tokens.cacheWrite, .cacheRead = tokens.cacheRead}.total());
    }
    if (layout_.sumsUp) add(tokens.total());
    leading.push_back({costText(total.cost, total.unpriced), ink});
    return leading;
  }

  /// Every day from the first with usage to today, with a bar for its share of the busiest day's tokens.
  Table byDay() const {
    std::map<CalendarDay, AITotal> sums;
    for (const auto& row : usage_.summary.rowsSince(view_.since, view_.tool))
      add(sums[localDay(usage_.zone, row.day)], row);
    double most = 1;
    for (const auto& [day, sum] : sums) most = std::max(most, double(sum.tokens.total()));
    Table table = tableWith({{localized("Day")}, {""}});
    const auto today = localDay(usage_.zone, usage_.now);
    for (auto day = sums.begin()->first; day <= today; day = day + 1)
      sums.try_emplace(day, AITotal{.cost = 0});
    for (const auto& [day, sum] : sums)
      table.row(cells(
          {shownDay(day), {bar(double(sum.tokens.total()) / most, layout_.barWidth), Ink::accent}}, sum));
    return table;
  }

  Table byModel() const {
    std::vector<Column> columns = {{localized("Model"), Column::Align::left, layout_.cutsNames, 12}};
    if (namesTools()) columns.push_back({localized("Tool")});
    Table table = tableWith(std::move(columns));
    for (const auto& total : usage_.summary.byModel(view_.since, view_.tool)) {
      std::vector<Table::Cell> leading = {total.model};
      if (namesTools()) leading.emplace_back(std::string(title(total.tool)));
      table.row(cells(std::move(leading), total));
    }
    return table;
  }

  Table byProject() const {
    Table table = tableWith({{localized("Project"), Column::Align::left, layout_.cutsNames, 12}});
    for (const auto& total : usage_.summary.byProject(view_.since, view_.tool))
      table.row(cells({total.name}, total));
    return table;
  }

  const Usage& usage_;
  const View& view_;
  Layout layout_;
};

void printCosts(Context& context, const Usage& usage, const View& view) {
  const auto cost = [&](const char* text, Date since) {
    const auto total = usage.summary.total(since, view.tool);
    const auto shown = costText(total.cost, total.unpriced);
    context.out.line(
        context.out.ink(Ink::dim, localized(text, {{"cost", shown}, {"period", title(view.period)}})));
  };
  cost("API-equivalent today: {cost} at API list prices",
       AIUsageSummary::startOfPeriod(1, usage.now, usage.zone));
  if (view.period != AIPeriod::today) cost("API-equivalent, {period}: {cost} at API list prices", view.since);
  const auto leftOut = leftOutText(usage.summary.total(view.since, view.tool));
  if (!leftOut.empty()) context.out.line(context.out.ink(Ink::dim, leftOut));
}

void print(Context& context, const Usage& usage, const View& view) {
  auto& out = context.out;
  if (usage.summary.rowsSince(view.since, view.tool).empty()) {
    out.line(usage.summary.rows.empty() ? localized("No Claude Code or Codex usage in the last 30 days.")
                                        : localized("No usage in this period."));
    return;
  }
  for (const auto& layout : layouts) {
    const Table table = UsageTables(usage, view, layout).make();
    const bool isLast = &layout == std::end(layouts) - 1;
    if (!isLast && table.narrowest() > out.columns()) continue;
    out.line(out.ink(Ink::bold, title(view.by)));
    table.print(out);
    break;
  }
  out.line();
  printCosts(context, usage, view);
  out.line(out.ink(Ink::dim, localized("From ~/.claude and ~/.codex, nothing leaves your Mac.")));
  const auto time = localTime(usage.zone, usage.summary.updatedAt.value_or(usage.now));
  const auto clock = fmt::format("{:02}:{:02}", time.hour, time.minute);
  out.line(out.ink(Ink::dim, localized("Updated {time}", {{"time", clock}})));
}

View viewOf(const Arguments& arguments, const Usage& usage) {
  View view;
  view.period = fromRawValue<AIPeriod>(arguments.text("--period").value_or("30d")).value_or(AIPeriod::month);
  if (const auto name = arguments.text("--tool"))
    view.tool = *name == "codex" ? AITool::codex : AITool::claude;
  view.by = fromRawValue<AIGrouping>(arguments.text("--by").value_or("day")).value_or(AIGrouping::day);
  view.since = AIUsageSummary::startOfPeriod(days(view.period), usage.now, usage.zone);
  return view;
}

int runAI(Context& context, const Arguments& arguments) {
  const auto usage = readUsage(context);
  const auto view = viewOf(arguments, usage);
  if (arguments.flag("--json")) {
    printJSON(context.out, json(usage, view));
    return report(context, usage);
  }
  print(context, usage, view);
  if (arguments.flag("--explain")) {
    context.out.line();
    for (const auto& line : wrapped(costExplanation(), std::min(context.out.columns(), widestSummary)))
      context.out.line(line);
  }
  return report(context, usage);
}

int runLimits(Context& context, const Arguments& arguments) {
  const auto usage = readUsage(context);
  const auto& limits = usage.summary.codexLimits;
  if (arguments.flag("--json")) {
    printJSON(context.out, planLimitsValue(usage.summary));
  } else if (!limits) {
    context.out.line(localized("no Codex sessions yet"));
  } else {
    const auto plan = limits->plan
                          ? localized("Codex plan: {plan}", {{"plan", escapedControls(*limits->plan)}})
                          : localized("Codex plan");
    context.out.line(truncatedToWidth(plan, context.out.columns()));
    Table table({{""}, {""}, {"", Column::Align::right}, {""}});
    for (const auto& limit : limits->limits()) {
      const bool running = limit.resetsAt > usage.now;
      const auto used = limit.wholePercent();
      const auto ink = !running ? Ink::dim : limit.usedPercent >= alertPercent ? Ink::warning : Ink::good;
      table.row({localized("{window} limit", {{"window", limit.name()}}),
                 {bar(limit.usedPercent / 100, limitBarWidth), ink},
                 {used ? Format::percent(double(*used)) : noFigure, ink},
                 {running ? localized("resets {time}", {{"time", resetText(usage.zone, limit.resetsAt)}})
                          : localized("window has reset"),
                  Ink::dim}});
    }
    table.print(context.out);
  }
  return report(context, usage);
}

} // namespace

Command aiCommand() {
  using Kind = Option::Kind;
  return writing(
      {"ai",
       "Show what Claude Code and Codex used, and what it would cost at list prices",
       {{"--period", Kind::text, "How far back (30d)", choicesOf<AIPeriod>()},
        {"--by", Kind::text, "What a line stands for (day)", choicesOf<AIGrouping>()},
        {"--tool", Kind::text, "Of one tool only", {"claude", "codex"}},
        {"--explain", Kind::flag, "Say what API-equivalent cost means"},
        jsonOption()},
       runAI,
       {writing({"limits", "Show how much of the Codex plan is spent", {jsonOption()}, runLimits})}});
}

} // namespace korvell
