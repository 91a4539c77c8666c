#include "Agents/MetricsText.h"

#include "Base/Text.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

struct Told {
  Unit unit;
  std::string_view suffix;
  double factor = 1; ///< from the figure's unit to the one that is told
};

constexpr Told units[] = {
    {Unit::memory, "bytes"},
    {Unit::bytes, "bytes"},
    {Unit::bytesPerSecond, "bytes_per_second"},
    {Unit::percent, "ratio", 0.01},
    {Unit::corePercent, "cores", 0.01},
    {Unit::celsius, "celsius"},
    {Unit::watts, "watts"},
    {Unit::minutes, "seconds", 60},
    {Unit::seconds, "seconds"},
    {Unit::microseconds, "seconds", 1e-6},
    {Unit::revolutionsPerMinute, "revolutions_per_minute"},
    {Unit::dollars, "dollars"},
};

std::string_view typeName(MetricsText::Type type, MetricsFormat format) {
  switch (type) {
  case MetricsText::Type::counter:
    return "counter";
  case MetricsText::Type::info: // the older format has no such type
    return format == MetricsFormat::openMetrics ? "info" : "gauge";
  case MetricsText::Type::gauge:
    break;
  }
  return "gauge";
}

std::string_view nameEnd(MetricsText::Type type) {
  return type == MetricsText::Type::counter ? "_total" : type == MetricsText::Type::info ? "_info" : "";
}

std::string escaped(std::string_view text, bool isQuoted) {
  std::string result;
  for (const char c : text) {
    if (c == '\\' || (isQuoted && c == '"')) result += '\\';
    if (c == '\n')
      result += "\\n";
    else
      result += c;
  }
  return result;
}

std::string number(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "+Inf" : "-Inf";
  return fmt::format("{}", value);
}

} // namespace

std::string MetricsText::labelText(std::string_view text) {
  return truncatedToWidth(escapedControls(text), longestLabel);
}

void MetricsText::family(std::string_view name, Type type, Unit unit, std::string_view help) {
  const auto* told = std::ranges::find(units, unit, &Told::unit);
  const bool hasUnit = told != std::end(units);
  unit_ = hasUnit ? told->suffix : std::string_view();
  factor_ = hasUnit ? told->factor : 1;
  name_ = "korvell_" + std::string(name);
  if (hasUnit) name_.append("_").append(unit_);
  help_ = help;
  type_ = type;
  isBegun_ = false;
  told_.clear();
}

/// OpenMetrics calls a family by its name without the ending that its type gives the samples.
void MetricsText::beginFamily() {
  const auto end = format_ == MetricsFormat::openMetrics ? std::string_view() : nameEnd(type_);
  const auto name = name_ + std::string(end);
  text_ += fmt::format("# HELP {} {}\n", name, escaped(help_, format_ == MetricsFormat::openMetrics));
  text_ += fmt::format("# TYPE {} {}\n", name, typeName(type_, format_));
  if (format_ == MetricsFormat::openMetrics && !unit_.empty())
    text_ += fmt::format("# UNIT {} {}\n", name, unit_);
  isBegun_ = true;
}

void MetricsText::sample(double value, const Labels& labels) {
  std::string series;
  for (const auto& [name, text] : labels)
    series += fmt::format("{}{}=\"{}\"", series.empty() ? '{' : ',', name, escaped(labelText(text), true));
  if (!labels.empty()) series += '}';
  if (!told_.insert(series).second) return;
  if (!isBegun_) beginFamily();
  text_.append(name_).append(nameEnd(type_)).append(series);
  text_ += fmt::format(" {}\n", number(value * factor_));
}

std::string MetricsText::finish() && {
  if (format_ == MetricsFormat::openMetrics) text_ += "# EOF\n";
  return std::move(text_);
}

} // namespace korvell
