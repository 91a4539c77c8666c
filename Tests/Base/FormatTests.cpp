#include "Base/Format.h"

#include <cmath>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using Rows = std::initializer_list<std::pair<double, const char*>>;

TEST(FormatTests, memoryCountsInMultiplesOf1024) {
  const double kb = 1024, mb = kb * 1024, gb = mb * 1024;
  const Rows rows = {{0.4, "0 B"},
                     {1023, "1023 B"},
                     {1023.5, "1.00 KB"},
                     {9.995 * mb, "10.0 MB"},
                     {9.994 * mb, "9.99 MB"},
                     {99.95 * mb, "100 MB"},
                     {99.94 * mb, "99.9 MB"},
                     {1023.4 * mb, "1023 MB"},
                     {1023.5 * mb, "1.00 GB"},
                     {-1.5 * gb, "-1.50 GB"},
                     {NAN, "–"},
                     {INFINITY, "–"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(Format::memory(value), text) << value;
}

TEST(FormatTests, bytesCountInMultiplesOf1000) {
  const Rows rows = {{999, "999 B"},          {999.5, "1.00 KB"},         {9994, "9.99 KB"},
                     {9995, "10.0 KB"},       {99'950, "100 KB"},         {999'499, "999 KB"},
                     {999'500, "1.00 MB"},    {9'999'999'999, "10.0 GB"}, {-0.2, "0 B"},
                     {-2'500'000, "-2.50 MB"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(Format::bytes(value), text) << value;
}

TEST(FormatTests, ratesHaveOneDecimalBelowTen) {
  const Rows rows = {{0, "0 B/s"},          {950, "950 B/s"},      {9'949, "9.9 KB/s"}, {9'950, "10 KB/s"},
                     {999'499, "999 KB/s"}, {999'500, "1.0 MB/s"}, {NAN, "–"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(Format::rate(value), text) << value;
}

TEST(FormatTests, durationsAreTruncated) {
  const Rows rows = {{-5, "0 min"},        {59.9, "0 min"},           {60, "1 min"},
                     {3599, "59 min"},     {3600, "1 h 0 min"},       {1439 * 60 + 59, "23 h 59 min"},
                     {1440 * 60, "1 day"}, {14.99 * 86400, "14 days"}};
  for (const auto& [value, text] : rows) EXPECT_EQ(Format::duration(Seconds(value)), text) << value;
}

TEST(FormatTests, smallFigures) {
  EXPECT_EQ(Format::percent(99.5), "100%");
  EXPECT_EQ(Format::percent(-0.2), "0%");
  EXPECT_EQ(Format::watts(99.94), "99.9 W");
  EXPECT_EQ(Format::watts(99.96), "100 W");
  EXPECT_EQ(Format::grouped(1234567), "1,234,567");
  EXPECT_EQ(Format::grouped(-123456), "-123,456");
  EXPECT_EQ(Format::grouped(INT64_MIN), "-9,223,372,036,854,775,808");
  EXPECT_EQ(Format::dollars(-0.001), "$0.00");
  EXPECT_EQ(Format::dollars(-1234.567), "-$1,234.57");
  const std::pair<std::int64_t, const char*> counts[] = {{0, "0"},
                                                         {999, "999"},
                                                         {1'000, "1.0K"},
                                                         {99'949, "99.9K"},
                                                         {99'950, "100K"},
                                                         {999'499, "999K"},
                                                         {999'500, "1.0M"},
                                                         {-45'230'000, "-45.2M"},
                                                         {269'000'000, "269M"},
                                                         {1'250'000'000, "1.3B"},
                                                         {INT64_MAX, "9223Q"}};
  for (const auto& [count, text] : counts) EXPECT_EQ(Format::shortCount(count), text) << count;
}

} // namespace
TEST(FormatTests, figuresGoByTheirUnits) {
  const std::pair<Unit, const char*> rows[] = {{Unit::memory, "1.46 KB"},
                                               {Unit::bytes, "1.50 KB"},
                                               {Unit::bytesPerSecond, "1.5 KB/s"},
                                               {Unit::percent, "1500%"},
                                               {Unit::corePercent, "1500.0%"},
                                               {Unit::celsius, "1500°C"},
                                               {Unit::watts, "1500 W"},
                                               {Unit::minutes, "1 day"},
                                               {Unit::dollars, "$1,500.00"},
                                               {Unit::revolutionsPerMinute, "1500"},
                                               {Unit::none, "1500"}};
  for (const auto& [unit, text] : rows) EXPECT_EQ(Format::figure(unit, 1500), text);
  for (const auto& unit : allCases<Unit>())
    EXPECT_EQ(Format::figure(unit.value, NAN), noFigure) << unit.rawValue;
}

} // namespace korvell
