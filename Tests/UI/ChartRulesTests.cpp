#include "Tests/Fakes/FakeTimeZone.h"
#include "UI/Kit/ChartRules.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace testing;

namespace korvell {
namespace {

constexpr double gigabyte = 1024.0 * 1024 * 1024;

std::vector<std::string> labels(const ValueAxis& axis) {
  std::vector<std::string> result;
  for (const auto& tick : axis.ticks) result.push_back(tick.label);
  return result;
}

std::vector<std::string> labels(const std::vector<TimeTick>& ticks) {
  std::vector<std::string> result;
  for (const auto& tick : ticks) result.push_back(tick.label);
  return result;
}

ChartData day(std::vector<ChartBucket> buckets) {
  ChartData data{.state = ChartData::State::recorded, .time = TimeAxis::hours24};
  data.begin = *parseRFC3339("2026-03-01T12:00:00Z");
  data.end = data.begin + Seconds{86'400};
  data.bucket = Seconds{300};
  data.lines = {{"CPU", Token::cpu, std::move(buckets)}};
  return data;
}

TEST(ChartRules, valueAxesHaveRoundSteps) {
  const struct {
    ValueScale scale;
    double maximum, total;
    std::vector<std::string> expected;
  } rows[] = {
      {ValueScale::percent, 3, 0, {"0%", "25%", "50%", "75%", "100%"}},
      {ValueScale::memory, 0, 15.6 * gigabyte, {"0", "4 GB", "8 GB", "12 GB", "15.6 GB"}},
      {ValueScale::memory, 0, 2 * gigabyte, {"0", "1 GB", "2.00 GB"}},
      // 32 GB would stand on the total's own label.
      {ValueScale::memory, 0, 33 * gigabyte, {"0", "16 GB", "33.0 GB"}},
      {ValueScale::rate, 0, 0, {"0", "250 B/s", "500 B/s", "750 B/s", "1 KB/s"}},
      {ValueScale::rate, 12.4e6, 0, {"0", "5 MB/s", "10 MB/s", "15 MB/s", "20 MB/s"}},
      {ValueScale::rate, 4e6, 0, {"0", "1 MB/s", "2 MB/s", "3 MB/s", "4 MB/s", "5 MB/s"}},
      {ValueScale::rate, 1e6, 0, {"0", "250 KB/s", "500 KB/s", "750 KB/s", "1 MB/s"}},
      {ValueScale::rate, 9.9e6, 0, {"0", "2.5 MB/s", "5 MB/s", "7.5 MB/s", "10 MB/s"}},
      {ValueScale::watts, 0.4, 0, {"0 W", "1 W", "2 W", "3 W", "4 W", "5 W"}},
      {ValueScale::watts, 61, 0, {"0 W", "25 W", "50 W", "75 W", "100 W"}},
  };
  for (const auto& row : rows)
    EXPECT_EQ(labels(valueAxis(row.scale, roundTop(row.scale, row.maximum), row.total)), row.expected)
        << "maximum " << row.maximum << ", total " << row.total;
}

TEST(ChartRules, theTopGrowsAtOnceAndShrinksLate) {
  ShrinkingTop top;
  const auto at = [&](double seconds, double maximum) {
    return top.update(ValueScale::rate, maximum, Date{1000 + seconds});
  };
  EXPECT_EQ(at(0, 8e6), 1e7);
  EXPECT_EQ(at(2, 1.2e7), 2e7);
  EXPECT_EQ(at(4, 1e6), 2e7);
  EXPECT_EQ(at(20, 1.5e7), 2e7); // begins anew
  EXPECT_EQ(at(22, 1e6), 2e7);
  EXPECT_EQ(at(51, 1e6), 2e7);
  EXPECT_EQ(at(52, 1e6), 1e6);
}

TEST(ChartRules, timeTicksFollowTheLocalClock) {
  const FakeTimeZone berlin(3600);
  const Date now = *parseRFC3339("2026-11-19T14:58:00Z"); // a Thursday
  const auto ticks = [&](TimeAxis time, double hours) {
    return labels(timeTicks(time, now - Seconds{hours * 3600}, now, berlin));
  };
  EXPECT_THAT(ticks(TimeAxis::live, 1.0 / 12),
              ElementsAre("−5 min", "−4 min", "−3 min", "−2 min", "−1 min", "now"));
  EXPECT_THAT(ticks(TimeAxis::hours12, 12),
              ElementsAre("04:00", "06:00", "08:00", "10:00", "12:00", "14:00", "now"));
  EXPECT_THAT(ticks(TimeAxis::hours24, 24),
              ElementsAre("16:00", "20:00", "00:00", "04:00", "08:00", "12:00", "now"));
  EXPECT_THAT(ticks(TimeAxis::days7, 168),
              ElementsAre("Fri 13", "Sat 14", "Sun 15", "Mon 16", "Tue 17", "Wed 18", "Thu 19", "now"));
  EXPECT_THAT(ticks(TimeAxis::days30, 720), ElementsAre("26 Oct", "2 Nov", "9 Nov", "16 Nov", "now"));
}

TEST(ChartRules, ticksStayOnTheHourWhenClocksChange) {
  const auto change = std::int64_t(parseRFC3339("2026-03-29T01:00:00Z")->sinceEpoch);
  const FakeTimeZone berlin(3600, {{change, 7200}});
  const Date now = *parseRFC3339("2026-03-29T10:00:00Z");
  const auto ticks = timeTicks(TimeAxis::hours12, now - Seconds{43'200}, now, berlin);
  EXPECT_THAT(labels(ticks), ElementsAre("00:00", "03:00", "04:00", "06:00", "08:00", "10:00", "now"));
  EXPECT_EQ(ticks[2].date - ticks[0].date, Seconds{3 * 3600});
}

TEST(ChartRules, whatWasNotRecordedIsAGap) {
  const Date begin = *parseRFC3339("2026-03-01T12:00:00Z");
  const auto at = [&](double minutes) { return ChartBucket{begin + Seconds{minutes * 60}, 1, 2, 3}; };
  auto data = day({at(0), at(5), at(120), at(125)});
  data.end = begin + Seconds{132 * 60}; // two minutes are on their way
  EXPECT_THAT(gaps(data), ElementsAre(ChartGap{begin + Seconds{600}, begin + Seconds{7200}}));
  data.end = begin + Seconds{180 * 60};
  data.begin = begin - Seconds{3600};
  EXPECT_THAT(gaps(data),
              ElementsAre(ChartGap{data.begin, begin}, ChartGap{begin + Seconds{600}, begin + Seconds{7200}},
                          ChartGap{begin + Seconds{130 * 60}, data.end}));

  // Live: ten seconds apart is the slow pace, and the axis is whole before there is anything on it.
  ChartData live{.state = ChartData::State::recorded, .time = TimeAxis::live};
  live.begin = begin;
  live.end = begin + Seconds{300};
  live.lines = {
      {"CPU",
       Token::cpu,
       {{begin + Seconds{200}, 1, 1, 1}, {begin + Seconds{210}, 1, 1, 1}, {begin + Seconds{290}, 1, 1, 1}}}};
  EXPECT_THAT(gaps(live), ElementsAre(ChartGap{begin + Seconds{210}, begin + Seconds{290}}));
  EXPECT_THAT(gaps(day({})), IsEmpty());
}

TEST(ChartRules, peaksSurviveMerging) {
  std::vector<ChartBucket> buckets;
  for (int i = 0; i < 6; ++i) buckets.push_back({Date{i * 10.0}, 1.0 + i, 10.0 + i, 20.0 + i});
  buckets[1].most = 99;
  buckets[5].date = Date{58};
  EXPECT_THAT(mergedByColumn(buckets, Date{0}, Date{60}, 2),
              ElementsAre(ChartBucket{Date{0}, 1, 11, 99}, ChartBucket{Date{30}, 4, 14, 25}));
  EXPECT_EQ(mergedByColumn(buckets, Date{0}, Date{60}, 60), buckets);
}

TEST(ChartRules, theReadoutTellsTheMomentAndItsFigures) {
  const FakeTimeZone zone(3600);
  const Date at = *parseRFC3339("2026-03-01T13:10:00Z");
  auto data = day({{at, 71, 93.4, 99}});
  EXPECT_EQ(sentence(readout(data, at, zone)), "14:10 – 14:15, 93%, 71 – 99%");
  EXPECT_EQ(sentence(readout(data, at + Seconds{300}, zone)), "14:15 – 14:20, Not recorded");

  data.scale = ValueScale::rate;
  data.bucket = Seconds{0};
  data.lines = {{"Read", Token::disk, {{at, 3.5e6, 3.5e6, 3.5e6}}},
                {"Written", Token::gray, {{at, 900, 900, 900}}}};
  EXPECT_EQ(sentence(readout(data, at, zone)), "14:10:00, Read 3.5 MB/s, Written 900 B/s");

  EXPECT_EQ(chartSpread(ValueScale::rate, 900, 2e6), "900 B/s – 2.0 MB/s");
  EXPECT_EQ(spanText(TimeAxis::days7, *parseRFC3339("2026-11-17T22:30:00Z"),
                     *parseRFC3339("2026-11-17T23:00:00Z"), zone),
            "Tue 17, 23:30 – Wed 18, 00:00");
}

TEST(ChartRules, aPointerFindsTheNearestBucket) {
  const Date begin = *parseRFC3339("2026-03-01T12:00:00Z");
  const auto data =
      day({{begin, 1, 1, 1}, {begin + Seconds{300}, 1, 1, 1}, {begin + Seconds{3000}, 1, 1, 1}});
  const auto dates = stops(data);
  const auto nearest = [&](double seconds) { return nearestStop(data, dates, begin + Seconds{seconds}); };
  EXPECT_EQ(nearest(-500), 0u);
  EXPECT_EQ(nearest(300), 1u) << "its begin belongs to it";
  EXPECT_EQ(nearest(299), 0u);
  EXPECT_EQ(nearest(301), 1u);
  EXPECT_EQ(nearest(2000), 2u);
  EXPECT_EQ(nearest(90'000), 2u);
  EXPECT_EQ(nearestStop(data, {}, begin), std::nullopt);
}

} // namespace
} // namespace korvell
