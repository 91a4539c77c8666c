#include "UI/Share/ShareCardPainter.h"

#include "Base/Localization.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Meters.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/RingArcs.h"
#include "UI/Kit/ScoreRing.h"
#include "UI/Kit/Text.h"

#include <QFontMetricsF>
#include <QPainterPath>

#include <algorithm>

namespace korvell {

namespace {

constexpr double margin = 64, rightEdge = shareCardWidth - margin;
constexpr QPointF ringMiddle{223, 228};
constexpr double ringRadius = 146, ringWeight = 26;
constexpr double wordsLeft = 452, firstRule = 175, rowHeight = 62;
constexpr double tilesTop = 430, tileHeight = 108, tileGap = 20;

class CardPainter {
public:
  CardPainter(QPainter& painter, const ShareCard& card, const Theme& theme)
      : painter_(painter), card_(card), theme_(theme) {}

  void draw() {
    painter_.fillRect(QRectF(0, 0, shareCardWidth, shareCardHeight), theme_.color(Token::bg));
    drawRing();
    drawScore();
    words(wordsLeft, 98, fontOf(theme_, 38, QFont::DemiBold, -0.02), Token::text1, card_.title,
          rightEdge - wordsLeft);
    words(wordsLeft, 136, fontOf(theme_, 19, QFont::Normal), Token::text2, card_.loss, rightEdge - wordsLeft);
    drawFindings();
    const auto count = double(ShareCard::mostFigures);
    const double wide = (rightEdge - margin - (count - 1) * tileGap) / count;
    for (std::size_t i = 0; i < card_.tiles.size(); ++i)
      drawTile(card_.tiles[i], QRectF(margin + double(i) * (wide + tileGap), tilesTop, wide, tileHeight));
    drawIcon(painter_, Icon::heart, QRectF(62, 565, 28, 28), theme_.color(Token::accent));
    words(98, 587, fontOf(theme_, 25, QFont::Medium), Token::text1, "Korvell");
    wordsToEnd(rightEdge, 586, fontOf(theme_, 19, QFont::Normal), Token::text3, card_.date);
  }

private:
  void words(double left, double base, const QFont& font, Token ink, const std::string& words,
             double room = 1000) {
    painter_.setFont(font);
    painter_.setPen(theme_.color(ink));
    painter_.drawText(QPointF(left, base), QFontMetricsF(font).elidedText(text(words), Qt::ElideRight, room));
  }
  void wordsToEnd(double right, double base, const QFont& font, Token ink, const std::string& words) {
    painter_.setPen(theme_.color(ink));
    drawFigures(painter_, QPointF(right - figureWidth(font, text(words)), base), font, text(words));
  }
  void wordsInMiddle(double middle, double base, const QFont& font, Token ink, const std::string& words) {
    painter_.setPen(theme_.color(ink));
    drawFigures(painter_, QPointF(middle - figureWidth(font, text(words)) / 2, base), font, text(words));
  }

  void drawRing() {
    std::vector<double> points;
    for (const auto& share : card_.lost) points.push_back(share.points);
    const auto arcs = ringArcs(card_.score, points, ringRadius, 4);
    drawArc(arcs.score, ringWeight, theme_.color(Token::accent));
    for (std::size_t i = 0; i < arcs.lost.size(); ++i)
      drawArc(arcs.lost[i], ringWeight * weightOf(card_.lost[i].tone),
              theme_.color(lookOf(card_.lost[i].tone).mark));
  }
  void drawArc(const RingArc& arc, double weight, const QColor& ink) {
    if (arc.sweep <= 0) return;
    const QRectF circle(ringMiddle - QPointF(ringRadius, ringRadius), QSizeF(2 * ringRadius, 2 * ringRadius));
    painter_.setPen(QPen(ink, weight, Qt::SolidLine, Qt::FlatCap));
    painter_.setBrush(Qt::NoBrush);
    if (arc.sweep >= 360) return painter_.drawEllipse(circle);
    QPainterPath path;
    path.arcMoveTo(circle, 90 - arc.from);
    path.arcTo(circle, 90 - arc.from, -arc.sweep);
    painter_.drawPath(path);
  }

  void drawScore() {
    const auto number = std::to_string(card_.score);
    const bool isFull = number.size() > 2;
    wordsInMiddle(ringMiddle.x(), 262, fontOf(theme_, isFull ? 104 : 132, QFont::DemiBold, -0.04),
                  Token::text1, number);
    auto label = fontOf(theme_, 21, QFont::Medium);
    constexpr double chord = 216; // of the ring at the label's height
    if (figureWidth(label, text(card_.label)) > chord) label = fontOf(theme_, 17, QFont::Medium);
    wordsInMiddle(ringMiddle.x(), 306, label, Token::text2, card_.label);
  }

  void drawFindings() {
    const auto rule = [&](double y) {
      drawHairline(painter_, {wordsLeft, y}, rightEdge - wordsLeft, theme_.color(Token::hairline));
    };
    double top = firstRule;
    rule(top);
    if (!card_.reassurance.empty()) {
      drawIcon(painter_, Icon::checkCircle, QRectF(wordsLeft, top + 16, 30, 30), theme_.color(Token::good));
      words(wordsLeft + 46, top + 40, fontOf(theme_, 25, QFont::Normal), Token::text1, card_.reassurance,
            rightEdge - wordsLeft - 46);
      return rule(top + rowHeight);
    }
    for (const auto& finding : card_.findings) {
      const auto& look = lookOf(finding.tone);
      drawIcon(painter_, look.icon, QRectF(wordsLeft, top + 16, 30, 30), theme_.color(look.mark));
      wordsToEnd(546, top + 40, fontOf(theme_, 25, QFont::Medium), look.text,
                 "−" + std::to_string(finding.penalty));
      words(568, top + 40, fontOf(theme_, 25, QFont::Normal), Token::text1, finding.title, rightEdge - 568);
      top += rowHeight;
      rule(top);
    }
    if (!card_.more.empty())
      words(568, top + 32, fontOf(theme_, 19, QFont::Normal), Token::text2, card_.more);
  }

  void drawTile(const ShareCard::Tile& tile, const QRectF& box) {
    constexpr double inset = 20, picture = 96;
    fillRounded(painter_, box, 14, theme_.color(Token::surface));
    words(box.left() + inset, box.top() + 36, fontOf(theme_, 19, QFont::Medium), Token::text2, tile.title);
    const auto number = fontOf(theme_, 40, QFont::DemiBold, -0.02), unit = fontOf(theme_, 21, QFont::Medium);
    const QPointF base(box.left() + inset, box.top() + 84);
    painter_.setPen(theme_.color(Token::text1));
    drawFigures(painter_, base, number, text(tile.figure.number));
    const double gap = gapBefore(tile.figure.unit).empty() ? 1 : 5;
    const double after = base.x() + figureWidth(number, text(tile.figure.number)) + gap;
    painter_.setPen(theme_.color(Token::text2));
    drawFigures(painter_, {after, base.y()}, unit, text(tile.figure.unit));
    const double left =
        std::max(box.right() - inset - picture, after + figureWidth(unit, text(tile.figure.unit)) + 14);
    const QRectF room(QPointF(left, box.top() + 46), QPointF(box.right() - inset, box.top() + 84));
    if (room.width() < 24) return;
    // Lines, dots and corners are twice as strong as in the window, like the card's type.
    constexpr double strength = 2;
    painter_.save();
    painter_.translate(room.topLeft());
    painter_.scale(strength, strength);
    const QRectF inner(QPointF(0, 0), room.size() / strength);
    if (tile.level)
      drawBar(painter_, QRectF(0, inner.center().y() - 1, inner.width(), 6), theme_, tile.line, *tile.level);
    else
      drawSparkline(painter_, inner, theme_, tile.line, tile.values, tile.top);
    painter_.restore();
  }

  QPainter& painter_;
  const ShareCard& card_;
  const Theme& theme_;
};

} // namespace

QImage shareCardPicture(const ShareCard& card, const Theme& theme) {
  auto look = theme.look();
  look.textScale = 1;
  const Theme own(look);
  QImage picture(shareCardWidth, shareCardHeight, QImage::Format_RGB32);
  QPainter painter(&picture);
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
  CardPainter(painter, card, own).draw();
  return picture;
}

} // namespace korvell
