#include "Core/Health/SeenAlerts.h"

#include "Tests/Fakes/FakeUserDefaults.h"

#include <gtest/gtest.h>

namespace korvell {
namespace {

std::vector<HealthAlert> alertsAt(std::initializer_list<double> instants) {
  std::vector<HealthAlert> alerts;
  for (const double instant : instants) alerts.push_back({.date = Date{instant}});
  return alerts;
}

TEST(SeenAlertsTests, whatWasRaisedSinceTheLastLookIsNew) {
  FakeUserDefaults defaults;
  const Date now{1000};
  EXPECT_TRUE(markSeen({}, defaults, now));
  EXPECT_TRUE(defaults.changed.empty());
  const auto shown = alertsAt({900, 800});
  EXPECT_EQ(newAlerts(shown, defaults, now), 2u);
  const auto later = alertsAt({950, 900, 800}); // raised while the user looked at the others
  EXPECT_TRUE(markSeen(shown, defaults, now));
  EXPECT_EQ(newAlerts(later, defaults, now), 1u);
  EXPECT_TRUE(isNew(later[0], defaults, now));
  EXPECT_TRUE(markSeen(later, defaults, now));
  EXPECT_TRUE(markSeen(shown, defaults, now)) << "a view that shows an older list";
  EXPECT_EQ(newAlerts(later, defaults, now), 0u);
  defaults.set("alerts.lastSeen", "yesterday");
  EXPECT_EQ(newAlerts(later, defaults, now), 3u);
  defaults.readOnly = true;
  EXPECT_FALSE(markSeen(later, defaults, now));
}

TEST(SeenAlertsTests, aClockThatWasSetBackHidesNothing) {
  FakeUserDefaults defaults;
  const auto alerts = alertsAt({5000, 900});
  EXPECT_TRUE(markSeen(alerts, defaults, Date{6000}));
  EXPECT_EQ(newAlerts(alerts, defaults, Date{1000}), 1u);
  EXPECT_TRUE(markSeen(alerts, defaults, Date{1000}));
  EXPECT_EQ(defaults.date("alerts.lastSeen"), Date{900});
  EXPECT_EQ(newAlerts(alertsAt({5000, 950, 900}), defaults, Date{1000}), 1u);
}

TEST(SeenAlertsTests, theSettingsFileKeepsMillisecondsOnly) {
  FakeUserDefaults defaults;
  for (const double instant : {900.0004, 900.0006}) {
    const auto alerts = alertsAt({instant});
    EXPECT_TRUE(markSeen(alerts, defaults, Date{instant}));
    defaults.set("alerts.lastSeen", rfc3339(*defaults.date("alerts.lastSeen")));
    EXPECT_EQ(newAlerts(alerts, defaults, Date{instant}), 0u) << instant;
  }
}

} // namespace
} // namespace korvell
