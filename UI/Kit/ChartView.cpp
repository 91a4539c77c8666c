#include "UI/Kit/ChartView.h"

#include "Base/Localization.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QHelpEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace korvell {

namespace {

constexpr int lane = 28, railHeight = 14, timesHeight = 24, legendHeight = 22;
constexpr double eventHit = 12; // on each side of its mark
constexpr double lineReach = 2; // of a line's cap beyond its last point
constexpr int farStep = 10;
constexpr int fadeMilliseconds = 120, restMilliseconds = 150;

double highest(const ChartData& data) {
  double most = 0;
  for (const auto& line : data.lines)
    for (const auto& bucket : line.buckets) most = std::max(most, bucket.most);
  return most;
}

/// A tick of a live chart: everything of before is still there, and something newer.
bool continues(const ChartData& before, const ChartData& now) {
  if (before.time != TimeAxis::live || now.time != TimeAxis::live || before.state != now.state ||
      now.state != ChartData::State::recorded || before.scale != now.scale || before.total != now.total ||
      before.lines.size() != now.lines.size())
    return false;
  for (std::size_t i = 0; i < now.lines.size(); ++i) {
    const auto &old = before.lines[i].buckets, &fresh = now.lines[i].buckets;
    if (old.empty() || std::find(fresh.begin(), fresh.end(), old.back()) == fresh.end()) return false;
  }
  return true;
}

} // namespace

ChartView::ChartView(const Theme& theme, const TimeZone& zone, QWidget* parent)
    : PointedPlot(theme, parent), zone_(zone) {
  rest_.setSingleShot(true);
  rest_.setInterval(restMilliseconds);
  connect(&rest_, &QTimer::timeout, this, [this] { tellPoint(); });
  fading_.setStartValue(1.0);
  fading_.setEndValue(0.0);
  connect(&fading_, &QVariantAnimation::valueChanged, this, [this] { update(); });
  connect(&fading_, &QVariantAnimation::finished, this, [this] {
    before_ = {};
    update(); // with marks and crosshair
  });
}

QSize ChartView::sizeHint() const {
  const double height = lane + plotHeight_ + railHeight + timesHeight + legendHeight;
  return {480, theme().scaled(height)};
}

QSize ChartView::minimumSizeHint() const { return {240, sizeHint().height()}; }

QRectF ChartView::plot() const {
  return QRectF(overhang, theme().scaled(lane), std::max(1, width() - overhang - theme().scaled(gutter)),
                theme().scaled(plotHeight_));
}

QRectF ChartView::rail() const {
  const auto area = plot();
  return {area.left(), area.bottom(), area.width(), double(theme().scaled(railHeight))};
}

double ChartView::xOf(Date date) const {
  const auto span = (data_.end - data_.begin).count();
  const auto area = plot();
  return span > 0 ? area.right() - (right_ - date).count() / span * area.width() : area.right();
}

Date ChartView::dateAt(double x) const {
  const auto area = plot();
  return right_ - (data_.end - data_.begin) * ((area.right() - x) / area.width());
}

double ChartView::yOf(double value) const {
  const auto area = plot();
  return area.bottom() - std::clamp(value / axis_.top, 0.0, 1.0) * area.height();
}

void ChartView::setData(ChartData data) {
  if (data == data_) return;
  std::swap(data_, data);
  const auto& before = data;
  const auto top = data_.time == TimeAxis::live ? liveTop_.update(data_.scale, highest(data_), data_.end)
                                                : roundTop(data_.scale, highest(data_));
  auto axis = valueAxis(data_.scale, top, data_.total);
  const bool sameAxis = axis == axis_;
  axis_ = std::move(axis);
  stops_ = stops(data_);
  const bool wasWhole = gaps_.empty();
  gaps_ = gaps(data_);
  if (!sameAxis || !wasWhole || !gaps_.empty() || !continues(before, data_) || !movePicture(before)) {
    right_ = data_.end;
    if (data_.time != before.time) fadePicture();
    forgetPicture();
  }
  pinned_ = data_.time == before.time ? kept(pinned_) : std::nullopt;
  pointAt(data_.time == before.time ? kept(pointed_) : std::nullopt);
  gapPointer_.reset();
  setName(data_.spoken);
  update();
}

/// What has left the axis can't be pointed at any more.
std::optional<Date> ChartView::kept(std::optional<Date> moment) const {
  const bool isThere = moment && std::binary_search(stops_.begin(), stops_.end(), *moment);
  return isThere ? moment : std::nullopt;
}

void ChartView::forgetPicture() {
  picture_ = {};
  update();
}

bool ChartView::movePicture(const ChartData& before) {
  if (picture_.isNull()) return false;
  const auto ratio = picture_.devicePixelRatio();
  const auto area = plot();
  const double pixels = area.width() * ratio / (data_.end - data_.begin).count(); // a second
  const auto by = std::lround((data_.end - right_).count() * pixels);
  if (by < 0 || by > area.width() * ratio / 2) return false;
  right_ = right_ + Seconds{double(by) / pixels};
  const QRect device =
      QRectF(area.topLeft() * ratio, area.size() * ratio).adjusted(0, -1, 0, 1).toAlignedRect();
  picture_.scroll(-int(by), 0, device);
  double from = area.right();
  for (const auto& line : before.lines) from = std::min(from, xOf(line.buckets.back().date));
  from = std::min(from - lineReach, area.right() - double(by) / ratio);
  QPainter painter(&picture_);
  painter.setRenderHint(QPainter::Antialiasing);
  paintPlot(painter,
            snapped(painter, QRectF(QPointF(from, area.top() - 1), area.bottomRight() + QPointF(1, 1))));
  ++paints_.strips;
  return true;
}

/// From one range to another; the axis changes with the data.
void ChartView::fadePicture() {
  fading_.stop();
  fading_.setDuration(theme().duration(fadeMilliseconds));
  if (fading_.duration() == 0 || !isVisible()) return;
  before_ = picture_;
  fading_.start();
}

void ChartView::setPlotHeight(int height) {
  plotHeight_ = height;
  updateGeometry();
  forgetPicture();
}

void ChartView::setPinned(std::optional<Date> moment) {
  const auto stop = moment ? nearestStop(data_, stops_, *moment) : std::nullopt;
  pinned_ = stop ? std::optional(stops_[*stop]) : std::nullopt;
  update();
}

void ChartView::point(std::optional<Date> moment) {
  const auto stop = moment ? nearestStop(data_, stops_, *moment) : std::nullopt;
  pointAt(stop ? std::optional(stops_[*stop]) : std::nullopt);
  update();
}

void ChartView::pointAt(std::optional<Date> stop) {
  if (std::exchange(pointed_, stop) != stop) rest_.start();
}

void ChartView::tellPoint() {
  rest_.stop();
  if (std::exchange(told_, pointed_) != pointed_ && pointHandler_) pointHandler_(pointed_);
}

std::string ChartView::spokenValue() const {
  if (data_.state == ChartData::State::measuring) return localized("Measuring…");
  if (data_.state != ChartData::State::recorded) return data_.sentence;
  if (const auto bucket = shown()) return sentence(readout(data_, *bucket, zone_));
  return stops_.empty() ? "" : sentence(readout(data_, stops_.back(), zone_));
}

void ChartView::themeChanged() {
  forgetPicture();
  Painted::themeChanged();
}

void ChartView::resizeEvent(QResizeEvent* event) {
  Painted::resizeEvent(event);
  right_ = data_.end;
  before_ = {};
  forgetPicture();
}

// Pointer and keyboard

void ChartView::mouseMoveEvent(QMouseEvent* event) {
  const auto area = plot();
  const auto x = event->position().x();
  gapPointer_.reset();
  if (x < area.left() - overhang || x > area.right() + overhang || event->position().y() > rail().bottom()) {
    point(std::nullopt);
    return;
  }
  const auto at = dateAt(x);
  const bool isGap = std::any_of(gaps_.begin(), gaps_.end(),
                                 [&](const ChartGap& gap) { return gap.begin < at && at < gap.end; });
  if (isGap) gapPointer_ = x;
  point(isGap ? std::nullopt : std::optional(at));
}

void ChartView::leaveEvent(QEvent*) {
  gapPointer_.reset();
  point(std::nullopt);
}

void ChartView::mousePressEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return event->ignore();
  if (const auto* mark = eventAt(event->position())) {
    const auto stop = nearestStop(data_, stops_, mark->date);
    return pin(stop ? std::optional(stops_[*stop]) : std::nullopt);
  }
  mouseMoveEvent(event); // a touch comes without a move
  if (pointed_) pin(pointed_ == pinned_ ? std::nullopt : pointed_);
}

const ChartEvent* ChartView::eventAt(const QPointF& position) const {
  const auto marks = rail();
  if (std::abs(position.y() - marks.center().y()) > eventHit || position.y() < marks.top()) return nullptr;
  const ChartEvent* nearest = nullptr;
  for (const auto& mark : data_.events) {
    const auto distance = std::abs(xOf(mark.date) - position.x());
    if (distance <= eventHit && (!nearest || distance <= std::abs(xOf(nearest->date) - position.x())))
      nearest = &mark;
  }
  return nearest;
}

bool ChartView::event(QEvent* event) {
  if (event->type() == QEvent::ToolTip) {
    const auto& help = static_cast<QHelpEvent&>(*event);
    const auto* mark = eventAt(QPointF(help.pos()));
    if (mark)
      QToolTip::showText(help.globalPos(),
                         text(mark->title + ", " + momentText(data_.time, mark->date, zone_)), this);
    else
      QToolTip::hideText();
    return true;
  }
  return Painted::event(event);
}

void ChartView::keyPressEvent(QKeyEvent* event) {
  const bool isFar = event->modifiers() & Qt::ShiftModifier;
  if (copies(*event)) return;
  if (event->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) return event->ignore();
  switch (event->key()) {
  case Qt::Key_Left:
    return step(isFar ? -farStep : -1);
  case Qt::Key_Right:
    return step(isFar ? farStep : 1);
  case Qt::Key_Up:
    return stepEvent(-1);
  case Qt::Key_Down:
    return stepEvent(1);
  case Qt::Key_Home:
    return stops_.empty() ? void() : moveTo(stops_.front());
  case Qt::Key_End:
    return stops_.empty() ? void() : moveTo(stops_.back());
  case Qt::Key_Return:
  case Qt::Key_Enter:
    return pointed_ || pinned_ ? pin(shown()) : event->ignore();
  case Qt::Key_Escape:
    if (!pinned_ && !pointed_) return event->ignore();
    point(std::nullopt);
    return pinned_ ? pin(std::nullopt) : void();
  default:
    break;
  }
  if (event->key() < Qt::Key_1 || event->key() > Qt::Key_5) return event->ignore();
  if (rangeHandler_) rangeHandler_(std::size_t(event->key() - Qt::Key_1));
}

void ChartView::step(int by) {
  if (stops_.empty()) return;
  const auto last = std::ptrdiff_t(stops_.size()) - 1;
  const auto from = shown() ? std::lower_bound(stops_.begin(), stops_.end(), *shown()) - stops_.begin()
                            : (by < 0 ? last + 1 : -1);
  moveTo(stops_[std::size_t(std::clamp<std::ptrdiff_t>(from + by, 0, last))]);
}

/// To the bucket of the event before or after: Up goes back in time.
void ChartView::stepEvent(int direction) {
  const auto at = shown();
  std::optional<Date> found;
  for (const auto& mark : data_.events) {
    const auto stop = nearestStop(data_, stops_, mark.date);
    if (!stop) return;
    const auto date = stops_[*stop];
    if (direction < 0 && (!at || date < *at)) found = date;
    if (direction > 0 && (!at || date > *at) && !found) found = date;
  }
  if (found) moveTo(*found);
}

void ChartView::moveTo(Date stop) {
  if (pinned_)
    pin(stop);
  else
    point(stop + data_.bucket / 2);
  tellValue();
}

void ChartView::pin(std::optional<Date> bucket) {
  const bool isNew = bucket != pinned_;
  pinned_ = bucket;
  pointAt(std::nullopt);
  update();
  if (isNew && pinHandler_) pinHandler_(pinned_);
  tellPoint(); // after it: what was pointed at is held, not let go and asked for again
}

} // namespace korvell
