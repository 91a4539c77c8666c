#include "UI/Kit/PathData.h"

#include <cctype>
#include <charconv>
#include <cmath>
#include <numbers>

namespace korvell {

namespace {

double degrees(double radians) { return radians * 180 / std::numbers::pi; }

class Reader {
public:
  explicit Reader(std::string_view data) : rest_(data) {}

  bool read() {
    char command = 0;
    while (skip(), !rest_.empty()) {
      if (std::isalpha(static_cast<unsigned char>(rest_[0]))) {
        command = rest_[0];
        rest_.remove_prefix(1);
      } else if (command == 0 || std::toupper(command) == 'Z') {
        return false;
      }
      if (!segment(command)) return false;
      if (command == 'M') command = 'L';
      if (command == 'm') command = 'l';
    }
    return true;
  }
  QPainterPath path;

private:
  void skip() {
    while (!rest_.empty() && (rest_[0] == ' ' || rest_[0] == ',')) rest_.remove_prefix(1);
  }

  bool number(double& value) {
    skip();
    auto [end, error] = std::from_chars(rest_.data(), rest_.data() + rest_.size(), value);
    if (error != std::errc{}) return false;
    rest_.remove_prefix(static_cast<std::size_t>(end - rest_.data()));
    return true;
  }

  bool point(QPointF& value, QPointF origin) {
    double x = 0;
    double y = 0;
    if (!number(x) || !number(y)) return false;
    value = origin + QPointF(x, y);
    return true;
  }

  bool segment(char command) {
    auto here = path.currentPosition();
    auto origin = std::islower(static_cast<unsigned char>(command)) ? here : QPointF();
    auto turned = std::exchange(control_, std::nullopt);
    QPointF to;
    double value = 0;
    switch (std::toupper(command)) {
    case 'M':
      if (!point(to, origin)) return false;
      path.moveTo(to);
      return true;
    case 'L':
      if (!point(to, origin)) return false;
      path.lineTo(to);
      return true;
    case 'H':
      if (!number(value)) return false;
      path.lineTo(origin.x() + value, here.y());
      return true;
    case 'V':
      if (!number(value)) return false;
      path.lineTo(here.x(), origin.y() + value);
      return true;
    case 'C': {
      QPointF first;
      return point(first, origin) && curve(first, origin);
    }
    case 'S':
      return curve(turned ? here * 2 - *turned : here, origin);
    case 'A':
      return arc(here, origin);
    case 'Z':
      path.closeSubpath();
      return true;
    default:
      return false;
    }
  }

  bool curve(const QPointF& first, const QPointF& origin) {
    QPointF second;
    QPointF to;
    if (!point(second, origin) || !point(to, origin)) return false;
    path.cubicTo(first, second, to);
    control_ = second;
    return true;
  }

  /// From its two ends to its middle and angles, as the format's notes on implementation derive it.
  bool arc(const QPointF& from, const QPointF& origin) {
    double rx = 0, ry = 0, rotation = 0, large = 0, sweep = 0;
    QPointF to;
    if (!number(rx) || !number(ry) || !number(rotation) || !number(large) || !number(sweep) ||
        !point(to, origin))
      return false;
    if (rx <= 0 || ry <= 0 || from == to) {
      path.lineTo(to);
      return true;
    }
    QPointF half((from.x() - to.x()) / 2 / rx, (from.y() - to.y()) / 2 / ry); // on the unit circle's scale
    auto length = std::hypot(half.x(), half.y());
    if (length > 1) { // radii too small to reach: as large as they must be
      rx *= length;
      ry *= length;
      half /= length;
      length = 1;
    }
    auto away = std::sqrt(1 - length * length) / length * (large == sweep ? -1 : 1);
    QPointF middle(away * half.y(), -away * half.x());
    auto start = std::atan2(half.y() - middle.y(), half.x() - middle.x());
    auto turn = std::atan2(-half.y() - middle.y(), -half.x() - middle.x()) - start;
    if (sweep != 0 && turn < 0) turn += 2 * std::numbers::pi;
    if (sweep == 0 && turn > 0) turn -= 2 * std::numbers::pi;
    QPointF center((from.x() + to.x()) / 2 + middle.x() * rx, (from.y() + to.y()) / 2 + middle.y() * ry);
    // The toolkit's angles run against the clock.
    path.arcTo(center.x() - rx, center.y() - ry, 2 * rx, 2 * ry, -degrees(start), -degrees(turn));
    return true;
  }

  std::string_view rest_;
  std::optional<QPointF> control_; ///< the last curve's second
};

} // namespace

std::optional<QPainterPath> pathFromData(std::string_view data) {
  Reader reader(data);
  if (!reader.read()) return std::nullopt;
  return reader.path;
}

} // namespace korvell
