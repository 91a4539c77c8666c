// The painting of a ChartView; what it does is in ChartView.cpp.

#include "Base/Localization.h"
#include "UI/Kit/ChartView.h"
#include "UI/Kit/FigureText.h"
#include "UI/Kit/Icons.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/ReadoutPlate.h"
#include "UI/Kit/Text.h"

#include <QPainterPath>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr double hatchStep = 6, hatchWidth = 1.2;
constexpr double wordsFrom = 72; // a gap so wide has its words in it
constexpr double densest = 1.5;  // logical pixels a bucket
constexpr double dotRadius = 5, endDotRadius = 2.5;
constexpr double labelGap = 8; // between neighbours on the time axis
constexpr double tickLength = 4;

void drawHatch(QPainter& painter, const QRectF& box, const QColor& color) {
  painter.save();
  painter.setClipRect(box, Qt::IntersectClip);
  painter.setPen(QPen(color, hatchWidth));
  // Six apart across the lines; they begin at the box's edge, so that a moved one goes on where it was.
  const double step = hatchStep * std::sqrt(2);
  for (double x = box.left(); x < box.right() + box.height(); x += step)
    painter.drawLine(QPointF(x, box.top()), QPointF(x - box.height(), box.bottom()));
  painter.restore();
}

std::string bucketWords(Seconds bucket) {
  const auto minutes = std::lround(bucket.count() / 60);
  if (minutes == 1) return localized("a minute");
  if (minutes < 60) return localized("{n} minutes", {{"n", std::to_string(minutes)}});
  if (minutes == 60) return localized("an hour");
  return localized("{n} hours", {{"n", std::to_string(minutes / 60)}});
}

ReadoutPlate plateOf(const Readout& readout, const Theme& theme, bool withSpreads) {
  ReadoutPlate plate(theme);
  plate.add(TextStyle::small, Token::text2, readout.when);
  if (readout.parts.empty()) plate.add(TextStyle::head, Token::text1, localized("Not recorded"));
  for (const auto& part : readout.parts) {
    if (!part.name.empty()) {
      plate.addSwatch(part.token);
      plate.add(TextStyle::small, Token::text2, part.name);
    }
    plate.add(TextStyle::head, Token::text1, part.value);
    if (withSpreads && !part.spread.empty()) plate.add(TextStyle::small, Token::text2, part.spread);
  }
  return plate;
}

} // namespace

void ChartView::draw(QPainter& painter) {
  const auto ratio = devicePixelRatioF();
  if (picture_.isNull() || picture_.devicePixelRatio() != ratio) paintPicture();
  painter.drawPixmap(0, 0, picture_);
  if (!before_.isNull() && fading_.state() == QVariantAnimation::Running) {
    painter.setOpacity(fading_.currentValue().toDouble());
    painter.drawPixmap(0, 0, before_);
    return; // marks and the crosshair come with the whole of the new one
  }
  if (data_.state != ChartData::State::recorded) return;
  paintEvents(painter);
  if (data_.time == TimeAxis::live)
    for (const auto& line : data_.lines) {
      if (line.buckets.empty() || isBroken(data_, line.buckets.back().date, data_.end)) continue;
      painter.setPen(Qt::NoPen);
      painter.setBrush(theme().color(line.token));
      painter.drawEllipse(QPointF(xOf(line.buckets.back().date), yOf(line.buckets.back().mean)), endDotRadius,
                          endDotRadius);
    }
  // A pointer looks around while a moment is pinned: it says what it is at, the pin keeps its line.
  if (pinned_ && pointed_ && pinned_ != pointed_)
    drawHairline(painter, QPointF(xOfBucket(*pinned_), plot().top()), plot().height(),
                 theme().color(Token::text3), Qt::Vertical);
  if (const auto bucket = pointed_ ? pointed_ : pinned_)
    paintCrosshair(painter, *bucket);
  else
    paintPointedGap(painter);
}

void ChartView::paintPicture() {
  const auto ratio = devicePixelRatioF();
  picture_ = QPixmap(size() * ratio);
  picture_.setDevicePixelRatio(ratio);
  picture_.fill(theme().color(Token::surface));
  QPainter painter(&picture_);
  painter.setRenderHint(QPainter::Antialiasing);
  const bool isRecorded = data_.state == ChartData::State::recorded;
  const auto all = plot().adjusted(-1, -1, 1, 2);
  if (isRecorded || data_.state == ChartData::State::measuring) {
    for (const auto& tick : axis_.ticks) {
      const auto height = double(lineHeight(theme(), TextStyle::caption));
      const QRectF box(plot().right() + 8, yOf(tick.value) - height / 2, theme().scaled(gutter) - 8, height);
      painter.setPen(theme().color(Token::text3));
      drawFigures(painter, box, Qt::AlignLeft, fontOf(theme(), TextStyle::caption), text(tick.label));
    }
    paintPlot(painter, all);
  } else {
    drawHairline(painter, plot().bottomLeft(), plot().width(), theme().color(Token::axis));
  }
  if (!isRecorded) paintSentence(painter);
  if (data_.end > data_.begin) paintTimes(painter);
  if (isRecorded) paintLegend(painter);
  ++paints_.whole;
}

/// Everything of the plot inside a rectangle.
void ChartView::paintPlot(QPainter& painter, const QRectF& clip) const {
  painter.save();
  painter.setClipRect(clip);
  fillBox(painter, clip, theme().color(Token::surface));
  paintGrid(painter);
  if (data_.state == ChartData::State::recorded) {
    paintGaps(painter);
    for (std::size_t i = 0; i < data_.lines.size(); ++i) paintLine(painter, i, clip);
  }
  paintTotal(painter);
  drawHairline(painter, plot().bottomLeft(), plot().width(), theme().color(Token::axis));
  painter.restore();
}

void ChartView::paintGrid(QPainter& painter) const {
  const auto area = plot();
  for (const auto& tick : axis_.ticks) {
    if (tick.value == 0) continue;
    const auto y = yOf(tick.value);
    if (!tick.isTotal)
      drawHairline(painter, QPointF(area.left(), y), area.width(), theme().color(Token::grid));
  }
}

/// Over everything else: how much there is holds for gaps too.
void ChartView::paintTotal(QPainter& painter) const {
  const auto area = plot();
  for (const auto& tick : axis_.ticks)
    for (double x = area.left(); tick.isTotal && x < area.right(); x += 6)
      drawHairline(painter, QPointF(x, yOf(tick.value)), 3, theme().color(Token::axis));
}

void ChartView::paintTimes(QPainter& painter) const {
  const auto area = plot();
  const auto font = fontOf(theme(), TextStyle::caption);
  const auto ticks = timeTicks(data_.time, data_.begin, data_.end, zone_);
  const auto top = rail().bottom();
  const double height = theme().scaled(24);
  std::vector<QRectF> taken;
  // From the right: "now" is always there.
  for (auto tick = ticks.rbegin(); tick != ticks.rend(); ++tick) {
    const auto words = text(tick->label);
    const auto width = figureWidth(font, words);
    // A live axis stands still while its data moves.
    const auto share = (data_.end - tick->date).count() / (data_.end - data_.begin).count();
    const auto x = area.right() - share * area.width();
    drawHairline(painter, QPointF(std::min(x, area.right() - 1), area.bottom()), tickLength,
                 theme().color(Token::axis), Qt::Vertical);
    auto left = x - width / 2;
    if (tick->place == TimeTick::Place::last) left = x - width;
    if (tick->place == TimeTick::Place::first) left = x;
    const QRectF box(std::max(left, area.left()), top, width, height);
    const bool touches = std::any_of(taken.begin(), taken.end(), [&](const QRectF& other) {
      return box.adjusted(-labelGap, 0, labelGap, 0).intersects(other);
    });
    if (touches) continue;
    taken.push_back(box);
    painter.setPen(theme().color(Token::text3));
    drawFigures(painter, box, Qt::AlignLeft, font, words);
  }
}

void ChartView::paintGaps(QPainter& painter) const {
  for (const auto& gap : gaps_) paintGap(painter, gap);
}

bool ChartView::hasRoomForWords(const ChartGap& gap) const {
  const auto area = plot();
  return std::min(xOf(gap.end), area.right()) - std::max(xOf(gap.begin), area.left()) >=
         theme().scaled(wordsFrom);
}

void ChartView::paintGap(QPainter& painter, const ChartGap& gap) const {
  const auto area = plot();
  const auto left = std::max(xOf(gap.begin), area.left()), right = std::min(xOf(gap.end), area.right());
  if (right - left < 1) return;
  const QRectF box(QPointF(left, area.top()), QPointF(right, area.bottom()));
  fillBox(painter, box, theme().color(Token::surface));
  drawHatch(painter, box, theme().color(Token::hatch));
  if (!hasRoomForWords(gap)) return;
  const auto what = text(localized("Not recorded"));
  const auto when = text(spanText(data_.time, gap.begin, gap.end, zone_));
  const auto small = fontOf(theme(), TextStyle::small);
  const auto wide = std::max(textWidth(theme(), TextStyle::small, what), figureWidth(small, when));
  const bool fits = wide + 12 <= box.width();
  const double line = lineHeight(theme(), TextStyle::small);
  const auto width = (fits ? wide : textWidth(theme(), TextStyle::small, what)) + 12;
  if (width > box.width()) return;
  QRectF plate(0, 0, width, (fits ? 2 : 1) * line + 8);
  plate.moveCenter(box.center());
  fillRounded(painter, plate, 5, theme().color(Token::surface));
  QRectF row(plate.left(), plate.top() + 4, plate.width(), line);
  drawText(painter, row, theme(), TextStyle::small, Token::text2, what, Qt::AlignHCenter);
  if (!fits) return;
  row.translate(0, line);
  painter.setPen(theme().color(Token::text3));
  drawFigures(painter, row, Qt::AlignHCenter, small, when);
}

std::vector<std::vector<ChartBucket>> ChartView::stretches(std::size_t index) const {
  std::vector<std::vector<ChartBucket>> found;
  for (const auto& bucket : data_.lines[index].buckets) {
    if (found.empty() || isBroken(data_, found.back().back().date, bucket.date)) found.emplace_back();
    found.back().push_back(bucket);
  }
  const auto columns = std::size_t(std::max(1.0, plot().width() / densest));
  if (data_.lines[index].buckets.size() <= columns) return found;
  for (auto& stretch : found) stretch = mergedByColumn(stretch, data_.begin, data_.end, columns);
  return found;
}

/// Those of a stretch that show between two places, and one more on each side: a strip costs what it is wide.
std::span<const ChartBucket> ChartView::between(std::span<const ChartBucket> stretch, double left,
                                                double right) const {
  const auto isBefore = [this](const ChartBucket& bucket, double x) { return xOfBucket(bucket.date) < x; };
  const auto isAfter = [this](double x, const ChartBucket& bucket) { return x < xOfBucket(bucket.date); };
  auto first = std::lower_bound(stretch.begin(), stretch.end(), left, isBefore);
  auto last = std::upper_bound(first, stretch.end(), right, isAfter);
  if (first != stretch.begin()) --first;
  if (last != stretch.end()) ++last;
  return {first, last};
}

void ChartView::paintLine(QPainter& painter, std::size_t index, const QRectF& clip) const {
  constexpr double reach = 4; // of a line beyond its points
  const auto& line = data_.lines[index];
  const auto area = plot();
  for (const auto& whole : stretches(index)) {
    const auto stretch = between(whole, clip.left() - reach, clip.right() + reach);
    if (stretch.empty()) continue;
    // From the first bucket's begin to the last one's end, each at its middle.
    const auto outline = [&](double ChartBucket::*figure) {
      QPolygonF points;
      points << QPointF(xOf(stretch.front().date), yOf(stretch.front().*figure));
      for (const auto& bucket : stretch) points << QPointF(xOfBucket(bucket.date), yOf(bucket.*figure));
      points << QPointF(xOf(stretch.back().date + data_.bucket), yOf(stretch.back().*figure));
      return points;
    };
    const auto means = outline(&ChartBucket::mean);
    painter.setPen(Qt::NoPen);
    if (index == 0) {
      auto below = means;
      below << QPointF(means.last().x(), area.bottom()) << QPointF(means.first().x(), area.bottom());
      painter.setBrush(theme().color(fillOf(line.token)));
      painter.drawPolygon(below);
      if (data_.time != TimeAxis::live) {
        auto band = outline(&ChartBucket::most);
        const auto least = outline(&ChartBucket::least);
        for (auto point = least.rbegin(); point != least.rend(); ++point) band << *point;
        painter.setBrush(theme().color(bandOf(line.token)));
        painter.drawPolygon(band);
      }
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(
        QPen(theme().color(line.token), theme().lineWidth(), Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    painter.drawPolyline(means);
  }
}

void drawEventMark(QPainter& painter, const QPointF& middle, const Theme& theme, ChartEvent::Kind kind) {
  painter.save();
  if (kind == ChartEvent::Kind::alert) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.color(Token::warningMark));
    painter.drawPolygon(
        QPolygonF({middle + QPointF(0, -5), middle + QPointF(5, 4), middle + QPointF(-5, 4)}));
  } else {
    painter.setPen(QPen(theme.color(Token::text2), 1.5));
    painter.setBrush(theme.color(Token::surface));
    if (kind == ChartEvent::Kind::cleanUp)
      painter.drawEllipse(middle, 4, 4);
    else
      painter.drawRect(QRectF(middle - QPointF(3.5, 3.5), QSizeF(7, 7)));
  }
  painter.restore();
}

void ChartView::paintEvents(QPainter& painter) const {
  const auto marks = rail();
  for (const auto& mark : data_.events) {
    const auto x = xOf(mark.date);
    if (x >= marks.left() - 0.5 && x <= marks.right())
      drawEventMark(painter, QPointF(x, marks.top() + theme().scaled(11)), theme(), mark.kind);
  }
}

void ChartView::paintLegend(QPainter& painter) const {
  const auto area = plot();
  const double height = theme().scaled(22);
  QRectF row(area.left(), rail().bottom() + theme().scaled(24), area.width(), height);
  double left = row.left();
  const auto middle = row.center().y();
  const auto add = [&](double markWidth, const std::string& words, auto drawMark) {
    const auto width = textWidth(theme(), TextStyle::caption, text(words));
    if (left + markWidth + 6 + width > row.right()) return;
    drawMark(QRectF(left, middle - 5, markWidth, 10));
    drawText(painter, QRectF(left + markWidth + 6, row.top(), width, height), theme(), TextStyle::caption,
             Token::text2, text(words));
    left += markWidth + 6 + width + 16;
  };
  const bool isOne = data_.lines.size() == 1;
  for (const auto& line : data_.lines)
    add(16, line.name, [&](const QRectF& box) {
      fillBox(painter, QRectF(box.left(), middle - 1, box.width(), 2), theme().color(line.token));
    });
  if (data_.time != TimeAxis::live && !data_.lines.empty()) {
    const auto span = bucketWords(data_.bucket);
    const auto words = isOne ? localized("Minimum to maximum of {span}", {{"span", span}})
                             : localized("{line}, minimum to maximum of {span}",
                                         {{"line", data_.lines.front().name}, {"span", span}});
    add(16, words, [&](const QRectF& box) {
      fillRounded(painter, box, 2, theme().color(bandOf(data_.lines.front().token)));
    });
  }
  if (!gaps_.empty() && std::ranges::none_of(gaps_, [this](const auto& gap) { return hasRoomForWords(gap); }))
    add(16, localized("Not recorded"),
        [&](const QRectF& box) { drawHatch(painter, box, theme().color(Token::axis)); });
  const std::pair<ChartEvent::Kind, const char*> kinds[] = {{ChartEvent::Kind::alert, "Alert"},
                                                            {ChartEvent::Kind::cleanUp, "Clean-up"},
                                                            {ChartEvent::Kind::start, "Start"}};
  for (const auto& [kind, words] : kinds) {
    const auto isThere = [kind = kind](const ChartEvent& mark) { return mark.kind == kind; };
    if (std::none_of(data_.events.begin(), data_.events.end(), isThere)) continue;
    add(10, localized(words),
        [&, kind = kind](const QRectF& box) { drawEventMark(painter, box.center(), theme(), kind); });
  }
}

void ChartView::paintSentence(QPainter& painter) const {
  const auto area = plot();
  const bool isMeasuring = data_.state == ChartData::State::measuring;
  const auto first = isMeasuring ? localized("Measuring…") : data_.sentence;
  const auto style = isMeasuring ? TextStyle::small : TextStyle::strong;
  const double line = lineHeight(theme(), TextStyle::strong);
  QRectF row(area.left(), area.center().y() - line, area.width(), line);
  QRectF plate(0, 0, textWidth(theme(), style, text(first)) + 12, line + 4);
  plate.moveCenter(row.center());
  fillBox(painter, plate, theme().color(Token::surface)); // over the grid
  drawText(painter, row, theme(), style, isMeasuring ? Token::text2 : Token::text1, text(first),
           Qt::AlignHCenter);
  if (data_.detail.empty()) return;
  row.translate(0, line + 2);
  drawText(painter, row, theme(), TextStyle::small, Token::text2, text(data_.detail), Qt::AlignHCenter);
}

void ChartView::paintCrosshair(QPainter& painter, Date bucket) const {
  const auto area = plot();
  const auto x = xOfBucket(bucket);
  drawHairline(painter, QPointF(x - 0.5, area.top() - 4), area.height() + 4, theme().color(Token::text2),
               Qt::Vertical);
  for (const auto& line : data_.lines)
    for (const auto& at : line.buckets) {
      if (at.date != bucket) continue;
      painter.setPen(Qt::NoPen);
      painter.setBrush(theme().color(Token::surface));
      painter.drawEllipse(QPointF(x, yOf(at.mean)), dotRadius + 1, dotRadius + 1);
      painter.setBrush(theme().color(line.token));
      painter.drawEllipse(QPointF(x, yOf(at.mean)), dotRadius - 1, dotRadius - 1);
    }
  paintReadout(painter, x, readout(data_, bucket, zone_));
}

void ChartView::paintPointedGap(QPainter& painter) const {
  if (!gapPointer_) return;
  const auto at = dateAt(*gapPointer_);
  for (const auto& gap : gaps_) {
    if (at < gap.begin || at > gap.end) continue;
    drawHairline(painter, QPointF(*gapPointer_, plot().top() - 4), plot().height() + 4,
                 theme().color(Token::text2), Qt::Vertical);
    paintReadout(painter, *gapPointer_, {spanText(data_.time, gap.begin, gap.end, zone_), {}});
  }
}

void ChartView::paintReadout(QPainter& painter, double x, const Readout& readout) const {
  const auto whole = plateOf(readout, theme(), true);
  const bool fits = whole.width() <= width() - overhang;
  (fits ? whole : plateOf(readout, theme(), false)).draw(painter, x, overhang, plot().right() + 1);
}

} // namespace korvell
