#pragma once
// The styles in which all text is set, and the family that they are set in.

#include "UI/Kit/Theme.h"

#include <QFont>

#include <functional>

namespace korvell {

enum class TextStyle {
  display,      ///< the score
  figureLarge,  ///< a page's figure
  figureMedium, ///< tiles
  title,        ///< page title
  sub,          ///< second figures, dialog titles
  head,
  strong, ///< names
  body,
  small, ///< details, segments
  smallMedium,
  smallStrong,
  caption ///< axes, column heads
};

struct TypeSize {
  double size; ///< logical pixels
  QFont::Weight weight;
  double line;     ///< distance of baselines
  double tracking; ///< share of the size added to every letter
};
const TypeSize& sizeOf(TextStyle style);

QFont fontOf(const Theme& theme, TextStyle style);
/// A size that no style has (the score in the panel), at the theme's scale.
QFont fontOf(const Theme& theme, double size, QFont::Weight weight, double tracking = 0);
/// The height of one line, at the theme's scale.
int lineHeight(const Theme& theme, TextStyle style);
/// The style of a unit behind a number: one step smaller.
TextStyle unitStyle(TextStyle number);

/// The family of the desktop. DejaVu and Bitstream Vera are what a system without a choice of its own has:
/// Inter is taken before them, then Noto Sans, when installed.
QString chosenFamily(const QString& desktop, const std::function<bool(const QString&)>& isInstalled);
/// The same, asked of the running program's toolkit.
QString systemFamily();
/// How much larger or smaller than usual the desktop sets its text, by the height of its font in logical
/// pixels. Desktops ship with 13 to 14 2/3: those are the usual size.
double textScaleOf(double desktopPixels);

} // namespace korvell
