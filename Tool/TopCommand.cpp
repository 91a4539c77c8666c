// korvell top: the applications, or processes, that use the most; and why a process counts to which one.

#include "App/Assembly.h"
#include "App/JSONDocuments.h"
#include "App/OwnerLines.h"
#include "Tool/Commands.h"
#include "Tool/Measure.h"
#include "Tool/Suggestions.h"
#include "Tool/Table.h"
#include "Tool/UsageTable.h"

namespace korvell {

namespace {

constexpr std::int64_t usualLimit = 20;

template <class T>
void keepFirst(std::vector<T>& list, std::int64_t limit) {
  if (limit > 0 && list.size() > std::size_t(limit)) list.resize(std::size_t(limit));
}

// Why

int runWhy(Context& context, std::int64_t number, bool json) {
  Assembly assembly(context.host, context.clock);
  const auto sampler = assembly.makeProcessSampler();
  sampler->sample({});
  const auto pid = static_cast<ProcessID>(number);
  const auto* identity = pid == number ? sampler->identity(pid) : nullptr;
  if (!identity)
    return fail(context, localized("There is no process {pid}.", {{"pid", std::to_string(number)}}));
  if (json) {
    printJSON(context.out, ownerValue(pid, *identity));
    return exitOK;
  }
  printLabelled(context.out, ownerLines(pid, *identity), 15);
  return exitOK;
}

int runTop(Context& context, const Arguments& arguments) {
  const bool json = arguments.flag("--json");
  if (const auto pid = arguments.number("--why")) return runWhy(context, *pid, json);
  const auto key = fromRawValue<UsageKey>(arguments.text("--by").value_or("cpu")).value_or(UsageKey::cpu);
  const auto limit = arguments.number("--limit").value_or(usualLimit);
  auto measured = currentMeasurement(context);
  auto& apps = measured.snapshot.apps;
  std::vector<ProcessUsage> processes;
  if (arguments.flag("--processes")) {
    for (const auto& app : apps)
      processes.insert(processes.end(), app.processes.begin(), app.processes.end());
    sortByUsage(processes, key);
    keepFirst(processes, limit);
  }
  sortByUsage(apps, key);
  keepFirst(apps, limit);
  if (json) {
    const auto listed = arguments.flag("--processes") ? std::optional(std::move(processes)) : std::nullopt;
    printJSON(context.out, topValue(key, apps, listed, measured));
    return exitOK;
  }
  const UsageTable table(context.out, std::min(context.out.columns(), widestSummary), key, measured.known,
                         context.host.processes->energyIsEstimate());
  if (arguments.flag("--processes")) {
    context.out.line(table.titles(localized("Process")));
    for (const auto& process : processes) context.out.line(table.line(process));
  } else {
    context.out.line(table.titles(localized("Application")));
    for (const auto& app : apps) context.out.line(table.line(app));
  }
  return exitOK;
}

} // namespace

Command topCommand() {
  return {"top",
          "List the applications that use the most",
          {{"--by", Option::Kind::text, "Sort by this figure", choicesOf<UsageKey>()},
           {"--limit", Option::Kind::number, "Show so many, 0 for all (20)"},
           {"--processes", Option::Kind::flag, "List processes instead of applications"},
           {"--why",
            Option::Kind::number,
            "Tell which rule found the application of this process id",
            {},
            false,
            suggestedProcesses},
           jsonOption()},
          runTop};
}

} // namespace korvell
