#pragma once
// On or off: the toggle of a setting, the box of a list.

#include "UI/Kit/Control.h"

#include <functional>

namespace korvell {

/// 32 by 18. Shape says what colour says: the knob is at the far end and larger when on, hollow when off.
class Toggle : public Control {
public:
  Toggle(const Theme& theme, std::string_view name, QWidget* parent);

  bool isOn() const { return on_; }
  /// Without telling.
  void setOn(bool on);
  /// Told when the user has switched it.
  void onToggle(std::function<void(bool)> handler) { handler_ = std::move(handler); }

  QSize sizeHint() const override { return {32, leastHit}; }
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::CheckBox; }
  void addStates(QAccessible::State& state) const override;

protected:
  void draw(QPainter& painter) override;
  void pressed() override;
  QRectF shape() const override;
  double corner() const override { return 9; }

private:
  bool on_ = false;
  std::function<void(bool)> handler_;
};

/// A box of 16, with or without words behind it.
class CheckBox : public Control {
public:
  enum class State { off, some, on };

  /// The name is spoken; `words` are shown, and are the name where that is empty.
  CheckBox(const Theme& theme, std::string_view name, std::string_view words, QWidget* parent);

  State state() const { return state_; }
  /// Without telling.
  void setState(State state);
  /// Told when the user has ticked or unticked it; "some" becomes on.
  void onToggle(std::function<void(bool on)> handler) { handler_ = std::move(handler); }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override { return sizeHint(); }
  QAccessible::Role role() const override { return QAccessible::CheckBox; }
  void addStates(QAccessible::State& state) const override;

protected:
  void draw(QPainter& painter) override;
  void pressed() override;
  QRectF shape() const override;
  double corner() const override { return 4; }

private:
  QString words_;
  State state_ = State::off;
  std::function<void(bool)> handler_;
};
/// The box alone, for views that paint their rows.
void drawCheckBox(QPainter& painter, const QRectF& box, const Theme& theme, CheckBox::State state,
                  bool enabled = true);

} // namespace korvell
