#pragma once
// The base of a chart that can be pointed into: one tab stop with the ring around its plot, which says to
// screen readers where the crosshair went and copies what it says with Ctrl+C.

#include "UI/Kit/Painted.h"

namespace korvell {

class PointedPlot : public Painted {
public:
  PointedPlot(const Theme& theme, QWidget* parent);

  QAccessible::Role role() const override { return QAccessible::Chart; }

protected:
  virtual QRectF plot() const = 0;
  /// Whether the spoken value is that of a place which the user chose.
  virtual bool isPointed() const = 0;
  /// The crosshair goes; what was pinned stays.
  virtual void unpoint() = 0;

  /// After a key has moved the crosshair.
  void tellValue();
  /// True when the key was the one that copies.
  bool copies(const QKeyEvent& event) const;

  void focusInEvent(QFocusEvent*) override;
  void focusOutEvent(QFocusEvent*) override;
};

} // namespace korvell
