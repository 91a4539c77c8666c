#include "Platform/Linux/FoundChips.h"

#include "Base/Text.h"

#include <algorithm>

namespace korvell {

namespace {

struct Attribute {
  int number = 0;
  std::string_view of; ///< "input"
};

/// "temp12_input" for "temp": 12, "input". Number 0 for every other name.
Attribute attribute(std::string_view name, std::string_view kind) {
  if (!name.starts_with(kind)) return {};
  const auto rest = name.substr(kind.size());
  const auto underscore = rest.find('_');
  if (underscore == std::string_view::npos) return {};
  return {parseInteger<int>(rest.substr(0, underscore)).value_or(0), rest.substr(underscore + 1)};
}

class Search {
public:
  Search(SensorFiles& files, const std::string& proc, const std::string& sys)
      : files_(files), proc_(proc), sys_(sys) {}

  std::vector<FoundChip> run() {
    hwmon();
    zones();
    nvidia();
    return std::move(found_);
  }

private:
  void hwmon() {
    const auto folder = sys_ + "/class/hwmon/";
    for (const auto& name : files_.names(folder)) {
      auto place = folder + name;
      const auto device = place + "/device";
      auto driver = files_.text(place + "/name");
      if (driver.empty()) { // drivers of old hang their files below the device
        place = device;
        driver = files_.text(place + "/name");
      }
      if (driver.empty()) continue;
      FoundChip chip{.chip = {.driver = driver, .device = files_.linkName(device)}, .source = place};
      takeInputs(chip, place);
      if (chip.temperatures.empty() && chip.fans.empty()) continue;
      for (const auto* above : {"", "/device"}) takeSleepFile(chip, device + above);
      chip.isRotatingDisk = driver == "drivetemp" && isRotating(device);
      found_.push_back(std::move(chip));
    }
  }

  void takeInputs(FoundChip& chip, const std::string& folder) {
    const auto names = files_.names(folder);
    const auto fileOf = [&](const std::string& name) {
      return std::ranges::find(names, name) == names.end() ? std::string() : folder + "/" + name;
    };
    const auto input = [&](const std::string& prefix, std::size_t place) {
      return FoundChip::Input{
          .file = folder + "/" + prefix + "_input", .faultFile = fileOf(prefix + "_fault"), .place = place};
    };
    for (const auto& name : names) {
      if (const auto temp = attribute(name, "temp"); temp.number > 0 && temp.of == "input") {
        const auto prefix = "temp" + std::to_string(temp.number);
        chip.temperatures.push_back(input(prefix, chip.chip.temperatures.size()));
        chip.chip.temperatures.push_back({temp.number, files_.text(folder + "/" + prefix + "_label")});
      } else if (const auto fan = attribute(name, "fan"); fan.number > 0 && fan.of == "input") {
        const auto prefix = "fan" + std::to_string(fan.number);
        chip.fans.push_back(input(prefix, chip.chip.fans.size()));
        chip.fans.back().minFile = fileOf(prefix + "_min");
        chip.fans.back().maxFile = fileOf(prefix + "_max");
        chip.chip.fans.push_back({fan.number, files_.text(folder + "/" + prefix + "_label")});
      }
    }
  }

  void takeSleepFile(FoundChip& chip, const std::string& device) {
    if (files_.text(device + "/power/control") == "auto")
      chip.sleepFiles.push_back(device + "/power/runtime_status");
  }

  bool isRotating(const std::string& device) {
    const auto disks = files_.names(device + "/block");
    return std::ranges::any_of(disks, [&](const std::string& disk) {
      return files_.text(device + "/block/" + disk + "/queue/rotational") != "0";
    });
  }

  bool isFound(std::string_view driver) const {
    return std::ranges::any_of(found_, [&](const FoundChip& chip) { return chip.chip.driver == driver; });
  }

  void zones() {
    const auto folder = sys_ + "/class/thermal/";
    const auto chips = found_.size();
    for (const auto& name : files_.names(folder)) {
      if (!name.starts_with("thermal_zone")) continue;
      const auto type = files_.text(folder + name + "/type");
      auto asChip = type; // hwmon allows no hyphens in names
      std::ranges::replace(asChip, '-', '_');
      const auto isChip = std::any_of(found_.begin(), found_.begin() + std::ptrdiff_t(chips),
                                      [&](const FoundChip& chip) { return chip.chip.driver == asChip; });
      if (type.empty() || isChip || (type == "x86_pkg_temp" && isFound("coretemp"))) continue;
      FoundChip zone{.chip = {.driver = type, .temperatures = {{.number = 1}}}, .source = folder + name};
      zone.temperatures.push_back({.file = folder + name + "/temp"});
      found_.push_back(std::move(zone));
    }
  }

  void nvidia() {
    for (const auto& address : files_.names(proc_ + "/driver/nvidia/gpus")) {
      FoundChip card{.chip = {.driver = "nvidia", .device = address, .temperatures = {{.number = 1}}},
                     .source = address,
                     .isNvidia = true};
      takeSleepFile(card, sys_ + "/bus/pci/devices/" + address);
      found_.push_back(std::move(card));
    }
  }

  SensorFiles& files_;
  const std::string &proc_, &sys_;
  std::vector<FoundChip> found_;
};

} // namespace

std::vector<FoundChip> findChips(SensorFiles& files, const std::string& proc, const std::string& sys) {
  return Search(files, proc, sys).run();
}

} // namespace korvell
