// The tool "history": a metric's course, who used the most of it, and who it was at 14:32.

#include "Agents/HistoryFigures.h"
#include "Agents/ReadingTools.h"
#include "App/TimeArgument.h"
#include "Base/Localization.h"

namespace korvell {

namespace {

constexpr std::int64_t usualPoints = 48, mostPoints = 300, usualApps = 10, mostApps = 50;

struct CourseSummary {
  double minimum = 0, mean = 0, maximum = 0;
  static constexpr auto fields() {
    return std::tuple{Field{"minimum", &CourseSummary::minimum}, Field{"mean", &CourseSummary::mean},
                      Field{"maximum", &CourseSummary::maximum}};
  }
};

struct MinuteApp {
  std::string app, name;
  MinuteFigures values;
  static constexpr auto fields() {
    return std::tuple{Field{"app", &MinuteApp::app}, Field{"name", &MinuteApp::name},
                      Field{"values", &MinuteApp::values}};
  }
};

struct MomentAnswer {
  Date date; ///< when the minute began
  MinuteFigures machine;
  std::optional<double> score;
  std::vector<MinuteApp> apps;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &MomentAnswer::date}, Field{"machine", &MomentAnswer::machine},
                      Field{"score", &MomentAnswer::score}, Field{"apps", &MomentAnswer::apps}};
  }
};

struct HistoryAnswer {
  Metric metric = Metric::cpu;
  Unit unit = Unit::percent;    ///< of the machine's values
  Unit appUnit = Unit::percent; ///< of the applications'
  std::optional<HistoryRange> range;
  std::optional<Date> recordedSince;
  std::optional<std::vector<ChartPoint>> points;
  std::optional<CourseSummary> summary;
  std::optional<std::vector<AppShare>> apps;
  std::optional<MomentAnswer> moment;
  std::optional<std::string> nothing; ///< why there is nothing to tell
  static constexpr auto fields() {
    return std::tuple{Field{"metric", &HistoryAnswer::metric},
                      Field{"unit", &HistoryAnswer::unit},
                      Field{"appUnit", &HistoryAnswer::appUnit},
                      Field{"range", &HistoryAnswer::range},
                      Field{"recordedSince", &HistoryAnswer::recordedSince},
                      Field{"points", &HistoryAnswer::points},
                      Field{"summary", &HistoryAnswer::summary},
                      Field{"apps", &HistoryAnswer::apps},
                      Field{"moment", &HistoryAnswer::moment},
                      Field{"nothing", &HistoryAnswer::nothing}};
  }
};

std::string nothingRecorded() {
  return localized("Nothing was recorded in this time. Korvell records while it runs.");
}

MomentAnswer momentOf(HistoryMinute minute, Metric order, std::size_t most) {
  std::ranges::stable_sort(minute.apps, std::greater(),
                           [order](const HistoryApp& app) { return app.values[std::size_t(order)]; });
  minute.apps.resize(std::min(minute.apps.size(), most));
  MomentAnswer moment{
      .date = {double(minute.ts)}, .machine = figuresOf(minute.system), .score = minute.score};
  for (const auto& app : minute.apps) moment.apps.push_back({app.id, app.name, figuresOf(app.values)});
  return moment;
}

Outcome tellMoment(HistoryAnswer& answer, Readings& readings, HistoryStore& store, const std::string& time,
                   std::size_t most) {
  const auto at = parseTimeArgument(time, *readings.services().host.zone, readings.now());
  if (!at) return Failure{"\"at\" is no time: 14:32, 2026-03-01 14:32 or RFC 3339 are."};
  if (auto minute = store.minute(*at))
    answer.moment = momentOf(std::move(*minute), answer.metric, most);
  else
    answer.nothing = nothingRecorded();
  return success();
}

/// The width of a chart of no more than so many points: a chart's stretches are whole minutes, as many as fit
/// the width or fewer, and one more begins before the range does.
int chartWidth(HistoryRange range, int points) {
  const int minutes = spanOf(range).seconds / 60, stretches = points - 1;
  const int stretch = (minutes + stretches - 1) / stretches;
  return minutes / stretch;
}

void tellRange(HistoryAnswer& answer, HistoryStore& store, HistoryRange range, int points) {
  answer.range = range;
  answer.points = store.chart(answer.metric, range, chartWidth(range, points)).points;
  if (const auto summary = store.summary(answer.metric, range))
    answer.summary = {summary->minimum, summary->mean, summary->maximum};
  else
    answer.nothing = nothingRecorded();
}

Result<Value> readHistory(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto store = readings.history();
  const auto metric = choiceOf(arguments, "metric", Metric::cpu);
  const auto most = int(integerOf(arguments, "limit", usualApps));
  HistoryAnswer answer{.metric = metric,
                       .unit = metricUnit(metric),
                       .appUnit = metric == Metric::cpu ? Unit::corePercent : metricUnit(metric),
                       .recordedSince = store->recordedSince()};
  const auto range = choiceOf(arguments, "range", HistoryRange::h24);
  if (const auto time = textOf(arguments, "at"); !time.empty()) {
    const auto told = tellMoment(answer, readings, *store, time, std::size_t(most));
    if (!told) return Failure{told.reason()};
  } else {
    tellRange(answer, *store, range, int(integerOf(arguments, "points", usualPoints)));
    answer.apps = sharesOf(store->topApps(metric, range, most));
  }
  if (!store->isReadable()) return Failure{localized("The history can't be read.")};
  return toValue(answer);
}

std::vector<std::string_view> recordedRanges() {
  std::vector<std::string_view> ranges;
  for (const auto& row : allCases<HistoryRange>())
    if (row.value != HistoryRange::live) ranges.push_back(row.rawValue);
  return ranges;
}

} // namespace

ReadingTool historyTool() {
  return {
      "history",
      "History",
      "What was recorded, minute by minute, for thirty days: a metric over a range with the applications "
      "that used the most of it, or with \"at\" the machine and its applications at one moment. Figures are "
      "in the unit that is named; a stretch without a recorded minute has no point.",
      schema::object({{"metric", schema::choice<Metric>("What is looked at (cpu)")},
                      {"range", schema::choice("How far back (24h)", recordedRanges())},
                      {"at", schema::text("A moment: 14:32, 2026-03-01 14:32, or RFC 3339", 64)},
                      {"points", schema::integer("At most how many points (48)", 10, mostPoints)},
                      {"limit", schema::integer("How many applications (10)", 1, mostApps)}}),
      schema::of<HistoryAnswer>(),
      readHistory};
}

} // namespace korvell
