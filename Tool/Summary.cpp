#include "Tool/Summary.h"

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"
#include "Tool/Labels.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int barWidth = 20, narrowBar = 8;
constexpr int narrowRoom = 65; ///< columns behind the label
constexpr int barlessRoom = 16;
constexpr int narrowestText = 3, fewestDetails = 10;
constexpr int spaceWidth = 25;

int percentWidth() { return displayWidth(Format::percent(100)); }

std::string padded(std::string text, int width) {
  text.append(size_t(std::max(0, width - displayWidth(text))), ' ');
  return text;
}

/// Collects lines that begin with a label or below one, cut to the width.
class Lines {
public:
  Lines(const Terminal& terminal, int width)
      : terminal_(terminal), width_(width), labelWidth_(labelWidth()) {}

  /// `head` may hold inks and is never cut. Of the parts, which are plain, those stand behind it that fit;
  /// of the first one what fits.
  void add(std::string_view label, const std::string& head, const std::vector<std::string>& parts = {}) {
    std::string line = terminal_.ink(Ink::bold, padded(std::string(label), labelWidth_)) + head;
    std::size_t next = 0;
    const int left = room() - inkedWidth(head);
    const bool tells = !parts.empty() && (left >= fewestDetails || displayWidth(parts.front()) <= left);
    const auto rest = tells ? joinedFrom(parts, next, left) : std::string();
    if (!rest.empty()) line += terminal_.ink(Ink::dim, rest);
    lines_.push_back(fitted(line, width_));
  }
  /// All parts, on as many lines as they take.
  void addAll(const std::vector<std::string>& parts) {
    if (room() < narrowestText) return;
    for (std::size_t next = 0; next < parts.size();)
      lines_.push_back(std::string(std::size_t(labelWidth_), ' ') +
                       terminal_.ink(Ink::dim, joinedFrom(parts, next, room())));
  }
  int room() const { return width_ - labelWidth_; }
  /// What stands before the details of a share: a bar, narrower where there is little room, and the figure.
  std::string gauge(double percent) const {
    const auto figure = fmt::format(" {:>{}}  ", Format::percent(percent), percentWidth());
    if (room() < barlessRoom) return figure;
    const int width = room() < narrowRoom ? narrowBar : barWidth;
    return terminal_.ink(inkForPercent(percent), bar(percent / 100, width)) + figure;
  }
  /// The same where the share could not be read.
  std::string noGauge() const { return std::string(noFigure) + "  "; }
  std::vector<std::string> take() { return std::move(lines_); }

private:
  /// The parts from `next` on that fit into the room, at least one; `next` is the first that did not.
  static std::string joinedFrom(const std::vector<std::string>& parts, std::size_t& next, int room) {
    if (next >= parts.size() || room < narrowestText) return {};
    auto text = truncatedToWidth(parts[next++], room);
    for (; next < parts.size(); ++next) {
      auto longer = text + " · " + parts[next];
      if (displayWidth(longer) > room) break;
      text = std::move(longer);
    }
    return text;
  }

  const Terminal& terminal_;
  int width_, labelWidth_;
  std::vector<std::string> lines_;
};

void addCores(Lines& lines, const Terminal& terminal, const std::vector<double>& cores) {
  // A few cores get a bar and a figure each, many a column each.
  const int cell = 13 + percentWidth();
  const int perRow = std::max(1, (lines.room() + 2) / cell);
  if (lines.room() >= cell && int(cores.size()) <= 2 * perRow) {
    for (size_t first = 0; first < cores.size(); first += size_t(perRow)) {
      std::string row;
      for (size_t i = first; i < std::min(cores.size(), first + size_t(perRow)); ++i)
        row +=
            fmt::format("{:>2} {} {:>{}}  ", i, terminal.ink(inkForPercent(cores[i]), bar(cores[i] / 100, 7)),
                        Format::percent(cores[i]), percentWidth());
      row.resize(row.size() - 2);
      lines.add("", row);
    }
    return;
  }
  constexpr int unit = 16;
  const int room = std::max(1, lines.room());
  const size_t columns = size_t(room < unit ? room : room / unit * unit);
  for (size_t first = 0; first < cores.size(); first += columns) {
    std::string row;
    for (size_t i = first; i < std::min(cores.size(), first + columns); ++i)
      row += terminal.ink(inkForPercent(cores[i]), columnBar(cores[i] / 100));
    lines.add("", row);
  }
}

void addCPU(Lines& lines, const Terminal& terminal, const CPUStats& cpu, const KnownParts& known,
            std::optional<double> celsius) {
  const bool isKnown = known.has(KnownPart::processor);
  std::vector<std::string> details;
  if (isKnown)
    details = {title(CPUScale::machine), localized("user {n}", {{"n", Format::percent(cpu.user)}}),
               localized("system {n}", {{"n", Format::percent(cpu.system)}})};
  if (celsius) details.insert(details.begin() + (isKnown ? 1 : 0), Format::celsius(*celsius));
  details.push_back(
      localized("load {n}", {{"n", known.has(KnownPart::load) ? Format::decimal(cpu.load1, 2) : noFigure}}));
  if (cpu.performanceCores > 0 && cpu.efficiencyCores > 0)
    details.push_back(
        localized("{p} performance, {e} efficiency cores",
                  {{"p", std::to_string(cpu.performanceCores)}, {"e", std::to_string(cpu.efficiencyCores)}}));
  lines.add(title(Metric::cpu), isKnown ? lines.gauge(cpu.total) : lines.noGauge(), details);
  if (isKnown && cpu.perCore.size() > 1) addCores(lines, terminal, cpu.perCore);
}

void addMemory(Lines& lines, const MemoryStats& memory, bool isKnown) {
  if (!isKnown) return lines.add(title(Metric::memory), noFigure);
  const auto size = [](std::uint64_t bytes) { return Format::memory(double(bytes)); };
  const double share = memory.total > 0 ? double(memory.used()) / double(memory.total) * 100 : 0;
  lines.add(title(Metric::memory), lines.gauge(share),
            {localized("{used} of {total}", {{"used", size(memory.used())}, {"total", size(memory.total)}}),
             localized("pressure {p}", {{"p", title(memory.pressure)}})});
  std::vector<std::string> parts = {localized("apps {n}", {{"n", size(memory.app)}}),
                                    localized("wired {n}", {{"n", size(memory.wired)}}),
                                    localized("cached {n}", {{"n", size(memory.cached)}}),
                                    localized("free {n}", {{"n", size(memory.free)}})};
  if (memory.compressed > 0) parts.push_back(localized("compressed {n}", {{"n", size(memory.compressed)}}));
  if (memory.swapUsed > 0) parts.push_back(localized("swap {n}", {{"n", size(memory.swapUsed)}}));
  lines.addAll(parts);
}

std::string bothWays(double in, double out) {
  return padded("↓ " + Format::rate(in), 13) + padded("↑ " + Format::rate(out), 13);
}

void addTraffic(Lines& lines, const SystemSnapshot& snapshot, const KnownParts& known) {
  if (known.has(KnownPart::disks))
    lines.add(title(Metric::disk), bothWays(snapshot.disk.readRate, snapshot.disk.writeRate),
              {localized("read and written")});
  else
    lines.add(title(Metric::disk), noFigure);
  const auto& network = snapshot.network;
  if (known.has(KnownPart::network))
    lines.add(title(Metric::network), bothWays(network.inRate, network.outRate),
              {escapedControls(network.interface)});
  else
    lines.add(title(Metric::network), noFigure);
}

void addGraphics(Lines& lines, const GPUStats& gpu, const KnownParts& known, std::optional<double> celsius) {
  std::vector<std::string> details;
  if (celsius) details.push_back(Format::celsius(*celsius));
  if (known.has(KnownPart::graphicsMemory)) details.push_back(Format::memory(double(gpu.memoryInUse)));
  const bool isKnown = known.has(KnownPart::graphics);
  if (!isKnown && details.empty()) return lines.add(title(Metric::gpu), noFigure);
  details.push_back(escapedControls(gpu.name));
  lines.add(title(Metric::gpu), isKnown ? lines.gauge(gpu.utilization) : lines.noGauge(), details);
}

void addPower(Lines& lines, const BatteryStats& battery, const KnownParts& known) {
  const auto watts = known.has(KnownPart::power) ? Format::watts(battery.systemPower) : noFigure;
  if (!battery.present) return lines.add(localized("Power"), watts);
  std::vector<std::string> details = {battery.isCharging ? localized("charging")
                                      : battery.onAC     ? localized("on power")
                                                         : localized("on battery")};
  if (battery.minutesRemaining)
    details.push_back(
        localized("{t} left", {{"t", Format::duration(std::chrono::minutes(*battery.minutesRemaining))}}));
  details.push_back(watts);
  const bool health = known.has(KnownPart::batteryHealth), cycles = known.has(KnownPart::batteryCycles);
  details.push_back(localized("health {n}", {{"n", health ? Format::percent(battery.health) : noFigure}}));
  details.push_back(localized("{n} cycles", {{"n", cycles ? std::to_string(battery.cycles) : noFigure}}));
  if (known.has(KnownPart::batteryTemperature)) details.push_back(Format::celsius(battery.temperature));
  const bool charge = known.has(KnownPart::battery);
  lines.add(localized("Battery"), charge ? lines.gauge(battery.percent) : lines.noGauge(), details);
}

void addVolumes(Lines& lines, const std::vector<VolumeInfo>& volumes, bool isKnown) {
  if (!isKnown) return lines.add(localized("Volumes"), noFigure);
  bool first = true;
  for (const auto& volume : volumes) {
    const double used = volume.total > 0 ? 100.0 - double(volume.available) / double(volume.total) * 100 : 0;
    const auto space = localized("{free} of {total} free", {{"free", Format::bytes(double(volume.available))},
                                                            {"total", Format::bytes(double(volume.total))}});
    const bool named = volume.name != volume.url;
    const auto name = escapedControls(named ? volume.name + " (" + volume.url + ")" : volume.url);
    const auto label = first ? localized("Volumes") : "";
    if (lines.room() < narrowRoom)
      lines.add(label, lines.gauge(used),
                {localized("{free} free", {{"free", Format::bytes(double(volume.available))}}),
                 escapedControls(volume.name)});
    else
      lines.add(label, lines.gauge(used) + padded(space, spaceWidth), {name});
    first = false;
  }
}

} // namespace

Ink inkForPercent(double percent) {
  return percent >= 90 ? Ink::critical : percent >= 70 ? Ink::warning : Ink::good;
}

std::vector<std::string> summaryLines(const Terminal& terminal, const SystemSnapshot& snapshot,
                                      const KnownParts& known, int width,
                                      const std::optional<SensorsSnapshot>& sensors) {
  const auto celsius = [&sensors](std::optional<double> SensorsSnapshot::*which) {
    return sensors ? (*sensors).*which : std::nullopt;
  };
  Lines lines(terminal, width);
  addCPU(lines, terminal, snapshot.cpu, known, celsius(&SensorsSnapshot::cpuCelsius));
  addMemory(lines, snapshot.memory, known.has(KnownPart::memory));
  addTraffic(lines, snapshot, known);
  addGraphics(lines, snapshot.gpu, known, celsius(&SensorsSnapshot::gpuCelsius));
  addPower(lines, snapshot.battery, known);
  addVolumes(lines, snapshot.disk.volumes, known.has(KnownPart::volumes));
  return lines.take();
}

} // namespace korvell
