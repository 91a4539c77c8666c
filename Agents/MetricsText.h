#pragma once
// Figures in the exposition formats that scrapers read: Prometheus' text format 0.0.4 and OpenMetrics 1.0.
//
// Names are "korvell_", what it is, and the unit in which it is told: base units only, whatever unit the
// figure itself has (a percentage becomes a ratio from 0 to 1). Label values are strangers' names: repaired,
// without control characters, cut, and escaped.

#include "Base/Record.h"
#include "Base/Unit.h"

#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvell {

enum class MetricsFormat { prometheus, openMetrics };

/// The raw values are the formats' media types.
template <>
struct EnumTable<MetricsFormat> {
  using enum MetricsFormat;
  static constexpr EnumCase<MetricsFormat> cases[] = {
      {prometheus, "text/plain; version=0.0.4; charset=utf-8", "Prometheus"},
      {openMetrics, "application/openmetrics-text; version=1.0.0; charset=utf-8", "OpenMetrics"}};
};

class MetricsText {
public:
  enum class Type { gauge, counter, info };
  using Labels = std::vector<std::pair<std::string_view, std::string>>;
  static constexpr int longestLabel = 120; ///< of a value, in columns

  explicit MetricsText(MetricsFormat format) : format_(format) {}

  /// Begins a family; its samples follow. A family without any is left out.
  void family(std::string_view name, Type type, Unit unit, std::string_view help);
  /// A label's value as it is told, but for the formats' quoting. Names that are one in it are one series.
  static std::string labelText(std::string_view text);

  /// In the family's unit; a counter's running total. Of one series the first is told: one that came twice
  /// would spoil the whole answer.
  void sample(double value, const Labels& labels = {});
  /// A family of one sample.
  void gauge(std::string_view name, Unit unit, std::string_view help, double value) {
    family(name, Type::gauge, unit, help);
    sample(value);
  }
  /// All of it, with what ends it.
  std::string finish() &&;

private:
  void beginFamily();

  MetricsFormat format_;
  std::string text_;
  std::string name_, help_; ///< of the family, with its unit
  std::string_view unit_;   ///< its suffix; empty for none
  double factor_ = 1;
  Type type_ = Type::gauge;
  bool isBegun_ = false;
  std::set<std::string> told_; ///< the family's series
};

/// The unit that a record names for one of its fields.
template <class T, class M>
constexpr Unit unitOf(M T::*member) {
  Unit unit = Unit::none;
  const auto look = [&](const auto& field) {
    if constexpr (std::is_same_v<std::remove_cvref_t<decltype(field.member)>, M T::*>)
      if (field.member == member) unit = field.unit;
  };
  std::apply([&](const auto&... field) { (look(field), ...); }, T::fields());
  return unit;
}

} // namespace korvell
