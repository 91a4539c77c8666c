#include "Base/Format.h"

#include "Base/Localization.h"

#include <array>
#include <cmath>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::array<const char*, 7> units = {"B", "KB", "MB", "GB", "TB", "PB", "EB"};

/// Rounded to that many decimals, half a unit away from zero as on paper: 9.995 is a little less than that
/// as a binary fraction, which the nudge makes up for.
double rounded(double amount, int decimals) {
  const double scale = std::pow(10.0, decimals);
  return std::round(amount * scale * (1 + 1e-12)) / scale;
}

const NumberStyle& style() { return currentLanguage().numbers; }

/// "-1.5" as the language writes it. Not for texts that have more than one point.
std::string styled(std::string number) {
  if (const auto point = number.find('.'); point != std::string::npos)
    number.replace(point, 1, style().decimal);
  return number;
}

/// With its sign, "%" or a degree.
std::string withSign(const std::string& number, std::string_view sign) {
  return fmt::format("{}{}{}", number, style().beforePercent, sign);
}

/// The number of decimals that a rule gives to an amount, decided on the amount as it will be printed.
struct Decimals {
  int below10;
  int below100;
};

int decimalsFor(double amount, Decimals rule) {
  if (rounded(amount, rule.below10) < 10) return rule.below10;
  if (rounded(amount, rule.below100) < 100) return rule.below100;
  return 0;
}

std::string scaled(double value, double step, Decimals rule, std::string_view suffix) {
  if (!std::isfinite(value)) return noFigure;
  const char* sign = value < 0 ? "-" : "";
  double amount = std::fabs(value);
  size_t unit = 0;
  // What would be printed as a whole step belongs to the next unit.
  while (unit + 1 < units.size() && std::round(amount) >= step) {
    amount /= step;
    ++unit;
  }
  if (unit == 0) {
    if (std::round(amount) == 0) sign = "";
    return fmt::format("{}{:.0f} B{}", sign, std::round(amount), suffix);
  }
  const int decimals = decimalsFor(amount, rule);
  return fmt::format("{}{} {}{}", sign, Format::decimal(rounded(amount, decimals), decimals), units[unit],
                     suffix);
}

} // namespace

std::string Format::memory(double bytes) { return scaled(bytes, 1024, {2, 1}, ""); }
std::string Format::bytes(double bytes) { return scaled(bytes, 1000, {2, 1}, ""); }
std::string Format::rate(double bytesPerSecond) { return scaled(bytesPerSecond, 1000, {1, 0}, "/s"); }

std::string Format::decimal(double number, int decimals) {
  return std::isfinite(number) ? styled(fmt::format("{:.{}f}", number, decimals)) : noFigure;
}

std::string Format::percent(double percent) {
  if (!std::isfinite(percent)) return noFigure;
  return withSign(decimal(std::round(percent) + 0.0, 0), "%");
}

std::string Format::watts(double watts) {
  if (!std::isfinite(watts)) return noFigure;
  return decimal(watts, std::fabs(watts) < 99.95 ? 1 : 0) + " W";
}

std::string Format::celsius(double celsius) {
  if (!std::isfinite(celsius)) return noFigure;
  return withSign(decimal(std::round(celsius) + 0.0, 0), "°C");
}

std::string Format::duration(Seconds span) {
  if (std::isnan(span.count())) return noFigure;
  const auto minutes = std::int64_t(std::fmax(0.0, std::fmin(span.count(), 1e15)) / 60);
  if (minutes >= 1440 && minutes < 2880) return localized("1 day");
  if (minutes >= 1440) return localized("{n} days", {{"n", std::to_string(minutes / 1440)}});
  if (minutes >= 60)
    return localized("{h} h {m} min",
                     {{"h", std::to_string(minutes / 60)}, {"m", std::to_string(minutes % 60)}});
  return localized("{m} min", {{"m", std::to_string(minutes)}});
}

std::string Format::grouped(std::int64_t number) {
  std::string digits = std::to_string(number);
  for (auto i = std::ptrdiff_t(digits.size()) - 3; i > (number < 0 ? 1 : 0); i -= 3)
    digits.insert(size_t(i), style().group);
  return digits;
}

std::string Format::dollars(double dollars) {
  if (!std::isfinite(dollars)) return noFigure;
  const auto cents = std::int64_t(std::llround(std::fmin(std::fabs(dollars) * 100, 9e18)));
  const auto amount = fmt::format("{}{}{:02}", grouped(cents / 100), style().decimal, cents % 100);
  const auto* sign = dollars < 0 && cents > 0 ? "-" : "";
  return style().hasDollarBehind ? fmt::format("{}{} $", sign, amount) : fmt::format("{}${}", sign, amount);
}

std::string Format::shortCount(std::int64_t number) {
  constexpr std::array suffixes = {"", "{n}K", "{n}M", "{n}B", "{n}T", "{n}Q"};
  double amount = std::fabs(double(number));
  std::size_t suffix = 0;
  // 999,950 would be printed as "1000K".
  while (suffix + 1 < suffixes.size() && std::round(amount) >= 1000) {
    amount /= 1000;
    ++suffix;
  }
  const int decimals = suffix > 0 ? decimalsFor(amount, {1, 1}) : 0;
  const auto shown = (number < 0 ? "-" : "") + decimal(rounded(amount, decimals), decimals);
  return suffix > 0 ? localized(suffixes[suffix], {{"n", shown}}) : shown;
}

std::string Format::figure(Unit unit, double value) {
  switch (unit) {
  case Unit::memory:
    return memory(value);
  case Unit::bytes:
    return bytes(value);
  case Unit::bytesPerSecond:
    return rate(value);
  case Unit::percent:
    return percent(value);
  case Unit::corePercent:
    return std::isfinite(value) ? withSign(decimal(value, 1), "%") : noFigure;
  case Unit::celsius:
    return celsius(value);
  case Unit::watts:
    return watts(value);
  case Unit::minutes:
    return duration(std::chrono::duration<double, std::ratio<60>>(value));
  case Unit::dollars:
    return dollars(value);
  default:
    return decimal(value, 0);
  }
}

} // namespace korvell
