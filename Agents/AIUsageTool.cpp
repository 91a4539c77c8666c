// The tool "ai_usage".

#include "Agents/ReadingTools.h"
#include "Base/LocalTime.h"
#include "Base/Localization.h"
#include "Core/AIUsage/AIUsageScanner.h"
#include "Core/AIUsage/UsageSummary.h"

#include <map>

namespace korvell {

namespace {

enum class UsageGrouping { day, model, project };

} // namespace

template <>
struct EnumTable<UsageGrouping> {
  using enum UsageGrouping;
  static constexpr EnumCase<UsageGrouping> cases[] = {
      {day, "day", "By day"}, {model, "model", "By model"}, {project, "project", "By project"}};
};

namespace {

constexpr std::int64_t usualRows = 30, mostRows = 100;

struct UsageRow {
  std::string name; ///< a day, a model or a project
  std::optional<AITool> tool;
  AITokens tokens;
  std::optional<double> cost;
  std::int64_t unpriced = 0;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &UsageRow::name}, Field{"tool", &UsageRow::tool},
                      Field{"tokens", &UsageRow::tokens}, Field{"cost", &UsageRow::cost, Unit::dollars},
                      Field{"unpriced", &UsageRow::unpriced}};
  }
};

struct PlanWindow {
  std::string name;
  double usedPercent = 0;
  std::int64_t windowMinutes = 0;
  Date resetsAt;
  bool hasReset = false;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &PlanWindow::name},
                      Field{"usedPercent", &PlanWindow::usedPercent, Unit::percent},
                      Field{"windowMinutes", &PlanWindow::windowMinutes, Unit::minutes},
                      Field{"resetsAt", &PlanWindow::resetsAt}, Field{"hasReset", &PlanWindow::hasReset}};
  }
};

struct UsageAnswer {
  AIPeriod period = AIPeriod::month;
  UsageGrouping by = UsageGrouping::day;
  UsageRow total;
  std::vector<UsageRow> rows;
  std::vector<PlanWindow> planLimits;
  std::optional<Date> updatedAt;
  std::string costMeans;
  std::optional<std::string> nextCursor;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{
        Field{"period", &UsageAnswer::period},         Field{"by", &UsageAnswer::by},
        Field{"total", &UsageAnswer::total},           Field{"rows", &UsageAnswer::rows},
        Field{"planLimits", &UsageAnswer::planLimits}, Field{"updatedAt", &UsageAnswer::updatedAt},
        Field{"costMeans", &UsageAnswer::costMeans},   Field{"nextCursor", &UsageAnswer::nextCursor},
        Field{"source", &UsageAnswer::source}};
  }
};

/// As the keeper tells it; rows that can't be read are left out.
AIUsageSummary readSummary(const Value& value, const TimeZone& zone) {
  AIUsageSummary summary;
  const auto* rows = value.find("rows");
  if (rows && rows->asArray())
    for (const auto& told : *rows->asArray()) {
      const auto day = parseDay(textOf(told, "day"));
      const auto tool = fromRawValue<AITool>(textOf(told, "tool"));
      AIUsageRow row{.model = textOf(told, "model"), .project = textOf(told, "project")};
      const auto *tokens = told.find("tokens"), *cost = told.find("cost");
      if (!day || !tool || !tokens || !fromValue(*tokens, row.tokens)) continue;
      row.day = startOfDay(zone, *day);
      row.tool = *tool;
      if (cost) row.cost = cost->asDouble();
      summary.rows.push_back(std::move(row));
    }
  const auto *limits = value.find("codexLimits"), *updated = value.find("updatedAt");
  if (AICodexLimits read; limits && fromValue(*limits, read)) summary.codexLimits = std::move(read);
  if (updated) summary.updatedAt = updated->asDate();
  return summary;
}

/// Without a keeper the logs are read here, as its scans do.
Result<AIUsageSummary> ownSummary(Readings& readings, const Cancellation& cancellation) {
  auto& host = readings.services().host;
  if (!host.logFiles || !host.folders.hasHome()) return Failure{localized("Logs can't be read here.")};
  auto options = AIUsageScanner::defaults(host.folders);
  options.cancellation = cancellation;
  AIUsageScanner scanner(options, *host.logFiles, *host.zone, readings.services().clock);
  scanner.refresh(readings.now());
  return scanner.summary(days(AIPeriod::month), readings.now());
}

template <class Total>
UsageRow rowOf(std::string name, const Total& total, std::optional<AITool> tool = {}) {
  return {std::move(name), tool, total.tokens, total.cost, total.unpriced};
}

std::vector<UsageRow> rowsBy(UsageGrouping by, const AIUsageSummary& summary, Date since,
                             std::optional<AITool> tool, const TimeZone& zone) {
  std::vector<UsageRow> rows;
  if (by == UsageGrouping::model)
    for (const auto& total : summary.byModel(since, tool))
      rows.push_back(rowOf(total.model, total, total.tool));
  if (by == UsageGrouping::project)
    for (const auto& total : summary.byProject(since, tool)) rows.push_back(rowOf(total.name, total));
  if (by == UsageGrouping::day) {
    std::map<CalendarDay, AITotal> days;
    for (const auto& row : summary.rowsSince(since, tool)) add(days[localDay(zone, row.day)], row);
    for (const auto& [day, total] : days) rows.push_back(rowOf(dayText(day), total));
  }
  return rows;
}

Result<Value> readUsage(Readings& readings, const Value& arguments, const Cancellation& cancellation) {
  const auto page = ResultPage::of(arguments, usualRows);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"aiUsage"});
  const auto& zone = *readings.services().host.zone;
  const auto now = readings.now();
  AIUsageSummary summary;
  if (const auto* told = reading.part("aiUsage")) {
    summary = readSummary(*told, zone);
  } else {
    auto own = ownSummary(readings, cancellation);
    if (!own) return Failure{own.reason()};
    summary = std::move(*own);
  }
  UsageAnswer answer{.period = choiceOf(arguments, "period", AIPeriod::month),
                     .by = choiceOf(arguments, "by", UsageGrouping::day),
                     .updatedAt = summary.updatedAt,
                     .costMeans = costExplanation()};
  const auto tool = fromRawValue<AITool>(textOf(arguments, "tool"));
  const auto since = AIUsageSummary::startOfPeriod(days(answer.period), now, zone);
  const auto rows = rowsBy(answer.by, summary, since, tool, zone);
  answer.total = rowOf(std::string(rawValue(answer.period)), summary.total(since, tool), tool);
  answer.rows = page->cut(rows);
  answer.nextCursor = page->next(rows.size());
  if (summary.codexLimits)
    for (const auto& limit : summary.codexLimits->limits())
      answer.planLimits.push_back(
          {limit.name(), limit.usedPercent, limit.windowMinutes, limit.resetsAt, limit.resetsAt <= now});
  answer.source = reading.source();
  return toValue(answer);
}

} // namespace

ReadingTool aiUsageTool() {
  return {
      .name = "ai_usage",
      .title = "AI usage",
      .description =
          "The tokens that Claude Code and Codex used on this computer, by day, model or project, priced at "
          "API list prices, and how much of a Codex plan is spent.",
      .input = schema::object({{"period", schema::choice<AIPeriod>("How far back (30d)")},
                               {"by", schema::choice<UsageGrouping>("What a row stands for (day)")},
                               {"tool", schema::choice<AITool>("Of one tool only")},
                               ResultPage::limit(mostRows, usualRows),
                               ResultPage::cursor()}),
      .output = schema::of<UsageAnswer>(),
      .read = readUsage,
      .isSlow = true};
}

} // namespace korvell
