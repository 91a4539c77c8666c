#pragma once
// What a whole is made of: one bar in steps of one hue, and a row below it with the names and amounts. Grows
// from the side where reading begins. Narrow rooms break the row into several.

#include "UI/Kit/ChartData.h"
#include "UI/Kit/Painted.h"

#include <vector>

namespace korvell {

class CompositionBar : public Painted {
public:
  CompositionBar(const Theme& theme, Token hue, QWidget* parent);

  /// Amounts are shares of their sum.
  void setParts(std::vector<CompositionPart> parts);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;
  bool hasHeightForWidth() const override { return true; }
  int heightForWidth(int width) const override;
  QAccessible::Role role() const override { return QAccessible::Chart; }
  /// "Apps 7.21 GB, Wired 1.42 GB, …"
  std::string spokenValue() const override;

protected:
  void draw(QPainter& painter) override;

private:
  int columns(int width) const;
  void drawStep(QPainter& painter, const QRectF& box, double corner, CompositionPart::Step step) const;
  void drawLegend(QPainter& painter, std::size_t index) const;

  Token hue_;
  std::vector<CompositionPart> parts_;
};

} // namespace korvell
