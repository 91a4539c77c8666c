#include "Platform/Linux/LinuxMachineState.h"

#include "Base/Text.h"
#include "Platform/Formats/LinuxProcessor.h"

#include <set>

namespace korvell {

namespace {

constexpr Seconds searchInterval{60};

} // namespace

LinuxMachineState::LinuxMachineState(const Clock& clock, std::string proc, std::string sys)
    : clock_(clock), proc_(std::move(proc)), sys_(std::move(sys)) {}

void LinuxMachineState::refresh() {
  const Seconds now = clock_.monotonic();
  if (!found_ || now - *found_ >= searchInterval) {
    find();
    found_ = now;
  }
  auto reading = read();
  thermal_ = korvell::thermalState(reading, throttled_, refreshed_ ? now - *refreshed_ : Seconds(0));
  throttled_ = std::move(reading.throttled);
  refreshed_ = now;
  // Counts the time asleep, unlike the monotonic clock.
  if (const auto text = reader_.read(proc_ + "/uptime")) {
    const auto sinceBoot = text->substr(0, text->find(' '));
    if (const auto seconds = parseDecimal(sinceBoot)) uptime_ = *seconds;
  }
}

void LinuxMachineState::find() {
  findZones();
  coolers_.clear();
  const auto folder = sys_ + "/class/thermal/";
  for (const auto& name : folderNames(folder)) {
    if (!name.starts_with("cooling_device")) continue;
    const auto type = reader_.read(folder + name + "/type");
    if (type && slowsProcessors(*type)) coolers_.push_back(folder + name + "/cur_state");
  }
  findPackages();
}

void LinuxMachineState::findZones() {
  zones_.clear();
  const auto folder = sys_ + "/class/thermal/";
  for (const auto& name : folderNames(folder)) {
    if (!name.starts_with("thermal_zone")) continue;
    const auto zoneFolder = folder + name + "/";
    Zone zone{zoneFolder + "temp", {}};
    for (int trip = 0;; ++trip) {
      const auto prefix = zoneFolder + "trip_point_" + std::to_string(trip);
      const auto type = reader_.read(prefix + "_type");
      if (!type) break;
      const auto kind = parseTripKind(*type);
      const auto temperature = kind ? reader_.read(prefix + "_temp") : std::nullopt;
      const auto celsius = temperature ? parseMillidegrees(*temperature) : std::nullopt;
      if (celsius) zone.trips.push_back({*kind, *celsius});
    }
    // A zone without trip points says nothing, and reading it may be slow.
    if (!zone.trips.empty()) zones_.push_back(std::move(zone));
  }
}

void LinuxMachineState::findPackages() {
  packages_.clear();
  std::set<int> known;
  const auto folder = sys_ + "/devices/system/cpu/";
  for (const auto& name : folderNames(folder)) {
    if (!name.starts_with("cpu") || !parseInteger<int>(std::string_view(name).substr(3))) continue;
    const auto text = reader_.read(folder + name + "/topology/physical_package_id");
    const auto number = text ? parseInteger<int>(trimmed(*text)) : std::nullopt;
    const auto file = folder + name + "/thermal_throttle/package_throttle_total_time_ms";
    if (number && !known.contains(*number) && exists(file)) {
      known.insert(*number);
      packages_.push_back({*number, file});
    }
  }
}

ThermalReading LinuxMachineState::read() {
  ThermalReading reading;
  for (const auto& zone : zones_) {
    const auto text = reader_.read(zone.file);
    if (const auto celsius = text ? parseMillidegrees(*text) : std::nullopt)
      reading.zones.push_back({*celsius, zone.trips});
  }
  for (const auto& cooler : coolers_) {
    const auto text = reader_.read(cooler);
    const auto state = text ? parseInteger<std::int64_t>(trimmed(*text)) : std::nullopt;
    if (state && *state > 0) reading.processorsAreSlowed = true;
  }
  for (const auto& package : packages_) {
    const auto text = reader_.read(package.file);
    if (const auto time = text ? parseInteger<std::uint64_t>(trimmed(*text)) : std::nullopt)
      reading.throttled[package.number] = *time;
  }
  return reading;
}

} // namespace korvell
