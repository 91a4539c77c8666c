#include "Base/Date.h"

#include <gtest/gtest.h>
#include <limits>

using namespace korvell;

TEST(Date, readsRFC3339) {
  const struct {
    const char* text;
    double seconds;
  } rows[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"2026-03-01T12:34:56.789Z", 1'772'368'496.789},
      {"2026-03-01t12:34:56z", 1'772'368'496},
      {"2026-03-01 12:34:56.5+02:00", 1'772'361'296.5},
      {"2026-03-01T12:34:56-05:30", 1'772'388'296},
      {"2026-03-01T00:30:00+01:00", 1'772'321'400}, // the day before in UTC
      {"2024-02-29T00:00:00Z", 1'709'164'800},
      {"2026-12-31T23:59:60Z", 1'798'761'600}, // a leap second is the next one
      {"1969-12-31T23:59:59.25Z", -0.75},
      {"2026-03-01T12:34:56.123456789012345678901234567890Z", 1'772'368'496.123456789},
  };
  for (const auto& row : rows) {
    const auto date = parseRFC3339(row.text);
    ASSERT_TRUE(date) << row.text;
    EXPECT_NEAR(date->sinceEpoch, row.seconds, 1e-6) << row.text;
  }
}

TEST(Date, refusesWhatIsNoInstant) {
  for (const char* text :
       {"", "2026-03-01", "2026-03-01T12:34Z", "2026-03-01T12:34:56", "2026-02-29T00:00:00Z",
        "2026-13-01T00:00:00Z", "2026-00-01T00:00:00Z", "2026-03-01T24:00:00Z", "2026-03-01T12:60:00Z",
        "2026-03-01T12:34:61Z", "2026-03-01T12:34:56.Z", "2026-03-01T12:34:56+0200",
        "2026-03-01T12:34:56+24:00", "2026-03-01T12:34:56+02:60", "2026-03-01T12:34:56Zjunk",
        " 2026-03-01T12:34:56Z", "+026-03-01T12:34:56Z", "2026-3-1T12:34:56Z", "20260301T123456Z"})
    EXPECT_FALSE(parseRFC3339(text)) << text;
}

TEST(Date, whatIsPrintedIsReadBack) {
  for (const double seconds : {0.0, 1'772'368'496.789, -0.75, 0.999, 951'782'399.001, 253'402'300'799.0})
    EXPECT_NEAR(parseRFC3339(rfc3339({seconds})).value().sinceEpoch, seconds, 1e-6);
  EXPECT_EQ(rfc3339({1'772'368'496.9996}), "2026-03-01T12:34:57.000Z") << "rounded up to the next second";
  EXPECT_EQ(rfc3339({-0.0004}), "1970-01-01T00:00:00.000Z");
  EXPECT_EQ(parseRFC3339(rfc3339(Date::distantPast())), Date::distantPast());
  EXPECT_EQ(rfc3339({1e300}), "9999-12-31T23:59:59.999Z") << "the calendar's end";
  EXPECT_EQ(rfc3339({-1e300}), "0000-01-01T00:00:00.000Z") << "and its beginning";
  EXPECT_TRUE(parseRFC3339(rfc3339({std::numeric_limits<double>::quiet_NaN()})));
}

TEST(Date, aTaskIsDueAfterItsIntervalOrWhenTheClockWasSetBack) {
  const Date last{1000};
  EXPECT_FALSE(isDue(last, Seconds{10}, {1009.9}));
  EXPECT_TRUE(isDue(last, Seconds{10}, {1010}));
  EXPECT_TRUE(isDue(last, Seconds{10}, {999.9}));
  EXPECT_TRUE(isDue(Date::distantPast(), Seconds{1e9}, {0}));
}
