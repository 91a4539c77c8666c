#include "UI/Measures/RangeControl.h"

#include "Base/Localization.h"
#include "Core/History/HistoryTypes.h"
#include "UI/Kit/Paint.h"

namespace korvell {

namespace {

constexpr int noticed = 150, roundTrip = 1200; // milliseconds
constexpr int lineRoom = 4;
constexpr double thickness = 2, lineShare = 0.3;

std::vector<std::string> words() {
  std::vector<std::string> all;
  for (const auto& range : allCases<HistoryRange>()) all.push_back(title(range.value));
  return all;
}

} // namespace

RangeControl::RangeControl(const Theme& theme, QWidget* parent)
    : Painted(theme, parent), segments_(new Segments(theme, localized("Range"), words(), this)) {
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  setName(localized("Range"));
  patience_.setSingleShot(true);
  patience_.setInterval(noticed);
  connect(&patience_, &QTimer::timeout, this, [this] {
    isLate_ = true;
    if (this->theme().duration(roundTrip) > 0) running_.start();
    update();
  });
  running_.setStartValue(0.0);
  running_.setEndValue(1.0);
  running_.setDuration(roundTrip);
  running_.setLoopCount(-1);
  connect(&running_, &QVariantAnimation::valueChanged, this, [this] { update(); });
}

void RangeControl::setLoading(bool loading) {
  if (loading && !isLate_ && !patience_.isActive()) patience_.start();
  if (loading) return;
  patience_.stop();
  running_.stop();
  if (std::exchange(isLate_, false)) update();
}

QSize RangeControl::sizeHint() const {
  return {segments_->sizeHint().width(), segments_->sizeHint().height() + 2 * lineRoom};
}

void RangeControl::resizeEvent(QResizeEvent*) {
  segments_->setGeometry(0, lineRoom, width(), height() - 2 * lineRoom);
}

void RangeControl::draw(QPainter& painter) {
  if (!isLate_) return;
  const double wide = running_.state() == QVariantAnimation::Running ? width() * lineShare : width();
  const double left = (width() - wide) * running_.currentValue().toDouble();
  fillBox(painter, QRectF(left, height() - thickness, wide, thickness), theme().color(Token::accent));
}

} // namespace korvell
