#pragma once
// Paints the menu bar's item where there is room beside the symbol: heart, text and graph on one line.

#include "App/MenuBarLabel.h"
#include "UI/Kit/Theme.h"

#include <QPainter>

namespace korvell {

/// How wide it is, in logical pixels; no higher than a line of the theme's text.
double wideFormWidth(const Theme& theme, const MenuBarLabel& label);

/// In the middle of the box, in one ink; left to right in every language, as menu bars set it.
void drawWideForm(QPainter& painter, const QRectF& box, const Theme& theme, const MenuBarLabel& label,
                  const QColor& ink);

} // namespace korvell
