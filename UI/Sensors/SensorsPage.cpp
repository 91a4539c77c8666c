#include "UI/Sensors/SensorsPage.h"

#include "Base/Format.h"
#include "Base/Localization.h"
#include "UI/Parts/Figures.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

using Page = SensorsPage;

double level(double value, double least, double most) {
  return std::clamp((value - least) / (most - least), 0.0, 1.0);
}

Token fillOf(SensorKind kind) {
  switch (kind) {
  case SensorKind::cpu:
    return Token::cpu;
  case SensorKind::gpu:
    return Token::gpu;
  case SensorKind::soc:
    return Token::memory;
  case SensorKind::other:
    break;
  }
  return Token::gray;
}

Page::Row rowOf(const TemperatureReading& reading, TemperatureUnit unit) {
  const auto text = temperatureText(reading.celsius, unit);
  return {.name = reading.name,
          .level = level(reading.celsius, coldestShown, hottestShown),
          .fill = fillOf(reading.kind),
          .figure = figureOf(text),
          .spoken = reading.name + ", " + text};
}

Page::Row rowOf(const FanReading& fan) {
  const auto speed = Format::grouped(std::llround(fan.rpm));
  Page::Row row{.name = fan.name, .fill = Token::accent, .figure = {speed, localized("rpm")}};
  row.spoken = localized("{name}, {rpm} revolutions a minute", {{"name", fan.name}, {"rpm", speed}});
  if (fan.maxRPM <= fan.minRPM) return row;
  row.level = level(fan.rpm, fan.minRPM, fan.maxRPM);
  row.least = Format::grouped(std::llround(fan.minRPM));
  row.most = Format::grouped(std::llround(fan.maxRPM));
  return row;
}

void addTemperatures(Page& page, const std::vector<TemperatureReading>& readings, TemperatureUnit unit) {
  const auto first = page.groups.size();
  for (const auto& reading : readings) {
    // Where the system names sensors alone, by what they measure.
    auto heading = reading.chip.value_or(title(reading.kind));
    auto group = std::find_if(page.groups.begin() + std::ptrdiff_t(first), page.groups.end(),
                              [&](const Page::Group& each) { return each.title == heading; });
    if (group == page.groups.end())
      group = page.groups.insert(page.groups.end(), Page::Group{std::move(heading), {}});
    group->rows.push_back(rowOf(reading, unit));
  }
}

} // namespace

SensorsPage sensorsPage(const Model& model, TemperatureUnit unit) {
  const auto& read = *model.sensors;
  Page page{.isMeasured = read.has_value()};
  if (!read) return page;
  const auto lead = [&](SensorKind kind, const std::optional<double>& celsius) {
    if (celsius) page.leads.push_back({title(kind), figureOf(temperatureText(*celsius, unit))});
  };
  lead(SensorKind::cpu, read->cpuCelsius);
  lead(SensorKind::gpu, read->gpuCelsius);
  lead(SensorKind::soc, read->socCelsius);
  if (!read->fans.empty()) {
    page.groups.push_back({localized("Fans"), {}});
    for (const auto& fan : read->fans) page.groups.back().rows.push_back(rowOf(fan));
  }
  addTemperatures(page, read->temperatures, unit);
  const auto tell = [&](std::size_t count, std::string_view one, std::string_view many) {
    if (count == 0) return;
    page.summary += (page.summary.empty() ? "" : ", ") + counted(std::int64_t(count), one, many);
  };
  tell(read->temperatures.size(), "1 sensor", "{n} sensors");
  tell(read->fans.size(), "1 fan", "{n} fans");
  return page;
}

} // namespace korvell
