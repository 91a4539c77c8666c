// The tool "sensors".

#include "Agents/ReadingTools.h"

namespace korvell {

namespace {

constexpr std::int64_t usualSensors = 40, mostSensors = 200;

struct SensorsAnswer {
  std::optional<double> cpuCelsius, gpuCelsius, socCelsius;
  std::vector<TemperatureReading> temperatures; ///< by kind, then by name
  std::optional<std::string> nextCursor;        ///< of the temperatures
  std::vector<FanReading> fans;
  std::vector<PeripheralBattery> peripherals;
  FigureSource source;

  static constexpr auto fields() {
    return std::tuple{Field{"cpuCelsius", &SensorsAnswer::cpuCelsius, Unit::celsius},
                      Field{"gpuCelsius", &SensorsAnswer::gpuCelsius, Unit::celsius},
                      Field{"socCelsius", &SensorsAnswer::socCelsius, Unit::celsius},
                      Field{"temperatures", &SensorsAnswer::temperatures},
                      Field{"nextCursor", &SensorsAnswer::nextCursor},
                      Field{"fans", &SensorsAnswer::fans},
                      Field{"peripherals", &SensorsAnswer::peripherals},
                      Field{"source", &SensorsAnswer::source}};
  }
};

Result<Value> readSensors(Readings& readings, const Value& arguments, const Cancellation&) {
  const auto page = ResultPage::of(arguments, usualSensors);
  if (!page) return Failure{page.reason()};
  Reading reading(readings, {"sensors", "peripherals"});
  const auto sensors = reading.sensors().value_or(SensorsSnapshot());
  return toValue(SensorsAnswer{sensors.cpuCelsius, sensors.gpuCelsius, sensors.socCelsius,
                               page->cut(sensors.temperatures), page->next(sensors.temperatures.size()),
                               sensors.fans, reading.peripherals(), reading.source()});
}

} // namespace

ReadingTool sensorsTool() {
  return {
      "sensors",
      "Sensors",
      "Temperatures by chip, fans, and the batteries of mice, keyboards and headphones. A sensor is a place "
      "on a chip; the processor's own temperature is told where a sensor's name says so.",
      schema::object({ResultPage::limit(mostSensors, usualSensors), ResultPage::cursor()}),
      schema::of<SensorsAnswer>(),
      readSensors};
}

} // namespace korvell
