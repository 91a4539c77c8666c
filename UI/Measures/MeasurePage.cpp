#include "UI/Measures/MeasurePage.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Measures/SpokenFigure.h"
#include "UI/Parts/Figures.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr double criticalFree = 0.1, warningFree = 0.2; // of a volume
constexpr double wornHealth = 80;                       // percent

const Figure unknown{noFigure, ""};

Figure figure(bool isKnown, const std::string& formatted) { return isKnown ? figureOf(formatted) : unknown; }

Figure words(std::string text) { return {std::move(text), ""}; }

void addCPU(MeasurePage& page, const Model& model, const MeasureBeside& beside) {
  const auto& cpu = model.snapshot->cpu;
  const auto& known = *model.known;
  const bool isKnown = known.has(KnownPart::processor);
  page.now = figure(isKnown, Format::percent(cpu.total));
  page.facts = {
      {localized("User"), figure(isKnown, Format::percent(cpu.user))},
      {localized("System"), figure(isKnown, Format::percent(cpu.system))},
      {localized("Load"), known.has(KnownPart::load) ? words(fmt::format("{:.2f}", cpu.load1)) : unknown},
      {localized("10-minute average"),
       beside.tenMinutes ? figureOf(Format::percent(*beside.tenMinutes)) : unknown},
      {localized("Today"), figure(model.totals->cpuToday > 0, Format::percent(model.totals->cpuToday))}};
  if (!isKnown) return;
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

void addMemory(MeasurePage& page, const Model& model) {
  const auto& memory = model.snapshot->memory;
  const bool isKnown = model.known->has(KnownPart::memory);
  const auto size = [&](std::uint64_t bytes) { return figure(isKnown, Format::memory(double(bytes))); };
  page.now = size(memory.used());
  page.facts = {{localized("Of"), size(memory.total)},
                {localized("Pressure"), isKnown ? words(title(memory.pressure)) : unknown,
                 isKnown ? std::optional(toneOf(memory.pressure)) : std::nullopt},
                {localized("Swap in use"), size(memory.swapUsed)}};
  if (!isKnown) return;
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

void addDisk(MeasurePage& page, const Model& model) {
  const auto& disk = model.snapshot->disk;
  const bool isKnown = model.known->has(KnownPart::disks);
  page.lead = localized("Read");
  page.now = figure(isKnown, Format::rate(disk.readRate));
  page.facts = {{localized("Written"), figure(isKnown, Format::rate(disk.writeRate))},
                {localized("Written today"), figure(isKnown, Format::bytes(model.totals->diskWrittenToday))}};
  page.volumes.emplace();
  if (model.known->has(KnownPart::volumes))
    for (const auto& volume : disk.volumes) page.volumes->push_back(volumeRow(volume));
}

void addNetwork(MeasurePage& page, const Model& model) {
  const auto& network = model.snapshot->network;
  const auto& totals = *model.totals;
  const bool isKnown = model.known->has(KnownPart::network);
  const auto sum = [&](double bytes) { return figure(isKnown, Format::bytes(bytes)); };
  page.lead = localized("Down");
  page.now = figure(isKnown, Format::rate(network.inRate));
  page.facts = {{localized("Up"), figure(isKnown, Format::rate(network.outRate))},
                {localized("Interface"), isKnown ? words(network.interface) : unknown},
                {localized("Today"), sum(totals.networkToday)},
                {localized("7 days"), sum(totals.network7Days)},
                {localized("30 days"), sum(totals.network30Days)}};
}

void addGPU(MeasurePage& page, const Model& model) {
  const auto& gpu = model.snapshot->gpu;
  const auto& known = *model.known;
  const bool hasMemory = known.has(KnownPart::graphicsMemory), isKnown = known.has(KnownPart::graphics);
  page.now = figure(isKnown, Format::percent(gpu.utilization));
  page.facts = {{localized("Memory in use"), figure(hasMemory, Format::memory(double(gpu.memoryInUse)))},
                {localized("Chip"), isKnown || hasMemory ? words(gpu.name) : unknown}};
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

void addBattery(MeasurePage& page, const Model& model) {
  const auto& battery = model.snapshot->battery;
  const auto& known = *model.known;
  const auto power = figure(known.has(KnownPart::power), Format::watts(battery.systemPower));
  for (const auto& device : *model.peripherals)
    page.devices.push_back({iconOf(device.kind), device.name, device.percent});
  if (!battery.present && *model.hasSample) {
    page.absent = localized("This machine has no battery.");
    page.now = power;
    return;
  }
  const bool isKnown = known.has(KnownPart::battery), hasHealth = known.has(KnownPart::batteryHealth);
  const auto state = battery.isCharging ? localized("charging")
                     : battery.onAC     ? localized("on power")
                                        : localized("on battery");
  page.now = figure(isKnown, Format::percent(battery.percent));
  page.facts = {{localized("State"), isKnown ? words(state) : unknown}};
  if (!battery.onAC || !isKnown)
    page.facts.push_back({localized("Time left"),
                          isKnown && battery.minutesRemaining
                              ? words(Format::duration(std::chrono::minutes(*battery.minutesRemaining)))
                              : unknown});
  page.facts.push_back({localized("Power"), power});
  page.facts.push_back({localized("Health"), figure(hasHealth, Format::percent(battery.health))});
  page.facts.push_back({localized("Cycles"), known.has(KnownPart::batteryCycles)
                                                 ? words(Format::grouped(battery.cycles))
                                                 : unknown});
  page.facts.push_back({localized("Temperature"), figure(known.has(KnownPart::batteryTemperature),
                                                         Format::celsius(battery.temperature))});
  if (!hasHealth || battery.health >= wornHealth) return;
  page.finding =
      localized("The battery holds {n} of what it held when new.", {{"n", Format::percent(battery.health)}});
  page.opensBatterySettings = true;
}

void addRange(MeasurePage& page, const MeasureBeside& beside) {
  const auto& summary = beside.summary;
  const auto value = [&](double SeriesSummary::*member) {
    return summary ? figureOf(formatMetric(page.metric, *summary.*member)) : unknown;
  };
  page.range = {
      {localized("Mean, {range}", {{"range", rangeWords(beside.range)}}), value(&SeriesSummary::mean)},
      {localized("Maximum"), value(&SeriesSummary::maximum)}};
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

MeasurePage measurePage(const Model& model, Metric metric, const MeasureBeside& beside) {
  MeasurePage page{.metric = metric,
                   .title = metric == Metric::energy ? localized("Battery") : title(metric)};
  switch (metric) {
  case Metric::cpu:
    addCPU(page, model, beside);
    break;
  case Metric::memory:
    addMemory(page, model);
    break;
  case Metric::disk:
    addDisk(page, model);
    break;
  case Metric::network:
    addNetwork(page, model);
    break;
  case Metric::gpu:
    addGPU(page, model);
    break;
  case Metric::energy:
    addBattery(page, model);
    break;
  }
  addRange(page, beside);
  return page;
}

} // namespace korvell
