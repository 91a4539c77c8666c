#include "Sensors/SensorFigures.h"

#include "Sensors/NaturalOrder.h"

#include <algorithm>

namespace korvell {

namespace {

using enum SensorKind;

constexpr FigureRow linuxRows[] = {
    // The whole package, as the processor itself tells it. AMD's Tctl may lie above the true Tdie on purpose.
    {cpu, 0, "coretemp", "Package id*"},
    {cpu, 0, "k10temp", "Tdie"},
    {cpu, 0, "zenpower", "Tdie"},
    {cpu, 1, "k10temp", "Tctl"},
    {cpu, 1, "zenpower", "Tctl"},
    {cpu, 1, "k10temp", ""},
    // Boards with a device tree name their zones after what lies there.
    {cpu, 2, "cpu*thermal", "*"},
    {cpu, 2, "cpuss*", "*"},
    {cpu, 2, "cluster*thermal", "*"},
    {cpu, 2, "bigcore*thermal", "*"},
    {cpu, 2, "littlecore*thermal", "*"},
    // Old processors tell their cores only.
    {cpu, 3, "coretemp", "Core *"},
    {cpu, 3, "k8temp", "*"},
    {cpu, 3, "via_cputemp", "*"},
    {cpu, 4, "x86_pkg_temp", "*"},
    {cpu, 5, "TCPU", "*"},
    {cpu, 6, "applesmc", "TC0D"},
    {cpu, 7, "applesmc", "TC0P"},
    // What the board measures beside the socket: the last resort.
    {cpu, 8, "*", "CPU*"},

    // A card of its own before graphics in the processor.
    {gpu, 0, "nvidia", "*"},
    {gpu, 1, "amdgpu", "edge"},
    {gpu, 2, "amdgpu", "junction"},
    {gpu, 3, "nouveau", "*"},
    {gpu, 4, "radeon", "*"},
    {gpu, 5, "xe", "pkg"},
    {gpu, 6, "i915", "*"},
    {gpu, 7, "gpu*thermal", "*"},
    {gpu, 8, "applesmc", "TG0D"},
    {gpu, 9, "*", "GPU*"},

    {soc, 0, "soc*thermal", "*"},
    {soc, 0, "soc_dts*", "*"},
    {soc, 1, "center_thermal", "*"},
};

constexpr FigureRow eventRows[] = {
    {cpu, 0, "", "pACC MTR*"}, {cpu, 0, "", "eACC MTR*"}, {cpu, 1, "", "PMU tdie*"},
    {gpu, 0, "", "GPU MTR*"},  {soc, 0, "", "SOC MTR*"},
};

constexpr FigureRow controllerRows[] = {
    {cpu, 0, "", "CPU Die"},       {cpu, 1, "", "CPU Proximity"}, {cpu, 2, "", "CPU*"},
    {gpu, 0, "", "GPU Proximity"}, {gpu, 1, "", "GPU Die"},
};

constexpr ControllerKey keys[] = {
    {"TC0P", "CPU Proximity"},
    {"TC0D", "CPU Die"},
    {"TC0E", "CPU Die (E)"},
    {"TC0F", "CPU Die (F)"},
    {"TC1C", "CPU Core 1"},
    {"TC2C", "CPU Core 2"},
    {"TC3C", "CPU Core 3"},
    {"TC4C", "CPU Core 4"},
    {"TG0P", "GPU Proximity"},
    {"TG0D", "GPU Die"},
    {"TA0P", "Ambient"},
    {"Tm0P", "Mainboard"},
    {"TPCD", "Platform Controller Hub"},
    {"TB0T", "Battery"},
};

char folded(char c) { return c == '-' ? '_' : c; }
bool areSame(std::string_view a, std::string_view b) { return std::ranges::equal(a, b, {}, folded, folded); }

bool matches(std::string_view pattern, std::string_view text) {
  const auto star = pattern.find('*');
  if (star == std::string_view::npos) return areSame(pattern, text);
  const auto before = pattern.substr(0, star), after = pattern.substr(star + 1);
  return text.size() >= before.size() + after.size() && areSame(before, text.substr(0, before.size())) &&
         areSame(after, text.substr(text.size() - after.size()));
}

bool names(const FigureRow& row, const SensorPlace& place) {
  return matches(row.driver, place.driver) && matches(row.label, place.label);
}

} // namespace

const std::span<const FigureRow> linuxFigures = linuxRows;
const std::span<const FigureRow> eventFigures = eventRows;
const std::span<const FigureRow> controllerFigures = controllerRows;
const std::span<const ControllerKey> controllerKeys = keys;

SensorKind sensorKind(const SensorPlace& place, std::span<const FigureRow> table) {
  for (const auto& row : table)
    if (names(row, place)) return row.kind;
  return other;
}

std::optional<int> figureRank(SensorKind kind, const SensorPlace& place, std::span<const FigureRow> table) {
  for (const auto& row : table)
    if (row.kind == kind && names(row, place)) return row.rank;
  return std::nullopt;
}

std::optional<double> figure(SensorKind kind, std::span<const SensorPlace> places,
                             std::span<const FigureRow> table) {
  BestRanked best;
  for (const auto& place : places)
    if (const auto rank = figureRank(kind, place, table)) best.add(*rank, place.celsius);
  return best.mean();
}

void BestRanked::add(int rank, double celsius) {
  if (count_ > 0 && rank > rank_) return;
  if (count_ == 0 || rank < rank_) {
    sum_ = 0;
    count_ = 0;
  }
  rank_ = rank;
  sum_ += celsius;
  ++count_;
}

std::optional<double> BestRanked::mean() const {
  return count_ > 0 ? std::optional(sum_ / count_) : std::nullopt;
}

bool standsBefore(const TemperatureReading& a, const TemperatureReading& b) {
  if (a.kind != b.kind) return a.kind < b.kind;
  if (a.name != b.name) return comesNaturallyBefore(a.name, b.name);
  return comesNaturallyBefore(a.chip.value_or(""), b.chip.value_or(""));
}

} // namespace korvell
