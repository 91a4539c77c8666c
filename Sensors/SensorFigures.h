#pragma once
// Which of many sensors tell the temperature of the processor, the graphics processor and the chip that holds
// both: tables, one for each way in which sensors are named, in an order of preference.

#include "Sensors/SensorsSnapshot.h"

#include <span>
#include <string_view>
#include <vector>

namespace korvell {

/// A row of a table of preference. Rows of one kind and rank count together; of a kind the lowest rank that
/// has a reading decides. Patterns are whole texts with at most one "*", which stands for anything.
struct FigureRow {
  SensorKind kind;
  int rank;
  std::string_view driver; ///< underscores stand for hyphens too
  std::string_view label;
};

/// The sensors of Linux drivers.
extern const std::span<const FigureRow> linuxFigures;
/// The names of a Mac's event system; the driver is empty.
extern const std::span<const FigureRow> eventFigures;
/// The names of `controllerKeys`; the driver is empty.
extern const std::span<const FigureRow> controllerFigures;

/// A temperature of a Mac's controller.
struct ControllerKey {
  std::string_view key;
  std::string_view name;
};
extern const std::span<const ControllerKey> controllerKeys;

struct SensorPlace {
  std::string_view driver;
  std::string_view label;
  double celsius = 0;
};

/// The kind of the first row that names it; other when none does.
SensorKind sensorKind(const SensorPlace& place, std::span<const FigureRow> table);
/// Of the first row of a kind that names it; nothing when none does.
std::optional<int> figureRank(SensorKind kind, const SensorPlace& place, std::span<const FigureRow> table);
/// The mean of those that the best rank of a kind names; nothing when none is named.
std::optional<double> figure(SensorKind kind, std::span<const SensorPlace> places,
                             std::span<const FigureRow> table);

/// The mean of the readings of the lowest rank so far.
class BestRanked {
public:
  void add(int rank, double celsius);
  std::optional<double> mean() const;

private:
  int rank_ = 0, count_ = 0;
  double sum_ = 0;
};

/// By kind, then by name as people count, then by chip.
bool standsBefore(const TemperatureReading& a, const TemperatureReading& b);

} // namespace korvell
