#include "Sensors/Peripherals.h"

#include "Base/Text.h"
#include "Sensors/NaturalOrder.h"
#include "Sensors/SensorNames.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

using Kind = PeripheralBattery::Kind;

/// Words in names, for devices whose service does not say what they are.
struct KindWord {
  std::string_view word;
  Kind kind;
};
constexpr KindWord kindWords[] = {
    {"mouse", Kind::mouse},        {"keyboard", Kind::keyboard},    {"trackpad", Kind::trackpad},
    {"touchpad", Kind::trackpad},  {"headphone", Kind::headphones}, {"headset", Kind::headphones},
    {"earbuds", Kind::headphones}, {"airpods", Kind::headphones},
};

Kind kindOf(PeripheralType type, std::string_view name) {
  switch (type) {
  case PeripheralType::mouse:
    return Kind::mouse;
  case PeripheralType::keyboard:
    return Kind::keyboard;
  case PeripheralType::trackpad:
    return Kind::trackpad;
  case PeripheralType::headphones:
    return Kind::headphones;
  case PeripheralType::unknown:
    break;
  }
  const auto lower = lowercased(name);
  for (const auto& [word, kind] : kindWords)
    if (lower.find(word) != std::string::npos) return kind;
  return Kind::other;
}

/// Letters and digits only, in one case: addresses come with colons, hyphens, underscores or nothing.
std::string bareAddress(std::string_view address) {
  std::string bare;
  for (const char c : lowercased(address))
    if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z')) bare += c;
  return bare;
}

/// Serial numbers that every device of a model bears say nothing.
bool saysSomething(std::string_view bareAddress) {
  return bareAddress.find_first_not_of('0') != std::string_view::npos && bareAddress.size() >= 4;
}

bool areSameDevice(const PeripheralReading& a, const PeripheralReading& b) {
  const auto first = bareAddress(a.address);
  if (saysSomething(first) && first == bareAddress(b.address)) return true;
  return !a.node.empty() && a.node == b.node;
}

/// One blank between words, and none of a maker's name said twice.
std::string cleanName(std::string_view text) {
  std::vector<std::string> words;
  const auto shown = sensorText(text);
  for (const auto word : split(shown, ' ')) {
    if (word.empty()) continue;
    if (!words.empty() && lowercased(words.back()) == lowercased(word)) continue;
    words.emplace_back(word);
  }
  std::string name;
  for (const auto& word : words) name += (name.empty() ? "" : " ") + word;
  return name;
}

bool hasCharge(const PeripheralReading& reading) {
  return reading.percent && *reading.percent >= 0 && *reading.percent <= 100;
}

void complete(PeripheralReading& device, const PeripheralReading& other) {
  if (cleanName(device.name).empty()) device.name = other.name;
  if (device.type == PeripheralType::unknown) device.type = other.type;
  if (device.address.empty()) device.address = other.address;
  if (!hasCharge(device)) device.percent = other.percent;
}

} // namespace

std::vector<PeripheralBattery> peripheralBatteries(const std::vector<PeripheralReading>& readings) {
  std::vector<PeripheralReading> devices;
  for (const auto& reading : readings) {
    if (!reading.isPresent) continue;
    const auto known = std::ranges::find_if(
        devices, [&](const PeripheralReading& device) { return areSameDevice(device, reading); });
    if (known == devices.end())
      devices.push_back(reading);
    else
      complete(*known, reading);
  }
  std::vector<PeripheralBattery> batteries;
  for (const auto& device : devices) {
    if (!hasCharge(device)) continue;
    auto name = cleanName(device.name);
    const Kind kind = kindOf(device.type, name);
    if (name.empty()) name = kind == Kind::other ? localized("Device") : title(kind);
    batteries.push_back({std::move(name), int(std::lround(*device.percent)), kind});
  }
  std::ranges::stable_sort(batteries, [](const PeripheralBattery& a, const PeripheralBattery& b) {
    return a.kind != b.kind ? a.kind < b.kind : comesNaturallyBefore(a.name, b.name);
  });
  return batteries;
}

} // namespace korvell
