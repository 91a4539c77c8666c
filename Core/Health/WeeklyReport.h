#pragma once
// One notification on Monday morning that sums up the past seven days.
//
// No state of its own: what it remembers stands in the settings, the switch "weeklyReport.enabled", the
// instant "weeklyReport.lastSent" and the last report as it was sent, "weeklyReport.last". Called on the
// sampler's queue; the history's queries are waited for.

#include "Base/LocalTime.h"
#include "Base/Record.h"
#include "Core/History/HistoryStore.h"
#include "Platform/Notifications.h"
#include "Platform/UserDefaults.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>

namespace korvell {

/// A report as the user got it. Later the same week would read otherwise.
struct SentReport {
  Date date;
  std::string title; ///< localised
  std::string body;  ///< localised
  bool operator==(const SentReport&) const = default;
  static constexpr auto fields() {
    return std::tuple{Field{"date", &SentReport::date}, Field{"title", &SentReport::title},
                      Field{"body", &SentReport::body}};
  }
};

/// Of what the settings keep; nothing when it is no such report, or lacks a part of it.
std::optional<SentReport> sentReport(const Value& stored);

struct WeeklyReport {
  static constexpr std::string_view enabledKey = "weeklyReport.enabled",
                                    lastSentKey = "weeklyReport.lastSent",
                                    lastReportKey = "weeklyReport.last";

  /// On unless the user switched it off.
  static bool isEnabled(const UserDefaults& defaults);

  /// When the report of the week that contains `date` is due: Monday 9:00 local time, or the first instant
  /// after it where clocks skip it.
  static Date mondayMorning(Date date, const TimeZone& zone);

  /// Whether the report of this week has not been sent although it is time. A last sending that lies in the
  /// future, because the clock was set back, does not count.
  static bool isDue(const UserDefaults& defaults, Date now, const TimeZone& zone);

  /// The report as it reads now. Nothing when no minute of the past seven days has a score.
  static std::optional<Notification> make(HistoryStore& history, const UserDefaults& defaults, Date now);

  /// Posts the report when it is due. A week without a score counts as sent: it is not reported later.
  static void sendIfDue(HistoryStore& history, UserDefaults& defaults, Notifications& notifications, Date now,
                        const TimeZone& zone);

  /// The last one that was posted, for whoever missed its notification. Nothing before the first; a week
  /// without a score leaves the one before. From any thread.
  static std::optional<SentReport> last(const UserDefaults& defaults);

  static std::string body(HistoryStore& history, const UserDefaults& defaults, Date now);
  /// Freed with the storage clean-up since then, by its log. Entries that are none are skipped, and what a
  /// clock that was ahead dated in the future.
  static std::int64_t freedBytes(Date since, Date now, const UserDefaults& defaults);
};

} // namespace korvell
