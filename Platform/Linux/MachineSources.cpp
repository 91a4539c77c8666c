#include "Platform/Linux/MachineSources.h"

#include "Platform/Posix/SourceExamination.h"

#include <algorithm>

namespace korvell {

namespace {

using State = SourceReport::State;

const std::vector graphicsParts = {KnownPart::graphics, KnownPart::graphicsMemory};
const std::vector batteryParts = {KnownPart::battery, KnownPart::batteryHealth, KnownPart::batteryCycles,
                                  KnownPart::batteryTemperature};
const std::vector powerParts = {KnownPart::power, KnownPart::processEnergy};

class Examination {
public:
  Examination(const LinuxMachineRoots& roots, const Clock* clock)
      : roots_(roots), clock_(clock), machine_(roots) {}

  std::vector<SourceReport> run() {
    files();
    compressedSwap();
    graphics();
    battery();
    packages();
    return std::move(reports_);
  }

private:
  struct FileRow {
    const char* name;
    const char* path; ///< below /proc
    const char* missing;
    const char* remedy;
    void (*read)(LinuxMachineCounters&);
    std::vector<KnownPart> parts = {};
  };

  void files();
  void compressedSwap();
  void graphics();
  void card(const GraphicsCards::Card& card);
  void battery();
  void packages();

  SourceReport& add(const char* name, std::string source, State state, std::vector<KnownPart> parts = {}) {
    reports_.push_back(
        {.name = localized(name), .source = std::move(source), .state = state, .parts = std::move(parts)});
    return reports_.back();
  }
  /// A source that this machine does not have, and nothing would change that.
  void addMissing(const char* name, std::string source, const char* reason, std::vector<KnownPart> parts) {
    add(name, std::move(source), State::missing, std::move(parts)).reason = localized(reason);
  }

  const LinuxMachineRoots& roots_;
  const Clock* clock_;
  LinuxMachineCounters machine_;
  FileReader reader_;
  std::vector<SourceReport> reports_;
};

void Examination::files() {
  static constexpr const char* noProc = "The proc file system is not mounted, or hides this file.";
  static constexpr const char* mountProc = "Mount it: mount -t proc proc /proc (as root).";
  static const FileRow rows[] = {
      {"CPU", "/stat", noProc, mountProc, [](LinuxMachineCounters& m) { m.cpu(); }, {KnownPart::processor}},
      {"Load", "/loadavg", noProc, mountProc, nullptr, {KnownPart::load}},
      {"Memory",
       "/meminfo",
       noProc,
       mountProc,
       [](LinuxMachineCounters& m) { m.memory(); },
       {KnownPart::memory}},
      {"Memory stalls", "/pressure/memory",
       "This kernel keeps no pressure-stall information; memory pressure is judged by what is available "
       "alone.",
       "Start the kernel with psi=1, if it was built with it (4.20 or later).", nullptr},
      {"Disks",
       "/diskstats",
       noProc,
       mountProc,
       [](LinuxMachineCounters& m) { m.disks(); },
       {KnownPart::disks}},
      {"Volumes",
       "/self/mountinfo",
       noProc,
       mountProc,
       [](LinuxMachineCounters& m) { m.volumes(); },
       {KnownPart::volumes}},
      {"Network",
       "/net/dev",
       noProc,
       mountProc,
       [](LinuxMachineCounters& m) { m.interfaces(); },
       {KnownPart::network}},
  };
  for (const auto& row : rows) {
    const auto path = roots_.proc + row.path;
    auto& report = add(row.name, path, fileState(path), row.parts);
    if (report.state == State::readable) {
      report.microseconds =
          readingMicroseconds(clock_, [&] { row.read ? row.read(machine_) : void(reader_.read(path)); });
      continue;
    }
    report.reason = localized(row.missing);
    report.remedy = localized(row.remedy);
  }
}

void Examination::compressedSwap() {
  const auto folder = roots_.sys + "/block/";
  for (const auto& name : folderNames(folder)) {
    if (!name.starts_with("zram")) continue;
    const auto path = folder + name + "/mm_stat";
    auto& report = add("Compressed swap", path, fileState(path));
    if (report.state == State::readable)
      report.microseconds = readingMicroseconds(clock_, [&] { reader_.read(path); });
    else
      report.reason = localized("The device does not tell what it takes.");
  }
}

void Examination::graphics() {
  const auto& cards = machine_.graphics().cards();
  for (const auto& each : cards) card(each);
  if (cards.empty())
    addMissing("GPU", roots_.sys + "/class/drm",
               "This machine has no graphics card that a driver looks after.", graphicsParts);
}

void Examination::card(const GraphicsCards::Card& card) {
  using Driver = GraphicsCards::Driver;
  GraphicsCards& graphics = machine_.graphics();
  const bool nvidia = card.driver == Driver::nvidia, intel = card.driver == Driver::i915;
  const auto source = nvidia  ? roots_.nvidiaLibrary + " " + card.address
                      : intel ? roots_.proc + "/*/fdinfo " + card.address
                              : card.folder;
  auto& report = add("GPU", source, State::refused, graphicsParts);
  if (card.driver == Driver::other) {
    report.state = State::missing;
    report.reason = localized("The card's driver publishes no figure for how busy the whole card is.");
  } else if (graphics.isAsleep(card, reader_)) {
    report.reason = localized("The card is asleep and is left so.");
  } else if (graphics.read(card, reader_)) {
    report.state = State::readable;
    report.microseconds = readingMicroseconds(clock_, [&] { graphics.read(card, reader_); });
    if (intel) {
      report.reason = localized("Only programs that you may look into are counted.");
      report.remedy = localized("Run as root to count everybody's.");
    }
  } else if (intel) {
    report.reason =
        localized("No program that you may look into uses the card, or the kernel is older than 5.19 "
                  "and does not count.");
  } else if (nvidia) {
    report.reason = localized("The driver's management library is missing or does not answer.");
    report.remedy = localized("Install the library that belongs to the driver (Debian: libnvidia-ml1).");
  } else {
    report.reason = localized("The driver does not tell how busy the card is.");
  }
}

void Examination::battery() {
  const auto& supplies = machine_.powerSources().supplies();
  for (const auto& supply : supplies) {
    const bool pack = supply.kind == PowerSupply::Kind::battery;
    auto& report = add(pack ? "Battery" : "Power adapter", supply.file, fileState(supply.file),
                       pack ? batteryParts : std::vector<KnownPart>{});
    if (report.state == State::readable)
      report.microseconds = readingMicroseconds(clock_, [&] { reader_.read(supply.file); });
    else
      report.reason = localized("The driver does not answer.");
  }
  const auto isPack = [](const PowerSources::Supply& s) { return s.kind == PowerSupply::Kind::battery; };
  if (std::ranges::none_of(supplies, isPack))
    addMissing("Battery", roots_.sys + "/class/power_supply", "This machine has no battery.", batteryParts);
}

void Examination::packages() {
  const auto& packages = machine_.powerSources().energy().packages();
  for (const auto& package : packages) {
    auto& report =
        add("CPU power", package.file, package.readable ? State::readable : State::refused, powerParts);
    if (package.readable) {
      report.microseconds = readingMicroseconds(clock_, [&] { reader_.read(package.file); });
      continue;
    }
    report.reason = localized("Only root may read the processor's energy counter.");
    report.remedy =
        localized("Run as root, or let an administrator make the file readable; its fine grain can "
                  "give away secrets of other programs, which is why it is closed.");
  }
  if (packages.empty())
    addMissing("CPU power", roots_.sys + "/class/powercap",
               "This processor has no energy counter, or a virtual machine hides it.", powerParts);
}

} // namespace

std::vector<SourceReport> machineSources(const LinuxMachineRoots& roots, const Clock* clock) {
  return Examination(roots, clock).run();
}

} // namespace korvell
