#include "UI/AIUsage/AIUsageView.h"

#include "Base/Localization.h"
#include "UI/AIUsage/AIUsageParts.h"
#include "UI/Kit/Choices.h"
#include "UI/Kit/DayBars.h"
#include "UI/Kit/Icons.h"

namespace korvell {

namespace {

constexpr int tileGap = 16, tileWidth = 188, planGap = 23, tablesGap = 28;
constexpr int modelsShare = 11, projectsShare = 9;

std::vector<std::string> periodWords() {
  std::vector<std::string> words;
  for (const auto& period : allCases<AIPeriod>()) words.push_back(title(period.value));
  return words;
}

} // namespace

AIUsageView::AIUsageView(Services services, QWidget* parent)
    : ListPage(services.theme, SidebarItem::aiUsage, parent), services_(services),
      periods_(new Segments(theme_, localized("Period"), periodWords(), this)),
      empty_(new EmptyState(theme_, Icon::ai, localized("No AI usage"),
                            localized("No Claude Code or Codex usage in the last 30 days.") + " " +
                                localized("From ~/.claude and ~/.codex, nothing leaves your Mac."),
                            content_)),
      reading_(new TextLabel(theme_, TextStyle::body, Token::text2, "", content_)),
      problem_(new TextLabel(theme_, TextStyle::body, Token::warning, "", content_)),
      whole_(new QWidget(content_)), problemBox_(new QWidget(content_)), daysBox_(new QWidget(whole_)),
      today_(new CostTile(theme_, whole_)), period_(new CostTile(theme_, whole_)),
      planRule_(new Hairline(theme_, whole_, Qt::Vertical)), daysRule_(new Hairline(theme_, whole_)),
      footRule_(new Hairline(theme_, whole_)), plan_(new PlanBox(theme_, whole_)),
      daysNote_(new TextLabel(theme_, TextStyle::small, Token::text3, "", daysBox_)),
      legend_(new DayBarsLegend(theme_, daysBox_)), days_(new DayBars(theme_, daysBox_)),
      noUsage_(new TextLabel(theme_, TextStyle::body, Token::text2, "", whole_)),
      tablesBox_(new QWidget(whole_)),
      models_(new UsageTable(theme_, localized("By model"), std::nullopt, tablesBox_)),
      projects_(new UsageTable(theme_, localized("Top projects"), Icon::project, tablesBox_)),
      leftOut_(new TextLabel(theme_, TextStyle::small, Token::text2, "", whole_)),
      explanation_(new TextLabel(theme_, TextStyle::small, Token::text3, "", whole_)),
      source_(new TextLabel(theme_, TextStyle::small, Token::text2, "", whole_)),
      updated_(new TextLabel(theme_, TextStyle::small, Token::text3, "", whole_)) {
  build();
  const auto follow = [this](auto& published) {
    subscriptions_.push_back(published.observe([this](const auto&) { update(); }));
  };
  follow(services_.store.summary);
  follow(services_.store.isScanning);
  subscriptions_.push_back(services_.model.cycle.observe([this](std::int64_t) {
    if (minute() != shownMinute_) update();
  }));
  update();
}

AIUsageView::~AIUsageView() = default;

QWidget* AIUsageView::control() { return periods_; }

void AIUsageView::build() {
  periods_->choose(std::size_t(services_.period));
  periods_->onChoose([this](std::size_t chosen) {
    services_.period = AIPeriod(chosen);
    update();
  });
  auto* problem = bare<QHBoxLayout>(problemBox_);
  problem->setSpacing(8);
  problem->addWidget(new IconLabel(theme_, Icon::warning, 16, Token::warningMark, problemBox_));
  problem->addWidget(problem_, 1);
  problem_->setWrapped();
  problem->setContentsMargins(rowInset, 0, rowInset, 12);
  column_->addWidget(problemBox_);
  reading_->setWrapped();
  auto* reading = new QHBoxLayout;
  reading->setContentsMargins(rowInset, 0, rowInset, 0);
  reading->addWidget(reading_);
  column_->addLayout(reading);
  column_->addWidget(empty_, 1);
  column_->addWidget(whole_);
  column_->addStretch(0);
  auto* rows = bare<QVBoxLayout>(whole_);
  rows->setContentsMargins(rowInset, 0, rowInset, 0);
  buildHead(*rows);
  auto* days = bare<QVBoxLayout>(daysBox_);
  auto* title = new QHBoxLayout;
  title->setSpacing(28);
  title->addWidget(
      new TextLabel(theme_, TextStyle::head, Token::text1, localized("Tokens per day"), daysBox_));
  title->addWidget(legend_);
  title->addWidget(daysNote_, 1);
  title->addStretch(0);
  days->addLayout(title);
  days->addSpacing(4);
  days->addWidget(days_);
  days->addSpacing(18);
  days->addWidget(new Hairline(theme_, daysBox_));
  days->addSpacing(8);
  rows->addWidget(daysBox_);
  noUsage_->setWrapped();
  rows->addWidget(noUsage_);
  rows->addWidget(tablesBox_);
  auto* tables = bare<QHBoxLayout>(tablesBox_);
  tables->setSpacing(tablesGap);
  tables->addWidget(models_, modelsShare);
  tables->addWidget(projects_, projectsShare);
  tables_ = tables;
  rows->addSpacing(20);
  buildFoot(*rows);
}

void AIUsageView::buildHead(QBoxLayout& column) {
  auto* tiles = new QHBoxLayout;
  tiles->setSpacing(tileGap);
  for (auto* tile : {today_, period_}) {
    tile->setMinimumWidth(theme_.scaled(tileWidth));
    tiles->addWidget(tile);
  }
  head_ = new QBoxLayout(QBoxLayout::LeftToRight);
  head_->setSpacing(0);
  head_->addLayout(tiles);
  head_->addWidget(planRule_);
  head_->addSpacing(planGap);
  head_->addWidget(plan_, 1);
  column.addLayout(head_);
  column.addSpacing(16);
  column.addWidget(daysRule_);
  column.addSpacing(14);
}

void AIUsageView::buildFoot(QBoxLayout& column) {
  column.addWidget(footRule_);
  column.addSpacing(10);
  for (auto* label : {leftOut_, explanation_}) {
    label->setWrapped();
    column.addWidget(label);
    column.addSpacing(6);
  }
  foot_ = new QBoxLayout(QBoxLayout::LeftToRight);
  foot_->setSpacing(4);
  foot_->addWidget(source_, 1);
  foot_->addWidget(updated_);
  updated_->setNeverCut();
  column.addSpacing(4);
  column.addLayout(foot_);
}

void AIUsageView::arrange(bool isNarrow) {
  const auto direction = isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight;
  head_->setDirection(direction);
  tables_->setDirection(direction);
  foot_->setDirection(direction);
  planRule_->setVisible(!isNarrow);
}

/// Time alone changes days and what limits are about: no reason to sum a month up at every cycle.
std::int64_t AIUsageView::minute() const {
  return std::int64_t(services_.model.snapshot->date.sinceEpoch) / 60;
}

void AIUsageView::update() {
  shownMinute_ = minute();
  auto page = aiUsagePage(*services_.store.summary, {.zone = services_.store.zone(),
                                                     .now = services_.model.snapshot->date,
                                                     .period = services_.period,
                                                     .isScanning = *services_.store.isScanning,
                                                     .outcome = *services_.store.outcome});
  if (shown_ == page) return;
  shown_ = std::move(page);
  const bool isUsed = shown_->sentence.empty();
  problem_->setWords(shown_->problem);
  problemBox_->setVisible(!shown_->problem.empty());
  reading_->setWords(shown_->sentence);
  reading_->setVisible(shown_->isReading);
  empty_->setVisible(!isUsed && !shown_->isReading);
  if (periods_) periods_->setVisible(isUsed);
  if (isUsed) fill();
  // Once it is filled: a layout that was asked before would keep its answer while nothing is on the screen.
  whole_->setVisible(isUsed);
}

void AIUsageView::fill() {
  today_->show(shown_->tiles[0]);
  period_->show(shown_->tiles[1]);
  plan_->show(shown_->plan);
  daysBox_->setVisible(shown_->days.has_value());
  if (shown_->days) {
    legend_->setSeries(shown_->days->series, shown_->days->token);
    days_->setData(*shown_->days);
  }
  daysNote_->setWords(shown_->daysNote);
  noUsage_->setWords(shown_->noUsage);
  noUsage_->setVisible(!shown_->noUsage.empty());
  models_->show(shown_->models);
  projects_->show(shown_->projects);
  tablesBox_->setVisible(shown_->noUsage.empty());
  leftOut_->setWords(shown_->leftOut);
  leftOut_->setVisible(!shown_->leftOut.empty());
  explanation_->setWords(shown_->explanation);
  source_->setWords(shown_->source);
  updated_->setWords(shown_->updated);
}

} // namespace korvell
