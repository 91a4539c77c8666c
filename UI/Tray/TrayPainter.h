#pragma once
// Paints the tray item's square forms, in one ink: trays on Linux offer a square, and no colour but their
// own. A menu bar gets the wide form (UI/Tray/MenuBarIcon.h).

#include "UI/Desktop/TrayInk.h"
#include "UI/Tray/TrayForm.h"

#include <QIcon>
#include <QImage>

namespace korvell {

/// `size` in device pixels: at 16, 22, 24 and their multiples every bar and gauge lies on whole pixels.
QImage trayImage(const TrayForm& form, int size, TrayInk ink);

/// The form at every size that panels ask for.
QIcon trayIcon(const TrayForm& form, TrayInk ink);

} // namespace korvell
