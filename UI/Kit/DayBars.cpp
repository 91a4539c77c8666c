#include "UI/Kit/DayBars.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/ReadoutPlate.h"
#include "UI/Kit/Text.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double lane = 28, plotHeight = 166, labels = 26, gutter = 56;
constexpr double totalRoom = 18; ///< above the highest bar
constexpr double barShare = 0.4, widestBar = 44, partGap = 2, corner = 4, washInset = 8;
constexpr double tint = 0.2;    ///< of the second part
constexpr double leastPart = 2; ///< what is there is seen
constexpr double swatch = 10, swatchGap = 6, swatchApart = 16;

void drawPart(QPainter& painter, const QRectF& box, double radius, const Theme& theme, Token token,
              bool isSecond) {
  if (isSecond)
    drawRounded(painter, box, radius, theme.mixed(token, tint, Token::surface), theme.color(token));
  else
    fillRounded(painter, box, radius, theme.color(token));
}

} // namespace

DayBars::DayBars(const Theme& theme, QWidget* parent) : PointedPlot(theme, parent) {}

void DayBars::setData(DayBarsData data) {
  if (data == data_) return;
  if (pointed_) {
    const auto fromEnd = data_.bars.size() - *pointed_;
    pointed_ = fromEnd <= data.bars.size() ? std::optional(data.bars.size() - fromEnd) : std::nullopt;
  }
  data_ = std::move(data);
  setName(data_.spoken);
  update();
}

void DayBars::point(std::optional<std::size_t> bar) {
  if (bar && *bar >= data_.bars.size()) bar.reset();
  if (std::exchange(pointed_, bar) != bar) update();
}

QSize DayBars::sizeHint() const { return {600, theme().scaled(lane + plotHeight + labels)}; }

QSize DayBars::minimumSizeHint() const { return {240, sizeHint().height()}; }

std::string DayBars::spokenValue() const { return pointed_ ? data_.bars[*pointed_].spoken : std::string(); }

// Places

QRectF DayBars::plot() const {
  const double right = data_.ticks.empty() ? 0 : theme().scaled(gutter);
  return {0, double(theme().scaled(lane)), width() - right, double(theme().scaled(plotHeight))};
}

QRectF DayBars::column(std::size_t index) const {
  const auto area = plot();
  const double step = area.width() / double(std::max<std::size_t>(data_.bars.size(), 1));
  return {area.left() + step * double(index), area.top(), step, area.height()};
}

double DayBars::yOf(double value) const {
  const auto area = plot();
  const double room = area.height() - (data_.ticks.empty() ? theme().scaled(totalRoom) : 0);
  return area.bottom() - room * (data_.top > 0 ? value / data_.top : 0);
}

// Painting

void DayBars::draw(QPainter& painter) {
  if (pointed_) {
    auto wash = column(*pointed_);
    const double inset = std::min(washInset, (wash.width() - 8) / 2);
    if (inset > 0) wash.adjust(inset, 0, -inset, 0);
    wash.setBottom(height());
    fillRounded(painter, wash, corner, theme().color(Token::hover));
  }
  drawAxis(painter);
  for (std::size_t i = 0; i < data_.bars.size(); ++i) drawBar(painter, i);
  drawLabels(painter);
  if (pointed_) drawReadout(painter, *pointed_);
}

void DayBars::drawAxis(QPainter& painter) const {
  const auto area = plot();
  const auto font = fontOf(theme(), TextStyle::caption);
  const double line = lineHeight(theme(), TextStyle::caption);
  for (const auto& tick : data_.ticks) {
    const double y = yOf(tick.value);
    drawHairline(painter, {area.left(), y}, area.width(), theme().color(Token::grid));
    painter.setPen(theme().color(Token::text3));
    drawFigures(painter, QRectF(area.right() + 8, y - line / 2, theme().scaled(gutter) - 8, line),
                Qt::AlignLeft, font, text(tick.label));
  }
  drawHairline(painter, area.bottomLeft(), area.width(), theme().color(Token::axis));
}

void DayBars::drawBar(QPainter& painter, std::size_t index) const {
  const auto& bar = data_.bars[index];
  const auto box = column(index);
  const double wide = std::min(std::max(box.width() * barShare, 2.0), double(theme().scaled(widestBar)));
  const double left = std::round(box.center().x() - wide / 2);
  double base = plot().bottom(), sum = 0;
  for (std::size_t i = 0; i < bar.parts.size(); ++i) {
    if (bar.parts[i].amount <= 0) continue;
    sum += bar.parts[i].amount;
    const double from = std::min(yOf(sum), base - leastPart);
    drawPart(painter, QRectF(QPointF(left, from), QPointF(left + wide, base)), std::min(corner, wide / 4),
             theme(), data_.token, i > 0);
    base = from - partGap;
  }
  if (!data_.ticks.empty() || pointed_ == index) return;
  const double line = lineHeight(theme(), TextStyle::caption);
  painter.setPen(theme().color(Token::text2));
  drawFigures(painter, QRectF(box.left(), base - line - 2, box.width(), line), Qt::AlignHCenter,
              fontOf(theme(), TextStyle::caption), text(bar.total));
}

/// From the right: today is always there, and neighbours never touch.
void DayBars::drawLabels(QPainter& painter) const {
  constexpr double apart = 8;
  const auto area = plot();
  const auto font = fontOf(theme(), TextStyle::caption);
  double free = width();
  for (auto i = data_.bars.size(); i-- > 0;) {
    const auto words = text(data_.bars[i].label);
    if (words.isEmpty()) continue;
    const double wide = figureWidth(font, words);
    const double left = std::clamp(column(i).center().x() - wide / 2, 0.0, std::max(0.0, width() - wide));
    if (left + wide > free) continue;
    free = left - apart;
    painter.setPen(theme().color(pointed_ == i ? Token::text1 : Token::text3));
    drawFigures(painter, QRectF(left, area.bottom(), wide, height() - area.bottom()), Qt::AlignLeft, font,
                words);
  }
}

void DayBars::drawReadout(QPainter& painter, std::size_t index) const {
  const auto& bar = data_.bars[index];
  const auto plateOf = [&](bool withParts) {
    ReadoutPlate plate(theme());
    plate.add(TextStyle::small, Token::text2, bar.when);
    plate.add(TextStyle::head, Token::text1, bar.total);
    if (withParts)
      for (const auto& part : bar.parts) plate.add(TextStyle::small, Token::text2, part.words);
    plate.add(TextStyle::smallStrong, Token::text1, bar.beside);
    return plate;
  };
  const auto whole = plateOf(true);
  (whole.width() <= width() ? whole : plateOf(false)).draw(painter, column(index).center().x(), 0, width());
}

// Pointing

void DayBars::mouseMoveEvent(QMouseEvent* event) {
  const auto area = plot();
  const auto at = event->position();
  if (data_.bars.empty() || at.x() < area.left() || at.x() >= area.right()) return point(std::nullopt);
  point(std::size_t((at.x() - area.left()) / column(0).width()));
}

void DayBars::leaveEvent(QEvent*) { point(std::nullopt); }

void DayBars::moveTo(std::size_t index) {
  point(index);
  tellValue();
}

void DayBars::keyPressEvent(QKeyEvent* event) {
  if (copies(*event)) return;
  const bool isPlain = !(event->modifiers() & ~Qt::KeypadModifier);
  if (data_.bars.empty() || !isPlain) return event->ignore();
  const auto last = data_.bars.size() - 1;
  switch (event->key()) {
  case Qt::Key_Left:
    return moveTo(pointed_ ? *pointed_ - (*pointed_ > 0 ? 1 : 0) : last);
  case Qt::Key_Right:
    return moveTo(pointed_ ? std::min(*pointed_ + 1, last) : 0);
  case Qt::Key_Home:
    return moveTo(0);
  case Qt::Key_End:
    return moveTo(last);
  case Qt::Key_Escape:
    return pointed_ ? point(std::nullopt) : event->ignore();
  default:
    return event->ignore();
  }
}

// The legend

DayBarsLegend::DayBarsLegend(const Theme& theme, QWidget* parent) : Painted(theme, parent) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void DayBarsLegend::setSeries(std::vector<std::string> series, Token token) {
  if (series == series_ && token == token_) return;
  series_ = std::move(series);
  token_ = token;
  std::string words;
  for (const auto& name : series_) words += (words.empty() ? "" : ", ") + name;
  setName(words);
  updateGeometry();
  update();
}

QSize DayBarsLegend::sizeHint() const {
  double wide = 0;
  for (const auto& name : series_)
    wide += swatch + swatchGap + textWidth(theme(), TextStyle::small, text(name)) + swatchApart;
  return {int(std::ceil(std::max(0.0, wide - swatchApart))), lineHeight(theme(), TextStyle::body)};
}

void DayBarsLegend::draw(QPainter& painter) {
  double from = 0;
  for (std::size_t i = 0; i < series_.size(); ++i) {
    const auto words = text(series_[i]);
    const double wide = textWidth(theme(), TextStyle::small, words);
    const auto place = [&](double at, double size, double high) {
      return QRectF(isRightToLeft() ? width() - at - size : at, (height() - high) / 2, size, high);
    };
    drawPart(painter, place(from, swatch, swatch), 2.5, theme(), token_, i > 0);
    drawText(painter, place(from + swatch + swatchGap, wide, height()), theme(), TextStyle::small,
             Token::text2, words);
    from += swatch + swatchGap + wide + swatchApart;
  }
}

} // namespace korvell
