// The page of AI usage over made-up sums, with and without a plan.

#include "UI/AIUsage/AIUsageView.h"
#include "UI/Gallery/Gallery.h"
#include "UI/Gallery/ListModel.h"
#include "UI/Gallery/PageFrame.h"
#include "UI/Kit/DayBars.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

struct UsedMachine : ListModel {
  AIPeriod period = AIPeriod::week;
  AIUsageStore store{
      *main,
      time.factory(),
      time.clock(),
      [](const Cancellation&) { return std::unique_ptr<AIUsageScanner>(); },
      {defaults, zone, [] { return std::string(); }, [](const HealthAlert&) { return false; }}};
};
using Made = std::unique_ptr<QWidget>;
using Machine = std::shared_ptr<UsedMachine>;

struct Use {
  const char* model;
  const char* project;
  AITool tool;
  double share; ///< of the day's tokens
};
constexpr Use uses[] = {{"claude-opus-5-5", "atlas", AITool::claude, 0.37},
                        {"claude-opus-5-5", "herbarium", AITool::claude, 0.15},
                        {"gpt-5.6-sol", "herbarium", AITool::codex, 0.18},
                        {"claude-sonnet-5", "handbook", AITool::claude, 0.12},
                        {"claude-sonnet-5", "atlas", AITool::claude, 0.08},
                        {"gpt-5.3-codex", "field-notes", AITool::codex, 0.05},
                        {"claude-haiku-4-5", "dotfiles", AITool::claude, 0.05}};

void use(UsedMachine& machine, int daysAgo, double millions, std::span<const Use> by) {
  auto summary = *machine.store.summary;
  for (const auto& each : by) {
    const auto tokens = std::int64_t(millions * each.share * 1e6);
    const Counts counts{.input = tokens / 50,
                        .output = tokens / 40,
                        .cacheWrite = tokens / 12,
                        .cacheRead = tokens - tokens / 50 - tokens / 40 - tokens / 12};
    summary.rows.push_back({.day = startOfDay(machine.zone, localDay(machine.zone, machine.now) + (-daysAgo)),
                            .tool = each.tool,
                            .model = each.model,
                            .project = each.project,
                            .tokens = {counts.input, counts.output, counts.cacheWrite, counts.cacheRead},
                            .cost = listCost(each.model, counts)});
  }
  summary.updatedAt = machine.now - Seconds{60};
  machine.store.summary.set(std::move(summary));
}

void plan(UsedMachine& machine, double weekly, double hours, double resetIn) {
  auto summary = *machine.store.summary;
  const auto now = machine.now;
  summary.codexLimits = AICodexLimits{.date = now - Seconds{240},
                                      .plan = {},
                                      .primary = AIPlanLimit{weekly, 10'080, now + Seconds{resetIn}},
                                      .secondary = AIPlanLimit{hours, 300, now + Seconds{5'900}}};
  machine.store.summary.set(std::move(summary));
}

Machine used(AIPeriod period = AIPeriod::week) {
  auto made = std::make_shared<UsedMachine>();
  made->period = period;
  constexpr double week[] = {41, 69.5, 44.7, 45.5, 14.8, 8.3, 45.2};
  for (int day = 29; day >= 0; --day)
    use(*made, day, day < 7 ? week[day] : 30 + 24 * std::sin(day * 1.3), uses);
  plan(*made, 84.6, 37, 4 * 86'400 - 6 * 3'600 - 42 * 60);
  return made;
}

/// Names without an end, a model without a price, a plan that was read days ago.
Machine wordy() {
  auto made = std::make_shared<UsedMachine>();
  const char* longName = "a-project-whose-name-is-longer-than-any-table-of-projects-is-wide";
  const Use odd[] = {
      {"claude-opus-5-5-with-a-suffix-that-goes-on-and-on-20260925", longName, AITool::claude, 0.9},
      {"a-model-that-nobody-has-a-price-for", "Home", AITool::codex, 0.1}};
  for (int day = 6; day >= 0; --day) use(*made, day, day == 3 ? 0 : 1'200.0 / (day + 1), odd);
  std::vector<Use> many;
  std::vector<std::string> names;
  for (int i = 0; i < 14; ++i) names.push_back("project-" + std::to_string(i));
  for (const auto& name : names) many.push_back({"gpt-5.5", name.c_str(), AITool::codex, 0.02});
  use(*made, 1, 90, many);
  auto summary = *made->store.summary;
  summary.codexLimits = AICodexLimits{.date = made->now - Seconds{3 * 86'400},
                                      .plan = "enterprise with a name that is not short",
                                      .primary = AIPlanLimit{100, 0, made->now + Seconds{9.0 * 86'400}},
                                      .secondary = AIPlanLimit{61, 1'440, made->now - Seconds{600}}};
  made->store.summary.set(std::move(summary));
  made->store.isScanning.set(true);
  return made;
}

Machine onlyBefore() {
  auto made = std::make_shared<UsedMachine>();
  made->period = AIPeriod::today;
  use(*made, 3, 12, std::span(uses).first(1));
  return made;
}

Machine unpriced() {
  auto made = onlyBefore();
  const Use none[] = {{"local-model", "atlas", AITool::claude, 1}};
  use(*made, 0, 3, none);
  made->store.outcome.set(AIUsageScanner::Outcome::locked);
  made->store.isScanning.set(true);
  return made;
}

Machine reading() {
  auto made = std::make_shared<UsedMachine>();
  made->store.isScanning.set(true);
  return made;
}

Machine unused() {
  auto made = std::make_shared<UsedMachine>();
  made->store.summary.set({.rows = {}, .codexLimits = {}, .updatedAt = made->now, .lastScan = {}});
  return made;
}

const QSize usual{884, 760}, low{664, 526}, wide{1184, 760};

GalleryView view(std::string name, std::function<Machine()> machine, std::vector<QSize> sizes = {usual},
                 std::optional<std::size_t> pointed = {}) {
  return {std::move(name), std::move(sizes), [=](const Theme& theme) -> Made {
            auto made = machine();
            auto* page = new AIUsageView(
                {.store = made->store, .model = *made, .theme = theme, .period = made->period}, nullptr);
            page->bars().point(pointed);
            return std::make_unique<PageFrame>(theme, made, page);
          }};
}

} // namespace

std::vector<GalleryView> aiUsageViews() {
  return {
      view(
          "ai-usage", [] { return used(); }, {usual, low, wide}, 5),
      view("ai-usage-month", [] { return used(AIPeriod::month); }, {usual, low}),
      view("ai-usage-today", [] { return used(AIPeriod::today); }),
      view("ai-usage-long", wordy, {usual, low}),
      view("ai-usage-none-today", onlyBefore),
      view("ai-usage-unpriced", unpriced),
      view("ai-usage-first-seconds", reading),
      view("ai-usage-none", unused, {usual, low}),
  };
}

} // namespace korvell
