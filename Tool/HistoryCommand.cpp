// korvell history: what the keeper recorded, read without changing it.

#include "App/Assembly.h"
#include "App/JSONDocuments.h"
#include "App/TimeArgument.h"
#include "Base/Format.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/HistoryChart.h"
#include "Tool/Table.h"
#include "Tool/UnreadableHistory.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <fmt/format.h>
#include <limits>

namespace korvell {

namespace {

constexpr int defaultLimit = 15;
/// How long a point of the live series stands: the slow pace and what it may be late.
constexpr Seconds liveCover{12};

struct Recorded {
  explicit Recorded(Context& context)
      : store(systemQueueFactory(), context.clock, context.host.folders.data, HistoryAccess::reader),
        zone(*context.host.zone) {}
  HistoryStore store;
  const TimeZone& zone;
};

HistoryRange rangeOf(const Arguments& arguments) {
  return fromRawValue<HistoryRange>(arguments.text("--range").value_or("24h")).value_or(HistoryRange::h24);
}

/// Applications are recorded in percent of one core, the machine as a whole.
std::string appColumnTitle(Metric metric) {
  return metric == Metric::cpu ? cpuColumnTitle(CPUScale::core) : title(metric);
}

/// 0 is all, as everywhere.
int limitOf(const Arguments& arguments) {
  constexpr std::int64_t all = std::numeric_limits<int>::max();
  const auto limit = arguments.number("--limit").value_or(defaultLimit);
  return int(limit == 0 ? all : std::min(limit, all));
}

int nothingRecorded(Context& context, std::string_view what) {
  context.out.line(what);
  const auto hint = localized("Korvell records while it runs: the application, or \"korvell run\".");
  for (const auto& line : wrapped(hint, context.out.columns()))
    context.out.line(context.out.ink(Ink::dim, line));
  return exitOK;
}

// A series

struct Series {
  std::vector<HistoryPoint> points;
  std::optional<SeriesSummary> summary;
  ChartSpan span;
  bool isReadable = true;
};

/// The last minutes come from the keeper, which has more of them than the database.
std::optional<Series> liveSeries(Context& context, Metric metric, ChartSpan span) {
  const auto state = askKeeper(context, {"live"});
  const auto* live = state ? state->find("live") : nullptr;
  const auto* told = live ? live->find(rawValue(metric)) : nullptr;
  Series series{.span = span};
  series.span.cover = liveCover;
  if (!told || !fromValue(*told, series.points)) return std::nullopt;
  series.summary = summaryOf(series.points);
  return series;
}

Series seriesOf(Context& context, Recorded& recorded, Metric metric, HistoryRange range) {
  const auto row = spanOf(range);
  const Date now = context.clock.now();
  // A minute's row stands for its minute, however fine the buckets are.
  const ChartSpan span{now - Seconds{double(row.seconds)}, now, Seconds{double(std::max(row.bucket, 60))}};
  if (range == HistoryRange::live)
    if (auto live = liveSeries(context, metric, span)) return *live;
  auto& store = recorded.store;
  Series series{store.series(metric, range), store.summary(metric, range), span};
  series.isReadable = store.isReadable();
  return series;
}

int showSeries(Context& context, const Arguments& arguments, Metric metric) {
  Recorded recorded(context);
  const auto range = rangeOf(arguments);
  const auto series = seriesOf(context, recorded, metric, range);
  if (!series.isReadable) return failUnreadableHistory(context);
  const auto& summary = series.summary;
  if (arguments.flag("--json")) {
    printJSON(context.out, seriesValue(metric, range, series.points, summary));
    return exitOK;
  }
  if (!summary || series.points.empty())
    return nothingRecorded(context, localized("Nothing was recorded in this time."));
  context.out.line(context.out.ink(Ink::bold, title(metric) + " · " + title(range)));
  for (const auto& line : chartLines(context.out, metric, series.points, *summary, series.span, recorded.zone,
                                     std::min(context.out.columns(), widestSummary)))
    context.out.line(line);
  return exitOK;
}

// The top applications

int showTop(Context& context, const Arguments& arguments, Metric metric) {
  Recorded recorded(context);
  const auto range = rangeOf(arguments);
  const auto apps = recorded.store.topApps(metric, range, limitOf(arguments));
  if (!recorded.store.isReadable()) return failUnreadableHistory(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, topAppsValue(metric, range, apps));
    return exitOK;
  }
  if (apps.empty()) return nothingRecorded(context, localized("Nothing was recorded in this time."));
  Table table({{.title = localized("Application"), .flexible = true},
               {.title = appColumnTitle(metric) + " · " + title(range), .align = Column::Align::right},
               {.title = ""}});
  for (const AppTotal& app : apps)
    table.row({app.name,
               formatMetric(metric, app.value),
               {bar(apps[0].value > 0 ? app.value / apps[0].value : 0, 20), Ink::dim}});
  table.print(context.out);
  return exitOK;
}

// One minute

/// Figures that are all zero are left out of the tables: no disk was busy, no graphics processor was read.
void printMinute(Context& context, const HistoryMinute& minute, Metric order, std::size_t limit) {
  std::string system;
  for (const auto& column : historyColumns)
    if (minute.system[column.column] > 0 && column.column != diskWriteColumn)
      system += fmt::format("{}{} {}", system.empty() ? "" : " · ", title(column.metric),
                            formatMetric(column.metric, minute.system[column.column]) +
                                (column.metric == Metric::cpu ? " " + title(CPUScale::machine) : ""));
  if (minute.score)
    system += fmt::format("{}{} {:.0f}", system.empty() ? "" : " · ", localized("score"), *minute.score);
  for (const auto& line : wrapped(system, context.out.columns())) context.out.line(line);

  auto apps = minute.apps;
  std::stable_sort(apps.begin(), apps.end(), [order](const HistoryApp& a, const HistoryApp& b) {
    return a.values[std::size_t(order)] > b.values[std::size_t(order)];
  });
  if (apps.size() > limit) apps.resize(limit);
  std::vector<Column> columns{{.title = localized("Application"), .flexible = true}};
  std::vector<std::size_t> shown;
  for (std::size_t i = 0; i < std::size(historyColumns) - 1; ++i)
    if (std::any_of(apps.begin(), apps.end(), [&](const HistoryApp& app) { return app.values[i] > 0; })) {
      shown.push_back(i);
      columns.push_back({.title = appColumnTitle(historyColumns[i].metric), .align = Column::Align::right});
    }
  Table table(columns);
  for (const HistoryApp& app : apps) {
    std::vector<Table::Cell> cells{app.name};
    for (const std::size_t i : shown) cells.push_back(formatMetric(historyColumns[i].metric, app.values[i]));
    table.row(std::move(cells));
  }
  if (!table.empty()) {
    context.out.line();
    table.print(context.out);
  }
}

int showMinute(Context& context, const Arguments& arguments, const std::string& text) {
  Recorded recorded(context);
  const auto at = parseTimeArgument(text, recorded.zone, context.clock.now());
  if (!at)
    return fail(context,
                localized("not a time: {text} (try 14:32, \"2026-03-01 14:32\" or RFC 3339)",
                          {{"text", escapedControls(text)}}),
                exitUsage);
  const auto minute = recorded.store.minute(*at);
  if (!recorded.store.isReadable()) return failUnreadableHistory(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, minuteValue(minute, *at));
    return exitOK;
  }
  const auto shown = shownDay(localDay(recorded.zone, *at)) + " " + clockText(recorded.zone, *at);
  if (!minute)
    return nothingRecorded(context, localized("Nothing was recorded at {time}.", {{"time", shown}}));
  context.out.line(context.out.ink(Ink::bold, shown));
  printMinute(context, *minute,
              fromRawValue<Metric>(arguments.text("METRIC").value_or("cpu")).value_or(Metric::cpu),
              std::size_t(limitOf(arguments)));
  return exitOK;
}

/// Arguments of which one would be ignored beside the other.
constexpr std::pair<const char*, const char*> contradictions[] = {
    {"--at", "--top"}, {"--at", "--range"}, {"--top", "METRIC"}};

int runHistory(Context& context, const Arguments& arguments) {
  for (const auto& [one, other] : contradictions)
    if (arguments.text(one) && arguments.text(other))
      return fail(context,
                  localized("{one} and {other} can't be combined.", {{"one", one}, {"other", other}}),
                  exitUsage);
  if (const auto time = arguments.text("--at")) return showMinute(context, arguments, *time);
  if (const auto top = arguments.text("--top"))
    return showTop(context, arguments, *fromRawValue<Metric>(*top));
  if (const auto metric = arguments.text("METRIC"))
    return showSeries(context, arguments, *fromRawValue<Metric>(*metric));
  return fail(context, localized("history needs a metric, --top or --at."), exitUsage);
}

} // namespace

Command historyCommand() {
  return {
      "history",
      "Show what was recorded: a metric's chart, its top applications, or one minute",
      {{"METRIC", Option::Kind::positional, "What to draw, or to order a minute's applications by",
        choicesOf<Metric>()},
       {"--range", Option::Kind::text, "How far back (24h unless told otherwise)", choicesOf<HistoryRange>()},
       {"--top", Option::Kind::text, "The applications that used the most of a metric", choicesOf<Metric>()},
       {"--at", Option::Kind::text, "Who was it at that time: 14:32, \"2026-03-01 14:32\""},
       {"--limit", Option::Kind::number, "Show so many applications, 0 for all (15)"},
       jsonOption()},
      runHistory};
}

} // namespace korvell
