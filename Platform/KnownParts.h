#pragma once
// Which figures of a measurement were read. A record's zero does not say: it stands for nothing happening as
// well as for nobody telling. Screens show "–" by this set alone.

#include "Base/Enum.h"
#include "Base/Value.h"

#include <array>
#include <cstddef>

namespace korvell {

/// Figures that come and go together.
enum class KnownPart {
  processor, ///< shares, of all cores and of each
  load,
  memory,
  disks, ///< what is read and written
  volumes,
  network,
  graphics, ///< utilization
  graphicsMemory,
  battery, ///< charge and power supply
  batteryHealth,
  batteryCycles,
  batteryTemperature,
  power, ///< of the whole machine
  processes,
  processTraffic,
  processEnergy,
  tenMinuteAverage, ///< of the processor: at least eight recorded minutes
};

template <>
struct EnumTable<KnownPart> {
  using enum KnownPart;
  static constexpr EnumCase<KnownPart> cases[] = {
      {processor, "processor", "CPU"},
      {load, "load", "Load"},
      {memory, "memory", "Memory"},
      {disks, "disks", "Disks"},
      {volumes, "volumes", "Volumes"},
      {network, "network", "Network"},
      {graphics, "graphics", "GPU"},
      {graphicsMemory, "graphicsMemory", "GPU memory"},
      {battery, "battery", "Battery"},
      {batteryHealth, "batteryHealth", "Battery health"},
      {batteryCycles, "batteryCycles", "Battery cycles"},
      {batteryTemperature, "batteryTemperature", "Battery temperature"},
      {power, "power", "Power"},
      {processes, "processes", "Processes"},
      {processTraffic, "processTraffic", "Network of each process"},
      {processEnergy, "processEnergy", "Energy of each process"},
      {tenMinuteAverage, "tenMinuteAverage", "CPU over ten minutes"}};
};

enum class Knowledge {
  absent,  ///< there is no such thing here, it did not answer, or its rate needs another reading
  refused, ///< it is there but does not let itself be read
  old,     ///< read in an earlier cycle and not due again
  fresh,   ///< read in this cycle
};

template <>
struct EnumTable<Knowledge> {
  using enum Knowledge;
  static constexpr EnumCase<Knowledge> cases[] = {{absent, "absent", "not there"},
                                                  {refused, "refused", "not readable"},
                                                  {old, "old", "read earlier"},
                                                  {fresh, "fresh", "read"}};
};

/// Every part is absent until something else is said.
class KnownParts {
public:
  static constexpr std::size_t count = std::size(EnumTable<KnownPart>::cases);

  Knowledge operator[](KnownPart part) const { return states_[std::size_t(part)]; }
  void set(KnownPart part, Knowledge state) { states_[std::size_t(part)] = state; }
  /// Fresh or absent.
  void set(KnownPart part, bool isRead) { set(part, isRead ? Knowledge::fresh : Knowledge::absent); }
  /// True when there is a figure to show.
  bool has(KnownPart part) const { return (*this)[part] >= Knowledge::old; }
  bool operator==(const KnownParts&) const = default;

private:
  std::array<Knowledge, count> states_{};
};

/// {"processor":{"state":"fresh"}, …}, all parts in their order.
inline Value toValue(const KnownParts& known) {
  Value parts = Value::object();
  for (const auto& part : allCases<KnownPart>())
    parts.set(part.rawValue, Value::object({{"state", rawValue(known[part.value])}}));
  return parts;
}

/// Parts that are missing are absent; false for states that nobody knows.
[[nodiscard]] inline bool fromValue(const Value& value, KnownParts& known) {
  known = {};
  if (!value.asObject()) return false;
  for (const auto& part : allCases<KnownPart>()) {
    const auto* told = value.find(part.rawValue);
    if (!told) continue;
    const auto* state = told->find("state");
    const auto* text = state ? state->asString() : nullptr;
    const auto parsed = text ? fromRawValue<Knowledge>(*text) : std::nullopt;
    if (!parsed) return false;
    known.set(part.value, *parsed);
  }
  return true;
}

} // namespace korvell
