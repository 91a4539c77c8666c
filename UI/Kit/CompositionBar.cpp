#include "UI/Kit/CompositionBar.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr int barHeight = 22, legendTop = 30, legendRow = 20;
constexpr double gap = 2, corner = 4, swatch = 10, swatchGap = 6, valueGap = 8, columnGap = 12;
constexpr double leastWidth = 3; // what is there is seen
// Shares of the hue; the strong step goes towards the text's ink, the weaker ones towards the ground.
constexpr double inkShare = 0.55, halfShare = 0.55, faintShare = 0.2;

} // namespace

CompositionBar::CompositionBar(const Theme& theme, Token hue, QWidget* parent)
    : Painted(theme, parent), hue_(hue) {
  QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void CompositionBar::setParts(std::vector<CompositionPart> parts) {
  if (parts == parts_) return;
  parts_ = std::move(parts);
  updateGeometry();
  update();
}

std::string CompositionBar::spokenValue() const {
  std::string words;
  for (const auto& part : parts_) words += (words.empty() ? "" : ", ") + part.name + " " + part.value;
  return words;
}

/// Equal ones, as many as fit with their longest words.
int CompositionBar::columns(int width) const {
  double widest = 1;
  for (const auto& part : parts_)
    widest = std::max(widest,
                      swatch + swatchGap + textWidth(theme(), TextStyle::small, text(part.name)) + valueGap +
                          figureWidth(fontOf(theme(), TextStyle::smallMedium), text(part.value)) + columnGap);
  return std::clamp(int(width / widest), 1, std::max(1, int(parts_.size())));
}

int CompositionBar::heightForWidth(int width) const {
  const int perRow = columns(width);
  const int rows = (int(parts_.size()) + perRow - 1) / perRow;
  return theme().scaled(legendTop) + rows * theme().scaled(legendRow);
}

QSize CompositionBar::sizeHint() const { return {480, heightForWidth(std::max(width(), 480))}; }

QSize CompositionBar::minimumSizeHint() const {
  return {160, theme().scaled(legendTop) + theme().scaled(legendRow)};
}

void CompositionBar::draw(QPainter& painter) {
  double sum = 0;
  for (const auto& part : parts_) sum += std::max(part.amount, 0.0);
  const auto there =
      std::count_if(parts_.begin(), parts_.end(), [](const auto& part) { return part.amount > 0; });
  const double room = width() - gap * double(std::max<std::ptrdiff_t>(there - 1, 0));
  double from = 0;
  for (const auto& part : parts_) {
    if (part.amount <= 0) continue;
    const double wide = std::max(leastWidth, room * part.amount / sum);
    const double left = isRightToLeft() ? width() - from - wide : from;
    drawStep(painter, QRectF(left, 0, wide, theme().scaled(barHeight)), corner, part.step);
    from += wide + gap;
  }
  if (there == 0)
    fillRounded(painter, QRectF(0, 0, width(), theme().scaled(barHeight)), corner,
                theme().color(Token::sunken));
  for (std::size_t i = 0; i < parts_.size(); ++i) drawLegend(painter, i);
}

void CompositionBar::drawStep(QPainter& painter, const QRectF& box, double radius,
                              CompositionPart::Step step) const {
  using enum CompositionPart::Step;
  switch (step) {
  case full:
    return fillRounded(painter, box, radius, theme().color(hue_));
  case strong:
    return fillRounded(painter, box, radius, theme().mixed(hue_, inkShare, Token::text1));
  case half:
    return drawRounded(painter, box, radius, theme().mixed(hue_, halfShare, Token::surface),
                       theme().color(hue_));
  case faint:
    return drawRounded(painter, box, radius, theme().mixed(hue_, faintShare, Token::surface),
                       theme().color(hue_));
  case none:
    return drawRounded(painter, box, radius, theme().color(Token::surface), theme().color(Token::border));
  }
}

void CompositionBar::drawLegend(QPainter& painter, std::size_t index) const {
  const auto& part = parts_[index];
  const int perRow = columns(width());
  const double wide = double(width()) / perRow, high = theme().scaled(legendRow);
  const int line = int(index) / perRow;
  const QRectF cell(wide * double(int(index) % perRow), theme().scaled(legendTop) + high * double(line), wide,
                    high);
  // Laid out from left to right and mirrored as a whole.
  double from = 0;
  const auto place = [&](double size, double height) {
    const double left = isRightToLeft() ? width() - cell.left() - from - size : cell.left() + from;
    return QRectF(left, cell.center().y() - height / 2, size, height);
  };
  drawStep(painter, place(swatch, swatch), 2.5, part.step);
  from += swatch + swatchGap;
  const auto name = text(part.name), value = text(part.value);
  const auto nameWidth = textWidth(theme(), TextStyle::small, name);
  drawText(painter, place(nameWidth, high), theme(), TextStyle::small, Token::text2, name);
  from += nameWidth + valueGap;
  const auto font = fontOf(theme(), TextStyle::smallMedium);
  painter.setPen(theme().color(Token::text1));
  drawFigures(painter, place(figureWidth(font, value), high), Qt::AlignLeft, font, value);
}

} // namespace korvell
