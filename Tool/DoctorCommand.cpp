// korvell doctor: every source of figures, whether it can be read and what would make it so, and what Korvell
// itself costs.

#include "App/Assembly.h"
#include "App/JSONDocuments.h"
#include "App/SettingsCheck.h"
#include "Base/Format.h"
#include "Base/SystemQueue.h"
#include "Base/Text.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/DoctorReport.h"
#include "Tool/SupportReport.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <fmt/format.h>

namespace korvell {

namespace {

/// Cycles in a row; the first one reads what is remembered later and does not count.
OwnCost ownCost(Context& context) {
  constexpr int cycles = 10;
  Assembly assembly(context.host, context.clock);
  const auto sampler = assembly.makeSampler(nullptr);
  const auto run = [&](int count) {
    sampler->queue().sync([&] {
      for (int i = 0; i < count; ++i) sampler->tick();
    });
  };
  run(1);
  const auto before = context.host.diagnostics->ownUsage();
  run(cycles);
  const auto after = context.host.diagnostics->ownUsage();
  return {(after.cpuSeconds - before.cpuSeconds) / cycles * 1e6, after.resident};
}

Ink ink(SourceReport::State state) {
  switch (state) {
  case SourceReport::State::readable:
    return Ink::good;
  case SourceReport::State::refused:
    return Ink::warning;
  case SourceReport::State::missing:
    break;
  }
  return Ink::dim;
}

/// What the keeper says of its recording; without one, the file as it stands.
SourceReport historySource(Context& context) {
  HistoryStore reader(systemQueueFactory(), context.clock, context.host.folders.data, HistoryAccess::reader);
  SourceReport row{.name = localized("History"), .source = reader.path()};
  const auto state = keeperState(context, {"historyProblem"});
  std::optional<HistoryProblem> problem;
  if (HistoryProblem told; !state)
    problem = reader.problem();
  else if (const auto* value = state->find("historyProblem"); value && fromValue(*value, told))
    problem = told;
  if (problem) {
    row.state = SourceReport::State::refused;
    row.reason = problem->detail;
    row.remedy = localized("Korvell goes on recording by itself when this is over.");
  }
  if (state.isSilent) row.reason += (problem ? " " : "") + silence(state);
  return row;
}

void printSources(Terminal& out, const std::vector<SourceReport>& sources) {
  Table table({{localized("Source")},
               {localized("Where"), Column::Align::left, true, 12},
               {localized("State")},
               {localized("One reading"), Column::Align::right}});
  for (const auto& source : sources)
    table.row({source.name,
               source.source,
               {title(source.state), ink(source.state)},
               source.microseconds ? timeText(*source.microseconds) : "–"});
  table.print(out);
}

void printReasons(Terminal& out, const std::vector<SourceReport>& sources) {
  constexpr int indent = 2;
  const int width = std::min(out.columns(), widestSummary) - indent;
  for (const auto& source : sources) {
    if (source.reason.empty()) continue;
    out.line();
    out.line(source.name + " · " + escapedControls(source.source));
    for (const auto& sentence : {source.reason, source.remedy})
      for (const auto& line : wrapped(escapedControls(sentence), width))
        out.line(std::string(indent, ' ') + line);
  }
}

SourceReport settingsReport(const UserDefaults& defaults) {
  SourceReport report{.name = localized("Settings"), .source = defaults.place()};
  for (const auto& trouble : settingsTroubles(defaults))
    report.reason += (report.reason.empty() ? "" : " ") + escapedControls(trouble.text);
  if (!defaults.trouble()) return report;
  report.state = SourceReport::State::refused;
  report.remedy = localized("Mend the file, or move it aside to begin with the defaults.");
  return report;
}

/// What is gathered speaks English too, not only the report's labels.
std::string englishReport(Context& context) {
  const InLanguage english("en");
  const auto sources = context.host.diagnostics->sources();
  return supportReport(context, sources, ownCost(context));
}

int runDoctor(Context& context, const Arguments& arguments) {
  if (!context.host.diagnostics) return fail(context, localized("This build cannot examine its sources."));
  const auto file = arguments.text("FILE");
  const bool isReport = arguments.flag("--report");
  if (file && !isReport) return fail(context, localized("A file is what --report writes."), exitUsage);
  if (isReport && arguments.flag("--json"))
    return fail(context, localized("--report and --json exclude each other."), exitUsage);
  if (isReport) return writeSupportReport(context, englishReport(context), file);
  auto sources = context.host.diagnostics->sources();
  sources.push_back(historySource(context));
  if (context.host.defaults) sources.push_back(settingsReport(*context.host.defaults));
  const auto cost = ownCost(context);
  if (arguments.flag("--json")) {
    printJSON(context.out, doctorValue(sources, cost.cycleMicroseconds, cost.resident));
    return exitOK;
  }
  printSources(context.out, sources);
  printReasons(context.out, sources);
  context.out.line();
  const auto costs = localized(
      "Korvell itself: {time} of CPU for one cycle, {memory} of memory",
      {{"time", timeText(cost.cycleMicroseconds)}, {"memory", Format::memory(double(cost.resident))}});
  for (const auto& line : wrapped(costs, context.out.columns())) context.out.line(line);
  return exitOK;
}

} // namespace

Command doctorCommand() {
  return {"doctor",
          "Show what can be measured here, what can't and why, and at what cost",
          {{"--report", Option::Kind::flag,
            "Write a report for a question instead, which names nothing of yours"},
           {.name = "FILE",
            .kind = Option::Kind::positional,
            .help = "Where the report goes, \"-\" for the output; else a dated file in the downloads",
            .isPath = true},
           jsonOption()},
          runDoctor};
}

} // namespace korvell
