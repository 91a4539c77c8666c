#include "App/TimeArgument.h"

#include "Base/Text.h"

namespace korvell {

namespace {

struct TimeOfDay {
  int hour, minute;
};

std::optional<TimeOfDay> timeOfDay(std::string_view text) {
  const auto parts = split(text, ':');
  if (parts.size() != 2 || parts[1].size() != 2) return std::nullopt;
  const auto hour = parseInteger<int>(parts[0]), minute = parseInteger<int>(parts[1]);
  if (!hour || !minute || *hour < 0 || *hour > 23 || *minute < 0 || *minute > 59) return std::nullopt;
  return TimeOfDay{*hour, *minute};
}

std::optional<CalendarDay> calendarDay(std::string_view text) {
  const auto parts = split(text, '-');
  if (parts.size() != 3 || parts[0].size() != 4 || parts[1].size() != 2 || parts[2].size() != 2)
    return std::nullopt;
  const auto year = parseInteger<int>(parts[0]), month = parseInteger<int>(parts[1]),
             day = parseInteger<int>(parts[2]);
  if (!year || !month || !day || *month < 1 || *month > 12 || *day < 1 || *day > 31) return std::nullopt;
  return CalendarDay::of(*year, *month, *day);
}

/// A day of a changing clock is longer or shorter than its times of day, so the zone is asked at the time.
Date instantOf(CalendarDay day, TimeOfDay time, const TimeZone& zone) {
  const auto asIfGMT = day.number * 86'400 + time.hour * 3600 + time.minute * 60;
  auto instant = asIfGMT - zone.secondsFromGMT(asIfGMT);
  instant = asIfGMT - zone.secondsFromGMT(instant);
  return Date{double(instant)};
}

} // namespace

std::optional<Date> parseTimeArgument(std::string_view text, const TimeZone& zone, Date now) {
  if (const auto time = timeOfDay(text)) {
    const auto today = localDay(zone, now);
    const auto instant = instantOf(today, *time, zone);
    return instant <= now ? instant : instantOf(today + -1, *time, zone);
  }
  if (const auto space = text.find(' '); space != std::string_view::npos) {
    const auto day = calendarDay(text.substr(0, space));
    const auto time = timeOfDay(text.substr(space + 1));
    if (day && time) return instantOf(*day, *time, zone);
    return std::nullopt;
  }
  return parseRFC3339(text);
}

} // namespace korvell
