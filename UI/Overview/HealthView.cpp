#include "UI/Overview/HealthView.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QResizeEvent>
#include <algorithm>

namespace korvell {

namespace {

constexpr int narrow = 700, wide = 1000; ///< of the page
constexpr int padding = 28, narrowPadding = 20, widest = 1120, gutter = 16;
constexpr int ringGap = 38, sideWidth = 252, wideSide = 320, sideGap = 28;

QVBoxLayout* column(QWidget* owner) {
  auto* layout = new QVBoxLayout(owner);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  return layout;
}

QHBoxLayout* row(QWidget* owner) {
  auto* layout = new QHBoxLayout(owner);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  return layout;
}

void clear(std::vector<QWidget*>& widgets) {
  for (auto* widget : widgets) {
    widget->hide();
    widget->deleteLater();
  }
  widgets.clear();
}

ScoreRing::Share shareOf(const FindingRow& row) { return {double(row.penalty), row.tone}; }

} // namespace

HealthView::HealthView(const Theme& theme, QWidget* parent)
    : Page(parent), theme_(theme), updated_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)),
      scroll_(new ScrollArea(theme, Token::surface, this)), content_(new QWidget),
      ring_(new ScoreRing(theme, ScoreRing::page, content_)) {
  column(this)->addWidget(scroll_);
  rows_ = column(content_);
  auto* topHolder = new QWidget(content_);
  top_ = row(topHolder);
  top_->setSpacing(ringGap);
  top_->addWidget(ring_, 0, Qt::AlignTop);
  top_->addWidget(makeLedger(), 1, Qt::AlignTop);
  rows_->addWidget(topHolder);
  rows_->addSpacing(20);
  auto* tileHolder = new QWidget(content_);
  tileGrid_ = new QGridLayout(tileHolder);
  tileGrid_->setContentsMargins(0, 0, 0, 0);
  tileGrid_->setHorizontalSpacing(gutter);
  tileGrid_->setVerticalSpacing(12);
  rows_->addWidget(tileHolder);
  rows_->addSpacing(20);
  auto* bottomHolder = new QWidget(content_);
  bottom_ = row(bottomHolder);
  bottom_->setSpacing(sideGap);
  bottom_->addWidget(makeApps(), 1, Qt::AlignTop);
  bottom_->addWidget(makeSide(), 0, Qt::AlignTop);
  rows_->addWidget(bottomHolder);
  rows_->addStretch(1);
  scroll_->setContent(*content_);
  ring_->onHover([this](std::optional<std::size_t> share) {
    for (std::size_t i = 0; i < findings_.size(); ++i) findings_[i]->setPointedAt(share == i);
  });
}

std::string HealthView::title() const { return korvell::title(SidebarItem::overview); }

QWidget* HealthView::head(std::string_view words, SidebarItem leadsTo, QWidget* parent) {
  auto* holder = new QWidget(parent);
  auto* line = row(holder);
  line->addWidget(new TextLabel(theme_, TextStyle::head, Token::text1, words, holder), 1);
  auto* more = new Button(theme_, Button::Kind::quiet, localized("Show all"), holder);
  more->setMark(Button::Mark::chevron);
  more->onPress([this, leadsTo] { open_(leadsTo); });
  line->addWidget(more);
  return holder;
}

QWidget* HealthView::makeLedger() {
  auto* holder = new QWidget(content_);
  ledger_ = column(holder);
  auto* headHolder = new QWidget(holder);
  auto* line = row(headHolder);
  loss_ = new TextLabel(theme_, TextStyle::head, Token::text1, "", headHolder);
  average_ = new TextLabel(theme_, TextStyle::small, Token::text2, "", headHolder);
  line->addWidget(loss_, 1);
  line->addWidget(average_);
  headHolder->setMinimumHeight(theme_.scaled(25));
  ledger_->addWidget(headHolder);
  reassurance_ = new TextLabel(theme_, TextStyle::body, Token::text2, "", holder);
  reassurance_->setWrapped();
  ledger_->addWidget(reassurance_);
  return holder;
}

QWidget* HealthView::makeApps() {
  auto* holder = new QWidget(content_);
  apps_ = column(holder);
  apps_->addWidget(head(localized("Top applications"), SidebarItem::cpu, holder));
  heads_ = new AppHeads(theme_, holder);
  apps_->addWidget(heads_);
  return holder;
}

QWidget* HealthView::makeSide() {
  side_ = new QWidget(content_);
  auto* columns = column(side_);
  auto* title = new TextLabel(theme_, TextStyle::head, Token::text1, localized("Today"), side_);
  title->setFixedHeight(theme_.scaled(28));
  columns->addWidget(title);
  today_ = new QVBoxLayout;
  today_->setSpacing(0);
  columns->addLayout(today_);
  columns->addSpacing(10);
  columns->addWidget(head(localized("Alerts"), SidebarItem::alerts, side_));
  alerts_ = new QVBoxLayout;
  alerts_->setSpacing(0);
  columns->addLayout(alerts_);
  return side_;
}

FindingView* HealthView::makeFinding() {
  auto* rule = new Hairline(theme_, content_);
  auto* finding = new FindingView(theme_, PartForm::page, content_);
  const auto index = findings_.size();
  finding->onStep([this](const Step& step) { step_(step); });
  finding->onHover(
      [this, index](bool isOn) { ring_->highlight(isOn ? std::optional(index) : std::nullopt); });
  rules_.push_back(rule);
  ledger_->addWidget(rule);
  ledger_->addWidget(finding);
  rule->QWidget::show();
  finding->QWidget::show();
  return finding;
}

void HealthView::show(const HealthPage& page) {
  if (shown_ == page) return;
  updated_->setWords(page.updated);
  if (!shown_ || shown_->head != page.head || shown_->reassurance != page.reassurance) showHead(page);
  fitRows(tiles_, page.tiles.size(), [this] {
    auto* tile = new TileView(theme_, PartForm::page, content_);
    tile->onOpen([this](SidebarItem item) { open_(item); });
    tileColumns_ = 0;
    return tile;
  });
  for (std::size_t i = 0; i < page.tiles.size(); ++i) tiles_[i]->show(page.tiles[i]);
  heads_->setSortedBy(page.sortedBy);
  fitRows(appRows_, page.apps.size(), [this] {
    auto* app = new AppRowView(theme_, PartForm::page, content_);
    app->onOpen([this] { open_(SidebarItem::cpu); });
    apps_->addWidget(app);
    app->QWidget::show();
    return app;
  });
  for (std::size_t i = 0; i < page.apps.size(); ++i) appRows_[i]->show(page.apps[i], page.sortedBy);
  if (!shown_ || shown_->today != page.today) showToday(page.today);
  if (!shown_ || shown_->alerts != page.alerts) showAlerts(page.alerts);
  shown_ = page;
  if (tileColumns_ == 0) arrange(width());
}

void HealthView::showHead(const HealthPage& page) {
  const auto& head = page.head;
  std::vector<ScoreRing::Share> lost;
  for (const auto& finding : head.findings) lost.push_back(shareOf(finding));
  ring_->setScore(head.score, std::move(lost));
  ring_->setLabel(head.score ? head.label : std::string());
  ring_->setName(head.name);
  loss_->setWords(head.loss);
  average_->setWords(head.average);
  reassurance_->setWords(page.reassurance);
  reassurance_->setVisible(!page.reassurance.empty());
  while (rules_.size() > head.findings.size()) {
    rules_.back()->deleteLater();
    rules_.pop_back();
  }
  while (findings_.size() > head.findings.size()) {
    findings_.back()->hide();
    findings_.back()->deleteLater();
    findings_.pop_back();
  }
  while (findings_.size() < head.findings.size()) findings_.push_back(makeFinding());
  bool hasPrimary = false;
  for (std::size_t i = 0; i < findings_.size(); ++i) {
    const auto& row = head.findings[i];
    findings_[i]->show(row, row.fix && !std::exchange(hasPrimary, hasPrimary || row.fix));
  }
}

void HealthView::showToday(const std::vector<HealthPage::Total>& totals) {
  clear(todayRows_);
  for (const auto& total : totals) {
    auto* rule = new Hairline(theme_, side_);
    auto* holder = new QWidget(side_);
    auto* line = row(holder);
    line->addWidget(new TextLabel(theme_, TextStyle::body, Token::text2, total.title, holder), 1);
    auto* figure = new FigureLabel(theme_, TextStyle::body, holder);
    figure->setFigure(total.figure);
    figure->setTokens(Token::text1, Token::text1);
    line->addWidget(figure);
    holder->setFixedHeight(theme_.scaled(27));
    for (QWidget* widget : {static_cast<QWidget*>(rule), holder}) {
      today_->addWidget(widget);
      todayRows_.push_back(widget);
      widget->show();
    }
  }
}

void HealthView::showAlerts(const std::vector<HealthPage::Alert>& alerts) {
  clear(alertRows_);
  const auto add = [this](QWidget* widget) {
    alerts_->addWidget(widget);
    alertRows_.push_back(widget);
    widget->show();
  };
  for (const auto& alert : alerts) {
    add(new Hairline(theme_, side_));
    auto* holder = new QWidget(side_);
    auto* line = row(holder);
    line->setContentsMargins(0, 7, 0, 7);
    line->setSpacing(8);
    line->addWidget(new IconLabel(theme_, alert.icon, 16, Token::text2, holder), 0, Qt::AlignTop);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(0);
    texts->addWidget(new TextLabel(theme_, TextStyle::body, Token::text1, alert.title, holder));
    texts->addWidget(new TextLabel(theme_, TextStyle::small, Token::text3, alert.time, holder));
    line->addLayout(texts, 1);
    add(holder);
  }
  if (alerts.empty()) {
    add(new Hairline(theme_, side_));
    auto* none = new TextLabel(theme_, TextStyle::body, Token::text3, localized("No alerts."), side_);
    none->setFixedHeight(theme_.scaled(30));
    add(none);
  }
}

void HealthView::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  arrange(width());
}

void HealthView::arrange(int width) {
  const int side = width < narrow ? narrowPadding : padding;
  const int spare = std::max(0, (width - 2 * side - widest) / 2);
  rows_->setContentsMargins(side + spare, 4, side + spare, padding);
  const int inner = std::min(widest, width - 2 * side);
  const int columns = inner > wide ? 6 : inner > 520 ? 3 : 2;
  if (std::exchange(tileColumns_, columns) != columns) {
    for (auto* tile : tiles_) tileGrid_->removeWidget(tile);
    for (int i = 0; i < 6; ++i) tileGrid_->setColumnStretch(i, i < columns ? 1 : 0);
    for (int i = 0; i < int(tiles_.size()); ++i) {
      tileGrid_->addWidget(tiles_[std::size_t(i)], i / columns, i % columns);
      tiles_[std::size_t(i)]->QWidget::show();
    }
  }
  const bool isNarrow = inner < narrow - 2 * narrowPadding;
  bottom_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  side_->setMinimumWidth(isNarrow ? 0 : inner > wide ? wideSide : sideWidth);
  side_->setMaximumWidth(isNarrow ? QWIDGETSIZE_MAX : inner > wide ? wideSide : sideWidth);
}

} // namespace korvell
