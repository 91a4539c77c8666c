#pragma once
// What only the window system knows of a window that belongs to the desktop.

class QWidget;

namespace korvell {

/// True where windows may say where they stand, and stay below all others.
bool canPlaceWindows();
/// True where what a window leaves out shows what lies under it.
bool showsThrough();
/// Before the window is shown: it belongs to the desktop, on every workspace and in no list of windows. Does
/// nothing where windows can't say so.
void keepOnDesktop(QWidget& window);

} // namespace korvell
