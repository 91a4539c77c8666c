#include "Platform/Linux/SharedReadings.h"

namespace korvell {

namespace {
/// The kernel writes the file in one piece.
constexpr std::size_t oneReading = 8192;
} // namespace

template <class Value>
bool SharedReadings::Reading<Value>::isDueFor(Half half) {
  const bool due = half == Half::machine || !waits;
  waits = half == Half::machine;
  return due;
}

const SharedReadings::Memory& SharedReadings::memory(Half half, FileReader& reader) {
  if (memoryReading_.isDueFor(half)) {
    const auto text = memInfo_.readBeginning(reader, oneReading);
    memoryReading_.value = text ? Memory{parseMemInfo(*text), parseAnonymousMemory(*text)} : Memory{};
  }
  return memoryReading_.value;
}

const std::map<int, EnergyCounter>& SharedReadings::energy(Half half, FileReader& reader) {
  if (energyReading_.isDueFor(half)) energyReading_.value = energy_.read(reader);
  return energyReading_.value;
}

} // namespace korvell
