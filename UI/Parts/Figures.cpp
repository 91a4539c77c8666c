#include "UI/Parts/Figures.h"

#include "Base/Localization.h"

namespace korvell {

Figure figureOf(std::string_view formatted) {
  const auto end = formatted.find_last_of("0123456789");
  if (end == std::string_view::npos) return {std::string(formatted), {}};
  auto unit = formatted.substr(end + 1);
  const auto beforePercent = currentLanguage().numbers.beforePercent;
  if (unit.starts_with(' '))
    unit.remove_prefix(1);
  else if (unit.starts_with(beforePercent))
    unit.remove_prefix(beforePercent.size());
  return {std::string(formatted.substr(0, end + 1)), std::string(unit)};
}

Figure figureOf(Unit unit, std::optional<double> value) {
  return value ? figureOf(Format::figure(unit, *value)) : Figure{noFigure, {}};
}

std::string dayWords(const TimeZone& zone, Date date, Date now) {
  constexpr std::int64_t week = 7;
  const auto age = localDay(zone, now).number - localDay(zone, date).number;
  if (age == 0) return localized("Today");
  if (age == 1) return localized("Yesterday");
  const bool isRecent = age > 0 && age < week;
  return isRecent ? weekdayName(localTime(zone, date).weekday) : shownDay(localDay(zone, date));
}

std::string dayAndTime(const TimeZone& zone, Date date, Date now) {
  return localized("{day}, {time}", {{"day", dayWords(zone, date, now)}, {"time", clockText(zone, date)}});
}

std::string counted(std::int64_t count, std::string_view one, std::string_view many) {
  return count == 1 ? localized(one) : localized(many, {{"n", std::to_string(count)}});
}

} // namespace korvell
