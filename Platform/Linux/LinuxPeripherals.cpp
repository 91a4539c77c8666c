#include "Platform/Linux/LinuxPeripherals.h"

#include "Platform/Formats/PowerSupplies.h"
#include "Platform/Linux/BusInquiry.h"

#include <algorithm>
#include <iterator>

namespace korvell {

namespace {

constexpr BusService uPower{.name = "org.freedesktop.UPower",
                            .notThere = "UPower does not run here.",
                            .late = "UPower did not answer in time.",
                            .refused = "UPower refused to answer: {reason}"};
constexpr BusService blueZ{.name = "org.bluez",
                           .notThere = "BlueZ does not run here.",
                           .late = "BlueZ did not answer in time.",
                           .refused = "BlueZ refused to answer: {reason}"};

/// Far more than anybody has on a desk.
constexpr std::size_t mostDevices = 64;

std::string lastPart(std::string_view path) { return std::string(path.substr(path.rfind('/') + 1)); }

/// Of a property that the reply stands at; the value stays as it was when it is of another type.
bool take(sd_bus_message* reply, std::string& value) {
  const char* text = nullptr;
  if (sd_bus_message_read(reply, "v", "s", &text) <= 0) return false;
  value = text;
  return true;
}
bool take(sd_bus_message* reply, bool& value) {
  int told = 0;
  if (sd_bus_message_read(reply, "v", "b", &told) <= 0) return false;
  value = told != 0;
  return true;
}
template <class Number>
bool take(sd_bus_message* reply, const char* type, Number& value) {
  return sd_bus_message_read(reply, "v", type, &value) > 0;
}

// UPower

struct TypeNumber {
  unsigned number;
  PeripheralType type;
};
constexpr TypeNumber uPowerTypes[] = {{5, PeripheralType::mouse},
                                      {6, PeripheralType::keyboard},
                                      {13, PeripheralType::trackpad},
                                      {17, PeripheralType::headphones},
                                      {19, PeripheralType::headphones}};
constexpr unsigned linePower = 1, unknownState = 0;

struct UPowerDevice {
  std::string model, serial, nativePath;
  double percentage = 0;
  unsigned type = 0, state = unknownState;
  bool powersMachine = false, isPresent = true;
};

bool takeProperty(std::string_view name, sd_bus_message* reply, UPowerDevice& device) {
  if (name == "Model") return take(reply, device.model);
  if (name == "Serial") return take(reply, device.serial);
  if (name == "NativePath") return take(reply, device.nativePath);
  if (name == "Percentage") return take(reply, "d", device.percentage);
  if (name == "Type") return take(reply, "u", device.type);
  if (name == "State") return take(reply, "u", device.state);
  if (name == "PowerSupply") return take(reply, device.powersMachine);
  if (name == "IsPresent") return take(reply, device.isPresent);
  return false;
}

PeripheralReading readingOf(const UPowerDevice& device) {
  const auto* row = std::ranges::find(uPowerTypes, device.type, &TypeNumber::number);
  PeripheralReading reading{.name = device.model,
                            .percent = device.percentage,
                            .type = row == std::end(uPowerTypes) ? PeripheralType::unknown : row->type,
                            .address = device.serial,
                            .node = lastPart(device.nativePath)};
  // A device that is switched off keeps its entry, which says nothing any more.
  reading.isPresent = device.isPresent && !(device.percentage <= 0 && device.state == unknownState);
  return reading;
}

std::vector<std::string> devicePaths(sd_bus_message* reply) {
  std::vector<std::string> paths;
  const char* path = "";
  if (sd_bus_message_enter_container(reply, 'a', "o") < 0) return paths;
  while (paths.size() < mostDevices && sd_bus_message_read(reply, "o", &path) > 0) paths.emplace_back(path);
  return paths;
}

// BlueZ

struct BlueZDevice {
  std::string address, alias, icon;
  bool isConnected = false;
  std::optional<std::uint8_t> percentage;
};

struct IconType {
  std::string_view icon;
  PeripheralType type;
};
constexpr IconType iconTypes[] = {{"input-mouse", PeripheralType::mouse},
                                  {"input-keyboard", PeripheralType::keyboard},
                                  {"audio-headset", PeripheralType::headphones},
                                  {"audio-headphones", PeripheralType::headphones}};

bool takeProperty(std::string_view interface, std::string_view name, sd_bus_message* reply,
                  BlueZDevice& device) {
  if (interface == "org.bluez.Battery1" && name == "Percentage") {
    std::uint8_t percentage = 0;
    if (!take(reply, "y", percentage)) return false;
    device.percentage = percentage;
    return true;
  }
  if (interface != "org.bluez.Device1") return false;
  if (name == "Address") return take(reply, device.address);
  if (name == "Alias") return take(reply, device.alias);
  if (name == "Icon") return take(reply, device.icon);
  if (name == "Connected") return take(reply, device.isConnected);
  return false;
}

/// The interfaces of one object, with their properties.
bool takeInterfaces(sd_bus_message* reply, BlueZDevice& device) {
  if (sd_bus_message_enter_container(reply, 'a', "{sa{sv}}") < 0) return false;
  while (sd_bus_message_enter_container(reply, 'e', "sa{sv}") > 0) {
    const char* interface = "";
    if (sd_bus_message_read(reply, "s", &interface) <= 0 ||
        !eachProperty(reply,
                      [&](std::string_view name) { return takeProperty(interface, name, reply, device); }) ||
        sd_bus_message_exit_container(reply) < 0)
      return false;
  }
  return sd_bus_message_exit_container(reply) >= 0;
}

void takeObjects(sd_bus_message* reply, std::vector<PeripheralReading>& readings) {
  if (sd_bus_message_enter_container(reply, 'a', "{oa{sa{sv}}}") < 0) return;
  while (readings.size() < mostDevices && sd_bus_message_enter_container(reply, 'e', "oa{sa{sv}}") > 0) {
    const char* path = "";
    BlueZDevice device;
    if (sd_bus_message_read(reply, "o", &path) <= 0 || !takeInterfaces(reply, device) ||
        sd_bus_message_exit_container(reply) < 0)
      return;
    if (!device.percentage || !device.isConnected) continue;
    const auto* row = std::ranges::find(iconTypes, device.icon, &IconType::icon);
    readings.push_back({.name = device.alias,
                        .percent = double(*device.percentage),
                        .type = row == std::end(iconTypes) ? PeripheralType::unknown : row->type,
                        .address = device.address,
                        .node = lastPart(path)});
  }
}

} // namespace

PeripheralAnswer askUPower(const std::string& busAddress, Seconds patience) {
  BusInquiry inquiry(uPower, busAddress, patience);
  PeripheralAnswer answer;
  const auto listed = inquiry.ask("/org/freedesktop/UPower", uPower.name, "EnumerateDevices", "");
  answer.silence = inquiry.silence();
  if (!listed) return answer;
  for (const auto& path : devicePaths(listed.get())) {
    const auto told = inquiry.ask(path.c_str(), "org.freedesktop.DBus.Properties", "GetAll", "s",
                                  "org.freedesktop.UPower.Device");
    UPowerDevice device;
    const bool isRead = told && eachProperty(told.get(), [&](std::string_view name) {
                          return takeProperty(name, told.get(), device);
                        });
    if (isRead && !device.powersMachine && device.type != linePower)
      answer.readings.push_back(readingOf(device));
    // One that went away meanwhile is no silence of the service.
    if (!told && !inquiry.isRefused()) answer.silence = inquiry.silence();
  }
  return answer;
}

PeripheralAnswer askBlueZ(const std::string& busAddress, Seconds patience) {
  BusInquiry inquiry(blueZ, busAddress, patience);
  PeripheralAnswer answer;
  const auto told = inquiry.ask("/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects", "");
  answer.silence = inquiry.silence();
  if (told) takeObjects(told.get(), answer.readings);
  return answer;
}

std::vector<PeripheralReading> deviceSupplies(const std::string& sys, FileReader& reader) {
  std::vector<PeripheralReading> readings;
  const auto folder = sys + "/class/power_supply/";
  for (const auto& name : folderNames(folder)) {
    const auto scope = reader.read(folder + name + "/scope");
    if (!scope || !isDeviceScope(*scope)) continue;
    if (const auto text = reader.read(folder + name + "/uevent"))
      readings.push_back(parseDeviceSupply(name, *text));
  }
  return readings;
}

std::vector<PeripheralReading> LinuxPeripherals::read() {
  auto [readings, silence] = askUPower(bus_, patience_);
  const auto add = [&readings = readings](std::vector<PeripheralReading> more) {
    readings.insert(readings.end(), std::make_move_iterator(more.begin()),
                    std::make_move_iterator(more.end()));
  };
  if (!silence.empty()) add(deviceSupplies(sys_, reader_));
  add(askBlueZ(bus_, patience_).readings);
  return std::move(readings);
}

} // namespace korvell
