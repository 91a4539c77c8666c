#pragma once
// Bars of days: the second part of a bar stands on the first as a tint with an outline. A lane above takes
// the readout of the day that is pointed at. One tab stop; Left, Right, Home and End move from day to day,
// Esc lets go, Ctrl+C copies the readout. Days run to the right in every language.

#include "UI/Kit/DayBarsData.h"
#include "UI/Kit/PointedPlot.h"

#include <optional>

namespace korvell {

class DayBars : public PointedPlot {
public:
  DayBars(const Theme& theme, QWidget* parent);

  /// The day that is pointed at stays, counted from the newest.
  void setData(DayBarsData data);
  const DayBarsData& data() const { return data_; }
  /// As the pointer does; nothing lets go.
  void point(std::optional<std::size_t> bar);
  std::optional<std::size_t> pointed() const { return pointed_; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void leaveEvent(QEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  QRectF plot() const override;
  bool isPointed() const override { return pointed_.has_value(); }
  void unpoint() override { point(std::nullopt); }

private:
  QRectF column(std::size_t index) const;
  double yOf(double value) const;
  void drawAxis(QPainter& painter) const;
  void drawBar(QPainter& painter, std::size_t index) const;
  void drawLabels(QPainter& painter) const;
  void drawReadout(QPainter& painter, std::size_t index) const;
  void moveTo(std::size_t index);

  DayBarsData data_;
  std::optional<std::size_t> pointed_;
};

/// Which part of a bar is which: as wide as its words, for the line of the bars' heading.
class DayBarsLegend : public Painted {
public:
  DayBarsLegend(const Theme& theme, QWidget* parent);
  void setSeries(std::vector<std::string> series, Token token);
  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::StaticText; }

protected:
  void draw(QPainter& painter) override;

private:
  std::vector<std::string> series_;
  Token token_ = Token::accent;
};

} // namespace korvell
