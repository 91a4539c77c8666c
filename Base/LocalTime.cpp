#include "Base/LocalTime.h"

#include "Base/Localization.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <ctime>
#include <fmt/format.h>

namespace korvell {

namespace {

constexpr std::int64_t secondsADay = 86'400;

constexpr std::int64_t floorDivide(std::int64_t a, std::int64_t b) {
  return a / b - (a % b != 0 && (a < 0) != (b < 0));
}

struct YearMonthDay {
  std::int64_t year;
  int month, day;
};

// Years that begin in March put the leap day last; 400 of them are one era of 146,097 days.
YearMonthDay yearMonthDay(CalendarDay calendarDay) {
  const std::int64_t z = calendarDay.number + 719'468;
  const std::int64_t era = floorDivide(z, 146'097);
  const std::int64_t dayOfEra = z - era * 146'097;
  const std::int64_t yearOfEra = (dayOfEra - dayOfEra / 1'460 + dayOfEra / 36'524 - dayOfEra / 146'096) / 365;
  const std::int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const std::int64_t shifted = (5 * dayOfYear + 2) / 153;
  const int month = int(shifted < 10 ? shifted + 3 : shifted - 9);
  return {yearOfEra + era * 400 + (month <= 2), month, int(dayOfYear - (153 * shifted + 2) / 5 + 1)};
}

// Instants come from files too; three million years either way keep the arithmetic in range.
std::int64_t wholeSeconds(Date date) {
  if (std::isnan(date.sinceEpoch)) return 0;
  return std::int64_t(std::clamp(std::floor(date.sinceEpoch), -1e14, 1e14));
}

std::atomic<HourCycle> chosenCycle = HourCycle::from0To23;

int hourOfHalfDay(const LocalTime& time) { return time.hour % 12 == 0 ? 12 : time.hour % 12; }
std::string halfOfDay(const LocalTime& time) { return localized(time.hour < 12 ? "AM" : "PM"); }

} // namespace

SystemTimeZone::SystemTimeZone() { reload(); }
void SystemTimeZone::reload() { tzset(); }

int SystemTimeZone::secondsFromGMT(std::int64_t instant) const {
  const std::time_t time = std::time_t(instant);
  std::tm local{};
  return localtime_r(&time, &local) ? int(local.tm_gmtoff) : 0;
}

CalendarDay CalendarDay::of(std::int64_t year, std::int64_t month, std::int64_t day) {
  year += floorDivide(month - 1, 12);
  month = month - 1 - floorDivide(month - 1, 12) * 12 + 1;
  year -= month <= 2;
  const std::int64_t era = floorDivide(year, 400);
  const std::int64_t yearOfEra = year - era * 400;
  const std::int64_t dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5;
  const std::int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
  return {era * 146'097 + dayOfEra - 719'468 + day - 1};
}

LocalTime localTime(const TimeZone& zone, Date date) {
  const std::int64_t utc = wholeSeconds(date);
  const std::int64_t local = utc + zone.secondsFromGMT(utc);
  const std::int64_t days = floorDivide(local, secondsADay);
  const int second = int(local - days * secondsADay);
  const auto [year, month, day] = yearMonthDay({days});
  const int weekday = int(days + 4 - floorDivide(days + 4, 7) * 7);
  return {year, month, day, weekday, second / 3'600, second / 60 % 60, second % 60};
}

CalendarDay localDay(const TimeZone& zone, Date date) {
  const std::int64_t utc = wholeSeconds(date);
  return {floorDivide(utc + zone.secondsFromGMT(utc), secondsADay)};
}

Date startOfDay(const TimeZone& zone, CalendarDay day) {
  // No zone is more than 26 hours away from UTC, so the first instant lies between these two.
  std::int64_t before = day.number * secondsADay - 26 * 3'600;
  std::int64_t within = day.number * secondsADay + 26 * 3'600;
  while (within - before > 1) {
    const std::int64_t middle = before + (within - before) / 2;
    (localDay(zone, {double(middle)}) < day ? before : within) = middle;
  }
  return {double(within)};
}

Date timeOfDay(const TimeZone& zone, CalendarDay day, int hour) {
  const std::int64_t wanted = day.number * secondsADay + hour * 3'600;
  constexpr std::int64_t around = 26 * 3'600;
  const std::int64_t offsets[] = {zone.secondsFromGMT(wanted - around), zone.secondsFromGMT(wanted + around)};
  const auto [least, most] = std::minmax(offsets[0], offsets[1]);
  // The larger offset is the one under which clocks show the hour earlier.
  for (const auto offset : {most, least})
    if (zone.secondsFromGMT(wanted - offset) == offset) return {double(wanted - offset)};
  std::int64_t before = wanted - most - 1;
  std::int64_t after = wanted - least;
  while (after - before > 1) {
    const std::int64_t middle = before + (after - before) / 2;
    (middle + zone.secondsFromGMT(middle) < wanted ? before : after) = middle;
  }
  return {double(after)};
}

void setHourCycle(HourCycle cycle) { chosenCycle = cycle; }
HourCycle hourCycle() { return chosenCycle; }

std::string clockText(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  if (chosenCycle == HourCycle::from1To12) return halfDayText(time);
  return fmt::format("{:02}:{:02}", time.hour, time.minute);
}

std::string clockTextWithSeconds(const TimeZone& zone, Date date) {
  const auto time = localTime(zone, date);
  if (chosenCycle == HourCycle::from1To12)
    return fmt::format("{}:{:02}:{:02} {}", hourOfHalfDay(time), time.minute, time.second, halfOfDay(time));
  return fmt::format("{:02}:{:02}:{:02}", time.hour, time.minute, time.second);
}

std::string halfDayText(const LocalTime& time) {
  return fmt::format("{}:{:02} {}", hourOfHalfDay(time), time.minute, halfOfDay(time));
}

std::string dayText(CalendarDay calendarDay) {
  const auto [year, month, day] = yearMonthDay(calendarDay);
  return fmt::format("{:04}-{:02}-{:02}", year, month, day);
}

std::string shownDay(CalendarDay calendarDay) {
  if (!currentLanguage().numbers.isDayFirst) return dayText(calendarDay);
  const auto [year, month, day] = yearMonthDay(calendarDay);
  return fmt::format("{:02}.{:02}.{:04}", day, month, year);
}

std::string shownDayOfYear(const LocalTime& time) {
  return currentLanguage().numbers.isDayFirst ? fmt::format("{:02}.{:02}.", time.day, time.month)
                                              : fmt::format("{:02}-{:02}", time.month, time.day);
}

std::optional<CalendarDay> parseDay(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return std::nullopt;
  std::array<int, 3> parts{};
  int part = 0;
  for (const char c : text) {
    if (c == '-') {
      if (++part > 2) return std::nullopt;
    } else if (c < '0' || c > '9') {
      return std::nullopt;
    } else {
      parts[size_t(part)] = parts[size_t(part)] * 10 + (c - '0');
    }
  }
  const auto day = CalendarDay::of(parts[0], parts[1], parts[2]);
  return dayText(day) == text ? std::optional(day) : std::nullopt;
}

std::string weekdayName(int weekday) {
  static constexpr std::string_view names[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                               "Thursday", "Friday", "Saturday"};
  return localized(names[size_t(weekday % 7)]);
}

std::string monthName(int month) {
  static constexpr std::string_view names[] = {"January",   "February", "March",    "April",
                                               "May",       "June",     "July",     "August",
                                               "September", "October",  "November", "December"};
  return localized(names[size_t(month - 1) % 12]);
}

std::optional<int> LocalDays::offsetOfDay(std::int64_t utcDay) {
  if (const auto found = offsets_.find(utcDay); found != offsets_.end()) return found->second;
  if (offsets_.size() > 4'096) offsets_.clear(); // logs full of invented dates must not fill the memory
  const int first = zone_.secondsFromGMT(utcDay * secondsADay);
  const int last = zone_.secondsFromGMT(utcDay * secondsADay + secondsADay - 1);
  return offsets_[utcDay] = first == last ? std::optional(first) : std::nullopt;
}

CalendarDay LocalDays::day(std::int64_t instant) {
  const auto known = offsetOfDay(floorDivide(instant, secondsADay));
  const int offset = known ? *known : zone_.secondsFromGMT(instant);
  return {floorDivide(instant + offset, secondsADay)};
}

} // namespace korvell
