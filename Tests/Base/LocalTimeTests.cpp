#include "Base/LocalTime.h"

#include "Tests/Fakes/FakeTimeZone.h"

#include <cmath>
#include <gtest/gtest.h>

namespace korvell {
namespace {

constexpr int hour = 3'600;

// Instants of "date -u -d '...' +%s".
constexpr std::int64_t newYorkSpring2025 = 1'741'503'600; // 2025-03-09 07:00 UTC
constexpr std::int64_t newYorkAutumn2025 = 1'762'063'200; // 2025-11-02 06:00 UTC
constexpr std::int64_t cairoSpring2025 = 1'745'532'000;   // 2025-04-24 22:00 UTC, clocks skip midnight
constexpr std::int64_t stJohnsAutumn2010 = 1'289'097'060; // 2010-11-07 02:31 UTC, 00:01 becomes 23:01

const FakeTimeZone newYork(-5 * hour, {{newYorkSpring2025, -4 * hour}, {newYorkAutumn2025, -5 * hour}});
const FakeTimeZone cairo(2 * hour, {{cairoSpring2025, 3 * hour}});
const FakeTimeZone stJohns(-9'000, {{stJohnsAutumn2010, -12'600}});
const FakeTimeZone chatham(12 * hour + 2'700);
const FakeTimeZone utc;

TEST(LocalTimeTests, daysFollowTheClocksOfTheZone) {
  struct Row {
    const TimeZone& zone;
    std::int64_t instant;
    const char* expected;
  };
  const Row rows[] = {{utc, 1'740'789'000, "2025-03-01"}, // 00:30 UTC
                      {newYork, 1'740'789'000, "2025-02-28"},
                      {chatham, 1'740'829'499, "2025-03-02"}, // 11:44:59 UTC
                      {utc, -1, "1969-12-31"},
                      {utc, 951'782'400, "2000-02-29"},
                      {utc, 4'107'542'399, "2100-02-28"},
                      {utc, 4'107'542'400, "2100-03-01"},
                      {stJohns, stJohnsAutumn2010 - 1, "2010-11-07"},
                      {stJohns, stJohnsAutumn2010, "2010-11-06"}};
  for (const auto& row : rows)
    EXPECT_EQ(dayText(localDay(row.zone, {double(row.instant)})), row.expected) << row.instant;
}

TEST(LocalTimeTests, cachedDaysEqualTheZonesOwn) {
  for (const auto* zone : {&newYork, &cairo, &stJohns}) {
    LocalDays days(*zone);
    for (const auto change : {newYorkSpring2025, newYorkAutumn2025, cairoSpring2025, stJohnsAutumn2010})
      for (std::int64_t t = change - 200'000; t < change + 200'000; t += 59)
        ASSERT_EQ(days.day(t), localDay(*zone, {double(t)})) << t;
  }
}

TEST(LocalTimeTests, daysWithoutAChangeAskTheZoneTwice) {
  const FakeTimeZone zone(hour);
  LocalDays days(zone);
  for (int second = 0; second < 86'400; second += 600) days.day(1'740'787'200 + second);
  EXPECT_EQ(zone.asked, 2);
}

TEST(LocalTimeTests, hoursOfADayWhoseClocksChange) {
  const struct {
    const TimeZone& zone;
    const char* day;
    std::int64_t start;
    int hour;
    std::int64_t shown; ///< when clocks show that hour
  } rows[] = {
      {utc, "2025-03-01", 1'740'787'200, 9, 1'740'787'200 + 9 * hour},
      {newYork, "2025-03-09", newYorkSpring2025 - 2 * hour, 2, newYorkSpring2025}, // skipped
      {newYork, "2025-03-10", newYorkSpring2025 + 21 * hour, 0, newYorkSpring2025 + 21 * hour},
      {newYork, "2025-11-02", newYorkAutumn2025 - 2 * hour, 1, newYorkAutumn2025 - hour}, // comes twice
      {newYork, "2025-11-03", newYorkAutumn2025 + 23 * hour, 1, newYorkAutumn2025 + 24 * hour},
      {cairo, "2025-04-25", cairoSpring2025, 0, cairoSpring2025}, // has no midnight
      {chatham, "2025-03-02", 1'740'827'700, 12, 1'740'827'700 + 12 * hour},
  };
  for (const auto& row : rows) {
    const auto day = *parseDay(row.day);
    EXPECT_EQ(startOfDay(row.zone, day), Date{double(row.start)}) << row.day;
    EXPECT_EQ(timeOfDay(row.zone, day, row.hour), Date{double(row.shown)}) << row.day;
  }
}

TEST(LocalTimeTests, tellsDateTimeAndWeekday) {
  EXPECT_EQ(localTime(newYork, {newYorkSpring2025 + 0.75}), (LocalTime{2025, 3, 9, 0, 3, 0, 0}));
  EXPECT_EQ(localTime(newYork, {double(newYorkSpring2025 - 1)}), (LocalTime{2025, 3, 9, 0, 1, 59, 59}));
  EXPECT_EQ(localTime(utc, {-0.5}), (LocalTime{1969, 12, 31, 3, 23, 59, 59}));
  EXPECT_EQ(localTime(utc, {NAN}).year, 1970);
  EXPECT_GT(localTime(utc, {1e300}).year, 1'000'000);
  EXPECT_EQ(weekdayName(0) + weekdayName(6), "SundaySaturday");
}

TEST(LocalTimeTests, readsOnlyDaysThatExist) {
  for (const char* text : {"2025-02-29", "2025-13-01", "2025-00-10", "2025-1-01", "2025-01-1", "20250101",
                           "2025-01-01 ", "2025-01-0x", "----------", "", "+025-01-01"})
    EXPECT_FALSE(parseDay(text)) << text;
  for (const char* text : {"2024-02-29", "1969-12-31", "0000-01-01", "9999-12-31"})
    EXPECT_EQ(dayText(parseDay(text).value()), text);
  // Fields outside their range carry over.
  EXPECT_EQ(dayText(CalendarDay::of(2025, 14, 1)), "2026-02-01");
  EXPECT_EQ(dayText(CalendarDay::of(2025, -12, 31)), "2023-12-31");
  EXPECT_EQ(dayText(CalendarDay::of(2025, 2, 31)), "2025-03-03");
  EXPECT_EQ(dayText(CalendarDay::of(2025, 3, 0)), "2025-02-28");
}

// The child process has the variable from its start, as a user's shell sets it.
TEST(LocalTimeTests, theSystemZoneIsTheOneOfTZ) {
  const std::tuple<const char*, std::int64_t, int> rows[] = {
      {"EST5EDT,M3.2.0,M11.1.0", newYorkSpring2025 - 1, -5 * hour},
      {"EST5EDT,M3.2.0,M11.1.0", newYorkSpring2025, -4 * hour},
      {"<+1245>-12:45", 0, 12 * hour + 2'700},
      {"UTC0", newYorkSpring2025, 0}};
  const auto zoneIs = [](const char* tz, std::int64_t instant, int offset) {
    SystemTimeZone zone;
    setenv("TZ", tz, 1);
    zone.reload();
    std::exit(zone.secondsFromGMT(instant) == offset ? 0 : 1);
  };
  for (const auto& row : rows)
    EXPECT_EXIT(std::apply(zoneIs, row), testing::ExitedWithCode(0), "") << std::get<0>(row);
}

TEST(LocalTimeTests, clocksCountTheHoursAsTheSystemDoes) {
  const auto texts = [](int seconds) {
    return std::pair(clockText(utc, {double(seconds)}), clockTextWithSeconds(utc, {double(seconds)}));
  };
  EXPECT_EQ(texts(13 * hour + 62), std::pair(std::string("13:01"), std::string("13:01:02")));
  setHourCycle(HourCycle::from1To12);
  const auto midnight = texts(5), noon = texts(12 * hour), evening = texts(23 * hour + 59 * 60);
  setHourCycle(HourCycle::from0To23);
  EXPECT_EQ(midnight, std::pair(std::string("12:00 AM"), std::string("12:00:05 AM")));
  EXPECT_EQ(noon.first, "12:00 PM");
  EXPECT_EQ(evening.first, "11:59 PM");
}

} // namespace
} // namespace korvell
