#pragma once
// A percentage to be dragged: a track with a knob, a notch where it stands unless somebody moves it, and
// below the track a thin bar for what goes through it.

#include "UI/Kit/Control.h"

#include <functional>
#include <optional>
#include <string>

namespace korvell {

/// Whole percents. Arrow keys move it by 1, with Shift or the page keys by 10, Home and End to its ends; Up
/// and Down are left to the list that it stands in. A double click goes back to the notch, and a drag past it
/// stops there for a moment.
class Slider final : public Control {
public:
  /// From 0 to `most`.
  Slider(const Theme& theme, std::string_view name, int most, std::optional<int> notch, QWidget* parent);

  int value() const { return value_; }
  /// Without telling; not while it is being dragged.
  void setValue(int value);
  /// Told at each step that the user moves it.
  void onMove(std::function<void(int)> handler) { handler_ = std::move(handler); }
  /// It stands where it stood, but nothing comes through: drawn without colour.
  void setSilent(bool isSilent);
  /// 0 to 1, on the scale of the slider, where 1 is 100 %; absent: there is no bar.
  void setLevel(std::optional<double> level);

  QSize sizeHint() const override { return {220, 28}; }
  QSize minimumSizeHint() const override { return {96, 28}; }
  QAccessible::Role role() const override { return QAccessible::Slider; }
  std::string spokenValue() const override;
  std::optional<double> meter() const override { return value_; }
  double meterTop() const override { return most_; }
  void moveMeter(double value) override;
  bool canPress() const override { return false; }

protected:
  void draw(QPainter& painter) override;
  void pressed() override {}
  QRectF shape() const override;
  double corner() const override { return radius; }

  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

private:
  static constexpr double radius = 7;
  void move(int value);
  void place(int value);
  int valueAt(double x) const;
  double placeOf(double percent) const;
  QRectF track() const;
  QRectF span(double percent, double top, double height) const;

  const int most_;
  const std::optional<int> notch_;
  int value_ = 0;
  bool isSilent_ = false;
  bool isDragged_ = false;
  std::optional<double> level_;
  std::function<void(int)> handler_;
};

} // namespace korvell
