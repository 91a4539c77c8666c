#include "Tests/Fakes/FakeTimeZone.h"
#include "UI/AIUsage/AIUsagePage.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvell {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

struct AIUsageTests : testing::Test {
  const FakeTimeZone zone{3'600};
  const Date now = *parseRFC3339("2026-11-18T23:30:00Z"); // half past midnight on Thursday the 19th
  AIUsageSummary summary{.rows = {}, .codexLimits = {}, .updatedAt = now, .lastScan = {}};

  void use(int daysAgo, const char* model, const char* project, std::int64_t tokens,
           AITool tool = AITool::claude) {
    summary.rows.push_back({.day = startOfDay(zone, localDay(zone, now) + (-daysAgo)),
                            .tool = tool,
                            .model = model,
                            .project = project,
                            .tokens = {.input = tokens},
                            .cost = listCost(model, {.input = tokens})});
  }
  AIUsagePage page(AIPeriod period = AIPeriod::week, bool isScanning = false) const {
    return aiUsagePage(summary, {.zone = zone, .now = now, .period = period, .isScanning = isScanning});
  }
  std::vector<AIUsagePage::Limit> limits(double used, double in) {
    summary.codexLimits = AICodexLimits{
        .date = now, .plan = {}, .primary = AIPlanLimit{used, 300, now + Seconds{in}}, .secondary = {}};
    return page().plan.limits;
  }
};

TEST_F(AIUsageTests, cutsThePeriodFromTheMonth) {
  use(29, "claude-opus-5", "atlas", 1'000'000);
  use(6, "claude-opus-5", "atlas", 2'000'000);
  use(0, "gpt-5.5", "notes", 400'000, AITool::codex);
  const auto week = page();
  EXPECT_EQ(week.tiles[0].figure, "$2.00");
  EXPECT_EQ(week.tiles[1], (AIUsagePage::Tile{"API-equivalent, 7 days", "$12.00", "2.4M tokens", ""}));
  ASSERT_THAT(week.days->bars, SizeIs(7)) << "days without usage stand between";
  const auto& first = week.days->bars.front();
  EXPECT_EQ(first.label, "Fri 13");
  EXPECT_EQ(first.spoken, "Fri 13 Nov, 2.0M tokens, Claude Code 2.0M, Codex 0, $10.00");
  EXPECT_EQ(week.days->bars[1].total, "0");
  EXPECT_EQ(week.days->bars[1].beside, "$0.00");
  EXPECT_EQ(week.days->bars.back().label, "today") << "by the clock on the wall";
  EXPECT_EQ(week.models.front().spoken, "claude-opus-5, Claude Code, 2.0M tokens, $10.00");
  EXPECT_EQ(week.projects.back().name, "notes");
  const auto month = page(AIPeriod::month);
  EXPECT_THAT(month.days->bars, SizeIs(30));
  EXPECT_EQ(month.days->top, 2'000'000);
  EXPECT_EQ(month.days->ticks.front(), (DayBarsData::Tick{500'000, "500K"}));
  EXPECT_EQ(month.days->bars[1].label, "") << "many bars name their Mondays";
  EXPECT_EQ(month.days->bars[5].label, "26 Oct");
  EXPECT_EQ(costToday(summary, now, zone), 2);
}

TEST_F(AIUsageTests, whatHasNoPriceNeverCostsNothing) {
  use(0, "a-local-model", "atlas", 3'000'000);
  auto none = page(AIPeriod::today);
  EXPECT_EQ(none.tiles[0].figure, "–");
  EXPECT_EQ(none.tiles[0].reason, "No list price is known for what was used.");
  EXPECT_EQ(none.models.front().cost, "–");
  EXPECT_EQ(none.models.front().detail, "Claude Code · no list price");
  EXPECT_EQ(none.days->bars.back().beside, "–");
  EXPECT_EQ(costToday(summary, now, zone), std::nullopt);
  use(0, "claude-opus-5", "atlas", 1'000'000);
  none = page(AIPeriod::today);
  EXPECT_EQ(none.tiles[0].figure, "$5.00*");
  EXPECT_EQ(none.projects.front().cost, "$5.00*");
  EXPECT_EQ(none.leftOut, "* Costs leave out the tokens of models without a price: 3,000,000.");
}

TEST_F(AIUsageTests, saysWhatStandsInPlaceOfUsage) {
  EXPECT_EQ(page().sentence, "No Claude Code or Codex usage in the last 30 days.");
  summary.updatedAt.reset();
  EXPECT_EQ(page().sentence, "Reading your Claude Code and Codex history for the first time…");
  EXPECT_TRUE(page().isReading);
  summary.updatedAt = now;
  use(9, "claude-opus-5", "atlas", 1'000'000);
  EXPECT_EQ(page().noUsage, "No usage in this period.");
  EXPECT_EQ(page().days, std::nullopt);
  EXPECT_THAT(page().models, IsEmpty());
  EXPECT_EQ(page(AIPeriod::week, true).updated, "Updated 00:30 from ~/.claude and ~/.codex, refreshing…");
  const auto held =
      aiUsagePage(summary, {.zone = zone, .now = now, .outcome = AIUsageScanner::Outcome::locked});
  EXPECT_EQ(held.problem, "Another Korvell is reading the logs; these are the figures from before.");
}

TEST_F(AIUsageTests, limitsWarnUntilTheirWindowIsOver) {
  use(0, "claude-opus-5", "atlas", 1);
  EXPECT_EQ(page().plan.sentence, "no Codex sessions yet");
  EXPECT_FALSE(limits(79.99, 60).front().isTight);
  const auto tight = limits(80, 6 * 3'600).front();
  EXPECT_TRUE(tight.isTight);
  EXPECT_EQ(tight.spoken, "5-hour limit, 80%, resets 06:30");
  EXPECT_EQ(limits(80, 86'400).front().reset, "resets Friday 00:30");
  EXPECT_EQ(limits(80, 7 * 86'400).front().reset, "resets 2026-11-26 00:30");
  const auto over = limits(100, 0).front();
  EXPECT_FALSE(over.isTight);
  EXPECT_EQ(over.reset, "window has reset");
  EXPECT_EQ(limits(NAN, 60).front().percent, "–");
  summary.codexLimits->date = now - Seconds{3'600};
  EXPECT_EQ(page().plan.read, "read Yesterday, 23:30") << "an old reading says its day";
}

TEST_F(AIUsageTests, manyProjectsEndInOneSum) {
  for (int i = 0; i < 12; ++i)
    use(0, i < 10 ? "claude-opus-5" : "a-local-model", ("p" + std::to_string(i)).c_str(), 1'000'000 - i);
  const auto rows = page().projects;
  ASSERT_THAT(rows, SizeIs(10));
  EXPECT_EQ(rows.back().spoken, "3 more, 3.0M tokens, $5.00");
  EXPECT_EQ(rows.back().cost, "$5.00*");
}

} // namespace
} // namespace korvell
