#pragma once
// The item's picture where the desktop's place for it is a menu bar.

#include "App/MenuBarLabel.h"
#include "UI/Kit/Theme.h"

#include <QIcon>

namespace korvell {

/// The wide form as a template image: black, which the bar paints in its own ink. As high as a bar shows
/// whole, at one and at two pixels a point.
QIcon menuBarIcon(const MenuBarLabel& label, const Theme& theme);

} // namespace korvell
