#pragma once
// What all rows of the list that have a box share: hover, focus, the box, the press of a pointer, what screen
// readers are told. For the list's own sources.

#include "UI/Kit/Control.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Focus.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Switches.h"
#include "UI/Kit/Text.h"
#include "UI/Storage/StorageList.h"

#include <QMouseEvent>

namespace korvell {

// From the side where reading begins; the size ends so far from the other one.
inline constexpr double listInset = StorageList::overhang;
inline constexpr double listBox = 16, listIcon = 28, listSizeEnd = 28, listItemHeight = 29;

inline CheckBox::State boxState(Ticks ticks) {
  switch (ticks) {
  case Ticks::none:
    return CheckBox::State::off;
  case Ticks::some:
    return CheckBox::State::some;
  case Ticks::all:
    return CheckBox::State::on;
  }
  return CheckBox::State::off;
}

/// As high as its width makes it.
inline void fixHeight(QWidget& widget) {
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Minimum);
  policy.setHeightForWidth(true);
  widget.setSizePolicy(policy);
}

/// What all rows with a box share: hover, focus, the box, keys.
class StorageList::Row : public Painted {
public:
  Row(StorageList& list, bool isItem) : Painted(list.theme(), &list), list_(list), isItem_(isItem) {
    fixHeight(*this);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::ClickFocus);
  }

  bool isItem() const { return isItem_; }
  virtual void toggle() = 0;
  virtual bool canToggle() const = 0;
  /// Unfolds or folds; false where there is nothing to be done.
  virtual bool setUnfolded(bool) { return false; }
  virtual void enter() {}

  QSize sizeHint() const override { return {480, heightForWidth(480)}; }
  QSize minimumSizeHint() const override { return {280, qRound(listItemHeight)}; }
  bool hasHeightForWidth() const override { return true; }
  QAccessible::Role role() const override { return QAccessible::CheckBox; }
  bool canPress() const override { return canToggle(); }
  bool press() override {
    if (canToggle()) toggle();
    return canToggle();
  }
  void addStates(QAccessible::State& state) const override {
    state.checkable = true;
    state.checked = ticks_ == Ticks::all;
    state.checkStateMixed = ticks_ == Ticks::some;
    state.disabled = !canToggle();
  }

protected:
  void setTicks(Ticks ticks) {
    if (ticks == ticks_) return;
    ticks_ = ticks;
    QAccessible::State changed;
    changed.checked = changed.checkStateMixed = true;
    tellStateChanged(*this, changed);
  }
  bool isLit() const { return isHovered_ || hasFocus(); }
  double end() const { return width() - listInset; }
  /// Laid out from left to right and mirrored as a whole.
  QRectF place(double from, double wideness, double top, double height) const {
    return {isRightToLeft() ? width() - from - wideness : from, top, wideness, height};
  }
  QRectF middled(double from, double wideness, double height) const {
    return place(from, wideness, (this->height() - height) / 2.0, height);
  }
  double boxFrom() const { return listInset + (isItem_ ? listIcon : 0); }
  void drawGround(QPainter& painter) const {
    if (isLit())
      fillRounded(painter, rect(), 6, theme().color(hasFocus() ? Token::accentWash : Token::hover));
    if (hasFocus() && hasRing_) drawOutline(painter, rect(), 6, theme().color(Token::accent), 2);
  }
  void drawBox(QPainter& painter) const {
    drawCheckBox(painter, middled(boxFrom(), listBox, listBox), theme(), boxState(ticks_), canToggle());
  }
  void drawSize(QPainter& painter, TextStyle style, Token token, const std::string& size) const {
    const auto font = fontOf(theme(), style);
    const auto words = text(size);
    const auto wide = figureWidth(font, words);
    painter.setPen(theme().color(token));
    drawFigures(painter, middled(end() - listSizeEnd - wide, wide, height()), Qt::AlignLeft, font, words);
  }

  bool event(QEvent* event) override {
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave) {
      isHovered_ = event->type() == QEvent::HoverEnter;
      update();
    }
    return Painted::event(event);
  }
  /// Captions are too weak on the wash of the row that has the focus.
  Token captionToken() const { return hasFocus() ? Token::text2 : Token::text3; }
  virtual void focusChanged() {}
  /// Where a press is told from the side where reading begins. True: it was more than choosing the row.
  virtual bool pressedAt(double from) = 0;
  void mousePressEvent(QMouseEvent* event) override {
    if (event->button() != Qt::LeftButton) return event->ignore();
    hasRing_ = false;
    update();
    const auto from = isRightToLeft() ? width() - event->position().x() : event->position().x();
    const auto reach = (Control::leastHit - listBox) / 2;
    if (from >= boxFrom() - reach && from < boxFrom() + listBox + reach)
      press();
    else
      pressedAt(from);
  }
  void focusInEvent(QFocusEvent* event) override {
    hasRing_ = isKeyboard(event->reason());
    list_.become(*this);
    focusChanged();
    update();
    Painted::focusInEvent(event);
  }
  void focusOutEvent(QFocusEvent* event) override {
    focusChanged();
    update();
    Painted::focusOutEvent(event);
  }

  StorageList& list_;

private:
  const bool isItem_;
  Ticks ticks_ = Ticks::none;
  bool isHovered_ = false, hasRing_ = false;
};

} // namespace korvell
