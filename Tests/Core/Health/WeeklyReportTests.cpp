#include "Core/Health/WeeklyReport.h"

#include "Base/ManualQueue.h"
#include "Core/Storage/StorageLog.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::IsEmpty;

constexpr int hour = 3'600;

Date at(const char* text) { return *parseRFC3339(text); }
std::int64_t instant(const char* text) { return std::int64_t(at(text).sinceEpoch); }

TEST(WeeklyReportTests, mondayMorningWhateverTheClocksDo) {
  const FakeTimeZone utc, india(5 * hour + 1'800);
  const FakeTimeZone newYork(-5 * hour, {{instant("2025-03-09T07:00:00Z"), -4 * hour},
                                         {instant("2025-11-02T06:00:00Z"), -5 * hour}});
  const FakeTimeZone sydney(10 * hour, {{instant("2025-10-04T16:00:00Z"), 11 * hour}});
  const FakeTimeZone lordHowe(10 * hour + 1'800, {{instant("2025-10-04T15:30:00Z"), 11 * hour}});
  // Nobody changes clocks on a Monday at nine, but a government may.
  const FakeTimeZone skipsNine(0, {{instant("2026-03-02T08:30:00Z"), hour}});
  const FakeTimeZone repeatsNine(2 * hour, {{instant("2026-03-02T07:30:00Z"), hour}});
  const FakeTimeZone skipsMonday(-11 * hour, {{instant("2026-03-02T11:00:00Z"), 13 * hour}});
  struct Row {
    const char* name;
    const TimeZone& zone;
    const char* date;
    const char* monday;
  };
  const Row rows[] = {
      {"Monday", utc, "2026-03-02T08:59:59Z", "2026-03-02T09:00:00Z"},
      {"Sunday night", utc, "2026-03-08T23:59:59Z", "2026-03-02T09:00:00Z"},
      {"across a year", utc, "2026-01-01T00:00:00Z", "2025-12-29T09:00:00Z"},
      {"a local Monday that is Sunday in UTC", india, "2026-03-01T18:30:00Z", "2026-03-02T03:30:00Z"},
      {"a local Sunday that is Sunday in UTC", india, "2026-03-01T18:29:59Z", "2026-02-23T03:30:00Z"},
      {"the week before an hour was skipped", newYork, "2025-03-09T20:00:00-04:00",
       "2025-03-03T09:00:00-05:00"},
      {"the week in which an hour is repeated", newYork, "2025-11-02T23:59:00-05:00",
       "2025-10-27T09:00:00-04:00"},
      {"the week after an hour was repeated", newYork, "2025-11-03T00:00:00-05:00",
       "2025-11-03T09:00:00-05:00"},
      {"southern spring: the week before the change", sydney, "2025-10-05T12:00:00+11:00",
       "2025-09-29T09:00:00+10:00"},
      {"a change of half an hour", lordHowe, "2025-10-05T12:00:00+11:00", "2025-09-29T09:00:00+10:30"},
      {"nine is skipped: the end of the gap", skipsNine, "2026-03-03T00:00:00Z", "2026-03-02T08:30:00Z"},
      {"nine comes twice: the first", repeatsNine, "2026-03-03T00:00:00Z", "2026-03-02T07:00:00Z"},
      {"the day is skipped at noon", skipsMonday, "2026-03-02T11:00:00Z", "2026-03-02T11:00:00Z"}};
  for (const auto& row : rows)
    EXPECT_EQ(rfc3339(WeeklyReport::mondayMorning(at(row.date), row.zone)), rfc3339(at(row.monday)))
        << row.name;
}

struct SendingTests : testing::Test {
  ManualScheduler time{at("2026-03-02T08:00:00Z")};
  TemporaryFolder folder;
  HistoryStore history{time.factory(), time.clock(), folder.path().string()};
  FakeUserDefaults defaults;
  FakeNotifications notifications;
  FakeTimeZone zone;

  /// A recorded minute more than an hour ago; a full hour's would make the history prune by the machine's
  /// time.
  void record(std::optional<int> score, double editorCPU = 0.7) {
    const Date now = time.clock().now();
    auto snapshot = SystemSnapshot::empty(now - Seconds(hour + 60));
    snapshot.apps = {
        {.id = "e", .name = "Editor", .processes = {{.cpu = editorCPU, .memory = 3'000'000'000}}}};
    history.record(snapshot, score);
    snapshot.date = now;
    snapshot.apps.clear();
    history.record(snapshot, std::nullopt);
    time.run();
  }
  void sendAt(const char* now) {
    time.clock().setNow(at(now));
    WeeklyReport::sendIfDue(history, defaults, notifications, at(now), zone);
  }
};

TEST_F(SendingTests, oncePerWeekFromMondayNineOn) {
  record(88);
  defaults.set("weeklyReport.lastSent", at("2026-02-23T09:05:00Z"));
  sendAt("2026-03-01T23:00:00Z");
  sendAt("2026-03-02T08:59:59Z");
  EXPECT_THAT(notifications.posted, IsEmpty());
  sendAt("2026-03-02T09:00:00Z");
  ASSERT_EQ(notifications.posted.size(), 1u);
  EXPECT_EQ(notifications.posted[0],
            (Notification{"weekly-report", "Your Mac last week: 88 out of 100",
                          "Editor used the most memory, 2.79 GB on average.", Notification::Urgency::low}));
  EXPECT_EQ(defaults.date("weeklyReport.lastSent"), at("2026-03-02T09:00:00Z"));
  sendAt("2026-03-02T09:10:00Z");
  sendAt("2026-03-08T23:59:59Z");
  EXPECT_EQ(notifications.posted.size(), 1u);
  record(50);
  sendAt("2026-03-12T17:00:00Z"); // the machine slept through Monday
  EXPECT_EQ(notifications.posted.size(), 2u);
}

TEST_F(SendingTests, whatIsStoredDecides) {
  record(std::nullopt);
  sendAt("2026-03-02T09:00:00Z");
  EXPECT_EQ(defaults.date("weeklyReport.lastSent"), at("2026-03-02T09:00:00Z"));
  record(88);
  sendAt("2026-03-02T09:10:00Z");
  EXPECT_THAT(notifications.posted, IsEmpty()) << "a week without score counts as sent";
  defaults.remove("weeklyReport.lastSent");
  defaults.set("weeklyReport.enabled", false);
  sendAt("2026-03-03T09:00:00Z");
  EXPECT_FALSE(defaults.value("weeklyReport.lastSent"));
  defaults.set("weeklyReport.enabled", "no");
  defaults.set("weeklyReport.lastSent", 5);
  sendAt("2026-03-03T09:00:00Z");
  EXPECT_EQ(notifications.posted.size(), 1u) << "values of other types count as absent";

  defaults.set("weeklyReport.lastSent", at("2031-01-01T00:00:00Z"));
  sendAt("2026-03-03T09:10:00Z");
  EXPECT_EQ(notifications.posted.size(), 2u) << "sent in a future that the clock was set back from";
  defaults.set("weeklyReport.lastSent", at("2026-03-03T09:30:00Z"));
  sendAt("2026-03-03T09:20:00Z");
  EXPECT_EQ(notifications.posted.size(), 2u) << "sent in this week, and the clock was corrected since";
  defaults.remove("weeklyReport.lastSent");
  defaults.readOnly = true;
  sendAt("2026-03-03T09:20:00Z");
  EXPECT_EQ(notifications.posted.size(), 2u) << "what can't be remembered would come every ten minutes";
}

TEST_F(SendingTests, sentences) {
  const Date now = time.clock().now();
  EXPECT_EQ(WeeklyReport::body(history, defaults, now), "Open Korvell to see the details.");
  defaults.set(
      StorageLog::logKey,
      Value(Value::Array{Value::object({{"date", now - Seconds(604'801)}, {"bytes", 1'000}}),
                         Value::object({{"date", now - Seconds(604'800)}, {"bytes", 2'000'000}}),
                         Value::object({{"date", (now - Seconds(60)).sinceEpoch}, {"bytes", 500'000.9}}),
                         Value::object({{"date", now}}), Value::object({{"bytes", 7}}), Value("x"),
                         Value::object({{"date", "soon"}, {"bytes", 9}}),
                         Value::object({{"date", now}, {"bytes", "many"}})}));
  EXPECT_EQ(WeeklyReport::body(history, defaults, now), "You cleaned up 2.50 MB.");
  record(70, 1);
  EXPECT_EQ(
      WeeklyReport::body(history, defaults, now),
      "Editor used the most memory, 2.79 GB on average. Editor kept the CPU busiest. You cleaned up 2.50 "
      "MB.");
  defaults.set(StorageLog::logKey, "no log");
  EXPECT_EQ(WeeklyReport::freedBytes(Date::distantPast(), defaults), 0);
}

} // namespace
} // namespace korvell
