#include "UI/Panel/PanelView.h"

#include "Base/Localization.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Parts/PageLayout.h"

#include <QGridLayout>
#include <algorithm>

namespace korvell {

namespace {

/// Whoever shows the panel draws a line around it.
constexpr int border = 1;
constexpr int padding = 16 - border, headerHeight = 116 - border, footerHeight = 46 - 2 * border,
              inner = PanelView::panelWidth - 2 * (border + padding);
const QMargins middleMargins(padding - rowOutset, 0, padding - rowOutset, 10);

} // namespace

PanelView::PanelView(const Theme& theme, Handlers handlers, QWidget* parent)
    : QWidget(parent), theme_(theme), handlers_(std::move(handlers)), banner_(new Banner(theme, this)),
      scroll_(new ScrollArea(theme, Token::surface, this)) {
  auto* rows = bare<QVBoxLayout>(this);
  rows->setContentsMargins(border, border, border, border);
  rows->addWidget(header_ = makeHeader());
  auto* notice = new QHBoxLayout;
  notice->setContentsMargins(padding, 0, padding, 0);
  notice->addWidget(banner_);
  rows->addLayout(notice);
  banner_->hide();
  middle_ = makeMiddle();
  middle_->layout()->setContentsMargins(middleMargins);
  scroll_->setContent(*middle_);
  scroll_->viewport()->installEventFilter(this);
  rows->addWidget(scroll_, 1);
  rows->addWidget(new Hairline(theme, this));
  rows->addWidget(footer_ = makeFooter());
  ring_->onHover([this](std::optional<std::size_t> share) {
    for (std::size_t i = 0; i < findings_.size(); ++i) findings_[i]->setPointedAt(share == i);
  });
}

QWidget* PanelView::makeHeader() {
  auto* holder = new QWidget(this);
  auto* line = bare<QHBoxLayout>(holder);
  line->setContentsMargins(padding + 2, 4, padding, 0);
  line->setSpacing(16);
  ring_ = new ScoreRing(theme_, ScoreRing::panel, holder);
  line->addWidget(ring_, 0, Qt::AlignVCenter);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(2);
  texts->addStretch(1);
  label_ = new TextLabel(theme_, TextStyle::figureMedium, Token::text1, "", holder);
  loss_ = new TextLabel(theme_, TextStyle::small, Token::text2, "", holder);
  average_ = new TextLabel(theme_, TextStyle::small, Token::text3, "", holder);
  for (auto* words : {label_, loss_, average_}) texts->addWidget(words);
  for (auto* words : {loss_, average_}) words->setWrapped(2);
  texts->addStretch(1);
  line->addLayout(texts, 1);
  share_ = new IconButton(theme_, Icon::share, localized("Share"), holder);
  share_->setVisible(bool(handlers_.share));
  share_->onPress([this] { handlers_.share(); });
  auto* corner = new QVBoxLayout;
  corner->setContentsMargins(0, 10, 0, 0);
  corner->addWidget(share_);
  corner->addStretch(1);
  line->addLayout(corner);
  holder->setFixedHeight(theme_.scaled(headerHeight));
  return holder;
}

QWidget* PanelView::makeMiddle() {
  auto* holder = new QWidget;
  auto* rows = bare<QVBoxLayout>(holder);
  findingRows_ = new QVBoxLayout;
  findingRows_->setSpacing(0);
  rows->addLayout(findingRows_);
  rows->addWidget(makeNothing(holder));
  rows->addWidget(makeMore(holder));
  auto* rule = new QHBoxLayout;
  rule->setContentsMargins(rowOutset, 0, rowOutset, 0);
  rule->addWidget(new Hairline(theme_, holder));
  rows->addLayout(rule);
  rows->addSpacing(12);
  tileGrid_ = new QGridLayout;
  tileGrid_->setContentsMargins(rowOutset, 0, rowOutset, 0);
  tileGrid_->setSpacing(8);
  rows->addLayout(tileGrid_);
  sounds_ =
      new PanelSounds(theme_,
                      {.open = [this] { handlers_.open(SidebarItem::sound); },
                       .mute = [this](const std::string& app, bool muted) { handlers_.mute(app, muted); }},
                      holder);
  rows->addWidget(sounds_);
  rows->addSpacing(10);
  auto* head = new QHBoxLayout;
  head->setContentsMargins(rowOutset, 0, rowOutset, 0);
  head->addWidget(new TextLabel(theme_, TextStyle::head, Token::text1, localized("Top apps"), holder), 1);
  sorting_ =
      new Segments(theme_, localized("Top apps by"), {title(UsageKey::cpu), title(UsageKey::memory)}, holder);
  sorting_->setHeight(26);
  sorting_->onChoose(
      [this](std::size_t index) { handlers_.sortBy(index == 0 ? UsageKey::cpu : UsageKey::memory); });
  head->addWidget(sorting_);
  rows->addLayout(head);
  rows->addSpacing(7);
  apps_ = new AppRows(theme_, PartForm::panel, holder);
  apps_->onOpen([this] {
    handlers_.open(shown_ && shown_->sortedBy == UsageKey::cpu ? SidebarItem::cpu : SidebarItem::memory);
  });
  rows->addWidget(apps_);
  rows->addStretch(1);
  return holder;
}

void PanelView::setPictures(Pictures& pictures) {
  apps_->setPictures(&pictures);
  sounds_->setPictures(pictures);
}

QWidget* PanelView::makeNothing(QWidget* parent) {
  nothingHolder_ = new QWidget(parent);
  auto* line = bare<QHBoxLayout>(nothingHolder_);
  line->setContentsMargins(rowOutset, 11, rowOutset, 11);
  line->setSpacing(8);
  auto* mark = new IconLabel(theme_, Icon::checkCircle, 16, Token::good, nothingHolder_);
  line->addWidget(mark);
  nothing_ = new TextLabel(theme_, TextStyle::small, Token::text2, "", nothingHolder_);
  nothing_->setWrapped(2);
  line->addWidget(nothing_, 1);
  return nothingHolder_;
}

QWidget* PanelView::makeMore(QWidget* parent) {
  constexpr int textLeft = 54, quietPadding = 6;
  moreHolder_ = new QWidget(parent);
  auto* line = bare<QHBoxLayout>(moreHolder_);
  line->addSpacing(rowOutset + textLeft - quietPadding);
  more_ = new Button(theme_, Button::Kind::quiet, "", moreHolder_);
  more_->setHeight(Button::Height::compact);
  more_->setMark(Button::Mark::chevron);
  more_->onPress([this] { handlers_.open(SidebarItem::overview); });
  line->addWidget(more_);
  line->addStretch(1);
  line->addStrut(theme_.scaled(30));
  return moreHolder_;
}

QWidget* PanelView::makeFooter() {
  auto* holder = new QWidget(this);
  auto* line = bare<QHBoxLayout>(holder);
  line->setContentsMargins(12 - border, 0, 12 - border, 0);
  line->setSpacing(6);
  auto* open = new Button(theme_, Button::Kind::plain, localized("Open Korvell"), holder);
  open->onPress(handlers_.openKorvell);
  line->addWidget(open);
  line->addStretch(1);
  auto* settings = new IconButton(theme_, Icon::settings, localized("Settings"), holder);
  settings->onPress(handlers_.openSettings);
  line->addWidget(settings);
  auto* quit = new IconButton(theme_, Icon::power, localized("Quit Korvell"), holder);
  quit->onPress(handlers_.quit);
  line->addWidget(quit);
  holder->setFixedHeight(theme_.scaled(footerHeight));
  return holder;
}

FindingView* PanelView::makeFinding() {
  auto* finding = new FindingView(theme_, PartForm::panel, middle_);
  const auto index = findings_.size();
  finding->onStep([this](const Step& step) { handlers_.step(step); });
  finding->onHover(
      [this, index](bool isOn) { ring_->highlight(isOn ? std::optional(index) : std::nullopt); });
  findingRows_->addWidget(finding);
  finding->QWidget::show();
  return finding;
}

void PanelView::show(const PanelPage& page) {
  if (shown_ == page) return;
  if (!shown_ || shown_->head != page.head) showHead(page.head);
  moreHolder_->setVisible(!page.more.empty());
  more_->setWords(page.more);
  fitRows(tiles_, page.tiles.size(), [this] {
    auto* tile = new TileView(theme_, PartForm::panel, middle_);
    tile->onOpen([this](SidebarItem item) { handlers_.open(item); });
    const int index = int(tiles_.size());
    tileGrid_->addWidget(tile, index / 2, index % 2);
    tile->QWidget::show();
    return tile;
  });
  for (std::size_t i = 0; i < page.tiles.size(); ++i) tiles_[i]->show(page.tiles[i]);
  sounds_->show(page.sounds);
  sorting_->choose(page.sortedBy == UsageKey::cpu ? 0 : 1);
  apps_->show(page.apps, page.sortedBy);
  // The rows that are to come have their place.
  apps_->setMinimumHeight(page.head.score ? 0 : theme_.scaled(26) * int(PanelPage::mostApps));
  orderStops();
  shown_ = page;
  // At once: whoever shows the panel asks for its height next.
  middle_->layout()->activate();
  updateGeometry();
}

/// Findings and tiles come and go: as they are read.
void PanelView::orderStops() {
  std::vector<QWidget*> parts{header_, banner_};
  parts.insert(parts.end(), findings_.begin(), findings_.end());
  parts.push_back(moreHolder_);
  parts.insert(parts.end(), tiles_.begin(), tiles_.end());
  parts.insert(parts.end(), {sounds_, sorting_, apps_, footer_});
  orderTabs(parts);
}

void PanelView::showHead(const HealthHead& head) {
  std::vector<ScoreRing::Share> lost;
  for (const auto& finding : head.findings) lost.push_back({double(finding.penalty), finding.tone});
  ring_->setScore(head.score, std::move(lost));
  ring_->setName(head.name);
  label_->setWords(head.label);
  loss_->setWords(head.score ? head.loss : std::string());
  loss_->setVisible(head.score.has_value());
  average_->setWords(head.average);
  average_->setVisible(!head.average.empty());
  const bool isWell = head.score && head.findings.empty();
  nothingHolder_->setVisible(isWell);
  nothing_->setWords(isWell ? localized("Everything that was measured is within its limits.")
                            : std::string());
  const auto shown = std::min(head.findings.size(), PanelPage::mostFindings);
  fitRows(findings_, shown, [this] { return makeFinding(); });
  for (std::size_t i = 0; i < shown; ++i) findings_[i]->show(head.findings[i], false);
}

bool PanelView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize) {
    middle_->layout()->setContentsMargins(besideBar(middleMargins, *scroll_));
    middle_->layout()->activate();
  }
  return QWidget::eventFilter(watched, event);
}

QSize PanelView::sizeHint() const {
  auto* layout = middle_->layout();
  const int middle = layout->hasHeightForWidth() ? layout->totalHeightForWidth(panelWidth - 2 * border)
                                                 : layout->totalSizeHint().height();
  const int notice = banner_->isHidden() ? 0 : banner_->heightForWidth(inner);
  return {panelWidth, header_->height() + std::max(0, notice) + middle + 1 + footer_->height() + 2 * border};
}

} // namespace korvell
