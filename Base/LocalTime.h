#pragma once
// Calendar days and the time of day where the user is.
//
// A zone answers one question: how far ahead of UTC its clocks are at an instant. Everything else is
// arithmetic on that answer, so that rules can be tested with any zone and no environment variable. All
// functions may be called from any thread.

#include "Base/Date.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace korvell {

class TimeZone {
public:
  virtual ~TimeZone() = default;
  /// Seconds that local clocks show more than UTC at this instant (whole seconds since 1970).
  virtual int secondsFromGMT(std::int64_t instant) const = 0;
  /// Reads again which zone the user is in. Long-running work calls it before each round.
  virtual void reload() {}
};

/// The process's zone: TZ, or the machine's setting.
class SystemTimeZone final : public TimeZone {
public:
  SystemTimeZone();
  int secondsFromGMT(std::int64_t instant) const override;
  void reload() override;
};

/// A date without a time or a zone, counted in days from 1970-01-01 in the Gregorian calendar.
struct CalendarDay {
  std::int64_t number = 0;

  /// Months outside 1 to 12 and days outside the month carry over, as mktime's do.
  static CalendarDay of(std::int64_t year, std::int64_t month, std::int64_t day);
  friend constexpr auto operator<=>(CalendarDay, CalendarDay) = default;
  friend constexpr CalendarDay operator+(CalendarDay d, std::int64_t days) { return {d.number + days}; }
};

/// What a clock on the wall and a calendar beside it show.
struct LocalTime {
  std::int64_t year = 1970;
  int month = 1;   ///< 1 to 12
  int day = 1;     ///< 1 to 31
  int weekday = 4; ///< 0 is Sunday
  int hour = 0, minute = 0, second = 0;
  bool operator==(const LocalTime&) const = default;
};

LocalTime localTime(const TimeZone& zone, Date date);
CalendarDay localDay(const TimeZone& zone, Date date);
/// The first instant of a day. Where clocks skip midnight it is the instant after the gap.
Date startOfDay(const TimeZone& zone, CalendarDay day);
/// The instant at which clocks show this full hour of the day: the first of two where they repeat it, the
/// instant after the gap where they skip it.
Date timeOfDay(const TimeZone& zone, CalendarDay day, int hour);

/// How clocks count the hours: "13:58" or "1:58 PM".
enum class HourCycle { from0To23, from1To12 };
/// What the functions below write from now on, from 0 to 23 until then: programs with windows follow the
/// system, the lines of the command line keep one width. From any thread.
void setHourCycle(HourCycle cycle);
HourCycle hourCycle();
/// "13:58"
std::string clockText(const TimeZone& zone, Date date);
/// "13:58:07"
std::string clockTextWithSeconds(const TimeZone& zone, Date date);
/// "1:58 PM" whatever the system's way is, localised.
std::string halfDayText(const LocalTime& time);
/// "2026-03-01", as files and programs have it.
std::string dayText(CalendarDay day);
/// The same as the language in effect writes it: "01.03.2026" in German.
std::string shownDay(CalendarDay day);
/// "03-01", "01.03."
std::string shownDayOfYear(const LocalTime& time);
/// Reads "yyyy-MM-dd", four, two and two digits of a day that exists. Nothing for any other text.
std::optional<CalendarDay> parseDay(std::string_view text);
/// "Sunday" for 0, localised.
std::string weekdayName(int weekday);
/// "January" for 1, localised.
std::string monthName(int month);

/// localDay() for many instants: the zone is asked twice for each UTC day, and for every instant only on
/// days on which its clocks change. For one thread; to be made anew when the zone is reloaded.
class LocalDays {
public:
  explicit LocalDays(const TimeZone& zone) : zone_(zone) {}
  CalendarDay day(std::int64_t instant);

private:
  std::optional<int> offsetOfDay(std::int64_t utcDay);

  const TimeZone& zone_;
  std::unordered_map<std::int64_t, std::optional<int>> offsets_;
};

} // namespace korvell
