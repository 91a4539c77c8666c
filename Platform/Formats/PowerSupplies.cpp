#include "Platform/Formats/PowerSupplies.h"

#include "Base/Text.h"
#include "Platform/Formats/TextScanner.h"
#include "Platform/TemperatureSources.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

/// The properties that a driver tells, without the prefix that all of them share.
class Properties {
public:
  explicit Properties(std::string_view uevent) {
    constexpr std::string_view prefix = "POWER_SUPPLY_";
    for (const auto line : splitLines(uevent)) {
      const auto equals = line.find('=');
      if (!line.starts_with(prefix) || equals == std::string_view::npos) continue;
      rows_.emplace_back(line.substr(prefix.size(), equals - prefix.size()), line.substr(equals + 1));
    }
  }

  std::string_view text(std::string_view key) const {
    const auto row = std::ranges::find(rows_, key, &Row::first);
    return row == rows_.end() ? std::string_view{} : row->second;
  }
  template <class Integer = std::int64_t>
  std::optional<Integer> number(std::string_view key) const {
    return parseInteger<Integer>(text(key));
  }
  /// 0 to 100; gauges that are not calibrated tell some more than all.
  std::optional<int> percent() const {
    const auto value = number<int>("CAPACITY");
    return value && *value >= 0 ? std::optional(std::min(*value, 100)) : std::nullopt;
  }
  /// In whole units; nothing when the driver does not tell it.
  std::optional<double> micro(std::string_view key) const {
    const auto value = number(key);
    return value ? std::optional(double(*value) / 1e6) : std::nullopt;
  }

private:
  using Row = std::pair<std::string_view, std::string_view>;
  std::vector<Row> rows_;
};

double wattHours(const Properties& properties, const char* energy, const char* charge) {
  if (const auto value = properties.micro(energy)) return std::max(*value, 0.0);
  const auto volts =
      properties.micro("VOLTAGE_MIN_DESIGN").value_or(properties.micro("VOLTAGE_NOW").value_or(0));
  return std::max(properties.micro(charge).value_or(0) * volts, 0.0);
}

/// 0 when unknown.
double watts(const Properties& properties) {
  const auto amperes = properties.micro("CURRENT_NOW").value_or(0);
  const auto volts = properties.micro("VOLTAGE_NOW").value_or(0);
  const double watts = std::abs(properties.micro("POWER_NOW").value_or(amperes * volts));
  return isBatteryPower(watts) ? watts : 0;
}

struct Packs {
  BatteryReading reading;
  double now = 0, watts = 0;
  int count = 0, discharging = 0, capacity = 0;

  void add(const PowerSupply& pack) {
    ++count;
    now += pack.energyNow;
    watts += pack.watts;
    capacity = pack.capacity.value_or(0);
    discharging += pack.status == "Discharging";
    reading.present = true;
    reading.isCharging |= pack.status == "Charging";
    reading.fullCapacity += pack.energyFull;
    reading.designCapacity += pack.energyDesign;
    reading.cycles = std::max(reading.cycles, pack.cycles);
    reading.celsius = std::max(reading.celsius, pack.celsius); // an absent one is less than any
  }
};

} // namespace

std::optional<PowerSupply::Kind> powerSupplyKind(std::string_view type) {
  type = trimmed(type);
  if (type == "Battery") return PowerSupply::Kind::battery;
  if (type == "Mains" || type == "Wireless" || type.starts_with("USB")) return PowerSupply::Kind::adapter;
  return std::nullopt;
}

bool isDeviceScope(std::string_view scope) { return trimmed(scope) == "Device"; }

PowerSupply parsePowerSupply(PowerSupply::Kind kind, std::string_view uevent) {
  const Properties properties(uevent);
  PowerSupply supply{.kind = kind};
  supply.online = properties.number("ONLINE").value_or(0) != 0;
  supply.present = properties.number("PRESENT").value_or(1) != 0;
  supply.status = properties.text("STATUS");
  supply.capacity = properties.percent();
  if (const auto cycles = properties.number<int>("CYCLE_COUNT"); cycles.value_or(0) > 0)
    supply.cycles = cycles;
  if (const auto tenths = properties.number("TEMP"); tenths && isTemperature(double(*tenths) / 10))
    supply.celsius = double(*tenths) / 10;
  supply.energyNow = wattHours(properties, "ENERGY_NOW", "CHARGE_NOW");
  supply.energyFull = wattHours(properties, "ENERGY_FULL", "CHARGE_FULL");
  supply.energyDesign = wattHours(properties, "ENERGY_FULL_DESIGN", "CHARGE_FULL_DESIGN");
  supply.watts = watts(properties);
  return supply;
}

PeripheralReading parseDeviceSupply(std::string_view name, std::string_view uevent) {
  const Properties properties(uevent);
  PeripheralReading reading{.name = std::string(properties.text("MODEL_NAME")),
                            .address = std::string(properties.text("SERIAL_NUMBER")),
                            .node = std::string(name)};
  reading.percent = properties.percent();
  reading.isPresent =
      properties.number("PRESENT").value_or(1) != 0 && properties.number("ONLINE").value_or(1) != 0;
  constexpr std::string_view prefix = "hid-", suffix = "-battery";
  constexpr std::size_t addressLength = 17;
  if (name.starts_with(prefix) && name.size() >= prefix.size() + addressLength + suffix.size() &&
      name[prefix.size() + 2] == ':')
    reading.address = name.substr(prefix.size(), addressLength);
  return reading;
}

std::optional<BatteryReading> combinedBattery(const std::vector<PowerSupply>& supplies) {
  Packs packs;
  bool anyAdapter = false, anyOnline = false;
  for (const auto& supply : supplies) {
    if (supply.kind == PowerSupply::Kind::adapter) {
      anyAdapter = true;
      anyOnline |= supply.online;
    } else if (supply.present) {
      packs.add(supply);
    }
  }
  if (packs.count == 0) return std::nullopt;

  BatteryReading& reading = packs.reading;
  const bool onPower = anyAdapter ? anyOnline : packs.discharging == 0;
  reading.externalConnected = onPower;
  if (packs.count == 1 && packs.capacity > 0)
    reading.percent = packs.capacity;
  else if (reading.fullCapacity > 0)
    reading.percent = int(std::lround(std::clamp(packs.now / reading.fullCapacity, 0.0, 1.0) * 100));
  if (!onPower && packs.watts > 0) {
    reading.systemWatts = packs.watts;
    reading.minutesRemaining = int(std::min(packs.now / packs.watts * 60, 65535.0));
  }
  return std::move(packs.reading);
}

} // namespace korvell
