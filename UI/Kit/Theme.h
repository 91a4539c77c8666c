#pragma once
// What the whole interface looks like at this moment: colours, sizes of text, motion. One object, owned by
// the program, handed to every widget; it outlives them all. Main thread only.
//
// In high contrast secondary text becomes primary, hairlines and edges become borders, washes the surface.

#include "Base/Observers.h"
#include "UI/Kit/Token.h"

#include <QColor>
#include <QString>

#include <functional>

namespace korvell {

enum class Appearance { light, dark };

struct Look {
  Appearance appearance = Appearance::light;
  bool highContrast = false;
  bool reducedMotion = false;
  double textScale = 1; ///< 1 is the system's default size of text; kept within 0.75 to 2.5
  QString family{};     ///< empty: the one that systemFamily() chooses

  bool operator==(const Look&) const = default;
};

class Theme {
public:
  explicit Theme(Look look = {});
  Theme(const Theme&) = delete;
  Theme& operator=(const Theme&) = delete;

  const Look& look() const { return look_; }
  bool isDark() const { return look_.appearance == Appearance::dark; }
  /// Observers are told when it differs.
  void set(Look look);

  QColor color(Token token) const;
  /// One colour laid over another, opaque: `share` of the first.
  QColor mixed(Token over, double share, Token ground) const;
  const QString& family() const { return look_.family; }
  /// A length that follows the size of text: row heights, controls.
  int scaled(double length) const;
  /// How long a motion of so many milliseconds takes: nothing in reduced motion.
  int duration(int milliseconds) const { return look_.reducedMotion ? 0 : milliseconds; }
  double lineWidth() const { return look_.highContrast ? 2 : 1.5; }

  [[nodiscard]] Subscription observe(std::function<void()> observer) const;

private:
  Look look_;
  mutable Observers<> observers_;
};

/// The colour of a token without the changes of high contrast.
QColor colorOf(Token token, Appearance appearance);
/// WCAG 2's ratio, from 1 to 21.
double contrast(const QColor& one, const QColor& other);

} // namespace korvell
