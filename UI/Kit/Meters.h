#pragma once
// Small pictures of measures: the last minutes of a series, a level.

#include "UI/Kit/Painted.h"

#include <QVariantAnimation>

#include <vector>

namespace korvell {

/// The line of the last values, oldest first, with its fill and a dot at the newest. Time runs to the right
/// in every language. Not spoken: the figure beside it is.
class Sparkline : public Painted {
public:
  static constexpr std::size_t points = 60;

  Sparkline(const Theme& theme, Token line, QWidget* parent);

  /// The newest stands at the right end, `points` fill the width; a value that was not measured breaks the
  /// line. `top` is the scale of the measure's chart.
  void setValues(std::vector<std::optional<double>> values, double top);

  QSize sizeHint() const override { return {112, 36}; }
  QAccessible::Role role() const override { return QAccessible::Graphic; }

protected:
  void draw(QPainter& painter) override;

private:
  Token line_;
  std::vector<std::optional<double>> values_;
  double top_ = 1;
};
/// The same for views that paint their tiles.
void drawSparkline(QPainter& painter, const QRectF& box, const Theme& theme, Token line,
                   const std::vector<std::optional<double>>& values, double top);

/// A level on its track, from 0 to 1; glides to a new level in a fifth of a second.
class Bar : public Painted {
public:
  Bar(const Theme& theme, Token fill, QWidget* parent);

  void setLevel(double level);
  void setToken(Token fill);
  /// 4 by default.
  void setThickness(int thickness);

  QSize sizeHint() const override { return {88, thickness_}; }
  QSize minimumSizeHint() const override { return {24, thickness_}; }
  QAccessible::Role role() const override { return QAccessible::ProgressBar; }
  std::optional<double> meter() const override { return level_ * 100; }

protected:
  void draw(QPainter& painter) override;

private:
  Token fill_;
  double level_ = 0;
  double shown_ = 0;
  int thickness_ = 4;
  QVariantAnimation gliding_;
};
/// The same for views that paint their rows; the level grows from the side where reading begins.
void drawBar(QPainter& painter, const QRectF& box, const Theme& theme, Token fill, double level,
             Qt::LayoutDirection direction = Qt::LeftToRight);

} // namespace korvell
