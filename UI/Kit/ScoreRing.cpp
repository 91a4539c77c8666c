#include "UI/Kit/ScoreRing.h"

#include "UI/Kit/FigureText.h"
#include "UI/Kit/Paint.h"
#include "UI/Kit/Text.h"

#include <QFontMetricsF>
#include <QMouseEvent>
#include <QPainterPath>

#include <cmath>
#include <numbers>

namespace korvell {

namespace {

constexpr int turnMilliseconds = 200;
constexpr double numberLift = 5.0 / 44;  // of the number's size, when there is a label
constexpr double labelBelow = 32.0 / 44; // its baseline below the middle
constexpr double highlightExtra = 2;     // pixels, inwards

} // namespace

double weightOf(Tone tone) {
  switch (tone) {
  case Tone::critical:
    return 1;
  case Tone::warning:
    return 0.7;
  default:
    return 0.34;
  }
}

ScoreRing::ScoreRing(const Theme& theme, Form form, QWidget* parent) : Painted(theme, parent), form_(form) {
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  turning_.setStartValue(0.0);
  turning_.setEndValue(1.0);
  turning_.setEasingCurve(QEasingCurve::OutCubic);
  connect(&turning_, &QVariantAnimation::valueChanged, this, [this](const QVariant& share) {
    shown_ = between(share.toDouble());
    update();
  });
}

void ScoreRing::setScore(std::optional<int> score, std::vector<Share> lost) {
  if (score == score_ && lost == shares_) return;
  auto hadScore = score_.has_value();
  score_ = score;
  shares_ = std::move(lost);
  before_ = shown_;
  before_.points.resize(shares_.size());
  pointed_ = std::nullopt;
  highlighted_ = std::nullopt;
  turning_.stop();
  turning_.setDuration(theme().duration(turnMilliseconds));
  if (isVisible() && hadScore && score && turning_.duration() > 0)
    turning_.start();
  else
    shown_ = between(1);
  update();
}

ScoreRing::Shown ScoreRing::between(double share) const {
  auto mix = [&](double from, double to) { return from + (to - from) * share; };
  Shown result{.score = mix(before_.score, score_.value_or(0))};
  for (std::size_t i = 0; i < shares_.size(); ++i)
    result.points.push_back(mix(before_.points[i], shares_[i].points));
  return result;
}

void ScoreRing::setForm(Form form) {
  form_ = form;
  updateGeometry();
  update();
}

void ScoreRing::setLabel(std::string_view label) {
  label_ = label;
  update();
}

void ScoreRing::highlight(std::optional<std::size_t> share) {
  if (share == highlighted_) return;
  highlighted_ = share;
  update();
}

QSize ScoreRing::sizeHint() const {
  auto side = qCeil(form_.diameter * theme().look().textScale);
  return {side, side};
}

std::string ScoreRing::spokenValue() const { return score_ ? std::to_string(*score_) : std::string(); }

std::optional<double> ScoreRing::meter() const { return score_; }

RingArcs ScoreRing::arcs() const { return ringArcs(shown_.score, shown_.points, radius()); }

void ScoreRing::draw(QPainter& painter) {
  auto scale = theme().look().textScale;
  painter.translate(width() / 2.0, height() / 2.0);
  painter.scale(scale, scale);
  drawRing(painter);
  drawWords(painter);
}

void ScoreRing::drawRing(QPainter& painter) const {
  if (!score_ || shares_.empty()) drawArc(painter, {0, 360}, form_.weight, theme().color(Token::sunken));
  if (!score_) return;
  auto all = arcs();
  drawArc(painter, all.score, form_.weight, theme().color(Token::accent));
  for (std::size_t i = 0; i < all.lost.size(); ++i) {
    auto weight =
        highlighted_ == i ? form_.weight + highlightExtra : form_.weight * weightOf(shares_[i].tone);
    drawArc(painter, all.lost[i], weight, theme().color(lookOf(shares_[i].tone).mark));
  }
}

/// Around the middle of the painter. Weights below the full one lie on the middle of the ring, a highlighted
/// one grows inwards.
void ScoreRing::drawArc(QPainter& painter, const RingArc& arc, double weight, const QColor& color) const {
  if (arc.sweep <= 0) return;
  auto inward = std::max(0.0, weight - form_.weight) / 2;
  auto around = radius() - inward;
  painter.setPen(QPen(color, weight, Qt::SolidLine, Qt::FlatCap));
  painter.setBrush(Qt::NoBrush);
  QRectF circle(-around, -around, 2 * around, 2 * around);
  if (arc.sweep >= 360) {
    painter.drawEllipse(circle);
    return;
  }
  // The toolkit counts sixteenths of degrees, which is too coarse for the gaps of a large ring: a path is
  // not.
  QPainterPath path;
  path.arcMoveTo(circle, 90 - arc.from);
  path.arcTo(circle, 90 - arc.from, -arc.sweep);
  painter.drawPath(path);
}

void ScoreRing::drawWords(QPainter& painter) const {
  QFont digits(theme().family());
  digits.setPixelSize(qRound(form_.number));
  digits.setWeight(QFont::DemiBold);
  digits.setHintingPreference(QFont::PreferNoHinting);
  digits.setLetterSpacing(QFont::AbsoluteSpacing, -0.02 * form_.number);
  auto number = score_ ? QString::number(*score_) : QString(u'–');
  auto lift = label_.empty() ? 0 : numberLift * form_.number;
  auto base = QFontMetricsF(digits).capHeight() / 2 - lift;
  painter.setPen(theme().color(Token::text1));
  drawFigures(painter, QPointF(-figureWidth(digits, number) / 2, base), digits, number);
  if (label_.empty()) return;
  QFont words(theme().family());
  words.setPixelSize(13);
  words.setWeight(QFont::Medium);
  words.setHintingPreference(QFont::PreferNoHinting);
  painter.setPen(theme().color(Token::text2));
  drawLabel(painter, words);
}

/// On one line where the ring leaves it room, else on two: "Needs attention so far".
void ScoreRing::drawLabel(QPainter& painter, QFont font) const {
  const auto label = text(label_);
  const auto inside = form_.diameter / 2 - form_.weight - 4;
  auto base = labelBelow * form_.number;
  const auto chord = [inside](double y) { return 2 * std::sqrt(std::max(0.0, inside * inside - y * y)); };
  const auto width = [&font](const QString& words) { return QFontMetricsF(font).horizontalAdvance(words); };
  QStringList lines{label};
  if (width(label) > chord(base)) {
    font.setPixelSize(12);
    const auto words = label.split(u' ');
    const auto half = (words.size() + 1) / 2;
    lines = {words.mid(0, half).join(u' '), words.mid(half).join(u' ')};
    base -= 2;
  }
  painter.setFont(font);
  for (const auto& line : lines) {
    painter.drawText(QPointF(-width(line) / 2, base), line);
    base += 14;
  }
}

void ScoreRing::mouseMoveEvent(QMouseEvent* event) {
  auto away = event->position() - QPointF(width() / 2.0, height() / 2.0);
  away /= theme().look().textScale;
  auto distance = std::hypot(away.x(), away.y());
  if (!score_ || std::abs(distance - radius()) > form_.weight) return point(std::nullopt);
  auto degrees = std::atan2(away.x(), -away.y()) * 180 / std::numbers::pi;
  point(shareAt(arcs(), degrees < 0 ? degrees + 360 : degrees));
}

void ScoreRing::leaveEvent(QEvent*) { point(std::nullopt); }

void ScoreRing::point(std::optional<std::size_t> share) {
  if (share == pointed_) return;
  pointed_ = share;
  highlight(share);
  if (auto handler = hovered_) handler(share);
}

} // namespace korvell
