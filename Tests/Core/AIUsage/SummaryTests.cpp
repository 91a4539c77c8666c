#include "Core/AIUsage/AIPricing.h"
#include "Core/AIUsage/UsageSummary.h"
#include "Tests/Fakes/FakeTimeZone.h"

#include <cmath>
#include <gtest/gtest.h>

namespace korvell {
namespace {

constexpr int million = 1'000'000;

TEST(PricingTests, theLongestEntryThatANameBeginsWithIsItsPrice) {
  const std::tuple<const char*, Counts, double> rows[] = {
      {"CLAUDE-SONNET-4-5", {million, 2 * million, 0, 0, million}, 3 + 30 + 0.3},
      {"claude-sonnet-4-5", {0, 0, million, 400'000, 0}, 4.65},
      {"gpt-5-codex-high", {million}, 1.25},
      {"claude-fable-5-1-x", {.cacheRead = million}, 0.25},
      {"claude-fable-5-2", {.cacheRead = million}, 1},
      {"claude-opus-5-5", {million}, 4},
      {"claude-opus-5", {million}, 5}};
  for (const auto& [model, counts, dollars] : rows)
    EXPECT_DOUBLE_EQ(listCost(model, counts).value(), dollars) << model;
  for (const char* model : {"gpt-4o", "", "claude-sonnet", "xclaude-opus-5", "unknown"})
    EXPECT_FALSE(listCost(model, {million})) << model;
  EXPECT_EQ(AIPricing::table().size(), 23u);
}

AIUsageRow row(double day, AITool tool, const char* model, const char* project, std::int64_t input,
               std::optional<double> cost) {
  return {{day}, tool, model, project, {.input = input}, cost};
}

TEST(SummaryTests, rollUps) {
  AIUsageSummary summary;
  summary.rows = {
      row(10, AITool::claude, "old", "shop", 1, 100), row(20, AITool::claude, "m", "shop", 5, 1.5),
      row(20, AITool::codex, "m", "api", 6, {}),      row(30, AITool::claude, "free", "api", 7, 0),
      row(30, AITool::claude, "m", "api", 1, {}),     row(30, AITool::codex, "n", "zoo", 9, {})};
  EXPECT_EQ(summary.rowsSince({20}).size(), 5u);
  EXPECT_EQ(summary.tokens({20}, AITool::codex).input, 15);
  EXPECT_EQ(summary.total({20}), (AITotal{{.input = 28}, 1.5, 16}));
  EXPECT_EQ(summary.cost({20}, AITool::codex), std::nullopt) << "no figure is better than a wrong one";
  EXPECT_EQ(summary.cost({31}), 0) << "nothing used costs nothing";
  const std::vector<AIModelTotal> models = {{AITool::claude, "m", {.input = 6}, 1.5, 1},
                                            {AITool::claude, "free", {.input = 7}, 0, 0},
                                            {AITool::codex, "n", {.input = 9}, {}, 9},
                                            {AITool::codex, "m", {.input = 6}, {}, 6}};
  EXPECT_EQ(summary.byModel({20}), models);
  const std::vector<AIProjectTotal> projects = {
      {"shop", {.input = 5}, 1.5, 0}, {"api", {.input = 14}, 0, 7}, {"zoo", {.input = 9}, {}, 9}};
  EXPECT_EQ(summary.byProject({20}), projects);
  EXPECT_EQ(summary.rows[1].id(), "20.0|Claude Code|m|shop");
}

TEST(SummaryTests, periodsBeginAtMidnight) {
  // New York in March 2025: clocks go forward on the 9th.
  const FakeTimeZone zone(-5 * 3'600, {{1'741'503'600, -4 * 3'600}});
  const double midnight10 = 1'741'579'200, midnight4 = 1'741'064'400;
  EXPECT_EQ(AIUsageSummary::startOfPeriod(1, {midnight10}, zone).sinceEpoch, midnight10);
  EXPECT_EQ(AIUsageSummary::startOfPeriod(1, {midnight10 + 80'000}, zone).sinceEpoch, midnight10);
  EXPECT_EQ(AIUsageSummary::startOfPeriod(7, {midnight10 + 1}, zone).sinceEpoch, midnight4);
}

TEST(LimitsTests, namesAndTheTightest) {
  const std::pair<std::int64_t, const char*> rows[] = {{10'080, "Weekly"}, {300, "5-hour"}, {1'440, "1-day"},
                                                       {4'320, "3-day"},   {120, "2-hour"}, {90, "1-hour"},
                                                       {0, "Plan"}};
  for (const auto& [minutes, name] : rows) EXPECT_EQ((AIPlanLimit{0, minutes, {}}).name(), name);
  EXPECT_EQ(AIPlanLimit{84.99}.wholePercent(), 84);
  EXPECT_EQ(AIPlanLimit{1e300}.wholePercent(), 999);
  EXPECT_EQ(AIPlanLimit{-0.5}.wholePercent(), 0);
  EXPECT_EQ(AIPlanLimit{NAN}.wholePercent(), std::nullopt);
  const AICodexLimits limits{
      .date = {1}, .primary = AIPlanLimit{90, 300, {100}}, .secondary = AIPlanLimit{90, 10'080, {200}}};
  EXPECT_EQ(limits.tightest({99})->windowMinutes, 300);
  EXPECT_EQ(limits.tightest({100})->windowMinutes, 10'080);
  EXPECT_FALSE(limits.tightest({200}));
}

TEST(LimitsTests, theStoredFormCountsFrom2001) {
  const AICodexLimits limits{{978'307'200}, "pro", std::nullopt, AIPlanLimit{84.6, 300, {978'307'201.5}}};
  EXPECT_EQ(
      encodeLimits(limits),
      R"({"date":0.0,"plan":"pro","secondary":{"usedPercent":84.6,"windowMinutes":300,"resetsAt":1.5}})");
  EXPECT_EQ(decodeLimits(encodeLimits(limits)), limits);
  for (const char* text : {"", "{}", "[]", R"({"date":"x"})", R"({"date":1,"primary":{"usedPercent":1}})",
                           R"({"date":1,"plan":2})"})
    EXPECT_FALSE(decodeLimits(text)) << text;
}

} // namespace
} // namespace korvell
