#pragma once
// One notification on Monday morning that sums up the past seven days.
//
// No state of its own: "weeklyReport.enabled" and "weeklyReport.lastSent" in the settings are all that it
// remembers. Called on the sampler's queue; the history's queries are waited for.

#include "Base/LocalTime.h"
#include "Core/History/HistoryStore.h"
#include "Platform/Notifications.h"
#include "Platform/UserDefaults.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace korvell {

struct WeeklyReport {
  static constexpr std::string_view enabledKey = "weeklyReport.enabled",
                                    lastSentKey = "weeklyReport.lastSent";

  /// On unless the user switched it off.
  static bool isEnabled(const UserDefaults& defaults);
  /// False when the switch could not be stored.
  [[nodiscard]] static bool setEnabled(bool enabled, UserDefaults& defaults);

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

  static std::string body(HistoryStore& history, const UserDefaults& defaults, Date now);
  /// Freed with the storage clean-up since then, by its log. Entries that are none are skipped, and what a
  /// clock that was ahead dated in the future.
  static std::int64_t freedBytes(Date since, Date now, const UserDefaults& defaults);
};

} // namespace korvell
