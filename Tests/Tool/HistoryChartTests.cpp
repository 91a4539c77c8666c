#include "App/TimeArgument.h"
#include "Tool/HistoryChart.h"

#include "Tests/Fakes/FakeTimeZone.h"

#include <cmath>
#include <gtest/gtest.h>

namespace korvell {
namespace {

std::string joined(const std::vector<std::optional<double>>& columns) {
  std::string text;
  for (const auto& column : columns) text += (column ? std::to_string(std::lround(*column * 10)) : "-") + " ";
  return text;
}

TEST(HistoryChartTests, aColumnIsTheMeanOfItsTimeAndGapsStayGaps) {
  struct Row {
    const char* what;
    std::vector<HistoryPoint> points;
    double cover;
    const char* columns;
  };
  for (const Row& row : {Row{"one a column", {{Date{0}, 1}, {Date{10}, 2}, {Date{30}, 4}}, 10, "10 20 - 40 "},
                         {"two in one column", {{Date{0}, 1}, {Date{5}, 2}}, 5, "15 - - - "},
                         {"one over three", {{Date{5}, 3}}, 20, "30 30 30 - "},
                         {"a share of a column", {{Date{0}, 1}, {Date{8}, 6}}, 8, "20 60 - - "},
                         {"reaching out on both sides", {{Date{-5}, 1}, {Date{35}, 2}}, 10, "10 - - 20 "},
                         {"outside", {{Date{-50}, 1}, {Date{60}, 2}}, 10, "- - - - "},
                         {"nothing", {}, 10, "- - - - "}})
    EXPECT_EQ(joined(chartColumns(row.points, {Date{0}, Date{40}, Seconds{row.cover}}, 4)), row.columns)
        << row.what;
}

TEST(HistoryChartTests, aChartFitsAndShowsItsScale) {
  std::string sink;
  FakeTimeZone zone(3600);
  const ChartSpan span{Date{1'772'323'200}, Date{1'772'366'400}, Seconds{180}}; // half a day
  std::vector<HistoryPoint> points;
  for (int i = 0; i < 240; ++i)
    if (i < 60 || i >= 120) points.push_back({span.begin + Seconds{i * 180.0}, i < 60 ? 0.0 : i - 119.0});
  const SeriesSummary summary{0, 41, 180}; // a minute's peak lies above every bucket
  for (int width : {24, 40, 80, 120}) {
    const Terminal terminal(sink, width);
    const auto lines = chartLines(terminal, Metric::cpu, points, summary, span, zone, width);
    ASSERT_EQ(lines.size(), 11u);
    for (std::size_t i = 0; i + 1 < lines.size(); ++i) EXPECT_LE(inkedWidth(lines[i]), width) << lines[i];
  }
  const auto lines = chartLines(Terminal(sink, 38), Metric::cpu, points, summary, span, zone, 38);
  EXPECT_EQ(lines, (std::vector<std::string>{
                       "120% ┤                              ▂▆", "     │                            ▂▆██",
                       "     │                          ▂▆████", "     │                        ▂▆██████",
                       " 60% ┤                      ▂▆████████", "     │                    ▂▆██████████",
                       "     │                  ▂▆████████████", "     │▁▁▁▁▁▁▁▁        ▂▆██████████████",
                       "  0% └────────────────────────────────", "      01:00 04:00   07:00        13:00",
                       "minimum 0% · mean 41% · maximum 180%"}));
}

TEST(TimeArgumentTests, timesAreReadAsPeopleTypeThem) {
  // One hour ahead of UTC, two from 2026-03-29 01:00 UTC on. Now is 2026-03-01 13:00 there.
  const FakeTimeZone zone(3600, {{1'774'746'000, 7200}});
  const Date now{1'772'366'400};
  const auto at = [&](std::string_view text) {
    const auto date = parseTimeArgument(text, zone, now);
    return date ? rfc3339(*date) : "";
  };
  for (auto [text, expected] : {std::pair{"12:30", "2026-03-01T11:30:00.000Z"},
                                {"13:00", "2026-03-01T12:00:00.000Z"},
                                {"13:01", "2026-02-28T12:01:00.000Z"}, // it is not that late yet
                                {"9:05", "2026-03-01T08:05:00.000Z"},
                                {"2026-02-03 00:00", "2026-02-02T23:00:00.000Z"},
                                {"2026-03-30 14:32", "2026-03-30T12:32:00.000Z"},
                                {"2026-03-29 03:30", "2026-03-29T01:30:00.000Z"},
                                {"2026-02-28T12:01:00+01:00", "2026-02-28T11:01:00.000Z"},
                                {"24:00", ""},
                                {"12:60", ""},
                                {"12:5", ""},
                                {"12", ""},
                                {"-1:00", ""},
                                {"2026-13-01 12:00", ""},
                                {"2026-02-03 ", ""},
                                {"yesterday", ""},
                                {"", ""}})
    EXPECT_EQ(at(text), expected) << text;
}

} // namespace
} // namespace korvell
