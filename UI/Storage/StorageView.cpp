#include "UI/Storage/StorageView.h"

#include "Base/Localization.h"
#include "UI/Kit/Button.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Scroll.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PageLayout.h"
#include "UI/Storage/StorageParts.h"

#include <QKeyEvent>

#include <algorithm>

namespace korvell {

namespace {

constexpr int inset = StorageList::overhang;
constexpr int totalWidth = 148, footerHeight = 56, blankWidth = 380, progressWidth = 320;
constexpr int rowMargin = 8; ///< around a row that the keyboard came to

} // namespace

StorageView::StorageView(Services services)
    : services_(std::move(services)),
      again_(new Button(services_.theme, Button::Kind::plain, localized("Scan Again"), this)),
      blank_(new QWidget(this)), picture_(new CircledIcon(services_.theme, blank_)),
      lead_(new TextLabel(services_.theme, TextStyle::sub, Token::text1, "", blank_)),
      words_(new TextLabel(services_.theme, TextStyle::body, Token::text2, "", blank_)),
      notice_(new TextLabel(services_.theme, TextStyle::small, Token::text2, "", blank_)),
      freed_(new TextLabel(services_.theme, TextStyle::small, Token::text3, "", blank_)),
      progress_(new Bar(services_.theme, Token::accent, blank_)),
      scan_(new Button(services_.theme, Button::Kind::primary, localized("Scan"), blank_)),
      cancel_(new Button(services_.theme, Button::Kind::plain, localized("Cancel"), blank_)),
      head_(new QWidget(this)), total_(new FigureLabel(services_.theme, TextStyle::figureLarge, head_)),
      disk_(new DiskBar(services_.theme, head_)),
      scroll_(new ScrollArea(services_.theme, Token::surface, this)),
      content_(new Ground(services_.theme, Token::surface, nullptr)),
      list_(new StorageList(
          services_.theme,
          {.tickKind = [this](StorageKind kind) { toggle(services_.scanner, kind); },
           .unfold = [this](StorageKind kind) { unfold(kind); },
           .tickItem = [this](const std::string& id) { toggle(services_.scanner, id); },
           .reveal = services_.reveal,
           .moved = [this](QWidget& row) { scroll_->ensureWidgetVisible(&row, 0, rowMargin); },
           .stops =
               [this](QWidget& row) {
                 setTabOrder(&row, untick_);
                 setTabOrder(untick_, act_);
               }},
          content_)),
      log_(new FreedLog(services_.theme, content_)), footer_(new QWidget(this)),
      outcomeMark_(new IconLabel(services_.theme, Icon::checkCircle, 16, Token::good, footer_)),
      headline_(new OutcomeLabel(services_.theme, TextStyle::head, Token::text1, "", footer_)),
      detail_(new TextLabel(services_.theme, TextStyle::small, Token::text3, "", footer_)),
      untick_(new Button(services_.theme, Button::Kind::quiet, localized("Untick All"), footer_)),
      act_(new Button(services_.theme, Button::Kind::primary, "", footer_)) {
  build();
  connectParts();
  readLog();
  update();
}

std::string StorageView::title() const { return korvell::title(SidebarItem::storage); }

QWidget* StorageView::control() { return again_; }

void StorageView::refresh() {
  if (page_.canScan) services_.scanner.scan(allStorageKinds());
}

// Building

void StorageView::build() {
  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(0, 0, 0, 0);
  whole->setSpacing(0);
  buildBlank();
  buildHead();
  buildFooter();
  scroll_->setContent(*content_);
  scroll_->viewport()->installEventFilter(this);
  column_ = new QVBoxLayout(content_);
  column_->setSpacing(0);
  column_->addWidget(list_);
  auto* logRow = new QHBoxLayout;
  logRow->setContentsMargins(inset, 0, inset, 0);
  logRow->addWidget(log_);
  column_->addLayout(logRow);
  column_->addStretch(1);
  whole->addWidget(blank_, 1);
  whole->addWidget(head_);
  whole->addWidget(scroll_, 1);
  whole->addWidget(footer_);
}

void StorageView::buildBlank() {
  auto* rows = new QVBoxLayout(blank_);
  rows->setContentsMargins(narrowPagePadding, 0, narrowPagePadding, 0);
  rows->setSpacing(0);
  rows->addStretch(4);
  // Each in a box of its own, which takes the distance with it when it goes.
  const auto centred = [&](QWidget* widget, int before, int after = 0) {
    auto* box = new QWidget(blank_);
    auto* line = new QHBoxLayout(box);
    line->setContentsMargins(0, before, 0, after);
    line->addStretch(1);
    line->addWidget(widget);
    line->addStretch(1);
    rows->addWidget(box);
  };
  for (auto* label : {lead_, words_, notice_, freed_}) {
    label->setWrapped();
    label->setAlignment(Qt::AlignHCenter);
    label->setFixedWidth(services_.theme.scaled(blankWidth));
  }
  progress_->setName(localized("Progress"));
  progress_->setThickness(6);
  progress_->setFixedWidth(progressWidth);
  centred(picture_, 0, 12);
  centred(lead_, 6);
  centred(words_, 6);
  centred(progress_, 18);
  centred(notice_, 14);
  centred(scan_, 18);
  centred(cancel_, 18);
  centred(freed_, 18);
  rows->addStretch(5);
}

void StorageView::buildHead() {
  auto* left = new QVBoxLayout;
  left->setSpacing(4);
  left->setContentsMargins(0, 13, 0, 11);
  left->addWidget(total_, 0, Qt::AlignLeft);
  left->addWidget(
      new TextLabel(services_.theme, TextStyle::small, Token::text2, localized("can be freed"), head_));
  auto* right = new QVBoxLayout;
  right->setContentsMargins(0, 18, 0, 11);
  right->addWidget(disk_);
  right->addStretch(1);
  headRow_ = new QHBoxLayout(head_);
  headRow_->setSpacing(16);
  auto* leftBox = new QWidget(head_);
  leftBox->setLayout(left);
  leftBox->setMinimumWidth(services_.theme.scaled(totalWidth) - headRow_->spacing());
  headRow_->addWidget(leftBox);
  headRow_->addLayout(right, 1);
}

void StorageView::buildFooter() {
  auto* rows = new QVBoxLayout(footer_);
  rows->setContentsMargins(0, 0, 0, 0);
  rows->setSpacing(0);
  rows->addWidget(new Hairline(services_.theme, footer_));
  footerRow_ = new QHBoxLayout;
  footerRow_->setSpacing(12);
  auto* words = new QVBoxLayout;
  words->setSpacing(0);
  words->setContentsMargins(0, 9, 0, 9);
  words->addStretch(1);
  words->addWidget(headline_);
  words->addWidget(detail_);
  words->addStretch(1);
  headline_->setWrapped(2);
  footerRow_->addWidget(outcomeMark_);
  footerRow_->addLayout(words, 1);
  footerRow_->addWidget(untick_);
  footerRow_->addWidget(act_);
  footerRow_->addStrut(services_.theme.scaled(footerHeight));
  rows->addLayout(footerRow_);
  untick_->setToken(Token::text2);
  act_->setHeight(Button::Height::tall);
}

void StorageView::connectParts() {
  auto& scanner = services_.scanner;
  again_->setIcon(Icon::refresh);
  for (auto* button : {again_.data(), scan_}) button->onPress([this] { refresh(); });
  cancel_->onPress([&scanner] { scanner.cancel(); });
  untick_->onPress([&scanner] { untickAll(scanner); });
  act_->onPress([this] {
    if (const auto request = cleanRequest(services_.scanner); request && services_.ask)
      services_.ask(*request);
  });
  const auto follow = [&](auto& published) {
    subscriptions_.push_back(published.observe([this](const auto&) { update(); }));
  };
  follow(scanner.result);
  follow(scanner.isScanning);
  follow(scanner.progress);
  follow(scanner.step);
  follow(scanner.notice);
  follow(scanner.working);
  follow(scanner.selection);
  follow(scanner.feedback);
  subscriptions_.push_back(scanner.freedTotal.observe([this](std::int64_t) {
    readLog();
    update();
  }));
  subscriptions_.push_back(services_.model.cycle.observe([this](std::int64_t) {
    if (volume() != volume_) update();
  }));
}

void StorageView::readLog() { freedLog_ = StorageLog::entries(services_.defaults); }

// Showing

void StorageView::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  arrange();
}

void StorageView::arrange() {
  const int side = pageSide(width(), window()->width());
  // The rows end where the head and the foot do, beside a scroll bar as well as without one.
  const int lane = scroll_->width() - scroll_->viewport()->width();
  QMargins around(side - inset, 0, side - inset - lane, pagePadding);
  if (isRightToLeft()) around = {side - inset - lane, 0, side - inset, pagePadding};
  column_->setContentsMargins(around);
  headRow_->setContentsMargins(side, 0, side, 0);
  footerRow_->setContentsMargins(side, 0, side, 0);
}

bool StorageView::eventFilter(QObject* watched, QEvent* event) {
  if (watched == scroll_->viewport() && event->type() == QEvent::Resize) arrange();
  return Page::eventFilter(watched, event);
}

void StorageView::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && *services_.scanner.feedback)
    return services_.scanner.forgetFeedback();
  Page::keyPressEvent(event);
}

void StorageView::unfold(StorageKind kind) {
  if (unfolded_.erase(kind) == 0) unfolded_.insert(kind);
  update();
}

std::optional<VolumeInfo> StorageView::volume() const {
  return volumeOf(services_.model.snapshot->disk.volumes, services_.home);
}

void StorageView::update() {
  volume_ = volume();
  auto page = storagePage(services_.scanner, {.zone = services_.zone,
                                              .now = services_.model.snapshot->date,
                                              .volume = volume_,
                                              .log = freedLog_,
                                              .unfolded = unfolded_});
  if (page == page_ && isBuilt_) return;
  isBuilt_ = true;
  page_ = std::move(page);
  const bool isFound = page_.state == StoragePage::State::found;
  if (again_) {
    again_->setVisible(isFound || page_.state == StoragePage::State::empty);
    again_->setEnabled(page_.canScan);
  }
  head_->setVisible(isFound);
  scroll_->setVisible(isFound);
  blank_->setVisible(!isFound);
  if (isFound)
    showFound();
  else
    showBlank();
  showFooter();
}

void StorageView::showBlank() {
  using State = StoragePage::State;
  const auto show = [](QWidget* widget, bool isShown) { widget->parentWidget()->setVisible(isShown); };
  const auto set = [&](TextLabel* label, const std::string& words) {
    label->setWords(words);
    show(label, !words.empty());
  };
  const bool isScanning = page_.state == State::scanning, isEmpty = page_.state == State::empty;
  picture_->setIcon(isEmpty ? Icon::checkCircle : Icon::storage, isEmpty ? Token::good : Token::text2);
  set(lead_, isScanning ? localized("Scanning…") : isEmpty ? localized("Nothing to clean") : "");
  // While scanning the line stays, so that nothing jumps between two steps.
  words_->setWords(isScanning ? (page_.step.empty() ? " " : page_.step)
                   : isEmpty
                       ? localized("No build caches, package caches or old downloads worth removing.")
                       : localized("Measures caches, old dependencies and downloads. Nothing is removed "
                                   "before you choose."));
  show(progress_, isScanning);
  progress_->setLevel(page_.progress);
  set(notice_, isScanning ? page_.notice : "");
  show(scan_, page_.state == State::unscanned);
  scan_->setEnabled(page_.canScan);
  show(cancel_, isScanning);
  set(freed_, isScanning ? "" : page_.freed);
}

void StorageView::showFound() {
  total_->setFigure(page_.total);
  disk_->setVisible(page_.disk.has_value());
  if (page_.disk) disk_->setDisk(*page_.disk);
  list_->setGroups(page_.groups);
  log_->setLog(page_.log);
  log_->setVisible(!page_.log.empty());
}

void StorageView::showFooter() {
  const auto& footer = page_.footer;
  const bool isFound = page_.state == StoragePage::State::found;
  footer_->setVisible(isFound || !footer.headline.empty());
  outcomeMark_->setVisible(footer.tone.has_value());
  if (footer.tone) outcomeMark_->setTone(*footer.tone);
  headline_->say(footer.headline, footer.tone.has_value());
  detail_->setWords(footer.detail);
  detail_->setVisible(!footer.detail.empty());
  // The focus does not stay on a button that goes.
  if (!footer.canUntick && (untick_->hasFocus() || act_->hasFocus())) list_->takeFocus();
  untick_->setVisible(footer.canUntick);
  act_->setWords(footer.action);
  act_->setVisible(!footer.action.empty());
  act_->setEnabled(footer.canAct);
}

} // namespace korvell
