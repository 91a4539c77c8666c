// The tool "processes".

#include "Agents/ReadingTools.h"
#include "Agents/Strangers.h"
#include "Agents/UsageFigures.h"

namespace korvell {

namespace {

constexpr std::int64_t usualApps = 10, mostApps = 50;
constexpr std::size_t shownProcesses = 10; ///< of each application of a list

struct ProcessesAnswer {
  UsageKey by = UsageKey::cpu;
  Date date;
  std::uint32_t count = 0; ///< of all applications
  std::vector<AppFigures> apps;
  std::optional<std::string> nextCursor;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"by", &ProcessesAnswer::by},
                      Field{"date", &ProcessesAnswer::date},
                      Field{"count", &ProcessesAnswer::count},
                      Field{"apps", &ProcessesAnswer::apps},
                      Field{"nextCursor", &ProcessesAnswer::nextCursor},
                      Field{"source", &ProcessesAnswer::source}};
  }
};

/// The largest by a figure, so many of them.
std::vector<ProcessFigures> largest(std::vector<ProcessUsage> processes, UsageKey by, std::size_t most,
                                    const Measurement& measured, Readings& readings) {
  sortByUsage(processes, by);
  processes.resize(std::min(processes.size(), most));
  std::vector<ProcessFigures> figures;
  for (const auto& process : processes)
    figures.push_back(figuresOf(process, measured.known, readings, measured.snapshot.date));
  return figures;
}

Result<Value> readProcesses(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualApps);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"snapshot", "known", "report", "privileged"});
  const auto measured = reading.measurement();
  const auto by = choiceOf(arguments, "by", UsageKey::cpu);
  const auto only = textOf(arguments, "app");
  auto apps = measured.snapshot.apps;
  // As a list told it: cleaned.
  if (!only.empty()) std::erase_if(apps, [&](const AppUsage& app) { return cleanedText(app.id) != only; });
  sortByUsage(apps, by);
  ProcessesAnswer answer{.by = by, .date = measured.snapshot.date, .count = std::uint32_t(apps.size())};
  const auto shown = only.empty() ? shownProcesses : std::size_t(mostApps);
  for (const auto& app : page->cut(apps)) {
    auto figures = figuresOf(app, measured.known, readings, measured.snapshot.date);
    if (!only.empty() || flagOf(arguments, "processes"))
      figures.processes = largest(app.processes, by, shown, measured, readings);
    answer.apps.push_back(std::move(figures));
  }
  answer.nextCursor = page->next(apps.size());
  answer.source = reading.source();
  return toValue(answer);
}

} // namespace

ReadingTool processesTool() {
  return {
      "processes",
      "Applications and processes",
      "The applications that use the most now, each with all its processes summed up, and a handle for "
      "quit_app where it can be quit. \"app\" lists one application's processes; \"processes\" adds the ten "
      "largest of each.",
      schema::object({{"by", schema::choice<UsageKey>("What they are ordered by (cpu)")},
                      {"app", schema::text("Only the application with this key, as a list tells it", 2048)},
                      {"processes", schema::boolean("List the processes too")},
                      ResultPage::limit(mostApps, usualApps),
                      ResultPage::cursor()}),
      schema::of<ProcessesAnswer>(),
      readProcesses};
}

} // namespace korvell
