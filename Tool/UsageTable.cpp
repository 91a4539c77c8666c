#include "Tool/UsageTable.h"

#include "Base/Format.h"
#include "Base/Text.h"

#include <algorithm>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr int figureWidth = 11;
constexpr int narrowestName = 12;
constexpr int roomyName = 24;
constexpr int longestID = 7;   ///< digits of the largest process id
constexpr double busyCPU = 90; ///< percent of one core

std::string padded(std::string text, int width, bool right) {
  const auto missing = static_cast<std::size_t>(std::max(0, width - displayWidth(text)));
  return right ? std::string(missing, ' ') + text : std::move(text) + std::string(missing, ' ');
}

/// Nothing stands where nothing happens: a column of zeros hides the figures that matter.
std::string orBlank(double value, std::string (*format)(double)) { return value > 0 ? format(value) : ""; }

} // namespace

bool showsEnergy(const std::vector<AppUsage>& apps) {
  return std::any_of(apps.begin(), apps.end(), [](const AppUsage& app) { return app.power() > 0; });
}

int UsageTable::nameWidth() const {
  return std::max(narrowestName, width_ - figureWidth * (energy_ ? 5 : 4));
}

std::string UsageTable::titles(std::string_view first, UsageKey sortedBy) const {
  auto line = terminal_.ink(Ink::dim, padded(truncatedToWidth(first, nameWidth()), nameWidth(), false));
  for (const auto& key : allCases<UsageKey>()) {
    if (key.value == UsageKey::energy && !energy_) continue;
    auto text = title(key.value);
    if (key.value == UsageKey::energy && energyIsEstimate_) text = localized("~Energy");
    const bool sorted = key.value == sortedBy;
    line += terminal_.ink(sorted ? Ink::bold : Ink::dim, padded(std::move(text), figureWidth, true));
  }
  return line;
}

std::string UsageTable::line(const AppUsage& app, bool selected, std::string_view mark) const {
  auto name = std::string(mark) + escapedControls(app.name);
  if (app.processes.size() > 1) name += fmt::format(" ({})", app.processes.size());
  return line(name,
              {app.cpu(), double(app.memory()), app.diskRead() + app.diskWrite(), app.netIn() + app.netOut(),
               app.power()},
              selected);
}

std::string UsageTable::line(const ProcessUsage& process, bool selected, std::string_view mark) const {
  const int idWidth = nameWidth() >= roomyName ? longestID : 0;
  const auto name = fmt::format("{}{:<{}} {}", mark, process.pid, idWidth, escapedControls(process.name));
  return line(name,
              {process.cpu, double(process.memory), process.diskRead + process.diskWrite,
               process.netIn + process.netOut, process.power},
              selected);
}

std::string UsageTable::line(std::string_view name, const Figures& figures, bool selected) const {
  auto line = padded(truncatedToWidth(name, nameWidth() - 1), nameWidth(), false);
  if (selected) line = terminal_.ink(Ink::accent, line);
  const auto cpu = padded(fmt::format("{:.1f}%", figures.cpu), figureWidth, true);
  line += figures.cpu >= busyCPU ? terminal_.ink(Ink::warning, cpu) : cpu;
  line += padded(Format::memory(figures.memory), figureWidth, true);
  line += padded(orBlank(figures.disk, Format::rate), figureWidth, true);
  line += padded(orBlank(figures.network, Format::rate), figureWidth, true);
  if (energy_) line += padded(orBlank(figures.power, Format::watts), figureWidth, true);
  line.erase(line.find_last_not_of(' ') + 1);
  return line;
}

} // namespace korvell
