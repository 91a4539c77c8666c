#include "Agents/UsageFigures.h"

namespace korvell {

namespace {

template <class Figures, class Usage>
void fill(Figures& figures, const Usage& usage, const KnownParts& known) {
  figures.name = usage.name;
  const auto value = [](const auto& member, const Usage& of) {
    if constexpr (std::is_member_function_pointer_v<std::decay_t<decltype(member)>>)
      return (of.*member)();
    else
      return of.*member;
  };
  figures.cpu = value(&Usage::cpu, usage);
  figures.memory = value(&Usage::memory, usage);
  figures.diskRead = value(&Usage::diskRead, usage);
  figures.diskWrite = value(&Usage::diskWrite, usage);
  if (known.has(KnownPart::processTraffic)) {
    figures.netIn = value(&Usage::netIn, usage);
    figures.netOut = value(&Usage::netOut, usage);
  }
  if (known.has(KnownPart::processEnergy)) figures.power = value(&Usage::power, usage);
}

} // namespace

AppFigures figuresOf(const AppUsage& app, const KnownParts& known, Readings& readings, Date seen) {
  AppFigures figures{.app = app.id};
  fill(figures, app, known);
  figures.processCount = std::uint32_t(app.processes.size());
  figures.handle = readings.handleOf(app, seen);
  return figures;
}

ProcessFigures figuresOf(const ProcessUsage& process, const KnownParts& known, Readings& readings,
                         Date seen) {
  ProcessFigures figures{.pid = process.pid, .ports = process.ports};
  fill(figures, process, known);
  if (!process.path.empty()) figures.path = process.path;
  figures.handle = readings.handleOf(process, seen);
  return figures;
}

} // namespace korvell
