#pragma once
// The base of every widget that paints itself: it holds the theme, follows its changes and has a name and a
// role for screen readers.

#include "UI/Kit/Spoken.h"
#include "UI/Kit/Theme.h"

#include <QWidget>

#include <functional>

class QPainter;

namespace korvell {

class Painted : public QWidget, public Spoken {
public:
  Painted(const Theme& theme, QWidget* parent);

  const Theme& theme() const { return theme_; }
  /// The name for screen readers.
  void setName(std::string_view name);
  /// Why something here could not be read; empty: nothing of the kind. Shown while it is pointed at and with
  /// the keyboard's focus, which is for the widget to take.
  void setReason(std::string_view words);

protected:
  /// Antialiasing is on; rectangles and hairlines switch it off (UI/Kit/Paint.h does).
  virtual void draw(QPainter& painter) = 0;
  /// Fonts or colours have changed; the base repaints and asks for the size anew.
  virtual void themeChanged();
  void paintEvent(QPaintEvent*) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  /// Shows a tooltip in the next turn: the toolkit takes away what is shown while the focus moves or a button
  /// is let go. Empty words show none.
  void showTip(std::function<QString()> words, QPoint where);

private:
  const Theme& theme_;
  QString reason_;
  Subscription themeSubscription_;
};

/// Text that must never be elided shows here when it is: the gallery asks every widget that has this.
class Whole {
public:
  virtual ~Whole() = default;
  /// The text that does not fit in the widget's present size.
  virtual std::optional<std::string> cutText() const = 0;
};

} // namespace korvell
