#include "Core/Health/WeeklyReport.h"

#include "Base/ManualQueue.h"
#include "Core/Storage/StorageLog.h"
#include "Tests/Fakes/FakeNotifications.h"
#include "Tests/Fakes/FakeTimeZone.h"
#include "Tests/Fakes/FakeUserDefaults.h"
#include "Tests/Fakes/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace korvell {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Urgency = Notification::Urgency;

constexpr int hour = 3'600;
constexpr const char* sentKey = "weeklyReport.lastSent";

Date at(const char* text) { return *parseRFC3339(text); }
std::int64_t instant(const char* text) { return std::int64_t(at(text).sinceEpoch); }

TEST(WeeklyReportTests, mondayMorningByTheClocksOfTheZone) {
  const FakeTimeZone utc, india(5 * hour + 1'800);
  const FakeTimeZone newYork(-5 * hour, {{instant("2025-03-09T07:00:00Z"), -4 * hour}});
  const struct {
    const char* name;
    const TimeZone& zone;
    const char* date;
    const char* monday;
  } rows[] = {
      {"Monday", utc, "2026-03-02T08:59:59Z", "2026-03-02T09:00:00Z"},
      {"Sunday night of a week across two years", utc, "2026-01-04T23:59:59Z", "2025-12-29T09:00:00Z"},
      {"a local Monday that is Sunday in UTC", india, "2026-03-01T18:30:00Z", "2026-03-02T03:30:00Z"},
      {"a local Sunday that is Sunday in UTC", india, "2026-03-01T18:29:59Z", "2026-02-23T03:30:00Z"},
      {"an hour was skipped since", newYork, "2025-03-09T20:00:00-04:00", "2025-03-03T09:00:00-05:00"}};
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
  defaults.set(sentKey, at("2026-02-23T09:05:00Z"));
  sendAt("2026-03-02T08:59:59Z");
  EXPECT_THAT(notifications.posted, IsEmpty());
  for (const char* date : {"2026-03-02T09:00:00Z", "2026-03-02T09:10:00Z", "2026-03-08T23:59:59Z"}) {
    sendAt(date);
    EXPECT_THAT(notifications.posted,
                ElementsAre(Notification{"weekly-report", "Your Mac last week: 88 out of 100",
                                         "Editor used the most memory, 2.79 GB on average.", Urgency::low}));
  }
  EXPECT_EQ(defaults.date(sentKey), at("2026-03-02T09:00:00Z"));
  const auto last = WeeklyReport::last(defaults);
  ASSERT_TRUE(last);
  EXPECT_EQ(*last, (SentReport{at("2026-03-02T09:00:00Z"), notifications.posted[0].title,
                               notifications.posted[0].body}));
  record(50);
  sendAt("2026-03-12T17:00:00Z"); // the machine slept through Monday
  ASSERT_THAT(notifications.posted, SizeIs(2));
  EXPECT_EQ(notifications.posted[1].title, "Your Mac last week: 50 out of 100");
}

TEST_F(SendingTests, whatIsStoredDecides) {
  const SentReport before{at("2026-02-23T09:00:00Z"), "Your Mac last week: 70 out of 100", "Busy."};
  defaults.set("weeklyReport.last", toValue(before));
  record(std::nullopt);
  sendAt("2026-03-02T09:00:00Z");
  record(88);
  sendAt("2026-03-02T09:10:00Z");
  EXPECT_THAT(notifications.posted, IsEmpty()) << "a week without score counts as sent";
  EXPECT_EQ(WeeklyReport::last(defaults), before);
  const struct {
    const char* name;
    Value enabled, lastSent;
    bool sends;
  } rows[] = {
      {"switched off", false, {}, false},
      {"values of other types count as absent", "no", 5, true},
      {"sent in a future that the clock was set back from", true, at("2031-01-01T00:00:00Z"), true},
      {"sent in this week, and the clock was corrected since", true, at("2026-03-03T09:30:00Z"), false},
  };
  for (const auto& row : rows) {
    notifications.posted.clear();
    defaults.set("weeklyReport.enabled", row.enabled);
    defaults.set(sentKey, row.lastSent);
    sendAt("2026-03-03T09:20:00Z");
    EXPECT_THAT(notifications.posted, SizeIs(row.sends)) << row.name;
  }
  defaults.remove(sentKey);
  defaults.readOnly = true;
  sendAt("2026-03-03T09:20:00Z");
  EXPECT_THAT(notifications.posted, IsEmpty()) << "what can't be remembered would come every ten minutes";
}

TEST_F(SendingTests, sentences) {
  const Date now = time.clock().now();
  EXPECT_EQ(WeeklyReport::body(history, defaults, now), "Open Korvell to see the details.");
  defaults.set(
      StorageLog::logKey,
      Value(Value::Array{Value::object({{"date", now - Seconds(604'801)}, {"bytes", 1'000}}),
                         Value::object({{"date", now - Seconds(604'800)}, {"bytes", 2'000'000}}),
                         Value::object({{"date", (now - Seconds(60)).sinceEpoch}, {"bytes", 500'000.9}}),
                         Value::object({{"date", now + Seconds(1)}, {"bytes", 4'000'000}}),
                         Value::object({{"date", now}}), Value::object({{"bytes", 7}}), Value("x"),
                         Value::object({{"date", "soon"}, {"bytes", 9}}),
                         Value::object({{"date", now}, {"bytes", "many"}})}));
  EXPECT_EQ(WeeklyReport::body(history, defaults, now), "You cleaned up 2.50 MB.");
  record(70, 1);
  defaults.set(StorageLog::logKey, "no log");
  EXPECT_EQ(WeeklyReport::body(history, defaults, now),
            "Editor used the most memory, 2.79 GB on average. Editor kept the CPU busiest.");
}

} // namespace
} // namespace korvell
