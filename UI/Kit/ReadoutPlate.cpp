#include "UI/Kit/ReadoutPlate.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double plateHeight = 24, padding = 10, gap = 8, corner = 6;
constexpr double swatchWidth = 10, swatchHeight = 2;

} // namespace

void ReadoutPlate::add(TextStyle style, Token ink, std::string_view words) {
  if (words.empty()) return;
  const auto font = fontOf(theme_, style);
  const auto shown = text(words);
  pieces_.push_back({shown, font, theme_.color(ink), figureWidth(font, shown)});
}

void ReadoutPlate::addSwatch(Token token) { pieces_.push_back({{}, {}, theme_.color(token), swatchWidth}); }

double ReadoutPlate::width() const {
  double wide = 2 * padding + gap * double(std::max<std::size_t>(pieces_.size(), 1) - 1);
  for (const auto& piece : pieces_) wide += piece.width;
  return std::ceil(wide);
}

void ReadoutPlate::draw(QPainter& painter, double middle, double from, double to) const {
  const double wide = width();
  const double left = std::max(from, std::min(middle - wide / 2, to - wide));
  const QRectF plate(std::round(left), 0, wide, theme_.scaled(plateHeight));
  drawRounded(painter, plate, corner, theme_.color(Token::raised), theme_.color(Token::hairline));
  auto box = plate.adjusted(padding, 0, -padding, 0);
  for (const auto& piece : pieces_) {
    box.setWidth(piece.width);
    painter.setPen(piece.ink);
    if (piece.words.isEmpty())
      fillRounded(painter, QRectF(box.left(), box.center().y() - swatchHeight / 2, piece.width, swatchHeight),
                  swatchHeight / 2, piece.ink);
    else
      drawFigures(painter, box, Qt::AlignLeft, piece.font, piece.words);
    box.moveLeft(box.right() + gap);
  }
}

} // namespace korvell
