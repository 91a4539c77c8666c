#include "UI/Kit/Labels.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QHelpEvent>
#include <QTextLayout>
#include <QToolTip>

#include <algorithm>
#include <cstdint>

namespace korvell {

namespace {

constexpr int mostNatural = 480; // a wrapped text asks for no more by itself

QString joined(const QString& words, int from) {
  auto rest = words.mid(from);
  rest.replace(QChar::LineSeparator, ' ');
  return rest;
}

} // namespace

TextLabel::TextLabel(const Theme& theme, TextStyle style, Token token, std::string_view words,
                     QWidget* parent)
    : Painted(theme, parent), style_(style), token_(token) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  setWords(words);
}

void TextLabel::setWords(std::string_view words) {
  auto shown = text(words);
  if (shown == words_) return;
  words_ = shown;
  setAccessibleName(words_);
  updateGeometry();
  update();
}

void TextLabel::setToken(Token token) {
  token_ = token;
  update();
}

void TextLabel::setStyle(TextStyle style) {
  style_ = style;
  themeChanged();
}

void TextLabel::setWrapped(int maxLines) {
  wrapped_ = true;
  maxLines_ = maxLines;
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void TextLabel::setElide(Qt::TextElideMode mode) {
  elide_ = mode;
  update();
}

void TextLabel::setAlignment(Qt::Alignment horizontal) {
  alignment_ = horizontal;
  update();
}

void TextLabel::setNeverCut() {
  neverCut_ = true;
  updateGeometry();
}

QStringList TextLabel::lines(double width) const {
  auto set = fontOf(theme(), style_);
  QFontMetricsF metrics(set);
  auto words = words_;
  words.replace('\n', QChar::LineSeparator);
  QTextLayout layout(words, set);
  QTextOption option;
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setTextDirection(directionOf(words));
  layout.setTextOption(option);
  QStringList result;
  layout.beginLayout();
  for (auto line = layout.createLine(); line.isValid(); line = layout.createLine()) {
    line.setLineWidth(std::max(width, 1.0));
    if (maxLines_ > 0 && result.size() == maxLines_ - 1) {
      result << metrics.elidedText(joined(words, line.textStart()), elide_, width + 0.5);
      break;
    }
    auto piece = words.mid(line.textStart(), line.textLength());
    while (!piece.isEmpty() && piece.back().isSpace()) piece.chop(1); // an indent stays
    result << piece;
  }
  layout.endLayout();
  return result;
}

QSize TextLabel::sizeHint() const {
  auto natural = qCeil(textWidth(theme(), style_, words_));
  if (!wrapped_) return {natural, lineHeight(theme(), style_)};
  auto width = std::min(natural, theme().scaled(mostNatural));
  return {width, heightForWidth(width)};
}

QSize TextLabel::minimumSizeHint() const {
  if (neverCut_ && !wrapped_) return sizeHint();
  return {std::min(sizeHint().width(), theme().scaled(24)), lineHeight(theme(), style_)};
}

int TextLabel::heightForWidth(int width) const {
  if (!wrapped_) return lineHeight(theme(), style_);
  return std::max(1, static_cast<int>(lines(width).size())) * lineHeight(theme(), style_);
}

bool TextLabel::isElided() const {
  if (!wrapped_) return sizeHint().width() > width();
  auto shown = lines(width());
  return lineHeight(theme(), style_) * shown.size() > height() ||
         (maxLines_ > 0 && shown.last().endsWith(u'…'));
}

std::optional<std::string> TextLabel::cutText() const {
  auto isLow = height() < (wrapped_ ? heightForWidth(width()) : lineHeight(theme(), style_));
  if (!isLow && !(neverCut_ && isElided())) return std::nullopt;
  return utf8(words_);
}

bool TextLabel::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip || !toolTip().isEmpty()) return Painted::event(event);
  if (isElided()) QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), words_, this);
  return true;
}

void TextLabel::draw(QPainter& painter) {
  auto each = lineHeight(theme(), style_);
  if (!wrapped_) {
    drawText(painter, rect(), theme(), style_, token_, words_, alignment_, elide_);
    return;
  }
  double top = 0;
  for (const auto& line : lines(width())) {
    drawText(painter, QRectF(0, top, width(), each), theme(), style_, token_, line, alignment_);
    top += each;
  }
}

Hairline::Hairline(const Theme& theme, QWidget* parent, Qt::Orientation orientation)
    : Painted(theme, parent), orientation_(orientation) {
  if (orientation == Qt::Horizontal)
    setFixedHeight(1);
  else
    setFixedWidth(1);
}

void Hairline::draw(QPainter& painter) {
  auto length = orientation_ == Qt::Horizontal ? width() : height();
  drawHairline(painter, {0, 0}, length, theme().color(Token::hairline), orientation_);
}

Plate::Plate(const Theme& theme, Form form, QWidget* parent) : Painted(theme, parent), form_(form) {}

void Plate::draw(QPainter& painter) {
  auto fill = theme().color(form_.fill);
  if (form_.outline)
    drawRounded(painter, rect(), form_.radius, fill, theme().color(*form_.outline));
  else
    fillRounded(painter, rect(), form_.radius, fill);
}

Ground::Ground(const Theme& theme, Token token, QWidget* parent) : Painted(theme, parent), token_(token) {
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void Ground::draw(QPainter& painter) { fillBox(painter, rect(), theme().color(token_)); }

namespace {

constexpr double badgeHeight = 18;

QString badgeText(int count) { return count > 99 ? QString("99+") : QString::number(count); }

QFont badgeFont(const Theme& theme) { return fontOf(theme, 11, QFont::DemiBold); }

} // namespace

double badgeWidth(const Theme& theme, int count) {
  auto height = theme.scaled(badgeHeight);
  return std::max<double>(height, figureWidth(badgeFont(theme), badgeText(count)) + theme.scaled(10));
}

double drawBadge(QPainter& painter, const QRectF& box, const Theme& theme, int count) {
  auto width = badgeWidth(theme, count);
  double height = theme.scaled(badgeHeight);
  auto left = painter.layoutDirection() == Qt::RightToLeft ? box.left() : box.right() - width;
  QRectF pill(left, box.center().y() - height / 2, width, height);
  fillRounded(painter, pill, height / 2, theme.color(Token::accent));
  painter.setPen(theme.color(Token::accentInk));
  drawFigures(painter, pill, Qt::AlignHCenter, badgeFont(theme), badgeText(count));
  return width;
}

Badge::Badge(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setVisible(false);
}

void Badge::setCount(int count) {
  if (count == count_) return;
  count_ = count;
  setAccessibleName(QString::number(count));
  setVisible(count > 0);
  themeChanged();
}

QSize Badge::sizeHint() const { return {qCeil(badgeWidth(theme(), count_)), theme().scaled(badgeHeight)}; }

void Badge::draw(QPainter& painter) { drawBadge(painter, rect(), theme(), count_); }

Token monogramHue(std::string_view identifier) {
  std::uint32_t hash = 2166136261; // FNV-1a: the same hue in every run
  for (unsigned char byte : identifier) hash = (hash ^ byte) * 16777619;
  return palette[(hash >> 16) % std::size(palette)];
}

QString monogramLetter(std::string_view name) {
  auto words = text(name);
  for (qsizetype at = 0; at < words.size(); ++at) {
    auto length = words[at].isHighSurrogate() ? 2 : 1;
    auto letter = words.mid(at, length);
    auto isLetter = length == 2 || words[at].isLetterOrNumber();
    if (isLetter) return letter.toUpper();
  }
  return {};
}

namespace {

/// Returns the colour for what stands on it.
QColor drawTint(QPainter& painter, const QRectF& box, const Theme& theme, Token hue) {
  fillRounded(painter, box, box.width() * 0.26, theme.mixed(hue, theme.isDark() ? 0.3 : 0.2, Token::surface));
  return theme.mixed(hue, 0.65, Token::text1);
}

} // namespace

void drawMark(QPainter& painter, const QRectF& box, const Theme& theme, Icon icon) {
  const double inset = box.width() * 0.15;
  const auto ink = drawTint(painter, box, theme, Token::accent);
  drawIcon(painter, icon, box.adjusted(inset, inset, -inset, -inset), ink);
}

void drawMonogram(QPainter& painter, const QRectF& box, const Theme& theme, Token hue,
                  std::string_view name) {
  painter.save();
  painter.setPen(drawTint(painter, box, theme, hue));
  auto set = fontOf(theme, 11, QFont::DemiBold);
  set.setPixelSize(std::max(1, qRound(box.height() * 0.55)));
  drawFigures(painter, box, Qt::AlignHCenter, set, monogramLetter(name));
  painter.restore();
}

} // namespace korvell
