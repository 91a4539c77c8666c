#pragma once
// The base of what can be pressed: hover, mouse and keyboard (Space, Return), the focus ring, the hand-over
// to assistive technology. Never smaller than 24 by 24.

#include "UI/Kit/Painted.h"

namespace korvell {

class Control : public Painted {
public:
  static constexpr int leastHit = 24;

  Control(const Theme& theme, QWidget* parent);
  ~Control() override;

  bool press() override;
  bool canPress() const override { return isEnabled(); }

protected:
  /// What a click, Space, Return or assistive technology asks for; not called while disabled.
  virtual void pressed() = 0;
  /// Where the focus ring goes round, and its corner: the drawn shape, which may be smaller than the widget.
  virtual QRectF shape() const { return QRectF(rect()); }
  virtual double corner() const { return 6; }

  bool isHovered() const { return hovered_; }
  bool isDown() const { return down_; }

  bool event(QEvent*) override;
  void mousePressEvent(QMouseEvent*) override;
  void mouseMoveEvent(QMouseEvent*) override;
  void mouseReleaseEvent(QMouseEvent*) override;
  void keyPressEvent(QKeyEvent*) override;
  void focusInEvent(QFocusEvent*) override;
  void focusOutEvent(QFocusEvent*) override;
  void changeEvent(QEvent*) override;

private:
  bool hovered_ = false;
  bool down_ = false;
};

} // namespace korvell
