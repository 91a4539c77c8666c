#pragma once
// What assistive technology is told of a widget beyond its name: its role, value and states, and that it can
// be pressed. A widget that also derives from Spoken is told by one factory, installed once a program.

#include <QAccessible>
#include <QRect>

#include <cstddef>
#include <optional>
#include <string>

class QWidget;

namespace korvell {

class Spoken {
public:
  virtual ~Spoken() = default;
  virtual QAccessible::Role role() const = 0;
  /// The value in words; empty without one.
  virtual std::string spokenValue() const { return {}; }
  /// For meters: the value as a number of 0 to meterTop().
  virtual std::optional<double> meter() const { return std::nullopt; }
  virtual double meterTop() const { return 100; }
  /// For those that can be moved.
  virtual void moveMeter(double value) { (void)value; }
  virtual void addStates(QAccessible::State&) const {}
  /// What Enter would do; false where nothing can be pressed.
  virtual bool press() { return false; }
  virtual bool canPress() const { return false; }

  /// Rows that the widget paints by itself: told as its first children.
  struct Row {
    std::string name;
    QRect place; ///< in the widget
    bool isCurrent = false;
  };
  virtual std::size_t spokenRows() const { return 0; }
  virtual Row spokenRow(std::size_t) const { return {}; } ///< only for those that there are
};

/// Called by main and by tests, after the application object is made; more than once does no harm.
void installSpoken();
/// With a screen reader running, the toolkit may ask while a widget is being built and is not yet Spoken, and
/// would keep that answer: for the constructors of widgets that are.
void forgetSpoken(QWidget& widget);
/// Tells assistive technology that another painted row has the focus.
void tellRowFocused(QWidget& widget, std::size_t row);
/// Tells assistive technology that a state or value has changed.
void tellStateChanged(QWidget& widget, const QAccessible::State& changed);
/// Tells it that a meter was moved.
void tellMeterMoved(QWidget& widget, double value);

} // namespace korvell
