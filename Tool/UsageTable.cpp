#include "Tool/UsageTable.h"

#include "Base/Format.h"
#include "Base/Text.h"
#include "Core/Machine/CPUScale.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int figureWidth = 11;
constexpr int narrowestName = 12;
constexpr int barestName = 5; ///< beside a single figure
constexpr int roomyName = 24;
constexpr int longestID = 7;   ///< digits of the largest process id
constexpr double busyCPU = 90; ///< percent of one core

std::string padded(std::string text, int width, bool right) {
  const auto missing = static_cast<std::size_t>(std::max(0, width - displayWidth(text)));
  return right ? std::string(missing, ' ') + text : std::move(text) + std::string(missing, ' ');
}

/// Where nothing happens nothing stands, but for CPU and memory: a column of zeros hides the figures that
/// matter.
std::string figureText(UsageKey key, double value) {
  switch (key) {
  case UsageKey::cpu:
    return Format::figure(Unit::corePercent, value);
  case UsageKey::memory:
    return Format::memory(value);
  case UsageKey::disk:
  case UsageKey::network:
    return value > 0 ? Format::rate(value) : "";
  case UsageKey::energy:
    break;
  }
  return value > 0 ? Format::watts(value) : "";
}

std::vector<UsageKey> columnsWithin(int width, UsageKey sortedBy, bool energy) {
  std::vector<UsageKey> keys;
  for (const auto& key : allCases<UsageKey>())
    if (energy || key.value != UsageKey::energy) keys.push_back(key.value);
  const auto isTooWide = [&] { return narrowestName + figureWidth * int(keys.size()) > width; };
  while (keys.size() > 1 && isTooWide()) keys.erase(keys.end() - (keys.back() == sortedBy ? 2 : 1));
  if (width < barestName + figureWidth) keys.clear();
  return keys;
}

} // namespace

UsageTable::UsageTable(const Terminal& terminal, int width, UsageKey sortedBy, const KnownParts& known,
                       bool energyIsEstimate)
    : terminal_(terminal), sortedBy_(sortedBy), energyIsEstimate_(energyIsEstimate),
      hasTraffic_(known.has(KnownPart::processTraffic)),
      shown_(columnsWithin(width, sortedBy, known.has(KnownPart::processEnergy))),
      nameWidth_(std::max(1, width - figureWidth * int(shown_.size()))) {}

std::string UsageTable::titles(std::string_view first) const {
  auto line = terminal_.ink(Ink::dim, padded(truncatedToWidth(first, nameWidth_), nameWidth_, false));
  for (const auto key : shown_) {
    auto text = key == UsageKey::cpu ? cpuColumnTitle(CPUScale::core) : title(key);
    if (key == UsageKey::energy && energyIsEstimate_) text = localized("~Energy");
    const bool sorted = key == sortedBy_;
    if (sorted) text = "▾ " + text; // not every terminal and eye tells bold from plain
    line += terminal_.ink(sorted ? Ink::bold : Ink::dim, padded(std::move(text), figureWidth, true));
  }
  return line;
}

std::string UsageTable::line(const AppUsage& app, bool selected, std::string_view mark) const {
  auto name = std::string(mark) + escapedControls(app.name);
  if (app.processes.size() > 1) name += fmt::format(" ({})", app.processes.size());
  return line(name, app, selected);
}

std::string UsageTable::line(const ProcessUsage& process, bool selected, std::string_view mark) const {
  const int idWidth = nameWidth_ >= roomyName ? longestID : 0;
  const auto name = fmt::format("{}{:<{}} {}", mark, process.pid, idWidth, escapedControls(process.name));
  return line(name, process, selected);
}

template <class T>
std::string UsageTable::line(std::string_view name, const T& used, bool selected) const {
  auto line = padded(truncatedToWidth(name, std::max(1, nameWidth_ - 1)), nameWidth_, false);
  if (selected) line = terminal_.ink(Ink::accent, line);
  for (const auto key : shown_) {
    const double value = usageValue(key, used);
    const bool isKnown = key != UsageKey::network || hasTraffic_;
    const auto text = padded(isKnown ? figureText(key, value) : noFigure, figureWidth, true);
    line += key == UsageKey::cpu && value >= busyCPU ? terminal_.ink(Ink::warning, text) : text;
  }
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

} // namespace korvell
