#include "Platform/Linux/ChipReader.h"

#include "Base/Text.h"

#include <algorithm>
#include <array>
#include <cerrno>

namespace korvell {

namespace {

constexpr double hottest = 150;

/// Above 0 and at most 150 °C; sensors that are switched off or not connected say the rest.
std::optional<double> celsiusOf(std::optional<double> millidegrees) {
  if (!millidegrees || *millidegrees <= 0 || *millidegrees > hottest * 1000) return std::nullopt;
  return *millidegrees / 1000;
}

bool isGone(int error) { return error == -ENOENT || error == -ENODEV || error == -ENXIO; }

} // namespace

ChipReading ChipReader::read(const FoundChip& found, const SensorChip* last) {
  ChipReading reading{.chip = found.chip};
  if (last) reading.chip.fans = last->fans; // their limits, also while it sleeps
  for (auto& fan : reading.chip.fans) fan.rpm.reset();
  if (found.isRotatingDisk) {
    reading.state = ChipState::leftOut;
    return reading;
  }
  const bool asleep = isAsleep(found);
  bool vanished = false, answered = false;
  if (found.isNvidia) reading.chip.temperatures[0].celsius = nvidiaCelsius(found.chip.device, asleep);
  if (asleep) {
    reading.state = ChipState::asleep;
    return reading;
  }
  for (const auto& input : found.temperatures)
    reading.chip.temperatures[input.place].celsius = celsiusOf(value(input, vanished));
  for (const auto& input : found.fans) {
    auto& fan = reading.chip.fans[input.place];
    fan.rpm = value(input, vanished);
    if (last) continue;
    fan.minRPM = number(input.minFile, vanished);
    fan.maxRPM = number(input.maxFile, vanished);
  }
  for (const auto& sensor : reading.chip.temperatures) answered |= sensor.celsius.has_value();
  for (const auto& fan : reading.chip.fans) answered |= fan.rpm.has_value();
  if (vanished)
    reading.state = ChipState::vanished;
  else if (answered)
    reading.state = ChipState::read;
  return reading;
}

bool ChipReader::isAsleep(const FoundChip& found) {
  return std::ranges::any_of(found.sleepFiles, [&](const std::string& file) {
    return files_.text(file).starts_with("suspend"); // or suspending
  });
}

std::optional<double> ChipReader::number(const std::string& file, bool& vanished) {
  if (file.empty()) return std::nullopt;
  std::array<char, 64> buffer;
  const int length = files_.read(file, buffer);
  vanished |= isGone(length);
  if (length <= 0) return std::nullopt;
  const auto value = parseInteger<std::int64_t>(trimmed({buffer.data(), std::size_t(length)}));
  return value ? std::optional(double(*value)) : std::nullopt;
}

std::optional<double> ChipReader::value(const FoundChip::Input& input, bool& vanished) {
  if (number(input.faultFile, vanished).value_or(0) != 0) return std::nullopt;
  return number(input.file, vanished);
}

std::optional<double> ChipReader::nvidiaCelsius(const std::string& address, bool isAsleep) {
  const std::lock_guard lock(mutex_);
  if (!isAsleep) {
    awake_.insert(address);
    return nvidia_.celsius(address);
  }
  // The driver lets no card sleep while it is in use.
  awake_.erase(address);
  if (awake_.empty()) nvidia_.release();
  return std::nullopt;
}

} // namespace korvell
