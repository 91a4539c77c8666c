#include "UI/Kit/Button.h"

#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

namespace korvell {

namespace {

constexpr double sidePadding = 12;
constexpr double quietPadding = 6;
constexpr double leadIcon = 16;
constexpr double leadGap = 6;
constexpr double markSize = 14;
constexpr double copySize = 15;
constexpr double copyGap = 4;

} // namespace

Button::Button(const Theme& theme, Kind kind, std::string_view words, QWidget* parent)
    : Control(theme, parent), kind_(kind) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setMinimumHeight(0); // its own is more than a control's
  setWords(words);
}

void Button::setWords(std::string_view words) {
  words_ = text(words);
  setAccessibleName(words_);
  updateGeometry();
  update();
}

void Button::setKind(Kind kind) {
  kind_ = kind;
  updateGeometry();
  update();
}

void Button::setMark(Mark mark) {
  mark_ = mark;
  updateGeometry();
  update();
}

void Button::setIcon(std::optional<Icon> icon) {
  icon_ = icon;
  updateGeometry();
  update();
}

void Button::setHeight(Height height) {
  height_ = height;
  updateGeometry();
  update();
}

void Button::setToken(Token token) {
  token_ = token;
  update();
}

void Button::pressed() {
  // A copy: the handler may replace itself or take the button away.
  if (auto handler = handler_) handler();
}

double Button::contentWidth() const {
  auto width = textWidth(theme(), TextStyle::strong, words_);
  if (icon_) width += leadIcon + leadGap;
  if (mark_ == Mark::chevron) width += markSize;
  if (mark_ == Mark::copy) width += copySize + copyGap;
  return width;
}

QSize Button::sizeHint() const {
  auto padding = kind_ == Kind::quiet ? quietPadding : sidePadding;
  return {qCeil(contentWidth() + 2 * padding), theme().scaled(static_cast<int>(height_))};
}

std::optional<std::string> Button::cutText() const {
  if (contentWidth() <= width() + 0.5) return std::nullopt;
  return utf8(words_);
}

QRectF Button::shape() const { return rect(); }

Button::Colors Button::colors() const {
  auto color = [&](Token token) { return theme().color(token); };
  // Disabled: no fill that calls, the text in the quietest ink that can be read.
  if (!isEnabled())
    return kind_ == Kind::quiet ? Colors{{}, {}, color(Token::text3)}
                                : Colors{color(Token::sunken), color(Token::hairline), color(Token::text3)};
  auto deeper = isDown() ? 0.8 : isHovered() ? 0.9 : 1.0;
  switch (kind_) {
  case Kind::primary:
    return {theme().mixed(Token::accent, deeper, Token::text1), {}, color(Token::accentInk)};
  case Kind::danger:
    return {theme().mixed(Token::critical, deeper, Token::text1), {}, color(Token::surface)};
  case Kind::plain:
    return {isDown()      ? color(Token::sunken)
            : isHovered() ? color(Token::hover)
                          : color(Token::raised),
            color(Token::edge), color(Token::text1)};
  case Kind::quiet:
    return {isDown()      ? color(Token::accentWash2)
            : isHovered() ? color(Token::accentWash)
                          : QColor(),
            {},
            color(token_)};
  }
  return {};
}

void Button::draw(QPainter& painter) {
  auto look = colors();
  if (look.outline.isValid())
    drawRounded(painter, shape(), corner(), look.fill, look.outline);
  else if (look.fill.isValid())
    fillRounded(painter, shape(), corner(), look.fill);

  // Laid out from left to right and mirrored as a whole.
  auto left = (width() - contentWidth()) / 2;
  auto place = [&](double from, double width, double height) {
    auto x = isRightToLeft() ? this->width() - from - width : from;
    return QRectF(x, (this->height() - height) / 2, width, height);
  };
  auto lead = [&](Icon icon, double size, double gap) {
    drawIcon(painter, icon, place(left, size, size), look.ink, layoutDirection());
    left += size + gap;
  };
  if (icon_) lead(*icon_, leadIcon, leadGap);
  if (mark_ == Mark::copy) lead(Icon::copy, copySize, copyGap);
  auto words = textWidth(theme(), TextStyle::strong, words_);
  drawText(painter, place(left, words, height()), fontOf(theme(), TextStyle::strong), look.ink, words_);
  left += words;
  if (mark_ == Mark::chevron) lead(Icon::chevron, markSize, 0);
}

IconButton::IconButton(const Theme& theme, Icon icon, std::string_view name, QWidget* parent)
    : Control(theme, parent), icon_(icon) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setIcon(icon, name);
}

void IconButton::setIcon(Icon icon, std::string_view name) {
  icon_ = icon;
  setName(name);
  setToolTip(text(name));
  update();
}

void IconButton::setToken(Token token) {
  token_ = token;
  update();
}

void IconButton::setIconSize(int size) {
  iconSize_ = size;
  update();
}

void IconButton::pressed() {
  if (auto handler = handler_) handler();
}

void IconButton::draw(QPainter& painter) {
  if (isEnabled() && (isHovered() || isDown()))
    fillRounded(painter, rect(), corner(), theme().color(isDown() ? Token::accentWash2 : Token::accentWash));
  auto left = (width() - iconSize_) / 2.0;
  auto top = (height() - iconSize_) / 2.0;
  drawIcon(painter, icon_, QRectF(left, top, iconSize_, iconSize_),
           theme().color(isEnabled() ? token_ : Token::edge), layoutDirection());
}

} // namespace korvell
