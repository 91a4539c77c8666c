#include "UI/Window/SidebarView.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Labels.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QKeyEvent>
#include <algorithm>

namespace korvell {

namespace {

constexpr int rowHeight = 31, captionHeight = 34, captionInset = 19, topMargin = 10, sideMargin = 8;
constexpr int footHeight = 45;
constexpr int railRow = 36, lowRailRow = 32, lowWindow = 600, railGap = 7, railRule = 24;
constexpr double iconLeft = 9, textLeft = 37, valueRight = 12, rowIcon = 18, railIcon = 20, toneSize = 14;

} // namespace

class SidebarView::Row final : public Control {
public:
  Row(const Theme& theme, SidebarView& owner, bool isSection)
      : Control(theme, &owner), owner_(owner), isSection_(isSection) {}

  void show(const Sidebar::Row& content, bool isSelected) {
    if (content == content_ && isSelected == isSelected_) return;
    content_ = content;
    isSelected_ = isSelected;
    setName(content.name);
    setFocusPolicy(isSelected || !isSection_ ? Qt::StrongFocus : Qt::ClickFocus);
    explain();
    update();
  }
  void setRail(bool isRail) {
    isRail_ = isRail;
    explain();
    update();
  }
  const Sidebar::Row& content() const { return content_; }

  QAccessible::Role role() const override {
    return isSection_ ? QAccessible::ListItem : QAccessible::PushButton;
  }
  void addStates(QAccessible::State& state) const override {
    state.selectable = isSection_;
    state.selected = isSelected_;
  }

protected:
  void pressed() override {
    if (!isSection_)
      owner_.settings_();
    else
      owner_.open_(content_.section);
  }

  void keyPressEvent(QKeyEvent* event) override {
    if (isSection_ && event->key() == Qt::Key_Down) return owner_.moveFrom(*this, 1);
    if (isSection_ && event->key() == Qt::Key_Up) return owner_.moveFrom(*this, -1);
    Control::keyPressEvent(event);
  }

  void draw(QPainter& painter) override {
    const auto wash = isSelected_ ? Token::accentWash2 : Token::hover;
    if (isSelected_ || isHovered()) fillRounded(painter, QRectF(rect()), corner(), theme().color(wash));
    if (isSelected_)
      fillRounded(painter, mirrored({0, (height() - 16) / 2.0, 3, 16}), 1.5, theme().color(Token::accent));
    const double size = isRail_ ? railIcon : rowIcon;
    const double left = isRail_ ? (width() - size) / 2 : iconLeft;
    drawIcon(painter, content_.icon, mirrored({left, (height() - size) / 2, size, size}),
             theme().color(isSelected_ ? Token::accent : Token::text2), layoutDirection());
    if (isRail_) return drawRailBadge(painter);
    const double end = drawValue(painter);
    drawText(painter, mirrored({textLeft, 0, end - textLeft - 8, double(height())}), theme(),
             isSelected_ ? TextStyle::strong : TextStyle::body, Token::text1, text(content_.title));
  }

private:
  QRectF mirrored(const QRectF& box) const {
    return isRightToLeft() ? QRectF(width() - box.right(), box.top(), box.width(), box.height()) : box;
  }

  /// Where the value begins, from the side where reading begins.
  double drawValue(QPainter& painter) {
    double end = width() - valueRight;
    if (content_.badge > 0) {
      const double room = badgeWidth(theme(), content_.badge);
      drawBadge(painter, mirrored({end - room, 0, room, double(height())}), theme(), content_.badge);
      return end - room;
    }
    const auto token = isSelected_ ? Token::text1 : Token::text3;
    const auto font = fontOf(theme(), TextStyle::small);
    const auto words = text(content_.value);
    const double room = figureWidth(font, words);
    painter.setPen(theme().color(token));
    drawFigures(painter, mirrored({end - room, 0, room, double(height())}), Qt::AlignLeft, font, words);
    end -= room;
    if (!content_.tone) return end;
    end -= toneSize + 4;
    const auto& look = lookOf(*content_.tone);
    drawIcon(painter, look.icon, mirrored({end, (height() - toneSize) / 2, toneSize, toneSize}),
             theme().color(look.mark), layoutDirection());
    return end;
  }

  /// At the icon's upper corner: what a full row says beside its value.
  void drawRailBadge(QPainter& painter) {
    const double x = width() / 2.0 + 12, y = height() / 2.0 - 8;
    const auto around = [&](double size) { return mirrored({x - size / 2, y - size / 2, size, size}); };
    painter.setPen(Qt::NoPen);
    if (content_.badge > 0) {
      painter.setBrush(theme().color(Token::accent));
      painter.drawEllipse(around(8));
    } else if (content_.tone == Tone::info) {
      painter.setBrush(theme().color(Token::info));
      painter.drawEllipse(around(6));
    } else if (content_.tone) {
      const auto& look = lookOf(*content_.tone);
      drawIcon(painter, look.icon, around(11), theme().color(look.mark), layoutDirection());
    }
  }

  void explain() { setToolTip(isRail_ ? text(content_.name) : QString()); }

  SidebarView& owner_;
  const bool isSection_;
  Sidebar::Row content_;
  bool isSelected_ = false, isRail_ = false;
};

SidebarView::SidebarView(const Theme& theme, QWidget* parent)
    : Painted(theme, parent), foot_(new Row(theme, *this, false)) {
  setFixedWidth(fullWidth);
  speakAnew();
}

void SidebarView::speakAnew() {
  setName(localized("Sections"));
  Sidebar::Row row{.icon = Icon::settings, .title = localized("Settings"), .value = localized("Ctrl ,")};
  row.name = row.title;
  foot_->show(row, false);
  update();
}

void SidebarView::show(const Sidebar& content) {
  if (content == content_) return;
  content_ = content;
  build();
  std::size_t index = 0;
  for (const auto& group : content_.groups)
    for (const auto& row : group.rows) rows_[index++]->show(row, row.section == content_.selected);
}

void SidebarView::build() {
  std::size_t count = 0;
  for (const auto& group : content_.groups) count += group.rows.size();
  if (count == rows_.size()) return;
  for (auto* row : rows_) row->deleteLater();
  rows_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    rows_.push_back(new Row(theme(), *this, true));
    rows_.back()->setRail(isRail_);
    if (isVisible()) rows_.back()->QWidget::show();
  }
  arrange();
}

void SidebarView::setRail(bool isRail) {
  if (std::exchange(isRail_, isRail) == isRail) return;
  setFixedWidth(isRail ? railWidth : fullWidth);
  for (auto* row : rows_) row->setRail(isRail);
  foot_->setRail(isRail);
  arrange();
  update();
}

void SidebarView::arrange() {
  captions_.clear();
  const int foot = theme().scaled(footHeight);
  const double squeeze = squeezed(this->height() - foot - topMargin);
  const int height = !isRail_                         ? int(theme().scaled(rowHeight) * squeeze)
                     : window()->height() < lowWindow ? lowRailRow
                                                      : railRow;
  const int caption = int(theme().scaled(captionHeight) * squeeze);
  const int inner = width() - 2 * sideMargin;
  int y = topMargin;
  std::size_t index = 0;
  for (const auto& group : content_.groups) {
    const int gap = index == 0 ? 0 : isRail_ ? railGap : caption;
    captions_.emplace_back(captionInset, y, width() - 2 * captionInset, gap);
    y += gap;
    for (std::size_t i = 0; i < group.rows.size(); ++i, y += height)
      rows_[index++]->setGeometry(sideMargin, y, inner, height);
  }
  foot_->setGeometry(sideMargin, this->height() - foot + (foot - height) / 2, inner, height);
}

/// In a low window, or with large text, rows and captions come closer, by this share of what they ask for.
double SidebarView::squeezed(int room) const {
  if (rows_.empty()) return 1;
  const auto captions = int(content_.groups.size()) - 1;
  const int asked = int(rows_.size()) * theme().scaled(rowHeight) + captions * theme().scaled(captionHeight);
  return std::clamp(double(room) / asked, double(Control::leastHit) / theme().scaled(rowHeight), 1.0);
}

void SidebarView::resizeEvent(QResizeEvent*) { arrange(); }

void SidebarView::draw(QPainter& painter) {
  fillBox(painter, QRectF(rect()), theme().color(Token::bg));
  if (!isRail_)
    drawHairline(painter, {0, double(height() - theme().scaled(footHeight))}, width(),
                 theme().color(Token::hairline));
  if (isRail_) {
    for (const auto& box : captions_)
      if (box.height() > 0)
        drawHairline(painter, {(width() - railRule) / 2.0, box.center().y() + 0.5}, railRule,
                     theme().color(Token::hairline));
    return;
  }
  for (std::size_t i = 0; i < captions_.size(); ++i)
    if (const auto& box = captions_[i]; box.height() > 0)
      drawText(painter, QRectF(box).adjusted(0, box.height() / 3.0, 0, 0), theme(), TextStyle::small,
               Token::text3, text(content_.groups[i].title));
}

void SidebarView::moveFrom(const Row& row, int by) {
  const auto found = std::ranges::find(rows_, &row);
  const auto next = found - rows_.begin() + by;
  if (found == rows_.end() || next < 0 || next >= std::ptrdiff_t(rows_.size())) return;
  auto* target = rows_[std::size_t(next)];
  target->setFocusPolicy(Qt::StrongFocus);
  target->setFocus(Qt::TabFocusReason);
  open_(target->content().section);
}

std::vector<QWidget*> SidebarView::stops() const {
  std::vector<QWidget*> all(rows_.begin(), rows_.end());
  all.push_back(foot_);
  return all;
}

void SidebarView::takeFocus(Qt::FocusReason reason) {
  for (auto* row : rows_)
    if (row->content().section == content_.selected) row->setFocus(reason);
}

} // namespace korvell
