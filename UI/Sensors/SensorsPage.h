#pragma once
// What the page of temperatures and fans shows.

#include "App/Model.h"
#include "App/TemperatureUnit.h"
#include "UI/Kit/Figure.h"
#include "UI/Kit/Token.h"

#include <optional>
#include <string>
#include <vector>

namespace korvell {

struct SensorsPage {
  /// Of the processor, the graphics processor or the chip that holds both.
  struct Lead {
    std::string caption;
    Figure figure;
    bool operator==(const Lead&) const = default;
  };
  /// A sensor, or a fan.
  struct Row {
    std::string name;
    std::optional<double> level{}; ///< from 0 to 1 of its bar; absent without a range
    Token fill = Token::gray;
    std::string least{}, most{}; ///< the ends of the bar; empty where they are the same for all
    Figure figure;
    std::string spoken;
    bool operator==(const Row&) const = default;
  };
  struct Group {
    std::string title;
    std::vector<Row> rows;
    bool operator==(const Group&) const = default;
  };

  bool isMeasured = false; ///< false until they were looked for
  std::string summary;     ///< "24 sensors, 3 fans"; empty without any
  std::vector<Lead> leads;
  std::vector<Group> groups; ///< the fans, then the temperatures by chip
  bool operator==(const SensorsPage&) const = default;
};

/// The ends of the bars of temperatures, in degrees Celsius.
inline constexpr double coldestShown = 20, hottestShown = 110;

SensorsPage sensorsPage(const Model& model, TemperatureUnit unit);

} // namespace korvell
