#include "Core/Health/WeeklyReport.h"

#include "Base/Format.h"
#include "Core/Storage/StorageLog.h"

#include <cmath>
#include <vector>

namespace korvell {

namespace {

constexpr const char* identifier = "weekly-report"; // a later report takes the earlier one's place
constexpr Seconds week{604'800};
constexpr int dueHour = 9;
constexpr double worthNaming = 1; ///< percent of one core

std::optional<AppTotal> top(HistoryStore& history, Metric metric) {
  auto apps = history.topApps(metric, HistoryRange::d7, 1);
  return apps.empty() ? std::nullopt : std::optional(std::move(apps.front()));
}

/// When a log entry was made. Some writers of settings know no dates and store seconds since 1970.
std::optional<Date> dateOf(const Value& entry) {
  const auto* stored = entry.find("date");
  if (!stored) return std::nullopt;
  if (const auto date = stored->asDate()) return date;
  const auto seconds = stored->asDouble();
  return seconds ? std::optional(Date{*seconds}) : std::nullopt;
}

/// A number as a signed 64-bit integer, also where a writer of settings knows floating-point numbers only.
std::optional<std::int64_t> wholeNumber(const Value& value) {
  constexpr double limit = 9'223'372'036'854'775'808.0; // 2^63
  if (const auto integer = value.asInt()) return integer;
  const auto number = value.asDouble();
  return number && *number >= -limit && *number < limit ? std::optional(std::int64_t(*number)) : std::nullopt;
}

} // namespace

std::optional<SentReport> sentReport(const Value& stored) {
  SentReport report;
  const bool whole = stored.find("date") && stored.find("title") && stored.find("body");
  return whole && fromValue(stored, report) ? std::optional(std::move(report)) : std::nullopt;
}

bool WeeklyReport::isEnabled(const UserDefaults& defaults) { return defaults.boolean(enabledKey, true); }

Date WeeklyReport::mondayMorning(Date date, const TimeZone& zone) {
  const int sinceMonday = (localTime(zone, date).weekday + 6) % 7;
  return timeOfDay(zone, localDay(zone, date) + -sinceMonday, dueHour);
}

bool WeeklyReport::isDue(const UserDefaults& defaults, Date now, const TimeZone& zone) {
  const Date monday = mondayMorning(now, zone);
  const Date lastSent = defaults.date(lastSentKey).value_or(Date::distantPast());
  // Half a day more than a week, because clocks change. A sending in a week to come was dated by a clock that
  // has been set back since.
  const Date nextMonday = mondayMorning(monday + week + Seconds{43'200}, zone);
  return now >= monday && (lastSent < monday || lastSent >= nextMonday);
}

std::optional<Notification> WeeklyReport::make(HistoryStore& history, const UserDefaults& defaults,
                                               Date now) {
  const auto average = history.averageScore(now - week);
  if (!average) return std::nullopt;
  return Notification{.identifier = identifier,
                      .title = localized("Your Mac last week: {score} out of 100",
                                         {{"score", std::to_string(std::lround(*average))}}),
                      .body = body(history, defaults, now),
                      .urgency = Notification::Urgency::low};
}

void WeeklyReport::sendIfDue(HistoryStore& history, UserDefaults& defaults, Notifications& notifications,
                             Date now, const TimeZone& zone) {
  if (!isEnabled(defaults) || !isDue(defaults, now, zone)) return;
  // Stored first: whatever goes wrong afterwards, nobody gets a report every ten minutes.
  if (!defaults.set(lastSentKey, now)) return;
  const auto report = make(history, defaults, now);
  if (!report) return;
  notifications.post(*report);
  // Where it can't be kept, the notification is all there is of it.
  [[maybe_unused]] const bool kept =
      defaults.set(lastReportKey, toValue(SentReport{now, report->title, report->body}));
}

std::optional<SentReport> WeeklyReport::last(const UserDefaults& defaults) {
  const auto stored = defaults.value(lastReportKey);
  return stored ? sentReport(*stored) : std::nullopt;
}

std::string WeeklyReport::body(HistoryStore& history, const UserDefaults& defaults, Date now) {
  std::vector<std::string> sentences;
  if (const auto app = top(history, Metric::memory))
    sentences.push_back(localized("{name} used the most memory, {size} on average.",
                                  {{"name", app->name}, {"size", Format::memory(app->value)}}));
  if (const auto app = top(history, Metric::cpu); app && app->value >= worthNaming)
    sentences.push_back(localized("{name} kept the CPU busiest.", {{"name", app->name}}));
  if (const auto freed = freedBytes(now - week, now, defaults); freed >= 1)
    sentences.push_back(localized("You cleaned up {size}.", {{"size", Format::bytes(double(freed))}}));
  if (sentences.empty()) return localized("Open Korvell to see the details.");
  std::string text;
  for (const auto& sentence : sentences) text += (text.empty() ? "" : " ") + sentence;
  return text;
}

std::int64_t WeeklyReport::freedBytes(Date since, Date now, const UserDefaults& defaults) {
  const auto stored = defaults.value(StorageLog::logKey);
  const auto* log = stored ? stored->asArray() : nullptr;
  if (!log) return 0;
  std::int64_t sum = 0;
  for (const auto& entry : *log) {
    const auto date = dateOf(entry);
    const auto* bytes = entry.find("bytes");
    const auto freed = bytes ? wholeNumber(*bytes) : std::nullopt;
    if (!date || !freed || *date < since || *date > now) continue;
    if (std::int64_t next = 0; !__builtin_add_overflow(sum, *freed, &next)) sum = next;
  }
  return sum;
}

} // namespace korvell
