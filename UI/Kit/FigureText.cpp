#include "UI/Kit/FigureText.h"

#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QFontMetricsF>
#include <QStyle>

#include <algorithm>

namespace korvell {

namespace {

constexpr double unitGap = 0.13; // of the number's size

double widestDigit(const QFontMetricsF& metrics) {
  double widest = 0;
  for (char digit = '0'; digit <= '9'; ++digit)
    widest = std::max(widest, metrics.horizontalAdvance(QChar(digit)));
  return widest;
}

/// Calls `found` with every piece that is set as one, where it begins and how far it advances: a digit in the
/// cell of the widest one, or all up to the next digit. Returns the whole advance.
template <class Found>
double eachPiece(const QFont& font, const QString& text, Found found) {
  QFontMetricsF metrics(font);
  auto cell = widestDigit(metrics);
  double x = 0;
  auto isDigit = [&](qsizetype at) { return text[at] >= '0' && text[at] <= '9'; };
  for (qsizetype from = 0; from < text.size();) {
    auto to = from + 1;
    if (!isDigit(from))
      while (to < text.size() && !isDigit(to)) ++to;
    auto piece = text.mid(from, to - from);
    auto natural = metrics.horizontalAdvance(piece);
    auto advance = isDigit(from) ? cell : natural;
    found(piece, x + (advance - natural) / 2);
    x += advance;
    from = to;
  }
  return x;
}

} // namespace

double figureWidth(const QFont& font, const QString& text) {
  return eachPiece(font, text, [](const QString&, double) {});
}

void drawFigures(QPainter& painter, const QPointF& baseline, const QFont& font, const QString& text) {
  painter.save();
  painter.setLayoutDirection(Qt::LeftToRight);
  painter.setFont(font);
  eachPiece(font, text, [&](const QString& piece, double x) {
    painter.drawText(QPointF(baseline.x() + x, baseline.y()), piece);
  });
  painter.restore();
}

void drawFigures(QPainter& painter, const QRectF& box, Qt::Alignment horizontal, const QFont& font,
                 const QString& text) {
  auto spare = box.width() - figureWidth(font, text);
  auto left = box.left();
  if (horizontal & Qt::AlignRight) left += spare;
  if (horizontal & Qt::AlignHCenter) left += spare / 2;
  QFontMetricsF metrics(font);
  auto base = box.top() + (box.height() + metrics.ascent() - metrics.descent()) / 2;
  drawFigures(painter, QPointF(left, base), font, text);
}

FigureText::FigureText(const Theme& theme, TextStyle number, const Figure& figure)
    : numberFont_(fontOf(theme, number)), unitFont_(fontOf(theme, unitStyle(number))),
      number_(text(figure.number)), unit_(text(figure.unit)),
      gap_(unit_.isEmpty() || unit_ == "%" ? 0 : unitGap * numberFont_.pixelSize()) {}

double FigureText::numberWidth() const { return figureWidth(numberFont_, number_); }

double FigureText::width() const { return numberWidth() + gap_ + figureWidth(unitFont_, unit_); }

void FigureText::draw(QPainter& painter, const QPointF& baseline, const QColor& number,
                      const QColor& unit) const {
  painter.setPen(number);
  drawFigures(painter, baseline, numberFont_, number_);
  painter.setPen(unit);
  drawFigures(painter, baseline + QPointF(numberWidth() + gap_, 0), unitFont_, unit_);
}

FigureLabel::FigureLabel(const Theme& theme, TextStyle style, QWidget* parent)
    : Painted(theme, parent), style_(style) {
  setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
}

void FigureLabel::setFigure(Figure figure) {
  if (figure == figure_) return;
  auto before = sizeHint();
  figure_ = std::move(figure);
  setAccessibleName(spoken());
  if (sizeHint() != before) updateGeometry();
  update();
}

void FigureLabel::setLead(std::string_view lead) {
  lead_ = text(lead);
  setAccessibleName(spoken());
  updateGeometry();
  update();
}

void FigureLabel::setTokens(Token number, Token unit) {
  number_ = number;
  unit_ = unit;
  update();
}

void FigureLabel::setAlignment(Qt::Alignment horizontal) {
  alignment_ = horizontal;
  update();
}

QString FigureLabel::spoken() const {
  auto number = text(figure_.number);
  if (figure_.unit.empty()) return number;
  return figure_.unit == "%" ? number + "%" : number + " " + text(figure_.unit);
}

double FigureLabel::leadWidth() const {
  if (lead_.isEmpty()) return 0;
  auto set = fontOf(theme(), unitStyle(style_));
  return figureWidth(set, lead_) + unitGap * fontOf(theme(), style_).pixelSize();
}

double FigureLabel::wholeWidth() const { return leadWidth() + FigureText(theme(), style_, figure_).width(); }

QSize FigureLabel::sizeHint() const { return {qCeil(wholeWidth()), lineHeight(theme(), style_)}; }

std::optional<std::string> FigureLabel::cutText() const {
  if (wholeWidth() <= width() + 0.5) return std::nullopt;
  return utf8(spoken());
}

void FigureLabel::draw(QPainter& painter) {
  auto alignment = QStyle::visualAlignment(layoutDirection(), alignment_);
  auto spare = width() - wholeWidth();
  double left = 0;
  if (alignment & Qt::AlignRight) left = spare;
  if (alignment & Qt::AlignHCenter) left = spare / 2;
  auto base = baseline(theme(), style_, (height() - lineHeight(theme(), style_)) / 2.0);
  if (!lead_.isEmpty()) {
    painter.setPen(theme().color(Token::text3));
    drawFigures(painter, QPointF(left, base), fontOf(theme(), unitStyle(style_)), lead_);
  }
  FigureText(theme(), style_, figure_)
      .draw(painter, QPointF(left + leadWidth(), base), theme().color(number_), theme().color(unit_));
}

} // namespace korvell
