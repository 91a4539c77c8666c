#include "UI/Measures/MeasurePage.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Measures/MeasureChart.h"
#include "UI/Parts/Figures.h"
#include "UI/Parts/Reasons.h"
#include "UI/Parts/SpokenFigure.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr double criticalFree = 0.1, warningFree = 0.2; // of a volume
constexpr double wornHealth = 80;                       // percent

Figure words(std::string text) { return {std::move(text), ""}; }

/// Figures of one model: "–" with its reason where a part was not read.
class Known {
public:
  Known(const Model& model, const MeasureBeside& beside) : model_(model), sources_(beside.sources) {}

  bool has(KnownPart part) const { return model_.known->has(part); }
  /// The figure of the moment.
  void lead(MeasurePage& page, KnownPart part, const std::string& formatted) const {
    auto now = fact("", part, formatted);
    page.now = std::move(now.figure);
    page.nowReason = std::move(now.reason);
  }
  MeasureFact fact(std::string caption, KnownPart part, Figure figure) const {
    if (has(part)) return {std::move(caption), std::move(figure)};
    return unknown(std::move(caption), reasonOf(part, (*model_.known)[part], sources_));
  }
  MeasureFact fact(std::string caption, KnownPart part, const std::string& formatted) const {
    return fact(std::move(caption), part, figureOf(formatted));
  }
  /// Bytes that the history has added up: none is not known while it can't be read.
  MeasureFact total(std::string caption, KnownPart part, double bytes) const {
    if (bytes == 0 && *model_.historyProblem)
      return unknown(std::move(caption), (*model_.historyProblem)->detail);
    return fact(std::move(caption), part, Format::bytes(bytes));
  }
  /// Before the second sample nothing else is the reason.
  MeasureFact unknown(std::string caption, std::string reason) const {
    return {std::move(caption),
            figureOf(noFigure),
            {},
            *model_.hasSample ? std::move(reason) : localized("Measuring…")};
  }

private:
  const Model& model_;
  const std::vector<SourceReport>& sources_;
};

void addCPU(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  using enum KnownPart;
  const auto& cpu = model.snapshot->cpu;
  const Known known(model, beside);
  known.lead(page, processor, Format::percent(cpu.total));
  page.facts = {known.fact(localized("User"), processor, Format::percent(cpu.user)),
                known.fact(localized("System"), processor, Format::percent(cpu.system)),
                known.fact(localized("Load"), load, words(Format::decimal(cpu.load1, 2)))};
  if (beside.tenMinutes)
    page.facts.push_back({localized("10-minute average"), figureOf(Format::percent(*beside.tenMinutes))});
  else
    page.facts.push_back(known.unknown(localized("10-minute average"),
                                       localized("Known once eight of the last ten minutes are recorded")));
  if (model.totals->cpuToday > 0)
    page.facts.push_back({localized("Today"), figureOf(Format::percent(model.totals->cpuToday))});
  else
    page.facts.push_back(known.unknown(
        localized("Today"), *model.historyProblem ? (*model.historyProblem)->detail
                                                  : localized("Nothing is recorded of today yet")));
  if (!known.has(processor)) return;
  const int count = int(cpu.perCore.size()), fast = cpu.performanceCores;
  const bool areTwo = fast > 0 && cpu.efficiencyCores > 0 && fast + cpu.efficiencyCores == count;
  const auto group = [&](std::string title, int from, int to) {
    page.cores.push_back({std::move(title), from, {cpu.perCore.begin() + from, cpu.perCore.begin() + to}});
  };
  if (areTwo) {
    group(localized("Performance"), 0, fast);
    group(localized("Efficiency"), fast, count);
  } else if (count > 0) {
    group("", 0, count);
  }
}

Tone toneOf(MemoryStats::Pressure pressure) {
  switch (pressure) {
  case MemoryStats::Pressure::normal:
    return Tone::good;
  case MemoryStats::Pressure::warning:
    return Tone::warning;
  case MemoryStats::Pressure::critical:
    return Tone::critical;
  }
  return Tone::info;
}

void addMemory(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  const auto& memory = model.snapshot->memory;
  const Known known(model, beside);
  const auto size = [](std::uint64_t bytes) { return Format::memory(double(bytes)); };
  known.lead(page, KnownPart::memory, size(memory.used()));
  page.facts = {known.fact(localized("Of"), KnownPart::memory, size(memory.total)),
                known.fact(localized("Pressure"), KnownPart::memory, words(title(memory.pressure))),
                known.fact(localized("Swap in use"), KnownPart::memory, size(memory.swapUsed))};
  if (!known.has(KnownPart::memory)) return;
  page.facts[1].tone = toneOf(memory.pressure);
  using enum CompositionPart::Step;
  const auto part = [&](std::string name, std::uint64_t bytes, CompositionPart::Step step) {
    page.composition.push_back({std::move(name), Format::memory(double(bytes)), double(bytes), step});
  };
  part(localized("Apps"), memory.app, full);
  part(localized("Wired"), memory.wired, strong);
  part(localized("Compressed"), memory.compressed, half);
  part(localized("Cached"), memory.cached, faint);
  part(localized("Free"), memory.free, none);
  page.footnote =
      localized("In use are apps, wired and compressed. Cached files are given back when something "
                "needs them.");
}

VolumeRow volumeRow(const VolumeInfo& volume) {
  const double free = volume.total > 0 ? double(volume.available) / double(volume.total) : 0;
  VolumeRow row{.name = volume.name, .mount = volume.url == volume.name ? "" : volume.url, .used = 1 - free};
  if (volume.total > 0 && free < warningFree) row.tone = free < criticalFree ? Tone::critical : Tone::warning;
  const auto say = [&](const auto& amount) {
    return localized("{free} of {total} free",
                     {{"free", amount(double(volume.available))}, {"total", amount(double(volume.total))}});
  };
  row.free = say([](double bytes) { return Format::bytes(bytes); });
  row.spoken = volume.name + ", " + say([](double bytes) { return spokenFigure(Unit::bytes, bytes); });
  return row;
}

void addDisk(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  const auto& disk = model.snapshot->disk;
  const Known known(model, beside);
  page.lead = localized("Read");
  known.lead(page, KnownPart::disks, Format::rate(disk.readRate));
  page.facts = {known.fact(localized("Written"), KnownPart::disks, Format::rate(disk.writeRate)),
                known.total(localized("Written today"), KnownPart::disks, model.totals->diskWrittenToday)};
  page.volumes.emplace();
  if (known.has(KnownPart::volumes))
    for (const auto& volume : disk.volumes) page.volumes->push_back(volumeRow(volume));
}

void addNetwork(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  const auto& network = model.snapshot->network;
  const auto& totals = *model.totals;
  const Known known(model, beside);
  const auto fact = [&](std::string caption, Figure figure) {
    page.facts.push_back(known.fact(std::move(caption), KnownPart::network, std::move(figure)));
  };
  page.lead = localized("Down");
  known.lead(page, KnownPart::network, Format::rate(network.inRate));
  fact(localized("Up"), figureOf(Format::rate(network.outRate)));
  fact(localized("Interface"), words(network.interface));
  const auto total = [&](std::string caption, double bytes) {
    page.facts.push_back(known.total(std::move(caption), KnownPart::network, bytes));
  };
  total(localized("Today"), totals.networkToday);
  total(localized("7 days"), totals.network7Days);
  total(localized("30 days"), totals.network30Days);
}

void addGPU(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  using enum KnownPart;
  const auto& gpu = model.snapshot->gpu;
  const Known known(model, beside);
  known.lead(page, graphics, Format::percent(gpu.utilization));
  page.facts = {
      known.fact(localized("Memory in use"), graphicsMemory, Format::memory(double(gpu.memoryInUse))),
      known.fact(localized("Chip"), known.has(graphics) ? graphics : graphicsMemory, words(gpu.name))};
}

Icon iconOf(PeripheralBattery::Kind kind) {
  switch (kind) {
  case PeripheralBattery::Kind::mouse:
    return Icon::mouse;
  case PeripheralBattery::Kind::keyboard:
    return Icon::keyboard;
  case PeripheralBattery::Kind::trackpad:
    return Icon::trackpad;
  case PeripheralBattery::Kind::headphones:
    return Icon::headphones;
  case PeripheralBattery::Kind::other:
    break;
  }
  return Icon::device;
}

std::string stateOf(const BatteryStats& battery) {
  if (battery.isCharging) return localized("charging");
  return battery.onAC ? localized("on power") : localized("on battery");
}

void addBattery(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  using Part = KnownPart;
  const auto& battery = model.snapshot->battery;
  const Known known(model, beside);
  for (const auto& device : *model.peripherals)
    page.devices.push_back({iconOf(device.kind), device.name, device.percent});
  const auto watts = Format::watts(battery.systemPower);
  if (!battery.present && *model.hasSample) {
    page.absent = localized("This machine has no battery.");
    known.lead(page, Part::power, watts);
    return;
  }
  known.lead(page, Part::battery, Format::percent(battery.percent));
  const auto fact = [&](std::string caption, KnownPart part, Figure figure) {
    page.facts.push_back(known.fact(std::move(caption), part, std::move(figure)));
  };
  fact(localized("State"), Part::battery, words(stateOf(battery)));
  if (battery.minutesRemaining)
    fact(localized("Time left"), Part::battery,
         words(Format::duration(std::chrono::minutes(*battery.minutesRemaining))));
  else if (!battery.onAC)
    page.facts.push_back(known.unknown(localized("Time left"),
                                       localized("Known once the battery has told how fast it empties")));
  fact(localized("Power"), Part::power, figureOf(watts));
  fact(localized("Health"), Part::batteryHealth, figureOf(Format::percent(battery.health)));
  fact(localized("Cycles"), Part::batteryCycles, words(Format::grouped(battery.cycles)));
  fact(localized("Temperature"), Part::batteryTemperature,
       figureOf(temperatureText(battery.temperature, beside.temperatures)));
  if (!known.has(Part::batteryHealth) || battery.health >= wornHealth) return;
  page.finding =
      localized("The battery holds {n} of what it held when new.", {{"n", Format::percent(battery.health)}});
  page.opensBatterySettings = true;
}

void addRange(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  const auto& summary = beside.summary;
  const auto part = partOf(page.metric);
  const auto reason = isMeasured(model, page.metric) ? localized("Nothing was recorded in this time.")
                                                     : reasonOf(part, (*model.known)[part], beside.sources);
  const auto add = [&](std::string caption, double SeriesSummary::*member) {
    page.range.push_back(
        summary ? MeasureFact{std::move(caption), figureOf(formatMetric(page.metric, *summary.*member))}
                : Known(model, beside).unknown(std::move(caption), reason));
  };
  const bool isOfBoth = page.metric == Metric::disk || page.metric == Metric::network;
  add(isOfBoth ? localized("Mean of both")
               : localized("Mean, {range}", {{"range", rangeWords(beside.range)}}),
      &SeriesSummary::mean);
  add(localized("Maximum"), &SeriesSummary::maximum);
}

} // namespace

std::string rangeWords(HistoryRange range) {
  switch (range) {
  case HistoryRange::live:
    return localized("5 minutes");
  case HistoryRange::h12:
    return localized("12 hours");
  case HistoryRange::h24:
    return localized("24 hours");
  case HistoryRange::d7:
    return localized("7 days");
  case HistoryRange::d30:
    return localized("30 days");
  }
  return {};
}

bool isIncomplete(const MeasurePage& page) {
  const auto isUnread = [](const MeasureFact& fact) { return !fact.reason.empty(); };
  return !page.nowReason.empty() || std::ranges::any_of(page.facts, isUnread);
}

MeasurePage measurePage(const Model& model, Metric metric, const MeasureBeside& beside) {
  MeasurePage page{.metric = metric,
                   .title = metric == Metric::energy ? localized("Battery") : title(metric),
                   .isMeasuring = !*model.hasSample};
  switch (metric) {
  case Metric::cpu:
    addCPU(page, model, beside);
    break;
  case Metric::memory:
    addMemory(page, model, beside);
    break;
  case Metric::disk:
    addDisk(page, model, beside);
    break;
  case Metric::network:
    addNetwork(page, model, beside);
    break;
  case Metric::gpu:
    addGPU(page, model, beside);
    break;
  case Metric::energy:
    addBattery(page, model, beside);
    break;
  }
  addRange(page, model, beside);
  return page;
}

} // namespace korvell
