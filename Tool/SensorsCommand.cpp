// korvell sensors: temperatures by chip, fans, and the batteries of peripherals.

#include "App/JSONDocuments.h"
#include "Base/Format.h"
#include "Base/Text.h"
#include "Sensors/Peripherals.h"
#include "Sensors/SensorsReader.h"
#include "Tool/AskKeeper.h"
#include "Tool/Commands.h"
#include "Tool/Table.h"
#include "Tool/Wrap.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr Seconds patience{2};                ///< for chips that answer slowly: people look at all of them
constexpr double coldest = 20, hottest = 110; ///< the ends of the bars
constexpr int barWidth = 20;

/// What the keeper read last, or what this command read by itself.
struct Found {
  SensorsSnapshot sensors;
  std::vector<PeripheralBattery> peripherals;
};

Found findSensors(Context& context) {
  Found found;
  const auto state = askKeeper(context, {"sensors", "peripherals"});
  const auto* sensors = state ? state->find("sensors") : nullptr;
  const auto* peripherals = state ? state->find("peripherals") : nullptr;
  if (sensors && peripherals && fromValue(*sensors, found.sensors) &&
      fromValue(*peripherals, found.peripherals))
    return found;
  return {SensorsReader(context.host.temperatures).read(patience),
          peripheralBatteries(context.host.peripherals->read())};
}

/// The chip; where the system names sensors alone, what they measure.
std::string groupOf(const TemperatureReading& reading) { return reading.chip.value_or(title(reading.kind)); }

std::string rpmText(double rpm) { return Format::grouped(std::llround(rpm)) + " rpm"; }

void printFigures(Terminal& out, const SensorsSnapshot& sensors) {
  std::string line;
  const auto add = [&](SensorKind kind, const std::optional<double>& celsius) {
    if (celsius) line += (line.empty() ? "" : " · ") + title(kind) + " " + Format::celsius(*celsius);
  };
  add(SensorKind::cpu, sensors.cpuCelsius);
  add(SensorKind::gpu, sensors.gpuCelsius);
  add(SensorKind::soc, sensors.socCelsius);
  if (line.empty()) return;
  out.line(out.ink(Ink::bold, line));
  out.line();
}

void printTemperatures(Terminal& out, const std::vector<TemperatureReading>& readings) {
  std::vector<std::string> groups; // in the order of their first sensors
  for (const auto& reading : readings)
    if (const auto group = groupOf(reading); std::ranges::find(groups, group) == groups.end())
      groups.push_back(group);
  Table table({{localized("Chip"), Column::Align::left, true},
               {localized("Sensor"), Column::Align::left, true},
               {""},
               {localized("Temperature"), Column::Align::right}});
  for (const auto& group : groups) {
    bool isFirst = true;
    for (const auto& reading : readings) {
      if (groupOf(reading) != group) continue;
      const double share = std::clamp((reading.celsius - coldest) / (hottest - coldest), 0.0, 1.0);
      table.row({{isFirst ? group : "", Ink::bold},
                 reading.name,
                 {bar(share, barWidth), Ink::accent},
                 Format::celsius(reading.celsius)});
      isFirst = false;
    }
  }
  table.print(out);
}

std::string limitsText(const FanReading& fan) {
  if (fan.maxRPM > 0)
    return localized("{least} to {most}",
                     {{"least", Format::grouped(std::llround(fan.minRPM))}, {"most", rpmText(fan.maxRPM)}});
  return fan.minRPM > 0 ? localized("at least {least}", {{"least", rpmText(fan.minRPM)}}) : std::string();
}

void printFans(Terminal& out, const std::vector<FanReading>& fans) {
  Table table({{localized("Fan"), Column::Align::left, true},
               {""},
               {localized("Speed"), Column::Align::right},
               {localized("Range"), Column::Align::left, true}});
  for (const auto& fan : fans) {
    const auto share = fan.maxRPM > fan.minRPM ? (fan.rpm - fan.minRPM) / (fan.maxRPM - fan.minRPM) : 0;
    table.row({fan.name,
               {fan.maxRPM > 0 ? bar(std::clamp(share, 0.0, 1.0), barWidth) : "", Ink::accent},
               rpmText(fan.rpm),
               {limitsText(fan), Ink::dim}});
  }
  table.print(out);
}

void printPeripherals(Terminal& out, const std::vector<PeripheralBattery>& peripherals) {
  constexpr int low = 20, veryLow = 10;
  Table table({{localized("Device"), Column::Align::left, true},
               {localized("Kind")},
               {""},
               {localized("Battery"), Column::Align::right}});
  for (const auto& device : peripherals) {
    const Ink ink = device.percent < veryLow ? Ink::critical
                    : device.percent < low   ? Ink::warning
                                             : Ink::good;
    table.row({device.name,
               {title(device.kind), Ink::dim},
               {bar(device.percent / 100.0, barWidth), ink},
               Format::percent(device.percent)});
  }
  table.print(out);
}

void print(Terminal& out, const Found& found) {
  const auto& [sensors, peripherals] = found;
  if (sensors.temperatures.empty() && sensors.fans.empty()) {
    out.line(localized("No sensor can be read here."));
    for (const auto& line : wrapped(localized("\"korvell doctor\" tells why."), out.columns()))
      out.line(out.ink(Ink::dim, line));
  }
  printFigures(out, sensors);
  if (!sensors.temperatures.empty()) printTemperatures(out, sensors.temperatures);
  if (!sensors.fans.empty()) {
    if (!sensors.temperatures.empty()) out.line();
    printFans(out, sensors.fans);
  }
  if (peripherals.empty()) return;
  out.line();
  printPeripherals(out, peripherals);
}

int runSensors(Context& context, const Arguments& arguments) {
  const auto found = findSensors(context);
  if (arguments.flag("--json"))
    printJSON(context.out, sensorsValue(found.sensors, found.peripherals));
  else
    print(context.out, found);
  return exitOK;
}

} // namespace

Command sensorsCommand() {
  return {"sensors", "Show temperatures, fans and the batteries of peripherals", {jsonOption()}, runSensors};
}

} // namespace korvell
