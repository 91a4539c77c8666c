#include "UI/Parts/ListParts.h"

#include "UI/Kit/Icons.h"
#include "UI/Kit/Native.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"
#include "UI/Parts/PartViews.h"

#include <QContextMenuEvent>
#include <QKeyEvent>

#include <algorithm>

namespace korvell {

namespace {

constexpr int top = 10;
constexpr double washInset = 8, washCorner = 6;
constexpr double stateIcon = 16, stateText = 20, dotMiddle = 7, dotRadius = 3.5;
constexpr int groupHead = 23;
constexpr int medal = 90, medalIcon = 26, widestSentence = 360;

/// The empty state's icon in a ring.
class Medal final : public Painted {
public:
  Medal(const Theme& theme, Icon icon, QWidget* parent) : Painted(theme, parent), icon_(icon) {}
  QSize sizeHint() const override { return {medal, medal}; }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override {
    painter.setPen(QPen(theme().color(Token::hairline), 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawEllipse(QRectF(rect()).adjusted(1, 1, -1, -1));
    const double edge = (medal - medalIcon) / 2.0;
    drawIcon(painter, icon_, {edge, edge, medalIcon, medalIcon}, theme().color(Token::text2),
             layoutDirection());
  }

private:
  const Icon icon_;
};

} // namespace

// Rows

ListRow::ListRow(const Theme& theme, QWidget* parent) : Painted(theme, parent) {}

void ListRow::setRuled(bool isRuled) {
  if (std::exchange(isRuled_, isRuled) != isRuled) update();
}

void ListRow::draw(QPainter& painter) {
  if (isRuled_) drawHairline(painter, {rowInset, 0}, width() - 2 * rowInset, theme().color(Token::hairline));
  if (isPointedAt_)
    fillRounded(painter, QRectF(rect()).adjusted(washInset, 1, -washInset, -1), washCorner,
                theme().color(Token::hover));
}

void ListRow::enterEvent(QEnterEvent*) {
  isPointedAt_ = true;
  update();
}

void ListRow::leaveEvent(QEvent*) {
  isPointedAt_ = false;
  update();
}

bool ListRow::openMenu(QPoint where) {
  auto* menu = new Menu(theme(), this);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  fillMenu(*menu);
  const bool isAny = !menu->isEmpty();
  if (isAny)
    menu->popup(where);
  else
    delete menu;
  return isAny;
}

void ListRow::contextMenuEvent(QContextMenuEvent* event) {
  const auto* focused = window()->focusWidget();
  const auto& below = focused && isAncestorOf(focused) ? *focused : *this;
  const bool byKey = event->reason() == QContextMenuEvent::Keyboard;
  if (!openMenu(byKey ? below.mapToGlobal(QPoint(0, below.height())) : event->globalPos())) event->ignore();
}

// States

void drawState(QPainter& painter, const QRectF& box, const Theme& theme, const StateLook& look,
               const QString& words) {
  if (words.isEmpty()) return;
  const bool mirrored = painter.layoutDirection() == Qt::RightToLeft;
  const double text = theme.scaled(stateText);
  const auto ink = theme.color(look.mark);
  if (look.icon) {
    const double left = mirrored ? box.right() - stateIcon : box.left();
    drawIcon(painter, *look.icon, {left, box.center().y() - stateIcon / 2, stateIcon, stateIcon}, ink,
             painter.layoutDirection());
  } else {
    const double middle = mirrored ? box.right() - dotMiddle : box.left() + dotMiddle;
    painter.setPen(Qt::NoPen);
    painter.setBrush(ink);
    painter.drawEllipse(QPointF(middle, box.center().y()), dotRadius, dotRadius);
  }
  drawText(painter, mirrored ? box.adjusted(0, 0, -text, 0) : box.adjusted(text, 0, 0, 0), theme,
           TextStyle::body, look.words, words);
}

double stateWidth(const Theme& theme, const QString& words) {
  return theme.scaled(stateText) + textWidth(theme, TextStyle::body, words);
}

StateLabel::StateLabel(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void StateLabel::show(const StateLook& look, std::string_view words) {
  look_ = look;
  words_ = text(words);
  setName(words);
  updateGeometry();
  update();
}

QSize StateLabel::sizeHint() const {
  return {words_.isEmpty() ? 0 : qCeil(stateWidth(theme(), words_)), lineHeight(theme(), TextStyle::body)};
}

void StateLabel::draw(QPainter& painter) { drawState(painter, rect(), theme(), look_, words_); }

// Groups

GroupHead::GroupHead(const Theme& theme, QWidget* parent)
    : QWidget(parent), title_(new TextLabel(theme, TextStyle::head, Token::text1, "", this)),
      line_(bare<QHBoxLayout>(this)) {
  line_->setContentsMargins(rowInset, 0, rowInset, 0);
  line_->addWidget(title_, 0, Qt::AlignTop);
  line_->addStrut(theme.scaled(groupHead));
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void GroupHead::setTitle(std::string_view title) { title_->setWords(title); }

void GroupHead::addButton(Button* button) {
  line_->setAlignment(title_, Qt::AlignVCenter);
  line_->addStretch(1);
  line_->addWidget(button, 0, Qt::AlignVCenter);
}

RowGroup::RowGroup(const Theme& theme, QWidget* parent)
    : QWidget(parent), head_(new GroupHead(theme, this)), column_(bare<QVBoxLayout>(this)) {
  column_->addWidget(head_);
  column_->addSpacing(GroupHead::gap);
}

void RowGroup::fit(std::size_t count, const std::function<ListRow*(QWidget* parent)>& make) {
  while (rows_.size() > count) {
    rows_.back()->hide();
    rows_.back()->deleteLater();
    rows_.pop_back();
  }
  while (rows_.size() < count) {
    auto* row = make(this);
    row->setRuled(true);
    column_->insertWidget(column_->count() - 1, row);
    row->QWidget::show();
    rows_.push_back(row);
  }
}

void RowGroup::setRows(std::vector<ListRow*> rows) {
  if (rows == rows_) return;
  for (auto* row : rows_) {
    if (std::ranges::count(rows, row)) continue;
    column_->removeWidget(row);
    row->hide();
    row->deleteLater();
  }
  int place = 0;
  for (auto* row : rows) {
    ++place; // the heading is the first
    if (column_->indexOf(row) == place) continue;
    column_->insertWidget(place, row);
    row->setRuled(true);
    row->QWidget::show();
  }
  rows_ = std::move(rows);
}

void addInset(QWidget* widget, QBoxLayout& column, int above, int below) {
  auto* line = new QHBoxLayout;
  line->setContentsMargins(rowInset, above, rowInset, below);
  line->addWidget(widget);
  column.addLayout(line);
}

void fitGroups(std::vector<RowGroup*>& groups, std::size_t count, QVBoxLayout& column, const Theme& theme,
               QWidget* parent) {
  fitRows(groups, count, [&] {
    auto* group = new RowGroup(theme, parent);
    column.addWidget(group);
    group->show();
    return group;
  });
}

// Notices and empty pages

Notice::Notice(const Theme& theme, Icon icon, std::string_view action, QWidget* parent)
    : Plate(theme, {.fill = Token::infoWash, .outline = std::nullopt, .radius = 8}, parent),
      sentence_(new TextLabel(theme, TextStyle::head, Token::text1, "", this)),
      detail_(new TextLabel(theme, TextStyle::small, Token::text2, "", this)),
      button_(new Button(theme, Button::Kind::plain, action, this)) {
  auto* row = bare<QHBoxLayout>(this);
  row->setContentsMargins(14, 13, 14, 13);
  row->addSpacing(3);
  row->addWidget(new IconLabel(theme, icon, 18, Token::info, this));
  row->addSpacing(13);
  auto* words = new QVBoxLayout;
  words->setSpacing(0);
  sentence_->setWrapped();
  detail_->setWrapped();
  words->addWidget(sentence_);
  words->addWidget(detail_);
  row->addLayout(words, 1);
  row->addSpacing(16);
  row->addWidget(button_);
  // Not Maximum: what it takes in a wide window would be all that it gets in a narrow one.
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

void Notice::show(std::string_view sentence, std::string_view detail) {
  setName(sentence);
  sentence_->setWords(sentence);
  detail_->setWords(detail);
}

EmptyState::EmptyState(const Theme& theme, Icon icon, std::string_view title, std::string_view sentence,
                       QWidget* parent)
    : QWidget(parent) {
  auto* column = bare<QVBoxLayout>(this);
  column->addStretch(1);
  auto* ring = new Medal(theme, icon, this);
  ring->setFixedSize(medal, medal);
  column->addWidget(ring, 0, Qt::AlignHCenter);
  column->addSpacing(18);
  const auto centred = [&](TextStyle style, Token token, std::string_view words) {
    auto* label = new TextLabel(theme, style, token, words, this);
    label->setWrapped();
    label->setAlignment(Qt::AlignHCenter);
    label->setMaximumWidth(theme.scaled(widestSentence));
    auto* line = new QHBoxLayout;
    line->addStretch(1);
    line->addWidget(label, 100);
    line->addStretch(1);
    column->addLayout(line);
  };
  centred(TextStyle::sub, Token::text1, title);
  column->addSpacing(6);
  centred(TextStyle::body, Token::text2, sentence);
  column->addStretch(2);
}

// Pages

/// Below the scroll area, which would take the arrow keys for itself.
class ListPage::Content final : public Ground {
public:
  Content(const Theme& theme, ListPage& page) : Ground(theme, Token::surface, nullptr), page_(page) {}

protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (!page_.takeKey(event->key())) Ground::keyPressEvent(event);
  }

private:
  ListPage& page_;
};

ListPage::ListPage(const Theme& theme, SidebarItem section, QWidget* parent)
    : Page(parent), theme_(theme), scroll_(new ScrollArea(theme, Token::surface, this)),
      content_(new Content(theme, *this)), column_(bare<QVBoxLayout>(content_)), section_(section),
      summary_(new TextLabel(theme, TextStyle::small, Token::text3, "", this)) {
  bare<QVBoxLayout>(this)->addWidget(scroll_);
  scroll_->setContent(*content_);
}

std::string ListPage::title() const { return korvell::title(section_); }

void ListPage::say(const std::string& summary) {
  if (!summary_) return;
  summary_->setWords(summary);
  summary_->setVisible(!summary.empty());
}

bool ListPage::isInUse() const {
  const auto* focused = window()->focusWidget();
  return content_->underMouse() || (focused && focused->hasFocus() && content_->isAncestorOf(focused));
}

void ListPage::resizeEvent(QResizeEvent* event) {
  Page::resizeEvent(event);
  const int side = pageSide(width(), window()->width()) - rowInset;
  column_->setContentsMargins(side, top, side, pagePadding);
  arrange(width() < theme_.scaled(narrow));
}

ListRow* ListPage::focusedRow() const {
  const auto* focused = window()->focusWidget();
  const auto all = rows();
  const auto row =
      std::ranges::find_if(all, [&](const ListRow* each) { return focused && each->isAncestorOf(focused); });
  return row == all.end() ? nullptr : *row;
}

void ListPage::keyPressEvent(QKeyEvent* event) {
  if (!takeKey(event->key())) Page::keyPressEvent(event);
}

bool ListPage::takeKey(int key) {
  auto* row = focusedRow();
  // From what stands beside the rows no arrow leads to them.
  if (!row && !hasFocus()) return false;
  switch (key) {
  case Qt::Key_Up:
  case Qt::Key_Down:
    return step(row, key == Qt::Key_Up ? -1 : 1);
  case Qt::Key_Delete:
    if (row) row->remove();
    return row != nullptr;
  default:
    return false;
  }
}

bool ListPage::step(const ListRow* from, int by) {
  std::vector<ListRow*> reachable;
  for (auto* row : rows())
    if (row->action() && row->action()->isVisible()) reachable.push_back(row);
  if (reachable.empty()) return false;
  const auto here = std::ranges::find(reachable, from);
  const auto last = int(reachable.size()) - 1;
  const int next =
      here == reachable.end() ? (by > 0 ? 0 : last) : std::clamp(int(here - reachable.begin()) + by, 0, last);
  auto* row = reachable[std::size_t(next)];
  row->action()->setFocus(Qt::TabFocusReason);
  scroll_->ensureWidgetVisible(row, 0, pagePadding);
  return true;
}

} // namespace korvell
