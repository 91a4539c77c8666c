#include "UI/Overview/HealthView.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"

#include <QGridLayout>
#include <QResizeEvent>
#include <algorithm>

namespace korvell {

namespace {

constexpr int narrowBelow = 760, wideAbove = 1000; ///< of the page
constexpr int gutter = 16, narrowGutter = 12;
constexpr int topMargin = 8, topHeight = 166; ///< the ring's place; a ledger of three findings fills it
constexpr int ringGap = 38, narrowRingGap = 26, sideWidth = 252, wideSide = 320, sideGap = 28;
constexpr int headHeight = 32, focusRoom = 4;

/// Its ends stand where the text of rows does.
QHBoxLayout* insetRow(QWidget* owner) {
  auto* layout = bare<QHBoxLayout>(owner);
  layout->setContentsMargins(rowOutset, 0, rowOutset, 0);
  return layout;
}

/// Text at both sides of a row, below a hairline.
QRectF between(const QWidget& widget) { return QRectF(widget.rect()).adjusted(rowOutset, 1, -rowOutset, 0); }

void drawTopLine(QPainter& painter, const QWidget& widget, const Theme& theme) {
  drawHairline(painter, {double(rowOutset), 0}, widget.width() - 2 * rowOutset, theme.color(Token::hairline));
}

} // namespace

class HealthView::TotalRow final : public Painted {
public:
  TotalRow(const Theme& theme, QWidget* parent) : Painted(theme, parent) {}

  void show(const HealthPage::Total& total) {
    total_ = total;
    figure_ = textOf(total.figure);
    setName(total.title + ", " + (total.reason.empty() ? figure_ : total.reason));
    setReason(total.reason);
    setFocusPolicy(total.reason.empty() ? Qt::NoFocus : Qt::TabFocus);
    update();
  }
  QSize sizeHint() const override { return {120, theme().scaled(28)}; }
  QAccessible::Role role() const override { return QAccessible::StaticText; }

protected:
  void draw(QPainter& painter) override {
    drawTopLine(painter, *this, theme());
    painter.setLayoutDirection(layoutDirection());
    const auto figure = text(figure_);
    const auto font = fontOf(theme(), TextStyle::body);
    painter.setPen(theme().color(total_.reason.empty() ? Token::text1 : Token::text3));
    drawFigures(painter, between(*this), isRightToLeft() ? Qt::AlignLeft : Qt::AlignRight, font, figure);
    auto title = between(*this);
    const double taken = figureWidth(font, figure) + 8;
    isRightToLeft() ? title.setLeft(title.left() + taken) : title.setRight(title.right() - taken);
    drawText(painter, title, theme(), TextStyle::body, Token::text2, text(total_.title));
  }

private:
  HealthPage::Total total_;
  std::string figure_;
};

class HealthView::AlertRow final : public Control {
public:
  AlertRow(const Theme& theme, QWidget* parent, Task open) : Control(theme, parent), open_(std::move(open)) {}

  void show(const HealthPage::Alert& alert) {
    alert_ = alert;
    setName(alert.title + ", " + alert.time);
    setToolTip(text(alert.title));
    update();
  }
  QSize sizeHint() const override { return {120, theme().scaled(48)}; }
  QAccessible::Role role() const override { return QAccessible::ListItem; }

protected:
  void pressed() override { open_(); }
  QRectF shape() const override { return QRectF(rect()).adjusted(4, 5, -4, -4); }

  void draw(QPainter& painter) override {
    drawTopLine(painter, *this, theme());
    if (isHovered())
      fillRounded(painter, QRectF(rect()).adjusted(2, 3, -2, -2), 6, theme().color(Token::hover));
    painter.setLayoutDirection(layoutDirection());
    constexpr double icon = 16, left = 24;
    auto box = between(*this);
    const double title = theme().scaled(7), time = theme().scaled(25), line = theme().scaled(18);
    drawIcon(painter, alert_.icon,
             {isRightToLeft() ? box.right() - icon : box.left(), title + (line - icon) / 2, icon, icon},
             theme().color(Token::text2), layoutDirection());
    isRightToLeft() ? box.setRight(box.right() - left) : box.setLeft(box.left() + left);
    drawText(painter, {box.left(), title, box.width(), line}, theme(), TextStyle::body, Token::text1,
             text(alert_.title));
    drawText(painter, {box.left(), time, box.width(), line - 1}, theme(), TextStyle::small, Token::text3,
             text(alert_.time));
  }

private:
  HealthPage::Alert alert_;
  Task open_;
};

HealthView::HealthView(const Theme& theme, QWidget* parent)
    : Page(parent), theme_(theme), control_(new QWidget(this)),
      updated_(new TextLabel(theme, TextStyle::small, Token::text3, "", control_)),
      share_(new IconButton(theme, Icon::share, localized("Share"), control_)),
      scroll_(new ScrollArea(theme, Token::surface, this)), content_(new QWidget),
      ring_(new ScoreRing(theme, ScoreRing::page, content_)) {
  auto* control = bare<QHBoxLayout>(control_);
  control->setSpacing(8);
  control->addWidget(updated_);
  control->addWidget(share_);
  share_->hide();
  bare<QVBoxLayout>(this)->addWidget(scroll_);
  rows_ = bare<QVBoxLayout>(content_);
  rows_->addWidget(makeTop());
  rows_->addSpacing(14 - focusRoom);
  auto* tileHolder = new QWidget(content_);
  tileGrid_ = new QGridLayout(tileHolder);
  tileGrid_->setContentsMargins(rowOutset, focusRoom, rowOutset, focusRoom);
  tileGrid_->setVerticalSpacing(12);
  rows_->addWidget(tileHolder);
  rows_->addSpacing(20 - focusRoom);
  auto* bottomHolder = new QWidget(content_);
  bottom_ = bare<QHBoxLayout>(bottomHolder);
  bottom_->setSpacing(sideGap - 2 * rowOutset);
  bottom_->addWidget(makeApps(), 1, Qt::AlignTop);
  bottom_->addWidget(makeSide(), 0, Qt::AlignTop);
  rows_->addWidget(bottomHolder);
  rows_->addStretch(1);
  scroll_->setContent(*content_);
  scroll_->viewport()->installEventFilter(this);
  ring_->onHover([this](std::optional<std::size_t> share) {
    for (std::size_t i = 0; i < findings_.size(); ++i) findings_[i]->setPointedAt(share == i);
  });
}

std::string HealthView::title() const { return korvell::title(SidebarItem::overview); }

QWidget* HealthView::head(std::string_view words, SidebarItem leadsTo, QWidget* parent) {
  constexpr int quietPadding = 6;
  auto* holder = new QWidget(parent);
  auto* line = bare<QHBoxLayout>(holder);
  line->addSpacing(rowOutset);
  line->addWidget(new TextLabel(theme_, TextStyle::head, Token::text1, words, holder), 1);
  auto* more = new Button(theme_, Button::Kind::quiet, localized("Show all"), holder);
  more->setMark(Button::Mark::chevron);
  more->setName(localized("Show all: {title}", {{"title", korvell::title(leadsTo)}}));
  more->onPress([this, leadsTo] { open_(leadsTo); });
  line->addWidget(more);
  line->addSpacing(rowOutset - quietPadding);
  holder->setFixedHeight(theme_.scaled(headHeight));
  return holder;
}

QWidget* HealthView::makeTop() {
  topHolder_ = new QWidget(content_);
  top_ = bare<QHBoxLayout>(topHolder_);
  top_->addSpacing(rowOutset);
  top_->addWidget(ring_, 0, Qt::AlignTop);
  top_->addSpacing(ringGap - rowOutset);
  top_->addWidget(makeLedger(), 1, Qt::AlignTop);
  return topHolder_;
}

QWidget* HealthView::makeLedger() {
  auto* holder = new QWidget(content_);
  ledger_ = bare<QVBoxLayout>(holder);
  auto* headHolder = new QWidget(holder);
  auto* line = insetRow(headHolder);
  loss_ = new TextLabel(theme_, TextStyle::head, Token::text1, "", headHolder);
  average_ = new TextLabel(theme_, TextStyle::small, Token::text3, "", headHolder);
  line->addWidget(loss_, 1);
  line->addWidget(average_);
  headHolder->setFixedHeight(theme_.scaled(25));
  ledger_->addWidget(headHolder);
  auto* reassured = new QHBoxLayout;
  reassured->setContentsMargins(rowOutset, 0, rowOutset, 0);
  reassurance_ = new TextLabel(theme_, TextStyle::body, Token::text2, "", holder);
  reassurance_->setWrapped();
  reassured->addWidget(reassurance_);
  ledger_->addLayout(reassured);
  return holder;
}

QWidget* HealthView::makeApps() {
  auto* holder = new QWidget(content_);
  auto* rows = bare<QVBoxLayout>(holder);
  rows->addWidget(head(localized("Top applications"), SidebarItem::cpu, holder));
  heads_ = new AppHeads(theme_, holder);
  heads_->setFixedHeight(heads_->sizeHint().height());
  rows->addWidget(heads_);
  apps_ = new AppRows(theme_, PartForm::page, holder);
  apps_->onOpen([this] { open_(SidebarItem::cpu); });
  rows->addWidget(apps_);
  rows->addSpacing(focusRoom);
  return holder;
}

QWidget* HealthView::makeSide() {
  side_ = new QWidget(content_);
  auto* columns = bare<QVBoxLayout>(side_);
  auto* titleHolder = new QWidget(side_);
  insetRow(titleHolder)
      ->addWidget(new TextLabel(theme_, TextStyle::head, Token::text1, localized("Today"), titleHolder));
  titleHolder->setFixedHeight(theme_.scaled(headHeight));
  columns->addWidget(titleHolder);
  today_ = new QVBoxLayout;
  today_->setSpacing(0);
  columns->addLayout(today_);
  columns->addSpacing(8);
  columns->addWidget(alertsHead_ = head(localized("Alerts"), SidebarItem::alerts, side_));
  alerts_ = new QVBoxLayout;
  alerts_->setSpacing(0);
  columns->addLayout(alerts_);
  auto* rule = new QHBoxLayout;
  rule->setContentsMargins(rowOutset, 0, rowOutset, 0);
  noAlerts_ = new TextLabel(theme_, TextStyle::body, Token::text2, localized("No alerts."), side_);
  noAlerts_->setFixedHeight(theme_.scaled(30));
  rule->addWidget(noAlerts_);
  columns->addLayout(rule);
  return side_;
}

FindingView* HealthView::makeFinding() {
  auto* finding = new FindingView(theme_, form_, content_);
  const auto index = findings_.size();
  finding->onStep([this](const Step& step) { step_(step); });
  finding->onHover(
      [this, index](bool isOn) { ring_->highlight(isOn ? std::optional(index) : std::nullopt); });
  ledger_->addWidget(finding);
  finding->QWidget::show();
  return finding;
}

void HealthView::onShare(std::function<void()> handler) {
  share_->setVisible(bool(handler));
  share_->setEnabled(shown_ && shown_->head.score);
  share_->onPress(std::move(handler));
}

void HealthView::show(const HealthPage& page) {
  if (shown_ == page) return;
  share_->setEnabled(page.head.score.has_value());
  updated_->setWords(page.updated);
  updated_->setVisible(!page.updated.empty());
  const bool hasNewHead = !shown_ || shown_->head != page.head || shown_->reassurance != page.reassurance;
  if (hasNewHead) showHead(page);
  showTiles(page.tiles);
  heads_->setSortedBy(page.sortedBy);
  apps_->show(page.apps, page.sortedBy);
  // The rows that are to come have their place.
  apps_->setMinimumHeight(page.updated.empty() ? theme_.scaled(30) * int(HealthPage::mostApps) : 0);
  showSide(page);
  orderStops();
  shown_ = page;
  if (hasNewHead || tileColumns_ == 0) arrange();
}

void HealthView::showHead(const HealthPage& page) {
  const auto& head = page.head;
  std::vector<ScoreRing::Share> lost;
  for (const auto& finding : head.findings) lost.push_back({double(finding.penalty), finding.tone});
  ring_->setScore(head.score, std::move(lost));
  ring_->setLabel(head.score ? head.label : std::string());
  ring_->setName(head.name);
  loss_->setWords(head.loss);
  average_->setWords(head.average);
  reassurance_->setWords(page.reassurance);
  reassurance_->setVisible(!page.reassurance.empty());
  fitRows(findings_, head.findings.size(), [this] { return makeFinding(); });
  bool hasPrimary = false;
  for (std::size_t i = 0; i < findings_.size(); ++i) {
    const auto& row = head.findings[i];
    findings_[i]->show(row, row.fix && !std::exchange(hasPrimary, hasPrimary || row.fix));
  }
}

void HealthView::showTiles(const std::vector<Tile>& tiles) {
  fitRows(tiles_, tiles.size(), [this] {
    auto* tile = new TileView(theme_, form_, content_);
    tile->onOpen([this](SidebarItem item) { open_(item); });
    tileColumns_ = 0;
    return tile;
  });
  for (std::size_t i = 0; i < tiles.size(); ++i) tiles_[i]->show(tiles[i]);
}

void HealthView::showSide(const HealthPage& page) {
  fitRows(totals_, page.today.size(), [this] {
    auto* total = new TotalRow(theme_, side_);
    total->setFixedHeight(total->sizeHint().height());
    today_->addWidget(total);
    total->QWidget::show();
    return total;
  });
  for (std::size_t i = 0; i < page.today.size(); ++i) totals_[i]->show(page.today[i]);
  fitRows(alertRows_, page.alerts.size(), [this] {
    auto* alert = new AlertRow(theme_, side_, [this] { open_(SidebarItem::alerts); });
    alert->setFixedHeight(alert->sizeHint().height());
    alerts_->addWidget(alert);
    alert->QWidget::show();
    return alert;
  });
  for (std::size_t i = 0; i < page.alerts.size(); ++i) alertRows_[i]->show(page.alerts[i]);
  noAlerts_->setVisible(page.alerts.empty());
}

/// Findings, tiles and rows come and go: as they are read.
void HealthView::orderStops() {
  std::vector<QWidget*> parts(findings_.begin(), findings_.end());
  parts.insert(parts.end(), tiles_.begin(), tiles_.end());
  parts.push_back(apps_->parentWidget());
  parts.insert(parts.end(), totals_.begin(), totals_.end());
  parts.push_back(alertsHead_);
  parts.insert(parts.end(), alertRows_.begin(), alertRows_.end());
  orderTabs(parts);
}

void HealthView::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  arrange();
}

bool HealthView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) arrange();
  return Page::eventFilter(watched, event);
}

void HealthView::arrange() {
  const bool isNarrow = width() < narrowBelow;
  const int inner = width() - 2 * pageSide(width(), window()->width());
  const bool isWide = inner > wideAbove;
  const int margin = (width() - inner) / 2 - rowOutset;
  rows_->setContentsMargins(
      besideBar({margin, topMargin, margin, pagePaddingIn(window()->width())}, *scroll_));
  form_ = isNarrow ? PartForm::narrow : PartForm::page;
  ring_->setForm(isNarrow ? ScoreRing::narrow : ScoreRing::page);
  top_->itemAt(2)->spacerItem()->changeSize((isNarrow ? narrowRingGap : ringGap) - rowOutset, 0);
  top_->invalidate();
  arrangeLedgerHead(inner - ring_->sizeHint().width() - (isNarrow ? narrowRingGap : ringGap));
  topHolder_->setMinimumHeight(isNarrow ? 0 : theme_.scaled(topHeight));
  for (auto* finding : findings_) finding->setForm(form_);
  heads_->setForm(form_);
  apps_->setForm(form_);
  arrangeTiles(isWide ? 6 : inner > 520 ? 3 : 2, form_);
  bottom_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
  bottom_->setAlignment(side_, isNarrow ? Qt::Alignment() : Qt::AlignTop);
  const int sideRoom = (isWide ? wideSide : sideWidth) + 2 * rowOutset;
  side_->setMinimumWidth(isNarrow ? 0 : sideRoom);
  side_->setMaximumWidth(isNarrow ? QWIDGETSIZE_MAX : sideRoom);
}

/// What was lost is said whole; the average gives way to it.
void HealthView::arrangeLedgerHead(int room) {
  constexpr int gap = 16;
  const double taken = textWidth(theme_, TextStyle::head, loss_->words()) + gap +
                       textWidth(theme_, TextStyle::small, average_->words());
  average_->setVisible(!average_->words().isEmpty() && taken <= room);
}

void HealthView::arrangeTiles(int columns, PartForm form) {
  tileGrid_->setHorizontalSpacing(form == PartForm::narrow ? narrowGutter : gutter);
  for (auto* tile : tiles_) tile->setForm(form);
  if (std::exchange(tileColumns_, columns) == columns) return;
  for (auto* tile : tiles_) tileGrid_->removeWidget(tile);
  for (int i = 0; i < 6; ++i) tileGrid_->setColumnStretch(i, i < columns ? 1 : 0);
  for (int i = 0; i < int(tiles_.size()); ++i) {
    tileGrid_->addWidget(tiles_[std::size_t(i)], i / columns, i % columns);
    tiles_[std::size_t(i)]->QWidget::show();
  }
}

} // namespace korvell
