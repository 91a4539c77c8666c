#include "UI/Storage/StorageList.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Storage/StorageListRow.h"

#include <QBoxLayout>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>

namespace korvell {

namespace {

constexpr double iconSize = 20, textFrom = 60;
constexpr double markSize = 14, markGap = 11, safetyGap = 4;
constexpr double chevronSize = 16, chevronHit = 28, barEnd = 102, dateEnd = 116;
constexpr double barWidth = 104, narrowBar = 56, barGap = 10, barHeight = 6;
constexpr double narrow = 560; ///< below, bars are short
constexpr double headHeight = 40, firstHead = 32, rowHeight = 38, pad = 8, afterItems = 6;
constexpr double leastDetail = 72;
constexpr int pageOfRows = 10;

} // namespace

class StorageList::CategoryRow final : public Row {
public:
  explicit CategoryRow(StorageList& list)
      : Row(list, false), explanation_(new TextLabel(theme(), TextStyle::small, Token::text3, "", this)) {
    explanation_->setWrapped();
  }

  void show(const StorageRow& row, bool isFirst) {
    if (isShown_ && row == row_ && isFirst == isFirst_) return;
    isShown_ = true;
    row_ = row;
    isFirst_ = isFirst;
    explanation_->setWords(row.explanation);
    explanation_->setVisible(!row.explanation.empty());
    setName(row.spoken);
    setTicks(row.ticks);
    updateGeometry();
    arrange();
    update();
  }

  void toggle() override { list_.actions_.tickKind(row_.kind); }
  bool canToggle() const override { return row_.canTick; }
  bool setUnfolded(bool isUnfolded) override {
    if (!row_.unfolds || row_.isUnfolded == isUnfolded) return false;
    list_.actions_.unfold(row_.kind);
    return true;
  }
  void enter() override { setUnfolded(!row_.isUnfolded); }
  void addStates(QAccessible::State& state) const override {
    Row::addStates(state);
    state.checkable = row_.unfolds || row_.canTick;
    state.expandable = row_.unfolds;
    state.expanded = row_.isUnfolded;
    state.collapsed = row_.unfolds && !row_.isUnfolded;
    state.busy = row_.isBusy;
  }

  int heightForWidth(int width) const override {
    double words = lineHeight(theme(), TextStyle::strong);
    if (!isBeside(width)) words += lineHeight(theme(), TextStyle::small);
    if (!row_.explanation.empty()) words += 2 + explanation_->heightForWidth(qFloor(room(width)));
    return std::max(theme().scaled(rowHeight), qCeil(words + 2 * pad));
  }

protected:
  bool pressedAt(double) override { return setUnfolded(!row_.isUnfolded); }
  void focusChanged() override { explanation_->setToken(captionToken()); }
  void resizeEvent(QResizeEvent*) override { arrange(); }
  void changeEvent(QEvent* event) override {
    if (event->type() == QEvent::LayoutDirectionChange) arrange();
    Row::changeEvent(event);
  }
  void themeChanged() override {
    Row::themeChanged();
    arrange();
  }

  void draw(QPainter& painter) override {
    drawGround(painter);
    if (!isFirst_ && !isLit())
      drawHairline(painter, QPointF(listInset, 0), width() - 2 * listInset, theme().color(Token::hairline));
    if (row_.unfolds) drawBox(painter);
    drawIcon(painter, row_.icon, middled(listInset + listIcon, iconSize, iconSize), theme().color(row_.hue));
    drawTitle(painter);
    drawLevel(painter);
    drawSize(painter, TextStyle::strong, Token::text1, row_.size);
    if (row_.unfolds)
      drawIcon(painter, row_.isUnfolded ? Icon::chevronDown : Icon::chevron,
               middled(end() - chevronSize - 1, chevronSize, chevronSize),
               theme().color(isLit() ? Token::text1 : Token::text3), layoutDirection());
  }

private:
  double barFrom(double width) const {
    return width - listInset - theme().scaled(barEnd) -
           theme().scaled(width < theme().scaled(narrow) ? narrowBar : barWidth);
  }
  /// For the words.
  double room(double width) const { return barFrom(width) - barGap - listInset - textFrom; }
  double titleWidth() const { return textWidth(theme(), TextStyle::strong, text(row_.title)); }
  double safetyWidth() const {
    return markSize + safetyGap + textWidth(theme(), TextStyle::small, text(row_.safety));
  }
  bool isBeside(double width) const { return titleWidth() + markGap + safetyWidth() <= room(width); }

  double wordsHeight() const {
    double height = lineHeight(theme(), TextStyle::strong);
    if (!isBeside(width())) height += lineHeight(theme(), TextStyle::small);
    if (!row_.explanation.empty()) height += 2 + explanation_->heightForWidth(qFloor(room(width())));
    return height;
  }
  double wordsTop() const { return std::floor((height() - wordsHeight()) / 2); }

  void arrange() {
    if (row_.explanation.empty()) return;
    const auto wide = qFloor(room(width()));
    const auto high = explanation_->heightForWidth(wide);
    const auto top = wordsTop() + wordsHeight() - high;
    explanation_->setGeometry(place(listInset + textFrom, wide, top, high).toAlignedRect());
  }

  void drawTitle(QPainter& painter) const {
    const double from = listInset + textFrom, top = wordsTop(), line = lineHeight(theme(), TextStyle::strong);
    const auto wide = std::min(titleWidth(), room(width()));
    drawText(painter, place(from, wide, top, line), theme(), TextStyle::strong, Token::text1,
             text(row_.title));
    const bool isBeside = this->isBeside(width());
    const double at = isBeside ? from + wide + markGap : from;
    const double low = isBeside ? top : top + line,
                 high = isBeside ? line : lineHeight(theme(), TextStyle::small);
    const auto& look = lookOf(row_.tone);
    drawIcon(painter, look.icon, place(at, markSize, low + (high - markSize) / 2, markSize),
             theme().color(isLit() ? look.text : look.mark));
    drawText(painter, place(at + markSize + safetyGap, safetyWidth() - markSize - safetyGap, low, high),
             theme(), TextStyle::small, Token::text2, text(row_.safety));
  }

  void drawLevel(QPainter& painter) const {
    const double from = barFrom(width()), wide = width() - listInset - theme().scaled(barEnd) - from;
    if (row_.isBusy)
      drawText(painter, middled(from, wide, height()), theme(), TextStyle::small, Token::text2,
               text(localized("Cleaning…")), Qt::AlignRight);
    else if (row_.unfolds)
      drawBar(painter, middled(from, wide, barHeight), theme(), row_.hue, row_.level, layoutDirection());
  }

  StorageRow row_;
  bool isFirst_ = false, isShown_ = false;
  TextLabel* explanation_;
};

class StorageList::ItemRow final : public Row {
public:
  explicit ItemRow(StorageList& list) : Row(list, true) {}

  void show(const StorageItemRow& row, bool canTick) {
    if (row == row_ && canTick == canTick_) return;
    row_ = row;
    canTick_ = canTick;
    setName(row.spoken);
    setTicks(row.isTicked ? Ticks::all : Ticks::none);
    update();
  }

  void toggle() override { list_.actions_.tickItem(row_.id); }
  bool canToggle() const override { return canTick_; }
  void enter() override { reveal(); }
  int heightForWidth(int) const override { return theme().scaled(listItemHeight); }

protected:
  bool pressedAt(double from) override {
    if (canReveal() && from >= end() - chevronHit) return reveal();
    return press();
  }
  void contextMenuEvent(QContextMenuEvent* event) override {
    if (!canReveal()) return event->ignore();
    auto* menu = new Menu(theme(), this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->add(Icon::folder, localized("Show in Finder"), [this] { reveal(); });
    const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
    menu->popup(byKey ? mapToGlobal(rect().center()) : event->globalPos());
  }
  bool event(QEvent* event) override {
    if (event->type() != QEvent::ToolTip) return Row::event(event);
    const auto at = static_cast<QHelpEvent*>(event);
    const auto from = isRightToLeft() ? width() - at->x() : at->x();
    if (canReveal() && from >= end() - chevronHit)
      QToolTip::showText(at->globalPos(), text(localized("Show in Finder")), this);
    else if (isElided_)
      QToolTip::showText(at->globalPos(), text(row_.title + "\n" + row_.detail), this);
    else
      QToolTip::hideText();
    return true;
  }

  void draw(QPainter& painter) override {
    drawGround(painter);
    drawBox(painter);
    const auto date = text(row_.date), title = text(row_.title), detail = text(row_.detail);
    const double dateWide = textWidth(theme(), TextStyle::small, date);
    const double dateFrom = end() - theme().scaled(dateEnd) - dateWide;
    const double from = listInset + textFrom, gap = 10;
    const double room = dateFrom - (date.isEmpty() ? 0 : 16) - from;
    const double titleNatural = textWidth(theme(), TextStyle::body, title);
    const double detailNatural = textWidth(theme(), TextStyle::small, detail);
    // A path of a few letters tells nothing: the name takes its room.
    const bool hasDetail = room - titleNatural - gap >= std::min(detailNatural, leastDetail);
    const double titleWide = std::min(titleNatural, room);
    isElided_ = drawText(painter, middled(from, titleWide, height()), theme(), TextStyle::body, Token::text1,
                         title, Qt::AlignLeft, Qt::ElideMiddle);
    if (hasDetail)
      isElided_ |= drawText(
          painter, middled(from + titleWide + gap, std::min(room - titleWide - gap, detailNatural), height()),
          theme(), TextStyle::small, captionToken(), detail, Qt::AlignLeft, Qt::ElideMiddle);
    isElided_ |= !hasDetail;
    drawText(painter, middled(dateFrom, dateWide, height()), theme(), TextStyle::small, captionToken(), date);
    drawSize(painter, TextStyle::body, Token::text2, row_.size);
    if (isLit() && canReveal())
      drawIcon(painter, Icon::folder, middled(end() - chevronSize - 1, chevronSize, chevronSize),
               theme().color(Token::text2));
  }

private:
  bool canReveal() const { return list_.actions_.reveal && !row_.path.empty(); }
  bool reveal() {
    if (canReveal()) list_.actions_.reveal(row_.path);
    return canReveal();
  }

  StorageItemRow row_;
  bool canTick_ = true, isElided_ = false;
};

class StorageList::GroupHead final : public Painted {
public:
  explicit GroupHead(StorageList& list) : Painted(list.theme(), &list) { fixHeight(*this); }

  void show(const StorageRows& group, bool isFirst) {
    title_ = text(group.title);
    size_ = text(group.size);
    isFirst_ = isFirst;
    setName(group.title + ", " + group.size);
    updateGeometry();
    update();
  }
  QSize sizeHint() const override { return {480, heightForWidth(480)}; }
  QSize minimumSizeHint() const override { return {280, heightForWidth(280)}; }
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int) const override { return theme().scaled(isFirst_ ? firstHead : headHeight); }
  QAccessible::Role role() const override { return QAccessible::Heading; }

protected:
  void draw(QPainter& painter) override {
    const double line = lineHeight(theme(), TextStyle::head), top = height() - line - 5;
    const QRectF box(listInset, top, width() - 2 * listInset, line);
    drawText(painter, box, theme(), TextStyle::head, Token::text1, title_);
    const auto font = fontOf(theme(), TextStyle::strong);
    const auto wide = figureWidth(font, size_), from = width() - listInset - listSizeEnd - wide;
    painter.setPen(theme().color(Token::text2));
    drawFigures(painter, QRectF(isRightToLeft() ? width() - from - wide : from, top, wide, line),
                Qt::AlignLeft, font, size_);
    drawHairline(painter, QPointF(listInset, height() - 1), width() - 2 * listInset,
                 theme().color(Token::hairline));
  }

private:
  QString title_, size_;
  bool isFirst_ = false;
};

/// A sentence about a category, under its items or in their place.
class StorageList::Note final : public QWidget {
public:
  explicit Note(StorageList& list)
      : QWidget(&list), words_(new TextLabel(list.theme(), TextStyle::small, Token::text2, "", this)) {
    auto* line = new QHBoxLayout(this);
    line->setContentsMargins(0, 2, 0, qRound(pad));
    line->setSpacing(0);
    line->addSpacing(qRound(listInset + textFrom));
    line->addWidget(words_, 1);
    line->addSpacing(qRound(listInset + listSizeEnd));
    words_->setWrapped();
    fixHeight(*this);
  }
  void show(const std::string& words) { words_->setWords(words); }

private:
  TextLabel* words_;
};

StorageList::StorageList(const Theme& theme, Actions actions, QWidget* parent)
    : Painted(theme, parent), actions_(std::move(actions)), column_(new QVBoxLayout(this)) {
  setName(localized("What can be freed"));
  column_->setContentsMargins(0, 0, 0, 0);
  column_->setSpacing(0);
}

std::vector<QWidget*> StorageList::rows() const { return {rows_.begin(), rows_.end()}; }

/// The one that stands for this already, or a new one.
template <class W>
W& StorageList::widget(const std::string& key) {
  if (const auto found = old_.find(key); found != old_.end()) {
    kept_.insert(*found);
    auto& widget = static_cast<W&>(*found->second);
    old_.erase(found);
    return widget;
  }
  auto* made = new W(*this);
  kept_[key] = made;
  return *made;
}

void StorageList::place(QWidget& widget) { order_.push_back(&widget); }

void StorageList::addCategory(const StorageRow& row, bool isFirst) {
  const std::string kind(rawValue(row.kind));
  auto& category = widget<CategoryRow>("kind " + kind);
  category.show(row, isFirst);
  place(category);
  rows_.push_back(&category);
  for (const auto& each : row.items) {
    auto& item = widget<ItemRow>("item " + kind + " " + each.id);
    item.show(each, row.canTick);
    place(item);
    rows_.push_back(&item);
  }
  if (row.note.empty()) return;
  auto& note = widget<Note>("note " + kind);
  note.show(row.note);
  place(note);
}

void StorageList::setGroups(const std::vector<StorageRows>& groups) {
  const auto before = std::exchange(order_, {});
  const auto at = indexOf(current_);
  old_ = std::exchange(kept_, {});
  rows_.clear();
  for (const auto& group : groups) {
    auto& head = widget<GroupHead>("group " + group.title);
    head.show(group, &group == &groups.front());
    place(head);
    for (const auto& row : group.rows) addCategory(row, &row == &group.rows.front());
  }
  const bool hadFocus = current_ && current_->hasFocus();
  if (std::ranges::find(rows_, current_) == rows_.end()) {
    current_ = nullptr;
    if (!rows_.empty())
      become(*rows_[std::size_t(std::clamp<std::ptrdiff_t>(at, 0, std::ptrdiff_t(rows_.size()) - 1))]);
    if (hadFocus && current_) current_->setFocus(Qt::OtherFocusReason);
  }
  // Not at once: one of them may be what asked for this.
  for (const auto& [key, widget] : std::exchange(old_, {})) {
    widget->hide();
    widget->deleteLater();
  }
  if (order_ == before) return;
  column_->setEnabled(false); // it would be laid out anew with each of a thousand items
  while (column_->count() > 0) delete column_->takeAt(0);
  bool wasItem = false;
  for (auto* widget : order_) {
    const auto* row = dynamic_cast<Row*>(widget);
    const bool isItem = row && row->isItem();
    if (wasItem && !isItem) column_->addSpacing(qRound(afterItems));
    wasItem = isItem;
    column_->addWidget(widget);
    widget->setVisible(true);
  }
  column_->addStretch(1);
  column_->setEnabled(true);
  column_->invalidate();
}

void StorageList::become(Row& row) {
  if (current_ == &row) return;
  if (current_) current_->setFocusPolicy(Qt::ClickFocus);
  current_ = &row;
  row.setFocusPolicy(Qt::StrongFocus);
  if (actions_.stops) actions_.stops(row);
}

std::ptrdiff_t StorageList::indexOf(const Row* row) const {
  return std::ranges::find(rows_, row) - rows_.begin();
}

void StorageList::moveTo(std::ptrdiff_t index) {
  if (rows_.empty()) return;
  auto& row = *rows_[std::size_t(std::clamp<std::ptrdiff_t>(index, 0, std::ptrdiff_t(rows_.size()) - 1))];
  row.setFocus(Qt::TabFocusReason);
  if (actions_.moved) actions_.moved(row);
}

void StorageList::takeFocus() {
  if (current_) current_->setFocus(Qt::OtherFocusReason);
}

/// Folds the category that an item belongs to, and goes there.
void StorageList::foldUnder(Row& row) {
  auto index = indexOf(&row);
  while (index > 0 && rows_[std::size_t(index)]->isItem()) --index;
  moveTo(index);
  rows_[std::size_t(index)]->setUnfolded(false);
}

/// What a row with the focus does not take comes here.
void StorageList::keyPressEvent(QKeyEvent* event) {
  if (!current_ || (event->modifiers() & ~Qt::KeypadModifier)) return event->ignore();
  auto& row = *current_;
  const auto index = indexOf(&row);
  switch (event->key()) {
  case Qt::Key_Up:
    return moveTo(index - 1);
  case Qt::Key_Down:
    return moveTo(index + 1);
  case Qt::Key_PageUp:
    return moveTo(index - pageOfRows);
  case Qt::Key_PageDown:
    return moveTo(index + pageOfRows);
  case Qt::Key_Home:
    return moveTo(0);
  case Qt::Key_End:
    return moveTo(std::ptrdiff_t(rows_.size()) - 1);
  case Qt::Key_Space:
  case Qt::Key_Select:
    if (!event->isAutoRepeat()) row.press();
    return;
  case Qt::Key_Return:
  case Qt::Key_Enter:
    return row.enter();
  case Qt::Key_Left:
  case Qt::Key_Right: {
    const bool unfolds = (event->key() == Qt::Key_Right) != isRightToLeft();
    if (!unfolds && row.isItem()) return foldUnder(row);
    if (!row.setUnfolded(unfolds)) event->ignore();
    return;
  }
  default:
    event->ignore();
  }
}

} // namespace korvell
