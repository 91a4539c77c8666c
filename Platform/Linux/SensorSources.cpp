#include "Platform/Linux/SensorSources.h"

#include "Platform/Linux/LinuxPeripherals.h"
#include "Platform/Posix/SourceExamination.h"

#include <iterator>

namespace korvell {

namespace {

using State = SourceReport::State;

struct StateRow {
  ChipState chip;
  State state;
  const char* reason; ///< null for none
};
constexpr StateRow states[] = {
    {ChipState::read, State::readable, nullptr},
    {ChipState::asleep, State::refused, "The device is asleep and is left so."},
    {ChipState::leftOut, State::refused,
     "A disk with platters is not asked: a reading would keep it from sleeping, or wake it."},
    {ChipState::silent, State::refused, "None of its sensors tells a figure that can be."},
    {ChipState::vanished, State::missing, "It went away while it was looked at."},
};

SourceReport examined(ChipReader& reader, const FoundChip& chip, const Clock& clock) {
  SourceReport report{.name = localized("Sensors"), .source = chip.chip.driver + " " + chip.source};
  const Seconds begin = clock.monotonic();
  const auto reading = reader.read(chip);
  const Seconds first = clock.monotonic() - begin;
  for (const auto& [state, told, reason] : states) {
    if (state != reading.state) continue;
    report.state = told;
    if (reason) report.reason = localized(reason);
  }
  if (report.state != State::readable) return report;
  const bool isSlow = first > LinuxSensorChips::slowFrom;
  // A slow chip is not asked again and again, for nothing but a better figure.
  report.microseconds =
      isSlow ? first.count() * 1e6 : readingMicroseconds(&clock, [&] { reader.read(chip, &reading.chip); });
  if (isSlow) report.reason = localized("It answers slowly, and is read beside the cycle.");
  return report;
}

SourceReport service(const char* name, const std::string& bus, const Clock& clock,
                     PeripheralAnswer (*ask)(const std::string&, Seconds)) {
  SourceReport report{.name = localized("Peripheral batteries"), .source = name};
  const Seconds begin = clock.monotonic();
  report.reason = ask(bus, LinuxPeripherals::patience).silence;
  if (report.reason.empty())
    report.microseconds = (clock.monotonic() - begin).count() * 1e6;
  else
    report.state = State::missing;
  return report;
}

} // namespace

std::vector<SourceReport> sensorSources(const LinuxSensorRoots& roots, const std::string& bus,
                                        const Clock& clock) {
  std::vector<SourceReport> reports;
  SensorFiles files;
  ChipReader reader(files, roots.nvidiaLibrary);
  for (const auto& chip : findChips(files, roots.proc, roots.sys))
    reports.push_back(examined(reader, chip, clock));
  if (reports.empty())
    reports.push_back({.name = localized("Sensors"),
                       .source = roots.sys + "/class/hwmon",
                       .state = State::missing,
                       .reason = localized("No driver publishes a sensor here; a virtual machine has none."),
                       .remedy = localized("On a machine of metal, load the drivers of its chips; "
                                           "sensors-detect (Debian: lm-sensors) finds them.")});
  reports.push_back(service("org.freedesktop.UPower", bus, clock, askUPower));
  reports.push_back(service("org.bluez", bus, clock, askBlueZ));
  return reports;
}

} // namespace korvell
